#include "RVGit/command/RVGitCommandQueue.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "tests/support/RVGitTestCase.h"

namespace {

class RVGitCommandQueueThreadsTest : public RVGitTestCase {};

std::size_t numberOfEntries(const std::string& directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST_F(RVGitCommandQueueThreadsTest, IsNamedAndBoundedByTheConfiguration) {
    RVOperationQueue& queue = RVGitCommandQueue::sharedQueue().queue();
    EXPECT_EQ(queue.name(), "com.varnelsoft.Git.CommandQueue");
    EXPECT_EQ(queue.maxConcurrentOperationCount(), 8u);
}

TEST_F(RVGitCommandQueueThreadsTest, ACommandIsRequired) {
    EXPECT_THAT([] { RVGitCommandQueue::sharedQueue().enqueueCommand(nullptr); },
                testing::ThrowsMessage<RVInvalidParameterException>(
                    "Invalid parameter not satisfying: command"));
    EXPECT_THAT([] { RVGitCommandQueue::sharedQueue().executeCommand(nullptr); },
                testing::ThrowsMessage<RVInvalidParameterException>(
                    "Invalid parameter not satisfying: command"));
}

TEST_F(RVGitCommandQueueThreadsTest,
       AThousandCommandsRunWithinTheLimitCompleteOnceAndLeaveNothing) {
    // Each child says for how long it lives; overlaps are counted afterwards by a directory that
    // holds one entry for each child that is alive.
    const std::string alive = makeDirectory("alive");
    const std::string path = writeFile("git",
                                       "#!/bin/sh\n"
                                       "case \"$*\" in *--version*) echo git version 2.39.5;; "
                                       "*) : > \"$ALIVE/$$\"; set -- \"$ALIVE\"/*; echo $#; "
                                       "rm \"$ALIVE/$$\";; esac\n",
                                       0755);
    const auto binary = RVGitBinary::gitBinaryWithPath(path);
    const std::size_t descriptors = numberOfEntries("/proc/self/fd");
    // A sanitizer starts a thread of its own beside the first.
    std::thread([] {}).join();
    const std::size_t threads = numberOfEntries("/proc/self/task");
    constexpr int count = 1000;
    std::vector<std::atomic<int>> completions(count);
    std::atomic<int> most = 0;
    std::vector<std::shared_ptr<RVGitCommand>> commands;
    for (int number = 0; number < count; ++number) {
        auto command = RVGitCommand::gitCommandWithGitBinary(binary);
        command->setValueForEnvironmentVariable(alive, "ALIVE");
        command->setCompletionHandler([&, number](RVGitCommand& finished) {
            ++completions[static_cast<std::size_t>(number)];
            const int children = std::stoi(finished.standardOutputString());
            for (int seen = most; children > seen && !most.compare_exchange_weak(seen, children);) {
            }
        });
        commands.push_back(std::move(command));
    }
    for (const auto& command : commands)
        command->enqueueCommand();
    RVGitCommandQueue::sharedQueue().waitUntilAllCommandsFinished();
    for (const auto& completed : completions)
        ASSERT_EQ(completed, 1);
    EXPECT_LE(most, 8);
    EXPECT_GE(most, 2);
    EXPECT_EQ(numberOfEntries("/proc/self/fd"), descriptors);
    // The last threads end just behind their last command.
    for (int attempt = 0; attempt < 500 && numberOfEntries("/proc/self/task") > threads; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_LE(numberOfEntries("/proc/self/task"), threads);
}

TEST_F(RVGitCommandQueueThreadsTest, CancellingAllEndsWhatRunsAndWhatWaits) {
    const auto binary = RVGitBinary::gitBinaryWithPath(
        writeFile("git",
                  "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5;; "
                  "*) exec sleep 60;; esac\n",
                  0755));
    std::vector<std::shared_ptr<RVGitCommand>> commands;
    for (int number = 0; number < 20; ++number) {
        commands.push_back(RVGitCommand::gitCommandWithGitBinary(binary));
        commands.back()->enqueueCommand();
    }
    RVGitCommandQueue::sharedQueue().cancelAllCommands();
    RVGitCommandQueue::sharedQueue().waitUntilAllCommandsFinished();
    for (const auto& command : commands) {
        EXPECT_TRUE(command->isFinished());
        EXPECT_FALSE(command->error());
    }
}

}  // namespace
