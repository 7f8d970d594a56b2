#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/history/RVGitCommitGraphDrawerCommitLines.h"
#include "RVGit/history/RVGitCommitGraphLines.h"

class RVGitCommit;

/// Lays out a history as a graph, a row for each commit. Commits are given newest first in the
/// order in which they are shown; the row of a commit depends on all rows above it.
///
/// Only a list in which every parent follows its children makes a graph: a lane stays open until
/// the commit comes that it leads to. So list with RVGitLogOptionSortByDate or
/// RVGitLogOptionSortByTopoOrder, without file paths and without RVGitLogOptionSearch... (author,
/// message, contents), which leave out commits in between: their lanes would never close, and each
/// row be wider than the one above it. A limit, an offset or dates cut a list off, which leaves
/// lanes open at its end alone.
///
/// Nothing is looked up in the repository and nothing is known of later commits: the state is the
/// list of open lanes, and a drawer that is given the list of another goes on where that one
/// stopped. Used by one thread at a time.
class RVGIT_EXPORT RVGitCommitGraphDrawer {
public:
    /// Without a list of lanes, the drawing begins with a new one.
    explicit RVGitCommitGraphDrawer(
        std::shared_ptr<RVGitCommitGraphDrawerCommitLines> commitLines = nullptr);

    [[nodiscard]] static std::shared_ptr<RVGitCommitGraphDrawer> graphDrawer();
    [[nodiscard]] static std::shared_ptr<RVGitCommitGraphDrawer> graphDrawerWithCommitLines(
        std::shared_ptr<RVGitCommitGraphDrawerCommitLines> commitLines);

    [[nodiscard]] const std::shared_ptr<RVGitCommitGraphDrawerCommitLines>& commitLines() const {
        return commitLines_;
    }

    /// Whether only the first parent of a merge is seen, so that lanes never branch; false at
    /// first.
    [[nodiscard]] bool drawsFirstParentOnly() const { return drawsFirstParentOnly_; }
    void setDrawsFirstParentOnly(bool drawsFirstParentOnly) {
        drawsFirstParentOnly_ = drawsFirstParentOnly;
    }

    /// True when no lane is open.
    [[nodiscard]] bool isStartOfGraph() const { return commitLines_->isEmpty(); }

    /// drawGraphForCommitHash() with the hash and the parents of a commit, which is required.
    std::shared_ptr<RVGitCommitGraphLines> drawGraphForCommit(
        const std::shared_ptr<RVGitCommit>& commit, RVErrorPlace error = nullptr);
    /// Advances by one commit and returns its row. Never fails; the error place stays as it is.
    /// The ID in a starting line keeps only its low 32 bits, and its column is that of the lane
    /// with the number that is left (RVNotFound if none is open), kept for compatibility.
    std::shared_ptr<RVGitCommitGraphLines> drawGraphForCommitHash(
        std::string_view commitHash,
        const std::optional<std::vector<std::string>>& parentCommitHashes,
        RVErrorPlace error = nullptr);

private:
    template <typename Parents>
    std::shared_ptr<RVGitCommitGraphLines> drawRow(std::string_view commitHash,
                                                   const Parents& parentCommitHashes);

    std::shared_ptr<RVGitCommitGraphDrawerCommitLines> commitLines_;
    bool drawsFirstParentOnly_ = false;
};
