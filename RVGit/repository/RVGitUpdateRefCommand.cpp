#include "RVGit/repository/RVGitUpdateRefCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"

RVGitUpdateRefCommand::RVGitUpdateRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             const std::optional<RVOptions>&)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitUpdateRefCommand> RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitUpdateRefCommand>(repository, options);
}

const RVGitErrorTable& RVGitUpdateRefCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        {.errorCode = RVGitNoRefsError, .commandNames = {"update-ref"}, .exitCodes = {1}},
    };
    return *table;
}

void RVGitUpdateRefCommand::gitCommandWillInitialize() {
    setGitCommand("update-ref");
    if (deletesRef_)
        addGitCommandOption("-d");
    if (!instructions_.empty()) {
        addGitCommandOption("--stdin");
        setStandardInput(
            RVStandardInput::data(stringByJoiningComponents(instructions_, "\n") + "\n"));
    }
    if (!RVStringIsEmpty(fullRefName_))
        addGitCommandArgument(*fullRefName_);
    if (!RVStringIsEmpty(revision_))
        addGitCommandArgument(*revision_);
}

bool RVGitUpdateRefCommand::gitCommandShouldHandleError(const RVError& error) {
    return error.code() != RVGitNoRefsError;
}
