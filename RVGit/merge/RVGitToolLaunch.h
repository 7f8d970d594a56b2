#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitCommand;
class RVOperationQueue;

/// Told once how a tool has ended.
using RVGitToolCompletionHandler =
    std::function<void(int exitCode, const std::optional<RVError>& error)>;

inline namespace RVGIT_EXPORT rvgit {

/// Puts the command on the serial queue and returns at once. The handler, if any, is called exactly
/// once, on a thread of the queue, when the command has finished, and before the queue goes on to
/// its next: with the command's exit code and error; for one that could not be launched with code
/// 100, for one that was cancelled before its launch with the exit code of one that was ended by
/// SIGTERM. What was raised while the command was prepared reaches it as code 1.
void launchToolCommand(const std::shared_ptr<RVGitCommand>& command, RVOperationQueue& queue,
                       RVGitToolCompletionHandler handler);

}  // namespace rvgit
