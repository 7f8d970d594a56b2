#include "RVGit/worktree/RVGitResetCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;
using Command = RVGitResetCommand;

class RVGitResetCommandTest : public RVGitFlagTestCase {};

TEST_F(RVGitResetCommandTest, ArgumentsOfEachMode) {
    const std::pair<std::int64_t, Arguments> cases[] = {
        {0, {"reset", "-q", "HEAD"}},
        {1, {"reset", "-q", "--soft", "HEAD"}},
        {2, {"reset", "-q", "--hard", "HEAD"}},
        {3, {"reset", "-q", "--keep", "HEAD"}},
        {4, {"reset", "-q", "HEAD"}},
        {-1, {"reset", "-q", "HEAD"}},
        {std::numeric_limits<std::int64_t>::max(), {"reset", "-q", "HEAD"}},
    };
    const auto recorder = useRecordingGit();
    for (const auto& [mode, expected] : cases) {
        const auto command = Command::gitResetCommandWithRepository(
            repository(), static_cast<RVGitResetMode>(mode), "HEAD");
        EXPECT_EQ(command->mode(), mode);
        EXPECT_EQ(argumentsOf(recorder, *command), expected);
    }
}

TEST_F(RVGitResetCommandTest, ArgumentsOfRevisionAndPaths) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *Command::gitResetCommandWithRepository(
                                          repository(), RVGitResetModeNone, std::nullopt)),
                ElementsAre("reset", "-q"));
    EXPECT_THAT(
        argumentsOf(recorder, *Command::gitResetCommandWithRepository(
                                  repository(), RVGitResetModeSoft, "HEAD^", Arguments{"a", "-b"})),
        ElementsAre("reset", "-q", "--soft", "HEAD^", "--", "a", "-b"));
    EXPECT_THAT(
        argumentsOf(recorder, *Command::gitResetCommandWithRepository(
                                  repository(), RVGitResetModeNone, std::nullopt, Arguments())),
        ElementsAre("reset", "-q", "--"));
}

TEST_F(RVGitResetCommandTest, OptionsOfTheCallerStandFirst) {
    const auto recorder = useRecordingGit();
    const auto command = std::make_shared<Command>(repository());
    command->addGitCommandOption("--merge");
    EXPECT_THAT(argumentsOf(recorder, *command), ElementsAre("reset", "--merge", "-q"));
}

TEST_F(RVGitResetCommandTest, TheRowOfARevisionThatCannotBeResolvedIsNotRegistered) {
    const RVGitErrorTable& table = Command::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 1U);
    EXPECT_EQ(table[0].errorCode, 3100);
    EXPECT_THAT(table[0].standardErrorMatchedComponentNames, ElementsAre(RVGitRevisionErrorKey));
    useFakeGit().setAnswer(
        {.standardError = "fatal: Failed to resolve 'HEAD' as a valid ref.\n", .exitCode = 128});
    const auto error =
        errorOf(*Command::gitResetCommandWithRepository(repository(), RVGitResetModeNone, "HEAD"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_FALSE(error.userInfo().contains(RVGitRevisionErrorKey));
}

TEST_F(RVGitResetCommandTest, AnUnknownRevisionIsTheGenericError) {
    EXPECT_EQ(errorOf(*Command::gitResetCommandWithRepository(repository(), RVGitResetModeNone,
                                                              "nowhere", Arguments{"a"}))
                  .code(),
              RVGitRVGitGenericError);
}

TEST_F(RVGitResetCommandTest, NeedsARepository) {
    EXPECT_THROW((void)Command::gitResetCommandWithRepository(nullptr, RVGitResetModeNone, "HEAD"),
                 RVInvalidParameterException);
}

}  // namespace
