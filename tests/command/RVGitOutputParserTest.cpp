#include "RVGit/command/RVGitOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"

using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;
using namespace std::string_literals;

namespace {

struct Item {
    std::string text;
    int count = 0;
};

/// Keeps every line, counts those that are equal, and cannot read "bad".
class LineParser : public RVGitItemOutputParser<Item> {
public:
    LineParser() = default;
    explicit LineParser(std::string_view outputData, Delimiter delimiter = Delimiter::Newline)
        : RVGitItemOutputParser(outputData, delimiter) {}
    explicit LineParser(std::vector<std::string> outputLines)
        : RVGitItemOutputParser(std::move(outputLines)) {}

    using RVGitOutputParser::regularExpressionWithPattern;

    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> list;
        for (const Item& item : indexedResultCache())
            list.push_back(item.text);
        return list;
    }
    [[nodiscard]] int numberOfCalls() const { return numberOfCalls_; }
    [[nodiscard]] int numberOfFinishes() const { return numberOfFinishes_; }

protected:
    [[nodiscard]] std::string_view parserName() const override { return "LineParser"; }
    bool parseOutputLine(std::string_view line) override {
        ++numberOfCalls_;
        if (line == "bad")
            return false;
        addResult({.text = std::string(line), .count = 1});
        Item& item = resultForKeyMakingIt(line);
        item.text = line;
        ++item.count;
        return true;
    }
    void parsingDidFinish() override { ++numberOfFinishes_; }

private:
    int numberOfCalls_ = 0;
    int numberOfFinishes_ = 0;
};

constexpr auto NULByte = RVGitOutputParser::Delimiter::NULByte;

TEST(RVGitOutputParserTest, EmptyOutputIsReadWithoutAnyCall) {
    LineParser empty("");
    LineParser absent;
    LineParser noLines(std::vector<std::string>{});
    for (LineParser* parser : {&empty, &absent, &noLines}) {
        EXPECT_TRUE(parser->parse());
        EXPECT_EQ(parser->numberOfCalls(), 0);
        EXPECT_EQ(parser->numberOfFinishes(), 0);
    }
    EXPECT_EQ(empty.outputLines(), std::nullopt);
    EXPECT_EQ(absent.outputLines(), std::nullopt);
    EXPECT_THAT(noLines.outputLines(), Optional(IsEmpty()));
}

TEST(RVGitOutputParserTest, OutputOfOnlyNewlinesFinishesWithoutALine) {
    LineParser parser("\n\n");
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(parser.numberOfCalls(), 0);
    EXPECT_EQ(parser.numberOfFinishes(), 1);
    EXPECT_THAT(parser.outputLines(), Optional(ElementsAre("", "", "")));
}

TEST(RVGitOutputParserTest, AFinalNewlineYieldsAFinalEmptyLine) {
    EXPECT_THAT(LineParser("a\nb\n").outputLines(), Optional(ElementsAre("a", "b", "")));
    EXPECT_THAT(LineParser("a\nb").outputLines(), Optional(ElementsAre("a", "b")));
}

TEST(RVGitOutputParserTest, LinesArriveInOrderWithTheirCarriageReturns) {
    LineParser parser("b\r\n\na\nb\r");
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.lines(), ElementsAre("b\r", "a", "b\r"));
    EXPECT_EQ(parser.numberOfFinishes(), 1);
    EXPECT_FALSE(parser.usesNULByteAsNewlineDelimiter());
}

TEST(RVGitOutputParserTest, TheLastPieceOfNULTerminatedOutputIsEmptyAndSkipped) {
    const std::string output = "a\nb\0c\0"s;
    LineParser parser(output, NULByte);
    EXPECT_TRUE(parser.usesNULByteAsNewlineDelimiter());
    EXPECT_THAT(parser.outputLines(), Optional(ElementsAre("a\nb", "c", "")));
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.lines(), ElementsAre("a\nb", "c"));
}

TEST(RVGitOutputParserTest, GivenLinesAreReadAsTheyAre) {
    LineParser parser(std::vector<std::string>{"a", "", "b\nc"});
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.lines(), ElementsAre("a", "b\nc"));
    EXPECT_EQ(parser.numberOfFinishes(), 1);
}

TEST(RVGitOutputParserTest, AParserOfNoFormatReadsEveryLine) {
    auto ofData = RVGitOutputParser::outputParserWithOutputData("a\nb");
    EXPECT_THAT(ofData->outputLines(), Optional(ElementsAre("a", "b")));
    EXPECT_FALSE(ofData->usesNULByteAsNewlineDelimiter());
    EXPECT_TRUE(ofData->parse());
    auto ofLines = RVGitOutputParser::outputParserWithOutputLines({"a\nb"});
    EXPECT_THAT(ofLines->outputLines(), Optional(ElementsAre("a\nb")));
    EXPECT_TRUE(ofLines->parse());
}

TEST(RVGitOutputParserTest, ALineThatCannotBeReadStopsTheParserWithCode11) {
    LineParser parser("one\ntwo\nbad\nfour\n");
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    EXPECT_THAT(parser.lines(), ElementsAre("one", "two"));
    EXPECT_EQ(parser.resultCache().size(), 2U);
    EXPECT_EQ(parser.numberOfFinishes(), 0);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVGitErrorDomain);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_THAT(error->userInfoString(RVGitOutputParserNameErrorKey), Optional(Eq("LineParser")));
    EXPECT_THAT(error->userInfoString(RVGitOutputParserLineErrorKey), Optional(Eq("bad")));
    EXPECT_THAT(error->localizedDescription(), Optional(Eq("Internal Git API Error")));
}

TEST(RVGitOutputParserTest, FailsTheSameInEveryWayOfGivingTheOutput) {
    const std::string records = "one\0bad\0"s;
    LineParser withNULBytes(records, NULByte);
    LineParser withLines(std::vector<std::string>{"one", "bad", "three"});
    LineParser withLatin1("one\nbad\n\xE9\n");
    for (LineParser* parser : {&withNULBytes, &withLines, &withLatin1}) {
        EXPECT_FALSE(parser->parse());
        EXPECT_THAT(parser->lines(), ElementsAre("one"));
        EXPECT_EQ(parser->numberOfFinishes(), 0);
    }
}

TEST(RVGitOutputParserTest, SuccessLeavesTheErrorPlaceAlone) {
    std::optional<RVError> error;
    EXPECT_TRUE(LineParser("a\n").parse(&error));
    EXPECT_EQ(error, std::nullopt);
}

TEST(RVGitOutputParserTest, ParsersNeverShareCaches) {
    LineParser first("a\n");
    LineParser second("b\n");
    EXPECT_TRUE(first.parse());
    EXPECT_THAT(second.resultCache(), IsEmpty());
    EXPECT_THAT(second.indexedResultCache(), IsEmpty());
    EXPECT_TRUE(second.parse());
    EXPECT_THAT(second.lines(), ElementsAre("b"));
}

TEST(RVGitOutputParserTest, ResultsByKeyAreInTheOrderOfTheirFirstAppearance) {
    LineParser parser("b\na\nb\n");
    EXPECT_TRUE(parser.parse());
    ASSERT_EQ(parser.resultCache().size(), 2U);
    EXPECT_EQ(parser.resultCache()[0].text, "b");
    ASSERT_NE(parser.resultForKey("b"), nullptr);
    EXPECT_EQ(parser.resultForKey("b")->count, 2);
    EXPECT_EQ(parser.resultForKey("c"), nullptr);
    EXPECT_EQ(parser.takeResults().size(), 2U);
    EXPECT_EQ(parser.takeIndexedResults().size(), 3U);
}

TEST(RVGitOutputParserTest, LinesThatAreNotUTF8DoNotSpoilTheOthers) {
    LineParser parser("caf\xE9\nth\xC3\xA9\n");
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.lines(), ElementsAre("café", "thé"));
    EXPECT_THAT(parser.outputLines(), Optional(ElementsAre("café", "thé", "")));
}

TEST(RVGitOutputParserTest, RecordsInAnotherEncodingDoNotSpoilTheOthers) {
    const std::string output = "caf\xE9\0th\xC3\xA9\0"s;
    LineParser parser(output, NULByte);
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.lines(), ElementsAre("café", "thé"));
    EXPECT_THAT(parser.outputLines(), Optional(ElementsAre("café", "thé", "")));
}

TEST(RVGitOutputParserTest, ReadsTheLinesThatItCutsWhateverTheBytes) {
    const std::string whole = "a\r\n\nb\0\xC3\xA9\n\xE9\0\0c"s;
    std::mt19937 random(1);
    for (std::size_t offset = 0; offset <= whole.size(); ++offset) {
        for (int flip = 0; flip < 20; ++flip) {
            std::string bytes = whole.substr(0, offset);
            if (flip > 0 && !bytes.empty())
                bytes[random() % bytes.size()] = static_cast<char>(random());
            for (auto delimiter : {RVGitOutputParser::Delimiter::Newline, NULByte}) {
                LineParser parser(bytes, delimiter);
                std::vector<std::string> expected =
                    parser.outputLines().value_or(std::vector<std::string>());
                std::erase(expected, "");
                EXPECT_TRUE(parser.parse());
                EXPECT_EQ(parser.lines(), expected);
                for (const std::string& line : parser.lines())
                    EXPECT_TRUE(isValidUTF8(line));
            }
        }
    }
}

TEST(RVGitOutputParserTest, ALineOfFiftyMegabytesIsOneLine) {
    const std::string output(std::size_t{50} << 20, 'x');
    LineParser parser(output);
    EXPECT_TRUE(parser.parse());
    ASSERT_EQ(parser.indexedResultCache().size(), 1U);
    EXPECT_EQ(parser.indexedResultCache()[0].text.size(), output.size());
}

TEST(RVGitOutputParserTest, CompilesExpressionsForItsSubclasses) {
    auto expression =
        LineParser::regularExpressionWithPattern("^a", RVRegularExpression::CaseInsensitive);
    EXPECT_TRUE(expression.matches("Ab"));
    try {
        (void)LineParser::regularExpressionWithPattern("(a");
        FAIL() << "nothing was thrown";
    } catch (const RVInternalInconsistencyException& exception) {
        EXPECT_THAT(exception.what(),
                    StartsWith("Failed to create regular expression with pattern '(a': "));
    }
}

}  // namespace
