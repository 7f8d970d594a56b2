#pragma once

#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

// Paths as text. None of these touches the disk, but for the tilde, which needs HOME or the
// user database.

inline namespace RVGIT_EXPORT rvgit {

[[nodiscard]] bool isAbsolutePath(std::string_view path);
/// Expands a leading "~" or "~user", removes "." and ".." components, doubled slashes and a
/// trailing slash. A ".." at the start of a relative path stays; a relative path of which nothing
/// is left is ".". Links are not resolved.
[[nodiscard]] std::string standardizedPath(std::string_view path);
/// Unchanged if there is no such user.
[[nodiscard]] std::string pathByExpandingTilde(std::string_view path);
/// Joins with exactly one slash; if either is empty, the other one alone.
[[nodiscard]] std::string pathByAppendingComponent(std::string_view path,
                                                   std::string_view component);
/// Slashes at the end count for nothing: "/a/b/" gives "/a", "/a" and "/" give "/", "a" gives "".
[[nodiscard]] std::string pathByDeletingLastComponent(std::string_view path);
/// "/a/b/" gives "b", "/" gives "/".
[[nodiscard]] std::string lastPathComponent(std::string_view path);

}  // namespace rvgit
