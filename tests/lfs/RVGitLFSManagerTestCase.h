#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/lfs/RVGitLFSManager.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "tests/lfs/RVGitLFSTestCase.h"

/// What a handler is told: waits for the first call, and counts all.
class Told {
public:
    [[nodiscard]] RVGitLFSManager::CompletionHandler handler() {
        return [this](const std::optional<RVError>& error) {
            if (++calls == 1)
                promise_.set_value(error);
        };
    }
    [[nodiscard]] std::optional<RVError> error() { return promise_.get_future().get(); }
    std::atomic<int> calls = 0;

private:
    std::promise<std::optional<RVError>> promise_;
};

/// Base of the tests of RVGitLFSManager.
class RVGitLFSManagerTestCase : public RVGitLFSTestCase {
protected:
    RVGitLFSManagerTestCase() : manager_(repository()) {}

    /// The repository with a server in this directory, and a second repository with its commits.
    void addServer() {
        server_ = "file://" + initBareRepository("server.git");
        gitInRepository({"remote", "add", "origin", server_});
        gitInRepository({"push", "-u", "origin", "main"});
    }
    [[nodiscard]] std::shared_ptr<RVGitRemote> origin() const {
        return RVGitRemote::remoteForName("origin", repository());
    }
    void waitForManager() { manager_.commandQueue().waitUntilAllOperationsAreFinished(); }

    std::string server_;
    RVGitLFSManager manager_;
};
