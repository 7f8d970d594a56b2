#include "RVGit/submodules/RVGitSubmoduleConfig.h"

#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"
#include "RVGit/submodules/RVGitSubmoduleConfigHelper.h"

RVGitSubmoduleConfig::RVGitSubmoduleConfig(std::shared_ptr<RVGitRepository> repository,
                                           RVGitSubmoduleConfigType configType, std::string name,
                                           const RVOptions& values)
    : repository_(std::move(repository)),
      configType_(configType),
      name_(std::move(name)),
      values_(
          RVGitSubmoduleConfigHelper::configValuesWithLowercaseConfigKeysFromConfigValues(values)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitSubmoduleConfig> RVGitSubmoduleConfig::submoduleConfigWithRepository(
    std::shared_ptr<RVGitRepository> repository, RVGitSubmoduleConfigType configType,
    std::string name, const RVOptions& values) {
    return std::make_shared<RVGitSubmoduleConfig>(std::move(repository), configType,
                                                  std::move(name), values);
}

std::optional<std::string> RVGitSubmoduleConfig::configValueForKey(const std::string& key) const {
    const auto found = values_.find(lowercaseString(key));
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> RVGitSubmoduleConfig::path() const {
    return configValueForKey(RVGitSubmodulePathConfigKey);
}

std::optional<std::string> RVGitSubmoduleConfig::URL() const {
    return configValueForKey(RVGitSubmoduleURLConfigKey);
}

std::optional<std::string> RVGitSubmoduleConfig::branch() const {
    return configValueForKey(RVGitSubmoduleConfigKeyBranch);
}

RVGitSubmoduleUpdateStrategy RVGitSubmoduleConfig::updateStrategy() const {
    return RVGitSubmoduleConfigHelper::updateStrategyFromConfigValue(
        configValueForKey(RVGitSubmoduleUpdateConfigKey));
}

RVGitSubmoduleStatusIgnoreMode RVGitSubmoduleConfig::statusIgnoreMode() const {
    return RVGitSubmoduleConfigHelper::statusIgnoreModeFromConfigValue(
        configValueForKey(RVGitSubmoduleIgnoreConfigKey));
}

RVGitSubmoduleRecurseSubmodulesOption RVGitSubmoduleConfig::recurseSubmodules() const {
    return RVGitSubmoduleConfigHelper::recurseSubmodulesOptionFromConfigValue(
        configValueForKey(RVGitSubmoduleFetchRecurseSubmodulesConfigKey));
}
