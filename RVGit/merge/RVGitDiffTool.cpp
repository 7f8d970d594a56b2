#include "RVGit/merge/RVGitDiffTool.h"

#include <utility>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitToolLaunch.h"

RVGitDiffTool::RVGitDiffTool(std::shared_ptr<RVGitRepository> repository, std::string name)
    : repository_(std::move(repository)),
      name_(std::move(name)),
      queue_(RVOperationQueue::serialQueue(RVGitMakeQueueName("DiffToolQueue"))) {
    requireParameter(repository_ != nullptr, "repository");
}

RVGitDiffTool::~RVGitDiffTool() = default;

std::shared_ptr<RVGitDiffTool> RVGitDiffTool::diffToolWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string name) {
    return std::make_shared<RVGitDiffTool>(std::move(repository), std::move(name));
}

std::shared_ptr<RVGitDiffToolCommand> RVGitDiffTool::diffToolCommand() const {
    const std::lock_guard lock(mutex_);
    return diffToolCommand_;
}

std::shared_ptr<RVGitDiffToolCommand> RVGitDiffTool::finishedCommand() const {
    auto command = diffToolCommand();
    return command && command->isFinished() ? command : nullptr;
}

int RVGitDiffTool::exitCode() const {
    const auto command = finishedCommand();
    return command ? command->exitCode() : 0;
}

// The command's own strings are made on first request, by one thread.

std::optional<std::string> RVGitDiffTool::standardOutput() const {
    const auto command = finishedCommand();
    if (!command)
        return std::nullopt;
    return stringUsingBestEncoding(command->standardOutputData());
}

std::optional<std::string> RVGitDiffTool::standardError() const {
    const auto command = finishedCommand();
    if (!command)
        return std::nullopt;
    return stringUsingBestEncoding(command->standardErrorData());
}

void RVGitDiffTool::launchWithRevisions(std::optional<std::vector<std::string>> revisions,
                                        std::optional<std::vector<std::string>> filePaths,
                                        unsigned options, CompletionHandler completionHandler) {
    const auto command = RVGitDiffToolCommand::gitDiffToolCommandWithRepository(repository_);
    command->setDiffToolName(name_);
    command->setRevisions(std::move(revisions));
    command->setFilePaths(std::move(filePaths));
    command->setPerformsDirectoryDiff((options & RVGitDiffToolOptionPerformsDirectoryDiff) != 0);
    command->setComparesIndex((options & RVGitDiffToolOptionComparesIndex) != 0);
    const std::lock_guard lock(mutex_);
    diffToolCommand_ = command;
    launchToolCommand(command, *queue_, std::move(completionHandler));
}

void RVGitDiffTool::cancel() {
    if (const auto command = diffToolCommand())
        command->cancel();
}
