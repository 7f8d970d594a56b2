#include "RVGit/command/RVGitCancellationWatch.h"

#include <gtest/gtest.h>

#include <optional>

#include "RVGit/base/RVOperationQueue.h"

namespace {

TEST(RVGitCancellationWatchTest, NoticesWhatIsCancelledWhileItLivesAndClearsThePlaceThen) {
    RVGitCommandQueue& queue = RVGitCommandQueue::sharedQueue();
    const RVGitCancellationWatch watch;
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_FALSE(watch.isCancelled(&error));
    EXPECT_TRUE(error.has_value());
    queue.cancelAllCommands();
    EXPECT_TRUE(watch.isCancelled());
    EXPECT_TRUE(watch.isCancelled(&error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_FALSE(RVGitCancellationWatch().isCancelled());
}

TEST(RVGitCancellationWatchTest, NoticesACancelOfTheQueueItself) {
    const RVGitCancellationWatch watch;
    RVGitCommandQueue::sharedQueue().queue().cancelAllOperations();
    EXPECT_TRUE(watch.isCancelled());
}

}  // namespace
