#include "RVGit/command/RVGitErrorRegistration.h"

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"

void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager) {
    using Table = const RVGitErrorTable& (*)();
    static constexpr Table tables[] = {
        &RVGitCommand::sharedGitErrorDefinitions,    &RVGitConfigCommand::gitErrorDefinitions,
        &RVGitRevListCommand::gitErrorDefinitions,   &RVGitShowRefCommand::gitErrorDefinitions,
        &RVGitUpdateRefCommand::gitErrorDefinitions,
    };
    for (Table table : tables)
        manager.addGitCommandErrorDefinitions(table());
}
