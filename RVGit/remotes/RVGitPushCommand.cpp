#include "RVGit/remotes/RVGitPushCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitTransfer.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefSpec.h"

namespace {

std::optional<RVGitPushCommand::RefSpecs> listOf(std::shared_ptr<RVGitRefSpec> refSpec) {
    if (!refSpec)
        return std::nullopt;
    return RVGitPushCommand::RefSpecs{std::move(refSpec)};
}

std::shared_ptr<RVGitPushCommand> deletingCommand(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    const std::string& refName, RVGitRefType refType) {
    return RVGitPushCommand::gitPushCommandWithRepository(
        repository, std::move(remote),
        RVGitRefSpec::deleteRefSpecWithRemoteRefName(RVGitMakeFullRefName(refName, refType)),
        RVOptions{{RVGitPushOptionDeleteRef, true}});
}

}  // namespace

RVGitPushCommand::RVGitPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   std::shared_ptr<RVGitRemote> remote,
                                   std::optional<RefSpecs> refSpecs,
                                   const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      remote_(std::move(remote)),
      refSpecs_(std::move(refSpecs)),
      pushesTags_(optionIsSet(options, RVGitPushOptionPushTags)),
      forcesPush_(optionIsSet(options, RVGitPushOptionForcePush)),
      forcesPushWithLease_(optionIsSet(options, RVGitPushOptionForcePushWithLease)),
      deletesRef_(optionIsSet(options, RVGitPushOptionDeleteRef)),
      noVerify_(optionIsSet(options, RVGitPushOptionNoVerify)) {
    setSupportsProgressOutput(true);
}

RVGitPushCommand::RVGitPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   std::shared_ptr<RVGitRemote> remote,
                                   std::shared_ptr<RVGitRefSpec> refSpec,
                                   const std::optional<RVOptions>& options)
    : RVGitPushCommand(repository, std::move(remote), listOf(std::move(refSpec)), options) {}

std::shared_ptr<RVGitPushCommand> RVGitPushCommand::gitPushCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitPushCommand>(repository, std::move(remote), std::move(refSpec),
                                              options);
}

std::shared_ptr<RVGitPushCommand> RVGitPushCommand::gitPushCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::optional<RefSpecs> refSpecs, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitPushCommand>(repository, std::move(remote), std::move(refSpecs),
                                              options);
}

std::shared_ptr<RVGitPushCommand> RVGitPushCommand::gitPushCommandWithRepositoryDeletingBranch(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    const std::string& refName) {
    return deletingCommand(repository, std::move(remote), refName, RVGitRefTypeBranch);
}

std::shared_ptr<RVGitPushCommand> RVGitPushCommand::gitPushCommandWithRepositoryDeletingTag(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    const std::string& refName) {
    return deletingCommand(repository, std::move(remote), refName, RVGitRefTypeTag);
}

std::string RVGitPushCommand::remoteName() const {
    return nameOfRemote(remote_);
}

const RVGitRefSpec* RVGitPushCommand::firstRefSpec() const {
    return refSpecs_ && !refSpecs_->empty() ? refSpecs_->front().get() : nullptr;
}

const RVGitErrorTable& RVGitPushCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitRemotePushNoUpstreamBranchError)
            .command("push")
            .exitCode(128)
            .standardOutput("has no upstream branch"),
        gitErrorRow(RVGitRemotePushRejectedError)
            .command("push")
            .exitCode(1)
            .standardError(R"(\[rejected\])", {RVGitRevisionErrorKey}),
    };
    return *table;
}

void RVGitPushCommand::gitCommandWillInitialize() {
    setGitCommand("push");
    addGitCommandOptions({"-v", "--progress"});
    addGitCommandOptionsThatAreSet(
        {{noVerify_, "--no-verify"},
         {pushesTags_, "--tags"},
         {forcesPush_ && !deletesRef_ && !forcesPushWithLease_, "--force"}});
    const RVGitRefSpec* first = firstRefSpec();
    if (forcesPushWithLease_ && !forcesPush_)
        addGitCommandOption(
            "--force-with-lease=" + (first ? first->remoteRefName().value_or("") : std::string()) +
            ":" + leaseValueCommitHash_.value_or(""));
    addGitCommandName(remoteName());
    if (deletesRef_ && refSpecs_ && refSpecs_->size() == 1) {
        addGitCommandOption("--delete");
        if (first->remoteRefName())
            addGitCommandName(*first->remoteRefName());
    } else if (refSpecs_) {
        for (const auto& refSpec : *refSpecs_)
            addGitCommandName(refSpec->stringValue());
    }
}

RVUserInfo RVGitPushCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRemoteNameErrorKey, remoteName());
    const RVGitRefSpec* first = firstRefSpec();
    if (first && first->localRefName())
        userInfo.insert_or_assign(
            RVGitRevisionErrorKey,
            RVGitRef::makeRefName(*first->localRefName(), RVGitRefTypeBranch));
    if (remote_ && remote_->upstreamURL())
        userInfo.insert_or_assign(RVGitRemoteURLErrorKey, *remote_->upstreamURL());
    return userInfo;
}
