#include "RVGit/merge/RVGitMergeToolCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitMergeToolCommand::RVGitMergeToolCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             std::optional<std::string> filePath)
    : RVGitCommand(repository), filePath_(std::move(filePath)) {}

std::shared_ptr<RVGitMergeToolCommand> RVGitMergeToolCommand::gitMergeToolCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> filePath) {
    return std::make_shared<RVGitMergeToolCommand>(repository, std::move(filePath));
}

const RVGitErrorTable& RVGitMergeToolCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table{
        gitErrorRow(RVGitMergetoolMergeFailedError)
            .command("mergetool")
            .exitCode(1)
            .standardError("merge of (.+) failed", {RVGitFilePathErrorKey}),
    };
    return *table;
}

void RVGitMergeToolCommand::gitCommandWillInitialize() {
    setGitCommand("mergetool");
    addGitOptions(
        {"-c", std::string("mergetool.keepBackup=") + (keepsBackupFiles_ ? "true" : "false")});
    addGitCommandOption("--no-prompt");
    if (mergeToolName_)
        addGitCommandOption("--tool=" + *mergeToolName_);
    if (filePath_)
        addGitCommandFilePaths({*filePath_});
}
