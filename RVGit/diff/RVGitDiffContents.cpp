#include "RVGit/diff/RVGitDiffContents.h"

#include <algorithm>

namespace {

using Range = RVGitDiffContents::Range;

// The lines of the text within the range, each followed by a line break, without those that are
// omitted; `convert` tells where a range stands in `text`.
template <typename Convert>
std::string linesOfRange(std::string_view text, Range range, const std::vector<Range>& omissions,
                         const Convert& convert) {
    const Range whole = convert(range);
    std::string result;
    result.reserve(whole.end - whole.start);
    std::size_t position = whole.start;
    auto omission = std::ranges::lower_bound(omissions, range.start, {}, &Range::start);
    for (; omission != omissions.end() && omission->end < range.end; ++omission) {
        const Range omitted = convert(*omission);
        result += text.substr(position, omitted.start - position);
        position = omitted.end;
    }
    result += text.substr(position, whole.end - position);
    if (whole.end > text.size())
        result += '\n';
    return result;
}

std::size_t numberOfCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

}  // namespace

std::string RVGitDiffContents::textOfRange(Range range) const {
    return linesOfRange(text, range, omissions, [](Range whole) { return whole; });
}

std::string RVGitDiffContents::bytesOfRange(Range range) const {
    if (decodedLines.empty())
        return textOfRange(range);
    return linesOfRange(bytes, range, omissions,
                        [this](Range whole) { return rangeInBytes(whole); });
}

std::string_view RVGitDiffContents::firstLineOfRange(Range range) const {
    const std::string_view wholeLines = text.substr(range.start, range.end - range.start);
    return wholeLines.substr(0, wholeLines.find('\n'));
}

std::string_view RVGitDiffContents::bytesWithStatus(const Line& line) const {
    if (decodedLines.empty())
        return text.substr(line.start, line.length);
    const Range range = rangeInBytes({line.start, line.start + line.length + 1});
    return bytes.substr(range.start, range.end - 1 - range.start);
}

std::string_view RVGitDiffContents::contentBytes(const Line& line) const {
    const std::string_view whole = bytesWithStatus(line);
    // Of a line that was decoded, each character was one byte.
    const bool isDecoded = whole != text.substr(line.start, line.length);
    return whole.substr(isDecoded ? numberOfCharacters(status(line)) : line.statusLength);
}

std::size_t RVGitDiffContents::positionInBytes(std::size_t positionInText) const {
    const auto behind =
        std::ranges::upper_bound(decodedLines, positionInText, {}, &DecodedLine::endInText);
    if (behind == decodedLines.begin())
        return positionInText;
    const DecodedLine& line = *std::prev(behind);
    return positionInText - line.endInText + line.endInBytes;
}

Range RVGitDiffContents::rangeInBytes(Range range) const {
    return {static_cast<std::uint32_t>(positionInBytes(range.start)),
            static_cast<std::uint32_t>(positionInBytes(range.end))};
}
