#pragma once

#include <cstdint>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitCommandQueue.h"

/// Notices that all commands are cancelled while an operation of several steps is under way. A
/// cancelled command has succeeded with what it had printed by then: what is decided by its output
/// is not to be done.
class RVGitCancellationWatch {
public:
    /// True, with a cleared place, if the operation is to take no further step.
    [[nodiscard]] bool isCancelled(RVErrorPlace error) const {
        if (RVGitCommandQueue::sharedQueue().numberOfCancellations() == number_)
            return false;
        clearErrorPlace(error);
        return true;
    }

private:
    std::uint64_t number_ = RVGitCommandQueue::sharedQueue().numberOfCancellations();
};
