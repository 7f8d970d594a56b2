#include "RVGit/worktree/RVGitCheckoutCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;
using Command = RVGitCheckoutCommand;

class RVGitCheckoutCommandTest : public RVGitFlagTestCase {};

TEST_F(RVGitCheckoutCommandTest, ArgumentsOfEachField) {
    expectOptions<Command>(useRecordingGit(),
                           [&] {
                               return Command::gitCheckoutCommandWithRepository(
                                   repository(), "topic", Arguments{"a", "-b"});
                           },
                           {{&Command::setUsesForce, &Command::usesForce, "-f"},
                            {&Command::setUsesMerge, &Command::usesMerge, "-m"}},
                           {"checkout"}, {"topic", "--", "a", "-b"});
}

TEST_F(RVGitCheckoutCommandTest, AbsentAndEmptyDiffer) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder,
                            *Command::gitCheckoutCommandWithRepository(repository(), std::nullopt)),
                ElementsAre("checkout"));
    EXPECT_THAT(argumentsOf(recorder, *Command::gitCheckoutCommandWithRepository(
                                          repository(), std::nullopt, Arguments())),
                ElementsAre("checkout", "--"));
    EXPECT_THAT(
        argumentsOf(recorder, *Command::gitCheckoutCommandWithRepository(repository(), "topic")),
        ElementsAre("checkout", "topic"));
}

TEST_F(RVGitCheckoutCommandTest, OptionsOfTheCallerStandFirst) {
    const auto recorder = useRecordingGit();
    const auto command =
        Command::gitCheckoutCommandWithRepository(repository(), std::nullopt, Arguments{"a"});
    command->addGitCommandOption("--merge");
    EXPECT_THAT(argumentsOf(recorder, *command), ElementsAre("checkout", "--merge", "--", "a"));
}

TEST_F(RVGitCheckoutCommandTest, ChangesInTheWayFailWith1600) {
    makeCommit("One");
    makeCommit("Two");
    writeFile("repository/file.txt", "changed\n");
    const auto error = errorOf(*Command::gitCheckoutCommandWithRepository(repository(), "HEAD^"));
    EXPECT_EQ(error.code(), RVGitCheckoutUncommittedChangesError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "HEAD^");
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");

    const auto forced = Command::gitCheckoutCommandWithRepository(repository(), "HEAD^");
    forced->setUsesForce(true);
    EXPECT_TRUE(forced->run());
    EXPECT_EQ(readFile("repository/file.txt"), "1");
}

TEST_F(RVGitCheckoutCommandTest, AFailureNamesTheRevisionIfThereIsOne) {
    const auto unknown =
        errorOf(*Command::gitCheckoutCommandWithRepository(repository(), "nowhere"));
    EXPECT_EQ(unknown.code(), RVGitRVGitGenericError);
    EXPECT_EQ(unknown.userInfoString(RVGitRevisionErrorKey), "nowhere");
    const auto without = errorOf(*Command::gitCheckoutCommandWithRepository(
        repository(), std::nullopt, Arguments{"missing"}));
    EXPECT_FALSE(without.userInfo().contains(RVGitRevisionErrorKey));
}

TEST_F(RVGitCheckoutCommandTest, NeedsARepository) {
    EXPECT_THROW((void)Command::gitCheckoutCommandWithRepository(nullptr, "HEAD"),
                 RVInvalidParameterException);
}

}  // namespace
