#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/repository/RVGitRepositoryPart.h"

class RVGitConfig;
class RVGitIgnores;
class RVGitIndex;
class RVGitSubmodule;
class RVGitSubmoduleLoader;
class RVGitSubmoduleManager;
class RVOperationQueue;

/// Where a repository lies and of what kind it is. Validity and the three paths are set once, when
/// the object is made, and do not follow the disk. An object is made by its factories or by
/// std::make_shared and lives as long as a caller keeps it; it may be used on any thread.
///
/// Paths are absent for an invalid repository, which has no git directory; those below the working
/// tree, and those of files that belong to work in one, are absent for a bare repository.
class RVGIT_EXPORT RVGitRepository : public std::enable_shared_from_this<RVGitRepository> {
public:
    /// Asks git (up to four child processes) where the repository is that the path lies in. Never
    /// fails once a git is chosen (without one, the precondition "gitBinary" throws): the object is
    /// valid or not, and not valid where all commands are cancelled meanwhile. If it is not, `path`
    /// is the given one. Not to be done on a thread of the command queue.
    explicit RVGitRepository(const std::string& path);
    /// Takes the paths as they are, without running git. Valid exactly when there is a git
    /// directory. `path` is the working tree as given, or else the git directory as given. Git is
    /// told of both by options, and so skips its check that the directory belongs to this user:
    /// open a stranger's repository by its path, or with
    /// RVGitBinary::defaultOptionsForUntrustedRepositories().
    RVGitRepository(const std::optional<std::string>& workingTreeDirectoryPath,
                    const std::optional<std::string>& gitDirectoryPath);
    ~RVGitRepository();
    RVGitRepository(const RVGitRepository&) = delete;
    RVGitRepository& operator=(const RVGitRepository&) = delete;

    // Opening. All that take a path, the first constructor too, ask git, and throw the precondition
    // "gitBinary" if RVGitBinary::setDefaultGitBinary() was not called before;
    // RVGitBinary::gitBinaryInPath() finds a git to give to it.

    /// Never null: see isValid().
    [[nodiscard]] static std::shared_ptr<RVGitRepository> repositoryWithPath(
        const std::string& path);
    /// Takes the path as it is, without running git: see the second constructor, here and below.
    [[nodiscard]] static std::shared_ptr<RVGitRepository> bareRepositoryWithGitDirectoryPath(
        const std::optional<std::string>& gitDirectoryPath);
    [[nodiscard]] static std::shared_ptr<RVGitRepository> repositoryWithWorkingTreeDirectoryPath(
        const std::string& workingTreeDirectoryPath,
        const std::optional<std::string>& gitDirectoryPath);
    /// Whether the path is an absolute one of a directory in which git finds a repository.
    [[nodiscard]] static bool isGitRepositoryAtPath(const std::string& path);
    /// Why git finds no repository at the path, in git's own words ("fatal: detected dubious
    /// ownership in repository at ..."), trimmed; absent if it finds one. Runs git once.
    [[nodiscard]] static std::optional<std::string> reasonForInvalidRepositoryAtPath(
        const std::string& path);
    /// The root of the repository that the path lies in; absent if there is none.
    [[nodiscard]] static std::optional<std::string> rootPathForRepositoryAtPath(
        const std::string& path);
    /// Runs `git init` with the options of RVGitInitCommand; the result is a new object on the
    /// path. Null with code 1102 for a path that is not absolute, 1100 for one of something that
    /// is no directory, or the command's error; null with a cleared place where all commands are
    /// cancelled.
    [[nodiscard]] static std::shared_ptr<RVGitRepository> createRepositoryAtPath(
        const std::string& path, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);

    // Identity.

    /// Whether git has found a repository, or a git directory was given.
    [[nodiscard]] bool isValid() const { return valid_; }
    /// Of `path`; absent where that is empty.
    [[nodiscard]] std::optional<RVURL> fileURL() const;
    /// The root: the working tree, or the git directory when bare. Empty only for an object made
    /// of no path at all.
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] const std::optional<std::string>& gitDirectoryPath() const {
        return gitDirectoryPath_;
    }
    /// Absent for a bare repository.
    [[nodiscard]] const std::optional<std::string>& workingTreeDirectoryPath() const {
        return workingTreeDirectoryPath_;
    }
    /// The last component of `path`.
    [[nodiscard]] std::string name() const;

    /// Git's merged view of the configuration for this repository, made on first access. The
    /// pointer shares the ownership of the repository, so whoever keeps it keeps both alive, while
    /// the repository's own config refers back weakly.
    [[nodiscard]] std::shared_ptr<RVGitConfig> config();
    /// The index, made on first access and owned in the same way.
    [[nodiscard]] std::shared_ptr<RVGitIndex> index();
    /// The ".gitignore" in the root of the working tree, owned like the config; null for a bare or
    /// invalid repository.
    [[nodiscard]] std::shared_ptr<RVGitIgnores> ignores();
    /// "info/exclude" in the git directory, owned in the same way; null for an invalid repository.
    /// Kept for compatibility: in a linked worktree that is a file which git does not read.
    /// sharedExcludes() gives the one that it reads.
    [[nodiscard]] std::shared_ptr<RVGitIgnores> excludes();
    /// "info/exclude" in the git directory that all worktrees share, which is the one that git
    /// reads; owned in the same way, null for an invalid repository.
    [[nodiscard]] std::shared_ptr<RVGitIgnores> sharedExcludes();

    // Submodules, forwarded one to one to the loader and the manager.

    /// Made on first access and owned like the config.
    [[nodiscard]] std::shared_ptr<RVGitSubmoduleLoader> submoduleLoader();
    [[nodiscard]] std::shared_ptr<RVGitSubmoduleManager> submoduleManager();

    [[nodiscard]] std::optional<std::vector<std::string>> allSubmoduleNames(
        RVErrorPlace error = nullptr);
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitSubmodule>>> allSubmodules(
        RVErrorPlace error = nullptr);
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleForName(const std::string& name,
                                                                   RVErrorPlace error = nullptr);
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleForPath(const std::string& path,
                                                                   RVErrorPlace error = nullptr);
    [[nodiscard]] bool canAddSubmoduleAtPath(const std::string& path, RVErrorPlace error = nullptr);
    [[nodiscard]] bool addSubmoduleWithURL(const std::string& URL, const std::string& atPath,
                                           unsigned options, RVErrorPlace error = nullptr);
    [[nodiscard]] bool removeSubmoduleAtPath(const std::string& path, unsigned options,
                                             RVErrorPlace error = nullptr);
    [[nodiscard]] bool moveSubmoduleAtPath(const std::string& path, const std::string& toNewPath,
                                           RVErrorPlace error = nullptr);
    [[nodiscard]] bool renameSubmoduleWithName(const std::string& name,
                                               const std::string& toNewName,
                                               RVErrorPlace error = nullptr);
    [[nodiscard]] bool updateAllSubmodulesWithOptions(unsigned options,
                                                      RVErrorPlace error = nullptr);
    [[nodiscard]] bool updateSubmoduleAtPath(const std::string& path, unsigned options,
                                             RVErrorPlace error = nullptr);
    [[nodiscard]] bool synchronizeAllSubmoduleURLs(RVErrorPlace error = nullptr);
    [[nodiscard]] bool synchronizeURLForSubmoduleAtPath(const std::string& path,
                                                        RVErrorPlace error = nullptr);
    [[nodiscard]] bool initAllSubmodules(RVErrorPlace error = nullptr);
    [[nodiscard]] bool initSubmoduleAtPath(const std::string& path, RVErrorPlace error = nullptr);
    [[nodiscard]] bool initSubmodulesAtPaths(const std::vector<std::string>& paths,
                                             RVErrorPlace error = nullptr);

    // Kind.

    [[nodiscard]] bool isBare() const { return valid_ && !workingTreeDirectoryPath_; }
    /// Whether the configuration has a value for "core.worktree".
    [[nodiscard]] bool isDetachedWorkingTree();
    /// Kept for compatibility: true for every git directory, be it a directory, a file or missing.
    /// gitDirectoryPathFromGitDirectoryFileLink() tells them apart.
    [[nodiscard]] bool isGitDirectoryFileLink() const;
    /// Whether `gitDirectoryPath` is a link file into ".git/worktrees/". An opened path is resolved
    /// to the directory behind the link, so this holds only for an object made with the link.
    [[nodiscard]] bool isGitWorktreeRepository() const;
    /// The same for ".git/modules/".
    [[nodiscard]] bool isSubmoduleRepository() const;
    /// Whether there is no branch yet. False also if git fails or is cancelled.
    [[nodiscard]] bool isEmpty();
    [[nodiscard]] bool isGitSVNRepository() const;
    /// False also if the HEAD file cannot be read.
    [[nodiscard]] bool isHEADBranchDetached() const;

    /// How git names the objects of the repository: "sha1", or "sha256", which is not supported:
    /// what would list objects of such a repository fails with code 11. Absent if git fails, or if
    /// the repository is invalid. Runs git.
    [[nodiscard]] std::optional<std::string> objectFormat() const;

    // Named paths, which need not exist. All are absolute; nothing is run.

    [[nodiscard]] std::optional<std::string> configFilePath() const;
    [[nodiscard]] std::optional<std::string> HEADFilePath() const;
    [[nodiscard]] std::optional<std::string> cherryPickHEADFilePath() const;
    [[nodiscard]] std::optional<std::string> mergeHEADFilePath() const;
    /// "rebase-apply", that of one of git's two ways to rebase: RVGitMergeManager tells whether a
    /// rebase is under way.
    [[nodiscard]] std::optional<std::string> rebaseDirectoryPath() const;
    [[nodiscard]] std::optional<std::string> descriptionPath() const;
    [[nodiscard]] std::optional<std::string> defaultIgnoresPath() const;
    [[nodiscard]] std::optional<std::string> defaultExcludesPath() const;
    [[nodiscard]] std::optional<std::string> sharedExcludesPath() const;
    /// The git directory itself, or in a linked worktree the one that the worktrees share.
    [[nodiscard]] std::optional<std::string> commonGitDirectoryPath() const;
    [[nodiscard]] std::optional<std::string> mergeCommitMessagePath() const;
    [[nodiscard]] std::optional<std::string> squashCommitMessagePath() const;
    [[nodiscard]] std::optional<std::string> submodulesFilePath() const;
    [[nodiscard]] std::optional<std::string> clonedSubmodulesDirectory() const;
    [[nodiscard]] std::optional<std::string> SVNDirectoryPath() const;
    [[nodiscard]] std::optional<std::string> SVNMetadatapath() const;

    // HEAD.

    /// The full name of the ref that HEAD names, or the hash on a detached HEAD; absent if the
    /// HEAD file cannot be read. Runs git where the file does not tell: it is a link, or refs are
    /// kept in tables.
    [[nodiscard]] std::optional<std::string> HEADRefName() const;
    /// The hash of the branch that HEAD names, from `git show-ref`; "" if the branch is unborn or
    /// HEAD is detached, absent if git fails.
    [[nodiscard]] std::optional<std::string> HEADRevision();

    // Description file.

    /// Absent with code 300 if the file cannot be read.
    [[nodiscard]] std::optional<std::string> description(RVErrorPlace error = nullptr) const;
    /// Code 301 if the file cannot be written. False with an empty place if it does not exist and
    /// cannot be created.
    [[nodiscard]] bool setDescription(const std::string& description,
                                      RVErrorPlace error = nullptr) const;

    // The ".git" file that stands for a git directory elsewhere.

    /// What a git directory that is a text file refers to. Absent with the read error if it cannot
    /// be read, which is usual, since most are directories; absent with an empty place if it is no
    /// link.
    [[nodiscard]] std::optional<std::string> gitDirectoryPathFromGitDirectoryFileLink(
        RVErrorPlace error = nullptr) const;
    /// Writes ".git" in the working tree (in `path` if there is none), as a link to `path`.
    [[nodiscard]] bool updateGitDirectoryFileLinkWithPath(const std::string& path,
                                                          RVErrorPlace error = nullptr) const;
    /// Writes ".git" in a directory, only if it is there and no directory; otherwise false with no
    /// error.
    [[nodiscard]] static bool updateGitDirectoryFileForRepositoryAtPath(
        const std::string& path, const std::string& gitDirectoryPath, RVErrorPlace error = nullptr);

    /// Whether a git directory is that of a linked worktree.
    [[nodiscard]] static bool isAlternateWorktreeGitDirectoryAtURL(const RVURL& url);
    /// The linked worktree of such a git directory; absent if its "gitdir" file cannot be read.
    [[nodiscard]] static std::optional<RVURL> workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(
        const RVURL& url);

    // Allowed signers, for the verification of SSH signatures.

    /// The file that the configuration names, if it is found, or else the temporary one; absent if
    /// that cannot be made.
    [[nodiscard]] std::optional<std::string> allowedSignersFileFullPath();
    /// The lookups of that file: each tries the path as given, without leading white space, and
    /// trimmed, and returns the first spelling that exists. This one takes them as they are.
    [[nodiscard]] std::optional<std::string> existingFileAt(const std::string& path) const;
    /// Takes them relative to the repository's `path`.
    [[nodiscard]] std::optional<std::string> existingFileRelativeToRepoWith(
        const std::string& path) const;
    /// Expands a leading tilde.
    [[nodiscard]] std::optional<std::string> existingFileWithTildeExpandedWithPath(
        const std::string& path) const;
    [[nodiscard]] std::string removeLeadingWhitespace(const std::string& text) const;
    [[nodiscard]] std::string trimWhitespacesFor(const std::string& text) const;

    /// An empty file, one for the process, made on first use and again if it has vanished; absent
    /// if it cannot be made. Safe on any thread: concurrent callers get the same file.
    [[nodiscard]] static std::optional<std::string> temporaryAllowedSignersFilePath();
    [[nodiscard]] static std::optional<std::string> temporaryFilePath();
    static void setTemporaryFilePath(const std::optional<std::string>& path);
    /// The serial queue that guards the temporary file.
    [[nodiscard]] static RVOperationQueue& temporaryAllowedSignersFileLock();

private:
    [[nodiscard]] std::shared_ptr<RVGitIgnores> ownedIgnores(
        RVGitRepositoryPartSlot<RVGitIgnores>& slot, std::optional<std::string> filePath);
    void initializeWithPath(const std::string& path);
    [[nodiscard]] static bool isBareRepositoryAtPath(const std::string& path,
                                                     RVErrorPlace error = nullptr);
    [[nodiscard]] std::optional<std::string> normalizedRepositoryPath(const std::string& path,
                                                                      bool isBareRepository);
    [[nodiscard]] std::optional<std::string> gitDirectoryComponent(
        std::string_view component) const;
    [[nodiscard]] std::optional<std::string> workingTreeComponent(std::string_view component) const;
    [[nodiscard]] std::optional<std::string> gitDirectoryComponentUnlessBare(
        std::string_view component) const;
    /// With git's own answer where the file does not hold it.
    [[nodiscard]] std::optional<std::string> contentsOfHEADFile() const;
    /// Trimmed; absent if git fails.
    [[nodiscard]] std::optional<std::string> outputOfGitInGitDirectory(
        const char* gitCommand, const std::vector<std::string>& arguments) const;
    [[nodiscard]] std::array<std::string, 3> spellingsOfPath(const std::string& path) const;

    bool valid_ = false;
    std::string path_;
    std::optional<std::string> gitDirectoryPath_;
    std::optional<std::string> workingTreeDirectoryPath_;
    RVGitRepositoryPartSlot<RVGitConfig> config_;
    RVGitRepositoryPartSlot<RVGitIndex> index_;
    RVGitRepositoryPartSlot<RVGitIgnores> ignores_;
    RVGitRepositoryPartSlot<RVGitIgnores> excludes_;
    RVGitRepositoryPartSlot<RVGitIgnores> sharedExcludes_;
    RVGitRepositoryPartSlot<RVGitSubmoduleLoader> submoduleLoader_;
    RVGitRepositoryPartSlot<RVGitSubmoduleManager> submoduleManager_;
};
