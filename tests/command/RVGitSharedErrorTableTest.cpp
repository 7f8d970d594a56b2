#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitTestCase.h"

using testing::Eq;
using testing::HasSubstr;
using testing::Optional;

namespace {

/// The rows that apply to every command, as a failed command finds them.
class RVGitSharedErrorTableTest : public RVGitTestCase {
protected:
    /// The code of what the fake git says; 0 for a success.
    std::int64_t codeForAnswer(const std::string& verb, RVFakeGit::Answer answer) const {
        RVFakeGit fake = fakeGit();
        fake.setAnswer(std::move(answer));
        auto command =
            RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        command->setGitCommand(verb);
        std::optional<RVError> error;
        return command->run(&error) ? 0 : error.value().code();
    }

    /// The code with which the real git fails; 0 for a success.
    std::int64_t codeForGit(const std::vector<std::string>& words, const std::string& directory) {
        auto command = RVGitCommand::gitCommandWithGitBinary(
            RVGitBinary::gitBinaryWithPath(gitPath()), directory);
        command->addGitCommandArguments(words);
        std::optional<RVError> error;
        if (command->run(&error))
            return 0;
        lastError_ = error.value().userInfoString(RVGitCommandErrorOutputErrorKey).value_or("");
        return error.value().code();
    }

    /// A program that git takes for gpg, which signs nothing and says the status of every
    /// signature.
    std::string signatureProgram(const std::string& status) const {
        return writeFile("gpg", "#!/bin/sh\ncat >/dev/null\nprintf '" + status + "'\n", 0755);
    }

    std::string lastError_;
};

struct Case {
    std::int64_t code;
    std::string verb;
    RVFakeGit::Answer answer;
};

TEST_F(RVGitSharedErrorTableTest, EveryRowIsFoundByEachOfItsPatterns) {
    const std::vector<Case> cases = {
        {10, "any", {.standardError = "usage: git any\n", .exitCode = 129}},
        {10, "any", {.standardOutput = "usage: git any\n", .exitCode = 1}},
        {1000, "any", {.standardError = "fatal: bad config value for 'a.b'\n", .exitCode = 128}},
        {1000,
         "any",
         {.standardError = "fatal: bad numeric config value 'x' for 'a.b'\n", .exitCode = 128}},
        {108, "any", {.standardError = "error: gpg failed to sign the data\n", .exitCode = 128}},
        {111, "any", {.standardError = "fatal: cannot run gpg: gone\n", .exitCode = 128}},
        {111, "any", {.standardError = "x: No such file or directory\n", .exitCode = 128}},
        {109,
         "any",
         {.standardError = "fatal: Commit 1 does not have a GPG signature.\n", .exitCode = 128}},
        {110,
         "any",
         {.standardError = "fatal: Commit 1 has an untrusted GPG signature\n", .exitCode = 128}},
        {105, "any", {.standardError = "fatal: bad default revision 'HEAD'\n", .exitCode = 128}},
        {107,
         "any",
         {.standardError = "fatal: your current branch 'main' does not have any commits yet\n",
          .exitCode = 128}},
        {106,
         "any",
         {.standardError = "checkout -f x: command returned error: 1\n", .exitCode = 1}},
        {201, "pull", {.exitCode = 1}},
        {201, "push", {.exitCode = 1}},
        {203,
         "any",
         {.standardError = "fatal: 'x' does not appear to be a git repository\n", .exitCode = 128}},
        {203, "any", {.standardError = "fatal: repository 'x' not found\n", .exitCode = 128}},
        {203, "any", {.standardError = "Could not find Repository x\n", .exitCode = 128}},
        {204, "any", {.standardError = "errno=Connection refused\n", .exitCode = 128}},
        {204, "any", {.standardError = "ssh: Operation timed out\n", .exitCode = 128}},
        {202, "any", {.standardError = "Too many authentication failures\n", .exitCode = 128}},
        {202, "any", {.standardError = "fatal: Authentication failed for 'x'\n", .exitCode = 128}},
        {202, "any", {.standardError = "Permission denied (publickey).\n", .exitCode = 128}},
        {202, "any", {.standardError = "fatal: HTTP request failed\n", .exitCode = 128}},
        {202, "any", {.standardError = "fatal: unable to access 'x': gone\n", .exitCode = 128}},
        {104, "any", {.standardError = "error: some refs could not be read\n", .exitCode = 255}},
        {102,
         "any",
         {.standardError = "fatal: this operation must be run in a work tree\n", .exitCode = 128}},
        {102,
         "any",
         {.standardError = "fatal: x cannot be used without a working tree.\n", .exitCode = 1}},
        {100, "any", {.standardError = "fatal: not a git repository: x\n", .exitCode = 128}},
        {200,
         "any",
         {.standardError = "fatal: could not read Username: Device not configured\n",
          .exitCode = 128}},
        {103,
         "any",
         {.standardError = "fatal: Unable to create '/x/index.lock': File exists.\n",
          .exitCode = 128}},
        {103,
         "any",
         {.standardError = "fatal: Unable to create '/x/index.lock': File exists.\n",
          .exitCode = 7}},
        {2005, "any", {.standardError = "you must specify a branch\n", .exitCode = 1}},
        {2005,
         "any",
         {.standardError = "There are no candidates for merging among the refs that you just "
                           "fetched.\n",
          .exitCode = 1}},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(codeForAnswer(row.verb, row.answer), row.code)
            << row.verb << ": " << row.answer.standardError << row.answer.standardOutput;
    }
}

TEST_F(RVGitSharedErrorTableTest, EveryRowNeedsItsExitCode) {
    for (const char* text :
         {"usage: git any\n", "fatal: bad config value\n", "error: gpg failed to sign the data\n",
          "No such file or directory\n", "x does not have a GPG signature\n",
          "x has an untrusted GPG signature\n", "bad default revision\n",
          "fatal: your current branch 'main' does not have any commits yet\n",
          "checkout x: command returned error: 1\n", "repository not found\n",
          "Connection refused\n", "Permission denied\n", "error: some refs could not be read\n",
          "fatal: this operation must be run in a work tree\n",
          "x cannot be used without a working tree\n", "fatal: not a git repository\n",
          "Device not configured\n", "you must specify a branch\n"})
        EXPECT_EQ(codeForAnswer("any", {.standardError = text, .exitCode = 2}), 1) << text;
}

TEST_F(RVGitSharedErrorTableTest, AFailedPullIsASynchronizationErrorAndAFailedFetchIsNot) {
    EXPECT_EQ(codeForAnswer("pull", {.exitCode = 1}), RVGitRemoteSyncError);
    EXPECT_EQ(codeForAnswer("fetch", {.exitCode = 1}), RVGitRVGitGenericError);
}

TEST_F(RVGitSharedErrorTableTest, PatternsIgnoreCase) {
    EXPECT_EQ(
        codeForAnswer("any", {.standardError = "FATAL: NOT A GIT REPOSITORY\n", .exitCode = 128}),
        RVGitNoGitRepoError);
}

TEST_F(RVGitSharedErrorTableTest, AUsageTextWithExitCode1CountsOnStandardOutputOnly) {
    EXPECT_EQ(codeForAnswer("any", {.standardError = "Usage: x\n", .exitCode = 1}),
              RVGitRVGitGenericError);
    EXPECT_EQ(codeForAnswer("any", {.standardOutput = "Usage: x\n", .exitCode = 1}),
              RVGitCommandUsageError);
    EXPECT_EQ(codeForAnswer("any", {.standardOutput = "error\nUsage: x\n", .exitCode = 1}),
              RVGitRVGitGenericError);
}

TEST_F(RVGitSharedErrorTableTest, TheHigherCodeOfTwoThatMatchWins) {
    EXPECT_EQ(codeForAnswer("any", {.standardError = "fatal: unable to access 'x': Connection "
                                                     "refused\n",
                                    .exitCode = 128}),
              RVGitRemoteConnectionError);
    EXPECT_EQ(
        codeForAnswer("pull", {.standardError = "you must specify a branch\n", .exitCode = 1}),
        RVGitNoDefaultMergeBranchError);
}

TEST_F(RVGitSharedErrorTableTest, TheRowWithoutACatalogueEntryHasNoTextsAndCapturesNothing) {
    RVFakeGit fake = fakeGit();
    fake.setAnswer({.standardError = "fatal: your current branch 'main' does not have any commits "
                                     "yet\n",
                    .exitCode = 128});
    auto command =
        RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
    std::optional<RVError> error;
    ASSERT_FALSE(command->run(&error));
    EXPECT_EQ(error->code(), 107);
    EXPECT_EQ(error->localizedDescription(), std::nullopt);
    EXPECT_FALSE(error->userInfo().contains(RVGitRefNameErrorKey));
}

TEST_F(RVGitSharedErrorTableTest, GitPrintsItsUsageAlone) {
    const std::string repository = initRepository();
    EXPECT_EQ(codeForGit({}, repository), RVGitCommandUsageError);
    EXPECT_EQ(codeForGit({"init", "a", "b", "c"}, repository), RVGitCommandUsageError)
        << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitFindsABadNumberInTheConfiguration) {
    const std::string repository = initRepository();
    git({"config", "some.number", "many"}, repository);
    EXPECT_EQ(codeForGit({"config", "--int", "some.number"}, repository), RVGitConfigBadValueError)
        << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitCannotSign) {
    const std::string repository = initRepository();
    git({"config", "gpg.program", "false"}, repository);
    EXPECT_EQ(codeForGit({"commit", "--allow-empty", "--gpg-sign", "--message=x"}, repository),
              RVGitGPGSigningKeyUnvailableError)
        << lastError_;
    git({"config", "gpg.program", "/nowhere/gpg"}, repository);
    EXPECT_EQ(codeForGit({"commit", "--allow-empty", "--gpg-sign", "--message=x"}, repository),
              RVGitGPGSigningFailedError)
        << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitRefusesToMergeWhatIsNotSignedOrNotTrusted) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "1", "First");
    git({"checkout", "--quiet", "-b", "side"}, repository);
    commitFile(repository, "file", "2", "Second");
    git({"checkout", "--quiet", "main"}, repository);
    EXPECT_EQ(codeForGit({"merge", "--verify-signatures", "side"}, repository),
              RVGitGPGSignatureMissingError)
        << lastError_;

    const std::string hash = makeSignedCopyOfCommit("side", repository);
    git({"config", "gpg.program",
         signatureProgram("[GNUPG:] NEWSIG\\n[GNUPG:] GOODSIG 0123456789ABCDEF Someone\\n"
                          "[GNUPG:] TRUST_UNDEFINED\\n")},
        repository);
    EXPECT_EQ(codeForGit({"merge", "--verify-signatures", hash}, repository),
              RVGitGPGSignatureUntrustedError)
        << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitHasNoCommitsToShow) {
    EXPECT_EQ(codeForGit({"log"}, initRepository()), 107) << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitFailsToPush) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "1", "First");
    writeFile(repository + "/.git/hooks/pre-push", "#!/bin/sh\nexit 1\n", 0755);
    auto command = RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(gitPath()),
                                                         repository);
    command->setGitCommand("push");
    command->addGitCommandArguments({initBareRepository(), "main"});
    std::optional<RVError> error;
    ASSERT_FALSE(command->run(&error));
    EXPECT_EQ(error->code(), RVGitRemoteSyncError);
    EXPECT_THAT(error->localizedDescription(), Optional(Eq("Synchronization With Remote Failed")));
}

TEST_F(RVGitSharedErrorTableTest, GitDoesNotReachARemote) {
    const std::string repository = initRepository();
    EXPECT_EQ(codeForGit({"fetch", scratchPath("nowhere")}, repository),
              RVGitRemoteRepositoryNotFoundError)
        << lastError_;
    // Nothing listens on port 1.
    EXPECT_EQ(codeForGit({"fetch", "git://127.0.0.1:1/x"}, repository), RVGitRemoteConnectionError)
        << lastError_;
    const std::string ssh = writeFile(
        "ssh", "#!/bin/sh\necho 'git@host: Permission denied (publickey).' >&2\nexit 255\n", 0755);
    git({"config", "core.sshCommand", ssh}, repository);
    EXPECT_EQ(codeForGit({"fetch", "ssh://git@host/x"}, repository), RVGitRemoteAuthError)
        << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitNeedsAWorkingTree) {
    const std::string bare = initBareRepository();
    EXPECT_EQ(codeForGit({"status"}, bare), RVGitNoWorkTreeError) << lastError_;
    EXPECT_EQ(codeForGit({"submodule", "status"}, bare), RVGitNoWorkTreeError) << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitNeedsARepository) {
    EXPECT_EQ(codeForGit({"status"}, scratchDirectory()), RVGitNoGitRepoError) << lastError_;
}

TEST_F(RVGitSharedErrorTableTest, GitFindsTheIndexLocked) {
    const std::string repository = initRepository();
    writeFile(repository + "/.git/index.lock", "");
    writeFile(repository + "/file", "x");
    EXPECT_EQ(codeForGit({"add", "file"}, repository), RVGitIndexLockError) << lastError_;
    EXPECT_THAT(lastError_, HasSubstr("index.lock"));
}

TEST_F(RVGitSharedErrorTableTest, GitIsNotToldWhichBranchToPull) {
    const std::string other = initRepository("other");
    commitFile(other, "file", "1", "First");
    const std::string repository = initRepository();
    commitFile(repository, "file", "1", "First");
    git({"remote", "add", "origin", other}, repository);
    git({"remote", "add", "second", other}, repository);
    EXPECT_EQ(codeForGit({"pull", "--no-rebase", "second"}, repository),
              RVGitNoDefaultMergeBranchError)
        << lastError_;
}

}  // namespace
