#include "RVGit/history/RVGitBlameCommand.h"

#include "RVGit/command/RVGitErrorKeys.h"

RVGitBlameCommand::RVGitBlameCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     std::optional<std::string> revision,
                                     std::optional<std::string> filePath)
    : RVGitCommand(repository), revision_(std::move(revision)), filePath_(std::move(filePath)) {}

std::shared_ptr<RVGitBlameCommand> RVGitBlameCommand::gitBlameCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision,
    std::optional<std::string> filePath) {
    return std::make_shared<RVGitBlameCommand>(repository, std::move(revision),
                                               std::move(filePath));
}

void RVGitBlameCommand::gitCommandWillInitialize() {
    setGitCommand("blame");
    addGitCommandOption("--porcelain");
    if (revision_)
        addGitCommandRevision(*revision_);
    if (filePath_)
        addGitCommandFilePaths({*filePath_});
    else
        addGitCommandArgument("--");
}

void RVGitBlameCommand::gitCommandDidTerminate() {
    RVGitBlameOutputParser parser(standardOutputData());
    std::optional<RVError> error;
    // Only a hash of 64 digits cannot be read: without the error the file would seem empty.
    if (!parser.parse(&error) && !isCancelled())
        finishWithError(*std::move(error));
    annotatedLines_ = parser.takeIndexedResults();
}

RVUserInfo RVGitBlameCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    if (filePath_)
        userInfo.insert_or_assign(RVGitFilePathErrorKey, *filePath_);
    return userInfo;
}
