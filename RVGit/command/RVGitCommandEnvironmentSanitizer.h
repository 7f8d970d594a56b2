#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// The names of the variables that redirect git or change what it prints, as listed in the
/// library's resource of the same name.
class RVGIT_EXPORT RVGitCommandEnvironmentSanitizerConfig {
public:
    [[nodiscard]] static const RVGitCommandEnvironmentSanitizerConfig& sharedConfig();

    /// Reads a property list, an array of names. Throws RVInternalInconsistencyException if there
    /// is none; one that cannot be read leaves the list absent.
    explicit RVGitCommandEnvironmentSanitizerConfig(std::optional<std::string_view> propertyList);

    [[nodiscard]] const std::optional<std::vector<std::string>>& blacklistedEnvironmentVariables()
        const {
        return blacklistedEnvironmentVariables_;
    }

private:
    std::optional<std::vector<std::string>> blacklistedEnvironmentVariables_;
};

/// Removes variables from an environment by their exact names. Any thread.
class RVGIT_EXPORT RVGitCommandEnvironmentSanitizer {
public:
    /// Without names, those of the shared configuration.
    explicit RVGitCommandEnvironmentSanitizer(
        RVEnvironment environment,
        std::optional<std::vector<std::string>> variablesToRemove = std::nullopt);

    [[nodiscard]] static RVEnvironment sanitizedEnvironmentForEnvironment(
        RVEnvironment environment,
        std::optional<std::vector<std::string>> variablesToRemove = std::nullopt);

    [[nodiscard]] const RVEnvironment& environment() const { return environment_; }
    [[nodiscard]] const std::optional<std::vector<std::string>>& variablesToRemove() const {
        return variablesToRemove_;
    }
    [[nodiscard]] RVEnvironment sanitizedEnvironment() const;

private:
    RVEnvironment environment_;
    std::optional<std::vector<std::string>> variablesToRemove_;
};
