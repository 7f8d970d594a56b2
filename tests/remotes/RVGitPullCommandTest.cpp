#include "RVGit/remotes/RVGitPullCommand.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

using Command = RVGitPullCommand;

class RVGitPullCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitRemote> remoteNamed(const std::string& name,
                                             const std::optional<std::string>& url = std::nullopt) {
        return RVGitRemote::remoteWithRepository(repository(), name, url, std::nullopt, {});
    }
    std::shared_ptr<Command> pull(const std::optional<RVOptions>& options = {},
                                  const std::string& refSpec = "main") {
        return Command::gitPullCommandWithRepository(
            repository(), remoteNamed("origin"), RVGitRefSpec::refSpecFromString(refSpec), options);
    }
    /// A remote "origin" whose first commit this repository has, too.
    void addOrigin() {
        origin_ = initRepository("origin");
        commitFile(origin_, "file.txt", "one\n", "First");
        gitInRepository({"pull", origin_, "main"});
        gitInRepository({"remote", "add", "origin", origin_});
        // New gits would make another ref of it.
        gitInRepository({"config", "remote.origin.followRemoteHEAD", "never"});
    }
    void commitThere(const std::string& file, const std::string& contents) {
        commitFile(origin_, file, contents, "There");
    }
    void commitHere(const std::string& file, const std::string& contents) {
        commitFile(repositoryPath(), file, contents, "Here");
    }
    [[nodiscard]] std::string subjects() const {
        return gitInRepository({"log", "--topo-order", "--format=%s"});
    }
    std::string origin_;
};

class RVGitPullCommandLineTest : public RVGitPullCommandTest {
protected:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitPullCommandLineTest, WithoutARemoteItIsThisRepository) {
    const auto command =
        Command::gitPullCommandWithRepository(repository(), nullptr, nullptr, std::nullopt);
    EXPECT_EQ(command->remoteName(), ".");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "."));
}

TEST_F(RVGitPullCommandLineTest, ARemoteAndASpec) {
    EXPECT_THAT(argumentsOf(recorder_, *pull({}, "x:y")),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "origin", "x:y"));
}

TEST_F(RVGitPullCommandLineTest, EachOption) {
    EXPECT_THAT(argumentsOf(recorder_, *pull(RVOptions{{"rebase", true}})),
                ElementsAre("pull", "-v", "--progress", "--rebase", "origin", "main"));
    EXPECT_THAT(argumentsOf(recorder_, *pull(RVOptions{{"preserveMergeCommits", true}})),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "-p", "origin", "main"));
    EXPECT_THAT(
        argumentsOf(recorder_, *pull(RVOptions{{"noVerify", true}})),
        ElementsAre("pull", "-v", "--progress", "--no-verify", "--no-rebase", "origin", "main"));
    EXPECT_THAT(argumentsOf(recorder_, *pull(RVOptions{{"rebase", false},
                                                       {"preserveMergeCommits", false},
                                                       {"noVerify", false}})),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "origin", "main"));
}

TEST_F(RVGitPullCommandLineTest, Signatures) {
    const auto command = pull();
    command->setAllowedSignersFile("/a b");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "origin", "main"));
    const auto verifying = pull();
    verifying->setVerifiesSignatures(true);
    EXPECT_THAT(argumentsOf(recorder_, *verifying),
                ElementsAre("pull", "-v", "--progress", "--no-rebase", "--verify-signatures",
                            "origin", "main"));
}

TEST_F(RVGitPullCommandLineTest, AllOptionsInTheirOrder) {
    const auto command = pull();
    command->setAllowedSignersFile("/a b");
    command->setVerifiesSignatures(true);
    command->setPreservesMergeCommits(true);
    command->setUsesRebase(true);
    command->setNoVerify(true);
    EXPECT_THAT(
        argumentsOf(recorder_, *command),
        ElementsAre("-c", "gpg.ssh.allowedSignersFile=/a b", "pull", "-v", "--progress",
                    "--no-verify", "--rebase", "-p", "--verify-signatures", "origin", "main"));
}

TEST_F(RVGitPullCommandLineTest, WhatLooksLikeAnOptionIsRefused) {
    const std::string hostile = "--upload-pack=touch hit";
    EXPECT_EQ(errorOf(*Command::gitPullCommandWithRepository(repository(), remoteNamed(hostile),
                                                             nullptr, std::nullopt))
                  .code(),
              RVGitRVGitGenericError);
    EXPECT_THAT(pull({}, hostile), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

TEST_F(RVGitPullCommandTest, SupportsProgress) {
    EXPECT_TRUE(pull()->isSupportingProgressOutput());
}

TEST_F(RVGitPullCommandTest, AFailureTellsTheRemoteTheSpecAndTheFetchURL) {
    const auto info = errorOf(*Command::gitPullCommandWithRepository(
                                  repository(), remoteNamed("none", "down"),
                                  RVGitRefSpec::refSpecFromString("x:y"), std::nullopt))
                          .userInfo();
    EXPECT_EQ(info.at(RVGitRemoteNameErrorKey), "none");
    EXPECT_EQ(info.at(RVGitRefSpecErrorKey), "x:y");
    EXPECT_EQ(info.at(RVGitRemoteURLErrorKey), "down");
    const auto other = errorOf(*Command::gitPullCommandWithRepository(
                                   repository(), remoteNamed("none"), nullptr, std::nullopt))
                           .userInfo();
    EXPECT_THAT(other, Not(Contains(Key(RVGitRefSpecErrorKey))));
    EXPECT_THAT(other, Not(Contains(Key(RVGitRemoteURLErrorKey))));
}

TEST_F(RVGitPullCommandTest, FastForwards) {
    addOrigin();
    commitThere("file.txt", "two\n");
    ASSERT_TRUE(pull()->run());
    EXPECT_EQ(subjects(), "There\nFirst");
    EXPECT_EQ(readFile("repository/file.txt"), "two\n");
}

TEST_F(RVGitPullCommandTest, MergesOrRebases) {
    addOrigin();
    commitThere("there", "1");
    commitHere("here", "1");
    gitInRepository({"branch", "before"});
    ASSERT_TRUE(pull()->run());
    EXPECT_EQ(
        gitInRepository({"log", "-1", "--format=%P"}),
        gitInRepository({"rev-parse", "before"}) + " " + gitLine({"rev-parse", "main"}, origin_));
    gitInRepository({"reset", "--hard", "before"});
    ASSERT_TRUE(pull(RVOptions{{RVGitPullOptionRebase, true}})->run());
    EXPECT_EQ(subjects(), "Here\nThere\nFirst");
}

TEST_F(RVGitPullCommandTest, NoEditorIsOpenedWhateverIsInherited) {
    addOrigin();
    commitThere("there", "1");
    commitHere("here", "1");
    setEnvironmentVariable("GIT_MERGE_AUTOEDIT", "yes");
    setEnvironmentVariable("GIT_EDITOR", "touch " + scratchPath("edited"));
    ASSERT_TRUE(pull()->run());
    EXPECT_FALSE(fileExists("edited"));
}

TEST_F(RVGitPullCommandTest, ConflictsFailWith2000OrWith2200) {
    addOrigin();
    commitThere("file.txt", "there\n");
    commitHere("file.txt", "here\n");
    EXPECT_THAT(pull(), failsWith(RVGitMergeConflictsError));
    EXPECT_TRUE(fileExists("repository/.git/MERGE_HEAD"));
    EXPECT_THAT(pull(), failsWith(1));
    gitInRepository({"merge", "--abort"});
    EXPECT_THAT(pull(RVOptions{{RVGitPullOptionRebase, true}}),
                failsWith(RVGitRebaseConflictsError));
    EXPECT_TRUE(fileExists("repository/.git/rebase-merge") ||
                fileExists("repository/.git/rebase-apply"));
}

TEST_F(RVGitPullCommandTest, LocalChangesInTheWayFailWith2001) {
    addOrigin();
    commitThere("file.txt", "two\n");
    writeFile("repository/file.txt", "mine\n");
    EXPECT_THAT(pull(), failsWith(RVGitMergeUncommittedChangesError));
    EXPECT_EQ(readFile("repository/file.txt"), "mine\n");
}

TEST_F(RVGitPullCommandTest, EveryRowOfMergeAndRebaseThatNamesPull) {
    RVFakeGit fake = useFakeGit();
    const auto codeFor = [&](const RVFakeGit::Answer& answer) {
        fake.setAnswer(answer);
        return errorOf(*pull()).code();
    };
    for (const int exitCode : {1, 128}) {
        EXPECT_EQ(
            codeFor({.standardOutput = "Automatic merge failed; fix\n", .exitCode = exitCode}),
            RVGitMergeConflictsError);
        EXPECT_EQ(codeFor({.standardOutput = "When you have resolved this problem\n",
                           .exitCode = exitCode}),
                  RVGitRebaseConflictsError);
        EXPECT_EQ(codeFor({.standardError = "error: could not apply 1a2b\n", .exitCode = exitCode}),
                  RVGitRebaseConflictsError);
        // The rows of both tables match; the higher code wins.
        EXPECT_EQ(codeFor({.standardError = "Failed to merge in\n", .exitCode = exitCode}),
                  RVGitRebaseConflictsError);
    }
    EXPECT_EQ(codeFor({.standardError = "error: Your local changes to the following files would be "
                                        "overwritten by merge:\n",
                       .exitCode = 1}),
              RVGitMergeUncommittedChangesError);
    EXPECT_EQ(codeFor({.standardError = "error: Merging is not possible because you have unmerged "
                                        "files.\n",
                       .exitCode = 1}),
              RVGitMergeUnmergedChangesError);
    EXPECT_EQ(codeFor({.standardOutput = "You have unstaged changes.\n", .exitCode = 1}),
              RVGitRebaseUncommittedChangesError);
    EXPECT_EQ(codeFor({.standardOutput = "You must edit all merge conflicts\n", .exitCode = 1}),
              RVGitRebaseUnmergedChangesError);
    // Rows that name rebase alone do not match.
    EXPECT_EQ(codeFor({.standardError = "Your index contains uncommitted changes", .exitCode = 1}),
              RVGitRemoteSyncError);
    EXPECT_EQ(codeFor({.standardError = "There are no candidates for merging among the refs that "
                                        "you just fetched.\n",
                       .exitCode = 1}),
              RVGitNoDefaultMergeBranchError);
    EXPECT_EQ(codeFor({.exitCode = 1}), RVGitRemoteSyncError);
}

TEST_F(RVGitPullCommandTest, WithoutABranchToMergeFailsWith2005) {
    addOrigin();
    EXPECT_EQ(errorOf(*Command::gitPullCommandWithRepository(repository(), remoteNamed("origin"),
                                                             nullptr, std::nullopt))
                  .code(),
              RVGitNoDefaultMergeBranchError);
}

TEST_F(RVGitPullCommandTest, NoVerifyLeavesOutTheHooks) {
    RVGIT_TEST_NEEDS_GIT("2.24", "it has no such hook");
    addOrigin();
    commitThere("there", "1");
    commitHere("here", "1");
    writeFile("repository/.git/hooks/pre-merge-commit", "#!/bin/sh\nexit 1\n", 0755);
    EXPECT_THAT(pull(), failsWith(RVGitRemoteSyncError));
    gitInRepository({"merge", "--abort"});
    ASSERT_TRUE(pull(RVOptions{{RVGitPullOptionNoVerify, true}})->run());
}

TEST_F(RVGitPullCommandTest, PreservingMergeCommitsPrunesAndPreservesNothing) {
    addOrigin();
    git({"branch", "old"}, origin_);
    gitInRepository({"fetch", "origin"});
    git({"branch", "-D", "old"}, origin_);
    gitInRepository({"branch", "--set-upstream-to=origin/main"});
    ASSERT_TRUE(Command::gitPullCommandWithRepository(
                    repository(), remoteNamed("origin"), nullptr,
                    RVOptions{{RVGitPullOptionPreserveMergeCommits, true}})
                    ->run());
    EXPECT_EQ(gitInRepository({"for-each-ref", "--format=%(refname)", "refs/remotes"}),
              "refs/remotes/origin/main");
}

TEST_F(RVGitPullCommandTest, AMissingSignatureFailsWith109) {
    addOrigin();
    commitThere("file.txt", "two\n");
    const auto command = pull();
    command->setVerifiesSignatures(true);
    EXPECT_THAT(command, failsWith(RVGitGPGSignatureMissingError));
    EXPECT_EQ(subjects(), "First");
}

}  // namespace
