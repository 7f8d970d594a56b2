#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/objects/RVGitFileEntry.h"

class RVGitBlob;
class RVGitDiff;
class RVGitIndexEntry;
class RVGitTreeEntry;

/// A file with its state: how the working tree differs from the index, and the index from HEAD. A
/// snapshot that nothing refreshes. Some fields are loaded when they are first read, without a
/// lock, so an entry belongs to one thread at a time. It has no object hash.
///
/// The options of a listing are those of RVGitWorkingTreeOptions.h. Lists come without an order
/// that means anything.
class RVGIT_EXPORT RVGitWorkingTreeEntry : public RVGitFileEntry {
public:
    using Entries = std::vector<std::shared_ptr<RVGitWorkingTreeEntry>>;

    /// The repository is required. Two statuses that stand for a conflict make both statuses
    /// Unmerged, and are kept as those of our and their side.
    RVGitWorkingTreeEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                          RVGitFileMode fileMode, RVGitFileStatus leftStatus,
                          RVGitFileStatus rightStatus);
    ~RVGitWorkingTreeEntry() override;

    // Listing: one `git status`, and one `git ls-files` where the options or a changed submodule
    // ask for the index. The repository is required. Absent if the status failed; if only the
    // index could not be read, the changes are listed and the place is filled.

    /// How many paths have changed; runs no `git ls-files`. 0 on failure too, with a filled place.
    [[nodiscard]] static std::uint64_t countChangedWorkingTreeEntriesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<Entries> changedWorkingTreeEntriesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Every file of the index and every untracked one, changed or not. Like every listing of the
    /// working tree it may write the index anew, to remember what it has looked at, and so hold the
    /// lock that another command wants: a client that polls sets GIT_OPTIONAL_LOCKS to "0" in
    /// RVGitCommandEnvironment.
    [[nodiscard]] static std::optional<Entries> allWorkingTreeEntriesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// All paths, with the given options; without any, the changed files.
    [[nodiscard]] static std::optional<Entries> allWorkingTreeEntriesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// What lies at or below a path; absent, empty or "." for all. Git matches it as a path
    /// specification, and of the index only paths that begin with the text are kept: a pattern
    /// finds changes, without their versions, and nothing that is unchanged.
    [[nodiscard]] static std::optional<Entries> workingTreeEntriesForFilePath(
        const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& inRepository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    /// One file, in whatever state; null with a cleared place if there is none. Lists the whole
    /// directory that it lies in, which git matches as a path specification: a file below ":dir",
    /// or below a directory in another Unicode form, is not found.
    [[nodiscard]] static std::shared_ptr<RVGitWorkingTreeEntry> workingTreeEntryForFilePath(
        const std::string& filePath, const std::shared_ptr<RVGitRepository>& inRepository,
        RVErrorPlace error = nullptr);

    /// Where a renamed or copied file came from.
    [[nodiscard]] std::optional<std::string> originalFilePath() const;
    void setOriginalFilePath(std::optional<std::string> path);
    /// Below the repository's `path`; made when it is first read.
    [[nodiscard]] const std::string& absoluteFilePath() const;
    /// The working tree against the index.
    [[nodiscard]] RVGitFileStatus currentStatus() const {
        return static_cast<RVGitFileStatus>(currentStatus_);
    }
    void setCurrentStatus(RVGitFileStatus status) {
        currentStatus_ = static_cast<std::uint8_t>(status);
    }
    /// The index against HEAD.
    [[nodiscard]] RVGitFileStatus stagedStatus() const {
        return static_cast<RVGitFileStatus>(stagedStatus_);
    }
    void setStagedStatus(RVGitFileStatus status) {
        stagedStatus_ = static_cast<std::uint8_t>(status);
    }
    using RVGitFileEntry::setFileMode;

    // Versions: null if there is none. Each is loaded when it is first read, by one run of git,
    // unless the listing has attached what the index holds. That run looks the path up as a path
    // specification, so that one with a leading colon is not found. A failure gives null as well,
    // and the next call tries again.

    /// What is staged, from the index.
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> stagedVersion() const;
    void setStagedVersion(std::shared_ptr<RVGitIndexEntry> version);
    /// Sets what the version is made of when it is first read.
    void setStagedVersion(RVGitCompactHash objectHash, RVGitFileMode fileMode,
                          std::optional<char> flag);
    /// What HEAD holds: of a renamed file at its original path, of a copied one at the new.
    [[nodiscard]] std::shared_ptr<RVGitTreeEntry> baseVersion() const;
    void setBaseVersion(std::shared_ptr<RVGitTreeEntry> version);
    /// The sides of a conflict, from the index.
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> unmergedBaseVersion() const;
    void setUnmergedBaseVersion(std::shared_ptr<RVGitIndexEntry> version);
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> unmergedOursVersion() const;
    void setUnmergedOursVersion(std::shared_ptr<RVGitIndexEntry> version);
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> unmergedTheirsVersion() const;
    void setUnmergedTheirsVersion(std::shared_ptr<RVGitIndexEntry> version);
    /// Whether the listing has attached what the index holds: a version that is missing is then
    /// known to be missing.
    [[nodiscard]] bool hasLoadedIndexVersions() const { return hasLoadedIndexVersions_; }
    void setHasLoadedIndexVersions(bool hasLoaded) { hasLoadedIndexVersions_ = hasLoaded; }

    /// What each side of a conflict did, as git printed it: Unmerged, Added or Deleted. None
    /// (0) for a path without a conflict.
    [[nodiscard]] RVGitFileStatus unmergedOursStatus() const {
        return static_cast<RVGitFileStatus>(unmergedOursStatus_);
    }
    void setUnmergedOursStatus(RVGitFileStatus status) {
        unmergedOursStatus_ = static_cast<std::uint8_t>(status);
    }
    [[nodiscard]] RVGitFileStatus unmergedTheirsStatus() const {
        return static_cast<RVGitFileStatus>(unmergedTheirsStatus_);
    }
    void setUnmergedTheirsStatus(RVGitFileStatus status) {
        unmergedTheirsStatus_ = static_cast<std::uint8_t>(status);
    }

    /// Whether both statuses are Unmerged.
    [[nodiscard]] bool isUnmergedFile() const;
    /// Kept for compatibility: has no effect.
    void setUnmergedFile(bool) {}
    /// Whether both statuses are Ignored.
    [[nodiscard]] bool isIgnoredFile() const;
    /// Whether git has been told to take the file for unchanged; reads the staged version.
    [[nodiscard]] bool isAssumeUnchangedFile() const;
    /// Kept for compatibility: has no effect.
    void setAssumeUnchangedFile(bool) {}
    /// Stored for callers, and set by nothing in the library: isIgnoredFile() tells of the file.
    [[nodiscard]] bool isIgnored() const { return ignored_; }
    void setIgnored(bool ignored) { ignored_ = ignored; }

    // Contents. Null with a cleared place if there is no such version; null with git's error if
    // it cannot be read. Each runs `git show`, beside what loads the version.

    /// Reads the file in the working tree, without git; code 1200 if it cannot be read.
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForCurrentVersion(
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForStagedVersion(
        RVErrorPlace error = nullptr) const;
    /// Only an untracked or added file clears the place; any other of which HEAD has no version, a
    /// copied one too, gives git's error.
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForBaseVersion(RVErrorPlace error = nullptr) const;
    /// Leaves the place as it was if there is no such version.
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForUnmergedOursVersion(
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForUnmergedTheirsVersion(
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitBlob> blobForUnmergedBaseVersion(
        RVErrorPlace error = nullptr) const;

    // Comparing, by one `git diff`, with the options of RVGitDiff. Null with a cleared place if
    // nothing differs; null with git's error if git failed.

    [[nodiscard]] std::shared_ptr<RVGitDiff> compareWorkingTreeWithIndexWithOptions(
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitDiff> compareIndexWithBaseWithOptions(
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr) const;
    /// Our side against theirs; null with a cleared place if there is no conflict. A side that is
    /// alone is the file as it lies in the working tree, compared with nothing.
    [[nodiscard]] std::shared_ptr<RVGitDiff> compareUnmergedVersionsWithOptions(
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr) const;

    /// Compares paths and statuses. Kept for compatibility: an original path here equals none
    /// there, but not the other way round.
    [[nodiscard]] bool isEqualToWorkingTreeEntry(const RVGitWorkingTreeEntry& other) const;

private:
    struct Details;

    [[nodiscard]] Details& details() const;
    [[nodiscard]] const std::string& filePathInBase() const;
    /// This file's diff; clears the place if git found none.
    [[nodiscard]] std::shared_ptr<RVGitDiff> ownDiff(
        const std::optional<std::vector<std::shared_ptr<RVGitDiff>>>& diffs,
        RVErrorPlace error) const;
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> unmergedVersionAtStage(
        RVGitIndexStage stage) const;
    void setUnmergedVersionAtStage(std::shared_ptr<RVGitIndexEntry> version, RVGitIndexStage stage);

    std::uint8_t currentStatus_;
    std::uint8_t stagedStatus_;
    std::uint8_t unmergedOursStatus_ = RVGitFileStatusNone;
    std::uint8_t unmergedTheirsStatus_ = RVGitFileStatusNone;
    bool hasLoadedIndexVersions_ = false;
    bool ignored_ = false;
    bool hasStagedRecord_ = false;
    std::optional<char> stagedFlag_;
    std::uint32_t stagedFileMode_ = RVGitFileModeNone;
    RVGitCompactHash stagedObjectHash_;
    /// What few entries have, or are asked for.
    mutable std::unique_ptr<Details> details_;
};
