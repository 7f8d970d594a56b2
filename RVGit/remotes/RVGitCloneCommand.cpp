#include "RVGit/remotes/RVGitCloneCommand.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitTransfer.h"

RVGitCloneCommand::RVGitCloneCommand(std::string remoteURL, std::string localPath,
                                     const std::optional<RVOptions>& options)
    : RVGitCommand(RVGitBinary::defaultGitBinary()),
      remoteURL_(std::move(remoteURL)),
      localPath_(std::move(localPath)),
      bare_(optionIsSet(options, RVGitCloneOptionBare)),
      initializesSubmodules_(optionIsSet(options, RVGitCloneOptionInitializeSubmodules)) {
    setSupportsProgressOutput(true);
    if (const RVValue* depth = valueForOption(options, RVGitCloneOptionDepth))
        depth_ = depth->integerValue();
    if (const RVValue* filter = valueForOption(options, RVGitCloneOptionFilter))
        filter_ = filter->displayString();
    if (const RVValue* single = valueForOption(options, RVGitCloneOptionSingleBranch))
        singleBranch_ = single->boolValue();
}

std::shared_ptr<RVGitCloneCommand> RVGitCloneCommand::gitCloneCommandWithRemoteURL(
    std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitCloneCommand>(std::move(remoteURL), std::move(localPath), options);
}

void RVGitCloneCommand::gitCommandWillInitialize() {
    setGitCommand("clone");
    addGitCommandOption("--progress");
    addGitCommandName(remoteURL_);
    if (bare_)
        addGitCommandOption("--bare");
    if (initializesSubmodules_)
        addGitCommandOption("--recursive");
    if (depth_)
        addGitCommandOption("--depth=" + std::to_string(*depth_));
    if (filter_)
        addGitCommandOption("--filter=" + *filter_);
    if (singleBranch_)
        addGitCommandOption(*singleBranch_ ? "--single-branch" : "--no-single-branch");
    addPlaceOfClone(*this, localPath_);
}

RVUserInfo RVGitCloneCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRemoteURLErrorKey, remoteURL_);
    return userInfo;
}
