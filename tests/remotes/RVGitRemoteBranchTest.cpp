#include "RVGit/remotes/RVGitRemoteBranch.h"

#include <random>

#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranchToRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Strings = std::vector<std::string>;

class RVGitRemoteBranchTest : public RVGitRepositoryTestCase {
protected:
    RVGitRemoteBranchTest() : hash_(makeCommit()) {}

    void config(const std::string& key, const std::string& value) {
        gitInRepository({"config", "--add", key, value});
    }
    void makeRef(const std::string& name) {
        gitInRepository({"update-ref", "refs/remotes/" + name, hash_});
    }
    Strings names() {
        Strings names;
        const auto branches = RVGitRemoteBranch::allRemoteBranchesForRepository(repository());
        EXPECT_TRUE(branches.has_value());
        for (const auto& branch : branches.value_or(RVGitRemoteBranch::List()))
            names.push_back((branch->isHead() ? "*" : "") + branch->refName() + " " +
                            branch->remoteName().value_or("-"));
        return names;
    }
    const std::string& hash() const { return hash_; }

private:
    std::string hash_;
};

TEST_F(RVGitRemoteBranchTest, ListsBranchesWithRemoteHashAndDate) {
    gitInRepository({"remote", "add", "origin", "url"});
    makeRef("origin/main");
    const auto branches = RVGitRemoteBranch::allRemoteBranchesForRepository(repository());
    ASSERT_TRUE(branches.has_value());
    ASSERT_EQ(branches->size(), 1U);
    const auto& branch = branches->front();
    EXPECT_EQ(branch->fullRefName(), "refs/remotes/origin/main");
    EXPECT_EQ(branch->refName(), "origin/main");
    EXPECT_EQ(branch->commitHash(), hash());
    EXPECT_EQ(branch->remoteName(), "origin");
    EXPECT_EQ(branch->commitDate(), RVDate(std::chrono::seconds(defaultTime)));
    EXPECT_FALSE(branch->isHead());
    EXPECT_EQ(branch->repository(), repository());
    ASSERT_TRUE(branch->commit());
    ASSERT_TRUE(branch->remote());
    EXPECT_EQ(branch->remote()->name(), "origin");
}

TEST_F(RVGitRemoteBranchTest, TheRemotesHeadOnlyMarksABranch) {
    gitInRepository({"remote", "add", "origin", "url"});
    makeRef("origin/main");
    makeRef("origin/A");
    gitInRepository({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/main"});
    EXPECT_THAT(names(), ElementsAre("origin/A origin", "*origin/main origin"));
}

TEST_F(RVGitRemoteBranchTest, AHeadWhoseNameIsAmbiguousMarksNone) {
    gitInRepository({"remote", "add", "origin", "url"});
    makeRef("origin/main");
    gitInRepository({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/main"});
    gitInRepository({"tag", "origin/main"});
    EXPECT_THAT(names(), ElementsAre("origin/main origin"));
}

TEST_F(RVGitRemoteBranchTest, ABranchOfNoRemoteIsLeftOut) {
    makeRef("origin/main");
    EXPECT_THAT(names(), IsEmpty());
    gitInRepository({"remote", "add", "other", "url"});
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(RVGitRemoteBranchTest, TheLongestPathCounts) {
    for (const char* name : {"a", "a/b", "origin", "origin2"})
        config(std::string("remote.") + name + ".url", "url");
    for (const char* name : {"a/b/c", "a/c", "origin/x", "origin2/x", "origin3/x"})
        makeRef(name);
    EXPECT_THAT(names(), ElementsAre("a/b/c a/b", "a/c a", "origin/x origin", "origin2/x origin2",
                                     "origin3/x origin"));
}

TEST_F(RVGitRemoteBranchTest, FindsOneByItsName) {
    gitInRepository({"remote", "add", "origin", "url"});
    makeRef("origin/main");
    for (const char* name : {"origin/main", "refs/remotes/origin/main"}) {
        const auto branch = RVGitRemoteBranch::remoteBranchForRefName(name, repository());
        ASSERT_TRUE(branch);
        EXPECT_EQ(branch->refName(), "origin/main");
    }
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(RVGitRemoteBranch::remoteBranchForRefName("origin/x", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitRemoteBranchTest, AFailureIsReported) {
    auto fake = useFakeGit();
    fake.setAnswer("branch", {.standardError = "fatal: x\n", .exitCode = 128});
    fake.passOtherCallsOn();
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitRemoteBranch::allRemoteBranchesForRepository(repository(), &error).has_value());
    EXPECT_TRUE(error.has_value());
    EXPECT_EQ(RVGitRemoteBranch::remoteBranchForRefName("x", repository(), &error), nullptr);
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitRemoteBranchTest, ObserversAreToldOfTheRef) {
    const auto branch = RVGitRemoteBranch::remoteBranchWithRepository(
        repository(), RVGitRef::refWithRepository(repository(), "refs/remotes/o/x", hash()), "o",
        false);
    Strings told;
    std::vector<std::shared_ptr<RVObservable::Observation>> observations;
    for (const char* field : {"fullRefName", "refName", "commitHash", "commit"})
        observations.push_back(
            branch->observe(field, [&](std::string_view name) { told.emplace_back(name); }));
    branch->setRef(RVGitRef::refWithRepository(repository(), "refs/remotes/o/y", std::nullopt));
    EXPECT_THAT(told, ElementsAre("fullRefName", "refName", "commitHash", "commit"));
    EXPECT_EQ(branch->refName(), "o/y");
    EXPECT_THROW(branch->setRef(nullptr), RVInvalidParameterException);
}

TEST_F(RVGitRemoteBranchTest, NeedsARepositoryAndARef) {
    EXPECT_THROW(RVGitRemoteBranch(repository(), nullptr, "o", false), RVInvalidParameterException);
    EXPECT_THROW(RVGitRemoteBranch(
                     nullptr, RVGitRef::refWithRepository(repository(), "refs/remotes/o/x", hash()),
                     "o", false),
                 RVInvalidParameterException);
}

// Which remote a branch belongs to.

TEST_F(RVGitRemoteBranchTest, SubversionSpecsGivePaths) {
    using ToRemote = RVGitRemoteBranchToRemote;
    EXPECT_EQ(ToRemote::refPathForSVNPathSpec("branches/*:refs/remotes/svn/*"),
              "refs/remotes/svn/");
    EXPECT_EQ(ToRemote::refPathForSVNPathSpec("trunk:refs/remotes/svn/trunk"),
              "refs/remotes/svn/trunk");
    EXPECT_EQ(ToRemote::refPathForSVNPathSpec("a:b:c"), std::nullopt);
    EXPECT_EQ(ToRemote::refPathForSVNPathSpec("trunk"), std::nullopt);
    const auto entries = ToRemote::makeRefPathToRemoteEntriesFromConfigOptions(
        {{"fetch", Strings{"a:x", "b:x", "c:d:e", "f:*", "g:y"}}}, "fetch", "svn");
    EXPECT_THAT(entries, ElementsAre(Pair("x", "svn"), Pair("y", "svn")));
    EXPECT_THAT(ToRemote::makeRefPathToRemoteEntriesFromConfigOptions({}, "fetch", "svn"),
                IsEmpty());
}

TEST_F(RVGitRemoteBranchTest, TheMapHoldsPlainAndSubversionPaths) {
    gitInRepository({"remote", "add", "origin", "url"});
    config("svn-remote.svn.fetch", "trunk:refs/remotes/svn/trunk");
    config("svn-remote.svn.fetch", "a:b:refs/remotes/svn/x");
    config("svn-remote.svn.branches", "branches/*:refs/remotes/svn/*");
    config("svn-remote.svn.tags", "tags/*:refs/remotes/svn/tags/*");
    config("svn-remote.zwei.tags", "tags/*:refs/remotes/svn/tags/*");
    const RVGitRemoteBranchToRemote toRemote(repository());
    EXPECT_THAT(
        toRemote.remotesToRemoteRef(),
        ElementsAre(Pair("refs/remotes/origin", "origin"), Pair("refs/remotes/svn/", "svn"),
                    Pair("refs/remotes/svn/tags/", "zwei"), Pair("refs/remotes/svn/trunk", "svn")));
    EXPECT_THAT(toRemote.sortedKeys(),
                ElementsAre("refs/remotes/origin", "refs/remotes/svn/", "refs/remotes/svn/tags/",
                            "refs/remotes/svn/trunk"));
    EXPECT_EQ(toRemote.remoteNameForRemoteBranch("refs/remotes/svn/tags/v1"), "zwei");
    EXPECT_EQ(toRemote.remoteNameForRemoteBranch("refs/remotes/svn/topic"), "svn");
    EXPECT_EQ(toRemote.remoteNameForRemoteBranch("refs/remotes/svn"), std::nullopt);
    EXPECT_EQ(toRemote.remoteNameForRemoteBranch(""), std::nullopt);
}

TEST_F(RVGitRemoteBranchTest, AnEmptyConfigurationGivesAnEmptyMap) {
    const RVGitRemoteBranchToRemote toRemote(repository());
    EXPECT_THAT(toRemote.sortedKeys(), IsEmpty());
    EXPECT_EQ(toRemote.remoteNameForRemoteBranch("refs/remotes/origin/main"), std::nullopt);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(RVGitRemoteBranchTest, AConfigurationThatCannotBeReadGivesAnEmptyMap) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: bad config\n", .exitCode = 128});
    const RVGitRemoteBranchToRemote toRemote(repository());
    EXPECT_THAT(toRemote.sortedKeys(), IsEmpty());
    std::optional<RVError> error;
    EXPECT_EQ(toRemote.remotesByRemoteRefPathPrefixesForRepository(repository(), &error),
              std::nullopt);
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitRemoteBranchTest, TheSearchAgreesWithAWalkOverAllPaths) {
    std::mt19937 random(20260109);
    std::uniform_int_distribution<int> letter('a', 'c');
    std::uniform_int_distribution<int> length(1, 6);
    const auto word = [&] {
        std::string text;
        for (int count = length(random); count > 0; --count)
            text += static_cast<char>(letter(random));
        return text;
    };
    std::string configuration = readFile("repository/.git/config");
    for (int count = 0; count < 60; ++count)
        configuration += "[remote \"" + word() + "\"]\n\turl = x\n";
    writeFile("repository/.git/config", configuration);
    const RVGitRemoteBranchToRemote toRemote(repository());
    const Strings keys = toRemote.sortedKeys();
    ASSERT_GT(keys.size(), 20U);
    for (int round = 0; round < 2000; ++round) {
        const std::string name = "refs/remotes/" + word();
        std::optional<std::string> expected;
        for (auto key = keys.rbegin(); key != keys.rend() && !expected; ++key)
            if (name.starts_with(*key))
                expected = toRemote.remotesToRemoteRef().at(*key);
        EXPECT_EQ(toRemote.remoteNameForRemoteBranch(name), expected) << name;
    }
}

}  // namespace
