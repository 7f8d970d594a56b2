#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/client/RvgitTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::HasSubstr;

/// The commands of the terminal client that rewrite history, foretell merges and run tools.
class RvgitRewriteTest : public RvgitTestCase {
protected:
    RvgitRewriteTest() {
        git({"config", "--global", "core.editor", "false"});
        for (const char* letter : {"a", "b", "c", "d", "e"})
            commitFile(repository_, letter, std::string(letter) + "\n", letter);
    }

    /// The subjects, oldest first: "a b c".
    std::string subjects() const {
        std::string text = gitLine({"log", "--reverse", "--pretty=%s"}, repository_);
        for (char& character : text)
            if (character == '\n')
                character = ' ';
        return text;
    }
    void makeConflict() const {
        git({"checkout", "-q", "-b", "other"}, repository_);
        commitFile(repository_, "a", "theirs\n", "Theirs");
        git({"checkout", "-q", "main"}, repository_);
        commitFile(repository_, "a", "ours\n", "Ours");
    }
};

TEST_F(RvgitRewriteTest, MovesCommits) {
    EXPECT_EQ(outputOf({"move", "HEAD~3", "HEAD~2", "--above", "HEAD"}), "");
    EXPECT_EQ(subjects(), "a d e b c");
    EXPECT_EQ(outputOf({"move", "--below", "HEAD~4", "HEAD"}), "");
    EXPECT_EQ(subjects(), "c a d e b");
}

TEST_F(RvgitRewriteTest, DropsCommitsInAnyOrder) {
    EXPECT_EQ(outputOf({"drop", "HEAD~3", "HEAD", "HEAD~3"}), "");
    EXPECT_EQ(subjects(), "a c d");
}

TEST_F(RvgitRewriteTest, SquashesAndFixesUp) {
    EXPECT_EQ(outputOf({"squash", "HEAD", "HEAD~1"}), "");
    EXPECT_EQ(subjects(), "a b c d");
    EXPECT_EQ(gitLine({"log", "-1", "--pretty=%B"}, repository_), "d\n\ne");
    EXPECT_EQ(outputOf({"fixup", "HEAD", "--into", "HEAD~2"}), "");
    EXPECT_EQ(subjects(), "a b c");
    EXPECT_EQ(gitLine({"show", "--format=", "--name-only", "HEAD~1"}, repository_), "b\nd\ne");
}

TEST_F(RvgitRewriteTest, RewordsACommit) {
    EXPECT_EQ(outputOf({"reword", "HEAD~2", "-m", "New\n\n# Body"}), "");
    EXPECT_EQ(subjects(), "a b New d e");
    EXPECT_EQ(gitLine({"log", "-1", "--pretty=%b", "HEAD~2"}, repository_), "# Body");
}

TEST_F(RvgitRewriteTest, EditsACommit) {
    EXPECT_THAT(outputOf({"edit", "HEAD~2"}), HasSubstr("Stopped: "));
    EXPECT_EQ(outputOf({"add", "c"}), "");
    EXPECT_THAT(outputOf({"commit", "-m", "New"}), HasSubstr("New"));
    EXPECT_EQ(outputOf({"continue"}), "");
    EXPECT_EQ(subjects(), "a b New d e");
    EXPECT_THAT(outputOf({"edit", "--amend", "HEAD~1"}), HasSubstr("Stopped: "));
    EXPECT_EQ(gitLine({"status", "--porcelain"}, repository_), "");
    EXPECT_EQ(outputOf({"abort"}), "");
    EXPECT_EQ(subjects(), "a b New d e");
}

TEST_F(RvgitRewriteTest, AConflictIsToldAndCanBeAborted) {
    commitFile(repository_, "a", "1\n", "1");
    commitFile(repository_, "a", "2\n", "2");
    const RVRepositorySnapshot before(repository_);
    EXPECT_THAT(failure({"drop", "HEAD~1"}), HasSubstr("rebasing main, "));
    EXPECT_EQ(outputOf({"abort"}), "");
    EXPECT_EQ(RVRepositorySnapshot(repository_).differencesFrom(before), "");
}

TEST_F(RvgitRewriteTest, WrongWordsChangeNothing) {
    git({"checkout", "-q", "-b", "other", "HEAD~1"}, repository_);
    commitFile(repository_, "x", "x\n", "x");
    git({"checkout", "-q", "main"}, repository_);
    const RVRepositorySnapshot before(repository_);
    EXPECT_THAT(refusal({"drop"}), HasSubstr("needs a revision"));
    EXPECT_THAT(refusal({"drop", "other"}), HasSubstr("is not in the history of HEAD"));
    EXPECT_THAT(refusal({"drop", "--all"}), HasSubstr("takes no --all"));
    EXPECT_THAT(refusal({"move", "HEAD"}), HasSubstr("needs --above REV or --below REV"));
    EXPECT_THAT(refusal({"move", "HEAD", "--above"}), HasSubstr("needs a value"));
    EXPECT_THAT(refusal({"move", "HEAD", "--above", "HEAD"}), HasSubstr("beside itself"));
    EXPECT_THAT(refusal({"move", "HEAD", "--above", "HEAD~1", "--below", "HEAD~2"}),
                HasSubstr("takes no --below here"));
    EXPECT_THAT(refusal({"squash", "HEAD"}), HasSubstr("needs two revisions"));
    EXPECT_THAT(refusal({"squash", "HEAD", "main"}), HasSubstr("needs two revisions"));
    EXPECT_THAT(refusal({"fixup", "HEAD", "--into", "HEAD"}), HasSubstr("into itself"));
    EXPECT_THAT(refusal({"reword", "HEAD"}), HasSubstr("-m MESSAGE"));
    EXPECT_THAT(refusal({"edit"}), HasSubstr("needs one revision"));
    EXPECT_THAT(refusal({"edit", "--x"}), HasSubstr("has no option"));
    EXPECT_NE(failure({"drop", "missing"}), "");
    EXPECT_NE(failure({"reword", "missing", "-m", "x"}), "");
    EXPECT_EQ(RVRepositorySnapshot(repository_).differencesFrom(before), "");
}

TEST_F(RvgitRewriteTest, ForetellsMerges) {
    makeConflict();
    EXPECT_EQ(outputOf({"can-merge", "other~1"}),
              "other~1 can be merged into HEAD without "
              "conflicts\n");
    const std::string text = failure({"can-merge", "other"});
    EXPECT_THAT(text, HasSubstr("There will be conflicts when performing a merge.\n"));
    EXPECT_THAT(text, HasSubstr("  a\n"));
    EXPECT_NE(failure({"can-merge", "other", "main"}), "");
    EXPECT_NE(failure({"can-merge", "missing"}), "");
    EXPECT_THAT(refusal({"can-merge"}), HasSubstr("needs a revision"));
}

TEST_F(RvgitRewriteTest, RunsMergeTools) {
    makeConflict();
    EXPECT_EQ(runGit({"merge", "other"}, repository_).exitCode, 1);
    const std::string script =
        writeFile("tool", "#!/bin/sh\ntest -e fail && exit 1\necho resolved >\"$1\"\n", 0755);
    EXPECT_THAT(refusal({"mergetool", "a"}), HasSubstr("merge.tool"));
    git({"config", "merge.tool", "own"}, repository_);
    git({"config", "mergetool.own.cmd", quotedForShell(script) + " \"$MERGED\""}, repository_);
    git({"config", "mergetool.own.trustExitCode", "true"}, repository_);
    writeFile(repository_ + "/fail", "");
    EXPECT_NE(failure({"mergetool", "a"}), "");
    git({"clean", "-q", "-f"}, repository_);
    EXPECT_EQ(outputOf({"mergetool", "--keep-backup", "--", "a"}), "");
    EXPECT_EQ(readFile("repository/a"), "resolved\n");
    EXPECT_TRUE(fileExists("repository/a.orig"));
    EXPECT_THAT(refusal({"mergetool"}), HasSubstr("needs a path"));
}

TEST_F(RvgitRewriteTest, RunsDiffTools) {
    const std::string script =
        writeFile("tool", "#!/bin/sh\necho \"$1:\" $(cat \"$2\" \"$3\")\n", 0755);
    git({"config", "difftool.own.cmd",
         quotedForShell(script) + " \"$MERGED\" \"$LOCAL\" \"$REMOTE\""},
        repository_);
    writeFile(repository_ + "/a", "changed\n");
    EXPECT_EQ(outputOf({"difftool", "--tool", "own"}), "a: a changed\n");
    EXPECT_EQ(outputOf({"difftool", "--tool", "own", "HEAD~1", "HEAD", "--", "e"}), "e: e\n");
    EXPECT_EQ(outputOf({"difftool", "--staged", "--tool", "own"}), "");
    EXPECT_THAT(refusal({"difftool"}), HasSubstr("diff.tool"));
    EXPECT_THAT(refusal({"difftool", "--extcmd=x"}), HasSubstr("has no option"));
}

TEST_F(RvgitRewriteTest, AnInterruptEndsATool) {
    makeConflict();
    EXPECT_EQ(runGit({"merge", "other"}, repository_).exitCode, 1);
    // The tool itself interrupts the client.
    const std::string script =
        writeFile("tool", "#!/bin/sh\nkill -INT \"$RVGIT_PID\"\nsleep 300\n", 0755);
    git({"config", "mergetool.own.cmd", quotedForShell(script)}, repository_);
    const auto result = runProgram(
        {"/bin/sh", "-c", "RVGIT_PID=$$; export RVGIT_PID; exec \"$0\" mergetool --tool own a",
         RVGIT_CLIENT},
        repository_);
    EXPECT_EQ(result.exitCode, 130);
}

}  // namespace
