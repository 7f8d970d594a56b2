#pragma once

#include <memory>

#include "RVGit/base/RVExport.h"

class RVGitRepository;

/// A local branch of a repository. The static operations may be called on any thread.
class RVGIT_EXPORT RVGitBranch {
public:
    /// Whether the checked-out branch is unborn: the repository has no branch at all, or HEAD names
    /// no commit. Runs git show-ref and, if there are branches, git rev-list.
    [[nodiscard]] static bool isInitialCommitOnHeadBranchForRepository(
        const std::shared_ptr<RVGitRepository>& repository);
};
