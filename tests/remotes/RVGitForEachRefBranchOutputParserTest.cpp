#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RVDamagedOutput.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <typename Parser>
class RVGitForEachRefBranchOutputParserTest : public testing::Test {
protected:
    static std::vector<std::string> parsed(const std::string& output) {
        Parser parser(output);
        EXPECT_TRUE(parser.parse());
        std::vector<std::string> texts;
        for (const auto& item : parser.resultItems())
            texts.push_back(item.fullRefName + " " +
                            std::to_string(item.creatorDate.time_since_epoch().count()));
        return texts;
    }
};

using Parsers =
    testing::Types<RVGitForEachRefBranchOutputParser, RVGitForEachRefRemoteBranchOutputParser>;
TYPED_TEST_SUITE(RVGitForEachRefBranchOutputParserTest, Parsers);

const std::string boundary = "\x1f\x1d\x1f";
const std::string end(1, '\0');

TYPED_TEST(RVGitForEachRefBranchOutputParserTest, ReadsNamesAndDates) {
    const std::string output = "refs/heads/a^{}" + boundary + "1577934245" + end +
                               "\nrefs/heads/b" + boundary + "7" + end + "\n";
    EXPECT_TRUE(TypeParam(output).usesNULByteAsNewlineDelimiter());
    EXPECT_EQ(TypeParam::commitBoundaryString(), boundary);
    EXPECT_THAT(this->parsed(output), ElementsAre("refs/heads/a 1577934245", "refs/heads/b 7"));
}

TYPED_TEST(RVGitForEachRefBranchOutputParserTest, RecordsOfOtherShapesAreSkipped) {
    EXPECT_THAT(
        this->parsed("refs/heads/a" + end + "\na" + boundary + "1" + boundary + "2" + end + "\n"),
        IsEmpty());
}

TYPED_TEST(RVGitForEachRefBranchOutputParserTest, ANameInAnotherEncodingSpoilsNoOther) {
    EXPECT_THAT(this->parsed("refs/heads/\xE9^{}" + boundary + "1" + end + "\nrefs/heads/\xC3\xA9" +
                             boundary + "2" + end + "\n"),
                ElementsAre("refs/heads/\xC3\xA9 1", "refs/heads/\xC3\xA9 2"));
}

TYPED_TEST(RVGitForEachRefBranchOutputParserTest, ADateIsReadIn32Bits) {
    EXPECT_THAT(this->parsed("a" + boundary + "4102444800" + end + "\nb" + boundary + end),
                ElementsAre("a 2147483647", "b 0"));
}

TYPED_TEST(RVGitForEachRefBranchOutputParserTest, LivesWithDamagedOutput) {
    const std::string output = "refs/heads/a^{}" + boundary + "1577934245" + end +
                               "\nrefs/heads/b" + boundary + "-7" + end + "\n";
    for (const std::string& damaged : damagedOutputs(output)) {
        TypeParam parser(damaged);
        EXPECT_TRUE(parser.parse());
        for (const auto& item : parser.resultItems())
            EXPECT_FALSE(item.fullRefName.find(boundary) != std::string::npos);
    }
}

}  // namespace
