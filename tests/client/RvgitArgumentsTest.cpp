#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVGitTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// What the terminal client makes of its words, of its streams and of its surroundings.
class RvgitArgumentsTest : public RVGitTestCase {
protected:
    RvgitArgumentsTest() : repository_(initRepository()) {
        commitFile(repository_, "file", "one\n", "First");
    }
    RVTestProcessResult rvgit(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, repository_);
    }
    std::string outputOf(const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.standardError;
        return result.standardOutput;
    }
    /// In a shell, as "$0".
    RVTestProcessResult inShell(const std::string& script) {
        return runProgram({"/bin/sh", "-c", script, RVGIT_CLIENT}, repository_);
    }
    /// As on a terminal.
    std::string onTerminal(const std::string& command) {
        return runProgram({"script", "-qec", command, "/dev/null"}, repository_).standardOutput;
    }
    /// Runs the client in the shell with a git that hangs at the words, sends it a signal then, and
    /// prints its exit code. The git ends with it.
    std::string signalled(const std::string& start, const std::string& words,
                          const std::string& signal) {
        const RVHangingGit git = hangingGit(words);
        setEnvironmentVariable("PATH", scratchPath("hanging-git") + ":" + getenv("PATH"));
        const auto result = inShell(start + " & pid=$!; " + git.waitingCommand() + "; kill -" +
                                    signal + " $pid; wait $pid; echo $?");
        EXPECT_TRUE(git.ends());
        return result.standardOutput;
    }

    const std::string repository_;
};

TEST_F(RvgitArgumentsTest, ANumberThatIsTooLargeIsNoOtherNumber) {
    writeFile("repository/file", "precious\n");
    git({"stash"}, repository_);
    for (const char* number : {"18446744073709551616", "99999999999999999999999", "-1", "0x0", ""})
        for (const char* action : {"apply", "pop", "drop"}) {
            const auto result = rvgit({"stash", action, number});
            EXPECT_EQ(result.exitCode, 2) << number;
            EXPECT_THAT(result.standardError, HasSubstr("needs a number"));
        }
    EXPECT_EQ(gitLine({"stash", "list", "--format=%gd"}, repository_), "stash@{0}");
    EXPECT_EQ(readFile("repository/file"), "one\n");
    EXPECT_EQ(rvgit({"log", "--limit", "18446744073709551616"}).exitCode, 2);
}

TEST_F(RvgitArgumentsTest, AnUnknownOptionIsAWrongCommandLineWhereverItStands) {
    const std::vector<std::vector<std::string>> commands = {{"overview"},
                                                            {"log"},
                                                            {"show"},
                                                            {"diff"},
                                                            {"tags"},
                                                            {"blame"},
                                                            {"blame", "file"},
                                                            {"reflog"},
                                                            {"shortlog"},
                                                            {"status"},
                                                            {"add"},
                                                            {"unstage"},
                                                            {"discard"},
                                                            {"lines"},
                                                            {"lines", "--staged"},
                                                            {"add-lines"},
                                                            {"unstage-lines"},
                                                            {"discard-lines"},
                                                            {"commit"},
                                                            {"stash"},
                                                            {"stash", "save"},
                                                            {"stash", "list"},
                                                            {"merge"},
                                                            {"rebase"},
                                                            {"cherry-pick"},
                                                            {"revert"},
                                                            {"resolve"},
                                                            {"continue"},
                                                            {"skip"},
                                                            {"abort"},
                                                            {"quit"},
                                                            {"move"},
                                                            {"drop"},
                                                            {"squash"},
                                                            {"fixup"},
                                                            {"reword"},
                                                            {"edit"},
                                                            {"can-merge"},
                                                            {"mergetool"},
                                                            {"difftool"},
                                                            {"branch"},
                                                            {"branch", "create"},
                                                            {"branch", "delete"},
                                                            {"remote"},
                                                            {"remote", "add"},
                                                            {"submodule"},
                                                            {"submodule", "add"},
                                                            {"ignore"},
                                                            {"clone"},
                                                            {"fetch"},
                                                            {"pull"},
                                                            {"push"},
                                                            {"ls-remote"},
                                                            {"credential"},
                                                            {"credential", "fill"},
                                                            {"archive"},
                                                            {"archive", "HEAD"},
                                                            {"archive", "HEAD", "a.zip"},
                                                            {"lfs"},
                                                            {"lfs", "install"},
                                                            {"lfs", "track"},
                                                            {"lfs", "untrack"},
                                                            {"lfs", "ls-files"},
                                                            {"lfs", "fetch"},
                                                            {"lfs", "pull"},
                                                            {"lfs", "push"},
                                                            {"lfs", "pointer"},
                                                            {"lfs", "smudge"},
                                                            {"svn"},
                                                            {"svn", "clone"},
                                                            {"svn", "fetch"},
                                                            {"svn", "rebase"},
                                                            {"svn", "dcommit"},
                                                            {"svn", "branch"}};
    for (auto arguments : commands) {
        arguments.push_back("--nonsense");
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.front() << " " << arguments[1];
        EXPECT_THAT(result.standardError, StartsWith("rvgit: "));
        EXPECT_THAT(result.standardOutput, IsEmpty());
    }
    EXPECT_EQ(gitLine({"status", "--porcelain"}, repository_), "");
}

TEST_F(RvgitArgumentsTest, ASubversionCloneDoesNotTakeItsPathFromAnAddressWithoutAName) {
    for (const char* address : {"https://host/..", "https://host/a/.", "/"}) {
        const auto result = rvgit({"svn", "clone", address});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.standardError, HasSubstr("needs a path"));
    }
}

TEST_F(RvgitArgumentsTest, WhatLooksLikeAnOptionIsAPathBehindTwoDashes) {
    commitFile(repository_, "-f", "old\n", "Dash");
    EXPECT_THAT(outputOf({"blame", "--", "-f"}), EndsWith("1) old\n"));
    EXPECT_EQ(outputOf({"archive", "HEAD", "a.tar", "--", "-f"}), "Packed 1 file into a.tar\n");
    EXPECT_EQ(outputOf({"archive", "--", "HEAD", "-a.tar", "-f"}), "Packed 1 file into -a.tar\n");
    writeFile("repository/-f", "new\n");
    EXPECT_THAT(outputOf({"lines", "--", "-f"}), HasSubstr("+new"));
    outputOf({"add-lines", "--", "-f", "1"});
    EXPECT_THAT(outputOf({"lines", "--staged", "--", "-f"}), HasSubstr("+new"));
}

TEST_F(RvgitArgumentsTest, NamesInAnErrorDoNotReachTheTerminalAsTheyAre) {
    // "CSI" as one character, which a name of a branch may hold.
    const std::string name =
        "a\xc2\x9b"
        "31m";
    git({"branch", name}, repository_);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"branch", "create", name},
          {"--verbose", "branch", "create", name},
          {"add", "a\x1b[31m"},
          {"--verbose", "add", "a\x1b[31m"}}) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.standardError, HasSubstr("31m"));
        EXPECT_THAT(result.standardError, Not(HasSubstr("\x1b")));
        EXPECT_THAT(result.standardError, Not(HasSubstr("\xc2\x9b")));
    }
}

TEST_F(RvgitArgumentsTest, WhereTheCatalogueHasNoWordsThoseOfGitAreShown) {
    initBareRepository();
    EXPECT_THAT(runProgram({RVGIT_CLIENT, "reflog"}, "bare.git").standardError,
                HasSubstr("does not have any commits yet"));
    EXPECT_THAT(rvgit({"archive", "missing", "a.zip"}).standardError,
                HasSubstr(isTestedGitAtLeast("2.23") ? "missing" : "Not a valid object name"));
}

TEST_F(RvgitArgumentsTest, APullShowsGitsLinesAsLines) {
    git({"clone", "-q", repository_, "clone"});
    commitFile(repository_, "more", "1\n", "More");
    const auto result = runProgram({RVGIT_CLIENT, "pull"}, "clone");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("\nFast-forward\n more | 1 +\n 1 file changed"));
    EXPECT_THAT(result.standardOutput, Not(HasSubstr("?")));
}

TEST_F(RvgitArgumentsTest, ColoursAreForTerminalsThatHaveThem) {
    const std::string log = std::string(RVGIT_CLIENT) + " log";
    setEnvironmentVariable("TERM", "xterm");
    EXPECT_THAT(onTerminal(log), HasSubstr("\x1b[33m"));
    EXPECT_THAT(onTerminal("NO_COLOR= " + log), HasSubstr("\x1b[33m"));
    EXPECT_THAT(onTerminal("NO_COLOR=1 " + log), Not(HasSubstr("\x1b")));
    EXPECT_THAT(onTerminal("TERM=dumb " + log), Not(HasSubstr("\x1b")));
}

TEST_F(RvgitArgumentsTest, ClosedStreamsAreNoHarm) {
    const auto closed = inShell("\"$0\" log >&-");
    EXPECT_EQ(closed.exitCode, 1);
    EXPECT_EQ(closed.standardError, "rvgit: cannot write the output\n");
    const auto noInput = inShell("\"$0\" log <&-");
    EXPECT_EQ(noInput.exitCode, 0) << noInput.standardError;
    EXPECT_THAT(noInput.standardOutput, EndsWith("First\n"));
    EXPECT_EQ(inShell("\"$0\" status <&- 2>&-").standardOutput, "Nothing has changed\n");
    EXPECT_EQ(inShell("\"$0\" add missing >&- <&- 2>&-").exitCode, 1);
    EXPECT_EQ(inShell("\"$0\" log >/dev/full").exitCode, 1);
    // A reader that has gone away, which the loop waits for, ends the client without a word.
    EXPECT_EQ(inShell("{ (while echo; do sleep 0.01; done); \"$0\" log; echo $? >&2; } | true")
                  .standardError,
              "141\n");
}

TEST_F(RvgitArgumentsTest, AContentThatCannotBeWrittenIsAFailure) {
    git({"lfs", "install", "--local"}, repository_);
    const std::string pointer = runGit({"lfs", "clean"}, repository_, "contents").standardOutput;
    writeFile("repository/pointer", pointer);
    EXPECT_EQ(outputOf({"lfs", "smudge", "pointer"}), "contents");
    const auto full = inShell("\"$0\" lfs smudge pointer >/dev/full");
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_EQ(full.standardError, "rvgit: cannot write the output\n");
    const auto missing = rvgit({"lfs", "pointer", "missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.standardError, HasSubstr("No such file or directory"));
    const auto link = inShell("ln -s file link; \"$0\" lfs pointer link");
    EXPECT_EQ(link.exitCode, 1);
    EXPECT_THAT(link.standardError, AllOf(HasSubstr("link"), HasSubstr("It is no plain file")));
    const auto directory = rvgit({"lfs", "pointer", "."});
    EXPECT_EQ(directory.exitCode, 1);
    EXPECT_THAT(directory.standardError, HasSubstr("Is a directory"));
}

TEST_F(RvgitArgumentsTest, GitEndsWithATerminalThatIsClosed) {
    EXPECT_EQ(signalled("\"$0\" log", "log", "HUP"), "130\n");
}

TEST_F(RvgitArgumentsTest, WhoWaitsForSomebodyElseCanBeInterrupted) {
    const std::string interrupt =
        // Again and again: until the client listens, what the shell starts so is deaf.
        " & pid=$!; tries=0; while [ $tries -lt 100 ] && kill -INT $pid 2>/dev/null; "
        "do sleep 0.1; tries=$((tries + 1)); done; kill -KILL $pid 2>/dev/null; "
        "wait $pid; echo $? >&2";
    // For a line that nobody writes, and for a reader that does not read.
    EXPECT_THAT(inShell("mkfifo ../in; exec 3<>../in; \"$0\" credential approve https://host/ <&3" +
                        interrupt)
                    .standardError,
                EndsWith("130\n"));
    commitFile(repository_, "large", std::string(std::size_t{1} << 20, 'x') + "\n", "Large");
    EXPECT_THAT(
        inShell("mkfifo ../out; exec 4<>../out; \"$0\" show HEAD >&4" + interrupt).standardError,
        EndsWith("130\n"));
}

TEST_F(RvgitArgumentsTest, WhatIsToOutliveTheTerminalDoes) {
    // Both signals end it with the same code.
    EXPECT_EQ(signalled("trap '' HUP; \"$0\" log", "log",
                        "HUP $pid; sleep 0.2; kill -0 $pid && echo alive; kill -TERM"),
              "alive\n130\n");
}

TEST_F(RvgitArgumentsTest, AnInterruptedRemovalOfASubmoduleRemovesNothing) {
    setEnvironmentVariable("GIT_CONFIG_COUNT", "1");
    setEnvironmentVariable("GIT_CONFIG_KEY_0", "protocol.file.allow");
    setEnvironmentVariable("GIT_CONFIG_VALUE_0", "always");
    commitFile(initRepository("library"), "lib.c", "int one;\n", "Library");
    git({"submodule", "--quiet", "add", scratchPath("library"), "lib"}, repository_);
    git({"commit", "-q", "-m", "Add"}, repository_);
    writeFile("repository/lib/precious", "x");
    // Stopped while git looks for work that would be lost.
    EXPECT_EQ(signalled("\"$0\" submodule remove lib", "--untracked-files=normal", "INT"), "130\n");
    EXPECT_EQ(readFile("repository/lib/precious"), "x");
    EXPECT_EQ(gitLine({"status", "--porcelain", "-uno"}, repository_), "");
}

}  // namespace
