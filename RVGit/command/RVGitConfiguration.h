#pragma once

#include <atomic>
#include <cstddef>

#include "RVGit/base/RVExport.h"

/// What is set for the whole process. Any thread.
class RVGIT_EXPORT RVGitConfiguration {
public:
    [[nodiscard]] static RVGitConfiguration& sharedConfiguration();

    /// How many git processes run at once; 8 at first. Read once, when the command queue is made
    /// on first use: setting it later changes nothing.
    [[nodiscard]] std::size_t maxConcurrentCommands() const { return maxConcurrentCommands_; }
    void setMaxConcurrentCommands(std::size_t number) { maxConcurrentCommands_ = number; }

    /// Whether the variables that would redirect git, or change what it runs and prints, are taken
    /// out of what every command inherits from this process; false at first. A client that may be
    /// started from a hook, an alias or another tool sets it before its first command: an inherited
    /// GIT_DIR or GIT_INDEX_FILE beats the repository that it opens. The names are those of
    /// RVGitCommandEnvironmentSanitizerConfig; variables that a command or
    /// RVGitCommandEnvironment sets for itself stay. Commands heed it when they are made.
    [[nodiscard]] bool sanitizesInheritedEnvironment() const {
        return sanitizesInheritedEnvironment_;
    }
    void setSanitizesInheritedEnvironment(bool sanitizes) {
        sanitizesInheritedEnvironment_ = sanitizes;
    }

private:
    std::atomic<std::size_t> maxConcurrentCommands_ = 8;
    std::atomic<bool> sanitizesInheritedEnvironment_ = false;
};
