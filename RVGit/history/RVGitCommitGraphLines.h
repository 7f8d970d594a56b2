#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"

/// Drawing units: the width of a column, and the distance of its centre line from its left edge.
inline constexpr int KTCommitLineColumnWidth = 10;
inline constexpr int KTCommitLineColumnMiddle = 7;

/// A point in drawing units.
struct RVGIT_EXPORT RVGitCommitGraphPoint {
    double x = 0;
    double y = 0;

    friend bool operator==(const RVGitCommitGraphPoint&, const RVGitCommitGraphPoint&) = default;
};

/// The rectangle of a row. Coordinates grow upwards: `y` is the edge towards older commits,
/// `y + height` the edge towards newer ones.
struct RVGitCommitGraphRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

/// One line drawn inside a row of the graph, a plain value. A lane that passes the row is neither
/// starting nor ending, one that leaves the commit's dot is starting, and one that runs into the
/// dot and is closed there is ending.
class RVGIT_EXPORT RVGitCommitGraphLine {
public:
    RVGitCommitGraphLine() = default;
    RVGitCommitGraphLine(std::uint64_t lineID, std::uint64_t startIndex, std::uint64_t endIndex,
                         bool isStarting = false, bool isEnding = false)
        : lineID_(lineID),
          startIndex_(startIndex),
          endIndex_(endIndex),
          isStarting_(isStarting),
          isEnding_(isEnding) {}

    /// The lane, the same in every row that it passes: a stable key for its colour.
    [[nodiscard]] std::uint64_t lineID() const { return lineID_; }
    void setLineID(std::uint64_t lineID) { lineID_ = lineID; }

    /// The column at the row's upper edge, or the commit's column where the line starts.
    [[nodiscard]] std::uint64_t startIndex() const { return startIndex_; }
    void setStartIndex(std::uint64_t startIndex) { startIndex_ = startIndex; }

    /// The column at the row's lower edge, or the commit's column where the line ends.
    [[nodiscard]] std::uint64_t endIndex() const { return endIndex_; }
    void setEndIndex(std::uint64_t endIndex) { endIndex_ = endIndex; }

    [[nodiscard]] bool isStarting() const { return isStarting_; }
    void setIsStarting(bool isStarting) { isStarting_ = isStarting; }

    [[nodiscard]] bool isEnding() const { return isEnding_; }
    void setIsEnding(bool isEnding) { isEnding_ = isEnding; }

    /// The two ends of the line in a row's rectangle, where the commit's dot stands in the column
    /// `commitIndex`. The rectangle's width is not used.
    [[nodiscard]] std::pair<RVGitCommitGraphPoint, RVGitCommitGraphPoint>
    lineForRVGitCommitGraphLine(const RVGitCommitGraphRect& rect, std::uint64_t commitIndex) const;

    /// One character for debugging: "*", "/" or "\" for a starting line, "|" or "/" for one that
    /// passes (whichever way it moves), "+" or "/" for an ending one.
    [[nodiscard]] std::string description() const;

    friend bool operator==(const RVGitCommitGraphLine&, const RVGitCommitGraphLine&) = default;

private:
    std::uint64_t lineID_ = 0;
    std::uint64_t startIndex_ = 0;
    std::uint64_t endIndex_ = 0;
    bool isStarting_ = false;
    bool isEnding_ = false;
};

/// One row of the graph: where the commit's dot stands, and the lines around it, the passing and
/// ending ones in the order of their columns before the starting ones in the order of the parents.
/// A copy shares the list of lines and keeps the commit's column.
class RVGIT_EXPORT RVGitCommitGraphLines {
public:
    RVGitCommitGraphLines() = default;
    // Being copied where it is moved from, a row is never left without a list.
    RVGitCommitGraphLines(const RVGitCommitGraphLines&) = default;
    RVGitCommitGraphLines& operator=(const RVGitCommitGraphLines&) = default;

    /// The column of the commit's dot.
    [[nodiscard]] std::uint64_t commitIndex() const { return commitIndex_; }
    void setCommitIndex(std::uint64_t commitIndex) { commitIndex_ = commitIndex; }

    [[nodiscard]] std::vector<RVGitCommitGraphLine>& commitLines() { return *commitLines_; }
    [[nodiscard]] const std::vector<RVGitCommitGraphLine>& commitLines() const {
        return *commitLines_;
    }

    void addCommitGraphLine(const RVGitCommitGraphLine& line) { commitLines_->push_back(line); }

    /// The descriptions of the lines, one after the other.
    [[nodiscard]] std::string description() const;

private:
    std::uint64_t commitIndex_ = 0;
    std::shared_ptr<std::vector<RVGitCommitGraphLine>> commitLines_ =
        std::make_shared<std::vector<RVGitCommitGraphLine>>();
};
