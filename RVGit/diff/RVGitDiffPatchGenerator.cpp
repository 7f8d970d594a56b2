#include "RVGit/diff/RVGitDiffPatchGenerator.h"

#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiff.h"

namespace {

void appendLine(std::string& body, std::string_view status, std::string_view content) {
    body += status;
    body += content;
    body += '\n';
}

std::string rangeText(const RVGitDiffRange& range) {
    return std::to_string(range.location) + "," + std::to_string(range.length);
}

}  // namespace

RVGitDiffPatchGenerator::RVGitDiffPatchGenerator(std::shared_ptr<const RVGitDiff> diff)
    : diff_(std::move(diff)) {
    requireParameter(diff_ != nullptr, "diff");
}

std::optional<std::string> RVGitDiffPatchGenerator::patchForChunkAtIndex(
    std::size_t chunkIndex) const {
    if (chunkIndex >= diff_->chunks().size())
        return std::nullopt;
    return diff_->header().value_or("") + diff_->chunks()[chunkIndex]->rawChunk();
}

std::string RVGitDiffPatchGenerator::indexPatchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const {
    return patchForChunkAtIndex(chunkIndex, linesWithIndexes, IndexMode);
}

std::string RVGitDiffPatchGenerator::worktreePatchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const {
    return patchForChunkAtIndex(chunkIndex, linesWithIndexes, WorktreeMode);
}

std::string RVGitDiffPatchGenerator::patchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes, int mode) const {
    requireParameter(chunkIndex < diff_->chunks().size(), "chunkIndex < chunks.count");
    const RVGitDiffChunk& chunk = *diff_->chunks()[chunkIndex];
    requireParameter(chunk.fileRanges().size() >= 2, "chunk.fileRanges.count >= 2");
    RVGitDiffRange oldRange = chunk.fileRanges()[0];
    RVGitDiffRange newRange = chunk.fileRanges()[1];
    std::string body;
    std::size_t index = 0;
    for (const RVGitDiffChunkLine& line : chunk.lines()) {
        if (linesWithIndexes.contains(index++) || line.isContextLine()) {
            appendLine(body, line.statusView(), line.contentView());
        } else if (line.isDeletedLine()) {
            if (mode == IndexMode) {
                appendLine(body, " ", line.contentView());
                ++newRange.length;
            } else {
                --oldRange.length;
            }
        } else if (line.isAddedLine()) {
            if (mode == IndexMode) {
                --newRange.length;
            } else {
                appendLine(body, " ", line.contentView());
                ++oldRange.length;
                if (oldRange.location == 0)
                    oldRange.location = 1;
            }
        }
    }
    return fileHeaderForMode(mode) + "@@ -" + rangeText(oldRange) + " +" + rangeText(newRange) +
           " @@\n" + body;
}

std::string RVGitDiffPatchGenerator::fileHeaderForMode(int mode) const {
    if (mode == IndexMode || diff_->oldFilePath())
        return diff_->header().value_or("");
    // The header of a new file says that there is no old side, but in reverse it is the target.
    const std::string filePath = diff_->filePath().value_or("");
    return "diff --git a/" + filePath + " b/" + filePath + "\n" +  //
           "index " + RVGitNullObjectHash + ".." + diff_->objectHash().value_or("") + "\n" +
           "--- a/" + filePath + "\n" +  //
           "+++ b/" + filePath + "\n";
}
