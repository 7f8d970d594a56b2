#include "RVGit/worktree/RVGitWorkingTreeEntryLoader.h"

#include <sys/stat.h>

#include <string_view>
#include <unordered_map>
#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitIndexHelper.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"

namespace {

std::optional<std::vector<std::string>> listOfFilePath(const std::optional<std::string>& filePath) {
    if (!filePath)
        return std::nullopt;
    return std::vector<std::string>{*filePath};
}

/// Entries by path, in the order in which the paths first appeared.
class EntriesByPath {
public:
    /// Null if there is none. The entries of an index come sorted, so that of those which were
    /// appended only the last one can be meant.
    [[nodiscard]] RVGitWorkingTreeEntry* find(std::string_view filePath) const {
        if (!entries_.empty() && entries_.back()->filePath() == filePath)
            return entries_.back().get();
        const auto found = positions_.find(filePath);
        return found == positions_.end() ? nullptr : entries_[found->second].get();
    }
    /// Replaces the entry of the path, if there is one.
    void set(std::shared_ptr<RVGitWorkingTreeEntry> entry) {
        auto position = positions_.extract(entry->filePath());
        if (position.empty()) {
            positions_.emplace(entry->filePath(), entries_.size());
            entries_.push_back(std::move(entry));
            return;
        }
        position.key() = entry->filePath();
        entries_[position.mapped()] = std::move(entry);
        positions_.insert(std::move(position));
    }
    /// Of a path that has none yet.
    RVGitWorkingTreeEntry* append(std::shared_ptr<RVGitWorkingTreeEntry> entry) {
        // Paths that had to be decoded may turn out the same although they are not neighbours.
        if (!isASCII(entry->filePath()))
            positions_.emplace(entry->filePath(), entries_.size());
        entries_.push_back(std::move(entry));
        return entries_.back().get();
    }
    [[nodiscard]] RVGitWorkingTreeEntry::Entries takeEntries() { return std::move(entries_); }

private:
    RVGitWorkingTreeEntry::Entries entries_;
    /// The keys are the entries' own texts.
    std::unordered_map<std::string_view, std::size_t> positions_;
};

bool isAssumedUnchanged(const RVGitIndexOutputParserResultItem& record) {
    return record.flag && RVGitIndexHelper::isAssumeUnchangedFlag({&*record.flag, 1});
}

/// Which entries of the index the options ask for, as bits of RVGitIndexOptions; absent if none.
std::optional<unsigned> indexOptions(const std::optional<RVOptions>& options) {
    if (optionIsSet(options, RVGitWorkingTreeOptionIncludeUnchangedFiles))
        return 0;
    unsigned bits = 0;
    if (optionIsSet(options, RVGitWorkingTreeOptionIncludeSubmodules))
        bits |= RVGitIndexOptionSubmodules;
    if (optionIsSet(options, RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles))
        bits |= RVGitIndexOptionAssumeUnchangedFiles;
    return bits == 0 ? std::nullopt : std::optional(bits);
}

void attachVersion(RVGitWorkingTreeEntry& entry, const RVGitIndexOutputParserResultItem& record) {
    if (record.fileMode == RVGitFileModeSubmodule &&
        entry.currentStatus() != RVGitFileStatusUntracked)
        entry.setFileMode(record.fileMode);
    entry.setHasLoadedIndexVersions(true);
    if (record.stage == RVGitIndexStageDefault)
        return entry.setStagedVersion(record.objectHash, record.fileMode, record.flag);
    auto version =
        std::make_shared<RVGitIndexEntry>(entry.repository(), entry.filePath(), record.objectHash,
                                          record.fileMode, record.stage, record.flag);
    if (record.stage == RVGitIndexStageBase)
        entry.setUnmergedBaseVersion(std::move(version));
    else if (record.stage == RVGitIndexStageOurs)
        entry.setUnmergedOursVersion(std::move(version));
    else
        entry.setUnmergedTheirsVersion(std::move(version));
}

}  // namespace

RVGitWorkingTreeEntryLoader::RVGitWorkingTreeEntryLoader(
    std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitWorkingTreeEntryLoader> RVGitWorkingTreeEntryLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitWorkingTreeEntryLoader>(std::move(repository));
}

std::uint64_t RVGitWorkingTreeEntryLoader::countWorkingTreeEntriesForFilePath(
    const std::optional<std::string>&, const std::optional<RVOptions>& options,
    RVErrorPlace error) const {
    const auto changedFiles = loadChangedFilesInfoForFilePath(std::nullopt, options, error);
    return changedFiles ? changedFiles->size() : 0;
}

std::optional<RVGitWorkingTreeEntryLoader::Entries>
RVGitWorkingTreeEntryLoader::loadWorkingTreeEntriesForFilePath(
    const std::optional<std::string>& filePath, const std::optional<RVOptions>& options,
    RVErrorPlace error) const {
    const bool isWholeTree = RVStringIsEmpty(filePath) || filePath == ".";
    const auto path = isWholeTree ? std::nullopt : filePath;
    const bool includesUnchanged =
        optionIsSet(options, RVGitWorkingTreeOptionIncludeUnchangedFiles);
    const bool includesAssumeUnchanged =
        optionIsSet(options, RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles);

    auto changedFiles = loadChangedFilesInfoForFilePath(path, options, error);
    if (!changedFiles)
        return std::nullopt;
    EntriesByPath entries;
    bool changesDirectory = false;
    for (auto& item : *changedFiles) {
        const auto fileMode =
            fileModeForFileAtPath(pathByAppendingComponent(repository_->path(), item.filePath));
        auto entry =
            std::make_shared<RVGitWorkingTreeEntry>(repository_, std::move(item.filePath), fileMode,
                                                    item.leftFileStatus, item.rightFileStatus);
        entry->setOriginalFilePath(std::move(item.originalFilePath));
        if (fileMode == RVGitFileModeDirectory) {
            if (entry->stagedStatus() != RVGitFileStatusUntracked)
                changesDirectory = true;
            if (entry->currentStatus() != RVGitFileStatusUntracked &&
                entry->currentStatus() != RVGitFileStatusIgnored)
                entry->setFileMode(RVGitFileModeRegular);
        }
        entries.set(std::move(entry));
    }
    changedFiles.reset();

    auto workingOptions = options;
    if (changesDirectory) {
        if (!workingOptions)
            workingOptions.emplace();
        workingOptions->insert_or_assign(RVGitWorkingTreeOptionIncludeSubmodules, true);
    }
    const auto bits = indexOptions(workingOptions);
    if (!bits)
        return entries.takeEntries();
    // A failure is left to the place: what has changed is known without the index.
    auto records =
        repository_->index()->indexRecordsForFilePaths(listOfFilePath(path), *bits, error);
    if (!records)
        return entries.takeEntries();
    for (auto& record : *records) {
        auto* entry = entries.find(record.filePath);
        if (!entry) {
            if (!includesUnchanged && !(includesAssumeUnchanged && isAssumedUnchanged(record)))
                continue;
            entry = entries.append(std::make_shared<RVGitWorkingTreeEntry>(
                repository_, std::move(record.filePath),
                record.stage == RVGitIndexStageDefault ? record.fileMode : RVGitFileModeNone,
                RVGitFileStatusUnchanged, RVGitFileStatusUnchanged));
        }
        attachVersion(*entry, record);
    }
    return entries.takeEntries();
}

std::optional<std::vector<RVGitStatusOutputParserResultItem>>
RVGitWorkingTreeEntryLoader::loadChangedFilesInfoForFilePath(
    const std::optional<std::string>& filePath, const std::optional<RVOptions>& options,
    RVErrorPlace error) const {
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(repository_, listOfFilePath(filePath));
    if (const auto* mode = valueForOption(options, RVGitWorkingTreeOptionUntrackedFilesMode))
        command->setUntrackedFilesMode(static_cast<RVGitUntrackedFilesMode>(mode->unsignedValue()));
    if (const auto* mode = valueForOption(options, RVGitWorkingTreeOptionIgnoreSubmodulesMode))
        command->setIgnoreSubmodulesMode(
            static_cast<RVGitIgnoreSubmodulesMode>(mode->unsignedValue()));
    if (const auto* shows = valueForOption(options, RVGitWorkingTreeOptionIncludeIgnoredFiles))
        command->setShowsIgnoredFiles(shows->boolValue());
    if (!command->run(error))
        return std::nullopt;
    return command->takeChangedFiles();
}

std::optional<std::vector<std::shared_ptr<RVGitIndexEntry>>>
RVGitWorkingTreeEntryLoader::loadIndexEntriesForFilePath(const std::optional<std::string>& filePath,
                                                         const std::optional<RVOptions>& options,
                                                         RVErrorPlace error) const {
    const auto bits = indexOptions(options);
    if (!bits)
        return RVGitIndex::Entries();
    return repository_->index()->indexEntriesForFilePaths(listOfFilePath(filePath), *bits, error);
}

RVGitFileMode RVGitWorkingTreeEntryLoader::fileModeForFileAtPath(
    const std::string& absolutePath) const {
    struct stat attributes;
    if (holdsNUL(absolutePath) || lstat(absolutePath.c_str(), &attributes) != 0)
        return RVGitFileModeNone;
    if (S_ISDIR(attributes.st_mode))
        return RVGitFileModeDirectory;
    if (S_ISREG(attributes.st_mode))
        return attributes.st_mode & S_IXUSR ? RVGitFileModeExecutable : RVGitFileModeRegular;
    return S_ISLNK(attributes.st_mode) ? RVGitFileModeSymbolicLink : RVGitFileModeNone;
}
