#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/repository/RVGitRepositoryPart.h"

class RVGitIndexEntry;
class RVGitRepository;
struct RVGitIndexOutputParserResultItem;

/// Which entries RVGitIndex loads; no bit: all of them.
enum RVGitIndexOptions : unsigned {
    /// Those that git has been told to take for unchanged.
    RVGitIndexOptionAssumeUnchangedFiles = 1,
    /// Submodules.
    RVGitIndexOptionSubmodules = 2,
};

/// The index of a repository. It holds nothing of it: each operation is one `git ls-files`, blocks
/// until that has ended, and may be called on any thread. RVGitRepository::index() hands one out.
class RVGIT_EXPORT RVGitIndex : public RVGitRepositoryPart {
public:
    using Entries = std::vector<std::shared_ptr<RVGitIndexEntry>>;

    /// The repository is required, and kept alive.
    explicit RVGitIndex(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitIndex> indexWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    /// Every entry, a conflict with one for each side, in git's order; absent on failure.
    [[nodiscard]] std::optional<Entries> allIndexEntries(RVErrorPlace error = nullptr) const;
    /// The entries of a file, or of all files in a directory.
    [[nodiscard]] std::optional<Entries> indexEntriesForFilePath(
        const std::string& filePath, RVErrorPlace error = nullptr) const;
    /// The entries of several, all of them where no paths are given; as many paths as one command
    /// line takes. Git matches them as path specifications, and of what it prints only paths that
    /// begin with one of the texts are kept: a pattern finds nothing. `options` are bits of
    /// RVGitIndexOptions; with paths, these are listed beside what the bits ask for.
    [[nodiscard]] std::optional<Entries> indexEntriesForFilePaths(
        const std::optional<std::vector<std::string>>& filePaths, unsigned options,
        RVErrorPlace error = nullptr) const;
    /// The same as git printed them, for whoever makes something else of them.
    [[nodiscard]] std::optional<std::vector<RVGitIndexOutputParserResultItem>>
    indexRecordsForFilePaths(const std::optional<std::vector<std::string>>& filePaths,
                             unsigned options, RVErrorPlace error = nullptr) const;
    /// What is staged at the path; null with a cleared place if there is nothing.
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> indexEntryForFilePath(
        const std::string& filePath, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> indexEntryForFilePath(
        const std::string& filePath, RVGitIndexStage atStage, RVErrorPlace error = nullptr) const;

private:
    friend class RVGitRepository;
    /// The repository's own, which does not keep it alive.
    explicit RVGitIndex(std::weak_ptr<RVGitRepository> owner);
};
