#pragma once

#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"

/// Between the texts of a submodule's configuration and what they mean. Pure; any thread.
class RVGIT_EXPORT RVGitSubmoduleConfigHelper {
public:
    // Of a text: in any case of its letters, and otherwise exactly; 0 for an absent or unknown one.
    // That is so for "!command", too, an update strategy that git knows.

    [[nodiscard]] static RVGitSubmoduleUpdateStrategy updateStrategyFromConfigValue(
        const std::optional<std::string>& configValue);
    [[nodiscard]] static RVGitSubmoduleStatusIgnoreMode statusIgnoreModeFromConfigValue(
        const std::optional<std::string>& configValue);
    /// "0", "1" and "ondemand" are read, too.
    [[nodiscard]] static RVGitSubmoduleRecurseSubmodulesOption
    recurseSubmodulesOptionFromConfigValue(const std::optional<std::string>& configValue);

    // Into a text: absent for 0 and for what is out of range.

    [[nodiscard]] static std::optional<std::string> updateStrategyToConfigValue(
        RVGitSubmoduleUpdateStrategy updateStrategy);
    [[nodiscard]] static std::optional<std::string> statusIgnoreModeToConfigValue(
        RVGitSubmoduleStatusIgnoreMode statusIgnoreMode);
    [[nodiscard]] static std::optional<std::string> recurseSubmodulesOptionToConfigValue(
        RVGitSubmoduleRecurseSubmodulesOption recurseSubmodulesOption);

    /// "submodule.NAME".
    [[nodiscard]] static std::string submoduleConfigSectionWithSubmoduleName(
        const std::string& submoduleName);
    /// "submodule.NAME.KEY".
    [[nodiscard]] static std::string submoduleConfigKeyWithSubmoduleName(
        const std::string& submoduleName, const std::string& configKey);
    /// The values with their keys in lower case: of a list the last one; what is no text is left
    /// out.
    [[nodiscard]] static RVValue::StringMap configValuesWithLowercaseConfigKeysFromConfigValues(
        const RVOptions& configValues);
};
