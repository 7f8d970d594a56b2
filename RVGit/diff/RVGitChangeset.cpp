#include "RVGit/diff/RVGitChangeset.h"

#include <algorithm>
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

RVGitChangeset::RVGitChangeset(std::shared_ptr<RVGitRepository> repository,
                               RVGitDiffSettings diffSettings, Entries entries)
    : repository_(std::move(repository)),
      diffSettings_(std::move(diffSettings)),
      entries_(std::move(entries)) {
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
    const auto found = std::ranges::find_if(entries_, [&](const auto& entry) {
        return entry->filePath() && isEqualToUnicodeString(*entry->filePath(), filePath);
    });
    return found == entries_.end() ? nullptr : *found;
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
