#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"

/// What one local branch tracks and how far apart the two are.
struct RVGIT_EXPORT RVGitBranchTrackingState {
    std::string fullRefName;
    std::string commitHash;
    /// Whether it is checked out in this worktree.
    bool isHead = false;
    /// The full name of the tracked ref as this repository has it, or had it.
    std::optional<std::string> upstreamRefName;
    /// Whether there is no such ref any more.
    bool isUpstreamGone = false;
    std::uint64_t commitsAhead = 0;
    std::uint64_t commitsBehind = 0;
    /// The root of the worktree in which it is checked out, this one or another. Absent before
    /// git 2.23, which does not tell.
    std::optional<std::string> worktreePath;
};

/// Reads what `git for-each-ref` prints with format(). A record of another shape fails with code
/// 11, as does a hash that has not 40 digits: no branch is ever skipped.
class RVGIT_EXPORT RVGitBranchTrackingStateOutputParser
    : public RVGitItemOutputParser<RVGitBranchTrackingState> {
public:
    explicit RVGitBranchTrackingStateOutputParser(std::string_view outputData);

    /// What git is to print: the newest can tell all with one field, older ones need another to
    /// tell a gone upstream, or cannot name the worktree.
    [[nodiscard]] static std::string format(bool namesGoneUpstreams, bool namesWorktrees);

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};
