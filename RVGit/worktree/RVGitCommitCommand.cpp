#include "RVGit/worktree/RVGitCommitCommand.h"

#include "RVGit/base/RVString.h"

RVGitCommitCommand::RVGitCommitCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       std::optional<std::string> message, unsigned options)
    : RVGitCommand(repository),
      message_(std::move(message)),
      amendsChanges_(options & RVGitCommitOptionAmend),
      signsOff_(options & RVGitCommitOptionSignOff),
      allowsEmpty_(options & RVGitCommitOptionAllowEmpty),
      doesNotVerify_(options & RVGitCommitOptionNoVerify) {
    setSupportsProgressOutput(true);
}

std::shared_ptr<RVGitCommitCommand> RVGitCommitCommand::gitCommitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message) {
    return gitCommitCommandWithRepository(repository, std::move(message), 0);
}

std::shared_ptr<RVGitCommitCommand> RVGitCommitCommand::gitCommitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message,
    unsigned options) {
    return std::make_shared<RVGitCommitCommand>(repository, std::move(message), options);
}

void RVGitCommitCommand::gitCommandWillInitialize() {
    addGitOptions({"-c", "i18n.commitencoding=UTF-8", "-c", "commit.verbose=false"});
    setGitCommand("commit");
    addGitCommandOptionsThatAreSet({
        {amendsChanges_, "--amend"},
        {signsOff_, "--signoff"},
        {allowsEmpty_, "--allow-empty"},
        {doesNotVerify_, "--no-verify"},
    });
    if (reEditsRevision_) {
        addGitCommandOption("-c");
        addGitCommandRevision(*reEditsRevision_);
    } else if (message_) {
        addGitCommandOption("-F-");
        setStandardInput(RVStandardInput::data(precomposedString(*message_)));
    }
}
