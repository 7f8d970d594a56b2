#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/svn/RVGitSVNOptions.h"

class RVGitRemote;

/// Of a certificate that Subversion does not trust, which nobody can be asked about. It has no text
/// in the catalogue: callers go by the number.
inline constexpr std::int64_t RVGitSVNCertificateError = 1801;

/// Base of the commands that run `git svn`. Where the remote's push address names a user, and is
/// none of ssh, the user is given as an option; a password is asked for through GIT_ASKPASS.
///
/// Failure, of all of them: code 1800 if git-svn does not find its libraries, 1801 if the server's
/// certificate is not trusted, 202 and 203 if the repository cannot be connected to or is none; a
/// common code, or 1, for everything else. A name or a revision that begins with "-" is refused
/// with code 1.
class RVGIT_EXPORT RVGitSVNCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitSVNCommand(const std::shared_ptr<RVGitRepository>& repository,
                    std::shared_ptr<RVGitRemote> remote);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    /// Without a repository, by the default binary.
    RVGitSVNCommand();

    /// Every subclass calls this first.
    void gitCommandWillInitialize() override;
    /// "--username", if the address names a user and asks for one in this way.
    void addUserNameOptionForURLString(const std::string& address);
    /// The name of the remote and the address that it is fetched from.
    [[nodiscard]] RVUserInfo userInfoWithRemote(RVUserInfo userInfo) const;

private:
    std::shared_ptr<RVGitRemote> remote_;
};

/// Runs `git svn clone`, with no repository. Refs are kept below "refs/remotes/svn/", whatever is
/// asked for. Where something exists at the local path, git runs inside it and clones into ".".
/// Of several trunks git-svn takes the last: RVGitRemote::createSVNRemoteWithName() in a new
/// repository, and RVGitSVNFetchCommand for what it gives, take them all.
/// After a cancelled clone, RVGitSVNFetchCommand in what has been made goes on with it. It reports
/// progress. A failure holds the address under RVGitRemoteURLErrorKey.
class RVGIT_EXPORT RVGitSVNCloneCommand : public RVGitSVNCommand {
public:
    RVGitSVNCloneCommand(std::string remoteURL, std::string localPath,
                         const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitSVNCloneCommand> gitSVNCloneCommandWithRemoteURL(
        std::string remoteURL, std::string localPath, const std::optional<RVOptions>& options);

    [[nodiscard]] const std::string& remoteURL() const { return remoteURL_; }
    void setRemoteURL(std::string remoteURL) { remoteURL_ = std::move(remoteURL); }
    [[nodiscard]] const std::string& localPath() const { return localPath_; }
    void setLocalPath(std::string path) { localPath_ = std::move(path); }
    [[nodiscard]] bool usesStandardDirectoryLayout() const { return usesStandardDirectoryLayout_; }
    void setUsesStandardDirectoryLayout(bool uses) { usesStandardDirectoryLayout_ = uses; }
    [[nodiscard]] const std::vector<std::string>& trunkDirectories() const {
        return trunkDirectories_;
    }
    void setTrunkDirectories(std::vector<std::string> paths) {
        trunkDirectories_ = std::move(paths);
    }
    [[nodiscard]] const std::vector<std::string>& branchDirectories() const {
        return branchDirectories_;
    }
    void setBranchDirectories(std::vector<std::string> paths) {
        branchDirectories_ = std::move(paths);
    }
    [[nodiscard]] const std::vector<std::string>& tagDirectories() const { return tagDirectories_; }
    void setTagDirectories(std::vector<std::string> paths) { tagDirectories_ = std::move(paths); }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::string remoteURL_;
    std::string localPath_;
    bool usesStandardDirectoryLayout_ = false;
    std::vector<std::string> trunkDirectories_;
    std::vector<std::string> branchDirectories_;
    std::vector<std::string> tagDirectories_;
};

/// Runs `git svn fetch` for the remote, which leaves branches and working tree alone. It reports
/// progress. A failure holds the remote's name and address.
class RVGIT_EXPORT RVGitSVNFetchCommand : public RVGitSVNCommand {
public:
    RVGitSVNFetchCommand(const std::shared_ptr<RVGitRepository>& repository,
                         std::shared_ptr<RVGitRemote> remote);
    [[nodiscard]] static std::shared_ptr<RVGitSVNFetchCommand> gitSVNFetchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote);

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
};

/// Runs `git svn rebase`, which fetches and puts the branch that is checked out on top. A conflict
/// leaves a rebase under way. A failure holds the remote's name and address.
class RVGIT_EXPORT RVGitSVNRebaseCommand : public RVGitSVNCommand {
public:
    using RVGitSVNCommand::RVGitSVNCommand;
    [[nodiscard]] static std::shared_ptr<RVGitSVNRebaseCommand> gitSVNRebaseCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote);

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
};

/// Runs `git svn dcommit`, which commits what the branch has on top to Subversion, one revision for
/// each commit, and rebases the branch on them. It reports progress. A failure holds the revision.
class RVGIT_EXPORT RVGitSVNDCommitCommand : public RVGitSVNCommand {
public:
    RVGitSVNDCommitCommand(const std::shared_ptr<RVGitRepository>& repository,
                           std::shared_ptr<RVGitRemote> remote);
    [[nodiscard]] static std::shared_ptr<RVGitSVNDCommitCommand> gitSVNDCommitCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote);
    /// Up to the revision.
    [[nodiscard]] static std::shared_ptr<RVGitSVNDCommitCommand> gitSVNDCommitCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::optional<std::string> revision);

    /// Absent: HEAD.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::optional<std::string> revision_;
};

/// What `git svn branch` and `git svn tag` have in common: each copies a directory in Subversion,
/// and fetches the copy. They report progress.
class RVGIT_EXPORT RVGitSVNCopyCommand : public RVGitSVNCommand {
public:
    RVGitSVNCopyCommand(const std::shared_ptr<RVGitRepository>& repository,
                        std::shared_ptr<RVGitRemote> remote);

    /// The name of the copy.
    [[nodiscard]] const std::optional<std::string>& refName() const { return refName_; }
    void setRefName(std::optional<std::string> refName) { refName_ = std::move(refName); }
    /// What is copied; absent: what HEAD was made of.
    [[nodiscard]] const std::optional<std::string>& startingPoint() const { return startingPoint_; }
    void setStartingPoint(std::optional<std::string> revision) {
        startingPoint_ = std::move(revision);
    }
    /// Of the Subversion revision; absent: git-svn writes one.
    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }
    void setMessage(std::optional<std::string> message) { message_ = std::move(message); }
    /// The directory in Subversion, needed where there are several.
    [[nodiscard]] const std::optional<std::string>& destination() const { return destination_; }
    void setDestination(std::optional<std::string> path) { destination_ = std::move(path); }
    [[nodiscard]] bool createsParentDirectories() const { return createsParentDirectories_; }
    void setCreatesParentDirectories(bool creates) { createsParentDirectories_ = creates; }

protected:
    void initializeWithSubCommand(const char* subCommand);

private:
    std::optional<std::string> refName_;
    std::optional<std::string> startingPoint_;
    std::optional<std::string> message_;
    std::optional<std::string> destination_;
    bool createsParentDirectories_ = false;
};

/// Runs `git svn branch`.
class RVGIT_EXPORT RVGitSVNBranchCommand : public RVGitSVNCopyCommand {
public:
    using RVGitSVNCopyCommand::RVGitSVNCopyCommand;
    [[nodiscard]] static std::shared_ptr<RVGitSVNBranchCommand> gitSVNBranchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::optional<std::string> refName, std::optional<std::string> startingPoint);

protected:
    void gitCommandWillInitialize() override;
};

/// Runs `git svn tag`.
class RVGIT_EXPORT RVGitSVNTagCommand : public RVGitSVNCopyCommand {
public:
    using RVGitSVNCopyCommand::RVGitSVNCopyCommand;
    [[nodiscard]] static std::shared_ptr<RVGitSVNTagCommand> gitSVNTagCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::optional<std::string> refName, std::optional<std::string> startingPoint);

protected:
    void gitCommandWillInitialize() override;
};

/// A name for callers; it does nothing of its own.
class RVGIT_EXPORT RVGitSVNShowIgnoreCommand : public RVGitCommand {
public:
    using RVGitCommand::RVGitCommand;
};
