#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RVGitTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The commands of the terminal client that show and change the working tree.
class RvgitWorktreeTest : public RVGitTestCase {
protected:
    RvgitWorktreeTest() : repository_(initRepository()) {
        commitFile(repository_, "file", "one\n", "First");
    }

    RVTestProcessResult rvgit(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, repository_);
    }
    /// Of a command that must succeed.
    std::string outputOf(const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        return result.standardOutput;
    }
    void write(const std::string& name, std::string_view contents) {
        writeFile(repository_ + "/" + name, contents);
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        return readFile(repository_ + "/" + name);
    }

    const std::string repository_;
};

TEST_F(RvgitWorktreeTest, StatusGroupsTheFiles) {
    EXPECT_EQ(outputOf({"status"}), "Nothing has changed\n");
    commitFile(repository_, "moved", "a line that moves\n", "Second");
    commitFile(repository_, "taken out", "kept on disk\n", "Third");
    git({"mv", "moved", "here"}, repository_);
    git({"rm", "--cached", "taken out"}, repository_);
    write("file", "one\ntwo\n");
    write("new", "");
    write("old.log", "");
    write(".gitignore", "*.log\n");
    git({"add", ".gitignore"}, repository_);
    const std::string expected =
        "Staged\n  A .gitignore\n  R moved -> here\n  D taken out\n"
        "Unstaged\n  M file\n"
        "Untracked\n  ? new\n  ? taken out\n";
    EXPECT_EQ(outputOf({"status"}), expected);
    EXPECT_EQ(outputOf({"status", "--ignored"}), expected + "Ignored\n  ! old.log\n");
}

TEST_F(RvgitWorktreeTest, StatusShowsConflictsFirst) {
    git({"checkout", "-b", "topic"}, repository_);
    commitFile(repository_, "file", "theirs\n", "Theirs");
    git({"checkout", "main"}, repository_);
    commitFile(repository_, "file", "ours\n", "Ours");
    (void)runGit({"merge", "topic"}, repository_);
    write("new", "");
    EXPECT_EQ(outputOf({"status"}), "Conflicts\n  UU file\nUntracked\n  ? new\n");
}

TEST_F(RvgitWorktreeTest, FilesAreStagedUnstagedAndDiscarded) {
    write("file", "two\n");
    write("-new", "new\n");
    EXPECT_THAT(outputOf({"add", "file", "--", "-new"}), IsEmpty());
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A -new\n  M file\n");
    (void)outputOf({"unstage", "file"});
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A -new\nUnstaged\n  M file\n");
    (void)outputOf({"unstage", "--all"});
    EXPECT_EQ(outputOf({"status"}), "Unstaged\n  M file\nUntracked\n  ? -new\n");
    (void)outputOf({"add", "--all"});
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A -new\n  M file\n");
    (void)outputOf({"discard", "file"});
    EXPECT_EQ(read("file"), "one\n");
    EXPECT_EQ(rvgit({"discard", "nothing"}).exitCode, 1);
    EXPECT_EQ(read("-new"), "new\n");
}

TEST_F(RvgitWorktreeTest, ACommitIsMadeAndPrinted) {
    write("file", "two\n");
    (void)outputOf({"add", "file"});
    EXPECT_THAT(outputOf({"commit", "-m", "Second $(x) \"q\"\n\nbody"}),
                HasSubstr("Marie Curie        (HEAD, main) Second $(x) \"q\"\n"));
    (void)outputOf({"commit", "--amend", "-m", "Another"});
    EXPECT_EQ(gitLine({"log", "--format=%s", "-1"}, repository_), "Another");
    EXPECT_EQ(gitLine({"rev-list", "--count", "HEAD"}, repository_), "2");
    EXPECT_EQ(rvgit({"commit", "-m", "Nothing"}).exitCode, 1);
    EXPECT_EQ(rvgit({"commit"}).exitCode, 2);
}

TEST_F(RvgitWorktreeTest, AStashIsSavedListedAppliedPoppedAndDropped) {
    EXPECT_THAT(outputOf({"stash"}), IsEmpty());
    write("file", "two\n");
    write("new", "new\n");
    (void)outputOf({"stash", "save", "-m", "half: done", "--include-untracked"});
    EXPECT_EQ(read("file"), "one\n");
    EXPECT_THAT(outputOf({"stash", "list"}), HasSubstr("main  half: done\n"));
    (void)outputOf({"stash", "apply"});
    EXPECT_EQ(read("file"), "two\n");
    EXPECT_EQ(read("new"), "new\n");
    git({"reset", "--hard"}, repository_);
    git({"clean", "-f"}, repository_);
    (void)outputOf({"stash", "pop", "0"});
    EXPECT_EQ(read("file"), "two\n");
    EXPECT_THAT(outputOf({"stash"}), IsEmpty());
    (void)outputOf({"stash", "save"});
    (void)outputOf({"stash", "drop"});
    EXPECT_THAT(outputOf({"stash"}), IsEmpty());
    const auto missing = rvgit({"stash", "pop", "3"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.standardError, HasSubstr("no stash 3"));
    EXPECT_EQ(rvgit({"stash", "save"}).exitCode, 1);
}

TEST_F(RvgitWorktreeTest, PatternsAreIgnoredAndListed) {
    write("a.log", "");
    EXPECT_THAT(outputOf({"status"}), HasSubstr("a.log"));
    (void)outputOf({"ignore", "*.log", "# remark"});
    EXPECT_THAT(outputOf({"status"}), Not(HasSubstr("a.log")));
    EXPECT_EQ(outputOf({"ignore"}), "*.log\n");
    EXPECT_EQ(read(".gitignore"), "*.log\n# remark\n");
}

TEST_F(RvgitWorktreeTest, WrongCommandLinesExitWith2AndChangeNothing) {
    write("file", "two\n");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"add"},
                                                      {"add", "--all", "file"},
                                                      {"add", "--nonsense", "file"},
                                                      {"discard"},
                                                      {"discard", "--all"},
                                                      {"unstage"},
                                                      {"commit", "-m"},
                                                      {"stash", "nonsense"},
                                                      {"stash", "drop", "x"},
                                                      {"stash", "list", "1"},
                                                      {"status", "file"}}) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.front();
        EXPECT_THAT(result.standardError, Not(IsEmpty()));
        EXPECT_THAT(result.standardOutput, IsEmpty());
    }
    EXPECT_EQ(gitLine({"diff", "--name-only"}, repository_), "file");
}

}  // namespace
