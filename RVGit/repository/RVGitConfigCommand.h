#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Options of RVGitConfigCommand. The presence of the first two counts, whatever their value.
inline constexpr char RVGitConfigOptionEnsureBooleanValue[] = "boolValue";
inline constexpr char RVGitConfigOptionEnsureIntegerValue[] = "intValue";
/// Kept for compatibility: nothing reads these two.
inline constexpr char RVGitConfigOptionConfigFilePath[] = "configFilePath";
inline constexpr char RVGitConfigOptionConfigFileType[] = "configFileType";

/// Actions of RVGitConfigCommand.
inline constexpr char RVGitConfigActionAddValue[] = "addValue";
inline constexpr char RVGitConfigActionGetAllValues[] = "getAllValues";
inline constexpr char RVGitConfigActionGetAllValuesByRegularExpression[] =
    "getAllValuesByRegularExpression";
inline constexpr char RVGitConfigActionGetValue[] = "getValue";
inline constexpr char RVGitConfigActionRemoveSection[] = "removeSection";
inline constexpr char RVGitConfigActionRenameSection[] = "renameSection";
inline constexpr char RVGitConfigActionReplaceAllValues[] = "replaceAllValues";
inline constexpr char RVGitConfigActionUnsetAllValues[] = "unsetAllValues";
inline constexpr char RVGitConfigActionUnsetValue[] = "unsetValue";
inline constexpr char RVGitConfigActionListValues[] = "list";

/// Reads or writes the configuration: git config -z. A key that is not set fails with code 1002;
/// RVGitConfig makes that no error.
class RVGIT_EXPORT RVGitConfigCommand : public RVGitCommand {
public:
    RVGitConfigCommand(std::optional<std::string> repositoryPath,
                       const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitConfigCommand> gitConfigCommandWithRepositoryPath(
        const std::optional<std::string>& repositoryPath, const std::optional<RVOptions>& options);

    /// Has git check that the value is a boolean, and print or write "true" or "false".
    [[nodiscard]] bool ensuresBooleanValue() const { return ensuresBooleanValue_; }
    void setEnsuresBooleanValue(bool ensures) { ensuresBooleanValue_ = ensures; }
    /// Has git check that the value is a number, and print or write it without a unit.
    [[nodiscard]] bool ensuresIntegerValue() const { return ensuresIntegerValue_; }
    void setEnsuresIntegerValue(bool ensures) { ensuresIntegerValue_ = ensures; }
    [[nodiscard]] const std::optional<std::string>& configFilePath() const {
        return configFilePath_;
    }
    void setConfigFilePath(std::optional<std::string> path) { configFilePath_ = std::move(path); }
    /// RVGitConfigFileTypeSystem or RVGitConfigFileTypeGlobal; anything else adds nothing.
    [[nodiscard]] const std::optional<std::string>& configFileType() const {
        return configFileType_;
    }
    void setConfigFileType(std::optional<std::string> type) { configFileType_ = std::move(type); }
    /// One of the action constants. Without one, git reads the key, or writes it if there is a
    /// value.
    [[nodiscard]] const std::optional<std::string>& configAction() const { return configAction_; }
    void setConfigAction(std::optional<std::string> action) { configAction_ = std::move(action); }
    [[nodiscard]] const std::optional<std::string>& configKey() const { return configKey_; }
    void setConfigKey(std::optional<std::string> key) { configKey_ = std::move(key); }
    [[nodiscard]] const std::optional<std::string>& configValue() const { return configValue_; }
    void setConfigValue(std::optional<std::string> value) { configValue_ = std::move(value); }
    [[nodiscard]] const std::optional<std::string>& configValueRegex() const {
        return configValueRegex_;
    }
    void setConfigValueRegex(std::optional<std::string> regularExpression) {
        configValueRegex_ = std::move(regularExpression);
    }

    /// The result of the actions that get the values of one key.
    [[nodiscard]] const std::vector<std::string>& configValues() const { return configValues_; }
    /// The result of the actions that get the values of many keys, in the shape of
    /// RVGitConfigOptionsParser.
    [[nodiscard]] const RVOptions& configOptions() const { return configOptions_; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidTerminate() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool ensuresBooleanValue_ = false;
    bool ensuresIntegerValue_ = false;
    std::optional<std::string> configFilePath_;
    std::optional<std::string> configFileType_;
    std::optional<std::string> configAction_;
    std::optional<std::string> configKey_;
    std::optional<std::string> configValue_;
    std::optional<std::string> configValueRegex_;
    std::vector<std::string> configValues_;
    RVOptions configOptions_;
};
