#include <atomic>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"
#include "RVGit/lfs/RVGitLFSTransferCommands.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "tests/lfs/RVGitLFSManagerTestCase.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVFullQueue.h"
#include "tests/support/RVTestRights.h"

namespace {

class RVGitLFSManagerThreadsTest : public RVGitLFSManagerTestCase {};

TEST_F(RVGitLFSManagerThreadsTest, RunsBesideASharedQueueThatIsFull) {
    const RVFullQueue full(RVGitCommandQueue::sharedQueue().queue());
    EXPECT_TRUE(manager_.prune());
}

TEST_F(RVGitLFSManagerThreadsTest, TrackAndUntrackGiveTheFinishedCommand) {
    const auto tracked = manager_.track({"*.psd"});
    EXPECT_TRUE(tracked->isFinished());
    EXPECT_EQ(tracked->error(), std::nullopt);
    EXPECT_FALSE(tracked->trackedFilePatterns());
    const auto untracked = manager_.untrack({"*.psd"});
    EXPECT_TRUE(untracked->isFinished());
    const auto refused = manager_.track({"--bad"});
    ASSERT_TRUE(refused->error());
}

TEST_F(RVGitLFSManagerThreadsTest, AListThatIsCancelledIsNoListAndNoError) {
    const std::string files = "0123456789 * a.bin\n";
    struct {
        std::string output;
        std::function<bool(RVErrorPlace)> list;
    } const listings[] = {
        {files,
         [&](RVErrorPlace e) { return manager_.allTrackedFiles(std::nullopt, e).has_value(); }},
        {files,
         [&](RVErrorPlace e) {
             return manager_.allTrackedFilesForRevision("HEAD", std::nullopt, e).has_value();
         }},
        {"Listing tracked patterns\n    *.bin (.gitattributes)\n",
         [&](RVErrorPlace e) { return manager_.allTrackingEntries(std::nullopt, e).has_value(); }},
    };
    for (const auto& [output, list] : listings) {
        const RVHangingGit git = hangingGit("lfs", output);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
        const RVCanceller canceller(git.begunPath(),
                                    [&] { manager_.commandQueue().cancelAllOperations(); });
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(list(&error));
        EXPECT_FALSE(error.has_value());
    }
    // Nothing is believed of one that fails, either, whether or not anybody asks why.
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = files, .exitCode = 2});
    EXPECT_EQ(manager_.allTrackedFiles(), std::nullopt);
    EXPECT_EQ(manager_.allTrackedFilesForRevision("HEAD"), std::nullopt);
}

TEST_F(RVGitLFSManagerThreadsTest, MissingObjectsFailAFetchAndAPull) {
    addServer();
    commitFile("repository", "a.bin", "one", "Message");
    gitInRepository({"push", "--no-verify", "origin", "main"});
    std::filesystem::remove_all(scratchPath("repository/.git/lfs/objects"));
    std::optional<RVError> error;
    EXPECT_FALSE(manager_.fetchRemote(origin(), std::nullopt, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    Told told;
    (void)manager_.pullRemote(origin(), std::nullopt, nullptr, told.handler());
    ASSERT_TRUE(told.error());
    EXPECT_EQ(readFile("repository/a.bin"), "one");
}

TEST_F(RVGitLFSManagerThreadsTest, ClonesInTheBackgroundWithItsEnvironment) {
    addServer();
    commitFile("repository", "a.bin", "one", "Message");
    gitInRepository({"push", "origin", "main"});
    setEnvironmentVariable("HOME", makeDirectory("home"));
    git({"lfs", "install"});
    Told told;
    RVGitLFSManager manager;
    std::atomic<int> progress = 0;
    const auto command = manager.cloneRepositoryAtURL(
        server_, scratchPath("cl one"), std::nullopt, {{"RVGIT_TEST_MARK", "x"}},
        [&](RVGitCommandProgress&) { ++progress; }, told.handler());
    ASSERT_TRUE(command);
    EXPECT_EQ(told.error(), std::nullopt);
    EXPECT_EQ(command->environment().at("RVGIT_TEST_MARK"), "x");
    EXPECT_EQ(readFile("cl one/a.bin"), "one");
    EXPECT_GT(progress, 0);

    Told failed;
    (void)manager.cloneRepositoryAtURL(scratchPath("missing.git"), scratchPath("new"), std::nullopt,
                                       {}, nullptr, failed.handler());
    const auto error = failed.error();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitRemoteURLErrorKey), scratchPath("missing.git"));
    manager.commandQueue().waitUntilAllOperationsAreFinished();
    EXPECT_EQ(told.calls, 1);
    EXPECT_EQ(failed.calls, 1);
}

TEST_F(RVGitLFSManagerThreadsTest, EveryOperationInTheBackgroundTellsItsHandlerOnce) {
    addServer();
    commitFile("repository", "a.bin", "one", "Message");
    std::vector<Told> told(5);
    (void)manager_.fetchRemote(origin(), std::nullopt, nullptr, told[0].handler());
    (void)manager_.pullRemote(origin(), std::nullopt, nullptr, told[1].handler());
    (void)manager_.pushRemote(origin(), std::nullopt, nullptr, told[2].handler());
    (void)manager_.checkout(std::nullopt, told[3].handler());
    (void)manager_.prune(std::nullopt, told[4].handler());
    waitForManager();
    for (Told& each : told) {
        EXPECT_EQ(each.error(), std::nullopt);
        EXPECT_EQ(each.calls, 1);
    }
}

TEST_F(RVGitLFSManagerThreadsTest, AFailureToLaunchReachesTheHandlerOnce) {
    const auto fake = useFakeGit();
    std::filesystem::remove(fake.path());
    Told told;
    const auto command = manager_.checkout(std::nullopt, told.handler());
    const auto error = told.error();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitNoGitRepoError);
    waitForManager();
    EXPECT_EQ(told.calls, 1);
    EXPECT_EQ(command->error(), error);
}

TEST_F(RVGitLFSManagerThreadsTest, OneCancelledBeforeItBeginsTellsItsHandlerOnceAndHasNoError) {
    std::promise<void> go;
    auto waiting = go.get_future().share();
    Told first;
    (void)manager_.checkout(std::nullopt, [&](const auto& error) {
        waiting.wait();
        first.handler()(error);
    });
    Told told;
    const auto command = manager_.prune(std::nullopt, told.handler());
    EXPECT_FALSE(command->isFinished());
    command->cancel();
    EXPECT_EQ(told.error(), std::nullopt);
    go.set_value();
    waitForManager();
    EXPECT_EQ(told.calls, 1);
    EXPECT_EQ(first.calls, 1);
}

TEST_F(RVGitLFSManagerThreadsTest, CommandsOfOneManagerNeverOverlap) {
    writeFile("overlap-git/git",
              "#!/bin/sh\ncase \" $* \" in *' --version '*) echo git version 2.39.5; exit;; esac\n"
              "mkdir \"$MARK\" || exit 1\nsleep 0.02\nrmdir \"$MARK\"\n",
              0755);
    setEnvironmentVariable("MARK", scratchPath("mark"));
    RVGitBinary::setDefaultGitBinary(
        RVGitBinary::gitBinaryWithPath(scratchPath("overlap-git/git")));
    std::atomic<int> failures = 0;
    for (int round = 0; round < 8; ++round)
        (void)manager_.checkout(std::nullopt,
                                [&](const auto& error) { failures += error.has_value(); });
    EXPECT_TRUE(manager_.prune());
    waitForManager();
    EXPECT_EQ(failures, 0);
}

TEST_F(RVGitLFSManagerThreadsTest, WorkGoesOnWithoutItsManager) {
    Told told;
    {
        RVGitLFSManager manager(repository());
        (void)manager.checkout(std::nullopt, nullptr);
        (void)manager.prune(std::nullopt, told.handler());
    }
    EXPECT_EQ(told.error(), std::nullopt);
}

TEST_F(RVGitLFSManagerThreadsTest, AHandlerCanRunTheNextOperation) {
    std::promise<bool> done;
    (void)manager_.checkout(std::nullopt, [&](const auto&) { done.set_value(manager_.prune()); });
    EXPECT_TRUE(done.get_future().get());
}

TEST_F(RVGitLFSManagerThreadsTest, MakesPointersFromFiles) {
    const std::string path = writeFile("repository/a b.bin", "one");
    const auto pointer = manager_.createPointerFromFileAtPath(path);
    ASSERT_TRUE(pointer);
    EXPECT_EQ(pointer->stringRepresentation(), pointerFor("one")->stringRepresentation());
    EXPECT_EQ(pointer->allEntries(), pointerFor("one")->allEntries());

    std::promise<std::shared_ptr<RVGitLFSPointer>> promise;
    const auto command = manager_.createPointerFromFileAtPath(
        path, std::nullopt, [&](const auto& made, const auto& error) {
            EXPECT_EQ(error, std::nullopt);
            promise.set_value(made);
        });
    const auto made = promise.get_future().get();
    ASSERT_TRUE(made);
    EXPECT_EQ(made->objectID(), pointer->objectID());
    EXPECT_EQ(command->filePath(), path);
}

TEST_F(RVGitLFSManagerThreadsTest, AFileWithoutAPointerIsRaisedOrAnErrorForTheHandler) {
    for (const std::string& path : {writeFile("empty", ""), scratchPath("missing")}) {
        try {
            (void)manager_.createPointerFromFileAtPath(path);
            ADD_FAILURE() << path;
        } catch (const RVInvalidParameterException& exception) {
            EXPECT_STREQ(exception.what(), "An LFS pointer must contain a 'version' key.");
        }
        std::promise<std::optional<RVError>> promise;
        std::atomic<int> calls = 0;
        (void)manager_.createPointerFromFileAtPath(path, std::nullopt,
                                                   [&](const auto& pointer, const auto& error) {
                                                       EXPECT_FALSE(pointer);
                                                       if (++calls == 1)
                                                           promise.set_value(error);
                                                   });
        EXPECT_TRUE(promise.get_future().get()) << path;
        try {
            waitForManager();
        } catch (const RVInvalidParameterException&) {
        }
        EXPECT_EQ(calls, 1);
    }
}

TEST_F(RVGitLFSManagerThreadsTest, MakesFilesAndDataFromPointers) {
    const bool run = withPrivateTemporaryDirectory([&] {
        const auto pointer = keepObject("one");
        ASSERT_TRUE(manager_.createFileFromPointer(pointer, scratchPath("first")));
        EXPECT_EQ(readFile("first"), "one");
        const auto data = manager_.createFileDataFromPointer(pointer);
        ASSERT_TRUE(data);
        EXPECT_EQ(data->view(), "one");

        Told told;
        (void)manager_.createFileFromPointer(pointer, scratchPath("second"), std::nullopt,
                                             told.handler());
        EXPECT_EQ(told.error(), std::nullopt);
        EXPECT_EQ(readFile("second"), "one");
        std::promise<std::shared_ptr<const RVDataBuffer>> promise;
        (void)manager_.createFileDataFromPointer(pointer, std::nullopt,
                                                 [&](const auto& bytes, const auto& error) {
                                                     EXPECT_EQ(error, std::nullopt);
                                                     promise.set_value(bytes);
                                                 });
        EXPECT_EQ(promise.get_future().get()->view(), "one");

        std::optional<RVError> error;
        const auto missing = pointerFor("nowhere");
        EXPECT_FALSE(manager_.createFileDataFromPointer(missing, std::nullopt, &error));
        EXPECT_TRUE(error);
        EXPECT_FALSE(manager_.createFileFromPointer(missing, scratchPath("third")));
        EXPECT_FALSE(fileExists("third"));
        // Kept for compatibility.
        EXPECT_TRUE(manager_.createFileFromPointer(pointer, scratchPath("missing/file")));
    });
    RVGIT_TEST_NEEDS_RIGHTS(run, "nothing can be mounted");
}

TEST_F(RVGitLFSManagerThreadsTest, TwoManagersSmudgeAtOnce) {
    const bool run = withPrivateTemporaryDirectory([&] {
        RVGitLFSManager other(repository());
        constexpr int count = 6;
        std::atomic<int> wrong = 0;
        for (int index = 0; index < count; ++index) {
            for (RVGitLFSManager* manager : {&manager_, &other}) {
                const std::string contents =
                    std::to_string(index) + (manager == &other ? " other" : " one");
                (void)manager->createFileDataFromPointer(
                    keepObject(contents), std::nullopt,
                    [contents, &wrong](const auto& data, const auto& error) {
                        wrong += error || !data || data->view() != contents;
                    });
            }
        }
        waitForManager();
        other.commandQueue().waitUntilAllOperationsAreFinished();
        EXPECT_EQ(wrong, 0);
        EXPECT_FALSE(fileExists("/tmp/smudge_input"));
    });
    RVGIT_TEST_NEEDS_RIGHTS(run, "nothing can be mounted");
}

}  // namespace
