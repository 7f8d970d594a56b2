#include "RVGit/remotes/RVGitRemoteBranch.h"

#include <utility>

#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitBranchDates.h"
#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"
#include "RVGit/remotes/RVGitParallelReads.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranchToRemote.h"

RVGitRemoteBranch::RVGitRemoteBranch(std::shared_ptr<RVGitRepository> repository,
                                     std::shared_ptr<RVGitRef> ref,
                                     std::optional<std::string> remoteName, bool isHead)
    : repository_(std::move(repository)),
      ref_(std::move(ref)),
      remoteName_(std::move(remoteName)),
      isHead_(isHead) {
    requireParameter(repository_ != nullptr, "repository != nil");
    requireParameter(ref_ != nullptr, "ref != nil");
}

std::shared_ptr<RVGitRemoteBranch> RVGitRemoteBranch::remoteBranchWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
    std::optional<std::string> remoteName, bool isHead) {
    return std::make_shared<RVGitRemoteBranch>(std::move(repository), std::move(ref),
                                               std::move(remoteName), isHead);
}

RVGitRemoteBranchCommands::RVGitRemoteBranchCommands(
    const std::shared_ptr<RVGitRepository>& repository)
    : branches(RVGitBranchCommand::gitBranchCommandWithRepository(repository)),
      dates(RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository)) {
    branches->setShowsRemoteBranches(true);
    dates->setOutputParserClass<RVGitForEachRefRemoteBranchOutputParser>();
    dates->setPattern("refs/remotes");
    dates->setFormat(RVGitForEachRefBranchFormat);
}

std::optional<RVGitRemoteBranch::List> RVGitRemoteBranchCommands::finish(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    const RVGitRemoteBranchToRemote toRemote(repository);
    // Whose configuration was not read whole would be taken for branches of no remote.
    if (watch.isCancelled(error) || !RVGitParallelReads::finish(*branches, error) ||
        !RVGitParallelReads::finish(*dates, error))
        return std::nullopt;
    const RVGitBranchDates dateByName(
        dates->result<RVGitForEachRefRemoteBranchOutputParserResultItem>());
    RVGitRemoteBranch::List remoteBranches;
    auto items = branches->takeBranches();
    remoteBranches.reserve(items.size());
    for (auto& item : items) {
        auto remoteName = toRemote.remoteNameForRemoteBranch(*item.fullRefName);
        if (!remoteName)
            continue;
        const auto date = dateByName.dateFor(*item.fullRefName);
        auto ref = RVGitRef::refWithRepository(repository, *std::move(item.fullRefName),
                                               std::move(item.commitHash));
        remoteBranches.push_back(RVGitRemoteBranch::remoteBranchWithRepository(
            repository, std::move(ref), std::move(remoteName), item.isHead));
        remoteBranches.back()->setCommitDate(date);
    }
    return remoteBranches;
}

std::optional<RVGitRemoteBranch::List> RVGitRemoteBranch::allRemoteBranchesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const RVGitRemoteBranchCommands commands(repository);
    const RVGitParallelReads reads({commands.branches, commands.dates});
    return commands.finish(repository, error);
}

std::shared_ptr<RVGitRemoteBranch> RVGitRemoteBranch::remoteBranchForRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto remoteBranches = allRemoteBranchesForRepository(repository, error);
    if (!remoteBranches)
        return nullptr;
    const auto found =
        RVFindUnicodeName(remoteBranches->begin(), remoteBranches->end(),
                          RVGitRef::makeFullRefName(refName, RVGitRefTypeRemoteBranch),
                          [](const auto& remoteBranch) { return *remoteBranch->fullRefName(); });
    if (found != remoteBranches->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

void RVGitRemoteBranch::setRef(std::shared_ptr<RVGitRef> ref) {
    requireParameter(ref != nullptr, "ref != nil");
    ref_ = std::move(ref);
    fieldsDidChange({"ref", "fullRefName", "refName", "commitHash", "commit"});
}

std::optional<std::string> RVGitRemoteBranch::fullRefName() const {
    return ref_->fullRefName();
}
std::string RVGitRemoteBranch::refName() const {
    return ref_->refName();
}
std::optional<std::string> RVGitRemoteBranch::commitHash() const {
    return ref_->commitHash();
}
std::shared_ptr<RVGitCommit> RVGitRemoteBranch::commit() {
    return ref_->commit();
}

std::shared_ptr<RVGitRemote> RVGitRemoteBranch::remote(RVErrorPlace error) const {
    if (!remoteName_) {
        clearErrorPlace(error);
        return nullptr;
    }
    return RVGitRemote::remoteForName(*remoteName_, repository_, error);
}
