#include <algorithm>
#include <span>

#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "client/Commands.h"
#include "client/CommitList.h"

namespace {

struct Flag {
    std::string_view name;
    unsigned bit;
};

/// What a command that changes files is told: bits of its own, and files.
struct Request {
    unsigned options = 0;
    bool allFiles = false;
    std::vector<std::string> paths;
};

enum class AllFiles { Allowed, Refused };

Request requestFrom(Arguments& arguments, const std::string& command, std::span<const Flag> flags,
                    AllFiles allFiles) {
    takePathsLiterally();
    Request request;
    while (const auto word = arguments.next()) {
        const auto flag = std::ranges::find(flags, *word, &Flag::name);
        if (flag != flags.end()) {
            request.options |= flag->bit;
        } else if (*word == "--all" && allFiles == AllFiles::Allowed) {
            request.allFiles = true;
        } else if (*word == "--") {
            std::ranges::move(arguments.rest(), std::back_inserter(request.paths));
        } else if (word->starts_with('-')) {
            throw UsageError(command + " has no option " + *word);
        } else {
            request.paths.push_back(*word);
        }
    }
    if (request.allFiles != request.paths.empty())
        throw UsageError(command + (allFiles == AllFiles::Allowed ? " needs paths, or else --all"
                                                                  : " needs paths"));
    if (request.allFiles && request.options != 0)
        throw UsageError(command + " takes no option beside --all");
    return request;
}

void demand(bool done, const std::optional<RVError>& error) {
    if (!done)
        throw Failure(error);
}

}  // namespace

void runAdd(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments, Output&) {
    static constexpr Flag flags[] = {{"--force", RVGitStageOptionForce},
                                     {"--intent-to-add", RVGitStageOptionIntentToAdd}};
    const Request request = requestFrom(arguments, "add", flags, AllFiles::Allowed);
    const auto manager = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
    std::optional<RVError> error;
    demand(request.allFiles ? manager->stageAllFiles(&error)
                            : manager->stageFiles(request.paths, request.options, &error),
           error);
}

void runUnstage(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments, Output&) {
    const Request request = requestFrom(arguments, "unstage", {}, AllFiles::Allowed);
    const auto manager = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
    std::optional<RVError> error;
    demand(request.allFiles ? manager->unstageAllFiles(&error)
                            : manager->unstageFiles(request.paths, &error),
           error);
}

void runDiscard(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments, Output&) {
    const Request request = requestFrom(arguments, "discard", {}, AllFiles::Refused);
    const auto manager = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
    std::optional<RVError> error;
    const bool done = manager->revertFiles(request.paths, &error);
    // The result tells of the first files of a long list alone, the error of all.
    demand(done && !error, error);
}

void runCommit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    static constexpr Flag flags[] = {{"--amend", RVGitCommitOptionAmend},
                                     {"--signoff", RVGitCommitOptionSignOff},
                                     {"--allow-empty", RVGitCommitOptionAllowEmpty},
                                     {"--no-verify", RVGitCommitOptionNoVerify}};
    std::optional<std::string> message;
    unsigned options = 0;
    while (const auto word = arguments.next()) {
        const auto flag = std::ranges::find(flags, *word, &Flag::name);
        if (flag != std::end(flags))
            options |= flag->bit;
        else if (*word == "-m")
            message = arguments.valueOf(*word);
        else
            throw UsageError("commit takes no " + *word);
    }
    // Without one git would open an editor.
    if (!message)
        throw UsageError("commit needs -m MESSAGE");
    const auto manager = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
    std::optional<RVError> error;
    demand(manager->commitWithMessage(*message, options, &error), error);
    const auto commits = RVGitCommit::allCommitsForRevisions(
        {}, {}, repository, RVOptions{{RVGitLogOptionLimit, 1}}, &error);
    demand(commits.has_value(), error);
    printCommits(*commits, {.drawsGraph = false}, output);
}

void runIgnore(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    std::optional<RVError> error;
    bool isLocal = false;
    std::vector<std::string> newPatterns;
    while (const auto word = arguments.next()) {
        if (*word == "--")
            std::ranges::move(arguments.rest(), std::back_inserter(newPatterns));
        else if (*word == "--local")
            isLocal = true;
        else if (word->starts_with('-'))
            throw UsageError("ignore has no option " + *word);
        else
            newPatterns.push_back(*word);
    }
    const auto ignores = isLocal ? repository->sharedExcludes() : repository->ignores();
    if (!ignores || repository->isBare())
        throw UsageError("a bare repository ignores no files");
    if (!newPatterns.empty())
        return demand(ignores->addIgnorePatterns(newPatterns, &error), error);
    const auto patterns = ignores->allIgnorePatterns(&error);
    demand(patterns.has_value(), error);
    for (const std::string& pattern : *patterns)
        output << printable(pattern) << "\n";
}
