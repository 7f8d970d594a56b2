#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

class RVGitRefSpec;
class RVGitRemote;

// Options of RVGitFetchCommand.
/// Boolean: remote branches that the remote no longer has are deleted.
inline constexpr char RVGitFetchOptionPruneObsoleteRemoteBranches[] = "pruneObsoleteRemoteBranches";
/// Boolean: all tags are fetched.
inline constexpr char RVGitFetchOptionForceTagsDownload[] = "forceTagsDownload";
/// Boolean: submodules fetch too.
inline constexpr char RVGitFetchOptionRecurseSubmodules[] = "recurseSubmodules";
/// Number: how many commits of each branch the repository is to have.
inline constexpr char RVGitFetchOptionDepth[] = "RVGitFetchOptionDepth";
/// Boolean: what a depth has left out is fetched.
inline constexpr char RVGitFetchOptionUnshallow[] = "RVGitFetchOptionUnshallow";

/// Runs `git fetch`. It reports progress, and its standard error holds the table that
/// RVGitRefUpdatesOutputParser reads.
///
/// Failure: the codes of RVGitCloneCommand, and 1 for a name, address or spec that begins with "-",
/// which is never given to git. A failure holds RVGitRemoteNameErrorKey,
/// and RVGitRefSpecErrorKey and RVGitRemoteURLErrorKey where there is one.
class RVGIT_EXPORT RVGitFetchCommand : public RVGitCommand {
public:
    /// From a remote; an absent one leaves the choice to git. The repository is required.
    RVGitFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                      std::shared_ptr<RVGitRemote> remote, std::shared_ptr<RVGitRefSpec> refSpec,
                      const std::optional<RVOptions>& options);
    /// From an address.
    RVGitFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                      std::optional<std::string> remoteURLString,
                      std::shared_ptr<RVGitRefSpec> refSpec);
    [[nodiscard]] static std::shared_ptr<RVGitFetchCommand> gitFetchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitFetchCommand> gitFetchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::string> remoteURLString, std::shared_ptr<RVGitRefSpec> refSpec);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    /// The remote's name; "." without a remote, also where there is an address.
    [[nodiscard]] std::string remoteName() const;
    /// Counts only without a remote.
    [[nodiscard]] const std::optional<std::string>& remoteURLString() const {
        return remoteURLString_;
    }
    void setRemoteURLString(std::optional<std::string> text) { remoteURLString_ = std::move(text); }
    /// What to fetch. The name in front is that of the remote's ref, whatever its name in the spec.
    [[nodiscard]] const std::shared_ptr<RVGitRefSpec>& refSpec() const { return refSpec_; }
    void setRefSpec(std::shared_ptr<RVGitRefSpec> refSpec) { refSpec_ = std::move(refSpec); }
    [[nodiscard]] bool prunesObsoleteRemoteBranches() const { return prunesObsoleteBranches_; }
    void setPrunesObsoleteRemoteBranches(bool prunes) { prunesObsoleteBranches_ = prunes; }
    [[nodiscard]] bool forcesTagsDownload() const { return forcesTagsDownload_; }
    void setForcesTagsDownload(bool forces) { forcesTagsDownload_ = forces; }
    [[nodiscard]] bool recursesSubmodules() const { return recursesSubmodules_; }
    void setRecursesSubmodules(bool recurses) { recursesSubmodules_ = recurses; }
    /// Absent: what the repository has already.
    [[nodiscard]] const std::optional<std::int64_t>& depth() const { return depth_; }
    void setDepth(std::optional<std::int64_t> depth) { depth_ = depth; }
    [[nodiscard]] bool unshallows() const { return unshallows_; }
    void setUnshallows(bool unshallows) { unshallows_ = unshallows; }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::shared_ptr<RVGitRemote> remote_;
    std::optional<std::string> remoteURLString_;
    std::shared_ptr<RVGitRefSpec> refSpec_;
    bool prunesObsoleteBranches_ = false;
    bool forcesTagsDownload_ = false;
    bool recursesSubmodules_ = false;
    std::optional<std::int64_t> depth_;
    bool unshallows_ = false;
};
