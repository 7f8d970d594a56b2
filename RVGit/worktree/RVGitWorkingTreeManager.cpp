#include "RVGit/worktree/RVGitWorkingTreeManager.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/worktree/RVGitAddCommand.h"
#include "RVGit/worktree/RVGitCheckoutCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitRmCommand.h"
#include "RVGit/worktree/RVGitUpdateIndexCommand.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Paths = std::vector<std::string>;

/// How the batches of a list went.
struct BatchResult {
    bool firstSucceeded = true;
    bool allSucceeded = true;
};

/// Runs the operation on one batch after the other, until one fails, or all commands are cancelled:
/// then none has succeeded, and the place is cleared. A list of one batch is a command as any
/// other, which is no failure where it is cancelled. The list is sliced by the maximum number of
/// paths, and a slice with too many bytes is cut further; the operation is told whether the batch
/// belongs to the first slice. Each batch is cut from a window on the list, so that no path is
/// copied for every batch before it.
BatchResult runBatches(const Paths& filePaths,
                       const std::function<bool(Paths batch, bool isFirst)>& operation,
                       RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const auto maximum =
        std::max<std::size_t>(RVGitCommand::maximumNumberOfAllowedFilePathArguments(), 1);
    std::size_t position = 0;
    while (position < filePaths.size()) {
        const auto begin = filePaths.begin() + static_cast<std::ptrdiff_t>(position);
        const std::size_t count =
            std::min(filePaths.size() - position, maximum - position % maximum);
        Paths batch = RVGitCommand::filePathsForGitCommand(
            {begin, begin + static_cast<std::ptrdiff_t>(count)}, nullptr);
        const bool isFirst = position < maximum;
        const bool isOnly = batch.size() == filePaths.size();
        position += batch.size();
        if (!operation(std::move(batch), isFirst))
            return {.firstSucceeded = !isFirst, .allSucceeded = false};
        if (!isOnly && watch.isCancelled(error))
            return {.firstSucceeded = false, .allSucceeded = false};
    }
    return {};
}

bool runRemoval(const Repository& repository, Paths filePaths, bool fromIndexOnly,
                RVErrorPlace error) {
    const auto command =
        RVGitRmCommand::gitRmCommandWithRepository(repository, std::move(filePaths));
    command->setRemovesFilesRecursively(true);
    command->setRemovesFilesFromIndex(fromIndexOnly);
    command->setIgnoresUnmatched(true);
    return command->run(error);
}

bool runUnstaging(const Repository& repository, const Paths& filePaths, RVErrorPlace error) {
    const auto command = RVGitResetCommand::gitResetCommandWithRepository(
        repository, RVGitResetModeNone, RVGitHEADRevision, filePaths);
    std::optional<RVError> failure;
    if (command->run(&failure))
        return true;
    // Without a commit yet there is nothing to reset to.
    if (failure->code() == RVGitResetCommand::unresolvedRevisionErrorCode) {
        failure.reset();
        if (runRemoval(repository, filePaths, true, &failure))
            return true;
    }
    fillErrorPlace(error, std::move(*failure));
    return false;
}

bool setAssumeUnchangedFlag(const Repository& repository, const Paths& filePaths, bool isSet,
                            RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](Paths batch, bool) {
                   const auto command =
                       RVGitUpdateIndexCommand::gitUpdateIndexCommandWithRepository(
                           repository, std::move(batch));
                   command->setIgnoresMissingFiles(true);
                   command->setSetsAssumeUnchangedBit(isSet);
                   command->setUnsetsAssumeUnchangedBit(!isSet);
                   return command->run(error);
               },
               error)
        .firstSucceeded;
}

std::optional<RVData> patchByComparing(const Repository& repository, bool isIndexWithBase,
                                       const std::optional<Paths>& filePaths,
                                       const std::optional<RVOptions>& options,
                                       RVErrorPlace error) {
    RVData patch;
    const auto addPatch = [&](const Paths& batch, bool) {
        const auto command = RVGitDiffCommand::gitDiffCommandWithRepository(repository, options);
        command->setGeneratesDiffs(false);
        if (isIndexWithBase)
            command->addGitCommandOption("--cached");
        command->addGitCommandOptions({"--src-prefix=a/", "--dst-prefix=b/"});
        if (!batch.empty()) {
            command->addGitCommandFilePaths(batch);
        }
        if (!command->run(error))
            return false;
        patch += command->standardOutputData();
        return true;
    };
    const bool succeeded = RVArrayIsEmpty(filePaths)
                               ? addPatch({}, true)
                               : runBatches(*filePaths, addPatch, error).allSucceeded;
    if (!succeeded)
        return std::nullopt;
    return patch;
}

}  // namespace

RVGitWorkingTreeManager::RVGitWorkingTreeManager(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitWorkingTreeManager> RVGitWorkingTreeManager::workingTreeManagerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitWorkingTreeManager>(std::move(repository));
}

bool RVGitWorkingTreeManager::checkoutRevision(const std::string& revision, RVErrorPlace error) {
    return RVGitCheckoutCommand::gitCheckoutCommandWithRepository(repository_, revision)
        ->run(error);
}

bool RVGitWorkingTreeManager::resetToRevision(
    const std::optional<std::string>& revision, RVGitResetMode withMode,
    const std::optional<std::vector<std::string>>& filePaths, RVErrorPlace error) {
    return RVGitResetCommand::gitResetCommandWithRepository(repository_, withMode, revision,
                                                            filePaths)
        ->run(error);
}

bool RVGitWorkingTreeManager::stageFiles(const std::vector<std::string>& filePaths,
                                         RVErrorPlace error) {
    return stageFiles(filePaths, RVGitStageOptionNone, error);
}

bool RVGitWorkingTreeManager::stageFiles(const std::vector<std::string>& filePaths,
                                         unsigned options, RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](Paths batch, bool isFirst) {
                   const auto command =
                       RVGitAddCommand::gitAddCommandWithRepository(repository_, std::move(batch));
                   command->setUpdatesAllFiles(true);
                   command->setForcesAdd(isFirst && (options & RVGitStageOptionForce));
                   command->setIntentsToAdd(isFirst && (options & RVGitStageOptionIntentToAdd));
                   return command->run(error);
               },
               error)
        .allSucceeded;
}

bool RVGitWorkingTreeManager::stageAllFiles(RVErrorPlace error) {
    const auto command = RVGitAddCommand::gitAddCommandWithRepository(repository_);
    command->setUpdatesAllFiles(true);
    return command->run(error);
}

bool RVGitWorkingTreeManager::unstageFiles(const std::vector<std::string>& filePaths,
                                           RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](const Paths& batch, bool) { return runUnstaging(repository_, batch, error); },
               error)
        .allSucceeded;
}

bool RVGitWorkingTreeManager::unstageAllFiles(RVErrorPlace error) {
    return unstageFiles({"."}, error);
}

bool RVGitWorkingTreeManager::untrackFiles(const std::vector<std::string>& filePaths,
                                           RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](Paths batch, bool) {
                   return runRemoval(repository_, std::move(batch), true, error);
               },
               error)
        .allSucceeded;
}

bool RVGitWorkingTreeManager::unresolveIndexEntries(const std::vector<std::string>& filePaths,
                                                    RVErrorPlace error) {
    const auto command =
        RVGitUpdateIndexCommand::gitUpdateIndexCommandWithRepository(repository_, filePaths);
    command->setUnresolves(true);
    return command->run(error);
}

bool RVGitWorkingTreeManager::setAssumeUnchangedFlagForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) {
    return setAssumeUnchangedFlag(repository_, filePaths, true, error);
}

bool RVGitWorkingTreeManager::unsetAssumeUnchangedFlagForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) {
    return setAssumeUnchangedFlag(repository_, filePaths, false, error);
}

bool RVGitWorkingTreeManager::removeFiles(const std::vector<std::string>& filePaths,
                                          RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](Paths batch, bool) {
                   return runRemoval(repository_, std::move(batch), false, error);
               },
               error)
        .allSucceeded;
}

bool RVGitWorkingTreeManager::moveFileAtPath(const std::string& filePath, const std::string& toPath,
                                             unsigned options, RVErrorPlace error) {
    if (isEqualToUnicodeString(filePath, toPath)) {
        clearErrorPlace(error);
        return true;
    }
    const auto command =
        RVGitMoveCommand::gitMoveCommandWithRepository(repository_, filePath, toPath);
    command->setForcesRename(
        (options & RVGitMoveOptionForce) ||
        isEqualToUnicodeString(lowercaseString(filePath), lowercaseString(toPath)));
    return command->run(error);
}

bool RVGitWorkingTreeManager::revertFiles(const std::vector<std::string>& filePaths,
                                          RVErrorPlace error) {
    return revertFiles(filePaths, RVGitHEADRevision, error);
}

bool RVGitWorkingTreeManager::revertFiles(const std::vector<std::string>& filePaths,
                                          const std::string& toRevision, RVErrorPlace error) {
    return runBatches(
               filePaths,
               [&](Paths batch, bool isFirst) {
                   return RVGitCheckoutCommand::gitCheckoutCommandWithRepository(
                              repository_, isFirst ? toRevision : RVGitHEADRevision,
                              std::move(batch))
                       ->run(error);
               },
               error)
        .firstSucceeded;
}

bool RVGitWorkingTreeManager::revertUnmergedFiles(const std::vector<std::string>& filePaths,
                                                  RVErrorPlace error) {
    const auto command = RVGitCheckoutCommand::gitCheckoutCommandWithRepository(
        repository_, std::nullopt, filePaths);
    command->setUsesMerge(true);
    return command->run(error);
}

bool RVGitWorkingTreeManager::commitWithMessage(const std::optional<std::string>& message,
                                                unsigned options, RVErrorPlace error) {
    return RVGitCommitCommand::gitCommitCommandWithRepository(repository_, message, options)
        ->run(error);
}

bool RVGitWorkingTreeManager::applyPatch(const std::optional<RVData>& patch,
                                         const std::optional<RVOptions>& options,
                                         RVErrorPlace error) {
    const auto command =
        RVGitApplyCommand::gitApplyCommandWithRepository(repository_, patch, options);
    const bool isUpToCaller = options && options->contains(RVGitApplyOptionUnidiffZero);
    if (patch && !isUpToCaller && RVGitApplyCommand::patchHasChunkWithoutContext(*patch))
        command->setUnidiffZero(true);
    return command->run(error);
}

bool RVGitWorkingTreeManager::applyPatchFromFileAtURL(const RVURL& url,
                                                      const std::optional<RVOptions>& options,
                                                      RVErrorPlace error) {
    requireParameter(url.isFileURL(), "url.isFileURL");
    return RVGitApplyCommand::gitApplyCommandWithRepository(repository_, Paths{url.path()}, options)
        ->run(error);
}

std::optional<RVData> RVGitWorkingTreeManager::patchByComparingIndexWithBaseForFilePaths(
    const std::optional<std::vector<std::string>>& filePaths,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return patchByComparing(repository_, true, filePaths, options, error);
}

std::optional<RVData> RVGitWorkingTreeManager::patchByComparingWorkingTreeWithIndexForFilePaths(
    const std::optional<std::vector<std::string>>& filePaths,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return patchByComparing(repository_, false, filePaths, options, error);
}
