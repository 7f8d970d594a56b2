#include "RVGit/command/RVGitCommand.h"

#include <signal.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitError.h"
#include "tests/command/RVGitCommandTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

class RVGitCommandThreadsTest : public RVGitCommandTestCase {};

TEST_F(RVGitCommandThreadsTest,
       TheOverflowReachesWhoeverWaitsForAnEnqueuedCommandAndTheQueueGoesOn) {
    auto command = scripted("exit 0");
    command->setGitCommandArguments(std::vector<std::string>(5000, "x"));
    command->enqueueCommand();
    EXPECT_THROW(command->waitUntilFinished(), RVGitCommandArgumentsOverflowException);
    auto next = scripted("exit 0");
    EXPECT_TRUE(next->run());
}

TEST_F(RVGitCommandThreadsTest, HooksOfASuccessRunInOrder) {
    auto command = scripted("printf output");
    bool completed = false;
    command->setCompletionHandler([&](RVGitCommand& finished) {
        EXPECT_EQ(&finished, command.get());
        EXPECT_EQ(command->calls.back(), "willParse");
        completed = true;
    });
    EXPECT_TRUE(command->run());
    EXPECT_THAT(command->calls,
                ElementsAre("willInitialize", "didInitialize", "didTerminate", "willParse"));
    EXPECT_TRUE(completed);
    EXPECT_FALSE(command->completionHandler());
}

TEST_F(RVGitCommandThreadsTest, ACompletionHandlerIsDroppedWhateverItDoes) {
    auto command = scripted("exit 0");
    command->setCompletionHandler([command](RVGitCommand& finished) {
        finished.setCompletionHandler([](RVGitCommand&) { ADD_FAILURE() << "called"; });
        EXPECT_EQ(command->exitCode(), 0) << "the handler's own capture is still alive";
    });
    EXPECT_TRUE(command->run());
    EXPECT_FALSE(command->completionHandler());

    const std::weak_ptr<RVGitCommand> throwing = [&] {
        auto held = scripted("exit 0");
        held->setCompletionHandler([held](RVGitCommand&) { throw std::runtime_error("no"); });
        EXPECT_THROW(held->run(), std::runtime_error);
        return held;
    }();
    EXPECT_TRUE(throwing.expired());
}

TEST_F(RVGitCommandThreadsTest, AHandlerThatThrowsLetsGitCleanUpAndTheCommandFinish) {
    // As git does it: the lock goes when the process is asked to end, and stays if it is killed.
    auto command = scripted(
        "trap 'rm \"$LOCK\"; exit 130' TERM; : > \"$LOCK\"; "
        "printf 'Receiving objects: 10%% (1/10)\\r' >&2; "
        "while :; do sleep 0.01; done");
    command->setValueForEnvironmentVariable(scratchPath("index.lock"), "LOCK");
    command->willInitialize = [](HookedCommand& self) {
        self.setGitCommand("clone");
        self.setSupportsProgressOutput(true);
    };
    int progresses = 0;
    command->setProgressHandler([&](RVGitCommandProgress&) {
        ++progresses;
        throw std::runtime_error("progress");
    });
    int completions = 0;
    command->setCompletionHandler([&](RVGitCommand& finished) {
        ++completions;
        EXPECT_TRUE(finished.error());
    });
    EXPECT_THAT([&] { command->run(); }, testing::ThrowsMessage<std::runtime_error>("progress"));
    EXPECT_THAT([&] { command->waitUntilFinished(); },
                testing::ThrowsMessage<std::runtime_error>("progress"));
    EXPECT_FALSE(fileExists("index.lock"));
    EXPECT_EQ(progresses, 1);
    EXPECT_EQ(completions, 1);
    EXPECT_FALSE(command->isCancelled());
    EXPECT_EQ(command->exitCode(), 130);
    EXPECT_EQ(command->error()->code(), RVGitRVGitGenericError);
    EXPECT_THAT(command->calls, ElementsAre("willInitialize", "didInitialize", "didTerminate",
                                            "willUseUserInfo", "shouldHandle"));
}

TEST_F(RVGitCommandThreadsTest, AHandlerThatThrowsLeavesNoLockOfTheRealGit) {
    const std::string repository = initRepository("locked");
    writeFile("locked/file", "text");
    // A filter that says when git holds the lock of the index, and waits.
    git({"config", "filter.slow.clean", "echo started >&2; sleep 60"}, repository);
    writeFile("locked/.gitattributes", "file filter=slow\n");
    auto command = std::make_shared<HookedCommand>(realGit(), repository);
    command->willInitialize = [](HookedCommand& self) {
        self.setGitCommand("add");
        self.setSupportsProgressOutput(true);
        self.addGitCommandArguments({"--", "file"});
    };
    bool wasLocked = false;
    command->setProgressHandler([&](RVGitCommandProgress&) {
        wasLocked = fileExists("locked/.git/index.lock");
        throw std::runtime_error("progress");
    });
    EXPECT_THROW(command->run(), std::runtime_error);
    EXPECT_TRUE(wasLocked);
    EXPECT_FALSE(fileExists("locked/.git/index.lock"));
}

TEST_F(RVGitCommandThreadsTest, EveryHookIsCalledWhicheverOfThemThrows) {
    const auto throwing = [](const char* what) { return std::runtime_error(what); };
    for (int thrower = 0; thrower < 4; ++thrower) {
        auto command = scripted("printf out");
        command->didReceive = [&](HookedCommand&) {
            if (thrower == 0)
                throw throwing("0");
        };
        command->didTerminate = [&](HookedCommand&) {
            if (thrower == 1)
                throw throwing("1");
        };
        command->willParse = [&](RVErrorPlace) -> bool {
            if (thrower == 2)
                throw throwing("2");
            return true;
        };
        int completions = 0;
        command->setCompletionHandler([&](RVGitCommand& finished) {
            ++completions;
            // The child may have ended before it could be asked to.
            if (thrower != 0) {
                EXPECT_EQ(finished.error().has_value(), thrower == 2);
            }
            if (thrower == 3)
                throw throwing("3");
        });
        EXPECT_THAT([&] { command->run(); },
                    testing::ThrowsMessage<std::runtime_error>(std::to_string(thrower)));
        EXPECT_EQ(completions, 1);
        EXPECT_THAT(command->calls, testing::Contains("didTerminate"));
        if (thrower != 0) {
            EXPECT_THAT(command->calls, testing::Contains("willParse"));
        }
    }
}

TEST_F(RVGitCommandThreadsTest, AHandlerThatWaitsForItsOwnCommandIsTold) {
    auto command = scripted("printf out");
    int told = 0;
    const auto wait = [&] {
        try {
            command->run();
        } catch (const RVInternalInconsistencyException&) {
            ++told;
        }
        try {
            command->waitUntilFinished();
        } catch (const RVInternalInconsistencyException&) {
            ++told;
        }
    };
    command->didReceive = [&](HookedCommand&) { wait(); };
    command->setCompletionHandler([&](RVGitCommand&) { wait(); });
    EXPECT_TRUE(command->run());
    EXPECT_EQ(told, 4);
}

TEST_F(RVGitCommandThreadsTest, HandlersThatAllWaitForAllCommandsDoNotWaitForEachOther) {
    std::vector<std::shared_ptr<HookedCommand>> commands;
    std::atomic<int> inHandler = 0;
    for (int number = 0; number < 2; ++number) {
        commands.push_back(scripted("exit 0"));
        commands.back()->setCompletionHandler([&](RVGitCommand&) {
            ++inHandler;
            while (inHandler < 2)
                std::this_thread::sleep_for(milliseconds(1));
            RVGitCommandQueue::sharedQueue().waitUntilAllCommandsFinished();
        });
    }
    for (const auto& command : commands)
        command->enqueueCommand();
    for (const auto& command : commands)
        command->waitUntilFinished();
}

TEST_F(RVGitCommandThreadsTest, OutputIsDecodedOnceAndInAnyEncoding) {
    auto command = scripted("printf 'caf\\351'; printf 'a\\000b' >&2");
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->standardOutputData(), "caf\xe9");
    EXPECT_EQ(command->standardOutputString(), "café");
    EXPECT_EQ(&command->standardOutputString(), &command->standardOutputString());
    EXPECT_EQ(command->standardErrorString(), std::string("a\0b", 3));
}

TEST_F(RVGitCommandThreadsTest, CancellingAWaitingCommandLaunchesNothing) {
    const std::string marker = scratchPath("launched");
    auto waiting = std::make_shared<HookedCommand>(
        RVGitBinary::gitBinaryWithPath(writeFile("marking", "#!/bin/sh\n: > " + marker, 0755)));
    const auto patient = scriptedGit("while [ ! -e \"$OPEN\" ]; do sleep 0.01; done");
    std::vector<std::shared_ptr<HookedCommand>> blocking;
    for (int number = 0; number < 8; ++number) {
        blocking.push_back(std::make_shared<HookedCommand>(patient));
        blocking.back()->setValueForEnvironmentVariable(scratchPath("open"), "OPEN");
        blocking.back()->enqueueCommand();
    }
    waiting->setCompletionHandler([](RVGitCommand&) { ADD_FAILURE() << "completed"; });
    std::filesystem::remove(marker);
    waiting->enqueueCommand();
    waiting->cancel();
    waiting->waitUntilFinished();
    EXPECT_TRUE(waiting->calls.empty());
    EXPECT_FALSE(waiting->error());
    writeFile("open", "");
    RVGitCommandQueue::sharedQueue().waitUntilAllCommandsFinished();
    EXPECT_FALSE(fileExists(marker));
    EXPECT_TRUE(waiting->run()) << "a cancelled command has not failed";
    EXPECT_TRUE(waiting->calls.empty());
}

TEST_F(RVGitCommandThreadsTest, CancellingWhileItIsPreparedLaunchesNothing) {
    auto command = scripted(": > \"$MARKER\"");
    command->setValueForEnvironmentVariable(scratchPath("launched"), "MARKER");
    command->willInitialize = [](HookedCommand& self) { self.cancel(); };
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(fileExists("launched"));
    EXPECT_EQ(command->calls.back(), "didInitialize");
}

TEST_F(RVGitCommandThreadsTest, ACancelledRunHasNoErrorEvenWhereItsOutputDoesNotParse) {
    auto command = scripted("printf 'half a rec'; sleep 60; exit 1");
    command->didReceive = [](HookedCommand& self) { self.cancel(); };
    command->willParse = [&](RVErrorPlace error) {
        EXPECT_EQ(command->standardOutputData(), "half a rec");
        fillErrorPlace(error, gitErrorWithCode(RVGitOutputParserError));
        return false;
    };
    int completions = 0;
    command->setCompletionHandler([&](RVGitCommand&) { ++completions; });
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(command->error());
    EXPECT_EQ(completions, 1);
    EXPECT_THAT(command->calls,
                ElementsAre("willInitialize", "didInitialize", "didTerminate", "willParse"));
    EXPECT_EQ(command->exitCode(), 128 + SIGTERM);
}

TEST_F(RVGitCommandThreadsTest, CancellingAfterTheEndChangesNothing) {
    auto command = scripted("exit 2");
    EXPECT_FALSE(command->run());
    command->cancel();
    EXPECT_TRUE(command->error());
    EXPECT_EQ(command->exitCode(), 2);
}

TEST_F(RVGitCommandThreadsTest, ProgressIsReadFromBothStreams) {
    // Each line waits until the one before is seen, since there is no order between two streams.
    const std::string seenPrefix = scratchPath("seen");
    const auto untilSeen = [&](int count) {
        return waitingLoopForShell("[ ! -e '" + seenPrefix + std::to_string(count) + "' ]") + "; ";
    };
    auto command = scripted("printf 'Compressing objects:  40%% (2/5)\\r' >&2; " + untilSeen(1) +
                            "printf 'Receiving objects: 100%% (5/5), done.\\n'; " + untilSeen(2) +
                            "printf 'Resolving deltas: 100%% (1/1), done.\\n' >&2");
    command->willInitialize = [](HookedCommand& self) {
        self.setGitCommand("clone");
        self.setSupportsProgressOutput(true);
    };
    std::vector<double> seen;
    command->setProgressHandler([&](RVGitCommandProgress& progress) {
        EXPECT_EQ(&progress, command->commandProgress().get());
        seen.push_back(progress.overallProgress());
        writeFile("seen" + std::to_string(seen.size()), "");
    });
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->commandProgress()->command(), "clone");
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_NEAR(seen[0], 0.4 / 3, 1e-9);
    EXPECT_EQ(seen.back(), 1.0);
}

TEST_F(RVGitCommandThreadsTest, ACommandWithoutProgressHasNone) {
    auto command = scripted("printf 'Compressing objects:  40%% (2/5)\\r' >&2");
    command->setProgressHandler([](RVGitCommandProgress&) { ADD_FAILURE() << "progress"; });
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->commandProgress(), nullptr);
}

TEST_F(RVGitCommandThreadsTest, AHookMayRunACommandWhileEverySlotIsTaken) {
    // As many as there are slots, so that a hook that took a second one would wait for ever.
    std::atomic<int> inHook = 0;
    std::vector<std::shared_ptr<HookedCommand>> commands;
    std::atomic<int> inner = 0;
    for (int number = 0; number < 8; ++number) {
        commands.push_back(scripted("exit 0"));
        commands.back()->willInitialize = [&, binary = realGit()](HookedCommand&) {
            ++inHook;
            while (inHook < 8)
                std::this_thread::sleep_for(milliseconds(1));
            auto nested = std::make_shared<HookedCommand>(binary);
            nested->addGitOption("--version");
            inner += nested->run();
        };
    }
    for (const auto& command : commands)
        command->enqueueCommand();
    RVGitCommandQueue::sharedQueue().waitUntilAllCommandsFinished();
    EXPECT_EQ(inner, 8);
}

}  // namespace
