#pragma once

#include <memory>
#include <optional>

#include "RVGit/base/RVExport.h"
#include "RVGit/merge/RVGitSequencerCommand.h"

// Options of RVGitCherryPickCommand. An option that is not given leaves the field as it starts.

/// Number: the parent, counted from 1, against which a merge is picked.
inline constexpr char RVGitCherryPickOptionMainlineParentNumber[] =
    "RVGitCherryPickOptionMainlineParentNumber";
/// Boolean, true unless given: whether each step is committed; false leaves the changes staged.
inline constexpr char RVGitCherryPickOptionCommitChanges[] = "RVGitCherryPickOptionCommitChanges";
/// Boolean, of which only true counts: a commit whose parent is HEAD is taken as it is.
inline constexpr char RVGitCherryPickOptionFastForward[] = "RVGitCherryPickOptionFastForward";

/// Runs `git cherry-pick`, which makes the changes of commits again.
class RVGIT_EXPORT RVGitCherryPickCommand : public RVGitSequencerCommand {
public:
    /// The repository is required.
    RVGitCherryPickCommand(const std::shared_ptr<RVGitRepository>& repository,
                           const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitCherryPickCommand> gitCherryPickCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();
};
