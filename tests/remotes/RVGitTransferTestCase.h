#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestServers.h"

class RVGitCloneCommand;
class RVGitCommand;
class RVGitFetchCommand;
class RVGitPullCommand;
class RVGitPushCommand;
class RVGitRemote;

/// The ways to a repository.
enum class Protocol { Path, File, Git, SSH, ShortSSH, HTTP, HTTPS };

void PrintTo(Protocol protocol, std::ostream* stream);

/// Base of tests that transfer between repositories: servers of all protocols, each started when it
/// is first needed, serve what lies below "served".
class RVGitTransferTestCase : public RVGitRepositoryTestCase {
protected:
    RVGitTransferTestCase();
    ~RVGitTransferTestCase() override;

    /// A bare repository "served/name" with one commit on main, to which everybody may push.
    std::string serveRepository(const std::string& name = "a.git");
    /// The address of it, once the server runs.
    [[nodiscard]] std::string url(Protocol protocol, const std::string& name = "a.git");
    /// That address by way of a server that passes on what is said to the other's port.
    [[nodiscard]] std::string urlThrough(Protocol protocol, const RVTestCuttingServer& server);

    [[nodiscard]] RVTestGitDaemon& gitDaemon();
    /// GIT_SSH_COMMAND is set so that its key is taken.
    [[nodiscard]] RVTestSSHServer& sshServer();
    /// GIT_SSL_CAINFO is set to its certificate.
    [[nodiscard]] RVTestWebServer& webServer();
    [[nodiscard]] std::string servedPath(const std::string& name = "a.git") const {
        return scratchPath("served/" + name);
    }

    /// The name for the library's commands; a value stays until the test ends.
    void setSharedVariable(const std::string& name, const std::optional<std::string>& value);

    [[nodiscard]] std::shared_ptr<RVGitRemote> remote(const std::string& name = "origin");
    [[nodiscard]] std::shared_ptr<RVGitFetchCommand> fetch(
        const std::optional<RVOptions>& options = {});
    [[nodiscard]] std::shared_ptr<RVGitPullCommand> pull(
        const std::optional<RVOptions>& options = {});
    [[nodiscard]] std::shared_ptr<RVGitPushCommand> push(
        const std::string& refSpec, const std::optional<RVOptions>& options = {});

    /// All refs with their hashes.
    [[nodiscard]] std::string refsIn(std::string_view directory) const;
    /// The hashes of all objects that refs lead to.
    [[nodiscard]] std::string objectsIn(std::string_view directory) const;

    /// Whether the command's table of refs tells of a change, as it must. Its progress knows as
    /// much of it as it has kept: a row that arrives in two pieces has lost the first.
    static void expectUpdates(RVGitCommand& command, bool updates);

    /// The processes that have the variable RVGIT_TEST_MARK with the value of this test, which
    /// those that the library launches inherit and servers do not.
    [[nodiscard]] std::vector<pid_t> launchedProcesses() const;
    /// Waits for them to end; false if they have not within half a minute, which is long for a busy
    /// machine, too, and short for what would never end.
    [[nodiscard]] bool launchedProcessesEnd() const;

private:
    std::string mark_;
    std::vector<std::string> sharedVariables_;
    std::unique_ptr<RVTestGitDaemon> gitDaemon_;
    std::unique_ptr<RVTestSSHServer> sshServer_;
    std::unique_ptr<RVTestWebServer> webServer_;
};
