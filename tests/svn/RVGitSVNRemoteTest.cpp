#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/svn/RVGitSVNOptions.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRecordingGit.h"

// The Subversion side of remotes, without a server.

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;

class RVGitSVNRemoteTest : public RVGitRepositoryTestCase {
protected:
    using Texts = std::vector<std::string>;

    [[nodiscard]] std::shared_ptr<RVGitRemote> create(
        const std::string& name, const std::optional<RVOptions>& options = std::nullopt,
        RVErrorPlace error = nullptr) const {
        return RVGitRemote::createSVNRemoteWithName(name, "svn://host/" + name, repository(),
                                                    options, error);
    }
    [[nodiscard]] std::shared_ptr<RVGitRemote> remote(const std::string& name) const {
        return RVGitRemote::remoteForName(name, repository());
    }
    [[nodiscard]] bool rename(const std::string& name, const std::string& newName,
                              RVErrorPlace error = nullptr) const {
        return RVGitRemote::renameRemoteWithName(name, newName, repository(), error);
    }
    [[nodiscard]] Texts configValues(const std::string& key) const {
        const auto result = runGit({"config", "--get-all", key}, repositoryPath());
        Texts values;
        std::istringstream lines(result.standardOutput);
        for (std::string line; std::getline(lines, line);)
            values.push_back(line);
        return values;
    }
    /// What git-svn leaves after a fetch.
    void addFetched(const std::string& name) {
        const std::string hash = makeCommit();
        gitInRepository({"update-ref", "refs/remotes/" + name + "/trunk", hash});
        writeFile("repository/.git/svn/refs/remotes/" + name + "/trunk/unhandled.log", "log");
        writeFile("repository/.git/svn/.metadata",
                  "; internal\n[svn-remote \"" + name +
                      "\"]\n\treposRoot = svn://host\n\tuuid = " + "22b06de0\n");
    }
    [[nodiscard]] std::string everything() const {
        return runProgram(
                   {"sh", "-c", "cat .git/config .git/svn/.metadata; find .git/svn .git/refs"},
                   repositoryPath())
            .standardOutput;
    }
    static RVOptions standardLayout() { return {{RVGitSVNOptionStandardDirectoryLayout, true}}; }
};

TEST_F(RVGitSVNRemoteTest, IsCreatedWithItsAddressAlone) {
    const auto made = create("svn");
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->isSVNRemote());
    EXPECT_EQ(made->name(), "svn");
    EXPECT_EQ(made->URL(), "svn://host/svn");
    EXPECT_EQ(made->downstreamURL(), "svn://host/svn");
    EXPECT_EQ(made->upstreamURL(), std::nullopt);
    EXPECT_EQ(made->SVNTrunkRefSpecs(), std::nullopt);
    EXPECT_EQ(made->SVNPrefix(), std::nullopt);
}

TEST_F(RVGitSVNRemoteTest, TheStandardLayoutIsWrittenWhateverItsValue) {
    for (const bool value : {true, false}) {
        const std::string name = value ? "yes" : "no";
        const auto made = create(name, RVOptions{{RVGitSVNOptionStandardDirectoryLayout, value}});
        ASSERT_TRUE(made);
        EXPECT_THAT(made->SVNTrunkRefSpecs(),
                    Optional(ElementsAre("trunk:refs/remotes/" + name + "/trunk")));
        EXPECT_THAT(made->SVNBranchRefSpecs(),
                    Optional(ElementsAre("branches/*:refs/remotes/" + name + "/*")));
        EXPECT_THAT(made->SVNTagRefSpecs(),
                    Optional(ElementsAre("tags/*:refs/remotes/" + name + "/tags/*")));
        EXPECT_EQ(made->SVNPrefix(), name);
    }
}

TEST_F(RVGitSVNRemoteTest, OtherDirectoriesAreAdded) {
    const auto made =
        create("svn", RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true},
                                {RVGitSVNOptionTrunkDirectories, Texts{"main line", "b/\u00e9"}},
                                {RVGitSVNOptionBranchesDirectories, Texts{"b", "c/*", "d*"}},
                                {RVGitSVNOptionTagsDirectories, Texts{"t/"}}});
    ASSERT_TRUE(made);
    EXPECT_THAT(
        made->SVNTrunkRefSpecs(),
        Optional(ElementsAre("trunk:refs/remotes/svn/trunk", "main line:refs/remotes/svn/main line",
                             "b/\u00e9:refs/remotes/svn/b/\u00e9")));
    EXPECT_THAT(made->SVNBranchRefSpecs(),
                Optional(ElementsAre("branches/*:refs/remotes/svn/*", "b/*:refs/remotes/svn/*",
                                     "c/*:refs/remotes/svn/*", "d*/*:refs/remotes/svn/*")));
    EXPECT_THAT(made->SVNTagRefSpecs(), Optional(ElementsAre("tags/*:refs/remotes/svn/tags/*",
                                                             "t/*:refs/remotes/svn/tags/*")));
}

TEST_F(RVGitSVNRemoteTest, AnExistingPlainRemoteFailsWith2300) {
    gitInRepository({"remote", "add", "origin", "x"});
    const std::string before = everything();
    std::optional<RVError> error;
    EXPECT_FALSE(create("origin", standardLayout(), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitCreateRemoteAlreadyExistsError);
    EXPECT_EQ(error->userInfoString(RVGitRemoteNameErrorKey), "origin");
    EXPECT_EQ(everything(), before);
}

TEST_F(RVGitSVNRemoteTest, AHeldLockFailsAndLeavesWhatWasWritten) {
    writeFile("repository/.git/config.lock", "");
    std::optional<RVError> error;
    EXPECT_FALSE(create("svn", standardLayout(), &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(configValues("svn-remote.svn.url"), ElementsAre());
}

TEST_F(RVGitSVNRemoteTest, TheMetadataGoesOverTheConfiguration) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    EXPECT_EQ(remote("svn")->SVNUUID(), "22b06de0");
    const auto found = RVGitRemote::SVNRemoteForUUID("22b06de0", repository());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->name(), "svn");
    EXPECT_FALSE(RVGitRemote::SVNRemoteForUUID("22B06DE0", repository()));
}

TEST_F(RVGitSVNRemoteTest, AFailureOfTheMetadataIsIgnoredAndOneOfTheConfigurationIsNot) {
    ASSERT_TRUE(create("svn", standardLayout()));
    writeFile("repository/.git/svn/.metadata", "[broken\n");
    std::optional<RVError> error;
    const auto options = RVGitRemote::SVNRemoteConfigOptionsForRepository(repository(), &error);
    ASSERT_TRUE(options);
    EXPECT_TRUE(options->contains("svn"));
    EXPECT_EQ(remote("svn")->SVNUUID(), std::nullopt);
    writeFile("repository/.git/config", "[broken\n");
    EXPECT_FALSE(RVGitRemote::SVNRemoteConfigOptionsForRepository(repository(), &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitSVNRemoteTest, ThePrefixIsThatOfAllTrunks) {
    const auto prefixFor = [this](const Texts& refSpecs) {
        const auto made = RVGitRemote::SVNRemoteWithRepository(repository(), "svn", "", "", {});
        made->setValuesWithSVNRemoteConfigOptions(
            RVOptions{{RVGitSVNRemoteFetchConfigKey, refSpecs}});
        const auto first = made->SVNPrefix();
        EXPECT_EQ(made->SVNPrefix(), first);
        return first;
    };
    EXPECT_EQ(prefixFor({"trunk:refs/remotes/svn/trunk"}), "svn");
    EXPECT_EQ(prefixFor({"t:refs/remotes/a/t", "u:refs/remotes/a/x/u"}), "a");
    EXPECT_EQ(prefixFor({"t:refs/remotes/a/t", "u:refs/remotes/b/u"}), std::nullopt);
    EXPECT_EQ(prefixFor({"t:refs/remotes/trunk", "u:refs/remotes/b/u"}), "b");
    EXPECT_EQ(prefixFor({":refs/remotes/git-svn"}), std::nullopt);
    EXPECT_EQ(prefixFor({}), std::nullopt);
}

TEST_F(RVGitSVNRemoteTest, ValuesAreTakenFromASection) {
    const auto made = RVGitRemote::SVNRemoteWithRepository(repository(), "svn", "", "", {});
    made->setValuesWithSVNRemoteConfigOptions(std::nullopt);
    EXPECT_EQ(made->URL(), std::nullopt);
    made->setValuesWithSVNRemoteConfigOptions(RVOptions{{"url", Texts{"a", "b"}},
                                                        {"commiturl", "c"},
                                                        {"uuid", "d"},
                                                        {"fetch", "e"},
                                                        {"tags", Texts{"f", "g"}},
                                                        {"skipfetchall", Texts{"no", "true"}}});
    EXPECT_EQ(made->URL(), "a");
    EXPECT_EQ(made->pushURL(), "c");
    EXPECT_EQ(made->SVNUUID(), "d");
    EXPECT_THAT(made->SVNTrunkRefSpecs(), Optional(ElementsAre("e")));
    EXPECT_EQ(made->SVNBranchRefSpecs(), std::nullopt);
    EXPECT_THAT(made->SVNTagRefSpecs(), Optional(ElementsAre("f", "g")));
    EXPECT_TRUE(made->skipsFetchAll());
    made->setValuesWithSVNRemoteConfigOptions(RVOptions{{"skipfetchall", "True"}});
    EXPECT_FALSE(made->skipsFetchAll());
}

TEST_F(RVGitSVNRemoteTest, RenamingMovesRefsMetadataAndRefSpecs) {
    ASSERT_TRUE(create("svn", standardLayout()));
    gitInRepository({"config", "--add", "svn-remote.svn.fetch", "x:refs/remotes/else/x"});
    addFetched("svn");
    std::optional<RVError> error;
    ASSERT_TRUE(rename("svn", "other", &error)) << error->localizedFailureReason().value_or("");
    EXPECT_FALSE(remote("svn"));
    const auto renamed = remote("other");
    ASSERT_TRUE(renamed);
    EXPECT_EQ(renamed->URL(), "svn://host/svn");
    EXPECT_EQ(renamed->SVNUUID(), "22b06de0");
    EXPECT_THAT(renamed->SVNTrunkRefSpecs(),
                Optional(ElementsAre("trunk:refs/remotes/other/trunk", "x:refs/remotes/else/x")));
    EXPECT_THAT(renamed->SVNBranchRefSpecs(),
                Optional(ElementsAre("branches/*:refs/remotes/other/*")));
    EXPECT_THAT(renamed->SVNTagRefSpecs(),
                Optional(ElementsAre("tags/*:refs/remotes/other/tags/*")));
    EXPECT_EQ(gitInRepository({"for-each-ref", "--format=%(refname)", "refs/remotes"}),
              "refs/remotes/other/trunk");
    EXPECT_TRUE(fileExists("repository/.git/svn/refs/remotes/other/trunk/unhandled.log"));
    EXPECT_FALSE(fileExists("repository/.git/svn/refs/remotes/svn"));
}

TEST_F(RVGitSVNRemoteTest, RefsThatGitHasPackedMoveAlong) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    const std::string packed = gitInRepository({"rev-parse", "refs/remotes/svn/trunk"});
    gitInRepository({"update-ref", "refs/remotes/svn/tags/1.0", packed});
    gitInRepository({"update-ref", "refs/remotes/svn2/trunk", packed});
    gitInRepository({"pack-refs", "--all"});
    // The packed value of this one counts no more.
    const std::string loose = makeCommit();
    gitInRepository({"update-ref", "refs/remotes/svn/trunk", loose});
    std::optional<RVError> error;
    ASSERT_TRUE(rename("svn", "other", &error)) << error->localizedFailureReason().value_or("");
    EXPECT_EQ(
        gitInRepository({"for-each-ref", "--format=%(refname) %(objectname)", "refs/remotes"}),
        "refs/remotes/other/tags/1.0 " + packed + "\nrefs/remotes/other/trunk " + loose +
            "\nrefs/remotes/svn2/trunk " + packed);
    gitInRepository({"pack-refs", "--all"});
    ASSERT_TRUE(rename("other", "a/b", &error)) << error->localizedFailureReason().value_or("");
    EXPECT_EQ(gitInRepository({"for-each-ref", "--format=%(refname)", "refs/remotes"}),
              "refs/remotes/a/b/tags/1.0\nrefs/remotes/a/b/trunk\nrefs/remotes/svn2/trunk");
}

TEST_F(RVGitSVNRemoteTest, GitIsNotAskedForRefsThatAreAllInTheDirectory) {
    RVGIT_TEST_NEEDS_REF_FILES("git is asked for those in tables");
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    const RVRecordingGit recorder = useRecordingGit();
    ASSERT_TRUE(rename("svn", "other"));
    for (const Texts& arguments : recorder.argumentLists())
        EXPECT_THAT(arguments, Not(Contains(HasSubstr("%(objectname) %(refname)"))));
    EXPECT_TRUE(fileExists("repository/.git/refs/remotes/other/trunk"));
}

TEST_F(RVGitSVNRemoteTest, FilesThatGitTakesForNoRefsAreNotLeftBehindUnsaid) {
    RVGIT_TEST_NEEDS_REF_FILES("there are no files otherwise");
    ASSERT_TRUE(create("svn", standardLayout()));
    makeCommit();
    gitInRepository({"pack-refs", "--all"});
    writeFile("repository/.git/refs/remotes/svn/trunk", "damaged\n");
    makeDirectory("repository/.git/refs/remotes/other");
    EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", "other", error); },
                failsWith(EEXIST));
    EXPECT_TRUE(fileExists("repository/.git/refs/remotes/svn/trunk"));
}

TEST_F(RVGitSVNRemoteTest, APackedRefInTheWayOfARenameIsKept) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    gitInRepository({"update-ref", "refs/remotes/other/trunk", makeCommit()});
    gitInRepository({"pack-refs", "--all"});
    const std::string before = gitInRepository({"for-each-ref"});
    EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", "other", error); },
                failsWith(EEXIST));
    EXPECT_EQ(gitInRepository({"for-each-ref"}), before);
}

TEST_F(RVGitSVNRemoteTest, ANameBelowItsOwnIsRefusedBeforeAnythingIsWritten) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    for (const bool isPacked : {false, true}) {
        if (isPacked)
            gitInRepository({"pack-refs", "--all"});
        const std::string before = readFile("repository/.git/config");
        EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", "svn/x", error); },
                    failsWith(EINVAL));
        EXPECT_EQ(readFile("repository/.git/config"), before);
    }
}

TEST_F(RVGitSVNRemoteTest, ARemoteThatWasNeverFetchedFromIsRenamed) {
    ASSERT_TRUE(create("svn", standardLayout()));
    EXPECT_TRUE(rename("svn", "a/b"));
    EXPECT_THAT(configValues("svn-remote.a/b.fetch"), ElementsAre("trunk:refs/remotes/a/b/trunk"));
}

TEST_F(RVGitSVNRemoteTest, NamesThatLeadElsewhereAreRefusedAndNothingIsMoved) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    const std::string before = everything();
    for (const char* name :
         {"../../../moved", "..", ".", "", "a/../b", "/a", "a//b", "a\nb", "a b:", "a.lock"}) {
        EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", name, error); },
                    failsWith(RVGitRenameRemoteInvalidNameError))
            << name;
        EXPECT_EQ(everything(), before) << name;
    }
    EXPECT_FALSE(fileExists("moved"));
}

TEST_F(RVGitSVNRemoteTest, AnExistingNameFailsWith2302AndNothingIsMoved) {
    ASSERT_TRUE(create("svn", standardLayout()));
    ASSERT_TRUE(create("other", standardLayout()));
    gitInRepository({"remote", "add", "plain", "x"});
    addFetched("svn");
    const std::string before = everything();
    for (const char* name : {"other", "plain", "svn"}) {
        EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", name, error); },
                    failsWith(RVGitRenameRemoteAlreadyExistsError));
        EXPECT_EQ(everything(), before);
    }
}

TEST_F(RVGitSVNRemoteTest, ALinkInThePlaceOfTheRefsIsNotMovedAndNothingBehindItEither) {
    ASSERT_TRUE(create("svn", standardLayout()));
    makeDirectory("elsewhere/svn");
    std::filesystem::remove_all(scratchPath("repository/.git/refs/remotes"));
    std::filesystem::create_symlink(scratchPath("elsewhere"),
                                    scratchPath("repository/.git/refs/remotes"));
    EXPECT_TRUE(rename("svn", "other"));
    EXPECT_TRUE(fileExists("elsewhere/svn"));
    EXPECT_FALSE(fileExists("elsewhere/other"));
}

TEST_F(RVGitSVNRemoteTest, RefsInTheWayOfARenameAreKept) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    gitInRepository({"update-ref", "refs/remotes/other/mine", makeCommit()});
    EXPECT_THAT([&](RVErrorPlace error) { return rename("svn", "other", error); },
                failsWith(EEXIST));
    EXPECT_EQ(gitInRepository({"for-each-ref", "--format=%(refname)", "refs/remotes"}),
              "refs/remotes/other/mine\nrefs/remotes/svn/trunk");
}

TEST_F(RVGitSVNRemoteTest, ARemoteOfAHostileNameMovesNothing) {
    gitInRepository({"config", "svn-remote.../../../out.url", "svn://host"});
    gitInRepository(
        {"config", "svn-remote.../../../out.fetch", "trunk:refs/remotes/../../../out/trunk"});
    makeDirectory("out");
    EXPECT_TRUE(rename("../../../out", "good"));
    EXPECT_TRUE(fileExists("out"));
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/good"));
}

TEST_F(RVGitSVNRemoteTest, UpdatingRefSpecsReadsTheSectionOfTheNewName) {
    gitInRepository({"config", "svn-remote.new.fetch", "a:refs/remotes/old/a"});
    gitInRepository({"config", "--add", "svn-remote.new.fetch", "b:refs/heads/old/b"});
    EXPECT_TRUE(RVGitRemote::updateSVNRefSpecsForConfigKey("fetch", "old", "new", repository()));
    EXPECT_THAT(configValues("svn-remote.new.fetch"),
                ElementsAre("a:refs/remotes/new/a", "b:refs/heads/old/b"));
    EXPECT_TRUE(RVGitRemote::updateSVNRefSpecsForConfigKey("tags", "old", "new", repository()));
}

TEST_F(RVGitSVNRemoteTest, IsDeletedWithItsMetadata) {
    ASSERT_TRUE(create("svn", standardLayout()));
    addFetched("svn");
    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("svn", repository()));
    EXPECT_FALSE(remote("svn"));
    EXPECT_EQ(readFile("repository/.git/svn/.metadata").find("svn-remote"), std::string::npos);
}

TEST_F(RVGitSVNRemoteTest, RefSpecsAreSetAndUnset) {
    ASSERT_TRUE(create("svn", standardLayout()));
    const Texts texts = {"a:refs/remotes/svn/a", "b c:refs/remotes/svn/\u00e9"};
    using Set = bool (*)(const Texts&, const std::string&, const std::shared_ptr<RVGitRepository>&,
                         RVErrorPlace);
    using Unset =
        bool (*)(const std::string&, const std::shared_ptr<RVGitRepository>&, RVErrorPlace);
    struct Pair {
        Set set;
        Unset unset;
        std::string key;
    };
    gitInRepository({"remote", "add", "plain", "x"});
    for (const Pair& pair :
         {Pair{&RVGitRemote::setSVNTrunkRefSpecs,
               &RVGitRemote::unsetSVNTrunkRefSpecsForRemoteWithName, "fetch"},
          Pair{&RVGitRemote::setSVNBranchRefSpecs,
               &RVGitRemote::unsetSVNBranchRefSpecsForRemoteWithName, "branches"},
          Pair{&RVGitRemote::setSVNTagRefSpecs, &RVGitRemote::unsetSVNTagRefSpecsForRemoteWithName,
               "tags"}}) {
        EXPECT_TRUE(pair.set(texts, "svn", repository(), nullptr));
        EXPECT_EQ(configValues("svn-remote.svn." + pair.key), texts);
        EXPECT_TRUE(pair.unset("svn", repository(), nullptr));
        EXPECT_THAT(configValues("svn-remote.svn." + pair.key), ElementsAre());
        EXPECT_TRUE(pair.unset("svn", repository(), nullptr));

        for (const char* name : {"plain", "missing"}) {
            std::optional<RVError> error = RVError("before", 1);
            EXPECT_FALSE(pair.set(texts, name, repository(), &error));
            EXPECT_EQ(error, std::nullopt);
            error = RVError("before", 1);
            EXPECT_FALSE(pair.unset(name, repository(), &error));
            EXPECT_EQ(error, std::nullopt);
        }
    }
    EXPECT_THAT(configValues("remote.plain.fetch"),
                ElementsAre("+refs/heads/*:refs/remotes/plain/*"));
}

}  // namespace
