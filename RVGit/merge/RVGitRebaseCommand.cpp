#include "RVGit/merge/RVGitRebaseCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitEditorScript.h"

RVGitRebaseCommand::RVGitRebaseCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      keepsEmptyCommits_(optionIsSet(options, RVGitRebaseOptionKeepsEmptyCommits)),
      preservesMergeCommits_(optionIsSet(options, RVGitRebaseOptionPreservesMergeCommits)),
      interactiveRebase_(optionIsSet(options, RVGitRebaseOptionInteractive)),
      rebaseOnto_(optionIsSet(options, RVGitRebaseOptionOnto)),
      autosquash_(optionIsSet(options, RVGitRebaseOptionAutosquash)),
      noVerify_(optionIsSet(options, RVGitRebaseOptionNoVerify)) {
    readOption(options, RVGitRebaseOptionCleanupCommit, commitCleanupOptionValue_);
    cleanUpCommits_ = !RVStringIsEmpty(commitCleanupOptionValue_);
    if (autosquash_)
        interactiveRebase_ = true;
    openNoEditor(*this);
}

std::shared_ptr<RVGitRebaseCommand> RVGitRebaseCommand::gitRebaseCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitRebaseCommand>(repository, options);
}

const RVGitErrorTable& RVGitRebaseCommand::gitErrorDefinitions() {
    const auto row = [](std::int64_t code) {
        return gitErrorRow(code).command("rebase").exitCode(1);
    };
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        row(RVGitRebaseConflictsError)
            .command("pull")
            .exitCode(128)
            .standardOutput("When you have resolved this problem"),
        row(RVGitRebaseConflictsError)
            .command("pull")
            .command("cherry-pick")
            .exitCode(128)
            .standardError("error: could not apply"),
        row(RVGitRebaseConflictsError)
            .command("pull")
            .exitCode(128)
            .standardError("Failed to merge"),
        row(RVGitRebaseUncommittedChangesError)
            .command("pull")
            .standardOutput("You have unstaged changes"),
        row(RVGitRebaseUncommittedChangesError)
            .standardError("Your index contains uncommitted changes"),
        row(rebaseInProgressErrorCode)
            .exitCode(128)
            .standardError("It seems that there is already a rebase-"),
        row(RVGitRebaseUnmergedChangesError)
            .command("pull")
            .standardOutput("You must edit all merge conflicts"),
        row(noTrackingInformationErrorCode)
            .standardOutput("There is no tracking information for the current branch."),
    };
    return *table;
}

void RVGitRebaseCommand::gitCommandWillInitialize() {
    setGitCommand("rebase");
    openNoEditorUnlessSet(*this);
    addGitOptions({"-c", "core.trustctime=false"});
    if (noVerify_)
        addGitCommandOption("--no-verify");
    if (cleanUpCommits_)
        addGitOptions({"-c", "commit.cleanup=" + commitCleanupOptionValue_.value_or("")});
    if (interactiveRebase_)
        addGitCommandOption("--interactive");
    if (autosquash_) {
        addGitOptions({"-c", "sequence.editor=:"});
        addGitCommandOption("--autosquash");
    }
    if (abortsRebase_)
        addGitCommandOption("--abort");
    if (continuesRebase_) {
        addGitOptions({"-c", "core.editor=:"});
        addGitCommandOption("--continue");
    }
    addGitCommandOptionsThatAreSet(
        {{skipsRebase_, "--skip"}, {keepsEmptyCommits_, "--keep-empty"}});
    if (preservesMergeCommits_)
        addGitCommandOption(gitBinary()->isVersionAtLeast("2.18.0") ? "--rebase-merges"
                                                                    : "--preserve-merges");
    if (rebasesRootCommit_)
        addGitCommandOption("--root");
    // No selections either: git would take "--all" for an abbreviation of an option of its own.
    if (rebaseOnto_) {
        addGitCommandOption("--onto");
        if (targetBaseRevision_)
            addGitCommandName(*targetBaseRevision_);
        if (currentBaseRevision_)
            addGitCommandName(*currentBaseRevision_);
    }
    if (revision_)
        addGitCommandName(*revision_);
}

RVUserInfo RVGitRebaseCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    return userInfo;
}
