#pragma once

#include <string>
#include <string_view>
#include <vector>

class RVGitDiffMap;

/// All that a diff map holds, by key, as text: what the tests compare.
[[nodiscard]] std::string describedDiff(const RVGitDiffMap& diff);

/// The same of one file's diff, read in the plain way: every text a string, every pattern a regular
/// expression. Ends in "failed" if the diff cannot be read.
[[nodiscard]] std::string describedDiffOfTwin(std::string_view block);

/// Byte by byte.
[[nodiscard]] std::vector<std::string> blocksOfTwin(std::string_view output);
