#pragma once

#include <string>
#include <vector>

#include "RVGit/history/RVGitCommitGraphLines.h"
#include "client/Terminal.h"

/// One row of the commit graph as text, two characters a column: the line of the commit, and below
/// it, only where a lane changes its column, the line on which it does so.
struct GraphText {
    std::string commitLine;
    std::string connectorLine;

    GraphText(const RVGitCommitGraphLines& row, const Output& output);
};
