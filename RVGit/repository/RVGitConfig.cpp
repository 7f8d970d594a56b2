#include "RVGit/repository/RVGitConfig.h"

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

// Runs the command. A key that is not set is no error, but no success either.
bool runTreatingMissingKeyAsNoError(RVGitConfigCommand& command, RVErrorPlace error) {
    std::optional<RVError> failure;
    if (command.run(&failure))
        return true;
    if (failure->code() == RVGitConfigKeyNotFoundError)
        clearErrorPlace(error);
    else
        fillErrorPlace(error, *std::move(failure));
    return false;
}

std::string patternForValue(const std::string& value) {
    return "^" + RVRegularExpression::escapedPatternForString(value) + "$";
}

std::optional<std::string> fileOption(const std::shared_ptr<RVGitRepository>& repository,
                                      std::optional<std::string> (RVGitRepository::*path)() const) {
    return repository ? (*repository.*path)() : std::nullopt;
}

}  // namespace

RVGitConfig::RVGitConfig(std::shared_ptr<RVGitRepository> repository,
                         std::optional<std::string> configFile)
    : RVGitRepositoryPart(std::move(repository)), configFile_(std::move(configFile)) {}

RVGitConfig::RVGitConfig(std::weak_ptr<RVGitRepository> owner)
    : RVGitRepositoryPart(std::move(owner)) {}

std::shared_ptr<RVGitConfig> RVGitConfig::systemWideConfig() {
    return std::make_shared<RVGitConfig>(nullptr, RVGitConfigFileTypeSystem);
}

std::shared_ptr<RVGitConfig> RVGitConfig::globalConfig() {
    return std::make_shared<RVGitConfig>(nullptr, RVGitConfigFileTypeGlobal);
}

std::shared_ptr<RVGitConfig> RVGitConfig::configWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitConfig>(std::move(repository), std::nullopt);
}

std::shared_ptr<RVGitConfig> RVGitConfig::repositoryConfigForRepository(
    std::shared_ptr<RVGitRepository> repository) {
    auto file = fileOption(repository, &RVGitRepository::configFilePath);
    return std::make_shared<RVGitConfig>(std::move(repository), std::move(file));
}

std::shared_ptr<RVGitConfig> RVGitConfig::submoduleConfigForRepository(
    std::shared_ptr<RVGitRepository> repository) {
    auto file = fileOption(repository, &RVGitRepository::submodulesFilePath);
    return std::make_shared<RVGitConfig>(std::move(repository), std::move(file));
}

std::shared_ptr<RVGitConfig> RVGitConfig::gitSVNConfigForRepository(
    std::shared_ptr<RVGitRepository> repository) {
    auto file = fileOption(repository, &RVGitRepository::SVNMetadatapath);
    return std::make_shared<RVGitConfig>(std::move(repository), std::move(file));
}

std::shared_ptr<RVGitConfig> RVGitConfig::configWithFilePath(std::optional<std::string> filePath) {
    return std::make_shared<RVGitConfig>(nullptr, std::move(filePath));
}

std::optional<std::string> RVGitConfig::configFilePath() const {
    return configFile_ && isAbsolutePath(*configFile_) ? configFile_ : std::nullopt;
}

std::optional<std::string> RVGitConfig::configFileOption() const {
    return configFile_ && !isAbsolutePath(*configFile_) ? configFile_ : std::nullopt;
}

std::shared_ptr<RVGitConfigCommand> RVGitConfig::commandWithAction(
    const char* configAction, const std::optional<RVOptions>& options) const {
    std::optional<std::string> path;
    if (auto repository = this->repository())
        path = repository->path();
    auto command = RVGitConfigCommand::gitConfigCommandWithRepositoryPath(path, options);
    command->setConfigFileType(configFileOption());
    command->setConfigFilePath(configFilePath());
    if (configAction)
        command->setConfigAction(configAction);
    return command;
}

std::optional<std::string> RVGitConfig::valueForConfigKey(const std::string& configKey,
                                                          RVErrorPlace error) const {
    return valueForConfigKey(configKey, std::nullopt, error);
}

std::optional<std::string> RVGitConfig::valueForConfigKey(const std::string& configKey,
                                                          const std::optional<RVOptions>& options,
                                                          RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionGetValue, options);
    command->setConfigKey(configKey);
    if (!runTreatingMissingKeyAsNoError(*command, error) || command->configValues().empty())
        return std::nullopt;
    return command->configValues().back();
}

std::optional<std::string> RVGitConfig::firstValueForConfigKey(const std::string& configKey,
                                                               RVErrorPlace error) const {
    auto values = valuesForConfigKey(configKey, error);
    return values.empty() ? std::nullopt : std::optional(std::move(values.front()));
}

std::optional<std::string> RVGitConfig::lastValueForConfigKey(const std::string& configKey,
                                                              RVErrorPlace error) const {
    auto values = valuesForConfigKey(configKey, error);
    return values.empty() ? std::nullopt : std::optional(std::move(values.back()));
}

std::vector<std::string> RVGitConfig::valuesForConfigKey(const std::string& configKey,
                                                         RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionGetAllValues);
    command->setConfigKey(configKey);
    if (!runTreatingMissingKeyAsNoError(*command, error))
        return {};
    return command->configValues();
}

RVOptions RVGitConfig::valuesForConfigKeyByRegularExpression(const std::string& regularExpression,
                                                             RVErrorPlace error) const {
    return wholeValuesForConfigKeyByRegularExpression(regularExpression, error)
        .value_or(RVOptions());
}

std::optional<RVOptions> RVGitConfig::wholeValuesForConfigKeyByRegularExpression(
    const std::string& regularExpression, RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionGetAllValuesByRegularExpression);
    command->setConfigKey(regularExpression);
    std::optional<RVError> failure;
    const bool succeeded = runTreatingMissingKeyAsNoError(*command, &failure);
    if (failure) {
        fillErrorPlace(error, *std::move(failure));
        return std::nullopt;
    }
    if (succeeded && !command->isCancelled())
        return command->configOptions();
    clearErrorPlace(error);
    return command->isCancelled() ? std::nullopt : std::optional(RVOptions());
}

bool RVGitConfig::boolForConfigKey(const std::string& configKey, RVErrorPlace error) const {
    return valueForConfigKey(configKey, RVOptions{{RVGitConfigOptionEnsureBooleanValue, true}},
                             error) == "true";
}

std::int64_t RVGitConfig::integerForConfigKey(const std::string& configKey,
                                              RVErrorPlace error) const {
    auto value =
        valueForConfigKey(configKey, RVOptions{{RVGitConfigOptionEnsureIntegerValue, true}}, error);
    return value ? integerValue(*value) : RVNotFound;
}

bool RVGitConfig::containsConfigKeyWithName(const std::string& configKey) const {
    return !valuesForConfigKey(configKey).empty();
}

bool RVGitConfig::containsMultipleValuesForConfigKey(const std::string& configKey) const {
    return valuesForConfigKey(configKey).size() >= 2;
}

bool RVGitConfig::containsSectionWithName(const std::string& sectionName) const {
    return !valuesForConfigKeyByRegularExpression(sectionName + ".*").empty();
}

RVOptions RVGitConfig::allConfigValues(RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionListValues);
    if (!command->run(error))
        return {};
    return command->configOptions();
}

RVValue::StringMap RVGitConfig::allEffectiveConfigValues(RVErrorPlace error) const {
    RVValue::StringMap effectiveValues;
    for (const auto& [key, value] : allConfigValues(error)) {
        const auto* values = value.stringList();
        if (const std::string* effective = values ? &values->back() : value.string())
            effectiveValues.emplace(key, stringByTrimmingWhitespaceAndNewline(*effective));
    }
    return effectiveValues;
}

std::optional<std::string> RVGitConfig::globalValueForConfigKey(const std::string& configKey,
                                                                RVErrorPlace error) {
    return globalConfig()->valueForConfigKey(configKey, error);
}

std::vector<std::string> RVGitConfig::globalValuesForConfigKey(const std::string& configKey,
                                                               RVErrorPlace error) {
    return globalConfig()->valuesForConfigKey(configKey, error);
}

std::optional<std::string> RVGitConfig::valueForConfigKey(
    const std::string& configKey, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return configWithRepository(repository)->valueForConfigKey(configKey, error);
}

std::vector<std::string> RVGitConfig::valuesForConfigKey(
    const std::string& configKey, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return configWithRepository(repository)->valuesForConfigKey(configKey, error);
}

bool RVGitConfig::setValue(const std::optional<std::string>& value, const std::string& configKey,
                           RVErrorPlace error) const {
    return setValue(value, configKey, std::nullopt, error);
}

bool RVGitConfig::setValue(const std::optional<std::string>& value, const std::string& configKey,
                           const std::optional<RVOptions>& options, RVErrorPlace error) const {
    if (!value)
        return unsetConfigKey(configKey, error);
    auto command = commandWithAction(RVGitConfigActionReplaceAllValues, options);
    command->setConfigKey(configKey);
    command->setConfigValue(value);
    return command->run(error);
}

bool RVGitConfig::setBool(bool value, const std::string& configKey, RVErrorPlace error) const {
    return setValue(value ? "true" : "false", configKey,
                    RVOptions{{RVGitConfigOptionEnsureBooleanValue, true}}, error);
}

bool RVGitConfig::setInteger(std::int64_t value, const std::string& configKey,
                             RVErrorPlace error) const {
    return setValue(std::to_string(value), configKey,
                    RVOptions{{RVGitConfigOptionEnsureIntegerValue, true}}, error);
}

bool RVGitConfig::setValues(const std::vector<std::string>& values, const std::string& configKey,
                            RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    std::optional<RVError> failure;
    if (!unsetConfigKey(configKey, &failure) && failure) {
        fillErrorPlace(error, *std::move(failure));
        return false;
    }
    return !watch.isCancelled(error) && addValues(values, configKey, error);
}

bool RVGitConfig::addValue(const std::string& value, const std::string& configKey,
                           RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionAddValue);
    command->setConfigKey(configKey);
    command->setConfigValue(value);
    return command->run(error);
}

bool RVGitConfig::addValues(const std::vector<std::string>& values, const std::string& configKey,
                            RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    for (const std::string& value : values)
        if (!addValue(value, configKey, error) || watch.isCancelled(error))
            return false;
    return true;
}

bool RVGitConfig::replaceValue(const std::string& value, const std::optional<std::string>& newValue,
                               const std::string& configKey, RVErrorPlace error) const {
    if (!newValue)
        return unsetValue(value, configKey, error);
    auto command = commandWithAction(nullptr);
    command->setConfigKey(configKey);
    command->setConfigValue(newValue);
    command->setConfigValueRegex(patternForValue(value));
    return command->run(error);
}

bool RVGitConfig::unsetValue(const std::string& value, const std::string& configKey,
                             RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionUnsetAllValues);
    command->setConfigKey(configKey);
    command->setConfigValue(patternForValue(value));
    return runTreatingMissingKeyAsNoError(*command, error);
}

bool RVGitConfig::unsetConfigKey(const std::string& configKey, RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionUnsetAllValues);
    command->setConfigKey(configKey);
    return runTreatingMissingKeyAsNoError(*command, error);
}

bool RVGitConfig::removeSection(const std::string& sectionName, RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionRemoveSection);
    command->setConfigKey(sectionName);
    return command->run(error);
}

bool RVGitConfig::renameSection(const std::string& sectionName, const std::string& newSectionName,
                                RVErrorPlace error) const {
    auto command = commandWithAction(RVGitConfigActionRenameSection);
    command->setConfigKey(sectionName);
    command->setConfigValue(newSectionName);
    return command->run(error);
}

std::optional<std::string> RVGitConfig::userName() const {
    return valueForConfigKey(RVGitUserNameConfigKey);
}

bool RVGitConfig::setUserName(const std::optional<std::string>& userName,
                              RVErrorPlace error) const {
    return setValue(userName, RVGitUserNameConfigKey, error);
}

std::optional<std::string> RVGitConfig::userEmail() const {
    return valueForConfigKey(RVGitUserEmailConfigKey);
}

bool RVGitConfig::setUserEmail(const std::optional<std::string>& userEmail,
                               RVErrorPlace error) const {
    return setValue(userEmail, RVGitUserEmailConfigKey, error);
}

std::optional<std::string> RVGitConfig::userSigningKey() const {
    return valueForConfigKey(RVGitUserSigningKeyConfigKey);
}

bool RVGitConfig::setUserSigningKey(const std::optional<std::string>& userSigningKey,
                                    RVErrorPlace error) const {
    return setValue(userSigningKey, RVGitUserSigningKeyConfigKey, error);
}

bool RVGitConfig::gpgSigningEnabled() const {
    return boolForConfigKey(RVGitGPGSignConfigKey);
}

bool RVGitConfig::setGPGSigningEnabled(bool enabled, RVErrorPlace error) const {
    return setBool(enabled, RVGitGPGSignConfigKey, error);
}

std::optional<std::string> RVGitConfig::gpgProgramPath() const {
    return valueForConfigKey(RVGitGPGProgramConfigKey);
}

bool RVGitConfig::setGPGProgramPath(const std::optional<std::string>& path,
                                    RVErrorPlace error) const {
    return setValue(path, RVGitGPGProgramConfigKey, error);
}

std::optional<std::string> RVGitConfig::sshProgramPath() const {
    return valueForConfigKey(RVGitSSHProgramConfigKey);
}

bool RVGitConfig::setSSHProgramPath(const std::optional<std::string>& path,
                                    RVErrorPlace error) const {
    return setValue(path, RVGitSSHProgramConfigKey, error);
}

std::optional<std::string> RVGitConfig::gpgFormat() const {
    return valueForConfigKey(RVGitGPGFormatConfigKey);
}

bool RVGitConfig::setGPGFormat(const std::optional<std::string>& format, RVErrorPlace error) const {
    return setValue(format, RVGitGPGFormatConfigKey, error);
}

std::optional<std::string> RVGitConfig::allowedSignersFile() const {
    return valueForConfigKey(RVGitGPGSSHAllowedSignersFileConfigKey);
}

bool RVGitConfig::setAllowedSignersFile(const std::optional<std::string>& path,
                                        RVErrorPlace error) const {
    return setValue(path, RVGitGPGSSHAllowedSignersFileConfigKey, error);
}

bool RVGitConfig::convertGitMojiToCodeOnCommit() const {
    return boolForConfigKey(RVGitVarnelConvertGitMojiToCodeOnCommitConfigKey);
}

bool RVGitConfig::setConvertGitMojiToCodeOnCommit(bool converts, RVErrorPlace error) const {
    return setBool(converts, RVGitVarnelConvertGitMojiToCodeOnCommitConfigKey, error);
}
