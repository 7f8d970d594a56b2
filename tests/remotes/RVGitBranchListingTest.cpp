#include "RVGit/remotes/RVGitBranch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/remotes/RVGitBranchTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// Listings in every state.
class RVGitBranchListingTest : public RVGitBranchTestCase {};

TEST_F(RVGitBranchListingTest, ListsBranchesWithHashesDatesAndTheHead) {
    const std::string hash = makeCommit();
    setDates("1600000000 +0200");
    gitInRepository({"checkout", "-q", "-b", "topic/one"});
    const std::string topicHash = makeCommit();
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 2U);
    EXPECT_EQ(branches[0]->fullRefName(), "refs/heads/main");
    EXPECT_EQ(branches[0]->refName(), "main");
    EXPECT_EQ(branches[0]->commitHash(), hash);
    EXPECT_FALSE(branches[0]->isHead());
    EXPECT_EQ(branches[0]->commitDate(), RVDate(std::chrono::seconds(defaultTime)));
    EXPECT_EQ(branches[0]->repository(), repository());
    EXPECT_FALSE(branches[0]->isTracking());
    EXPECT_FALSE(branches[0]->isDetachedHead());
    EXPECT_FALSE(branches[0]->isOrphaned());
    EXPECT_EQ(branches[1]->fullRefName(), "refs/heads/topic/one");
    EXPECT_EQ(branches[1]->commitHash(), topicHash);
    EXPECT_TRUE(branches[1]->isHead());
    EXPECT_EQ(branches[1]->commitDate(), RVDate(std::chrono::seconds(1600000000)));
    ASSERT_TRUE(branches[1]->commit());
    EXPECT_EQ(branches[1]->commit()->commitHash(), topicHash);
}

TEST_F(RVGitBranchListingTest, RunsThreeCommandsForAListing) {
    RVGIT_TEST_NEEDS_REF_FILES("git is asked for a HEAD that is in tables");
    makeCommit();
    auto recorder = useRecordingGit();
    recorder.clear();
    (void)listed();
    std::vector<Strings> argumentLists;
    for (const Strings& arguments : recorder.argumentLists()) {
        auto word = arguments.begin();
        while (word->starts_with("--"))
            ++word;
        argumentLists.emplace_back(word, arguments.end());
    }
    EXPECT_THAT(
        argumentLists,
        UnorderedElementsAre(
            ElementsAre("branch", "--no-color", "--no-abbrev", "-v"),
            ElementsAre("config", "-z", "--get-regexp", "^branch.*"),
            ElementsAre("for-each-ref", "--format=%(*refname)%1f%1d%1f%(creatordate:unix)%00",
                        "refs/heads")));
}

TEST_F(RVGitBranchListingTest, AnEmptyRepositoryHasItsUnbornBranch) {
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 1U);
    EXPECT_EQ(branches[0]->fullRefName(), "refs/heads/main");
    EXPECT_TRUE(branches[0]->isHead());
    EXPECT_TRUE(branches[0]->isOrphaned());
    EXPECT_EQ(branches[0]->commitHash(), std::nullopt);
    EXPECT_EQ(branches[0]->commit(), nullptr);
    EXPECT_EQ(branches[0]->commitDate(), std::nullopt);
}

TEST_F(RVGitBranchListingTest, AnUnbornBranchBesideOthersIsListedLast) {
    makeCommit();
    gitInRepository({"branch", "zebra"});
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/main", "refs/heads/zebra", "*refs/heads/another"));
}

TEST_F(RVGitBranchListingTest, ADetachedHeadIsABranchWithoutAName) {
    const std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 2U);
    EXPECT_TRUE(branches[0]->isDetachedHead());
    EXPECT_TRUE(branches[0]->isHead());
    EXPECT_FALSE(branches[0]->isOrphaned());
    EXPECT_EQ(branches[0]->refName(), "(no branch)");
    EXPECT_EQ(branches[0]->fullRefName(), std::nullopt);
    EXPECT_EQ(branches[0]->commitHash(), hash);
    EXPECT_EQ(branches[0]->detachedHeadCommitHash(), hash);
    EXPECT_EQ(branches[0]->commitDate(), std::nullopt);
    ASSERT_TRUE(branches[0]->commit());
    EXPECT_EQ(branches[0]->commit(), branches[0]->commit());
    EXPECT_EQ(branches[0]->commit()->commitHash(), hash);
    EXPECT_FALSE(branches[1]->isHead());
}

TEST_F(RVGitBranchListingTest, ADetachedHeadWithoutAnyBranchIsListed) {
    const std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 1U);
    EXPECT_TRUE(branches[0]->isDetachedHead());
    EXPECT_EQ(branches[0]->commitHash(), hash);
}

TEST_F(RVGitBranchListingTest, DuringARebaseTheHeadIsDetached) {
    makeCommit();
    gitInRepository({"checkout", "-q", "-b", "topic"});
    commitFile(repositoryPath(), "file", "one", "One");
    gitInRepository({"checkout", "-q", "main"});
    commitFile(repositoryPath(), "file", "two", "Two");
    const std::string head = gitInRepository({"rev-parse", "HEAD"});
    EXPECT_NE(runGit({"rebase", "main", "topic"}, repositoryPath()).exitCode, 0);
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 3U);
    EXPECT_TRUE(branches[0]->isDetachedHead());
    EXPECT_EQ(branches[0]->commitHash(), head);
    EXPECT_THAT(names(), ElementsAre("*(no branch)", "refs/heads/main", "refs/heads/topic"));
}

TEST_F(RVGitBranchListingTest, ABranchOfALinkedWorktreeIsMissing) {
    makeCommit();
    gitInRepository({"worktree", "add", "-b", "linked", "../linked"});
    if (RVGitBinary::defaultGitBinary()->isVersionAtLeast("2.23.0")) {
        EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
    }
    const auto linked = RVGitRepository::repositoryWithPath(scratchPath("linked"));
    const auto branches = RVGitBranch::allBranchesForRepository(linked);
    ASSERT_TRUE(branches.has_value());
    ASSERT_FALSE(branches->empty());
    EXPECT_EQ(branches->front()->fullRefName(), "refs/heads/linked");
    EXPECT_TRUE(branches->front()->isHead());
}

TEST_F(RVGitBranchListingTest, PackedAndLooseBranchesAreListedAlike) {
    makeCommit();
    gitInRepository({"branch", "a"});
    gitInRepository({"pack-refs", "--all"});
    gitInRepository({"branch", "b"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/a", "refs/heads/b", "*refs/heads/main"));
}

TEST_F(RVGitBranchListingTest, ABareRepositoryHasBranches) {
    makeOrigin();
    const auto bare = RVGitRepository::repositoryWithPath(scratchPath("origin.git"));
    const auto branches = RVGitBranch::allBranchesForRepository(bare);
    ASSERT_TRUE(branches.has_value());
    ASSERT_EQ(branches->size(), 1U);
    EXPECT_TRUE(branches->front()->isHead());
}

TEST_F(RVGitBranchListingTest, ARefToAMissingObjectFailsAsGitFails) {
    RVGIT_TEST_NEEDS_REF_FILES("a ref is damaged in its file");
    makeCommit();
    writeFile("repository/.git/refs/heads/bad", std::string(40, '1') + "\n");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::allBranchesForRepository(repository(), error);
        },
        failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitBranchListingTest, ARefFileOfGarbageIsIgnoredAsGitIgnoresIt) {
    RVGIT_TEST_NEEDS_REF_FILES("a ref is damaged in its file");
    makeCommit();
    writeFile("repository/.git/refs/heads/bad", "garbage\n");
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

TEST_F(RVGitBranchListingTest, TheUsersConfigurationOfListingsChangesNothingButTheOrder) {
    makeCommit();
    setDates("1600000000 +0000");
    gitInRepository({"checkout", "-q", "-b", "a"});
    makeCommit();
    config("column.ui", "always");
    config("column.branch", "always");
    config("color.ui", "always");
    config("color.branch", "always");
    config("core.abbrev", "4");
    config("branch.sort", "-committerdate");
    EXPECT_THAT(names(), ElementsAre("*refs/heads/a", "refs/heads/main"));
    gitInRepository({"config", "branch.sort", "refname"});
    EXPECT_THAT(names(), ElementsAre("*refs/heads/a", "refs/heads/main"));
    for (const auto& branch : listed())
        EXPECT_EQ(branch->commitHash()->size(), 40U);
}

TEST_F(RVGitBranchListingTest, FailsWithTheErrorOfTheFirstCommandThatFailed) {
    makeCommit();
    const auto failing = [&](const char* name, Strings words) {
        auto fake = fakeGit(name);
        for (const std::string& word : words)
            fake.setAnswer(word, {.standardError = "fatal: " + word + "\n", .exitCode = 77});
        fake.passOtherCallsOn();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        std::optional<RVError> error;
        EXPECT_FALSE(RVGitBranch::allBranchesForRepository(repository(), &error).has_value());
        EXPECT_TRUE(error.has_value());
        return error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("") : "";
    };
    EXPECT_EQ(failing("one", {"branch", "config", "for-each-ref"}), "fatal: branch\n");
    EXPECT_EQ(failing("two", {"config", "for-each-ref"}), "fatal: config\n");
    EXPECT_EQ(failing("three", {"for-each-ref"}), "fatal: for-each-ref\n");
}

TEST_F(RVGitBranchListingTest, AHeadThatNamesNoBranchGivesABranchWithoutAnything) {
    makeCommit();
    auto fake = useFakeGit();
    fake.setAnswer("branch", {.standardOutput = "  main " + std::string(40, 'a') + " Subject\n"});
    fake.passOtherCallsOn();
    gitInRepository({"checkout", "-q", "--detach"});
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 2U);
    EXPECT_TRUE(branches[1]->isHead());
    EXPECT_TRUE(branches[1]->isDetachedHead());
    EXPECT_EQ(branches[1]->commitHash(), std::nullopt);
    EXPECT_EQ(branches[1]->commit(), nullptr);
}

TEST_F(RVGitBranchListingTest, AMarkedBranchIsDetachedIfTheHeadFileSaysSo) {
    makeCommit();
    config("branch.main.remote", "origin");
    auto fake = useFakeGit();
    fake.setAnswer("branch", {.standardOutput = "* main " + std::string(40, 'a') + " Subject\n"});
    fake.passOtherCallsOn();
    gitInRepository({"checkout", "-q", "--detach"});
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 1U);
    EXPECT_TRUE(branches[0]->isDetachedHead());
    EXPECT_EQ(branches[0]->commitHash(), std::string(40, 'a'));
    EXPECT_EQ(branches[0]->commitDate(), std::nullopt);
    EXPECT_EQ(branches[0]->trackedRemoteName(), "origin");
}

TEST_F(RVGitBranchListingTest, ManyBranchesAreListedWhole) {
    const std::string hash = makeCommit();
    std::string input;
    for (int number = 0; number < 3000; ++number)
        input += "create refs/heads/team/branch-" + std::to_string(number) + " " + hash + "\n";
    git({"update-ref", "--stdin"}, repositoryPath(), input);
    EXPECT_EQ(listed().size(), 3001U);
}

TEST_F(RVGitBranchListingTest, ABranchNamedAsHeadIsListedAndNotFound) {
    makeCommit();
    gitInRepository({"update-ref", "refs/heads/HEAD", "HEAD"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/HEAD", "*refs/heads/main"));
    EXPECT_EQ(branchNamed("HEAD"), nullptr);
    ASSERT_TRUE(branchNamed("refs/heads/HEAD"));
}

using RVGitBranchListingSlowTest = RVGitBranchListingTest;

TEST_F(RVGitBranchListingSlowTest, TwentyThousandBranchesAreWhatGitSays) {
    RVGIT_TEST_NEEDS_REF_FILES("thirty thousand are written into the file of the packed ones");
    const std::string hash = makeCommit();
    const std::string otherHash = makeCommit();
    std::string heads, remotes, configuration = readFile("repository/.git/config");
    for (int number = 10000; number < 30000; ++number) {
        const std::string name = "topic-" + std::to_string(number);
        heads += (number % 2 ? hash : otherHash) + " refs/heads/" + name + "\n";
        if (number < 18000)
            remotes += otherHash + " refs/remotes/origin/" + name + "\n";
        if (number < 10200)
            configuration +=
                "[branch \"" + name + "\"]\n\tremote = origin\n\tmerge = refs/heads/" + name + "\n";
    }
    writeFile("repository/.git/packed-refs",
              "# pack-refs with: peeled fully-peeled sorted \n" + heads + remotes);
    writeFile("repository/.git/config", configuration +
                                            "[remote \"origin\"]\n\turl = x\n"
                                            "\tfetch = +refs/heads/*:refs/remotes/origin/*\n");
    std::string expected;
    for (const auto& branch : listed())
        expected +=
            *branch->fullRefName() + " " + *branch->commitHash() + " " +
            (branch->commitsBehind() ? "[behind " + std::to_string(branch->commitsBehind()) + "]"
                                     : "") +
            "\n";
    EXPECT_EQ(
        git({"for-each-ref", "--format=%(refname) %(objectname) %(upstream:track)", "refs/heads"},
            repositoryPath()),
        expected);
    const auto remote = RVGitRemote::originRemoteForRepository(repository());
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->branches()->size(), 8000U);
    const auto tracking = listed();
    EXPECT_EQ(std::count_if(tracking.begin(), tracking.end(),
                            [](const auto& branch) { return branch->isTracking(); }),
              200);
}

}  // namespace
