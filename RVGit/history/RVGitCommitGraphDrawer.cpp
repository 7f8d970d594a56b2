#include "RVGit/history/RVGitCommitGraphDrawer.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/history/RVGitCommit.h"

RVGitCommitGraphDrawer::RVGitCommitGraphDrawer(
    std::shared_ptr<RVGitCommitGraphDrawerCommitLines> commitLines)
    : commitLines_(commitLines ? std::move(commitLines)
                               : std::make_shared<RVGitCommitGraphDrawerCommitLines>()) {}

std::shared_ptr<RVGitCommitGraphDrawer> RVGitCommitGraphDrawer::graphDrawer() {
    return std::make_shared<RVGitCommitGraphDrawer>();
}

std::shared_ptr<RVGitCommitGraphDrawer> RVGitCommitGraphDrawer::graphDrawerWithCommitLines(
    std::shared_ptr<RVGitCommitGraphDrawerCommitLines> commitLines) {
    return std::make_shared<RVGitCommitGraphDrawer>(std::move(commitLines));
}

std::shared_ptr<RVGitCommitGraphLines> RVGitCommitGraphDrawer::drawGraphForCommit(
    const std::shared_ptr<RVGitCommit>& commit, RVErrorPlace) {
    requireParameter(commit != nullptr, "commit");
    return drawRow(commit->commitHashView().value_or(""), commit->parentCommitHashViews());
}

std::shared_ptr<RVGitCommitGraphLines> RVGitCommitGraphDrawer::drawGraphForCommitHash(
    std::string_view commitHash, const std::optional<std::vector<std::string>>& parentCommitHashes,
    RVErrorPlace) {
    static const RVNeverDestroyed<std::vector<std::string>> noParents;
    return drawRow(commitHash, parentCommitHashes ? *parentCommitHashes : *noParents);
}

// The row is written in one pass over the lanes: a lane that stays moves left by as many columns as
// lanes have been closed before it, and none is closed before the commit's own, so that the dot's
// column is known wherever a lane ends in it. New lanes come to stand on the right and move
// nothing.
template <typename Parents>
std::shared_ptr<RVGitCommitGraphLines> RVGitCommitGraphDrawer::drawRow(
    std::string_view commitHash, const Parents& parentCommitHashes) {
    auto row = std::make_shared<RVGitCommitGraphLines>();
    auto& lines = row->commitLines();
    auto& lanes = commitLines_->commitLines();
    std::size_t laneCount = lanes.size();
    std::size_t parentCount = parentCommitHashes.size();
    if (drawsFirstParentOnly_ && parentCount > 1)
        parentCount = 1;
    lines.reserve(laneCount + parentCount);

    std::size_t hashNumber = RVGitCommitGraphDrawerCommitLine::numberOfCommitHash(commitHash);
    std::size_t commitIndex = laneCount;
    std::size_t closedCount = 0;
    bool isHead = true;
    for (std::size_t index = 0; index < laneCount; ++index) {
        auto& lane = lanes[index];
        bool isEnding = false;
        if (lane->isPointingTowardsCommitHash(commitHash, hashNumber)) {
            isEnding = !isHead || parentCount == 0;
            if (isHead)
                commitIndex = index;
            isHead = false;
        }
        if (isEnding) {
            lines.emplace_back(lane->lineID(), index, commitIndex, false, true);
            ++closedCount;
            continue;
        }
        lines.emplace_back(lane->lineID(), index, index - closedCount);
        // A closed lane lives on behind those that stay until all have been compared: the hash may
        // be its own.
        if (closedCount > 0)
            std::swap(lanes[index - closedCount], lane);
    }
    lanes.resize(laneCount - closedCount);
    row->setCommitIndex(commitIndex);

    for (std::size_t parent = 0; parent < parentCount; ++parent) {
        std::string_view parentHash = parentCommitHashes[parent];
        if (!isHead && parentHash == parentCommitHashes[0]) {
            lanes[commitIndex]->setCommitHash(parentHash);
            continue;
        }
        std::uint64_t column = commitLines_->commitLineIndexWithCommitHash(parentHash, isHead);
        std::uint64_t lineID = lanes[column]->lineID();
        auto startingLineID = static_cast<std::uint32_t>(lineID);
        if (startingLineID != lineID)
            column = commitLines_->indexOfCommitLineWithID(startingLineID);
        lines.emplace_back(startingLineID, commitIndex, column, true, false);
    }
    return row;
}
