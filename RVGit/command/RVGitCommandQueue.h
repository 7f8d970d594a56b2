#pragma once

#include <cstdint>
#include <memory>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitCommand;
class RVOperationQueue;

/// The one queue that every git process of the library runs on, bounded by
/// RVGitConfiguration's maxConcurrentCommands when it is made. It lives as long as the process.
/// Large files, external tools and archives run beside it: see RVGitLFSManager, RVGitMergeTool,
/// RVGitDiffTool and RVGitArchiver. Any thread.
class RVGIT_EXPORT RVGitCommandQueue {
public:
    [[nodiscard]] static RVGitCommandQueue& sharedQueue();

    [[nodiscard]] RVOperationQueue& queue() { return *queue_; }

    /// Does not block. The command is required.
    void enqueueCommand(const std::shared_ptr<RVGitCommand>& command);
    /// Waits until the command has finished; true exactly when it has no error, which is otherwise
    /// left in the place. Throws what was raised while the command was prepared.
    bool executeCommand(const std::shared_ptr<RVGitCommand>& command, RVErrorPlace error = nullptr);
    /// The same on another queue than the shared one, for a part of the library that has one of its
    /// own.
    static bool executeCommandOnQueue(const std::shared_ptr<RVGitCommand>& command,
                                      RVOperationQueue& queue, RVErrorPlace error = nullptr);
    /// Those that run and those that wait; commands that are added afterwards run.
    void cancelAllCommands();
    /// How often all commands have been cancelled, here or by queue(). A cancelled command has
    /// succeeded with what it had printed by then, which may be nothing: an operation that decides
    /// by the output of several commands what to change sees by a changed number that it is to
    /// stop.
    [[nodiscard]] std::uint64_t numberOfCancellations() const;
    void waitUntilAllCommandsFinished();

private:
    RVGitCommandQueue();
    std::unique_ptr<RVOperationQueue> queue_;
};
