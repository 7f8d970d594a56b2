#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitValues.h"

class RVGitCommit;
class RVGitRepository;

/// What refs, branches, remote branches, tags and the stash have in common.
class RVGIT_EXPORT RVGitRefProtocol {
public:
    virtual ~RVGitRefProtocol() = default;
    /// Absent for a detached HEAD.
    [[nodiscard]] virtual std::optional<std::string> fullRefName() const = 0;
    /// The short name.
    [[nodiscard]] virtual std::string refName() const = 0;
    /// Absent on an unborn branch.
    [[nodiscard]] virtual std::optional<std::string> commitHash() const = 0;
    /// Loaded on first request, by a git process, and kept. Absent without a hash, and where it
    /// could not be loaded.
    [[nodiscard]] virtual std::shared_ptr<RVGitCommit> commit() = 0;

protected:
    RVGitRefProtocol() = default;
    RVGitRefProtocol(const RVGitRefProtocol&) = default;
    RVGitRefProtocol& operator=(const RVGitRefProtocol&) = default;
};

/// A ref name with the hash it stood for when it was read: a snapshot that nothing refreshes. An
/// object stays on one thread; the static operations may be called on any.
class RVGIT_EXPORT RVGitRef : public RVGitRefProtocol {
public:
    /// The repository is required.
    RVGitRef(std::shared_ptr<RVGitRepository> repository, std::string fullRefName,
             std::optional<std::string> commitHash);
    [[nodiscard]] static std::shared_ptr<RVGitRef> refWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string fullRefName,
        std::optional<std::string> commitHash);
    /// With the commit's hash, and the commit as if it had been loaded.
    [[nodiscard]] static std::shared_ptr<RVGitRef> refWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string fullRefName,
        std::shared_ptr<RVGitCommit> commit);

    // Names.

    /// The type that follows from a name. "HEAD" and "grafted" count as branches, and every name
    /// under "refs/" of no other type as the stash: refType() of an object is stricter.
    [[nodiscard]] static RVGitRefType refTypeForRefName(std::string_view refName);
    /// Whether git accepts the name, under "refs/" if it does not begin with that. An absent name
    /// is invalid. Costs a child process (git check-ref-format).
    [[nodiscard]] static bool isValidRefName(const std::optional<std::string>& refName);
    /// The name behind the type's prefix. "HEAD", a name that begins with "refs/" and any name of
    /// a type without prefix come back unchanged.
    [[nodiscard]] static std::string makeFullRefName(std::string_view refName,
                                                     RVGitRefType refType);
    /// The full name, on this side, of a branch of a remote: "refs/remotes/origin/x" for "origin"
    /// and "refs/heads/x". The remote "." is this repository and gives "refs/heads/x".
    [[nodiscard]] static std::string makeFullRemoteRefNameWithRemoteName(
        const std::optional<std::string>& remoteName, std::string_view refName);
    /// The reverse: the full name on the remote's side. Absent unless the name is that of a remote
    /// branch or, for the remote ".", that of a branch. Whether the branch is one of that remote
    /// is not checked.
    [[nodiscard]] static std::optional<std::string> makeFullRefNameForRemoteWithName(
        const std::optional<std::string>& remoteName, std::string_view refName);
    /// A name that begins with "refs/", without as many characters as the type's prefix has;
    /// whether it has that prefix is not checked. Any other name comes back unchanged.
    [[nodiscard]] static std::string makeRefName(std::string_view refName, RVGitRefType refType);
    /// "refs/heads/" and its like, "refs/" for the stash; absent for type 0.
    [[nodiscard]] static std::optional<std::string> refPrefixForRefType(RVGitRefType refType);

    // Lookup. Each runs git show-ref.

    /// All refs but "refs/stash", in git's order; on an unborn branch, that branch last, without a
    /// hash. The options are those of RVGitShowRefCommand. Absent, with the error, on failure; also
    /// absent, without one, if a place was given and HEAD names neither a branch nor a commit. The
    /// hash of an annotated tag is that of the tag object unless RVGitShowRefOptionTags is set.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitRef>>> allRefsForRepository(
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// Absent with a cleared place if there is no such ref. Lists all refs: to look up many, ask
    /// for the list once.
    [[nodiscard]] static std::shared_ptr<RVGitRef> refForFullRefName(
        const std::string& fullRefName, const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    /// The ref of the checked-out branch. Absent with a cleared place if HEAD is detached.
    [[nodiscard]] static std::shared_ptr<RVGitRef> headRefForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// The branch that HEAD names, without a hash; runs nothing. Absent with a cleared place if it
    /// names none.
    [[nodiscard]] static std::shared_ptr<RVGitRef> initialRefFromHeadFileForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    // Fields.

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// Always present.
    [[nodiscard]] std::optional<std::string> fullRefName() const override { return fullRefName_; }
    [[nodiscard]] std::string refName() const override;
    [[nodiscard]] std::optional<std::string> commitHash() const override { return commitHash_; }
    /// Leaves a commit that was loaded before as it is.
    void setCommitHash(std::optional<std::string> commitHash) {
        commitHash_ = std::move(commitHash);
    }
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit() override;

    /// The branch, remote branch, tag or stash of that name, looked up by refType(). Null with a
    /// cleared place for a ref of another type, and if there is none such any more.
    [[nodiscard]] std::shared_ptr<RVGitRefProtocol> refObject(RVErrorPlace error = nullptr) const;

    [[nodiscard]] RVGitRefType refType() const;
    [[nodiscard]] bool isBranchRefType() const;
    [[nodiscard]] bool isRemoteBranchRefType() const;
    [[nodiscard]] bool isTagRefType() const;
    [[nodiscard]] bool isStashRefType() const;
    /// Whether this is "HEAD" itself.
    [[nodiscard]] bool isHeadRef() const { return fullRefName_ == "HEAD"; }

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string fullRefName_;
    std::optional<std::string> commitHash_;
    std::shared_ptr<RVGitCommit> commit_;
};
