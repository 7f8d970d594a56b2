#include "RVGit/worktree/RVGitWorkingTreeHelper.h"

#include <memory>

#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitIndexHelper.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"

namespace {

std::string referenceOfConflictSide(const std::shared_ptr<RVGitIndexEntry>& version,
                                    const std::shared_ptr<RVGitIndexEntry>& otherVersion,
                                    RVGitIndexStage stage) {
    if (!version)
        return RVGitNullFile;
    return otherVersion ? RVGitIndexHelper::indexEntryReferenceWithStage(stage, version->filePath())
                        : version->filePath();
}

}  // namespace

bool RVGitWorkingTreeHelper::isUnmergedPathForLeftFileStatus(RVGitFileStatus leftFileStatus,
                                                             RVGitFileStatus rightFileStatus) {
    if (leftFileStatus == RVGitFileStatusUnmerged || rightFileStatus == RVGitFileStatusUnmerged)
        return true;
    return leftFileStatus == rightFileStatus &&
           (leftFileStatus == RVGitFileStatusDeleted || leftFileStatus == RVGitFileStatusAdded);
}

std::string RVGitWorkingTreeHelper::unmergedOursFileReferenceForWorkingTreeEntry(
    const RVGitWorkingTreeEntry& entry) {
    return referenceOfConflictSide(entry.unmergedOursVersion(), entry.unmergedTheirsVersion(),
                                   RVGitIndexStageOurs);
}

std::string RVGitWorkingTreeHelper::unmergedTheirsFileReferenceForWorkingTreeEntry(
    const RVGitWorkingTreeEntry& entry) {
    return referenceOfConflictSide(entry.unmergedTheirsVersion(), entry.unmergedOursVersion(),
                                   RVGitIndexStageTheirs);
}
