#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

// Options of RVGitMergeCommand. An option that is not given leaves the field as it starts.

/// Boolean, true unless given: whether a merge without conflicts is committed.
inline constexpr char RVGitMergeOptionCommitChanges[] = "RVGitMergeOptionCommitChanges";
/// Boolean, true unless given: whether the branch is just moved where that is enough. Git refuses
/// false together with squashing.
inline constexpr char RVGitMergeOptionFastForward[] = "RVGitMergeOptionFastForward";
/// Boolean: the changes alone, with no second parent, to be committed by the caller.
inline constexpr char RVGitMergeOptionSquashCommits[] = "RVGitMergeOptionSquashCommits";
/// Boolean: only a revision with a good signature is merged.
inline constexpr char RVGitMergeOptionVerifySignatures[] = "RVGitMergeOptionVerifySignatures";
/// Text: the path of the file with the signers that are trusted, for signatures of SSH keys. Read
/// only beside RVGitMergeOptionVerifySignatures.
inline constexpr char RVGitMergeOptionAllowedSignersFile[] = "RVGitMergeOptionAllowedSignersFile";
/// Boolean, of which only true counts: skips the hooks that could refuse. Gits below 2.15 have no
/// such option and take it for an abbreviation of "--no-verify-signatures".
inline constexpr char RVGitMergeOptionNoVerify[] = "RVGitMergeOptionNoVerify";

/// Runs `git merge`. It never opens an editor: the message is git's proposal.
///
/// Failure: code 2000 for a merge that has stopped at conflicts, which leaves it under way; 2001 if
/// changes of the working tree are in the way, 2002 if conflicts of an earlier operation are. Newer
/// gits end in another way, so that the second is the generic code 1, and the first as well unless
/// the branch would just have been moved. A revision that begins with "-" is refused with code 1
/// before anything runs.
class RVGIT_EXPORT RVGitMergeCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitMergeCommand(const std::shared_ptr<RVGitRepository>& repository,
                      const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitMergeCommand> gitMergeCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    /// What is merged into HEAD; absent: git takes the upstream branch.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    [[nodiscard]] bool commitsChanges() const { return commitsChanges_; }
    void setCommitsChanges(bool commits) { commitsChanges_ = commits; }
    [[nodiscard]] bool fastForwards() const { return fastForwards_; }
    void setFastForwards(bool fastForwards) { fastForwards_ = fastForwards; }
    [[nodiscard]] bool squashesChanges() const { return squashesChanges_; }
    void setSquashesChanges(bool squashes) { squashesChanges_ = squashes; }
    [[nodiscard]] bool verifiesSignatures() const { return verifiesSignatures_; }
    void setVerifiesSignatures(bool verifies) { verifiesSignatures_ = verifies; }
    /// Has no effect unless signatures are verified.
    [[nodiscard]] const std::optional<std::string>& allowedSignersFile() const {
        return allowedSignersFile_;
    }
    void setAllowedSignersFile(std::optional<std::string> path) {
        allowedSignersFile_ = std::move(path);
    }
    [[nodiscard]] bool noVerify() const { return noVerify_; }
    void setNoVerify(bool noVerify) { noVerify_ = noVerify; }
    /// Instead of merging, puts back what was there before the merge that is under way.
    [[nodiscard]] bool abortsMerge() const { return abortsMerge_; }
    void setAbortsMerge(bool aborts) { abortsMerge_ = aborts; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::string> revision_;
    bool commitsChanges_ = true;
    bool fastForwards_ = true;
    bool squashesChanges_ = false;
    bool verifiesSignatures_ = false;
    std::optional<std::string> allowedSignersFile_;
    bool noVerify_ = false;
    bool abortsMerge_ = false;
};
