#include "RVGit/command/RVGitErrorRegistration.h"

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/history/RVGitLogCommand.h"

void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager) {
    using Table = const RVGitErrorTable& (*)();
    static constexpr Table tables[] = {
        &RVGitCommand::sharedGitErrorDefinitions,
        &RVGitLogCommand::gitErrorDefinitions,
    };
    for (Table table : tables)
        manager.addGitCommandErrorDefinitions(table());
}
