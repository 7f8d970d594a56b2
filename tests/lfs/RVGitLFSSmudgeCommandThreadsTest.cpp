#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "tests/lfs/RVGitLFSSmudgeTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitLFSSmudgeCommandThreadsTest : public RVGitLFSSmudgeTestCase {};

TEST_F(RVGitLFSSmudgeCommandThreadsTest, WaitsForTheLockOfAnotherProcess) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto pointer = keepObject("one");
        const int lock = ::open(lockPath, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        ASSERT_EQ(::flock(lock, LOCK_EX), 0);
        writeFile(inputPath, "somebody's, who holds the lock");
        const auto command = commandFor(pointer);
        command->start();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(command->isFinished());
        EXPECT_EQ(readFile(inputPath), "somebody's, who holds the lock");
        ::close(lock);
        command->waitUntilFinished();
        ASSERT_TRUE(command->data());
        EXPECT_EQ(command->data()->view(), "one");
    });
}

TEST_F(RVGitLFSSmudgeCommandThreadsTest, CancellingEndsTheWait) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const int lock = ::open(lockPath, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        ASSERT_EQ(::flock(lock, LOCK_EX), 0);
        const auto recorder = useRecordingGit();
        const auto command = commandFor(pointerFor("one"));
        command->start();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        command->cancel();
        command->waitUntilFinished();
        ::close(lock);
        EXPECT_EQ(command->error(), std::nullopt);
        EXPECT_EQ(command->data(), nullptr);
        EXPECT_THAT(recorder.invocations(), IsEmpty());
        EXPECT_FALSE(fileExists(inputPath));
    });
}

TEST_F(RVGitLFSSmudgeCommandThreadsTest, ACancelledRunReplacesNoFileByHalfOfIt) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const RVHangingGit git = hangingGit("smudge", "half");
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
        writeFile("output", "before");
        const auto command = commandFor(pointerFor("one"), scratchPath("output"));
        command->start();
        git.waitUntilBegun();
        command->cancel();
        command->waitUntilFinished();
        EXPECT_EQ(command->data(), nullptr);
        EXPECT_EQ(readFile("output"), "before");
        EXPECT_FALSE(fileExists(inputPath));
    });
}

TEST_F(RVGitLFSSmudgeCommandThreadsTest, ManyAtOnceGetTheirOwnContents) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        constexpr int count = 12;
        std::vector<std::shared_ptr<RVGitLFSSmudgeCommand>> commands;
        for (int index = 0; index < count; ++index)
            commands.push_back(commandFor(keepObject("contents " + std::to_string(index)),
                                          scratchPath("output" + std::to_string(index))));
        for (const auto& command : commands)
            command->start();
        for (int index = 0; index < count; ++index) {
            commands[static_cast<std::size_t>(index)]->waitUntilFinished();
            EXPECT_EQ(readFile("output" + std::to_string(index)),
                      "contents " + std::to_string(index));
        }
        EXPECT_THAT(namesInTemporaryDirectory(), ElementsAre("smudge_input.lock"));
    });
}

}  // namespace
