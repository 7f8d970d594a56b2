#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/diff/RVGitDiffContents.h"

/// One line of a chunk. A light value that keeps alive what git printed; texts are made when they
/// are read. Immutable: any thread may read it.
class RVGIT_EXPORT RVGitDiffChunkLine {
public:
    RVGitDiffChunkLine(std::vector<std::uint32_t> lineNumbers, RVGitDiffLineType type,
                       std::string_view status, std::string_view content);
    /// The line of a parsed chunk; `lineIndex` counts from its first line.
    RVGitDiffChunkLine(std::shared_ptr<const RVGitDiffContents> contents, std::size_t chunkIndex,
                       std::size_t lineIndex)
        : contents_(std::move(contents)),
          chunkIndex_(static_cast<std::uint32_t>(chunkIndex)),
          lineIndex_(static_cast<std::uint32_t>(lineIndex)) {}

    [[nodiscard]] static RVGitDiffChunkLine diffChunkLineWithLineNumbers(
        std::vector<std::uint32_t> lineNumbers, RVGitDiffLineType type, std::string_view status,
        std::string_view content);

    /// The line's number in each parent, then in the new file. In a version in which the line does
    /// not stand, it is the number of the last line before.
    [[nodiscard]] std::vector<std::uint32_t> lineNumbers() const;
    [[nodiscard]] std::size_t lineNumberCount() const { return chunk().columnCount; }
    /// One of lineNumbers(), of which there must be more than `column`.
    [[nodiscard]] std::uint32_t lineNumber(std::size_t column) const {
        return contents_->lineNumbersOf(chunk(), lineIndex_)[column];
    }
    [[nodiscard]] RVGitDiffLineType type() const { return RVGitDiffLineType(line().type); }
    /// The status columns, one for each parent.
    [[nodiscard]] std::string status() const { return std::string(statusView()); }
    /// The line behind its status columns.
    [[nodiscard]] std::string content() const { return std::string(contentView()); }
    [[nodiscard]] std::string contentWithStatus() const {
        return std::string(contentWithStatusView());
    }
    // The same as views, which hold as long as this line or its chunk does.
    [[nodiscard]] std::string_view statusView() const { return contents_->status(line()); }
    [[nodiscard]] std::string_view contentView() const { return contents_->content(line()); }
    [[nodiscard]] std::string_view contentWithStatusView() const {
        return contents_->text.substr(line().start, line().length);
    }

    // The same in the bytes that git printed, for whatever goes back to git: a line in another
    // encoding than UTF-8 was decoded for the texts. Of a line made from text, its text.
    [[nodiscard]] std::string_view contentBytes() const { return contents_->contentBytes(line()); }
    [[nodiscard]] std::string_view contentWithStatusBytes() const {
        return contents_->bytesWithStatus(line());
    }

    [[nodiscard]] bool isContextLine() const { return type() == RVGitDiffLineContext; }
    [[nodiscard]] bool isAddedLine() const { return type() == RVGitDiffLineAdded; }
    [[nodiscard]] bool isDeletedLine() const { return type() == RVGitDiffLineDeleted; }
    [[nodiscard]] bool isNoNewlineAtEndOfFileLine() const {
        return type() == RVGitDiffLineNoNewlineAtEndOfFile;
    }

private:
    [[nodiscard]] const RVGitDiffContents::Chunk& chunk() const {
        return contents_->chunks[chunkIndex_];
    }
    [[nodiscard]] const RVGitDiffContents::Line& line() const {
        return contents_->lines[chunk().firstLine + lineIndex_];
    }

    std::shared_ptr<const RVGitDiffContents> contents_;
    std::uint32_t chunkIndex_;
    std::uint32_t lineIndex_;
};
