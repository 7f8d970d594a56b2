#include "RVGit/merge/RVGitMergeManager.h"

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "tests/merge/RVGitMergeTestCase.h"
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

}  // namespace
