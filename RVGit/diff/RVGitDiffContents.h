#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"

/// Where a chunk stands in one version of a file, in lines.
struct RVGIT_EXPORT RVGitDiffRange {
    std::int64_t location = 0;
    std::int64_t length = 0;

    friend bool operator==(const RVGitDiffRange&, const RVGitDiffRange&) = default;
};

/// What a line of a chunk is.
enum RVGitDiffLineType : std::uint32_t {
    RVGitDiffLineContext = 0,
    RVGitDiffLineAdded = 1,
    RVGitDiffLineDeleted = 2,
    RVGitDiffLineNoNewlineAtEndOfFile = 3,
};

/// What diff maps and diffs are made of: one file's diff as ranges of the text that git printed,
/// which is kept alive and not copied. Filled by one thread; afterwards any number may read.
struct RVGIT_EXPORT RVGitDiffContents {
    /// A range of whole lines, the line break behind the last one included, be it there or not.
    struct Range {
        std::uint32_t start = 0;
        std::uint32_t end = 0;
    };
    /// A line of the text, and of what kind it is.
    struct Line {
        Line(std::size_t lineStart, std::size_t lineLength, std::size_t columnsLength,
             RVGitDiffLineType lineType)
            : start(static_cast<std::uint32_t>(lineStart)),
              length(static_cast<std::uint32_t>(lineLength)),
              statusLength(columnsLength & 0x3FFFFFFF),
              type(lineType & 3U) {}

        std::uint32_t start;
        /// In bytes, with the status columns.
        std::uint32_t length;
        std::uint32_t statusLength : 30;
        std::uint32_t type : 2;
    };
    /// A chunk, with its place in `lines` and `lineNumbers`.
    struct Chunk {
        Range raw;
        std::uint32_t firstLine = 0;
        std::uint32_t lineCount = 0;
        /// The first of `lineCount * columnCount` line numbers.
        std::uint32_t firstLineNumber = 0;
        /// How many numbers a line has.
        std::uint32_t columnCount = 0;
        std::vector<RVGitDiffRange> fileRanges;
    };

    /// Keeps the bytes of `text` alive.
    std::shared_ptr<const void> textOwner;
    std::string_view text;

    std::optional<Range> raw;
    std::optional<Range> header;
    std::vector<Range> extendedHeaders;
    std::optional<std::string> filePath;
    std::optional<std::string> oldFilePath;
    std::optional<char> fileStatus;
    std::optional<std::int64_t> similarityIndex;
    std::optional<std::string> objectHash;
    std::optional<std::vector<std::string>> originalObjectHashes;
    std::optional<std::string> fileMode;
    std::optional<std::vector<std::string>> originalFileModes;
    bool isBinary = false;

    std::vector<Chunk> chunks;
    std::vector<Line> lines;
    std::vector<std::uint32_t> lineNumbers;
    /// Lines of the text that no range counts in, in order: blank ones and the like.
    std::vector<Range> omissions;

    /// A line of the text that git printed in another encoding: where the lines behind it begin, in
    /// the text and in the bytes.
    struct DecodedLine {
        std::uint32_t endInText = 0;
        std::uint32_t endInBytes = 0;
    };
    /// Empty where all of the text is what git printed, byte for byte.
    std::vector<DecodedLine> decodedLines;
    /// What git printed; of use only where lines were decoded.
    std::shared_ptr<const void> bytesOwner;
    std::string_view bytes;

    /// The lines of a range, each followed by a line break.
    [[nodiscard]] std::string textOfRange(Range range) const;
    /// The same in the bytes that git printed.
    [[nodiscard]] std::string bytesOfRange(Range range) const;
    /// The first line of a range, without its line break.
    [[nodiscard]] std::string_view firstLineOfRange(Range range) const;
    [[nodiscard]] std::string_view status(const Line& line) const {
        return text.substr(line.start, line.statusLength);
    }
    /// The line behind its status columns.
    [[nodiscard]] std::string_view content(const Line& line) const {
        return text.substr(line.start + line.statusLength, line.length - line.statusLength);
    }
    /// The line with its status columns, and without, in the bytes that git printed.
    [[nodiscard]] std::string_view bytesWithStatus(const Line& line) const;
    [[nodiscard]] std::string_view contentBytes(const Line& line) const;
    /// `index` counts from the first line of the chunk.
    [[nodiscard]] const std::uint32_t* lineNumbersOf(const Chunk& chunk, std::size_t index) const {
        return lineNumbers.data() + chunk.firstLineNumber + index * chunk.columnCount;
    }

private:
    /// Of the beginning of a line, or of the end of the last one.
    [[nodiscard]] std::size_t positionInBytes(std::size_t positionInText) const;
    [[nodiscard]] Range rangeInBytes(Range range) const;
};
