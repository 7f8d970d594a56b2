#pragma once

#include "RVGit/history/RVGitCommit.h"
#include "client/Terminal.h"

/// How commits are listed.
struct CommitListStyle {
    /// Only for a list in which every parent follows its children.
    bool drawsGraph = true;
    bool firstParentOnly = false;
    bool showsSignatures = false;
};

/// Writes one line for each commit: graph, hash, date, author, decorations, subject.
void printCommits(const RVGitCommit::List& commits, const CommitListStyle& style, Output& output);
