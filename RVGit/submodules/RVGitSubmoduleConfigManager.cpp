#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"

#include <utility>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleConfigHelper.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"

using Helper = RVGitSubmoduleConfigHelper;

namespace {

// The name is searched as a pattern: taken as it is, "lib" would find "library", and "c++" or
// "a(b" would not find themselves. What is behind it is one word: "lib" is not "lib.js".
std::string patternOfKeys(const std::string& name) {
    const std::string key = Helper::submoduleConfigKeyWithSubmoduleName(name, "");
    return "^" + RVRegularExpression::escapedPatternForString(key) + "[^.]*$";
}

// Git finds the keys of such a section, but not the section.
bool isLostOnGit(const std::string& name) {
    return name.find(']') != std::string::npos;
}

}  // namespace

RVGitSubmoduleConfigManager::RVGitSubmoduleConfigManager(
    std::shared_ptr<RVGitRepository> repository, RVGitSubmoduleConfigType configType)
    : repository_(std::move(repository)), configType_(configType) {
    requireParameter(repository_ != nullptr, "repository");
    requireParameter(configType_ == RVGitSubmoduleConfigTypeDefault ||
                         configType_ == RVGitSubmoduleConfigTypeLocal,
                     "configType");
    config_ = configType_ == RVGitSubmoduleConfigTypeLocal
                  ? repository_->config()
                  : RVGitConfig::submoduleConfigForRepository(repository_);
}

std::shared_ptr<RVGitSubmoduleConfigManager>
RVGitSubmoduleConfigManager::defaultManagerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitSubmoduleConfigManager>(std::move(repository),
                                                         RVGitSubmoduleConfigTypeDefault);
}

std::shared_ptr<RVGitSubmoduleConfigManager>
RVGitSubmoduleConfigManager::localConfigManagerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitSubmoduleConfigManager>(std::move(repository),
                                                         RVGitSubmoduleConfigTypeLocal);
}

bool RVGitSubmoduleConfigManager::mayWrite(RVErrorPlace error) const {
    return configType_ == RVGitSubmoduleConfigTypeLocal ||
           RVGitSubmoduleContainment(repository_).requirePlainSubmodulesFile(error);
}

bool RVGitSubmoduleConfigManager::setValue(const std::optional<std::string>& value,
                                           const std::string& name, const char* key,
                                           RVErrorPlace error) const {
    return mayWrite(error) &&
           config_->setValue(value, Helper::submoduleConfigKeyWithSubmoduleName(name, key), error);
}

bool RVGitSubmoduleConfigManager::unsetValue(const std::string& name, const char* key,
                                             RVErrorPlace error) const {
    return mayWrite(error) &&
           config_->unsetConfigKey(Helper::submoduleConfigKeyWithSubmoduleName(name, key), error);
}

bool RVGitSubmoduleConfigManager::setPath(const std::string& path,
                                          const std::string& forSubmoduleWithName,
                                          RVErrorPlace error) {
    return setValue(path, forSubmoduleWithName, RVGitSubmodulePathConfigKey, error);
}

bool RVGitSubmoduleConfigManager::setURL(const std::string& URL,
                                         const std::string& forSubmoduleWithName,
                                         RVErrorPlace error) {
    return setValue(URL, forSubmoduleWithName, RVGitSubmoduleURLConfigKey, error);
}

bool RVGitSubmoduleConfigManager::unsetURLForSubmoduleWithName(const std::string& name,
                                                               RVErrorPlace error) {
    return unsetValue(name, RVGitSubmoduleURLConfigKey, error);
}

bool RVGitSubmoduleConfigManager::setUpdateStrategy(RVGitSubmoduleUpdateStrategy updateStrategy,
                                                    const std::string& forSubmoduleWithName,
                                                    RVErrorPlace error) {
    return setValue(Helper::updateStrategyToConfigValue(updateStrategy), forSubmoduleWithName,
                    RVGitSubmoduleUpdateConfigKey, error);
}

bool RVGitSubmoduleConfigManager::unsetUpdateStrategyForSubmoduleWithName(const std::string& name,
                                                                          RVErrorPlace error) {
    return unsetValue(name, RVGitSubmoduleUpdateConfigKey, error);
}

bool RVGitSubmoduleConfigManager::setStatusIgnoreMode(
    RVGitSubmoduleStatusIgnoreMode statusIgnoreMode, const std::string& forSubmoduleWithName,
    RVErrorPlace error) {
    return setValue(Helper::statusIgnoreModeToConfigValue(statusIgnoreMode), forSubmoduleWithName,
                    RVGitSubmoduleIgnoreConfigKey, error);
}

bool RVGitSubmoduleConfigManager::unsetStatusIgnoreModeForSubmoduleWithName(const std::string& name,
                                                                            RVErrorPlace error) {
    return unsetValue(name, RVGitSubmoduleIgnoreConfigKey, error);
}

bool RVGitSubmoduleConfigManager::setBranch(const std::string& branch,
                                            const std::string& forSubmoduleWithName,
                                            RVErrorPlace error) {
    return setValue(branch, forSubmoduleWithName, RVGitSubmoduleConfigKeyBranch, error);
}

bool RVGitSubmoduleConfigManager::unsetBranchForSubmoduleWithName(const std::string& name,
                                                                  RVErrorPlace error) {
    return unsetValue(name, RVGitSubmoduleConfigKeyBranch, error);
}

bool RVGitSubmoduleConfigManager::setRecurseSubmodulesOption(
    RVGitSubmoduleRecurseSubmodulesOption recurseSubmodulesOption,
    const std::string& forSubmoduleWithName, RVErrorPlace error) {
    return setValue(Helper::recurseSubmodulesOptionToConfigValue(recurseSubmodulesOption),
                    forSubmoduleWithName, RVGitSubmoduleFetchRecurseSubmodulesConfigKey, error);
}

bool RVGitSubmoduleConfigManager::unsetRecurseSubmodulesOptionForSubmoduleWithName(
    const std::string& name, RVErrorPlace error) {
    return unsetValue(name, RVGitSubmoduleFetchRecurseSubmodulesConfigKey, error);
}

bool RVGitSubmoduleConfigManager::containsSectionForSubmoduleWithName(
    const std::string& name) const {
    return !config_->valuesForConfigKeyByRegularExpression(patternOfKeys(name)).empty();
}

bool RVGitSubmoduleConfigManager::moveKeys(const std::string& name,
                                           const std::optional<std::string>& newName,
                                           RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    const auto values =
        config_->wholeValuesForConfigKeyByRegularExpression(patternOfKeys(name), error);
    if (watch.isCancelled(error) || !values)
        return false;
    for (const auto& [key, value] : *values) {
        const std::string word = key.substr(key.rfind('.') + 1);
        const auto* several = value.stringList();
        const RVValue::StringList texts =
            several ? *several : RVValue::StringList{value.string() ? *value.string() : ""};
        if (newName &&
            !config_->setValues(texts, Helper::submoduleConfigKeyWithSubmoduleName(*newName, word),
                                error))
            return false;
        if (watch.isCancelled(error) || !config_->unsetConfigKey(key, error))
            return false;
    }
    return true;
}

void RVGitSubmoduleConfigManager::failToWrite(RVErrorPlace error) const {
    const auto file = configType_ == RVGitSubmoduleConfigTypeLocal
                          ? repository_->configFilePath()
                          : repository_->submodulesFilePath();
    fillErrorPlace(
        error, gitErrorWithCode(RVGitConfigWriteError,
                                RVGitMakeErrorUserInfo(
                                    repository_, {{RVGitConfigFileErrorKey, file.value_or("")}})));
}

bool RVGitSubmoduleConfigManager::renameConfigSectionForSubmoduleWithName(
    const std::string& name, const std::string& toNewName, RVErrorPlace error) {
    if (!mayWrite(error))
        return false;
    // Git would write it as it is, and could not read the file any more.
    if (toNewName.find('\n') != std::string::npos) {
        failToWrite(error);
        return false;
    }
    if (isLostOnGit(name))
        return name == toNewName || moveKeys(name, toNewName, error);
    const RVGitCancellationWatch watch;
    const bool exists = containsSectionForSubmoduleWithName(name);
    return !watch.isCancelled(error) &&
           (!exists || config_->renameSection(
                           Helper::submoduleConfigSectionWithSubmoduleName(name),
                           Helper::submoduleConfigSectionWithSubmoduleName(toNewName), error));
}

bool RVGitSubmoduleConfigManager::removeConfigSectionForSubmoduleWithName(const std::string& name,
                                                                          RVErrorPlace error) {
    if (!mayWrite(error))
        return false;
    if (isLostOnGit(name))
        return moveKeys(name, std::nullopt, error);
    const RVGitCancellationWatch watch;
    const bool exists = containsSectionForSubmoduleWithName(name);
    return !watch.isCancelled(error) &&
           (!exists ||
            config_->removeSection(Helper::submoduleConfigSectionWithSubmoduleName(name), error));
}
