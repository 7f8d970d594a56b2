#include "RVGit/submodules/RVGitSubmoduleConfigHelper.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"

namespace {

// The texts of the values from 1 on.
constexpr std::array<std::string_view, 4> updateStrategies = {"none", "checkout", "merge",
                                                              "rebase"};
constexpr std::array<std::string_view, 4> statusIgnoreModes = {"none", "all", "dirty", "untracked"};
constexpr std::array<std::string_view, 3> recurseSubmodulesOptions = {"false", "true", "on-demand"};
constexpr std::array<std::string_view, 3> otherRecurseSubmodulesOptions = {"0", "1", "ondemand"};

template <typename Value, std::size_t count>
Value valueOfText(const std::optional<std::string>& text,
                  const std::array<std::string_view, count>& texts) {
    const std::string lowercase = lowercaseString(text.value_or(""));
    for (std::size_t index = 0; index < count; ++index)
        if (texts[index] == lowercase)
            return static_cast<Value>(index + 1);
    return static_cast<Value>(0);
}

template <typename Value, std::size_t count>
std::optional<std::string> textOfValue(Value value,
                                       const std::array<std::string_view, count>& texts) {
    const auto number = static_cast<std::int64_t>(value);
    if (number < 1 || number > static_cast<std::int64_t>(count))
        return std::nullopt;
    return std::string(texts[static_cast<std::size_t>(number - 1)]);
}

}  // namespace

RVGitSubmoduleUpdateStrategy RVGitSubmoduleConfigHelper::updateStrategyFromConfigValue(
    const std::optional<std::string>& configValue) {
    return valueOfText<RVGitSubmoduleUpdateStrategy>(configValue, updateStrategies);
}

RVGitSubmoduleStatusIgnoreMode RVGitSubmoduleConfigHelper::statusIgnoreModeFromConfigValue(
    const std::optional<std::string>& configValue) {
    return valueOfText<RVGitSubmoduleStatusIgnoreMode>(configValue, statusIgnoreModes);
}

RVGitSubmoduleRecurseSubmodulesOption
RVGitSubmoduleConfigHelper::recurseSubmodulesOptionFromConfigValue(
    const std::optional<std::string>& configValue) {
    using Option = RVGitSubmoduleRecurseSubmodulesOption;
    const auto option = valueOfText<Option>(configValue, recurseSubmodulesOptions);
    return option ? option : valueOfText<Option>(configValue, otherRecurseSubmodulesOptions);
}

std::optional<std::string> RVGitSubmoduleConfigHelper::updateStrategyToConfigValue(
    RVGitSubmoduleUpdateStrategy updateStrategy) {
    return textOfValue(updateStrategy, updateStrategies);
}

std::optional<std::string> RVGitSubmoduleConfigHelper::statusIgnoreModeToConfigValue(
    RVGitSubmoduleStatusIgnoreMode statusIgnoreMode) {
    return textOfValue(statusIgnoreMode, statusIgnoreModes);
}

std::optional<std::string> RVGitSubmoduleConfigHelper::recurseSubmodulesOptionToConfigValue(
    RVGitSubmoduleRecurseSubmodulesOption recurseSubmodulesOption) {
    return textOfValue(recurseSubmodulesOption, recurseSubmodulesOptions);
}

std::string RVGitSubmoduleConfigHelper::submoduleConfigSectionWithSubmoduleName(
    const std::string& submoduleName) {
    return "submodule." + submoduleName;
}

std::string RVGitSubmoduleConfigHelper::submoduleConfigKeyWithSubmoduleName(
    const std::string& submoduleName, const std::string& configKey) {
    return "submodule." + submoduleName + "." + configKey;
}

RVValue::StringMap RVGitSubmoduleConfigHelper::configValuesWithLowercaseConfigKeysFromConfigValues(
    const RVOptions& configValues) {
    RVValue::StringMap values;
    for (const auto& [key, value] : configValues) {
        const auto* list = value.stringList();
        if (const auto* text = value.string())
            values.insert_or_assign(lowercaseString(key), *text);
        else if (list && !list->empty())
            values.insert_or_assign(lowercaseString(key), list->back());
    }
    return values;
}
