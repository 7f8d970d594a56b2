#include "RVGit/remotes/RVGitFetchCommand.h"

#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitTransfer.h"
#include "RVGit/repository/RVGitRefSpec.h"

RVGitFetchCommand::RVGitFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     std::shared_ptr<RVGitRemote> remote,
                                     std::shared_ptr<RVGitRefSpec> refSpec,
                                     const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      remote_(std::move(remote)),
      refSpec_(std::move(refSpec)),
      prunesObsoleteBranches_(optionIsSet(options, RVGitFetchOptionPruneObsoleteRemoteBranches)),
      forcesTagsDownload_(optionIsSet(options, RVGitFetchOptionForceTagsDownload)),
      recursesSubmodules_(optionIsSet(options, RVGitFetchOptionRecurseSubmodules)),
      unshallows_(optionIsSet(options, RVGitFetchOptionUnshallow)) {
    setSupportsProgressOutput(true);
    if (const RVValue* depth = valueForOption(options, RVGitFetchOptionDepth))
        depth_ = depth->integerValue();
}

RVGitFetchCommand::RVGitFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     std::optional<std::string> remoteURLString,
                                     std::shared_ptr<RVGitRefSpec> refSpec)
    : RVGitCommand(repository),
      remoteURLString_(std::move(remoteURLString)),
      refSpec_(std::move(refSpec)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitFetchCommand> RVGitFetchCommand::gitFetchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitFetchCommand>(repository, std::move(remote), std::move(refSpec),
                                               options);
}

std::shared_ptr<RVGitFetchCommand> RVGitFetchCommand::gitFetchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> remoteURLString,
    std::shared_ptr<RVGitRefSpec> refSpec) {
    return std::make_shared<RVGitFetchCommand>(repository, std::move(remoteURLString),
                                               std::move(refSpec));
}

std::string RVGitFetchCommand::remoteName() const {
    return nameOfRemote(remote_);
}

void RVGitFetchCommand::gitCommandWillInitialize() {
    setGitCommand("fetch");
    addGitCommandOptions({"-v", "--progress"});
    addGitCommandOptionsThatAreSet({{prunesObsoleteBranches_, "--prune"},
                                    {forcesTagsDownload_, "--tags"},
                                    {recursesSubmodules_, "--recurse-submodules"}});
    if (depth_)
        addGitCommandOption("--depth=" + std::to_string(*depth_));
    if (unshallows_)
        addGitCommandOption("--unshallow");
    if (remote_)
        addGitCommandName(remoteName());
    else if (remoteURLString_)
        addGitCommandName(*remoteURLString_);
    if (refSpec_)
        addGitCommandName(refSpec_->stringValue());
}

RVUserInfo RVGitFetchCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    return userInfoOfFetch(std::move(userInfo), remote_, refSpec_);
}
