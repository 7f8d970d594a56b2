#include "RVGit/remotes/RVGitBranch.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitBranchDates.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"
#include "RVGit/remotes/RVGitParallelReads.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/remotes/RVGitRemoteConfig.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"

struct RVGitBranch::Details {
    std::optional<std::string> trackedRemoteName;
    std::optional<std::vector<std::string>> trackedRefNames;
    std::optional<std::string> mergeOptions;
    std::optional<std::string> detachedHeadCommitHash;
    std::shared_ptr<RVGitCommit> detachedHeadCommit;
    std::optional<std::string> trackedSVNRemoteName;
    std::optional<std::string> trackedSVNRefName;
    bool knowsTrackedSVNRemoteName = false;
    bool knowsTrackedSVNRefName = false;
};

namespace {

constexpr char detachedHeadName[] = "(no branch)";

template <typename Value>
const std::optional<Value>& absent() {
    static const RVNeverDestroyed<std::optional<Value>> none;
    return *none;
}

std::string configKey(const std::string& refName, const char* key) {
    return RVGitMakeBranchConfigKey(RVGitMakeShortRefName(refName, RVGitRefTypeBranch), key);
}

void setValuesWithConfigOptions(RVGitBranch& branch, const RVOptions& section) {
    branch.setTrackedRemoteName(RVGitFirstConfigValue(section, RVGitBranchRemoteConfigKey));
    branch.setTrackedRefNames(RVGitAllConfigValues(section, RVGitBranchMergeConfigKey)
                                  .value_or(std::vector<std::string>()));
    if (auto mergeOptions = RVGitFirstConfigValue(section, RVGitBranchMergeOptionsConfigKey))
        branch.setMergeOptions(std::move(mergeOptions));
    branch.setUsesRebaseForMerge(RVGitFirstConfigValue(section, RVGitBranchRebaseConfigKey) ==
                                 "true");
}

std::shared_ptr<RVGitForEachRefCommand> trackingStatesCommand(
    const std::shared_ptr<RVGitRepository>& repository, std::string pattern) {
    auto command = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository);
    const auto& binary = *command->gitBinary();
    command->setOutputParserClass<RVGitBranchTrackingStateOutputParser>();
    command->setPattern(std::move(pattern));
    command->setFormat(RVGitBranchTrackingStateOutputParser::format(
        binary.isVersionAtLeast("2.13.0"), binary.isVersionAtLeast("2.23.0")));
    return command;
}

}  // namespace

RVGitBranch::RVGitBranch(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref)
    : repository_(std::move(repository)), ref_(std::move(ref)) {
    requireParameter(repository_ != nullptr, "repository != nil");
}

RVGitBranch::~RVGitBranch() = default;

RVGitBranch::Details& RVGitBranch::details() {
    if (!details_)
        details_ = std::make_unique<Details>();
    return *details_;
}

std::shared_ptr<RVGitBranch> RVGitBranch::branchWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref, bool isHead,
    std::uint64_t commitsAhead, std::uint64_t commitsBehind) {
    auto branch = std::make_shared<RVGitBranch>(std::move(repository), std::move(ref));
    branch->isHead_ = isHead;
    branch->commitsAhead_ = commitsAhead;
    branch->commitsBehind_ = commitsBehind;
    return branch;
}

std::shared_ptr<RVGitBranch> RVGitBranch::detachedBranchWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::optional<std::string> commitHash) {
    auto branch = std::make_shared<RVGitBranch>(std::move(repository), nullptr);
    branch->isHead_ = true;
    branch->details().detachedHeadCommitHash = std::move(commitHash);
    return branch;
}

bool RVGitBranch::isValidBranchName(const std::optional<std::string>& name) {
    return RVGitRef::isValidRefName(name);
}

bool RVGitBranch::isInitialCommitOnHeadBranchForRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    requireParameter(repository != nullptr, "repository");
    if (repository->isEmpty())
        return true;
    auto command = RVGitRevListCommand::gitRevListCommandWithRepository(
        repository, RVOptions{{RVGitRevListOptionMaxCount, 1}});
    command->setRevisions({RVGitHEADRevision});
    return !command->run();
}

std::optional<RVGitBranch::List> RVGitBranch::allBranchesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto listing = RVGitBranchCommand::gitBranchCommandWithRepository(repository);
    const auto dates = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository);
    dates->setOutputParserClass<RVGitForEachRefBranchOutputParser>();
    dates->setPattern("refs/heads");
    dates->setFormat(RVGitForEachRefBranchFormat);
    const RVGitParallelReads reads({listing, dates});

    std::optional<RVError> configFailure;
    const auto sections = RVGitConfigSections(repository, "^branch.*", &configFailure);
    if (!RVGitParallelReads::finish(*listing, error))
        return std::nullopt;
    if (!sections) {
        if (configFailure)
            fillErrorPlace(error, *std::move(configFailure));
        else
            clearErrorPlace(error);
        return std::nullopt;
    }
    if (!RVGitParallelReads::finish(*dates, error))
        return std::nullopt;
    const RVGitBranchDates dateByName(dates->result<RVGitForEachRefBranchOutputParserResultItem>());

    List branches;
    auto items = listing->takeBranches();
    branches.reserve(items.size() + 1);
    bool hasHead = false;
    for (auto& item : items) {
        const auto section =
            item.fullRefName
                ? sections->find(RVGitMakeShortRefName(*item.fullRefName, RVGitRefTypeBranch))
                : sections->end();
        std::shared_ptr<RVGitBranch> branch;
        if (!item.fullRefName || (item.isHead && repository->isHEADBranchDetached())) {
            branch = detachedBranchWithRepository(repository, std::move(item.commitHash));
        } else {
            const auto date = dateByName.dateFor(*item.fullRefName);
            auto ref = RVGitRef::refWithRepository(repository, *std::move(item.fullRefName),
                                                   std::move(item.commitHash));
            branch = branchWithRepository(repository, std::move(ref), item.isHead, item.ahead,
                                          item.behind);
            branch->setCommitDate(date);
        }
        if (section != sections->end())
            setValuesWithConfigOptions(*branch, section->second);
        hasHead = hasHead || branch->isHead();
        branches.push_back(std::move(branch));
    }
    if (!hasHead) {
        std::optional<RVError> failure;
        auto ref = RVGitRef::initialRefFromHeadFileForRepository(repository, &failure);
        if (!ref && failure) {
            fillErrorPlace(error, *std::move(failure));
            return std::nullopt;
        }
        branches.push_back(branchWithRepository(repository, std::move(ref), true, 0, 0));
    }
    return branches;
}

std::shared_ptr<RVGitBranch> RVGitBranch::currentHeadBranchForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto branches = allBranchesForRepository(repository, error);
    if (!branches)
        return nullptr;
    for (const auto& branch : *branches)
        if (branch->isHead())
            return branch;
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitBranch> RVGitBranch::branchForRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto branches = allBranchesForRepository(repository, error);
    if (!branches)
        return nullptr;
    const auto found = RVFindUnicodeName(
        branches->begin(), branches->end(), RVGitRef::makeFullRefName(refName, RVGitRefTypeBranch),
        [](const auto& branch) { return branch->fullRefName().value_or(std::string()); });
    if (found != branches->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

std::optional<std::vector<RVGitBranchTrackingState>>
RVGitBranch::allBranchTrackingStatesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto command = trackingStatesCommand(repository, "refs/heads");
    if (!RVGitParallelReads::run(*command, error))
        return std::nullopt;
    return command->takeResult<RVGitBranchTrackingState>();
}

std::optional<RVGitBranchTrackingState> RVGitBranch::trackingStateForBranchWithRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const std::string fullRefName = RVGitRef::makeFullRefName(refName, RVGitRefTypeBranch);
    const auto command = trackingStatesCommand(repository, fullRefName);
    if (!RVGitParallelReads::run(*command, error))
        return std::nullopt;
    for (auto& state : command->takeResult<RVGitBranchTrackingState>())
        if (state.fullRefName == fullRefName)
            return std::move(state);
    clearErrorPlace(error);
    return std::nullopt;
}

std::shared_ptr<RVGitBranch> RVGitBranch::createBranchWithRefName(
    const std::string& refName, const std::optional<std::string>& revision,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    // Where it was cancelled, one of that name is an older one.
    const RVGitCancellationWatch watch;
    if (!RVGitBranchCommand::gitCreateBranchCommandWithRepository(repository, refName, revision)
             ->run(error) ||
        watch.isCancelled(error))
        return nullptr;
    return branchForRefName(refName, repository, error);
}

std::shared_ptr<RVGitBranch> RVGitBranch::createTrackingBranchWithRefName(
    const std::string& refName, const std::optional<std::string>& trackedRefName,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    if (!RVGitBranchCommand::gitCreateTrackingBranchCommandWithRepository(repository, refName,
                                                                          trackedRefName)
             ->run(error) ||
        watch.isCancelled(error))
        return nullptr;
    return branchForRefName(refName, repository, error);
}

bool RVGitBranch::renameBranchWithRefName(const std::string& refName, const std::string& newRefName,
                                          const std::shared_ptr<RVGitRepository>& repository,
                                          bool forcedRenaming, RVErrorPlace error) {
    return RVGitBranchCommand::gitRenameBranchCommandWithRepository(repository, refName, newRefName,
                                                                    forcedRenaming)
        ->run(error);
}

bool RVGitBranch::deleteBranchWithRefName(const std::string& refName,
                                          const std::shared_ptr<RVGitRepository>& repository,
                                          bool forcedDeletion, RVErrorPlace error) {
    return deleteBranchesWithRefNames({refName}, repository, forcedDeletion, error);
}

bool RVGitBranch::deleteBranchesWithRefNames(const std::vector<std::string>& refNames,
                                             const std::shared_ptr<RVGitRepository>& repository,
                                             bool forcedDeletion, RVErrorPlace error) {
    return RVGitBranchCommand::gitDeleteBranchCommandWithRepository(repository, refNames,
                                                                    forcedDeletion)
        ->run(error);
}

bool RVGitBranch::addTrackingForBranchWithRefName(
    const std::string& refName, const std::string& trackedRefName,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return RVGitBranchCommand::gitAddTrackingBranchCommandWithRepository(repository, refName,
                                                                         trackedRefName)
        ->run(error);
}

bool RVGitBranch::removeTrackingForBranchWithRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto config = repository->config();
    const std::string section =
        RVGitMakeBranchConfigSection(RVGitMakeShortRefName(refName, RVGitRefTypeBranch));
    const RVGitCancellationWatch watch;
    const bool exists = config->containsSectionWithName(section);
    return !watch.isCancelled(error) && (!exists || config->removeSection(section, error));
}

bool RVGitBranch::setRebaseOption(bool usesRebase, const std::string& refName,
                                  const std::shared_ptr<RVGitRepository>& repository,
                                  RVErrorPlace error) {
    return repository->config()->setBool(usesRebase, configKey(refName, RVGitBranchRebaseConfigKey),
                                         error);
}

bool RVGitBranch::unsetRebaseOptionForBranchWithRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return repository->config()->unsetConfigKey(configKey(refName, RVGitBranchRebaseConfigKey),
                                                error);
}

bool RVGitBranch::setMergeOptions(const std::string& mergeOptions, const std::string& refName,
                                  const std::shared_ptr<RVGitRepository>& repository,
                                  RVErrorPlace error) {
    return repository->config()->setValue(
        mergeOptions, configKey(refName, RVGitBranchMergeOptionsConfigKey), error);
}

bool RVGitBranch::unsetMergeOptionsForBranchWithRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return repository->config()->unsetConfigKey(
        configKey(refName, RVGitBranchMergeOptionsConfigKey), error);
}

void RVGitBranch::setRef(std::shared_ptr<RVGitRef> ref) {
    ref_ = std::move(ref);
    fieldsDidChange(
        {"ref", "fullRefName", "refName", "commitHash", "commit", "isDetachedHead", "isOrphaned"});
}

const std::optional<std::string>& RVGitBranch::trackedRemoteName() const {
    return details_ ? details_->trackedRemoteName : absent<std::string>();
}

void RVGitBranch::setTrackedRemoteName(std::optional<std::string> name) {
    details().trackedRemoteName = std::move(name);
    fieldsDidChange({"trackedRemoteName", "isTracking"});
}

const std::optional<std::vector<std::string>>& RVGitBranch::trackedRefNames() const {
    return details_ ? details_->trackedRefNames : absent<std::vector<std::string>>();
}

void RVGitBranch::setTrackedRefNames(std::optional<std::vector<std::string>> names) {
    details().trackedRefNames = std::move(names);
    fieldsDidChange({"trackedRefNames", "isTracking"});
}

const std::optional<std::string>& RVGitBranch::mergeOptions() const {
    return details_ ? details_->mergeOptions : absent<std::string>();
}

void RVGitBranch::setMergeOptions(std::optional<std::string> mergeOptions) {
    details().mergeOptions = std::move(mergeOptions);
}

void RVGitBranch::setHead(bool isHead) {
    isHead_ = isHead;
    fieldsDidChange({"isHead", "isOrphaned"});
}

const std::optional<std::string>& RVGitBranch::detachedHeadCommitHash() const {
    return details_ ? details_->detachedHeadCommitHash : absent<std::string>();
}

void RVGitBranch::setDetachedHeadCommitHash(std::optional<std::string> hash) {
    details().detachedHeadCommitHash = std::move(hash);
}

bool RVGitBranch::isOrphaned() const {
    return isHead_ && ref_ && !ref_->commitHash();
}

bool RVGitBranch::isTracking() const {
    return trackedRemoteName() && trackedRefNames();
}

std::optional<std::string> RVGitBranch::fullRefName() const {
    return ref_ ? ref_->fullRefName() : std::nullopt;
}

std::string RVGitBranch::refName() const {
    return ref_ ? ref_->refName() : detachedHeadName;
}

std::optional<std::string> RVGitBranch::commitHash() const {
    if (ref_)
        if (auto hash = ref_->commitHash())
            return hash;
    return detachedHeadCommitHash();
}

std::shared_ptr<RVGitCommit> RVGitBranch::commit() {
    if (ref_)
        return ref_->commit();
    const auto hash = commitHash();
    if (!hash)
        return nullptr;
    auto& commit = details().detachedHeadCommit;
    if (!commit)
        commit = RVGitCommit::commitForCommitHash(*hash, repository_);
    return commit;
}

std::shared_ptr<RVGitRemote> RVGitBranch::trackedRemote(RVErrorPlace error) const {
    if (const auto& name = trackedRemoteName())
        return RVGitRemote::remoteForName(*name, repository_, error);
    clearErrorPlace(error);
    return nullptr;
}

std::optional<std::vector<std::shared_ptr<RVGitRef>>> RVGitBranch::trackedRefs(
    RVErrorPlace error) const {
    const auto& names = trackedRefNames();
    std::vector<std::shared_ptr<RVGitRef>> trackedRefs;
    if (!names) {
        clearErrorPlace(error);
        return std::nullopt;
    }
    if (names->empty())
        return trackedRefs;
    const auto refs = RVGitRef::allRefsForRepository(repository_, std::nullopt, error);
    if (!refs)
        return std::nullopt;
    for (const std::string& name : *names) {
        const std::string fullRefName =
            trackedRemoteName() == RVGitLocalRemoteName
                ? name
                : stringByReplacingOccurrences(
                      name, "refs/heads/",
                      "refs/remotes/" + trackedRemoteName().value_or("") + "/");
        const auto found = RVFindUnicodeName(refs->begin(), refs->end(), fullRefName,
                                             [](const auto& ref) { return *ref->fullRefName(); });
        if (found != refs->end())
            trackedRefs.push_back(*found);
    }
    return trackedRefs;
}

bool RVGitBranch::isTrackingSVNBranch() {
    return repository_->isGitSVNRepository() && trackedSVNRemote();
}

std::shared_ptr<RVGitCommit> RVGitBranch::lastSVNCommit(RVErrorPlace error) const {
    clearErrorPlace(error);
    const auto fullRefName = this->fullRefName();
    if (!fullRefName || !repository_->isGitSVNRepository())
        return nullptr;
    const RVOptions options = {
        {RVGitLogOptionSearchPatterns, std::vector<std::string>{"^git-svn-id: "}},
        {RVGitLogOptionFirstParent, true},
        {RVGitLogOptionLimit, 1}};
    const auto commits =
        RVGitCommit::allCommitsForRevisions({*fullRefName}, {}, repository_, options);
    return commits && !commits->empty() ? commits->front() : nullptr;
}

std::shared_ptr<RVGitRemote> RVGitBranch::trackedSVNRemote(RVErrorPlace error) const {
    const auto commit = lastSVNCommit(error);
    const auto uuid = commit ? commit->SVNRepositoryUUID() : std::nullopt;
    return uuid ? RVGitRemote::SVNRemoteForUUID(*uuid, repository_, error) : nullptr;
}

const std::optional<std::string>& RVGitBranch::trackedSVNRemoteName() {
    Details& kept = details();
    if (!std::exchange(kept.knowsTrackedSVNRemoteName, true))
        if (const auto remote = trackedSVNRemote())
            kept.trackedSVNRemoteName = remote->name();
    return kept.trackedSVNRemoteName;
}

const std::optional<std::string>& RVGitBranch::trackedSVNRefName() {
    Details& kept = details();
    if (std::exchange(kept.knowsTrackedSVNRefName, true))
        return kept.trackedSVNRefName;
    const auto lastCommit = lastSVNCommit();
    const auto remote = trackedSVNRemote();
    if (!lastCommit || !remote || !remote->branches())
        return kept.trackedSVNRefName;
    for (const auto& remoteBranch : *remote->branches()) {
        const auto commit = remoteBranch->commit();
        if (commit && commit->SVNRepositoryURL() == lastCommit->SVNRepositoryURL())
            kept.trackedSVNRefName = remoteBranch->fullRefName();
    }
    return kept.trackedSVNRefName;
}

std::shared_ptr<RVGitRef> RVGitBranch::trackedSVNRef(RVErrorPlace error) {
    if (const auto& name = trackedSVNRefName())
        return RVGitRef::refForFullRefName(*name, repository_, std::nullopt, error);
    clearErrorPlace(error);
    return nullptr;
}
