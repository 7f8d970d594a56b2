#include "RVGit/diff/RVGitDiffChunk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVError.h"
#include "RVGit/diff/RVGitDiff.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;

namespace {

using Numbers = std::vector<std::uint32_t>;
using Line = RVGitDiffChunkLine;

std::shared_ptr<RVGitDiffChunk> parsedChunk() {
    const auto diff = RVGitDiff::diffFromRawDiff(
        "diff --git a/x b/x\n+++ b/x\n@@ -3,3 +3,3 @@ section\n a\n-b\n+B\n c\n"
        "\\ No newline at end of file\n");
    return diff->chunks().at(0);
}

TEST(RVGitDiffChunkLineTest, HoldsWhatItIsGiven) {
    const Line line = Line::diffChunkLineWithLineNumbers({4, 7}, RVGitDiffLineAdded, "+", "text");
    EXPECT_EQ(line.lineNumbers(), Numbers({4, 7}));
    EXPECT_EQ(line.lineNumberCount(), 2u);
    EXPECT_EQ(line.lineNumber(1), 7u);
    EXPECT_EQ(line.type(), 1);
    EXPECT_EQ(line.status(), "+");
    EXPECT_EQ(line.content(), "text");
    EXPECT_EQ(line.contentWithStatus(), "+text");
    EXPECT_TRUE(Line({}, RVGitDiffLineContext, "", "").lineNumbers().empty());
}

TEST(RVGitDiffChunkLineTest, TypeIsAskedForByName) {
    for (const auto type : {RVGitDiffLineContext, RVGitDiffLineAdded, RVGitDiffLineDeleted,
                            RVGitDiffLineNoNewlineAtEndOfFile}) {
        const Line line({1, 1}, type, "", "");
        EXPECT_EQ(line.isContextLine(), type == 0);
        EXPECT_EQ(line.isAddedLine(), type == 1);
        EXPECT_EQ(line.isDeletedLine(), type == 2);
        EXPECT_EQ(line.isNoNewlineAtEndOfFileLine(), type == 3);
    }
}

TEST(RVGitDiffChunkTest, ParsedChunk) {
    const auto chunk = parsedChunk();
    EXPECT_EQ(chunk->header(), "@@ -3,3 +3,3 @@ section");
    EXPECT_EQ(chunk->rawChunk(),
              "@@ -3,3 +3,3 @@ section\n a\n-b\n+B\n c\n\\ No newline at end of file\n");
    EXPECT_EQ(chunk->content(), "a\nb\nB\nc\n No newline at end of file\n");
    EXPECT_THAT(chunk->fileRanges(), ElementsAre(RVGitDiffRange{3, 3}, RVGitDiffRange{3, 3}));
    EXPECT_EQ(chunk->lines().size(), 5u);
    EXPECT_EQ(chunk->lines()[1].contentWithStatus(), "-b");
    EXPECT_EQ(chunk->insertions(), 1u);
    EXPECT_EQ(chunk->deletions(), 1u);
    std::string texts;
    for (const Line& line : chunk->lines())
        texts += line.content() + ";";
    EXPECT_EQ(texts, "a;b;B;c; No newline at end of file;");
}

TEST(RVGitDiffChunkTest, LinesAreFoundByTheirNumbers) {
    const auto chunk = parsedChunk();
    EXPECT_EQ(chunk->deletedChunkLineForLineNumber(4)->content(), "b");
    EXPECT_EQ(chunk->addedChunkLineForLineNumber(4)->content(), "B");
    EXPECT_FALSE(chunk->deletedChunkLineForLineNumber(3));
    EXPECT_FALSE(chunk->deletedChunkLineForLineNumber(5));
    EXPECT_FALSE(chunk->addedChunkLineForLineNumber(-1));
    EXPECT_FALSE(chunk->addedChunkLineForLineNumber(0));
    EXPECT_THAT(chunk->deletedLineNumberToLineMapping(), ElementsAre(Key(4)));
    EXPECT_THAT(chunk->addedLineNumberToLineMapping(), ElementsAre(Key(4)));
}

TEST(RVGitDiffChunkTest, AddedLinesOfCombinedDiffsAreKeyedByTheSecondParent) {
    const auto diff = RVGitDiff::diffFromRawDiff(
        "diff --cc x\n+++ b/x\n@@@ -10,1 -20,1 +30,3 @@@\n  a\n++b\n +c\n");
    ASSERT_TRUE(diff);
    const auto chunk = diff->chunks().at(0);
    EXPECT_THAT(chunk->addedLineNumberToLineMapping(), ElementsAre(Key(20)));
    // Of the lines with one number the last counts.
    EXPECT_EQ(chunk->addedChunkLineForLineNumber(20)->content(), "c");
    EXPECT_FALSE(chunk->addedChunkLineForLineNumber(31));
    EXPECT_EQ(chunk->insertions(), 2u);
}

TEST(RVGitDiffChunkTest, MadeOfGivenLines) {
    const auto chunk =
        RVGitDiffChunk::diffChunkWithRawChunk("@@ -1 +1 @@\nraw", {{1, 1}, {1, 1}},
                                              {Line({9, 0}, RVGitDiffLineDeleted, "-", "late"),
                                               Line({2, 0}, RVGitDiffLineDeleted, "-", "early"),
                                               Line({2, 3}, RVGitDiffLineAdded, "+", "")});
    EXPECT_EQ(chunk->rawChunk(), "@@ -1 +1 @@\nraw");
    EXPECT_EQ(chunk->header(), "@@ -1 +1 @@");
    EXPECT_EQ(chunk->content(), "late\nearly\n\n");
    EXPECT_EQ(chunk->deletions(), 2u);
    EXPECT_EQ(chunk->deletedChunkLineForLineNumber(2)->content(), "early");
    EXPECT_EQ(chunk->deletedChunkLineForLineNumber(9)->content(), "late");
    EXPECT_EQ(chunk->addedChunkLineForLineNumber(3)->contentWithStatus(), "+");
    EXPECT_EQ(chunk->lines()[1].lineNumbers(), Numbers({2, 0}));
    EXPECT_THROW(RVGitDiffChunk("", {},
                                {Line({1}, RVGitDiffLineAdded, "+", ""),
                                 Line({1, 2}, RVGitDiffLineAdded, "+", "")}),
                 RVInvalidParameterException);
}

TEST(RVGitDiffChunkTest, ContentWithoutLinesIsALineBreak) {
    const RVGitDiffChunk chunk("@@ -0,0 +0,0 @@\n", {}, {});
    EXPECT_EQ(chunk.content(), "\n");
    EXPECT_TRUE(chunk.lines().empty());
    EXPECT_THAT(chunk.addedLineNumberToLineMapping(), IsEmpty());
}

TEST(RVGitDiffChunkTest, LinesCanBeSearched) {
    const auto diff =
        RVGitDiff::diffFromRawDiff("diff --git a/x b/x\n+++ b/x\n@@ -1,2 +1,2 @@\n a\n-b\n+c\n");
    ASSERT_TRUE(diff);
    const auto& chunk = diff->chunks().at(0);
    const auto found = std::find_if(chunk->lines().begin(), chunk->lines().end(),
                                    [](const auto& line) { return line.isDeletedLine(); });
    ASSERT_FALSE(found == chunk->lines().end());
    EXPECT_EQ((*found).content(), "b");
    EXPECT_TRUE(std::none_of(chunk->lines().begin(), chunk->lines().end(),
                             [](const auto& line) { return line.isNoNewlineAtEndOfFileLine(); }));
}

TEST(RVGitDiffChunkTest, DoesNotKeepItsDiffAlive) {
    auto diff = RVGitDiff::diffFromRawDiff("diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+a\n");
    ASSERT_TRUE(diff);
    const auto chunk = diff->chunks().at(0);
    EXPECT_EQ(chunk->diff(), diff);
    diff.reset();
    EXPECT_EQ(chunk->diff(), nullptr);
    // But all that it shows.
    const Line line = chunk->lines()[0];
    EXPECT_EQ(line.content(), "a");
}

}  // namespace
