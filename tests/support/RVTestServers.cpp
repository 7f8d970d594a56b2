#include "tests/support/RVTestServers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestProcess.h"

namespace {

using Environment = std::map<std::string, std::string>;

constexpr int pollInterval = 20;

[[noreturn]] void throwSystemError(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopbackAddress(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// A socket bound to a port that the system chose.
int boundSocket(int& port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopbackAddress(0);
    socklen_t length = sizeof address;
    if (descriptor < 0 || bind(descriptor, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throwSystemError("bind to loopback");
    port = ntohs(address.sin_port);
    return descriptor;
}

/// -1 where nobody listens.
int connectedSocket(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopbackAddress(port);
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

/// A child in a session of its own. `connection` becomes its standard input and output; -1: none.
pid_t spawn(const std::vector<std::string>& commandLine, const Environment& environment,
            int connection, const std::string& logPath) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (connection >= 0) {
        posix_spawn_file_actions_adddup2(&actions, connection, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, connection, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, logPath.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    std::vector<char*> arguments;
    for (const std::string& argument : commandLine)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::vector<std::string> variables;
    for (const auto& [name, value] : environment)
        variables.push_back(name + "=" + value);
    std::vector<char*> variablePointers;
    for (std::string& variable : variables)
        variablePointers.push_back(variable.data());
    variablePointers.push_back(nullptr);
    pid_t child = -1;
    errno = posix_spawn(&child, arguments[0], &actions, &attributes, arguments.data(),
                        variablePointers.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (errno != 0)
        throwSystemError("cannot launch " + commandLine.at(0));
    return child;
}

void endProcess(pid_t process) {
    kill(-process, SIGKILL);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

Environment serverEnvironment(const std::string& directory) {
    const char* path = std::getenv("PATH");
    writeTestFile(directory + "/home/.gitconfig",
                  "[receive]\n\tautogc = false\n[gc]\n\tauto = 0\n[core]\n\tfsync = none\n"
                  "[uploadpack]\n\tallowFilter = true\n\tallowAnySHA1InWant = true\n"
                  "[http]\n\treceivepack = true\n");
    return {{"PATH", path ? path : "/usr/bin:/bin"},
            {"HOME", directory + "/home"},
            {"GIT_CONFIG_NOSYSTEM", "1"},
            {"LC_ALL", "C"}};
}

/// The path of a program that lies where only the administrator looks.
std::string findServerProgram(const std::string& name) {
    for (const char* directory : {"/usr/sbin/", "/usr/local/sbin/", "/sbin/"})
        if (access((directory + name).c_str(), X_OK) == 0)
            return directory + name;
    return findTestProgram(name);
}

void runOrThrow(const std::vector<std::string>& commandLine, const std::string& directory) {
    const auto result = runTestProcess(commandLine, directory);
    if (result.exitCode != 0)
        throw std::runtime_error(commandLine.at(0) + ": " + result.standardError);
}

std::string userName() {
    const passwd* user = getpwuid(geteuid());
    if (!user)
        throw std::runtime_error("the current user has no name");
    return user->pw_name;
}

}  // namespace

RVTestUnusedPort::RVTestUnusedPort() : socket_(boundSocket(number_)) {}

RVTestUnusedPort::~RVTestUnusedPort() {
    close(socket_);
}

RVTestListener::RVTestListener() {
    socket_ = boundSocket(port_);
    if (listen(socket_, 64) != 0)
        throwSystemError("listen");
}

RVTestListener::~RVTestListener() {
    close(socket_);
}

void RVTestListener::start(std::function<void(int)> didAccept, std::function<void()> tidyUp) {
    thread_ = std::thread([this, didAccept = std::move(didAccept), tidyUp = std::move(tidyUp)] {
        while (!stopped_) {
            pollfd descriptor = {socket_, POLLIN, 0};
            if (poll(&descriptor, 1, pollInterval) > 0) {
                const int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
                if (connection >= 0) {
                    ++numberOfConnections_;
                    didAccept(connection);
                }
            }
            if (tidyUp)
                tidyUp();
        }
    });
}

void RVTestListener::stop() {
    stopped_ = true;
    if (thread_.joinable())
        thread_.join();
}

RVTestProgramServer::RVTestProgramServer(std::vector<std::string> commandLine,
                                         std::map<std::string, std::string> environment,
                                         std::string logPath)
    : commandLine_(std::move(commandLine)),
      environment_(std::move(environment)),
      logPath_(std::move(logPath)) {
    start([this](int connection) { serve(connection); }, [this] { reapChildren(); });
}

RVTestProgramServer::~RVTestProgramServer() {
    stop();
    for (const pid_t child : children_)
        endProcess(child);
}

void RVTestProgramServer::serve(int connection) {
    children_.push_back(spawn(commandLine_, environment_, connection, logPath_));
    close(connection);
}

void RVTestProgramServer::reapChildren() {
    std::erase_if(children_, [](pid_t child) { return waitpid(child, nullptr, WNOHANG) == child; });
}

RVTestGitDaemon::RVTestGitDaemon(const std::string& directory, const std::string& repositoriesPath)
    : RVTestProgramServer(
          {findTestProgram("git"), "daemon", "--inetd", "--export-all", "--enable=receive-pack",
           "--base-path=" + repositoriesPath, repositoriesPath},
          serverEnvironment(directory), directory + "/log") {}

std::string RVTestGitDaemon::url(std::string_view name) const {
    return "git://127.0.0.1:" + std::to_string(port()) + "/" + std::string(name);
}

namespace {

/// Writes keys and configuration; the path of the configuration.
std::string prepareSSHServer(const std::string& directory) {
    writeTestFile(directory + "/empty", "");
    const auto makeKey = [&](const char* name, const char* passphrase) {
        runOrThrow({"ssh-keygen", "-q", "-t", "ed25519", "-N", passphrase, "-C", name, "-f",
                    directory + "/" + name},
                   directory);
        return readTestFile(directory + "/" + name + ".pub");
    };
    makeKey("host", "");
    makeKey("stranger", "");
    writeTestFile(directory + "/authorized", makeKey("key", "") + makeKey("encrypted", "polonium"));
    // Without it the server does not start where the administrator runs it.
    if (geteuid() == 0)
        mkdir("/run/sshd", 0755);
    const auto environment = serverEnvironment(directory);
    std::string variables;
    for (const auto& [name, value] : environment)
        variables += " " + name + "=" + value;
    writeTestFile(directory + "/configuration",
                  "HostKey " + directory + "/host\nAuthorizedKeysFile " + directory +
                      "/authorized\nPidFile none\nUsePAM no\nStrictModes no\n"
                      "PermitRootLogin yes\nPasswordAuthentication yes\n"
                      "SetEnv" +
                      variables + "\n");
    return directory + "/configuration";
}

}  // namespace

RVTestSSHServer::RVTestSSHServer(const std::string& directory)
    : RVTestProgramServer(
          {findServerProgram("sshd"), "-i", "-e", "-f", prepareSSHServer(directory)},
          serverEnvironment(directory), directory + "/log"),
      directory_(directory),
      user_(userName()) {
    const std::string host = readTestFile(directory + "/host.pub");
    writeTestFile(directory + "/known", "[127.0.0.1]:" + std::to_string(port()) + " " + host);
    for (const char* key : {"key", "encrypted", "stranger"})
        for (const char* hosts : {"known", "empty"})
            writeTestFile(directory + "/client-" + key + "-" + hosts,
                          "Host short\n\tHostName 127.0.0.1\n\tPort " + std::to_string(port()) +
                              "\nHost *\n\tIdentityFile " + directory + "/" + key +
                              "\n\tIdentitiesOnly yes\n\tIdentityAgent none\n"
                              "\tUserKnownHostsFile " +
                              directory + "/" + hosts +
                              "\n\tGlobalKnownHostsFile /dev/null\n\tCheckHostIP no\n");
}

std::string RVTestSSHServer::url(std::string_view path) const {
    return urlForUser(user_, path);
}

std::string RVTestSSHServer::urlForUser(std::string_view user, std::string_view path) const {
    return "ssh://" + std::string(user) + "@127.0.0.1:" + std::to_string(port()) +
           std::string(path);
}

std::string RVTestSSHServer::shortURL(std::string_view path) const {
    return user_ + "@short:" + std::string(path);
}

std::string RVTestSSHServer::sshCommandWith(std::string_view key, std::string_view hosts) const {
    return "ssh -F " +
           quotedForShell(directory_ + "/client-" + std::string(key) + "-" + std::string(hosts));
}

RVTestWebServer::RVTestWebServer(const std::string& directory, const std::string& repositoriesPath)
    : certificatePath_(directory + "/certificate.pem") {
    writeTestFile(directory + "/documents/index.html", "");
    writeTestFile(directory + "/users", "marie:radium\n");
    writeTestFile(directory + "/broken",
                  "#!/bin/sh\nprintf 'Status: 500 Internal Server Error\\r\\n\\r\\n'\n", 0755);
    runOrThrow(
        {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
         "-nodes", "-keyout", directory + "/key.pem", "-out", certificatePath_, "-days", "30",
         "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"},
        directory);
    writeTestFile(directory + "/both.pem",
                  readTestFile(directory + "/key.pem") + readTestFile(certificatePath_), 0600);
    // The ports are free now, but may be taken before the server has them.
    for (int attempt = 0; attempt < 20; ++attempt)
        if (startOnPorts(directory, repositoriesPath))
            return;
    throw std::runtime_error("lighttpd does not start: " + readTestFile(directory + "/log"));
}

bool RVTestWebServer::startOnPorts(const std::string& directory, const std::string& repositories) {
    const int first = boundSocket(httpPort_);
    const int second = boundSocket(httpsPort_);
    close(first);
    close(second);
    const auto executables = runTestProcess({"git", "--exec-path"}, directory).standardOutput;
    const std::string backend = executables.substr(0, executables.find('\n')) + "/git-http-backend";
    std::string variables;
    for (const auto& [name, value] : serverEnvironment(directory))
        variables += "\"" + name + "\" => \"" + value + "\", ";
    // Its HTTP/2 breaks off long uploads to a program.
    writeTestFile(
        directory + "/configuration",
        "server.modules = (\"mod_access\", \"mod_alias\", \"mod_redirect\", \"mod_setenv\", "
        "\"mod_auth\", \"mod_authn_file\", \"mod_cgi\", \"mod_openssl\")\n"
        "server.document-root = \"" +
            directory +
            "/documents\"\n"
            "server.feature-flags = (\"server.h2proto\" => \"disable\")\n"
            "server.bind = \"127.0.0.1\"\nserver.port = " +
            std::to_string(httpPort_) + "\nserver.errorlog = \"" + directory +
            "/log\"\nserver.upload-dirs = (\"" + directory +
            "\")\n"
            "$SERVER[\"socket\"] == \"127.0.0.1:" +
            std::to_string(httpsPort_) +
            "\" {\n\tssl.engine = \"enable\"\n"
            "\tssl.pemfile = \"" +
            directory +
            "/both.pem\"\n}\n"
            "auth.backend = \"plain\"\nauth.backend.plain.userfile = \"" +
            directory +
            "/users\"\n"
            "auth.require = (\"/private/\" => (\"method\" => \"basic\", \"realm\" => \"git\", "
            "\"require\" => \"valid-user\"))\n"
            "url.redirect = (\"^/moved/(.*)\" => \"/git/$1\")\n"
            "alias.url = (\"/git/\" => \"" +
            backend + "/\", \"/private/\" => \"" + backend + "/\", \"/broken\" => \"" + directory +
            "/broken\")\n"
            "$HTTP[\"url\"] =~ \"^/(git|private|broken)/\" {\n\tcgi.assign = (\"\" => \"\")\n"
            "\tsetenv.set-environment = (" +
            variables + "\"GIT_PROJECT_ROOT\" => \"" + repositories +
            "\", \"GIT_HTTP_EXPORT_ALL\" => \"1\")\n}\n"
            "$HTTP[\"url\"] =~ \"^/forbidden/\" { url.access-deny = (\"\") }\n");
    process_ = spawn({findServerProgram("lighttpd"), "-D", "-f", directory + "/configuration"},
                     serverEnvironment(directory), -1, directory + "/log");
    while (waitpid(process_, nullptr, WNOHANG) == 0) {
        const int http = connectedSocket(httpPort_);
        const int https = http < 0 ? -1 : connectedSocket(httpsPort_);
        for (const int connection : {http, https})
            if (connection >= 0)
                close(connection);
        if (https >= 0)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(pollInterval));
    }
    process_ = -1;
    return false;
}

RVTestWebServer::~RVTestWebServer() {
    if (process_ >= 0)
        endProcess(process_);
}

std::string RVTestWebServer::httpURL(std::string_view path, std::string_view credentials) const {
    return "http://" + std::string(credentials) + (credentials.empty() ? "" : "@") +
           "127.0.0.1:" + std::to_string(httpPort_) + "/" + std::string(path);
}

std::string RVTestWebServer::httpsURL(std::string_view path, std::string_view credentials) const {
    return "https://" + std::string(credentials) + (credentials.empty() ? "" : "@") +
           "127.0.0.1:" + std::to_string(httpsPort_) + "/" + std::string(path);
}

RVTestSilentServer::RVTestSilentServer() {
    start([this](int connection) { connections_.push_back(connection); });
}

RVTestSilentServer::~RVTestSilentServer() {
    stop();
    for (const int connection : connections_)
        close(connection);
}

RVTestCuttingServer::RVTestCuttingServer(int serverPort, std::size_t numberOfBytes,
                                         Afterwards afterwards)
    : serverPort_(serverPort), numberOfBytes_(numberOfBytes), afterwards_(afterwards) {
    start([this](int connection) {
        threads_.emplace_back([this, connection] { pass(connection); });
    });
}

RVTestCuttingServer::~RVTestCuttingServer() {
    stop();
    ended_ = true;
    for (std::thread& thread : threads_)
        thread.join();
}

void RVTestCuttingServer::pass(int connection) {
    const int server = connectedSocket(serverPort_);
    std::size_t left = numberOfBytes_;
    bool serverHasEnded = server < 0;
    bool clientHasEnded = false;
    while (!ended_ && !serverHasEnded && left > 0) {
        pollfd descriptors[] = {{clientHasEnded ? -1 : connection, POLLIN, 0}, {server, POLLIN, 0}};
        if (poll(descriptors, 2, pollInterval) <= 0)
            continue;
        char buffer[4096];
        if (descriptors[0].revents != 0) {
            const ssize_t count = read(connection, buffer, sizeof buffer);
            clientHasEnded = count <= 0;
            if (clientHasEnded)
                shutdown(server, SHUT_WR);
            else
                (void)!send(server, buffer, static_cast<std::size_t>(count), MSG_NOSIGNAL);
        }
        if (descriptors[1].revents != 0) {
            const ssize_t count = read(server, buffer, std::min(left, sizeof buffer));
            serverHasEnded = count <= 0;
            if (!serverHasEnded) {
                left -= static_cast<std::size_t>(count);
                (void)!send(connection, buffer, static_cast<std::size_t>(count), MSG_NOSIGNAL);
            }
        }
    }
    while (!ended_ && left == 0 && afterwards_ == Afterwards::Holds)
        std::this_thread::sleep_for(std::chrono::milliseconds(pollInterval));
    if (server >= 0)
        close(server);
    close(connection);
}
