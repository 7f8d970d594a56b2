#include "RVGit/diff/RVGitChangeset.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/diff/RVGitChangesetLoader.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffLoader.h"

namespace {

std::shared_ptr<RVGitChangeset> changesetByDiff(const std::shared_ptr<RVGitRepository>& repository,
                                                std::vector<std::string> revisions,
                                                const RVGitChangeset::FilePaths& filePaths,
                                                const std::optional<RVOptions>& options,
                                                RVErrorPlace error) {
    RVGitChangesetLoader loader(repository);
    loader.setRevisions(std::move(revisions));
    loader.setFilePaths(filePaths);
    loader.setDiffOptions(options);
    return loader.loadChangeset(error);
}

}  // namespace

/// Where the entries stand, by their paths; of entries with the same path the first. Each part is
/// made when a path is first looked for in it.
struct RVGitChangeset::PathIndex {
    std::once_flag exactIsMade;
    /// Views of the entries' paths.
    std::unordered_map<std::string_view, std::size_t> exact;
    std::once_flag composedIsMade;
    /// Of the paths that are not ASCII, which are composed as they stand.
    std::unordered_map<std::string, std::size_t> composed;

    static std::optional<std::size_t> find(const auto& paths, const auto& path) {
        const auto found = paths.find(path);
        return found == paths.end() ? std::nullopt : std::optional(found->second);
    }
};

RVGitChangeset::RVGitChangeset(std::shared_ptr<RVGitRepository> repository,
                               RVGitDiffSettings diffSettings, Entries entries)
    : repository_(std::move(repository)),
      diffSettings_(std::move(diffSettings)),
      entries_(std::move(entries)),
      pathIndex_(std::make_shared<PathIndex>()) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetWithRepository(
    std::shared_ptr<RVGitRepository> repository, RVGitDiffSettings diffSettings, Entries entries) {
    return std::make_shared<RVGitChangeset>(std::move(repository), std::move(diffSettings),
                                            std::move(entries));
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
    const std::string& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    RVGitChangesetLoader loader(repository);
    loader.setRevisions({revision});
    loader.setFilePaths(filePaths);
    loader.setLogOptions(options);
    return loader.loadChangeset(error);
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetByComparingRevisions(
    const std::vector<std::string>& revisions, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return changesetByDiff(repository, revisions, filePaths, options, error);
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetForRevisionRange(
    const std::string& revisionRange, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return changesetByDiff(repository, {revisionRange}, filePaths, options, error);
}

std::shared_ptr<RVGitChangeset>
RVGitChangeset::changesetByComparingWorkingTreeWithIndexWithForFilePaths(
    const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return changesetByDiff(repository, {}, filePaths, options, error);
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetByComparingWorkingTreeWithRevision(
    const std::string& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return changesetByDiff(repository, {revision}, filePaths, options, error);
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetByComparingIndexWithRevision(
    const std::optional<std::string>& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    RVOptions stagedOptions = options.value_or(RVOptions());
    stagedOptions.insert_or_assign(RVGitDiffOptionStaged, true);
    std::vector<std::string> revisions;
    if (!RVStringIsEmpty(revision))
        revisions.push_back(*revision);
    return changesetByDiff(repository, std::move(revisions), filePaths, stagedOptions, error);
}

std::shared_ptr<RVGitChangeset> RVGitChangeset::changesetByComparingIndexWithBaseForFilePaths(
    const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return changesetByComparingIndexWithRevision(std::nullopt, filePaths, repository, options,
                                                 error);
}

std::uint64_t RVGitChangeset::totalLinesAdded() const {
    std::uint64_t total = 0;
    for (const auto& entry : entries_)
        total += entry->linesAdded();
    return total;
}

std::uint64_t RVGitChangeset::totalLinesDeleted() const {
    std::uint64_t total = 0;
    for (const auto& entry : entries_)
        total += entry->linesDeleted();
    return total;
}

std::shared_ptr<RVGitChangesetEntry> RVGitChangeset::entryForFilePath(
    std::string_view filePath) const {
    std::call_once(pathIndex_->exactIsMade, [this] {
        for (std::size_t index = 0; index < entries_.size(); ++index)
            if (const auto& path = entries_[index]->filePath())
                pathIndex_->exact.try_emplace(*path, index);
    });
    if (const auto index = PathIndex::find(pathIndex_->exact, filePath))
        return entries_[*index];
    std::call_once(pathIndex_->composedIsMade, [this] {
        for (std::size_t index = 0; index < entries_.size(); ++index)
            if (const auto& path = entries_[index]->filePath(); path && !isASCII(*path))
                pathIndex_->composed.try_emplace(precomposedString(*path), index);
    });
    const std::string composedPath = precomposedString(filePath);
    const auto index = PathIndex::find(pathIndex_->exact, std::string_view(composedPath));
    const auto otherIndex = PathIndex::find(pathIndex_->composed, composedPath);
    if (!index && !otherIndex)
        return nullptr;
    constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    return entries_[std::min(index.value_or(none), otherIndex.value_or(none))];
}

RVGitChangeset::Diffs RVGitChangeset::allDiffs(RVErrorPlace error) const {
    RVGitDiffLoader loader(repository_);
    loader.setDiffSettings(diffSettings_);
    return loader.loadDiffs(error);
}

std::shared_ptr<RVGitDiff> RVGitChangeset::diffForEntryWithFilePath(const std::string& filePath,
                                                                    RVErrorPlace error) const {
    const auto entry = entryForFilePath(filePath);
    if (!entry) {
        clearErrorPlace(error);
        return nullptr;
    }
    // Of a rename git must see both sides.
    FilePaths filePaths = {filePath};
    if (entry->oldFilePath() && !isEqualToUnicodeString(*entry->filePath(), *entry->oldFilePath()))
        filePaths = {*entry->filePath(), *entry->oldFilePath()};
    RVGitDiffLoader loader(repository_);
    loader.setDiffSettings(diffSettings_);
    const auto diffs = loader.loadDiffsForFilePaths(filePaths, error);
    if (!diffs)
        return nullptr;
    auto diff = RVGitDiff::diffOfFile(diffs, *entry->filePath());
    if (!diff)
        clearErrorPlace(error);
    return diff;
}
