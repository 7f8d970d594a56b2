#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/objects/RVGitFileEntry.h"

/// A version of a file that the index holds: the staged one, or one side of a conflict. A
/// snapshot, readable on any thread.
class RVGIT_EXPORT RVGitIndexEntry : public RVGitFileEntry {
public:
    /// The repository is required. `flag` is a letter of `git ls-files -v`.
    RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                    std::optional<std::string> objectHash, RVGitFileMode fileMode,
                    RVGitIndexStage stage, std::optional<char> flag);
    RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                    RVGitCompactHash objectHash, RVGitFileMode fileMode, RVGitIndexStage stage,
                    std::optional<char> flag);

    [[nodiscard]] RVGitIndexStage stage() const { return static_cast<RVGitIndexStage>(stage_); }
    /// One letter; absent where git printed none.
    [[nodiscard]] std::optional<std::string> flag() const;

    [[nodiscard]] bool isDefaultStage() const { return stage_ == RVGitIndexStageDefault; }
    [[nodiscard]] bool isBaseStage() const { return stage_ == RVGitIndexStageBase; }
    [[nodiscard]] bool isOursStage() const { return stage_ == RVGitIndexStageOurs; }
    [[nodiscard]] bool isTheirsStage() const { return stage_ == RVGitIndexStageTheirs; }
    /// Whether git has been told to take the file for unchanged.
    [[nodiscard]] bool isAssumeUnchangedFlagSet() const;

    /// Compares path, hash, stage and flag.
    [[nodiscard]] bool isEqualToIndexEntry(const RVGitIndexEntry& other) const;

private:
    std::uint8_t stage_;
    std::optional<char> flag_;
};
