#include "RVGit/command/RVGitFilePathsOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RVDamagedOutput.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> parsed(std::string_view output, bool usesNULByte = true) {
    RVGitFilePathsOutputParser parser(output, usesNULByte);
    EXPECT_TRUE(parser.parse());
    return parser.filePaths();
}

TEST(RVGitFilePathsOutputParserTest, RecordsEndInNULBytesUnlessSaidOtherwise) {
    EXPECT_TRUE(RVGitFilePathsOutputParser("").usesNULByteAsNewlineDelimiter());
    EXPECT_FALSE(RVGitFilePathsOutputParser("", false).usesNULByteAsNewlineDelimiter());
}

TEST(RVGitFilePathsOutputParserTest, PathsAreKeptAsTheyStandAndInOrder) {
    EXPECT_THAT(parsed(" b \0a\n\0\"c\"\0b/\xC3\xA9"s),
                ElementsAre(" b ", "a\n", "\"c\"", "b/\xC3\xA9"));
    EXPECT_THAT(parsed(" b \na\r\n\"c\"\n", false), ElementsAre(" b ", "a\r", "\"c\""));
}

TEST(RVGitFilePathsOutputParserTest, EmptyRecordsAreLeftOut) {
    EXPECT_THAT(parsed("a\0\0b\0\0"s), ElementsAre("a", "b"));
    EXPECT_THAT(parsed("\n\na\n", false), ElementsAre("a"));
    EXPECT_THAT(parsed(""), IsEmpty());
}

TEST(RVGitFilePathsOutputParserTest, APathInAnotherEncodingDoesNotSpoilTheOthers) {
    EXPECT_THAT(parsed("caf\xE9\0caf\xC3\xA9\0"s), ElementsAre("caf\xC3\xA9", "caf\xC3\xA9"));
}

TEST(RVGitFilePathsOutputParserTest, DamagedOutputNeverFailsAndGivesNoEmptyPath) {
    for (const std::string& damaged : damagedOutputs("a\0dir/b c\0\xC3\xA9\n\0"s))
        for (const bool usesNULByte : {true, false})
            ASSERT_THAT(parsed(damaged, usesNULByte), Not(testing::Contains("")));
}

}  // namespace
