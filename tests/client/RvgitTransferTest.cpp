#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "tests/remotes/RVGitTransferTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The commands of the terminal client that transfer.
class RvgitTransferTest : public RVGitTransferTestCase {
protected:
    RvgitTransferTest() {
        serveRepository();
        git({"remote", "add", "origin", servedPath()}, repositoryPath());
        git({"pull", "origin", "main"}, repositoryPath());
        git({"fetch"}, repositoryPath());
        git({"branch", "--set-upstream-to=origin/main"}, repositoryPath());
    }
    RVTestProcessResult rvgit(std::vector<std::string> arguments,
                              const std::optional<std::string>& standardInput = {}) {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, repositoryPath(), standardInput);
    }
    /// Of a command that must succeed.
    std::string outputOf(const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        // No progress where nobody looks at a terminal.
        EXPECT_THAT(result.standardError, IsEmpty());
        return result.standardOutput;
    }
    void commitThere() {
        const std::string source = scratchPath("source of a.git");
        commitFile(source, "there", "1", "There");
        git({"push", servedPath(), "main"}, source);
    }
    [[nodiscard]] std::string served(const std::string& name) const {
        return runGit({"rev-parse", "--verify", "--quiet", name}, servedPath()).standardOutput;
    }
};

TEST_F(RvgitTransferTest, Clones) {
    const std::string address = url(Protocol::SSH);
    EXPECT_EQ(outputOf({"clone", address}), "Cloned into a\n");
    EXPECT_TRUE(fileExists("repository/a/file.txt"));
    EXPECT_EQ(outputOf({"-C", scratchDirectory(), "clone", "--bare", "--depth", "1",
                        url(Protocol::HTTPS), "b"}),
              "Cloned into b\n");
    EXPECT_EQ(refsIn("b").find("refs/heads/main") != std::string::npos, true);
    // A path is one from here, wherever the clone goes.
    makeDirectory("here/empty");
    EXPECT_EQ(outputOf({"-C", scratchPath("here"), "clone", "../served/a.git", "empty"}),
              "Cloned into empty\n");
    EXPECT_TRUE(fileExists("here/empty/file.txt"));
}

TEST_F(RvgitTransferTest, AFailedCloneSaysWhyAndLeavesNothing) {
    auto result = rvgit({"clone", webServer().httpURL("private/a.git"), "new"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("could not read Username"));
    result = rvgit({"clone", webServer().httpURL("git/none.git"), "new"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("Remote Repository Not Found"));
    EXPECT_FALSE(fileExists("repository/new"));
    EXPECT_EQ(rvgit({"clone"}).exitCode, 2);
    EXPECT_EQ(rvgit({"clone", "--upload-pack=touch hit", "new"}).exitCode, 2);
    EXPECT_EQ(rvgit({"clone", "--depth", "0", servedPath()}).exitCode, 2);
}

TEST_F(RvgitTransferTest, FetchesAndPulls) {
    EXPECT_EQ(outputOf({"fetch"}), "");
    commitThere();
    git({"branch", "new", "main"}, servedPath());
    EXPECT_THAT(outputOf({"fetch", "--prune"}), HasSubstr("[new branch]      new        -> "));
    EXPECT_THAT(outputOf({"pull"}), HasSubstr("\nFast-forward\n"));
    EXPECT_TRUE(fileExists("repository/there"));
    EXPECT_THAT(outputOf({"pull", "--rebase", "origin", "main"}), ContainsRegex("up.to.date"));
    git({"branch", "-D", "new"}, servedPath());
    EXPECT_THAT(outputOf({"fetch", "--prune", "origin"}), HasSubstr("[deleted]"));
    EXPECT_EQ(outputOf({"fetch", servedPath(), "main:fetched"}),
              " * [new branch]      main       -> fetched\n");
}

TEST_F(RvgitTransferTest, APullRebasesWhereThatIsConfigured) {
    gitInRepository({"config", "pull.rebase", "true"});
    const auto merges = [this] { return gitInRepository({"rev-list", "--merges", "HEAD"}); };
    commitThere();
    makeCommit();
    outputOf({"pull"});
    EXPECT_EQ(merges(), "");
    EXPECT_TRUE(fileExists("repository/there"));
    // What is said of the branch goes first, and what is asked for before all.
    gitInRepository({"config", "branch.main.rebase", "false"});
    gitInRepository({"reset", "-q", "--hard", "ORIG_HEAD"});
    outputOf({"pull", "--rebase"});
    EXPECT_EQ(merges(), "");
    gitInRepository({"reset", "-q", "--hard", "ORIG_HEAD"});
    outputOf({"pull"});
    EXPECT_NE(merges(), "");
    gitInRepository({"config", "--unset", "branch.main.rebase"});
    gitInRepository({"reset", "-q", "--hard", "ORIG_HEAD"});
    outputOf({"pull", "--no-rebase"});
    EXPECT_NE(merges(), "");
}

TEST_F(RvgitTransferTest, APullThatStopsAtConflictsSaysHowToGoOn) {
    commitThere();
    commitFile(repositoryPath(), "there", "2", "Here");
    const auto result = rvgit({"pull"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("merging "));
    EXPECT_THAT(result.standardError, HasSubstr("rvgit status shows the conflicts"));
    EXPECT_EQ(rvgit({"abort"}).exitCode, 0);
}

TEST_F(RvgitTransferTest, APushGoesWhereThatIsConfigured) {
    for (const char* name : {"fork", "other"})
        gitInRepository({"remote", "add", name, initBareRepository(name)});
    const auto has = [&](const char* name) {
        return runGit({"rev-parse", "--verify", "main"}, name).exitCode == 0;
    };
    gitInRepository({"config", "remote.pushDefault", "fork"});
    outputOf({"push"});
    EXPECT_TRUE(has("fork"));
    gitInRepository({"config", "branch.main.pushRemote", "other"});
    EXPECT_FALSE(has("other"));
    outputOf({"push"});
    EXPECT_TRUE(has("other"));
}

TEST_F(RvgitTransferTest, APathThatIsConfiguredIsOneFromTheRepository) {
    const std::string real = initBareRepository("real");
    initBareRepository("elsewhere/real");
    const std::string here = makeDirectory("elsewhere/here");
    git({"push", "-q", real, "main:there"}, repositoryPath());
    gitInRepository({"config", "branch.main.remote", "../real"});
    gitInRepository({"config", "branch.main.merge", "refs/heads/there"});
    const auto result = runProgram({RVGIT_CLIENT, "-C", repositoryPath(), "pull"}, here);
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput,
                HasSubstr(isTestedGitAtLeast("2.23") ? "up to date" : "up-to-date"));
}

TEST_F(RvgitTransferTest, Pushes) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    EXPECT_THAT(outputOf({"push", "--tags", "origin", "main"}), HasSubstr("main -> main"));
    EXPECT_NE(served("v1"), "");
    gitInRepository({"commit", "--amend", "-m", "Amended"});
    const auto rejected = rvgit({"push", "origin", "main"});
    EXPECT_EQ(rejected.exitCode, 1);
    EXPECT_THAT(rejected.standardError, HasSubstr("[rejected]"));
    EXPECT_THAT(rejected.standardError, HasSubstr("Synchronization With Remote Failed"));
    EXPECT_THAT(outputOf({"push", "--force-with-lease"}), HasSubstr("(forced update)"));
    EXPECT_EQ(served("main"), gitInRepository({"rev-parse", "HEAD"}) + "\n");
    gitInRepository({"commit", "--amend", "-m", "Amended by another name"});
    EXPECT_THAT(outputOf({"push", "--force-with-lease", "origin", "HEAD"}),
                HasSubstr("HEAD -> main (forced update)"));
    EXPECT_EQ(served("main"), gitInRepository({"rev-parse", "HEAD"}) + "\n");
    // Somebody else has been there.
    const std::string source = scratchPath("source of a.git");
    commitFile(source, "there", "1", "There");
    git({"push", "--force", servedPath(), "main"}, source);
    const std::string theirs = served("main");
    gitInRepository({"commit", "--amend", "-m", "Amended again"});
    EXPECT_EQ(rvgit({"push", "--force-with-lease", "origin", "main"}).exitCode, 1);
    EXPECT_EQ(served("main"), theirs);
    EXPECT_THAT(outputOf({"push", "--force", "origin", "main"}), HasSubstr("forced"));
    EXPECT_THAT(outputOf({"push", "--delete", "origin", "v1"}), HasSubstr("[deleted]"));
    EXPECT_EQ(served("v1"), "");
    // Wherever the option stands, every name is one to delete.
    EXPECT_THAT(outputOf({"push", "origin", "main:one", "main:two"}), HasSubstr("main -> two"));
    EXPECT_THAT(outputOf({"push", "origin", "one", "two", "--delete"}), HasSubstr("[deleted]"));
    EXPECT_EQ(served("one") + served("two"), "");
    EXPECT_EQ(rvgit({"push", "--delete"}).exitCode, 2);
    EXPECT_EQ(rvgit({"push", "--force", "--force-with-lease"}).exitCode, 2);
    EXPECT_EQ(rvgit({"push", "--force-with-lease", "origin", "unknown"}).exitCode, 2);
}

TEST_F(RvgitTransferTest, WhatIsNoRefSpecIsNotTakenForHEAD) {
    commitThere();
    for (const char* command : {"fetch", "pull", "push"})
        EXPECT_EQ(rvgit({command, "origin", "a:b:c"}).exitCode, 2) << command;
    EXPECT_FALSE(fileExists("repository/there"));
}

TEST_F(RvgitTransferTest, ARefusalByAHookIsShownWithoutItsControls) {
    writeFile("served/a.git/hooks/update",
              "#!/bin/sh\nprintf 'not today \\033[31m\\n' >&2\nexit 1\n", 0755);
    makeCommit();
    const auto result = rvgit({"push", "origin", "main"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("remote: not today ?[31m"));
    EXPECT_THAT(result.standardError, Not(HasSubstr("\033")));
}

TEST_F(RvgitTransferTest, ListsTheRefsOfAnAddress) {
    const std::string hash = served("main").substr(0, 40);
    EXPECT_EQ(outputOf({"ls-remote", "--heads", servedPath()}), hash + "  refs/heads/main\n");
    EXPECT_EQ(outputOf({"-C", scratchDirectory(), "ls-remote", "served/a.git"}),
              hash + "  HEAD\n" + hash + "  refs/heads/main\n");
    EXPECT_EQ(rvgit({"ls-remote", scratchPath("none")}).exitCode, 1);
}

TEST_F(RvgitTransferTest, KeepsPasswords) {
    writeFile("home/.gitconfig", "[credential]\n\thelper = store\n");
    setEnvironmentVariable("HOME", scratchPath("home"));
    EXPECT_EQ(rvgit({"credential", "fill", "https://host/a"}).exitCode, 1);
    EXPECT_EQ(rvgit({"credential", "approve", "https://host/a"}, "marie\nrad ium\n").exitCode, 0);
    EXPECT_EQ(outputOf({"credential", "fill", "https://HOST/b"}),
              "username=marie\npassword=rad ium\n");
    EXPECT_EQ(outputOf({"credential", "reject", "https://host"}), "");
    EXPECT_EQ(rvgit({"credential", "fill", "https://host/a"}).exitCode, 1);
    EXPECT_EQ(rvgit({"credential", "approve", "https://host/a"}).exitCode, 2);
    EXPECT_EQ(rvgit({"credential", "show", "https://host/a"}).exitCode, 2);
    EXPECT_EQ(rvgit({"credential", "fill", "https://host/%0a"}).exitCode, 1);
}

TEST_F(RvgitTransferTest, ShowsProgressOnATerminal) {
    const std::string command = quotedForShell(RVGIT_CLIENT) + " clone " +
                                quotedForShell("file://" + servedPath()) + " new";
    const auto result = runProgram({"script", "-qec", command, "/dev/null"}, scratchDirectory());
    EXPECT_EQ(result.exitCode, 0) << result.standardOutput;
    EXPECT_THAT(result.standardOutput, HasSubstr("\rReceiving objects: 100% (3/3)"));
    EXPECT_THAT(result.standardOutput, Not(HasSubstr("\033[")));
    // The line is gone before what stays is printed.
    EXPECT_THAT(result.standardOutput, HasSubstr(" \rCloned into new\r\n"));
}

TEST_F(RvgitTransferTest, CtrlCEndsATransferAndLeavesNothing) {
    const std::string address = url(Protocol::SSH);
    const RVTestCuttingServer holding(sshServer().port(), 1500,
                                      RVTestCuttingServer::Afterwards::Holds);
    setEnvironmentVariable("GIT_SSH_COMMAND", sshServer().sshCommand() +
                                                  " -o StrictHostKeyChecking=no -p " +
                                                  std::to_string(holding.port()));
    std::string held = address;
    const std::string port = ":" + std::to_string(sshServer().port());
    held.erase(held.find(port), port.size());
    std::vector<std::string> words = {RVGIT_CLIENT, "clone", held, scratchPath("new")};
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, RVGIT_CLIENT, nullptr, nullptr, arguments.data(), environ), 0);
    while (holding.numberOfConnections() == 0 || !fileExists("new"))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(child, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_TRUE(launchedProcessesEnd());
    EXPECT_FALSE(fileExists("new"));
}

}  // namespace
