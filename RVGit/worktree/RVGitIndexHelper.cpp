#include "RVGit/worktree/RVGitIndexHelper.h"

bool RVGitIndexHelper::isAssumeUnchangedFlag(std::string_view flag) {
    return flag.size() == 1 && std::string_view("hsrmc").find(flag[0]) != std::string_view::npos;
}

std::string RVGitIndexHelper::indexEntryReferenceWithStage(RVGitIndexStage stage,
                                                           std::string_view filePath) {
    std::string reference = ":" + std::to_string(stage) + ":";
    reference += filePath;
    return reference;
}
