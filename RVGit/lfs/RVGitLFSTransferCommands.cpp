#include "RVGit/lfs/RVGitLFSTransferCommands.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitTransfer.h"
#include "RVGit/repository/RVGitRefSpec.h"

RVGitLFSCloneCommand::RVGitLFSCloneCommand(std::string remoteURL, std::string localPath,
                                           const std::optional<RVOptions>& options)
    : RVGitLFSCommand(RVGitBinary::defaultGitBinary()),
      remoteURL_(std::move(remoteURL)),
      localPath_(std::move(localPath)),
      bare_(optionIsSet(options, RVGitCloneOptionBare)),
      initializesSubmodules_(optionIsSet(options, RVGitCloneOptionInitializeSubmodules)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitLFSCloneCommand> RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL(
    std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitLFSCloneCommand>(std::move(remoteURL), std::move(localPath),
                                                  options);
}

void RVGitLFSCloneCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("clone");
    addGitCommandOption("--progress");
    addGitCommandName(remoteURL_);
    if (bare_)
        addGitCommandOption("--bare");
    if (initializesSubmodules_)
        addGitCommandOption("--recursive");
    addPlaceOfClone(*this, localPath_);
}

RVUserInfo RVGitLFSCloneCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRemoteURLErrorKey, remoteURL_);
    return userInfo;
}

RVGitLFSFetchCommand::RVGitLFSFetchCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitLFSCommand(repository) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitLFSFetchCommand> RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSFetchCommand>(repository);
}

void RVGitLFSFetchCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("fetch");
    if (prunesOldObjects_)
        addGitCommandOption("--prune");
    if (fetchMode_ == RVGitLFSFetchModeAll)
        addGitCommandOption("--all");
    else if (fetchMode_ == RVGitLFSFetchModeRecent)
        addGitCommandOption("--recent");
    if (remote_ && refSpec_) {
        addGitCommandName(remote_->name());
        addGitCommandName(refSpec_->stringValue());
    }
}

RVGitLFSPullCommand::RVGitLFSPullCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::shared_ptr<RVGitRemote> remote)
    : RVGitLFSCommand(repository), remote_(std::move(remote)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitLFSPullCommand> RVGitLFSPullCommand::gitLFSPullCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote) {
    return std::make_shared<RVGitLFSPullCommand>(repository, std::move(remote));
}

std::string RVGitLFSPullCommand::remoteName() const {
    return nameOfRemote(remote_);
}

void RVGitLFSPullCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("pull");
    addGitCommandName(remoteName());
}

RVGitLFSPushCommand::RVGitLFSPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::shared_ptr<RVGitRemote> remote)
    : RVGitLFSCommand(repository), remote_(std::move(remote)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitLFSPushCommand> RVGitLFSPushCommand::gitLFSPushCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote) {
    return std::make_shared<RVGitLFSPushCommand>(repository, std::move(remote));
}

std::string RVGitLFSPushCommand::remoteName() const {
    return nameOfRemote(remote_);
}

void RVGitLFSPushCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("push");
    addGitCommandName(remoteName());
    for (const auto& refSpec : refSpecs_) {
        const std::string ref = refSpec->localRefName().value_or("HEAD");
        if (!ref.empty())
            addGitCommandName(ref);
    }
}
