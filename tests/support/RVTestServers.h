#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// Servers for tests of transfers: real ones on loopback, each on a port of its own, which end with
// the object. They serve bare repositories below one directory and are given an environment that
// does not depend on the machine, but for PATH.

/// A socket on 127.0.0.1 with a port that the system chose, and a thread that accepts.
class RVTestListener {
public:
    RVTestListener();
    virtual ~RVTestListener();
    RVTestListener(const RVTestListener&) = delete;
    RVTestListener& operator=(const RVTestListener&) = delete;

    [[nodiscard]] int port() const { return port_; }
    /// How many have connected so far.
    [[nodiscard]] int numberOfConnections() const { return numberOfConnections_; }

protected:
    /// To be called once all is there that the functions need. Both are called on the thread that
    /// accepts: the first takes over the descriptor, the second comes now and then. No virtual
    /// ones, since the thread runs while classes derived from the caller's are made and destroyed.
    void start(std::function<void(int connection)> didAccept, std::function<void()> tidyUp = {});
    /// Called by the destructor of the class that has called start(), before anything else.
    void stop();

private:
    int socket_ = -1;
    int port_ = 0;
    std::atomic<int> numberOfConnections_ = 0;
    std::atomic<bool> stopped_ = false;
    std::thread thread_;
};

/// Starts a program for each connection, which is its standard input and output.
class RVTestProgramServer : public RVTestListener {
public:
    ~RVTestProgramServer() override;

protected:
    RVTestProgramServer(std::vector<std::string> commandLine,
                        std::map<std::string, std::string> environment, std::string logPath);

private:
    void serve(int connection);
    void reapChildren();

    std::vector<std::string> commandLine_;
    std::map<std::string, std::string> environment_;
    std::string logPath_;
    std::vector<pid_t> children_;
};

/// git daemon, which takes pushes too.
class RVTestGitDaemon : public RVTestProgramServer {
public:
    /// `directory` is for its own files.
    RVTestGitDaemon(const std::string& directory, const std::string& repositoriesPath);
    /// "git://127.0.0.1:1234/name"
    [[nodiscard]] std::string url(std::string_view name) const;
};

/// OpenSSH's server, run as the current user, with keys of its own.
class RVTestSSHServer : public RVTestProgramServer {
public:
    explicit RVTestSSHServer(const std::string& directory);

    /// "ssh://user@127.0.0.1:1234/path" for an absolute path.
    [[nodiscard]] std::string url(std::string_view path) const;
    [[nodiscard]] std::string urlForUser(std::string_view user, std::string_view path) const;
    /// "user@host:/path", for commands with sshCommand().
    [[nodiscard]] std::string shortURL(std::string_view path) const;

    // Values for GIT_SSH_COMMAND.

    /// With a key that the server takes.
    [[nodiscard]] std::string sshCommand() const { return sshCommandWith("key", "known"); }
    /// With a key whose passphrase is "polonium".
    [[nodiscard]] std::string sshCommandWithEncryptedKey() const {
        return sshCommandWith("encrypted", "known");
    }
    /// With a key that the server does not take.
    [[nodiscard]] std::string sshCommandWithUnknownKey() const {
        return sshCommandWith("stranger", "known");
    }
    /// By way of another port, for which no key is known.
    [[nodiscard]] std::string sshCommandForAnyPort() const {
        return sshCommand() + " -o StrictHostKeyChecking=no -o LogLevel=ERROR";
    }
    /// For somebody who has never seen the server's own key.
    [[nodiscard]] std::string sshCommandWithUnknownHost() const {
        return sshCommandWith("key", "empty");
    }

private:
    [[nodiscard]] std::string sshCommandWith(std::string_view key, std::string_view hosts) const;

    std::string directory_;
    std::string user_;
};

/// A web server that runs git http-backend. Paths of its addresses begin with one of these:
/// "git/", open to all; "private/", for marie with the password "radium"; "forbidden/", 403;
/// "broken/", 500; "moved/", a redirect to "git/".
class RVTestWebServer {
public:
    RVTestWebServer(const std::string& directory, const std::string& repositoriesPath);
    ~RVTestWebServer();
    RVTestWebServer(const RVTestWebServer&) = delete;
    RVTestWebServer& operator=(const RVTestWebServer&) = delete;

    [[nodiscard]] std::string httpURL(std::string_view path,
                                      std::string_view credentials = {}) const;
    [[nodiscard]] std::string httpsURL(std::string_view path,
                                       std::string_view credentials = {}) const;
    [[nodiscard]] int httpPort() const { return httpPort_; }
    [[nodiscard]] int httpsPort() const { return httpsPort_; }
    /// The server's certificate, which it has signed itself: for GIT_SSL_CAINFO.
    [[nodiscard]] const std::string& certificatePath() const { return certificatePath_; }

private:
    [[nodiscard]] bool startOnPorts(const std::string& directory, const std::string& repositories);

    int httpPort_ = 0;
    int httpsPort_ = 0;
    std::string certificatePath_;
    pid_t process_ = -1;
};

/// Accepts, and then says nothing.
class RVTestSilentServer : public RVTestListener {
public:
    RVTestSilentServer();
    ~RVTestSilentServer() override;

private:
    std::vector<int> connections_;
};

/// Passes connections on to another port of loopback, and closes them once the server has said so
/// many bytes in one of them; or holds them then, and lets nothing more through.
class RVTestCuttingServer : public RVTestListener {
public:
    enum class Afterwards { Closes, Holds };

    RVTestCuttingServer(int serverPort, std::size_t numberOfBytes,
                        Afterwards afterwards = Afterwards::Closes);
    ~RVTestCuttingServer() override;

private:
    void pass(int connection);

    int serverPort_;
    std::size_t numberOfBytes_;
    Afterwards afterwards_;
    std::atomic<bool> ended_ = false;
    std::vector<std::thread> threads_;
};

/// A port of loopback on which nobody listens: taken, so that nobody else can begin to.
class RVTestUnusedPort {
public:
    RVTestUnusedPort();
    ~RVTestUnusedPort();
    RVTestUnusedPort(const RVTestUnusedPort&) = delete;
    RVTestUnusedPort& operator=(const RVTestUnusedPort&) = delete;

    [[nodiscard]] int number() const { return number_; }

private:
    int number_ = 0;
    int socket_;
};
