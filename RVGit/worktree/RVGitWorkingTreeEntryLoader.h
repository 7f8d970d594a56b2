#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"

class RVGitIndexEntry;
class RVGitRepository;
struct RVGitStatusOutputParserResultItem;

/// Lists the working tree: merges what `git status` and `git ls-files` print. It keeps nothing, so
/// any thread may use it. Git matches paths as path specifications, as they are; of the index only
/// paths that begin with the text are kept, so that a pattern finds changes, but nothing of the
/// index. The options are those of RVGitWorkingTreeOptions.h.
class RVGIT_EXPORT RVGitWorkingTreeEntryLoader {
public:
    using Entries = RVGitWorkingTreeEntry::Entries;

    /// The repository is required.
    explicit RVGitWorkingTreeEntryLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitWorkingTreeEntryLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }

    /// How many paths have changed; 0 on failure too, with a filled place. Kept for compatibility:
    /// the path is not read, and all paths are counted.
    [[nodiscard]] std::uint64_t countWorkingTreeEntriesForFilePath(
        const std::optional<std::string>& filePath, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr) const;
    /// The entries in the order of the changes, and then of the index. An absent or empty path,
    /// or ".", is all of it. Absent if `git status` failed; if `git ls-files` did, the place is
    /// filled and the changes are listed without what the index holds.
    [[nodiscard]] std::optional<Entries> loadWorkingTreeEntriesForFilePath(
        const std::optional<std::string>& filePath, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr) const;

    /// What `git status` prints; absent on failure.
    [[nodiscard]] std::optional<std::vector<RVGitStatusOutputParserResultItem>>
    loadChangedFilesInfoForFilePath(const std::optional<std::string>& filePath,
                                    const std::optional<RVOptions>& options,
                                    RVErrorPlace error = nullptr) const;
    /// The entries of the index that the options ask for, none without running git if they ask for
    /// none; absent on failure.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitIndexEntry>>>
    loadIndexEntriesForFilePath(const std::optional<std::string>& filePath,
                                const std::optional<RVOptions>& options,
                                RVErrorPlace error = nullptr) const;
    /// What lies at an absolute path, links not followed: a directory, a regular or executable (by
    /// its owner) file or a symbolic link; none for anything else and for nothing.
    [[nodiscard]] RVGitFileMode fileModeForFileAtPath(const std::string& absolutePath) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
};
