#include "RVGit/worktree/RVGitAddCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;

class RVGitAddCommandTest : public RVGitFlagTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitAddCommand> commandFor(
        std::optional<Arguments> filePaths) const {
        return RVGitAddCommand::gitAddCommandWithRepository(repository(), std::move(filePaths));
    }
};

TEST_F(RVGitAddCommandTest, ArgumentsOfEachField) {
    using Command = RVGitAddCommand;
    expectOptions<Command>(
        useRecordingGit(),
        [&] {
            return commandFor(Arguments{"a", "-b"});
        },
        {{&Command::setUpdatesAllFiles, &Command::updatesAllFiles, "--all"},
         {&Command::setIgnoresErrors, &Command::ignoresErrors, "--ignore-errors"},
         {&Command::setIgnoresMissingFiles, &Command::ignoresMissingFiles, "--ignore-missing"},
         {&Command::setForcesAdd, &Command::forcesAdd, "-f"},
         {&Command::setIntentsToAdd, &Command::intentsToAdd, "--intent-to-add"}},
        {"add"}, {"--", "a", "-b"});
}

TEST_F(RVGitAddCommandTest, AbsentAndEmptyPathsDiffer) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *RVGitAddCommand::gitAddCommandWithRepository(repository())),
                ElementsAre("add"));
    EXPECT_THAT(argumentsOf(recorder, *commandFor(Arguments())), ElementsAre("add", "--"));
}

TEST_F(RVGitAddCommandTest, AllFilesWithoutPathsAreTheDirectory) {
    const auto recorder = useRecordingGit();
    const auto absent = commandFor(std::nullopt);
    absent->setUpdatesAllFiles(true);
    absent->setForcesAdd(true);
    EXPECT_THAT(argumentsOf(recorder, *absent), ElementsAre("add", "--all", "-f", "."));
    const auto empty = commandFor(Arguments());
    empty->setUpdatesAllFiles(true);
    EXPECT_THAT(argumentsOf(recorder, *empty), ElementsAre("add", "--all", ".", "--"));
    const auto present = commandFor(Arguments{"a"});
    present->setUpdatesAllFiles(true);
    EXPECT_THAT(argumentsOf(recorder, *present), ElementsAre("add", "--all", "--", "a"));
}

TEST_F(RVGitAddCommandTest, APathWithoutAFileFailsWith1300AndNamesIt) {
    writeFile("repository/file", "one\n");
    const auto error = errorOf(*commandFor(Arguments{"file", "it's missing", "other"}));
    EXPECT_EQ(error.code(), RVGitAddFilesError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "it's missing");
    EXPECT_THAT(*error.userInfo().at(RVGitFilePathsErrorKey).stringList(),
                ElementsAre("file", "it's missing", "other"));
    EXPECT_EQ(error.localizedFailureReason(),
              "Could not stage all files. The file path “it's missing” could not be found.");
    EXPECT_EQ(gitInRepository({"ls-files"}), "");
}

TEST_F(RVGitAddCommandTest, AFailureThatNamesNoFileNamesTheFirstOfThePaths) {
    useFakeGit().setAnswer({.standardError = "fatal: no\n", .exitCode = 128});
    const auto error = errorOf(*commandFor(Arguments{"one", "two"}));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "one");
    EXPECT_THAT(*error.userInfo().at(RVGitFilePathsErrorKey).stringList(),
                ElementsAre("one", "two"));
    for (const auto& filePaths : {std::optional<Arguments>(), std::optional(Arguments())}) {
        const auto without = errorOf(*commandFor(filePaths));
        EXPECT_FALSE(without.userInfo().contains(RVGitFilePathErrorKey));
        EXPECT_FALSE(without.userInfo().contains(RVGitFilePathsErrorKey));
    }
}

TEST_F(RVGitAddCommandTest, ErrorsAreIgnoredForTheOtherFiles) {
    RVGIT_TEST_NEEDS_GIT("2.22", "it adds a repository without a commit as if it were a directory");
    writeFile("repository/good", "one\n");
    // A socket or a repository without a commit cannot be added; the latter needs no privilege.
    initRepository("repository/nested");
    const auto command = commandFor(Arguments{"nested", "good"});
    command->setIgnoresErrors(true);
    EXPECT_FALSE(command->run());
    EXPECT_EQ(gitInRepository({"ls-files"}), "good");
}

TEST_F(RVGitAddCommandTest, MissingFilesAreIgnoredInADryRunAlone) {
    const auto command = commandFor(Arguments{"missing"});
    command->setIgnoresMissingFiles(true);
    EXPECT_FALSE(command->run());
    const auto dryRun = commandFor(Arguments{"missing"});
    dryRun->setIgnoresMissingFiles(true);
    dryRun->addGitCommandOption("--dry-run");
    EXPECT_TRUE(dryRun->run());
}

TEST_F(RVGitAddCommandTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitAddCommand::gitAddCommandWithRepository(nullptr),
                 RVInvalidParameterException);
}

}  // namespace
