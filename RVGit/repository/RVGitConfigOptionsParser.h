#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitOutputParser.h"

/// Reads records of a key, a newline and a value, each ended by a NUL byte, as `git config -z`
/// prints them. A record without a newline, that of a key without a value, fails with code 11.
class RVGIT_EXPORT RVGitConfigOptionsParser : public RVGitOutputParser {
public:
    explicit RVGitConfigOptionsParser(std::string_view outputData);

    /// Keys with their values: a string where there is one, a list of strings, in the order of the
    /// records, where there are several.
    [[nodiscard]] RVOptions configOptions() const;

    /// The options by group: the text between the first and the last dot of a key. The text behind
    /// the last dot, in lower case, is the name in the group. Keys with fewer than two dots are
    /// left out. The first part of a key plays no role: "remote.origin.url" and
    /// "branch.origin.remote" both land in "origin", and of keys that become the same name there
    /// the last one counts, in the order of the map.
    [[nodiscard]] static std::map<std::string, RVOptions, std::less<>> parseConfigOptionsBySection(
        const RVOptions& configOptions);

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
};
