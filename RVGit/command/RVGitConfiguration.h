#pragma once

#include <atomic>
#include <cstddef>

#include "RVGit/base/RVExport.h"

/// The library's one tunable. Any thread.
class RVGIT_EXPORT RVGitConfiguration {
public:
    [[nodiscard]] static RVGitConfiguration& sharedConfiguration();

    /// How many git processes run at once; 8 at first. Read once, when the command queue is made
    /// on first use: setting it later changes nothing.
    [[nodiscard]] std::size_t maxConcurrentCommands() const { return maxConcurrentCommands_; }
    void setMaxConcurrentCommands(std::size_t number) { maxConcurrentCommands_ = number; }

private:
    std::atomic<std::size_t> maxConcurrentCommands_ = 8;
};
