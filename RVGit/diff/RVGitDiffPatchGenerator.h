#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "RVGit/base/RVExport.h"

class RVGitDiff;

/// Writes patches that hold one chunk of a diff, or some of its lines. Meant for ordinary diffs: of
/// a combined one only the first two ranges count. Nothing is read but the diff. Readable on any
/// thread.
///
/// A chunk keeps its new location, which counts the changes of the chunks ahead of it, and git
/// looks there first: where those are not applied, and the lines around the chunk come again at
/// just that distance, the patch goes to the wrong one of them. More lines of context
/// (RVGitDiffOptionContextLines) make that less likely.
class RVGIT_EXPORT RVGitDiffPatchGenerator {
public:
    /// What the patch is to be applied to, and how.
    enum Mode : int {
        /// To the old side: the selected changes are made.
        IndexMode = 0,
        /// To the new side, in reverse: the selected changes are taken back.
        WorktreeMode = 1,
    };

    /// The diff is required.
    explicit RVGitDiffPatchGenerator(std::shared_ptr<const RVGitDiff> diff);

    [[nodiscard]] const std::shared_ptr<const RVGitDiff>& diff() const { return diff_; }

    /// The whole chunk, under the diff's header if it has one; absent if there is no such chunk.
    [[nodiscard]] std::optional<std::string> patchForChunkAtIndex(std::size_t chunkIndex) const;

    /// The selected lines, by their indexes in the chunk's lines. The chunk must exist. What is not
    /// selected is left as it is, but for a line that says that there is no newline at the end of
    /// the file: it is lost, so whoever selects the last line selects that one too. git refuses
    /// the patch where nothing is left to change, where it makes a part of a deletion, or where
    /// such a line is missing behind one that stays or goes.
    [[nodiscard]] std::string indexPatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    [[nodiscard]] std::string worktreePatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    /// Any other mode than those two is taken for the second.
    [[nodiscard]] std::string patchForChunkAtIndex(std::size_t chunkIndex,
                                                   const std::set<std::size_t>& linesWithIndexes,
                                                   int mode) const;

private:
    [[nodiscard]] std::string fileHeaderForMode(int mode) const;

    std::shared_ptr<const RVGitDiff> diff_;
};
