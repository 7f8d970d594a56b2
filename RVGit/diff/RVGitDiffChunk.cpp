#include "RVGit/diff/RVGitDiffChunk.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVError.h"

namespace {

// Which of a line's numbers a lookup goes by: fixed for all diffs.
constexpr std::size_t deletedColumn = 0;
constexpr std::size_t addedColumn = 1;

std::shared_ptr<const RVGitDiffContents> contentsOfChunk(
    std::string_view rawChunk, std::vector<RVGitDiffRange> fileRanges,
    const std::vector<RVGitDiffChunkLine>& lines) {
    auto text = std::make_shared<std::string>(rawChunk);
    auto bytes = std::make_shared<RVData>(rawChunk);
    auto contents = std::make_shared<RVGitDiffContents>();
    RVGitDiffContents::Chunk& chunk = contents->chunks.emplace_back();
    chunk.raw.end = static_cast<std::uint32_t>(rawChunk.size());
    chunk.lineCount = static_cast<std::uint32_t>(lines.size());
    chunk.fileRanges = std::move(fileRanges);
    if (!lines.empty())
        chunk.columnCount = static_cast<std::uint32_t>(lines.front().lineNumberCount());
    for (const RVGitDiffChunkLine& line : lines) {
        requireParameter(line.lineNumberCount() == chunk.columnCount,
                         "line.lineNumbers.count == lines.firstObject.lineNumbers.count");
        contents->lines.emplace_back(text->size(), line.contentWithStatusView().size(),
                                     line.statusView().size(), line.type());
        const std::vector<std::uint32_t> numbers = line.lineNumbers();
        contents->lineNumbers.insert(contents->lineNumbers.end(), numbers.begin(), numbers.end());
        text->append(line.contentWithStatusView()) += '\n';
        bytes->append(line.contentWithStatusBytes()) += '\n';
        if (line.contentWithStatusBytes() != line.contentWithStatusView())
            contents->decodedLines.push_back({static_cast<std::uint32_t>(text->size()),
                                              static_cast<std::uint32_t>(bytes->size())});
    }
    contents->text = *text;
    contents->textOwner = std::move(text);
    contents->bytes = *bytes;
    contents->bytesOwner = std::move(bytes);
    return contents;
}

}  // namespace

RVGitDiffChunk::RVGitDiffChunk(std::string_view rawChunk, std::vector<RVGitDiffRange> fileRanges,
                               const std::vector<RVGitDiffChunkLine>& lines)
    : RVGitDiffChunk(contentsOfChunk(rawChunk, std::move(fileRanges), lines), 0) {}

RVGitDiffChunk::RVGitDiffChunk(std::shared_ptr<const RVGitDiffContents> contents,
                               std::size_t chunkIndex)
    : contents_(std::move(contents)), chunkIndex_(chunkIndex), lines_(contents_, chunkIndex) {
    countLines();
}

std::shared_ptr<RVGitDiffChunk> RVGitDiffChunk::diffChunkWithRawChunk(
    std::string_view rawChunk, std::vector<RVGitDiffRange> fileRanges,
    const std::vector<RVGitDiffChunkLine>& lines) {
    return std::make_shared<RVGitDiffChunk>(rawChunk, std::move(fileRanges), lines);
}

void RVGitDiffChunk::countLines() {
    const RVGitDiffContents::Chunk& chunk = contents_->chunks[chunkIndex_];
    const RVGitDiffContents::Line* const lines = contents_->lines.data() + chunk.firstLine;
    for (std::uint32_t index = 0; index < chunk.lineCount; ++index) {
        deletions_ += lines[index].type == RVGitDiffLineDeleted;
        insertions_ += lines[index].type == RVGitDiffLineAdded;
    }
}

const std::vector<RVGitDiffChunk::LineIndex>& RVGitDiffChunk::deletedLineIndexes() const {
    std::call_once(deletedLineIndexes_.isMade, [this] {
        deletedLineIndexes_.indexes = lineIndexes(RVGitDiffLineDeleted, deletions_, deletedColumn);
    });
    return deletedLineIndexes_.indexes;
}

const std::vector<RVGitDiffChunk::LineIndex>& RVGitDiffChunk::addedLineIndexes() const {
    std::call_once(addedLineIndexes_.isMade, [this] {
        addedLineIndexes_.indexes = lineIndexes(RVGitDiffLineAdded, insertions_, addedColumn);
    });
    return addedLineIndexes_.indexes;
}

std::vector<RVGitDiffChunk::LineIndex> RVGitDiffChunk::lineIndexes(RVGitDiffLineType type,
                                                                   std::uint64_t count,
                                                                   std::size_t column) const {
    const RVGitDiffContents::Chunk& chunk = contents_->chunks[chunkIndex_];
    const RVGitDiffContents::Line* const lines = contents_->lines.data() + chunk.firstLine;
    std::vector<LineIndex> indexes;
    if (count == 0 || column >= chunk.columnCount)
        return indexes;
    indexes.reserve(count);
    for (std::uint32_t index = 0; index < chunk.lineCount; ++index) {
        if (lines[index].type == type)
            indexes.emplace_back(contents_->lineNumbersOf(chunk, index)[column], index);
    }
    if (!std::ranges::is_sorted(indexes))
        std::ranges::sort(indexes);
    return indexes;
}

std::string RVGitDiffChunk::rawChunk() const {
    return contents_->textOfRange(contents_->chunks[chunkIndex_].raw);
}

RVData RVGitDiffChunk::rawChunkBytes() const {
    return contents_->bytesOfRange(contents_->chunks[chunkIndex_].raw);
}

const std::vector<RVGitDiffRange>& RVGitDiffChunk::fileRanges() const {
    return contents_->chunks[chunkIndex_].fileRanges;
}

std::string RVGitDiffChunk::header() const {
    return std::string(contents_->firstLineOfRange(contents_->chunks[chunkIndex_].raw));
}

std::string RVGitDiffChunk::content() const {
    std::string content;
    for (const RVGitDiffChunkLine& line : lines()) {
        content += line.contentView();
        content += '\n';
    }
    return content.empty() ? "\n" : content;
}

RVGitDiffChunk::LineMapping RVGitDiffChunk::mappingOfLines(
    const std::vector<LineIndex>& indexes) const {
    LineMapping mapping;
    for (const auto& [lineNumber, index] : indexes)
        mapping.insert_or_assign(lineNumber, lines()[index]);
    return mapping;
}

RVGitDiffChunk::LineMapping RVGitDiffChunk::deletedLineNumberToLineMapping() const {
    return mappingOfLines(deletedLineIndexes());
}

RVGitDiffChunk::LineMapping RVGitDiffChunk::addedLineNumberToLineMapping() const {
    return mappingOfLines(addedLineIndexes());
}

std::optional<RVGitDiffChunkLine> RVGitDiffChunk::lineForLineNumber(
    const std::vector<LineIndex>& indexes, std::uint64_t lineNumber) const {
    const auto behind = std::ranges::upper_bound(indexes, lineNumber, {}, &LineIndex::first);
    if (behind == indexes.begin() || std::prev(behind)->first != lineNumber)
        return std::nullopt;
    return lines()[std::prev(behind)->second];
}

std::optional<RVGitDiffChunkLine> RVGitDiffChunk::deletedChunkLineForLineNumber(
    std::uint64_t lineNumber) const {
    return lineForLineNumber(deletedLineIndexes(), lineNumber);
}

std::optional<RVGitDiffChunkLine> RVGitDiffChunk::addedChunkLineForLineNumber(
    std::int64_t lineNumber) const {
    return lineForLineNumber(addedLineIndexes(), static_cast<std::uint64_t>(lineNumber));
}
