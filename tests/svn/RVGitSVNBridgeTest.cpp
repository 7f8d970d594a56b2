#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <thread>

#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/svn/RVGitSVNCommand.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVGitTestCase.h"
#include "tests/support/RVTestServers.h"

// The commands against real Subversion repositories. git-svn takes a second for each step, so that
// a test walks through several.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;
using testing::UnorderedElementsAre;

/// svnserve for the repositories below a directory.
class SubversionServer : public RVTestProgramServer {
public:
    explicit SubversionServer(const std::string& directory)
        : RVTestProgramServer({findTestProgram("svnserve"), "-i", "-r", directory},
                              {{"LC_ALL", "en_US.UTF-8"}}, directory + "/log") {}
    [[nodiscard]] std::string url(const std::string& user, const std::string& path) const {
        return "svn://" + (user.empty() ? "" : user + "@") + "127.0.0.1:" + std::to_string(port()) +
               "/" + path;
    }
};

class RVGitSVNBridgeTest : public RVGitTestCase {
protected:
    using Texts = std::vector<std::string>;

    RVGitSVNBridgeTest() {
        setEnvironmentVariable("HOME", makeDirectory("home"));
        setEnvironmentVariable("LC_ALL", "en_US.UTF-8");
        git({"config", "--global", "user.name", userName});
        git({"config", "--global", "user.email", userEmail});
        git({"config", "--global", "init.defaultBranch", "main"});
        makeDirectory("svn");
        run({"svnadmin", "create", scratchPath("svn/repo")});
        url_ = "file://" + scratchPath("svn/repo");
    }

    void run(const Texts& commandLine) const {
        const auto result = runProgram(commandLine);
        ASSERT_EQ(result.exitCode, 0) << result.standardError;
    }
    /// Commits the files below a directory to the Subversion repository.
    void import(const std::string& directory) const {
        run({"svn", "import", "-q", "-m", "Import", scratchPath(directory), url_});
    }
    void copyInSubversion(const std::string& from, const std::string& to) const {
        run({"svn", "copy", "-q", "-m", "Copy", url_ + "/" + from, url_ + "/" + to});
    }
    [[nodiscard]] std::string fileInSubversion(const std::string& path) const {
        return runProgram({"svn", "cat", url_ + "/" + path}).standardOutput;
    }
    void commitToSubversion(const std::string& path, const std::string& contents) const {
        run({"svnmucc", "-m", "Change " + path, "put", writeFile("change", contents),
             url_ + "/" + path});
    }
    void makeStandardLayout() const {
        writeFile("import/trunk/file", "one\n");
        makeDirectory("import/branches");
        makeDirectory("import/tags");
        import("import");
    }
    void makeTwoTrunks() const {
        writeFile("import/one/file", "one\n");
        writeFile("import/two/file", "two\n");
        writeFile("import/lines/x/file", "three\n");
        import("import");
    }
    [[nodiscard]] std::shared_ptr<RVGitRepository> repositoryAt(const std::string& name) const {
        return RVGitRepository::repositoryWithWorkingTreeDirectoryPath(scratchPath(name),
                                                                       scratchPath(name) + "/.git");
    }
    [[nodiscard]] std::shared_ptr<RVGitRepository> clone(
        const RVOptions& options = {{RVGitSVNOptionStandardDirectoryLayout, true}}) const {
        std::optional<RVError> error;
        EXPECT_TRUE(RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
                        url_, scratchPath("clone"), options)
                        ->run(&error))
            << textOf(error);
        // Older gits have a name of their own for the first branch.
        if (!isTestedGitAtLeast("2.28"))
            git({"branch", "-M", "main"}, "clone");
        return repositoryAt("clone");
    }
    [[nodiscard]] static std::string textOf(const std::optional<RVError>& error) {
        return error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("") : "";
    }
    [[nodiscard]] Texts refs() const {
        std::istringstream lines(
            git({"for-each-ref", "--format=%(refname)", "refs/remotes"}, "clone"));
        Texts names;
        for (std::string line; std::getline(lines, line);)
            names.push_back(line);
        return names;
    }
    template <typename Command>
    [[nodiscard]] static bool succeeds(const std::shared_ptr<Command>& command) {
        std::optional<RVError> error;
        const bool done = command->run(&error);
        EXPECT_TRUE(done) << textOf(error);
        return done;
    }

    std::string url_;
};

TEST_F(RVGitSVNBridgeTest, AStandardLayoutIsClonedFetchedCommittedToBranchedAndTagged) {
    makeStandardLayout();
    copyInSubversion("trunk", "branches/a b");
    copyInSubversion("trunk", "tags/\u00e9");
    const auto repository = clone();
    EXPECT_THAT(refs(),
                UnorderedElementsAre("refs/remotes/svn/a%20b", "refs/remotes/svn/tags/\u00e9",
                                     "refs/remotes/svn/trunk"));
    EXPECT_EQ(readFile("clone/file"), "one\n");
    auto remote = RVGitRemote::remoteForName("svn", repository);
    ASSERT_TRUE(remote);
    EXPECT_TRUE(remote->isSVNRemote());
    EXPECT_TRUE(remote->SVNUUID());
    EXPECT_EQ(remote->SVNPrefix(), "svn");

    commitToSubversion("trunk/file", "one\ntwo\n");
    ASSERT_TRUE(
        succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote)));
    EXPECT_EQ(git({"show", "refs/remotes/svn/trunk:file"}, "clone"), "one\ntwo\n");
    EXPECT_EQ(readFile("clone/file"), "one\n");
    ASSERT_TRUE(
        succeeds(RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository, remote)));
    EXPECT_EQ(readFile("clone/file"), "one\ntwo\n");

    commitFile("clone", "new", "three\n", "New\n");
    ASSERT_TRUE(
        succeeds(RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote)));
    EXPECT_EQ(fileInSubversion("trunk/new"), "three\n");

    // Up to a revision.
    commitFile("clone", "first", "1\n", "First\n");
    commitFile("clone", "second", "2\n", "Second\n");
    ASSERT_TRUE(succeeds(
        RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote, "HEAD~1")));
    EXPECT_EQ(fileInSubversion("trunk/first"), "1\n");
    EXPECT_EQ(fileInSubversion("trunk/second"), "");
    git({"reset", "-q", "--hard", "refs/remotes/svn/trunk"}, "clone");

    const auto branch = RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(
        repository, remote, "topic", std::nullopt);
    branch->setMessage("-Branch \u00e9");
    ASSERT_TRUE(succeeds(branch));
    EXPECT_EQ(fileInSubversion("branches/topic/new"), "three\n");
    EXPECT_THAT(runProgram({"svn", "log", "-l", "1", url_}).standardOutput,
                HasSubstr("-Branch \u00e9"));
    const auto tag = RVGitSVNTagCommand::gitSVNTagCommandWithRepository(repository, remote, "v1",
                                                                        "refs/remotes/svn/trunk~1");
    tag->setMessage("Tag");
    ASSERT_TRUE(succeeds(tag));
    EXPECT_EQ(fileInSubversion("tags/v1/file"), "one\ntwo\n");

    // A renamed remote goes on where it stood.
    ASSERT_TRUE(RVGitRemote::renameRemoteWithName("svn", "upstream", repository));
    remote = RVGitRemote::remoteForName("upstream", repository);
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->SVNPrefix(), "upstream");
    commitToSubversion("trunk/file", "four\n");
    ASSERT_TRUE(
        succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote)));
    EXPECT_EQ(git({"show", "refs/remotes/upstream/trunk:file"}, "clone"), "four\n");
    EXPECT_EQ(git({"rev-list", "--count", "refs/remotes/upstream/trunk"}, "clone"), "5\n");
}

TEST_F(RVGitSVNBridgeTest, OtherDirectoriesAreCloned) {
    writeFile("import/main line/file", "one\n");
    writeFile("import/lines/x/file", "two\n");
    writeFile("import/releases/\u00e9 1/file", "three\n");
    import("import");
    const auto repository =
        clone({{RVGitSVNOptionTrunkDirectories, RVValue::StringList{"main line"}},
               {RVGitSVNOptionBranchesDirectories, RVValue::StringList{"lines"}},
               {RVGitSVNOptionTagsDirectories, RVValue::StringList{"releases"}}});
    EXPECT_THAT(refs(), UnorderedElementsAre("refs/remotes/svn/tags/\u00e9%201",
                                             "refs/remotes/svn/trunk", "refs/remotes/svn/x"));
    EXPECT_EQ(readFile("clone/file"), "one\n");
}

TEST_F(RVGitSVNBridgeTest, OfSeveralTrunksACloneTakesTheLast) {
    makeTwoTrunks();
    (void)clone({{RVGitSVNOptionTrunkDirectories, RVValue::StringList{"one", "two"}}});
    EXPECT_THAT(refs(), ElementsAre("refs/remotes/svn/trunk"));
    EXPECT_EQ(readFile("clone/file"), "two\n");
}

TEST_F(RVGitSVNBridgeTest, ARemoteWithSeveralTrunksGoesThroughItsWholeLife) {
    RVGIT_TEST_NEEDS_REF_FILES("the directory of the refs is what a rename moves");
    makeTwoTrunks();
    initRepository("clone");
    const auto repository = repositoryAt("clone");
    auto remote = RVGitRemote::createSVNRemoteWithName(
        "vendor", url_, repository,
        RVOptions{{RVGitSVNOptionTrunkDirectories, RVValue::StringList{"one", "two"}},
                  {RVGitSVNOptionBranchesDirectories, RVValue::StringList{"lines"}}});
    ASSERT_TRUE(remote);
    const auto fetch = [&] {
        return succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote));
    };
    ASSERT_TRUE(fetch());
    EXPECT_THAT(refs(), UnorderedElementsAre("refs/remotes/vendor/one", "refs/remotes/vendor/two",
                                             "refs/remotes/vendor/x"));

    // Listed, beside a plain remote.
    git({"remote", "add", "origin", "x"}, "clone");
    const auto remotes = RVGitRemote::allRemotesForRepository(repository);
    ASSERT_TRUE(remotes);
    ASSERT_EQ(remotes->size(), 2U);
    remote = RVGitRemote::remoteForName("vendor", repository);
    ASSERT_TRUE(remote);
    EXPECT_TRUE(remote->isSVNRemote());
    EXPECT_EQ(remote->SVNPrefix(), "vendor");
    EXPECT_TRUE(remote->SVNUUID());
    EXPECT_THAT(remote->SVNTrunkRefSpecs(), Optional(ElementsAre("one:refs/remotes/vendor/one",
                                                                 "two:refs/remotes/vendor/two")));

    // A branch on each trunk goes back to where it came from.
    for (const std::string trunk : {"one", "two"}) {
        git({"checkout", "-q", "-B", trunk, "refs/remotes/vendor/" + trunk}, "clone");
        commitFile("clone", "new", "on " + trunk + "\n", "New\n");
        ASSERT_TRUE(
            succeeds(RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository, remote)));
        ASSERT_TRUE(succeeds(
            RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote)));
    }
    EXPECT_EQ(fileInSubversion("one/new"), "on one\n");
    EXPECT_EQ(fileInSubversion("two/new"), "on two\n");

    // A third one, which is a branch in Subversion's eyes.
    auto refSpecs = *remote->SVNTrunkRefSpecs();
    refSpecs.push_back("lines/x:refs/remotes/vendor/third");
    ASSERT_TRUE(RVGitRemote::setSVNTrunkRefSpecs(refSpecs, "vendor", repository));
    ASSERT_TRUE(fetch());
    EXPECT_EQ(git({"show", "refs/remotes/vendor/third:file"}, "clone"), "three\n");

    ASSERT_TRUE(RVGitRemote::renameRemoteWithName("vendor", "upstream", repository));
    remote = RVGitRemote::remoteForName("upstream", repository);
    ASSERT_TRUE(remote);
    EXPECT_EQ(remote->SVNPrefix(), "upstream");
    EXPECT_EQ(remote->SVNTrunkRefSpecs()->size(), 3U);
    commitToSubversion("one/file", "more of one\n");
    commitToSubversion("two/file", "more of two\n");
    ASSERT_TRUE(fetch());
    EXPECT_THAT(refs(),
                UnorderedElementsAre("refs/remotes/upstream/one", "refs/remotes/upstream/two",
                                     "refs/remotes/upstream/third", "refs/remotes/upstream/x"));
    EXPECT_EQ(git({"show", "refs/remotes/upstream/one:file"}, "clone"), "more of one\n");
    EXPECT_EQ(git({"show", "refs/remotes/upstream/two:file"}, "clone"), "more of two\n");
    EXPECT_EQ(git({"rev-list", "--count", "refs/remotes/upstream/one"}, "clone"), "3\n");

    EXPECT_TRUE(RVGitRemote::deleteRemoteWithName("upstream", repository));
    EXPECT_FALSE(RVGitRemote::remoteForName("upstream", repository));
    EXPECT_TRUE(RVGitRemote::remoteForName("origin", repository));
    EXPECT_EQ(readFile("clone/.git/svn/.metadata").find("svn-remote"), std::string::npos);
    // Of a Subversion remote the refs stay.
    EXPECT_EQ(refs().size(), 4U);
}

TEST_F(RVGitSVNBridgeTest, TwoRemotesOfOneRepositoryAreKeptApart) {
    RVGIT_TEST_NEEDS_REF_FILES("the directory of the refs is what a rename moves");
    makeTwoTrunks();
    initRepository("clone");
    const auto repository = repositoryAt("clone");
    for (const std::string name : {"one", "two"}) {
        const auto remote = RVGitRemote::createSVNRemoteWithName(
            name, url_, repository,
            RVOptions{{RVGitSVNOptionTrunkDirectories, RVValue::StringList{name}}});
        ASSERT_TRUE(remote);
        ASSERT_TRUE(
            succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote)));
    }
    ASSERT_TRUE(RVGitRemote::renameRemoteWithName("one", "first", repository));
    EXPECT_THAT(refs(), ElementsAre("refs/remotes/first/one", "refs/remotes/two/two"));
    ASSERT_TRUE(RVGitRemote::deleteRemoteWithName("first", repository));
    const auto remote = RVGitRemote::remoteForName("two", repository);
    ASSERT_TRUE(remote);
    EXPECT_TRUE(remote->SVNUUID());
    commitToSubversion("two/file", "more\n");
    ASSERT_TRUE(
        succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote)));
    EXPECT_EQ(git({"show", "refs/remotes/two/two:file"}, "clone"), "more\n");
}

TEST_F(RVGitSVNBridgeTest, ARebaseEndsInAConflictAndCanBeAborted) {
    makeStandardLayout();
    const auto repository = clone();
    const auto remote = RVGitRemote::remoteForName("svn", repository);
    commitToSubversion("trunk/file", "theirs\n");
    const std::string mine = commitFile("clone", "file", "mine\n", "Mine\n");
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository, remote)->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitRemoteNameErrorKey), "svn");
    EXPECT_EQ(error->userInfoString(RVGitRemoteURLErrorKey), url_);
    EXPECT_THAT(git({"status", "--porcelain"}, "clone"), HasSubstr("UU file"));
    git({"rebase", "--abort"}, "clone");
    EXPECT_EQ(gitLine({"rev-parse", "HEAD"}, "clone"), mine);
    EXPECT_EQ(readFile("clone/file"), "mine\n");
}

TEST_F(RVGitSVNBridgeTest, ACommitThatAHookRefusesStaysWhereItIs) {
    makeStandardLayout();
    const auto repository = clone();
    const auto remote = RVGitRemote::remoteForName("svn", repository);
    writeFile("svn/repo/hooks/pre-commit", "#!/bin/sh\necho refused by the hook >&2\nexit 1\n",
              0755);
    const std::string mine = commitFile("clone", "file", "mine\n", "Mine\n");
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote, "main")
            ->run(&error));
    ASSERT_TRUE(error);
    EXPECT_THAT(textOf(error), HasSubstr("refused by the hook"));
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "main");
    EXPECT_EQ(gitLine({"rev-parse", "HEAD"}, "clone"), mine);
    EXPECT_EQ(readFile("clone/file"), "mine\n");
    EXPECT_EQ(fileInSubversion("trunk/file"), "one\n");
}

TEST_F(RVGitSVNBridgeTest, AnAddressWithoutARepositoryFailsWith202) {
    std::optional<RVError> error;
    const std::string url = "file://" + scratchPath("nothing");
    EXPECT_FALSE(RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(url, scratchPath("clone"),
                                                                       std::nullopt)
                     ->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRemoteAuthError);
    EXPECT_EQ(error->userInfoString(RVGitRemoteURLErrorKey), url);
}

TEST_F(RVGitSVNBridgeTest, ACancelledCloneIsCompletedByAFetch) {
    makeStandardLayout();
    constexpr int revisions = 12;
    for (int revision = 0; revision < revisions; ++revision)
        commitToSubversion("trunk/file", std::to_string(revision) + "\n");
    const auto command = RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
        url_, scratchPath("clone"), RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true}});
    std::atomic<bool> cancelled = false;
    command->setProgressHandler([&](RVGitCommandProgress& progress) {
        if (progress.currentProgressOutput().find(" = ") == std::string::npos || cancelled)
            return;
        cancelled = true;
        command->cancel();
    });
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    ASSERT_TRUE(cancelled);
    const auto repository = repositoryAt("clone");
    ASSERT_TRUE(repository->isValid());
    const auto remote = RVGitRemote::remoteForName("svn", repository);
    ASSERT_TRUE(remote);
    ASSERT_TRUE(
        succeeds(RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote)));
    EXPECT_EQ(git({"rev-list", "--count", "refs/remotes/svn/trunk"}, "clone"),
              std::to_string(revisions + 1) + "\n");
    EXPECT_EQ(git({"show", "refs/remotes/svn/trunk:file"}, "clone"),
              std::to_string(revisions - 1) + "\n");
    git({"fsck", "--strict"}, "clone");
}

TEST_F(RVGitSVNBridgeTest, APasswordIsAskedForThroughAskpass) {
    makeStandardLayout();
    writeFile("svn/repo/conf/svnserve.conf",
              "[general]\nanon-access = none\nauth-access = write\npassword-db = passwd\n");
    writeFile("svn/repo/conf/passwd", "[users]\nmarie = radium\n");
    const SubversionServer server(scratchPath("svn"));
    auto& environment = RVGitCommandEnvironment::sharedEnvironment();
    const std::string asked = scratchPath("asked");
    environment.setValueForEnvironmentVariable(
        writeFile("askpass",
                  "#!/bin/sh\necho \"$1\" >> '" + asked + "'\necho \"$RVGIT_TEST_PASSWORD\"\n",
                  0755),
        "GIT_ASKPASS");
    const auto cloneWith = [&](const std::string& password, const std::string& name,
                               RVErrorPlace error) {
        environment.setValueForEnvironmentVariable(password, "RVGIT_TEST_PASSWORD");
        return RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
                   server.url("marie", "repo"), scratchPath(name),
                   RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true}})
            ->run(error);
    };
    std::optional<RVError> error;
    EXPECT_FALSE(cloneWith("polonium", "refused", &error));
    ASSERT_TRUE(error);
    error.reset();
    EXPECT_TRUE(cloneWith("radium", "clone", &error)) << textOf(error);
    EXPECT_EQ(readFile("clone/file"), "one\n");
    EXPECT_THAT(readFile("asked"), HasSubstr("marie"));
    environment.setValueForEnvironmentVariable(std::nullopt, "GIT_ASKPASS");
    environment.setValueForEnvironmentVariable(std::nullopt, "RVGIT_TEST_PASSWORD");
}

TEST_F(RVGitSVNBridgeTest, ACertificateThatIsNotTrustedFailsWith1801) {
    const RVTestWebServer server(makeDirectory("web"), makeDirectory("repositories"));
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
                     server.httpsURL("git/repo"), scratchPath("clone"), std::nullopt)
                     ->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 1801) << textOf(error);
}

}  // namespace
