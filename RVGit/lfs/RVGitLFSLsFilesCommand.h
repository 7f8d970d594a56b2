#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/lfs/RVGitLFSCommand.h"

/// Reads the list that `git lfs ls-files` prints: the paths of the files whose contents are in the
/// working tree, marked by "*". Other lines are skipped, those of files that stand there as
/// pointers, marked by "-", too.
class RVGIT_EXPORT RVGitLFSLsFilesOutputParser : public RVGitItemOutputParser<std::string> {
public:
    explicit RVGitLFSLsFilesOutputParser(std::string_view outputData);

    [[nodiscard]] const std::vector<std::string>& files() const& { return indexedResultCache(); }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Runs `git lfs ls-files`. A revision that begins with "-" is refused with code 1.
class RVGIT_EXPORT RVGitLFSLsFilesCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSLsFilesCommand> gitLFSLsFilesCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// Absent: what HEAD and the index hold.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    /// Paths relative to the working tree; absent before the run and after a failure.
    [[nodiscard]] const std::optional<std::vector<std::string>>& files() const { return files_; }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::string> revision_;
    std::optional<std::vector<std::string>> files_;
};
