#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// Variables that every command is given. Any thread; a command works on its own copy.
class RVGIT_EXPORT RVGitCommandEnvironment {
public:
    [[nodiscard]] static RVGitCommandEnvironment& sharedEnvironment();

    /// A copy of the variables.
    [[nodiscard]] RVEnvironment dictionaryRepresentation() const;
    [[nodiscard]] std::optional<std::string> valueForEnvironmentVariable(
        std::string_view environmentVariable) const;
    /// An absent value removes the variable.
    void setValueForEnvironmentVariable(std::optional<std::string> value,
                                        const std::string& environmentVariable);
    void unsetValueForEnvironmentVariable(const std::string& environmentVariable);
    /// Merges the variables over those that are there.
    void setValuesFromDictionary(const RVEnvironment& environment);
    void replaceValuesWithDictionary(RVEnvironment environment);

private:
    mutable std::mutex mutex_;
    RVEnvironment environment_;
};
