#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitDiff;

/// Writes patches that hold some of the changes of a diff: one chunk, some of its lines, or lines
/// of any chunks. Meant for ordinary diffs. Nothing is read but the diff. Readable on any thread.
///
/// A patch is made of the bytes that git printed, never of text that was decoded: give it to
/// RVGitApplyCommand as it is.
///
/// locatedPatchForLinesWithIndexes() is what a client should use. The operations for one chunk keep
/// the chunk's new location, which counts the changes of the chunks ahead of it, and git looks
/// there first: where those are not applied, and the lines around the chunk come again at just that
/// distance, the patch goes to the wrong one of them. More lines of context
/// (RVGitDiffOptionContextLines) make that less likely. Without any, nothing but the location says
/// where a chunk belongs: behind one that is not applied and changes the count of lines, it goes to
/// a wrong place wherever the same lines stand there, and new lines always do; and where some of
/// its lines are not selected, git takes those that stay for context, and looks for them at the
/// end of the file. A patch without context needs RVGitApplyOptionUnidiffZero.
class RVGIT_EXPORT RVGitDiffPatchGenerator {
public:
    /// What the patch is to be applied to, and how.
    enum Mode : int {
        /// To the old side: the selected changes are made.
        IndexMode = 0,
        /// To the new side, in reverse: the selected changes are taken back.
        WorktreeMode = 1,
    };
    /// By the index of the chunk, the indexes of lines in the chunk's lines.
    using Lines = std::map<std::size_t, std::set<std::size_t>>;

    /// The diff is required.
    explicit RVGitDiffPatchGenerator(std::shared_ptr<const RVGitDiff> diff);

    [[nodiscard]] const std::shared_ptr<const RVGitDiff>& diff() const { return diff_; }

    /// The selected lines of any chunks, as one patch that lands where they stand, among whatever
    /// equal lines, provided that it is applied to the side that the diff tells of: each chunk
    /// carries the location that it has there. What is not selected is left as it is; that one
    /// version ends without a newline is seen to, and lines that say so need not be selected. A
    /// line that had no newline gets one where others follow it now. A file of which all is taken
    /// back that was new is new no more, and goes; of a deleted file, any part can be deleted.
    ///
    /// Absent if none of the selected lines is a change, or if a chunk has not as many lines as its
    /// header says. The chunks must exist and be those of an ordinary diff. Of a diff without
    /// context, and of a file that changed from its first line to its last, the patch has no
    /// context either: RVGitWorkingTreeManager::applyPatch() sees that by itself; to
    /// RVGitApplyCommand give RVGitApplyOptionUnidiffZero. Any other mode than the two is taken for
    /// the second.
    [[nodiscard]] std::optional<RVData> locatedPatchForLinesWithIndexes(
        const Lines& linesWithIndexes, int mode) const;

    /// The whole chunk, under the diff's header if it has one; absent if there is no such chunk.
    [[nodiscard]] std::optional<RVData> patchForChunkAtIndex(std::size_t chunkIndex) const;

    /// The selected lines, by their indexes in the chunk's lines. The chunk must exist; of a
    /// combined diff only the first two ranges count. What is not selected is left as it is, but
    /// for a line that says that there is no newline at the end of the file: it is lost, so whoever
    /// selects the last line selects that one too. git refuses the patch where nothing is left to
    /// change, where it makes a part of a deletion, or where such a line is missing behind one that
    /// stays or goes.
    [[nodiscard]] RVData indexPatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    [[nodiscard]] RVData worktreePatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    /// Any other mode than those two is taken for the second.
    [[nodiscard]] RVData patchForChunkAtIndex(std::size_t chunkIndex,
                                              const std::set<std::size_t>& linesWithIndexes,
                                              int mode) const;

private:
    [[nodiscard]] RVData fileHeaderForMode(int mode) const;
    [[nodiscard]] RVData headerOfNewFileAsModified() const;
    [[nodiscard]] RVData headerOfDeletedFileAsModified() const;

    std::shared_ptr<const RVGitDiff> diff_;
};
