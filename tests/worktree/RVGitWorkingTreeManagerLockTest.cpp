#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
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

TEST_F(RVGitWorkingTreeManagerLockTest,
       PollingTheListingsDisturbsStagingAndCommittingByLocksAlone) {
    constexpr int numberOfCommits = 200;
    std::atomic<bool> isDone = false;
    std::atomic<int> numberOfPolls = 0;
    std::vector<RVError> pollErrors;
    int numberOfWrongLists = 0;
    std::thread poller([&] {
        const RVOptions withUnchanged{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true}};
        do {
            for (const bool isChangedOnly : {true, false}) {
                std::optional<RVError> error;
                const auto entries =
                    isChangedOnly ? RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(
                                        repository(), &error)
                                  : RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(
                                        repository(), withUnchanged, &error);
                if (!entries || error) {
                    pollErrors.push_back(error.value_or(RVError("none", 0)));
                    continue;
                }
                // "a" is changed all the time; "b" and "c" come and go.
                const auto isA = [](const auto& entry) {
                    return entry->filePath() == "a" &&
                           entry->currentStatus() == RVGitFileStatusModified;
                };
                if (std::count_if(entries->begin(), entries->end(), isA) != 1 ||
                    (!isChangedOnly && entries->size() != 4))
                    ++numberOfWrongLists;
            }
            ++numberOfPolls;
            numberOfPolls.notify_all();
        } while (!isDone);
    });
    numberOfPolls.wait(0);
    int numberOfLocks = 0;
    const auto runUntilUnlocked = [&](const auto& operation) {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            std::optional<RVError> error;
            if (operation(&error))
                return;
            if (!error || error->code() != RVGitIndexLockError) {
                ADD_FAILURE() << (error ? error->userInfoString(RVGitCommandErrorOutputErrorKey)
                                              .value_or("no output")
                                        : "no error");
                return;
            }
            ++numberOfLocks;
        }
        ADD_FAILURE() << "the lock stays";
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
    EXPECT_EQ(numberOfWrongLists, 0);
    // The first one was over before the first stage.
    EXPECT_GT(numberOfPolls, 1);
    RecordProperty("locks", numberOfLocks);
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}),
              std::to_string(1 + numberOfCommits));
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%s"}), "Number 199");
    EXPECT_EQ(staged("c"), "199");
}

}  // namespace
