#include "RVGit/diff/RVGitDiffPatchGenerator.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"

namespace {

constexpr std::string_view noNewlineMarker = "\\ No newline at end of file\n";

std::string rangeText(const RVGitDiffRange& range) {
    return std::to_string(range.location) + "," + std::to_string(range.length);
}

std::string chunkHeader(const RVGitDiffRange& oldRange, const RVGitDiffRange& newRange) {
    return "@@ -" + rangeText(oldRange) + " +" + rangeText(newRange) + " @@\n";
}

/// What follows the prefix in the first line of the header that begins with it; absent without one.
std::optional<std::string_view> restOfHeaderLine(std::string_view header, std::string_view prefix) {
    while (!header.empty()) {
        const std::string_view line = header.substr(0, header.find('\n'));
        if (line.starts_with(prefix))
            return line.substr(prefix.size());
        header.remove_prefix(std::min(line.size() + 1, header.size()));
    }
    return std::nullopt;
}

/// "b/path" for "a/path", or the other way, in quotes or not.
std::string nameWithPrefix(std::string_view name, char prefix) {
    std::string result(name);
    const std::size_t position = result.starts_with('"') ? 1 : 0;
    if (position < result.size())
        result[position] = prefix;
    return result;
}

/// One line of a located patch: what it is on the side that the patch is applied to, and in the
/// file that it leaves there.
struct Row {
    std::string_view content;
    bool isInBase = false;
    bool isInResult = false;
    bool endsInBase = false;
    bool endsInResult = false;

    [[nodiscard]] bool isContext() const {
        return isInBase && isInResult && endsInBase == endsInResult;
    }
};

std::vector<Row> rowsOfChunk(const RVGitDiffChunk& chunk,
                             const std::set<std::size_t>& linesWithIndexes, bool isIndexMode) {
    std::vector<Row> rows;
    std::size_t index = 0;
    // Of the line that a marker stands behind; null where it is left out.
    Row* row = nullptr;
    rows.reserve(chunk.lines().size());
    for (const RVGitDiffChunkLine& line : chunk.lines()) {
        const bool isSelected = linesWithIndexes.contains(index++);
        if (line.isNoNewlineAtEndOfFileLine()) {
            if (row)
                row->endsInBase = row->endsInResult = false;
            continue;
        }
        const bool isOfBase = isIndexMode ? line.isDeletedLine() : line.isAddedLine();
        const bool isContext = line.isContextLine();
        row = nullptr;
        if (isContext || isOfBase || isSelected) {
            row = &rows.emplace_back(Row{.content = line.contentBytes(),
                                         .isInBase = isContext || isOfBase,
                                         .isInResult = isContext || isOfBase != isSelected,
                                         .endsInBase = true,
                                         .endsInResult = true});
        }
    }
    // Only the last line may go without a newline.
    bool isLast = true;
    for (auto each = rows.rbegin(); each != rows.rend(); ++each) {
        if (!each->isInResult)
            continue;
        each->endsInResult = each->endsInResult || !isLast;
        isLast = false;
    }
    return rows;
}

bool hasAsManyLinesAsItsHeaderSays(const RVGitDiffChunk& chunk) {
    RVGitDiffRange ranges[2] = {chunk.fileRanges()[0], chunk.fileRanges()[1]};
    for (const RVGitDiffChunkLine& line : chunk.lines()) {
        ranges[0].length -= line.isContextLine() || line.isDeletedLine();
        ranges[1].length -= line.isContextLine() || line.isAddedLine();
    }
    return ranges[0].length == 0 && ranges[1].length == 0;
}

bool hasContextAtAnEnd(const RVGitDiffChunk& chunk) {
    const RVGitDiffChunkLines& lines = chunk.lines();
    if (lines.empty())
        return false;
    const bool isMarked = lines[lines.size() - 1].isNoNewlineAtEndOfFileLine() && lines.size() > 1;
    return lines[0].isContextLine() || lines[lines.size() - (isMarked ? 2 : 1)].isContextLine();
}

/// The chunks of a located patch, in the order in which they stand in the file.
class LocatedBody {
public:
    explicit LocatedBody(bool isIndexMode) : isIndexMode_(isIndexMode) {}

    /// `start` counts the lines ahead of the first row on the side that the patch is applied to.
    void add(const std::vector<Row>& rows, std::int64_t start, bool keepsContext) {
        auto first = rows.begin();
        while (first != rows.end()) {
            auto end = rows.end();
            if (!keepsContext) {
                first = std::find_if_not(first, rows.end(), &isContext);
                end = std::find_if(first, rows.end(), &isContext);
            }
            addChunk(first, end, start + std::count_if(rows.begin(), first, &isInBase));
            first = end;
        }
    }
    [[nodiscard]] const RVData& text() const { return text_; }

private:
    using RowIterator = std::vector<Row>::const_iterator;

    static bool isContext(const Row& row) { return row.isContext(); }
    static bool isInBase(const Row& row) { return row.isInBase; }
    static bool isInResult(const Row& row) { return row.isInResult; }

    void addChunk(RowIterator first, RowIterator end, std::int64_t start) {
        if (std::all_of(first, end, &isContext))
            return;
        const std::int64_t baseLength = std::count_if(first, end, &isInBase);
        const RVGitDiffRange base = {baseLength == 0 ? start : start + 1, baseLength};
        // git looks first where this says. For nothing left, the line ahead would be usual; but git
        // would take that for an equal one, or its beginning for one without a newline.
        const std::int64_t resultStart = start + linesGained_;
        const std::int64_t resultLength = std::count_if(first, end, &isInResult);
        const bool isAtTop = resultStart == 0 && resultLength == 0;
        const RVGitDiffRange result = {isAtTop ? 0 : resultStart + 1, resultLength};
        linesGained_ += result.length - base.length;
        text_ += isIndexMode_ ? chunkHeader(base, result) : chunkHeader(result, base);
        for (; first != end; ++first)
            addRow(*first);
    }

    void addRow(const Row& row) {
        if (row.isContext())
            return addLine(' ', row.content, row.endsInBase);
        // The old side of the patch comes first.
        if (isIndexMode_ && row.isInBase)
            addLine('-', row.content, row.endsInBase);
        if (row.isInResult)
            addLine(isIndexMode_ ? '+' : '-', row.content, row.endsInResult);
        if (!isIndexMode_ && row.isInBase)
            addLine('+', row.content, row.endsInBase);
    }

    void addLine(char status, std::string_view content, bool ends) {
        text_ += status;
        text_ += content;
        text_ += '\n';
        if (!ends)
            text_ += noNewlineMarker;
    }

    bool isIndexMode_;
    /// By the chunks so far.
    std::int64_t linesGained_ = 0;
    RVData text_;
};

}  // namespace

RVGitDiffPatchGenerator::RVGitDiffPatchGenerator(std::shared_ptr<const RVGitDiff> diff)
    : diff_(std::move(diff)) {
    requireParameter(diff_ != nullptr, "diff");
}

// Lines of any chunks.

std::optional<RVData> RVGitDiffPatchGenerator::locatedPatchForLinesWithIndexes(
    const Lines& linesWithIndexes, int mode) const {
    const bool isIndexMode = mode == IndexMode;
    const bool isNewFile = !diff_->oldFilePath();
    const bool isDeletedFile = !diff_->filePath();
    LocatedBody body(isIndexMode);
    bool leavesLines = false;
    for (const auto& [chunkIndex, lines] : linesWithIndexes) {
        requireParameter(chunkIndex < diff_->chunks().size(), "chunkIndex < chunks.count");
        const RVGitDiffChunk& chunk = *diff_->chunks()[chunkIndex];
        requireParameter(chunk.fileRanges().size() == 2, "chunk.fileRanges.count == 2");
        if (!hasAsManyLinesAsItsHeaderSays(chunk))
            return std::nullopt;
        const std::vector<Row> rows = rowsOfChunk(chunk, lines, isIndexMode);
        leavesLines = leavesLines || std::ranges::any_of(rows, &Row::isInResult);
        const RVGitDiffRange& base = chunk.fileRanges()[isIndexMode ? 0 : 1];
        // Lines that stay would be taken for context, which git, finding none on one side of the
        // chunk, looks for at the end of the file.
        const bool keepsContext = isNewFile || isDeletedFile || hasContextAtAnEnd(chunk);
        body.add(rows, base.length == 0 ? base.location : base.location - 1, keepsContext);
    }
    if (body.text().empty())
        return std::nullopt;
    if (isIndexMode && isDeletedFile && leavesLines)
        return headerOfDeletedFileAsModified() + body.text();
    if (!isIndexMode && isNewFile && leavesLines)
        return headerOfNewFileAsModified() + body.text();
    return diff_->headerBytes().value_or("") + body.text();
}

// One chunk.

std::optional<RVData> RVGitDiffPatchGenerator::patchForChunkAtIndex(std::size_t chunkIndex) const {
    if (chunkIndex >= diff_->chunks().size())
        return std::nullopt;
    return diff_->headerBytes().value_or("") + diff_->chunks()[chunkIndex]->rawChunkBytes();
}

RVData RVGitDiffPatchGenerator::indexPatchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const {
    return patchForChunkAtIndex(chunkIndex, linesWithIndexes, IndexMode);
}

RVData RVGitDiffPatchGenerator::worktreePatchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const {
    return patchForChunkAtIndex(chunkIndex, linesWithIndexes, WorktreeMode);
}

RVData RVGitDiffPatchGenerator::patchForChunkAtIndex(std::size_t chunkIndex,
                                                     const std::set<std::size_t>& linesWithIndexes,
                                                     int mode) const {
    requireParameter(chunkIndex < diff_->chunks().size(), "chunkIndex < chunks.count");
    const RVGitDiffChunk& chunk = *diff_->chunks()[chunkIndex];
    requireParameter(chunk.fileRanges().size() >= 2, "chunk.fileRanges.count >= 2");
    RVGitDiffRange oldRange = chunk.fileRanges()[0];
    RVGitDiffRange newRange = chunk.fileRanges()[1];
    RVData body;
    const auto append = [&body](std::string_view status, std::string_view rest) {
        body += status;
        body += rest;
        body += '\n';
    };
    std::size_t index = 0;
    for (const RVGitDiffChunkLine& line : chunk.lines()) {
        if (linesWithIndexes.contains(index++) || line.isContextLine()) {
            append("", line.contentWithStatusBytes());
        } else if (line.isDeletedLine()) {
            if (mode == IndexMode) {
                append(" ", line.contentBytes());
                ++newRange.length;
            } else {
                --oldRange.length;
            }
        } else if (line.isAddedLine()) {
            if (mode == IndexMode) {
                --newRange.length;
            } else {
                append(" ", line.contentBytes());
                ++oldRange.length;
                if (oldRange.location == 0)
                    oldRange.location = 1;
            }
        }
    }
    return fileHeaderForMode(mode) + chunkHeader(oldRange, newRange) + body;
}

// The header of the file.

RVData RVGitDiffPatchGenerator::fileHeaderForMode(int mode) const {
    if (mode == IndexMode || diff_->oldFilePath())
        return diff_->headerBytes().value_or("");
    // The header of a new file says that there is no old side, but in reverse it is the target.
    return headerOfNewFileAsModified();
}

RVData RVGitDiffPatchGenerator::headerOfNewFileAsModified() const {
    const std::string filePath = diff_->filePath().value_or("");
    const auto headerWithNames = [this](std::string_view bothNames, std::string_view oldName,
                                        std::string_view newName) {
        return RVData("diff --git ").append(bothNames) + "\n" +  //
               "index " + RVGitNullObjectHash + ".." + diff_->objectHash().value_or("") + "\n" +
               RVData("--- ").append(oldName) + "\n" +  //
               RVData("+++ ").append(newName) + "\n";
    };
    const std::string plainNames = "a/" + filePath + " b/" + filePath;

    // What the path was read from says more than the path, wherever git had to quote it, prints it
    // in another encoding, or ends it in what looks like the second name.
    const RVData gitHeader = diff_->headerBytes().value_or("");
    const auto bothNames = restOfHeaderLine(gitHeader, "diff --git ");
    const auto newName = restOfHeaderLine(gitHeader, "+++ ");
    if (bothNames && newName && restOfHeaderLine(gitHeader, "--- ") == RVGitNullFile) {
        RVGitDiffOutputParser parser(gitHeader);
        const bool isOfThisPath = parser.parse() && parser.diff().gitDiffFilePath() == filePath;
        const bool isPlain = bothNames == plainNames &&
                             (newName == "b/" + filePath || newName == "b/" + filePath + "\t");
        if (isOfThisPath && !isPlain)
            return headerWithNames(*bothNames, nameWithPrefix(*newName, 'a'), *newName);
    }
    return headerWithNames(plainNames, "a/" + filePath, "b/" + filePath);
}

RVData RVGitDiffPatchGenerator::headerOfDeletedFileAsModified() const {
    RVData gitHeader = diff_->headerBytes().value_or("");
    const auto oldName = restOfHeaderLine(gitHeader, "--- ");
    const auto bothNames = restOfHeaderLine(gitHeader, "diff --git ");
    if (!oldName || !bothNames)
        return gitHeader;
    return RVData("diff --git ").append(*bothNames) + "\n" +  //
           "index " + diff_->originalObjectHash().value_or("") + ".." + RVGitNullObjectHash + "\n" +
           RVData("--- ").append(*oldName) + "\n" +  //
           "+++ " + nameWithPrefix(*oldName, 'b') + "\n";
}
