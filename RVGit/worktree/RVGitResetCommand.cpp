#include "RVGit/worktree/RVGitResetCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/command/RVGitRevisionArguments.h"

RVGitResetCommand::RVGitResetCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitResetCommand> RVGitResetCommand::gitResetCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVGitResetMode mode,
    std::optional<std::string> revision) {
    auto command = std::make_shared<RVGitResetCommand>(repository);
    command->setMode(mode);
    command->setRevision(std::move(revision));
    return command;
}

std::shared_ptr<RVGitResetCommand> RVGitResetCommand::gitResetCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVGitResetMode mode,
    std::optional<std::string> revision, std::optional<std::vector<std::string>> filePaths) {
    auto command = gitResetCommandWithRepository(repository, mode, std::move(revision));
    command->setFilePaths(std::move(filePaths));
    return command;
}

const RVGitErrorTable& RVGitResetCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(unresolvedRevisionErrorCode)
            .command("reset")
            .exitCode(128)
            .standardError("fatal: Failed to resolve '(.+)' as a valid ref",
                           {RVGitRevisionErrorKey}),
    };
    return *table;
}

void RVGitResetCommand::gitCommandWillInitialize() {
    setGitCommand("reset");
    addGitCommandOption("-q");
    const std::pair<RVGitResetMode, const char*> modes[] = {
        {RVGitResetModeSoft, "--soft"},
        {RVGitResetModeHard, "--hard"},
        {RVGitResetModeKeep, "--keep"},
    };
    for (const auto& [mode, option] : modes)
        if (mode == mode_)
            addGitCommandOption(option);
    if (revision_)
        addGitCommandRevision(*revision_, unresolvedRevisionErrorCode);
    addFilePathArguments();
    if (!filePaths())
        separateRevisionsFromFiles(*this);
}
