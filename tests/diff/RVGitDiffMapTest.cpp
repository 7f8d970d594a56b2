#include "RVGit/diff/RVGitDiffMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/diff/RVGitDiffParser.h"

using testing::UnorderedElementsAre;

namespace {

RVGitDiffMap diffOf(std::string_view text) {
    return RVGitDiffParser::diffFromGitDiffOutputData(text).value();
}

constexpr char output[] =
    "diff --git a/x b/y\nsimilarity index 90%\nrename from x\nrename to y\nindex 1..2 100755\n"
    "--- a/x\n+++ b/y\n@@ -1,2 +1 @@\n a\n-b\n\\ No newline at end of file\n";

TEST(RVGitDiffMapTest, TextsOfTheKeysAreTheContract) {
    EXPECT_STREQ(RVGitDiffRawKey, "RVGitDiffRawKey");
    EXPECT_STREQ(RVGitDiffHeaderKey, "RVGitDiffHeaderKey");
    EXPECT_STREQ(RVGitDiffExtendedHeadersKey, "RVGitDiffExtendedHeadersKey");
    EXPECT_STREQ(RVGitDiffFilePathKey, "RVGitDiffFilePathKey");
    EXPECT_STREQ(RVGitDiffOldFilePathKey, "RVGitDiffOldFilePathKey");
    EXPECT_STREQ(RVGitDiffFileStatusKey, "RVGitDiffFileStatusKey");
    EXPECT_STREQ(RVGitDiffFileStatusSimilarityIndexKey, "RVGitDiffFileStatusSimilarityIndexKey");
    EXPECT_STREQ(RVGitDiffObjectHashKey, "RVGitDiffObjectHashKey");
    EXPECT_STREQ(RVGitDiffOriginalObjectHashesKey, "RVGitDiffOriginalObjectHashesKey");
    EXPECT_STREQ(RVGitDiffFileModeKey, "RVGitDiffFileModeKey");
    EXPECT_STREQ(RVGitDiffOriginalFileModesKey, "RVGitDiffOriginalFileModesKey");
    EXPECT_STREQ(RVGitDiffIsBinaryKey, "RVGitDiffIsBinaryKey");
    EXPECT_STREQ(RVGitDiffChunksKey, "RVGitDiffChunksKey");
    EXPECT_STREQ(RVGitDiffChunkRawKey, "RVGitDiffChunkRawKey");
    EXPECT_STREQ(RVGitDiffChunkFileRangesKey, "RVGitDiffChunkFileRangesKey");
    EXPECT_STREQ(RVGitDiffChunkLinesKey, "RVGitDiffChunkLineStatusKey");
    EXPECT_STREQ(RVGitDiffChunkLineStatusKey, "RVGitDiffChunkLineStatusKey");
    EXPECT_STREQ(RVGitDiffChunkLineLineNumbersKey, "RVGitDiffChunkLineLineNumbersKey");
    EXPECT_STREQ(RVGitDiffChunkLineTypeKey, "RVGitDiffChunkLineTypeKey");
    EXPECT_STREQ(RVGitDiffChunkLineContentsKey, "RVGitDiffChunkLineContentKey");
    EXPECT_STREQ(RVGitDiffFileStatusModified, "M");
    EXPECT_STREQ(RVGitDiffFileStatusAdded, "A");
    EXPECT_STREQ(RVGitDiffFileStatusDeleted, "D");
    EXPECT_STREQ(RVGitDiffFileStatusRenamed, "R");
    EXPECT_STREQ(RVGitDiffFileStatusCopied, "C");
    EXPECT_STREQ(RVGitDiffChunkLineTypeContext, " ");
    EXPECT_STREQ(RVGitDiffChunkLineTypeAdded, "+");
    EXPECT_STREQ(RVGitDiffChunkLineTypeDeleted, "-");
    EXPECT_STREQ(RVGitDiffChunkLineTypeNoNewlineAtEndOfFile, "//");
}

TEST(RVGitDiffMapTest, EmptyMapHoldsNothing) {
    const RVGitDiffMap map;
    EXPECT_TRUE(map.isEmpty());
    EXPECT_FALSE(map.containsObjectForKey(RVGitDiffRawKey));
    EXPECT_FALSE(map.objectForKey(RVGitDiffRawKey));
    EXPECT_EQ(map.gitDiffRaw(), std::nullopt);
    EXPECT_EQ(map.gitDiffHeader(), std::nullopt);
    EXPECT_EQ(map.gitDiffExtendedHeaders(), std::nullopt);
    EXPECT_EQ(map.gitDiffObjectHash(), std::nullopt);
    EXPECT_EQ(map.gitDiffOriginalObjectHashes(), std::nullopt);
    EXPECT_EQ(map.gitDiffFileStatus(), RVGitFileStatusUnchanged);
    EXPECT_EQ(map.gitDiffFileMode(), RVGitFileModeRegular);
    EXPECT_EQ(map.gitDiffFileStatusSimilarityIndex(), 0u);
    EXPECT_FALSE(map.gitDiffIsBinary());
}

TEST(RVGitDiffMapTest, ValuesStandUnderTheirKeys) {
    const RVGitDiffMap map = diffOf(output);
    EXPECT_THAT(
        map.allKeys(),
        UnorderedElementsAre(RVGitDiffRawKey, RVGitDiffHeaderKey, RVGitDiffExtendedHeadersKey,
                             RVGitDiffFilePathKey, RVGitDiffOldFilePathKey, RVGitDiffFileStatusKey,
                             RVGitDiffFileStatusSimilarityIndexKey, RVGitDiffObjectHashKey,
                             RVGitDiffOriginalObjectHashesKey, RVGitDiffFileModeKey,
                             RVGitDiffOriginalFileModesKey, RVGitDiffChunksKey));
    EXPECT_EQ(std::get<std::string>(*map.objectForKey(RVGitDiffRawKey)), output);
    EXPECT_EQ(std::get<std::string>(*map.objectForKey(RVGitDiffFileStatusKey)), "R");
    EXPECT_EQ(std::get<std::int64_t>(*map.objectForKey(RVGitDiffFileStatusSimilarityIndexKey)), 90);
    EXPECT_EQ(std::get<std::string>(*map.objectForKey(RVGitDiffFileModeKey)), "100755");
    EXPECT_EQ(map.gitDiffFileMode(), RVGitFileModeExecutable);
    EXPECT_FALSE(map.objectForKey("RVGitDiffUnknownKey"));
}

TEST(RVGitDiffMapTest, LinesOfAChunkStandUnderTheTextOfTheStatusKey) {
    const RVGitDiffMap map = diffOf(output);
    const auto chunks =
        std::get<std::vector<RVGitDiffChunkMap>>(*map.objectForKey(RVGitDiffChunksKey));
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_THAT(chunks[0].allKeys(),
                UnorderedElementsAre("RVGitDiffChunkRawKey", "RVGitDiffChunkFileRangesKey",
                                     "RVGitDiffChunkLineStatusKey"));
    EXPECT_FALSE(chunks[0].containsObjectForKey(RVGitDiffRawKey));
    const auto lines = std::get<std::vector<RVGitDiffChunkLineMap>>(
        *chunks[0].objectForKey("RVGitDiffChunkLineStatusKey"));
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(
        lines[0].allKeys(),
        UnorderedElementsAre("RVGitDiffChunkLineLineNumbersKey", "RVGitDiffChunkLineTypeKey",
                             "RVGitDiffChunkLineStatusKey", "RVGitDiffChunkLineContentKey"));
    EXPECT_TRUE(lines[0].containsObjectForKey(RVGitDiffChunkLineTypeKey));
    EXPECT_EQ(std::get<std::string>(*lines[0].objectForKey(RVGitDiffChunkLineStatusKey)), " ");
    EXPECT_EQ(std::get<std::string>(*lines[1].objectForKey(RVGitDiffChunkLineTypeKey)), "-");
    EXPECT_EQ(std::get<std::string>(*lines[2].objectForKey(RVGitDiffChunkLineTypeKey)), "//");
    EXPECT_EQ(lines[0].gitDiffChunkLineType(), 0);
    EXPECT_EQ(lines[1].gitDiffChunkLineType(), 2);
    EXPECT_EQ(lines[2].gitDiffChunkLineType(), 3);
    EXPECT_EQ(diffOf("diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+a\n")
                  .gitDiffChunks()
                  ->front()
                  .gitDiffChunkLines()[0]
                  .gitDiffChunkLineType(),
              1);
}

}  // namespace
