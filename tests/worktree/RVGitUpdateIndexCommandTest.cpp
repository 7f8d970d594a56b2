#include "RVGit/worktree/RVGitUpdateIndexCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;
using Command = RVGitUpdateIndexCommand;

class RVGitUpdateIndexCommandTest : public RVGitFlagTestCase {
protected:
    [[nodiscard]] std::shared_ptr<Command> commandFor(std::optional<Arguments> filePaths) const {
        return Command::gitUpdateIndexCommandWithRepository(repository(), std::move(filePaths));
    }
};

TEST_F(RVGitUpdateIndexCommandTest, ArgumentsOfEachField) {
    expectOptions<Command>(
        useRecordingGit(),
        [&] {
            return commandFor(Arguments{"a", "-b"});
        },
        {{&Command::setIgnoresMissingFiles, &Command::ignoresMissingFiles, "--ignore-missing"},
         {&Command::setSetsAssumeUnchangedBit, &Command::setsAssumeUnchangedBit,
          "--assume-unchanged"},
         {&Command::setUnsetsAssumeUnchangedBit, &Command::unsetsAssumeUnchangedBit,
          "--no-assume-unchanged"},
         {&Command::setUnresolves, &Command::unresolves, "--unresolve"}},
        {"update-index"}, {"a", "./-b"});
}

TEST_F(RVGitUpdateIndexCommandTest, WithoutPathsNothingIsAdded) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *commandFor(std::nullopt)), ElementsAre("update-index"));
    EXPECT_THAT(argumentsOf(recorder, *commandFor(Arguments())), ElementsAre("update-index"));
}

TEST_F(RVGitUpdateIndexCommandTest, AFileThatCannotBeMarkedFailsWith3000) {
    writeFile("repository/untracked", "one\n");
    for (const char* path : {"untracked", "missing"}) {
        const auto command = commandFor(Arguments{path});
        command->setIgnoresMissingFiles(true);
        command->setSetsAssumeUnchangedBit(true);
        EXPECT_THAT(command, failsWith(RVGitUpdateIndexNoSuchFileError));
    }
}

TEST_F(RVGitUpdateIndexCommandTest, NeedsARepository) {
    EXPECT_THROW((void)Command::gitUpdateIndexCommandWithRepository(nullptr, std::nullopt),
                 RVInvalidParameterException);
}

}  // namespace
