#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/merge/RVGitConflictingFilePathsCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeTreeEntry.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/OperationText.h"

namespace {

using Revisions = std::vector<std::string>;

std::string hashOf(const std::string& revision,
                   const std::shared_ptr<RVGitRepository>& repository) {
    std::optional<RVError> error;
    const auto commit = RVGitCommit::commitForCommitHash(revision, repository, &error);
    if (error)
        throw Failure(error);
    if (!commit || !commit->commitHash())
        throw UsageError("there is no commit " + printable(revision));
    return *commit->commitHash();
}

/// The commits as their hashes, each once, from the newest to the oldest: as they stand in HEAD's
/// history.
Revisions newestFirst(const Revisions& revisions,
                      const std::shared_ptr<RVGitRepository>& repository) {
    if (revisions.empty())
        throw UsageError("it needs a revision");
    Revisions hashes;
    for (const std::string& revision : revisions) {
        std::string hash = hashOf(revision, repository);
        if (std::ranges::find(hashes, hash) == hashes.end())
            hashes.push_back(std::move(hash));
    }
    // What is rewritten is young, as a rule; old histories are long.
    for (std::size_t limit = 256;; limit *= 16) {
        std::optional<RVError> error;
        const auto history = RVGitCommit::allCommitHashesForRevisions(
            {RVGitHEADRevision}, {}, repository,
            RVOptions{{RVGitLogOptionSortByTopoOrder, true}, {RVGitLogOptionLimit, limit}}, &error);
        if (!history)
            throw Failure(error);
        std::unordered_map<std::string_view, std::size_t> positions;
        for (std::size_t position = 0; position < history->size(); ++position)
            positions.emplace((*history)[position], position);
        const auto missing = std::ranges::find_if_not(
            hashes, [&](const std::string& hash) { return positions.contains(hash); });
        if (missing == hashes.end()) {
            std::ranges::sort(hashes, {},
                              [&](const std::string& hash) { return positions.at(hash); });
            return hashes;
        }
        if (history->size() < limit)
            throw UsageError(RVGitShortenHash(*missing).value_or("it") +
                             " is not in the history of HEAD");
    }
}

/// The words of a command with at most one option, of a value.
struct Request {
    Revisions revisions;
    std::optional<std::string> option;
    std::optional<std::string> value;
};

Request requestFrom(Arguments& arguments, const std::string& command,
                    std::initializer_list<std::string_view> options) {
    Request request;
    while (const auto word = arguments.next()) {
        if (std::ranges::find(options, *word) != options.end() && !request.option) {
            request.value = arguments.valueOf(*word);
            request.option = *word;
        } else if (word->starts_with('-')) {
            throw UsageError(command + " takes no " + *word + " here");
        } else {
            request.revisions.push_back(*word);
        }
    }
    return request;
}

using Combining = bool (RVGitMergeManager::*)(const Revisions&, const std::optional<std::string>&,
                                              RVErrorPlace);

void combine(const std::shared_ptr<RVGitRepository>& repository, Arguments& arguments,
             Output& output, const std::string& command, Combining combining) {
    const Request request = requestFrom(arguments, command, {"--into"});
    const Revisions revisions = newestFirst(request.revisions, repository);
    std::optional<std::string> target;
    if (request.value)
        target = newestFirst({*request.value}, repository).front();
    if (!target && revisions.size() < 2)
        throw UsageError(command + " needs two revisions, or one and --into REV");
    if (target && std::ranges::find(revisions, *target) != revisions.end())
        throw UsageError("a commit cannot go into itself");
    std::optional<RVError> error;
    RVGitMergeManager manager(repository);
    const bool done = (manager.*combining)(revisions, target, &error);
    reportOperation(done, error, repository, output);
}

/// The paths that would conflict; by the merge itself where git can make one in memory.
Revisions conflictingPaths(const std::shared_ptr<RVGitRepository>& repository,
                           const std::string& revision, const std::string& intoRevision) {
    RVGitMergeManager manager(repository);
    std::optional<RVError> error;
    if (RVGitConflictingFilePathsCommand::isSupportedByGitBinary(
            *RVGitBinary::defaultGitBinary())) {
        auto paths = manager.conflictingFilePathsForMergingRevision(revision, intoRevision, &error);
        if (!paths)
            throw Failure(error);
        return *std::move(paths);
    }
    RVGitMergeManager::MergeTreeEntries conflicts;
    if (manager.canMergeRevision(revision, intoRevision, &conflicts, &error))
        return {};
    if (conflicts.empty())
        throw Failure(error);
    Revisions paths;
    for (const auto& entry : conflicts)
        paths.push_back(entry->filePath().value_or("?"));
    return paths;
}

}  // namespace

void runMove(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    const Request request = requestFrom(arguments, "move", {"--above", "--below"});
    if (!request.option)
        throw UsageError("move needs --above REV or --below REV");
    const Revisions revisions = newestFirst(request.revisions, repository);
    const std::string target = newestFirst({*request.value}, repository).front();
    if (std::ranges::find(revisions, target) != revisions.end())
        throw UsageError("a commit cannot be moved beside itself");
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository)
                          .moveRevisions(revisions, target, request.option == "--below", &error);
    reportOperation(done, error, repository, output);
}

void runDrop(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    const Request request = requestFrom(arguments, "drop", {});
    const Revisions revisions = newestFirst(request.revisions, repository);
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository).deleteRevisions(revisions, &error);
    reportOperation(done, error, repository, output);
}

void runSquash(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    combine(repository, arguments, output, "squash", &RVGitMergeManager::squashRevisions);
}

void runFixup(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    combine(repository, arguments, output, "fixup", &RVGitMergeManager::fixupRevisions);
}

void runReword(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    const Request request = requestFrom(arguments, "reword", {"-m"});
    if (request.revisions.size() != 1 || !request.value)
        throw UsageError("reword needs a revision and -m MESSAGE");
    const std::string hash = newestFirst(request.revisions, repository).front();
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository).setCommitMessage(*request.value, hash, &error);
    reportOperation(done, error, repository, output);
}

void runEdit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    bool amends = false;
    Revisions revisions;
    while (const auto word = arguments.next()) {
        if (*word == "--amend")
            amends = true;
        else if (word->starts_with('-'))
            throw UsageError("edit has no option " + *word);
        else
            revisions.push_back(*word);
    }
    if (revisions.size() != 1)
        throw UsageError("edit needs one revision");
    const std::string hash = newestFirst(revisions, repository).front();
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository).editRevision(hash, amends, &error);
    reportOperation(done, error, repository, output);
}

void runCanMerge(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output) {
    const Request request = requestFrom(arguments, "can-merge", {});
    if (request.revisions.empty() || request.revisions.size() > 2)
        throw UsageError("can-merge needs a revision, and perhaps the one to merge it into");
    const std::string& revision = request.revisions.front();
    const std::string intoRevision =
        request.revisions.size() == 2 ? request.revisions.back() : RVGitHEADRevision;
    std::string list;
    for (const std::string& path : conflictingPaths(repository, revision, intoRevision))
        list += (list.empty() ? "  " : "\n  ") + printable(path);
    if (!list.empty())
        throw Failure{gitErrorWithCode(RVGitMergeWillFailDueToConflictsError), list};
    output << printable(revision) << " can be merged into " << printable(intoRevision)
           << " without conflicts\n";
}
