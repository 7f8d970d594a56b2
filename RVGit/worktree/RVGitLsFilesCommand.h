#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/objects/RVGitCompactHash.h"

/// One record of `git ls-files -z -v --stage`.
struct RVGitIndexOutputParserResultItem {
    std::string filePath;
    RVGitCompactHash objectHash;
    /// The letter of "-v"; absent where git printed none.
    std::optional<char> flag;
    RVGitFileMode fileMode = RVGitFileModeNone;
    RVGitIndexStage stage = RVGitIndexStageDefault;
};

/// Reads what `git ls-files -z -v --stage` prints, and keeps the records that are asked for. A
/// record that is not asked for is not even looked at; one that is, but has another shape, fails.
class RVGIT_EXPORT RVGitIndexOutputParser
    : public RVGitItemOutputParser<RVGitIndexOutputParserResultItem> {
public:
    explicit RVGitIndexOutputParser(std::string_view outputData);
    explicit RVGitIndexOutputParser(std::vector<std::string> outputLines);

    /// Records whose path begins with one of these, or equals one, are kept, beside those of the
    /// filters. No paths and no filter: all.
    [[nodiscard]] const std::vector<std::string>& filePaths() const { return filePaths_; }
    void setFilePaths(std::vector<std::string> paths) { filePaths_ = std::move(paths); }
    /// Keeps records with an assume-unchanged flag.
    [[nodiscard]] bool filtersAssumeUnchangedFiles() const { return filtersAssumeUnchangedFiles_; }
    void setFiltersAssumeUnchangedFiles(bool filters) { filtersAssumeUnchangedFiles_ = filters; }
    /// Keeps records of submodules.
    [[nodiscard]] bool filtersSubmodules() const { return filtersSubmodules_; }
    void setFiltersSubmodules(bool filters) { filtersSubmodules_ = filters; }

    /// Whether the record is one of those asked for. It is judged by fixed columns, whatever its
    /// shape.
    [[nodiscard]] bool shouldParseOutputLine(std::string_view line) const;

    /// In git's order.
    [[nodiscard]] const std::vector<RVGitIndexOutputParserResultItem>& indexEntries() const& {
        return indexedResultCache();
    }

    /// How many records, of those asked for, did not stand in the columns in which git prints them,
    /// so that the regular expression had to read them: of git's own, none.
    [[nodiscard]] std::size_t numberOfRecordsOutsideColumns() const {
        return numberOfRecordsOutsideColumns_;
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    std::vector<std::string> filePaths_;
    std::size_t numberOfRecordsOutsideColumns_ = 0;
    bool filtersAssumeUnchangedFiles_ = false;
    bool filtersSubmodules_ = false;
};

/// What RVGitLsFilesCommand shows; each bit sets the property of that name.
enum RVGitLsFilesCommandOptions : unsigned {
    RVGitLsFilesCommandOptionShowsIndexInfo = 1,
    RVGitLsFilesCommandOptionUsesStandardExcludes = 2,
    RVGitLsFilesCommandOptionShowsIgnoredFiles = 4,
    RVGitLsFilesCommandOptionShowsOtherFiles = 8,
    RVGitLsFilesCommandOptionShowsAssumeUnchangedFiles = 16,
    RVGitLsFilesCommandOptionShowsSubmodules = 32,
};

/// Runs `git ls-files -z`: lists paths, or with index information the entries of the index.
/// Failure: the common codes, and 11 if a record cannot be read.
class RVGIT_EXPORT RVGitLsFilesCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required. `options` are bits of RVGitLsFilesCommandOptions.
    explicit RVGitLsFilesCommand(const std::shared_ptr<RVGitRepository>& repository,
                                 std::optional<std::vector<std::string>> filePaths = std::nullopt,
                                 unsigned options = 0);
    [[nodiscard]] static std::shared_ptr<RVGitLsFilesCommand> gitLsFilesCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitLsFilesCommand> gitLsFilesCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths, unsigned options);

    /// Lists entries with mode, hash, stage and flag instead of paths.
    [[nodiscard]] bool showsIndexInfo() const { return showsIndexInfo_; }
    void setShowsIndexInfo(bool shows) { showsIndexInfo_ = shows; }
    [[nodiscard]] bool usesStandardExcludes() const { return usesStandardExcludes_; }
    void setUsesStandardExcludes(bool uses) { usesStandardExcludes_ = uses; }
    [[nodiscard]] bool showsIgnoredFiles() const { return showsIgnoredFiles_; }
    void setShowsIgnoredFiles(bool shows) { showsIgnoredFiles_ = shows; }
    [[nodiscard]] bool showsOtherFiles() const { return showsOtherFiles_; }
    void setShowsOtherFiles(bool shows) { showsOtherFiles_ = shows; }
    /// The filters of RVGitIndexOutputParser; they change nothing on the command line.
    [[nodiscard]] bool showsAssumeUnchangedFiles() const { return showsAssumeUnchangedFiles_; }
    void setShowsAssumeUnchangedFiles(bool shows) { showsAssumeUnchangedFiles_ = shows; }
    [[nodiscard]] bool showsSubmodules() const { return showsSubmodules_; }
    void setShowsSubmodules(bool shows) { showsSubmodules_ = shows; }

    /// With index information, the entries in git's order, after the run.
    [[nodiscard]] const std::vector<RVGitIndexOutputParserResultItem>& entries() const& {
        return entries_;
    }
    /// Moves them out of the command, which is then spent.
    [[nodiscard]] std::vector<RVGitIndexOutputParserResultItem> takeEntries() {
        return std::move(entries_);
    }
    /// Without it, the paths.
    [[nodiscard]] const std::vector<std::string>& filePathEntries() const& {
        return filePathEntries_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool showsIndexInfo_ = false;
    bool usesStandardExcludes_ = false;
    bool showsIgnoredFiles_ = false;
    bool showsOtherFiles_ = false;
    bool showsAssumeUnchangedFiles_ = false;
    bool showsSubmodules_ = false;
    std::vector<RVGitIndexOutputParserResultItem> entries_;
    std::vector<std::string> filePathEntries_;
};
