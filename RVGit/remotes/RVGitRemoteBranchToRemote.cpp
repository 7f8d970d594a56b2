#include "RVGit/remotes/RVGitRemoteBranchToRemote.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteConfig.h"

RVGitRemoteBranchToRemote::RVGitRemoteBranchToRemote(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository != nil");
    if (auto remotes = remotesByRemoteRefPathPrefixesForRepository(repository_))
        remotesToRemoteRef_ = *std::move(remotes);
}

std::vector<std::string> RVGitRemoteBranchToRemote::sortedKeys() const {
    std::vector<std::string> keys;
    keys.reserve(remotesToRemoteRef_.size());
    for (const auto& [path, remoteName] : remotesToRemoteRef_)
        keys.push_back(path);
    return keys;
}

std::optional<std::string> RVGitRemoteBranchToRemote::remoteNameForRemoteBranch(
    std::string_view fullRefName) const {
    // A path that the name begins with stands, in the order of bytes, before the name, and behind
    // every shorter one. If the last path before the name is none such, neither is any that shares
    // less with the name than that one does.
    std::string_view searched = fullRefName;
    while (true) {
        auto next = remotesToRemoteRef_.upper_bound(searched);
        if (next == remotesToRemoteRef_.begin())
            return std::nullopt;
        const auto& [path, remoteName] = *std::prev(next);
        if (searched.starts_with(path))
            return remoteName;
        const auto differs =
            std::mismatch(searched.begin(), searched.end(), path.begin(), path.end());
        searched = searched.substr(
            0, static_cast<std::size_t>(std::distance(searched.begin(), differs.first)));
    }
}

std::optional<RVGitRemoteBranchToRemote::RemotesByPath>
RVGitRemoteBranchToRemote::remotesByRemoteRefPathPrefixesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) const {
    const auto remotes = remoteConfigOptionsForRepository(repository, error);
    if (!remotes)
        return std::nullopt;
    RemotesByPath remotesByPath;
    for (const auto& [name, section] : *remotes)
        remotesByPath.insert_or_assign("refs/remotes/" + name, name);
    const auto SVNRemotes = SVNRemoteConfigOptionsForRepository(repository, error);
    if (!SVNRemotes)
        return std::nullopt;
    for (const auto& [name, section] : *SVNRemotes)
        for (const char* key : {RVGitSVNRemoteFetchConfigKey, RVGitSVNRemoteBranchesConfigKey,
                                RVGitSVNRemoteTagsConfigKey})
            for (auto& [path, remoteName] :
                 makeRefPathToRemoteEntriesFromConfigOptions(section, key, name))
                remotesByPath.insert_or_assign(path, remoteName);
    return remotesByPath;
}

std::optional<std::string> RVGitRemoteBranchToRemote::refPathForSVNPathSpec(std::string_view spec) {
    auto parts = componentsSeparatedByString(spec, ":");
    if (parts.size() != 2)
        return std::nullopt;
    std::string path = std::move(parts[1]);
    if (path.ends_with('*'))
        path.pop_back();
    return path;
}

std::optional<RVGitRemoteBranchToRemote::Sections>
RVGitRemoteBranchToRemote::remoteConfigOptionsForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) const {
    return RVGitConfigSections(repository, "^remote.*", error);
}

std::optional<RVGitRemoteBranchToRemote::Sections>
RVGitRemoteBranchToRemote::SVNRemoteConfigOptionsForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) const {
    return RVGitConfigSections(repository, "^svn-remote.*", error);
}

RVGitRemoteBranchToRemote::RemotesByPath
RVGitRemoteBranchToRemote::makeRefPathToRemoteEntriesFromConfigOptions(
    const RVOptions& configOptions, std::string_view configKey, const std::string& remoteName) {
    RemotesByPath remotesByPath;
    if (const auto specs = RVGitAllConfigValues(configOptions, configKey))
        for (const std::string& spec : *specs)
            // No name begins with an empty path.
            if (auto path = refPathForSVNPathSpec(spec); path && !path->empty())
                remotesByPath.emplace(*std::move(path), remoteName);
    return remotesByPath;
}
