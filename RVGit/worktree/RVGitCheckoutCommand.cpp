#include "RVGit/worktree/RVGitCheckoutCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitCheckoutCommand::RVGitCheckoutCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitCheckoutCommand> RVGitCheckoutCommand::gitCheckoutCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision) {
    return gitCheckoutCommandWithRepository(repository, std::move(revision), std::nullopt);
}

std::shared_ptr<RVGitCheckoutCommand> RVGitCheckoutCommand::gitCheckoutCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision,
    std::optional<std::vector<std::string>> filePaths) {
    auto command = std::make_shared<RVGitCheckoutCommand>(repository);
    command->setRevision(std::move(revision));
    command->setFilePaths(std::move(filePaths));
    return command;
}

const RVGitErrorTable& RVGitCheckoutCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitCheckoutUncommittedChangesError)
            .command("checkout")
            .exitCode(1)
            .standardError("Your local changes to the following files would be overwritten by"),
    };
    return *table;
}

void RVGitCheckoutCommand::gitCommandWillInitialize() {
    setGitCommand("checkout");
    if (revision_)
        addGitCommandRevision(*revision_);
    if (usesForce_)
        addGitCommandOption("-f");
    if (usesMerge_)
        addGitCommandOption("-m");
    addFilePathArguments();
}

RVUserInfo RVGitCheckoutCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    return userInfo;
}
