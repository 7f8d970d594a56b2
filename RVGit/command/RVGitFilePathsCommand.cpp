#include "RVGit/command/RVGitFilePathsCommand.h"

RVGitFilePathsCommand::RVGitFilePathsCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             std::optional<std::vector<std::string>> filePaths)
    : RVGitCommand(repository), filePaths_(std::move(filePaths)) {}

void RVGitFilePathsCommand::addFilePathArguments() {
    if (!filePaths_)
        return;
    addGitCommandFilePaths(*filePaths_);
}
