#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitRepository;

/// Tells which remote a remote branch belongs to, by the longest configured ref path that its name
/// begins with: a remote's name may hold slashes, and the refs of a Subversion remote are where its
/// specs put them. It reads the configuration once, when it is made, and may be used on any thread
/// afterwards.
///
/// Kept for compatibility: a path need not end where a component of the name does, so that a ref
/// below "refs/remotes/origin2" belongs to "origin" where no remote "origin2" is configured.
class RVGIT_EXPORT RVGitRemoteBranchToRemote {
public:
    /// Names of remotes by path.
    using RemotesByPath = std::map<std::string, std::string, std::less<>>;
    using Sections = std::map<std::string, RVOptions, std::less<>>;

    /// The repository is required. Where its configuration cannot be read, no branch has a remote.
    explicit RVGitRemoteBranchToRemote(std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const RemotesByPath& remotesToRemoteRef() const { return remotesToRemoteRef_; }
    /// The paths of that map in the order of their bytes.
    [[nodiscard]] std::vector<std::string> sortedKeys() const;

    /// By the full name of the branch; absent if it belongs to none.
    [[nodiscard]] std::optional<std::string> remoteNameForRemoteBranch(
        std::string_view fullRefName) const;

    // What the map is made of.

    [[nodiscard]] std::optional<RemotesByPath> remotesByRemoteRefPathPrefixesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr) const;
    /// The local side of a Subversion ref spec, without the "*" at its end; absent unless the spec
    /// has exactly one colon.
    [[nodiscard]] static std::optional<std::string> refPathForSVNPathSpec(std::string_view spec);
    /// Both absent on failure.
    [[nodiscard]] std::optional<Sections> remoteConfigOptionsForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr) const;
    /// Of the repository's configuration alone, not of the bridge's metadata.
    [[nodiscard]] std::optional<Sections> SVNRemoteConfigOptionsForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr) const;
    /// The paths of the specs of one key, each of which maps to that remote.
    [[nodiscard]] static RemotesByPath makeRefPathToRemoteEntriesFromConfigOptions(
        const RVOptions& configOptions, std::string_view configKey, const std::string& remoteName);

private:
    std::shared_ptr<RVGitRepository> repository_;
    RemotesByPath remotesToRemoteRef_;
};
