#include "RVGit/merge/RVGitMergeManager.h"

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

class RVGitMergeManagerThreadsTest : public RVGitMergeTestCase {};

TEST_F(RVGitMergeManagerThreadsTest, PreviewsNeedOneCommandAtATime) {
    // The report's entries open a repository on the thread of the command that read it.
    auto& queue = RVGitCommandQueue::sharedQueue().queue();
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < 2 * queue.maxConcurrentOperationCount(); ++index)
        threads.emplace_back([&] { EXPECT_FALSE(manager().canMergeRevision("topic", "main")); });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(RVGitMergeManagerThreadsTest, ACommitThatIsCancelledIsNotGoneOnFrom) {
    checkOut("topic");
    ASSERT_FALSE(manager().rebaseWithRevision("main", std::nullopt));
    write("file", "precious\n");
    ASSERT_TRUE(manager().resolveUnmergedFileByAdding("file"));
    const std::string started = scratchPath("started");
    const std::string hooks = makeDirectory("hooks");
    writeFile(hooks + "/prepare-commit-msg", "#!/bin/sh\n: > '" + started + "'\nexec sleep 60\n",
              0755);
    gitHere({"config", "core.hooksPath", hooks});
    const RVRepositorySnapshot before(path());
    const RVCanceller canceller(started);
    std::optional<RVError> error;
    EXPECT_FALSE(manager().continueEmptyRebaseWithCommitMessage("Mine", &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    EXPECT_EQ(read("file"), "precious\n");
}

TEST_F(RVGitMergeManagerThreadsTest, AVersionThatWasNotReadWholeIsNotWritten) {
    checkOut("main");
    stopGit({"merge", "topic"});
    write("file", "precious\n");
    const RVRepositorySnapshot before(path());
    for (const char* print : {":", "printf b"}) {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' show '*", 0, print});
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFile("file", &error));
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(read("file"), "precious\n");
    }
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    ASSERT_TRUE(manager().restoreAncestorVersionForUnmergedFile("file"));
    EXPECT_EQ(read("file"), "base\n");
}

TEST_F(RVGitMergeManagerThreadsTest, BehindABatchOfConflictsThatIsCancelledNoneRuns) {
    checkOut("main");
    stopGit({"merge", "topic"});
    const std::size_t maximum = RVGitCommand::maximumNumberOfAllowedFilePathArguments();
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(1);
    const std::vector<std::string> paths = {"file", "file", "file"};
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager().restoreOurVersionForUnmergedFiles(paths, e); },
        [&](RVErrorPlace e) { return manager().restoreTheirVersionForUnmergedFiles(paths, e); },
        [&](RVErrorPlace e) { return manager().restoreUnmergedVersionForFiles(paths, e); }};
    for (const auto& operation : operations) {
        const RVRepositorySnapshot before(path());
        std::optional<RVError> error = RVError("before", 1);
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' checkout '*"});
        EXPECT_FALSE(operation(&error));
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(cancelled.numberOfCalls(), 1);
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    }
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(maximum);
}

TEST_F(RVGitMergeManagerThreadsTest, ARangeThatWasNotReadWholeIsNotRewritten) {
    // The log of a merge begins with it, and goes on with one side after the other.
    checkOut("main");
    gitHere({"merge", "-q", "-m", "Merge", "clean"});
    const std::string merge = hash("HEAD");
    const std::string clean = hash("clean");
    const RVRepositorySnapshot before(path());
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager().deleteRevisions({clean}, e); },
        [&](RVErrorPlace e) { return manager().setCommitMessage("New", clean, e); },
        [&](RVErrorPlace e) { return manager().editRevision(clean, true, e); },
        [&](RVErrorPlace e) {
            return manager().fixupRevisions({merge, clean}, e);
        },
        [&](RVErrorPlace e) { return manager().fixupRevisions({merge}, clean, e); },
        [&](RVErrorPlace e) { return manager().moveRevisions({merge}, clean, true, e); }};
    // Of the commit alone; of the range, cut off behind any of its commits.
    for (const auto& operation : operations)
        for (const auto& call :
             {RVHangingGit::Call{"*' log '*"}, RVHangingGit::Call{"*' log '*", 1},
              RVHangingGit::Call{"*' log '*", 1, "\"$GIT\" \"$@\" --max-count=2"}}) {
            std::optional<RVError> error = RVError("before", 1);
            {
                const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), call);
                EXPECT_FALSE(operation(&error)) << call.skipped;
            }
            EXPECT_EQ(error, std::nullopt) << call.skipped;
            EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
        }
}

TEST_F(RVGitMergeManagerThreadsTest, AnOperationThatGitHadNoTimeToNameIsNotSaidToBeMissing) {
    checkOut("main");
    // What stands in the file where refs are kept in tables.
    writeFile(path() + "/.git/HEAD", "ref: refs/heads/.invalid\n");
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager().continueCurrentOperation(e); },
        [&](RVErrorPlace e) { return manager().skipCurrentOperation(e); },
        [&](RVErrorPlace e) { return manager().abortCurrentOperation(e); },
        [&](RVErrorPlace e) { return manager().abortMerge(e); }};
    for (const auto& operation : operations) {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' show-ref '*"});
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(operation(&error));
        EXPECT_EQ(error, std::nullopt);
    }
}

}  // namespace
