#pragma once

#include <memory>
#include <optional>

#include "RVGit/base/RVExport.h"
#include "RVGit/merge/RVGitSequencerCommand.h"

// Options of RVGitRevertCommand. An option that is not given leaves the field as it starts.

/// Number: the parent, counted from 1, against which a merge is undone.
inline constexpr char RVGitRevertOptionMainlineParentNumber[] =
    "RVGitRevertOptionMainlineParentNumber";
/// Boolean, true unless given: whether each step is committed; false leaves the changes staged.
inline constexpr char RVGitRevertOptionCommitChanges[] = "RVGitRevertOptionCommitChanges";
/// Boolean, of which only true counts: no git takes it, and the failure is code 10.
inline constexpr char RVGitRevertOptionFastForward[] = "RVGitRevertOptionFastForward";

/// Runs `git revert`, which takes the changes of commits back.
class RVGIT_EXPORT RVGitRevertCommand : public RVGitSequencerCommand {
public:
    /// The repository is required.
    RVGitRevertCommand(const std::shared_ptr<RVGitRepository>& repository,
                       const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitRevertCommand> gitRevertCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();
};
