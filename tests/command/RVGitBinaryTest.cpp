#include "RVGit/command/RVGitBinary.h"

#include <filesystem>

#include "RVGit/command/RVGitCommand.h"
#include "tests/support/RVGitTestCase.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;
using testing::StartsWith;

namespace {

class RVGitBinaryTest : public RVGitTestCase {
protected:
    std::shared_ptr<RVGitBinary> binaryWithVersion(std::string_view version) {
        RVFakeGit fake = fakeGit();
        fake.setVersion(version);
        return RVGitBinary::gitBinaryWithPath(fake.path());
    }
};

TEST_F(RVGitBinaryTest, TheInstalledGitIsValid) {
    RVGitBinary binary(gitPath());
    EXPECT_TRUE(binary.isValid());
    EXPECT_EQ(binary.path(), gitPath());
    EXPECT_EQ("git version " + binary.version().value_or(""), gitLine({"--version"}));
    EXPECT_TRUE(RVGitBinary::isGitBinaryAtPath(gitPath()));
    EXPECT_THAT(binary.additionalPaths(), IsEmpty());
    EXPECT_THAT(binary.defaultOptions(), IsEmpty());
}

TEST_F(RVGitBinaryTest, AsksForTheVersionWithAPlainCommand) {
    const RVRecordingGit recorder = recordingGit();
    RVGitBinary binary(recorder.path());
    EXPECT_THAT(recorder.argumentLists(), ElementsAre(ElementsAre("--no-pager", "--version")));
}

TEST_F(RVGitBinaryTest, ARelativePathIsThatOfThisProcessAndNotOfTheRepository) {
    const std::string repository = initRepository();
    const std::string planted = "#!/bin/sh\n: > " + scratchPath("planted") + "\n";
    for (const char* name : {"git", "bin/git", "bin/ssh", "exec/git-status"})
        writeFile("repository/" + std::string(name), planted, 0755);
    for (const char* name : {"git", "bin/git"})
        writeFile(name,
                  "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5;; "
                  "*) echo \"$*\"; echo \"$PATH\"; ssh 2>/dev/null; exit 0;; esac\n",
                  0755);
    makeDirectory("exec");
    const std::string before = std::filesystem::current_path();
    for (const char* path : {"git", "./git", "bin/git", "bin/../git"}) {
        std::filesystem::current_path(scratchDirectory());
        const auto binary = RVGitBinary::gitBinaryWithPath(path, "exec");
        binary->setAdditionalPaths({"tools", "/usr/tools"});
        // Where the process goes afterwards is of no account.
        std::filesystem::current_path(repository);
        EXPECT_EQ(binary->path(), path);
        EXPECT_EQ(binary->libexecPath(), "exec");
        EXPECT_TRUE(binary->isValid());
        const auto command = RVGitCommand::gitCommandWithGitBinary(binary, repository);
        command->setValueForEnvironmentVariable("/usr/bin:/bin", "PATH");
        command->setGitCommand("status");
        EXPECT_TRUE(command->run());
        std::filesystem::current_path(before);
        EXPECT_TRUE(command->launchPath().starts_with(scratchDirectory() + "/"));
        const std::string output = command->standardOutputString();
        EXPECT_THAT(output, StartsWith("--exec-path=" + scratchPath("exec") + " --no-pager"));
        EXPECT_THAT(output, testing::HasSubstr("\n" + scratchPath("tools") +
                                               ":/usr/tools:" + scratchDirectory()));
        EXPECT_FALSE(fileExists("planted"));
    }
    EXPECT_EQ(RVGitBinary("").launchPath(), "");
}

TEST_F(RVGitBinaryTest, DerivesTheDirectoriesOfAnExecDirectory) {
    RVGitBinary binary(gitPath(), "/usr/libexec/git-core");
    EXPECT_THAT(binary.libexecPath(), Optional(Eq("/usr/libexec/git-core")));
    EXPECT_THAT(binary.perlLibraryPath(), Optional(Eq("/usr/lib/perl5/site_perl")));
    EXPECT_THAT(binary.templatesDirectoryPath(), Optional(Eq("/usr/share/git-core/templates")));
}

TEST_F(RVGitBinaryTest, TheVersionIsAskedForWithTheExecDirectory) {
    const RVRecordingGit recorder = recordingGit();
    auto binary = RVGitBinary::gitBinaryWithPath(recorder.path(), "/usr/libexec/git-core");
    const auto invocation = recorder.lastInvocation();
    EXPECT_THAT(invocation.arguments,
                ElementsAre("--exec-path=/usr/libexec/git-core", "--no-pager", "--version"));
    EXPECT_THAT(invocation.environment,
                Contains(Pair("PERL5LIB", "/usr/lib/perl5/site_perl:$PERL5LIB")));
    EXPECT_THAT(invocation.environment,
                Contains(Pair("GIT_TEMPLATE_DIR", "/usr/share/git-core/templates")));
}

TEST_F(RVGitBinaryTest, WithoutAnExecDirectoryNothingIsDerived) {
    RVGitBinary binary(gitPath());
    EXPECT_EQ(binary.libexecPath(), std::nullopt);
    EXPECT_EQ(binary.perlLibraryPath(), std::nullopt);
    EXPECT_EQ(binary.templatesDirectoryPath(), std::nullopt);
}

TEST_F(RVGitBinaryTest, VersionsBelowTheMinimumAreNotValid) {
    EXPECT_EQ(RVGitBinary::minimumVersionRequirement(), "2.1.0");
    EXPECT_TRUE(binaryWithVersion("git version 2.1.0")->isValid());
    EXPECT_TRUE(binaryWithVersion("git version 2.10")->isValid());
    auto old = binaryWithVersion("git version 2.0.5");
    EXPECT_FALSE(old->isValid());
    EXPECT_THAT(old->version(), Optional(Eq("2.0.5")));
    EXPECT_FALSE(binaryWithVersion("git version 1.9.5")->isValid());
}

TEST_F(RVGitBinaryTest, AVersionKeepsItsSuffixAndIsComparedByItsNumbers) {
    auto binary = binaryWithVersion("git version 2.39.5 (Vendor Git-154)\n");
    EXPECT_THAT(binary->version(), Optional(Eq("2.39.5 (Vendor Git-154)")));
    EXPECT_TRUE(binary->isValid());
    EXPECT_TRUE(binaryWithVersion("git version 2.1.0.windows.1")->isValid());
    EXPECT_FALSE(binaryWithVersion("git version 2.0.9.rc2")->isValid());
}

TEST_F(RVGitBinaryTest, EveryOccurrenceOfTheWordsIsRemoved) {
    EXPECT_THAT(binaryWithVersion("git version git version 2.3 \t")->version(),
                Optional(Eq("2.3")));
}

TEST_F(RVGitBinaryTest, OutputThatDoesNotBeginWithTheWordsIsNoVersion) {
    auto binary = binaryWithVersion("hub version 2.39.5\ngit version 2.39.5");
    EXPECT_EQ(binary->version(), std::nullopt);
    EXPECT_FALSE(binary->isValid());
}

TEST_F(RVGitBinaryTest, AProbeThatFailsLeavesTheVersionUnknown) {
    RVFakeGit fake = fakeGit();
    fake.setVersionAnswer({.standardOutput = "git version 2.39.5\n", .exitCode = 1});
    RVGitBinary binary(fake.path());
    EXPECT_EQ(binary.version(), std::nullopt);
    EXPECT_FALSE(binary.isValid());
    EXPECT_FALSE(RVGitBinary::isGitBinaryAtPath(fake.path()));
}

TEST_F(RVGitBinaryTest, TheVersionCanBeAskedForAgain) {
    RVFakeGit fake = fakeGit();
    RVGitBinary binary(fake.path());
    fake.setVersion("git version 2.50.0");
    EXPECT_THAT(binary.gitBinaryVersion(), Optional(Eq("2.50.0")));
    EXPECT_THAT(binary.version(), Optional(Eq("2.39.5")));
}

TEST_F(RVGitBinaryTest, WhatIsNoExecutableFileIsNotRun) {
    const std::string noRunBit = writeFile("git", "#!/bin/sh\necho git version 2.39.5\n", 0644);
    for (const std::string& path : {noRunBit, scratchDirectory(), scratchPath("missing")}) {
        RVGitBinary binary(path);
        EXPECT_EQ(binary.version(), std::nullopt) << path;
        EXPECT_FALSE(binary.isValid()) << path;
        EXPECT_FALSE(RVGitBinary::isGitBinaryAtPath(path)) << path;
    }
}

TEST_F(RVGitBinaryTest, AGateNeedsAKnownVersionThatIsNotBelowIt) {
    auto binary = binaryWithVersion("git version 2.18.0");
    EXPECT_TRUE(binary->isVersionAtLeast("2.18.0"));
    EXPECT_TRUE(binary->isVersionAtLeast("2.9"));
    EXPECT_FALSE(binary->isVersionAtLeast("2.23.0"));
    EXPECT_FALSE(RVGitBinary(scratchPath("missing")).isVersionAtLeast("0"));
}

TEST_F(RVGitBinaryTest, TheDefaultIsWhatWasSetLast) {
    auto before = RVGitBinary::defaultGitBinary();
    auto binary = RVGitBinary::gitBinaryWithPath(gitPath());
    RVGitBinary::setDefaultGitBinary(binary);
    EXPECT_EQ(RVGitBinary::defaultGitBinary(), binary);
    EXPECT_EQ(RVGitCommand::gitCommandWithRepositoryPath(scratchDirectory())->gitBinary(), binary);
    RVGitBinary::setDefaultGitBinary(before);
    EXPECT_EQ(RVGitBinary::defaultGitBinary(), before);
}

TEST_F(RVGitBinaryTest, AdditionalPathsAndDefaultOptionsReachEveryCommand) {
    const RVRecordingGit recorder = recordingGit();
    auto binary = RVGitBinary::gitBinaryWithPath(recorder.path());
    binary->setAdditionalPaths({"/one", "/two"});
    binary->setDefaultOptions({"-c", "a.b=c"});
    auto command = RVGitCommand::gitCommandWithGitBinary(binary);
    command->addGitOption("--bare");
    command->setGitCommand("version");
    ASSERT_TRUE(command->run());
    const auto invocation = recorder.lastInvocation();
    EXPECT_THAT(invocation.arguments,
                ElementsAre("--no-pager", "--bare", "-c", "a.b=c", "version"));
    EXPECT_THAT(invocation.environment, Contains(Pair("PATH", StartsWith("/one:/two:"))));
}

}  // namespace
