#include "tests/remotes/RVGitTransferTestCase.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitRefUpdatesOutputParser.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"

void PrintTo(Protocol protocol, std::ostream* stream) {
    static constexpr const char* names[] = {"Path",     "File", "Git",  "SSH",
                                            "ShortSSH", "HTTP", "HTTPS"};
    *stream << names[static_cast<std::size_t>(protocol)];
}

RVGitTransferTestCase::RVGitTransferTestCase() : mark_("RVGIT_TEST_MARK=" + scratchDirectory()) {
    makeDirectory("served");
    setEnvironmentVariable("RVGIT_TEST_MARK", scratchDirectory());
    // No variable of the machine reaches this test, but other programs' agents must not, either.
    setEnvironmentVariable("SSH_AUTH_SOCK", std::nullopt);
}

RVGitTransferTestCase::~RVGitTransferTestCase() {
    for (const std::string& name : sharedVariables_)
        RVGitCommandEnvironment::sharedEnvironment().unsetValueForEnvironmentVariable(name);
}

std::string RVGitTransferTestCase::serveRepository(const std::string& name) {
    std::string path = initBareRepository("served/" + name);
    git({"config", "http.receivepack", "true"}, path);
    git({"config", "uploadpack.allowFilter", "true"}, path);
    const std::string source = initRepository("source of " + name);
    commitFile(source, "file.txt", "one\n", "First");
    git({"push", path, "main"}, source);
    return path;
}

std::string RVGitTransferTestCase::url(Protocol protocol, const std::string& name) {
    switch (protocol) {
        case Protocol::Path:
            return servedPath(name);
        case Protocol::File:
            return "file://" + servedPath(name);
        case Protocol::Git:
            return gitDaemon().url(name);
        case Protocol::SSH:
            return sshServer().url(servedPath(name));
        case Protocol::ShortSSH:
            return sshServer().shortURL(servedPath(name));
        case Protocol::HTTP:
            return webServer().httpURL("git/" + name);
        case Protocol::HTTPS:
            return webServer().httpsURL("git/" + name);
    }
    return {};
}

std::string RVGitTransferTestCase::urlThrough(Protocol protocol,
                                              const RVTestCuttingServer& server) {
    std::string address = url(protocol);
    const std::size_t port = address.find(':', address.find("://") + 3) + 1;
    if (protocol == Protocol::SSH)
        setEnvironmentVariable(
            "GIT_SSH_COMMAND",
            sshServer().sshCommand() + " -o StrictHostKeyChecking=no -o LogLevel=ERROR");
    return address.replace(port, address.find('/', port) - port, std::to_string(server.port()));
}

RVTestGitDaemon& RVGitTransferTestCase::gitDaemon() {
    if (!gitDaemon_)
        gitDaemon_ =
            std::make_unique<RVTestGitDaemon>(scratchPath("git-daemon"), scratchPath("served"));
    return *gitDaemon_;
}

RVTestSSHServer& RVGitTransferTestCase::sshServer() {
    if (!sshServer_) {
        sshServer_ = std::make_unique<RVTestSSHServer>(scratchPath("sshd"));
        setEnvironmentVariable("GIT_SSH_COMMAND", sshServer_->sshCommand());
    }
    return *sshServer_;
}

RVTestWebServer& RVGitTransferTestCase::webServer() {
    if (!webServer_) {
        webServer_ = std::make_unique<RVTestWebServer>(scratchPath("web"), scratchPath("served"));
        setEnvironmentVariable("GIT_SSL_CAINFO", webServer_->certificatePath());
    }
    return *webServer_;
}

void RVGitTransferTestCase::setSharedVariable(const std::string& name,
                                              const std::optional<std::string>& value) {
    sharedVariables_.push_back(name);
    RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable(value, name);
}

std::shared_ptr<RVGitRemote> RVGitTransferTestCase::remote(const std::string& name) {
    return RVGitRemote::remoteWithRepository(repository(), name, std::nullopt, std::nullopt, {});
}

std::shared_ptr<RVGitFetchCommand> RVGitTransferTestCase::fetch(
    const std::optional<RVOptions>& options) {
    return RVGitFetchCommand::gitFetchCommandWithRepository(repository(), remote(), nullptr,
                                                            options);
}

std::shared_ptr<RVGitPullCommand> RVGitTransferTestCase::pull(
    const std::optional<RVOptions>& options) {
    return RVGitPullCommand::gitPullCommandWithRepository(
        repository(), remote(), RVGitRefSpec::refSpecFromString("main"), options);
}

std::shared_ptr<RVGitPushCommand> RVGitTransferTestCase::push(
    const std::string& refSpec, const std::optional<RVOptions>& options) {
    return RVGitPushCommand::gitPushCommandWithRepository(
        repository(), remote(), RVGitRefSpec::refSpecFromString(refSpec), options);
}

std::string RVGitTransferTestCase::refsIn(std::string_view directory) const {
    return git({"for-each-ref", "--format=%(objectname) %(refname) %(symref)"}, directory);
}

std::string RVGitTransferTestCase::objectsIn(std::string_view directory) const {
    // Each hash may have a path behind it.
    std::string hashes;
    std::istringstream lines(git({"rev-list", "--all", "--objects"}, directory));
    for (std::string line; std::getline(lines, line);)
        hashes += line.substr(0, 40) + "\n";
    return hashes;
}

void RVGitTransferTestCase::expectUpdates(RVGitCommand& command, bool updates) {
    const auto tellsOfChange = [](const std::string& output) {
        RVGitRefUpdatesOutputParser parser(output);
        EXPECT_TRUE(parser.parse());
        const auto& items = parser.result();
        return std::any_of(items.begin(), items.end(), [](const auto& item) {
            return item.type != RVGitRefUpdateTypeUpToDate;
        });
    };
    EXPECT_EQ(tellsOfChange(command.standardErrorString()), updates);
    const auto progress = command.commandProgress();
    EXPECT_EQ(progress->isUpdated(), tellsOfChange(progress->currentProgressOutput()));
}

std::vector<pid_t> RVGitTransferTestCase::launchedProcesses() const {
    std::vector<pid_t> processes;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos ||
            std::stol(name) == getpid())
            continue;
        std::ifstream stream(entry.path() / "environ", std::ios::binary);
        const std::string environment(std::istreambuf_iterator<char>(stream), {});
        if (("\0" + environment).find(mark_ + std::string(1, '\0')) != std::string::npos)
            processes.push_back(static_cast<pid_t>(std::stol(name)));
    }
    return processes;
}

bool RVGitTransferTestCase::launchedProcessesEnd() const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!launchedProcesses().empty()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
