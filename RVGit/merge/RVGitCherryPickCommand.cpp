#include "RVGit/merge/RVGitCherryPickCommand.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "RVGit/merge/RVGitMergeCommand.h"

RVGitCherryPickCommand::RVGitCherryPickCommand(const std::shared_ptr<RVGitRepository>& repository,
                                               const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      fastForwards_(optionIsSet(options, RVGitCherryPickOptionFastForward)) {
    readOption(options, RVGitCherryPickOptionCommitChanges, commitsChanges_);
    if (const RVValue* number = valueForOption(options, RVGitCherryPickOptionMainlineParentNumber))
        mainlineParentNumber_ = number->unsignedValue();
    openNoEditor(*this);
}

std::shared_ptr<RVGitCherryPickCommand> RVGitCherryPickCommand::gitCherryPickCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitCherryPickCommand>(repository, options);
}

const RVGitErrorTable& RVGitCherryPickCommand::gitErrorDefinitions() {
    return RVGitMergeCommand::gitErrorDefinitions();
}

void RVGitCherryPickCommand::gitCommandWillInitialize() {
    setGitCommand("cherry-pick");
    openNoEditorUnlessSet(*this);
    addGitOptions({"-c", "core.trustctime=false"});
    if (mainlineParentNumber_ != 0)
        addGitCommandOptions({"--mainline", std::to_string(mainlineParentNumber_)});
    addGitCommandOptionsThatAreSet({
        {!commitsChanges_, "--no-commit"},
        {fastForwards_, "--ff"},
        {continuesProcess_, "--continue"},
        {skipsProcess_ && gitBinary()->isVersionAtLeast("2.23.0"), "--skip"},
        {abortsProcess_, "--abort"},
        {quitsProcess_, "--quit"},
    });
    if (!revisions_)
        return;
    for (const std::string& revision : *revisions_) {
        // What elsewhere only selects would act on every commit here: "--all" may be a tag's name.
        if (revision.starts_with('-'))
            addGitCommandName(revision);
        else
            addGitCommandRevision(revision);
    }
}
