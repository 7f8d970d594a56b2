#include "RVGit/worktree/RVGitIndex.h"

#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"

RVGitIndex::RVGitIndex(std::shared_ptr<RVGitRepository> repository)
    : RVGitRepositoryPart(std::move(repository)) {
    requireParameter(this->repository() != nullptr, "repository");
}

RVGitIndex::RVGitIndex(std::weak_ptr<RVGitRepository> owner)
    : RVGitRepositoryPart(std::move(owner)) {}

std::shared_ptr<RVGitIndex> RVGitIndex::indexWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitIndex>(std::move(repository));
}

std::optional<RVGitIndex::Entries> RVGitIndex::allIndexEntries(RVErrorPlace error) const {
    return indexEntriesForFilePaths(std::nullopt, 0, error);
}

std::optional<RVGitIndex::Entries> RVGitIndex::indexEntriesForFilePath(const std::string& filePath,
                                                                       RVErrorPlace error) const {
    return indexEntriesForFilePaths({{filePath}}, 0, error);
}

std::optional<RVGitIndex::Entries> RVGitIndex::indexEntriesForFilePaths(
    const std::optional<std::vector<std::string>>& filePaths, unsigned options,
    RVErrorPlace error) const {
    auto records = indexRecordsForFilePaths(filePaths, options, error);
    if (!records)
        return std::nullopt;
    const auto repository = this->repository();
    Entries entries;
    entries.reserve(records->size());
    for (auto& record : *records)
        entries.push_back(std::make_shared<RVGitIndexEntry>(repository, std::move(record.filePath),
                                                            record.objectHash, record.fileMode,
                                                            record.stage, record.flag));
    return entries;
}

std::optional<std::vector<RVGitIndexOutputParserResultItem>> RVGitIndex::indexRecordsForFilePaths(
    const std::optional<std::vector<std::string>>& filePaths, unsigned options,
    RVErrorPlace error) const {
    const auto command =
        RVGitLsFilesCommand::gitLsFilesCommandWithRepository(repository(), filePaths, 0);
    command->setShowsIndexInfo(true);
    command->setShowsAssumeUnchangedFiles(options & RVGitIndexOptionAssumeUnchangedFiles);
    command->setShowsSubmodules(options & RVGitIndexOptionSubmodules);
    if (!command->run(error))
        return std::nullopt;
    return command->takeEntries();
}

std::shared_ptr<RVGitIndexEntry> RVGitIndex::indexEntryForFilePath(const std::string& filePath,
                                                                   RVErrorPlace error) const {
    return indexEntryForFilePath(filePath, RVGitIndexStageDefault, error);
}

std::shared_ptr<RVGitIndexEntry> RVGitIndex::indexEntryForFilePath(const std::string& filePath,
                                                                   RVGitIndexStage atStage,
                                                                   RVErrorPlace error) const {
    const auto entries = indexEntriesForFilePath(filePath, error);
    if (!entries)
        return nullptr;
    const auto found = RVFindUnicodeName(entries->begin(), entries->end(), filePath,
                                         [&](const auto& entry) -> std::optional<std::string_view> {
                                             if (entry->stage() != atStage)
                                                 return std::nullopt;
                                             return entry->filePath();
                                         });
    if (found != entries->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}
