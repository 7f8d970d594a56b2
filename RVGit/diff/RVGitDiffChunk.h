#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitDiffChunkLine.h"

class RVGitDiff;

/// The lines of a chunk: a list that makes each line when it is asked for. It keeps alive what it
/// shows.
class RVGIT_EXPORT RVGitDiffChunkLines {
public:
    /// Goes through the lines once; what it points at is made anew each time.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = RVGitDiffChunkLine;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = RVGitDiffChunkLine;

        Iterator() = default;
        Iterator(const RVGitDiffChunkLines* lines, std::size_t index)
            : lines_(lines), index_(index) {}
        [[nodiscard]] RVGitDiffChunkLine operator*() const { return (*lines_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {lines_, index_++}; }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        const RVGitDiffChunkLines* lines_ = nullptr;
        std::size_t index_ = 0;
    };

    RVGitDiffChunkLines(std::shared_ptr<const RVGitDiffContents> contents, std::size_t chunkIndex)
        : contents_(std::move(contents)), chunkIndex_(chunkIndex) {}

    [[nodiscard]] std::size_t size() const { return contents_->chunks[chunkIndex_].lineCount; }
    [[nodiscard]] bool empty() const { return size() == 0; }
    [[nodiscard]] RVGitDiffChunkLine operator[](std::size_t index) const {
        return {contents_, chunkIndex_, index};
    }
    [[nodiscard]] Iterator begin() const { return {this, 0}; }
    [[nodiscard]] Iterator end() const { return {this, size()}; }

private:
    std::shared_ptr<const RVGitDiffContents> contents_;
    std::size_t chunkIndex_;
};

/// A run of changed lines with the context around it. Texts are made when they are read. Any thread
/// may read it once its diff is made.
class RVGIT_EXPORT RVGitDiffChunk {
public:
    using LineMapping = std::map<std::uint64_t, RVGitDiffChunkLine>;

    RVGitDiffChunk(std::string_view rawChunk, std::vector<RVGitDiffRange> fileRanges,
                   const std::vector<RVGitDiffChunkLine>& lines);
    /// A parsed chunk.
    RVGitDiffChunk(std::shared_ptr<const RVGitDiffContents> contents, std::size_t chunkIndex);

    [[nodiscard]] static std::shared_ptr<RVGitDiffChunk> diffChunkWithRawChunk(
        std::string_view rawChunk, std::vector<RVGitDiffRange> fileRanges,
        const std::vector<RVGitDiffChunkLine>& lines);

    /// The owner, which the chunk does not keep alive.
    [[nodiscard]] std::shared_ptr<RVGitDiff> diff() const { return diff_.lock(); }
    void setDiff(const std::shared_ptr<RVGitDiff>& diff) { diff_ = diff; }

    /// The header line and every line, each followed by "\n".
    [[nodiscard]] std::string rawChunk() const;
    /// The same in the bytes that git printed; of a chunk made from text, its text.
    [[nodiscard]] RVData rawChunkBytes() const;
    /// One for each parent, then one for the new file.
    [[nodiscard]] const std::vector<RVGitDiffRange>& fileRanges() const;
    [[nodiscard]] const RVGitDiffChunkLines& lines() const { return lines_; }
    /// The first line of rawChunk().
    [[nodiscard]] std::string header() const;
    /// The contents of the lines, each followed by "\n"; "\n" for a chunk without lines.
    [[nodiscard]] std::string content() const;
    [[nodiscard]] std::uint64_t insertions() const { return insertions_; }
    [[nodiscard]] std::uint64_t deletions() const { return deletions_; }

    /// The deleted lines by their number in the first parent; of lines with the same number the
    /// last.
    [[nodiscard]] LineMapping deletedLineNumberToLineMapping() const;
    /// The added lines by the second of their numbers. Kept for compatibility: in a combined diff
    /// that is the number in the second parent and not in the new file.
    [[nodiscard]] LineMapping addedLineNumberToLineMapping() const;
    [[nodiscard]] std::optional<RVGitDiffChunkLine> deletedChunkLineForLineNumber(
        std::uint64_t lineNumber) const;
    [[nodiscard]] std::optional<RVGitDiffChunkLine> addedChunkLineForLineNumber(
        std::int64_t lineNumber) const;

private:
    /// Line indexes by line number, in order. Made when a line is first looked for.
    using LineIndex = std::pair<std::uint32_t, std::uint32_t>;
    struct LineIndexes {
        std::once_flag isMade;
        std::vector<LineIndex> indexes;
    };

    void countLines();
    [[nodiscard]] const std::vector<LineIndex>& deletedLineIndexes() const;
    [[nodiscard]] const std::vector<LineIndex>& addedLineIndexes() const;
    [[nodiscard]] std::vector<LineIndex> lineIndexes(RVGitDiffLineType type, std::uint64_t count,
                                                     std::size_t column) const;
    [[nodiscard]] LineMapping mappingOfLines(const std::vector<LineIndex>& indexes) const;
    [[nodiscard]] std::optional<RVGitDiffChunkLine> lineForLineNumber(
        const std::vector<LineIndex>& indexes, std::uint64_t lineNumber) const;

    std::shared_ptr<const RVGitDiffContents> contents_;
    std::size_t chunkIndex_;
    RVGitDiffChunkLines lines_;
    std::weak_ptr<RVGitDiff> diff_;
    std::uint64_t insertions_ = 0;
    std::uint64_t deletions_ = 0;
    mutable LineIndexes deletedLineIndexes_;
    mutable LineIndexes addedLineIndexes_;
};
