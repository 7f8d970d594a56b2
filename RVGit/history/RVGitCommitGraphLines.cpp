#include "RVGit/history/RVGitCommitGraphLines.h"

namespace {

char symbol(const RVGitCommitGraphLine& line) {
    if (line.startIndex() == line.endIndex())
        return line.isEnding() ? '+' : line.isStarting() ? '*' : '|';
    bool movesRight = line.startIndex() < line.endIndex();
    return line.isStarting() && !line.isEnding() && movesRight ? '\\' : '/';
}

}  // namespace

std::pair<RVGitCommitGraphPoint, RVGitCommitGraphPoint>
RVGitCommitGraphLine::lineForRVGitCommitGraphLine(const RVGitCommitGraphRect& rect,
                                                  std::uint64_t commitIndex) const {
    auto middle = [&rect](std::uint64_t column) {
        return rect.x + KTCommitLineColumnWidth * static_cast<double>(column) +
               KTCommitLineColumnMiddle;
    };
    RVGitCommitGraphPoint dot{middle(commitIndex), rect.y + rect.height / 2};
    RVGitCommitGraphPoint upper{middle(startIndex_), rect.y + rect.height};
    RVGitCommitGraphPoint lower{middle(endIndex_), rect.y};
    if (isEnding_)
        return {dot, upper};
    if (isStarting_)
        return {dot, lower};
    return {lower, upper};
}

std::string RVGitCommitGraphLine::description() const {
    return std::string(1, symbol(*this));
}

std::string RVGitCommitGraphLines::description() const {
    std::string text;
    text.reserve(commitLines_->size());
    for (const RVGitCommitGraphLine& line : *commitLines_)
        text += symbol(line);
    return text;
}
