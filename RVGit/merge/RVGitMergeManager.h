#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitCommand;
class RVGitCommit;
class RVGitIndex;
class RVGitMergeSequenceContentParser;
class RVGitMergeTreeEntry;
class RVGitRepository;
class RVGitSequencerCommand;
class RVGitWorkingTreeManager;
enum RVGitIndexStage : std::uint64_t;

/// What is under way in a repository.
enum RVGitMergeMode : std::uint64_t {
    RVGitMergeModeNone = 0,
    /// A merge waits to be committed.
    RVGitMergeModeMerge = 1,
    /// A squash merge has left its message.
    RVGitMergeModeSquash = 2,
    RVGitMergeModeRebase = 3,
    /// A rebase has stopped at a commit that can be amended.
    RVGitMergeModeEditing = 4,
    RVGitMergeModeCherryPick = 5,
    RVGitMergeModeRevert = 6,
};

/// Everything that can stop half way: a merge, a rebase, a cherry-pick, a revert. It tells what is
/// under way, starts it, goes on with it or gives it up, and resolves conflicts file by file.
///
/// The files in the git directory are the state; the object holds none of its own, and may be used
/// on any thread. Each reader looks at several files, one after the other: ask while no command
/// runs in the repository. No reader fails: a file that is missing, unreadable or no UTF-8 gives 0
/// or nothing, unless said otherwise. So does one that is no regular file, lies behind a symbolic
/// link below the git directory, or is larger than git writes it (1 MB, or 64 MB for a message or a
/// list). Readers run no process, but for originalRevision() where it has to ask for HEAD's, and
/// where refs are kept in tables: there git is asked for what the heads of a cherry-pick and a
/// revert would say as files.
///
/// Operations run git and wait for it. A stop at conflicts is a failure, by code 2000 or 2200, and
/// currentMergeMode() tells what can be done then; a step of a cherry-pick or revert without
/// changes is code 1, so ask after that, too. Nothing ever opens an editor. A message that is given
/// is UTF-8, and so are the commits of that run, whatever encoding is configured for them. Where
/// all commands are cancelled, an operation that reads before it writes, or has several steps, ends
/// behind the command under way: false with a cleared place.
class RVGIT_EXPORT RVGitMergeManager {
public:
    /// The repository is required.
    explicit RVGitMergeManager(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitMergeManager> mergeManagerWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::shared_ptr<RVGitWorkingTreeManager>& workingTreeManager() const {
        return workingTreeManager_;
    }
    [[nodiscard]] const std::shared_ptr<RVGitIndex>& index() const { return index_; }

    // What is under way.

    /// A rebase beats everything, then what the list of a sequence begins with counts, then a
    /// revert, a cherry-pick, a squash message and a merge.
    [[nodiscard]] RVGitMergeMode currentMergeMode() const;
    /// Whether the mode is any but none.
    [[nodiscard]] bool isMerging() const;
    /// Whether a rebase has stopped at a commit to be amended, and not to be folded into another.
    [[nodiscard]] bool isEditingRevision() const;
    /// Whether a rebase by the merge backend is in a state that is no stop at a commit: it waits at
    /// a "break" or a failed "exec", or was interrupted.
    [[nodiscard]] bool isPendingInteractiveRebase() const;
    /// Whether "rebase-apply" exists. Kept for compatibility: true for a file, too, which
    /// currentMergeMode() does not count.
    [[nodiscard]] bool usesRebaseApplyBackend() const;

    /// When the operation began, in seconds since 1970; 0 if none is under way, or where a ref in a
    /// table alone marks it.
    [[nodiscard]] double mergeTimestamp() const;
    /// The commit that the operation builds upon, in a rebase the new base; HEAD's revision if it
    /// is not known, with one process. Empty if HEAD is detached or unborn then.
    [[nodiscard]] std::optional<std::string> originalRevision() const;
    /// The full name of the branch that is rebased, or that HEAD names; absent if there is none,
    /// HEAD being detached.
    [[nodiscard]] std::optional<std::string> originalRefName() const;
    /// What is merged, picked or reverted, or was rebased: a hash; a line for each of an octopus
    /// merge.
    [[nodiscard]] std::optional<std::string> mergedRevision() const;
    /// The message that git proposes for the commit to come, as it stands in the file, with git's
    /// comments; the squash message first.
    [[nodiscard]] std::optional<std::string> mergeCommitMessage() const;

    // At which step. In a cherry-pick and a revert the next step is always 0 and the last one the
    // number of those that are left; both revisions are as short as git writes them.

    /// Counted from 1; 0 if unknown.
    [[nodiscard]] std::uint64_t nextSequenceStep() const;
    [[nodiscard]] std::uint64_t lastSequenceStep() const;
    /// The commit that is being worked on. Behind a step that names none ("exec make"), or one with
    /// an option ("fixup -C"), the second word of that step.
    [[nodiscard]] std::optional<std::string> nextSequenceRevision() const;
    [[nodiscard]] std::optional<std::string> lastSequenceRevision() const;

    // The sources of these four, by the kind of the operation.

    [[nodiscard]] std::uint64_t nextRebaseSequenceStep() const;
    [[nodiscard]] std::uint64_t nextInteractiveRebaseSequenceStep() const;
    [[nodiscard]] std::uint64_t lastRebaseSequenceStep() const;
    [[nodiscard]] std::uint64_t lastInteractiveRebaseSequenceStep() const;
    [[nodiscard]] std::optional<std::string> nextRebaseSequenceRevision() const;
    [[nodiscard]] std::optional<std::string> amendSequenceRevision() const;
    [[nodiscard]] std::optional<std::string> nextInteractiveRebaseSequenceRevision() const;
    [[nodiscard]] std::optional<std::string> lastRebaseSequenceRevision() const;
    [[nodiscard]] std::uint64_t nextDefaultSequencerStep() const;
    [[nodiscard]] std::uint64_t lastDefaultSequencerStep() const;
    [[nodiscard]] std::optional<std::string> nextDefaultSequencerRevision() const;
    [[nodiscard]] std::optional<std::string> lastDefaultSequencerRevision() const;

    // Whatever is under way: for a caller with one button for each. Use the operations below where
    // the mode is known, since it may have changed by now.

    /// A merge is committed, anything else continued. Without a message git's proposal counts,
    /// without its comments. Code 1 if nothing is under way.
    [[nodiscard]] bool continueCurrentOperation(RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueCurrentOperationWithCommitMessage(
        const std::optional<std::string>& commitMessage, RVErrorPlace error = nullptr);
    /// Goes on without the step that has stopped. Code 1 if nothing is under way, or a merge, which
    /// has no steps.
    [[nodiscard]] bool skipCurrentOperation(RVErrorPlace error = nullptr);
    /// Back to where it began. Code 1 if nothing is under way.
    [[nodiscard]] bool abortCurrentOperation(RVErrorPlace error = nullptr);

    // Merge. One that has stopped goes on by a commit.

    /// Merges into HEAD. `options` are RVGitMergeOption...
    [[nodiscard]] bool mergeWithRevision(const std::string& revision,
                                         const std::optional<RVOptions>& options,
                                         RVErrorPlace error = nullptr);
    /// By the mode, one of the other two.
    [[nodiscard]] bool abortMerge(RVErrorPlace error = nullptr);
    /// Resets what the squash merge has changed; other changes stay.
    [[nodiscard]] bool abortSquashMerge(RVErrorPlace error = nullptr);
    [[nodiscard]] bool abortDefaultMerge(RVErrorPlace error = nullptr);

    // Rebase. `options` are RVGitRebaseOption...

    [[nodiscard]] bool rebaseWithRevision(const std::string& revision,
                                          const std::optional<RVOptions>& options,
                                          RVErrorPlace error = nullptr);
    /// The bases count with RVGitRebaseOptionOnto alone.
    [[nodiscard]] bool rebaseWithRevision(const std::string& revision,
                                          const std::optional<std::string>& currentBaseRevision,
                                          const std::optional<std::string>& targetBaseRevision,
                                          const std::optional<RVOptions>& options,
                                          RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueRebase(RVErrorPlace error = nullptr);
    /// With a message for the commit to come. Every later step that asks for a message in the same
    /// run gets it as well, and a "GIT_EDITOR" in RVGitCommandEnvironment takes its place. Code 1,
    /// and nothing runs, for a message that cannot be handed over: see
    /// temporaryCommitMessageEditorScript(). By the apply backend it is written to its file
    /// instead, if there is one.
    [[nodiscard]] bool continueRebaseWithCommitMessage(
        const std::optional<std::string>& commitMessage, RVErrorPlace error = nullptr);
    /// Commits the step that has stopped without changes, with its author and the message, and goes
    /// on behind it. Fails after the commit if going on fails; false without an error if the commit
    /// is cancelled, and nothing more runs.
    [[nodiscard]] bool continueEmptyRebaseWithCommitMessage(const std::string& commitMessage,
                                                            RVErrorPlace error = nullptr);
    [[nodiscard]] bool skipRebase(RVErrorPlace error = nullptr);
    /// The branch is again what it was. Fails where HEAD does not go back, whatever git ends with.
    [[nodiscard]] bool abortRebase(RVErrorPlace error = nullptr);

    // Cherry-pick. `options` are RVGitCherryPickOption...

    [[nodiscard]] bool cherryPickRevisions(const std::vector<std::string>& revisions,
                                           const std::optional<RVOptions>& options,
                                           RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueCherryPick(RVErrorPlace error = nullptr);
    /// The message replaces git's proposal in its file, if there is one; git strips lines that
    /// begin with the comment character. Kept for compatibility: the operation goes on whether or
    /// not the message could be written.
    [[nodiscard]] bool continueCherryPickWithCommitMessage(
        const std::optional<std::string>& commitMessage, RVErrorPlace error = nullptr);
    /// As continueEmptyRebaseWithCommitMessage(). Kept for compatibility: of a single commit, the
    /// commit is made with git's proposal for a message, and then, there being no sequence to go on
    /// with, the result is false.
    [[nodiscard]] bool continueEmptyCherryPickWithCommitMessage(const std::string& commitMessage,
                                                                RVErrorPlace error = nullptr);
    [[nodiscard]] bool skipCherryPick(RVErrorPlace error = nullptr);
    [[nodiscard]] bool abortCherryPick(RVErrorPlace error = nullptr);
    /// Forgets the steps that are left; HEAD, index and working tree stay as they are.
    [[nodiscard]] bool quitCherryPick(RVErrorPlace error = nullptr);

    // Revert, in the same way. `options` are RVGitRevertOption...

    [[nodiscard]] bool revertRevisions(const std::vector<std::string>& revisions,
                                       const std::optional<RVOptions>& options,
                                       RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueRevert(RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueRevertWithCommitMessage(
        const std::optional<std::string>& commitMessage, RVErrorPlace error = nullptr);
    [[nodiscard]] bool continueEmptyRevertWithCommitMessage(const std::string& commitMessage,
                                                            RVErrorPlace error = nullptr);
    [[nodiscard]] bool skipRevert(RVErrorPlace error = nullptr);
    [[nodiscard]] bool abortRevert(RVErrorPlace error = nullptr);
    [[nodiscard]] bool quitRevert(RVErrorPlace error = nullptr);

    // Ancestry.

    /// The best common ancestor; absent, with code 1, if there is none.
    [[nodiscard]] std::optional<std::string> mergeBaseForSourceRevision(
        const std::string& sourceRevision, const std::string& targetRevision,
        RVErrorPlace error = nullptr);
    /// Whether the first can be reached from the second. False with code 1 if not, or on failure.
    [[nodiscard]] bool revisionIsAncestor(const std::string& revision,
                                          const std::string& ofRevision,
                                          RVErrorPlace error = nullptr);

    // Conflicts. Paths are relative to the top of the working tree, and git takes them for patterns
    // as RVGitWorkingTreeManager says.

    /// Whether there is anything at the path.
    [[nodiscard]] bool canResolveUnmergedFileByAdding(const std::string& filePath) const;
    /// Takes the file as it is in the working tree.
    [[nodiscard]] bool resolveUnmergedFileByAdding(const std::string& filePath,
                                                   RVErrorPlace error = nullptr);
    [[nodiscard]] bool resolveUnmergedFilesByAdding(const std::vector<std::string>& filePaths,
                                                    RVErrorPlace error = nullptr);
    /// Always true.
    [[nodiscard]] bool canResolveUnmergedFileByRemoving(const std::string& filePath) const;
    [[nodiscard]] bool resolveUnmergedFileByRemoving(const std::string& filePath,
                                                     RVErrorPlace error = nullptr);
    [[nodiscard]] bool resolveUnmergedFilesByRemoving(const std::vector<std::string>& filePaths,
                                                      RVErrorPlace error = nullptr);

    // These write the file and leave the conflict in the index. Whether they can: by one process.

    [[nodiscard]] bool canRestoreAncestorVersionForUnmergedFile(const std::string& filePath) const;
    /// One after the other, those before a failure staying written. False with an empty place if a
    /// path has no common ancestor; false, and the place left alone, if the file cannot be written;
    /// but an error if the path leads through a symbolic link or out of the repository, through
    /// which nothing is ever written. Kept for compatibility: written below the repository's path,
    /// with the bytes of the blob, to which no filter is applied.
    [[nodiscard]] bool restoreAncestorVersionForUnmergedFile(const std::string& filePath,
                                                             RVErrorPlace error = nullptr);
    [[nodiscard]] bool restoreAncestorVersionForUnmergedFiles(
        const std::vector<std::string>& filePaths, RVErrorPlace error = nullptr);
    [[nodiscard]] bool canRestoreOurVersionForUnmergedFile(const std::string& filePath) const;
    [[nodiscard]] bool restoreOurVersionForUnmergedFile(const std::string& filePath,
                                                        RVErrorPlace error = nullptr);
    [[nodiscard]] bool restoreOurVersionForUnmergedFiles(const std::vector<std::string>& filePaths,
                                                         RVErrorPlace error = nullptr);
    [[nodiscard]] bool canRestoreTheirVersionForUnmergedFile(const std::string& filePath) const;
    [[nodiscard]] bool restoreTheirVersionForUnmergedFile(const std::string& filePath,
                                                          RVErrorPlace error = nullptr);
    [[nodiscard]] bool restoreTheirVersionForUnmergedFiles(
        const std::vector<std::string>& filePaths, RVErrorPlace error = nullptr);
    /// The file with both sides and the conflict's marks; what was resolved in it is lost.
    [[nodiscard]] bool restoreUnmergedVersionForFile(const std::string& filePath,
                                                     RVErrorPlace error = nullptr);
    [[nodiscard]] bool restoreUnmergedVersionForFiles(const std::vector<std::string>& filePaths,
                                                      RVErrorPlace error = nullptr);
    /// Writes below a directory instead of the working tree.
    [[nodiscard]] bool restoreUnmergedVersionForFiles(const std::vector<std::string>& filePaths,
                                                      const std::optional<std::string>& inDirectory,
                                                      RVErrorPlace error = nullptr);

    // Rewriting: each is one interactive rebase of HEAD's branch, of which the whole list of steps
    // is known beforehand, so that git asks nobody. Revisions are full commit hashes, a list of
    // them runs from the newest to the oldest, and an empty one is done with at once.
    //
    // All commits from HEAD down to the oldest that is named become steps, merges and the commits
    // of merged branches among them: where there are such, git stops as it does at any merge in a
    // list, and abortRebase() puts everything back. A step that conflicts is code 2200 and leaves
    // the rebase under way: resolve and continue, or abort. Nothing is done, with code 1900, if a
    // revision that is named is not in HEAD's history. The scripts stay in the temporary directory.
    // Where the range begins with a root commit and the very first step conflicts, git keeps, below
    // what is resolved, the empty commit on which it had begun.

    /// Moves the commits, in one block and the order that they have, to right above one other,
    /// which may be older than all of them. One that is moved itself counts as the oldest that
    /// stays.
    [[nodiscard]] bool moveRevisionsAboveRevision(const std::vector<std::string>& revisions,
                                                  const std::string& aboveRevision,
                                                  RVErrorPlace error = nullptr);
    /// The same to right below it.
    [[nodiscard]] bool moveRevisionsBelowRevision(const std::vector<std::string>& revisions,
                                                  const std::string& belowRevision,
                                                  RVErrorPlace error = nullptr);
    [[nodiscard]] bool moveRevisions(const std::vector<std::string>& revisions,
                                     const std::string& revision, bool insertBelow,
                                     RVErrorPlace error = nullptr);
    [[nodiscard]] bool deleteRevisions(const std::vector<std::string>& revisions,
                                       RVErrorPlace error = nullptr);
    /// Makes one commit of the commits, with the message that git proposes: all of theirs, without
    /// the lines that git takes for comments. With a target they go into it; without one into the
    /// oldest of them, and that moves down to where the range begins. False with an empty place for
    /// fewer than two without a target, and for a target that is one of the commits.
    [[nodiscard]] bool squashRevisions(const std::vector<std::string>& revisions,
                                       RVErrorPlace error = nullptr);
    [[nodiscard]] bool squashRevisions(const std::vector<std::string>& revisions,
                                       const std::optional<std::string>& targetRevision,
                                       RVErrorPlace error = nullptr);
    /// The same, keeping the message of the commit that the others go into.
    [[nodiscard]] bool fixupRevisions(const std::vector<std::string>& revisions,
                                      RVErrorPlace error = nullptr);
    [[nodiscard]] bool fixupRevisions(const std::vector<std::string>& revisions,
                                      const std::optional<std::string>& targetRevision,
                                      RVErrorPlace error = nullptr);
    /// `command` is RVGitSequenceInstructionCommandSquash or ...Fixup.
    [[nodiscard]] bool combineRevisions(const std::vector<std::string>& revisions,
                                        const std::optional<std::string>& targetRevision,
                                        const std::string& command, RVErrorPlace error = nullptr);
    /// Lines of the message that begin with "#" are kept, blank lines at its ends and blanks at the
    /// ends of lines are not; an empty one makes git stop. A message that cannot be handed over to
    /// git is refused: see temporaryCommitMessageEditorScript(). If an older step stops first, the
    /// message is not used: give it to continueRebaseWithCommitMessage().
    [[nodiscard]] bool setCommitMessage(const std::string& commitMessage,
                                        const std::string& forRevision,
                                        RVErrorPlace error = nullptr);
    /// Has the rebase stop behind the commit and takes it apart: HEAD is its parent, and its
    /// changes lie in the working tree (those of a root commit, which stays, are taken out of the
    /// index). continueRebase() goes on when something has been committed. Of a root commit, git
    /// refuses to abort as long as its files are not in the index: stage them again first.
    [[nodiscard]] bool editRevision(const std::string& revision, RVErrorPlace error = nullptr);
    /// With `amends` the commit stays as it is, to be amended.
    [[nodiscard]] bool editRevision(const std::string& revision, bool amends,
                                    RVErrorPlace error = nullptr);
    /// Moves the chosen commits of a branch, and no others, onto the target, and the branch with
    /// them; "rebase.missingCommitsCheck=error" of the user forbids it. No log is read: a revision
    /// that a shell would read is refused with code 1, and what is no commit of the branch is git's
    /// business. `options` are RVGitRebaseOption...
    [[nodiscard]] bool rebaseOntoWithRevision(const std::string& revision,
                                              const std::vector<std::string>& selectedRevisions,
                                              const std::optional<std::string>& targetBaseRevision,
                                              const std::optional<RVOptions>& options,
                                              RVErrorPlace error = nullptr);

    /// The steps of a rebase that includes the revision, from HEAD on down: the range from the
    /// commit's parent on, or all of HEAD's history for a root commit. Absent, with the error of
    /// RVGitCommit's queries, on failure.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitCommit>>>
    allCommitsForInteractiveRebaseIncludingRevision(const std::string& revision,
                                                    RVErrorPlace error = nullptr);
    /// The same for the last of the revisions (at least one) or, if it is not in that range, the
    /// target. Give a place, and an empty one: failure is told by it alone.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitCommit>>> allCommitsForRevisions(
        const std::vector<std::string>& revisions, const std::string& targetRevision,
        RVErrorPlace error = nullptr);

    // Preview: what a merge would do, without doing it.

    using MergeTreeEntries = std::vector<std::shared_ptr<RVGitMergeTreeEntry>>;

    /// Whether a merge of the first revision into the second would go through, by the three-way
    /// comparison of git merge-tree: it changes nothing, works with every git and tells of each
    /// conflict what it is, but knows no renames and one common ancestor only, and no conflict in a
    /// file whose attribute "conflict-marker-size" asks for markers of another length. Use
    /// conflictingFilePathsForMergingRevision() where the git is new enough and the answer must be
    /// the merge's own. False with code 2006 for a merge with conflicts, code 1 if there is no
    /// common ancestor or no such revision.
    [[nodiscard]] bool canMergeRevision(const std::string& revision,
                                        const std::string& intoRevision,
                                        RVErrorPlace error = nullptr);
    /// The conflicts are left in their place, if it is not null and there are any.
    [[nodiscard]] bool canMergeRevision(const std::string& revision,
                                        const std::string& intoRevision,
                                        MergeTreeEntries* conflicts, RVErrorPlace error = nullptr);
    /// With a common ancestor of the caller's choice; empty or absent: git's.
    [[nodiscard]] bool canMergeRevision(const std::string& revision,
                                        const std::string& intoRevision,
                                        const std::optional<std::string>& usingBase,
                                        MergeTreeEntries* conflicts, RVErrorPlace error = nullptr);
    /// The paths at which `git merge` of the first revision into the second would stop, in git's
    /// order, renames and several common ancestors included; none if it would go through. Absent
    /// with code 1 on failure, also where git is older than 2.38, which the error says. It writes
    /// objects that nothing refers to; see RVGitConflictingFilePathsCommand.
    [[nodiscard]] std::optional<std::vector<std::string>> conflictingFilePathsForMergingRevision(
        const std::string& revision, const std::string& intoRevision, RVErrorPlace error = nullptr);

private:
    /// Absent, with a cleared place, if all commands were cancelled while git was asked.
    [[nodiscard]] std::optional<RVGitMergeMode> knownMergeMode(RVErrorPlace error) const;
    [[nodiscard]] std::optional<std::string> trimmedFile(std::string_view path) const;
    [[nodiscard]] std::optional<std::string> fileOrRef(std::string_view name) const;
    /// The hash of a ref of git's own ("REVERT_HEAD") where refs are no files.
    [[nodiscard]] std::optional<std::string> refInTables(std::string_view name) const;
    [[nodiscard]] std::uint64_t numberInFile(std::string_view path) const;
    [[nodiscard]] RVGitMergeSequenceContentParser sequenceInFile(std::string_view path) const;
    [[nodiscard]] std::optional<std::string_view> markerFile(RVGitMergeMode mode) const;
    [[nodiscard]] bool hasIndexEntry(const std::string& filePath, RVGitIndexStage atStage) const;
    [[nodiscard]] bool restoreVersion(const std::vector<std::string>& filePaths,
                                      const std::string& side, RVErrorPlace error);
    [[nodiscard]] bool commitEmptyStep(const std::string& commitMessage, RVErrorPlace error);
    [[nodiscard]] bool continueSequence(RVGitSequencerCommand& command,
                                        const std::optional<std::string>& commitMessage,
                                        RVErrorPlace error);
    void replaceProposedMessage(std::string_view path, const std::string& commitMessage) const;

    std::shared_ptr<RVGitRepository> repository_;
    std::shared_ptr<RVGitWorkingTreeManager> workingTreeManager_;
    std::shared_ptr<RVGitIndex> index_;
    /// Of the git directory.
    RVContainedFiles files_;
};
