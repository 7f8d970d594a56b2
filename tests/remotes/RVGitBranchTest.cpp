#include "RVGit/remotes/RVGitBranch.h"

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;

class RVGitBranchTest : public RVGitRepositoryTestCase {
protected:
    RVGitBranch::List listed() const {
        std::optional<RVError> error;
        auto branches = RVGitBranch::allBranchesForRepository(repository(), &error);
        EXPECT_TRUE(branches.has_value());
        EXPECT_FALSE(error.has_value());
        return branches.value_or(RVGitBranch::List());
    }
    /// The names, that of the checked-out branch behind a "*".
    Strings names() const {
        Strings names;
        for (const auto& branch : listed())
            names.push_back((branch->isHead() ? "*" : "") +
                            branch->fullRefName().value_or(branch->refName()));
        return names;
    }
    std::shared_ptr<RVGitBranch> branchNamed(const std::string& name) const {
        std::optional<RVError> error;
        auto branch = RVGitBranch::branchForRefName(name, repository(), &error);
        EXPECT_FALSE(error.has_value());
        return branch;
    }
    void config(const std::string& key, const std::string& value) {
        gitInRepository({"config", "--add", key, value});
    }
    /// A remote "origin" with a branch "main", which main tracks.
    void makeOrigin() {
        makeCommit();
        const std::string origin = initBareRepository("origin.git");
        gitInRepository({"remote", "add", "origin", origin});
        gitInRepository({"push", "-q", "-u", "origin", "main"});
    }
    [[nodiscard]] bool isInitial() const {
        return RVGitBranch::isInitialCommitOnHeadBranchForRepository(repository());
    }
};

TEST_F(RVGitBranchTest, AnEmptyRepositoryIsBeforeItsInitialCommit) {
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, ABranchWithACommitIsNot) {
    auto recorder = useRecordingGit();
    makeCommit();
    EXPECT_FALSE(isInitial());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("rev-list", "-1", "HEAD"));
}

TEST_F(RVGitBranchTest, AnUnbornBranchBesideOthersIs) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, ABranchBesideAFileThatIsNamedAsTheHeadIsNot) {
    makeCommit();
    writeFile(repositoryPath() + "/HEAD", "no ref\n");
    EXPECT_FALSE(isInitial());
}

TEST_F(RVGitBranchTest, ADetachedHeadIsNot) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_FALSE(isInitial());
}

TEST_F(RVGitBranchTest, ARepositoryWithTagsButNoBranchIs) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitBranch::isInitialCommitOnHeadBranchForRepository(nullptr),
                 RVInvalidParameterException);
}

// Listings in every state.

TEST_F(RVGitBranchTest, ListsBranchesWithHashesDatesAndTheHead) {
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

TEST_F(RVGitBranchTest, RunsThreeCommandsForAListing) {
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

TEST_F(RVGitBranchTest, AnEmptyRepositoryHasItsUnbornBranch) {
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 1U);
    EXPECT_EQ(branches[0]->fullRefName(), "refs/heads/main");
    EXPECT_TRUE(branches[0]->isHead());
    EXPECT_TRUE(branches[0]->isOrphaned());
    EXPECT_EQ(branches[0]->commitHash(), std::nullopt);
    EXPECT_EQ(branches[0]->commit(), nullptr);
    EXPECT_EQ(branches[0]->commitDate(), std::nullopt);
}

TEST_F(RVGitBranchTest, AnUnbornBranchBesideOthersIsListedLast) {
    makeCommit();
    gitInRepository({"branch", "zebra"});
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/main", "refs/heads/zebra", "*refs/heads/another"));
}

TEST_F(RVGitBranchTest, ADetachedHeadIsABranchWithoutAName) {
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

TEST_F(RVGitBranchTest, ADetachedHeadWithoutAnyBranchIsListed) {
    const std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    const auto branches = listed();
    ASSERT_EQ(branches.size(), 1U);
    EXPECT_TRUE(branches[0]->isDetachedHead());
    EXPECT_EQ(branches[0]->commitHash(), hash);
}

TEST_F(RVGitBranchTest, DuringARebaseTheHeadIsDetached) {
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

TEST_F(RVGitBranchTest, ABranchOfALinkedWorktreeIsMissing) {
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

TEST_F(RVGitBranchTest, PackedAndLooseBranchesAreListedAlike) {
    makeCommit();
    gitInRepository({"branch", "a"});
    gitInRepository({"pack-refs", "--all"});
    gitInRepository({"branch", "b"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/a", "refs/heads/b", "*refs/heads/main"));
}

TEST_F(RVGitBranchTest, ABareRepositoryHasBranches) {
    makeOrigin();
    const auto bare = RVGitRepository::repositoryWithPath(scratchPath("origin.git"));
    const auto branches = RVGitBranch::allBranchesForRepository(bare);
    ASSERT_TRUE(branches.has_value());
    ASSERT_EQ(branches->size(), 1U);
    EXPECT_TRUE(branches->front()->isHead());
}

TEST_F(RVGitBranchTest, ARefToAMissingObjectFailsAsGitFails) {
    RVGIT_TEST_NEEDS_REF_FILES("a ref is damaged in its file");
    makeCommit();
    writeFile("repository/.git/refs/heads/bad", std::string(40, '1') + "\n");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::allBranchesForRepository(repository(), error);
        },
        failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitBranchTest, ARefFileOfGarbageIsIgnoredAsGitIgnoresIt) {
    RVGIT_TEST_NEEDS_REF_FILES("a ref is damaged in its file");
    makeCommit();
    writeFile("repository/.git/refs/heads/bad", "garbage\n");
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

TEST_F(RVGitBranchTest, TheUsersConfigurationOfListingsChangesNothingButTheOrder) {
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

TEST_F(RVGitBranchTest, FailsWithTheErrorOfTheFirstCommandThatFailed) {
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

TEST_F(RVGitBranchTest, AHeadThatNamesNoBranchGivesABranchWithoutAnything) {
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

TEST_F(RVGitBranchTest, AMarkedBranchIsDetachedIfTheHeadFileSaysSo) {
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

TEST_F(RVGitBranchTest, ManyBranchesAreListedWhole) {
    const std::string hash = makeCommit();
    std::string input;
    for (int number = 0; number < 3000; ++number)
        input += "create refs/heads/team/branch-" + std::to_string(number) + " " + hash + "\n";
    git({"update-ref", "--stdin"}, repositoryPath(), input);
    EXPECT_EQ(listed().size(), 3001U);
}

TEST_F(RVGitBranchTest, ABranchNamedAsHeadIsListedAndNotFound) {
    makeCommit();
    gitInRepository({"update-ref", "refs/heads/HEAD", "HEAD"});
    EXPECT_THAT(names(), ElementsAre("refs/heads/HEAD", "*refs/heads/main"));
    EXPECT_EQ(branchNamed("HEAD"), nullptr);
    ASSERT_TRUE(branchNamed("refs/heads/HEAD"));
}

using RVGitBranchSlowTest = RVGitBranchTest;

TEST_F(RVGitBranchSlowTest, TwentyThousandBranchesAreWhatGitSays) {
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

// The configuration of a branch.

TEST_F(RVGitBranchTest, TrackingComesFromTheConfiguration) {
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

TEST_F(RVGitBranchTest, CountsAheadAndBehind) {
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

TEST_F(RVGitBranchTest, ASectionWithoutMergeTracksNothingByName) {
    makeCommit();
    config("branch.main.remote", "origin");
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    EXPECT_TRUE(branch->isTracking());
    ASSERT_TRUE(branch->trackedRefNames().has_value());
    EXPECT_THAT(*branch->trackedRefNames(), IsEmpty());
    EXPECT_THAT(branch->trackedRefs().value(), IsEmpty());
}

TEST_F(RVGitBranchTest, ABranchWithoutASectionTracksNothing) {
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

TEST_F(RVGitBranchTest, RepeatedKeysGiveTheirFirstValueOrAll) {
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

TEST_F(RVGitBranchTest, OnlyTheExactWordUsesRebase) {
    makeCommit();
    for (const char* value : {"interactive", "merges", "TRUE", "yes", "1", ""}) {
        gitInRepository({"config", "branch.main.rebase", value});
        EXPECT_FALSE(branchNamed("main")->usesRebaseForMerge()) << value;
    }
    gitInRepository({"config", "branch.main.rebase", "true"});
    EXPECT_TRUE(branchNamed("main")->usesRebaseForMerge());
}

TEST_F(RVGitBranchTest, ANameWithDotsHasItsSection) {
    makeCommit();
    gitInRepository({"branch", "release.1.0.x"});
    config("branch.release.1.0.x.remote", "origin");
    EXPECT_EQ(branchNamed("release.1.0.x")->trackedRemoteName(), "origin");
}

TEST_F(RVGitBranchTest, ARefOfThisRepositoryIsTrackedAsItStands) {
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

TEST_F(RVGitBranchTest, EveryPrefixInATrackedNameIsReplaced) {
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

TEST_F(RVGitBranchTest, TrackedRefsAreListedOnce) {
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

// Names.

TEST_F(RVGitBranchTest, UglyNamesAreListedFoundRenamedAndDeleted) {
    makeCommit();
    const Strings ugly = {"a.b/c.d",
                          "it's",
                          "\"quoted\"",
                          "h\xC3\xA9",
                          "he\xCC\x81",
                          "main2",
                          "(parens)x",
                          "x(parens)",
                          "a\xC2\xA0z",
                          "\xE3\x80\x80wide",
                          "@",
                          "#1",
                          "$HOME",
                          "a&b;c|d",
                          "%s%n",
                          "0123456789012345678901234567890123456789",
                          std::string(200, 'n'),
                          "refs",
                          "heads/main",
                          "tag",
                          "file1.txt"};
    gitInRepository({"tag", "tag"});
    for (const std::string& name : ugly) {
        if (name == "@")
            continue;  // Git takes it for HEAD.
        std::optional<RVError> error;
        const auto branch =
            RVGitBranch::createBranchWithRefName(name, std::nullopt, repository(), &error);
        if (name == "\xE3\x80\x80wide" || name == "(parens)x") {
            // The listing does not tell these names: its blanks are Unicode's, and a name in
            // parentheses is that of a detached HEAD.
            EXPECT_EQ(branch, nullptr) << name;
            EXPECT_FALSE(error.has_value());
            EXPECT_TRUE(RVGitBranch::deleteBranchWithRefName(name, repository(), true)) << name;
            continue;
        }
        ASSERT_TRUE(branch) << name << (error ? error->localizedFailureReason().value_or("") : "");
        EXPECT_EQ(branch->refName(), name);
        EXPECT_EQ(branchNamed("refs/heads/" + name)->refName(), name);
        EXPECT_TRUE(RVGitBranch::renameBranchWithRefName(name, "renamed", repository(), false));
        EXPECT_TRUE(RVGitBranch::renameBranchWithRefName("renamed", name, repository(), false));
        EXPECT_TRUE(RVGitBranch::deleteBranchWithRefName(name, repository(), false)) << name;
    }
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

TEST_F(RVGitBranchTest, OfBothUnicodeFormsEachIsFoundByItsOwnBytes) {
    makeCommit();
    const std::string composed = "h\xC3\xA9";
    const std::string decomposed = "he\xCC\x81";
    gitInRepository({"branch", composed});
    EXPECT_EQ(branchNamed(decomposed)->refName(), composed);
    gitInRepository({"branch", decomposed});
    EXPECT_EQ(branchNamed(decomposed)->refName(), decomposed);
    EXPECT_EQ(branchNamed(composed)->refName(), composed);
}

TEST_F(RVGitBranchTest, AnUnknownNameIsNoError) {
    makeCommit();
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(RVGitBranch::branchForRefName("missing", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitBranchTest, ALookUpListsOnce) {
    RVGIT_TEST_NEEDS_REF_FILES("git is asked for a HEAD that is in tables");
    makeCommit();
    auto recorder = useRecordingGit();
    recorder.clear();
    (void)branchNamed("main");
    EXPECT_EQ(recorder.invocations().size(), 3U);
}

TEST_F(RVGitBranchTest, ValidNamesAreThoseOfRefs) {
    EXPECT_TRUE(RVGitBranch::isValidBranchName("a/b"));
    EXPECT_FALSE(RVGitBranch::isValidBranchName("a..b"));
    EXPECT_FALSE(RVGitBranch::isValidBranchName(std::nullopt));
}

TEST_F(RVGitBranchTest, TheCurrentBranchIsTheHead) {
    makeCommit();
    gitInRepository({"branch", "a"});
    const auto head = RVGitBranch::currentHeadBranchForRepository(repository());
    ASSERT_TRUE(head);
    EXPECT_EQ(head->refName(), "main");
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_TRUE(RVGitBranch::currentHeadBranchForRepository(repository())->isDetachedHead());
}

// Writing.

TEST_F(RVGitBranchTest, CreatesAtARevision) {
    const std::string first = makeCommit();
    makeCommit();
    const auto branch = RVGitBranch::createBranchWithRefName("topic", "HEAD~1", repository());
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->commitHash(), first);
    EXPECT_FALSE(branch->isTracking());
}

TEST_F(RVGitBranchTest, CreatesATrackingBranch) {
    makeOrigin();
    const auto branch =
        RVGitBranch::createTrackingBranchWithRefName("topic", "origin/main", repository());
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->trackedRemoteName(), "origin");
    EXPECT_EQ(branch->trackedRefNames(), Strings{"refs/heads/main"});
}

TEST_F(RVGitBranchTest, CreatingWithAFailureGivesNothing) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_EQ(RVGitBranch::createBranchWithRefName("main", std::nullopt, repository(), &error),
              nullptr);
    EXPECT_EQ(error.value().code(), RVGitCreateBranchRefAlreadyExistsError);
    EXPECT_EQ(RVGitBranch::createTrackingBranchWithRefName("main", "main", repository(), &error),
              nullptr);
}

TEST_F(RVGitBranchTest, AddsAndRemovesTracking) {
    makeOrigin();
    gitInRepository({"branch", "--no-track", "topic"});
    EXPECT_TRUE(RVGitBranch::addTrackingForBranchWithRefName("topic", "origin/main", repository()));
    config("branch.topic.rebase", "true");
    EXPECT_TRUE(branchNamed("topic")->isTracking());
    EXPECT_TRUE(RVGitBranch::removeTrackingForBranchWithRefName("refs/heads/topic", repository()));
    EXPECT_FALSE(branchNamed("topic")->isTracking());
    EXPECT_FALSE(branchNamed("topic")->usesRebaseForMerge());
    EXPECT_TRUE(RVGitBranch::removeTrackingForBranchWithRefName("topic", repository()));
    EXPECT_TRUE(branchNamed("main")->isTracking());
}

TEST_F(RVGitBranchTest, ALongerSectionIsTakenForTheBranchsOwn) {
    makeCommit();
    config("branch.main2.remote", "origin");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::removeTrackingForBranchWithRefName("main", repository(), error);
        },
        failsWith(RVGitConfigSectionNotFoundError));
    EXPECT_EQ(gitInRepository({"config", "branch.main2.remote"}), "origin");
}

TEST_F(RVGitBranchTest, SetsAndUnsetsMergeOptionsAndRebase) {
    makeCommit();
    EXPECT_TRUE(RVGitBranch::setRebaseOption(true, "refs/heads/main", repository()));
    EXPECT_TRUE(RVGitBranch::setMergeOptions("no-ff", "main", repository()));
    EXPECT_TRUE(branchNamed("main")->usesRebaseForMerge());
    EXPECT_EQ(branchNamed("main")->mergeOptions(), "no-ff");
    EXPECT_TRUE(RVGitBranch::unsetRebaseOptionForBranchWithRefName("main", repository()));
    EXPECT_TRUE(RVGitBranch::unsetMergeOptionsForBranchWithRefName("main", repository()));
    EXPECT_FALSE(branchNamed("main")->usesRebaseForMerge());
    EXPECT_EQ(branchNamed("main")->mergeOptions(), std::nullopt);
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitBranch::unsetRebaseOptionForBranchWithRefName("main", repository(), &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_TRUE(RVGitBranch::setRebaseOption(false, "main", repository()));
    EXPECT_EQ(gitInRepository({"config", "branch.main.rebase"}), "false");
}

TEST_F(RVGitBranchTest, DeletesSeveralAndKeepsWhatGitRefuses) {
    makeCommit();
    gitInRepository({"branch", "one"});
    gitInRepository({"branch", "two"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::deleteBranchesWithRefNames({"one", "missing", "two"}, repository(),
                                                           false, error);
        },
        failsWith(RVGitDeleteBranchNoSuchBranchError));
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

// Objects.

TEST_F(RVGitBranchTest, ObserversAreToldOfWhatDependsOnAField) {
    makeCommit();
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    Strings told;
    std::vector<std::shared_ptr<RVObservable::Observation>> observations;
    for (const char* field : {"fullRefName", "refName", "commitHash", "commit", "isDetachedHead",
                              "isOrphaned", "isTracking"})
        observations.push_back(
            branch->observe(field, [&](std::string_view name) { told.emplace_back(name); }));
    branch->setRef(nullptr);
    EXPECT_THAT(told, UnorderedElementsAre("fullRefName", "refName", "commitHash", "commit",
                                           "isDetachedHead", "isOrphaned"));
    told.clear();
    branch->setHead(false);
    EXPECT_THAT(told, ElementsAre("isOrphaned"));
    told.clear();
    branch->setTrackedRemoteName("origin");
    branch->setTrackedRefNames(Strings{});
    EXPECT_THAT(told, ElementsAre("isTracking", "isTracking"));
    EXPECT_TRUE(branch->isTracking());
}

TEST_F(RVGitBranchTest, AnObjectNeedsARepository) {
    try {
        const RVGitBranch branch(nullptr, nullptr);
        FAIL();
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: repository != nil");
    }
}

// Subversion.

TEST_F(RVGitBranchTest, OutsideOfTheBridgeNothingIsTracked) {
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

TEST_F(RVGitBranchTest, FindsTheSubversionBranchOfTheLastCommitFromThere) {
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
