#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// The commands of the terminal client for archives, large files and Subversion.
class RvgitStorageTest : public RVGitTestCase {
protected:
    RvgitStorageTest() : repository_(initRepository()) {
        commitFile(repository_, "a file", "one\n", "First");
        commitFile(repository_, "dir/other", "two\n", "Second");
    }

    RVTestProcessResult rvgit(std::vector<std::string> arguments,
                              const std::string& directory = "repository") {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, directory);
    }
    /// Of a command that must succeed.
    std::string outputOf(const std::vector<std::string>& arguments,
                         const std::string& directory = "repository") {
        const auto result = rvgit(arguments, directory);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_THAT(result.standardError, IsEmpty());
        return result.standardOutput;
    }

    const std::string repository_;
};

TEST_F(RvgitStorageTest, ArchivesArePacked) {
    EXPECT_EQ(outputOf({"archive", "HEAD", "../a.tgz"}), "Packed 2 files into ../a.tgz\n");
    EXPECT_EQ(runProgram({"tar", "-tzf", scratchPath("a.tgz")}).standardOutput,
              "a file\ndir/\ndir/other\n");
    EXPECT_EQ(outputOf({"archive", "HEAD", scratchPath("b.zip"), "dir"}),
              "Packed 1 file into " + scratchPath("b.zip") + "\n");
    EXPECT_EQ(readFile("b.zip").substr(0, 2), "PK");
    EXPECT_EQ(rvgit({"archive", "missing", "../c.zip"}).exitCode, 1);
    EXPECT_FALSE(fileExists("c.zip"));
    EXPECT_EQ(rvgit({"archive", "HEAD"}).exitCode, 2);
    // A name, and no pattern.
    EXPECT_EQ(rvgit({"archive", "HEAD", "../c.zip", "*"}).exitCode, 1);
    std::vector<std::string> many(5000, "dir");
    many.insert(many.begin(), {"archive", "HEAD", "../c.zip"});
    EXPECT_EQ(rvgit(many).exitCode, 2);
}

TEST_F(RvgitStorageTest, LargeFilesAreTrackedPushedAndPulled) {
    EXPECT_EQ(outputOf({"lfs", "install", "--local"}), "");
    EXPECT_EQ(outputOf({"lfs", "track", "*.bin", "b c"}), "");
    EXPECT_THAT(outputOf({"lfs", "track"}), HasSubstr("*.bin  .gitattributes\n"));
    EXPECT_EQ(outputOf({"lfs", "untrack", "b c"}), "");
    EXPECT_EQ(outputOf({"lfs", "track"}), "*.bin  .gitattributes\n");
    commitFile(repository_, "large.bin", "large", "Large");
    EXPECT_EQ(outputOf({"lfs", "ls-files"}), "large.bin\n");
    EXPECT_EQ(outputOf({"lfs", "ls-files", "HEAD~1"}), "");

    git({"remote", "add", "origin", "file://" + initBareRepository()}, repository_);
    EXPECT_EQ(outputOf({"lfs", "push"}), "");
    EXPECT_TRUE(std::filesystem::exists(scratchPath("bare.git/lfs/objects")));
    git({"push", "-u", "origin", "main"}, repository_);
    const std::string pointer = outputOf({"lfs", "pointer", "large.bin"});
    EXPECT_EQ(pointer, git({"show", "HEAD:large.bin"}, repository_));
    std::filesystem::remove_all(scratchPath("repository/.git/lfs/objects"));
    writeFile("repository/large.bin", pointer);
    EXPECT_EQ(outputOf({"lfs", "fetch"}), "");
    EXPECT_EQ(outputOf({"lfs", "checkout"}), "");
    EXPECT_EQ(readFile("repository/large.bin"), "large");
    EXPECT_EQ(outputOf({"lfs", "pull", "origin"}), "");
    EXPECT_EQ(outputOf({"lfs", "prune"}), "");

    writeFile("repository/pointer", pointer);
    EXPECT_EQ(outputOf({"lfs", "smudge", "pointer"}), "large");
    EXPECT_EQ(rvgit({"lfs", "smudge", "a file"}).exitCode, 2);
    writeFile("repository/empty", "");
    const auto empty = rvgit({"lfs", "pointer", "empty"});
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_THAT(empty.standardError, HasSubstr("An empty file has no pointer"));
    const auto missing = rvgit({"lfs", "pointer", "missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.standardError, HasSubstr("No such file"));
    EXPECT_EQ(rvgit({"lfs", "pull", "missing"}).exitCode, 2);
    EXPECT_EQ(rvgit({"lfs", "track", "--lockable"}).exitCode, 2);
    for (const char* action : {"", "nothing", "untrack", "smudge", "pointer"})
        EXPECT_EQ(rvgit({"lfs", action}).exitCode, 2) << action;
}

TEST_F(RvgitStorageTest, SubversionIsClonedAndCommittedTo) {
    setEnvironmentVariable("LC_ALL", "en_US.UTF-8");
    const std::string url = "file://" + scratchPath("svn");
    writeFile("import/trunk/file", "one\n");
    makeDirectory("import/branches");
    makeDirectory("import/tags");
    ASSERT_EQ(runProgram({"svnadmin", "create", scratchPath("svn")}).exitCode, 0);
    ASSERT_EQ(runProgram({"svn", "import", "-q", "-m", "m", scratchPath("import"), url}).exitCode,
              0);
    makeDirectory("work");
    EXPECT_EQ(outputOf({"svn", "clone", "--stdlayout", url}, "work"), "Cloned into svn\n");
    EXPECT_EQ(readFile("work/svn/file"), "one\n");
    commitFile(scratchPath("work/svn"), "new", "two\n", "New\n");
    EXPECT_EQ(outputOf({"svn", "rebase"}, "work/svn"), "");
    EXPECT_EQ(outputOf({"svn", "dcommit"}, "work/svn"), "");
    EXPECT_EQ(outputOf({"svn", "branch", "-m", "Branch", "topic"}, "work/svn"), "");
    EXPECT_EQ(outputOf({"svn", "tag", "v1"}, "work/svn"), "");
    EXPECT_EQ(outputOf({"-C", scratchPath("work/svn"), "svn", "fetch", "svn"}), "");
    EXPECT_EQ(
        outputOf({"svn", "clone", "--trunk", "trunk", "--trunk", "tags/v1", url, "both"}, "work"),
        "Cloned into both\n");
    EXPECT_EQ(git({"for-each-ref", "--format=%(refname)", "refs/remotes"}, "work/both"),
              "refs/remotes/svn/tags/v1\nrefs/remotes/svn/trunk\n");
    EXPECT_EQ(readFile("work/both/new"), "two\n");
    const auto notEmpty = rvgit({"svn", "clone", "--trunk", "a", "--trunk", "b", url}, "work");
    EXPECT_EQ(notEmpty.exitCode, 1);
    EXPECT_THAT(notEmpty.standardError, HasSubstr("not empty"));
    for (const char* path : {"trunk/new", "branches/topic/new", "tags/v1/new"})
        EXPECT_EQ(runProgram({"svn", "cat", url + "/" + path}).standardOutput, "two\n") << path;

    EXPECT_EQ(rvgit({"svn", "fetch", "missing"}, "work/svn").exitCode, 2);
    EXPECT_EQ(rvgit({"svn", "rebase"}).exitCode, 2);
    EXPECT_EQ(rvgit({"svn", "rebase"}, "work").exitCode, 1);
    EXPECT_EQ(rvgit({"svn", "clone", "file://" + scratchPath("missing")}, "work").exitCode, 1);
    // Theirs and mine do not fit together.
    commitFile(scratchPath("work/svn"), "file", "mine\n", "Mine\n");
    ASSERT_EQ(runProgram({"svnmucc", "-m", "Theirs", "put", writeFile("theirs", "theirs\n"),
                          url + "/trunk/file"})
                  .exitCode,
              0);
    const auto refused = rvgit({"svn", "rebase"}, "work/svn");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.standardError,
                HasSubstr(isTestedGitAtLeast("2.26") ? "\nerror: could not apply "
                                                     : "\nerror: Failed to merge"));
    EXPECT_THAT(refused.standardError, HasSubstr("rvgit abort"));
    EXPECT_EQ(outputOf({"-C", scratchPath("work/svn"), "abort"}), "");
    for (const char* action : {"", "nothing", "clone", "branch"})
        EXPECT_EQ(rvgit({"svn", action}, "work/svn").exitCode, 2) << action;
}

}  // namespace
