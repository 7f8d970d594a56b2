#include "RVGit/command/RVGitErrorRegistration.h"

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/repository/RVGitConfigCommand.h"

void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager) {
    using Table = const RVGitErrorTable& (*)();
    static constexpr Table tables[] = {
        &RVGitCommand::sharedGitErrorDefinitions,
        &RVGitConfigCommand::gitErrorDefinitions,
    };
    for (Table table : tables)
        manager.addGitCommandErrorDefinitions(table());
}
