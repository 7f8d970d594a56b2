#include "RVGit/submodules/RVGitSubmoduleCommand.h"

#include <algorithm>
#include <array>
#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/command/RVGitErrorRow.h"
#include "RVGit/command/RVGitValues.h"

namespace {

RVGitSubmoduleStatus statusOfFlag(std::string_view flag) {
    switch (flag.front()) {
        case ' ':
            return RVGitSubmoduleStatusClean;
        case '-':
            return RVGitSubmoduleStatusUninitialized;
        case '+':
            return RVGitSubmoduleStatusUpdated;
        default:
            return RVGitSubmoduleStatusUnmerged;
    }
}

// Git says so and ends with 0 all the same, where it is the configuration of a submodule that has
// been added, or a file of one that is checked out.
bool saysThatSomethingIsNotWritten(std::string_view standardError) {
    constexpr std::array<std::string_view, 6> beginnings = {
        "error: could not lock config file ",
        "error: could not write config file ",
        "error: failed to write new configuration file ",
        "error: unable to create file ",
        "error: unable to unlink ",
        "error: unable to write file ",
    };
    for (std::size_t start = 0; start < standardError.size();) {
        const std::size_t end = std::min(standardError.find('\n', start), standardError.size());
        const std::string_view line = standardError.substr(start, end - start);
        if (std::any_of(beginnings.begin(), beginnings.end(),
                        [line](std::string_view text) { return line.starts_with(text); }))
            return true;
        start = end + 1;
    }
    return false;
}

std::optional<std::string> textOf(const std::optional<std::string_view>& text) {
    return text ? std::optional(std::string(*text)) : std::nullopt;
}

}  // namespace

RVGitSubmoduleStatusOutputParser::RVGitSubmoduleStatusOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(componentsSeparatedByStringSequence(outputData, "\n")) {}

std::string_view RVGitSubmoduleStatusOutputParser::parserName() const {
    return "RVGitSubmoduleStatusOutputParser";
}

bool RVGitSubmoduleStatusOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> described(
        R"(^([\-U +])([0-9a-f]{40})\s(.+)\s(\((.+)\))$)");
    static const RVNeverDestroyed<RVRegularExpression> plain(R"(^([\-U +])([0-9a-f]{40})\s(.+)$)");
    static const RVNeverDestroyed<RVRegularExpression> withoutHash(R"(^(\+)\s(.+)$)");

    RVGitSubmoduleOutputParserResultItem item;
    if (auto parts = described->firstMatch(line); !parts.empty()) {
        item.commitHash = textOf(parts[2]);
        item.path = *parts[3];
        if (parts[5] != "(null)")
            item.describe = textOf(parts[5]);
        item.status = statusOfFlag(*parts[1]);
    } else if (parts = plain->firstMatch(line); !parts.empty()) {
        item.commitHash = textOf(parts[2]);
        item.path = *parts[3];
        item.status = statusOfFlag(*parts[1]);
    } else if (parts = withoutHash->firstMatch(line); !parts.empty()) {
        item.path = *parts[2];
        item.status = statusOfFlag(*parts[1]);
    } else {
        return line.empty() || !beginsWithSHA256Hash(line.substr(1));
    }
    resultForKeyMakingIt(item.path) = item;
    return true;
}

RVGitSubmoduleCommand::RVGitSubmoduleCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitFilePathsCommand(repository) {}

std::shared_ptr<RVGitSubmoduleCommand> RVGitSubmoduleCommand::commandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const char* subCommand,
    std::optional<std::vector<std::string>> filePaths) {
    auto command = std::make_shared<RVGitSubmoduleCommand>(repository);
    command->setGitSubCommand(subCommand);
    command->setFilePaths(std::move(filePaths));
    return command;
}

std::shared_ptr<RVGitSubmoduleCommand> RVGitSubmoduleCommand::gitSubmoduleAddCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string path,
    std::optional<std::string> remoteURL, unsigned options) {
    auto command = commandWithRepository(repository, "add", {{std::move(path)}});
    command->setRemoteURL(std::move(remoteURL));
    command->setUsesForce(options & RVGitSubmoduleAddOptionForce);
    return command;
}

std::shared_ptr<RVGitSubmoduleCommand>
RVGitSubmoduleCommand::gitSubmoduleStatusCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    return commandWithRepository(repository, "status", std::move(filePaths));
}

std::shared_ptr<RVGitSubmoduleCommand>
RVGitSubmoduleCommand::gitSubmoduleUpdateCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths, unsigned options) {
    auto command = commandWithRepository(repository, "update", std::move(filePaths));
    command->setInitializesSubmodules(options & RVGitSubmoduleUpdateOptionInitialize);
    command->setRecursesSubmodules(options & RVGitSubmoduleUpdateOptionRecursive);
    command->setUsesForce(options & RVGitSubmoduleUpdateOptionForce);
    return command;
}

std::shared_ptr<RVGitSubmoduleCommand> RVGitSubmoduleCommand::gitSubmoduleSyncCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    return commandWithRepository(repository, "sync", std::move(filePaths));
}

std::shared_ptr<RVGitSubmoduleCommand> RVGitSubmoduleCommand::gitSubmoduleInitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    return commandWithRepository(repository, "init", std::move(filePaths));
}

const RVGitErrorTable& RVGitSubmoduleCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitAddSubmodulePathAlreadyExistsError)
            .command("submodule")
            .subCommand("add")
            .exitCode(1)
            .exitCode(128)
            .standardError("'(.+)' already exists", {RVGitSubmodulePathErrorKey}),
        gitErrorRow(RVGitAddSubmoduleGitDirectoryAlreadyExistsError)
            .command("submodule")
            .subCommand("add")
            .exitCode(1)
            .exitCode(128)
            .standardError("A git directory for '(.+)' is found locally with remote",
                           {RVGitSubmoduleNameErrorKey}),
        gitErrorRow(RVGitSubmoduleStatusMissingGitDirError)
            .command("submodule")
            .subCommand("status")
            .exitCode(128)
            .standardError("fatal: Not a git repository: .*/.git/modules/(.+)",
                           {RVGitSubmoduleNameErrorKey}),
        gitErrorRow(RVGitSubmoduleStatusMissingMappingError)
            .command("submodule")
            .subCommand("status")
            .standardError("No submodule mapping found in .gitmodules for path '(.+)'",
                           {RVGitSubmodulePathErrorKey}),
        gitErrorRow(crashedStatusErrorCode)
            .command("submodule")
            .subCommand("status")
            .exitCode(139)
            .standardError("segmentation fault"),
    };
    return *table;
}

bool RVGitSubmoduleCommand::isStatus() const {
    return gitSubCommand() == "status";
}

void RVGitSubmoduleCommand::gitCommandWillInitialize() {
    setGitCommand("submodule");
    addGitCommandOptionsThatAreSet({
        {initializesSubmodules_, "--init"},
        {recursesSubmodules_, "--recursive"},
        {usesForce_, "--force"},
    });
    if (remoteURL_)
        addGitCommandName(*remoteURL_);
    if (filePaths())
        for (const std::string& path : *filePaths())
            addGitCommandFilePath(path);
    // A stranger's submodule may be called "*".
    setValueForEnvironmentVariable("1", "GIT_LITERAL_PATHSPECS");
    for (const char* other : {"GIT_GLOB_PATHSPECS", "GIT_NOGLOB_PATHSPECS", "GIT_ICASE_PATHSPECS"})
        setValueForEnvironmentVariable(std::nullopt, other);
    // Without the options that name the repository, variables that a hook or a shell has left
    // behind would name another one.
    for (const char* other : {"GIT_DIR", "GIT_WORK_TREE"})
        setValueForEnvironmentVariable(std::nullopt, other);
}

void RVGitSubmoduleCommand::gitCommandDidInitialize() {
    removeGitDirOption();
    removeWorkTreeOption();
}

void RVGitSubmoduleCommand::gitCommandDidTerminate() {
    if (!isStatus() || isCancelled() || exitCode() != 0 || standardErrorData().empty())
        return;
    RVError failure = makeGitError();
    if (gitCommandShouldHandleError(failure))
        finishWithError(std::move(failure));
}

bool RVGitSubmoduleCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (!isStatus()) {
        if (exitCode() != 0 || !saysThatSomethingIsNotWritten(standardErrorData()))
            return true;
        fillErrorPlace(error, makeGitError());
        return false;
    }
    RVGitSubmoduleStatusOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    submodules_ = parser.takeResults();
    return parsed;
}
