#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVObservable.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/repository/RVGitRef.h"

class RVGitRemote;
struct RVGitBranchTrackingState;
class RVGitRepository;

// Configuration keys of a branch, for RVGitMakeBranchConfigKey().
inline constexpr char RVGitBranchRemoteConfigKey[] = "remote";
inline constexpr char RVGitBranchMergeConfigKey[] = "merge";
inline constexpr char RVGitBranchMergeOptionsConfigKey[] = "mergeoptions";
inline constexpr char RVGitBranchRebaseConfigKey[] = "rebase";

/// A local branch, or the detached HEAD, of a repository: a snapshot that stays on one thread. The
/// static operations may be called on any; each blocks. Names may be short or full ones. A list
/// whose commands were cancelled is absent with a cleared place.
///
/// Observers are told of "ref", "isHead", "trackedRemoteName" and "trackedRefNames" when they are
/// set, and then of what depends on them: "fullRefName", "refName", "commitHash", "commit" and
/// "isDetachedHead" on the ref, "isOrphaned" on ref and isHead, "isTracking" on the other two.
class RVGIT_EXPORT RVGitBranch : public RVGitRefProtocol, public RVObservable {
public:
    using List = std::vector<std::shared_ptr<RVGitBranch>>;

    /// The repository is required. Without a ref it is a detached HEAD.
    RVGitBranch(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref);
    ~RVGitBranch() override;
    [[nodiscard]] static std::shared_ptr<RVGitBranch> branchWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref, bool isHead,
        std::uint64_t commitsAhead, std::uint64_t commitsBehind);
    [[nodiscard]] static std::shared_ptr<RVGitBranch> detachedBranchWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::optional<std::string> commitHash);

    // Lookup.

    /// Whether git accepts the name for a ref. Costs a child process.
    [[nodiscard]] static bool isValidBranchName(const std::optional<std::string>& name);
    /// Whether the checked-out branch is unborn: the repository has no branch at all, or HEAD names
    /// no commit. Runs git show-ref and, if there are branches, git rev-list.
    [[nodiscard]] static bool isInitialCommitOnHeadBranchForRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// Runs `git branch`, `git config` and `git for-each-ref`, side by side; in git's order, a
    /// detached HEAD where git puts it, an unborn branch last. Needs git 2.10. Absent, with the
    /// error of the first of the three that failed, on failure; one ref that points at nothing
    /// makes git fail.
    ///
    /// Kept for compatibility: from git 2.23 on, a branch that is checked out in another worktree
    /// is missing (allBranchTrackingStatesForRepository() misses none); one whose name begins with
    /// a parenthesis is taken for a detached HEAD; and if no branch is HEAD and HEAD names none,
    /// the list ends in one without a ref and without a hash.
    [[nodiscard]] static std::optional<List> allBranchesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// The branch that is checked out, or the detached HEAD. Null with a cleared place if there is
    /// none. Lists all branches, as branchForRefName() does: to look up many, ask for the list
    /// once.
    [[nodiscard]] static std::shared_ptr<RVGitBranch> currentHeadBranchForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Null with a cleared place if there is none.
    [[nodiscard]] static std::shared_ptr<RVGitBranch> branchForRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// What each branch tracks and how far apart they are, by one `git for-each-ref`. It misses no
    /// branch; a detached or unborn HEAD is none. Absent on failure.
    [[nodiscard]] static std::optional<std::vector<RVGitBranchTrackingState>>
    allBranchTrackingStatesForRepository(const std::shared_ptr<RVGitRepository>& repository,
                                         RVErrorPlace error = nullptr);
    /// The same of one branch; git looks at no other. Absent with a cleared place if there is none.
    [[nodiscard]] static std::optional<RVGitBranchTrackingState> trackingStateForBranchWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Making, renaming and deleting. The codes are those of RVGitBranchCommand.

    /// Without a revision the branch begins at HEAD. It tracks nothing. Null with a cleared place,
    /// be it made or not, where all commands are cancelled; the same below.
    [[nodiscard]] static std::shared_ptr<RVGitBranch> createBranchWithRefName(
        const std::string& refName, const std::optional<std::string>& revision,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitBranch> createTrackingBranchWithRefName(
        const std::string& refName, const std::optional<std::string>& trackedRefName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Forced, it replaces a branch of the new name.
    [[nodiscard]] static bool renameBranchWithRefName(
        const std::string& refName, const std::string& newRefName,
        const std::shared_ptr<RVGitRepository>& repository, bool forcedRenaming,
        RVErrorPlace error = nullptr);
    /// Forced, it deletes a branch whose commits are nowhere else.
    [[nodiscard]] static bool deleteBranchWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        bool forcedDeletion, RVErrorPlace error = nullptr);
    /// If git refuses one of them, it deletes the others all the same.
    [[nodiscard]] static bool deleteBranchesWithRefNames(
        const std::vector<std::string>& refNames,
        const std::shared_ptr<RVGitRepository>& repository, bool forcedDeletion,
        RVErrorPlace error = nullptr);

    // The section of the branch in the configuration.

    [[nodiscard]] static bool addTrackingForBranchWithRefName(
        const std::string& refName, const std::string& trackedRefName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Kept for compatibility: the whole section goes, with rebase and merge options; and a section
    /// whose name goes on behind this one lets it be looked for where there is none (code 1005).
    /// False with a cleared place, and nothing is written, if the look for it is cancelled.
    [[nodiscard]] static bool removeTrackingForBranchWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setRebaseOption(bool usesRebase, const std::string& refName,
                                              const std::shared_ptr<RVGitRepository>& repository,
                                              RVErrorPlace error = nullptr);
    /// False with a cleared place if it is not set.
    [[nodiscard]] static bool unsetRebaseOptionForBranchWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setMergeOptions(const std::string& mergeOptions,
                                              const std::string& refName,
                                              const std::shared_ptr<RVGitRepository>& repository,
                                              RVErrorPlace error = nullptr);
    /// False with a cleared place if they are not set.
    [[nodiscard]] static bool unsetMergeOptionsForBranchWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Fields.

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// Null for a detached HEAD.
    [[nodiscard]] const std::shared_ptr<RVGitRef>& ref() const { return ref_; }
    void setRef(std::shared_ptr<RVGitRef> ref);
    /// Against the tracked ref; 0 if git shows none.
    [[nodiscard]] std::uint64_t commitsAhead() const { return commitsAhead_; }
    void setCommitsAhead(std::uint64_t count) { commitsAhead_ = count; }
    [[nodiscard]] std::uint64_t commitsBehind() const { return commitsBehind_; }
    void setCommitsBehind(std::uint64_t count) { commitsBehind_ = count; }
    /// "." is the repository itself.
    [[nodiscard]] const std::optional<std::string>& trackedRemoteName() const;
    void setTrackedRemoteName(std::optional<std::string> name);
    /// Full names on the remote's side. Empty for a branch whose section names none, absent for a
    /// branch without a section.
    [[nodiscard]] const std::optional<std::vector<std::string>>& trackedRefNames() const;
    void setTrackedRefNames(std::optional<std::vector<std::string>> names);
    /// The committer's date of the commit, in 32 bits: what is beyond 2038 is cut to the limit.
    /// Absent for a detached HEAD and an unborn branch.
    [[nodiscard]] const std::optional<RVDate>& commitDate() const { return commitDate_; }
    void setCommitDate(std::optional<RVDate> date) { commitDate_ = date; }
    /// Whether "rebase" is exactly "true": "merges" and "interactive" are not.
    [[nodiscard]] bool usesRebaseForMerge() const { return usesRebaseForMerge_; }
    void setUsesRebaseForMerge(bool uses) { usesRebaseForMerge_ = uses; }
    /// As they are configured, in one text; the first of several.
    [[nodiscard]] const std::optional<std::string>& mergeOptions() const;
    void setMergeOptions(std::optional<std::string> mergeOptions);
    /// Whether it is checked out.
    [[nodiscard]] bool isHead() const { return isHead_; }
    void setHead(bool isHead);
    [[nodiscard]] const std::optional<std::string>& detachedHeadCommitHash() const;
    void setDetachedHeadCommitHash(std::optional<std::string> hash);

    [[nodiscard]] bool isDetachedHead() const { return ref_ == nullptr; }
    /// Whether it is unborn: checked out, without a commit.
    [[nodiscard]] bool isOrphaned() const;
    /// Whether it has a tracked remote, be it without tracked refs.
    [[nodiscard]] bool isTracking() const;

    [[nodiscard]] std::optional<std::string> fullRefName() const override;
    /// "(no branch)" for a detached HEAD.
    [[nodiscard]] std::string refName() const override;
    [[nodiscard]] std::optional<std::string> commitHash() const override;
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit() override;

    // What it tracks.

    /// Lists all remotes. Null with a cleared place if there is none of that name.
    [[nodiscard]] std::shared_ptr<RVGitRemote> trackedRemote(RVErrorPlace error = nullptr) const;
    /// The tracked refs as this repository has them; one that it has not is left out. Lists all
    /// refs, once. Absent on failure, and with a cleared place for a branch that tracks nothing.
    /// Kept for compatibility: "refs/heads/" is replaced wherever it stands in a name.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitRef>>> trackedRefs(
        RVErrorPlace error = nullptr) const;

    // Subversion. All of these are false or absent outside of a repository that git-svn bridges.

    [[nodiscard]] bool isTrackingSVNBranch();
    /// The last commit that came from Subversion or went there. No error is reported.
    [[nodiscard]] std::shared_ptr<RVGitCommit> lastSVNCommit(RVErrorPlace error = nullptr) const;
    /// The remote that commit is of.
    [[nodiscard]] std::shared_ptr<RVGitRemote> trackedSVNRemote(RVErrorPlace error = nullptr) const;
    /// Looked up on first request and kept.
    [[nodiscard]] const std::optional<std::string>& trackedSVNRemoteName();
    /// The last remote branch of that remote whose commit has the address of that commit. Loads the
    /// commit of each on first request; kept.
    [[nodiscard]] const std::optional<std::string>& trackedSVNRefName();
    [[nodiscard]] std::shared_ptr<RVGitRef> trackedSVNRef(RVErrorPlace error = nullptr);

private:
    // What few of many branches have.
    struct Details;
    [[nodiscard]] Details& details();

    std::shared_ptr<RVGitRepository> repository_;
    std::shared_ptr<RVGitRef> ref_;
    std::uint64_t commitsAhead_ = 0;
    std::uint64_t commitsBehind_ = 0;
    std::optional<RVDate> commitDate_;
    std::unique_ptr<Details> details_;
    bool usesRebaseForMerge_ = false;
    bool isHead_ = false;
};
