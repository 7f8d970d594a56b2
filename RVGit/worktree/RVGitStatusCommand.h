#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"

/// One changed path as `git status --porcelain` prints it.
struct RVGitStatusOutputParserResultItem {
    /// From the top of the working tree, without slashes at either end.
    std::string filePath;
    /// Where a renamed or copied file came from.
    std::optional<std::string> originalFilePath;
    /// The index against HEAD, or our side of a conflict.
    RVGitFileStatus leftFileStatus = RVGitFileStatusNone;
    /// The working tree against the index, or their side of a conflict.
    RVGitFileStatus rightFileStatus = RVGitFileStatusNone;
};

/// Reads what `git status --porcelain` prints. A path that was removed from the index and is still
/// on disk, which git prints twice, is one item: Deleted on the left, Untracked (or Ignored) on the
/// right.
///
/// A line of fewer than four characters cannot be read, nor can a line of a staged rename or copy
/// whose names hold " -> ". Only the left letter tells of a rename: where git prints "R" on the
/// right alone, both names stay in one path. A name that holds the characters 7, 8, 11 or 12 is
/// read as another name (see unquotedCString), which may be that of another file: do not delete or
/// discard a file by it unseen.
class RVGIT_EXPORT RVGitStatusOutputParser
    : public RVGitItemOutputParser<RVGitStatusOutputParserResultItem> {
public:
    explicit RVGitStatusOutputParser(std::string_view outputData);
    explicit RVGitStatusOutputParser(std::vector<std::string> outputLines);

    /// In git's order.
    [[nodiscard]] const std::vector<RVGitStatusOutputParserResultItem>& changedFiles() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    /// Indexes of items that are Deleted on the left, by path.
    std::unordered_map<std::string, std::size_t> deletedFilesMap_;
};

/// Runs `git status --porcelain`. Failure: the common codes, and 11 if a line cannot be read.
class RVGIT_EXPORT RVGitStatusCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitStatusCommand(const std::shared_ptr<RVGitRepository>& repository,
                                std::optional<std::vector<std::string>> filePaths = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitStatusCommand> gitStatusCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths);

    [[nodiscard]] bool showsIgnoredFiles() const { return showsIgnoredFiles_; }
    void setShowsIgnoredFiles(bool shows) { showsIgnoredFiles_ = shows; }
    [[nodiscard]] RVGitUntrackedFilesMode untrackedFilesMode() const { return untrackedFilesMode_; }
    void setUntrackedFilesMode(RVGitUntrackedFilesMode mode) { untrackedFilesMode_ = mode; }
    [[nodiscard]] RVGitIgnoreSubmodulesMode ignoreSubmodulesMode() const {
        return ignoreSubmodulesMode_;
    }
    void setIgnoreSubmodulesMode(RVGitIgnoreSubmodulesMode mode) { ignoreSubmodulesMode_ = mode; }

    /// In git's order, after the run.
    [[nodiscard]] const std::vector<RVGitStatusOutputParserResultItem>& changedFiles() const& {
        return changedFiles_;
    }
    /// Moves them out of the command, which is then spent.
    [[nodiscard]] std::vector<RVGitStatusOutputParserResultItem> takeChangedFiles() {
        return std::move(changedFiles_);
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool showsIgnoredFiles_ = false;
    RVGitUntrackedFilesMode untrackedFilesMode_ = RVGitUntrackedFilesModeDefault;
    RVGitIgnoreSubmodulesMode ignoreSubmodulesMode_ = RVGitIgnoreSubmodulesModeDefault;
    std::vector<RVGitStatusOutputParserResultItem> changedFiles_;
};
