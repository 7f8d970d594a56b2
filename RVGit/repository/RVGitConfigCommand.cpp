#include "RVGit/repository/RVGitConfigCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"

namespace {

struct ConfigAction {
    std::string_view name;
    const char* option;
    enum { Nothing, Values, Options } output;
};

constexpr ConfigAction configActions[] = {
    {RVGitConfigActionAddValue, "--add", ConfigAction::Nothing},
    {RVGitConfigActionGetAllValues, "--get-all", ConfigAction::Values},
    {RVGitConfigActionGetAllValuesByRegularExpression, "--get-regexp", ConfigAction::Options},
    {RVGitConfigActionGetValue, "--get", ConfigAction::Values},
    {RVGitConfigActionRemoveSection, "--remove-section", ConfigAction::Nothing},
    {RVGitConfigActionRenameSection, "--rename-section", ConfigAction::Nothing},
    {RVGitConfigActionReplaceAllValues, "--replace-all", ConfigAction::Nothing},
    {RVGitConfigActionUnsetAllValues, "--unset-all", ConfigAction::Nothing},
    {RVGitConfigActionUnsetValue, "--unset", ConfigAction::Nothing},
    {RVGitConfigActionListValues, "--list", ConfigAction::Options},
};

const ConfigAction* configActionWithName(const std::optional<std::string>& name) {
    for (const ConfigAction& action : configActions)
        if (name == action.name)
            return &action;
    return nullptr;
}

}  // namespace

const RVGitErrorTable& RVGitConfigCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> rows = {
        gitErrorRow(RVGitConfigInvalidFileError)
            .command("config")
            .exitCode(128)
            .standardError("bad config"),
        gitErrorRow(RVGitConfigKeyNotFoundError).command("config").exitCode(1).standardError(""),
        gitErrorRow(RVGitConfigKeyNotFoundError).command("config").exitCode(5).standardError(""),
        gitErrorRow(RVGitConfigMultipleValuesForKeyError)
            .command("config")
            .exitCode(2)
            .standardError("error: More than one value for the key"),
        gitErrorRow(RVGitConfigMultipleValuesForKeyError)
            .command("config")
            .exitCode(5)
            .standardError("has multiple values"),
        gitErrorRow(RVGitConfigReadError).command("config").exitCode(3),
        gitErrorRow(RVGitConfigSectionNotFoundError)
            .command("config")
            .exitCode(128)
            .standardError("fatal: No such section"),
        gitErrorRow(RVGitConfigWriteError).command("config").exitCode(4),
    };
    return *rows;
}

RVGitConfigCommand::RVGitConfigCommand(std::optional<std::string> repositoryPath,
                                       const std::optional<RVOptions>& options)
    : RVGitCommand(std::move(repositoryPath)),
      ensuresBooleanValue_(options && options->contains(RVGitConfigOptionEnsureBooleanValue)),
      ensuresIntegerValue_(options && options->contains(RVGitConfigOptionEnsureIntegerValue)) {}

std::shared_ptr<RVGitConfigCommand> RVGitConfigCommand::gitConfigCommandWithRepositoryPath(
    const std::optional<std::string>& repositoryPath, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitConfigCommand>(repositoryPath, options);
}

void RVGitConfigCommand::gitCommandWillInitialize() {
    setGitCommand("config");
    addGitCommandOption("-z");
    if (configFileType_ == RVGitConfigFileTypeSystem)
        addGitCommandOption("--system");
    else if (configFileType_ == RVGitConfigFileTypeGlobal)
        addGitCommandOptions({"--global", "--includes"});
    if (configFilePath_)
        addGitCommandOption("--file=" + *configFilePath_);
    if (const ConfigAction* action = configActionWithName(configAction_))
        addGitCommandOption(action->option);
    if (ensuresBooleanValue_)
        addGitCommandOption("--bool");
    if (ensuresIntegerValue_)
        addGitCommandOption("--int");

    // Git would write it as it is, and could not read the file any more.
    if (configAction_ == RVGitConfigActionRenameSection && configValue_ &&
        configValue_->find('\n') != std::string::npos)
        refuseGitCommandArgument(RVGitConfigWriteError, RVGitConfigKeyErrorKey, *configValue_);

    // Behind the first word git looks for no options: a value may begin with "-".
    for (const auto* argument : {&configKey_, &configValue_, &configValueRegex_}) {
        if (!*argument)
            continue;
        if (gitCommandArguments().empty())
            addGitCommandName(**argument);
        else
            addGitCommandArgument(**argument);
    }
}

void RVGitConfigCommand::gitCommandDidTerminate() {
    if (configAction_ != RVGitConfigActionRemoveSection &&
        configAction_ != RVGitConfigActionRenameSection)
        return;
    // On a full disk git says that it could not write the file, leaves it as it was, and exits
    // with 0.
    if (!isCancelled() && exitCode() == 0 && standardErrorString().starts_with("error: "))
        finishWithError(gitErrorWithCode(RVGitConfigWriteError, makeGitErrorUserInfo()));
}

bool RVGitConfigCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    const ConfigAction* action = configActionWithName(configAction_);
    if (!action || action->output == ConfigAction::Nothing)
        return true;

    if (action->output == ConfigAction::Options) {
        RVGitConfigOptionsParser parser(standardOutputData());
        if (!parser.parse(error))
            return false;
        configOptions_ = parser.configOptions();
        return true;
    }

    std::string_view output = standardOutputString();
    if (output.ends_with('\0'))
        output.remove_suffix(1);
    else if (output.empty())
        return true;
    for (std::string_view value : componentsSeparatedByNULByte(output))
        configValues_.emplace_back(value);
    return true;
}
