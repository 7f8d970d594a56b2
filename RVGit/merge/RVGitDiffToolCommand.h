#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

/// Runs `git difftool`, which shows changes in another program. It runs as long as that program
/// does: RVGitDiffTool runs it without blocking the caller.
class RVGIT_EXPORT RVGitDiffToolCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitDiffToolCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitDiffToolCommand> gitDiffToolCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// As `git diff` takes them: none, one, two or a range.
    [[nodiscard]] const std::optional<std::vector<std::string>>& revisions() const {
        return revisions_;
    }
    void setRevisions(std::optional<std::vector<std::string>> revisions) {
        revisions_ = std::move(revisions);
    }
    /// A tool that git knows or the configuration defines; absent: that of "diff.tool".
    [[nodiscard]] const std::optional<std::string>& diffToolName() const { return diffToolName_; }
    void setDiffToolName(std::optional<std::string> name) { diffToolName_ = std::move(name); }
    /// Shows two directories at once instead of file after file.
    [[nodiscard]] bool performsDirectoryDiff() const { return performsDirectoryDiff_; }
    void setPerformsDirectoryDiff(bool performs) { performsDirectoryDiff_ = performs; }
    /// Compares the index instead of the working tree.
    [[nodiscard]] bool comparesIndex() const { return comparesIndex_; }
    void setComparesIndex(bool compares) { comparesIndex_ = compares; }

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::vector<std::string>> revisions_;
    std::optional<std::string> diffToolName_;
    bool performsDirectoryDiff_ = false;
    bool comparesIndex_ = false;
};
