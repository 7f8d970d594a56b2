#include "RVGit/merge/RVGitDiffToolCommand.h"

#include "RVGit/command/RVGitRevisionArguments.h"

RVGitDiffToolCommand::RVGitDiffToolCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitDiffToolCommand> RVGitDiffToolCommand::gitDiffToolCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitDiffToolCommand>(repository);
}

void RVGitDiffToolCommand::gitCommandWillInitialize() {
    setGitCommand("difftool");
    addGitCommandOptions({"--no-prompt", "--no-symlinks"});
    addGitCommandOptionsThatAreSet(
        {{performsDirectoryDiff_, "--dir-diff"}, {comparesIndex_, "--staged"}});
    if (diffToolName_)
        addGitCommandOption("--tool=" + *diffToolName_);
    if (revisions_)
        addGitCommandRevisions(*revisions_);
    addFilePathArguments();
    if (!filePaths())
        separateRevisionsFromFiles(*this);
}
