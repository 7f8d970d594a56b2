#include "RVGit/merge/RVGitRevertCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitMergeCommand.h"

RVGitRevertCommand::RVGitRevertCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       const std::optional<RVOptions>& options)
    : RVGitSequencerCommand(repository, options,
                            {.command = "revert",
                             .mainlineParentNumberOption = RVGitRevertOptionMainlineParentNumber,
                             .commitChangesOption = RVGitRevertOptionCommitChanges,
                             .fastForwardOption = RVGitRevertOptionFastForward}) {}

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
