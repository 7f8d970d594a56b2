#include "tests/support/RVGitTestCase.h"

#include <gtest/gtest-spi.h>

#include <cstdlib>
#include <stdexcept>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class RVGitTestCaseTest : public RVGitTestCase {};

TEST_F(RVGitTestCaseTest, OnlyTheAllowListAndTheFixedVariablesAreInTheEnvironment) {
    EXPECT_EQ(std::getenv("GIT_DIR"), nullptr);
    EXPECT_EQ(std::getenv("GIT_EDITOR"), nullptr);
    EXPECT_EQ(std::getenv("LANGUAGE"), nullptr);
    EXPECT_EQ(std::getenv("LANG"), nullptr);
    EXPECT_STREQ(std::getenv("TZ"), "UTC");
    EXPECT_EQ(gitLine({"config", "--global", "user.name"}), "Marie Curie");
    EXPECT_EQ(gitLine({"config", "user.name"}), "Marie Curie");
    EXPECT_EQ(runGit({"config", "--system", "--list"}).standardOutput, "");
}

TEST_F(RVGitTestCaseTest, CommitsHaveTheFixedIdentityAndTheDatesOfTheTest) {
    const std::string repository = initRepository();
    const std::string first = commitFile(repository, "a b/[c]", "1\n", "First\n\nBody\n");
    EXPECT_EQ(git({"log", "-1", "--format=%H|%an|%ce|%at|%ct|%B"}, repository),
              first + "|Marie Curie|marie@example.org|1577934245|1577934245|First\n\nBody\n\n");
    setDates("2021-01-01T00:00:00Z", "2022-01-01T00:00:00Z");
    commitFile(repository, "a b/[c]", "2\n", "Second");
    EXPECT_EQ(gitLine({"log", "-1", "--format=%at %ct"}, repository), "1609459200 1640995200");
    EXPECT_EQ(gitLine({"symbolic-ref", "HEAD"}, repository), "refs/heads/main");
}

TEST_F(RVGitTestCaseTest, GitGivesTheOutputAndFailsTheTestOnAnotherExitCode) {
    EXPECT_EQ(git({"stripspace"}, {}, "a  \n\n\nb"), "a\n\nb\n");
    EXPECT_NONFATAL_FAILURE((void)git({"rev-parse", "--verify", "nowhere"}), "rev-parse");
    const RVTestProcessResult result = runGit({"rev-parse", "--verify", "nowhere"});
    EXPECT_EQ(result.exitCode, 128);
    EXPECT_THAT(result.standardError, testing::StartsWith("fatal: "));
}

TEST_F(RVGitTestCaseTest, VariablesSetForATestArePutBack) {
    class Inner : public RVGitTestCase {
    public:
        Inner() {
            setEnvironmentVariable("RVGIT_SOME", "1");
            setEnvironmentVariable("RVGIT_SOME", "2");
            setEnvironmentVariable("TZ", std::nullopt);
        }
        void TestBody() override {}
        using RVGitTestCase::scratchDirectory;
    };
    std::string directory;
    {
        const Inner inner;
        directory = inner.scratchDirectory();
        EXPECT_STREQ(std::getenv("RVGIT_SOME"), "2");
        EXPECT_EQ(std::getenv("TZ"), nullptr);
        EXPECT_TRUE(fileExists(directory));
    }
    EXPECT_EQ(std::getenv("RVGIT_SOME"), nullptr);
    EXPECT_STREQ(std::getenv("TZ"), "UTC");
    EXPECT_FALSE(fileExists(directory));
}

TEST_F(RVGitTestCaseTest, WhatATestPutsIntoTheConfigurationIsTakenOut) {
    class Inner : public RVGitTestCase {
    public:
        Inner() {
            git({"config", "--global", "user.name", "Somebody"});
            git({"config", "--global", "some.key", "1"});
            git({"config", "--file", std::getenv("GIT_CONFIG_SYSTEM"), "some.key", "2"});
        }
        void TestBody() override {}
    };
    { const Inner inner; }
    EXPECT_EQ(gitLine({"config", "--global", "user.name"}), "Marie Curie");
    EXPECT_EQ(runGit({"config", "some.key"}).standardOutput, "");
    EXPECT_EQ(readFile(std::getenv("GIT_CONFIG_SYSTEM")), "");
}

TEST_F(RVGitTestCaseTest, TheRecordingGitKeepsTheCallAndHandsItOn) {
    const std::string repository = initRepository();
    setEnvironmentVariable("RVGIT_SOME", "one\ntwo=2");
    const RVRecordingGit recorder = recordingGit();
    const std::string text("a\0b\n", 4);
    RVTestProcessResult result = runProgram(
        {recorder.path(), "hash-object", "-w", "--stdin", "--path", "-e \\n"}, repository, text);
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(git({"cat-file", "blob", result.standardOutput.substr(0, 40)}, repository), text);

    const RVRecordingGit::Invocation invocation = recorder.lastInvocation();
    EXPECT_THAT(invocation.arguments,
                ElementsAre("hash-object", "-w", "--stdin", "--path", "-e \\n"));
    EXPECT_EQ(invocation.standardInput, text);
    EXPECT_EQ(invocation.workingDirectory, repository);
    EXPECT_EQ(invocation.environment.at("RVGIT_SOME"), "one\ntwo=2");
    EXPECT_FALSE(invocation.environment.contains("OLDPWD"));
}

TEST_F(RVGitTestCaseTest, TheRecordingGitTellsNoInputFromEmptyInput) {
    const RVRecordingGit recorder = recordingGit();
    EXPECT_EQ(runProgram({recorder.path(), "hash-object", "--stdin"}).exitCode, 0);
    EXPECT_EQ(runProgram({recorder.path(), "hash-object", "--stdin"}, {}, "").exitCode, 0);
    EXPECT_EQ(runProgram({recorder.path()}).exitCode, 1);
    const auto invocations = recorder.invocations();
    ASSERT_EQ(invocations.size(), 3U);
    EXPECT_EQ(invocations[0].standardInput, std::nullopt);
    EXPECT_EQ(invocations[1].standardInput, "");
    EXPECT_THAT(invocations[2].arguments, IsEmpty());
    recorder.clear();
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
    EXPECT_THROW((void)recorder.lastInvocation(), std::out_of_range);
}

TEST_F(RVGitTestCaseTest, TheFakeGitSaysWhatTheTestSays) {
    RVFakeGit fake = fakeGit("it's fake");
    EXPECT_EQ(runProgram({fake.path(), "--no-pager", "--version"}).standardOutput,
              "git version 2.39.5\n");
    fake.setVersion("git version 1.9");
    const std::string output("raw\0\xff\n", 6);
    fake.setAnswer(
        {.standardOutput = output, .standardError = "fatal: it's so\n", .exitCode = 128});
    fake.setAnswer("log", {.exitCode = 3});
    fake.setAnswer("show", {.standardOutput = "shown"});
    EXPECT_EQ(runProgram({fake.path(), "--version"}).standardOutput, "git version 1.9\n");
    EXPECT_EQ(runProgram({fake.path(), "log", "show"}).exitCode, 3);
    EXPECT_EQ(runProgram({fake.path(), "show"}).standardOutput, "shown");
    const RVTestProcessResult result = runProgram({fake.path(), "status"});
    EXPECT_EQ(result.exitCode, 128);
    EXPECT_EQ(result.standardOutput, output);
    EXPECT_EQ(result.standardError, "fatal: it's so\n");
    fake.passOtherCallsOn();
    EXPECT_EQ(runProgram({fake.path(), "config", "user.name"}).standardOutput, "Marie Curie\n");
}

}  // namespace
