#include "RVGit/remotes/RVGitRemote.h"

#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitParallelReads.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/remotes/RVGitRemoteCommand.h"
#include "RVGit/remotes/RVGitRemoteConfig.h"
#include "RVGit/remotes/RVGitRemoteRefDirectory.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

RVGitRemote::BranchesByRemote groupedByRemote(const RVGitRemoteBranch::List& remoteBranches) {
    RVGitRemote::BranchesByRemote byRemote;
    for (const auto& remoteBranch : remoteBranches)
        if (const auto& remoteName = remoteBranch->remoteName())
            byRemote[*remoteName].push_back(remoteBranch);
    return byRemote;
}

std::optional<RVGitRemote::Branches> branchesOfRemote(const RVGitRemote::BranchesByRemote& byRemote,
                                                      const std::string& name) {
    const auto found = byRemote.find(name);
    return found == byRemote.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

RVGitRemote::RVGitRemote(std::shared_ptr<RVGitRepository> repository, std::string name,
                         std::optional<std::string> downstreamURL,
                         std::optional<std::string> upstreamURL, std::optional<Branches> branches,
                         bool isSVNRemote)
    : repository_(std::move(repository)),
      name_(std::move(name)),
      downstreamURL_(std::move(downstreamURL)),
      upstreamURL_(std::move(upstreamURL)),
      branches_(std::move(branches)),
      isSVNRemote_(isSVNRemote) {
    requireParameter(repository_ != nullptr, "repository != nil");
}

std::shared_ptr<RVGitRemote> RVGitRemote::remoteWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string name,
    std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
    std::optional<Branches> branches) {
    return std::make_shared<RVGitRemote>(std::move(repository), std::move(name),
                                         std::move(downstreamURL), std::move(upstreamURL),
                                         std::move(branches), false);
}

std::shared_ptr<RVGitRemote> RVGitRemote::SVNRemoteWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string name,
    std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
    std::optional<Branches> branches) {
    return std::make_shared<RVGitRemote>(std::move(repository), std::move(name),
                                         std::move(downstreamURL), std::move(upstreamURL),
                                         std::move(branches), true);
}

std::shared_ptr<RVGitRemote> RVGitRemote::localRemoteWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return remoteWithRepository(std::move(repository), RVGitLocalRemoteName, RVGitLocalRemoteName,
                                std::nullopt, std::nullopt);
}

bool RVGitRemote::isValidRemoteName(const std::optional<std::string>& name) {
    return RVGitRef::isValidRefName(name);
}

bool RVGitRemote::existsRemoteWithName(const std::string& name,
                                       const std::shared_ptr<RVGitRepository>& repository) {
    return repository->config()->containsSectionWithName(RVGitMakeRemoteConfigSection(name));
}

std::optional<RVGitRemote::List> RVGitRemote::allRemotesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const RVGitRemoteBranchCommands branchCommands(repository);
    const auto listing = RVGitRemoteCommand::gitRemoteCommandWithRepository(repository);
    const RVGitParallelReads reads({branchCommands.branches, branchCommands.dates, listing});

    const auto configs =
        RVGitRemoteConfig::allRemoteConfigsByRemoteNameForRepository(repository, error);
    if (!configs)
        return std::nullopt;
    const auto SVNSections = SVNRemoteConfigOptionsForRepository(repository, error);
    if (!SVNSections)
        return std::nullopt;
    const auto remoteBranches = branchCommands.finish(repository, error);
    if (!remoteBranches)
        return std::nullopt;
    const BranchesByRemote branches = groupedByRemote(*remoteBranches);
    if (!RVGitParallelReads::finish(*listing, error))
        return std::nullopt;

    const auto configNamed = [&](const std::string& name) {
        const auto found = configs->find(name);
        return found == configs->end() ? nullptr : found->second;
    };
    List remotes;
    for (const auto& item : listing->remotes()) {
        remotes.push_back(remoteWithRepository(repository, item.name, item.downstreamURL,
                                               item.upstreamURL,
                                               branchesOfRemote(branches, item.name)));
        remotes.back()->setValuesWithRemoteConfig(configNamed(item.name));
    }
    for (const auto& [name, section] : *SVNSections) {
        auto URL = RVGitFirstConfigValue(section, RVGitSVNRemoteURLConfigKey);
        if (!URL)
            continue;
        remotes.push_back(SVNRemoteWithRepository(
            repository, name, std::move(URL),
            RVGitFirstConfigValue(section, RVGitSVNRemoteCommitURLConfigKey),
            branchesOfRemote(branches, name)));
        remotes.back()->setValuesWithSVNRemoteConfigOptions(section);
        remotes.back()->setConfig(configNamed(name));
    }
    return remotes;
}

std::optional<std::vector<std::string>> RVGitRemote::allRemoteNamesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto configs =
        RVGitRemoteConfig::allRemoteConfigsByRemoteNameForRepository(repository, error);
    if (!configs)
        return std::nullopt;
    const auto SVNSections = SVNRemoteConfigOptionsForRepository(repository, error);
    if (!SVNSections)
        return std::nullopt;
    if (configs->contains("name"))
        throw RVInternalInconsistencyException("the entry \"name\" of the remotes is no list");
    std::vector<std::string> names;
    names.reserve(SVNSections->size());
    for (const auto& [name, section] : *SVNSections)
        names.push_back(name);
    return names;
}

std::shared_ptr<RVGitRemote> RVGitRemote::remoteForName(
    const std::string& name, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    if (name == RVGitLocalRemoteName)
        return localRemoteWithRepository(repository);
    const auto remotes = allRemotesForRepository(repository, error);
    if (!remotes)
        return nullptr;
    const auto found =
        RVFindUnicodeName(remotes->begin(), remotes->end(), name,
                          [](const auto& remote) -> const std::string& { return remote->name(); });
    if (found != remotes->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitRemote> RVGitRemote::originRemoteForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return remoteForName(RVGitOriginRemoteName, repository, error);
}

std::shared_ptr<RVGitRemote> RVGitRemote::SVNRemoteForUUID(
    const std::string& uuid, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto remotes = allRemotesForRepository(repository, error);
    if (!remotes)
        return nullptr;
    for (const auto& remote : *remotes)
        if (remote->SVNUUID() == uuid)
            return remote;
    clearErrorPlace(error);
    return nullptr;
}

std::optional<RVGitRemote::BranchesByRemote> RVGitRemote::remoteBranchesByRemoteForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto remoteBranches =
        RVGitRemoteBranch::allRemoteBranchesForRepository(repository, error);
    if (!remoteBranches)
        return std::nullopt;
    return groupedByRemote(*remoteBranches);
}

std::optional<RVGitRemote::ConfigOptionsByRemote> RVGitRemote::SVNRemoteConfigOptionsForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    constexpr char sections[] = "^svn-remote.*";
    auto values = repository->config()->wholeValuesForConfigKeyByRegularExpression(sections, error);
    if (!values)
        return std::nullopt;
    std::optional<RVError> ignored;
    auto metadata = RVGitConfig::gitSVNConfigForRepository(repository)
                        ->wholeValuesForConfigKeyByRegularExpression(sections, &ignored);
    if (!metadata && !ignored) {
        clearErrorPlace(error);
        return std::nullopt;
    }
    for (auto& [key, value] : metadata.value_or(RVOptions()))
        values->insert_or_assign(key, std::move(value));
    return RVGitConfigOptionsParser::parseConfigOptionsBySection(*values);
}

std::shared_ptr<RVGitRemote> RVGitRemote::createRemoteWithName(
    const std::string& name, const std::string& URL,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    if (existsRemoteWithName(name, repository)) {
        fillErrorPlace(error, gitErrorWithCode(RVGitCreateRemoteAlreadyExistsError,
                                               RVGitMakeErrorUserInfo(
                                                   repository, {{RVGitRemoteNameErrorKey, name}})));
        return nullptr;
    }
    if (watch.isCancelled(error) ||
        !RVGitRemoteCommand::gitCreateRemoteCommandWithRepository(repository, name, URL)
             ->run(error) ||
        watch.isCancelled(error))
        return nullptr;
    return remoteForName(name, repository, error);
}

bool RVGitRemote::deleteRemoteWithName(const std::string& name,
                                       const std::shared_ptr<RVGitRepository>& repository,
                                       RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const auto remotes = allRemotesForRepository(repository, error);
    if (!remotes || watch.isCancelled(error))
        return false;
    const auto found =
        RVFindUnicodeName(remotes->begin(), remotes->end(), name,
                          [](const auto& remote) -> const std::string& { return remote->name(); });
    if (found == remotes->end()) {
        clearErrorPlace(error);
        return false;
    }
    const RVGitRemote& remote = **found;
    if (remote.isSVNRemote())
        return deleteSVNRemote(remote, error);
    if (!RVGitRemoteCommand::gitDeleteRemoteCommandWithRepository(repository, remote.name())
             ->run(error) ||
        watch.isCancelled(error))
        return false;
    std::vector<std::string> otherNames;
    for (const auto& other : *remotes)
        if (other->name() != remote.name())
            otherNames.push_back(other->name());
    return RVGitRemoteRefDirectory(*repository, remote.name()).remove(otherNames, error);
}

bool RVGitRemote::renameRemoteWithName(const std::string& name, const std::string& newName,
                                       const std::shared_ptr<RVGitRepository>& repository,
                                       RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const auto remote = remoteForName(name, repository, error);
    if (!remote || watch.isCancelled(error))
        return false;
    if (remote->isSVNRemote())
        return renameSVNRemote(*remote, newName, error);
    if (!RVGitRemoteCommand::gitRenameRemoteCommandWithRepository(repository, remote->name(),
                                                                  newName)
             ->run(error) ||
        watch.isCancelled(error))
        return false;
    if (remote->name() == newName || lowercaseString(remote->name()) != lowercaseString(newName))
        return true;
    return RVGitRemoteRefDirectory(*repository, remote->name()).moveToNameOfOtherCase(newName);
}

std::shared_ptr<RVGitRemoteBranch> RVGitRemote::remoteBranchForRefName(
    const std::string& refName) const {
    if (!branches_)
        return nullptr;
    std::string name = refName;
    if (!name.starts_with("refs") && !isSVNRemote_ && !name.starts_with(name_))
        name = pathByAppendingComponent(name_, name);
    auto found = RVFindUnicodeName(branches_->begin(), branches_->end(),
                                   RVGitRef::makeFullRefName(name, RVGitRefTypeRemoteBranch),
                                   [](const auto& branch) { return *branch->fullRefName(); });
    if (found == branches_->end() && isSVNRemote_)
        found = RVFindUnicodeName(branches_->begin(), branches_->end(), name,
                                  [](const auto& branch) { return branch->refName(); });
    return found == branches_->end() ? nullptr : *found;
}

void RVGitRemote::setValuesWithRemoteConfig(const std::shared_ptr<RVGitRemoteConfig>& config) {
    if (!config)
        return;
    config_ = config;
    URL_ = config->URL();
    pushURL_ = config->pushURL();
    fetchRefSpecs_ = config->fetchRefSpecs();
    pushRefSpecs_ = config->pushRefSpecs();
    skipsFetchAll_ = config->skipsFetchAll();
    skipsDefaultUpdate_ = config->skipsDefaultUpdate();
}

void RVGitRemote::setValuesWithSVNRemoteConfigOptions(
    const std::optional<RVOptions>& configOptions) {
    if (!configOptions)
        return;
    URL_ = RVGitFirstConfigValue(*configOptions, RVGitSVNRemoteURLConfigKey);
    pushURL_ = RVGitFirstConfigValue(*configOptions, RVGitSVNRemoteCommitURLConfigKey);
    SVNUUID_ = RVGitFirstConfigValue(*configOptions, RVGitSVNRemoteUUIDConfigKey);
    SVNTrunkRefSpecs_ = RVGitAllConfigValues(*configOptions, RVGitSVNRemoteFetchConfigKey);
    SVNBranchRefSpecs_ = RVGitAllConfigValues(*configOptions, RVGitSVNRemoteBranchesConfigKey);
    SVNTagRefSpecs_ = RVGitAllConfigValues(*configOptions, RVGitSVNRemoteTagsConfigKey);
    skipsFetchAll_ =
        RVGitLastConfigValue(*configOptions, RVGitRemoteSkipFetchAllConfigKey) == "true";
}
