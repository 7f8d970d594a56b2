#include "RVGit/diff/RVGitDiffContents.h"

#include <algorithm>

std::string RVGitDiffContents::textOfRange(Range range) const {
    std::string result;
    result.reserve(range.end - range.start);
    std::size_t position = range.start;
    auto omission = std::ranges::lower_bound(omissions, range.start, {}, &Range::start);
    for (; omission != omissions.end() && omission->end < range.end; ++omission) {
        result += text.substr(position, omission->start - position);
        position = omission->end;
    }
    result += text.substr(position, range.end - position);
    if (range.end > text.size())
        result += '\n';
    return result;
}

std::string_view RVGitDiffContents::firstLineOfRange(Range range) const {
    const std::string_view wholeLines = text.substr(range.start, range.end - range.start);
    return wholeLines.substr(0, wholeLines.find('\n'));
}
