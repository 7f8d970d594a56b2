#pragma once

#include <optional>
#include <string>
#include <vector>

/// How a program ended and what it printed.
struct RVTestProcessResult {
    /// 128 + N for one killed by signal N.
    int exitCode = 0;
    std::string standardOutput;
    std::string standardError;
};

/// Runs a program to its end with posix_spawn, independent of the library under test. An absent
/// standard input is /dev/null. Throws std::system_error where the program cannot be launched.
[[nodiscard]] RVTestProcessResult runTestProcess(
    const std::vector<std::string>& commandLine, const std::string& directory,
    const std::optional<std::string>& standardInput = std::nullopt);

/// The absolute path of the first program of that name in PATH. Throws std::runtime_error where
/// there is none.
[[nodiscard]] std::string findTestProgram(const std::string& name);
