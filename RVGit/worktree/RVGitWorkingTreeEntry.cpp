#include "RVGit/worktree/RVGitWorkingTreeEntry.h"

#include <array>
#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/objects/RVGitTree.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeEntryLoader.h"
#include "RVGit/worktree/RVGitWorkingTreeHelper.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"

struct RVGitWorkingTreeEntry::Details {
    std::optional<std::string> originalFilePath;
    std::optional<std::string> absoluteFilePath;
    std::shared_ptr<RVGitIndexEntry> stagedVersion;
    std::shared_ptr<RVGitTreeEntry> baseVersion;
    /// Of the stages 1 to 3.
    std::array<std::shared_ptr<RVGitIndexEntry>, 3> unmergedVersions;
};

namespace {

std::shared_ptr<RVGitBlob> blobOfVersion(const RVGitFileEntry& version, RVErrorPlace error) {
    return RVGitBlob::blobForHash(version.objectHash().value_or(""), version.repository(), error);
}

std::shared_ptr<RVGitBlob> blobOfVersionClearingPlace(
    const std::shared_ptr<RVGitIndexEntry>& version, RVErrorPlace error) {
    if (version)
        return blobOfVersion(*version, error);
    clearErrorPlace(error);
    return nullptr;
}

}  // namespace

RVGitWorkingTreeEntry::RVGitWorkingTreeEntry(std::shared_ptr<RVGitRepository> repository,
                                             std::string filePath, RVGitFileMode fileMode,
                                             RVGitFileStatus leftStatus,
                                             RVGitFileStatus rightStatus)
    : RVGitFileEntry(std::move(repository), std::move(filePath), std::nullopt, fileMode),
      currentStatus_(static_cast<std::uint8_t>(rightStatus)),
      stagedStatus_(static_cast<std::uint8_t>(leftStatus)) {
    if (!RVGitWorkingTreeHelper::isUnmergedPathForLeftFileStatus(leftStatus, rightStatus))
        return;
    setCurrentStatus(RVGitFileStatusUnmerged);
    setStagedStatus(RVGitFileStatusUnmerged);
    setUnmergedOursStatus(leftStatus);
    setUnmergedTheirsStatus(rightStatus);
}

RVGitWorkingTreeEntry::~RVGitWorkingTreeEntry() = default;

std::uint64_t RVGitWorkingTreeEntry::countChangedWorkingTreeEntriesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return RVGitWorkingTreeEntryLoader(repository)
        .countWorkingTreeEntriesForFilePath(std::nullopt, options, error);
}

std::optional<RVGitWorkingTreeEntry::Entries>
RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return allWorkingTreeEntriesForRepository(repository, std::nullopt, error);
}

std::optional<RVGitWorkingTreeEntry::Entries>
RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return allWorkingTreeEntriesForRepository(
        repository,
        RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true},
                  {RVGitWorkingTreeOptionUntrackedFilesMode, RVGitUntrackedFilesModeAll}},
        error);
}

std::optional<RVGitWorkingTreeEntry::Entries>
RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return workingTreeEntriesForFilePath(std::nullopt, repository, options, error);
}

std::optional<RVGitWorkingTreeEntry::Entries> RVGitWorkingTreeEntry::workingTreeEntriesForFilePath(
    const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& inRepository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return RVGitWorkingTreeEntryLoader(inRepository)
        .loadWorkingTreeEntriesForFilePath(filePath, options, error);
}

std::shared_ptr<RVGitWorkingTreeEntry> RVGitWorkingTreeEntry::workingTreeEntryForFilePath(
    const std::string& filePath, const std::shared_ptr<RVGitRepository>& inRepository,
    RVErrorPlace error) {
    const auto entries = workingTreeEntriesForFilePath(
        pathByDeletingLastComponent(filePath), inRepository,
        RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true},
                  {RVGitWorkingTreeOptionUntrackedFilesMode, RVGitUntrackedFilesModeAll},
                  {RVGitWorkingTreeOptionIncludeIgnoredFiles, true}},
        error);
    if (!entries)
        return nullptr;
    const auto found =
        RVFindUnicodeName(entries->begin(), entries->end(), filePath,
                          [](const auto& entry) -> std::string_view { return entry->filePath(); });
    if (found != entries->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

RVGitWorkingTreeEntry::Details& RVGitWorkingTreeEntry::details() const {
    if (!details_)
        details_ = std::make_unique<Details>();
    return *details_;
}

std::optional<std::string> RVGitWorkingTreeEntry::originalFilePath() const {
    return details_ ? details_->originalFilePath : std::nullopt;
}

void RVGitWorkingTreeEntry::setOriginalFilePath(std::optional<std::string> path) {
    if (path || details_)
        details().originalFilePath = std::move(path);
}

const std::string& RVGitWorkingTreeEntry::absoluteFilePath() const {
    auto& path = details().absoluteFilePath;
    if (!path)
        path = pathByAppendingComponent(repository()->path(), filePath());
    return *path;
}

std::shared_ptr<RVGitIndexEntry> RVGitWorkingTreeEntry::stagedVersion() const {
    if (details_ && details_->stagedVersion)
        return details_->stagedVersion;
    if (hasStagedRecord_) {
        details().stagedVersion = std::make_shared<RVGitIndexEntry>(
            repository(), filePath(), stagedObjectHash_,
            static_cast<RVGitFileMode>(stagedFileMode_), RVGitIndexStageDefault, stagedFlag_);
        return details_->stagedVersion;
    }
    if (hasLoadedIndexVersions_ || stagedStatus_ == RVGitFileStatusUntracked ||
        stagedStatus_ == RVGitFileStatusDeleted)
        return nullptr;
    details().stagedVersion = repository()->index()->indexEntryForFilePath(filePath());
    return details_->stagedVersion;
}

void RVGitWorkingTreeEntry::setStagedVersion(std::shared_ptr<RVGitIndexEntry> version) {
    details().stagedVersion = std::move(version);
    hasStagedRecord_ = false;
}

void RVGitWorkingTreeEntry::setStagedVersion(RVGitCompactHash objectHash, RVGitFileMode fileMode,
                                             std::optional<char> flag) {
    if (details_)
        details_->stagedVersion.reset();
    hasStagedRecord_ = true;
    stagedObjectHash_ = objectHash;
    stagedFileMode_ = static_cast<std::uint32_t>(fileMode);
    stagedFlag_ = flag;
}

const std::string& RVGitWorkingTreeEntry::filePathInBase() const {
    if (stagedStatus_ == RVGitFileStatusRenamed && details_ && details_->originalFilePath)
        return *details_->originalFilePath;
    return filePath();
}

std::shared_ptr<RVGitTreeEntry> RVGitWorkingTreeEntry::baseVersion() const {
    if (details_ && details_->baseVersion)
        return details_->baseVersion;
    if (stagedStatus_ == RVGitFileStatusUntracked || stagedStatus_ == RVGitFileStatusAdded)
        return nullptr;
    details().baseVersion =
        RVGitTree::treeEntryForRevision(RVGitHEADRevision, filePathInBase(), repository());
    return details_->baseVersion;
}

void RVGitWorkingTreeEntry::setBaseVersion(std::shared_ptr<RVGitTreeEntry> version) {
    details().baseVersion = std::move(version);
}

std::shared_ptr<RVGitIndexEntry> RVGitWorkingTreeEntry::unmergedVersionAtStage(
    RVGitIndexStage stage) const {
    if (details_ && details_->unmergedVersions[stage - 1])
        return details_->unmergedVersions[stage - 1];
    if (hasLoadedIndexVersions_ || !isUnmergedFile())
        return nullptr;
    auto& version = details().unmergedVersions[stage - 1];
    version = repository()->index()->indexEntryForFilePath(filePath(), stage);
    return version;
}

void RVGitWorkingTreeEntry::setUnmergedVersionAtStage(std::shared_ptr<RVGitIndexEntry> version,
                                                      RVGitIndexStage stage) {
    details().unmergedVersions[stage - 1] = std::move(version);
}

std::shared_ptr<RVGitIndexEntry> RVGitWorkingTreeEntry::unmergedBaseVersion() const {
    return unmergedVersionAtStage(RVGitIndexStageBase);
}
void RVGitWorkingTreeEntry::setUnmergedBaseVersion(std::shared_ptr<RVGitIndexEntry> version) {
    setUnmergedVersionAtStage(std::move(version), RVGitIndexStageBase);
}

std::shared_ptr<RVGitIndexEntry> RVGitWorkingTreeEntry::unmergedOursVersion() const {
    return unmergedVersionAtStage(RVGitIndexStageOurs);
}
void RVGitWorkingTreeEntry::setUnmergedOursVersion(std::shared_ptr<RVGitIndexEntry> version) {
    setUnmergedVersionAtStage(std::move(version), RVGitIndexStageOurs);
}

std::shared_ptr<RVGitIndexEntry> RVGitWorkingTreeEntry::unmergedTheirsVersion() const {
    return unmergedVersionAtStage(RVGitIndexStageTheirs);
}
void RVGitWorkingTreeEntry::setUnmergedTheirsVersion(std::shared_ptr<RVGitIndexEntry> version) {
    setUnmergedVersionAtStage(std::move(version), RVGitIndexStageTheirs);
}

bool RVGitWorkingTreeEntry::isUnmergedFile() const {
    return currentStatus_ == RVGitFileStatusUnmerged && stagedStatus_ == RVGitFileStatusUnmerged;
}

bool RVGitWorkingTreeEntry::isIgnoredFile() const {
    return currentStatus_ == RVGitFileStatusIgnored && stagedStatus_ == RVGitFileStatusIgnored;
}

bool RVGitWorkingTreeEntry::isAssumeUnchangedFile() const {
    const auto version = stagedVersion();
    return version && version->isAssumeUnchangedFlagSet();
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForCurrentVersion(RVErrorPlace error) const {
    if (currentStatus_ == RVGitFileStatusDeleted) {
        clearErrorPlace(error);
        return nullptr;
    }
    return RVGitBlob::blobForCurrentFileAtPath(filePath(), repository(), error);
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForStagedVersion(RVErrorPlace error) const {
    return blobOfVersionClearingPlace(stagedVersion(), error);
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForBaseVersion(RVErrorPlace error) const {
    if (stagedStatus_ == RVGitFileStatusUntracked || stagedStatus_ == RVGitFileStatusAdded) {
        clearErrorPlace(error);
        return nullptr;
    }
    if (const auto version = baseVersion())
        return blobOfVersion(*version, error);
    return RVGitBlob::blobForRevision(RVGitHEADRevision, filePathInBase(), repository(), error);
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForUnmergedOursVersion(
    RVErrorPlace error) const {
    const auto version = unmergedOursVersion();
    return version ? blobOfVersion(*version, error) : nullptr;
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForUnmergedTheirsVersion(
    RVErrorPlace error) const {
    return blobOfVersionClearingPlace(unmergedTheirsVersion(), error);
}

std::shared_ptr<RVGitBlob> RVGitWorkingTreeEntry::blobForUnmergedBaseVersion(
    RVErrorPlace error) const {
    return blobOfVersionClearingPlace(unmergedBaseVersion(), error);
}

std::shared_ptr<RVGitDiff> RVGitWorkingTreeEntry::compareWorkingTreeWithIndexWithOptions(
    const std::optional<RVOptions>& options, RVErrorPlace error) const {
    return ownDiff(RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
                       {filePath()}, repository(), options, error),
                   error);
}

std::shared_ptr<RVGitDiff> RVGitWorkingTreeEntry::compareIndexWithBaseWithOptions(
    const std::optional<RVOptions>& options, RVErrorPlace error) const {
    return ownDiff(RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths(
                       {filePath()}, repository(), options, error),
                   error);
}

std::shared_ptr<RVGitDiff> RVGitWorkingTreeEntry::ownDiff(
    const std::optional<std::vector<std::shared_ptr<RVGitDiff>>>& diffs, RVErrorPlace error) const {
    auto diff = RVGitDiff::diffOfFile(diffs, filePath());
    if (diffs && !diff)
        clearErrorPlace(error);
    return diff;
}

std::shared_ptr<RVGitDiff> RVGitWorkingTreeEntry::compareUnmergedVersionsWithOptions(
    const std::optional<RVOptions>& options, RVErrorPlace error) const {
    if (!isUnmergedFile()) {
        clearErrorPlace(error);
        return nullptr;
    }
    return RVGitDiff::diffByComparingBlob(
        RVGitWorkingTreeHelper::unmergedOursFileReferenceForWorkingTreeEntry(*this),
        RVGitWorkingTreeHelper::unmergedTheirsFileReferenceForWorkingTreeEntry(*this), repository(),
        options, error);
}

bool RVGitWorkingTreeEntry::isEqualToWorkingTreeEntry(const RVGitWorkingTreeEntry& other) const {
    if (!isEqualToFileEntry(other) || currentStatus_ != other.currentStatus_ ||
        stagedStatus_ != other.stagedStatus_ || unmergedOursStatus_ != other.unmergedOursStatus_ ||
        unmergedTheirsStatus_ != other.unmergedTheirsStatus_)
        return false;
    const auto path = originalFilePath();
    const auto otherPath = other.originalFilePath();
    return !otherPath || path == otherPath;
}
