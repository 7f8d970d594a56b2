#include "RVGit/repository/RVGitRefLogEntryManager.h"

#include <string_view>
#include <utility>

#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/repository/RVGitRefLogCommand.h"
#include "RVGit/repository/RVGitRefLogEntry.h"

namespace {

std::string commandNameOfMessage(std::string_view message) {
    std::string_view word = message.substr(0, message.find(' '));
    if (word.ends_with(':'))
        word.remove_suffix(1);
    return std::string(word);
}

// Whether the place, and nothing else, tells of a failure. What stood in it before does not count.
bool runFails(RVGitRefLogCommand& command, RVErrorPlace error) {
    clearErrorPlace(error);
    command.run(error);
    return error && error->has_value();
}

}  // namespace

RVGitRefLogEntryManager::RVGitRefLogEntryManager(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitRefLogEntryManager> RVGitRefLogEntryManager::refLogEntryManagerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitRefLogEntryManager>(std::move(repository));
}

std::int64_t RVGitRefLogEntryManager::numberOfRefLogEntriesForRefWithName(
    const std::string& refName, RVErrorPlace error) const {
    auto command =
        RVGitRefLogCommand::gitRefLogCommandWithRepository(repository_, refName, std::nullopt);
    command->setCountsEntries(true);
    if (runFails(*command, error))
        return RVNotFound;
    return static_cast<std::int64_t>(command->entryCount());
}

std::optional<std::vector<std::shared_ptr<RVGitRefLogEntry>>>
RVGitRefLogEntryManager::loadRefLogEntriesForRefWithName(const std::string& refName,
                                                         const std::optional<RVOptions>& options,
                                                         RVErrorPlace error) const {
    auto command =
        RVGitRefLogCommand::gitRefLogCommandWithRepository(repository_, refName, options);
    if (runFails(*command, error))
        return std::nullopt;

    std::vector<std::shared_ptr<RVGitRefLogEntry>> entries;
    entries.reserve(command->reflogEntries().size());
    for (const auto& item : command->reflogEntries()) {
        auto message = item.message().value_or("");
        auto commandName = commandNameOfMessage(message);
        entries.push_back(
            std::make_shared<RVGitRefLogEntry>(item.committerDate(), item.commitHash().value_or(""),
                                               std::move(message), std::move(commandName)));
    }
    return entries;
}

std::optional<std::vector<std::shared_ptr<RVGitRefLogEntry>>>
RVGitRefLogEntryManager::loadHEADRefLogEntries(const std::optional<RVOptions>& options,
                                               RVErrorPlace error) const {
    return loadRefLogEntriesForRefWithName(RVGitHEADRevision, options, error);
}
