#include "RVGit/worktree/RVGitIndexEntry.h"

#include <utility>

#include "RVGit/worktree/RVGitIndexHelper.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"

RVGitIndexEntry::RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                                 std::optional<std::string> objectHash, RVGitFileMode fileMode,
                                 RVGitIndexStage stage, std::optional<char> flag)
    : RVGitFileEntry(std::move(repository), std::move(filePath), std::move(objectHash), fileMode),
      stage_(static_cast<std::uint8_t>(stage)),
      flag_(flag) {}

RVGitIndexEntry::RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository,
                                 RVGitIndexOutputParserResultItem item)
    : RVGitFileEntry(std::move(repository), std::move(item.filePath), std::move(item.objectHash),
                     item.fileMode),
      stage_(static_cast<std::uint8_t>(item.stage)),
      flag_(item.flag) {}

std::optional<std::string> RVGitIndexEntry::flag() const {
    return flag_ ? std::optional(std::string(1, *flag_)) : std::nullopt;
}

bool RVGitIndexEntry::isAssumeUnchangedFlagSet() const {
    return flag_ && RVGitIndexHelper::isAssumeUnchangedFlag({&*flag_, 1});
}

bool RVGitIndexEntry::isEqualToIndexEntry(const RVGitIndexEntry& other) const {
    return isEqualToFileEntry(other) && stage_ == other.stage_ && flag_ == other.flag_;
}
