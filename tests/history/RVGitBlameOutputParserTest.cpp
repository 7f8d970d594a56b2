#include "RVGit/history/RVGitBlameOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "tests/support/RVDamagedOutput.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Item = RVGitBlameOutputParserResultItem;
using OptionalText = std::optional<std::string>;

// Two lines of a commit, one of another between them, which git knows to be a boundary.
constexpr char output[] =
    "dd3a4f7b7b3a5d1c0f8b5a3c7f1e0d9c8b7a6f5e 1 1 1\n"
    "author Marie Curie\n"
    "author-mail <marie@example.org>\n"
    "author-time 1577934245\n"
    "author-tz +0100\n"
    "committer Ir\xC3\xA8ne Joliot\n"
    "committer-mail <irene@example.org>\n"
    "committer-time 1577934300\n"
    "committer-tz -0230\n"
    "summary Weigh the samples\n"
    "previous 9a0b1c2d3e4f5a6b7c8d9e0f1a2b3c4d5e6f7a8b old notes.txt\n"
    "filename notes.txt\n"
    "\tradium\n"
    "0123456789abcdef0123456789abcdef01234567 7 2 1\n"
    "author Pierre\n"
    "author-mail <>\n"
    "author-time 1\n"
    "author-tz +0000\n"
    "committer Pierre\n"
    "committer-mail <>\n"
    "committer-time 2\n"
    "committer-tz +0000\n"
    "summary Begin\n"
    "boundary\n"
    "filename \"tab\\there \\303\\251.txt\"\n"
    "\t\tpolonium \r\n"
    "dd3a4f7b7b3a5d1c0f8b5a3c7f1e0d9c8b7a6f5e 3 3 2\n"
    "\t\n"
    "dd3a4f7b7b3a5d1c0f8b5a3c7f1e0d9c8b7a6f5e 4 4\n"
    "\tauthor X\n";

std::vector<Item> itemsOf(std::string_view text) {
    RVGitBlameOutputParser parser(text);
    EXPECT_TRUE(parser.parse());
    return parser.annotatedLines();
}

Item itemOf(std::string_view text) {
    std::vector<Item> items = itemsOf(text);
    return items.size() == 1 ? items[0] : Item();
}

std::string quoted(const OptionalText& text) {
    return text ? "'" + *text + "'" : "-";
}

/// All fields in one text, for comparison.
std::string text(const Item& item) {
    std::string result;
    for (const OptionalText& value :
         {item.commitHash, item.authorName, item.authorEmail, item.authorTimeZone,
          item.committerName, item.committerEmail, item.committerTimeZone, item.summary,
          item.filePath, item.lineContents})
        result += quoted(value) + " ";
    for (const std::string& hash : item.parentCommitHashes)
        result += "^" + hash + " ";
    for (double timestamp : {item.authorTimestamp, item.committerTimestamp})
        result += std::to_string(timestamp) + " ";
    for (std::uint64_t number : {item.originalLineNumber, item.finalLineNumber, item.lineGroup})
        result += std::to_string(number) + " ";
    return result;
}

std::vector<std::string> texts(const std::vector<Item>& items) {
    std::vector<std::string> result;
    for (const Item& item : items)
        result.push_back(text(item));
    return result;
}

/// The same rules, written the plain way on text.
std::vector<Item> plainItemsOf(std::string_view bytes) {
    std::vector<Item> items;
    std::size_t finishedCount = 0;
    auto valueBehind = [](const std::string& line, const std::string& prefix, OptionalText& value) {
        bool matches = line.compare(0, prefix.size(), prefix) == 0;
        if (matches)
            value = line.substr(prefix.size());
        return matches;
    };
    auto cutCharacters = [](OptionalText& value) {
        std::size_t begin = value->empty() ? 0 : 1;
        while (begin < value->size() && ((*value)[begin] & '\xC0') == '\x80')
            ++begin;
        std::string rest = value->substr(begin);
        while (!rest.empty() && (rest.back() & '\xC0') == '\x80')
            rest.pop_back();
        if (!rest.empty())
            rest.pop_back();
        value = rest;
    };
    for (const std::string& line :
         componentsSeparatedByString(stringUsingBestEncoding(bytes), "\n")) {
        if (line.empty())
            continue;
        if (items.size() != finishedCount + 1) {
            Item item;
            auto pieces = componentsSeparatedByString(line, " ");
            if (pieces.size() >= 3) {
                item.commitHash = pieces[0];
                item.originalLineNumber = static_cast<std::uint64_t>(int32Value(pieces[1]));
                item.finalLineNumber = static_cast<std::uint64_t>(int32Value(pieces[2]));
            }
            if (pieces.size() == 4)
                item.lineGroup = static_cast<std::uint64_t>(int32Value(pieces[3]));
            items.push_back(item);
            continue;
        }
        Item& item = items.back();
        OptionalText value;
        if (valueBehind(line, "author ", item.authorName) ||
            valueBehind(line, "author-tz ", item.authorTimeZone) ||
            valueBehind(line, "committer ", item.committerName) ||
            valueBehind(line, "committer-tz ", item.committerTimeZone) ||
            valueBehind(line, "summary ", item.summary))
            continue;
        if (valueBehind(line, "author-mail ", item.authorEmail))
            cutCharacters(item.authorEmail);
        else if (valueBehind(line, "committer-mail ", item.committerEmail))
            cutCharacters(item.committerEmail);
        else if (valueBehind(line, "author-time ", value))
            item.authorTimestamp = std::strtod(value->c_str(), nullptr);
        else if (valueBehind(line, "committer-time ", value))
            item.committerTimestamp = std::strtod(value->c_str(), nullptr);
        else if (valueBehind(line, "filename ", value))
            item.filePath = unquotedCString(*value);
        else if (valueBehind(line, "previous ", value)) {
            item.parentCommitHashes = componentsSeparatedByString(line, " ");
            item.parentCommitHashes.pop_back();
        } else if (valueBehind(line, "\t", item.lineContents)) {
            ++finishedCount;
        }
    }
    return items;
}

TEST(RVGitBlameOutputParserTest, ReadsEveryField) {
    std::vector<Item> items = itemsOf(output);
    ASSERT_EQ(items.size(), 4u);

    EXPECT_EQ(items[0].commitHash, "dd3a4f7b7b3a5d1c0f8b5a3c7f1e0d9c8b7a6f5e");
    EXPECT_EQ(items[0].authorName, "Marie Curie");
    EXPECT_EQ(items[0].authorEmail, "marie@example.org");
    EXPECT_EQ(items[0].authorTimestamp, 1577934245.0);
    EXPECT_EQ(items[0].authorTimeZone, "+0100");
    EXPECT_EQ(items[0].committerName, "Ir\xC3\xA8ne Joliot");
    EXPECT_EQ(items[0].committerEmail, "irene@example.org");
    EXPECT_EQ(items[0].committerTimestamp, 1577934300.0);
    EXPECT_EQ(items[0].committerTimeZone, "-0230");
    EXPECT_EQ(items[0].summary, "Weigh the samples");
    EXPECT_EQ(items[0].filePath, "notes.txt");
    EXPECT_EQ(items[0].originalLineNumber, 1u);
    EXPECT_EQ(items[0].finalLineNumber, 1u);
    EXPECT_EQ(items[0].lineGroup, 1u);
    EXPECT_EQ(items[0].lineContents, "radium");

    EXPECT_EQ(items[1].commitHash, "0123456789abcdef0123456789abcdef01234567");
    EXPECT_EQ(items[1].originalLineNumber, 7u);
    EXPECT_EQ(items[1].finalLineNumber, 2u);
}

TEST(RVGitBlameOutputParserTest, FurtherLineOfAKnownCommitHasAHeaderAndContentsOnly) {
    std::vector<Item> items = itemsOf(output);
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(text(items[2]),
              "'dd3a4f7b7b3a5d1c0f8b5a3c7f1e0d9c8b7a6f5e' - - - - - - - - '' 0.000000 0.000000 3 "
              "3 2 ");
}

TEST(RVGitBlameOutputParserTest, GroupCountStandsOnTheFirstLineOfAGroupOnly) {
    std::vector<Item> items = itemsOf(output);
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[2].lineGroup, 2u);
    EXPECT_EQ(items[3].lineGroup, 0u);
}

TEST(RVGitBlameOutputParserTest, PreviousGivesItsOwnWordAndTheHashWithoutThePath) {
    EXPECT_THAT(itemOf("a 1 1 1\nprevious b file\n\tx\n").parentCommitHashes,
                ElementsAre("previous", "b"));
    EXPECT_THAT(itemOf("a 1 1 1\n\tx\n").parentCommitHashes, IsEmpty());
}

TEST(RVGitBlameOutputParserTest, PreviousWithABlankInItsPathKeepsThePathUpToTheLastBlank) {
    EXPECT_THAT(itemOf("a 1 1 1\nprevious b my old file\n\tx\n").parentCommitHashes,
                ElementsAre("previous", "b", "my", "old"));
    EXPECT_THAT(itemOf("a 1 1 1\nprevious \n\tx\n").parentCommitHashes, ElementsAre("previous"));
}

TEST(RVGitBlameOutputParserTest, QuotedFileNameIsUnquoted) {
    std::vector<Item> items = itemsOf(output);
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[1].filePath, "tab\there \xC3\xA9.txt");
}

TEST(RVGitBlameOutputParserTest, EmailLosesItsFirstAndLastCharacterWhateverTheyAre) {
    auto emailOf = [](const std::string& value) {
        return itemOf("a 1 1 1\nauthor-mail " + value + "\n\tx\n").authorEmail;
    };
    EXPECT_EQ(emailOf("<a@b>"), "a@b");
    EXPECT_EQ(emailOf("<>"), "");
    EXPECT_EQ(emailOf("<"), "");
    EXPECT_EQ(emailOf(""), "");
    EXPECT_EQ(emailOf("\xC3\xA8x\xE2\x82\xAC"), "x");
}

TEST(RVGitBlameOutputParserTest, ContentsMayLookLikeAnythingElse) {
    EXPECT_EQ(itemOf("a 1 1 1\n\tauthor X\n").lineContents, "author X");
    EXPECT_EQ(itemOf("a 1 1 1\n\t\tpolonium \r\n").lineContents, "\tpolonium \r");
    EXPECT_EQ(itemOf("a 1 1 1\n\t\n").lineContents, "");
    EXPECT_EQ(itemOf(std::string_view("a 1 1 1\n\tx\0y\n", 13)).lineContents,
              std::string("x\0y", 3));
}

TEST(RVGitBlameOutputParserTest, UnknownLinesAreIgnored) {
    EXPECT_EQ(text(itemOf("a 1 2 3\nboundary\nauthor\nignored\nsummaryX\n\tx\n")),
              "'a' - - - - - - - - 'x' 0.000000 0.000000 1 2 3 ");
}

TEST(RVGitBlameOutputParserTest, HeaderNeedsThreePiecesAndTakesAGroupFromExactlyFour) {
    EXPECT_EQ(itemOf("a 1 2\n\tx\n").commitHash, "a");
    EXPECT_EQ(itemOf("a 1 2\n\tx\n").lineGroup, 0u);
    EXPECT_EQ(text(itemOf("a 1 2 3 4\n\tx\n")), "'a' - - - - - - - - 'x' 0.000000 0.000000 1 2 0 ");
    EXPECT_EQ(text(itemOf("a 1\n\tx\n")), "- - - - - - - - - 'x' 0.000000 0.000000 0 0 0 ");
    EXPECT_EQ(text(itemOf("a\n\tx\n")), "- - - - - - - - - 'x' 0.000000 0.000000 0 0 0 ");
}

TEST(RVGitBlameOutputParserTest, NumbersAreReadAsSigned32BitOnes) {
    Item item = itemOf("a 99999999999 -1 2x\n\tx\n");
    EXPECT_EQ(item.originalLineNumber, 2147483647u);
    EXPECT_EQ(item.finalLineNumber, ~std::uint64_t{0});
    EXPECT_EQ(item.lineGroup, 2u);
}

TEST(RVGitBlameOutputParserTest, TimestampsAreNumbersAtTheStart) {
    auto timestampOf = [](const std::string& value) {
        return itemOf("a 1 1 1\nauthor-time " + value + "\n\tx\n").authorTimestamp;
    };
    EXPECT_EQ(timestampOf("1.5"), 1.5);
    EXPECT_EQ(timestampOf("-86400"), -86400.0);
    EXPECT_EQ(timestampOf(" +7 s"), 7.0);
    EXPECT_EQ(timestampOf("nan"), 0.0);
    EXPECT_EQ(timestampOf("inf"), 0.0);
    EXPECT_EQ(timestampOf("soon"), 0.0);
}

TEST(RVGitBlameOutputParserTest, DatesAreMadeOfTheTimestampsOnceAndKept) {
    std::vector<Item> items = itemsOf(output);
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].authorDate(), RVDate(std::chrono::seconds(1577934245)));
    EXPECT_EQ(items[0].committerDate(), RVDate(std::chrono::seconds(1577934300)));
    items[0].authorTimestamp = 5;
    items[0].committerTimestamp = 6;
    EXPECT_EQ(items[0].authorDate(), RVDate(std::chrono::seconds(1577934245)));
    EXPECT_EQ(items[0].committerDate(), RVDate(std::chrono::seconds(1577934300)));

    Item blank;
    EXPECT_EQ(blank.authorDate(), RVDate());
    blank.committerTimestamp = 1e300;
    EXPECT_GT(blank.committerDate(), RVDate(std::chrono::years(1000000)));
}

TEST(RVGitBlameOutputParserTest, NoOutputGivesNoLines) {
    EXPECT_THAT(itemsOf(""), IsEmpty());
    EXPECT_THAT(itemsOf("\n\n"), IsEmpty());
}

TEST(RVGitBlameOutputParserTest, LastLineNeedsNoNewline) {
    EXPECT_EQ(itemOf("a 1 1 1\n\tx").lineContents, "x");
}

TEST(RVGitBlameOutputParserTest, ItemThatIsCutOffKeepsWhatWasRead) {
    RVGitBlameOutputParser parser("a 1 1 1\n\tx\nb 2 2 1\nauthor B\n");
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(parser.currentLineNumber(), 1u);
    ASSERT_EQ(parser.annotatedLines().size(), 2u);
    EXPECT_EQ(parser.annotatedLines()[1].authorName, "B");
    EXPECT_EQ(parser.annotatedLines()[1].lineContents, std::nullopt);
}

TEST(RVGitBlameOutputParserTest, LinesThatAreNoUTF8DoNotSpoilTheOthers) {
    Item item = itemOf("a 1 1 1\nauthor Ir\xC3\xA8ne\n\tcaf\xE9\n");
    EXPECT_EQ(item.lineContents, "caf\xC3\xA9");
    EXPECT_EQ(item.authorName, "Ir\xC3\xA8ne");
}

TEST(RVGitBlameOutputParserTest, GivenLinesAreReadLikeOutput) {
    RVGitBlameOutputParser parser(std::vector<std::string>{"a 1 1 1", "", "\tx"});
    EXPECT_TRUE(parser.parse());
    ASSERT_EQ(parser.annotatedLines().size(), 1u);
    EXPECT_EQ(parser.annotatedLines()[0].lineContents, "x");
}

TEST(RVGitBlameOutputParserTest, AgreesWithThePlainRulesOnDamagedOutput) {
    ASSERT_EQ(texts(itemsOf(output)), texts(plainItemsOf(output)));
    for (const std::string& damaged : damagedOutputs(output))
        ASSERT_EQ(texts(itemsOf(damaged)), texts(plainItemsOf(damaged))) << damaged;
}

TEST(RVGitBlameOutputParserTest, AgreesWithThePlainRulesOnShuffledLines) {
    const std::vector<std::string> lines = {"a 1 2 3",
                                            "b 4 5",
                                            "c 6",
                                            "\tcontents",
                                            "\t",
                                            "author A",
                                            "author ",
                                            "author-mail <a>",
                                            "author-time 12",
                                            "author-tz +1",
                                            "committer C",
                                            "committer-mail <\xC3\xA9>",
                                            "committer-time -3",
                                            "committer-tz z",
                                            "summary S",
                                            "previous p q",
                                            "filename \"\\\"\"",
                                            "filename f",
                                            "boundary",
                                            "",
                                            " ",
                                            "\r",
                                            "a  1 2",
                                            "d 1 2 3 4"};
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string shuffled;
        for (auto count = random() % 30; count > 0; --count)
            shuffled += lines[random() % lines.size()] + (random() % 20 ? "\n" : "\r\n");
        ASSERT_EQ(texts(itemsOf(shuffled)), texts(plainItemsOf(shuffled))) << shuffled;
    }
}

}  // namespace
