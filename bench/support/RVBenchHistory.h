#pragma once

#include <string>

/// The path of a bare repository whose graph, dates and message sizes are those of a real history
/// of 82,000 commits (bench/data), with names and messages made up, not all of them ASCII, and
/// 2,000 refs. Made on the first call, the same each time, and kept in the build tree.
[[nodiscard]] std::string makeHistoryRepository();
