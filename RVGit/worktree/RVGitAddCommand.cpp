#include "RVGit/worktree/RVGitAddCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitAddCommand::RVGitAddCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitAddCommand> RVGitAddCommand::gitAddCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitAddCommand>(repository);
}

std::shared_ptr<RVGitAddCommand> RVGitAddCommand::gitAddCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    auto command = gitAddCommandWithRepository(repository);
    command->setFilePaths(std::move(filePaths));
    return command;
}

const RVGitErrorTable& RVGitAddCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitAddFilesError)
            .command("add")
            .exitCode(128)
            .standardError("fatal: pathspec '(.+)' did not match any files",
                           {RVGitFilePathErrorKey}),
    };
    return *table;
}

void RVGitAddCommand::gitCommandWillInitialize() {
    setGitCommand("add");
    if (updatesAllFiles_ && RVArrayIsEmpty(filePaths()))
        addGitCommandArgument(".");
    addGitCommandOptionsThatAreSet({
        {updatesAllFiles_, "--all"},
        {ignoresErrors_, "--ignore-errors"},
        {ignoresMissingFiles_, "--ignore-missing"},
        {forcesAdd_, "-f"},
        {intentsToAdd_, "--intent-to-add"},
    });
    addFilePathArguments();
}

RVUserInfo RVGitAddCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (!RVArrayIsEmpty(filePaths())) {
        userInfo.insert_or_assign(RVGitFilePathsErrorKey, *filePaths());
        userInfo.try_emplace(RVGitFilePathErrorKey, filePaths()->front());
    }
    return userInfo;
}
