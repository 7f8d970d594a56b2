#include <filesystem>

#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "tests/remotes/RVGitTransferTestCase.h"

namespace {

using testing::SizeIs;

/// Every transfer over every protocol, held against the repositories that git itself leaves.
class RVGitTransferTest : public RVGitTransferTestCase,
                          public testing::WithParamInterface<Protocol> {
protected:
    RVGitTransferTest() {
        serveRepository();
        url_ = url(GetParam());
        gitInRepository({"remote", "add", "origin", url_});
    }
    /// A commit that the served repository gets.
    void commitThere(const std::string& file) {
        const std::string source = scratchPath("source of a.git");
        commitFile(source, file, file, "There");
        git({"push", servedPath(), "main", "--tags"}, source);
    }
    std::string url_;
};

INSTANTIATE_TEST_SUITE_P(Over, RVGitTransferTest,
                         testing::Values(Protocol::Path, Protocol::File, Protocol::Git,
                                         Protocol::SSH, Protocol::ShortSSH, Protocol::HTTP,
                                         Protocol::HTTPS),
                         testing::PrintToStringParamName());

TEST_P(RVGitTransferTest, Clones) {
    const auto command =
        RVGitCloneCommand::gitCloneCommandWithRemoteURL(url_, scratchPath("new"), std::nullopt);
    ASSERT_EQ(codeOf(*command), 0) << command->standardErrorString();
    git({"clone", url_, "oracle"});
    EXPECT_EQ(refsIn("new"), refsIn("oracle"));
    EXPECT_EQ(objectsIn("new"), objectsIn("oracle"));
    EXPECT_EQ(gitLine({"config", "remote.origin.url"}, "new"), url_);
    EXPECT_EQ(readFile("new/file.txt"), "one\n");

    // The same into an existing empty directory, and bare.
    const std::string existing = makeDirectory("existing");
    EXPECT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(url_, existing, {})), 0);
    EXPECT_EQ(refsIn("existing"), refsIn("oracle"));
    EXPECT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                  url_, scratchPath("new.git"), RVOptions{{RVGitCloneOptionBare, true}})),
              0);
    git({"clone", "--bare", url_, "oracle.git"});
    EXPECT_EQ(refsIn("new.git"), refsIn("oracle.git"));
}

TEST_P(RVGitTransferTest, FetchesWhatIsNewPrunesWhatIsGoneAndTakesTags) {
    git({"branch", "old", "main"}, servedPath());
    ASSERT_EQ(codeOf(*fetch()), 0);
    git({"branch", "-D", "old"}, servedPath());
    git({"branch", "topic/ä", "main"}, servedPath());
    git({"tag", "-m", "x", "v1", "main"}, servedPath());
    commitThere("two");
    git({"clone", "--no-checkout", repositoryPath(), "oracle"});
    git({"remote", "set-url", "origin", url_}, "oracle");
    git({"fetch", "--prune", "--tags"}, "oracle");
    ASSERT_EQ(codeOf(*fetch(RVOptions{{RVGitFetchOptionPruneObsoleteRemoteBranches, true},
                                      {RVGitFetchOptionForceTagsDownload, true}})),
              0);
    EXPECT_EQ(gitInRepository({"for-each-ref", "refs/remotes/origin/main",
                               "refs/remotes/origin/topic", "refs/tags"}),
              gitLine({"for-each-ref", "refs/remotes/origin/main", "refs/remotes/origin/topic",
                       "refs/tags"},
                      "oracle"));
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/origin/old"));
    EXPECT_EQ(objectsIn(repositoryPath()), objectsIn(servedPath()));
}

TEST_P(RVGitTransferTest, Pulls) {
    ASSERT_EQ(codeOf(*pull()), 0);
    commitThere("two");
    const auto command = pull();
    ASSERT_EQ(codeOf(*command), 0);
    expectUpdates(*command, true);
    EXPECT_EQ(gitInRepository({"rev-parse", "HEAD"}), gitLine({"rev-parse", "main"}, servedPath()));
    EXPECT_EQ(readFile("repository/two"), "two");
}

TEST_P(RVGitTransferTest, Pushes) {
    ASSERT_EQ(codeOf(*pull()), 0);
    const std::string first = gitInRepository({"rev-parse", "HEAD"});
    const auto served = [&](const std::string& name) {
        return runGit({"rev-parse", "--verify", "--quiet", name}, servedPath()).standardOutput;
    };
    const auto here = [&] { return gitInRepository({"rev-parse", "HEAD"}) + "\n"; };
    // New, fast-forward, tags.
    makeCommit();
    gitInRepository({"tag", "v1"});
    EXPECT_EQ(codeOf(*push("HEAD:refs/heads/new")), 0);
    EXPECT_EQ(served("new"), here());
    EXPECT_EQ(codeOf(*push("main", RVOptions{{RVGitPushOptionPushTags, true}})), 0);
    EXPECT_EQ(served("main"), here());
    EXPECT_EQ(served("v1"), here());
    // Rejected, leased wrongly, leased rightly, forced.
    const std::string before = served("main");
    gitInRepository({"commit", "--amend", "-m", "Amended"});
    EXPECT_THAT(push("main"), failsWith(RVGitRemotePushRejectedError));
    const auto leased = [&](const std::string& hash) {
        const auto command =
            push("main:refs/heads/main", RVOptions{{RVGitPushOptionForcePushWithLease, true}});
        command->setLeaseValueCommitHash(hash);
        return codeOf(*command);
    };
    EXPECT_EQ(leased(first), RVGitRemotePushRejectedError);
    EXPECT_EQ(served("main"), before);
    EXPECT_EQ(leased(before.substr(0, 40)), 0);
    EXPECT_EQ(served("main"), here());
    gitInRepository({"commit", "--amend", "-m", "Amended again"});
    EXPECT_EQ(codeOf(*push("main", RVOptions{{RVGitPushOptionForcePush, true}})), 0);
    EXPECT_EQ(served("main"), here());
    // Deleted.
    EXPECT_EQ(codeOf(*RVGitPushCommand::gitPushCommandWithRepositoryDeletingBranch(
                  repository(), remote(), "new")),
              0);
    EXPECT_EQ(codeOf(*RVGitPushCommand::gitPushCommandWithRepositoryDeletingTag(repository(),
                                                                                remote(), "v1")),
              0);
    EXPECT_EQ(served("new"), "");
    EXPECT_EQ(served("v1"), "");
    // Refused by a hook.
    writeFile("served/a.git/hooks/update", "#!/bin/sh\necho not today >&2\nexit 1\n", 0755);
    const std::string last = served("main");
    makeCommit();
    EXPECT_THAT(push("main"), failsWith(RVGitRemoteSyncError));
    EXPECT_EQ(served("main"), last);
}

TEST_P(RVGitTransferTest, ListsRefs) {
    git({"tag", "-m", "x", "v1", "main"}, servedPath());
    const auto command = RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(url_, std::nullopt);
    ASSERT_EQ(codeOf(*command), 0);
    ASSERT_THAT(command->refs(), SizeIs(3));
    EXPECT_EQ(command->refs()[0].fullRefName, "HEAD");
    EXPECT_EQ(command->refs()[2].commitHash, gitLine({"rev-parse", "main"}, servedPath()));
    EXPECT_EQ(command->refs()[2].tagObjectHash, gitLine({"rev-parse", "v1"}, servedPath()));
    EXPECT_TRUE(RVGitLsRemoteCommand::canConnectToRemoteAtURL(url_));
}

TEST_P(RVGitTransferTest, AnEmptyRepositoryCanBeConnectedTo) {
    initBareRepository("served/empty.git");
    std::optional<RVError> error;
    EXPECT_TRUE(
        RVGitLsRemoteCommand::canConnectToRemoteAtURL(url(GetParam(), "empty.git"), &error));
    EXPECT_FALSE(error);
}

TEST_P(RVGitTransferTest, ClonesToADepth) {
    commitThere("two");
    // A plain path is copied whole, whatever the depth.
    const std::string address = GetParam() == Protocol::Path ? url(Protocol::File) : url_;
    ASSERT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                  address, scratchPath("new"), RVOptions{{RVGitCloneOptionDepth, 1}})),
              0);
    EXPECT_EQ(gitLine({"rev-list", "--count", "HEAD"}, "new"), "1");
}

}  // namespace
