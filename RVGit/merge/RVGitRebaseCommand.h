#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

// Options of RVGitRebaseCommand: booleans, of which only true counts, but for the one of text.

/// Keeps commits without changes.
inline constexpr char RVGitRebaseOptionKeepsEmptyCommits[] = "RVGitRebaseOptionKeepsEmptyCommits";
/// Makes merges anew instead of leaving them out.
inline constexpr char RVGitRebaseOptionPreservesMergeCommits[] =
    "RVGitRebaseOptionPreservesMergeCommits";
/// Works off a list, which the script in "GIT_SEQUENCE_EDITOR" may change.
inline constexpr char RVGitRebaseOptionInteractive[] = "RVGitRebaseOptionInteractive";
/// Text: how messages are cleaned up ("whitespace", "verbatim", ...); empty for as configured.
inline constexpr char RVGitRebaseOptionCleanupCommit[] = "RVGitRebaseOptionCleanupCommit";
/// Moves the commits onto the target base.
inline constexpr char RVGitRebaseOptionOnto[] = "RVGitRebaseOptionOnto";
/// Folds "fixup!" and "squash!" commits into those that they name; implies
/// RVGitRebaseOptionInteractive.
inline constexpr char RVGitRebaseOptionAutosquash[] = "RVGitRebaseOptionAutosquash";
/// Skips the hook that could refuse.
inline constexpr char RVGitRebaseOptionNoVerify[] = "RVGitRebaseOptionNoVerify";

/// Runs `git rebase`. It never opens an editor: git's own lists and messages are taken, unless the
/// caller has put a script into "GIT_EDITOR" or "GIT_SEQUENCE_EDITOR" of the command.
///
/// Failure, with the revision under RVGitRevisionErrorKey: code 2200 for a step that has stopped at
/// conflicts, which leaves the rebase under way; 2201 if nothing has begun since there are changes
/// that are not committed, 2003 since a rebase is under way; 2202 for a continuation with conflicts
/// left, 2203 for a rebase of a branch without upstream. Newer gits put some of it in other words:
/// changes are code 2201 only if some of them are staged, and 1 otherwise; the conflicts that are
/// left may be code 1, and so is a step without changes. A revision that begins with "-" is refused
/// with code 1 before anything runs.
class RVGIT_EXPORT RVGitRebaseCommand : public RVGitCommand {
public:
    /// Codes that the catalogue does not hold: a rebase is under way already; no upstream.
    static constexpr std::int64_t rebaseInProgressErrorCode = 2003;
    static constexpr std::int64_t noTrackingInformationErrorCode = 2203;

    /// The repository is required.
    RVGitRebaseCommand(const std::shared_ptr<RVGitRepository>& repository,
                       const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitRebaseCommand> gitRebaseCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    /// Where the current branch is moved; with rebaseOnto(), the branch whose commits are moved.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    /// The commits of revision() that are not in this one are moved. Without rebaseOnto() neither
    /// of the bases is used.
    [[nodiscard]] const std::optional<std::string>& currentBaseRevision() const {
        return currentBaseRevision_;
    }
    void setCurrentBaseRevision(std::optional<std::string> revision) {
        currentBaseRevision_ = std::move(revision);
    }
    [[nodiscard]] const std::optional<std::string>& targetBaseRevision() const {
        return targetBaseRevision_;
    }
    void setTargetBaseRevision(std::optional<std::string> revision) {
        targetBaseRevision_ = std::move(revision);
    }
    [[nodiscard]] bool keepsEmptyCommits() const { return keepsEmptyCommits_; }
    void setKeepsEmptyCommits(bool keeps) { keepsEmptyCommits_ = keeps; }
    [[nodiscard]] bool preservesMergeCommits() const { return preservesMergeCommits_; }
    void setPreservesMergeCommits(bool preserves) { preservesMergeCommits_ = preserves; }
    [[nodiscard]] bool interactiveRebase() const { return interactiveRebase_; }
    void setInteractiveRebase(bool interactive) { interactiveRebase_ = interactive; }
    [[nodiscard]] const std::optional<std::string>& commitCleanupOptionValue() const {
        return commitCleanupOptionValue_;
    }
    void setCommitCleanupOptionValue(std::optional<std::string> value) {
        commitCleanupOptionValue_ = std::move(value);
    }
    /// Whether commitCleanupOptionValue() counts.
    [[nodiscard]] bool cleanUpCommits() const { return cleanUpCommits_; }
    void setCleanUpCommits(bool cleansUp) { cleanUpCommits_ = cleansUp; }
    [[nodiscard]] bool rebaseOnto() const { return rebaseOnto_; }
    void setRebaseOnto(bool onto) { rebaseOnto_ = onto; }
    [[nodiscard]] bool autosquash() const { return autosquash_; }
    void setAutosquash(bool autosquash) { autosquash_ = autosquash; }
    [[nodiscard]] bool noVerify() const { return noVerify_; }
    void setNoVerify(bool noVerify) { noVerify_ = noVerify; }
    /// All commits down to the first one are moved.
    [[nodiscard]] bool rebasesRootCommit() const { return rebasesRootCommit_; }
    void setRebasesRootCommit(bool rebases) { rebasesRootCommit_ = rebases; }

    // What is done, instead, with the rebase that is under way.

    [[nodiscard]] bool continuesRebase() const { return continuesRebase_; }
    void setContinuesRebase(bool continues) { continuesRebase_ = continues; }
    [[nodiscard]] bool abortsRebase() const { return abortsRebase_; }
    void setAbortsRebase(bool aborts) { abortsRebase_ = aborts; }
    [[nodiscard]] bool skipsRebase() const { return skipsRebase_; }
    void setSkipsRebase(bool skips) { skipsRebase_ = skips; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::optional<std::string> revision_;
    std::optional<std::string> currentBaseRevision_;
    std::optional<std::string> targetBaseRevision_;
    bool keepsEmptyCommits_ = false;
    bool preservesMergeCommits_ = false;
    bool interactiveRebase_ = false;
    std::optional<std::string> commitCleanupOptionValue_;
    bool cleanUpCommits_ = false;
    bool rebaseOnto_ = false;
    bool autosquash_ = false;
    bool noVerify_ = false;
    bool rebasesRootCommit_ = false;
    bool continuesRebase_ = false;
    bool abortsRebase_ = false;
    bool skipsRebase_ = false;
};
