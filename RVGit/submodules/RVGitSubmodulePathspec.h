#pragma once

#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"

inline namespace RVGIT_EXPORT rvgit {

/// The path as one that git takes as it is where it expects a pattern: as it stands where it holds
/// nothing special, or where the environment says that all paths are literal.
[[nodiscard]] std::string literalPathspec(const std::string& path);
[[nodiscard]] std::vector<std::string> literalPathspecs(const std::vector<std::string>& paths);

}  // namespace rvgit
