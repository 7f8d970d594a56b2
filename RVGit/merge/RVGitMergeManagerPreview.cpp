#include <algorithm>
#include <iterator>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitMergeBaseCommand.h"
#include "RVGit/merge/RVGitConflictingFilePathsCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"

bool RVGitMergeManager::canMergeRevision(const std::string& revision,
                                         const std::string& intoRevision, RVErrorPlace error) {
    return canMergeRevision(revision, intoRevision, std::nullopt, nullptr, error);
}

bool RVGitMergeManager::canMergeRevision(const std::string& revision,
                                         const std::string& intoRevision,
                                         MergeTreeEntries* conflicts, RVErrorPlace error) {
    return canMergeRevision(revision, intoRevision, std::nullopt, conflicts, error);
}

bool RVGitMergeManager::canMergeRevision(const std::string& revision,
                                         const std::string& intoRevision,
                                         const std::optional<std::string>& usingBase,
                                         MergeTreeEntries* conflicts, RVErrorPlace error) {
    std::optional<std::string> base = usingBase;
    if (RVStringIsEmpty(base)) {
        const auto command = RVGitMergeBaseCommand::gitMergeBaseCommandWithRepository(repository_);
        command->setRevisions({intoRevision, revision});
        if (!command->run(error))
            return false;
        base = command->mergeBaseCommitHash();
        if (!base) {
            clearErrorPlace(error);
            return false;
        }
    }
    const auto command = RVGitMergeTreeCommand::gitMergeTreeCommandWithRepository(
        repository_, *base, revision, intoRevision);
    // A run that was cancelled has not failed, but has seen only a part of the report.
    if (!command->run(error) || command->isCancelled())
        return false;
    MergeTreeEntries entries = command->mergeTreeEntries();
    std::erase_if(entries, [](const auto& entry) { return !entry->hasConflict(); });
    if (entries.empty())
        return true;
    if (conflicts)
        *conflicts = std::move(entries);
    fillErrorPlace(error, gitErrorWithCode(RVGitMergeWillFailDueToConflictsError));
    return false;
}

std::optional<std::vector<std::string>> RVGitMergeManager::conflictingFilePathsForMergingRevision(
    const std::string& revision, const std::string& intoRevision, RVErrorPlace error) {
    const auto command =
        RVGitConflictingFilePathsCommand::gitConflictingFilePathsCommandWithRepository(
            repository_, revision, intoRevision);
    if (!command->run(error) || command->isCancelled())
        return std::nullopt;
    return command->conflictingFilePaths();
}
