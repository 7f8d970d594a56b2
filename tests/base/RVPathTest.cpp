#include "RVGit/base/RVPath.h"

#include <pwd.h>
#include <unistd.h>

#include "tests/support/RVGitTestCase.h"

namespace {

class RVPathTest : public RVGitTestCase {};

TEST_F(RVPathTest, AbsolutePathBeginsWithASlash) {
    EXPECT_TRUE(isAbsolutePath("/"));
    EXPECT_TRUE(isAbsolutePath("/a"));
    EXPECT_FALSE(isAbsolutePath(""));
    EXPECT_FALSE(isAbsolutePath("a/b"));
    EXPECT_FALSE(isAbsolutePath("~/a"));
}

TEST_F(RVPathTest, APlainRelativePathLeadsNowhereElse) {
    for (const char* path : {"a", "a/b/c", "...", ".a", "a b", "-x", "a\nb", "a/..b"})
        EXPECT_TRUE(isPlainRelativePath(path)) << path;
    for (const char* path :
         {"", "/", "/a", "a/", "a//b", ".", "..", "./a", "a/.", "a/../b", "../a", "a/.."})
        EXPECT_FALSE(isPlainRelativePath(path)) << path;
    EXPECT_FALSE(isPlainRelativePath(std::string_view("a\0b", 3)));
}

TEST_F(RVPathTest, StandardizingRemovesWhatSaysNothing) {
    EXPECT_EQ(standardizedPath("/a/./b//c/../d/"), "/a/b/d");
    EXPECT_EQ(standardizedPath("/"), "/");
    EXPECT_EQ(standardizedPath("///"), "/");
    EXPECT_EQ(standardizedPath("/.."), "/");
    EXPECT_EQ(standardizedPath("/../../a"), "/a");
    EXPECT_EQ(standardizedPath("/a/.."), "/");
    EXPECT_EQ(standardizedPath("/a b/ü/"), "/a b/ü");
    EXPECT_EQ(standardizedPath("/a/..b/.c/..."), "/a/..b/.c/...");
    EXPECT_EQ(standardizedPath("/a/\xFF\n/"), "/a/\xFF\n");
}

TEST_F(RVPathTest, StandardizingARelativePathKeepsItRelative) {
    EXPECT_EQ(standardizedPath(""), "");
    EXPECT_EQ(standardizedPath("."), ".");
    EXPECT_EQ(standardizedPath("a/.."), ".");
    EXPECT_EQ(standardizedPath("./a/"), "a");
    EXPECT_EQ(standardizedPath("../a"), "../a");
    EXPECT_EQ(standardizedPath("../../a/../b"), "../../b");
    EXPECT_EQ(standardizedPath("a/../../b"), "../b");
}

TEST_F(RVPathTest, TildeIsTheHomeDirectory) {
    setEnvironmentVariable("HOME", "/home/a b/");
    EXPECT_EQ(pathByExpandingTilde("~"), "/home/a b/");
    EXPECT_EQ(pathByExpandingTilde("~/c"), "/home/a b/c");
    EXPECT_EQ(standardizedPath("~"), "/home/a b");
    EXPECT_EQ(standardizedPath("~/c/../d/"), "/home/a b/d");
    EXPECT_EQ(pathByExpandingTilde("a/~"), "a/~");
    EXPECT_EQ(pathByExpandingTilde("/~"), "/~");
    EXPECT_EQ(pathByExpandingTilde(""), "");
}

TEST_F(RVPathTest, TildeWithoutHOMEIsTheHomeOfTheUserDatabase) {
    setEnvironmentVariable("HOME", std::nullopt);
    const passwd* user = getpwuid(getuid());
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(pathByExpandingTilde("~"), user->pw_dir);
    setEnvironmentVariable("HOME", "");
    EXPECT_EQ(pathByExpandingTilde("~"), user->pw_dir);
}

TEST_F(RVPathTest, TildeWithANameIsTheHomeOfThatUser) {
    const passwd* user = getpwuid(getuid());
    ASSERT_NE(user, nullptr);
    const std::string home = user->pw_dir;
    EXPECT_EQ(pathByExpandingTilde("~" + std::string(user->pw_name) + "/a"),
              pathByAppendingComponent(home, "a"));
    EXPECT_EQ(pathByExpandingTilde("~no such user/a"), "~no such user/a");
}

TEST_F(RVPathTest, AppendingJoinsWithOneSlash) {
    EXPECT_EQ(pathByAppendingComponent("a", "b"), "a/b");
    EXPECT_EQ(pathByAppendingComponent("a/", "b"), "a/b");
    EXPECT_EQ(pathByAppendingComponent("a//", "//b/c"), "a/b/c");
    EXPECT_EQ(pathByAppendingComponent("/", "b"), "/b");
    EXPECT_EQ(pathByAppendingComponent("//", "/"), "/");
    EXPECT_EQ(pathByAppendingComponent("", "b"), "b");
    EXPECT_EQ(pathByAppendingComponent("", "/b"), "/b");
    EXPECT_EQ(pathByAppendingComponent("a/", ""), "a/");
    EXPECT_EQ(pathByAppendingComponent("", ""), "");
}

TEST_F(RVPathTest, DeletingTheLastComponentIgnoresSlashesAtTheEnd) {
    EXPECT_EQ(pathByDeletingLastComponent("/a/b"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("/a/b//"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("/a//b"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("/a"), "/");
    EXPECT_EQ(pathByDeletingLastComponent("/"), "/");
    EXPECT_EQ(pathByDeletingLastComponent("//"), "/");
    EXPECT_EQ(pathByDeletingLastComponent("a/b"), "a");
    EXPECT_EQ(pathByDeletingLastComponent("a/"), "");
    EXPECT_EQ(pathByDeletingLastComponent("a"), "");
    EXPECT_EQ(pathByDeletingLastComponent(""), "");
    EXPECT_EQ(pathByDeletingLastComponent("/a/.git\n"), "/a");
}

TEST_F(RVPathTest, LastComponentIgnoresSlashesAtTheEnd) {
    EXPECT_EQ(lastPathComponent("/a/b"), "b");
    EXPECT_EQ(lastPathComponent("/a/b//"), "b");
    EXPECT_EQ(lastPathComponent("b"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

}  // namespace
