#include "RVGit/worktree/RVGitAddCommand.h"

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitAddCommand::RVGitAddCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

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
    static const RVGitErrorTable table = {
        {.errorCode = RVGitAddFilesError,
         .commandNames = {"add"},
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: pathspec '(.+)' did not match any files"},
         .standardErrorMatchedComponentNames = {RVGitFilePathErrorKey}},
    };
    return table;
}

void RVGitAddCommand::gitCommandWillInitialize() {
    setGitCommand("add");
    if (updatesAllFiles_ && RVArrayIsEmpty(filePaths_))
        addGitCommandArgument(".");
    const std::pair<bool, const char*> flags[] = {
        {updatesAllFiles_, "--all"},
        {ignoresErrors_, "--ignore-errors"},
        {ignoresMissingFiles_, "--ignore-missing"},
        {forcesAdd_, "-f"},
        {intentsToAdd_, "--intent-to-add"},
    };
    for (const auto& [isSet, option] : flags)
        if (isSet)
            addGitCommandOption(option);
    if (filePaths_) {
        addGitCommandArgument("--");
        addGitCommandArguments(*filePaths_);
    }
}

RVUserInfo RVGitAddCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (!RVArrayIsEmpty(filePaths_)) {
        userInfo.insert_or_assign(RVGitFilePathsErrorKey, *filePaths_);
        userInfo.try_emplace(RVGitFilePathErrorKey, filePaths_->front());
    }
    return userInfo;
}
