#include "RVGit/svn/RVGitSVNCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitTransfer.h"
#include "RVGit/remotes/RVGitURL.h"

namespace {

template <typename Command>
std::shared_ptr<Command> copyCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     std::shared_ptr<RVGitRemote> remote,
                                     std::optional<std::string> refName,
                                     std::optional<std::string> startingPoint) {
    auto command = std::make_shared<Command>(repository, std::move(remote));
    command->setRefName(std::move(refName));
    command->setStartingPoint(std::move(startingPoint));
    return command;
}

}  // namespace

RVGitSVNCommand::RVGitSVNCommand(const std::shared_ptr<RVGitRepository>& repository,
                                 std::shared_ptr<RVGitRemote> remote)
    : RVGitCommand(repository), remote_(std::move(remote)) {}

RVGitSVNCommand::RVGitSVNCommand() : RVGitCommand(RVGitBinary::defaultGitBinary()) {}

const RVGitErrorTable& RVGitSVNCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitSVNInstallationError).command("svn").standardError("@INC"),
        gitErrorRow(RVGitSVNCertificateError)
            .command("svn")
            .standardError(RVRegularExpression::escapedPatternForString(
                "(R)eject, accept (t)emporarily or accept (p)ermanently")),
        gitErrorRow(RVGitRemoteAuthError)
            .command("svn")
            .exitCode(1)
            .standardError("Unable to connect to a repository"),
        gitErrorRow(RVGitRemoteRepositoryNotFoundError)
            .command("svn")
            .exitCode(1)
            .standardError("No repository found"),
    };
    return *table;
}

void RVGitSVNCommand::gitCommandWillInitialize() {
    setGitCommand("svn");
    if (remote_ && remote_->upstreamURL())
        addUserNameOptionForURLString(*remote_->upstreamURL());
}

void RVGitSVNCommand::addUserNameOptionForURLString(const std::string& address) {
    const auto url = URLWithGitURLString(address);
    if (url && requiresAuthentication(*url) && !isSSHProtocol(*url))
        addGitCommandOption("--username=" + gitURLUsername(*url).value_or(""));
}

RVUserInfo RVGitSVNCommand::userInfoWithRemote(RVUserInfo userInfo) const {
    if (remote_)
        userInfo.insert_or_assign(RVGitRemoteNameErrorKey, remote_->name());
    if (remote_ && remote_->downstreamURL())
        userInfo.insert_or_assign(RVGitRemoteURLErrorKey, *remote_->downstreamURL());
    return userInfo;
}

RVGitSVNCloneCommand::RVGitSVNCloneCommand(std::string remoteURL, std::string localPath,
                                           const std::optional<RVOptions>& options)
    : remoteURL_(std::move(remoteURL)),
      localPath_(std::move(localPath)),
      usesStandardDirectoryLayout_(optionIsSet(options, RVGitSVNOptionStandardDirectoryLayout)) {
    readOption(options, RVGitSVNOptionTrunkDirectories, trunkDirectories_);
    readOption(options, RVGitSVNOptionBranchesDirectories, branchDirectories_);
    readOption(options, RVGitSVNOptionTagsDirectories, tagDirectories_);
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitSVNCloneCommand> RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
    std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitSVNCloneCommand>(std::move(remoteURL), std::move(localPath),
                                                  options);
}

void RVGitSVNCloneCommand::gitCommandWillInitialize() {
    RVGitSVNCommand::gitCommandWillInitialize();
    setGitSubCommand("clone");
    addGitCommandName(remoteURL_);
    addUserNameOptionForURLString(remoteURL_);
    addGitCommandOption("--prefix=svn/");
    if (usesStandardDirectoryLayout_)
        addGitCommandOption("--stdlayout");
    for (const std::string& path : trunkDirectories_)
        addGitCommandOption("--trunk=" + path);
    for (const std::string& path : branchDirectories_)
        addGitCommandOption("--branches=" + path);
    for (const std::string& path : tagDirectories_)
        addGitCommandOption("--tags=" + path);
    addPlaceOfClone(*this, localPath_);
}

RVUserInfo RVGitSVNCloneCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRemoteURLErrorKey, remoteURL_);
    return userInfo;
}

RVGitSVNFetchCommand::RVGitSVNFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                           std::shared_ptr<RVGitRemote> remote)
    : RVGitSVNCommand(repository, std::move(remote)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitSVNFetchCommand> RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote) {
    return std::make_shared<RVGitSVNFetchCommand>(repository, std::move(remote));
}

void RVGitSVNFetchCommand::gitCommandWillInitialize() {
    RVGitSVNCommand::gitCommandWillInitialize();
    setGitSubCommand("fetch");
    if (remote())
        addGitCommandName(remote()->name());
}

RVUserInfo RVGitSVNFetchCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    return userInfoWithRemote(std::move(userInfo));
}

std::shared_ptr<RVGitSVNRebaseCommand> RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote) {
    return std::make_shared<RVGitSVNRebaseCommand>(repository, std::move(remote));
}

void RVGitSVNRebaseCommand::gitCommandWillInitialize() {
    RVGitSVNCommand::gitCommandWillInitialize();
    setGitSubCommand("rebase");
}

RVUserInfo RVGitSVNRebaseCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    return userInfoWithRemote(std::move(userInfo));
}

RVGitSVNDCommitCommand::RVGitSVNDCommitCommand(const std::shared_ptr<RVGitRepository>& repository,
                                               std::shared_ptr<RVGitRemote> remote)
    : RVGitSVNCommand(repository, std::move(remote)) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitSVNDCommitCommand> RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote) {
    return gitSVNDCommitCommandWithRepository(repository, std::move(remote), std::nullopt);
}

std::shared_ptr<RVGitSVNDCommitCommand> RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::optional<std::string> revision) {
    auto command = std::make_shared<RVGitSVNDCommitCommand>(repository, std::move(remote));
    command->setRevision(std::move(revision));
    return command;
}

void RVGitSVNDCommitCommand::gitCommandWillInitialize() {
    RVGitSVNCommand::gitCommandWillInitialize();
    setGitSubCommand("dcommit");
    if (revision_)
        addGitCommandName(*revision_);
}

RVUserInfo RVGitSVNDCommitCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    return userInfo;
}

RVGitSVNCopyCommand::RVGitSVNCopyCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::shared_ptr<RVGitRemote> remote)
    : RVGitSVNCommand(repository, std::move(remote)) {
    setSupportsProgressOutput(true);
}

void RVGitSVNCopyCommand::initializeWithSubCommand(const char* subCommand) {
    RVGitSVNCommand::gitCommandWillInitialize();
    setGitSubCommand(subCommand);
    if (message_)
        addGitCommandOptions({"-m", *message_});
    if (destination_)
        addGitCommandOption("--destination=" + *destination_);
    if (createsParentDirectories_)
        addGitCommandOption("--parents");
    if (refName_)
        addGitCommandName(*refName_);
    if (startingPoint_)
        addGitCommandName(*startingPoint_);
}

std::shared_ptr<RVGitSVNBranchCommand> RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::optional<std::string> refName, std::optional<std::string> startingPoint) {
    return copyCommand<RVGitSVNBranchCommand>(repository, std::move(remote), std::move(refName),
                                              std::move(startingPoint));
}

void RVGitSVNBranchCommand::gitCommandWillInitialize() {
    initializeWithSubCommand("branch");
}

std::shared_ptr<RVGitSVNTagCommand> RVGitSVNTagCommand::gitSVNTagCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::optional<std::string> refName, std::optional<std::string> startingPoint) {
    return copyCommand<RVGitSVNTagCommand>(repository, std::move(remote), std::move(refName),
                                           std::move(startingPoint));
}

void RVGitSVNTagCommand::gitCommandWillInitialize() {
    initializeWithSubCommand("tag");
}
