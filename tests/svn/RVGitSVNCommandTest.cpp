#include "RVGit/svn/RVGitSVNCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitSVNCommandTest : public RVGitFlagTestCase {
protected:
    RVGitSVNCommandTest() : recorder_(scratchPath("recording"), "/bin/true") {
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder_.path()));
        recorder_.clear();
    }

    [[nodiscard]] std::shared_ptr<RVGitRemote> remote(
        std::optional<std::string> upstreamURL = std::nullopt,
        const std::string& name = "svn") const {
        return RVGitRemote::SVNRemoteWithRepository(repository(), name, "https://down/x",
                                                    std::move(upstreamURL), std::nullopt);
    }
    [[nodiscard]] Arguments cloneArguments(const std::string& url, const std::string& path,
                                           const std::optional<RVOptions>& options) const {
        const auto command =
            RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(url, path, options);
        EXPECT_TRUE(command->isSupportingProgressOutput());
        EXPECT_TRUE(command->run());
        return recorder_.lastInvocation().arguments;
    }
    void expectRefused(RVGitCommand& command) const {
        recorder_.clear();
        EXPECT_EQ(errorOf(command).code(), RVGitRVGitGenericError);
        EXPECT_THAT(recorder_.invocations(), IsEmpty());
    }

    RVRecordingGit recorder_;
};

TEST_F(RVGitSVNCommandTest, ArgumentsOfClone) {
    const std::string path = scratchPath("new");
    EXPECT_THAT(cloneArguments("https://host/a", path, std::nullopt),
                ElementsAre("--no-pager", "svn", "clone", "--prefix=svn/", "https://host/a", path));
    EXPECT_THAT(cloneArguments("https://host/a", path,
                               RVOptions{{RVGitSVNOptionStandardDirectoryLayout, false}}),
                ElementsAre("--no-pager", "svn", "clone", "--prefix=svn/", "https://host/a", path));
    EXPECT_THAT(
        cloneArguments("https://marie@host/a", path,
                       RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true},
                                 {RVGitSVNOptionTrunkDirectories, RVValue::StringList{"t", "t 2"}},
                                 {RVGitSVNOptionBranchesDirectories, RVValue::StringList{"b", "c"}},
                                 {RVGitSVNOptionTagsDirectories, RVValue::StringList{"\u00e9"}}}),
        ElementsAre("--no-pager", "svn", "clone", "--username=marie", "--prefix=svn/",
                    "--stdlayout", "--trunk=t", "--trunk=t 2", "--branches=b", "--branches=c",
                    "--tags=\u00e9", "https://marie@host/a", path));
    EXPECT_THAT(cloneArguments("svn+ssh://marie@host/a", "-new", std::nullopt),
                ElementsAre("--no-pager", "svn", "clone", "--prefix=svn/", "svn+ssh://marie@host/a",
                            "./-new"));
    makeDirectory("there");
    EXPECT_THAT(cloneArguments("file:///a", scratchPath("there"), std::nullopt),
                ElementsAre("--no-pager", "svn", "clone", "--prefix=svn/", "file:///a", "."));
    EXPECT_EQ(recorder_.lastInvocation().workingDirectory, scratchPath("there"));
}

TEST_F(RVGitSVNCommandTest, ArgumentsOfFetchRebaseAndDCommit) {
    const auto fetch =
        RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository(), remote());
    EXPECT_TRUE(fetch->isSupportingProgressOutput());
    EXPECT_THAT(argumentsOf(recorder_, *fetch), ElementsAre("svn", "fetch", "svn"));
    EXPECT_THAT(argumentsOf(recorder_, *RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(
                                           repository(), nullptr)),
                ElementsAre("svn", "fetch"));
    const auto rebase =
        RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository(), remote());
    EXPECT_FALSE(rebase->isSupportingProgressOutput());
    EXPECT_THAT(argumentsOf(recorder_, *rebase), ElementsAre("svn", "rebase"));
    const auto commit =
        RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository(), remote());
    EXPECT_TRUE(commit->isSupportingProgressOutput());
    EXPECT_THAT(argumentsOf(recorder_, *commit), ElementsAre("svn", "dcommit"));
    EXPECT_THAT(argumentsOf(recorder_, *RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
                                           repository(), remote(), "HEAD~1")),
                ElementsAre("svn", "dcommit", "HEAD~1"));
}

TEST_F(RVGitSVNCommandTest, ArgumentsOfBranchAndTag) {
    const auto check = [this](auto make, const std::string& word) {
        const auto plain = make("b 1", "main");
        EXPECT_TRUE(plain->isSupportingProgressOutput());
        EXPECT_THAT(argumentsOf(recorder_, *plain), ElementsAre("svn", word, "b 1", "main"));
        EXPECT_THAT(argumentsOf(recorder_, *make("b", std::nullopt)),
                    ElementsAre("svn", word, "b"));
        EXPECT_THAT(argumentsOf(recorder_, *make(std::nullopt, std::nullopt)),
                    ElementsAre("svn", word));
        const auto all = make("b", "main");
        all->setMessage("-a message");
        all->setDestination("bran ches");
        all->setCreatesParentDirectories(true);
        EXPECT_THAT(argumentsOf(recorder_, *all),
                    ElementsAre("svn", word, "-m", "-a message", "--destination=bran ches",
                                "--parents", "b", "main"));
    };
    using Text = std::optional<std::string>;
    check(
        [this](Text name, Text start) {
            return RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(
                repository(), remote(), std::move(name), std::move(start));
        },
        "branch");
    check(
        [this](Text name, Text start) {
            return RVGitSVNTagCommand::gitSVNTagCommandWithRepository(
                repository(), remote(), std::move(name), std::move(start));
        },
        "tag");
}

TEST_F(RVGitSVNCommandTest, TheUserOfThePushAddressIsGivenUnlessItIsOneOfSSH) {
    const auto argumentsFor = [this](std::optional<std::string> url) {
        return argumentsOf(recorder_, *RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(
                                          repository(), remote(std::move(url))));
    };
    EXPECT_THAT(argumentsFor("https://marie@host/a"),
                ElementsAre("svn", "rebase", "--username=marie"));
    EXPECT_THAT(argumentsFor("svn://marie@host/a"),
                ElementsAre("svn", "rebase", "--username=marie"));
    EXPECT_THAT(argumentsFor("svn+ssh://marie@host/a"), ElementsAre("svn", "rebase"));
    EXPECT_THAT(argumentsFor("https://host/a"), ElementsAre("svn", "rebase"));
    EXPECT_THAT(argumentsFor("not a url"), ElementsAre("svn", "rebase"));
    EXPECT_THAT(argumentsFor(std::nullopt), ElementsAre("svn", "rebase"));
}

TEST_F(RVGitSVNCommandTest, NamesThatAreOptionsNeverReachGit) {
    expectRefused(*RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
        "--config-dir=/x", scratchPath("new"), std::nullopt));
    expectRefused(*RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(
        repository(), remote(std::nullopt, "--all")));
    expectRefused(*RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
        repository(), remote(), "--no-rebase"));
    expectRefused(*RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(repository(), remote(),
                                                                            "-n", "main"));
    expectRefused(*RVGitSVNTagCommand::gitSVNTagCommandWithRepository(repository(), remote(), "t",
                                                                      "--parents"));
}

TEST_F(RVGitSVNCommandTest, KeysOfOptionsAreTheirNames) {
    EXPECT_STREQ(RVGitSVNOptionStandardDirectoryLayout, "RVGitSVNOptionStandardDirectoryLayout");
    EXPECT_STREQ(RVGitSVNOptionTrunkDirectories, "RVGitSVNOptionTrunkDirectories");
    EXPECT_STREQ(RVGitSVNOptionBranchesDirectories, "RVGitSVNOptionBranchesDirectories");
    EXPECT_STREQ(RVGitSVNOptionTagsDirectories, "RVGitSVNOptionTagsDirectories");
    static_assert(std::is_base_of_v<RVGitCommand, RVGitSVNShowIgnoreCommand>);
}

TEST_F(RVGitSVNCommandTest, EachRowHasItsCode) {
    auto fake = useFakeGit();
    const auto codeFor = [&](const std::string& text, int exitCode) {
        fake.setAnswer({.standardError = text, .exitCode = exitCode});
        return errorOf(*RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository(),
                                                                                 remote()))
            .code();
    };
    EXPECT_EQ(codeFor("Can't locate SVN/Core.pm in @INC (you may need to install", 2), 1800);
    EXPECT_EQ(codeFor("Can't locate SVN/Core.pm in @INC", 1), 1800);
    EXPECT_EQ(codeFor("(R)eject, accept (t)emporarily or accept (p)ermanently? ", 1), 1801);
    EXPECT_EQ(codeFor("Reject, accept temporarily or accept permanently", 1), 1);
    EXPECT_EQ(codeFor("Unable to connect to a repository at URL 'x'", 1), RVGitRemoteAuthError);
    EXPECT_EQ(codeFor("svn: No repository found in 'svn://x'", 1),
              RVGitRemoteRepositoryNotFoundError);
    EXPECT_EQ(codeFor("Unable to connect to a repository at URL 'x'", 2), 1);
}

TEST_F(RVGitSVNCommandTest, FailuresTellWhatTheyWereAbout) {
    useFakeGit().setAnswer({.exitCode = 3});
    const auto clone = errorOf(*RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
        "svn://host", scratchPath("new"), std::nullopt));
    EXPECT_EQ(clone.userInfoString(RVGitRemoteURLErrorKey), "svn://host");
    for (const std::shared_ptr<RVGitCommand>& command : std::vector<std::shared_ptr<RVGitCommand>>{
             RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository(), remote()),
             RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository(), remote())}) {
        const auto error = errorOf(*command);
        EXPECT_EQ(error.userInfoString(RVGitRemoteNameErrorKey), "svn");
        EXPECT_EQ(error.userInfoString(RVGitRemoteURLErrorKey), "https://down/x");
    }
    EXPECT_EQ(errorOf(*RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
                          repository(), remote(), "topic"))
                  .userInfoString(RVGitRevisionErrorKey),
              "topic");
    const auto branch = errorOf(*RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(
        repository(), remote(), "b", std::nullopt));
    EXPECT_EQ(branch.userInfoString(RVGitRemoteNameErrorKey), std::nullopt);
    EXPECT_EQ(branch.userInfoString(RVGitRefNameErrorKey), std::nullopt);
    EXPECT_EQ(
        errorOf(*RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository(), nullptr))
            .userInfoString(RVGitRemoteNameErrorKey),
        std::nullopt);
}

TEST_F(RVGitSVNCommandTest, NeedsARepositoryUnlessItClones) {
    EXPECT_THROW((void)RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(nullptr, remote()),
                 RVInvalidParameterException);
    EXPECT_TRUE(std::make_shared<RVGitSVNShowIgnoreCommand>(repository()));
}

}  // namespace
