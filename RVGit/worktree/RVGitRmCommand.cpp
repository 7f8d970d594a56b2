#include "RVGit/worktree/RVGitRmCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitRmCommand::RVGitRmCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitRmCommand> RVGitRmCommand::gitRmCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitRmCommand>(repository);
}

std::shared_ptr<RVGitRmCommand> RVGitRmCommand::gitRmCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    auto command = gitRmCommandWithRepository(repository);
    command->setFilePaths(std::move(filePaths));
    return command;
}

const RVGitErrorTable& RVGitRmCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitRemoveOperationNotPermittedError)
            .command("rm")
            .exitCode(128)
            .standardError("fatal: git rm: '(.+)': Operation not permitted",
                           {RVGitSubmodulePathErrorKey}),
        gitErrorRow(RVGitRemoveFileWithLocalModificationsError)
            .command("rm")
            .exitCode(1)
            .standardError("error: the following file"),
    };
    return *table;
}

void RVGitRmCommand::gitCommandWillInitialize() {
    setGitCommand("rm");
    addGitCommandOptions({"-q", "-f"});
    if (removesFilesRecursively_)
        addGitCommandOption("-r");
    if (removesFilesFromIndex_)
        addGitCommandOption("--cached");
    if (ignoresUnmatched_)
        addGitCommandOption("--ignore-unmatch");
    addFilePathArguments();
}
