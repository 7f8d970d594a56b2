#include "RVGit/history/RVGitCommitRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVDataBuffer.h"

namespace {

using Records = RVGitCommitRecords;
using View = std::optional<std::string_view>;

class RVGitCommitRecordsTest : public testing::Test {
protected:
    RVGitCommitRecordsTest() {
        buffer_->append(
            "h1\x1f\x1d\x1f"
            "m1|h2\x1f\x1d\x1f"
            "m2");
    }

    std::string_view first() const { return buffer_->view().substr(0, 7); }
    std::string_view second() const { return buffer_->view().substr(8); }

    std::shared_ptr<RVDataBuffer> buffer_ = std::make_shared<RVDataBuffer>();
    Records records_{buffer_, {"%H", "%B"}};
};

TEST_F(RVGitCommitRecordsTest, TextsAreRangesOfTheOutput) {
    ASSERT_TRUE(records_.addRecord(first()));
    ASSERT_TRUE(records_.addRecord(second()));
    EXPECT_EQ(records_.count(), 2U);
    EXPECT_EQ(records_.text(0, Records::CommitHash), View("h1"));
    EXPECT_EQ(records_.text(0, Records::Message), View("m1"));
    EXPECT_EQ(records_.text(1, Records::CommitHash), View("h2"));
    EXPECT_EQ(records_.text(1, Records::Message), View("m2"));
    EXPECT_EQ(records_.text(1, Records::Message)->data(), second().data() + 5);
    EXPECT_EQ(records_.text(1, Records::TreeHash), View());
}

TEST_F(RVGitCommitRecordsTest, RangesHoldWhenTheOutputMoves) {
    ASSERT_TRUE(records_.addRecord(first()));
    buffer_->append(std::string(1 << 20, 'x'));
    EXPECT_EQ(records_.text(0, Records::Message), View("m1"));
}

TEST_F(RVGitCommitRecordsTest, RecordsFromElsewhereAreCopied) {
    {
        const std::string decoded = "h3\x1f\x1d\x1fm3";
        ASSERT_TRUE(records_.addRecord(decoded));
    }
    ASSERT_TRUE(records_.addRecord(second()));
    EXPECT_EQ(records_.text(0, Records::Message), View("m3"));
    EXPECT_EQ(records_.text(1, Records::Message), View("m2"));
}

TEST_F(RVGitCommitRecordsTest, AnotherNumberOfFieldsAddsNothing) {
    EXPECT_FALSE(records_.addRecord("one"));
    EXPECT_FALSE(records_.addRecord("one\x1f\x1d\x1ftwo\x1f\x1d\x1f"));
    EXPECT_EQ(records_.count(), 0U);
    ASSERT_TRUE(records_.addRecord("\x1f\x1d\x1f"));
    EXPECT_EQ(records_.text(0, Records::CommitHash), View(""));
    EXPECT_EQ(records_.text(0, Records::Message), View(""));
    EXPECT_FALSE(Records(buffer_, {}).addRecord("one"));
}

TEST_F(RVGitCommitRecordsTest, TheLastRecordCanBeRemoved) {
    ASSERT_TRUE(records_.addRecord(first()));
    ASSERT_TRUE(records_.addRecord("x\x1f\x1d\x1fy"));
    records_.removeLastRecord();
    EXPECT_EQ(records_.count(), 1U);
    ASSERT_TRUE(records_.addRecord(second()));
    EXPECT_EQ(records_.text(1, Records::Message), View("m2"));
}

TEST_F(RVGitCommitRecordsTest, TheLaterOfTwoFieldsIsTheLastOne) {
    EXPECT_EQ(records_.lastOf(Records::Message, Records::ReflogSubject), Records::Message);
    EXPECT_EQ(records_.lastOf(Records::ReflogSubject, Records::Message), Records::Message);
    EXPECT_EQ(records_.lastOf(Records::ReflogSubject, Records::TreeHash), std::nullopt);
    EXPECT_EQ(records_.lastOf(Records::CommitHash, Records::Message), Records::Message);
    EXPECT_EQ(records_.lastOf(Records::Message, Records::CommitHash), Records::Message);
}

}  // namespace
