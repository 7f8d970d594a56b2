#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Base of the commands that are given paths of files.
class RVGIT_EXPORT RVGitFilePathsCommand : public RVGitCommand {
public:
    /// From the top of the working tree. Git takes them for patterns unless the command says
    /// otherwise. Absent is not the same as none, where the command makes a difference.
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }
    void setFilePaths(std::optional<std::vector<std::string>> filePaths) {
        filePaths_ = std::move(filePaths);
    }

protected:
    /// The repository is required.
    explicit RVGitFilePathsCommand(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths = std::nullopt);

    /// Adds "--" and the paths; nothing where they are absent.
    void addFilePathArguments();

private:
    std::optional<std::vector<std::string>> filePaths_;
};
