#pragma once

#include <optional>
#include <string_view>

#include "RVGit/base/RVExport.h"

// What the parsers of `git branch -v` share: the shape that nearly every line has is cut by hand,
// and all others are left to the expressions, whose blanks reach beyond ASCII.

/// "  name   hash subject": a name of printable ASCII characters that does not begin with "(", a
/// hash of 40 digits in lower case, and one blank.
struct RVGIT_EXPORT RVGitPlainBranchLine {
    /// By a "*".
    bool isMarked = false;
    std::string_view name;
    std::string_view hash;
    /// Behind the blank.
    std::string_view subject;
};

/// Absent for a line of another shape. The views are into the line.
[[nodiscard]] RVGIT_EXPORT std::optional<RVGitPlainBranchLine> RVGitPlainBranchLineFrom(
    std::string_view line);

/// Whether a hash of 64 digits stands in the place of one of 40: the line of a repository whose
/// object format is not supported.
[[nodiscard]] RVGIT_EXPORT bool RVGitBranchLineHoldsHashOfOtherFormat(std::string_view line);
