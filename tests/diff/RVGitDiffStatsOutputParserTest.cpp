#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Item = RVGitDiffStatsOutputParserResultItem;

const std::string hash1 = "0123456789abcdef0123456789abcdef01234567";
const std::string hash2 = "89abcdef0123456789abcdef0123456789abcdef";
const std::string hash3 = "fedcba9876543210fedcba9876543210fedcba98";
const std::string hashes = hash1 + " " + hash2 + " ";

std::string text(const Item& item) {
    std::string line = RVGitShortStringForFileStatus(item.fileStatus).value_or("-") +
                       std::to_string(item.fileStatusSimilarityIndex) + " " +
                       stringByJoiningComponents(item.originalFileModes, ",") + ">" +
                       std::to_string(item.fileMode) + " " +
                       stringByJoiningComponents(item.originalObjectHashes, ",") + ">" +
                       item.objectHash + " +" + std::to_string(item.linesAdded) + " -" +
                       std::to_string(item.linesDeleted);
    line += " " + item.originalFilePath.value_or("(none)") + " > " +
            item.filePath.value_or("(none)") + "\n";
    return line;
}

std::string text(const std::vector<Item>& items) {
    std::string lines;
    for (const Item& item : items)
        lines += text(item);
    return lines;
}

std::vector<Item> parse(std::string_view output) {
    RVGitDiffStatsOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    return parser.takeIndexedResults();
}

/// "2-1 name" of each: the counts and the path.
std::vector<std::string> counts(std::string_view output) {
    std::vector<std::string> list;
    for (const Item& item : parse(output))
        list.push_back(std::to_string(item.linesAdded) + "-" + std::to_string(item.linesDeleted) +
                       " " + item.filePath.value_or("(none)"));
    return list;
}

std::string raw(const std::string& status, const std::string& path) {
    return ":100644 100644 " + hashes + status + '\0' + path + '\0';
}

/// The same, the plain way: by nothing but the regular expressions.
std::string parsedByExpressions(std::string_view output) {
    static const RVRegularExpression rawExpression(
        R"(:+((\d{6} )+)(([a-f0-9]{40} )+)([ADMCR])([ADMCR])?(\d{1,3})?)");
    static const RVRegularExpression numstatExpression(R"(^(\d+)\t(\d+)\t(.+)?)");
    std::vector<Item> items;
    std::size_t index = 0;
    bool nextIsPath = false;
    bool nextIsOldPath = false;
    bool nextIsNewPath = false;
    for (std::string_view bytes : componentsSeparatedByNULByte(output)) {
        if (bytes.empty())
            continue;
        const std::string decoded = stringUsingBestEncoding(bytes);
        const std::string line(trimmedNewlines(decoded));
        if (nextIsPath) {
            items.back().filePath = items.back().originalFilePath = line;
            nextIsPath = false;
            continue;
        }
        if (nextIsOldPath) {
            items.back().originalFilePath = line;
            nextIsOldPath = false;
            nextIsNewPath = true;
            continue;
        }
        if (nextIsNewPath) {
            items.back().filePath = line;
            nextIsNewPath = false;
            continue;
        }
        auto groups = componentsMatchedByRegularExpression(line, rawExpression);
        if (!groups.empty()) {
            Item item;
            item.originalFileModes =
                componentsSeparatedByString(stringByTrimmingWhitespaceAndNewline(*groups[1]), " ");
            item.fileMode = RVGitFileModeFromString(item.originalFileModes.back());
            item.originalFileModes.pop_back();
            item.originalObjectHashes =
                componentsSeparatedByString(stringByTrimmingWhitespaceAndNewline(*groups[3]), " ");
            item.objectHash = item.originalObjectHashes.back();
            item.originalObjectHashes.pop_back();
            item.fileStatus = RVGitFileStatusFromString(*groups[5]);
            nextIsOldPath = groups[7] && !groups[7]->empty();
            nextIsPath = !nextIsOldPath;
            if (nextIsOldPath)
                item.fileStatusSimilarityIndex =
                    static_cast<std::uint64_t>(integerValue(*groups[7]));
            items.push_back(item);
            continue;
        }
        groups = componentsMatchedByRegularExpression(line, numstatExpression);
        if (groups.empty())
            continue;
        if (index < items.size()) {
            items[index].linesAdded = static_cast<std::uint64_t>(integerValue(*groups[1]));
            items[index].linesDeleted = static_cast<std::uint64_t>(integerValue(*groups[2]));
        }
        ++index;
    }
    return text(items);
}

void expectTheSameAsByExpressions(const std::string& output) {
    ASSERT_EQ(text(parse(output)), parsedByExpressions(output)) << testing::PrintToString(output);
}

TEST(RVGitDiffStatsOutputParserTest, ReadsAModifiedFile) {
    EXPECT_EQ(text(parse(":100644 100755 " + hashes + "M\0dir/a b\0"s + "2\t1\tdir/a b\0"s)),
              "M0 100644>33277 " + hash1 + ">" + hash2 + " +2 -1 dir/a b > dir/a b\n");
}

TEST(RVGitDiffStatsOutputParserTest, ReadsAddedAndDeletedFiles) {
    const std::string null(40, '0');
    EXPECT_EQ(text(parse(":000000 100644 " + null + " " + hash1 + " A\0new\0"s +  //
                         ":120000 000000 " + hash2 + " " + null + " D\0gone\0"s + "1\t0\tnew\0"s +
                         "0\t1\tgone\0"s)),
              "A0 000000>33188 " + null + ">" + hash1 + " +1 -0 new > new\n" +  //
                  "D0 120000>33188 " + hash2 + ">" + null + " +0 -1 gone > gone\n");
}

TEST(RVGitDiffStatsOutputParserTest, ARenameHasBothPathsAndItsSimilarity) {
    const std::string output = ":100644 100644 " + hash1 + " " + hash2 + " R100\0old\0new\0"s +
                               ":100644 100644 " + hash1 + " " + hash2 + " C075\0from\0to\0"s +
                               "0\t0\t\0old\0new\0"s + "3\t4\t\0from\0to\0"s;
    EXPECT_EQ(text(parse(output)),
              "R100 100644>33188 " + hash1 + ">" + hash2 + " +0 -0 old > new\n" +  //
                  "C75 100644>33188 " + hash1 + ">" + hash2 + " +3 -4 from > to\n");
}

TEST(RVGitDiffStatsOutputParserTest, AMergeHasAModeAndAHashForEachParent) {
    const std::string output =
        "2\t1\tf\0"s + "::100644 100755 100644 " + hash1 + " " + hash2 + " " + hash3 + " MM\0f\0"s;
    EXPECT_EQ(text(parse(output)),
              "M0 100644,100755>33188 " + hash1 + "," + hash2 + ">" + hash3 + " +0 -0 f > f\n");
}

TEST(RVGitDiffStatsOutputParserTest, AMergeOfEightParentsIsRead) {
    std::string modes;
    std::string parents;
    for (int parent = 0; parent < 8; ++parent) {
        modes += "100644 ";
        parents += hash1 + " ";
    }
    const auto items = parse("::::::::" + modes + "100644 " + parents + hash2 + " MMMMMMMM\0f\0"s);
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_THAT(items[0].originalFileModes, SizeIs(8));
    EXPECT_THAT(items[0].originalObjectHashes, SizeIs(8));
    EXPECT_EQ(items[0].objectHash, hash2);
    EXPECT_EQ(items[0].filePath, "f");
}

TEST(RVGitDiffStatsOutputParserTest, PathsLoseNewlinesAtTheirEndsOnly) {
    const auto items =
        parse(raw("M", "\n\r a\nb \n") + ":100644 100644 " + hashes + "R050\0\nold\n\0\nnew\n\0"s);
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_EQ(items[0].filePath, " a\nb ");
    EXPECT_EQ(items[0].originalFilePath, " a\nb ");
    EXPECT_EQ(items[1].originalFilePath, "old");
    EXPECT_EQ(items[1].filePath, "new");
}

TEST(RVGitDiffStatsOutputParserTest, APathOfNewlinesAloneIsEmpty) {
    EXPECT_THAT(counts(raw("M", "\n") + "1\t2\t\n\0"s), ElementsAre("1-2 "));
}

TEST(RVGitDiffStatsOutputParserTest, PathsThatLookLikeRecordsArePaths) {
    EXPECT_THAT(
        counts(raw("M", "1\t2\tx") + raw("M", raw("M", "x").substr(0, 98)) + "3\t4\t1\t2\tx\0"s),
        ElementsAre("3-4 1\t2\tx", "0-0 " + raw("M", "x").substr(0, 98)));
}

TEST(RVGitDiffStatsOutputParserTest, FilesBehindABinaryOneTakeTheCountsOfTheNextRow) {
    EXPECT_THAT(counts(raw("M", "a") + raw("M", "b.bin") + raw("M", "c") + raw("M", "d") +
                       "1\t1\ta\0-\t-\tb.bin\0"s + "3\t3\tc\0"s + "4\t4\td\0"s),
                ElementsAre("1-1 a", "3-3 b.bin", "4-4 c", "0-0 d"));
}

TEST(RVGitDiffStatsOutputParserTest, TypeChangesAndUnmergedFilesAreNoItemsAndShiftTheCounts) {
    EXPECT_THAT(counts(raw("T", "link") + raw("U", "conflict") + raw("M", "a") + raw("M", "b") +
                       "1\t1\tlink\0"s + "0\t0\tconflict\0"s + "3\t3\ta\0"s + "4\t4\tb\0"s),
                ElementsAre("1-1 a", "0-0 b"));
}

TEST(RVGitDiffStatsOutputParserTest, AFileWithoutARowKeepsZeroes) {
    EXPECT_THAT(counts(raw("M", "a") + raw("M", "b") + "1\t2\ta\0"s),
                ElementsAre("1-2 a", "0-0 b"));
}

TEST(RVGitDiffStatsOutputParserTest, ARowBeyondTheLastItemIsDroppedAndCounted) {
    const std::string output =
        "1\t1\tx\0"s + raw("M", "a") + raw("M", "b") + "2\t2\ta\0"s + "3\t3\tb\0"s;
    RVGitDiffStatsOutputParser parser(output);
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(parser.numstatsFileIndex(), 3u);
    EXPECT_THAT(counts(output), ElementsAre("0-0 a", "2-2 b"));
}

TEST(RVGitDiffStatsOutputParserTest, ItTellsWhichPathIsDue) {
    const std::string record = ":100644 100644 " + hashes;
    RVGitDiffStatsOutputParser modified(std::vector<std::string>{record + "M"});
    ASSERT_TRUE(modified.parse());
    EXPECT_TRUE(modified.nextLineIsFilePath());
    RVGitDiffStatsOutputParser renamed(std::vector<std::string>{record + "R090"});
    ASSERT_TRUE(renamed.parse());
    EXPECT_TRUE(renamed.nextLineIsCopiedOrRenamedOldFilePath());
    RVGitDiffStatsOutputParser halfRenamed(std::vector<std::string>{record + "R090", "old"});
    ASSERT_TRUE(halfRenamed.parse());
    EXPECT_FALSE(halfRenamed.nextLineIsFilePath());
    EXPECT_FALSE(halfRenamed.nextLineIsCopiedOrRenamedOldFilePath());
    EXPECT_TRUE(halfRenamed.nextLineIsCopiedOrRenamedFilePath());
    EXPECT_EQ(halfRenamed.indexedResultCache()[0].originalFilePath, "old");
    EXPECT_EQ(halfRenamed.indexedResultCache()[0].filePath, std::nullopt);
}

TEST(RVGitDiffStatsOutputParserTest, NothingGivesNoItems) {
    EXPECT_THAT(parse(""), IsEmpty());
    EXPECT_THAT(parse("\0\n\0nonsense\0:\0\t\t\0"s), IsEmpty());
}

TEST(RVGitDiffStatsOutputParserTest, ColonsAloneCostNoMoreThanTheirNumber) {
    const std::string colons(100000, ':');
    EXPECT_THAT(parse(colons), IsEmpty());
    EXPECT_THAT(parse(colons + raw("M", "a")), SizeIs(1));
}

TEST(RVGitDiffStatsOutputParserTest, PathsAreDecodedOneByOne) {
    EXPECT_THAT(counts(raw("M", "caf\xE9") + raw("M", "caf\xC3\xA9")),
                ElementsAre("0-0 caf\xC3\xA9", "0-0 caf\xC3\xA9"));
}

TEST(RVGitDiffStatsOutputParserTest, DamagedOutputIsReadAsTheExpressionsReadIt) {
    for (const std::string& output :
         {raw("M", "a") + "1\t20\ta\0"s,
          ":100644 100644 " + hashes + "R095\0o\0n\0"s + "3\t4\t\0o\0n\0"s,
          "::100644 100644 100755 " + hash3 + " " + hashes + "AM\0f\0"s})
        for (const std::string& damaged : damagedOutputs(output))
            expectTheSameAsByExpressions(damaged);
}

TEST(RVGitDiffStatsOutputParserTest, RandomRecordsAreReadAsTheExpressionsReadThem) {
    // What records are made of, and what the expressions take for it: digits of other scripts,
    // colons and whole records within the text.
    const std::string pieces[] = {":",           "::",
                                  "100644 ",     "100755 ",
                                  "12345 ",      "１００６４４ ",
                                  hash1 + " ",   hash2 + " ",
                                  hash1,         "g" + hash1 + " ",
                                  "M",           "A",
                                  "R",           "D",
                                  "T",           "M",
                                  "100",         "95",
                                  "1",           "٣",
                                  "1234",        "\t",
                                  "1\t2\t",      "٣\t1\t",
                                  "1\t٣\t",      "-\t-\t",
                                  "x",           "é",
                                  "\n",          "\xE9",
                                  " ",           "\u0085",
                                  raw("M", "a"), "99999999999999999999\t1\t"};
    std::mt19937 random(1);
    const auto upTo = [&](std::size_t count) { return random() % count; };
    for (int round = 0; round < 20000; ++round) {
        std::string output;
        for (std::size_t record = upTo(4); record > 0; --record) {
            const bool isLikely = upTo(2) == 0;
            if (isLikely)
                output += pieces[upTo(2)] + pieces[2 + upTo(4)] + pieces[2 + upTo(4)] +
                          pieces[6 + upTo(2)] + pieces[6 + upTo(2)] + pieces[10 + upTo(6)];
            for (std::size_t piece = upTo(isLikely ? 3 : 8); piece > 0; --piece)
                output += pieces[upTo(std::size(pieces))];
            output += '\0';
            for (std::size_t path = upTo(3); path > 0; --path)
                output += pieces[upTo(std::size(pieces))] + '\0';
        }
        expectTheSameAsByExpressions(output);
        if (HasFatalFailure())
            return;
    }
}

}  // namespace
