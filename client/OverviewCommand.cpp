#include <array>

#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/BranchText.h"
#include "client/Commands.h"
#include "client/CommitList.h"
#include "client/OperationText.h"

namespace {

constexpr int numberOfCommits = 10;

std::string kindOf(RVGitRepository& repository) {
    if (repository.isBare())
        return "bare repository";
    if (RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(
            RVURL::fileURLWithPath(repository.gitDirectoryPath().value_or(""))))
        return "linked worktree";
    if (repository.isDetachedWorkingTree())
        return "repository with a working tree elsewhere";
    return "repository";
}

std::string counted(std::size_t count, std::string_view singular, std::string_view plural) {
    return std::to_string(count) + " " + std::string(count == 1 ? singular : plural);
}

void printHead(const std::shared_ptr<RVGitRepository>& repository, Output& output) {
    output << "HEAD   ";
    const std::string name = repository->HEADRefName().value_or("unreadable");
    if (repository->isHEADBranchDetached()) {
        output << "detached at " << output.in(Colour::Yellow, name) << "\n";
        return;
    }
    output << output.in(Colour::Green, printable(name));
    std::optional<RVError> error;
    const auto state = RVGitBranch::trackingStateForBranchWithRefName(name, repository, &error);
    if (error)
        throw Failure(error);
    if (!state)
        output << " (no commit yet)";
    else if (state->upstreamRefName)
        output << ", tracks " << trackingText(*state, output);
    output << "\n";
}

}  // namespace

void runOverview(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output) {
    if (const auto word = arguments.next())
        throw UsageError("overview takes no " + *word);
    output << output.bold(printable(repository->path())) << "\n"
           << "kind   " << kindOf(*repository) << "\n";
    if (repository->gitDirectoryPath() != repository->path())
        output << "git    " << printable(repository->gitDirectoryPath().value_or("")) << "\n";
    printHead(repository, output);
    if (const std::string underWay = operationText(repository); !underWay.empty())
        output << "now    " << output.in(Colour::Magenta, underWay) << "\n";

    std::optional<RVError> error;
    const auto refs = RVGitRef::allRefsForRepository(repository, std::nullopt, &error);
    if (!refs)
        throw Failure(error);
    std::array<std::size_t, 5> countOfType{};
    for (const auto& ref : *refs)
        ++countOfType[ref->refType()];
    output << "refs   " << counted(countOfType[RVGitRefTypeBranch], "branch", "branches") << ", "
           << counted(countOfType[RVGitRefTypeRemoteBranch], "remote branch", "remote branches")
           << ", " << counted(countOfType[RVGitRefTypeTag], "tag", "tags") << "\n\n";

    const RVOptions options = {{RVGitLogOptionLimit, numberOfCommits},
                               {RVGitLogOptionSortByDate, true}};
    // HEAD, so that an unborn branch is no error.
    const auto commits = RVGitCommit::allCommitsForRevisions({}, {}, repository, options, &error);
    if (!commits)
        throw Failure(error);
    printCommits(*commits, {}, output);
}
