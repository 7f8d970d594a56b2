#include <chrono>
#include <thread>

#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "tests/remotes/RVGitTransferTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::HasSubstr;

/// Servers that want to know something, and who answers.
class RVGitTransferQuestionTest : public RVGitTransferTestCase {
protected:
    RVGitTransferQuestionTest() {
        serveRepository();
        gitInRepository({"pull", servedPath(), "main"});
        makeCommit();
    }
    /// A program that writes down what it is asked, and answers from the words of a shell.
    std::string askpass(const std::string& script) {
        return writeFile("askpass",
                         "#!/bin/sh\necho \"$1\" >>" + quotedForShell(scratchPath("asked")) + "\n" +
                             script + "\n",
                         0755);
    }
    std::string askpassForMarie(const std::string& password) {
        return askpass("case $1 in Username*) echo marie;; *) echo " + password + ";; esac");
    }
    void useAskpass(const std::string& path) {
        setSharedVariable("GIT_ASKPASS", path);
        setSharedVariable("SSH_ASKPASS", path);
        setSharedVariable("SSH_ASKPASS_REQUIRE", "force");
    }
    [[nodiscard]] std::string asked() const {
        return fileExists("asked") ? readFile("asked") : std::string();
    }
    /// Each transfer in turn; the codes that are not the one expected are failures.
    void expectOfEachTransfer(const std::string& address, std::int64_t code) {
        if (runGit({"remote", "set-url", "origin", address}, repositoryPath()).exitCode != 0)
            gitInRepository({"remote", "add", "origin", address});
        const auto expectCode = [&](RVGitCommand& command) {
            const auto start = std::chrono::steady_clock::now();
            EXPECT_EQ(codeOf(command), code) << command.commandCall() << "\n"
                                             << command.standardErrorString();
            // Whoever waited for an answer would do so for longer.
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
        };
        expectCode(*RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(address, {}));
        expectCode(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
            address, scratchPath("clone" + std::to_string(++numberOfClones_)), {}));
        expectCode(*fetch());
        expectCode(*push("HEAD:refs/heads/new" + std::to_string(numberOfClones_)));
        // Whatever a fetch fails with, git pull makes an exit code of 1 of it.
        EXPECT_EQ(codeOf(*pull()), code == 0 ? code : RVGitRemoteSyncError);
    }
    std::string privateURL(bool overTLS, const std::string& credentials = {}) {
        return overTLS ? webServer().httpsURL("private/a.git", credentials)
                       : webServer().httpURL("private/a.git", credentials);
    }
    void useSSHCommand(const std::string& command) {
        setEnvironmentVariable("GIT_SSH_COMMAND", command);
    }

private:
    int numberOfClones_ = 0;
};

// Without anybody who could answer.

TEST_F(RVGitTransferQuestionTest, ANameThatNobodyGives) {
    expectOfEachTransfer(privateURL(false), RVGitRVGitGenericError);
}

TEST_F(RVGitTransferQuestionTest, APasswordThatNobodyGives) {
    expectOfEachTransfer(privateURL(true, "marie"), RVGitRVGitGenericError);
}

TEST_F(RVGitTransferQuestionTest, APassphraseThatNobodyGives) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithEncryptedKey());
    expectOfEachTransfer(address, RVGitRemoteAuthError);
}

TEST_F(RVGitTransferQuestionTest, AHostKeyThatNobodyAccepts) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithUnknownHost());
    expectOfEachTransfer(address, RVGitRVGitGenericError);
    EXPECT_EQ(readFile("sshd/empty"), "");
}

TEST_F(RVGitTransferQuestionTest, APasswordOfAnSSHServerThatNobodyGives) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithUnknownKey());
    expectOfEachTransfer(address, RVGitRemoteAuthError);
}

// With a program that answers.

TEST_F(RVGitTransferQuestionTest, APasswordFromAskpass) {
    useAskpass(askpassForMarie("radium"));
    for (const bool overTLS : {false, true}) {
        expectOfEachTransfer(privateURL(overTLS), 0);
        EXPECT_THAT(asked(), HasSubstr("Username for 'http" + std::string(overTLS ? "s" : "")));
        EXPECT_THAT(asked(), HasSubstr("Password for 'http" + std::string(overTLS ? "s" : "") +
                                       "://marie@"));
    }
}

TEST_F(RVGitTransferQuestionTest, APassphraseFromAskpass) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithEncryptedKey());
    useAskpass(askpass("echo polonium"));
    expectOfEachTransfer(address, 0);
    EXPECT_THAT(asked(), HasSubstr("Enter passphrase for key"));
}

TEST_F(RVGitTransferQuestionTest, AHostKeyAcceptedByAskpass) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithUnknownHost());
    useAskpass(askpass("echo yes"));
    expectOfEachTransfer(address, 0);
    EXPECT_THAT(asked(), HasSubstr("authenticity of host"));
    EXPECT_THAT(readFile("sshd/empty"), HasSubstr("ssh-ed25519"));
}

TEST_F(RVGitTransferQuestionTest, AWrongPasswordFailsWith202) {
    useAskpass(askpassForMarie("polonium"));
    expectOfEachTransfer(privateURL(true), RVGitRemoteAuthError);
}

TEST_F(RVGitTransferQuestionTest, AWrongPassphraseFailsWith202) {
    const std::string address = url(Protocol::SSH);
    useSSHCommand(sshServer().sshCommandWithEncryptedKey());
    useAskpass(askpass("echo radium"));
    expectOfEachTransfer(address, RVGitRemoteAuthError);
}

TEST_F(RVGitTransferQuestionTest, AnAskpassThatFailsOrIsNotThereIsAFailure) {
    useAskpass(askpass("exit 1"));
    expectOfEachTransfer(privateURL(false), RVGitRVGitGenericError);
    setSharedVariable("GIT_ASKPASS", scratchPath("nothing"));
    // git's words for a program that is missing are those of a row.
    EXPECT_NE(codeOf(*RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(privateURL(false), {})),
              0);
}

TEST_F(RVGitTransferQuestionTest, NoSecretStandsOnACommandLine) {
    const RVRecordingGit recorder = useRecordingGit();
    useAskpass(askpassForMarie("radium"));
    ASSERT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(privateURL(false),
                                                                      scratchPath("new"), {})),
              0);
    for (const auto& arguments : recorder.argumentLists())
        for (const std::string& argument : arguments)
            EXPECT_THAT(argument, testing::Not(HasSubstr("radium")));
}

// With a program that never answers.

TEST_F(RVGitTransferQuestionTest, AHangingAskpassIsEndedByCancelWithItsChildren) {
    const std::string overSSH = url(Protocol::SSH);
    const std::string overHTTP = privateURL(false);
    useSSHCommand(sshServer().sshCommandWithEncryptedKey());
    useAskpass(askpass("sleep 1000 & sh -c 'sleep 1000; true' & wait"));
    for (const std::string& address : {overHTTP, overSSH}) {
        writeFile("asked", "");
        const auto command =
            RVGitCloneCommand::gitCloneCommandWithRemoteURL(address, scratchPath("new"), {});
        command->enqueueCommand();
        while (asked().empty())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_GE(launchedProcesses().size(), 3u);
        command->cancel();
        EXPECT_TRUE(launchedProcessesEnd()) << address;
        command->waitUntilFinished();
        EXPECT_FALSE(command->error());
        EXPECT_FALSE(fileExists("new"));
    }
}

TEST_F(RVGitTransferQuestionTest, AnAskpassThatWillNotEndIsKilled) {
    const std::string address = privateURL(false);
    useAskpass(askpass("trap '' TERM HUP INT; sleep 1000 & while :; do wait; sleep 1; done"));
    const auto command =
        RVGitCloneCommand::gitCloneCommandWithRemoteURL(address, scratchPath("new"), {});
    command->enqueueCommand();
    while (asked().empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    command->cancel();
    // It is given some time, and what it has started with it.
    EXPECT_TRUE(launchedProcessesEnd());
    command->waitUntilFinished();
    EXPECT_FALSE(command->error());
}

}  // namespace
