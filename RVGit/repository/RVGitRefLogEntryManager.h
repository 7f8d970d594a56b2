#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitRefLogEntry;
class RVGitRepository;

/// Reads the reflogs of a repository, which it holds strongly. Any thread. Each operation runs git
/// reflog; whether it failed is told by the place for the error alone: kept for compatibility.
class RVGIT_EXPORT RVGitRefLogEntryManager {
public:
    /// The repository is required.
    explicit RVGitRefLogEntryManager(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitRefLogEntryManager> refLogEntryManagerWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }

    /// RVNotFound on failure; 0 if no place was given.
    [[nodiscard]] std::int64_t numberOfRefLogEntriesForRefWithName(
        const std::string& refName, RVErrorPlace error = nullptr) const;
    /// The entries, newest first, with the options of RVGitRefLogCommand. A ref without a reflog
    /// has none. Absent on failure; empty if no place was given.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitRefLogEntry>>>
    loadRefLogEntriesForRefWithName(const std::string& refName,
                                    const std::optional<RVOptions>& options,
                                    RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitRefLogEntry>>>
    loadHEADRefLogEntries(const std::optional<RVOptions>& options,
                          RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
};
