#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// One row of an error table, as data: for which commands, exit codes and output patterns a code
/// of the catalogue applies. An empty list matches anything. Patterns are ICU's, ignore case, and
/// match anywhere in the output; the pattern "" matches only empty output. Names are the
/// user-info keys under which the capture groups of the first matching pattern are kept.
struct RVGitErrorRow {
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
};

using RVGitErrorTable = std::vector<RVGitErrorRow>;
