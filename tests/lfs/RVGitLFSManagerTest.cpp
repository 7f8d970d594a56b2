#include "RVGit/lfs/RVGitLFSManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/lfs/RVGitLFSManagerTestCase.h"
#include "tests/support/RVTestRights.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RVGitLFSManagerTest : public RVGitLFSManagerTestCase {};

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
