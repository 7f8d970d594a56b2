#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

class RVGitWorkingTreeManagerLockTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitWorkingTreeManagerLockTest() { makeChanges(); }

    const std::string lock = ".git/index.lock";
};

TEST_F(RVGitWorkingTreeManagerLockTest, EachOperationFailsWith103WhileTheIndexIsLocked) {
    const std::string patch = "--- a/d\n+++ b/d\n@@ -1 +1 @@\n-one\n+two\n";
    const std::pair<const char*, std::function<bool(RVErrorPlace)>> operations[] = {
        {"stage", [&](RVErrorPlace error) { return manager().stageFiles({"a"}, error); }},
        {"stage all", [&](RVErrorPlace error) { return manager().stageAllFiles(error); }},
        {"commit",
         [&](RVErrorPlace error) { return manager().commitWithMessage("Message", 0, error); }},
        {"unstage", [&](RVErrorPlace error) { return manager().unstageFiles({"b"}, error); }},
        {"unstage all", [&](RVErrorPlace error) { return manager().unstageAllFiles(error); }},
        {"untrack", [&](RVErrorPlace error) { return manager().untrackFiles({"b"}, error); }},
        {"mark",
         [&](RVErrorPlace error) {
             return manager().setAssumeUnchangedFlagForFilePaths({"a"}, error);
         }},
        {"unmark",
         [&](RVErrorPlace error) {
             return manager().unsetAssumeUnchangedFlagForFilePaths({"a"}, error);
         }},
        {"patch",
         [&](RVErrorPlace error) {
             return manager().applyPatch(patch, RVOptions{{RVGitApplyOptionIndex, true}}, error);
         }},
        {"revert", [&](RVErrorPlace error) { return manager().revertFiles({"a"}, error); }},
        {"rewrite conflicts",
         [&](RVErrorPlace error) { return manager().revertUnmergedFiles({"a"}, error); }},
        {"move", [&](RVErrorPlace error) { return manager().moveFileAtPath("c", "e", 0, error); }},
        {"remove", [&](RVErrorPlace error) { return manager().removeFiles({"d"}, error); }},
        {"reset",
         [&](RVErrorPlace error) {
             return manager().resetToRevision("HEAD", RVGitResetModeHard, std::nullopt, error);
         }},
        {"check out",
         [&](RVErrorPlace error) { return manager().checkoutRevision("main", error); }},
    };
    for (const auto& [name, operation] : operations) {
        SCOPED_TRACE(name);
        const Paths before = status();
        write(lock, "");
        const auto error = errorOf(operation);
        EXPECT_EQ(error.code(), RVGitIndexLockError);
        EXPECT_EQ(error.userInfoString(RVGitRepositoryPathErrorKey), repositoryPath());
        EXPECT_EQ(status(), before);
        EXPECT_TRUE(exists(lock));
        std::filesystem::remove(scratchPath("repository/" + lock));
        std::optional<RVError> none;
        EXPECT_TRUE(operation(&none))
            << none->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("");
    }
}

TEST_F(RVGitWorkingTreeManagerLockTest, UnresolvingFailsWith103WhileTheIndexIsLocked) {
    git({"commit", "-q", "-a", "-m", "Message"}, repositoryPath());
    git({"checkout", "-q", "-b", "theirs"}, repositoryPath());
    commitFile("repository", "c", "theirs\n", "Theirs");
    git({"checkout", "-q", "main"}, repositoryPath());
    commitFile("repository", "c", "ours\n", "Ours");
    ASSERT_EQ(runGit({"merge", "theirs"}, repositoryPath()).exitCode, 1);
    write("c", "resolved\n");
    git({"add", "c"}, repositoryPath());
    write(lock, "");
    const auto error =
        errorOf([&](RVErrorPlace place) { return manager().unresolveIndexEntries({"c"}, place); });
    EXPECT_EQ(error.code(), RVGitIndexLockError);
    EXPECT_THAT(status(), testing::ElementsAre("M  c"));
    EXPECT_TRUE(exists(lock));
    std::filesystem::remove(scratchPath("repository/" + lock));
    EXPECT_TRUE(manager().unresolveIndexEntries({"c"}));
    EXPECT_THAT(status(), testing::ElementsAre("UU c"));
}

TEST_F(RVGitWorkingTreeManagerLockTest, PatchesOfTheWorkingTreeNeedNoLock) {
    write(lock, "");
    EXPECT_TRUE(
        manager().patchByComparingWorkingTreeWithIndexForFilePaths(std::nullopt, std::nullopt));
    EXPECT_TRUE(manager().patchByComparingIndexWithBaseForFilePaths(std::nullopt, std::nullopt));
    EXPECT_TRUE(manager().applyPatch("--- a/d\n+++ b/d\n@@ -1 +1 @@\n-one\n+two\n", std::nullopt));
    EXPECT_EQ(read("d"), "two\n");
}

}  // namespace
