#include "RVGit/archive/RVGitArchiver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <thread>

#include "RVGit/archive/RVGitArchiveCommand.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVFullQueue.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestRights.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitArchiverThreadsTest : public RVGitRepositoryTestCase {
protected:
    using Paths = std::vector<std::string>;

    /// What a completion handler was told, for a test that waits for it.
    struct Completion {
        Paths filePaths;
        std::optional<RVError> error;
    };

    RVGitArchiverThreadsTest() { makeCommit(); }
    ~RVGitArchiverThreadsTest() override { letGitGoOn(); }

    [[nodiscard]] std::shared_ptr<RVGitArchiver> archiverFor(
        const std::string& destination, const std::string& revision = "HEAD",
        std::optional<Paths> filePaths = std::nullopt) const {
        return std::make_shared<RVGitArchiver>(repository(), revision, std::move(filePaths),
                                               scratchPath(destination));
    }
    /// A handler that counts its calls and keeps what the first one is told.
    [[nodiscard]] RVGitArchiver::CompletionHandler counting() {
        return [this](const Paths& filePaths, const std::optional<RVError>& error) {
            if (++calls_ == 1)
                completed_.set_value({filePaths, error});
        };
    }
    [[nodiscard]] Completion completion() { return completed_.get_future().get(); }

    /// git begins the archive, and goes on only when it is told to.
    void useWaitingGit() {
        const std::string script =
            "#!/bin/sh\ncase \" $* \" in *' --version '*) exec " + quotedForShell(gitPath()) +
            " \"$@\";; esac\nwhile [ \"$1\" != -o ]; do shift; done\nprintf half > \"$2\"\n" +
            "printf 'file.txt\\n' >&2\n: > " + quotedForShell(scratchPath("begun")) +
            "\nread line < " + quotedForShell(scratchPath("go")) + "\nexit 0\n";
        ASSERT_EQ(runProgram({"mkfifo", scratchPath("go")}).exitCode, 0);
        const std::string path = writeFile("waiting-git/git", script, 0755);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    }
    void waitUntilGitHasBegun() const {
        while (!fileExists("begun"))
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    void letGitGoOn() const {
        // Opened for both ways, so that a reader who has gone away is not waited for.
        if (fileExists("go"))
            (void)runProgram({"sh", "-c", "echo on 1<> \"$0\" >&1", scratchPath("go")});
    }

    std::atomic<int> calls_ = 0;

private:
    std::promise<Completion> completed_;
};

TEST_F(RVGitArchiverThreadsTest, RunsAndWaits) {
    const auto archiver = archiverFor("a.zip");
    EXPECT_FALSE(archiver->isRunning());
    EXPECT_EQ(archiver->command(), nullptr);
    EXPECT_THAT(archiver->archivedFilePaths(), IsEmpty());
    std::optional<RVError> error;
    EXPECT_TRUE(archiver->run(&error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_FALSE(archiver->isRunning());
    EXPECT_EQ(archiver->error(), std::nullopt);
    EXPECT_THAT(archiver->archivedFilePaths(), ElementsAre("file.txt"));
    EXPECT_EQ(readFile("a.zip").substr(0, 2), "PK");
}

TEST_F(RVGitArchiverThreadsTest, SetsNoFormatAndPassesPathsOn) {
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(archiverFor("a.zip", "main", Paths{"file.txt"})->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("archive", "--verbose", "--worktree-attributes", "-o",
                            scratchPath("a.zip"), "main", "--", "file.txt"));
    EXPECT_TRUE(archiverFor("b.zip", "main", Paths{})->run());
    EXPECT_EQ(lastArguments(recorder).back(), "--");
}

TEST_F(RVGitArchiverThreadsTest, AFailureEndsWithItsCodeAndNoPaths) {
    const auto archiver = archiverFor("a.zip", "missing");
    std::optional<RVError> error;
    EXPECT_FALSE(archiver->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitArchiveFilesError);
    EXPECT_EQ(archiver->error(), error);
    EXPECT_THAT(archiver->archivedFilePaths(), IsEmpty());
    EXPECT_FALSE(archiver->run());
    EXPECT_FALSE(fileExists("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, TheCompletionHandlerIsToldOfASuccess) {
    const auto archiver = archiverFor("a.zip");
    bool progressed = false;
    archiver->archiveWithProgressHandler([&](const std::string&, double) { progressed = true; },
                                         counting());
    archiver->waitUntilFinished();
    const auto told = completion();
    EXPECT_THAT(told.filePaths, ElementsAre("file.txt"));
    EXPECT_EQ(told.error, std::nullopt);
    EXPECT_EQ(calls_, 1);
    EXPECT_FALSE(progressed);
}

TEST_F(RVGitArchiverThreadsTest, TheCompletionHandlerIsToldOfAFailure) {
    const auto archiver = archiverFor("a.zip", "missing");
    archiver->archiveWithProgressHandler(nullptr, counting());
    archiver->waitUntilFinished();
    const auto told = completion();
    EXPECT_THAT(told.filePaths, IsEmpty());
    ASSERT_TRUE(told.error);
    EXPECT_EQ(told.error->code(), RVGitArchiveFilesError);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RVGitArchiverThreadsTest, AFailureToLaunchEndsWith100AndTheHandlerHearsOfIt) {
    RVFakeGit fake = useFakeGit();
    std::filesystem::remove(fake.path());
    const auto archiver = archiverFor("a.zip");
    archiver->setCompletionHandler(counting());
    std::optional<RVError> error;
    EXPECT_FALSE(archiver->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitNoGitRepoError);
    EXPECT_EQ(completion().error, error);
    EXPECT_EQ(calls_, 1);
    EXPECT_FALSE(archiver->isRunning());
    EXPECT_FALSE(fileExists("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, TooManyPathsAreRaisedToTheWaiterAndToldToTheHandler) {
    const auto archiver = archiverFor("a.zip", "HEAD", Paths(5000, "file.txt"));
    archiver->setCompletionHandler(counting());
    EXPECT_THROW((void)archiver->run(), RVGitCommandArgumentsOverflowException);
    const auto told = completion();
    ASSERT_TRUE(told.error);
    EXPECT_EQ(told.error->code(), RVGitRVGitGenericError);
    EXPECT_NE(told.error->userInfoString(RVGitCommandErrorOutputErrorKey), std::nullopt);
    EXPECT_EQ(calls_, 1);
    EXPECT_FALSE(archiver->isRunning());
}

TEST_F(RVGitArchiverThreadsTest, RunsBesideASharedQueueThatIsFull) {
    useWaitingGit();
    const auto archiver = archiverFor("a.zip");
    const RVFullQueue full(RVGitCommandQueue::sharedQueue().queue());
    archiver->start();
    waitUntilGitHasBegun();
    letGitGoOn();
    archiver->waitUntilFinished();
    EXPECT_EQ(archiver->error(), std::nullopt);
}

TEST_F(RVGitArchiverThreadsTest, CannotBeStartedTwiceAtOnce) {
    useWaitingGit();
    const auto archiver = archiverFor("a.zip");
    archiver->archiveWithProgressHandler(nullptr, counting());
    EXPECT_TRUE(archiver->isRunning());
    int others = 0;
    try {
        archiver->archiveWithProgressHandler(nullptr, [&](const auto&, const auto&) { ++others; });
        ADD_FAILURE() << "started twice";
    } catch (const RVInternalInconsistencyException& exception) {
        EXPECT_STREQ(exception.what(), "Archiver is already running.");
    }
    EXPECT_THROW(archiver->start(), RVInternalInconsistencyException);
    waitUntilGitHasBegun();
    letGitGoOn();
    archiver->waitUntilFinished();
    EXPECT_EQ(calls_, 1);
    EXPECT_EQ(others, 0);
}

TEST_F(RVGitArchiverThreadsTest, ACancelledRunHasNoErrorAndLeavesNoHalfArchive) {
    useWaitingGit();
    const auto archiver = archiverFor("a.zip");
    archiver->archiveWithProgressHandler(nullptr, counting());
    waitUntilGitHasBegun();
    EXPECT_EQ(readFile("a.zip"), "half");
    archiver->cancel();
    archiver->waitUntilFinished();
    EXPECT_EQ(completion().error, std::nullopt);
    EXPECT_EQ(calls_, 1);
    EXPECT_FALSE(archiver->isRunning());
    EXPECT_FALSE(fileExists("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, CancelledBeforeItsThreadRunsItIsFinishedOnce) {
    for (int round = 0; round < 50; ++round) {
        const auto archiver = archiverFor("a.zip");
        std::atomic<int> calls = 0;
        archiver->archiveWithProgressHandler(nullptr, [&](const auto&, const auto&) { ++calls; });
        archiver->cancel();
        archiver->waitUntilFinished();
        ASSERT_EQ(calls, 1);
        ASSERT_FALSE(archiver->isRunning());
        ASSERT_EQ(archiver->error(), std::nullopt);
    }
}

TEST_F(RVGitArchiverThreadsTest, CancellingAnIdleArchiverDoesNothing) {
    const auto archiver = archiverFor("a.zip");
    archiver->cancel();
    EXPECT_TRUE(archiver->run());
    archiver->cancel();
    EXPECT_TRUE(fileExists("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, WaitingForNothingReturnsAtOnce) {
    archiverFor("a.zip")->waitUntilFinished();
}

TEST_F(RVGitArchiverThreadsTest, AnyThreadCanWait) {
    useWaitingGit();
    const auto archiver = archiverFor("a.zip");
    archiver->start();
    std::vector<std::thread> waiters;
    std::atomic<int> back = 0;
    for (int index = 0; index < 4; ++index)
        waiters.emplace_back([&] {
            archiver->waitUntilFinished();
            ++back;
        });
    waitUntilGitHasBegun();
    EXPECT_EQ(back, 0);
    letGitGoOn();
    archiver->waitUntilFinished();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(back, 4);
    EXPECT_THAT(archiver->archivedFilePaths(), ElementsAre("file.txt"));
}

TEST_F(RVGitArchiverThreadsTest, WaitingEndsWhenTheHandlerHasReturned) {
    const auto archiver = archiverFor("a.zip");
    std::atomic<bool> returned = false;
    archiver->archiveWithProgressHandler(nullptr, [&](const auto&, const auto&) {
        EXPECT_FALSE(archiver->isRunning());
        EXPECT_THAT(archiver->archivedFilePaths(), ElementsAre("file.txt"));
        archiver->waitUntilFinished();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        returned = true;
    });
    archiver->waitUntilFinished();
    EXPECT_TRUE(returned);
}

TEST_F(RVGitArchiverThreadsTest, AHandlerCanStartTheNextRunAndWaitForIt) {
    const auto archiver = archiverFor("a.zip");
    std::atomic<int> runs = 0;
    archiver->archiveWithProgressHandler(nullptr, [&](const auto&, const auto&) {
        if (++runs < 3) {
            EXPECT_TRUE(archiver->run());
        }
    });
    archiver->waitUntilFinished();
    EXPECT_EQ(runs, 3);
    EXPECT_FALSE(archiver->isRunning());
}

TEST_F(RVGitArchiverThreadsTest, WhatTheHandlerRaisesReachesTheWaiter) {
    const auto archiver = archiverFor("a.zip");
    archiver->setCompletionHandler(
        [](const auto&, const auto&) { throw std::runtime_error("raised by the handler"); });
    EXPECT_THROW((void)archiver->run(), std::runtime_error);
    archiver->setCompletionHandler(nullptr);
    EXPECT_TRUE(archiver->run());
}

TEST_F(RVGitArchiverThreadsTest, AnArchiverReleasedWhileItRunsHearsNothingMore) {
    useWaitingGit();
    auto archiver = archiverFor("a.zip");
    const std::weak_ptr<RVGitArchiver> weak = archiver;
    archiver->archiveWithProgressHandler(nullptr, counting());
    waitUntilGitHasBegun();
    const auto command = archiver->command();
    archiver.reset();
    EXPECT_TRUE(weak.expired());
    letGitGoOn();
    command->waitUntilFinished();
    EXPECT_EQ(calls_, 0);
    EXPECT_EQ(readFile("a.zip"), "half");
}

TEST_F(RVGitArchiverThreadsTest, AFailureAfterTheArchiverIsReleasedLeavesNoHalfArchive) {
    useWaitingGit();
    auto archiver = archiverFor("a.zip");
    archiver->start();
    waitUntilGitHasBegun();
    const auto command = archiver->command();
    archiver.reset();
    command->cancel();
    command->waitUntilFinished();
    EXPECT_FALSE(fileExists("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, ResultsStayUntilTheNextRun) {
    const auto archiver = archiverFor("dir/a.zip");
    EXPECT_FALSE(archiver->run());
    EXPECT_NE(archiver->error(), std::nullopt);
    makeDirectory("dir");
    EXPECT_TRUE(archiver->run());
    EXPECT_EQ(archiver->error(), std::nullopt);
    EXPECT_THAT(archiver->archivedFilePaths(), ElementsAre("file.txt"));
}

TEST_F(RVGitArchiverThreadsTest, AProgressThatIsHandedInReachesTheHandler) {
    const auto archiver = archiverFor("a.zip");
    std::string text;
    double overall = 0;
    archiver->setProgressHandler([&](const std::string& output, double progress) {
        text = output;
        overall = progress;
    });
    RVGitCommandProgress progress("archive");
    progress.updateProgressWithOutputData("half\n");
    progress.setOverallProgress(0.5);
    archiver->gitCommandDidUpdateProgress(progress);
    EXPECT_EQ(text, progress.currentProgressOutput());
    EXPECT_EQ(overall, 0.5);
}

TEST_F(RVGitArchiverThreadsTest, AFullDiskIsAnErrorAndLeavesNoHalfArchive) {
    const std::string disk = makeDirectory("disk");
    commitFile("repository", "large", std::string(300'000, 'x'), "Message");
    bool mounted = false;
    // On a thread with mounts of its own, which what it starts has too, so that none can stay.
    std::thread([&] {
        mounted = ::unshare(CLONE_NEWNS) == 0 &&
                  ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!mounted)
            return;
        for (const char* name : {"disk/a.tar", "disk/b.tar", "disk/c.tgz"}) {
            const auto archiver = archiverFor(name);
            std::optional<RVError> error;
            if (std::string_view(name).ends_with("tgz")) {
                EXPECT_TRUE(archiver->run(&error));
                continue;
            }
            EXPECT_FALSE(archiver->run(&error));
            ASSERT_TRUE(error);
            EXPECT_EQ(error->code(), RVGitRVGitGenericError);
            EXPECT_THAT(error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                        testing::HasSubstr("No space left"));
            EXPECT_THAT(archiver->archivedFilePaths(), IsEmpty());
            EXPECT_FALSE(fileExists(name));
        }
    }).join();
    RVGIT_TEST_NEEDS_RIGHTS(mounted, "no disk can be mounted");
    EXPECT_FALSE(fileExists("disk/c.tgz"));
}

TEST_F(RVGitArchiverThreadsTest, ItsFieldsAreThoseItWasMadeOf) {
    const auto archiver = archiverFor("a.zip", "main", Paths{"x"});
    EXPECT_EQ(archiver->repository(), repository());
    EXPECT_EQ(archiver->revision(), "main");
    EXPECT_EQ(archiver->filePaths(), Paths{"x"});
    EXPECT_EQ(archiver->destination(), scratchPath("a.zip"));
}

TEST_F(RVGitArchiverThreadsTest, NeedsARepository) {
    EXPECT_THROW((void)std::make_shared<RVGitArchiver>(nullptr, "HEAD", std::nullopt, "a"),
                 RVInvalidParameterException);
}

TEST_F(RVGitArchiverThreadsTest, OneThatNoSharedPointerOwnsDoesNotStart) {
    RVGitArchiver archiver(repository(), "HEAD", std::nullopt, scratchPath("a.zip"));
    EXPECT_THROW(archiver.start(), std::bad_weak_ptr);
    EXPECT_FALSE(archiver.isRunning());
}

}  // namespace
