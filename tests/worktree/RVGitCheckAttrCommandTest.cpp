#include "RVGit/worktree/RVGitCheckAttrCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;
using testing::IsEmpty;
using testing::SizeIs;

using Items = std::vector<RVGitAttributesOutputParserResultItem>;

const std::vector<std::string> command = {
    "check-attr",    "--stdin",      "-z",     "delta", "diff",  "encoding", "eol",
    "export-ignore", "export-subst", "filter", "ident", "merge", "text",     "whitespace"};

std::string plainText(const Items& items) {
    std::string text;
    for (const auto& item : items) {
        text += item.filePath + "|";
        for (const auto& [name, value] : item.attributes)
            text.append(name).append("=").append(value).append("|");
        text += "\n";
    }
    return text;
}

/// The items, and "failed" behind them where a line could not be read.
std::string parsed(std::string_view output) {
    RVGitAttributesOutputParser parser(output);
    const bool succeeded = parser.parse();
    return plainText(parser.attributes()) + (succeeded ? "" : "failed");
}

std::string parsedTriples(std::string_view output) {
    const auto items = RVGitAttributesOutputParser::itemsFromNULSeparatedOutput(output);
    return items ? plainText(*items) : "failed";
}

/// The same another way: by the pieces between all NUL bytes.
std::string parsedPieces(std::string_view output) {
    auto pieces = componentsSeparatedByNULByte(output);
    if (!pieces.back().empty() || pieces.size() % 3 != 1)
        return "failed";
    Items items;
    std::string_view path;
    for (std::size_t index = 0; index + 3 < pieces.size(); index += 3) {
        const std::string name = stringUsingBestEncoding(pieces[index + 1]);
        const bool isSame =
            index > 0 && path == pieces[index] && items.back().attributes.count(name) == 0;
        path = pieces[index];
        if (!isSame)
            items.push_back({stringUsingBestEncoding(path), {}});
        items.back().attributes[name] = stringUsingBestEncoding(pieces[index + 2]);
    }
    return plainText(items);
}

TEST(RVGitAttributesOutputParserTest, AdjacentLinesOfAPathMakeOneItem) {
    EXPECT_EQ(parsed("a.c: text: set\na.c: diff: cpp\nb: text: unset\na.c: eol: unspecified\n"),
              "a.c|diff=cpp|text=set|\nb|text=unset|\na.c|eol=unspecified|\n");
}

TEST(RVGitAttributesOutputParserTest, ALaterValueOfANameReplacesTheEarlier) {
    EXPECT_EQ(parsed("a: text: set\na: text: unset\n"), "a|text=unset|\n");
}

TEST(RVGitAttributesOutputParserTest, PathsAreComparedAsComposedText) {
    EXPECT_EQ(parsed("\u00e9: text: set\ne\u0301: diff: set\n"), "\u00e9|diff=set|text=set|\n");
}

TEST(RVGitAttributesOutputParserTest, AValueMayBeEmptyAndHoldColons) {
    EXPECT_EQ(parsed("a:b: filter: \na:b: diff: x:y\n"), "a:b|diff=x:y|filter=|\n");
}

TEST(RVGitAttributesOutputParserTest, AnyOtherNumberOfPiecesFails) {
    for (const char* line : {"a: b: text: set", "a: text", "a", ": ", "a:text:set"})
        EXPECT_EQ(parsed(line), "failed") << line;
    EXPECT_EQ(parsed(": : "), "|=|\n");
}

TEST(RVGitAttributesOutputParserTest, RecordsWithNULBytesFail) {
    const std::string output = "a.c\0text\0set\0b.c\0text\0unset\0"s;
    RVGitAttributesOutputParser parser(output);
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitAttributesOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), output);
    EXPECT_THAT(parser.attributes(), IsEmpty());
}

TEST(RVGitAttributesOutputParserTest, WhatWasReadAheadOfAFailureIsKept) {
    EXPECT_EQ(parsed("a: text: set\nnonsense\nb: text: set\n"), "a|text=set|\nfailed");
}

TEST(RVGitAttributesOutputParserTest, NoOutputHasNoItems) {
    EXPECT_EQ(parsed(""), "");
    EXPECT_EQ(parsed("\n\n"), "");
}

TEST(RVGitAttributesOutputParserTest, LinesMayBeGiven) {
    RVGitAttributesOutputParser parser(
        std::vector<std::string>{"a: text: set", "", "b: text: set"});
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.attributes(), SizeIs(2));
}

TEST(RVGitAttributesOutputParserTest, DamagedLinesGiveThreePiecesEachOrFail) {
    const std::string output =
        "dir/a.c: text: set\ndir/a.c: diff: cpp\n\u00e9: whitespace: a,b\nb: text: unset\n";
    int numberFailed = 0;
    for (const std::string& damaged : damagedOutputs(output)) {
        const std::string decoded = stringUsingBestEncoding(damaged);
        bool isReadable = true;
        std::size_t count = 0;
        for (const std::string& line : componentsSeparatedByString(decoded, "\n")) {
            isReadable &= line.empty() || componentsSeparatedByString(line, ": ").size() == 3;
            count += isReadable && !line.empty();
        }
        RVGitAttributesOutputParser parser(damaged);
        EXPECT_EQ(parser.parse(), isReadable) << testing::PrintToString(damaged);
        std::size_t numberRead = 0;
        for (const auto& item : parser.attributes()) {
            EXPECT_TRUE(isValidUTF8(item.filePath));
            numberRead += item.attributes.size();
        }
        EXPECT_LE(numberRead, count) << testing::PrintToString(damaged);
        EXPECT_GE(numberRead + 1, count) << testing::PrintToString(damaged);
        numberFailed += !isReadable;
    }
    EXPECT_GT(numberFailed, 0);
}

TEST(RVGitAttributesOutputParserTest, TriplesOfAPathMakeOneItem) {
    EXPECT_EQ(parsedTriples("a: b\0text\0set\0a: b\0filter\0\0x\ny\t\0text\0unset\0"s),
              "a: b|filter=|text=set|\nx\ny\t|text=unset|\n");
    EXPECT_EQ(parsedTriples(""), "");
}

TEST(RVGitAttributesOutputParserTest, APathThatWasAskedForTwiceHasTwoItems) {
    EXPECT_EQ(parsedTriples("a\0diff\0set\0a\0text\0set\0a\0diff\0set\0a\0text\0set\0"s),
              "a|diff=set|text=set|\na|diff=set|text=set|\n");
    EXPECT_EQ(parsedTriples("\0text\0set\0\0text\0set\0"s), "|text=set|\n|text=set|\n");
}

TEST(RVGitAttributesOutputParserTest, PathsOfTriplesAreComparedByTheirBytes) {
    EXPECT_EQ(parsedTriples("\u00e9\0diff\0set\0e\u0301\0text\0set\0"s),
              "\u00e9|diff=set|\ne\u0301|text=set|\n");
    EXPECT_EQ(parsedTriples("caf\xE9\0diff\0set\0caf\xC3\xA9\0text\0set\0"s),
              "café|diff=set|\ncafé|text=set|\n");
}

TEST(RVGitAttributesOutputParserTest, TriplesThatDoNotComeOutEvenFailWith11) {
    for (const std::string& output : {"a"s, "a\0"s, "a\0text\0"s, "a\0text\0set"s,
                                      "a\0text\0set\0b"s, "\0\0"s, "a: text: set\n"s}) {
        std::optional<RVError> error;
        EXPECT_EQ(
            RVGitAttributesOutputParser::itemsFromNULSeparatedOutput(output, &error).has_value(),
            false);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), RVGitOutputParserError);
        EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey),
                  "RVGitAttributesOutputParser");
    }
}

TEST(RVGitAttributesOutputParserTest, DamagedTriplesAreReadAsTheirPiecesAre) {
    const std::string output =
        "dir/a.c\0diff\0cpp\0dir/a.c\0text\0set\0\u00e9\0diff\0\0b\0diff\0unspecified\0"s;
    for (const std::string& damaged : damagedOutputs(output))
        EXPECT_EQ(parsedTriples(damaged), parsedPieces(damaged)) << testing::PrintToString(damaged);
}

class RVGitCheckAttrCommandTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitCheckAttrCommandTest, AsksForElevenAttributesOfPathsOnStandardInput) {
    const auto recorder = useRecordingGit();
    const std::vector<std::string> paths = {"a b", "-x", "", "newline\n", "caf\xE9"};
    const auto checkAttr =
        RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(repository(), paths);
    EXPECT_EQ(checkAttr->filePaths(), paths);
    (void)checkAttr->run();
    EXPECT_EQ(lastArguments(recorder), command);
    EXPECT_EQ(recorder.lastInvocation().standardInput, "a b\0-x\0\0newline\n\0caf\xE9"s);
}

TEST_F(RVGitCheckAttrCommandTest, WithoutPathsThereIsNoStandardInput) {
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(RVGitCheckAttrCommand(repository()).filePaths() == std::nullopt);
    const auto without =
        RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(repository(), std::nullopt);
    EXPECT_TRUE(without->run());
    EXPECT_EQ(lastArguments(recorder), command);
    EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);
    EXPECT_THAT(without->attributes(), IsEmpty());
    const auto none = RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(
        repository(), std::vector<std::string>());
    EXPECT_TRUE(none->run());
    EXPECT_EQ(recorder.lastInvocation().standardInput, "");
    EXPECT_THAT(none->attributes(), IsEmpty());
}

TEST_F(RVGitCheckAttrCommandTest, ReadsLinesWhereGitPrintsThem) {
    useFakeGit().setAnswer({.standardOutput = "a: text: set\na: diff: unset\nb: text: auto\n"});
    const auto lines = RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(
        repository(), std::vector<std::string>{"a", "b"});
    EXPECT_FALSE(lines->readsNULSeparatedOutput());
    ASSERT_TRUE(lines->run());
    EXPECT_EQ(plainText(lines->attributes()), "a|diff=unset|text=set|\nb|text=auto|\n");
}

TEST_F(RVGitCheckAttrCommandTest, ReadsTheLinesOfGitWithoutZ) {
    writeFile("repository/.gitattributes", "*.c text diff=cpp -merge filter=\n");
    const std::string lines =
        git({"check-attr", "diff", "filter", "ident", "merge", "text", "--", "a.c", "b"},
            repositoryPath());
    EXPECT_EQ(parsed(lines),
              "a.c|diff=cpp|filter=|ident=unspecified|merge=unset|text=set|\n"
              "b|diff=unspecified|filter=unspecified|ident=unspecified|merge=unspecified|"
              "text=unspecified|\n");
}

TEST_F(RVGitCheckAttrCommandTest, WhatGitPrintsWithZIsNoLine) {
    const auto lines = RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(
        repository(), std::vector<std::string>{"a.c"});
    EXPECT_THAT(lines, failsWith(RVGitOutputParserError));
    EXPECT_THAT(lines->attributes(), IsEmpty());
}

TEST_F(RVGitCheckAttrCommandTest, ReadsWhatGitPrintsWithZIfAsked) {
    writeFile("repository/.gitattributes", "*.c text diff=cpp -merge filter=\n");
    const auto triples = RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(
        repository(), std::vector<std::string>{"a.c"});
    triples->setReadsNULSeparatedOutput(true);
    ASSERT_TRUE(triples->run());
    EXPECT_EQ(plainText(triples->attributes()),
              "a.c|delta=unspecified|diff=cpp|encoding=unspecified|eol=unspecified|"
              "export-ignore=unspecified|export-subst=unspecified|filter=|ident=unspecified|"
              "merge=unset|text=set|whitespace=unspecified|\n");
    EXPECT_THAT(triples->takeAttributes(), SizeIs(1));
}

TEST_F(RVGitCheckAttrCommandTest, RequiresARepository) {
    EXPECT_THROW(
        (void)RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(nullptr, std::nullopt),
        RVInvalidParameterException);
}

}  // namespace
