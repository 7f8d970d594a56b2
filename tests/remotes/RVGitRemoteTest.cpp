#include "RVGit/remotes/RVGitRemote.h"

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/remotes/RVGitRemoteConfig.h"
#include "RVGit/remotes/RVGitRemoteRefDirectory.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;

class RVGitRemoteTest : public RVGitRepositoryTestCase {
protected:
    void config(const std::string& key, const std::string& value) {
        gitInRepository({"config", "--add", key, value});
    }
    void addRemote(const std::string& name, const std::string& URL = "../other") {
        // The newest git remote refuses names of which one is the beginning of another.
        config("remote." + name + ".url", URL);
        config("remote." + name + ".fetch", "+refs/heads/*:refs/remotes/" + name + "/*");
    }
    void makeRef(const std::string& fullRefName) {
        if (hash_.empty())
            hash_ = makeCommit();
        gitInRepository({"update-ref", fullRefName, hash_});
    }
    std::shared_ptr<RVGitRemote> remoteNamed(const std::string& name) {
        std::optional<RVError> error;
        auto remote = RVGitRemote::remoteForName(name, repository(), &error);
        EXPECT_FALSE(error.has_value());
        return remote;
    }
    Strings names() {
        Strings names;
        for (const auto& remote :
             RVGitRemote::allRemotesForRepository(repository()).value_or(RVGitRemote::List()))
            names.push_back(remote->name());
        return names;
    }
    static Strings branchesOf(const std::shared_ptr<RVGitRemote>& remote) {
        Strings names;
        if (remote && remote->branches())
            for (const auto& branch : *remote->branches())
                names.push_back(*branch->fullRefName());
        return names;
    }
    void makeSVNRemote(const std::string& name = "svn") {
        config("svn-remote." + name + ".url", "file:///svn");
        config("svn-remote." + name + ".commiturl", "file:///commit");
        config("svn-remote." + name + ".fetch", "trunk:refs/remotes/" + name + "/trunk");
        config("svn-remote." + name + ".branches", "branches/*:refs/remotes/" + name + "/*");
    }
    std::string allRefs() { return git({"for-each-ref", "--format=%(refname)"}, repositoryPath()); }

private:
    std::string hash_;
};

TEST_F(RVGitRemoteTest, ListsRemotesWithAddressesAndBranches) {
    addRemote("origin", "https://example.org/x.git");
    config("remote.origin.pushurl", "ssh://git@example.org/x.git");
    config("url.https://mirror.example.org/.insteadOf", "https://example.org/");
    config("remote.origin.fetch", "+refs/notes/*:refs/notes/*");
    config("remote.origin.push", "HEAD:refs/heads/x");
    config("remote.origin.proxy", "http://proxy");
    makeRef("refs/remotes/origin/main");
    const auto remote = remoteNamed("origin");
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->name(), "origin");
    EXPECT_EQ(remote->repository(), repository());
    EXPECT_EQ(remote->downstreamURL(), "https://mirror.example.org/x.git");
    EXPECT_EQ(remote->upstreamURL(), "ssh://git@example.org/x.git");
    EXPECT_EQ(remote->URL(), "https://example.org/x.git");
    EXPECT_EQ(remote->pushURL(), "ssh://git@example.org/x.git");
    EXPECT_EQ(remote->fetchRefSpecs(),
              (Strings{"+refs/heads/*:refs/remotes/origin/*", "+refs/notes/*:refs/notes/*"}));
    EXPECT_EQ(remote->pushRefSpecs(), Strings{"HEAD:refs/heads/x"});
    EXPECT_EQ(remote->proxy(), std::nullopt);
    EXPECT_FALSE(remote->isSVNRemote());
    EXPECT_FALSE(remote->skipsDefaultUpdate());
    EXPECT_FALSE(remote->skipsFetchAll());
    EXPECT_THAT(branchesOf(remote), ElementsAre("refs/remotes/origin/main"));
    ASSERT_TRUE(remote->config());
    EXPECT_EQ(remote->config()->name(), "origin");
    EXPECT_EQ(remote->config()->lastValueForConfigKey("PROXY"), "http://proxy");
}

TEST_F(RVGitRemoteTest, ARemoteWithoutAnythingHasNoBranches) {
    config("remote.empty.skipfetchall", "true");
    const auto remote = remoteNamed("empty");
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->branches(), std::nullopt);
    EXPECT_EQ(remote->URL(), std::nullopt);
    EXPECT_TRUE(remote->skipsFetchAll());
}

TEST_F(RVGitRemoteTest, APartialCloneHasNoDownstreamURLWhereGitShowsItsFilter) {
    auto fake = useFakeGit();
    fake.setAnswer("remote", {.standardOutput = "origin\turl (fetch) [blob:none]\n"
                                                "origin\turl (push)\n"});
    fake.passOtherCallsOn();
    const auto remote = remoteNamed("origin");
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->downstreamURL(), std::nullopt);
    EXPECT_EQ(remote->upstreamURL(), "url");
    EXPECT_EQ(remote->config(), nullptr);
}

TEST_F(RVGitRemoteTest, NamesThatAreTheBeginningsOfOthers) {
    for (const char* name : {"a", "a/b", "ab"})
        addRemote(name);
    for (const char* name : {"a/c", "a/b/c", "ab/c", "abc/d", "b/c"})
        makeRef(std::string("refs/remotes/") + name);
    EXPECT_THAT(branchesOf(remoteNamed("a")), ElementsAre("refs/remotes/a/c"));
    EXPECT_THAT(branchesOf(remoteNamed("a/b")), ElementsAre("refs/remotes/a/b/c"));
    // No path has to end where a component does.
    EXPECT_THAT(branchesOf(remoteNamed("ab")),
                ElementsAre("refs/remotes/ab/c", "refs/remotes/abc/d"));
    const auto byRemote = RVGitRemote::remoteBranchesByRemoteForRepository(repository());
    ASSERT_TRUE(byRemote.has_value());
    EXPECT_EQ(byRemote->size(), 3U);
}

TEST_F(RVGitRemoteTest, TheLocalRemoteRunsNothing) {
    auto recorder = useRecordingGit();
    recorder.clear();
    const auto remote = remoteNamed(".");
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->name(), ".");
    EXPECT_EQ(remote->downstreamURL(), ".");
    EXPECT_EQ(remote->upstreamURL(), std::nullopt);
    EXPECT_EQ(remote->branches(), std::nullopt);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitRemoteTest, AnUnknownNameIsNoError) {
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(RVGitRemote::remoteForName("missing", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
    error = RVError("before", 1);
    EXPECT_EQ(RVGitRemote::originRemoteForRepository(repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
    error = RVError("before", 1);
    EXPECT_EQ(RVGitRemote::SVNRemoteForUUID("x", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitRemoteTest, ALookUpListsOnce) {
    addRemote("origin");
    auto recorder = useRecordingGit();
    recorder.clear();
    ASSERT_TRUE(RVGitRemote::originRemoteForRepository(repository()));
    Strings commands;
    for (const Strings& arguments : recorder.argumentLists()) {
        std::string line;
        for (const std::string& argument : arguments)
            if (!argument.starts_with("--") || argument.starts_with("--get"))
                line += (line.empty() ? "" : " ") + argument;
        commands.push_back(line);
    }
    EXPECT_THAT(commands,
                UnorderedElementsAre(
                    "config -z --get-regexp ^(svn-)?remote.*",
                    "config -z --get-regexp ^svn-remote.*", "config -z --get-regexp ^svn-remote.*",
                    "branch -v -r", "for-each-ref refs/remotes", "config -z --get-regexp ^remote.*",
                    "config -z --get-regexp ^svn-remote.*", "remote -v"));
}

TEST_F(RVGitRemoteTest, FailsWithTheErrorOfTheFirstCommandThatFailed) {
    makeCommit();
    const auto failing = [&](const char* name, Strings words) {
        auto fake = fakeGit(name);
        for (const std::string& word : words)
            fake.setAnswer(word, {.standardError = "fatal: " + word + "\n", .exitCode = 77});
        fake.passOtherCallsOn();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        std::optional<RVError> error;
        EXPECT_FALSE(RVGitRemote::allRemotesForRepository(repository(), &error).has_value());
        EXPECT_TRUE(error.has_value());
        return error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("") : "";
    };
    EXPECT_EQ(failing("one", {"config", "branch", "for-each-ref", "remote"}), "fatal: config\n");
    EXPECT_EQ(failing("two", {"branch", "for-each-ref", "remote"}), "fatal: branch\n");
    EXPECT_EQ(failing("three", {"for-each-ref", "remote"}), "fatal: for-each-ref\n");
    EXPECT_EQ(failing("four", {"remote"}), "fatal: remote\n");
}

TEST_F(RVGitRemoteTest, SubversionRemotesComeBehindPlainOnes) {
    addRemote("z");
    makeSVNRemote();
    config("svn-remote.unfinished.fetch", "trunk:refs/remotes/unfinished/trunk");
    config("svn-remote.svn.skipfetchall", "true");
    makeRef("refs/remotes/svn/trunk");
    makeRef("refs/remotes/svn/topic");
    EXPECT_THAT(names(), ElementsAre("z", "svn"));
    const auto remote = remoteNamed("svn");
    EXPECT_TRUE(remote->isSVNRemote());
    EXPECT_EQ(remote->downstreamURL(), "file:///svn");
    EXPECT_EQ(remote->upstreamURL(), "file:///commit");
    EXPECT_EQ(remote->URL(), "file:///svn");
    EXPECT_EQ(remote->pushURL(), "file:///commit");
    EXPECT_EQ(remote->SVNTrunkRefSpecs(), Strings{"trunk:refs/remotes/svn/trunk"});
    EXPECT_EQ(remote->SVNBranchRefSpecs(), Strings{"branches/*:refs/remotes/svn/*"});
    EXPECT_EQ(remote->SVNTagRefSpecs(), std::nullopt);
    EXPECT_TRUE(remote->skipsFetchAll());
    ASSERT_TRUE(remote->config());
    EXPECT_EQ(remote->config()->URL(), "file:///svn");
    EXPECT_THAT(branchesOf(remote),
                ElementsAre("refs/remotes/svn/topic", "refs/remotes/svn/trunk"));
}

TEST_F(RVGitRemoteTest, TheBridgesMetadataGoesOverTheConfiguration) {
    makeSVNRemote();
    config("svn-remote.svn.uuid", "old");
    writeFile("repository/.git/svn/.metadata", "[svn-remote \"svn\"]\n\tuuid = new\n");
    const auto remote = RVGitRemote::SVNRemoteForUUID("new", repository());
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->name(), "svn");
    EXPECT_EQ(RVGitRemote::SVNRemoteForUUID("old", repository()), nullptr);
}

TEST_F(RVGitRemoteTest, AllNamesAreThoseOfSubversionRemotes) {
    addRemote("origin");
    EXPECT_THAT(RVGitRemote::allRemoteNamesForRepository(repository()).value(), IsEmpty());
    makeSVNRemote("two");
    makeSVNRemote("one");
    EXPECT_THAT(RVGitRemote::allRemoteNamesForRepository(repository()).value(),
                ElementsAre("one", "two"));
    addRemote("name");
    EXPECT_THROW((void)RVGitRemote::allRemoteNamesForRepository(repository()),
                 RVInternalInconsistencyException);
}

TEST_F(RVGitRemoteTest, ASectionIsFoundByAPartOfItsName) {
    addRemote("origin");
    makeSVNRemote("svn");
    EXPECT_TRUE(RVGitRemote::existsRemoteWithName("origin", repository()));
    EXPECT_TRUE(RVGitRemote::existsRemoteWithName("ori", repository()));
    EXPECT_TRUE(RVGitRemote::existsRemoteWithName("sv", repository()));
    EXPECT_FALSE(RVGitRemote::existsRemoteWithName("upstream", repository()));
}

TEST_F(RVGitRemoteTest, ValidNamesAreThoseOfRefs) {
    EXPECT_TRUE(RVGitRemote::isValidRemoteName("a/b"));
    EXPECT_FALSE(RVGitRemote::isValidRemoteName("a..b"));
    EXPECT_FALSE(RVGitRemote::isValidRemoteName(std::nullopt));
}

TEST_F(RVGitRemoteTest, FindsItsBranchesByEveryFormOfTheName) {
    addRemote("origin");
    makeSVNRemote();
    for (const char* name : {"origin/main", "origin/originals", "svn/trunk"})
        makeRef(std::string("refs/remotes/") + name);
    const auto origin = remoteNamed("origin");
    for (const char* name : {"main", "origin/main", "refs/remotes/origin/main"}) {
        const auto branch = origin->remoteBranchForRefName(name);
        ASSERT_TRUE(branch) << name;
        EXPECT_EQ(branch->fullRefName(), "refs/remotes/origin/main");
    }
    EXPECT_EQ(origin->remoteBranchForRefName("missing"), nullptr);
    // Begins with the remote's name, so that it is taken for one with it.
    EXPECT_EQ(origin->remoteBranchForRefName("originals"), nullptr);
    const auto svn = remoteNamed("svn");
    ASSERT_TRUE(svn->remoteBranchForRefName("svn/trunk"));
    EXPECT_EQ(svn->remoteBranchForRefName("trunk"), nullptr);
    EXPECT_EQ(remoteNamed(".")->remoteBranchForRefName("main"), nullptr);
}

// Making, removing, renaming.

TEST_F(RVGitRemoteTest, CreatesARemote) {
    const auto remote = RVGitRemote::createRemoteWithName("origin", "../x", repository());
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->URL(), "../x");
    EXPECT_EQ(gitInRepository({"remote"}), "origin");
}

TEST_F(RVGitRemoteTest, AnExistingNameFailsWith2300WithoutGitRemote) {
    addRemote("origin");
    auto recorder = useRecordingGit();
    recorder.clear();
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRemote::createRemoteWithName("ori", "../x", repository(), &error), nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitCreateRemoteAlreadyExistsError);
    EXPECT_EQ(error->userInfoString(RVGitRemoteNameErrorKey), "ori");
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), repositoryPath());
    for (const Strings& arguments : recorder.argumentLists())
        EXPECT_THAT(arguments, testing::Not(testing::Contains("remote")));
}

TEST_F(RVGitRemoteTest, HostileNamesAndAddressesChangeNothing) {
    makeCommit();
    addRemote("origin");
    const RVRepositorySnapshot before(repositoryPath());
    const std::string configuration = gitInRepository({"config", "--local", "--list"});
    for (const std::string& name :
         {std::string("-x"), std::string("--mirror"), std::string("a\0b", 3), std::string("a\nb"),
          std::string("a b"), std::string(".."), std::string("../../x"), std::string("a..")}) {
        std::optional<RVError> error;
        EXPECT_EQ(RVGitRemote::createRemoteWithName(name, "../x", repository(), &error), nullptr)
            << name;
        EXPECT_TRUE(error.has_value()) << name;
        EXPECT_FALSE(RVGitRemote::renameRemoteWithName("origin", name, repository(), &error))
            << name;
        EXPECT_FALSE(RVGitRemote::deleteRemoteWithName(name, repository())) << name;
        EXPECT_FALSE(RVGitRemote::setURL("x", name, repository())) << name;
    }
    for (const std::string& URL : {std::string("--upload-pack=touch x"),
                                   std::string("-oProxyCommand=x"), std::string("a\0b", 3)}) {
        std::optional<RVError> error;
        EXPECT_EQ(RVGitRemote::createRemoteWithName("x", URL, repository(), &error), nullptr);
        EXPECT_TRUE(error.has_value());
    }
    EXPECT_EQ(gitInRepository({"config", "--local", "--list"}), configuration);
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitRemoteTest, DeletesARemoteWithItsRefs) {
    addRemote("origin");
    makeRef("refs/remotes/origin/main");
    gitInRepository({"pack-refs", "--all"});
    makeRef("refs/remotes/origin/topic");
    gitInRepository({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/main"});
    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("origin", repository()));
    EXPECT_EQ(allRefs(), "refs/heads/main\n");
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/origin"));
    EXPECT_EQ(gitInRepository({"remote"}), "");
}

TEST_F(RVGitRemoteTest, DeletingAnUnknownRemoteIsFalseWithoutAnError) {
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_FALSE(RVGitRemote::deleteRemoteWithName("missing", repository(), &error));
    EXPECT_FALSE(error.has_value());
    error = RVError("before", 1);
    EXPECT_FALSE(RVGitRemote::renameRemoteWithName("missing", "x", repository(), &error));
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitRemoteTest, DeletingSparesTheRemotesBelowTheName) {
    for (const char* name : {"a", "a/b", "ab"})
        addRemote(name);
    for (const char* name : {"a/c", "a/b/c", "ab/c"})
        makeRef(std::string("refs/remotes/") + name);
    makeDirectory("repository/.git/refs/remotes/a/empty");
    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("a", repository()));
    EXPECT_EQ(allRefs(), "refs/heads/main\nrefs/remotes/a/b/c\nrefs/remotes/ab/c\n");
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/a/empty"));
    EXPECT_THAT(names(), ElementsAre("a/b", "ab"));
}

TEST_F(RVGitRemoteTest, DeletingARemoteOfAHostileNameLeavesOtherFilesAlone) {
    makeCommit();
    const std::string outside = writeFile("outside/file", "contents");
    for (const std::string name : {"..", "../../..", "../heads", ".", "x/../../heads", "/", "//"}) {
        git({"config", "remote." + name + ".url", "x"}, repositoryPath());
        (void)RVGitRemote::deleteRemoteWithName(name, repository());
        EXPECT_TRUE(fileExists("repository/.git/HEAD")) << name;
        EXPECT_TRUE(fileExists("repository/.git/refs/heads/main") || !areTestedRefsInFiles())
            << name;
        EXPECT_EQ(allRefs(), "refs/heads/main\n") << name;
        (void)runGit({"config", "--remove-section", "remote." + name}, repositoryPath());
    }
    addRemote("a/b");
    makeDirectory("repository/.git/refs/remotes");
    makeDirectory("outside/b");
    std::filesystem::create_directory_symlink(scratchPath("outside"),
                                              scratchPath("repository/.git/refs/remotes/a"));
    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("a/b", repository()));
    EXPECT_TRUE(fileExists("outside/b"));
    EXPECT_TRUE(fileExists(outside));
}

TEST_F(RVGitRemoteTest, DeletesASubversionRemotesSections) {
    makeSVNRemote();
    writeFile("repository/.git/svn/.metadata",
              "[svn-remote \"svn\"]\n\tuuid = new\n[svn-remote \"other\"]\n\tuuid = x\n");
    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("svn", repository()));
    EXPECT_THAT(gitInRepository({"config", "--list"}), testing::Not(HasSubstr("svn-remote")));
    EXPECT_EQ(readFile("repository/.git/svn/.metadata"), "[svn-remote \"other\"]\n\tuuid = x\n");
}

TEST_F(RVGitRemoteTest, RenamesARemoteWithItsRefs) {
    addRemote("origin");
    makeRef("refs/remotes/origin/main");
    EXPECT_TRUE(RVGitRemote::renameRemoteWithName("origin", "upstream", repository()));
    EXPECT_EQ(allRefs(), "refs/heads/main\nrefs/remotes/upstream/main\n");
    EXPECT_EQ(gitInRepository({"remote"}), "upstream");
    addRemote("b");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitRemote::renameRemoteWithName("upstream", "b", repository(), error);
        },
        failsWith(RVGitRenameRemoteAlreadyExistsError));
}

TEST_F(RVGitRemoteTest, RenamesByTheCaseOfLettersAlone) {
    addRemote("origin");
    makeRef("refs/remotes/origin/main");
    EXPECT_TRUE(RVGitRemote::renameRemoteWithName("origin", "Origin", repository()));
    EXPECT_EQ(allRefs(), "refs/heads/main\nrefs/remotes/Origin/main\n");
    EXPECT_EQ(gitInRepository({"remote"}), "Origin");
}

TEST_F(RVGitRemoteTest, WhereGitLeavesTheDirectoryUnderItsOldNameItIsMoved) {
    RVGIT_TEST_NEEDS_REF_FILES("the directories of refs are looked at");
    addRemote("a/origin");
    makeRef("refs/remotes/a/origin/main");
    auto fake = useFakeGit();
    fake.setAnswer("rename", {});
    fake.passOtherCallsOn();
    EXPECT_TRUE(RVGitRemote::renameRemoteWithName("a/origin", "A/Origin", repository()));
    EXPECT_EQ(allRefs(), "refs/heads/main\nrefs/remotes/A/Origin/main\n");
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/a/origin"));
    for (const auto& entry : std::filesystem::directory_iterator(scratchPath("repository/.git")))
        EXPECT_THAT(entry.path().filename().string(), testing::Not(HasSubstr("rvgit")));
}

TEST_F(RVGitRemoteTest, AFailedMoveLeavesTheErrorPlaceAndTheRefs) {
    RVGIT_TEST_NEEDS_REF_FILES("the directories of refs are looked at");
    addRemote("a/origin");
    makeRef("refs/remotes/a/origin/main");
    writeFile("repository/.git/refs/remotes/A", "in the way");
    auto fake = useFakeGit();
    fake.setAnswer("rename", {});
    fake.passOtherCallsOn();
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitRemote::renameRemoteWithName("a/origin", "A/Origin", repository(), &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_TRUE(fileExists("repository/.git/refs/remotes/a/origin/main"));
}

TEST_F(RVGitRemoteTest, AMoveGoesThroughNoLink) {
    RVGIT_TEST_NEEDS_REF_FILES("the directories of refs are looked at");
    addRemote("a/origin");
    makeRef("refs/remotes/a/origin/main");
    makeDirectory("outside");
    std::filesystem::create_directory_symlink(scratchPath("outside"),
                                              scratchPath("repository/.git/refs/remotes/A"));
    auto fake = useFakeGit();
    fake.setAnswer("rename", {});
    fake.passOtherCallsOn();
    EXPECT_FALSE(RVGitRemote::renameRemoteWithName("a/origin", "A/Origin", repository()));
    EXPECT_TRUE(fileExists("repository/.git/refs/remotes/a/origin/main"));
    EXPECT_TRUE(std::filesystem::is_empty(scratchPath("outside")));
}

TEST_F(RVGitRemoteTest, ADirectoryThatCannotBeListedIsNotTakenForRemoved) {
    RVGIT_TEST_NEEDS_REF_FILES("the directories of refs are looked at");
    makeRef("refs/remotes/a/b/c");
    RVGitRemoteRefDirectory directory(*repository(), "a");
    const std::string path = scratchPath("repository/.git/refs/remotes/a");
    std::filesystem::permissions(path, std::filesystem::perms(0311));
    {
        const RVUnprivilegedUser user(scratchDirectory());
        RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
        std::optional<RVError> error;
        EXPECT_FALSE(directory.remove({"a/b"}, &error));
        EXPECT_TRUE(error.has_value());
    }
    std::filesystem::permissions(path, std::filesystem::perms(0755));
}

// Setters.

TEST_F(RVGitRemoteTest, SetsAndUnsetsEveryKeyOfAPlainRemote) {
    addRemote("origin");
    const auto value = [&](const char* key) {
        return runGit({"config", "--get-all", std::string("remote.origin.") + key},
                      repositoryPath())
            .standardOutput;
    };
    EXPECT_TRUE(RVGitRemote::setURL("../new", "origin", repository()));
    EXPECT_EQ(value("url"), "../new\n");
    EXPECT_TRUE(RVGitRemote::setPushURL("../push", "origin", repository()));
    EXPECT_EQ(value("pushurl"), "../push\n");
    EXPECT_TRUE(RVGitRemote::setFetchRefSpecs({"a:b", "c:d"}, "origin", repository()));
    EXPECT_EQ(value("fetch"), "a:b\nc:d\n");
    EXPECT_TRUE(RVGitRemote::setPushRefSpecs({"e:f"}, "origin", repository()));
    EXPECT_EQ(value("push"), "e:f\n");
    EXPECT_TRUE(RVGitRemote::setProxy("http://proxy", "origin", repository()));
    EXPECT_EQ(value("proxy"), "http://proxy\n");
    EXPECT_TRUE(RVGitRemote::setSkipsDefaultUpdate(true, "origin", repository()));
    EXPECT_EQ(value("skipdefaultupdate"), "true\n");
    EXPECT_TRUE(RVGitRemote::setSkipsFetchAll(false, "origin", repository()));
    EXPECT_EQ(value("skipfetchall"), "false\n");
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(RVGitRemote::unsetPushURLForRemoteWithName("origin", repository()));
        EXPECT_TRUE(RVGitRemote::unsetFetchRefSpecsForRemoteWithName("origin", repository()));
        EXPECT_TRUE(RVGitRemote::unsetPushRefSpecsForRemoteWithName("origin", repository()));
        EXPECT_TRUE(RVGitRemote::unsetProxyForRemoteWithName("origin", repository()));
        EXPECT_TRUE(RVGitRemote::unsetSkipsDefaultUpdateForRemoteWithName("origin", repository()));
        EXPECT_TRUE(RVGitRemote::unsetSkipsFetchAllForRemoteWithName("origin", repository()));
    }
    EXPECT_EQ(git({"config", "--get-regexp", "^remote"}, repositoryPath()),
              "remote.origin.url ../new\n");
}

TEST_F(RVGitRemoteTest, SetsAndUnsetsTheAddressesOfASubversionRemote) {
    makeSVNRemote();
    EXPECT_TRUE(RVGitRemote::setURL("file:///new", "svn", repository()));
    EXPECT_TRUE(RVGitRemote::setPushURL("file:///push", "svn", repository()));
    EXPECT_EQ(gitInRepository({"config", "svn-remote.svn.url"}), "file:///new");
    EXPECT_EQ(gitInRepository({"config", "svn-remote.svn.commiturl"}), "file:///push");
    EXPECT_TRUE(RVGitRemote::unsetPushURLForRemoteWithName("svn", repository()));
    EXPECT_EQ(remoteNamed("svn")->upstreamURL(), std::nullopt);
}

TEST_F(RVGitRemoteTest, TheOtherSettersRefuseASubversionRemote) {
    makeSVNRemote();
    const std::string configuration = gitInRepository({"config", "--local", "--list"});
    std::optional<RVError> error;
    const auto refused = [&](bool result) {
        EXPECT_FALSE(error.has_value());
        error = RVError("before", 1);
        return !result;
    };
    error.reset();
    const std::string name = "svn";
    EXPECT_TRUE(refused(RVGitRemote::setFetchRefSpecs({"a"}, name, repository(), &error)));
    EXPECT_TRUE(
        refused(RVGitRemote::unsetFetchRefSpecsForRemoteWithName(name, repository(), &error)));
    EXPECT_TRUE(refused(RVGitRemote::setPushRefSpecs({"a"}, name, repository(), &error)));
    EXPECT_TRUE(
        refused(RVGitRemote::unsetPushRefSpecsForRemoteWithName(name, repository(), &error)));
    EXPECT_TRUE(refused(RVGitRemote::setProxy("a", name, repository(), &error)));
    EXPECT_TRUE(refused(RVGitRemote::unsetProxyForRemoteWithName(name, repository(), &error)));
    EXPECT_TRUE(refused(RVGitRemote::setSkipsDefaultUpdate(true, name, repository(), &error)));
    EXPECT_TRUE(
        refused(RVGitRemote::unsetSkipsDefaultUpdateForRemoteWithName(name, repository(), &error)));
    EXPECT_TRUE(refused(RVGitRemote::setSkipsFetchAll(true, name, repository(), &error)));
    EXPECT_TRUE(
        refused(RVGitRemote::unsetSkipsFetchAllForRemoteWithName(name, repository(), &error)));
    EXPECT_EQ(gitInRepository({"config", "--local", "--list"}), configuration);
}

TEST_F(RVGitRemoteTest, TheSettersKnowNoUnknownRemote) {
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_FALSE(RVGitRemote::setURL("x", "missing", repository(), &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_FALSE(RVGitRemote::unsetProxyForRemoteWithName("missing", repository()));
}

TEST_F(RVGitRemoteTest, AnObjectNeedsARepository) {
    EXPECT_THROW((void)RVGitRemote::localRemoteWithRepository(nullptr),
                 RVInvalidParameterException);
}

}  // namespace
