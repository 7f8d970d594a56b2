#include "RVGit/worktree/RVGitIndexHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(RVGitIndexHelperTest, ExactlyFiveLettersTellOfAssumeUnchanged) {
    for (int character = 0; character < 256; ++character) {
        const std::string flag(1, static_cast<char>(character));
        EXPECT_EQ(RVGitIndexHelper::isAssumeUnchangedFlag(flag),
                  flag == "h" || flag == "s" || flag == "r" || flag == "m" || flag == "c")
            << flag;
    }
    EXPECT_FALSE(RVGitIndexHelper::isAssumeUnchangedFlag(""));
    EXPECT_FALSE(RVGitIndexHelper::isAssumeUnchangedFlag("hs"));
}

TEST(RVGitIndexHelperTest, StagesHaveTexts) {
    const auto text = &RVGitIndexHelper::stringRepresentationForIndexStage;
    EXPECT_EQ(text(RVGitIndexStageDefault), "Default");
    EXPECT_EQ(text(RVGitIndexStageBase), "Base");
    EXPECT_EQ(text(RVGitIndexStageOurs), "Ours");
    EXPECT_EQ(text(RVGitIndexStageTheirs), "Theirs");
    EXPECT_EQ(text(static_cast<RVGitIndexStage>(4)), "Default");
}

TEST(RVGitIndexHelperTest, TheDigitsOneToThreeAreStages) {
    const auto stage = &RVGitIndexHelper::indexStageFromString;
    EXPECT_EQ(stage("1"), RVGitIndexStageBase);
    EXPECT_EQ(stage("2"), RVGitIndexStageOurs);
    EXPECT_EQ(stage("3"), RVGitIndexStageTheirs);
    for (const char* text : {"", "0", "4", "01", "1 ", "Ours"})
        EXPECT_EQ(stage(text), RVGitIndexStageDefault) << text;
}

TEST(RVGitIndexHelperTest, AReferenceNamesStageAndPath) {
    const auto reference = &RVGitIndexHelper::indexEntryReferenceWithStage;
    EXPECT_EQ(reference(RVGitIndexStageDefault, "a"), ":0:a");
    EXPECT_EQ(reference(RVGitIndexStageTheirs, "dir/a b"), ":3:dir/a b");
    EXPECT_EQ(reference(RVGitIndexStageBase, ""), ":1:");
}

}  // namespace
