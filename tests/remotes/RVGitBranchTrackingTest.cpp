#include "RVGit/remotes/RVGitBranch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "RVGit/history/RVGitCommit.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "tests/remotes/RVGitBranchTestCase.h"

namespace {

using testing::IsEmpty;

class RVGitBranchTrackingTest : public RVGitBranchTestCase {};

// The configuration of a branch.

TEST_F(RVGitBranchTrackingTest, TrackingComesFromTheConfiguration) {
    makeOrigin();
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_TRUE(branch->isTracking());
    EXPECT_EQ(branch->trackedRemoteName(), "origin");
    EXPECT_EQ(branch->trackedRefNames(), Strings{"refs/heads/main"});
    EXPECT_EQ(branch->commitsAhead(), 0U);
    EXPECT_EQ(branch->commitsBehind(), 0U);
    const auto remote = branch->trackedRemote();
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->name(), "origin");
    const auto refs = branch->trackedRefs();
    ASSERT_TRUE(refs.has_value());
    ASSERT_EQ(refs->size(), 1U);
    EXPECT_EQ(refs->front()->fullRefName(), "refs/remotes/origin/main");
}

TEST_F(RVGitBranchTrackingTest, CountsAheadAndBehind) {
    makeOrigin();
    makeCommit();
    makeCommit();
    EXPECT_EQ(branchNamed("main")->commitsAhead(), 2U);
    gitInRepository({"reset", "-q", "--hard", "HEAD~2"});
    makeCommit();
    gitInRepository({"update-ref", "refs/remotes/origin/main",
                     gitLine({"commit-tree", "-p", "HEAD~1", "-m", "Theirs", "HEAD^{tree}"},
                             repositoryPath())});
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->commitsAhead(), 1U);
    EXPECT_EQ(branch->commitsBehind(), 1U);
    gitInRepository({"update-ref", "-d", "refs/remotes/origin/main"});
    EXPECT_EQ(branchNamed("main")->commitsAhead(), 0U);
}

TEST_F(RVGitBranchTrackingTest, ASectionWithoutMergeTracksNothingByName) {
    makeCommit();
    config("branch.main.remote", "origin");
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_TRUE(branch->isTracking());
    ASSERT_TRUE(branch->trackedRefNames().has_value());
    EXPECT_THAT(*branch->trackedRefNames(), IsEmpty());
    EXPECT_THAT(branch->trackedRefs().value(), IsEmpty());
}

TEST_F(RVGitBranchTrackingTest, ABranchWithoutASectionTracksNothing) {
    makeCommit();
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(branch->trackedRemote(&error), nullptr);
    EXPECT_FALSE(error.has_value());
    error = RVError("before", 1);
    EXPECT_EQ(branch->trackedRefs(&error), std::nullopt);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitBranchTrackingTest, RepeatedKeysGiveTheirFirstValueOrAll) {
    makeCommit();
    for (const char* value : {"one", "two"}) {
        config("branch.main.remote", value);
        config("branch.main.merge", std::string("refs/heads/") + value);
        config("branch.main.mergeoptions", std::string("--") + value);
    }
    config("branch.main.rebase", "true");
    config("branch.main.rebase", "false");
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->trackedRemoteName(), "one");
    EXPECT_EQ(branch->trackedRefNames(), (Strings{"refs/heads/one", "refs/heads/two"}));
    EXPECT_EQ(branch->mergeOptions(), "--one");
    EXPECT_TRUE(branch->usesRebaseForMerge());
}

TEST_F(RVGitBranchTrackingTest, OnlyTheExactWordUsesRebase) {
    makeCommit();
    for (const char* value : {"interactive", "merges", "TRUE", "yes", "1", ""}) {
        gitInRepository({"config", "branch.main.rebase", value});
        EXPECT_FALSE(branchNamed("main")->usesRebaseForMerge()) << value;
    }
    gitInRepository({"config", "branch.main.rebase", "true"});
    EXPECT_TRUE(branchNamed("main")->usesRebaseForMerge());
}

TEST_F(RVGitBranchTrackingTest, ANameWithDotsHasItsSection) {
    makeCommit();
    gitInRepository({"branch", "release.1.0.x"});
    config("branch.release.1.0.x.remote", "origin");
    EXPECT_EQ(branchNamed("release.1.0.x")->trackedRemoteName(), "origin");
}

TEST_F(RVGitBranchTrackingTest, ARefOfThisRepositoryIsTrackedAsItStands) {
    makeCommit();
    gitInRepository({"branch", "--track", "topic", "main"});
    const auto branch = branchNamed("topic");
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->trackedRemoteName(), ".");
    const auto refs = branch->trackedRefs();
    ASSERT_TRUE(refs.has_value());
    ASSERT_EQ(refs->size(), 1U);
    EXPECT_EQ(refs->front()->fullRefName(), "refs/heads/main");
    const auto remote = branch->trackedRemote();
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->name(), ".");
}

TEST_F(RVGitBranchTrackingTest, EveryPrefixInATrackedNameIsReplaced) {
    const std::string hash = makeCommit();
    const auto branch = RVGitBranch::branchWithRepository(
        repository(), RVGitRef::refWithRepository(repository(), "refs/heads/main", hash), true, 0,
        0);
    gitInRepository({"update-ref", "refs/remotes/o/x/refs/remotes/o/y", hash});
    branch->setTrackedRemoteName("o");
    branch->setTrackedRefNames(Strings{"refs/heads/x/refs/heads/y", "refs/heads/missing"});
    const auto refs = branch->trackedRefs();
    ASSERT_TRUE(refs.has_value());
    ASSERT_EQ(refs->size(), 1U);
    EXPECT_EQ(refs->front()->fullRefName(), "refs/remotes/o/x/refs/remotes/o/y");
}

TEST_F(RVGitBranchTrackingTest, TrackedRefsAreListedOnce) {
    const std::string hash = makeCommit();
    auto recorder = useRecordingGit();
    const auto branch = RVGitBranch::branchWithRepository(
        repository(), RVGitRef::refWithRepository(repository(), "refs/heads/main", hash), true, 0,
        0);
    branch->setTrackedRemoteName(".");
    branch->setTrackedRefNames(Strings{"refs/heads/main", "refs/heads/main", "refs/heads/x"});
    recorder.clear();
    EXPECT_EQ(branch->trackedRefs()->size(), 2U);
    // Whether the branch is unborn is asked by two more.
    EXPECT_EQ(recorder.invocations().size(), 3U);
}

// Subversion.

TEST_F(RVGitBranchTrackingTest, OutsideOfTheBridgeNothingIsTracked) {
    makeCommit("Message\n\ngit-svn-id: file:///svn/trunk@1 1234-abcd");
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->lastSVNCommit(), nullptr);
    EXPECT_EQ(branch->trackedSVNRemote(), nullptr);
    EXPECT_EQ(branch->trackedSVNRemoteName(), std::nullopt);
    EXPECT_EQ(branch->trackedSVNRefName(), std::nullopt);
    EXPECT_EQ(branch->trackedSVNRef(), nullptr);
    EXPECT_FALSE(branch->isTrackingSVNBranch());
}

TEST_F(RVGitBranchTrackingTest, FindsTheSubversionBranchOfTheLastCommitFromThere) {
    makeDirectory("repository/.git/svn");
    const std::string uuid = "01234567-89ab-cdef-0123-456789abcdef";
    const std::string hash = makeCommit("Message\n\ngit-svn-id: file:///svn/trunk@7 " + uuid);
    makeCommit("Mine");
    config("svn-remote.svn.url", "file:///svn");
    config("svn-remote.svn.uuid", uuid);
    config("svn-remote.svn.fetch", "trunk:refs/remotes/svn/trunk");
    config("svn-remote.svn.branches", "branches/*:refs/remotes/svn/*");
    for (const char* name : {"svn/trunk", "svn/zwilling"})
        gitInRepository({"update-ref", std::string("refs/remotes/") + name, hash});
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    ASSERT_TRUE(branch->lastSVNCommit());
    EXPECT_EQ(branch->lastSVNCommit()->commitHash(), hash);
    EXPECT_TRUE(branch->isTrackingSVNBranch());
    EXPECT_EQ(branch->trackedSVNRemoteName(), "svn");
    // Both have the address; the last counts.
    EXPECT_EQ(branch->trackedSVNRefName(), "refs/remotes/svn/zwilling");
    ASSERT_TRUE(branch->trackedSVNRef());
    EXPECT_EQ(branch->trackedSVNRef()->commitHash(), hash);
}

}  // namespace
