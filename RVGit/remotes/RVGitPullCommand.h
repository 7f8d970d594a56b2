#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

class RVGitRefSpec;
class RVGitRemote;

// Options of RVGitPullCommand, each a boolean.
/// What is here alone is put on top of what is fetched; without it the two are merged.
inline constexpr char RVGitPullOptionRebase[] = "rebase";
inline constexpr char RVGitPullOptionPreserveMergeCommits[] = "preserveMergeCommits";
/// Hooks do not run.
inline constexpr char RVGitPullOptionNoVerify[] = "noVerify";

/// Runs `git pull`. It reports progress, and its standard error holds the table that
/// RVGitRefUpdatesOutputParser reads.
///
/// Failure: the codes of RVGitMergeCommand and RVGitRebaseCommand for one that stops with conflicts
/// or cannot start; 2005 without a branch to merge; 109 and 110 for missing and bad signatures; 201
/// for an exit code of 1 that nothing else explains, which is all that git pull says of a remote
/// that cannot be fetched from: fetch first to tell these failures apart; 1 for everything else, a
/// name or spec that begins with "-" too, which is never given to git. A failure holds
/// RVGitRemoteNameErrorKey, and RVGitRefSpecErrorKey and RVGitRemoteURLErrorKey where there is one.
class RVGIT_EXPORT RVGitPullCommand : public RVGitCommand {
public:
    /// An absent remote is this repository. The repository is required.
    RVGitPullCommand(const std::shared_ptr<RVGitRepository>& repository,
                     std::shared_ptr<RVGitRemote> remote, std::shared_ptr<RVGitRefSpec> refSpec,
                     const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitPullCommand> gitPullCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
        std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options);

    [[nodiscard]] const std::shared_ptr<RVGitRemote>& remote() const { return remote_; }
    void setRemote(std::shared_ptr<RVGitRemote> remote) { remote_ = std::move(remote); }
    /// The remote's name; "." without a remote.
    [[nodiscard]] std::string remoteName() const;
    [[nodiscard]] const std::shared_ptr<RVGitRefSpec>& refSpec() const { return refSpec_; }
    void setRefSpec(std::shared_ptr<RVGitRefSpec> refSpec) { refSpec_ = std::move(refSpec); }
    [[nodiscard]] bool usesRebase() const { return usesRebase_; }
    void setUsesRebase(bool uses) { usesRebase_ = uses; }
    /// Kept for compatibility: it gives git "-p", which prunes obsolete remote branches and
    /// preserves nothing.
    [[nodiscard]] bool preservesMergeCommits() const { return preservesMergeCommits_; }
    void setPreservesMergeCommits(bool preserves) { preservesMergeCommits_ = preserves; }
    [[nodiscard]] bool verifiesSignatures() const { return verifiesSignatures_; }
    void setVerifiesSignatures(bool verifies) { verifiesSignatures_ = verifies; }
    [[nodiscard]] bool noVerify() const { return noVerify_; }
    void setNoVerify(bool noVerify) { noVerify_ = noVerify; }
    /// Whose ssh signatures are good. Counts only where signatures are verified.
    [[nodiscard]] const std::optional<std::string>& allowedSignersFile() const {
        return allowedSignersFile_;
    }
    void setAllowedSignersFile(std::optional<std::string> path) {
        allowedSignersFile_ = std::move(path);
    }

    /// The rows of RVGitMergeCommand, then those of RVGitRebaseCommand.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::shared_ptr<RVGitRemote> remote_;
    std::shared_ptr<RVGitRefSpec> refSpec_;
    bool usesRebase_ = false;
    bool preservesMergeCommits_ = false;
    bool verifiesSignatures_ = false;
    bool noVerify_ = false;
    std::optional<std::string> allowedSignersFile_;
};
