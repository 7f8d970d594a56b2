#include "RVGit/diff/RVGitDiffChunkLine.h"

#include <utility>

namespace {

std::shared_ptr<const RVGitDiffContents> contentsOfLine(std::vector<std::uint32_t> lineNumbers,
                                                        RVGitDiffLineType type,
                                                        std::string_view status,
                                                        std::string_view content) {
    auto text = std::make_shared<std::string>(status);
    *text += content;
    auto contents = std::make_shared<RVGitDiffContents>();
    contents->text = *text;
    contents->textOwner = std::move(text);
    RVGitDiffContents::Chunk& chunk = contents->chunks.emplace_back();
    chunk.lineCount = 1;
    chunk.columnCount = static_cast<std::uint32_t>(lineNumbers.size());
    contents->lines.emplace_back(0, contents->text.size(), status.size(), type);
    contents->lineNumbers = std::move(lineNumbers);
    return contents;
}

}  // namespace

RVGitDiffChunkLine::RVGitDiffChunkLine(std::vector<std::uint32_t> lineNumbers,
                                       RVGitDiffLineType type, std::string_view status,
                                       std::string_view content)
    : RVGitDiffChunkLine(contentsOfLine(std::move(lineNumbers), type, status, content), 0, 0) {}

RVGitDiffChunkLine RVGitDiffChunkLine::diffChunkLineWithLineNumbers(
    std::vector<std::uint32_t> lineNumbers, RVGitDiffLineType type, std::string_view status,
    std::string_view content) {
    return {std::move(lineNumbers), type, status, content};
}

std::vector<std::uint32_t> RVGitDiffChunkLine::lineNumbers() const {
    const std::uint32_t* first = contents_->lineNumbersOf(chunk(), lineIndex_);
    return {first, first + chunk().columnCount};
}
