#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/diff/RVGitDiffMap.h"

class RVGitDiffParser;
struct RVGitDiffStatsOutputParserResultItem;

// Options; the value of each key is its own name.

/// Boolean: compares with the index instead of the working tree.
inline constexpr char RVGitDiffOptionStaged[] = "RVGitDiffOptionStaged";
/// Boolean: prints the contents of binary files.
inline constexpr char RVGitDiffOptionBinary[] = "RVGitDiffOptionBinary";
/// Boolean: a rename is a deletion and an addition.
inline constexpr char RVGitDiffOptionNoRenames[] = "RVGitDiffOptionNoRenames";
/// Boolean: lines that differ in blanks alone are the same.
inline constexpr char RVGitDiffOptionIgnoreWhitespaceChanges[] =
    "RVGitDiffOptionIgnoreWhitespaceChanges";
/// Text: how git shows a changed submodule: "short" as a diff of one line, whatever is configured;
/// "log" not as a diff, so that it is not among the results; "diff" as the diffs of its files.
/// RVGitLogCommand does not read it and goes by the configuration.
inline constexpr char RVGitDiffOptionSubmodule[] = "RVGitDiffOptionSubmodule";

// Options that RVGitDiffCommand does not read: those who load diffs and changesets do.

/// Unsigned: lines of context. With 0, patches of the chunks go where their locations say: to be
/// applied with RVGitApplyOptionUnidiffZero, and, behind chunks that are not applied and change the
/// count of lines, only as RVGitDiffPatchGenerator::locatedPatchForLinesWithIndexes().
inline constexpr char RVGitDiffOptionContextLines[] = "RVGitDiffOptionContextLines";
/// Boolean: compares a merge with its first parent.
inline constexpr char RVGitDiffOptionMergeCommitsFirstParent[] =
    "RVGitDiffOptionMergeCommitsFirstParent";
/// Boolean: shows of a merge the files that differ from all parents.
inline constexpr char RVGitDiffOptionMergeCommitsMergedFilePaths[] =
    "RVGitDiffOptionMergeCommitsMergedFilePaths";
/// Kept for compatibility: nothing reads it.
inline constexpr char RVGitDiffOptionNoFilePrefixes[] = "RVGitDiffOptionNoFilePrefixes";
/// Kept for compatibility: nothing reads it.
inline constexpr char RVGitDiffOptionNULByteDelimiter[] = "RVGitDiffOptionNULByteDelimiter";

/// `git diff`. Revisions and paths are added by whoever runs it. An exit code of 1 with nothing on
/// standard error says that there are differences, and is a success.
class RVGIT_EXPORT RVGitDiffCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitDiffCommand(const std::shared_ptr<RVGitRepository>& repository,
                     const std::optional<RVOptions>& options);
    ~RVGitDiffCommand() override;
    [[nodiscard]] static std::shared_ptr<RVGitDiffCommand> gitDiffCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    /// Whether the index is compared, instead of the working tree.
    [[nodiscard]] bool comparesToIndex() const { return comparesToIndex_; }
    void setComparesToIndex(bool compares) { comparesToIndex_ = compares; }
    [[nodiscard]] bool generatesBinaryDiffs() const { return generatesBinaryDiffs_; }
    void setGeneratesBinaryDiffs(bool generates) { generatesBinaryDiffs_ = generates; }
    [[nodiscard]] bool skipsRenameDetection() const { return skipsRenameDetection_; }
    void setSkipsRenameDetection(bool skips) { skipsRenameDetection_ = skips; }
    [[nodiscard]] bool ignoresWhitespaceChanges() const { return ignoresWhitespaceChanges_; }
    void setIgnoresWhitespaceChanges(bool ignores) { ignoresWhitespaceChanges_ = ignores; }
    /// How git shows a changed submodule; absent: as its configuration says.
    [[nodiscard]] const std::optional<std::string>& submodule() const { return submodule_; }
    void setSubmodule(std::optional<std::string> format) { submodule_ = std::move(format); }

    // Kept for callers; nothing here reads them.
    [[nodiscard]] bool generatesRawFormat() const { return generatesRawFormat_; }
    void setGeneratesRawFormat(bool generates) { generatesRawFormat_ = generates; }
    [[nodiscard]] bool generatesDiffs() const { return generatesDiffs_; }
    void setGeneratesDiffs(bool generates) { generatesDiffs_ = generates; }
    [[nodiscard]] bool generatesDiffStats() const { return generatesDiffStats_; }
    void setGeneratesDiffStats(bool generates) { generatesDiffStats_ = generates; }

    // Results.

    /// The files, unless statistics were asked for.
    [[nodiscard]] const std::vector<RVGitDiffMap>& loadedDiffs() const { return loadedDiffs_; }
    [[nodiscard]] std::vector<RVGitDiffMap> takeLoadedDiffs() { return std::move(loadedDiffs_); }
    /// The files with the command option "--numstat".
    [[nodiscard]] const std::vector<RVGitDiffStatsOutputParserResultItem>& loadedDiffStats() const {
        return loadedDiffStats_;
    }
    [[nodiscard]] std::vector<RVGitDiffStatsOutputParserResultItem> takeLoadedDiffStats();

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidReceiveStandardOutput() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    [[nodiscard]] bool loadsDiffStats() const;
    [[nodiscard]] RVGitDiffParser& diffParser();

    bool comparesToIndex_ = false;
    bool generatesBinaryDiffs_ = false;
    bool skipsRenameDetection_ = false;
    bool ignoresWhitespaceChanges_ = false;
    std::optional<std::string> submodule_;
    bool generatesRawFormat_ = false;
    bool generatesDiffs_ = false;
    bool generatesDiffStats_ = false;
    /// Reads each file as soon as git has printed it.
    std::unique_ptr<RVGitDiffParser> diffParser_;
    std::vector<RVGitDiffMap> loadedDiffs_;
    std::vector<RVGitDiffStatsOutputParserResultItem> loadedDiffStats_;
};
