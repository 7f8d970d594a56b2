#include "RVGit/merge/RVGitRevertCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "RVGit/merge/RVGitMergeCommand.h"

RVGitRevertCommand::RVGitRevertCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       const std::optional<RVOptions>& options)
    : RVGitCommand(repository), fastForwards_(optionIsSet(options, RVGitRevertOptionFastForward)) {
    readOption(options, RVGitRevertOptionCommitChanges, commitsChanges_);
    if (const RVValue* number = valueForOption(options, RVGitRevertOptionMainlineParentNumber))
        mainlineParentNumber_ = number->unsignedValue();
    openNoEditor(*this);
}

std::shared_ptr<RVGitRevertCommand> RVGitRevertCommand::gitRevertCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitRevertCommand>(repository, options);
}

const RVGitErrorTable& RVGitRevertCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table([] {
        RVGitErrorTable rows = {gitErrorRow(RVGitRebaseConflictsError)
                                    .command("revert")
                                    .exitCode(1)
                                    .standardError("error: could not revert")};
        const RVGitErrorTable& merge = RVGitMergeCommand::gitErrorDefinitions();
        rows.insert(rows.end(), merge.begin(), merge.end());
        return rows;
    }());
    return *table;
}

void RVGitRevertCommand::gitCommandWillInitialize() {
    setGitCommand("revert");
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
