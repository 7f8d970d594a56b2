#pragma once

#include <string>
#include <string_view>

// Paths as text. None of these touches the disk, but for the tilde, which needs HOME or the
// user database.

[[nodiscard]] bool isAbsolutePath(std::string_view path);
/// Expands a leading "~" or "~user", removes "." and ".." components, doubled slashes and a
/// trailing slash. A ".." at the start of a relative path stays. Links are not resolved.
[[nodiscard]] std::string standardizedPath(std::string_view path);
[[nodiscard]] std::string pathByExpandingTilde(std::string_view path);
/// Joins with exactly one slash; an empty base gives the component alone.
[[nodiscard]] std::string pathByAppendingComponent(std::string_view path,
                                                   std::string_view component);
[[nodiscard]] std::string pathByDeletingLastComponent(std::string_view path);
[[nodiscard]] std::string lastPathComponent(std::string_view path);
