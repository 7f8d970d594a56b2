#include "RVGit/lfs/RVGitLFSManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <thread>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"
#include "RVGit/lfs/RVGitLFSTransferCommands.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/lfs/RVGitLFSTestCase.h"
#include "tests/support/RVTestRights.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// What a handler is told: waits for the first call, and counts all.
class Told {
public:
    [[nodiscard]] RVGitLFSManager::CompletionHandler handler() {
        return [this](const std::optional<RVError>& error) {
            if (++calls == 1)
                promise_.set_value(error);
        };
    }
    [[nodiscard]] std::optional<RVError> error() { return promise_.get_future().get(); }
    std::atomic<int> calls = 0;

private:
    std::promise<std::optional<RVError>> promise_;
};

class RVGitLFSManagerTest : public RVGitLFSTestCase {
protected:
    RVGitLFSManagerTest() : manager_(repository()) {}

    /// The repository with a server in this directory, and a second repository with its commits.
    void addServer() {
        server_ = "file://" + initBareRepository("server.git");
        gitInRepository({"remote", "add", "origin", server_});
        gitInRepository({"push", "-u", "origin", "main"});
    }
    [[nodiscard]] std::shared_ptr<RVGitRemote> origin() const {
        return RVGitRemote::remoteForName("origin", repository());
    }
    void waitForManager() { manager_.commandQueue().waitUntilAllOperationsAreFinished(); }

    std::string server_;
    RVGitLFSManager manager_;
};

TEST_F(RVGitLFSManagerTest, TracksAndUntracks) {
    ASSERT_TRUE(manager_.addTrackedFilePatterns({"*.psd", "a b"}));
    auto entries = manager_.allTrackingEntries();
    ASSERT_TRUE(entries);
    std::vector<std::string> patterns;
    for (const auto& entry : *entries) {
        patterns.push_back(entry->pattern());
        EXPECT_EQ(entry->fileName(), ".gitattributes");
    }
    EXPECT_THAT(patterns, UnorderedElementsAre("*.bin", "*.psd", "a[[:space:]]b"));
    ASSERT_TRUE(manager_.removeTrackedFilePatterns({"*.psd", "*.bin", "a b"}));
    entries = manager_.allTrackingEntries();
    ASSERT_TRUE(entries);
    EXPECT_THAT(*entries, IsEmpty());
}

TEST_F(RVGitLFSManagerTest, TrackAndUntrackGiveTheFinishedCommand) {
    const auto tracked = manager_.track({"*.psd"});
    EXPECT_TRUE(tracked->isFinished());
    EXPECT_EQ(tracked->error(), std::nullopt);
    EXPECT_FALSE(tracked->trackedFilePatterns());
    const auto untracked = manager_.untrack({"*.psd"});
    EXPECT_TRUE(untracked->isFinished());
    const auto refused = manager_.track({"--bad"});
    ASSERT_TRUE(refused->error());
}

TEST_F(RVGitLFSManagerTest, InstallsUpdatesAndUninstalls) {
    setEnvironmentVariable("HOME", makeDirectory("home"));
    EXPECT_TRUE(manager_.installGitLFSWithMode(RVGitLFSInstallationModeGlobal));
    EXPECT_TRUE(fileExists("home/.gitconfig"));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(manager_.update());
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(manager_.uninstallGitLFS());
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager_.installGitLFSWithMode(RVGitLFSInstallationModeLocal));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("lfs", "install", "--local"));
}

TEST_F(RVGitLFSManagerTest, OptionsAndTheRemoteOfAFetchAreNotRead) {
    addServer();
    const auto recorder = useRecordingGit();
    const RVOptions options{{"anything", true}};
    EXPECT_TRUE(manager_.fetchRemote(origin(), options));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("lfs", "fetch"));
    EXPECT_TRUE(manager_.checkout(options));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("lfs", "checkout"));
    EXPECT_TRUE(manager_.prune(options));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("lfs", "prune"));
    (void)manager_.pushRemote(nullptr, options);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("lfs", "push", "."));
}

TEST_F(RVGitLFSManagerTest, ListsTrackedFiles) {
    commitFile("repository", "a b.bin", "one", "Message");
    commitFile("repository", "\u00e9.bin", "two", "Message");
    EXPECT_THAT(manager_.allTrackedFiles().value_or(std::vector<std::string>()),
                UnorderedElementsAre("a b.bin", "\u00e9.bin"));
    EXPECT_THAT(manager_.allTrackedFilesForRevision("HEAD~1").value_or(std::vector<std::string>()),
                ElementsAre("a b.bin"));
    std::optional<RVError> error;
    EXPECT_FALSE(manager_.allTrackedFilesForRevision("missing", std::nullopt, &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitLFSManagerTest, PushesFetchesAndPullsBetweenRepositories) {
    addServer();
    commitFile("repository", "a.bin", "one", "Message");
    EXPECT_FALSE(holdsObject("server.git", "one"));

    // Without a ref nothing is uploaded.
    EXPECT_TRUE(manager_.pushRemote(origin()));
    EXPECT_FALSE(holdsObject("server.git", "one"));
    EXPECT_TRUE(
        manager_.pushRemote(origin(), {RVGitRefSpec::refSpecFromString("refs/heads/main")}));
    EXPECT_TRUE(holdsObject("server.git", "one"));
    gitInRepository({"push", "origin", "main"});

    setEnvironmentVariable("GIT_LFS_SKIP_SMUDGE", "1");
    git({"clone", server_, "other"});
    git({"lfs", "install", "--local"}, "other");
    setEnvironmentVariable("GIT_LFS_SKIP_SMUDGE", std::nullopt);
    const auto other = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        scratchPath("other"), scratchPath("other/.git"));
    RVGitLFSManager otherManager(other);
    const auto otherOrigin = RVGitRemote::remoteForName("origin", other);
    const std::string pointer = readFile("other/a.bin");
    EXPECT_TRUE(RVGitLFSPointer::pointerFromData(pointer));
    EXPECT_THAT(otherManager.allTrackedFiles().value_or(std::vector<std::string>{"x"}), IsEmpty());
    EXPECT_TRUE(otherManager.fetchRemote(otherOrigin));
    EXPECT_TRUE(holdsObject("other/.git", "one"));
    EXPECT_EQ(readFile("other/a.bin"), pointer);
    EXPECT_TRUE(otherManager.checkout());
    EXPECT_EQ(readFile("other/a.bin"), "one");

    std::filesystem::remove_all(scratchPath("other/.git/lfs/objects"));
    writeFile("other/a.bin", pointer);
    EXPECT_TRUE(otherManager.pullRemote(otherOrigin));
    EXPECT_EQ(readFile("other/a.bin"), "one");
    EXPECT_TRUE(otherManager.prune());
}

TEST_F(RVGitLFSManagerTest, PushingNamedRefsNeedsSome) {
    EXPECT_THROW((void)manager_.pushRemote(nullptr, RVGitLFSManager::RefSpecs()),
                 RVInvalidParameterException);
}

TEST_F(RVGitLFSManagerTest, MissingObjectsFailAFetchAndAPull) {
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

TEST_F(RVGitLFSManagerTest, ClonesInTheBackgroundWithItsEnvironment) {
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

TEST_F(RVGitLFSManagerTest, EveryOperationInTheBackgroundTellsItsHandlerOnce) {
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

TEST_F(RVGitLFSManagerTest, AFailureToLaunchReachesTheHandlerOnce) {
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

TEST_F(RVGitLFSManagerTest, OneCancelledBeforeItBeginsTellsItsHandlerOnceAndHasNoError) {
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

TEST_F(RVGitLFSManagerTest, CommandsOfOneManagerNeverOverlap) {
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

TEST_F(RVGitLFSManagerTest, WorkGoesOnWithoutItsManager) {
    Told told;
    {
        RVGitLFSManager manager(repository());
        (void)manager.checkout(std::nullopt, nullptr);
        (void)manager.prune(std::nullopt, told.handler());
    }
    EXPECT_EQ(told.error(), std::nullopt);
}

TEST_F(RVGitLFSManagerTest, AHandlerCanRunTheNextOperation) {
    std::promise<bool> done;
    (void)manager_.checkout(std::nullopt, [&](const auto&) { done.set_value(manager_.prune()); });
    EXPECT_TRUE(done.get_future().get());
}

TEST_F(RVGitLFSManagerTest, MakesPointersFromFiles) {
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

TEST_F(RVGitLFSManagerTest, AFileWithoutAPointerIsRaisedOrAnErrorForTheHandler) {
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

TEST_F(RVGitLFSManagerTest, MakesFilesAndDataFromPointers) {
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

TEST_F(RVGitLFSManagerTest, TwoManagersSmudgeAtOnce) {
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

TEST_F(RVGitLFSManagerTest, PointersAreRequired) {
    EXPECT_THROW((void)manager_.createFileDataFromPointer(nullptr), RVInvalidParameterException);
    EXPECT_THROW((void)manager_.createFileFromPointer(nullptr, "x"), RVInvalidParameterException);
}

TEST_F(RVGitLFSManagerTest, WithoutARepositoryOnlyACloneIsPossible) {
    RVGitLFSManager manager;
    EXPECT_EQ(manager.repository(), nullptr);
    EXPECT_THROW((void)manager.allTrackedFiles(), RVInvalidParameterException);
    EXPECT_THROW((void)manager.prune(), RVInvalidParameterException);
    EXPECT_EQ(manager_.repository(), repository());
    EXPECT_EQ(manager_.gitBinary(), nullptr);
}

TEST_F(RVGitLFSManagerTest, APointerIsReadWithoutRunningGit) {
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager_.pointerFromData("version a\noid b\nsize 1\n"));
    EXPECT_FALSE(manager_.pointerFromData("one"));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

class RVGitLFSSlowTest : public RVGitLFSTestCase {};

TEST_F(RVGitLFSSlowTest, AHundredMegabytesGoThroughCleanAndSmudge) {
    const bool run = withPrivateTemporaryDirectory([&] {
        std::string contents(100'000'000, 'x');
        for (std::size_t index = 0; index < contents.size(); index += 4096)
            contents[index] = static_cast<char>(index >> 12);
        const std::string path = writeFile("large", contents);
        RVGitLFSManager manager(repository());
        const auto pointer = manager.createPointerFromFileAtPath(path);
        ASSERT_TRUE(pointer);
        EXPECT_EQ(pointer->size(), "100000000");
        EXPECT_TRUE(manager.createFileFromPointer(pointer, scratchPath("again")));
        EXPECT_EQ(readFile("again"), contents);
        const auto data = manager.createFileDataFromPointer(pointer);
        ASSERT_TRUE(data);
        EXPECT_EQ(data->view(), contents);
    });
    RVGIT_TEST_NEEDS_RIGHTS(run, "nothing can be mounted");
}

}  // namespace
