#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

class RVGitWorkingTreeManagerLockTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitWorkingTreeManagerLockTest() {
        for (const char* path : {"a", "b", "c", "d"})
            write(path, "one\n");
        commitAll();
        write("a", "two\n");
        write("b", "two\n");
        git({"add", "b"}, repositoryPath());
    }

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

TEST_F(RVGitWorkingTreeManagerLockTest, PatchesOfTheWorkingTreeNeedNoLock) {
    write(lock, "");
    EXPECT_TRUE(
        manager().patchByComparingWorkingTreeWithIndexForFilePaths(std::nullopt, std::nullopt));
    EXPECT_TRUE(manager().patchByComparingIndexWithBaseForFilePaths(std::nullopt, std::nullopt));
    EXPECT_TRUE(manager().applyPatch("--- a/d\n+++ b/d\n@@ -1 +1 @@\n-one\n+two\n", std::nullopt));
    EXPECT_EQ(read("d"), "two\n");
}

TEST_F(RVGitWorkingTreeManagerLockTest, PollingTheStatusDisturbsStagingAndCommittingByLocksAlone) {
    constexpr int numberOfCommits = 200;
    std::atomic<bool> isDone = false;
    int numberOfPolls = 0;
    std::vector<RVError> pollErrors;
    std::thread poller([&] {
        do {
            const auto command = RVGitCommand::gitCommandWithRepository(repository());
            command->setGitCommand("status");
            command->addGitCommandOptions({"--porcelain=v2", "-z"});
            std::optional<RVError> error;
            if (!command->run(&error))
                pollErrors.push_back(error.value_or(RVError("none", 0)));
            ++numberOfPolls;
        } while (!isDone);
    });
    int numberOfLocks = 0;
    const auto runUntilUnlocked = [&](const auto& operation) {
        std::optional<RVError> error;
        while (!operation(&error)) {
            if (!error || error->code() != RVGitIndexLockError) {
                ADD_FAILURE() << (error ? error->userInfoString(RVGitCommandErrorOutputErrorKey)
                                              .value_or("no output")
                                        : "no error");
                return;
            }
            ++numberOfLocks;
            error.reset();
        }
    };
    for (int index = 0; index < numberOfCommits; ++index) {
        write("c", std::to_string(index));
        runUntilUnlocked([&](RVErrorPlace error) { return manager().stageFiles({"c"}, error); });
        runUntilUnlocked([&](RVErrorPlace error) {
            return manager().commitWithMessage("Number " + std::to_string(index), 0, error);
        });
    }
    isDone = true;
    poller.join();
    EXPECT_TRUE(pollErrors.empty())
        << pollErrors.front().userInfoString(RVGitCommandErrorOutputErrorKey).value_or("");
    EXPECT_GT(numberOfPolls, 0);
    RecordProperty("locks", numberOfLocks);
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}),
              std::to_string(1 + numberOfCommits));
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%s"}), "Number 199");
    EXPECT_EQ(staged("c"), "199");
}

}  // namespace
