#include "RVGit/base/RVError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(RVErrorTest, TextsAreEntriesOfTheUserInfo) {
    const RVError error("Domain", 7,
                        {{RVLocalizedDescriptionErrorKey, "Title"},
                         {RVLocalizedFailureReasonErrorKey, "Reason"},
                         {"Number", 3}});
    EXPECT_EQ(error.domain(), "Domain");
    EXPECT_EQ(error.code(), 7);
    EXPECT_EQ(error.localizedDescription(), "Title");
    EXPECT_EQ(error.localizedFailureReason(), "Reason");
    EXPECT_EQ(error.userInfoString("Number"), std::nullopt);
    EXPECT_EQ(error.userInfoString("Missing"), std::nullopt);
}

TEST(RVErrorTest, TextsAreAbsentWithoutTheirEntries) {
    const RVError error("Domain", 7);
    EXPECT_EQ(error.localizedDescription(), std::nullopt);
    EXPECT_EQ(error.localizedFailureReason(), std::nullopt);
}

TEST(RVErrorTest, EqualityComparesEverything) {
    const RVError error("Domain", 7, {{"Key", "value"}});
    EXPECT_EQ(error, RVError("Domain", 7, {{"Key", "value"}}));
    EXPECT_FALSE(error == RVError("Domain", 8, {{"Key", "value"}}));
    EXPECT_FALSE(error == RVError("Other", 7, {{"Key", "value"}}));
    EXPECT_FALSE(error == RVError("Domain", 7));
}

TEST(RVErrorTest, AnErrorPlaceMayBeMissing) {
    clearErrorPlace(nullptr);
    fillErrorPlace(nullptr, RVError("Domain", 1));
    std::optional<RVError> error;
    fillErrorPlace(&error, RVError("Domain", 1));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 1);
    clearErrorPlace(&error);
    EXPECT_FALSE(error);
}

TEST(RVErrorTest, SystemErrorCarriesCodeReasonAndPath) {
    const auto error = posixError(ENOENT, "/no/such");
    EXPECT_EQ(error.domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(error.code(), ENOENT);
    EXPECT_EQ(error.localizedFailureReason(), "No such file or directory");
    EXPECT_EQ(error.localizedDescription(), "Could not access “/no/such”.");
    EXPECT_EQ(error.userInfoString(RVFilePathErrorKey), "/no/such");
    EXPECT_EQ(posixError(ENOENT).userInfoString(RVFilePathErrorKey), std::nullopt);
}

TEST(RVErrorTest, BrokenPreconditionNamesTheCondition) {
    requireParameter(true, "path");
    EXPECT_THAT([] { requireParameter(false, "path != nil"); },
                testing::ThrowsMessage<RVInvalidParameterException>(
                    "Invalid parameter not satisfying: path != nil"));
}

}  // namespace
