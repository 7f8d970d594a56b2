#include "RVGit/merge/RVGitCherryPickCommand.h"

#include "RVGit/merge/RVGitMergeCommand.h"

RVGitCherryPickCommand::RVGitCherryPickCommand(const std::shared_ptr<RVGitRepository>& repository,
                                               const std::optional<RVOptions>& options)
    : RVGitSequencerCommand(
          repository, options,
          {.command = "cherry-pick",
           .mainlineParentNumberOption = RVGitCherryPickOptionMainlineParentNumber,
           .commitChangesOption = RVGitCherryPickOptionCommitChanges,
           .fastForwardOption = RVGitCherryPickOptionFastForward}) {}

std::shared_ptr<RVGitCherryPickCommand> RVGitCherryPickCommand::gitCherryPickCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitCherryPickCommand>(repository, options);
}

const RVGitErrorTable& RVGitCherryPickCommand::gitErrorDefinitions() {
    return RVGitMergeCommand::gitErrorDefinitions();
}
