#pragma once

#include "RVGit/base/RVExport.h"

class RVGitCommand;

inline namespace RVGIT_EXPORT rvgit {

/// Ends the revisions that the command has as arguments with "--" if one of them is also the path
/// of a file in the working tree: git refuses to choose between the two, and takes what is no
/// revision for the path. For a command that takes paths behind its revisions and was given none;
/// where no file has such a name, its line stays as it is.
void separateRevisionsFromFiles(RVGitCommand& command);

}  // namespace rvgit
