#include "RVGit/worktree/RVGitIndexEntry.h"

#include <utility>

#include "RVGit/worktree/RVGitIndexHelper.h"

RVGitIndexEntry::RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                                 std::optional<std::string> objectHash, RVGitFileMode fileMode,
                                 RVGitIndexStage stage, std::optional<char> flag)
    : RVGitFileEntry(std::move(repository), std::move(filePath), std::move(objectHash), fileMode),
      stage_(static_cast<std::uint8_t>(stage)),
      flag_(flag) {}

RVGitIndexEntry::RVGitIndexEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                                 RVGitCompactHash objectHash, RVGitFileMode fileMode,
                                 RVGitIndexStage stage, std::optional<char> flag)
    : RVGitFileEntry(std::move(repository), std::move(filePath), objectHash, fileMode),
      stage_(static_cast<std::uint8_t>(stage)),
      flag_(flag) {}

std::optional<std::string> RVGitIndexEntry::flag() const {
    return flag_ ? std::optional(std::string(1, *flag_)) : std::nullopt;
}

bool RVGitIndexEntry::isAssumeUnchangedFlagSet() const {
    return flag_ && RVGitIndexHelper::isAssumeUnchangedFlag({&*flag_, 1});
}

bool RVGitIndexEntry::isEqualToIndexEntry(const RVGitIndexEntry& other) const {
    return isEqualToFileEntry(other) && stage_ == other.stage_ && flag_ == other.flag_;
}
