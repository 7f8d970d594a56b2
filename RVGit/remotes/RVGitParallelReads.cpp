#include "RVGit/remotes/RVGitParallelReads.h"

#include "RVGit/command/RVGitCommand.h"

RVGitParallelReads::RVGitParallelReads(
    std::initializer_list<std::shared_ptr<RVGitCommand>> commands)
    : commands_(commands) {
    for (const auto& command : commands_)
        command->enqueueCommand();
}

RVGitParallelReads::~RVGitParallelReads() {
    for (const auto& command : commands_)
        if (!command->isFinished())
            command->cancel();
}

bool RVGitParallelReads::finish(RVGitCommand& command, RVErrorPlace error) {
    command.waitUntilFinished();
    if (command.error()) {
        fillErrorPlace(error, *command.error());
        return false;
    }
    if (command.isCancelled()) {
        clearErrorPlace(error);
        return false;
    }
    return true;
}

bool RVGitParallelReads::run(RVGitCommand& command, RVErrorPlace error) {
    return command.run(error) && finish(command, error);
}
