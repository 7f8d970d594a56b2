#include "RVGit/merge/RVGitMergeCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitEditorScript.h"

RVGitMergeCommand::RVGitMergeCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     const std::optional<RVOptions>& options)
    : RVGitCommand(repository) {
    readOption(options, RVGitMergeOptionCommitChanges, commitsChanges_);
    readOption(options, RVGitMergeOptionFastForward, fastForwards_);
    readOption(options, RVGitMergeOptionSquashCommits, squashesChanges_);
    readOption(options, RVGitMergeOptionVerifySignatures, verifiesSignatures_);
    if (valueForOption(options, RVGitMergeOptionVerifySignatures))
        readOption(options, RVGitMergeOptionAllowedSignersFile, allowedSignersFile_);
    noVerify_ = optionIsSet(options, RVGitMergeOptionNoVerify);
    openNoEditor(*this);
}

std::shared_ptr<RVGitMergeCommand> RVGitMergeCommand::gitMergeCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitMergeCommand>(repository, options);
}

const RVGitErrorTable& RVGitMergeCommand::gitErrorDefinitions() {
    const auto row = [](RVGitErrorCode code) {
        return gitErrorRow(code)
            .command("merge")
            .command("pull")
            .command("cherry-pick")
            .command("revert")
            .exitCode(1);
    };
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        row(RVGitMergeConflictsError).exitCode(128).standardOutput("Automatic merge failed"),
        row(RVGitMergeConflictsError).exitCode(128).standardError("Failed to merge"),
        row(RVGitMergeUncommittedChangesError)
            .standardError("Your local changes to the following files would be overwritten by"),
        row(RVGitMergeUnmergedChangesError)
            .standardError("is not possible because you have unmerged files"),
    };
    return *table;
}

void RVGitMergeCommand::gitCommandWillInitialize() {
    setGitCommand("merge");
    openNoEditorUnlessSet(*this);
    addGitOptions({"-c", "core.trustctime=false"});
    addGitCommandOptionsThatAreSet({
        {noVerify_, "--no-verify"},
        {!commitsChanges_, "--no-commit"},
        {squashesChanges_, "--squash"},
        {!fastForwards_, "--no-ff"},
        {abortsMerge_, "--abort"},
        {verifiesSignatures_, "--verify-signatures"},
    });
    if (verifiesSignatures_ && allowedSignersFile_)
        addGitOptions({"-c", "gpg.ssh.allowedSignersFile=" + *allowedSignersFile_});
    // No selection either: git would take "--all" for an abbreviation of an option of its own.
    if (revision_)
        addGitCommandName(*revision_);
}
