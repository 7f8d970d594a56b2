#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "tests/client/RvgitTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The commands of the terminal client that show and change the working tree.
class RvgitWorktreeTest : public RvgitTestCase {
protected:
    RvgitWorktreeTest() { commitFile(repository_, "file", "one\n", "First"); }
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

TEST_F(RvgitWorktreeTest, StatusShowsEveryStateAtOnce) {
    for (const char* name :
         {"changed", "deleted", "deleted from disk", "mode", "to link", "renamed",
          "renamed and changed", "staged and changed", "staged to link"})
        write(name, std::string("the contents of ") + name + "\n");
    const std::string module = initRepository("module");
    commitFile(module, "inside", "1\n", "Message");
    git({"-c", "protocol.file.allow=always", "submodule", "add", module, "module"}, repository_);
    git({"add", "."}, repository_);
    git({"commit", "-m", "Second"}, repository_);

    const auto replaceByLink = [&](const std::string& name) {
        std::filesystem::remove(repository_ + "/" + name);
        std::filesystem::create_symlink("nowhere", repository_ + "/" + name);
    };
    replaceByLink("staged to link");
    for (const char* name : {"renamed", "renamed and changed"})
        git({"mv", name, std::string(name) + " now"}, repository_);
    write("staged and changed", "1\n");
    write("new and changed", "1\n");
    write("new", "1\n");
    git({"add", "staged to link", "staged and changed", "new and changed", "new"}, repository_);
    git({"rm", "deleted"}, repository_);
    replaceByLink("to link");
    std::filesystem::remove(repository_ + "/deleted from disk");
    std::filesystem::permissions(repository_ + "/mode", std::filesystem::perms::owner_all);
    for (const char* name : {"changed", "renamed and changed now", "staged and changed",
                             "new and changed", "two\nlines", "dir/a", "module/inside"})
        write(name, "changed\n");
    write("intended", "");
    git({"add", "-N", "intended"}, repository_);
    write(".git/info/exclude", "*.o\n");
    write("ignored.o", "");
    // The stages of a conflict tell its kind.
    const std::string hash = gitLine({"rev-parse", "HEAD:file"}, repository_);
    std::string index;
    const std::pair<const char*, const char*> conflicts[] = {
        {"DD", "1"},  {"AU", "2"},  {"UD", "12"}, {"UA", "3"},
        {"DU", "13"}, {"AA", "23"}, {"UU", "123"}};
    for (const auto& [kind, stages] : conflicts)
        for (const char* stage = stages; *stage != 0; ++stage)
            index += "100644 " + hash + " " + *stage + "\tconflict " + kind + "\n";
    git({"update-index", "--index-info"}, repository_, index);

    EXPECT_EQ(outputOf({"status", "--ignored"}),
              "Conflicts\n"
              "  AA conflict AA\n"
              "  AU conflict AU\n"
              "  DD conflict DD\n"
              "  DU conflict DU\n"
              "  UA conflict UA\n"
              "  UD conflict UD\n"
              "  UU conflict UU\n"
              "Staged\n"
              "  D deleted\n"
              "  A new\n"
              "  A new and changed\n"
              "  R renamed and changed -> renamed and changed now\n"
              "  R renamed -> renamed now\n"
              "  M staged and changed\n"
              "  T staged to link\n"
              "Unstaged\n"
              "  M changed\n"
              "  D deleted from disk\n"
              "  A intended\n"
              "  M mode\n"
              "  M module\n"
              "  M new and changed\n"
              "  M renamed and changed now\n"
              "  M staged and changed\n"
              "  T to link\n"
              "Untracked\n"
              "  ? dir\n"
              "  ? two?lines\n"
              "Ignored\n"
              "  ! ignored.o\n");
}

TEST_F(RvgitWorktreeTest, ARenameThatGitHasNotBeenToldOfShowsBothNames) {
    RVGIT_TEST_NEEDS_GIT("2.17", "it does not tell the new name");
    write("moved", "a line that moves\n");
    git({"add", "."}, repository_);
    git({"commit", "-m", "Second"}, repository_);
    std::filesystem::rename(repository_ + "/moved", repository_ + "/here");
    git({"add", "-N", "here"}, repository_);
    EXPECT_EQ(outputOf({"status"}), "Unstaged\n  R moved -> here\n");
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

TEST_F(RvgitWorktreeTest, APathMeansTheFileOfThatNameAlone) {
    commitFile(repository_, "ab", "1\n", "Second");
    write("ab", "worth keeping\n");
    write("a[b]", "new\n");
    write("a*", "new\n");
    write(":c", "new\n");
    const auto discard = rvgit({"discard", "a[b]"});
    EXPECT_EQ(discard.exitCode, 1);
    EXPECT_THAT(discard.standardError, HasSubstr("pathspec 'a[b]' did not match"));
    EXPECT_EQ(read("ab"), "worth keeping\n");
    (void)outputOf({"add", "a[b]", "a*", ":c"});
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A :c\n  A a*\n  A a[b]\nUnstaged\n  M ab\n");
    (void)outputOf({"unstage", "a*"});
    EXPECT_EQ(outputOf({"status"}),
              "Staged\n  A :c\n  A a[b]\nUnstaged\n  M ab\nUntracked\n  ? a*\n");
}

TEST_F(RvgitWorktreeTest, OptionsReachGit) {
    write(".git/info/exclude", "*.o\n");
    write("a.o", "");
    EXPECT_EQ(rvgit({"add", "a.o"}).exitCode, 1);
    (void)outputOf({"add", "--force", "a.o"});
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A a.o\n");
    write("intended", "text\n");
    (void)outputOf({"add", "--intent-to-add", "intended"});
    EXPECT_EQ(outputOf({"status"}), "Staged\n  A a.o\nUnstaged\n  A intended\n");
    git({"reset"}, repository_);

    (void)outputOf({"commit", "--allow-empty", "--signoff", "-m", "Empty"});
    EXPECT_THAT(gitLine({"log", "--format=%B", "-1"}, repository_),
                HasSubstr("Signed-off-by: Marie Curie"));
    writeFile(repository_ + "/.git/hooks/pre-commit", "#!/bin/sh\necho refused >&2\nexit 1\n",
              0755);
    const auto refused = rvgit({"commit", "--allow-empty", "-m", "Refused"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.standardError, HasSubstr("\nrefused\n"));
    (void)outputOf({"commit", "--allow-empty", "--no-verify", "-m", "Not asked"});

    write("file", "staged\n");
    git({"add", "file"}, repository_);
    (void)outputOf({"stash", "save", "--keep-index"});
    EXPECT_EQ(read("file"), "staged\n");
}

TEST_F(RvgitWorktreeTest, AStashThatConflictsIsKept) {
    write("file", "stashed\n");
    (void)outputOf({"stash", "save"});
    commitFile(repository_, "file", "committed\n", "Second");
    EXPECT_EQ(rvgit({"stash", "pop"}).exitCode, 1);
    EXPECT_THAT(outputOf({"status"}), HasSubstr("Conflicts\n  UU file\n"));
    EXPECT_THAT(outputOf({"stash"}), HasSubstr("main"));
}

TEST_F(RvgitWorktreeTest, ABareRepositoryHasNoWorkingTree) {
    const std::string bare = initBareRepository();
    EXPECT_EQ(rvgit({"-C", bare, "status"}).exitCode, 1);
    EXPECT_EQ(rvgit({"-C", bare, "add", "--all"}).exitCode, 1);
    EXPECT_EQ(rvgit({"-C", bare, "ignore", "*.o"}).exitCode, 2);
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
                                                      {"add", "--all", "--force"},
                                                      {"ignore", "--nonsense"},
                                                      {"show", "--output=made"},
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

TEST_F(RvgitWorktreeTest, LinesAreStagedUnstagedAndDiscardedByTheirNumbers) {
    const std::string braces = "a {\n}\nb {\n}\nc {\n}\n";
    commitFile(repository_, "code", braces, "Braces");
    git({"config", "diff.context", "0"}, repository_);
    write("code", "first\na {\nb {\n}\nc {\nend\xE9\n");
    EXPECT_EQ(outputOf({"lines", "code"}),
              "1  @@ -0,0 +1 @@\n1:1     +first\n"
              "2  @@ -2 +2,0 @@ a {\n2:1     -}\n"
              "3  @@ -6 +6 @@ c {\n3:1     -}\n3:2     +end\u00E9\n");
    const auto staged = [&] { return git({"show", ":code"}, repository_); };
    EXPECT_THAT(outputOf({"add-lines", "code", "2", "3:2"}), IsEmpty());
    EXPECT_EQ(staged(), "a {\nb {\n}\nc {\n}\nend\xE9\n");
    EXPECT_THAT(outputOf({"lines", "--staged", "code"}), HasSubstr("2:1     +end"));
    EXPECT_THAT(outputOf({"unstage-lines", "code", "1:1"}), IsEmpty());
    EXPECT_EQ(staged(), braces + "end\xE9\n");
    EXPECT_EQ(read("code"), "first\na {\nb {\n}\nc {\nend\xE9\n");
    EXPECT_THAT(outputOf({"discard-lines", "code", "1", "2"}), IsEmpty());
    EXPECT_EQ(read("code"), "a {\n}\nb {\n}\nc {\nend\xE9\n");
    EXPECT_EQ(staged(), braces + "end\xE9\n");

    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"add-lines", "code"},
                                                  {"add-lines", "code", "9"},
                                                  {"add-lines", "code", "0"},
                                                  {"add-lines", "code", "1:"},
                                                  {"add-lines", "code", "1:9"},
                                                  {"add-lines", "code", "1x"},
                                                  {"lines", "file"},
                                                  {"lines", "code", "more"},
                                                  {"lines"}})
        EXPECT_EQ(rvgit(wrong).exitCode, 2) << wrong.back();
    EXPECT_EQ(staged(), braces + "end\xE9\n");
}

}  // namespace
