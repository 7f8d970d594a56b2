#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"

/// One row of an error table, as data: for which commands, exit codes and output patterns a code
/// of the catalogue applies. An empty list matches anything. Patterns are ICU's, ignore case, and
/// match anywhere in the output; the pattern "" matches only empty output. Names are the
/// user-info keys under which the capture groups of the first matching pattern are kept.
///
/// gitErrorRow() begins a row, and each operation adds to one of the lists:
///
///     gitErrorRow(RVGitDeleteTagNotFoundError).command("tag").exitCode(1)
///         .standardError("error: tag '(.+)' not found", {RVGitRefNameErrorKey})
struct RVGIT_EXPORT RVGitErrorRow {
    std::int64_t errorCode;
    std::vector<std::string> commandNames = {};
    std::vector<std::string> subCommandNames = {};
    /// Values that must all stand among the command's arguments.
    std::vector<std::string> commandArguments = {};
    std::vector<int> exitCodes = {};
    std::vector<std::string> standardErrorPatterns = {};
    std::vector<std::string> standardErrorMatchedComponentNames = {};
    std::vector<std::string> standardOutputPatterns = {};
    std::vector<std::string> standardOutputMatchedComponentNames = {};

    [[nodiscard]] RVGitErrorRow command(std::string name) && {
        commandNames.push_back(std::move(name));
        return std::move(*this);
    }
    [[nodiscard]] RVGitErrorRow subCommand(std::string name) && {
        subCommandNames.push_back(std::move(name));
        return std::move(*this);
    }
    [[nodiscard]] RVGitErrorRow argument(std::string argument) && {
        commandArguments.push_back(std::move(argument));
        return std::move(*this);
    }
    [[nodiscard]] RVGitErrorRow exitCode(int code) && {
        exitCodes.push_back(code);
        return std::move(*this);
    }
    /// The names count for all patterns of the row: they are given once.
    [[nodiscard]] RVGitErrorRow standardError(std::string pattern,
                                              std::vector<std::string> names = {}) && {
        standardErrorPatterns.push_back(std::move(pattern));
        if (!names.empty())
            standardErrorMatchedComponentNames = std::move(names);
        return std::move(*this);
    }
    [[nodiscard]] RVGitErrorRow standardOutput(std::string pattern,
                                               std::vector<std::string> names = {}) && {
        standardOutputPatterns.push_back(std::move(pattern));
        if (!names.empty())
            standardOutputMatchedComponentNames = std::move(names);
        return std::move(*this);
    }
};

inline namespace RVGIT_EXPORT rvgit {

[[nodiscard]] inline RVGitErrorRow gitErrorRow(std::int64_t errorCode) {
    return RVGitErrorRow{.errorCode = errorCode};
}

}  // namespace rvgit

using RVGitErrorTable = std::vector<RVGitErrorRow>;
