#pragma once

#include <cstddef>
#include <string>

/// What makeChangedTree() makes.
inline constexpr std::size_t RVBenchTreeFiles = 60000;
inline constexpr std::size_t RVBenchTreeChanges = 1000;

/// The path of a working tree of 60,000 files, all of them in its index, with 1,000 changes: files
/// that are modified, staged, deleted, renamed and new. Made on the first call, the same each time,
/// and kept in the build tree; benchmarks leave it as it is.
[[nodiscard]] std::string makeChangedTree();
