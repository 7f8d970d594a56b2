#include "RVGit/remotes/RVGitRemoteConfig.h"

#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

const std::string* endValue(const RVOptions& section, std::string_view key, bool last) {
    const auto found = section.find(key);
    if (found == section.end())
        return nullptr;
    const auto* values = found->second.stringList();
    if (!values)
        return found->second.string();
    if (values->empty())
        return nullptr;
    return last ? &values->back() : &values->front();
}

}  // namespace

std::optional<std::string> RVGitFirstConfigValue(const RVOptions& section, std::string_view key) {
    const std::string* value = endValue(section, key, false);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::string> RVGitLastConfigValue(const RVOptions& section, std::string_view key) {
    const std::string* value = endValue(section, key, true);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::vector<std::string>> RVGitAllConfigValues(const RVOptions& section,
                                                             std::string_view key) {
    const auto found = section.find(key);
    if (found == section.end())
        return std::nullopt;
    if (const auto* values = found->second.stringList())
        return *values;
    return std::vector<std::string>{*found->second.string()};
}

std::optional<std::map<std::string, RVOptions, std::less<>>> RVGitConfigSections(
    const std::shared_ptr<RVGitRepository>& repository, const std::string& regularExpression,
    RVErrorPlace error) {
    const auto values =
        repository->config()->wholeValuesForConfigKeyByRegularExpression(regularExpression, error);
    if (!values)
        return std::nullopt;
    return RVGitConfigOptionsParser::parseConfigOptionsBySection(*values);
}

RVGitRemoteConfig::RVGitRemoteConfig(std::shared_ptr<RVGitRepository> repository, std::string name,
                                     RVOptions gitConfigOptions)
    : repository_(std::move(repository)),
      name_(std::move(name)),
      URL_(RVGitFirstConfigValue(gitConfigOptions, RVGitRemoteURLConfigKey)),
      pushURL_(RVGitFirstConfigValue(gitConfigOptions, RVGitRemotePushURLConfigKey)),
      fetchRefSpecs_(RVGitAllConfigValues(gitConfigOptions, RVGitRemoteFetchConfigKey)),
      pushRefSpecs_(RVGitAllConfigValues(gitConfigOptions, RVGitRemotePushConfigKey)),
      skipsDefaultUpdate_(
          RVGitLastConfigValue(gitConfigOptions, RVGitRemoteSkipDefaultUpdateConfigKey) == "true"),
      skipsFetchAll_(RVGitLastConfigValue(gitConfigOptions, RVGitRemoteSkipFetchAllConfigKey) ==
                     "true"),
      gitConfigOptions_(std::move(gitConfigOptions)) {}

std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>>
RVGitRemoteConfig::allRemoteConfigsForRepository(const std::shared_ptr<RVGitRepository>& repository,
                                                 RVErrorPlace error) {
    return RVGitRemoteConfigLoader::loaderWithRepository(repository)->allRemoteConfigs(error);
}

std::optional<RVGitRemoteConfig::ByRemoteName>
RVGitRemoteConfig::allRemoteConfigsByRemoteNameForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto configs = allRemoteConfigsForRepository(repository, error);
    if (!configs)
        return std::nullopt;
    ByRemoteName byName;
    for (const auto& config : *configs)
        byName.emplace(config->name(), config);
    return byName;
}

std::optional<RVValue> RVGitRemoteConfig::valueForConfigKey(std::string_view key) const {
    const auto found = gitConfigOptions_.find(lowercaseString(key));
    return found == gitConfigOptions_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> RVGitRemoteConfig::lastValueForConfigKey(std::string_view key) const {
    return RVGitLastConfigValue(gitConfigOptions_, lowercaseString(key));
}

RVGitRemoteConfigLoader::RVGitRemoteConfigLoader(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository != nil");
}

std::shared_ptr<RVGitRemoteConfigLoader> RVGitRemoteConfigLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitRemoteConfigLoader>(std::move(repository));
}

std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>>
RVGitRemoteConfigLoader::allRemoteConfigs(RVErrorPlace error) const {
    return fetchAllRemoteConfigs(error);
}

std::shared_ptr<RVGitRemoteConfig> RVGitRemoteConfigLoader::remoteConfigForRemoteWithName(
    const std::string& name, RVErrorPlace error) const {
    const auto configs = allRemoteConfigs(error);
    if (!configs)
        return nullptr;
    const auto found =
        RVFindUnicodeName(configs->begin(), configs->end(), name,
                          [](const auto& config) -> const std::string& { return config->name(); });
    if (found != configs->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>>
RVGitRemoteConfigLoader::fetchAllRemoteConfigs(RVErrorPlace error) const {
    auto sections = RVGitConfigSections(repository_, "^(svn-)?remote.*", error);
    if (!sections)
        return std::nullopt;
    std::vector<std::shared_ptr<RVGitRemoteConfig>> configs;
    configs.reserve(sections->size());
    for (auto& [name, section] : *sections)
        configs.push_back(
            std::make_shared<RVGitRemoteConfig>(repository_, name, std::move(section)));
    return configs;
}
