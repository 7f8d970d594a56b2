#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/repository/RVGitRef.h"

/// How RVGitStash saves a stash.
enum RVGitStashSaveOptions : unsigned {
    /// What is staged stays in the working tree, and is saved as well.
    RVGitStashSaveOptionKeepsIndex = 1,
    /// But not ignored ones.
    RVGitStashSaveOptionIncludesUntrackedFiles = 2,
};

/// One entry of the stash list: changes that were taken out of the working tree and kept as a
/// commit. It is addressed by its position, the newest being 0, so that each save and each delete
/// moves what a name or an index means: list anew afterwards. A snapshot that stays on one thread,
/// since its ref does; the static operations may be called on any, and run RVGitStashCommand, whose
/// codes they give, 2701 for the words "No local changes to save" in any output among them: after
/// that code list again where such words may stand in a message or a file name. While the index is
/// locked, saving and applying fail with the generic code 1, since git does not say why it failed,
/// and the files and the list stay as they are.
class RVGIT_EXPORT RVGitStash : public RVGitRefProtocol {
public:
    /// The repository and the ref are required. The fields of the message and the date are absent.
    RVGitStash(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref);
    [[nodiscard]] static std::shared_ptr<RVGitStash> stashWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref);

    /// "refs/stash@{0}".
    [[nodiscard]] static std::string makeFullRefNameWithStashIndex(std::uint64_t index);

    // Lookup. Each lists all stashes.

    /// The newest first. Absent on failure.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitStash>>>
    allStashesForRepository(const std::shared_ptr<RVGitRepository>& repository,
                            RVErrorPlace error = nullptr);
    /// The name is "stash@{0}", with or without "refs/" ahead of it. Null with a cleared place if
    /// there is none.
    [[nodiscard]] static std::shared_ptr<RVGitStash> stashForRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// Null with a cleared place if there are not so many.
    [[nodiscard]] static std::shared_ptr<RVGitStash> stashAtIndex(
        std::uint64_t index, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Operations.

    /// Takes the changes out of the working tree and gives the new stash, the one at 0. `options`
    /// are bits of RVGitStashSaveOptions. Null with code 2701 if there are no changes, 2700 if
    /// there is no commit yet, and the generic code 1, with everything left as it is, while the
    /// index has conflicts or files that are only intended to be added. Null with a cleared place
    /// if it was cancelled, be it saved or not, and if it was saved, but another process has
    /// emptied the list since. Git does not see what was edited in a file that is assumed
    /// unchanged: that edit is in no stash and is lost here.
    [[nodiscard]] static std::shared_ptr<RVGitStash> saveStashFromWorkingTreeInRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<std::string>& message, unsigned options, RVErrorPlace error = nullptr);
    /// Makes the commit of a stash and gives its hash, kept for compatibility with the newline that
    /// git prints behind it. Neither the working tree nor the list changes. Without changes it is
    /// empty or, with some versions of git, absent with code 1.
    [[nodiscard]] static std::optional<std::string> createStashFromWorkingTreeInRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<std::string>& message, RVErrorPlace error = nullptr);
    /// False with a cleared place if there is no such stash.
    [[nodiscard]] static bool deleteStashAtIndex(std::uint64_t index,
                                                 const std::shared_ptr<RVGitRepository>& repository,
                                                 RVErrorPlace error = nullptr);
    [[nodiscard]] static bool deleteStashWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// Puts the changes back into the working tree and, with `deletingStash`, deletes the stash
    /// afterwards. What was staged comes back unstaged, but for new files; where the file was
    /// changed again after staging, what was staged is in the stash alone and is lost with it: use
    /// RVGitStashCommand with restoresIndex to have both. False with a cleared place if there is no
    /// such stash; with code 2702 on conflicts of contents, which are left in the working tree;
    /// with code 2705 (or, deleting, the generic code 1) if local changes are in the way and
    /// nothing was done; with the generic code 1 on any other conflict. Where git fails it keeps
    /// the stash. It fails so, after the changes are back, for a file that was taken out of the
    /// index alone and was saved as an untracked one: it is in the way of itself.
    [[nodiscard]] static bool applyStashAtIndex(std::uint64_t index,
                                                const std::shared_ptr<RVGitRepository>& repository,
                                                bool deletingStash, RVErrorPlace error = nullptr);
    [[nodiscard]] static bool applyStashWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        bool deletingStash, RVErrorPlace error = nullptr);

    // Messages, as git makes them: "WIP on main: 0123abc Subject" and "On main: Message".

    /// What follows the first colon, trimmed. Absent without a colon, and for what begins with
    /// "WIP on ".
    [[nodiscard]] static std::optional<std::string> parseStashMessageFromCommitMessage(
        std::string_view commitMessage);
    /// What stands between "WIP on " or "On " at the start and the first colon; absent if either is
    /// missing. "(no branch)" on a detached HEAD.
    [[nodiscard]] static std::optional<std::string> parseOriginBranchFromCommitMessage(
        std::string_view commitMessage);

    // Fields.

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::shared_ptr<RVGitRef>& ref() const { return ref_; }
    [[nodiscard]] const std::optional<RVDate>& creationDate() const { return creationDate_; }
    /// The whole message of the commit.
    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }
    /// The message that the stash was saved with; absent if it was saved without one.
    [[nodiscard]] const std::optional<std::string>& userMessage() const { return userMessage_; }
    /// The short name of the branch that was checked out.
    [[nodiscard]] const std::optional<std::string>& originBranch() const { return originBranch_; }

    [[nodiscard]] std::optional<std::string> fullRefName() const override;
    [[nodiscard]] std::string refName() const override;
    [[nodiscard]] std::optional<std::string> commitHash() const override;
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit() override;

    /// The position in the list when it was read. Throws RVInternalInconsistencyException if the
    /// full name has none.
    [[nodiscard]] std::uint64_t index() const;

    // The parents of the commit, which is loaded if it has not been; absent where there are not so
    // many.

    /// The commit that was checked out.
    [[nodiscard]] std::optional<std::string> originCommitHash();
    /// The commit that holds what was staged.
    [[nodiscard]] std::optional<std::string> indexCommitHash();
    /// The commit that holds untracked files; absent unless they were saved.
    [[nodiscard]] std::optional<std::string> untrackedFilesCommitHash();

private:
    [[nodiscard]] std::optional<std::string> parentCommitHashAtIndex(std::size_t index);

    std::shared_ptr<RVGitRepository> repository_;
    std::shared_ptr<RVGitRef> ref_;
    std::optional<RVDate> creationDate_;
    std::optional<std::string> message_;
    std::optional<std::string> userMessage_;
    std::optional<std::string> originBranch_;
};
