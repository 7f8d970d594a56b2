#include "RVGit/worktree/RVGitWorkingTreeHelper.h"

bool RVGitWorkingTreeHelper::isUnmergedPathForLeftFileStatus(RVGitFileStatus leftFileStatus,
                                                             RVGitFileStatus rightFileStatus) {
    if (leftFileStatus == RVGitFileStatusUnmerged || rightFileStatus == RVGitFileStatusUnmerged)
        return true;
    return leftFileStatus == rightFileStatus &&
           (leftFileStatus == RVGitFileStatusDeleted || leftFileStatus == RVGitFileStatusAdded);
}
