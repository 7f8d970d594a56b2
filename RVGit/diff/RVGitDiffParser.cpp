#include "RVGit/diff/RVGitDiffParser.h"

#include <cstddef>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"

namespace {

bool isLineBreak(char byte) {
    return byte == '\n' || byte == '\r';
}

bool mayBeginBlock(char byte) {
    return byte == 'd' || byte == 'S';
}

// The first line break at or after `from` with a "d" or "S" behind it, or the size of the bytes.
// Whole stretches are looked at without a branch, which compilers turn into vector instructions.
std::size_t findLineBreakBeforeBlock(std::string_view bytes, std::size_t from) {
    constexpr std::size_t stretch = 64;
    const char* const data = bytes.data();
    while (from + stretch < bytes.size()) {
        const char* const here = data + from;
        unsigned char found = 0;
        for (std::size_t index = 0; index < stretch; ++index)
            found |=
                static_cast<unsigned char>(((here[index] == '\n') | (here[index] == '\r')) &
                                           ((here[index + 1] == 'd') | (here[index + 1] == 'S')));
        if (found)
            break;
        from += stretch;
    }
    for (; from + 1 < bytes.size(); ++from) {
        if (isLineBreak(data[from]) && mayBeginBlock(data[from + 1]))
            return from;
    }
    return bytes.size();
}

// Of the log of a submodule nothing is read, but the file ahead of it ends there.
bool beginsBlock(std::string_view bytes, char lineBreak) {
    return bytes.starts_with("diff --git") || bytes.starts_with("diff --cc ") ||
           bytes.starts_with("diff --com") ||
           (lineBreak == '\n' && bytes.starts_with("Submodule "));
}

// Where the next block begins, found by the line break ahead of it at or behind `from`; npos if
// there is none.
std::size_t startOfNextBlock(std::string_view output, std::size_t from) {
    for (std::size_t lineBreak = findLineBreakBeforeBlock(output, from); lineBreak < output.size();
         lineBreak = findLineBreakBeforeBlock(output, lineBreak + 1)) {
        if (beginsBlock(output.substr(lineBreak + 1), output[lineBreak]))
            return lineBreak + 1;
    }
    return std::string_view::npos;
}

std::shared_ptr<RVGitDiffContents> parsedContents(RVGitDiffOutputParser& parser) {
    return parser.parse() && parser.contents()->raw ? parser.contents() : nullptr;
}

std::shared_ptr<const RVDataBuffer> copiedBytes(std::string_view bytes) {
    auto buffer = std::make_shared<RVDataBuffer>();
    buffer->append(bytes);
    return buffer;
}

}  // namespace

RVGitDiffParser::RVGitDiffParser(std::string_view outputData)
    : RVGitDiffParser(copiedBytes(outputData)) {}

RVGitDiffParser::RVGitDiffParser(std::shared_ptr<const RVDataBuffer> buffer)
    : buffer_(std::move(buffer)), outputData_(buffer_ ? buffer_->view() : std::string_view()) {}

RVGitDiffParser::~RVGitDiffParser() = default;

std::shared_ptr<RVGitDiffParser> RVGitDiffParser::parserWithOutputData(
    std::string_view outputData) {
    return std::make_shared<RVGitDiffParser>(outputData);
}

void RVGitDiffParser::parseBlockUntil(std::size_t end) {
    const std::string_view block = outputData_.substr(blockStart_, end - blockStart_);
    if (!block.empty() && block != "\n") {
        RVGitDiffOutputParser parser(buffer_, block);
        if (auto contents = parsedContents(parser))
            files_.emplace_back(blockStart_, std::move(contents));
    }
    blockStart_ = end;
    searchStart_ = end;
}

void RVGitDiffParser::parseAhead() {
    if (!buffer_)
        return;
    outputData_ = buffer_->view();
    std::size_t next = startOfNextBlock(outputData_, searchStart_);
    for (; next != std::string_view::npos; next = startOfNextBlock(outputData_, searchStart_))
        parseBlockUntil(next);
    // A line break with fewer bytes behind it may yet begin a block.
    constexpr std::size_t bytesBehindLineBreak = 10;
    if (outputData_.size() > searchStart_ + bytesBehindLineBreak)
        searchStart_ = outputData_.size() - bytesBehindLineBreak;
}

bool RVGitDiffParser::parse(RVErrorPlace) {
    parseAhead();
    parseBlockUntil(outputData_.size());
    for (auto& [start, contents] : files_) {
        if (contents->textOwner == buffer_)
            contents->text = outputData_.substr(start, contents->text.size());
        if (contents->bytesOwner == buffer_)
            contents->bytes = outputData_.substr(start, contents->bytes.size());
        result_.emplace_back(std::move(contents));
    }
    files_.clear();
    return true;
}

std::vector<std::string_view> RVGitDiffParser::diffDataComponentsFromMultipleDiffOutput(
    std::string_view outputData) {
    std::vector<std::string_view> blocks;
    std::size_t start = 0;
    std::size_t next = startOfNextBlock(outputData, 0);
    for (; next != std::string_view::npos; next = startOfNextBlock(outputData, next)) {
        blocks.push_back(outputData.substr(start, next - start));
        start = next;
    }
    if (start < outputData.size())
        blocks.push_back(outputData.substr(start));
    return blocks;
}

std::optional<RVGitDiffMap> RVGitDiffParser::diffFromGitDiffOutputData(std::string_view block) {
    RVGitDiffOutputParser parser(block);
    auto contents = parsedContents(parser);
    return contents ? std::optional<RVGitDiffMap>(std::move(contents)) : std::nullopt;
}
