#include <chrono>
#include <filesystem>
#include <thread>

#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "tests/remotes/RVGitTransferTestCase.h"

namespace {

using testing::HasSubstr;

class RVGitTransferFailureTest : public RVGitTransferTestCase {
protected:
    struct Failure {
        std::int64_t code = 0;
        std::string text;
    };
    /// A clone that must fail and leave nothing.
    Failure failureOfClone(const std::string& address) {
        const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
            address, scratchPath("new"), std::nullopt);
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error)) << address;
        EXPECT_FALSE(fileExists("new")) << address;
        if (!error)
            return {};
        EXPECT_EQ(error->userInfo().at(RVGitRemoteURLErrorKey), address);
        return {error->code(), command->standardErrorString()};
    }
    static std::string localURL(const std::string& scheme, int port, const std::string& path) {
        return scheme + "://127.0.0.1:" + std::to_string(port) + "/" + path;
    }
};

// What a git prints for each failure, and the code that comes of it: another git that says it in
// other words shows itself here.

TEST_F(RVGitTransferFailureTest, ARepositoryThatIsNotThere) {
    serveRepository();
    const struct {
        Protocol protocol;
        std::int64_t code;
        const char* text;
    } rows[] = {
        {Protocol::Path, RVGitRVGitGenericError, "does not exist"},
        {Protocol::File, RVGitRemoteRepositoryNotFoundError,
         "does not appear to be a git repository"},
        {Protocol::Git, RVGitRVGitGenericError, "access denied or repository not exported"},
        {Protocol::SSH, RVGitRemoteRepositoryNotFoundError,
         "does not appear to be a git repository"},
        {Protocol::ShortSSH, RVGitRemoteRepositoryNotFoundError,
         "does not appear to be a git repository"},
        {Protocol::HTTP, RVGitRemoteRepositoryNotFoundError, "not found"},
        {Protocol::HTTPS, RVGitRemoteRepositoryNotFoundError, "not found"},
    };
    for (const auto& row : rows) {
        const auto failure = failureOfClone(url(row.protocol, "none.git"));
        EXPECT_EQ(failure.code, row.code) << testing::PrintToString(row.protocol) << "\n"
                                          << failure.text;
        EXPECT_THAT(failure.text, HasSubstr(row.text));
    }
}

TEST_F(RVGitTransferFailureTest, NobodyListens) {
    const RVTestUnusedPort unused;
    const struct {
        const char* scheme;
        std::int64_t code;
        const char* text;
    } rows[] = {
        {"git", RVGitRemoteConnectionError, "Connection refused"},
        {"ssh", RVGitRemoteConnectionError, "Connection refused"},
        // libcurl's words match two rows, of which the higher code wins.
        {"http", RVGitRemoteAuthError, "unable to access"},
        {"https", RVGitRemoteAuthError, "unable to access"},
    };
    for (const auto& row : rows) {
        const auto failure = failureOfClone(localURL(row.scheme, unused.number(), "a.git"));
        EXPECT_EQ(failure.code, row.code) << row.scheme << "\n" << failure.text;
        EXPECT_THAT(failure.text, HasSubstr(row.text));
    }
}

TEST_F(RVGitTransferFailureTest, AHostThatDoesNotExist) {
    for (const char* scheme : {"git", "ssh", "http"}) {
        const auto failure = failureOfClone(std::string(scheme) + "://no-host.invalid/a.git");
        EXPECT_EQ(failure.code,
                  std::string(scheme) == "http" ? RVGitRemoteAuthError : RVGitRVGitGenericError)
            << scheme << "\n"
            << failure.text;
    }
}

TEST_F(RVGitTransferFailureTest, AnswersOfAWebServer) {
    serveRepository();
    const auto failureAt = [&](const std::string& path, const std::string& credentials = {}) {
        return failureOfClone(webServer().httpURL(path, credentials));
    };
    // 401 without anybody who could be asked.
    auto failure = failureAt("private/a.git");
    EXPECT_EQ(failure.code, RVGitRVGitGenericError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("could not read Username"));
    failure = failureAt("private/a.git", "marie");
    EXPECT_EQ(failure.code, RVGitRVGitGenericError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("could not read Password"));
    // 401 for a wrong password.
    failure = failureAt("private/a.git", "marie:polonium");
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("Authentication failed"));
    // 403 and 500.
    failure = failureAt("forbidden/a.git");
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("403"));
    failure = failureAt("broken/a.git");
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("500"));
    // A redirect is followed.
    EXPECT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                  webServer().httpURL("moved/a.git"), scratchPath("moved"), std::nullopt)),
              0);
    EXPECT_EQ(readFile("moved/file.txt"), "one\n");
    // 404.
    failure = failureAt("elsewhere/a.git");
    EXPECT_EQ(failure.code, RVGitRemoteRepositoryNotFoundError) << failure.text;
}

TEST_F(RVGitTransferFailureTest, ACertificateThatNobodyKnows) {
    serveRepository();
    const std::string address = url(Protocol::HTTPS);
    setEnvironmentVariable("GIT_SSL_CAINFO", std::nullopt);
    const auto failure = failureOfClone(address);
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("certificate"));
}

TEST_F(RVGitTransferFailureTest, WhatAnSSHServerRefuses) {
    serveRepository();
    const std::string address = url(Protocol::SSH);
    const auto failureWith = [&](const std::string& sshCommand) {
        setEnvironmentVariable("GIT_SSH_COMMAND", sshCommand);
        return failureOfClone(address);
    };
    auto failure = failureWith(sshServer().sshCommandWithUnknownKey());
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("Permission denied"));
    failure = failureWith(sshServer().sshCommandWithEncryptedKey());
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("Permission denied"));
    failure = failureWith(sshServer().sshCommandWithUnknownHost());
    EXPECT_EQ(failure.code, RVGitRVGitGenericError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("Host key verification failed"));
    setEnvironmentVariable("GIT_SSH_COMMAND", sshServer().sshCommand());
    failure = failureOfClone(sshServer().urlForUser("nobody-of-that-name", servedPath()));
    EXPECT_EQ(failure.code, RVGitRemoteAuthError) << failure.text;
    EXPECT_THAT(failure.text, HasSubstr("Permission denied"));
}

TEST_F(RVGitTransferFailureTest, AConnectionThatIsClosedInTheMiddleOfThePack) {
    serveRepository();
    // Enough that no part of the conversation but the pack is as long.
    const std::string source = scratchPath("source of a.git");
    std::string noise;
    for (unsigned value = 1; noise.size() < 400'000; value = value * 1664525u + 1013904223u)
        noise += static_cast<char>(value >> 24);
    commitFile(source, "noise", noise, "Noise");
    git({"push", servedPath(), "main"}, source);
    for (const auto protocol : {Protocol::Git, Protocol::SSH, Protocol::HTTP, Protocol::HTTPS}) {
        const RVTestCuttingServer cutting(port(protocol), 200'000);
        if (protocol == Protocol::SSH)
            setEnvironmentVariable("GIT_SSH_COMMAND", sshServer().sshCommandForAnyPort());
        const auto failure = failureOfClone(urlThrough(cutting, protocol));
        EXPECT_EQ(failure.code, RVGitRVGitGenericError) << testing::PrintToString(protocol) << "\n"
                                                        << failure.text;
        EXPECT_GT(cutting.numberOfConnections(), 0);
    }
    // A fetch leaves the repository as it was.
    makeCommit();
    const RVTestCuttingServer cutting(gitDaemon().port(), 200'000);
    gitInRepository({"remote", "add", "origin", urlThrough(cutting, Protocol::Git)});
    const std::string before = refsIn(repositoryPath());
    EXPECT_NE(codeOf(*fetch()), 0);
    EXPECT_EQ(refsIn(repositoryPath()), before);
    git({"fsck", "--strict"}, repositoryPath());
}

TEST_F(RVGitTransferFailureTest, AServerThatSaysNothingIsEndedByCancel) {
    const RVTestSilentServer silent;
    for (const char* scheme : {"git", "ssh", "http", "https"}) {
        const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
            localURL(scheme, silent.port(), "a.git"), scratchPath("new"), std::nullopt);
        const int before = silent.numberOfConnections();
        command->enqueueCommand();
        while (silent.numberOfConnections() == before)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_FALSE(launchedProcesses().empty());
        command->cancel();
        EXPECT_TRUE(launchedProcessesEnd()) << scheme;
        command->waitUntilFinished();
        // It was asked to end, and did.
        EXPECT_EQ(command->exitCode(), 128 + SIGTERM) << scheme;
        EXPECT_FALSE(command->error()) << scheme;
        EXPECT_FALSE(fileExists("new")) << scheme;
    }
}

TEST_F(RVGitTransferFailureTest, HostileAddressesRunNothing) {
    const std::string hit = scratchPath("hit");
    const std::string name = initBareRepository("served/a.git");
    const std::vector<std::string> addresses = {
        "ext::sh -c \"touch " + hit + "\"",
        "ext::touch " + hit,
        "--upload-pack=touch " + hit,
        "-utouch " + hit,
        "--exec=touch " + hit,
        "ssh://-oProxyCommand=touch%20" + hit + "/a.git",
        "ssh://-oProxyCommand=touch " + hit + "/a.git",
        "-oProxyCommand=touch " + hit + ":a.git",
        "ssh://user@-oProxyCommand=touch " + hit + "/a.git",
        "user@-oProxyCommand=touch " + hit + ":a.git",
        "ssh://127.0.0.1:1/$(touch " + hit + ")",
        "ssh://127.0.0.1:1/`touch " + hit + "`",
        "git://-c/a.git;touch " + hit,
        "fd::17;touch " + hit,
        "testgit::touch " + hit,
        "http://127.0.0.1:1/;touch " + hit,
        "\ntouch " + hit,
        name + "\ntouch " + hit,
        "git://127.0.0.1:1/a.git\nhost=evil",
    };
    // No name is looked up anywhere: whoever would be connected to is not there.
    setEnvironmentVariable("GIT_SSH_COMMAND", "ssh -F /dev/null -o ProxyCommand=false");
    gitInRepository({"remote", "add", "origin", name});
    for (const std::string& address : addresses) {
        EXPECT_NE(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                      address, scratchPath("new"), std::nullopt)),
                  0)
            << address;
        EXPECT_NE(codeOf(*RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(address, {})), 0)
            << address;
        EXPECT_NE(codeOf(*RVGitFetchCommand::gitFetchCommandWithRepository(repository(), address,
                                                                           nullptr)),
                  0)
            << address;
        EXPECT_NE(codeOf(*RVGitPushCommand::gitPushCommandWithRepository(
                      repository(), remote(address), std::shared_ptr<RVGitRefSpec>(), {})),
                  0)
            << address;
        ASSERT_FALSE(fileExists("hit")) << address;
        EXPECT_FALSE(fileExists("new")) << address;
    }
}

TEST_F(RVGitTransferFailureTest, EveryRowOfTheCommonTableThatTransfersMeet) {
    const RVFakeGit fake = useFakeGit();
    const struct {
        const char* text;
        int exitCode;
        std::int64_t code;
    } rows[] = {
        {"fatal: could not read Password: Device not configured", 128, RVGitAskpassError},
        {"ssh: connect to host x port 22: Operation timed out", 128, RVGitRemoteConnectionError},
        {"x: Connection refused", 128, RVGitRemoteConnectionError},
        {"Received disconnect: Too many authentication failures", 128, RVGitRemoteAuthError},
        {"fatal: Authentication failed for 'x'", 128, RVGitRemoteAuthError},
        {"x@y: Permission denied (publickey).", 128, RVGitRemoteAuthError},
        {"fatal: HTTP request failed", 128, RVGitRemoteAuthError},
        {"fatal: unable to access 'x'", 128, RVGitRemoteAuthError},
        {"fatal: 'x' does not appear to be a git repository", 128,
         RVGitRemoteRepositoryNotFoundError},
        {"fatal: repository 'x' not found", 128, RVGitRemoteRepositoryNotFoundError},
        {"Could not find Repository x", 128, RVGitRemoteRepositoryNotFoundError},
        {"anything else", 128, RVGitRVGitGenericError},
        {"fatal: unable to access 'x'", 1, RVGitRVGitGenericError},
    };
    for (const auto& row : rows) {
        RVFakeGit(fake).setAnswer(
            {.standardError = std::string(row.text) + "\n", .exitCode = row.exitCode});
        EXPECT_EQ(codeOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL("a", "b", {})), row.code)
            << row.text;
        EXPECT_EQ(codeOf(*RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL("a", {})), row.code)
            << row.text;
        EXPECT_EQ(codeOf(*fetch()), row.code) << row.text;
        EXPECT_EQ(codeOf(*push("a")), row.exitCode == 1 ? RVGitRemoteSyncError : row.code)
            << row.text;
    }
}

}  // namespace
