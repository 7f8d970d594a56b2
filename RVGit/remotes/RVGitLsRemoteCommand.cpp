#include "RVGit/remotes/RVGitLsRemoteCommand.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitLsRemoteCommand::RVGitLsRemoteCommand(std::string remoteURL,
                                           const std::optional<RVOptions>& options)
    : RVGitCommand(RVGitBinary::defaultGitBinary()),
      remoteURL_(std::move(remoteURL)),
      showsHeads_(optionIsSet(options, RVGitLsRemoteOptionHeads)),
      showsTags_(optionIsSet(options, RVGitLsRemoteOptionTags)) {}

std::shared_ptr<RVGitLsRemoteCommand> RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(
    std::string remoteURL, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitLsRemoteCommand>(std::move(remoteURL), options);
}

bool RVGitLsRemoteCommand::canConnectToRemoteAtURL(const std::string& remoteURL,
                                                   RVErrorPlace error) {
    return gitLsRemoteCommandWithRemoteURL(remoteURL, RVOptions{{RVGitLsRemoteOptionHeads, true}})
        ->run(error);
}

void RVGitLsRemoteCommand::gitCommandWillInitialize() {
    setGitCommand("ls-remote");
    addGitCommandOptionsThatAreSet({{showsHeads_, "--heads"}, {showsTags_, "--tags"}});
    addGitCommandName(remoteURL_);
}

bool RVGitLsRemoteCommand::gitCommandShouldHandleError(const RVError& error) {
    // No row gives this code to ls-remote today; if one ever does, no refs are no failure.
    return error.code() != RVGitNoRefsError;
}

RVUserInfo RVGitLsRemoteCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRemoteURLErrorKey, remoteURL_);
    return userInfo;
}

bool RVGitLsRemoteCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitRefOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    refs_ = parser.takeResults();
    return parsed;
}
