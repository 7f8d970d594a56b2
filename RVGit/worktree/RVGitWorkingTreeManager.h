#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/worktree/RVGitResetCommand.h"

class RVGitRepository;
class RVURL;

/// How RVGitWorkingTreeManager::stageFiles() stages.
enum RVGitStageOptions : unsigned {
    /// In a call a plain 0 would be ambiguous: it could be the error place.
    RVGitStageOptionNone = 0,
    /// Stages ignored files as well.
    RVGitStageOptionForce = 1,
    /// Stages the name without the contents.
    /// Beside a deleted file of like contents git then shows a rename: to stage single lines of
    /// that stages the rename, and takes the old name out of the index.
    RVGitStageOptionIntentToAdd = 2,
};

/// How RVGitWorkingTreeManager::moveFileAtPath() moves.
enum RVGitMoveOptions : unsigned {
    /// Replaces a file at the destination.
    RVGitMoveOptionForce = 1,
};

/// Everything that changes the index or the working tree file by file. Each operation runs git and
/// waits for it; any thread may call. Git's lock of the index is all that stands between two
/// calls at once: code 103 says that another process or thread holds it.
///
/// Paths are relative to the top of the working tree. Git reads them as patterns, but where said
/// otherwise: "*" is every file, "[ab]" also the file "a", ":(top)a" the file "a"; a directory
/// stands for all in it. For names that come from a listing, pass ":(literal)" with the name behind
/// it, or set "GIT_LITERAL_PATHSPECS" to "1" in RVGitCommandEnvironment for the time, but not while
/// a stash is saved, since git stash has patterns of its own; else an operation that loses changes
/// may lose those of other files. Where paths are taken as they are, one with a leading dash would
/// be an option: write "./-name".
///
/// A list of more paths than one command line takes is cut into batches, one process for each, in
/// order: 4000 paths (RVGitCommand::maximumNumberOfAllowedFilePathArguments()) make a slice, which
/// is one batch or, if its paths are long, several. A batch that fails ends the operation, and
/// those before it stay applied. Where all commands are cancelled, the operation ends behind the
/// batch under way: false, or no patch, with a cleared place. But where one process does it all, a
/// cancelled one counts as a success, as any command does, and a patch may end anywhere. A list
/// without paths is a success, and nothing runs. Where an operation differs, it says so; one that
/// is not cut into batches throws RVGitCommandArgumentsOverflowException for more paths than about
/// 4090.
class RVGIT_EXPORT RVGitWorkingTreeManager {
public:
    /// The repository is required.
    explicit RVGitWorkingTreeManager(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitWorkingTreeManager> workingTreeManagerWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }

    // HEAD.

    /// Checks out a branch or another revision. Changes are kept; code 1600 where they would be
    /// overwritten. Ignored files in the way are overwritten. Kept for compatibility: a name that
    /// is no revision, but a file's, reverts that file to the index, and its changes are lost.
    [[nodiscard]] bool checkoutRevision(const std::string& revision, RVErrorPlace error = nullptr);
    /// Moves HEAD and what `withMode` says; or, with paths, sets their index entries alone, for
    /// which the mode must be none. An absent revision is HEAD. RVGitResetModeHard loses changes.
    /// Not cut into batches. An empty list counts as none: HEAD moves.
    [[nodiscard]] bool resetToRevision(const std::optional<std::string>& revision,
                                       RVGitResetMode withMode,
                                       const std::optional<std::vector<std::string>>& filePaths,
                                       RVErrorPlace error = nullptr);

    // The index.

    /// Stages the files as they are, removed ones as removals. `options` are RVGitStageOptions and
    /// apply, kept for compatibility, to the first slice alone. Code 1300 if git finds no file at a
    /// path; nothing of the batch is staged then. An ignored file that is not forced fails with
    /// code 1, and the others are staged.
    [[nodiscard]] bool stageFiles(const std::vector<std::string>& filePaths,
                                  RVErrorPlace error = nullptr);
    [[nodiscard]] bool stageFiles(const std::vector<std::string>& filePaths, unsigned options,
                                  RVErrorPlace error = nullptr);
    /// Stages all changes, new files and removals; ignored files stay out.
    [[nodiscard]] bool stageAllFiles(RVErrorPlace error = nullptr);
    /// Sets the files' index entries to those of HEAD, and removes the entries of files that HEAD
    /// does not have. The working tree is left alone.
    [[nodiscard]] bool unstageFiles(const std::vector<std::string>& filePaths,
                                    RVErrorPlace error = nullptr);
    /// The same for every file: all that is staged, removals too.
    [[nodiscard]] bool unstageAllFiles(RVErrorPlace error = nullptr);
    /// Removes files from the index and leaves them in the working tree. A path that git does not
    /// know is no failure.
    [[nodiscard]] bool untrackFiles(const std::vector<std::string>& filePaths,
                                    RVErrorPlace error = nullptr);
    /// Makes the conflicts of the index anew that have been resolved. Git 2.39 does nothing,
    /// and succeeds, unless a merge is under way. Paths are taken as they are; not cut into
    /// batches, and run with an empty list, too.
    [[nodiscard]] bool unresolveIndexEntries(const std::vector<std::string>& filePaths,
                                             RVErrorPlace error = nullptr);
    /// Has git take the files for unchanged without looking at them, or look again. Paths are
    /// taken as they are. Kept for compatibility: the result is that of the first slice, while
    /// `error` is filled by any. Code 3000 for a path that is not in the index. What is edited in
    /// a file afterwards is lost when the working tree is stashed: take the flag away before.
    [[nodiscard]] bool setAssumeUnchangedFlagForFilePaths(const std::vector<std::string>& filePaths,
                                                          RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetAssumeUnchangedFlagForFilePaths(
        const std::vector<std::string>& filePaths, RVErrorPlace error = nullptr);

    // The working tree.

    /// Removes files from the index and the working tree, with their changes; those that git does
    /// not know stay, and are no failure. A submodule goes with all that is in it, untracked files
    /// too.
    [[nodiscard]] bool removeFiles(const std::vector<std::string>& filePaths,
                                   RVErrorPlace error = nullptr);
    /// Moves or renames a file or directory, in the index and the working tree. Paths are taken as
    /// they are. The same path twice, or in two Unicode forms, is a success, and nothing runs, even
    /// where the two forms are two files. Codes 2100 to 2106: see RVGitMoveCommand.
    ///
    /// A rename that changes only the case of letters is always forced, since the two names may be
    /// one file; where they are two, the second is overwritten.
    [[nodiscard]] bool moveFileAtPath(const std::string& filePath, const std::string& toPath,
                                      unsigned options, RVErrorPlace error = nullptr);
    /// Replaces the files and their index entries by those of HEAD or of the revision: their
    /// changes are lost, and so is what stands in the way of a file: one that is untracked or
    /// ignored, or a directory with all that is in it. A path that the revision does not have fails
    /// with code 1, and nothing of the batch is reverted. "--ours" and "--theirs" in the revision's
    /// place take one side of a conflict, and leave the conflict in the index.
    ///
    /// Kept for compatibility: slices behind the first are reverted to HEAD, whatever the
    /// revision, and the result is that of the first, while `error` is filled by any.
    [[nodiscard]] bool revertFiles(const std::vector<std::string>& filePaths,
                                   RVErrorPlace error = nullptr);
    [[nodiscard]] bool revertFiles(const std::vector<std::string>& filePaths,
                                   const std::string& toRevision, RVErrorPlace error = nullptr);
    /// Writes the files of a conflict anew, with its marks; what has been resolved in them is lost.
    /// Not cut into batches, and run with an empty list, too.
    [[nodiscard]] bool revertUnmergedFiles(const std::vector<std::string>& filePaths,
                                           RVErrorPlace error = nullptr);

    // Commits and patches.

    /// Commits the index. `options` are RVGitCommitOptions. Without a message git opens the user's
    /// editor: see RVGitCommitCommand.
    [[nodiscard]] bool commitWithMessage(const std::optional<std::string>& message,
                                         unsigned options, RVErrorPlace error = nullptr);
    /// Applies a patch, to the working tree unless the options (RVGitApplyOption...) say
    /// otherwise. All of it or, on failure, nothing: codes 1400 to 1402. Where a chunk of the patch
    /// has no context (RVGitApplyCommand::patchHasChunkWithoutContext()) and the options do not
    /// hold RVGitApplyOptionUnidiffZero, be it true or false, that option is passed: git would look
    /// for the chunk at the end of the file.
    [[nodiscard]] bool applyPatch(const std::optional<RVData>& patch,
                                  const std::optional<RVOptions>& options,
                                  RVErrorPlace error = nullptr);
    /// The same with a patch file; a file URL is required. The file is not looked into: for one
    /// without context give RVGitApplyOptionUnidiffZero.
    [[nodiscard]] bool applyPatchFromFileAtURL(const RVURL& url,
                                               const std::optional<RVOptions>& options,
                                               RVErrorPlace error = nullptr);

    /// What is staged, as a patch, in the bytes that git prints; of all files without a list or
    /// with an empty one. `options` are RVGitDiffOption... The patches of several batches follow
    /// each other; absent as a whole if one fails.
    [[nodiscard]] std::optional<RVData> patchByComparingIndexWithBaseForFilePaths(
        const std::optional<std::vector<std::string>>& filePaths,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    /// The same of what is changed and not staged.
    [[nodiscard]] std::optional<RVData> patchByComparingWorkingTreeWithIndexForFilePaths(
        const std::optional<std::vector<std::string>>& filePaths,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);

private:
    std::shared_ptr<RVGitRepository> repository_;
};
