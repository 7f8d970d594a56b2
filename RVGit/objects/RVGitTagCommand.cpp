#include "RVGit/objects/RVGitTagCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"

namespace {

// With tag.gpgSign git makes an annotated tag of every one, and asks for the message.
constexpr char noEditor[] = ":";

}  // namespace

RVGitTagCommand::RVGitTagCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {
    setValueForEnvironmentVariable(noEditor, "GIT_EDITOR");
}

std::shared_ptr<RVGitTagCommand> RVGitTagCommand::gitCreateTagCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName,
    std::optional<std::string> revision, std::optional<std::string> message) {
    auto command = std::make_shared<RVGitTagCommand>(repository);
    command->setRefNames(std::vector<std::string>{std::move(refName)});
    command->setRevision(std::move(revision));
    command->setMessage(std::move(message));
    return command;
}

std::shared_ptr<RVGitTagCommand> RVGitTagCommand::gitDeleteTagCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::vector<std::string> refNames) {
    auto command = std::make_shared<RVGitTagCommand>(repository);
    command->setDeletesTag(true);
    command->setRefNames(std::move(refNames));
    return command;
}

const RVGitErrorTable& RVGitTagCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitCreateTagAlreadyExistsError)
            .command("tag")
            .exitCode(128)
            .standardError("fatal: tag '(.+)' already exists", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitCreateTagInvalidObjectError)
            .command("tag")
            .exitCode(128)
            .standardError("fatal: Failed to resolve '(.+)' as a valid ref",
                           {RVGitRevisionErrorKey}),
        gitErrorRow(RVGitDeleteTagNotFoundError)
            .command("tag")
            .exitCode(1)
            .standardError("error: tag '(.+)' not found", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitGPGSigningKeyUnvailableError)
            .command("tag")
            .exitCode(128)
            .standardError("error: gpg failed to sign the data", {RVGitRefNameErrorKey})
            .standardError("error: unable to sign the tag"),
    };
    return *table;
}

void RVGitTagCommand::gitCommandWillInitialize() {
    setGitCommand("tag");
    // It is taken away where the environment is sanitized.
    if (!valueForEnvironmentVariable("GIT_EDITOR"))
        setValueForEnvironmentVariable(noEditor, "GIT_EDITOR");
    if (deletesTag_)
        addGitCommandOption("-d");
    if (message_) {
        if (signsTag_) {
            addGitCommandOption("-s");
            if (!RVStringIsEmpty(signingKeyFingerprint_))
                addGitCommandOptions({"-u", *signingKeyFingerprint_});
        } else {
            addGitCommandOption("-a");
        }
        addGitCommandOption("-F-");
        setStandardInput(RVStandardInput::data(*message_));
    }
    if (refNames_)
        addGitCommandNames(*refNames_,
                           deletesTag_ ? RVGitDeleteTagNotFoundError : RVGitRVGitGenericError);
    if (revision_)
        addGitCommandRevision(*revision_, RVGitCreateTagInvalidObjectError);
}

RVUserInfo RVGitTagCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (refNames_)
        userInfo.insert_or_assign(RVGitRefNameErrorKey, *refNames_);
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    return userInfo;
}
