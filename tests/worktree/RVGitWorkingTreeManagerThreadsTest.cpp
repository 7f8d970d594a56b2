#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

class RVGitWorkingTreeManagerThreadsTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitWorkingTreeManagerThreadsTest() { makeChanges(); }
};

TEST_F(RVGitWorkingTreeManagerThreadsTest,
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

TEST_F(RVGitWorkingTreeManagerThreadsTest, BehindABatchThatIsCancelledNoneRuns) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(1);
    const Paths paths = {"a", "b", "c", "d"};
    struct Case {
        const char* pattern;
        std::function<bool(RVErrorPlace)> operation;
    };
    const Case cases[] = {
        {"*' add '*", [&](RVErrorPlace e) { return manager().stageFiles(paths, e); }},
        {"*' reset '*", [&](RVErrorPlace e) { return manager().unstageFiles(paths, e); }},
        {"*' rm '*", [&](RVErrorPlace e) { return manager().untrackFiles(paths, e); }},
        {"*' rm '*", [&](RVErrorPlace e) { return manager().removeFiles(paths, e); }},
        {"*' checkout '*", [&](RVErrorPlace e) { return manager().revertFiles(paths, e); }},
        {"*' update-index '*",
         [&](RVErrorPlace e) { return manager().setAssumeUnchangedFlagForFilePaths(paths, e); }},
        {"*' update-index '*",
         [&](RVErrorPlace e) { return manager().unsetAssumeUnchangedFlagForFilePaths(paths, e); }},
        {"*' diff '*",
         [&](RVErrorPlace e) {
             return manager()
                 .patchByComparingIndexWithBaseForFilePaths(paths, std::nullopt, e)
                 .has_value();
         }},
        {"*' diff '*",
         [&](RVErrorPlace e) {
             return manager()
                 .patchByComparingWorkingTreeWithIndexForFilePaths(paths, std::nullopt, e)
                 .has_value();
         }},
    };
    // In each case a batch that ran behind the cancelled one would be counted.
    for (const auto& [pattern, operation] : cases)
        for (const int skipped : {0, 1, 3}) {
            std::optional<RVError> error = RVError("before", 1);
            const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                            {pattern, skipped});
            EXPECT_FALSE(operation(&error)) << pattern << skipped;
            EXPECT_EQ(error, std::nullopt) << pattern << skipped;
            EXPECT_EQ(cancelled.numberOfCalls(), skipped + 1) << pattern << skipped;
        }
}

TEST_F(RVGitWorkingTreeManagerThreadsTest, FilesOfBatchesThatDidNotRunKeepTheirChanges) {
    write("c", "precious\n");
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(1);
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' checkout '*", 1});
        EXPECT_FALSE(manager().revertFiles({"a", "b", "c"}, &error));
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(read("a"), "one\n");
    EXPECT_EQ(read("b"), "two\n");
    EXPECT_EQ(read("c"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerThreadsTest, AListOfOneBatchIsNoFailureWhereItIsCancelled) {
    std::optional<RVError> error;
    const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' checkout '*"});
    EXPECT_TRUE(manager().revertFiles({"a", "b"}, &error));
    EXPECT_EQ(error, std::nullopt);
}

}  // namespace
