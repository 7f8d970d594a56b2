#include "RVGit/remotes/RVGitFetchCommand.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

class RVGitFetchCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitRemote> remoteNamed(const std::string& name,
                                             const std::optional<std::string>& url = std::nullopt) {
        return RVGitRemote::remoteWithRepository(repository(), name, url, std::nullopt, {});
    }
    std::shared_ptr<RVGitFetchCommand> fetch(const std::shared_ptr<RVGitRemote>& remote,
                                             const std::optional<RVOptions>& options = {},
                                             const std::shared_ptr<RVGitRefSpec>& refSpec = {}) {
        return RVGitFetchCommand::gitFetchCommandWithRepository(repository(), remote, refSpec,
                                                                options);
    }
    /// With a commit on main, as the remote "origin".
    std::string addOrigin() {
        const std::string path = initRepository("origin");
        commitFile(path, "file", "1", "Message");
        gitInRepository({"remote", "add", "origin", path});
        // New gits would make another ref of it.
        gitInRepository({"config", "remote.origin.followRemoteHEAD", "never"});
        return path;
    }
    std::string refs() { return gitInRepository({"for-each-ref", "--format=%(refname)"}); }
};

class RVGitFetchCommandLineTest : public RVGitFetchCommandTest {
protected:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitFetchCommandLineTest, WithoutARemoteOrAnAddressTheChoiceIsGits) {
    EXPECT_THAT(argumentsOf(recorder_, *fetch(nullptr)), ElementsAre("fetch", "-v", "--progress"));
    EXPECT_EQ(fetch(nullptr)->remoteName(), ".");
}

TEST_F(RVGitFetchCommandLineTest, ARemoteAndASpec) {
    EXPECT_THAT(argumentsOf(recorder_, *fetch(remoteNamed("a/b"))),
                ElementsAre("fetch", "-v", "--progress", "a/b"));
    EXPECT_THAT(argumentsOf(recorder_,
                            *fetch(remoteNamed("a"), {}, RVGitRefSpec::refSpecFromString("x:y"))),
                ElementsAre("fetch", "-v", "--progress", "a", "x:y"));
}

TEST_F(RVGitFetchCommandLineTest, ASpecWithoutARemote) {
    EXPECT_THAT(argumentsOf(recorder_, *fetch(nullptr, {}, RVGitRefSpec::refSpecFromString("x"))),
                ElementsAre("fetch", "-v", "--progress", "x"));
}

TEST_F(RVGitFetchCommandLineTest, AnAddress) {
    const auto command = RVGitFetchCommand::gitFetchCommandWithRepository(
        repository(), "/no/where", RVGitRefSpec::refSpecFromString("x:y"));
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("fetch", "-v", "--progress", "/no/where", "x:y"));
    EXPECT_EQ(command->remoteName(), ".");
    const auto without = RVGitFetchCommand::gitFetchCommandWithRepository(
        repository(), std::optional<std::string>(), nullptr);
    EXPECT_THAT(argumentsOf(recorder_, *without), ElementsAre("fetch", "-v", "--progress"));
}

TEST_F(RVGitFetchCommandLineTest, ARemoteCountsMoreThanAnAddress) {
    const auto command = fetch(remoteNamed("a"));
    command->setRemoteURLString("/no/where");
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("fetch", "-v", "--progress", "a"));
}

TEST_F(RVGitFetchCommandLineTest, EachOption) {
    const auto argumentsWith = [&](const RVOptions& options) {
        return argumentsOf(recorder_, *fetch(remoteNamed("a"), options));
    };
    const auto lineWith = [](const char* option) {
        return ElementsAre("fetch", "-v", "--progress", option, "a");
    };
    EXPECT_THAT(argumentsWith({{"pruneObsoleteRemoteBranches", true}}), lineWith("--prune"));
    EXPECT_THAT(argumentsWith({{"forceTagsDownload", true}}), lineWith("--tags"));
    EXPECT_THAT(argumentsWith({{"recurseSubmodules", true}}), lineWith("--recurse-submodules"));
    EXPECT_THAT(argumentsWith({{"RVGitFetchOptionDepth", 2}}), lineWith("--depth=2"));
    EXPECT_THAT(argumentsWith({{"RVGitFetchOptionUnshallow", true}}), lineWith("--unshallow"));
    EXPECT_THAT(argumentsWith({{"pruneObsoleteRemoteBranches", false},
                               {"forceTagsDownload", false},
                               {"recurseSubmodules", false},
                               {"RVGitFetchOptionUnshallow", false}}),
                ElementsAre("fetch", "-v", "--progress", "a"));
}

TEST_F(RVGitFetchCommandLineTest, AllOptionsInTheirOrder) {
    const auto command = fetch(remoteNamed("a"));
    command->setUnshallows(true);
    command->setDepth(1);
    command->setRecursesSubmodules(true);
    command->setForcesTagsDownload(true);
    command->setPrunesObsoleteRemoteBranches(true);
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("fetch", "-v", "--progress", "--prune", "--tags",
                            "--recurse-submodules", "--depth=1", "--unshallow", "a"));
}

TEST_F(RVGitFetchCommandLineTest, WhatLooksLikeAnOptionIsRefused) {
    const std::string hostile = "--upload-pack=touch hit";
    EXPECT_THAT(fetch(remoteNamed(hostile)), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(fetch(remoteNamed("a"), {}, RVGitRefSpec::refSpecFromString(hostile)),
                failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(
        errorOf(*RVGitFetchCommand::gitFetchCommandWithRepository(repository(), hostile, nullptr))
            .code(),
        RVGitRVGitGenericError);
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

TEST_F(RVGitFetchCommandTest, SupportsProgress) {
    EXPECT_TRUE(fetch(nullptr)->isSupportingProgressOutput());
    EXPECT_TRUE(RVGitFetchCommand(repository(), "url", nullptr).isSupportingProgressOutput());
}

TEST_F(RVGitFetchCommandTest, AFailureTellsTheRemoteTheSpecAndTheFetchURL) {
    const auto info =
        errorOf(*fetch(remoteNamed("none", "down"), {}, RVGitRefSpec::refSpecFromString("x:y")))
            .userInfo();
    EXPECT_EQ(info.at(RVGitRemoteNameErrorKey), "none");
    EXPECT_EQ(info.at(RVGitRefSpecErrorKey), "x:y");
    EXPECT_EQ(info.at(RVGitRemoteURLErrorKey), "down");
    const auto other = errorOf(*RVGitFetchCommand::gitFetchCommandWithRepository(
                                   repository(), "/no/where", nullptr))
                           .userInfo();
    EXPECT_EQ(other.at(RVGitRemoteNameErrorKey), ".");
    EXPECT_THAT(other, Not(Contains(Key(RVGitRefSpecErrorKey))));
    EXPECT_THAT(other, Not(Contains(Key(RVGitRemoteURLErrorKey))));
}

TEST_F(RVGitFetchCommandTest, AMissingRemoteFailsWith203) {
    EXPECT_THAT(fetch(remoteNamed("none")), failsWith(RVGitRemoteRepositoryNotFoundError));
}

TEST_F(RVGitFetchCommandTest, ExitCode1WithoutARowIsGeneric) {
    useFakeGit().setAnswer({.exitCode = 1});
    EXPECT_THAT(fetch(remoteNamed("a")), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitFetchCommandTest, FetchesARemote) {
    const std::string origin = addOrigin();
    ASSERT_TRUE(fetch(remoteNamed("origin", origin))->run());
    EXPECT_EQ(refs(), "refs/remotes/origin/main");
}

TEST_F(RVGitFetchCommandTest, FetchesASpecFromAnAddress) {
    const std::string origin = addOrigin();
    ASSERT_TRUE(RVGitFetchCommand::gitFetchCommandWithRepository(
                    repository(), origin,
                    RVGitRefSpec::refSpecFromString("refs/heads/main:refs/heads/copy"))
                    ->run());
    EXPECT_EQ(refs(), "refs/heads/copy");
}

TEST_F(RVGitFetchCommandTest, PrunesAndFetchesTagsWhereAskedTo) {
    const std::string origin = addOrigin();
    git({"branch", "old"}, origin);
    ASSERT_TRUE(fetch(remoteNamed("origin"))->run());
    git({"branch", "-D", "old"}, origin);
    // A tag that nothing fetched leads to.
    git({"tag", "v1", gitLine({"commit-tree", "-m", "x", "HEAD^{tree}"}, origin)}, origin);
    ASSERT_TRUE(fetch(remoteNamed("origin"))->run());
    EXPECT_EQ(refs(), "refs/remotes/origin/main\nrefs/remotes/origin/old");
    ASSERT_TRUE(
        fetch(remoteNamed("origin"), RVOptions{{RVGitFetchOptionPruneObsoleteRemoteBranches, true},
                                               {RVGitFetchOptionForceTagsDownload, true}})
            ->run());
    EXPECT_EQ(refs(), "refs/remotes/origin/main\nrefs/tags/v1");
}

TEST_F(RVGitFetchCommandTest, DeepensAndUnshallows) {
    const std::string origin = addOrigin();
    for (const char* contents : {"2", "3"})
        commitFile(origin, "file", contents, "Message");
    gitInRepository({"remote", "set-url", "origin", "file://" + origin});
    const auto count = [&] {
        return gitInRepository({"rev-list", "--count", "refs/remotes/origin/main"});
    };
    ASSERT_TRUE(fetch(remoteNamed("origin"), RVOptions{{RVGitFetchOptionDepth, 1}})->run());
    EXPECT_EQ(count(), "1");
    ASSERT_TRUE(fetch(remoteNamed("origin"), RVOptions{{RVGitFetchOptionDepth, 2}})->run());
    EXPECT_EQ(count(), "2");
    ASSERT_TRUE(fetch(remoteNamed("origin"), RVOptions{{RVGitFetchOptionUnshallow, true}})->run());
    EXPECT_EQ(count(), "3");
}

TEST_F(RVGitFetchCommandTest, FetchesIntoSubmodules) {
    const std::string module = initRepository("module");
    commitFile(module, "inside", "1", "Message");
    gitInRepository({"submodule", "add", module, "module"});
    gitInRepository({"commit", "-m", "Message"});
    const std::string origin = addOrigin();
    const std::string newest = commitFile(module, "inside", "2", "Message");
    ASSERT_TRUE(
        fetch(remoteNamed("origin"), RVOptions{{RVGitFetchOptionRecurseSubmodules, true}})->run());
    EXPECT_EQ(gitLine({"rev-parse", "refs/remotes/origin/main"}, repositoryPath() + "/module"),
              newest);
}

}  // namespace
