#include "RVGit/remotes/RVGitRemoteCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitError.h"

namespace {

constexpr std::string_view pushSuffix = " (push)";
constexpr std::string_view fetchSuffix = " (fetch)";

}  // namespace

RVGitRemoteOutputParser::RVGitRemoteOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitRemoteOutputParser::parserName() const {
    return "RVGitRemoteOutputParser";
}

bool RVGitRemoteOutputParser::parseOutputLine(std::string_view line) {
    const auto tab = line.find('\t');
    const std::string_view name = line.substr(0, tab);
    auto& item = resultForKeyMakingIt(name);
    item.name = name;
    if (tab == std::string_view::npos)
        return true;
    std::string_view address = line.substr(tab + 1);
    if (address.find('\t') != std::string_view::npos)
        return true;
    if (address.ends_with(pushSuffix)) {
        address.remove_suffix(pushSuffix.size());
        item.upstreamURL = address;
    } else if (address.ends_with(fetchSuffix)) {
        address.remove_suffix(fetchSuffix.size());
        item.downstreamURL = address;
    }
    return true;
}

RVGitRemoteCommand::RVGitRemoteCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitRemoteCommand> RVGitRemoteCommand::gitRemoteCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitRemoteCommand>(repository);
}

std::shared_ptr<RVGitRemoteCommand> RVGitRemoteCommand::gitCreateRemoteCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string remoteName,
    std::optional<std::string> URL) {
    auto command = std::make_shared<RVGitRemoteCommand>(repository);
    command->setCreatesRemote(true);
    command->setRemoteNames(std::vector<std::string>{std::move(remoteName)});
    command->setURL(std::move(URL));
    return command;
}

std::shared_ptr<RVGitRemoteCommand> RVGitRemoteCommand::gitRenameRemoteCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string remoteName,
    std::string newRemoteName) {
    auto command = std::make_shared<RVGitRemoteCommand>(repository);
    command->setRenamesRemote(true);
    command->setRemoteNames(
        std::vector<std::string>{std::move(remoteName), std::move(newRemoteName)});
    return command;
}

std::shared_ptr<RVGitRemoteCommand> RVGitRemoteCommand::gitDeleteRemoteCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string remoteName) {
    auto command = std::make_shared<RVGitRemoteCommand>(repository);
    command->setDeletesRemote(true);
    command->setRemoteNames(std::vector<std::string>{std::move(remoteName)});
    return command;
}

const RVGitErrorTable& RVGitRemoteCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitCreateRemoteAlreadyExistsError)
            .command("remote")
            .subCommand("add")
            .exitCode(3)
            .exitCode(128)
            .standardError("remote (.+) already exists", {RVGitRemoteNameErrorKey}),
        gitErrorRow(RVGitCreateRemoteInvalidNameError)
            .command("remote")
            .subCommand("add")
            .exitCode(128)
            .standardError("fatal: '(.+)' is not a valid remote name", {RVGitRemoteNameErrorKey}),
        gitErrorRow(RVGitRenameRemoteAlreadyExistsError)
            .command("remote")
            .subCommand("rename")
            .exitCode(3)
            .exitCode(128)
            .standardError("remote (.+) already exists", {RVGitRemoteNameErrorKey}),
        gitErrorRow(RVGitRenameRemoteInvalidNameError)
            .command("remote")
            .subCommand("rename")
            .exitCode(128)
            .standardError("fatal: '(.+)' is not a valid remote name", {RVGitRemoteNameErrorKey}),
    };
    return *table;
}

void RVGitRemoteCommand::gitCommandWillInitialize() {
    setGitCommand("remote");
    if (createsRemote_)
        setGitSubCommand("add");
    else if (renamesRemote_)
        setGitSubCommand("rename");
    else if (deletesRemote_)
        setGitSubCommand("rm");
    else
        addGitCommandOption("-v");
    if (remoteNames_)
        addGitCommandNames(*remoteNames_, createsRemote_   ? RVGitCreateRemoteInvalidNameError
                                          : renamesRemote_ ? RVGitRenameRemoteInvalidNameError
                                                           : RVGitRVGitGenericError);
    if (URL_)
        addGitCommandName(*URL_);
}

RVUserInfo RVGitRemoteCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (remoteNames_ && !remoteNames_->empty())
        userInfo.insert_or_assign(RVGitRemoteNameErrorKey, remoteNames_->front());
    return userInfo;
}

bool RVGitRemoteCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (remoteNames_ || URL_)
        return true;
    RVGitRemoteOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    remotes_ = parser.takeResults();
    return parsed;
}
