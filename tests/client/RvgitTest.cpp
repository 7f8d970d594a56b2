#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "RVGit/base/RVString.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// The terminal client as a person runs it, in a pipe.
class RvgitTest : public RVGitTestCase {
protected:
    RVTestProcessResult rvgit(std::vector<std::string> arguments, std::string_view directory = {}) {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, directory);
    }

    /// A commit on top of the given ones, whose hash is remembered by nobody but git.
    std::string commitOnTopOf(const std::string& repository,
                              const std::vector<std::string>& parents, const std::string& message) {
        std::vector<std::string> arguments = {"commit-tree", "-m", message};
        for (const std::string& parent : parents)
            arguments.insert(arguments.end(), {"-p", parent});
        arguments.push_back("4b825dc642cb6eb9a060e54bf8d69288fbee4904");
        setDates(std::to_string(++seconds_) + " +0000");
        return gitLine(arguments, repository);
    }

private:
    long long seconds_ = defaultTime;
};

TEST_F(RvgitTest, AnOverviewSaysWhereTheRepositoryLiesAndWhatIsInIt) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "contents", "Add a file");
    git({"tag", "v1"}, repository);
    const auto result = rvgit({repository});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.standardOutput, StartsWith(repository + "\nkind   repository\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("HEAD   refs/heads/main\n"));
    EXPECT_THAT(result.standardOutput, HasSubstr("refs   1 branch, 0 remote branches, 1 tag\n"));
    EXPECT_THAT(result.standardOutput,
                HasSubstr("2020-01-02 03:04 Marie Curie        (HEAD, main, v1) Add a file\n"));
    EXPECT_THAT(result.standardOutput, Not(HasSubstr("\x1b")));
    EXPECT_THAT(result.standardError, IsEmpty());
}

TEST_F(RvgitTest, HelpIsPrintedIntoAPipe) {
    const auto result = rvgit({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.standardOutput, HasSubstr("\n  log "));
}

TEST_F(RvgitTest, TheVersionIsPrinted) {
    EXPECT_THAT(rvgit({"--version"}).standardOutput, testing::MatchesRegex("rvgit [0-9.]+\n"));
}

TEST_F(RvgitTest, TheManualAndTheCompletionsNameEveryCommand) {
    const std::string help = rvgit({"--help"}).standardOutput;
    const std::string documents[] = {rvgit({"--man"}).standardOutput,
                                     rvgit({"--completion", "bash"}).standardOutput,
                                     rvgit({"--completion", "zsh"}).standardOutput,
                                     rvgit({"--completion", "fish"}).standardOutput};
    for (const char* command : {"overview", "log", "stash", "ignore"}) {
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(command)));
        for (const std::string& document : documents)
            EXPECT_THAT(document, HasSubstr(command));
    }
    for (std::size_t index = 1; index < 4; ++index)
        EXPECT_THAT(documents[index], HasSubstr("first-parent"));
    const std::string script = writeFile("completion", documents[1]);
    const auto completed = runProgram(
        {"bash", "-c",
         ". '" + script +
             "'; COMP_WORDS=(rvgit sta); COMP_CWORD=1; _rvgit; echo \"${COMPREPLY[@]}\""});
    EXPECT_EQ(completed.standardOutput, "status stash\n");
    EXPECT_EQ(rvgit({"--completion", "csh"}).exitCode, 2);
}

TEST_F(RvgitTest, ACompletionLooksForTheCommandBehindOptions) {
    const std::string script =
        writeFile("completion", rvgit({"--completion", "bash"}).standardOutput);
    const auto completed = [&](const std::string& words, const std::string& position) {
        return runProgram({"bash", "-c",
                           ". '" + script + "'; COMP_WORDS=(rvgit " + words +
                               "); COMP_CWORD=" + position + "; _rvgit; echo \"${COMPREPLY[@]}\""})
            .standardOutput;
    };
    EXPECT_EQ(completed("-C /tmp --verbose sta", "4"), "status stash\n");
    EXPECT_EQ(completed("stash s", "2"), "save\n");
    EXPECT_EQ(completed("stash save --k", "3"), "--keep-index\n");
    EXPECT_EQ(completed("help rew", "2"), "reword\n");
    EXPECT_EQ(completed("-C /us", "2"), "/usr\n");
}

TEST_F(RvgitTest, HelpTellsOfEveryCommandMoreThanHowItIsCalled) {
    std::string name;
    for (const std::string& line :
         componentsSeparatedByString(rvgit({"--help"}).standardOutput, "\n")) {
        if (!line.starts_with("  ") || line.starts_with("   ") || line.starts_with("  help "))
            continue;
        name = line.substr(2, line.find(' ', 2) - 2);
        const auto help = rvgit({"help", name});
        EXPECT_EQ(help.exitCode, 0) << name;
        EXPECT_THAT(help.standardOutput, StartsWith("usage: rvgit " + name));
        EXPECT_THAT(help.standardOutput, testing::ContainsRegex("\n\n[A-Z]")) << name;
        EXPECT_EQ(rvgit({name, "--help"}).standardOutput, help.standardOutput);
    }
    EXPECT_THAT(name, Not(IsEmpty()));
    EXPECT_EQ(rvgit({"help"}).standardOutput, rvgit({"--help"}).standardOutput);
    EXPECT_EQ(rvgit({"help", "nothing"}).exitCode, 2);
}

TEST_F(RvgitTest, WhatGitSaysOfAnInvalidRepositoryIsShown) {
    const std::string repository = initRepository();
    git({"config", "core.repositoryFormatVersion", "1"}, repository);
    git({"config", "extensions.fromTheFuture", "true"}, repository);
    const auto result = rvgit({repository});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, HasSubstr("fromthefuture"));
    EXPECT_THAT(rvgit({scratchPath("missing")}).standardError,
                HasSubstr("No such file or directory"));
}

TEST_F(RvgitTest, LocalPatternsAreThoseThatGitReadsInALinkedWorktree) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "contents", "Message");
    const std::string linked = scratchPath("linked");
    git({"worktree", "add", "--detach", linked}, repository);
    EXPECT_EQ(rvgit({"-C", linked, "ignore", "--local", "*.log"}).exitCode, 0);
    writeFile("linked/a.log", "");
    EXPECT_EQ(gitLine({"status", "--porcelain"}, linked), "");
    EXPECT_THAT(rvgit({"-C", linked, "ignore", "--local"}).standardOutput, HasSubstr("*.log\n"));
}

TEST_F(RvgitTest, AnOverviewOfEachKindOfRepository) {
    const std::string repository = initRepository();
    EXPECT_THAT(rvgit({}, repository).standardOutput,
                HasSubstr("HEAD   refs/heads/main (no commit yet)\nrefs   1 branch"));
    const std::string hash = commitFile(repository, "file", "contents", "Message");
    git({"worktree", "add", "--detach", "../linked"}, repository);
    const std::string linked = rvgit({"../linked"}, repository).standardOutput;
    EXPECT_THAT(linked, HasSubstr("kind   linked worktree\n"));
    EXPECT_THAT(linked, HasSubstr("HEAD   detached at " + hash + "\n"));
    EXPECT_THAT(rvgit({initBareRepository()}).standardOutput,
                HasSubstr("kind   bare repository\n"));
}

TEST_F(RvgitTest, TheGraphIsDrawnLaneByLane) {
    const std::string repository = initRepository();
    const std::string a = commitOnTopOf(repository, {}, "A");
    const std::string b = commitOnTopOf(repository, {a}, "B");
    const std::string c = commitOnTopOf(repository, {b}, "C");
    const std::string d = commitOnTopOf(repository, {b}, "D");
    const std::string e = commitOnTopOf(repository, {c, d}, "E");
    git({"update-ref", "refs/heads/main", e}, repository);
    std::string graph;
    const std::string output = rvgit({"-C", repository, "log"}).standardOutput;
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t end = output.find('\n', start);
        const std::string line = output.substr(start, end - start);
        graph += line.substr(0, line.find_first_not_of(" *|/\\_")) + "\n";
        start = end + 1;
    }
    EXPECT_EQ(graph,
              "* \n"
              "|\\\n"
              "| * \n"
              "* | \n"
              "* | \n"
              "|/\n"
              "* \n");
}

TEST_F(RvgitTest, LogTakesItsOptions) {
    const std::string repository = initRepository();
    for (const char* name : {"one", "two", "three"})
        commitFile(repository, name, std::string(name) + "\n", std::string("Add ") + name);
    const auto subjects = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"-C", repository, "log"});
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        std::string found;
        for (const char* name : {"one", "two", "three"})
            if (result.standardOutput.find(std::string("Add ") + name) != std::string::npos)
                found += std::string(name) + " ";
        return found;
    };
    EXPECT_EQ(subjects({}), "one two three ");
    EXPECT_EQ(subjects({"--limit", "1"}), "three ");
    EXPECT_EQ(subjects({"--offset", "1"}), "one two ");
    EXPECT_EQ(subjects({"--message", "TWO"}), "two ");
    EXPECT_EQ(subjects({"--author", "nobody"}), "");
    EXPECT_EQ(subjects({"--content", "^three$"}), "three ");
    EXPECT_EQ(subjects({"--since", "2020-01-03"}), "");
    EXPECT_EQ(subjects({"--until", "2020-01-03T00:00:00Z"}), "one two three ");
    EXPECT_EQ(subjects({"--first-parent", "HEAD~1"}), "one two ");
    EXPECT_EQ(subjects({"--all", "--", "one"}), "one ");
}

TEST_F(RvgitTest, WrongCommandLinesExitWith2) {
    const std::string repository = initRepository();
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--nonsense"},
                                                      {"log", "--limit"},
                                                      {"log", "--limit", "x"},
                                                      {"log", "--since", "yesterday"},
                                                      {"log", "--nonsense"}}) {
        const auto result = rvgit(arguments, repository);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.standardError, Not(IsEmpty()));
        EXPECT_THAT(result.standardOutput, IsEmpty());
    }
}

TEST_F(RvgitTest, ErrorsShowTitleAndReasonAndTheRestWhenAsked) {
    const std::string repository = initRepository();
    const auto brief = rvgit({"log", "nosuch"}, repository);
    EXPECT_EQ(brief.exitCode, 1);
    EXPECT_EQ(brief.standardError,
              "rvgit: No Such Revision\n"
              "A revision that was named does not exist in this repository.\n");
    const auto verbose = rvgit({"--verbose", "log", "nosuch"}, repository);
    EXPECT_THAT(verbose.standardError, StartsWith(brief.standardError));
    EXPECT_THAT(verbose.standardError, HasSubstr("RVGitErrorDomain 1900"));
    EXPECT_THAT(verbose.standardError, HasSubstr("RVGitCommandCallErrorKey: "));
    const auto missing = rvgit({"nowhere"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.standardError, "rvgit: there is no repository at " + scratchPath("nowhere") +
                                         "\nNo such file or directory\n");
}

TEST_F(RvgitTest, ControlCharactersOfACommitDoNotReachTheTerminal) {
    const std::string repository = initRepository();
    git({"commit", "--allow-empty", "-m", "\x1b]0;title\x07 text"}, repository);
    EXPECT_THAT(rvgit({"log"}, repository).standardOutput, HasSubstr("?]0;title? text"));
}

TEST_F(RvgitTest, CtrlCEndsGitAndLeavesNothingBehind) {
    const std::string repository = initRepository();
    // A git that says which process it is, and would otherwise stay for a minute.
    const std::string pidFile = scratchPath("pid");
    writeFile("bin/git",
              "#!/bin/sh\ncase \"$*\" in *log*) echo $$ > '" + pidFile +
                  "'; exec sleep 60;; esac\nexec '" + gitPath() + "' \"$@\"\n",
              0755);
    setEnvironmentVariable("PATH", scratchPath("bin") + ":" + getenv("PATH"));
    const auto result = runProgram(
        {"/bin/sh", "-c",
         "\"$0\" log & pid=$!; while [ ! -s \"$1\" ]; do sleep 0.02; done; kill -INT $pid; "
         "wait $pid; echo $?",
         RVGIT_CLIENT, pidFile},
        repository);
    EXPECT_EQ(result.standardOutput, "130\n");
    const pid_t pid = std::stoi(readFile(pidFile));
    for (int attempt = 0; attempt < 1000 && kill(pid, 0) == 0; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(kill(pid, 0), -1);
}

TEST_F(RvgitTest, ShowAndDiffPrintCountsAndLines) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "one\ntwo\n", "First");
    commitFile(repository, "file", "one\nthree\nfour\n", "Second");
    const std::string show = rvgit({"show", "HEAD"}, repository).standardOutput;
    EXPECT_THAT(show, StartsWith("M +2     -1     file\n"
                                 "1 file changed, 2 lines added, 1 line deleted\n"));
    EXPECT_THAT(show, HasSubstr("\n one\n-two\n+three\n+four\n"));
    EXPECT_THAT(rvgit({"diff"}, repository).standardOutput, IsEmpty());
    writeFile(repository + "/file", "one\n");
    git({"add", "file"}, repository);
    EXPECT_THAT(rvgit({"diff", "--staged"}, repository).standardOutput,
                HasSubstr("\n one\n-three\n-four\n"));
    EXPECT_THAT(rvgit({"diff", "HEAD~1", "HEAD", "--", "file"}, repository).standardOutput,
                HasSubstr("\n-two\n+three\n"));
}

TEST_F(RvgitTest, HistoryCommandsPrintALineForEachItem) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "one\ntwo\n", "Message");
    git({"tag", "-a", "-m", "Annotation", "v1"}, repository);
    EXPECT_THAT(rvgit({"tags"}, repository).standardOutput, HasSubstr("v1 Annotation\n"));
    EXPECT_THAT(rvgit({"blame", "file"}, repository).standardOutput,
                testing::AllOf(HasSubstr("1) one\n"), HasSubstr("2) two\n")));
    EXPECT_THAT(rvgit({"reflog"}, repository).standardOutput, HasSubstr("Message\n"));
    EXPECT_EQ(rvgit({"shortlog"}, repository).standardOutput,
              "     1  Marie Curie <marie@example.org>\n");
    EXPECT_THAT(rvgit({"log", "--signatures"}, repository).standardOutput, HasSubstr("[N] "));
}

TEST_F(RvgitTest, ALogOfAPathHasNoGraph) {
    const std::string repository = initRepository();
    for (int number = 0; number < 4; ++number) {
        commitFile(repository, "other", std::to_string(number), "Other");
        commitFile(repository, "file", std::to_string(number), "File");
    }
    const auto log = [&](const std::vector<std::string>& arguments) {
        std::vector<std::string> words = {RVGIT_CLIENT, "log"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return runProgram(words, repository).standardOutput;
    };
    EXPECT_THAT(log({}), testing::HasSubstr("*"));
    EXPECT_THAT(log({"--", "file"}), testing::Not(testing::HasSubstr("*")));
    EXPECT_THAT(log({"--", "file"}), testing::Not(testing::HasSubstr("|")));
}

}  // namespace
