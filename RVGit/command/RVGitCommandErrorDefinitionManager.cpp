#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"

#include <algorithm>

#include "RVGit/RVGitErrorRegistration.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinition.h"

RVGitCommandErrorDefinitionManager& RVGitCommandErrorDefinitionManager::defaultManager() {
    static auto& manager = [&]() -> RVGitCommandErrorDefinitionManager& {
        auto* made = new RVGitCommandErrorDefinitionManager;
        registerGitErrorDefinitions(*made);
        return *made;
    }();
    return manager;
}

void RVGitCommandErrorDefinitionManager::addGitCommandErrorDefinitions(
    const RVGitErrorTable& definitions) {
    DefinitionList added;
    for (const RVGitErrorRow& row : definitions)
        added.push_back(RVGitCommandErrorDefinition::gitCommandErrorDefinitionWithDefinition(row));

    // Commands that are being matched keep the list that they took.
    std::lock_guard lock(mutex_);
    auto changed = std::make_shared<DefinitionList>(*definitions_);
    changed->insert(changed->end(), added.begin(), added.end());
    std::stable_sort(changed->begin(), changed->end(),
                     [](const Definition& left, const Definition& right) {
                         return left->errorCode() > right->errorCode();
                     });
    definitions_ = std::move(changed);
}

std::shared_ptr<const RVGitCommandErrorDefinitionManager::DefinitionList>
RVGitCommandErrorDefinitionManager::allGitCommandErrorDefinitions() const {
    std::lock_guard lock(mutex_);
    return definitions_;
}

RVGitCommandErrorDefinitionManager::Definition
RVGitCommandErrorDefinitionManager::gitCommandErrorDefinitionForCommand(
    RVGitCommand& command) const {
    auto isArgument = [&](const std::string& text) {
        const auto& arguments = command.gitCommandArguments();
        return std::find(arguments.begin(), arguments.end(), text) != arguments.end();
    };
    const RVGitErrorOutput standardError(command.standardErrorString());
    const RVGitErrorOutput standardOutput(command.standardOutputString());
    auto matches = [&](const Definition& row) {
        return row->isMatchedByCommandName(command.gitCommand()) &&
               row->isMatchedBySubCommandName(command.gitSubCommand()) &&
               row->isMatchedByExitCode(command.exitCode()) &&
               row->isMatchedByStandardError(standardError) &&
               row->isMatchedByStandardOutput(standardOutput) &&
               std::all_of(row->commandArguments().begin(), row->commandArguments().end(),
                           isArgument);
    };
    auto rows = allGitCommandErrorDefinitions();
    for (const Definition& row : *rows) {
        // Long output takes a while.
        if (command.isCancelled())
            return nullptr;
        if (matches(row))
            return row;
    }
    return nullptr;
}
