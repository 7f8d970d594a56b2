#include "RVGit/objects/RVGitShowCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitObject.h"
#include "RVGit/objects/RVGitObjectReference.h"

RVGitShowCommand::RVGitShowCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   std::string objectReference)
    : RVGitCommand(repository), objectReference_(std::move(objectReference)) {}

std::shared_ptr<RVGitShowCommand> RVGitShowCommand::gitShowCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::string& objectHash) {
    return std::make_shared<RVGitShowCommand>(repository, objectHash);
}

std::shared_ptr<RVGitShowCommand> RVGitShowCommand::gitShowCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<std::string>& revision,
    const std::optional<std::string>& filePath) {
    return std::make_shared<RVGitShowCommand>(
        repository, RVGitObject::objectReferenceWithRevision(revision, filePath));
}

const RVGitErrorTable& RVGitShowCommand::gitErrorDefinitions() {
    // The first row names a key of the patch errors; without a group it captures nothing.
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitBlobNotFoundError)
            .command("show")
            .exitCode(128)
            .standardError("unknown revision or path not in the working tree",
                           {RVGitPatchLineNumberErrorKey}),
        gitErrorRow(RVGitBlobNotFoundError)
            .command("show")
            .exitCode(128)
            .standardError("Path '(.+)' does not exist in '(.+)'",
                           {RVGitFilePathErrorKey, RVGitRevisionErrorKey}),
        gitErrorRow(RVGitBlobNotFoundError)
            .command("show")
            .exitCode(128)
            .standardError("Invalid object name '(.+)'", {RVGitObjectHashErrorKey}),
    };
    return *table;
}

void RVGitShowCommand::gitCommandWillInitialize() {
    setGitCommand("show");
    addGitCommandOption("--no-color");
    addGitCommandRevision(objectReference_, RVGitBlobNotFoundError);
}

RVUserInfo RVGitShowCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    addObjectReferenceToErrorUserInfo(objectReference_, userInfo);
    return userInfo;
}
