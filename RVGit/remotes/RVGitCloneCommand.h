#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

// Options of RVGitCloneCommand.
/// Boolean: a repository without a working tree.
inline constexpr char RVGitCloneOptionBare[] = "RVGitCloneOptionBare";
/// Boolean: submodules are cloned too.
inline constexpr char RVGitCloneOptionInitializeSubmodules[] =
    "RVGitCloneOptionInitializeSubmodules";
/// Number: how many commits of each branch to fetch.
inline constexpr char RVGitCloneOptionDepth[] = "RVGitCloneOptionDepth";
/// Text: which objects to leave out until they are needed, in git's own words ("blob:none").
inline constexpr char RVGitCloneOptionFilter[] = "RVGitCloneOptionFilter";
/// Boolean: only the branch that is checked out is fetched, now and later; false asks for all,
/// which a depth would leave out.
inline constexpr char RVGitCloneOptionSingleBranch[] = "RVGitCloneOptionSingleBranch";

/// Runs `git clone`, with no repository. It reports progress.
///
/// Where something exists at the local path, git runs inside it and clones into ".": into an empty
/// directory that is a success, a directory that holds something is refused by git, and a file
/// fails with code 100. A relative path as the address is then relative to that directory.
/// Otherwise git makes the local path, and removes it again if it fails or is cancelled.
///
/// Failure: code 202 where the remote refuses a password or a key, and for most failures of http;
/// 203 where it has no such repository; 204 where it refuses the connection; 1 for everything else,
/// a name or a password that nobody gives (200 where the system calls that "Device not
/// configured"), and an address that begins with "-", which is never given to git. A failure holds
/// the address under RVGitRemoteURLErrorKey.
class RVGIT_EXPORT RVGitCloneCommand : public RVGitCommand {
public:
    RVGitCloneCommand(std::string remoteURL, std::string localPath,
                      const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitCloneCommand> gitCloneCommandWithRemoteURL(
        std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options);

    [[nodiscard]] const std::string& remoteURL() const { return remoteURL_; }
    void setRemoteURL(std::string remoteURL) { remoteURL_ = std::move(remoteURL); }
    [[nodiscard]] const std::string& localPath() const { return localPath_; }
    void setLocalPath(std::string path) { localPath_ = std::move(path); }
    [[nodiscard]] bool isBare() const { return bare_; }
    void setBare(bool bare) { bare_ = bare; }
    [[nodiscard]] bool initializesSubmodules() const { return initializesSubmodules_; }
    void setInitializesSubmodules(bool initializes) { initializesSubmodules_ = initializes; }
    /// Absent: all of the history.
    [[nodiscard]] const std::optional<std::int64_t>& depth() const { return depth_; }
    void setDepth(std::optional<std::int64_t> depth) { depth_ = depth; }
    /// Absent: all objects.
    [[nodiscard]] const std::optional<std::string>& filter() const { return filter_; }
    void setFilter(std::optional<std::string> filter) { filter_ = std::move(filter); }
    /// Absent: what git does by itself, which is all branches unless there is a depth.
    [[nodiscard]] const std::optional<bool>& singleBranch() const { return singleBranch_; }
    void setSingleBranch(std::optional<bool> single) { singleBranch_ = single; }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::string remoteURL_;
    std::string localPath_;
    bool bare_ = false;
    bool initializesSubmodules_ = false;
    std::optional<std::int64_t> depth_;
    std::optional<std::string> filter_;
    std::optional<bool> singleBranch_;
};
