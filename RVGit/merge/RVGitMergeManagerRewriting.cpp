#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"
#include "RVGit/worktree/RVGitResetCommand.h"
#include "RVGit/worktree/RVGitRmCommand.h"

namespace {

using Instructions = RVGitSequenceInstruction::List;
using Revisions = std::vector<std::string>;
using Commits = std::optional<std::vector<std::shared_ptr<RVGitCommit>>>;

/// Of revisions that are looked up often.
using RevisionSet = std::unordered_set<std::string_view>;

RevisionSet setOf(const Revisions& revisions) {
    return {revisions.begin(), revisions.end()};
}

/// The commits that a rebase is to work off, and the one that it begins on.
struct Range {
    Revisions hashesOldestFirst;
    /// The first parent of the oldest; absent for a root commit.
    std::optional<std::string> parent;
};

Range rangeOfCommits(const Commits& commits) {
    Range range;
    if (!commits || commits->empty())
        return range;
    range.hashesOldestFirst.reserve(commits->size());
    for (auto commit = commits->rbegin(); commit != commits->rend(); ++commit)
        range.hashesOldestFirst.push_back((*commit)->commitHash().value_or(""));
    const Revisions parents = commits->back()->parentCommitHashes();
    if (!parents.empty())
        range.parent = parents.front();
    return range;
}

/// Whether all of the revisions are in the range. A rebase would leave aside one that is not, and
/// seem to have done what was asked for.
bool rangeHolds(const Range& range, const Revisions& revisions, RVErrorPlace error) {
    const RevisionSet hashes = setOf(range.hashesOldestFirst);
    const auto missing = std::ranges::find_if_not(
        revisions, [&](const std::string& revision) { return hashes.contains(revision); });
    if (missing == revisions.end())
        return true;
    fillErrorPlace(
        error, gitErrorWithCode(RVGitLogNoSuchRevisionError, {{RVGitRevisionErrorKey, *missing}}));
    return false;
}

/// Absent, with the error, if the commits could not be loaded or do not hold all of the revisions;
/// with a cleared place if their loading was cancelled: commits that are missing in the range would
/// be dropped.
std::optional<Range> rangeOfLoadedCommits(const Commits& commits,
                                          const std::optional<RVError>& failure,
                                          const RVGitCancellationWatch& watch,
                                          const Revisions& revisions, RVErrorPlace error) {
    if (watch.isCancelled(error))
        return std::nullopt;
    if (failure) {
        fillErrorPlace(error, *failure);
        return std::nullopt;
    }
    Range range = rangeOfCommits(commits);
    if (!rangeHolds(range, revisions, error))
        return std::nullopt;
    return range;
}

/// From HEAD down to the oldest of the revisions, which is the last.
std::optional<Range> rangeIncludingRevisions(RVGitMergeManager& manager, const Revisions& revisions,
                                             RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    std::optional<RVError> failure;
    const auto commits =
        manager.allCommitsForInteractiveRebaseIncludingRevision(revisions.back(), &failure);
    return rangeOfLoadedCommits(commits, failure, watch, revisions, error);
}

/// The same, or down to the target where that is older.
std::optional<Range> rangeIncludingTarget(RVGitMergeManager& manager, const Revisions& revisions,
                                          const std::string& targetRevision, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    std::optional<RVError> failure;
    const auto commits = manager.allCommitsForRevisions(revisions, targetRevision, &failure);
    return rangeOfLoadedCommits(commits, failure, watch, revisions, error);
}

void append(Instructions& list, const std::string& command, const std::string& commitHash) {
    list.push_back(RVGitSequenceInstruction::sequenceInstructionWithCommand(command, commitHash));
}

/// A pick of every commit, but for those to which another command is given.
Instructions instructionsForRange(const Range& range, const Revisions& revisions,
                                  const char* command) {
    const RevisionSet chosen = setOf(revisions);
    Instructions instructions;
    for (const std::string& hash : range.hashesOldestFirst)
        append(instructions, chosen.contains(hash) ? command : RVGitSequenceInstructionCommandPick,
               hash);
    return instructions;
}

/// An interactive rebase of which the list is known. Null, with the error, if the list could not
/// be written.
std::shared_ptr<RVGitRebaseCommand> rebaseCommand(
    const std::shared_ptr<RVGitRepository>& repository, Instructions instructions,
    RVOptions options, RVErrorPlace error) {
    const auto script = temporarySequenceEditorScript(std::move(instructions), error);
    if (!script)
        return nullptr;
    options.insert_or_assign(RVGitRebaseOptionInteractive, true);
    auto command = RVGitRebaseCommand::gitRebaseCommandWithRepository(repository, options);
    command->setValueForEnvironmentVariable(editorCommandForScriptPath(*script),
                                            "GIT_SEQUENCE_EDITOR");
    return command;
}

/// The same for a range that begins where its oldest commit does now.
std::shared_ptr<RVGitRebaseCommand> rewritingCommand(
    const std::shared_ptr<RVGitRepository>& repository, const Range& range,
    Instructions instructions, RVErrorPlace error, RVOptions options = {}) {
    auto command = rebaseCommand(repository, std::move(instructions), std::move(options), error);
    if (command && range.parent)
        command->setRevision(range.parent);
    else if (command)
        command->addGitCommandOption("--root");
    return command;
}

/// For git in the top of the working tree. The "*" is a name like any other where the environment
/// says that paths are no patterns.
std::string patternOfAllFiles() {
    for (const char* name : {"GIT_LITERAL_PATHSPECS", "GIT_NOGLOB_PATHSPECS"})
        if (RVGitCommandEnvironment::sharedEnvironment().valueForEnvironmentVariable(name) ||
            std::getenv(name))
            return ".";
    return "*";
}

}  // namespace

std::optional<std::vector<std::shared_ptr<RVGitCommit>>>
RVGitMergeManager::allCommitsForInteractiveRebaseIncludingRevision(const std::string& revision,
                                                                   RVErrorPlace error) {
    const RVOptions options = {{RVGitLogOptionSortByTopoOrder, true}};
    const auto commit = RVGitCommit::commitForCommitHash(revision, repository_, error);
    if (!commit)
        return std::nullopt;
    if (commit->parentCount() == 0)
        return RVGitCommit::allCommitsForRevisions({RVGitHEADRevision}, {}, repository_, options,
                                                   error);
    // The end of the range stands ahead of its beginning.
    return RVGitCommit::allCommitsFromRevision(RVGitHEADRevision, revision + "^", repository_,
                                               options, error);
}

std::optional<std::vector<std::shared_ptr<RVGitCommit>>> RVGitMergeManager::allCommitsForRevisions(
    const std::vector<std::string>& revisions, const std::string& targetRevision,
    RVErrorPlace error) {
    requireParameter(!revisions.empty(), "revisions.count > 0");
    auto commits = allCommitsForInteractiveRebaseIncludingRevision(revisions.back(), error);
    if (error && *error)
        return std::nullopt;
    const auto isTarget = [&](const std::shared_ptr<RVGitCommit>& commit) {
        return commit->commitHashView() == std::string_view(targetRevision);
    };
    // If it is not among them, it lies further back.
    if (!commits || std::ranges::none_of(*commits, isTarget))
        commits = allCommitsForInteractiveRebaseIncludingRevision(targetRevision, error);
    if (error && *error)
        return std::nullopt;
    return commits;
}

bool RVGitMergeManager::moveRevisionsAboveRevision(const std::vector<std::string>& revisions,
                                                   const std::string& aboveRevision,
                                                   RVErrorPlace error) {
    return moveRevisions(revisions, aboveRevision, false, error);
}

bool RVGitMergeManager::moveRevisionsBelowRevision(const std::vector<std::string>& revisions,
                                                   const std::string& belowRevision,
                                                   RVErrorPlace error) {
    return moveRevisions(revisions, belowRevision, true, error);
}

bool RVGitMergeManager::moveRevisions(const std::vector<std::string>& revisions,
                                      const std::string& revision, bool insertBelow,
                                      RVErrorPlace error) {
    if (revisions.empty())
        return true;
    const auto range = rangeIncludingTarget(*this, revisions, revision, error);
    if (!range || !rangeHolds(*range, {revision}, error))
        return false;

    const RevisionSet chosen = setOf(revisions);
    Instructions moved;
    Instructions kept;
    std::size_t targetIndex = 0;
    for (const std::string& hash : range->hashesOldestFirst) {
        const bool isMoved = chosen.contains(hash);
        if (!isMoved && hash == revision)
            targetIndex = kept.size();
        append(isMoved ? moved : kept, RVGitSequenceInstructionCommandPick, hash);
    }
    // The list begins with the oldest commit: what lies above one stands behind it.
    const std::size_t index = std::min(targetIndex + (insertBelow ? 0 : 1), kept.size());
    kept.insert(kept.begin() + static_cast<std::ptrdiff_t>(index), moved.begin(), moved.end());
    const auto command = rewritingCommand(repository_, *range, std::move(kept), error);
    return command && command->run(error);
}

bool RVGitMergeManager::deleteRevisions(const std::vector<std::string>& revisions,
                                        RVErrorPlace error) {
    if (revisions.empty())
        return true;
    const auto range = rangeIncludingRevisions(*this, revisions, error);
    if (!range)
        return false;
    const auto command = rewritingCommand(
        repository_, *range,
        instructionsForRange(*range, revisions, RVGitSequenceInstructionCommandDrop), error);
    return command && command->run(error);
}

bool RVGitMergeManager::squashRevisions(const std::vector<std::string>& revisions,
                                        RVErrorPlace error) {
    return squashRevisions(revisions, std::nullopt, error);
}

bool RVGitMergeManager::squashRevisions(const std::vector<std::string>& revisions,
                                        const std::optional<std::string>& targetRevision,
                                        RVErrorPlace error) {
    return combineRevisions(revisions, targetRevision, RVGitSequenceInstructionCommandSquash,
                            error);
}

bool RVGitMergeManager::fixupRevisions(const std::vector<std::string>& revisions,
                                       RVErrorPlace error) {
    return fixupRevisions(revisions, std::nullopt, error);
}

bool RVGitMergeManager::fixupRevisions(const std::vector<std::string>& revisions,
                                       const std::optional<std::string>& targetRevision,
                                       RVErrorPlace error) {
    return combineRevisions(revisions, targetRevision, RVGitSequenceInstructionCommandFixup, error);
}

bool RVGitMergeManager::combineRevisions(const std::vector<std::string>& revisions,
                                         const std::optional<std::string>& targetRevision,
                                         const std::string& command, RVErrorPlace error) {
    requireParameter(command == RVGitSequenceInstructionCommandFixup ||
                         command == RVGitSequenceInstructionCommandSquash,
                     "command is fixup or squash");
    if (revisions.empty())
        return true;
    if (!targetRevision && revisions.size() < 2) {
        clearErrorPlace(error);
        return false;
    }
    const auto range = targetRevision
                           ? rangeIncludingTarget(*this, revisions, *targetRevision, error)
                           : rangeIncludingRevisions(*this, revisions, error);
    if (!range)
        return false;

    const RevisionSet chosen = setOf(revisions);
    Instructions combined;
    Instructions others;
    std::optional<std::size_t> targetIndex;
    for (const std::string& hash : range->hashesOldestFirst) {
        if (!chosen.contains(hash)) {
            if (hash == targetRevision)
                targetIndex = others.size();
            append(others, RVGitSequenceInstructionCommandPick, hash);
            continue;
        }
        // Without a target the oldest takes the rest into itself.
        const bool takesTheRest = !targetRevision && hash == revisions.back();
        append(combined, takesTheRest ? RVGitSequenceInstructionCommandPick : command, hash);
    }
    if (targetRevision && !targetIndex) {
        clearErrorPlace(error);
        return false;
    }
    const std::size_t index = targetIndex ? *targetIndex + 1 : 0;
    others.insert(others.begin() + static_cast<std::ptrdiff_t>(index), combined.begin(),
                  combined.end());
    const auto rebase = rewritingCommand(repository_, *range, std::move(others), error);
    if (!rebase)
        return false;
    // The message that git proposes is taken as it is.
    rebase->setValueForEnvironmentVariable("true", "GIT_EDITOR");
    return rebase->run(error);
}

bool RVGitMergeManager::setCommitMessage(const std::string& commitMessage,
                                         const std::string& forRevision, RVErrorPlace error) {
    const auto range = rangeIncludingRevisions(*this, {forRevision}, error);
    if (!range)
        return false;
    const auto script = temporaryCommitMessageEditorScript(commitMessage, error);
    if (!script)
        return false;
    const auto command = rewritingCommand(
        repository_, *range,
        instructionsForRange(*range, {forRevision}, RVGitSequenceInstructionCommandReword), error,
        // Lines that begin with "#" are part of the message.
        {{RVGitRebaseOptionCleanupCommit, "whitespace"}});
    if (!command) {
        (void)RVFileManager::removeItemAtPath(*script);
        return false;
    }
    command->setValueForEnvironmentVariable(editorCommandForScriptPath(*script), "GIT_EDITOR");
    takeMessagesAsUTF8(*command);
    return command->run(error);
}

bool RVGitMergeManager::editRevision(const std::string& revision, RVErrorPlace error) {
    return editRevision(revision, false, error);
}

bool RVGitMergeManager::editRevision(const std::string& revision, bool amends, RVErrorPlace error) {
    const auto range = rangeIncludingRevisions(*this, {revision}, error);
    if (!range)
        return false;
    const auto command = rewritingCommand(
        repository_, *range,
        instructionsForRange(*range, {revision}, RVGitSequenceInstructionCommandEdit), error);
    if (!command || !command->run(error))
        return false;
    // A run that was cancelled has not failed, but must not have HEAD taken apart.
    if (command->isCancelled() || currentMergeMode() != RVGitMergeModeEditing)
        return false;
    if (amends)
        return true;
    if (range->parent)
        return RVGitResetCommand::gitResetCommandWithRepository(repository_, RVGitResetModeNone,
                                                                "HEAD^", std::nullopt)
            ->run(error);
    // The root commit has no parent to go back to.
    const auto removal =
        RVGitRmCommand::gitRmCommandWithRepository(repository_, {{patternOfAllFiles()}});
    removal->addGitCommandOptions({"--cached", "-r"});
    return removal->run(error);
}

bool RVGitMergeManager::rebaseOntoWithRevision(const std::string& revision,
                                               const std::vector<std::string>& selectedRevisions,
                                               const std::optional<std::string>& targetBaseRevision,
                                               const std::optional<RVOptions>& options,
                                               RVErrorPlace error) {
    Instructions instructions;
    for (auto selected = selectedRevisions.rbegin(); selected != selectedRevisions.rend();
         ++selected)
        append(instructions, RVGitSequenceInstructionCommandPick, *selected);
    RVOptions ontoOptions = options.value_or(RVOptions());
    ontoOptions.insert_or_assign(RVGitRebaseOptionOnto, true);
    const auto command =
        rebaseCommand(repository_, std::move(instructions), std::move(ontoOptions), error);
    if (!command)
        return false;
    command->setRevision(revision);
    command->setTargetBaseRevision(targetBaseRevision);
    return command->run(error);
}
