#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

class RVGitRefSpec;
class RVGitRemote;

// Options of RVGitPushCommand, each a boolean.
/// All tags are pushed too.
inline constexpr char RVGitPushOptionPushTags[] = "tags";
/// The remote's commits may be lost.
inline constexpr char RVGitPushOptionForcePush[] = "forcePush";
/// The same, but only if the remote still has the commit leaseValueCommitHash.
inline constexpr char RVGitPushOptionForcePushWithLease[] = "forcePushWithLease";
inline constexpr char RVGitPushOptionDeleteRef[] = "deleteRef";
/// The hook does not run.
inline constexpr char RVGitPushOptionNoVerify[] = "noVerify";

/// Runs `git push`. It reports progress, and its standard error holds the table that
/// RVGitRefUpdatesOutputParser reads.
///
/// Failure: code 2401 where a ref was rejected; 201 for an exit code of 1 that nothing else
/// explains, a refusal by a hook of the remote among them; the codes of RVGitCloneCommand; and 1
/// for a name or spec that begins with "-", which is never given to git. Kept for compatibility:
/// code 2400 is looked for on standard output, while git tells of a missing upstream branch on
/// standard error, so that this is code 1. A failure holds RVGitRemoteNameErrorKey,
/// RVGitRevisionErrorKey with the branch of the first spec, and RVGitRemoteURLErrorKey where there
/// is one.
class RVGIT_EXPORT RVGitPushCommand : public RVGitCommand {
public:
    using RefSpecs = std::vector<std::shared_ptr<RVGitRefSpec>>;

    /// An absent remote is this repository. The repository is required.
    RVGitPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                     std::shared_ptr<RVGitRemote> remote, std::optional<RefSpecs> refSpecs,
                     const std::optional<RVOptions>& options);
    /// An absent spec leaves the choice to git.
    RVGitPushCommand(const std::shared_ptr<RVGitRepository>& repository,
                     std::shared_ptr<RVGitRemote> remote, std::shared_ptr<RVGitRefSpec> refSpec,
                     const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitPushCommand> gitPushCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitPushCommand> gitPushCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::optional<RefSpecs> refSpecs, const std::optional<RVOptions>& options);
    /// The name is short or full, as the remote has it.
    [[nodiscard]] static std::shared_ptr<RVGitPushCommand>
    gitPushCommandWithRepositoryDeletingBranch(const std::shared_ptr<RVGitRepository>& repository,
                                               std::shared_ptr<RVGitRemote> remote,
                                               const std::string& refName);
    [[nodiscard]] static std::shared_ptr<RVGitPushCommand> gitPushCommandWithRepositoryDeletingTag(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        const std::string& refName);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    /// The remote's name; "." without a remote.
    [[nodiscard]] std::string remoteName() const;
    [[nodiscard]] const std::optional<RefSpecs>& refSpecs() const { return refSpecs_; }
    void setRefSpecs(std::optional<RefSpecs> refSpecs) { refSpecs_ = std::move(refSpecs); }
    [[nodiscard]] bool pushesTags() const { return pushesTags_; }
    void setPushesTags(bool pushes) { pushesTags_ = pushes; }
    /// Has no effect on a push that deletes, or where a lease is asked for as well.
    [[nodiscard]] bool forcesPush() const { return forcesPush_; }
    void setForcesPush(bool forces) { forcesPush_ = forces; }
    /// Has no effect with forcesPush: the two together are a plain push.
    [[nodiscard]] bool forcesPushWithLease() const { return forcesPushWithLease_; }
    void setForcesPushWithLease(bool forces) { forcesPushWithLease_ = forces; }
    /// The specs' remote refs are deleted. With several specs, or none, those must say so
    /// themselves.
    [[nodiscard]] bool deletesRef() const { return deletesRef_; }
    void setDeletesRef(bool deletes) { deletesRef_ = deletes; }
    [[nodiscard]] bool noVerify() const { return noVerify_; }
    void setNoVerify(bool noVerify) { noVerify_ = noVerify; }
    /// What the first spec's remote ref must still be; absent or empty: the ref must not exist.
    [[nodiscard]] const std::optional<std::string>& leaseValueCommitHash() const {
        return leaseValueCommitHash_;
    }
    void setLeaseValueCommitHash(std::optional<std::string> hash) {
        leaseValueCommitHash_ = std::move(hash);
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    [[nodiscard]] const RVGitRefSpec* firstRefSpec() const;

    std::shared_ptr<RVGitRemote> remote_;
    std::optional<RefSpecs> refSpecs_;
    bool pushesTags_ = false;
    bool forcesPush_ = false;
    bool forcesPushWithLease_ = false;
    bool deletesRef_ = false;
    bool noVerify_ = false;
    std::optional<std::string> leaseValueCommitHash_;
};
