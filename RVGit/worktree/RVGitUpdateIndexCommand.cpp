#include "RVGit/worktree/RVGitUpdateIndexCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"

RVGitUpdateIndexCommand::RVGitUpdateIndexCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitUpdateIndexCommand>
RVGitUpdateIndexCommand::gitUpdateIndexCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    auto command = std::make_shared<RVGitUpdateIndexCommand>(repository);
    command->setFilePaths(std::move(filePaths));
    return command;
}

const RVGitErrorTable& RVGitUpdateIndexCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitUpdateIndexNoSuchFileError)
            .command("update-index")
            .exitCode(128)
            .standardError("fatal: Unable to mark file"),
    };
    return *table;
}

void RVGitUpdateIndexCommand::gitCommandWillInitialize() {
    setGitCommand("update-index");
    addGitCommandOptionsThatAreSet({
        {ignoresMissingFiles_, "--ignore-missing"},
        {setsAssumeUnchangedBit_, "--assume-unchanged"},
        {unsetsAssumeUnchangedBit_, "--no-assume-unchanged"},
        {unresolves_, "--unresolve"},
    });
    if (filePaths())
        for (const std::string& filePath : *filePaths())
            addGitCommandFilePath(filePath);
}
