#include "RVGit/repository/RVGitUpdateRefCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

RVGitUpdateRefCommand::RVGitUpdateRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             const std::optional<RVOptions>&)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitUpdateRefCommand> RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitUpdateRefCommand>(repository, options);
}

const RVGitErrorTable& RVGitUpdateRefCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitNoRefsError).command("update-ref").exitCode(1),
    };
    return *table;
}

void RVGitUpdateRefCommand::gitCommandWillInitialize() {
    setGitCommand("update-ref");
    if (deletesRef_)
        addGitCommandOption("-d");
    if (!instructions_.empty()) {
        addGitCommandOption("--stdin");
        for (const std::string& instruction : instructions_)
            if (instruction.find_first_of(std::string_view("\n\0", 2)) != std::string::npos)
                refuseGitCommandArgument(RVGitRVGitGenericError, RVGitRefNameErrorKey, instruction);
        setStandardInput(
            RVStandardInput::data(stringByJoiningComponents(instructions_, "\n") + "\n"));
    }
    if (!RVStringIsEmpty(fullRefName_))
        addGitCommandName(*fullRefName_);
    if (!RVStringIsEmpty(revision_))
        addGitCommandName(*revision_);
}

bool RVGitUpdateRefCommand::gitCommandShouldHandleError(const RVError& error) {
    return error.code() != RVGitNoRefsError;
}
