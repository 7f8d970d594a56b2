#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"

/// One open lane of a commit graph: a line of descent that waits for one commit. It lives from the
/// row that opens it to the row that closes it.
class RVGIT_EXPORT RVGitCommitGraphDrawerCommitLine {
public:
    RVGitCommitGraphDrawerCommitLine() = default;
    RVGitCommitGraphDrawerCommitLine(std::uint64_t lineID, std::string_view commitHash)
        : lineID_(lineID) {
        setCommitHash(commitHash);
    }

    /// The lane's identity for its whole life.
    [[nodiscard]] std::uint64_t lineID() const { return lineID_; }
    void setLineID(std::uint64_t lineID) { lineID_ = lineID; }

    /// The commit that the lane is heading towards.
    [[nodiscard]] const std::string& commitHash() const { return commitHash_; }
    void setCommitHash(std::string_view commitHash) {
        commitHash_.assign(commitHash);
        // The given text may have been a part of the old one.
        hashNumber_ = numberOfCommitHash(commitHash_);
    }

    /// The number that is compared before the texts are, so that looking through many lanes touches
    /// the text of none but the right one.
    [[nodiscard]] static std::size_t numberOfCommitHash(std::string_view commitHash) {
        return std::hash<std::string_view>{}(commitHash);
    }
    /// Whether the lane heads towards a commit, whose number is given with its hash.
    [[nodiscard]] bool isPointingTowardsCommitHash(std::string_view commitHash,
                                                   std::size_t hashNumber) const {
        return hashNumber_ == hashNumber && commitHash_ == commitHash;
    }

private:
    std::uint64_t lineID_ = 0;
    std::size_t hashNumber_ = numberOfCommitHash({});
    std::string commitHash_;
};

/// The open lanes of a commit graph, which are the whole state of its drawing: the position of a
/// lane is its column, and a lane that is removed moves those to its right one column left. The
/// lanes of a list have distinct IDs, and none is null. Used by one thread at a time.
class RVGIT_EXPORT RVGitCommitGraphDrawerCommitLines {
public:
    using CommitLine = std::shared_ptr<RVGitCommitGraphDrawerCommitLine>;

    RVGitCommitGraphDrawerCommitLines() = default;
    RVGitCommitGraphDrawerCommitLines(const RVGitCommitGraphDrawerCommitLines&) = delete;
    RVGitCommitGraphDrawerCommitLines& operator=(const RVGitCommitGraphDrawerCommitLines&) = delete;

    [[nodiscard]] std::vector<CommitLine>& commitLines() { return commitLines_; }
    [[nodiscard]] const std::vector<CommitLine>& commitLines() const { return commitLines_; }

    /// The ID that was given last; 0 at first.
    [[nodiscard]] std::uint64_t lastCommitLineID() const { return lastCommitLineID_; }
    void setLastCommitLineID(std::uint64_t lineID) { lastCommitLineID_ = lineID; }
    /// A new ID; none is given twice.
    std::uint64_t nextCommitLineID() { return ++lastCommitLineID_; }

    /// Appends a lane at the right-hand end.
    void addCommitLine(CommitLine commitLine);
    void removeCommitLineAtIndex(std::size_t index);
    void replaceCommitLineAtIndex(std::size_t index, CommitLine commitLine);
    [[nodiscard]] const CommitLine& commitLineAtIndex(std::size_t index) const;

    [[nodiscard]] bool isEmpty() const { return commitLines_.empty(); }
    /// The number of open lanes, which is the column that a new lane would get.
    [[nodiscard]] std::uint64_t nextCommitLineIndex() const { return commitLines_.size(); }
    /// A snapshot of the list, which shares the lanes with it.
    [[nodiscard]] std::vector<CommitLine> currentCommitLines() const { return commitLines_; }
    /// The column of a lane; RVNotFound if it is not open.
    [[nodiscard]] std::uint64_t indexOfCommitLineWithID(std::uint64_t lineID) const;
    /// Every lane that heads towards a commit, in the order of their columns.
    [[nodiscard]] std::vector<CommitLine> allCommitLinesPointingTowardsCommitHash(
        std::string_view commitHash) const;

    /// The ID of the leftmost lane that heads towards a commit. Where there is none, and always
    /// for a head, a new lane is opened on the right.
    std::uint64_t commitLineWithCommitHash(std::string_view commitHash, bool isHead);
    /// As commitLineWithCommitHash(), but the lane's column.
    std::size_t commitLineIndexWithCommitHash(std::string_view commitHash, bool isHead);

    /// Points a lane at another commit. Throws RVInternalInconsistencyException if it is not open.
    void updateCommitLineWithID(std::uint64_t lineID, std::string_view commitHash);
    /// Removes a lane. Throws RVInternalInconsistencyException if it is not open.
    void endCommitLineWithID(std::uint64_t lineID);

private:
    [[nodiscard]] std::size_t indexOfOpenCommitLineWithID(std::uint64_t lineID) const;

    std::vector<CommitLine> commitLines_;
    std::uint64_t lastCommitLineID_ = 0;
};
