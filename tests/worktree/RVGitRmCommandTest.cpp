#include "RVGit/worktree/RVGitRmCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;

class RVGitRmCommandTest : public RVGitFlagTestCase {
protected:
    /// What the other user may change, but not remove: a file of root's in a directory in which
    /// everyone may remove what is his own.
    void protectFilesInRepository() const {
        git({"config", "--global", "--replace-all", "safe.directory", "*"});
        for (const auto& entry : fs::recursive_directory_iterator(repositoryPath() + "/.git"))
            EXPECT_EQ(::lchown(entry.path().c_str(), RVUnprivilegedUser::nobody, gid_t(-1)), 0);
        EXPECT_EQ(
            ::lchown((repositoryPath() + "/.git").c_str(), RVUnprivilegedUser::nobody, gid_t(-1)),
            0);
        fs::permissions(repositoryPath(), fs::perms(01777));
    }
    [[nodiscard]] std::shared_ptr<RVGitRmCommand> commandFor(
        std::optional<Arguments> filePaths) const {
        return RVGitRmCommand::gitRmCommandWithRepository(repository(), std::move(filePaths));
    }
};

TEST_F(RVGitRmCommandTest, ArgumentsOfEachField) {
    using Command = RVGitRmCommand;
    expectOptions<Command>(
        useRecordingGit(),
        [&] {
            return commandFor(Arguments{"a", "-b"});
        },
        {{&Command::setRemovesFilesRecursively, &Command::removesFilesRecursively, "-r"},
         {&Command::setRemovesFilesFromIndex, &Command::removesFilesFromIndex, "--cached"},
         {&Command::setIgnoresUnmatched, &Command::ignoresUnmatched, "--ignore-unmatch"}},
        {"rm", "-q", "-f"}, {"--", "a", "-b"});
}

TEST_F(RVGitRmCommandTest, AbsentAndEmptyPathsDiffer) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *RVGitRmCommand::gitRmCommandWithRepository(repository())),
                ElementsAre("rm", "-q", "-f"));
    EXPECT_THAT(argumentsOf(recorder, *commandFor(Arguments())),
                ElementsAre("rm", "-q", "-f", "--"));
}

TEST_F(RVGitRmCommandTest, OptionsOfTheCallerStandFirst) {
    const auto recorder = useRecordingGit();
    const auto command = commandFor(Arguments{"*"});
    command->addGitCommandOptions({"--cached", "-r"});
    EXPECT_THAT(argumentsOf(recorder, *command),
                ElementsAre("rm", "--cached", "-r", "-q", "-f", "--", "*"));
}

TEST_F(RVGitRmCommandTest, AFileThatMayNotBeRemovedFailsWith2600) {
    commitFile("repository", "it's fixed", "one\n", "Message");
    RVGIT_TEST_NEEDS_RIGHTS(::geteuid() == 0, "all files are this user's own");
    protectFilesInRepository();
    const RVUnprivilegedUser user(repositoryPath());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    const auto error = errorOf(*commandFor(Arguments{"it's fixed"}));
    EXPECT_EQ(error.code(), RVGitRemoveOperationNotPermittedError);
    EXPECT_EQ(error.userInfoString(RVGitSubmodulePathErrorKey), "it's fixed");
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "");
}

TEST_F(RVGitRmCommandTest, ASubmoduleThatGitRefusesFailsWith2600) {
    useFakeGit().setAnswer(
        {.standardError = "fatal: git rm: 'libs/sub': Operation not permitted\n", .exitCode = 128});
    const auto error = errorOf(*commandFor(Arguments{"libs/sub"}));
    EXPECT_EQ(error.code(), RVGitRemoveOperationNotPermittedError);
    EXPECT_EQ(error.userInfoString(RVGitSubmodulePathErrorKey), "libs/sub");
    EXPECT_EQ(error.localizedFailureReason(), "Could not remove file at path 'libs/sub'.");
}

TEST_F(RVGitRmCommandTest, ChangesThatGitRefusesToLoseFailWith2601) {
    // With "-f" the present git refuses nothing.
    const std::string message =
        "error: the following file has local modifications:\n    file\n"
        "(use --cached to keep the file, or -f to force removal)\n";
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = message, .exitCode = 1});
    EXPECT_THAT(commandFor(Arguments{"file"}),
                failsWith(RVGitRemoveFileWithLocalModificationsError));
    fake.setAnswer({.standardError = message, .exitCode = 128});
    EXPECT_THAT(commandFor(Arguments{"file"}), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitRmCommandTest, AnUnknownPathFailsUnlessIgnored) {
    commitFile("repository", "file", "one\n", "Message");
    writeFile("repository/untracked", "two\n");
    EXPECT_THAT(commandFor(Arguments{"file", "untracked"}), failsWith(RVGitRVGitGenericError));
    EXPECT_TRUE(fileExists("repository/file"));
    const auto command = commandFor(Arguments{"file", "untracked"});
    command->setIgnoresUnmatched(true);
    EXPECT_TRUE(command->run());
    EXPECT_FALSE(fileExists("repository/file"));
    EXPECT_EQ(readFile("repository/untracked"), "two\n");
}

TEST_F(RVGitRmCommandTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitRmCommand::gitRmCommandWithRepository(nullptr),
                 RVInvalidParameterException);
}

}  // namespace
