#include "RVGit/history/RVGitCommitGraphDrawerCommitLines.h"

#include <algorithm>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"

void RVGitCommitGraphDrawerCommitLines::addCommitLine(CommitLine commitLine) {
    requireParameter(commitLine != nullptr, "commitLine");
    commitLines_.push_back(std::move(commitLine));
}

void RVGitCommitGraphDrawerCommitLines::removeCommitLineAtIndex(std::size_t index) {
    requireParameter(index < commitLines_.size(), "index < commitLines.count");
    commitLines_.erase(commitLines_.begin() + static_cast<std::ptrdiff_t>(index));
}

void RVGitCommitGraphDrawerCommitLines::replaceCommitLineAtIndex(std::size_t index,
                                                                 CommitLine commitLine) {
    requireParameter(index < commitLines_.size(), "index < commitLines.count");
    requireParameter(commitLine != nullptr, "commitLine");
    commitLines_[index] = std::move(commitLine);
}

const RVGitCommitGraphDrawerCommitLines::CommitLine&
RVGitCommitGraphDrawerCommitLines::commitLineAtIndex(std::size_t index) const {
    requireParameter(index < commitLines_.size(), "index < commitLines.count");
    return commitLines_[index];
}

std::uint64_t RVGitCommitGraphDrawerCommitLines::indexOfCommitLineWithID(
    std::uint64_t lineID) const {
    auto found = std::ranges::find(
        commitLines_, lineID, [](const CommitLine& commitLine) { return commitLine->lineID(); });
    return static_cast<std::uint64_t>(found == commitLines_.end() ? RVNotFound
                                                                  : found - commitLines_.begin());
}

std::vector<RVGitCommitGraphDrawerCommitLines::CommitLine>
RVGitCommitGraphDrawerCommitLines::allCommitLinesPointingTowardsCommitHash(
    std::string_view commitHash) const {
    std::vector<CommitLine> found;
    std::size_t hashNumber = RVGitCommitGraphDrawerCommitLine::numberOfCommitHash(commitHash);
    for (const CommitLine& commitLine : commitLines_) {
        if (commitLine->isPointingTowardsCommitHash(commitHash, hashNumber))
            found.push_back(commitLine);
    }
    return found;
}

std::uint64_t RVGitCommitGraphDrawerCommitLines::commitLineWithCommitHash(
    std::string_view commitHash, bool isHead) {
    return commitLines_[commitLineIndexWithCommitHash(commitHash, isHead)]->lineID();
}

std::size_t RVGitCommitGraphDrawerCommitLines::commitLineIndexWithCommitHash(
    std::string_view commitHash, bool isHead) {
    if (!isHead) {
        std::size_t hashNumber = RVGitCommitGraphDrawerCommitLine::numberOfCommitHash(commitHash);
        for (std::size_t index = 0; index < commitLines_.size(); ++index) {
            if (commitLines_[index]->isPointingTowardsCommitHash(commitHash, hashNumber))
                return index;
        }
    }
    commitLines_.push_back(
        std::make_shared<RVGitCommitGraphDrawerCommitLine>(nextCommitLineID(), commitHash));
    return commitLines_.size() - 1;
}

void RVGitCommitGraphDrawerCommitLines::updateCommitLineWithID(std::uint64_t lineID,
                                                               std::string_view commitHash) {
    commitLines_[indexOfOpenCommitLineWithID(lineID)]->setCommitHash(commitHash);
}

void RVGitCommitGraphDrawerCommitLines::endCommitLineWithID(std::uint64_t lineID) {
    removeCommitLineAtIndex(indexOfOpenCommitLineWithID(lineID));
}

std::size_t RVGitCommitGraphDrawerCommitLines::indexOfOpenCommitLineWithID(
    std::uint64_t lineID) const {
    std::uint64_t index = indexOfCommitLineWithID(lineID);
    if (index == static_cast<std::uint64_t>(RVNotFound)) {
        // Printed as a signed number.
        throw RVInternalInconsistencyException("Could not find the commit line with ID " +
                                               std::to_string(static_cast<std::int64_t>(lineID)) +
                                               ".");
    }
    return static_cast<std::size_t>(index);
}
