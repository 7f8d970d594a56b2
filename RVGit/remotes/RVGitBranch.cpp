#include "RVGit/remotes/RVGitBranch.h"

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/repository/RVGitRepository.h"

bool RVGitBranch::isInitialCommitOnHeadBranchForRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    requireParameter(repository != nullptr, "repository");
    if (repository->isEmpty())
        return true;
    auto command = RVGitRevListCommand::gitRevListCommandWithRepository(
        repository, RVOptions{{RVGitRevListOptionMaxCount, 1}});
    command->setRevisions({RVGitHEADRevision});
    return !command->run();
}
