#include "RVGit/RVGitErrorRegistration.h"

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/history/RVGitLogCommand.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/objects/RVGitShowCommand.h"
#include "RVGit/objects/RVGitTagCommand.h"
#include "RVGit/objects/RVGitTreeCommand.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/worktree/RVGitAddCommand.h"
#include "RVGit/worktree/RVGitCheckoutCommand.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitRmCommand.h"
#include "RVGit/worktree/RVGitStashCommand.h"
#include "RVGit/worktree/RVGitUpdateIndexCommand.h"

void rvgit::registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager) {
    manager.addGitCommandErrorDefinitions(RVGitCommand::sharedGitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitAddCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitApplyCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitCheckoutCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitConfigCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitLogCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitMoveCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRevListCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRmCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitShowCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitShowRefCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitStashCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitSubmoduleCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitTagCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitTreeCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitUpdateIndexCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitUpdateRefCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitVerifyTagCommand::gitErrorDefinitions());
}
