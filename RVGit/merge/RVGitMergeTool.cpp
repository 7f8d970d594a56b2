#include "RVGit/merge/RVGitMergeTool.h"

#include <utility>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/merge/RVGitToolLaunch.h"

RVGitMergeTool::RVGitMergeTool(std::shared_ptr<RVGitRepository> repository, std::string name)
    : repository_(std::move(repository)),
      name_(std::move(name)),
      queue_(RVOperationQueue::serialQueue(RVGitMakeQueueName("MergeToolQueue"))) {
    requireParameter(repository_ != nullptr, "repository");
}

RVGitMergeTool::~RVGitMergeTool() = default;

std::shared_ptr<RVGitMergeTool> RVGitMergeTool::mergeToolWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string name) {
    return std::make_shared<RVGitMergeTool>(std::move(repository), std::move(name));
}

bool RVGitMergeTool::keepsBackupFiles() const {
    const std::lock_guard lock(mutex_);
    return keepsBackupFiles_;
}

void RVGitMergeTool::setKeepsBackupFiles(bool keeps) {
    const std::lock_guard lock(mutex_);
    keepsBackupFiles_ = keeps;
}

std::shared_ptr<RVGitMergeToolCommand> RVGitMergeTool::mergeToolCommand() const {
    const std::lock_guard lock(mutex_);
    return mergeToolCommand_;
}

void RVGitMergeTool::launchWithFilePath(const std::string& filePath,
                                        CompletionHandler completionHandler) {
    const auto command =
        RVGitMergeToolCommand::gitMergeToolCommandWithRepository(repository_, filePath);
    command->setMergeToolName(name_);
    const std::lock_guard lock(mutex_);
    command->setKeepsBackupFiles(keepsBackupFiles_);
    mergeToolCommand_ = command;
    launchToolCommand(command, *queue_, std::move(completionHandler));
}

void RVGitMergeTool::cancel() {
    if (const auto command = mergeToolCommand())
        command->cancel();
}
