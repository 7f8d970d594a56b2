#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"
#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestRounds.h"

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

/// A rebase of 30 commits that is ended at any moment. RVGIT_TEST_ROUNDS says how often; 200 takes
/// some minutes.
class RVGitMergeInterruptThreadsTest : public RVGitMergeTestCase {
protected:
    static constexpr int numberOfCommits = 30;

    RVGitMergeInterruptThreadsTest() {
        std::string stream;
        for (int number = 1; number <= numberOfCommits; ++number) {
            const std::string message = "Step " + std::to_string(number);
            const std::string contents = "step " + std::to_string(number) + "\n";
            stream +=
                "commit refs/heads/steps\ncommitter C <c@example.org> 1577934245 +0000\ndata " +
                std::to_string(message.size()) + "\n" + message + "\n" +
                (number == 1 ? "from refs/heads/main^0\n" : "") + "M 100644 inline other\ndata " +
                std::to_string(contents.size()) + "\n" + contents + "\n";
        }
        // Beside the steps: the same files, changed elsewhere.
        stream +=
            "commit refs/heads/onto\ncommitter C <c@example.org> 1577934245 +0000\n"
            "data 4\nOnto\nfrom refs/heads/main^0\nM 100644 inline file\ndata 5\nonto\n\n";
        git({"fast-import", "--quiet"}, path(), stream);
        gitHere({"checkout", "-q", "steps"});
        pidFile_ = scratchPath("pid");
        gitWithPid_ = writeFile("git-with-pid",
                                "#!/bin/sh\ncase \" $* \" in *' rebase '*) echo $$ > " +
                                    quotedForShell(pidFile_) + ";; esac\nexec " +
                                    quotedForShell(gitPath()) + " \"$@\"\n",
                                0755);
    }

    /// Runs the rebase and ends it after the time, unless it has ended by itself.
    void interruptAfter(microseconds time, bool kills) {
        fs::remove(pidFile_);
        const auto command =
            RVGitRebaseCommand::gitRebaseCommandWithRepository(repository(), std::nullopt);
        command->setRevision("onto");
        command->enqueueCommand();
        if (kills) {
            pid_t pid = 0;
            const auto giveUp = Clock::now() + std::chrono::seconds(20);
            while (pid == 0 && Clock::now() < giveUp) {
                std::ifstream(pidFile_) >> pid;
                std::this_thread::sleep_for(microseconds(200));
            }
            ASSERT_NE(pid, 0);
            std::this_thread::sleep_for(time);
            // It may have ended, but its number is still ours while the command has not.
            if (!command->isFinished())
                ::kill(pid, SIGKILL);
        } else {
            std::this_thread::sleep_for(time);
            command->cancel();
        }
        command->waitUntilFinished();
    }

    /// What a user does about locks that a killed git has left.
    void removeLocks() const {
        for (auto entry = fs::recursive_directory_iterator(path() + "/.git");
             entry != fs::recursive_directory_iterator(); ++entry)
            if (entry->path().extension() == ".lock")
                fs::remove(entry->path());
    }

    microseconds timeOfRebase() {
        const auto start = Clock::now();
        EXPECT_TRUE(manager().rebaseWithRevision("onto", std::nullopt));
        const auto time = std::chrono::duration_cast<microseconds>(Clock::now() - start);
        gitHere({"reset", "-q", "--hard", "ORIG_HEAD"});
        return time;
    }

    std::string pidFile_;
    std::string gitWithPid_;
};

TEST_F(RVGitMergeInterruptThreadsTest, AfterEachInterruptTheStateIsReadableAndAnAbortRestores) {
    RVGIT_TEST_NEEDS_GIT("2.26",
                         "a rebase that is interrupted leaves what git itself cannot abort");
    gitHere({"tag", "before", "steps"});
    auto whole = timeOfRebase();
    EXPECT_EQ(hash("steps"), hash("before"));
    // Objects that are written again are not written anew.
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(gitWithPid_));
    const RVRepositorySnapshot before(path());
    std::mt19937 random(20200102);
    int underWay = 0;
    int locked = 0;
    for (int round = 0; round < numberOfTestRounds(16); ++round) {
        SCOPED_TRACE(round);
        const bool kills = round % 2 == 0;
        interruptAfter(
            microseconds(std::uniform_int_distribution<long>(0, whole.count() * 11 / 10)(random)),
            kills);
        // The readers say what is there, whatever it is.
        const RVGitMergeMode mode = manager().currentMergeMode();
        EXPECT_TRUE(mode == RVGitMergeModeNone || mode == RVGitMergeModeRebase ||
                    mode == RVGitMergeModeEditing);
        EXPECT_LE(manager().nextSequenceStep(), manager().lastSequenceStep());
        (void)manager().nextSequenceRevision();
        (void)manager().mergeCommitMessage();
        EXPECT_TRUE(manager().originalRevision());
        if (mode == RVGitMergeModeNone) {
            // Not begun, or at its end: the next interrupt comes earlier. A machine that was busy
            // when the time was taken is not so for ever.
            if (hash("steps") != hash("before"))
                whole = whole * 3 / 4;
            removeLocks();
            gitHere({"checkout", "-q", "-f", "steps"});
            gitHere({"reset", "-q", "--hard", "before"});
        } else {
            ++underWay;
            whole = whole * 21 / 20;
            // Where tables are locked, git's abort puts back the files alone, and ends with 0.
            if (!areTestedRefsInFiles())
                removeLocks();
            std::optional<RVError> error;
            if (!manager().abortCurrentOperation(&error)) {
                // A killed git leaves its locks, and the next one says so.
                ++locked;
                const RVRepositorySnapshot now(path());
                const bool isLocked = !now.locks.empty();
                removeLocks();
                error.reset();
                if (!manager().abortCurrentOperation(&error)) {
                    // Git had not yet written all of its files, and changed nothing, or had begun
                    // to remove them, and done all.
                    EXPECT_FALSE(isLocked);
                    EXPECT_EQ(hash("HEAD"), hash("steps"));
                    if (hash("steps") != hash("before")) {
                        EXPECT_EQ(gitHere({"rev-list", "--count", "onto..steps"}),
                                  std::to_string(numberOfCommits));
                    }
                    fs::remove_all(path() + "/.git/rebase-merge");
                    gitHere({"reset", "-q", "--hard", "before"});
                }
            }
        }
        // Between making a lock and knowing it for its own, even a git that is asked to end leaves
        // it, and the abort could not take CHERRY_PICK_HEAD away then: the mode tells so.
        removeLocks();
        if (manager().currentMergeMode() == RVGitMergeModeCherryPick) {
            EXPECT_TRUE(manager().abortCurrentOperation());
        }
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        const std::string differences = RVRepositorySnapshot(path()).differencesFrom(before);
        ASSERT_EQ(differences, "");
    }
    // Moments are spread over the whole rebase, so some must have hit it.
    EXPECT_GT(underWay, 0);
    RecordProperty("underWay", underWay);
    RecordProperty("locked", locked);
}

}  // namespace
