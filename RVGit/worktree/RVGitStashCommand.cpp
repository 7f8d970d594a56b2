#include "RVGit/worktree/RVGitStashCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"

RVGitStashCommand::RVGitStashCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitStashCommand>(repository);
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitSaveStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setSavesStash(true);
    command->setMessage(std::move(message));
    return command;
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitDeleteStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setDeletesStash(true);
    command->setRefName(std::move(refName));
    return command;
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitApplyStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName,
    bool deletingStash) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setAppliesStash(true);
    command->setDeletesStash(deletingStash);
    command->setRefName(std::move(refName));
    return command;
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitCreateStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setCreatesStash(true);
    command->setMessage(std::move(message));
    return command;
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitStoreStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message,
    std::optional<std::string> commitHash) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setStoresStash(true);
    command->setRefName(std::move(commitHash));
    command->setMessage(std::move(message));
    return command;
}

std::shared_ptr<RVGitStashCommand> RVGitStashCommand::gitShowStashCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName) {
    auto command = std::make_shared<RVGitStashCommand>(repository);
    command->setShowsStash(true);
    command->setRefName(std::move(refName));
    return command;
}

const RVGitErrorTable& RVGitStashCommand::gitErrorDefinitions() {
    constexpr const char* tooFewEntries = R"(fatal: Log for 'stash' only has (\d+) entries)";
    constexpr const char* noStash = "No stash found";
    constexpr const char* unknownStash = R"(fatal: ambiguous argument 'stash@\{(\d+)\}': )"
                                         "unknown revision or path not in the working tree";
    constexpr const char* localChanges =
        "Your local changes to the following files would be overwritten";
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitSaveStashInitialCommitError)
            .command("stash")
            .exitCode(1)
            .standardError("You do not have the initial commit yet"),
        gitErrorRow(RVGitDropStashNotFoundError)
            .command("stash")
            .subCommand("drop")
            .exitCode(1)
            .standardError(tooFewEntries),
        gitErrorRow(RVGitDropStashNoStashesError)
            .command("stash")
            .subCommand("drop")
            .exitCode(1)
            .standardError(noStash),
        gitErrorRow(RVGitDropStashNoStashesError)
            .command("stash")
            .subCommand("drop")
            .exitCode(1)
            .standardError(unknownStash, {RVGitStashIndexErrorKey}),
        gitErrorRow(RVGitApplyStashMergeConflictsError)
            .command("stash")
            .exitCode(1)
            .standardOutput("Merge conflict in"),
        gitErrorRow(RVGitApplyStashNotFoundError)
            .command("stash")
            .subCommand("apply")
            .exitCode(1)
            .standardError(tooFewEntries),
        gitErrorRow(RVGitApplyStashNoStashesError)
            .command("stash")
            .subCommand("apply")
            .exitCode(1)
            .standardError(noStash),
        gitErrorRow(RVGitApplyStashNoStashesError)
            .command("stash")
            .subCommand("apply")
            .exitCode(128)
            .standardError(unknownStash, {RVGitStashIndexErrorKey}),
        gitErrorRow(RVGitApplyStashUncommittedChangesError)
            .command("stash")
            .subCommand("apply")
            .exitCode(1)
            .exitCode(128)
            .standardError(localChanges),
        gitErrorRow(RVGitCreateBranchFromStashInvalidNameError)
            .command("stash")
            .subCommand("branch")
            .exitCode(128)
            .standardError("fatal: git checkout: we do not like '(.+)' as a branch name.",
                           {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitCreateBranchFromStashNotFoundError)
            .command("stash")
            .subCommand("branch")
            .exitCode(1)
            .standardError(tooFewEntries),
        gitErrorRow(RVGitCreateBranchFromStashNoStashesError)
            .command("stash")
            .subCommand("branch")
            .exitCode(1)
            .standardError(noStash),
        gitErrorRow(RVGitCreateBranchFromStashNoStashesError)
            .command("stash")
            .subCommand("branch")
            .exitCode(1)
            .standardError(unknownStash, {RVGitStashIndexErrorKey}),
        gitErrorRow(RVGitCreateBranchFromStashUncommittedChangesError)
            .command("stash")
            .subCommand("branch")
            .exitCode(128)
            .standardError(localChanges),
    };
    return *table;
}

void RVGitStashCommand::gitCommandWillInitialize() {
    setGitCommand("stash");
    // The message is UTF-8, whatever encoding git would say that it is in.
    if (savesStash_ || createsStash_)
        overrideGitConfiguration("i18n.commitEncoding", "UTF-8");
    if (savesStash_) {
        const bool pushes = gitBinary()->isVersionAtLeast("2.13.2");
        setGitSubCommand(pushes ? "push" : "save");
        if (message_ && pushes)
            addGitCommandArgument("-m");
        else if (message_ && message_->starts_with('-'))
            addGitCommandArgument("--");
        if (message_)
            addGitCommandArgument(*message_);
        if (includesUntrackedFiles_)
            addGitCommandOption("--include-untracked");
        if (keepsIndex_)
            addGitCommandOption("--keep-index");
        if (!filePaths_.empty()) {
            addGitCommandFilePaths(filePaths_);
        }
    } else if (appliesStash_) {
        setGitSubCommand(deletesStash_ ? "pop" : "apply");
        if (restoresIndex_)
            addGitCommandOption("--index");
    } else if (deletesStash_) {
        setGitSubCommand("drop");
    } else if (storesStash_) {
        setGitSubCommand("store");
        if (message_)
            addGitCommandArguments({"-m", *message_});
    } else if (showsStash_) {
        setGitSubCommand("show");
        if (createsPatch_)
            addGitCommandArgument("-p");
    } else if (createsStash_) {
        setGitSubCommand("create");
        if (message_)
            addGitCommandArgument(*message_);
    } else {
        setGitSubCommand("list");
        addGitCommandOptions(
            {"--no-color", "-z",
             "--pretty=format:" + RVGitCommitOutputParser::gitStashListPrettyFormatString()});
    }
    if (!refName_)
        return;
    if (appliesStash_)
        addGitCommandName(*refName_, RVGitApplyStashNotFoundError);
    else if (deletesStash_)
        addGitCommandName(*refName_, RVGitDropStashNotFoundError);
    else
        addGitCommandName(*refName_);
}

bool RVGitStashCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (containsStringSearchingInsensitive(standardOutputString(), "No local changes to save")) {
        fillErrorPlace(error, gitErrorWithCode(RVGitSaveStashNoChangesError));
        return false;
    }
    if (savesStash_ || appliesStash_ || deletesStash_ || storesStash_ || showsStash_)
        return true;
    if (createsStash_) {
        commitHash_ = standardOutputString();
        return true;
    }
    const auto parser = RVGitCommitOutputParser::commitParserWithData(
        standardOutputBuffer(), RVGitCommitOutputParser::gitStashListPrettyFormat());
    const bool parsed = parser->parse(error);
    stashes_ = parser->takeIndexedResults();
    return parsed;
}
