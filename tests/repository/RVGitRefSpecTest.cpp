#include "RVGit/repository/RVGitRefSpec.h"

#include <gtest/gtest.h>

#include "RVGit/command/RVGitValues.h"

namespace {

using std::nullopt;

std::string textOf(std::optional<std::string> localRefName,
                   std::optional<std::string> remoteRefName) {
    return RVGitRefSpec(std::move(localRefName), std::move(remoteRefName)).stringValue();
}

}  // namespace

TEST(RVGitRefSpecTest, TextOfEachCombinationOfNames) {
    EXPECT_EQ(textOf(nullopt, nullopt), "");
    EXPECT_EQ(textOf(nullopt, ""), "HEAD:");
    EXPECT_EQ(textOf(nullopt, "b"), "HEAD:b");
    EXPECT_EQ(textOf("", nullopt), "");
    EXPECT_EQ(textOf("", ""), ":");
    EXPECT_EQ(textOf("", "b"), ":b");
    EXPECT_EQ(textOf("a", nullopt), "a");
    EXPECT_EQ(textOf("a", ""), "a");
    EXPECT_EQ(textOf("a", "b"), "a:b");
}

TEST(RVGitRefSpecTest, OnePartIsTheLocalName) {
    auto spec = RVGitRefSpec::refSpecFromString("refs/heads/main");
    EXPECT_EQ(spec->localRefName(), "refs/heads/main");
    EXPECT_EQ(spec->remoteRefName(), nullopt);
}

TEST(RVGitRefSpecTest, TwoPartsAreTheLocalAndTheRemoteName) {
    auto spec = RVGitRefSpec::refSpecFromString("main:refs/heads/next");
    EXPECT_EQ(spec->localRefName(), "main");
    EXPECT_EQ(spec->remoteRefName(), "refs/heads/next");
    EXPECT_EQ(spec->stringValue(), "main:refs/heads/next");
}

TEST(RVGitRefSpecTest, EmptyPartsArePresent) {
    auto spec = RVGitRefSpec::refSpecFromString(":");
    EXPECT_EQ(spec->localRefName(), "");
    EXPECT_EQ(spec->remoteRefName(), "");

    spec = RVGitRefSpec::refSpecFromString("");
    EXPECT_EQ(spec->localRefName(), "");
    EXPECT_EQ(spec->remoteRefName(), nullopt);
}

TEST(RVGitRefSpecTest, TwoColonsGiveASpecWithoutNames) {
    auto spec = RVGitRefSpec::refSpecFromString("a:b:c");
    EXPECT_EQ(spec->localRefName(), nullopt);
    EXPECT_EQ(spec->remoteRefName(), nullopt);
    EXPECT_EQ(spec->stringValue(), "");
}

TEST(RVGitRefSpecTest, MatchingRefsIsAColon) {
    EXPECT_EQ(RVGitRefSpec::matchingRefsRefSpec()->stringValue(), ":");
}

TEST(RVGitRefSpecTest, DeletionHasAnEmptyLocalName) {
    auto spec = RVGitRefSpec::deleteRefSpecWithRemoteRefName("refs/heads/old");
    EXPECT_EQ(spec->localRefName(), "");
    EXPECT_EQ(spec->remoteRefName(), "refs/heads/old");
    EXPECT_EQ(spec->stringValue(), ":refs/heads/old");
}

TEST(RVGitRefSpecTest, FactoriesKeepTheNames) {
    EXPECT_EQ(RVGitRefSpec::refSpecWithLocalRefName("a")->stringValue(), "a");
    EXPECT_EQ(RVGitRefSpec::refSpecWithLocalRefName("a", "b")->stringValue(), "a:b");
    EXPECT_EQ(RVGitRefSpec::refSpecWithLocalRefName("a", "")->stringValue(), "a");
    EXPECT_EQ(RVGitMakeRefSpec("a", "b")->stringValue(), "a:b");
    EXPECT_EQ(RVGitMakeRefSpec(nullopt, "b")->stringValue(), "HEAD:b");
}

TEST(RVGitRefSpecTest, ACopyChangesByItself) {
    RVGitRefSpec spec("a", "b");
    RVGitRefSpec copy = spec;
    copy.setLocalRefName("c");
    copy.setRemoteRefName(nullopt);
    EXPECT_EQ(copy.stringValue(), "c");
    EXPECT_EQ(spec.stringValue(), "a:b");
}

TEST(RVGitRefSpecTest, DescriptionIsTheText) {
    EXPECT_EQ(RVGitRefSpec("a", "b").description(), "a:b");
}
