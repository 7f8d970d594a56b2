#include "RVGit/submodules/RVGitSubmodule.h"

#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"

namespace {

using Config = std::shared_ptr<RVGitSubmoduleConfig>;

std::optional<std::string> firstText(const Config& config, const Config& otherConfig,
                                     std::optional<std::string> (RVGitSubmoduleConfig::*field)()
                                         const) {
    auto text = config ? (*config.*field)() : std::nullopt;
    if (!text && otherConfig)
        text = (*otherConfig.*field)();
    return text;
}

template <typename Value>
Value firstValue(const Config& config, const Config& otherConfig,
                 Value (RVGitSubmoduleConfig::*field)() const) {
    const Value value = config ? (*config.*field)() : Value{};
    return value == Value{} && otherConfig ? (*otherConfig.*field)() : value;
}

}  // namespace

RVGitSubmodule::RVGitSubmodule(std::shared_ptr<RVGitRepository> repository, std::string name,
                               std::string path)
    : repository_(std::move(repository)), name_(std::move(name)), path_(std::move(path)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitSubmodule> RVGitSubmodule::submoduleWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string name, std::string path) {
    return std::make_shared<RVGitSubmodule>(std::move(repository), std::move(name),
                                            std::move(path));
}

std::optional<std::string> RVGitSubmodule::URL() const {
    return firstText(localConfig_, config_, &RVGitSubmoduleConfig::URL);
}

std::optional<std::string> RVGitSubmodule::upstreamBranch() const {
    return firstText(localConfig_, config_, &RVGitSubmoduleConfig::branch);
}

RVGitSubmoduleUpdateStrategy RVGitSubmodule::updateStrategy() const {
    return firstValue(localConfig_, config_, &RVGitSubmoduleConfig::updateStrategy);
}

RVGitSubmoduleStatusIgnoreMode RVGitSubmodule::statusIgnoreMode() const {
    return firstValue(localConfig_, config_, &RVGitSubmoduleConfig::statusIgnoreMode);
}

RVGitSubmoduleRecurseSubmodulesOption RVGitSubmodule::recurseSubmodules() const {
    return firstValue(localConfig_, config_, &RVGitSubmoduleConfig::recurseSubmodules);
}

bool RVGitSubmodule::isValid() const {
    return status_ != RVGitSubmoduleStatusNone &&
           status_ != RVGitSubmoduleStatusMissingConfiguration &&
           status_ != RVGitSubmoduleStatusMissingGitDirectory &&
           status_ != RVGitSubmoduleStatusMissingWorkingTreePath;
}

bool RVGitSubmodule::isRegistered() const {
    return status_ != RVGitSubmoduleStatusUninitialized || (localConfig_ && localConfig_->URL());
}

RVGitSubmoduleLayoutFormat RVGitSubmodule::layoutFormat() {
    const auto opened = submoduleRepository();
    if (!opened || !opened->isValid())
        return RVGitSubmoduleLayoutFormatUnknown;
    return opened->isDetachedWorkingTree() ? RVGitSubmoduleLayoutFormatLinked
                                           : RVGitSubmoduleLayoutFormatEmbedded;
}

std::shared_ptr<RVGitRepository> RVGitSubmodule::submoduleRepository() {
    if (status_ == RVGitSubmoduleStatusUninitialized)
        return nullptr;
    if (!submoduleRepository_)
        submoduleRepository_ = RVGitRepository::repositoryWithPath(
            RVGitSubmoduleHelper::absoluteWorkingDirectoryPathForSubmodulePath(path_, repository_));
    return submoduleRepository_;
}

std::shared_ptr<RVGitCommit> RVGitSubmodule::commit() {
    if (!commit_)
        commit_ =
            commitHash_ ? RVGitCommit::commitForCommitHash(*commitHash_, repository_) : nullptr;
    return *commit_;
}

std::shared_ptr<RVGitRemote> RVGitSubmodule::originRemote() {
    if (!originRemote_) {
        const auto opened = submoduleRepository();
        originRemote_ = opened ? RVGitRemote::originRemoteForRepository(opened) : nullptr;
    }
    return *originRemote_;
}

bool RVGitSubmodule::hasUpdatedCommits() const {
    return status_ == RVGitSubmoduleStatusUpdated && commitHash_ && indexCommitHash_;
}

std::uint64_t RVGitSubmodule::countCommits(const std::string& fromRevision,
                                           const std::string& toRevision) {
    const auto hashes =
        RVGitCommit::allCommitHashesFromRevision(fromRevision, toRevision, submoduleRepository(),
                                                 RVOptions{{RVGitLogOptionSortByTopoOrder, true}});
    return hashes ? hashes->size() : 0;
}

std::uint64_t RVGitSubmodule::updatedCommitsAhead() {
    if (!hasUpdatedCommits())
        return 0;
    if (!updatedCommitsAhead_)
        updatedCommitsAhead_ = countCommits(*commitHash_, *indexCommitHash_);
    return *updatedCommitsAhead_;
}

std::uint64_t RVGitSubmodule::updatedCommitsBehind() {
    if (!hasUpdatedCommits())
        return 0;
    if (!updatedCommitsBehind_)
        updatedCommitsBehind_ = countCommits(*indexCommitHash_, *commitHash_);
    return *updatedCommitsBehind_;
}

std::uint64_t RVGitSubmodule::numberOfDirtyChanges() {
    const auto mode = statusIgnoreMode();
    if (!dirty_ || !isValid() || mode == RVGitSubmoduleStatusIgnoreModeAll ||
        mode == RVGitSubmoduleStatusIgnoreModeDirty)
        return 0;
    const auto opened = submoduleRepository();
    if (!opened)
        return 0;
    if (!numberOfDirtyChanges_) {
        std::optional<RVOptions> options;
        if (mode == RVGitSubmoduleStatusIgnoreModeUntracked)
            options =
                RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, RVGitUntrackedFilesModeNo}};
        numberOfDirtyChanges_ =
            RVGitWorkingTreeEntry::countChangedWorkingTreeEntriesForRepository(opened, options);
    }
    return *numberOfDirtyChanges_;
}
