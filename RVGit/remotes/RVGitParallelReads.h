#pragma once

#include <initializer_list>
#include <memory>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitCommand;

/// Commands that only read, side by side on the shared queue. What is made of them, and the error
/// where one fails, are the same as if they ran one after the other: the caller finishes them in
/// that order and stops at the first that fails.
class RVGIT_EXPORT RVGitParallelReads {
public:
    explicit RVGitParallelReads(std::initializer_list<std::shared_ptr<RVGitCommand>> commands);
    /// Cancels those that still run.
    ~RVGitParallelReads();
    RVGitParallelReads(const RVGitParallelReads&) = delete;
    RVGitParallelReads& operator=(const RVGitParallelReads&) = delete;

    /// Waits for the command. False with its error in the place if it failed; false with a cleared
    /// place if it was cancelled, so that half a list is never taken for a whole one. Throws what
    /// was raised while it was prepared.
    [[nodiscard]] static bool finish(RVGitCommand& command, RVErrorPlace error);
    /// The same for a command that is not on the queue yet.
    [[nodiscard]] static bool run(RVGitCommand& command, RVErrorPlace error);

private:
    std::vector<std::shared_ptr<RVGitCommand>> commands_;
};
