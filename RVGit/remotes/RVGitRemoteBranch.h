#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVObservable.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/repository/RVGitRef.h"

class RVGitBranchCommand;
class RVGitForEachRefCommand;
class RVGitRemote;

/// A remote-tracking branch: what this repository last saw of a branch of a remote. A snapshot that
/// stays on one thread, since its ref does; the static operations may be called on any.
///
/// Observers of "fullRefName", "refName", "commitHash" and "commit" are told when the ref is set.
class RVGIT_EXPORT RVGitRemoteBranch : public RVGitRefProtocol, public RVObservable {
public:
    using List = std::vector<std::shared_ptr<RVGitRemoteBranch>>;

    /// The repository and the ref are required.
    RVGitRemoteBranch(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
                      std::optional<std::string> remoteName, bool isHead);
    [[nodiscard]] static std::shared_ptr<RVGitRemoteBranch> remoteBranchWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
        std::optional<std::string> remoteName, bool isHead);

    /// Runs `git branch -r` and `git for-each-ref` side by side, and twice `git config`; in git's
    /// order. Absent, with the error, on failure. A ref that belongs to no configured remote is
    /// left out; so is each remote's HEAD, which only marks the branch that it points at.
    ///
    /// Kept for compatibility: where a remote's HEAD points at a name that something else has too
    /// (a tag, a branch "origin/main"), git prints it in a longer form, and no branch is marked;
    /// and where the configuration cannot be read for the remotes' names, the list is empty.
    [[nodiscard]] static std::optional<List> allRemoteBranchesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Finds it by its short ("origin/main") or full name. Null with a cleared place if there is
    /// none. Lists all: to look up many, ask for the list once.
    [[nodiscard]] static std::shared_ptr<RVGitRemoteBranch> remoteBranchForRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::shared_ptr<RVGitRef>& ref() const { return ref_; }
    void setRef(std::shared_ptr<RVGitRef> ref);
    [[nodiscard]] const std::optional<std::string>& remoteName() const { return remoteName_; }
    void setRemoteName(std::optional<std::string> name) { remoteName_ = std::move(name); }
    /// Whether the remote's HEAD points at this branch, as this repository knows it.
    [[nodiscard]] bool isHead() const { return isHead_; }
    void setHead(bool isHead) { isHead_ = isHead; }
    /// The committer's date of the commit, in 32 bits: what is beyond 2038 is cut to the limit.
    [[nodiscard]] const std::optional<RVDate>& commitDate() const { return commitDate_; }
    void setCommitDate(std::optional<RVDate> date) { commitDate_ = date; }

    [[nodiscard]] std::optional<std::string> fullRefName() const override;
    [[nodiscard]] std::string refName() const override;
    [[nodiscard]] std::optional<std::string> commitHash() const override;
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit() override;

    /// The remote of `remoteName`; lists all remotes. Null with a cleared place if there is none.
    [[nodiscard]] std::shared_ptr<RVGitRemote> remote(RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::shared_ptr<RVGitRef> ref_;
    std::optional<std::string> remoteName_;
    std::optional<RVDate> commitDate_;
    bool isHead_;
};

/// The two listings that the remote branches are made of: for whoever runs them beside others.
struct RVGIT_EXPORT RVGitRemoteBranchCommands {
    explicit RVGitRemoteBranchCommands(const std::shared_ptr<RVGitRepository>& repository);

    /// Waits for the commands, which are on the queue, and makes the list.
    [[nodiscard]] std::optional<RVGitRemoteBranch::List> finish(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) const;

    std::shared_ptr<RVGitBranchCommand> branches;
    std::shared_ptr<RVGitForEachRefCommand> dates;
};
