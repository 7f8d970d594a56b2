#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"

#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"

namespace {

std::shared_ptr<RVGitSubmoduleConfig> configWithName(
    const std::optional<RVGitSubmoduleConfigLoader::Configs>& configs, const std::string& name,
    RVErrorPlace error) {
    if (!configs)
        return nullptr;
    for (const auto& config : *configs)
        if (isEqualToUnicodeString(config->name(), name))
            return config;
    clearErrorPlace(error);
    return nullptr;
}

}  // namespace

RVGitSubmoduleConfigLoader::RVGitSubmoduleConfigLoader(std::shared_ptr<RVGitRepository> repository)
    : RVGitRepositoryPart(std::move(repository)) {
    requireParameter(this->repository() != nullptr, "repository");
}

RVGitSubmoduleConfigLoader::RVGitSubmoduleConfigLoader(std::weak_ptr<RVGitRepository> owner)
    : RVGitRepositoryPart(std::move(owner)) {}

std::shared_ptr<RVGitSubmoduleConfigLoader> RVGitSubmoduleConfigLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitSubmoduleConfigLoader>(std::move(repository));
}

std::optional<RVGitSubmoduleConfigLoader::Configs> RVGitSubmoduleConfigLoader::allSubmoduleConfigs(
    RVErrorPlace error) const {
    // A bare repository has no such file, and the scope would be the merged view of all others.
    const auto file = repository()->submodulesFilePath();
    if (!file)
        return Configs();
    if (RVGitSubmoduleContainment::isSpecialFile(*file)) {
        fillErrorPlace(
            error, gitErrorWithCode(
                       RVGitConfigReadError,
                       RVGitMakeErrorUserInfo(repository(), {{RVGitConfigFileErrorKey, *file}})));
        return std::nullopt;
    }
    return submoduleConfigsFromConfig(RVGitConfig::submoduleConfigForRepository(repository()),
                                      RVGitSubmoduleConfigTypeDefault, error);
}

std::optional<RVGitSubmoduleConfigLoader::Configs>
RVGitSubmoduleConfigLoader::allLocalSubmoduleConfigs(RVErrorPlace error) const {
    return submoduleConfigsFromConfig(RVGitConfig::repositoryConfigForRepository(repository()),
                                      RVGitSubmoduleConfigTypeLocal, error);
}

std::shared_ptr<RVGitSubmoduleConfig>
RVGitSubmoduleConfigLoader::submoduleConfigForSubmoduleWithName(const std::string& name,
                                                                RVErrorPlace error) const {
    return configWithName(allSubmoduleConfigs(error), name, error);
}

std::shared_ptr<RVGitSubmoduleConfig>
RVGitSubmoduleConfigLoader::localSubmoduleConfigForSubmoduleWithName(const std::string& name,
                                                                     RVErrorPlace error) const {
    return configWithName(allLocalSubmoduleConfigs(error), name, error);
}

std::optional<RVGitSubmoduleConfigLoader::Configs>
RVGitSubmoduleConfigLoader::submoduleConfigsFromConfig(const std::shared_ptr<RVGitConfig>& config,
                                                       RVGitSubmoduleConfigType configType,
                                                       RVErrorPlace error) const {
    const auto values = config->wholeValuesForConfigKeyByRegularExpression("^submodule.*", error);
    if (!values)
        return std::nullopt;
    Configs configs;
    for (const auto& [name, section] :
         RVGitConfigOptionsParser::parseConfigOptionsBySection(*values))
        configs.push_back(RVGitSubmoduleConfig::submoduleConfigWithRepository(
            repository(), configType, name, section));
    return configs;
}
