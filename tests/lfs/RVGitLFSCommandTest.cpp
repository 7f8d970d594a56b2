#include "RVGit/lfs/RVGitLFSCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/lfs/RVGitLFSTestCase.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class RVGitLFSCommandTest : public RVGitLFSTestCase {};

TEST_F(RVGitLFSCommandTest, ArgumentsOfTheInstallation) {
    const auto recorder = useRecordingGit();
    for (const auto& [mode, expected] : std::vector<std::pair<std::int64_t, Arguments>>{
             {RVGitLFSInstallationModeGlobal, {"lfs", "install"}},
             {RVGitLFSInstallationModeLocal, {"lfs", "install", "--local"}},
             {RVGitLFSInstallationModeSystem, {"lfs", "install", "--system"}},
             {3, {"lfs", "install"}}}) {
        const auto command =
            RVGitLFSInstallCommand::gitLFSInstallCommandWithRepository(repository());
        EXPECT_EQ(command->installationMode(), RVGitLFSInstallationModeGlobal);
        command->setInstallationMode(mode);
        EXPECT_EQ(argumentsOf(recorder, *command), expected);
    }
    EXPECT_THAT(
        argumentsOf(recorder,
                    *RVGitLFSUninstallCommand::gitLFSUninstallCommandWithRepository(repository())),
        ElementsAre("lfs", "uninstall"));
}

TEST_F(RVGitLFSCommandTest, ArgumentsOfTheOthers) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *RVGitLFSUpdateCommand::gitLFSUpdateCommandWithRepository(
                                          repository())),
                ElementsAre("lfs", "update"));
    EXPECT_THAT(argumentsOf(recorder, *RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(
                                          repository())),
                ElementsAre("lfs", "checkout"));
    for (const auto& [mode, expected] : std::vector<std::pair<std::int64_t, Arguments>>{
             {RVGitLFSPruneVerificationModeDefault, {"lfs", "prune"}},
             {RVGitLFSPruneVerificationModeVerify, {"lfs", "prune", "--verify-remote"}},
             {RVGitLFSPruneVerificationModeDoNotVerify, {"lfs", "prune", "--no-verify-remote"}},
             {3, {"lfs", "prune"}}}) {
        const auto command = RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(repository());
        EXPECT_EQ(command->verificationMode(), RVGitLFSPruneVerificationModeDefault);
        command->setVerificationMode(mode);
        EXPECT_EQ(argumentsOf(recorder, *command), expected);
    }
}

TEST_F(RVGitLFSCommandTest, InstallsGloballyAndUninstalls) {
    const std::string home = makeDirectory("home");
    setEnvironmentVariable("HOME", home);
    ASSERT_TRUE(RVGitLFSInstallCommand::gitLFSInstallCommandWithRepository(repository())->run());
    EXPECT_THAT(readFile("home/.gitconfig"), HasSubstr("[filter \"lfs\"]"));
    ASSERT_TRUE(
        RVGitLFSUninstallCommand::gitLFSUninstallCommandWithRepository(repository())->run());
    EXPECT_EQ(readFile("home/.gitconfig").find("clean"), std::string::npos);
    EXPECT_FALSE(fileExists("repository/.git/hooks/pre-push"));
}

TEST_F(RVGitLFSCommandTest, UpdateWritesTheHooksAndLogsWhatItSays) {
    std::filesystem::remove_all(scratchPath("repository/.git/hooks"));
    testing::internal::CaptureStderr();
    const bool done = RVGitLFSUpdateCommand::gitLFSUpdateCommandWithRepository(repository())->run();
    const std::string log = testing::internal::GetCapturedStderr();
    ASSERT_TRUE(done);
    EXPECT_TRUE(fileExists("repository/.git/hooks/pre-push"));
    EXPECT_EQ(log, "Updated Git hooks.\n\n");
}

TEST_F(RVGitLFSCommandTest, CheckoutPutsContentsInThePlaceOfPointers) {
    commitFile("repository", "a.bin", "one", "Message");
    writeFile("repository/a.bin", git({"show", "HEAD:a.bin"}, repositoryPath()));
    ASSERT_TRUE(RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(repository())->run());
    EXPECT_EQ(readFile("repository/a.bin"), "one");
}

TEST_F(RVGitLFSCommandTest, PruneKeepsWhatTheRemoteDoesNotHave) {
    commitFile("repository", "a.bin", "one", "Message");
    commitFile("repository", "a.bin", "two", "Message");
    ASSERT_TRUE(RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(repository())->run());
    EXPECT_TRUE(holdsObject("repository/.git", "one"));
    EXPECT_TRUE(holdsObject("repository/.git", "two"));
}

TEST_F(RVGitLFSCommandTest, OutsideARepositoryFailsWith100WhereStandardErrorSaysSo) {
    auto fake = useFakeGit();
    const auto run = [this](const RVFakeGit::Answer& answer, RVFakeGit& git) {
        git.setAnswer(answer);
        // The row counts for every command of that name.
        return std::pair(
            errorOf(*RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(repository()))
                .code(),
            errorOf(*RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(repository())).code());
    };
    EXPECT_EQ(run({.standardError = "Not a git repository\n", .exitCode = 128}, fake),
              std::pair(std::int64_t{100}, std::int64_t{100}));
    // What git-lfs prints now goes to standard output, in other words.
    EXPECT_EQ(run({.standardOutput = "Not in a Git repository.\n", .exitCode = 128}, fake),
              std::pair(std::int64_t{1}, std::int64_t{1}));
}

TEST_F(RVGitLFSCommandTest, HasOneRow) {
    const auto& table = RVGitLFSCommand::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 1U);
    EXPECT_EQ(table[0].errorCode, RVGitNoGitRepoError);
    EXPECT_THAT(table[0].commandNames, ElementsAre("lfs"));
    EXPECT_THAT(table[0].exitCodes, ElementsAre(128));
    EXPECT_THAT(table[0].standardErrorPatterns, ElementsAre("Not a git repository"));
}

}  // namespace
