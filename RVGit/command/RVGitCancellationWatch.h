#pragma once

#include <cstdint>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitCommandQueue.h"

/// Notices that all commands are cancelled while an operation of several steps is under way: one
/// that reads before it writes, or that writes more than once. A cancelled command has succeeded
/// with what it had printed by then: what is decided by its output is not to be done, and what was
/// to be written behind it is not done in part. Such an operation ends there: false, or nothing,
/// with a cleared place. One watch belongs to one run of the operation, from its beginning on, and
/// to one thread.
class RVGitCancellationWatch {
public:
    /// True, with a cleared place, if the operation is to take no further step.
    [[nodiscard]] bool isCancelled(RVErrorPlace error = nullptr) const {
        if (RVGitCommandQueue::sharedQueue().numberOfCancellations() == number_)
            return false;
        clearErrorPlace(error);
        return true;
    }

private:
    std::uint64_t number_ = RVGitCommandQueue::sharedQueue().numberOfCancellations();
};
