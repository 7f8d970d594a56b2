#include <gtest/gtest.h>

#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffPatchGenerator.h"

namespace {

using Lines = RVGitDiffPatchGenerator::Lines;

constexpr int indexMode = RVGitDiffPatchGenerator::IndexMode;
constexpr int worktreeMode = RVGitDiffPatchGenerator::WorktreeMode;

const std::string fileHeader =
    "diff --git a/f b/f\nindex 1111111..2222222 100644\n--- a/f\n+++ b/f\n";
const std::string marker = "\\ No newline at end of file\n";
const std::string nullHash(40, '0');

std::optional<RVData> patchOf(const std::string& rawDiff, const Lines& lines, int mode) {
    const auto diff = RVGitDiff::diffFromRawDiff(rawDiff);
    EXPECT_NE(diff, nullptr);
    const auto patch = RVGitDiffPatchGenerator(diff).locatedPatchForLinesWithIndexes(lines, mode);
    EXPECT_EQ(patch, mode == indexMode ? diff->locatedIndexPatchForLinesWithIndexes(lines)
                                       : diff->locatedWorktreePatchForLinesWithIndexes(lines));
    return patch;
}

TEST(RVGitLocatedPatchTest, EveryChunkCarriesTheLocationOfTheBase) {
    const std::string diff = fileHeader +
                             "@@ -1,2 +1,4 @@\n+a\n+b\n c\n d\n"
                             "@@ -10,3 +12,3 @@ f\n a\n-b\n+c\n d\n"
                             "@@ -20,3 +22,2 @@\n a\n-b\n c\n";
    EXPECT_EQ(patchOf(diff, {{1, {1, 2}}}, indexMode),
              fileHeader + "@@ -10,3 +10,3 @@\n a\n-b\n+c\n d\n");
    EXPECT_EQ(patchOf(diff, {{1, {1, 2}}}, worktreeMode),
              fileHeader + "@@ -12,3 +12,3 @@\n a\n-b\n+c\n d\n");
    // Those of the patch itself count.
    EXPECT_EQ(patchOf(diff, {{0, {1}}, {2, {1}}}, indexMode),
              fileHeader + "@@ -1,2 +1,3 @@\n+b\n c\n d\n@@ -20,3 +21,2 @@\n a\n-b\n c\n");
    EXPECT_EQ(patchOf(diff, {{0, {1}}, {2, {1}}}, worktreeMode),
              fileHeader + "@@ -1,3 +1,4 @@\n a\n+b\n c\n d\n@@ -21,3 +22,2 @@\n a\n-b\n c\n");
}

TEST(RVGitLocatedPatchTest, WithoutContextLinesThatStayAreNoContext) {
    const std::string diff = fileHeader + "@@ -5,2 +5,2 @@\n-a\n-b\n+c\n+d\n@@ -9,0 +10 @@\n+e\n";
    EXPECT_EQ(patchOf(diff, {{0, {1, 3}}, {1, {0}}}, indexMode),
              fileHeader + "@@ -6,1 +6,1 @@\n-b\n+d\n@@ -9,0 +10,1 @@\n+e\n");
    EXPECT_EQ(patchOf(diff, {{0, {0, 3}}}, indexMode),
              fileHeader + "@@ -5,1 +5,0 @@\n-a\n@@ -6,0 +6,1 @@\n+d\n");
    EXPECT_EQ(patchOf(diff, {{0, {0, 3}}}, worktreeMode),
              fileHeader + "@@ -5,1 +4,0 @@\n-a\n@@ -7,0 +6,1 @@\n+d\n");
}

TEST(RVGitLocatedPatchTest, OfNoChangesThereIsNoPatch) {
    const std::string diff = fileHeader + "@@ -1,2 +1,2 @@\n-a\n+b\n c\n";
    EXPECT_EQ(patchOf(diff, {}, indexMode), std::nullopt);
    EXPECT_EQ(patchOf(diff, {{0, {}}}, indexMode), std::nullopt);
    EXPECT_EQ(patchOf(diff, {{0, {2, 17}}}, worktreeMode), std::nullopt);
}

TEST(RVGitLocatedPatchTest, OfAChunkThatIsCutOffThereIsNoPatch) {
    EXPECT_EQ(patchOf(fileHeader + "@@ -1,3 +1,2 @@\n-a\n c\n", {{0, {0}}}, indexMode),
              std::nullopt);
}

TEST(RVGitLocatedPatchTest, MissingNewlinesNeedNoSelection) {
    const std::string diff = fileHeader + "@@ -1 +1,2 @@\n-a\n" + marker + "+a\n+b\n" + marker;
    EXPECT_EQ(patchOf(diff, {{0, {0, 2, 3}}}, indexMode),
              fileHeader + "@@ -1,1 +1,2 @@\n-a\n" + marker + "+a\n+b\n" + marker);
    // What stays gets a newline where more follows it.
    EXPECT_EQ(patchOf(diff, {{0, {3}}}, indexMode),
              fileHeader + "@@ -1,1 +1,2 @@\n-a\n" + marker + "+a\n+b\n" + marker);
    EXPECT_EQ(patchOf(diff, {{0, {0, 2}}}, indexMode),
              fileHeader + "@@ -1,1 +1,1 @@\n-a\n" + marker + "+a\n");
    EXPECT_EQ(patchOf(diff, {{0, {3}}}, worktreeMode),
              fileHeader + "@@ -2,0 +2,1 @@\n+b\n" + marker);
    EXPECT_EQ(patchOf(diff, {{0, {0}}}, worktreeMode), fileHeader + "@@ -1,1 +0,0 @@\n-a\n");
    const std::string context = fileHeader + "@@ -1,2 +1,2 @@\n-a\n+b\n z\n" + marker;
    EXPECT_EQ(patchOf(context, {{0, {0, 1}}}, indexMode),
              fileHeader + "@@ -1,2 +1,2 @@\n-a\n+b\n z\n" + marker);
}

const std::string newFile =
    "diff --git a/n b/n\nnew file mode 100644\nindex 0000000..2222222\n--- /dev/null\n+++ b/n\n";
const std::string deletedFile =
    "diff --git a/d b/d\ndeleted file mode 100644\nindex 1111111..0000000\n--- a/d\n"
    "+++ /dev/null\n";

TEST(RVGitLocatedPatchTest, ANewFileStaysWhileALineStays) {
    const std::string diff = newFile + "@@ -0,0 +1,3 @@\n+a\n+b\n+c\n";
    const std::string header =
        "diff --git a/n b/n\nindex " + nullHash + "..2222222\n--- a/n\n+++ b/n\n";
    EXPECT_EQ(patchOf(diff, {{0, {0, 2}}}, indexMode), newFile + "@@ -0,0 +1,2 @@\n+a\n+c\n");
    EXPECT_EQ(patchOf(diff, {{0, {1}}}, worktreeMode), header + "@@ -1,2 +1,3 @@\n a\n+b\n c\n");
    EXPECT_EQ(patchOf(diff, {{0, {0, 1, 2}}}, worktreeMode),
              newFile + "@@ -0,0 +1,3 @@\n+a\n+b\n+c\n");
}

TEST(RVGitLocatedPatchTest, ADeletedFileStaysWhileALineStays) {
    const std::string diff = deletedFile + "@@ -1,2 +0,0 @@\n-a\n-b\n";
    EXPECT_EQ(patchOf(diff, {{0, {0}}}, indexMode),
              "diff --git a/d b/d\nindex 1111111.." + nullHash +
                  "\n--- a/d\n+++ b/d\n@@ -1,2 +1,1 @@\n-a\n b\n");
    EXPECT_EQ(patchOf(diff, {{0, {0, 1}}}, indexMode), deletedFile + "@@ -1,2 +0,0 @@\n-a\n-b\n");
    EXPECT_EQ(patchOf(diff, {{0, {1}}}, worktreeMode), deletedFile + "@@ -1,1 +0,0 @@\n-b\n");
}

TEST(RVGitLocatedPatchTest, ALineThatLooksLikeAHeaderIsALine) {
    const std::string diff = fileHeader + "@@ -1,3 +1,2 @@\n a\n--- x\n c\n";
    EXPECT_EQ(patchOf(diff, {{0, {1}}}, indexMode), diff);
}

TEST(RVGitLocatedPatchTest, NeedsChunksOfAnOrdinaryDiff) {
    const std::string combined =
        "diff --cc f\nindex 1111111,2222222..3333333\n--- a/f\n+++ b/f\n"
        "@@@ -1,2 -3,2 +5,3 @@@\n  a\n- b\n +c\n";
    const auto diff = RVGitDiff::diffFromRawDiff(combined);
    ASSERT_TRUE(diff);
    EXPECT_THROW((void)diff->locatedIndexPatchForLinesWithIndexes({{0, {1}}}),
                 RVInvalidParameterException);
    EXPECT_THROW((void)diff->locatedIndexPatchForLinesWithIndexes({{1, {1}}}),
                 RVInvalidParameterException);
}

// The bytes beside the text.

TEST(RVGitDiffBytesTest, StandBesideTheTextOfEachLine) {
    const RVData raw =
        "diff --git a/caf\xE9 b/caf\xE9\nindex 1111111..2222222 100644\n--- a/caf\xE9\n"
        "+++ b/caf\xE9\n@@ -1,3 +1,3 @@ na\xEFve\n \xC3\xBC\n-\xE9\n+\xE8\n c\n" +
        marker;
    const auto diff = RVGitDiff::diffFromRawDiff(raw);
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->filePath(), "café");
    EXPECT_EQ(diff->rawDiffBytes(), raw);
    EXPECT_EQ(diff->headerBytes(), raw.substr(0, raw.find("@@")));
    EXPECT_EQ(diff->chunks()[0]->rawChunkBytes(), raw.substr(raw.find("@@")));
    EXPECT_EQ(diff->patchForChunkAtIndex(0), raw);
    const auto& lines = diff->chunks()[0]->lines();
    EXPECT_EQ(lines[0].content(), "ü");
    EXPECT_EQ(lines[0].contentBytes(), "ü");
    EXPECT_EQ(lines[1].content(), "é");
    EXPECT_EQ(lines[1].contentWithStatus(), "-é");
    EXPECT_EQ(lines[1].contentBytes(), "\xE9");
    EXPECT_EQ(lines[1].contentWithStatusBytes(), "-\xE9");
    EXPECT_EQ(lines[4].contentWithStatusBytes(), marker.substr(0, marker.size() - 1));
    // A chunk that is made of lines keeps theirs.
    const auto chunk = RVGitDiffChunk::diffChunkWithRawChunk(
        "@@ -1 +1 @@\n", diff->chunks()[0]->fileRanges(), {lines[0], lines[1], lines[2]});
    EXPECT_EQ(chunk->lines()[1].contentBytes(), "\xE9");
    EXPECT_EQ(chunk->lines()[1].content(), "é");
    EXPECT_EQ(chunk->lines()[2].contentWithStatusBytes(), "+\xE8");
    EXPECT_EQ(chunk->lines()[0].contentWithStatusBytes(), " ü");
    // A text that is set is what counts.
    diff->setHeader("header");
    EXPECT_EQ(diff->headerBytes(), "header");
}

TEST(RVGitDiffBytesTest, BlankLinesAreLeftOut) {
    const RVData raw =
        "diff --git a/f b/f\n\nindex 1..2\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-\xE9\n\n\n+\xE8";
    const auto diff = RVGitDiff::diffFromRawDiff(raw);
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->rawDiff(),
              "diff --git a/f b/f\nindex 1..2\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-é\n+è\n");
    EXPECT_EQ(diff->rawDiffBytes(),
              "diff --git a/f b/f\nindex 1..2\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-\xE9\n+\xE8\n");
    EXPECT_EQ(diff->chunks()[0]->lines()[1].contentBytes(), "\xE8");
}

TEST(RVGitDiffBytesTest, OfUTF16TheTextCounts) {
    RVData raw = "\xFF\xFE";
    for (const char byte : "diff --git a/f b/f\n--- a/f\n+++ b/f\n@@ -1 +1 @@\n-a\n+b\n")
        if (byte != '\0')
            raw += {byte, '\0'};
    const auto diff = RVGitDiff::diffFromRawDiff(raw);
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->rawDiffBytes(), diff->rawDiff());
    EXPECT_EQ(diff->chunks()[0]->lines()[1].contentBytes(), "b");
}

}  // namespace
