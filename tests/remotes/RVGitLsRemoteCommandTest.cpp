#include "RVGit/remotes/RVGitLsRemoteCommand.h"

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitLsRemoteCommandTest : public RVGitRepositoryTestCase {
protected:
    static std::shared_ptr<RVGitLsRemoteCommand> lsRemote(
        const std::string& url, const std::optional<RVOptions>& options = {}) {
        return RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(url, options);
    }
    static std::vector<std::string> namesIn(RVGitLsRemoteCommand& command) {
        EXPECT_TRUE(command.run());
        std::vector<std::string> names;
        for (const auto& ref : command.refs())
            names.push_back(ref.fullRefName);
        return names;
    }
};

TEST_F(RVGitLsRemoteCommandTest, ArgumentsForEachOption) {
    const RVRecordingGit recorder = useRecordingGit();
    const auto argumentsWith = [&](const std::optional<RVOptions>& options) {
        (void)lsRemote("/no/where", options)->run();
        return recorder.lastInvocation().arguments;
    };
    EXPECT_THAT(argumentsWith({}), ElementsAre("--no-pager", "ls-remote", "/no/where"));
    EXPECT_THAT(argumentsWith(RVOptions{{"heads", true}}),
                ElementsAre("--no-pager", "ls-remote", "--heads", "/no/where"));
    EXPECT_THAT(argumentsWith(RVOptions{{"tags", true}}),
                ElementsAre("--no-pager", "ls-remote", "--tags", "/no/where"));
    EXPECT_THAT(argumentsWith(RVOptions{{"tags", true}, {"heads", true}}),
                ElementsAre("--no-pager", "ls-remote", "--heads", "--tags", "/no/where"));
    EXPECT_THAT(argumentsWith(RVOptions{{"tags", false}, {"heads", false}}),
                ElementsAre("--no-pager", "ls-remote", "/no/where"));
    (void)RVGitLsRemoteCommand::canConnectToRemoteAtURL("/no/where");
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "ls-remote", "--heads", "/no/where"));
}

TEST_F(RVGitLsRemoteCommandTest, AnAddressThatLooksLikeAnOptionIsRefused) {
    const RVRecordingGit recorder = useRecordingGit();
    const RVError error = errorOf(*lsRemote("--upload-pack=touch hit"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfo().at(RVGitRemoteURLErrorKey), "--upload-pack=touch hit");
    EXPECT_FALSE(RVGitLsRemoteCommand::canConnectToRemoteAtURL("--upload-pack=touch hit"));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitLsRemoteCommandTest, HasNoRepositoryAndNoProgress) {
    const auto command = lsRemote("url");
    EXPECT_EQ(command->gitDirectoryPath(), std::nullopt);
    EXPECT_FALSE(command->isSupportingProgressOutput());
}

TEST_F(RVGitLsRemoteCommandTest, ListsAllRefsOrSome) {
    const std::string commit = makeCommit();
    gitInRepository({"tag", "-m", "x", "v1"});
    EXPECT_THAT(namesIn(*lsRemote(repositoryPath())),
                ElementsAre("HEAD", "refs/heads/main", "refs/tags/v1"));
    EXPECT_THAT(namesIn(*lsRemote(repositoryPath(), RVOptions{{RVGitLsRemoteOptionHeads, true}})),
                ElementsAre("refs/heads/main"));
    const auto tags = lsRemote(repositoryPath(), RVOptions{{RVGitLsRemoteOptionTags, true}});
    EXPECT_THAT(namesIn(*tags), ElementsAre("refs/tags/v1"));
    EXPECT_EQ(tags->refs().at(0).commitHash, commit);
    EXPECT_EQ(tags->refs().at(0).tagObjectHash, gitInRepository({"rev-parse", "v1"}));
}

TEST_F(RVGitLsRemoteCommandTest, AnEmptyRepositoryHasNoRefsAndCanBeConnectedTo) {
    EXPECT_THAT(namesIn(*lsRemote(repositoryPath())), IsEmpty());
    std::optional<RVError> error;
    EXPECT_TRUE(RVGitLsRemoteCommand::canConnectToRemoteAtURL(repositoryPath(), &error));
    EXPECT_FALSE(error);
}

TEST_F(RVGitLsRemoteCommandTest, ConnectingToNothingFailsWith203) {
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitLsRemoteCommand::canConnectToRemoteAtURL(scratchPath("none"), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRemoteRepositoryNotFoundError);
    EXPECT_EQ(error->userInfo().at(RVGitRemoteURLErrorKey), scratchPath("none"));
}

TEST_F(RVGitLsRemoteCommandTest, ALineOfAnotherFormFailsWith11AndDamageOnlyWithThat) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = "no hash\trefs/heads/main\n"});
    EXPECT_THAT(lsRemote("url"), failsWith(RVGitOutputParserError));
    const std::string output =
        "0123456789012345678901234567890123456789\trefs/heads/main\n"
        "1123456789012345678901234567890123456789\trefs/tags/v1\n"
        "2123456789012345678901234567890123456789\trefs/tags/v1^{}\n";
    for (const auto& damaged : damagedOutputs(output)) {
        RVGitRefOutputParser parser(damaged);
        std::optional<RVError> error;
        if (!parser.parse(&error)) {
            EXPECT_EQ(error.value().code(), RVGitOutputParserError);
        }
        EXPECT_LE(parser.refs().size(), 3u);
    }
}

}  // namespace
