#include "RVGit/merge/RVGitMergeTreeCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Parser = RVGitMergeTreeOutputParser;
using Item = RVGitMergeTreeOutputParserResultItem;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";
const std::string otherHash = "89abcdef0123456789abcdef0123456789abcdef";
const std::string thirdHash = "fedcba9876543210fedcba9876543210fedcba98";

std::vector<Item> itemsOf(std::string_view output) {
    Parser parser(output);
    EXPECT_TRUE(parser.parse());
    return parser.takeIndexedResults();
}

std::string sideText(const char* name, const std::optional<std::string>& path,
                     const std::optional<std::string>& objectHash, RVGitFileMode mode) {
    if (!path && !objectHash && mode == RVGitFileModeNone)
        return "";
    return std::string("|") + name + " " + std::to_string(mode) + " " + objectHash.value_or("-") +
           " " + path.value_or("-");
}

std::string textOf(const std::vector<Item>& items) {
    std::string text;
    for (const Item& item : items)
        text +=
            item.message.value_or("-") +
            sideText("base", item.baseFilepath, item.baseObjectHash, item.baseFileMode) +
            sideText("our", item.ourFilepath, item.ourObjectHash, item.ourFileMode) +
            sideText("their", item.theirFilepath, item.theirObjectHash, item.theirFileMode) +
            sideText("result", item.resultFilepath, item.resultObjectHash, item.resultFileMode) +
            (item.isBinaryFile ? "|binary" : "") + "|" + item.diff.value_or("none") + "\n";
    return text;
}

/// What the parser is to do, written down step by step and without any care for speed. It knows
/// no limit of a diff.
std::string textByTheRules(std::string_view output) {
    if (output.empty())
        return "";
    static const RVRegularExpression header(R"(^\s*([a-z]+)\s+([0-7]+)\s+([0-9a-f]{40})\s+(.+)$)",
                                            RVRegularExpression::DotMatchesLineSeparators);
    std::vector<Item> items;
    std::optional<Item> item;
    bool headerComplete = false;
    std::string lastLine;
    std::vector<std::string> lines;
    const auto close = [&] {
        if (!lines.empty())
            item->diff = stringByJoiningComponents(lines, "\n");
        items.push_back(*item);
        lines.clear();
    };
    for (const std::string& line :
         componentsSeparatedByString(stringUsingBestEncoding(output), "\n")) {
        if (line.empty())
            continue;
        if (!item) {
            item.emplace().message = line;
            continue;
        }
        const auto groups = componentsMatchedByRegularExpression(line, header);
        if (groups.empty()) {
            headerComplete = true;
            lines.push_back(line);
        } else {
            if (headerComplete) {
                lines.pop_back();
                close();
                item.emplace().message = lastLine;
                headerComplete = false;
            }
            const RVGitFileMode mode = RVGitFileModeFromString(*groups[2]);
            if (groups[1] == "base")
                item->baseFileMode = mode, item->baseObjectHash = groups[3],
                item->baseFilepath = groups[4];
            if (groups[1] == "our")
                item->ourFileMode = mode, item->ourObjectHash = groups[3],
                item->ourFilepath = groups[4];
            if (groups[1] == "their")
                item->theirFileMode = mode, item->theirObjectHash = groups[3],
                item->theirFilepath = groups[4];
            if (groups[1] == "result")
                item->resultFileMode = mode, item->resultObjectHash = groups[3],
                item->resultFilepath = groups[4];
        }
        lastLine = line;
    }
    if (item) {
        item->isBinaryFile = lines.empty() && item->baseFileMode != RVGitFileModeSubmodule &&
                             item->ourFileMode != RVGitFileModeSubmodule &&
                             item->theirFileMode != RVGitFileModeSubmodule &&
                             item->resultFileMode != RVGitFileModeSubmodule;
        close();
    }
    return textOf(items);
}

const std::string report =
    "changed in both\n  base   100644 " + hash + " a file\n  our    100644 " + otherHash +
    " a file\n  their  100755 " + thirdHash +
    " a file\n@@ -1 +1,5 @@\n+<<<<<<< .our\n ours\n+=======\n+theirs\n"
    "+>>>>>>> .their\nadded in remote\n  their  100644 " +
    hash + " é\n@@ -0,0 +1 @@\n+one\nremoved in both\n  base   160000 " + hash + " module\n";

TEST(RVGitMergeTreeOutputParserTest, ReadsEveryPartOfAnEntry) {
    EXPECT_EQ(textOf(itemsOf(report)),
              "changed in both|base 33188 " + hash + " a file|our 33188 " + otherHash +
                  " a file|their 33277 " + thirdHash +
                  " a file|@@ -1 +1,5 @@\n+<<<<<<< .our\n ours\n+=======\n+theirs\n"
                  "+>>>>>>> .their\n"
                  "added in remote|their 33188 " +
                  hash +
                  " é|@@ -0,0 +1 @@\n+one\n"
                  "removed in both|base 57344 " +
                  hash + " module|none\n");
}

TEST(RVGitMergeTreeOutputParserTest, NoOutputHasNoEntries) {
    EXPECT_THAT(itemsOf(""), IsEmpty());
    EXPECT_THAT(itemsOf("\n\n"), IsEmpty());
}

TEST(RVGitMergeTreeOutputParserTest, TheResultIsASideToo) {
    EXPECT_EQ(
        textOf(itemsOf("merged\n  result 100644 " + hash + " f\n  our    100644 " + otherHash +
                       " f\n@@ -1 +1 @@\n-a\n+b\n")),
        "merged|our 33188 " + otherHash + " f|result 33188 " + hash + " f|@@ -1 +1 @@\n-a\n+b\n");
}

TEST(RVGitMergeTreeOutputParserTest, AnotherWordFillsNothing) {
    EXPECT_EQ(textOf(itemsOf("merged\n  mine   100644 " + hash + " f\n+x\n")), "merged|+x\n");
}

TEST(RVGitMergeTreeOutputParserTest, AnEntryWithoutLinesIsBinaryInTheLastPlaceAlone) {
    const std::string sides =
        "  our    100644 " + hash + " f\n  their  100644 " + otherHash + " f\n";
    const auto items = itemsOf("changed in both\n" + sides + "changed in both\n" + sides);
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_FALSE(items[0].isBinaryFile);
    EXPECT_EQ(items[0].diff, std::nullopt);
    EXPECT_TRUE(items[1].isBinaryFile);
    EXPECT_EQ(items[1].diff, std::nullopt);
}

TEST(RVGitMergeTreeOutputParserTest, ASubmoduleInTheLastPlaceIsNotBinary) {
    for (const char* side : {"base  ", "our   ", "their ", "result"})
        EXPECT_FALSE(
            itemsOf("changed in both\n  " + std::string(side) + " 160000 " + hash + " module\n")[0]
                .isBinaryFile);
}

TEST(RVGitMergeTreeOutputParserTest, ADiffKeepsItsLinesUpToTwentyMebibytes) {
    const std::string head = "merged\n  our    100644 " + hash + " f\n";
    const std::string most = std::string(Parser::maximumDiffSize - 5, '+') + "\n+last";
    auto items = itemsOf(head + most + "\n");
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_TRUE(items[0].diff == most);
    EXPECT_FALSE(items[0].isBinaryFile);

    items = itemsOf(head + most + "!\n");
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].diff, std::nullopt);
    EXPECT_TRUE(items[0].isBinaryFile);
}

TEST(RVGitMergeTreeOutputParserTest, TheNextMessageCountsForTheLimit) {
    const std::string header = "  our    100644 " + hash + " f\n";
    const std::string message = "merged";
    const std::string most(Parser::maximumDiffSize - message.size(), '+');
    auto items = itemsOf("merged\n" + header + most + "\n" + message + "\n" + header + "+x\n");
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_TRUE(items[0].diff == most);
    EXPECT_FALSE(items[0].isBinaryFile);
    EXPECT_EQ(items[1].diff, "+x");

    items = itemsOf("merged\n" + header + most + "+\n" + message + "\n" + header + "+x\n");
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_EQ(items[0].diff, std::nullopt);
    EXPECT_TRUE(items[0].isBinaryFile);
    // What follows is not touched.
    EXPECT_EQ(items[1].message, message);
    EXPECT_EQ(items[1].diff, "+x");
    EXPECT_FALSE(items[1].isBinaryFile);
}

TEST(RVGitMergeTreeOutputParserTest, TheLimitCountsBytesOfUTF8) {
    const std::string head = "merged\n  our    100644 " + hash + " f\n";
    std::string text;
    while (text.size() < Parser::maximumDiffSize)
        text += "é";
    EXPECT_TRUE(itemsOf(head + text)[0].diff.has_value());
    EXPECT_FALSE(itemsOf(head + text + "é")[0].diff.has_value());
}

TEST(RVGitMergeTreeOutputParserTest, LinesMayBeGiven) {
    Parser parser(std::vector<std::string>{"merged", "  our    100644 " + hash + " f", "", "+x"});
    ASSERT_TRUE(parser.parse());
    ASSERT_THAT(parser.indexedResultCache(), SizeIs(1));
    EXPECT_EQ(parser.indexedResultCache()[0].diff, "+x");
}

TEST(RVGitMergeTreeOutputParserTest, PathsMayHoldAnyCharacterButTheNewline) {
    for (const std::string path : {"a b", "a\tb", "a\rb", "a\r", "\"quoted\"", "é\u2028é", "-x",
                                   "base 100644 x", "a\u0085", "\u2028x\u00a0"})
        EXPECT_EQ(itemsOf("merged\n  our    100644 " + hash + " x" + path + "\n")[0].ourFilepath,
                  "x" + path);
}

TEST(RVGitMergeTreeOutputParserTest, DamagedReportsAreReadByTheRules) {
    for (const std::string& damaged : damagedOutputs(report))
        ASSERT_EQ(textOf(itemsOf(damaged)), textByTheRules(damaged))
            << testing::PrintToString(damaged);
}

TEST(RVGitMergeTreeOutputParserTest, RandomReportsAreReadByTheRules) {
    const std::vector<std::string> blanks = {" ",      " ",      " ",      "  ",  "\t",
                                             "\r",     "\f",     "\v",     "",    "\u00a0",
                                             "\u2003", "\u2028", "\u0085", "\x1c"};
    const std::vector<std::string> words = {"base", "our", "their", "result", "x", "Our", "é", ""};
    const std::vector<std::string> modes = {"100644", "160000",     "100755", "7",
                                            "8",      "1006\u0664", ""};
    const std::vector<std::string> hashes = {
        hash, hash, otherHash, hash + "a", hash.substr(1), "0123456789ABCDEF" + hash.substr(16)};
    const std::vector<std::string> paths = {"f",  "a b", " x",     "\tx", "",      " ",
                                            "  ", "é",   "\u00a0", "a\r", "\u2028"};
    const std::vector<std::string> lines = {"changed in both",
                                            "+x",
                                            " x",
                                            "@@ -1 +1 @@",
                                            "-",
                                            "\\ No newline at end of file",
                                            "",
                                            "\r",
                                            "é\xff"};
    std::mt19937 random(20200102);
    const auto oneOf = [&](const std::vector<std::string>& choices) {
        // Mostly what belongs there.
        return choices[random() % 6 != 0 ? 0 : random() % choices.size()];
    };
    std::size_t numberOfSides = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string output;
        for (auto count = random() % 12; count > 0; --count) {
            if (random() % 2 == 0)
                output += lines[random() % lines.size()];
            else
                output += oneOf({"  ", "", "\t", "\u00a0", "+"}) +
                          (random() % 8 == 0 ? oneOf(words) : words[random() % 4]) + oneOf(blanks) +
                          oneOf(modes) + oneOf(blanks) + oneOf(hashes) + oneOf(blanks) +
                          oneOf(paths);
            output += '\n';
        }
        const std::string text = textOf(itemsOf(output));
        ASSERT_EQ(text, textByTheRules(output)) << testing::PrintToString(output);
        numberOfSides += text.find(hash) != std::string::npos;
    }
    EXPECT_GT(numberOfSides, 1000u);
}

class RVGitMergeTreeCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitMergeTreeCommand> command(const std::string& base,
                                                                 const std::string& source,
                                                                 const std::string& target) const {
        return RVGitMergeTreeCommand::gitMergeTreeCommandWithRepository(repository(), base, source,
                                                                        target);
    }
};

TEST_F(RVGitMergeTreeCommandTest, TheTargetStandsAheadOfTheSource) {
    const auto recorder = useRecordingGit();
    const auto tree = command("base", "source", "target");
    EXPECT_EQ(tree->baseTreeRevision(), "base");
    EXPECT_EQ(tree->sourceTreeRevision(), "source");
    EXPECT_EQ(tree->targetTreeRevision(), "target");
    EXPECT_FALSE(tree->hasConflict());
    (void)tree->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("merge-tree", "base", "target", "source"));
}

TEST_F(RVGitMergeTreeCommandTest, ARevisionIsNeverAnOption) {
    const auto recorder = useRecordingGit();
    for (const auto& tree :
         {command("--write-tree", "a", "b"), command("a", "-x", "b"), command("a", "b", "--stdin"),
          command("--all", "a", "b"), command("a", "--not", "b")}) {
        recorder.clear();
        std::optional<RVError> error;
        EXPECT_FALSE(tree->run(&error));
        EXPECT_THAT(recorder.invocations(), IsEmpty());
    }
}

TEST_F(RVGitMergeTreeCommandTest, ReadsWhatGitPrints) {
    commitFile("repository", "both", "one\n", "Base");
    commitFile("repository", "merged", "1\n2\n3\n4\n5\n6\n7\n", "Base");
    const std::string base = gitInRepository({"rev-parse", "HEAD"});
    gitInRepository({"checkout", "-q", "-b", "other"});
    commitFile("repository", "both", "theirs\n", "Their");
    commitFile("repository", "merged", "1\n2\n3\n4\n5\n6\nseven\n", "Their");
    commitFile("repository", "new é", "new\n", "Their");
    gitInRepository({"checkout", "-q", "main"});
    commitFile("repository", "both", "ours\n", "Our");
    commitFile("repository", "merged", "one\n2\n3\n4\n5\n6\n7\n", "Our");
    const auto tree = command(base, "other", "main");
    ASSERT_TRUE(tree->run());
    const auto entries = tree->mergeTreeEntries();
    ASSERT_THAT(entries, SizeIs(3));
    EXPECT_EQ(entries[0]->type(), RVGitMergeTreeEntryTypeChangedInBoth);
    EXPECT_EQ(entries[0]->filePath(), "both");
    EXPECT_TRUE(entries[0]->hasConflict());
    EXPECT_EQ(entries[0]->ourVersion()->objectHash(), gitInRepository({"rev-parse", "main:both"}));
    EXPECT_EQ(entries[0]->theirVersion()->objectHash(),
              gitInRepository({"rev-parse", "other:both"}));
    EXPECT_EQ(entries[0]->baseVersion()->objectHash(),
              gitInRepository({"rev-parse", base + ":both"}));
    EXPECT_EQ(entries[0]->resultVersion(), nullptr);
    EXPECT_EQ(entries[1]->filePath(), "merged");
    EXPECT_FALSE(entries[1]->hasConflict());
    EXPECT_EQ(entries[2]->type(), RVGitMergeTreeEntryTypeAddedInRemote);
    EXPECT_EQ(entries[2]->filePath(), "new é");
    EXPECT_EQ(entries[2]->objectHash(), gitInRepository({"rev-parse", "other:new é"}));
    // A repository of their own, on the same path.
    EXPECT_NE(entries[0]->repository(), repository());
    EXPECT_EQ(entries[0]->repository()->path(), repository()->path());
}

TEST_F(RVGitMergeTreeCommandTest, AnUnknownRevisionIsTheGenericError) {
    makeCommit();
    EXPECT_THAT(command("HEAD", "missing", "HEAD"), failsWith(RVGitRVGitGenericError));
}

}  // namespace
