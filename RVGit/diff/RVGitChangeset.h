#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitChangesetEntry.h"
#include "RVGit/diff/RVGitDiffSettings.h"

class RVGitDiff;
class RVGitRepository;

/// The files that a comparison finds changed, with the counts of their lines, loaded without any
/// of the lines themselves. It remembers the comparison, so that diffs can be had of it later. A
/// snapshot, readable on any thread.
class RVGIT_EXPORT RVGitChangeset {
public:
    using Entries = std::vector<std::shared_ptr<RVGitChangesetEntry>>;
    using FilePaths = std::vector<std::string>;

    /// The repository is required.
    RVGitChangeset(std::shared_ptr<RVGitRepository> repository, RVGitDiffSettings diffSettings,
                   Entries entries);
    [[nodiscard]] static std::shared_ptr<RVGitChangeset> changesetWithRepository(
        std::shared_ptr<RVGitRepository> repository, RVGitDiffSettings diffSettings,
        Entries entries);

    // Comparing, each by one run of git, as the operations of RVGitDiff that are named alike.
    // Which say what is compared with what. Without file paths all files are compared. Null, with
    // git's error in the place, if git failed.

    /// What a revision changed against its parent; the options may be those of RVGitLogCommand too.
    /// Without options (std::nullopt, not RVOptions(), and `{}` does not compile) the working tree
    /// is compared with the revision instead. With file paths it is what the last commit changed
    /// that touched one of them, be it the revision or one before it.
    [[nodiscard]] static std::shared_ptr<RVGitChangeset>
    changesetByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    static std::shared_ptr<RVGitChangeset> changesetByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, RVEmptyBraces options,
        RVErrorPlace error = nullptr) = delete;
    [[nodiscard]] static std::shared_ptr<RVGitChangeset> changesetByComparingRevisions(
        const std::vector<std::string>& revisions, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitChangeset> changesetForRevisionRange(
        const std::string& revisionRange, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitChangeset>
    changesetByComparingWorkingTreeWithIndexWithForFilePaths(
        const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitChangeset>
    changesetByComparingWorkingTreeWithRevision(const std::string& revision,
                                                const FilePaths& filePaths,
                                                const std::shared_ptr<RVGitRepository>& repository,
                                                const std::optional<RVOptions>& options,
                                                RVErrorPlace error = nullptr);
    /// An absent or empty revision leaves the choice to git, which is HEAD.
    [[nodiscard]] static std::shared_ptr<RVGitChangeset> changesetByComparingIndexWithRevision(
        const std::optional<std::string>& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitChangeset>
    changesetByComparingIndexWithBaseForFilePaths(
        const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const RVGitDiffSettings& diffSettings() const { return diffSettings_; }
    [[nodiscard]] const Entries& entries() const { return entries_; }

    [[nodiscard]] std::uint64_t totalFilesChanged() const { return entries_.size(); }
    [[nodiscard]] std::uint64_t totalLinesAdded() const;
    [[nodiscard]] std::uint64_t totalLinesDeleted() const;

    /// The first entry with exactly that path, the new one of a rename, or else the first whose
    /// path differs in the Unicode form alone; null if there is none. Found without a search once
    /// the first has been looked for.
    [[nodiscard]] std::shared_ptr<RVGitChangesetEntry> entryForFilePath(
        std::string_view filePath) const;

    using Diffs = std::optional<std::vector<std::shared_ptr<RVGitDiff>>>;

    /// The diffs of all files of the comparison, also where the changeset was limited to some
    /// paths. Absent, with git's error in the place, if git failed.
    [[nodiscard]] Diffs allDiffs(RVErrorPlace error = nullptr) const;
    /// The diff of the entry of entryForFilePath(), a rename told by both its paths. Null with a
    /// cleared place if there is no such entry, or if git finds no change any more; so too for a
    /// path that is a pattern to git and does not match itself, as one with a colon in front.
    /// Renames and copies are detected as the configuration says, so that the diff may call a
    /// rename of the changeset a deletion.
    [[nodiscard]] std::shared_ptr<RVGitDiff> diffForEntryWithFilePath(
        const std::string& filePath, RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    RVGitDiffSettings diffSettings_;
    Entries entries_;
    struct PathIndex;
    std::shared_ptr<PathIndex> pathIndex_;
};
