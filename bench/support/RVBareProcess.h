#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What every figure of the library is held against: the same command line, launched by plain
/// posix_spawn with two pipes and read by a poll loop that throws the bytes away.
struct RVBareResult {
    std::size_t outputBytes = 0;
    std::size_t errorBytes = 0;
    int exitCode = 0;
    double seconds = 0;
};

/// The first word is found in PATH. Standard input is /dev/null; an empty directory is that of this
/// process. Throws std::system_error where the program cannot be launched.
RVBareResult runBare(const std::vector<std::string>& commandLine,
                     const std::string& directory = {});
