#include "RVGit/command/RVGitErrorRegistration.h"

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/objects/RVGitShowCommand.h"
#include "RVGit/objects/RVGitTagCommand.h"
#include "RVGit/objects/RVGitTreeCommand.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"

void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager) {
    using Table = const RVGitErrorTable& (*)();
    static constexpr Table tables[] = {
        &RVGitCommand::sharedGitErrorDefinitions,
        &RVGitShowCommand::gitErrorDefinitions,
        &RVGitTagCommand::gitErrorDefinitions,
        &RVGitTreeCommand::gitErrorDefinitions,
        &RVGitVerifyTagCommand::gitErrorDefinitions,
    };
    for (Table table : tables)
        manager.addGitCommandErrorDefinitions(table());
}
