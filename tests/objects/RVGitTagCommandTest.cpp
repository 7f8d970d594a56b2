#include "RVGit/objects/RVGitTagCommand.h"

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitTagCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitTagCommand> createCommand(
        std::string refName, std::optional<std::string> revision = std::nullopt,
        std::optional<std::string> message = std::nullopt) {
        return RVGitTagCommand::gitCreateTagCommandWithRepository(
            repository(), std::move(refName), std::move(revision), std::move(message));
    }
};

class RVGitTagCommandLineTest : public RVGitTagCommandTest {
protected:
    /// Whether git succeeds is of no interest here.
    RVRecordingGit::Invocation invocationOf(RVGitTagCommand& command) {
        (void)command.run();
        auto invocation = recorder_.lastInvocation();
        invocation.arguments = lastArguments(recorder_);
        return invocation;
    }

private:
    RVRecordingGit recorder_ = useRecordingGit();
};

// git would make an annotated tag of it, and wait for whoever is to write the message.
TEST_F(RVGitTagCommandTest, NoEditorIsOpenedForATagThatIsToBeSigned) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it does not know tag.gpgSign");
    makeCommit();
    gitInRepository({"config", "tag.gpgSign", "true"});
    gitInRepository({"config", "core.editor", "touch " + scratchPath("edited") + ";:"});
    EXPECT_THAT(createCommand("v1"), failsWith(RVGitRVGitGenericError));
    EXPECT_FALSE(fileExists("edited"));
    EXPECT_EQ(gitInRepository({"tag"}), "");
}

TEST_F(RVGitTagCommandLineTest, CreatesALightweightTag) {
    makeCommit();
    const auto command = createCommand("v1");
    EXPECT_FALSE(command->deletesTag());
    EXPECT_FALSE(command->signsTag());
    const auto invocation = invocationOf(*command);
    EXPECT_THAT(invocation.arguments, ElementsAre("tag", "v1"));
    EXPECT_EQ(invocation.standardInput, std::nullopt);
}

TEST_F(RVGitTagCommandLineTest, TagsARevision) {
    makeCommit();
    EXPECT_THAT(invocationOf(*createCommand("v1", "HEAD")).arguments,
                ElementsAre("tag", "v1", "HEAD"));
}

TEST_F(RVGitTagCommandLineTest, AMessageIsGivenOnStandardInput) {
    makeCommit();
    const auto invocation = invocationOf(*createCommand("v1", "HEAD", "Première\n\nversion"));
    EXPECT_THAT(invocation.arguments, ElementsAre("tag", "-a", "-F-", "v1", "HEAD"));
    EXPECT_EQ(invocation.standardInput, "Première\n\nversion");
}

TEST_F(RVGitTagCommandLineTest, AnEmptyMessageIsAMessage) {
    makeCommit();
    const auto invocation = invocationOf(*createCommand("v1", std::nullopt, ""));
    EXPECT_THAT(invocation.arguments, ElementsAre("tag", "-a", "-F-", "v1"));
    EXPECT_EQ(invocation.standardInput, "");
}

TEST_F(RVGitTagCommandLineTest, Signs) {
    const auto command = createCommand("v1", "HEAD", "Message");
    command->setSignsTag(true);
    EXPECT_THAT(invocationOf(*command).arguments, ElementsAre("tag", "-s", "-F-", "v1", "HEAD"));
}

TEST_F(RVGitTagCommandLineTest, SignsWithAKey) {
    const auto command = createCommand("v1", std::nullopt, "Message");
    command->setSignsTag(true);
    command->setSigningKeyFingerprint("ABCDEF");
    EXPECT_EQ(command->signingKeyFingerprint(), "ABCDEF");
    EXPECT_THAT(invocationOf(*command).arguments,
                ElementsAre("tag", "-s", "-u", "ABCDEF", "-F-", "v1"));
}

TEST_F(RVGitTagCommandLineTest, AnEmptyKeyIsNotPassed) {
    const auto command = createCommand("v1", std::nullopt, "Message");
    command->setSignsTag(true);
    command->setSigningKeyFingerprint("");
    EXPECT_THAT(invocationOf(*command).arguments, ElementsAre("tag", "-s", "-F-", "v1"));
}

TEST_F(RVGitTagCommandLineTest, SigningNeedsAMessage) {
    makeCommit();
    const auto command = createCommand("v1");
    command->setSignsTag(true);
    EXPECT_THAT(invocationOf(*command).arguments, ElementsAre("tag", "v1"));
}

TEST_F(RVGitTagCommandLineTest, DeletesTags) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"tag", "v2"});
    const auto command =
        RVGitTagCommand::gitDeleteTagCommandWithRepository(repository(), {"v1", "v2"});
    EXPECT_TRUE(command->deletesTag());
    EXPECT_THAT(invocationOf(*command).arguments, ElementsAre("tag", "-d", "v1", "v2"));
    EXPECT_EQ(gitInRepository({"tag"}), "");
}

TEST_F(RVGitTagCommandLineTest, WithoutNamesOnlyTheCommandStands) {
    const auto command = std::make_shared<RVGitTagCommand>(repository());
    EXPECT_EQ(command->refNames(), std::nullopt);
    EXPECT_THAT(invocationOf(*command).arguments, ElementsAre("tag"));
}

TEST_F(RVGitTagCommandTest, AMessageOf100KBReachesGit) {
    makeCommit();
    std::string message;
    while (message.size() < 100'000)
        message += "A line of the message\n";
    ASSERT_TRUE(createCommand("v1", std::nullopt, message)->run());
    EXPECT_EQ(git({"for-each-ref", "--format=%(contents)", "refs/tags/v1"}, repositoryPath()),
              message + "\n");
}

TEST_F(RVGitTagCommandTest, AnExistingTagFailsWith1700) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    const auto error = errorOf(*createCommand("v1"));
    EXPECT_EQ(error.code(), RVGitCreateTagAlreadyExistsError);
    const auto& names = error.userInfo().at(RVGitRefNameErrorKey);
    ASSERT_NE(names.stringList(), nullptr);
    EXPECT_THAT(*names.stringList(), ElementsAre("v1"));
    EXPECT_EQ(error.localizedFailureReason(), "A tag with name “v1” already exists.");
    EXPECT_FALSE(error.userInfo().contains(RVGitRevisionErrorKey));
}

TEST_F(RVGitTagCommandTest, AnUnknownRevisionFailsWith1701) {
    makeCommit();
    const auto error = errorOf(*createCommand("v1", "missing"));
    EXPECT_EQ(error.code(), RVGitCreateTagInvalidObjectError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "missing");
    EXPECT_EQ(error.localizedFailureReason(),
              "The revision referenced by “missing” does not appear to be valid.");
}

TEST_F(RVGitTagCommandTest, DeletingAnUnknownTagFailsWith1702) {
    const auto error =
        errorOf(*RVGitTagCommand::gitDeleteTagCommandWithRepository(repository(), {"v1"}));
    EXPECT_EQ(error.code(), RVGitDeleteTagNotFoundError);
    EXPECT_EQ(error.localizedFailureReason(), "Could not find a tag with name “v1”.");
}

TEST_F(RVGitTagCommandTest, AMissingSigningKeyFailsWith108) {
    makeCommit();
    setEnvironmentVariable("GNUPGHOME", makeDirectory("gnupg"));
    const auto command = createCommand("v1", std::nullopt, "Message");
    command->setSignsTag(true);
    command->setSigningKeyFingerprint("0123456789ABCDEF");
    const auto error = errorOf(*command);
    EXPECT_EQ(error.code(), RVGitGPGSigningKeyUnvailableError);
    EXPECT_EQ(error.localizedDescription(), "Could Not Sign Data");
}

TEST_F(RVGitTagCommandTest, EitherMessageOfAFailedSigningIsUnderstood) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "error: unable to sign the tag\n", .exitCode = 128});
    EXPECT_THAT(createCommand("v1", std::nullopt, "Message"),
                failsWith(RVGitGPGSigningKeyUnvailableError));
    fake.setAnswer({.standardError = "error: unable to sign the tag\n", .exitCode = 1});
    EXPECT_THAT(createCommand("v1", std::nullopt, "Message"), failsWith(RVGitRVGitGenericError));
}

}  // namespace
