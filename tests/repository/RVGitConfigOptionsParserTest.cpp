#include "RVGit/repository/RVGitConfigOptionsParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using StringList = RVValue::StringList;

// A literal with its NUL bytes, without the one that ends it.
template <std::size_t N>
std::string bytes(const char (&literal)[N]) {
    return std::string(literal, N - 1);
}

TEST(RVGitConfigOptionsParserTest, OneValueIsAStringAndSeveralAreAListInTheirOrder) {
    const std::string output = bytes("b.x\none\0a.x\nonly\0b.x\ntwo\0b.x\none\0");
    RVGitConfigOptionsParser parser(output);
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.configOptions(),
                ElementsAre(Pair("a.x", "only"), Pair("b.x", StringList{"one", "two", "one"})));
}

TEST(RVGitConfigOptionsParserTest, AValueGoesFromTheFirstNewlineToTheNulByte) {
    const std::string output =
        bytes("a.lines\none\ntwo\n\0a.empty\n\0a.b=c.d\n x = y \0a.crlf\none\r\ntwo\0");
    RVGitConfigOptionsParser parser(output);
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.configOptions(),
                ElementsAre(Pair("a.b=c.d", " x = y "), Pair("a.crlf", "one\r\ntwo"),
                            Pair("a.empty", ""), Pair("a.lines", "one\ntwo\n")));
}

TEST(RVGitConfigOptionsParserTest, ALastRecordWithoutItsNulByteIsRead) {
    const std::string output = bytes("a.x\n1\0b.x\n2");
    RVGitConfigOptionsParser parser(output);
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.configOptions(), ElementsAre(Pair("a.x", "1"), Pair("b.x", "2")));
}

TEST(RVGitConfigOptionsParserTest, NoOutputGivesAnEmptyMap) {
    RVGitConfigOptionsParser parser("");
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.configOptions(), IsEmpty());
}

TEST(RVGitConfigOptionsParserTest, AKeyWithoutAValueFailsWith11AndKeepsWhatWasRead) {
    const std::string output = bytes("a.x\n1\0core.valueless\0b.x\n2\0");
    RVGitConfigOptionsParser parser(output);
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitConfigOptionsParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "core.valueless");
    EXPECT_THAT(parser.configOptions(), ElementsAre(Pair("a.x", "1")));
}

TEST(RVGitConfigOptionsParserTest, ARecordInAnotherEncodingDoesNotSpoilTheOthers) {
    const std::string output = bytes("a.latin\nM\xFCller\0a.utf\nM\xC3\xBCller\0");
    RVGitConfigOptionsParser parser(output);
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.configOptions(),
                ElementsAre(Pair("a.latin", "M\xC3\xBCller"), Pair("a.utf", "M\xC3\xBCller")));
}

TEST(RVGitConfigOptionsParserTest, DamagedOutputGivesEachWholeRecordAndFailsOnlyWithoutANewline) {
    for (const std::string& output :
         damagedOutputs(bytes("branch.main.remote\norigin\0user.name\nA \xC3\xA9\0a.b\n\n\0"))) {
        std::size_t records = 0;
        bool isReadable = true;
        for (std::string_view record : componentsSeparatedByNULByte(output)) {
            if (record.empty())
                continue;
            isReadable = record.find('\n') != std::string_view::npos;
            if (!isReadable)
                break;
            ++records;
        }

        RVGitConfigOptionsParser parser(output);
        EXPECT_EQ(parser.parse(), isReadable) << testing::PrintToString(output);
        std::size_t values = 0;
        for (const auto& [key, value] : parser.configOptions())
            values += value.stringList() ? value.stringList()->size() : 1;
        EXPECT_EQ(values, records) << testing::PrintToString(output);
    }
}

TEST(RVGitConfigOptionsParserTest, SectionsMergeIntoOneLevel) {
    EXPECT_THAT(RVGitConfigOptionsParser::parseConfigOptionsBySection(
                    {{"branch.main.remote", "v"},
                     {"remote.origin.url", StringList{"one", "two"}},
                     {"branch.origin.remote", "other"}}),
                ElementsAre(Pair("main", ElementsAre(Pair("remote", "v"))),
                            Pair("origin", ElementsAre(Pair("remote", "other"),
                                                       Pair("url", StringList{"one", "two"})))));
}

TEST(RVGitConfigOptionsParserTest, SectionsLeaveOutKeysWithFewerThanTwoDots) {
    EXPECT_THAT(RVGitConfigOptionsParser::parseConfigOptionsBySection(
                    {{"user.name", "Marie"}, {"nodot", "1"}, {"", "2"}}),
                IsEmpty());
}

TEST(RVGitConfigOptionsParserTest, SectionsLowerTheNameOnlyAndKeepDotsInTheGroup) {
    EXPECT_THAT(RVGitConfigOptionsParser::parseConfigOptionsBySection(
                    {{"branch.Feature/A.B.Remote", "1"}, {"a..b", "2"}, {".c.", "3"}}),
                ElementsAre(Pair("", ElementsAre(Pair("b", "2"))),
                            Pair("Feature/A.B", ElementsAre(Pair("remote", "1"))),
                            Pair("c", ElementsAre(Pair("", "3")))));
}

}  // namespace
