#include "RVGit/diff/RVGitDiffParser.h"

#include <cstddef>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"

namespace {

bool isLineBreak(char byte) {
    return byte == '\n' || byte == '\r';
}

// The first line break at or after `from` with a "d" behind it, or the size of the bytes. Whole
// stretches are looked at without a branch, which compilers turn into vector instructions.
std::size_t findLineBreakBeforeD(std::string_view bytes, std::size_t from) {
    constexpr std::size_t stretch = 64;
    const char* const data = bytes.data();
    while (from + stretch < bytes.size()) {
        const char* const here = data + from;
        unsigned char found = 0;
        for (std::size_t index = 0; index < stretch; ++index)
            found |= static_cast<unsigned char>(((here[index] == '\n') | (here[index] == '\r')) &
                                                (here[index + 1] == 'd'));
        if (found)
            break;
        from += stretch;
    }
    for (; from + 1 < bytes.size(); ++from) {
        if (isLineBreak(data[from]) && data[from + 1] == 'd')
            return from;
    }
    return bytes.size();
}

bool beginsDiff(std::string_view bytes) {
    return bytes.starts_with("diff --git") || bytes.starts_with("diff --cc ") ||
           bytes.starts_with("diff --com");
}

std::optional<RVGitDiffMap> parsedDiff(RVGitDiffOutputParser& parser) {
    if (!parser.parse())
        return std::nullopt;
    RVGitDiffMap diff = parser.diff();
    if (!diff.containsObjectForKey(RVGitDiffRawKey))
        return std::nullopt;
    return diff;
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

RVGitDiffParser::RVGitDiffParser(std::shared_ptr<const RVDataBuffer> buffer,
                                 std::string_view outputData)
    : buffer_(std::move(buffer)), outputData_(outputData) {}

RVGitDiffParser::~RVGitDiffParser() = default;

std::shared_ptr<RVGitDiffParser> RVGitDiffParser::parserWithOutputData(
    std::string_view outputData) {
    return std::make_shared<RVGitDiffParser>(outputData);
}

bool RVGitDiffParser::parse(RVErrorPlace) {
    result_.clear();
    for (const std::string_view block : diffDataComponentsFromMultipleDiffOutput(outputData_)) {
        if (block == "\n")
            continue;
        RVGitDiffOutputParser parser(buffer_, block);
        if (auto diff = parsedDiff(parser))
            result_.push_back(*std::move(diff));
    }
    return true;
}

std::vector<std::string_view> RVGitDiffParser::diffDataComponentsFromMultipleDiffOutput(
    std::string_view outputData) {
    std::vector<std::string_view> blocks;
    std::size_t start = 0;
    for (std::size_t lineBreak = findLineBreakBeforeD(outputData, 0); lineBreak < outputData.size();
         lineBreak = findLineBreakBeforeD(outputData, lineBreak + 1)) {
        const std::size_t next = lineBreak + 1;
        if (!beginsDiff(outputData.substr(next)))
            continue;
        blocks.push_back(outputData.substr(start, next - start));
        start = next;
    }
    if (start < outputData.size())
        blocks.push_back(outputData.substr(start));
    return blocks;
}

std::optional<RVGitDiffMap> RVGitDiffParser::diffFromGitDiffOutputData(std::string_view block) {
    RVGitDiffOutputParser parser(block);
    return parsedDiff(parser);
}
