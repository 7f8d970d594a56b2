#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitStash.h"
#include "client/Commands.h"

namespace {

void printStashes(const std::shared_ptr<RVGitRepository>& repository, Output& output) {
    std::optional<RVError> error;
    const auto stashes = RVGitStash::allStashesForRepository(repository, &error);
    if (!stashes)
        throw Failure(error);
    for (const auto& stash : *stashes) {
        output << output.in(Colour::Yellow, std::to_string(stash->index())) << "  "
               << dateText(stash->creationDate()) << "  "
               << output.in(Colour::Green, printable(stash->originBranch().value_or(""))) << "  "
               << printable(stash->userMessage().value_or("")) << "\n";
    }
}

void saveStash(const std::shared_ptr<RVGitRepository>& repository, Arguments& arguments) {
    std::optional<std::string> message;
    unsigned options = 0;
    while (const auto word = arguments.next()) {
        if (*word == "-m")
            message = arguments.valueOf(*word);
        else if (*word == "--keep-index")
            options |= RVGitStashSaveOptionKeepsIndex;
        else if (*word == "--include-untracked")
            options |= RVGitStashSaveOptionIncludesUntrackedFiles;
        else
            throw UsageError("stash save takes no " + *word);
    }
    std::optional<RVError> error;
    (void)RVGitStash::saveStashFromWorkingTreeInRepository(repository, message, options, &error);
    // A stash that another process takes away at once is no failure.
    if (error)
        throw Failure(error);
}

}  // namespace

void runStash(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    const std::string action = arguments.next().value_or("list");
    if (action == "save")
        return saveStash(repository, arguments);
    const bool needsIndex = action == "apply" || action == "pop" || action == "drop";
    if (!needsIndex && action != "list")
        throw UsageError("stash has no " + action);
    const std::size_t index = needsIndex ? arguments.numberOr(0, action) : 0;
    if (const auto word = arguments.next())
        throw UsageError("stash " + action + " takes no " + *word);
    if (action == "list")
        return printStashes(repository, output);

    std::optional<RVError> error;
    const bool done = action == "drop" ? RVGitStash::deleteStashAtIndex(index, repository, &error)
                                       : RVGitStash::applyStashAtIndex(index, repository,
                                                                       action == "pop", &error);
    if (done)
        return;
    // An index past the end is no error of git's.
    if (!error)
        throw UsageError("there is no stash " + std::to_string(index));
    throw Failure(error);
}
