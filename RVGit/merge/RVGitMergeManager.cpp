#include "RVGit/merge/RVGitMergeManager.h"

#include <cerrno>
#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/history/RVGitMergeBaseCommand.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitCheckoutCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitResetCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"

namespace {

/// Runs a command of the kind, with no options but the flag.
template <typename Command>
bool runWithFlag(const std::shared_ptr<RVGitRepository>& repository, void (Command::*setFlag)(bool),
                 RVErrorPlace error) {
    const auto command = std::make_shared<Command>(repository, std::nullopt);
    ((*command).*setFlag)(true);
    return command->run(error);
}

/// Runs the operation on as many of the paths as one command takes, then on the next, until it
/// fails or all commands are cancelled, with a cleared place then. A list that one command takes is
/// no failure where it is cancelled.
template <typename BatchOperation>
bool runBatches(std::vector<std::string> filePaths, const BatchOperation& operation,
                RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    bool isOnly = true;
    for (bool exceeded = true; exceeded;
         filePaths = RVGitCommand::remainingFilePathsFromFilePaths(filePaths)) {
        if (!operation(RVGitCommand::filePathsForGitCommand(filePaths, &exceeded)))
            return false;
        isOnly = isOnly && !exceeded;
        if (!isOnly && watch.isCancelled(error))
            return false;
    }
    return true;
}

bool failWithoutOperation(const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    fillErrorPlace(error,
                   gitErrorWithCode(RVGitRVGitGenericError, RVGitMakeErrorUserInfo(repository)));
    return false;
}

}  // namespace

RVGitMergeManager::RVGitMergeManager(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)), files_(std::nullopt) {
    requireParameter(repository_ != nullptr, "repository");
    workingTreeManager_ = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository_);
    index_ = RVGitIndex::indexWithRepository(repository_);
    files_ = RVContainedFiles(repository_->gitDirectoryPath());
}

std::shared_ptr<RVGitMergeManager> RVGitMergeManager::mergeManagerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitMergeManager>(std::move(repository));
}

// Whatever is under way.

std::optional<RVGitMergeMode> RVGitMergeManager::knownMergeMode(RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    const RVGitMergeMode mode = currentMergeMode();
    return watch.isCancelled(error) ? std::nullopt : std::optional(mode);
}

bool RVGitMergeManager::continueCurrentOperation(RVErrorPlace error) {
    return continueCurrentOperationWithCommitMessage(std::nullopt, error);
}

bool RVGitMergeManager::continueCurrentOperationWithCommitMessage(
    const std::optional<std::string>& commitMessage, RVErrorPlace error) {
    const auto mode = knownMergeMode(error);
    if (!mode)
        return false;
    switch (*mode) {
        case RVGitMergeModeMerge:
        case RVGitMergeModeSquash: {
            const auto command =
                RVGitCommitCommand::gitCommitCommandWithRepository(repository_, commitMessage);
            // Git then takes its proposal as an editor would leave it, without the comments.
            openNoEditor(*command);
            return command->run(error);
        }
        case RVGitMergeModeRebase:
        case RVGitMergeModeEditing:
            return continueRebaseWithCommitMessage(commitMessage, error);
        case RVGitMergeModeCherryPick:
            return continueCherryPickWithCommitMessage(commitMessage, error);
        case RVGitMergeModeRevert:
            return continueRevertWithCommitMessage(commitMessage, error);
        case RVGitMergeModeNone:
            break;
    }
    return failWithoutOperation(repository_, error);
}

bool RVGitMergeManager::skipCurrentOperation(RVErrorPlace error) {
    const auto mode = knownMergeMode(error);
    if (!mode)
        return false;
    switch (*mode) {
        case RVGitMergeModeRebase:
        case RVGitMergeModeEditing:
            return skipRebase(error);
        case RVGitMergeModeCherryPick:
            return skipCherryPick(error);
        case RVGitMergeModeRevert:
            return skipRevert(error);
        default:
            return failWithoutOperation(repository_, error);
    }
}

bool RVGitMergeManager::abortCurrentOperation(RVErrorPlace error) {
    const auto mode = knownMergeMode(error);
    if (!mode)
        return false;
    switch (*mode) {
        case RVGitMergeModeMerge:
        case RVGitMergeModeSquash:
            return abortMerge(error);
        case RVGitMergeModeRebase:
        case RVGitMergeModeEditing:
            return abortRebase(error);
        case RVGitMergeModeCherryPick:
            return abortCherryPick(error);
        case RVGitMergeModeRevert:
            return abortRevert(error);
        case RVGitMergeModeNone:
            break;
    }
    return failWithoutOperation(repository_, error);
}

// Merge.

bool RVGitMergeManager::mergeWithRevision(const std::string& revision,
                                          const std::optional<RVOptions>& options,
                                          RVErrorPlace error) {
    const auto command = RVGitMergeCommand::gitMergeCommandWithRepository(repository_, options);
    command->setRevision(revision);
    return command->run(error);
}

bool RVGitMergeManager::abortMerge(RVErrorPlace error) {
    const auto mode = knownMergeMode(error);
    if (!mode)
        return false;
    return mode == RVGitMergeModeSquash ? abortSquashMerge(error) : abortDefaultMerge(error);
}

bool RVGitMergeManager::abortSquashMerge(RVErrorPlace error) {
    const auto command = std::make_shared<RVGitResetCommand>(repository_);
    command->addGitCommandOption("--merge");
    return command->run(error);
}

bool RVGitMergeManager::abortDefaultMerge(RVErrorPlace error) {
    return runWithFlag<RVGitMergeCommand>(repository_, &RVGitMergeCommand::setAbortsMerge, error);
}

// Rebase.

bool RVGitMergeManager::rebaseWithRevision(const std::string& revision,
                                           const std::optional<RVOptions>& options,
                                           RVErrorPlace error) {
    return rebaseWithRevision(revision, std::nullopt, std::nullopt, options, error);
}

bool RVGitMergeManager::rebaseWithRevision(const std::string& revision,
                                           const std::optional<std::string>& currentBaseRevision,
                                           const std::optional<std::string>& targetBaseRevision,
                                           const std::optional<RVOptions>& options,
                                           RVErrorPlace error) {
    const auto command = RVGitRebaseCommand::gitRebaseCommandWithRepository(repository_, options);
    command->setRevision(revision);
    command->setCurrentBaseRevision(currentBaseRevision);
    command->setTargetBaseRevision(targetBaseRevision);
    return command->run(error);
}

bool RVGitMergeManager::continueRebase(RVErrorPlace error) {
    return continueRebaseWithCommitMessage(std::nullopt, error);
}

bool RVGitMergeManager::continueRebaseWithCommitMessage(
    const std::optional<std::string>& commitMessage, RVErrorPlace error) {
    const auto command =
        RVGitRebaseCommand::gitRebaseCommandWithRepository(repository_, std::nullopt);
    command->setContinuesRebase(true);
    if (commitMessage && usesRebaseApplyBackend()) {
        replaceProposedMessage("rebase-apply/final-commit", *commitMessage);
    } else if (commitMessage) {
        const auto script = temporaryCommitMessageEditorScript(*commitMessage, error);
        if (!script)
            return false;
        command->setValueForEnvironmentVariable(editorCommandForScriptPath(*script), "GIT_EDITOR");
    }
    if (commitMessage)
        takeMessagesAsUTF8(*command);
    return command->run(error);
}

bool RVGitMergeManager::continueEmptyRebaseWithCommitMessage(const std::string& commitMessage,
                                                             RVErrorPlace error) {
    return commitEmptyStep(commitMessage, error) && skipRebase(error);
}

bool RVGitMergeManager::skipRebase(RVErrorPlace error) {
    return runWithFlag<RVGitRebaseCommand>(repository_, &RVGitRebaseCommand::setSkipsRebase, error);
}

bool RVGitMergeManager::abortRebase(RVErrorPlace error) {
    const auto command = std::make_shared<RVGitRebaseCommand>(repository_, std::nullopt);
    command->setAbortsRebase(true);
    const auto branch = originalRefName();
    if (!command->run(error))
        return false;
    // Git ends with 0, too, where it finds the tables of refs locked and so leaves HEAD alone.
    if (command->standardErrorString().find("error: update_ref failed") == std::string::npos ||
        repository_->HEADRefName() == branch)
        return true;
    fillErrorPlace(error, gitErrorWithCode(RVGitRVGitGenericError,
                                           RVGitMakeErrorUserInfo(
                                               repository_, {{RVGitCommandErrorOutputErrorKey,
                                                              command->standardErrorString()}})));
    return false;
}

// Cherry-pick.

bool RVGitMergeManager::cherryPickRevisions(const std::vector<std::string>& revisions,
                                            const std::optional<RVOptions>& options,
                                            RVErrorPlace error) {
    const auto command =
        RVGitCherryPickCommand::gitCherryPickCommandWithRepository(repository_, options);
    command->setRevisions(revisions);
    return command->run(error);
}

bool RVGitMergeManager::continueCherryPick(RVErrorPlace error) {
    return continueCherryPickWithCommitMessage(std::nullopt, error);
}

bool RVGitMergeManager::continueCherryPickWithCommitMessage(
    const std::optional<std::string>& commitMessage, RVErrorPlace error) {
    return continueSequence(*std::make_shared<RVGitCherryPickCommand>(repository_, std::nullopt),
                            commitMessage, error);
}

bool RVGitMergeManager::continueEmptyCherryPickWithCommitMessage(const std::string& commitMessage,
                                                                 RVErrorPlace error) {
    return commitEmptyStep(commitMessage, error) && continueCherryPick(error);
}

bool RVGitMergeManager::skipCherryPick(RVErrorPlace error) {
    return runWithFlag<RVGitCherryPickCommand>(repository_,
                                               &RVGitCherryPickCommand::setSkipsProcess, error);
}

bool RVGitMergeManager::abortCherryPick(RVErrorPlace error) {
    return runWithFlag<RVGitCherryPickCommand>(repository_,
                                               &RVGitCherryPickCommand::setAbortsProcess, error);
}

bool RVGitMergeManager::quitCherryPick(RVErrorPlace error) {
    return runWithFlag<RVGitCherryPickCommand>(repository_,
                                               &RVGitCherryPickCommand::setQuitsProcess, error);
}

// Revert.

bool RVGitMergeManager::revertRevisions(const std::vector<std::string>& revisions,
                                        const std::optional<RVOptions>& options,
                                        RVErrorPlace error) {
    const auto command = RVGitRevertCommand::gitRevertCommandWithRepository(repository_, options);
    command->setRevisions(revisions);
    return command->run(error);
}

bool RVGitMergeManager::continueRevert(RVErrorPlace error) {
    return continueRevertWithCommitMessage(std::nullopt, error);
}

bool RVGitMergeManager::continueRevertWithCommitMessage(
    const std::optional<std::string>& commitMessage, RVErrorPlace error) {
    return continueSequence(*std::make_shared<RVGitRevertCommand>(repository_, std::nullopt),
                            commitMessage, error);
}

bool RVGitMergeManager::continueEmptyRevertWithCommitMessage(const std::string& commitMessage,
                                                             RVErrorPlace error) {
    return commitEmptyStep(commitMessage, error) && continueRevert(error);
}

bool RVGitMergeManager::skipRevert(RVErrorPlace error) {
    return runWithFlag<RVGitRevertCommand>(repository_, &RVGitRevertCommand::setSkipsProcess,
                                           error);
}

bool RVGitMergeManager::abortRevert(RVErrorPlace error) {
    return runWithFlag<RVGitRevertCommand>(repository_, &RVGitRevertCommand::setAbortsProcess,
                                           error);
}

bool RVGitMergeManager::quitRevert(RVErrorPlace error) {
    return runWithFlag<RVGitRevertCommand>(repository_, &RVGitRevertCommand::setQuitsProcess,
                                           error);
}

bool RVGitMergeManager::continueSequence(RVGitSequencerCommand& command,
                                         const std::optional<std::string>& commitMessage,
                                         RVErrorPlace error) {
    command.setContinuesProcess(true);
    if (commitMessage) {
        replaceProposedMessage("MERGE_MSG", *commitMessage);
        takeMessagesAsUTF8(command);
    }
    return command.run(error);
}

void RVGitMergeManager::replaceProposedMessage(std::string_view path,
                                               const std::string& commitMessage) const {
    // Kept for compatibility: the operation goes on whether or not the message could be written.
    if (files_.exists(path))
        (void)files_.writeAtomically(path, commitMessage);
}

bool RVGitMergeManager::commitEmptyStep(const std::string& commitMessage, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const auto command =
        RVGitCommitCommand::gitCommitCommandWithRepository(repository_, mergeCommitMessage());
    command->setAllowsEmpty(true);
    command->setDoesNotVerify(true);
    command->setReEditsRevision(nextSequenceRevision());
    if (watch.isCancelled(error))
        return false;
    const auto script = temporaryCommitMessageEditorScript(commitMessage, error);
    if (!script)
        return false;
    command->setValueForEnvironmentVariable(editorCommandForScriptPath(*script), "GIT_EDITOR");
    // A commit that was cancelled has not failed, but to go on would throw away what it was to
    // keep.
    return command->run(error) && !watch.isCancelled(error);
}

// Ancestry.

std::optional<std::string> RVGitMergeManager::mergeBaseForSourceRevision(
    const std::string& sourceRevision, const std::string& targetRevision, RVErrorPlace error) {
    const auto command = RVGitMergeBaseCommand::gitMergeBaseCommandWithRepository(repository_);
    command->setRevisions({sourceRevision, targetRevision});
    return command->run(error) ? command->mergeBaseCommitHash() : std::nullopt;
}

bool RVGitMergeManager::revisionIsAncestor(const std::string& revision,
                                           const std::string& ofRevision, RVErrorPlace error) {
    const auto command = RVGitMergeBaseCommand::gitMergeBaseCommandWithRepository(repository_);
    command->setRevisions({revision, ofRevision});
    command->setChecksAncestor(true);
    return command->run(error) && command->isAncestor();
}

// Conflicts.

bool RVGitMergeManager::canResolveUnmergedFileByAdding(const std::string& filePath) const {
    return RVContainedFiles(repository_->workingTreeDirectoryPath()).exists(filePath);
}

bool RVGitMergeManager::resolveUnmergedFileByAdding(const std::string& filePath,
                                                    RVErrorPlace error) {
    return resolveUnmergedFilesByAdding({filePath}, error);
}

bool RVGitMergeManager::resolveUnmergedFilesByAdding(const std::vector<std::string>& filePaths,
                                                     RVErrorPlace error) {
    return workingTreeManager_->stageFiles(filePaths, error);
}

bool RVGitMergeManager::canResolveUnmergedFileByRemoving(const std::string&) const {
    return true;
}

bool RVGitMergeManager::resolveUnmergedFileByRemoving(const std::string& filePath,
                                                      RVErrorPlace error) {
    return resolveUnmergedFilesByRemoving({filePath}, error);
}

bool RVGitMergeManager::resolveUnmergedFilesByRemoving(const std::vector<std::string>& filePaths,
                                                       RVErrorPlace error) {
    return workingTreeManager_->removeFiles(filePaths, error);
}

bool RVGitMergeManager::hasIndexEntry(const std::string& filePath, RVGitIndexStage atStage) const {
    return index_->indexEntryForFilePath(filePath, atStage) != nullptr;
}

bool RVGitMergeManager::canRestoreAncestorVersionForUnmergedFile(
    const std::string& filePath) const {
    return hasIndexEntry(filePath, RVGitIndexStageBase);
}

bool RVGitMergeManager::restoreAncestorVersionForUnmergedFile(const std::string& filePath,
                                                              RVErrorPlace error) {
    return restoreAncestorVersionForUnmergedFiles({filePath}, error);
}

bool RVGitMergeManager::restoreAncestorVersionForUnmergedFiles(
    const std::vector<std::string>& filePaths, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const RVContainedFiles files(repository_->path());
    for (const std::string& filePath : filePaths) {
        const auto blob = RVGitBlob::blobForHash(":1:" + filePath, repository_);
        // Of one that was not read whole, the file would be cut off.
        if (!blob || watch.isCancelled()) {
            clearErrorPlace(error);
            return false;
        }
        std::optional<RVError> failure;
        if (files.writeAtomically(filePath, blob->contents(), &failure))
            continue;
        // A path that leads elsewhere is to be told from a disk that is full.
        if (failure->code() == ENOTDIR || failure->code() == ELOOP || failure->code() == EINVAL)
            fillErrorPlace(error, *std::move(failure));
        return false;
    }
    return true;
}

bool RVGitMergeManager::canRestoreOurVersionForUnmergedFile(const std::string& filePath) const {
    return hasIndexEntry(filePath, RVGitIndexStageOurs);
}

bool RVGitMergeManager::restoreOurVersionForUnmergedFile(const std::string& filePath,
                                                         RVErrorPlace error) {
    return restoreOurVersionForUnmergedFiles({filePath}, error);
}

bool RVGitMergeManager::restoreOurVersionForUnmergedFiles(const std::vector<std::string>& filePaths,
                                                          RVErrorPlace error) {
    return restoreVersion(filePaths, "--ours", error);
}

bool RVGitMergeManager::canRestoreTheirVersionForUnmergedFile(const std::string& filePath) const {
    return hasIndexEntry(filePath, RVGitIndexStageTheirs);
}

bool RVGitMergeManager::restoreTheirVersionForUnmergedFile(const std::string& filePath,
                                                           RVErrorPlace error) {
    return restoreTheirVersionForUnmergedFiles({filePath}, error);
}

bool RVGitMergeManager::restoreTheirVersionForUnmergedFiles(
    const std::vector<std::string>& filePaths, RVErrorPlace error) {
    return restoreVersion(filePaths, "--theirs", error);
}

bool RVGitMergeManager::restoreVersion(const std::vector<std::string>& filePaths,
                                       const std::string& side, RVErrorPlace error) {
    // In one call the side would count for the first batch alone, and HEAD for the others.
    return runBatches(
        filePaths,
        [&](const std::vector<std::string>& batch) {
            return workingTreeManager_->revertFiles(batch, side, error);
        },
        error);
}

bool RVGitMergeManager::restoreUnmergedVersionForFile(const std::string& filePath,
                                                      RVErrorPlace error) {
    return restoreUnmergedVersionForFiles({filePath}, error);
}

bool RVGitMergeManager::restoreUnmergedVersionForFiles(const std::vector<std::string>& filePaths,
                                                       RVErrorPlace error) {
    return restoreUnmergedVersionForFiles(filePaths, std::nullopt, error);
}

bool RVGitMergeManager::restoreUnmergedVersionForFiles(
    const std::vector<std::string>& filePaths, const std::optional<std::string>& inDirectory,
    RVErrorPlace error) {
    return runBatches(
        filePaths,
        [&](std::vector<std::string> batch) {
            const auto command = RVGitCheckoutCommand::gitCheckoutCommandWithRepository(
                repository_, std::nullopt, std::move(batch));
            command->addGitCommandOption("--merge");
            if (inDirectory)
                command->addGitOption("--work-tree=" + *inDirectory);
            return command->run(error);
        },
        error);
}
