#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/lfs/RVGitLFSCommand.h"

class RVGitRefSpec;
class RVGitRemote;

// The commands that talk to a server of large files. All support progress, which git-lfs reports to
// a pipe only where the configuration or the environment forces it to.

/// Runs `git lfs clone`, with no repository: as `git clone`, but all large files are fetched at
/// once. The options are those of RVGitCloneCommand that say whether it is bare and whether
/// submodules are cloned. Where something exists at the local path, git runs inside it and clones
/// into ".". An address that begins with "-" is refused with code 1. A failure holds the address
/// under RVGitRemoteURLErrorKey.
class RVGIT_EXPORT RVGitLFSCloneCommand : public RVGitLFSCommand {
public:
    RVGitLFSCloneCommand(std::string remoteURL, std::string localPath,
                         const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitLFSCloneCommand> gitLFSCloneCommandWithRemoteURL(
        std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options);

    [[nodiscard]] const std::string& remoteURL() const { return remoteURL_; }
    void setRemoteURL(std::string remoteURL) { remoteURL_ = std::move(remoteURL); }
    [[nodiscard]] const std::string& localPath() const { return localPath_; }
    void setLocalPath(std::string path) { localPath_ = std::move(path); }
    [[nodiscard]] bool isBare() const { return bare_; }
    void setBare(bool bare) { bare_ = bare; }
    [[nodiscard]] bool initializesSubmodules() const { return initializesSubmodules_; }
    void setInitializesSubmodules(bool initializes) { initializesSubmodules_ = initializes; }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::string remoteURL_;
    std::string localPath_;
    bool bare_ = false;
    bool initializesSubmodules_ = false;
};

/// Which objects are fetched.
enum RVGitLFSFetchMode : std::int64_t {
    /// Those of the ref that is checked out.
    RVGitLFSFetchModeDefault = 0,
    /// Those of refs and commits that are recent, too.
    RVGitLFSFetchModeRecent = 1,
    /// Those of all commits.
    RVGitLFSFetchModeAll = 2
};

/// Runs `git lfs fetch`, which fetches contents and leaves the working tree alone.
class RVGIT_EXPORT RVGitLFSFetchCommand : public RVGitLFSCommand {
public:
    explicit RVGitLFSFetchCommand(const std::shared_ptr<RVGitRepository>& repository);
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSFetchCommand> gitLFSFetchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// One of RVGitLFSFetchMode; any other number counts as the default.
    [[nodiscard]] std::int64_t fetchMode() const { return fetchMode_; }
    void setFetchMode(std::int64_t mode) { fetchMode_ = mode; }
    [[nodiscard]] bool prunesOldObjects() const { return prunesOldObjects_; }
    void setPrunesOldObjects(bool prunes) { prunesOldObjects_ = prunes; }
    /// The remote and the ref count only if both are there.
    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    [[nodiscard]] const std::shared_ptr<RVGitRefSpec>& refSpec() const { return refSpec_; }
    void setRefSpec(std::shared_ptr<RVGitRefSpec> refSpec) { refSpec_ = std::move(refSpec); }

protected:
    void gitCommandWillInitialize() override;

private:
    std::int64_t fetchMode_ = RVGitLFSFetchModeDefault;
    bool prunesOldObjects_ = false;
    std::shared_ptr<RVGitRemote> remote_;
    std::shared_ptr<RVGitRefSpec> refSpec_;
};

/// Runs `git lfs pull`: fetches what is checked out and puts it into the working tree.
class RVGIT_EXPORT RVGitLFSPullCommand : public RVGitLFSCommand {
public:
    /// The repository is required.
    RVGitLFSPullCommand(const std::shared_ptr<RVGitRepository>& repository,
                        std::shared_ptr<RVGitRemote> remote);
    [[nodiscard]] static std::shared_ptr<RVGitLFSPullCommand> gitLFSPullCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    /// "." without a remote.
    [[nodiscard]] std::string remoteName() const;

protected:
    void gitCommandWillInitialize() override;

private:
    std::shared_ptr<RVGitRemote> remote_;
};

/// Runs `git lfs push`, which uploads the objects that refs need.
class RVGIT_EXPORT RVGitLFSPushCommand : public RVGitLFSCommand {
public:
    /// The repository is required.
    RVGitLFSPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                        std::shared_ptr<RVGitRemote> remote);
    [[nodiscard]] static std::shared_ptr<RVGitLFSPushCommand> gitLFSPushCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    /// "." without a remote.
    [[nodiscard]] std::string remoteName() const;
    /// The refs whose objects are uploaded: the local names count, and a ref spec that deletes has
    /// none. Without any, git-lfs uploads nothing and succeeds.
    [[nodiscard]] const std::vector<std::shared_ptr<RVGitRefSpec>>& refSpecs() const {
        return refSpecs_;
    }
    void setRefSpecs(std::vector<std::shared_ptr<RVGitRefSpec>> refSpecs) {
        refSpecs_ = std::move(refSpecs);
    }

protected:
    void gitCommandWillInitialize() override;

private:
    std::shared_ptr<RVGitRemote> remote_;
    std::vector<std::shared_ptr<RVGitRefSpec>> refSpecs_;
};
