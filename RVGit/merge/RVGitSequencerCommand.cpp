#include "RVGit/merge/RVGitSequencerCommand.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/merge/RVGitEditorScript.h"

RVGitSequencerCommand::RVGitSequencerCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             const std::optional<RVOptions>& options,
                                             const Words& words)
    : RVGitCommand(repository),
      word_(words.command),
      fastForwards_(optionIsSet(options, words.fastForwardOption)) {
    readOption(options, words.commitChangesOption, commitsChanges_);
    readOption(options, words.mainlineParentNumberOption, mainlineParentNumber_);
    openNoEditor(*this);
}

void RVGitSequencerCommand::gitCommandWillInitialize() {
    setGitCommand(word_);
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
