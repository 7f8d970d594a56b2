#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

// Options of RVGitBranchCommand, each a boolean.
inline constexpr char RVGitBranchOptionShowRemoteBranches[] = "showRemoteBranches";
inline constexpr char RVGitBranchOptionRename[] = "rename";
/// Renames, too, when true.
inline constexpr char RVGitBranchOptionForceRenaming[] = "forceRenaming";
inline constexpr char RVGitBranchOptionDelete[] = "delete";
/// Deletes, too, when true.
inline constexpr char RVGitBranchOptionForceDeletion[] = "forceDeletion";
inline constexpr char RVGitBranchOptionCreateTracking[] = "createTracking";
inline constexpr char RVGitBranchOptionAddTracking[] = "addTracking";
inline constexpr char RVGitBranchOptionRemoveTracking[] = "removeTracking";

/// One line of a listing of branches.
struct RVGIT_EXPORT RVGitBranchOutputParserResultItem {
    /// Absent for the line of a detached HEAD.
    std::optional<std::string> fullRefName;
    /// Absent for a remote branch that only the remote's HEAD names.
    std::optional<std::string> commitHash;
    bool isHead = false;
    /// 0 where git shows none, and always for remote branches.
    std::uint64_t ahead = 0;
    std::uint64_t behind = 0;
};

/// Reads what `git branch -v` prints with whole hashes. A line of another form is skipped; so is,
/// kept for compatibility, that of a branch that is checked out in another worktree, which git
/// marks by "+" instead of "*". The subject of a commit that begins like "[ahead 1]" is taken for
/// counts. A hash of 64 digits fails with code 11.
class RVGIT_EXPORT RVGitBranchOutputParser
    : public RVGitItemOutputParser<RVGitBranchOutputParserResultItem> {
public:
    explicit RVGitBranchOutputParser(std::string_view outputData);

    /// In the order of the lines.
    [[nodiscard]] const std::vector<RVGitBranchOutputParserResultItem>& branches() const {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
    /// Whether this stands in the place of a branch's name where there is none: any name in
    /// parentheses.
    [[nodiscard]] static bool isDetachedHEADDescription(std::string_view name);

private:
    void addBranch(bool isHead, std::string_view name, std::string_view hash, std::uint64_t ahead,
                   std::uint64_t behind);
};

/// Reads the names of the branches that git refused to delete, since they are not fully merged, in
/// its standard error.
class RVGIT_EXPORT RVGitDeleteBranchErrorOutputParser : public RVGitItemOutputParser<std::string> {
public:
    explicit RVGitDeleteBranchErrorOutputParser(std::string_view outputData);

    [[nodiscard]] const std::vector<std::string>& refNames() const { return indexedResultCache(); }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Lists, creates, renames, deletes and tracks branches: git branch. What it does follows from the
/// fields: without names it lists; else the first that is set of renaming, deleting, adding and
/// removing tracking; else it creates. Names may be short or full ones.
class RVGIT_EXPORT RVGitBranchCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitBranchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                const std::optional<RVOptions>& options = std::nullopt);
    /// Lists the branches.
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand> gitBranchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// Codes 2504 for an invalid name, 2505 for an unknown starting point, 2506 for a branch that
    /// exists. Without a starting point the branch begins at HEAD.
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand> gitCreateBranchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string refName,
        std::optional<std::string> startingPoint);
    /// The branch begins at the tracked ref.
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand>
    gitCreateTrackingBranchCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                                 std::string refName,
                                                 std::optional<std::string> trackedRefName);
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand>
    gitAddTrackingBranchCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                              std::string refName,
                                              std::optional<std::string> trackedRefName);
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand>
    gitRemoveTrackingBranchCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                                 std::string refName);
    /// Codes 2510 for an unknown branch, 2511 for one that is checked out, 2512 for one that is not
    /// merged unless forced; the names of all such stand in the error's user info under
    /// RVGitMultipleRefNamesErrorKey (not from git 2.43 on, which words it anew). git deletes the
    /// others of the list all the same.
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand> gitDeleteBranchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::vector<std::string> refNames,
        bool forcedDeletion);
    /// Code 2506 for a new name that exists, unless forced.
    [[nodiscard]] static std::shared_ptr<RVGitBranchCommand> gitRenameBranchCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string refName,
        std::optional<std::string> newRefName, bool forcedRenaming);

    /// Absent: all are listed.
    [[nodiscard]] const std::optional<std::vector<std::string>>& refNames() const {
        return refNames_;
    }
    void setRefNames(std::optional<std::vector<std::string>> refNames) {
        refNames_ = std::move(refNames);
    }
    /// Passed as given.
    [[nodiscard]] const std::optional<std::string>& trackedRefName() const {
        return trackedRefName_;
    }
    void setTrackedRefName(std::optional<std::string> refName) {
        trackedRefName_ = std::move(refName);
    }
    /// A revision; passed as given.
    [[nodiscard]] const std::optional<std::string>& startingPoint() const { return startingPoint_; }
    void setStartingPoint(std::optional<std::string> startingPoint) {
        startingPoint_ = std::move(startingPoint);
    }
    [[nodiscard]] const std::optional<std::string>& renameToRefName() const {
        return renameToRefName_;
    }
    void setRenameToRefName(std::optional<std::string> refName) {
        renameToRefName_ = std::move(refName);
    }
    /// Of a listing: remote branches instead of local ones.
    [[nodiscard]] bool showsRemoteBranches() const { return showsRemoteBranches_; }
    void setShowsRemoteBranches(bool shows) { showsRemoteBranches_ = shows; }
    [[nodiscard]] bool renamesBranch() const { return renamesBranch_; }
    void setRenamesBranch(bool renames) { renamesBranch_ = renames; }
    [[nodiscard]] bool forcesRenaming() const { return forcesRenaming_; }
    void setForcesRenaming(bool forces) { forcesRenaming_ = forces; }
    [[nodiscard]] bool deletesBranch() const { return deletesBranch_; }
    void setDeletesBranch(bool deletes) { deletesBranch_ = deletes; }
    [[nodiscard]] bool forcesDeletion() const { return forcesDeletion_; }
    void setForcesDeletion(bool forces) { forcesDeletion_ = forces; }
    [[nodiscard]] bool createsTracking() const { return createsTracking_; }
    void setCreatesTracking(bool creates) { createsTracking_ = creates; }
    [[nodiscard]] bool addsTracking() const { return addsTracking_; }
    void setAddsTracking(bool adds) { addsTracking_ = adds; }
    [[nodiscard]] bool removesTracking() const { return removesTracking_; }
    void setRemovesTracking(bool removes) { removesTracking_ = removes; }

    /// The result of a listing.
    [[nodiscard]] const std::vector<RVGitBranchOutputParserResultItem>& branches() const {
        return branches_;
    }
    /// The same, moved out of the command.
    [[nodiscard]] std::vector<RVGitBranchOutputParserResultItem> takeBranches() {
        return std::move(branches_);
    }

    /// Kept for compatibility: three rows ask for "-m" or "-d" among the arguments. These are
    /// options, so that the rows never match: a refused renaming has code 2506, and 2512 keeps one
    /// name under RVGitRefNameErrorKey.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    /// A ref that could not be read (code 104) fails no command.
    bool gitCommandShouldHandleError(const RVError& error) override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::vector<std::string>> refNames_;
    std::optional<std::string> trackedRefName_;
    std::optional<std::string> startingPoint_;
    std::optional<std::string> renameToRefName_;
    bool showsRemoteBranches_ = false;
    bool renamesBranch_ = false;
    bool forcesRenaming_ = false;
    bool deletesBranch_ = false;
    bool forcesDeletion_ = false;
    bool createsTracking_ = false;
    bool addsTracking_ = false;
    bool removesTracking_ = false;
    std::vector<RVGitBranchOutputParserResultItem> branches_;
};
