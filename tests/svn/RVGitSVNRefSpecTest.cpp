#include "RVGit/svn/RVGitSVNRefSpec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(RVGitSVNRefSpecTest, IsReadFromItsTextAndWrittenAgain) {
    const auto spec = RVGitSVNRefSpec::SVNRefSpecFromString("a b/trunk:refs/remotes/svn/\u00e9");
    EXPECT_EQ(spec->remotePath(), "a b/trunk");
    EXPECT_EQ(spec->localRefName(), "refs/remotes/svn/\u00e9");
    EXPECT_EQ(spec->stringValue(), "a b/trunk:refs/remotes/svn/\u00e9");
    EXPECT_EQ(spec->description(), spec->stringValue());
}

TEST(RVGitSVNRefSpecTest, TheFirstAndTheLastPartCount) {
    const auto none = RVGitSVNRefSpec::SVNRefSpecFromString("trunk");
    EXPECT_EQ(none->remotePath(), "trunk");
    EXPECT_EQ(none->localRefName(), "trunk");
    const auto more = RVGitSVNRefSpec::SVNRefSpecFromString("a:b:c");
    EXPECT_EQ(more->remotePath(), "a");
    EXPECT_EQ(more->localRefName(), "c");
    const auto start = RVGitSVNRefSpec::SVNRefSpecFromString(":refs/remotes/git-svn");
    EXPECT_EQ(start->remotePath(), "");
    EXPECT_EQ(start->localRefName(), "refs/remotes/git-svn");
    const auto end = RVGitSVNRefSpec::SVNRefSpecFromString("a:");
    EXPECT_EQ(end->remotePath(), "a");
    EXPECT_EQ(end->localRefName(), "");
    const auto empty = RVGitSVNRefSpec::SVNRefSpecFromString("");
    EXPECT_EQ(empty->remotePath(), "");
    EXPECT_EQ(empty->localRefName(), "");
}

TEST(RVGitSVNRefSpecTest, AnAbsentFieldIsLeftOut) {
    EXPECT_EQ(RVGitSVNRefSpec::SVNRefSpecWithRemotePath(std::nullopt, "b")->stringValue(), ":b");
    EXPECT_EQ(RVGitSVNRefSpec::SVNRefSpecWithRemotePath("a", std::nullopt)->stringValue(), "a:");
    EXPECT_EQ(RVGitSVNRefSpec(std::nullopt, std::nullopt).stringValue(), ":");
}

TEST(RVGitSVNRefSpecTest, ACopyIsIndependent) {
    const RVGitSVNRefSpec spec("a", "b");
    RVGitSVNRefSpec copy = spec;
    copy.setRemotePath("c");
    copy.setLocalRefName("d");
    EXPECT_EQ(spec.stringValue(), "a:b");
    EXPECT_EQ(copy.stringValue(), "c:d");
}

}  // namespace
