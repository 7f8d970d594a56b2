#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <future>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::ElementsAre;

using Paths = std::vector<std::string>;

struct Ending {
    int exitCode = -1;
    std::optional<RVError> error;
};

/// Collects what a handler is told, and how often.
class Endings {
public:
    [[nodiscard]] std::function<void(int, const std::optional<RVError>&)> handler() {
        return [state = state_](int exitCode, const std::optional<RVError>& error) {
            const std::lock_guard lock(state->mutex);
            state->endings.push_back({exitCode, error});
            state->changed.notify_all();
        };
    }
    /// Waits for so many, and no longer than a test may take; those that are missing are empty.
    [[nodiscard]] std::vector<Ending> waitFor(std::size_t count) {
        std::unique_lock lock(state_->mutex);
        EXPECT_TRUE(state_->changed.wait_for(lock, std::chrono::seconds(60),
                                             [&] { return state_->endings.size() >= count; }));
        auto endings = state_->endings;
        endings.resize(std::max(count, endings.size()));
        return endings;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<Ending> endings;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

class RVGitToolThreadsTest : public RVGitRepositoryTestCase {
protected:
    /// Nothing may ever be asked of a person at a terminal.
    RVGitToolThreadsTest() { gitInRepository({"config", "core.editor", "false"}); }

    void makeConflict(const std::string& file = "file") {
        commitFile("repository", file, "base\n", "Base");
        gitInRepository({"checkout", "-q", "-b", "other"});
        commitFile("repository", file, "theirs\n", "Theirs");
        gitInRepository({"checkout", "-q", "main"});
        commitFile("repository", file, "ours\n", "Ours");
        EXPECT_EQ(runGit({"merge", "other"}, repositoryPath()).exitCode, 1);
    }
    /// Defines a tool that runs the shell script, in which git has set $MERGED and so on.
    void defineTool(const std::string& kind, const std::string& name, const std::string& script) {
        const std::string path = writeFile("tools/" + name, "#!/bin/sh\n" + script + "\n", 0755);
        gitInRepository({"config", kind + "." + name + ".cmd",
                         quotedForShell(path) + " \"$MERGED\" \"$LOCAL\" \"$REMOTE\""});
        gitInRepository({"config", kind + "." + name + ".trustExitCode", "true"});
    }
    [[nodiscard]] std::string unmergedFiles() const {
        return gitInRepository({"diff", "--name-only", "--diff-filter=U"});
    }
    // Steps of a tool's script, and what a test does with them.
    [[nodiscard]] std::string showsThatItRuns() const {
        return "touch " + quotedForShell(scratchPath("running")) + "; ";
    }
    void waitUntilToolRuns() const {
        for (int count = 0; count < 3000 && !fileExists("running"); ++count)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(fileExists("running"));
    }
    [[nodiscard]] std::string waitsForRelease() const {
        return waitingLoopForShell("! test -e " + quotedForShell(scratchPath("released"))) + "; ";
    }
    void releaseTool() const { writeFile("released", ""); }

    /// A binary that cannot be launched.
    void useMissingGit() {
        const auto fake = useFakeGit();
        EXPECT_TRUE(RVFileManager::removeItemAtPath(fake.path()));
    }
};

// Merge tool.

TEST_F(RVGitToolThreadsTest, AMergeToolThatSucceedsResolvesTheFile) {
    makeConflict();
    defineTool("mergetool", "good", "echo resolved >\"$1\"");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "good");
    EXPECT_EQ(tool->name(), "good");
    EXPECT_EQ(tool->repository(), repository());
    EXPECT_FALSE(tool->keepsBackupFiles());
    EXPECT_EQ(tool->mergeToolCommand(), nullptr);
    EXPECT_EQ(tool->queue().maxConcurrentOperationCount(), 1u);
    EXPECT_EQ(tool->queue().name(), RVGitMakeQueueName("MergeToolQueue"));
    Endings endings;
    tool->launchWithFilePath("file", endings.handler());
    const auto told = endings.waitFor(1);
    EXPECT_EQ(told[0].exitCode, 0);
    EXPECT_EQ(told[0].error, std::nullopt);
    EXPECT_EQ(unmergedFiles(), "");
    EXPECT_EQ(readFile("repository/file"), "resolved\n");
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(repositoryPath()),
                ElementsAre(".git", "file"));
}

TEST_F(RVGitToolThreadsTest, ABackupFileStaysWhereItIsAskedFor) {
    makeConflict();
    const std::string conflicted = readFile("repository/file");
    // The user's own setting does not count.
    gitInRepository({"config", "mergetool.keepBackup", "false"});
    defineTool("mergetool", "good", "echo resolved >\"$1\"");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "good");
    tool->setKeepsBackupFiles(true);
    Endings endings;
    tool->launchWithFilePath("file", endings.handler());
    EXPECT_EQ(endings.waitFor(1)[0].exitCode, 0);
    EXPECT_EQ(readFile("repository/file.orig"), conflicted);
}

TEST_F(RVGitToolThreadsTest, AMergeToolThatFailsLeavesTheConflict) {
    makeConflict("a 'file'");
    const std::string conflicted = readFile("repository/a 'file'");
    defineTool("mergetool", "bad", "exit 3");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "bad");
    Endings endings;
    tool->launchWithFilePath("a 'file'", endings.handler());
    const auto told = endings.waitFor(1);
    EXPECT_EQ(told[0].exitCode, 1);
    ASSERT_TRUE(told[0].error);
    EXPECT_EQ(told[0].error->code(), RVGitMergetoolMergeFailedError);
    EXPECT_EQ(told[0].error->userInfoString(RVGitFilePathErrorKey), "a 'file'");
    EXPECT_EQ(readFile("repository/a 'file'"), conflicted);
    EXPECT_NE(unmergedFiles(), "");
}

TEST_F(RVGitToolThreadsTest, AToolThatAsksAtTheTerminalGetsNoAnswer) {
    makeConflict();
    defineTool("mergetool", "asking", "read answer && echo \"$answer\" >\"$1\"");
    // Git itself would ask whether this was a success.
    gitInRepository({"config", "mergetool.asking.trustExitCode", "false"});
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "asking");
    Endings endings;
    tool->launchWithFilePath("file", endings.handler());
    EXPECT_NE(endings.waitFor(1)[0].exitCode, 0);
    EXPECT_EQ(unmergedFiles(), "file");
}

TEST_F(RVGitToolThreadsTest, AMergeToolThatHangsIsCancelled) {
    makeConflict();
    defineTool("mergetool", "hanging", showsThatItRuns() + "sleep 300");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "hanging");
    Endings endings;
    tool->launchWithFilePath("file", endings.handler());
    waitUntilToolRuns();
    tool->cancel();
    const auto told = endings.waitFor(1);
    EXPECT_NE(told[0].exitCode, 0);
    EXPECT_EQ(told[0].error, std::nullopt);
    EXPECT_EQ(unmergedFiles(), "file");
}

TEST_F(RVGitToolThreadsTest, ASecondLaunchWaitsForTheFirst) {
    makeConflict();
    defineTool("mergetool", "slow",
               showsThatItRuns() + waitsForRelease() + "echo resolved >\"$1\"");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "slow");
    Endings first;
    Endings second;
    tool->launchWithFilePath("file", first.handler());
    waitUntilToolRuns();
    const auto firstCommand = tool->mergeToolCommand();
    tool->launchWithFilePath("file", second.handler());
    EXPECT_NE(tool->mergeToolCommand(), firstCommand);
    // The latest launch is the one that waits.
    tool->cancel();
    EXPECT_TRUE(tool->mergeToolCommand()->isFinished());
    EXPECT_FALSE(firstCommand->isFinished());
    releaseTool();
    EXPECT_EQ(first.waitFor(1)[0].exitCode, 0);
    const auto told = second.waitFor(1);
    EXPECT_EQ(told[0].exitCode, 128 + SIGTERM);
    EXPECT_EQ(told[0].error, std::nullopt);
    EXPECT_EQ(unmergedFiles(), "");
    tool->queue().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(first.waitFor(1).size(), 1u);
    EXPECT_EQ(second.waitFor(1).size(), 1u);
}

TEST_F(RVGitToolThreadsTest, AHandlerMayLaunchAgain) {
    makeConflict();
    defineTool("mergetool", "bad", "exit 1");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "bad");
    Endings endings;
    tool->launchWithFilePath("file", [&](int, const std::optional<RVError>& error) {
        EXPECT_TRUE(error);
        tool->launchWithFilePath("file", endings.handler());
    });
    EXPECT_EQ(endings.waitFor(1)[0].exitCode, 1);
}

TEST_F(RVGitToolThreadsTest, AToolOutlivesItsObject) {
    makeConflict();
    defineTool("mergetool", "slow",
               showsThatItRuns() + waitsForRelease() + "echo resolved >\"$1\"");
    Endings endings;
    auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "slow");
    tool->launchWithFilePath("file", endings.handler());
    waitUntilToolRuns();
    tool.reset();
    releaseTool();
    EXPECT_EQ(endings.waitFor(1)[0].exitCode, 0);
}

TEST_F(RVGitToolThreadsTest, AToolWithoutAHandlerRunsAsWell) {
    makeConflict();
    defineTool("mergetool", "good", "echo resolved >\"$1\"");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "good");
    tool->launchWithFilePath("file", nullptr);
    tool->queue().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(unmergedFiles(), "");
}

TEST_F(RVGitToolThreadsTest, CancellingBeforeAnyLaunchDoesNothing) {
    RVGitMergeTool::mergeToolWithRepository(repository(), "x")->cancel();
    RVGitDiffTool::diffToolWithRepository(repository(), "x")->cancel();
}

TEST_F(RVGitToolThreadsTest, AnUnknownToolFails) {
    makeConflict();
    Endings endings;
    const auto tool = RVGitMergeTool::mergeToolWithRepository(repository(), "no such tool");
    tool->launchWithFilePath("file", endings.handler());
    const auto told = endings.waitFor(1);
    EXPECT_NE(told[0].exitCode, 0);
    EXPECT_TRUE(told[0].error);
}

TEST_F(RVGitToolThreadsTest, AFailureToLaunchIsToldOnce) {
    useMissingGit();
    Endings endings;
    const auto mergeTool = RVGitMergeTool::mergeToolWithRepository(repository(), "x");
    mergeTool->launchWithFilePath("file", endings.handler());
    const auto diffTool = RVGitDiffTool::diffToolWithRepository(repository(), "x");
    diffTool->launchWithRevisions(std::nullopt, std::nullopt, 0, endings.handler());
    for (const Ending& told : endings.waitFor(2)) {
        ASSERT_TRUE(told.error);
        EXPECT_EQ(told.error->code(), RVGitNoGitRepoError);
    }
    mergeTool->queue().waitUntilAllOperationsAreFinished();
    diffTool->queue().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(endings.waitFor(2).size(), 2u);
}

TEST_F(RVGitToolThreadsTest, WhatIsRaisedWhileALaunchIsPreparedIsToldOnce) {
    Endings endings;
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "x");
    tool->launchWithRevisions(std::nullopt, Paths(5000, "file"), 0, endings.handler());
    const auto told = endings.waitFor(1);
    ASSERT_TRUE(told[0].error);
    EXPECT_EQ(told[0].error->code(), RVGitRVGitGenericError);
    tool->queue().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(endings.waitFor(1).size(), 1u);
}

TEST_F(RVGitToolThreadsTest, ToolsAreNotCountedAgainstTheLimitOfTheCommands) {
    makeConflict();
    defineTool("mergetool", "slow", waitsForRelease() + "exit 1");
    const auto limit = RVGitCommandQueue::sharedQueue().queue().maxConcurrentOperationCount();
    std::vector<std::shared_ptr<RVGitMergeTool>> tools(limit + 1);
    Endings endings;
    for (auto& tool : tools) {
        tool = RVGitMergeTool::mergeToolWithRepository(repository(), "slow");
        tool->launchWithFilePath("file", endings.handler());
    }
    EXPECT_TRUE(repository()->HEADRevision());
    releaseTool();
    EXPECT_EQ(endings.waitFor(tools.size()).size(), tools.size());
}

// Diff tool.

TEST_F(RVGitToolThreadsTest, ADiffToolIsShownBothVersions) {
    commitFile("repository", "a file", "one\n", "First");
    commitFile("repository", "a file", "two\n", "Second");
    defineTool("difftool", "good", "echo \"$1:\" $(cat \"$2\" \"$3\"); echo warning >&2");
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "good");
    EXPECT_EQ(tool->queue().name(), RVGitMakeQueueName("DiffToolQueue"));
    EXPECT_EQ(tool->exitCode(), 0);
    EXPECT_EQ(tool->standardOutput(), std::nullopt);
    EXPECT_EQ(tool->standardError(), std::nullopt);
    std::promise<std::string> shown;
    tool->launchWithRevisions(Paths{"HEAD^", "HEAD"}, Paths{"a file"}, 0,
                              [&](int exitCode, const std::optional<RVError>& error) {
                                  EXPECT_EQ(exitCode, 0);
                                  EXPECT_EQ(error, std::nullopt);
                                  EXPECT_EQ(tool->exitCode(), 0);
                                  EXPECT_EQ(tool->standardError(), "warning\n");
                                  shown.set_value(tool->standardOutput().value_or("absent"));
                              });
    EXPECT_EQ(shown.get_future().get(), "a file: one two\n");
}

TEST_F(RVGitToolThreadsTest, ADiffToolTakesItsOptions) {
    commitFile("repository", "file", "one\n", "First");
    writeFile("repository/file", "staged\n");
    gitInRepository({"add", "file"});
    writeFile("repository/file", "changed\n");
    defineTool("difftool", "good", "cat \"$2\"/* \"$3\"/* 2>/dev/null || cat \"$2\" \"$3\"");
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "good");
    const auto shown = [&](unsigned options) {
        Endings endings;
        tool->launchWithRevisions(std::nullopt, std::nullopt, options, endings.handler());
        EXPECT_EQ(endings.waitFor(1)[0].error, std::nullopt);
        return tool->standardOutput();
    };
    EXPECT_EQ(shown(0), "staged\nchanged\n");
    EXPECT_EQ(shown(RVGitDiffToolOptionComparesIndex), "one\nstaged\n");
    EXPECT_EQ(shown(RVGitDiffToolOptionPerformsDirectoryDiff), "staged\nchanged\n");
    EXPECT_TRUE(tool->diffToolCommand()->performsDirectoryDiff());
    EXPECT_EQ(shown(RVGitDiffToolOptionPerformsDirectoryDiff | RVGitDiffToolOptionComparesIndex),
              "one\nstaged\n");
    EXPECT_EQ(RVGitDiffToolOptionPerformsDirectoryDiff, 1u);
    EXPECT_EQ(RVGitDiffToolOptionComparesIndex, 2u);
}

TEST_F(RVGitToolThreadsTest, ADiffToolThatFailsIsTold) {
    commitFile("repository", "file", "one\n", "First");
    writeFile("repository/file", "two\n");
    defineTool("difftool", "bad", "exit 7");
    gitInRepository({"config", "difftool.trustExitCode", "true"});
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "bad");
    Endings endings;
    tool->launchWithRevisions(std::nullopt, std::nullopt, 0, endings.handler());
    const auto told = endings.waitFor(1);
    EXPECT_NE(told[0].exitCode, 0);
    ASSERT_TRUE(told[0].error);
    EXPECT_EQ(tool->exitCode(), told[0].exitCode);
}

TEST_F(RVGitToolThreadsTest, ADiffToolThatHangsIsCancelled) {
    commitFile("repository", "file", "one\n", "First");
    writeFile("repository/file", "two\n");
    defineTool("difftool", "hanging", showsThatItRuns() + "sleep 300");
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "hanging");
    Endings endings;
    tool->launchWithRevisions(std::nullopt, std::nullopt, 0, endings.handler());
    waitUntilToolRuns();
    // Nothing is to be read of a launch that is under way.
    EXPECT_EQ(tool->standardOutput(), std::nullopt);
    tool->cancel();
    const auto told = endings.waitFor(1);
    EXPECT_NE(told[0].exitCode, 0);
    EXPECT_EQ(told[0].error, std::nullopt);
}

}  // namespace
