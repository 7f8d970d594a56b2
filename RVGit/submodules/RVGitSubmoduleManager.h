#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitRepositoryPart.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"

class RVGitIndexEntry;
class RVGitRepository;
class RVGitSubmodule;

/// Bits of the options of RVGitSubmoduleManager::removeSubmoduleAtPath().
enum RVGitSubmoduleRemoveOptions : unsigned {
    /// Removes it even with local modifications, which are lost.
    RVGitSubmoduleRemoveOptionForce = 1,
    /// Takes it out of the index and leaves the working tree; local modifications are no matter.
    RVGitSubmoduleRemoveOptionKeepWorkingTree = 2,
    /// Removes its git directory, too: all commits that were not pushed.
    RVGitSubmoduleRemoveOptionRemoveGitDirectory = 4,
};

/// Adds, removes, moves, renames and updates the submodules of a repository. Each operation runs
/// git, several times for most, and blocks; it may be called on any thread, but not on one of the
/// command queue. RVGitRepository::submoduleManager() hands one out.
///
/// Remove, move and rename are made of steps. They end behind the one under way, false with a
/// cleared place, where all commands of the queue are cancelled. One that fails ends the operation
/// with its error, and the steps before it stay done; the same call again goes on from there, as
/// long as ".gitmodules" still has the submodule: where only the section of the repository's own
/// configuration is left, the submodule is not found any more, and the section stays.
///
/// Names and paths come from ".gitmodules", a stranger's file. Nothing outside of the working tree
/// and of the folder "modules" in the git directory is moved, written or removed, nor the
/// superproject's git directory, nor anything below a symbolic link: an operation that would do it
/// fails before its first step, with code 2600 for a removal, 2103 for a move or rename, 2803 for
/// the others, and with 1006 where ".gitmodules" itself is a link. A submodule whose git directory
/// lies elsewhere, as that of a linked worktree does, keeps it. Kept for compatibility: git's own
/// refusals leave what git had done by then.
class RVGIT_EXPORT RVGitSubmoduleManager : public RVGitRepositoryPart {
public:
    /// The repository is required, and kept alive.
    explicit RVGitSubmoduleManager(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleManager> managerWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    // Adding.

    /// Whether a submodule may be added at the path: code 2803 for one that is not below the top
    /// of the working tree; 2804 for one where something other than an empty directory is, and for
    /// one that is a submodule's name. Kept for compatibility: the path is under
    /// RVGitSubmoduleNameErrorKey for both, so that the reason of 2804 does not name it.
    [[nodiscard]] bool canAddSubmoduleAtPath(const std::string& path, RVErrorPlace error = nullptr);
    /// Clones it and stages it with ".gitmodules". `options` are RVGitSubmoduleAddOptions. Codes
    /// 2804 and 2805 for what is in the way; 2803 without running git for a path that leaves the
    /// working tree. Since git 2.38.1 an address that is a local path needs the configuration
    /// "protocol.file.allow" to be "always". An address that cannot be cloned leaves no submodule.
    /// An empty directory at the path makes room.
    ///
    /// A failure behind the clone leaves what was done by then; the same call again goes on from
    /// there, for which git has to be forced. Where a full disk ended the checkout, it registers
    /// the submodule, which is dirty then: an update with force checks it out. Kept for
    /// compatibility: a directory that may not be written in is code 202, since "Permission denied"
    /// counts as said by a server.
    [[nodiscard]] bool addSubmoduleWithURL(const std::string& URL, const std::string& atPath,
                                           unsigned options, RVErrorPlace error = nullptr);

    // Removing, moving, renaming. False with a cleared place if there is no such submodule.

    /// Removes the working tree, the index entry, with bit 4 the git directory, and the section of
    /// both configurations. `options` are RVGitSubmoduleRemoveOptions. With code 2602 nothing is
    /// touched: the submodule is dirty, or has been taken out of the index and its directory still
    /// has something in it, and neither bit 1 nor 2 is set. Dirty is what git calls so in the
    /// submodule, also where a configuration, a stranger's ".gitmodules" for one, leaves it out of
    /// the list. Kept for compatibility: files that are
    /// only untracked do not make it dirty (from git 2.31 on), nor commits that were not pushed:
    /// ask submoduleContainsUncommittedWork() first. Where ".gitmodules" has changes that are not
    /// staged git refuses, and the working tree is gone by then.
    ///
    /// Without bits 2 and 4, a git directory that is in the working tree, or further down in that
    /// of a submodule in it, is moved to the folder "modules" first, as `git submodule
    /// absorbgitdirs` does. A failure of that ends the operation before anything is removed: git
    /// moves none that the index or ".gitmodules" does not have, nor one with several worktrees.
    /// Bit 4 removes it.
    ///
    /// With bit 4, it is code 2600 where the git directories of other submodules lie in that of
    /// this one ("lib/a" in "lib").
    [[nodiscard]] bool removeSubmoduleAtPath(const std::string& path, unsigned options,
                                             RVErrorPlace error = nullptr);
    /// Moves the working tree, writes its new place into the submodule's configuration and into
    /// ".gitmodules", and stages both paths, but not ".gitmodules". An empty directory at the new
    /// path makes room; directories that are missing above it are made.
    ///
    /// Kept for compatibility: the submodule's ".git" file stays as it is. Where the new path has
    /// another number of components, it leads nowhere then, and the last step stages the
    /// submodule's files as plain files, or fails, which is not reported. Use
    /// relocateSubmoduleWithPath() instead.
    [[nodiscard]] bool moveSubmoduleWithPath(const std::string& path, const std::string& toNewPath,
                                             RVErrorPlace error = nullptr);
    /// Moves the git directory, writes its new place into the submodule's ".git" file, and renames
    /// the section of both configurations; nothing is staged. Code 2100 for a name that another
    /// submodule has.
    ///
    /// Kept for compatibility: "core.worktree" of the submodule stays as it is, and is wrong where
    /// the new name has another number of components: git fails in the submodule then, and the list
    /// of all with it. So do the links of submodules in it, whatever the name. Use
    /// renameSubmoduleKeepingLinksWithName() instead. Whether the ".git" file could be written is
    /// not reported.
    [[nodiscard]] bool renameSubmoduleWithName(const std::string& name,
                                               const std::string& toNewName,
                                               RVErrorPlace error = nullptr);
    /// The same for a name of any number of components: "core.worktree" is set, too, also of the
    /// submodules in it, whose git directories move along, and a failure to write a link ends the
    /// operation.
    [[nodiscard]] bool renameSubmoduleKeepingLinksWithName(const std::string& name,
                                                           const std::string& toNewName,
                                                           RVErrorPlace error = nullptr);
    /// Moves the submodule by `git mv`, which keeps the ".git" file and "core.worktree" right, and
    /// stages the move with ".gitmodules". The codes of RVGitMoveCommand, 2100 for a path at which
    /// something other than an empty directory is; the generic code 1 where ".gitmodules" has
    /// changes that are not staged. A failure leaves everything as it was.
    [[nodiscard]] bool relocateSubmoduleWithPath(const std::string& path,
                                                 const std::string& toNewPath,
                                                 RVErrorPlace error = nullptr);

    /// Whether removing the working tree of a submodule would lose something that is in no commit:
    /// changes, staged or not, and untracked files, but not ignored ones, in the submodule and in
    /// its own submodules; or, where it has no repository of its own, any file at all. True with a
    /// filled place where that cannot be found out, and with a cleared one where all commands are
    /// cancelled meanwhile; false with a cleared one if there is no such submodule.
    [[nodiscard]] bool submoduleContainsUncommittedWork(const std::string& atPath,
                                                        RVErrorPlace error = nullptr);

    // Updating: checking out what the index records, cloning where needed. `options` are
    // RVGitSubmoduleUpdateOptions. A list without paths, here and below, is a success, and nothing
    // runs.

    /// Without bit 4, code 2804 and nothing is updated where the directory of a submodule whose git
    /// directory is kept has no repository, but files that git would replace without a word.
    [[nodiscard]] bool updateAllSubmodulesWithOptions(unsigned options,
                                                      RVErrorPlace error = nullptr);
    [[nodiscard]] bool updateSubmoduleAtPath(const std::string& path, unsigned options,
                                             RVErrorPlace error = nullptr);
    [[nodiscard]] bool updateSubmoduleAtPaths(const std::vector<std::string>& paths,
                                              unsigned options, RVErrorPlace error = nullptr);

    // Copying addresses from ".gitmodules" into the repository's configuration.

    [[nodiscard]] bool initAllSubmodules(RVErrorPlace error = nullptr);
    [[nodiscard]] bool initSubmoduleAtPath(const std::string& path, RVErrorPlace error = nullptr);
    [[nodiscard]] bool initSubmodulesAtPaths(const std::vector<std::string>& paths,
                                             RVErrorPlace error = nullptr);

    // The same for those that have been initialized, and for their remotes.

    [[nodiscard]] bool synchronizeAllSubmoduleURLs(RVErrorPlace error = nullptr);
    [[nodiscard]] bool synchronizeURLForSubmoduleAtPath(const std::string& path,
                                                        RVErrorPlace error = nullptr);

private:
    friend class RVGitRepository;
    /// The repository's own, which does not keep it alive.
    explicit RVGitSubmoduleManager(std::weak_ptr<RVGitRepository> owner);

    /// False, with the place filled.
    bool fail(RVGitErrorCode code, const RVUserInfo& userInfo, RVErrorPlace error) const;
    [[nodiscard]] bool failToMove(RVGitErrorCode code, const std::string& source,
                                  const std::string& destination, RVErrorPlace error) const;
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleForPath(const std::string& path,
                                                                   RVErrorPlace error) const;
    [[nodiscard]] bool renameSubmodule(const std::string& name, const std::string& newName,
                                       bool keepsLinks, RVErrorPlace error) const;
    [[nodiscard]] bool updateSubmodules(const std::optional<std::vector<std::string>>& paths,
                                        unsigned options, RVErrorPlace error) const;
    [[nodiscard]] bool initSubmodules(const std::optional<std::vector<std::string>>& paths,
                                      RVErrorPlace error) const;
    [[nodiscard]] bool synchronizeURLs(const std::optional<std::vector<std::string>>& paths,
                                       RVErrorPlace error) const;
    /// By path; absent where the index cannot be read, which is git's turn to say.
    using IndexEntries =
        std::optional<std::map<std::string, std::shared_ptr<RVGitIndexEntry>, std::less<>>>;
    [[nodiscard]] IndexEntries submoduleIndexEntries() const;
    /// Of the paths, or of all that the index has where there are none.
    [[nodiscard]] bool requireContainedPaths(const std::optional<std::vector<std::string>>& paths,
                                             const IndexEntries& entries, RVErrorPlace error) const;
    [[nodiscard]] bool requireReplaceableFiles(const std::optional<std::vector<std::string>>& paths,
                                               const IndexEntries& entries, unsigned options,
                                               RVErrorPlace error) const;
};
