#include "RVGit/RVGitErrorRegistration.h"

#include "RVGit/archive/RVGitArchiveCommand.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/history/RVGitLogCommand.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "RVGit/objects/RVGitShowCommand.h"
#include "RVGit/objects/RVGitTagCommand.h"
#include "RVGit/objects/RVGitTreeCommand.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemoteCommand.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/svn/RVGitSVNCommand.h"
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
    manager.addGitCommandErrorDefinitions(RVGitArchiveCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitBranchCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitCheckoutCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitCherryPickCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitConfigCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitLogCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitMergeCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitMergeToolCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitLFSCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitMoveCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRebaseCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRemoteCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitPullCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitPushCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRevListCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRevertCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitRmCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitShowCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitShowRefCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitStashCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitSVNCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitSubmoduleCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitTagCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitTreeCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitUpdateIndexCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitUpdateRefCommand::gitErrorDefinitions());
    manager.addGitCommandErrorDefinitions(RVGitVerifyTagCommand::gitErrorDefinitions());
}
