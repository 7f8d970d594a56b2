#include "RVGit/worktree/RVGitMoveCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitMoveCommand::RVGitMoveCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitMoveCommand> RVGitMoveCommand::gitMoveCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> sourceFilePath,
    std::optional<std::string> destinationFilePath) {
    auto command = std::make_shared<RVGitMoveCommand>(repository);
    command->setSourceFilePath(std::move(sourceFilePath));
    command->setDestinationFilePath(std::move(destinationFilePath));
    return command;
}

const RVGitErrorTable& RVGitMoveCommand::gitErrorDefinitions() {
    const auto row = [](RVGitErrorCode code, const char* pattern,
                        const std::vector<std::string>& names) {
        return gitErrorRow(code).command("mv").exitCode(128).standardError(pattern, names);
    };
    const std::vector<std::string> file = {RVGitFilePathErrorKey};
    const std::vector<std::string> files = {RVGitSourceFilePathErrorKey,
                                            RVGitDestinationFilePathErrorKey};
    // The row of a bad source stands twice, for compatibility.
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        row(RVGitMoveFileSourceDirectoryEmptyError,
            "fatal: source directory is empty, source=(.+), destination=(.+)", files),
        row(RVGitMoveFileSelfTargetError,
            "fatal: can not move directory into itself, source=(.+), destination=(.+)", files),
        row(RVGitMoveFileOutsideRepositoryError, "fatal: '(.+)' is outside repository", file),
        row(RVGitMoveFileSourceNotFoundError, "fatal: bad source, source=(.+), destination=(.+)",
            files),
        row(RVGitMoveFileNotUnderVersionControlError,
            "fatal: not under version control, source=(.+), destination=(.+)", files),
        row(RVGitMoveFileDestinationDirectoryMissingError,
            "fatal: renaming '(.+)' failed: No such file or directory", file),
        row(RVGitMoveFileAlreadyExistsError,
            "fatal: destination exists, source=(.+), destination=(.+)", files),
        row(RVGitMoveFileSourceNotFoundError, "fatal: bad source, source=(.+), destination=(.+)",
            files),
    };
    return *table;
}

void RVGitMoveCommand::gitCommandWillInitialize() {
    setGitCommand("mv");
    if (forcesRename_)
        addGitCommandOption("-f");
    if (ignoresErrors_)
        addGitCommandOption("-k");
    if (sourceFilePath_)
        addGitCommandFilePath(*sourceFilePath_);
    if (destinationFilePath_)
        addGitCommandFilePath(*destinationFilePath_);
}
