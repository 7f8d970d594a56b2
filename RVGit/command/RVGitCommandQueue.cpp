#include "RVGit/command/RVGitCommandQueue.h"

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitConfiguration.h"
#include "RVGit/command/RVGitValues.h"

RVGitCommandQueue& RVGitCommandQueue::sharedQueue() {
    // Never destroyed: commands may still run while the process ends.
    static RVGitCommandQueue& queue = *new RVGitCommandQueue();
    return queue;
}

RVGitCommandQueue::RVGitCommandQueue()
    : queue_(RVOperationQueue::queueWithMaxConcurrentOperationCount(
          RVGitMakeQueueName("CommandQueue"),
          RVGitConfiguration::sharedConfiguration().maxConcurrentCommands())) {}

void RVGitCommandQueue::enqueueCommand(const std::shared_ptr<RVGitCommand>& command) {
    requireParameter(command != nullptr, "command");
    queue_->addOperation(command);
}

bool RVGitCommandQueue::executeCommand(const std::shared_ptr<RVGitCommand>& command,
                                       RVErrorPlace error) {
    return executeCommandOnQueue(command, *queue_, error);
}

bool RVGitCommandQueue::executeCommandOnQueue(const std::shared_ptr<RVGitCommand>& command,
                                              RVOperationQueue& queue, RVErrorPlace error) {
    requireParameter(command != nullptr, "command");
    queue.runOperation(command);
    if (!command->error())
        return true;
    fillErrorPlace(error, *command->error());
    return false;
}

void RVGitCommandQueue::cancelAllCommands() {
    queue_->cancelAllOperations();
}

std::uint64_t RVGitCommandQueue::numberOfCancellations() const {
    return queue_->numberOfCancellations();
}

void RVGitCommandQueue::waitUntilAllCommandsFinished() {
    queue_->waitUntilAllOperationsAreFinished();
}
