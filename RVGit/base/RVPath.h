#pragma once

#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

// Paths as text. None of these touches the disk, but for the tilde, which needs HOME or the
// user database.

inline namespace RVGIT_EXPORT rvgit {

/// Whether the text holds a NUL. The system would take a path, an argument or a variable only up
/// to there, and so act on another one: whoever passes text on to it refuses such a text first.
[[nodiscard]] inline bool holdsNUL(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
}
[[nodiscard]] bool isAbsolutePath(std::string_view path);
/// Whether the path names something below the place that it starts at: it holds no NUL, and none of
/// its components is empty, "." or "..".
[[nodiscard]] bool isPlainRelativePath(std::string_view path);
/// Expands a leading "~" or "~user", removes "." and ".." components, doubled slashes and a
/// trailing slash. A ".." at the start of a relative path stays; a relative path of which nothing
/// is left is ".". Links are not resolved.
[[nodiscard]] std::string standardizedPath(std::string_view path);
/// Unchanged if there is no such user, or if the name holds a NUL.
[[nodiscard]] std::string pathByExpandingTilde(std::string_view path);
/// Joins with exactly one slash; if either is empty, the other one alone.
[[nodiscard]] std::string pathByAppendingComponent(std::string_view path,
                                                   std::string_view component);
/// Slashes at the end count for nothing: "/a/b/" gives "/a", "/a" and "/" give "/", "a" gives "".
[[nodiscard]] std::string pathByDeletingLastComponent(std::string_view path);
/// "/a/b/" gives "b", "/" gives "/".
[[nodiscard]] std::string lastPathComponent(std::string_view path);

}  // namespace rvgit
