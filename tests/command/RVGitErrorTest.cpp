#include "RVGit/command/RVGitError.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitTestCase.h"

using testing::Eq;
using testing::Optional;

namespace {

class RVGitErrorTest : public RVGitTestCase {
protected:
    /// A command that has failed with the answer; it is called by its own name in the rows.
    std::shared_ptr<RVGitCommand> failedCommand(const std::string& name, RVFakeGit::Answer answer) {
        RVFakeGit fake = fakeGit();
        fake.setAnswer(std::move(answer));
        auto command =
            RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        command->setGitCommand(name);
        EXPECT_FALSE(command->run());
        return command;
    }
};

TEST_F(RVGitErrorTest, AKnownCodeHasATitleAndAReasonFilledFromTheUserInfo) {
    RVError error = gitErrorWithCode(RVGitCreateTagAlreadyExistsError,
                                     {{RVGitRefNameErrorKey, "v1"}, {"Other", 2}});
    EXPECT_EQ(error.domain(), RVGitErrorDomain);
    EXPECT_EQ(error.code(), 1700);
    EXPECT_THAT(error.localizedDescription(), Optional(Eq("Could Not Create Tag")));
    EXPECT_THAT(error.localizedFailureReason(),
                Optional(Eq("A tag with name “v1” already exists.")));
    EXPECT_EQ(error.userInfo().find("Other")->second.integerValue(), 2);
}

TEST_F(RVGitErrorTest, AnUnknownCodeHasNoTexts) {
    for (std::int64_t code : {0, 107, 1703, 1704, 1801, 2003, 2203, 2802, 3100}) {
        RVError error = gitErrorWithCode(code, {{"Key", "value"}});
        EXPECT_EQ(error.code(), code);
        EXPECT_EQ(error.localizedDescription(), std::nullopt);
        EXPECT_EQ(error.localizedFailureReason(), std::nullopt);
        EXPECT_THAT(error.userInfoString("Key"), Optional(Eq("value")));
    }
}

TEST_F(RVGitErrorTest, APlaceWithoutAValueStaysEmpty) {
    EXPECT_THAT(gitErrorWithCode(RVGitNoGitRepoError).localizedFailureReason(),
                Optional(Eq("The path “” does not contain a valid Git repository.")));
    EXPECT_THAT(
        gitErrorWithCode(RVGitConfigSectionNotFoundError, {{RVGitConfigSectionNameErrorKey, "a"}})
            .localizedFailureReason(),
        Optional(Eq("A config section with name “” could not be found.")));
}

TEST_F(RVGitErrorTest, ACommandThatMatchesNoRowGivesTheGenericError) {
    auto command = failedCommand("frobnicate", {.standardError = "what?\n", .exitCode = 3});
    RVError error = gitErrorWithCommand(*command, {{"Key", "value"}});
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_THAT(error.localizedDescription(), Optional(Eq("A Git Error Occurred")));
    EXPECT_THAT(error.userInfoString("Key"), Optional(Eq("value")));
}

TEST_F(RVGitErrorTest, CapturedTextGoesOverTheUserInfoAndThatOfStandardOutputOverAll) {
    RVGitCommandErrorDefinitionManager::defaultManager().addGitCommandErrorDefinitions({
        {.errorCode = RVGitArchiveFilesError,
         .commandNames = {"capturing"},
         .standardErrorPatterns = {"path (\\w+) of (\\w+)"},
         .standardErrorMatchedComponentNames = {RVGitFilePathErrorKey, RVGitRevisionErrorKey},
         .standardOutputPatterns = {"revision (\\w+)"},
         .standardOutputMatchedComponentNames = {RVGitRevisionErrorKey}},
    });
    auto command = failedCommand("capturing", {.standardOutput = "Revision two\n",
                                               .standardError = "error: path a of one\n",
                                               .exitCode = 1});
    RVError error =
        gitErrorWithCommand(*command, {{RVGitFilePathErrorKey, "given"}, {"Key", "value"}});
    EXPECT_EQ(error.code(), RVGitArchiveFilesError);
    EXPECT_THAT(error.userInfoString(RVGitFilePathErrorKey), Optional(Eq("a")));
    EXPECT_THAT(error.userInfoString(RVGitRevisionErrorKey), Optional(Eq("two")));
    EXPECT_THAT(error.userInfoString("Key"), Optional(Eq("value")));
    EXPECT_THAT(error.localizedFailureReason(),
                Optional(Eq("The file path “a” could not be found in revision “two”.")));
    ASSERT_TRUE(command->error());
    EXPECT_THAT(command->error()->localizedFailureReason(), error.localizedFailureReason());
    EXPECT_THAT(command->error()->userInfoString(RVGitCommandErrorOutputErrorKey),
                Optional(Eq("error: path a of one\n")));
}

TEST_F(RVGitErrorTest, UserInfoMadeWithoutACommandHoldsTheVersionAndThePath) {
    auto before = RVGitBinary::defaultGitBinary();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(gitPath()));
    const std::string path = initRepository();
    auto repository = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(path, path + "/.git");

    RVUserInfo userInfo = RVGitMakeErrorUserInfo(repository, {{"Key", "value"}});
    EXPECT_EQ(userInfo.size(), 3U);
    EXPECT_EQ(userInfo.at(RVGitBinaryVersionErrorKey).displayString(),
              RVGitBinary::defaultGitBinary()->version());
    EXPECT_EQ(userInfo.at(RVGitRepositoryPathErrorKey).displayString(), path);
    EXPECT_EQ(userInfo.at("Key").displayString(), "value");

    userInfo = RVGitMakeErrorUserInfo(repository, {{RVGitRepositoryPathErrorKey, "mine"}});
    EXPECT_EQ(userInfo.at(RVGitRepositoryPathErrorKey).displayString(), "mine");

    RVGitBinary::setDefaultGitBinary(nullptr);
    EXPECT_FALSE(RVGitMakeErrorUserInfo(repository).contains(RVGitBinaryVersionErrorKey));
    RVGitBinary::setDefaultGitBinary(before);
}

TEST_F(RVGitErrorTest, EveryKeyIsItsOwnName) {
#define EXPECT_NAMED(constant) EXPECT_STREQ(constant, #constant)
    EXPECT_NAMED(RVGitBinaryVersionErrorKey);
    EXPECT_NAMED(RVGitCommandCallErrorKey);
    EXPECT_NAMED(RVGitCommandExitCodeErrorKey);
    EXPECT_NAMED(RVGitCommandErrorOutputErrorKey);
    EXPECT_NAMED(RVGitCommandStandardOutputErrorKey);
    EXPECT_NAMED(RVGitCommandEnvironmentErrorKey);
    EXPECT_NAMED(RVGitRepositoryPathErrorKey);
    EXPECT_NAMED(RVGitOutputParserNameErrorKey);
    EXPECT_NAMED(RVGitOutputParserLineErrorKey);
    EXPECT_NAMED(RVGitConfigFileErrorKey);
    EXPECT_NAMED(RVGitConfigKeyErrorKey);
    EXPECT_NAMED(RVGitConfigNewSectionNameErrorKey);
    EXPECT_NAMED(RVGitConfigSectionNameErrorKey);
    EXPECT_NAMED(RVGitConfigValueErrorKey);
    EXPECT_NAMED(RVGitDestinationFilePathErrorKey);
    EXPECT_NAMED(RVGitErrorOutputErrorKey);
    EXPECT_NAMED(RVGitFilePathErrorKey);
    EXPECT_NAMED(RVGitFilePathsErrorKey);
    EXPECT_NAMED(RVGitIgnoresPathErrorKey);
    EXPECT_NAMED(RVGitMultipleRefNamesErrorKey);
    EXPECT_NAMED(RVGitNewRefNameErrorKey);
    EXPECT_NAMED(RVGitNewRemoteNameErrorKey);
    EXPECT_NAMED(RVGitNewSubmoduleNameErrorKey);
    EXPECT_NAMED(RVGitObjectHashErrorKey);
    EXPECT_NAMED(RVGitObjectReferenceErrorKey);
    EXPECT_NAMED(RVGitPatchErrorKey);
    EXPECT_NAMED(RVGitPatchLineNumberErrorKey);
    EXPECT_NAMED(RVGitRebaseCurrentStepErrorKey);
    EXPECT_NAMED(RVGitRebaseLastStepErrorKey);
    EXPECT_NAMED(RVGitRebaseSubjectErrorKey);
    EXPECT_NAMED(RVGitRefNameErrorKey);
    EXPECT_NAMED(RVGitRefSpecErrorKey);
    EXPECT_NAMED(RVGitRemoteNameErrorKey);
    EXPECT_NAMED(RVGitRemoteURLErrorKey);
    EXPECT_NAMED(RVGitRevisionErrorKey);
    EXPECT_NAMED(RVGitSourceFilePathErrorKey);
    EXPECT_NAMED(RVGitStashIndexErrorKey);
    EXPECT_NAMED(RVGitSubmoduleNameErrorKey);
    EXPECT_NAMED(RVGitSubmodulePathErrorKey);
#undef EXPECT_NAMED
}

}  // namespace
