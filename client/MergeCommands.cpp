#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/OperationText.h"

namespace {

/// Options without a value, and what they set.
struct Switch {
    std::string_view name;
    const char* option;
    bool value;
};

struct Request {
    RVOptions options;
    std::vector<std::string> revisions;
};

/// Reads a command's words; `takeOther` may take one that is no switch.
template <std::size_t Count>
Request requestFrom(Arguments& arguments, const std::string& command,
                    const Switch (&switches)[Count],
                    const std::function<bool(const std::string&, RVOptions&)>& takeOther) {
    Request request;
    while (const auto word = arguments.next()) {
        const Switch* found = std::find_if(std::begin(switches), std::end(switches),
                                           [&](const Switch& one) { return one.name == *word; });
        if (found != std::end(switches))
            request.options.insert_or_assign(found->option, found->value);
        else if (takeOther && takeOther(*word, request.options))
            continue;
        else if (word->starts_with('-'))
            throw UsageError(command + " has no option " + *word);
        else
            request.revisions.push_back(*word);
    }
    return request;
}

std::string onlyRevision(const Request& request, const std::string& command) {
    if (request.revisions.size() != 1)
        throw UsageError(command + " needs one revision");
    return request.revisions.front();
}

void takeNothing(Arguments& arguments, const std::string& command) {
    if (const auto word = arguments.next())
        throw UsageError(command + " takes no " + *word);
}

RVGitMergeMode modeUnderWay(const RVGitMergeManager& manager, const std::string& command) {
    const RVGitMergeMode mode = manager.currentMergeMode();
    if (mode == RVGitMergeModeNone)
        throw UsageError("there is nothing to " + command);
    return mode;
}

}  // namespace

void runMerge(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    static constexpr Switch switches[] = {
        {"--no-commit", RVGitMergeOptionCommitChanges, false},
        {"--no-ff", RVGitMergeOptionFastForward, false},
        {"--squash", RVGitMergeOptionSquashCommits, true},
        {"--verify-signatures", RVGitMergeOptionVerifySignatures, true},
        {"--no-verify", RVGitMergeOptionNoVerify, true},
    };
    const Request request = requestFrom(arguments, "merge", switches, nullptr);
    std::optional<RVError> error;
    const bool done =
        RVGitMergeManager(repository)
            .mergeWithRevision(onlyRevision(request, "merge"), request.options, &error);
    reportOperation(done, error, repository, output);
}

void runRebase(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    static constexpr Switch switches[] = {
        {"--keep-empty", RVGitRebaseOptionKeepsEmptyCommits, true},
        {"--rebase-merges", RVGitRebaseOptionPreservesMergeCommits, true},
        {"--autosquash", RVGitRebaseOptionAutosquash, true},
        {"--no-verify", RVGitRebaseOptionNoVerify, true},
    };
    std::optional<std::string> target;
    Request request =
        requestFrom(arguments, "rebase", switches, [&](const std::string& word, RVOptions&) {
            if (word == "--onto")
                target = arguments.valueOf(word);
            return word == "--onto";
        });
    std::optional<std::string> base;
    if (target) {
        request.options.insert_or_assign(RVGitRebaseOptionOnto, true);
        if (request.revisions.size() == 2) {
            base = request.revisions.front();
            request.revisions.erase(request.revisions.begin());
        }
    }
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository)
                          .rebaseWithRevision(onlyRevision(request, "rebase"), base, target,
                                              request.options, &error);
    reportOperation(done, error, repository, output);
}

void runCherryPick(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                   Output& output) {
    static constexpr Switch switches[] = {
        {"--no-commit", RVGitCherryPickOptionCommitChanges, false},
        {"--ff", RVGitCherryPickOptionFastForward, true},
    };
    const Request request = requestFrom(
        arguments, "cherry-pick", switches, [&](const std::string& word, RVOptions& options) {
            if (word == "-m")
                options.insert_or_assign(RVGitCherryPickOptionMainlineParentNumber,
                                         arguments.numberOf(word));
            return word == "-m";
        });
    if (request.revisions.empty())
        throw UsageError("cherry-pick needs revisions");
    std::optional<RVError> error;
    const bool done = RVGitMergeManager(repository)
                          .cherryPickRevisions(request.revisions, request.options, &error);
    reportOperation(done, error, repository, output);
}

void runRevert(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    static constexpr Switch switches[] = {
        {"--no-commit", RVGitRevertOptionCommitChanges, false},
    };
    const Request request = requestFrom(
        arguments, "revert", switches, [&](const std::string& word, RVOptions& options) {
            if (word == "-m")
                options.insert_or_assign(RVGitRevertOptionMainlineParentNumber,
                                         arguments.numberOf(word));
            return word == "-m";
        });
    if (request.revisions.empty())
        throw UsageError("revert needs revisions");
    std::optional<RVError> error;
    const bool done =
        RVGitMergeManager(repository).revertRevisions(request.revisions, request.options, &error);
    reportOperation(done, error, repository, output);
}

void runContinue(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output) {
    std::optional<std::string> message;
    bool isEmpty = false;
    while (const auto word = arguments.next()) {
        if (*word == "-m")
            message = arguments.valueOf(*word);
        else if (*word == "--empty")
            isEmpty = true;
        else
            throw UsageError("continue takes no " + *word);
    }
    RVGitMergeManager manager(repository);
    const RVGitMergeMode mode = modeUnderWay(manager, "continue");
    std::optional<RVError> error;
    bool done = false;
    if (!isEmpty) {
        done = manager.continueCurrentOperationWithCommitMessage(message, &error);
    } else {
        const std::string text = message.value_or(manager.mergeCommitMessage().value_or(""));
        if (mode == RVGitMergeModeCherryPick)
            done = manager.continueEmptyCherryPickWithCommitMessage(text, &error);
        else if (mode == RVGitMergeModeRevert)
            done = manager.continueEmptyRevertWithCommitMessage(text, &error);
        else if (mode == RVGitMergeModeRebase || mode == RVGitMergeModeEditing)
            done = manager.continueEmptyRebaseWithCommitMessage(text, &error);
        else
            throw UsageError("a merge has no empty steps");
    }
    reportOperation(done, error, repository, output);
}

void runSkip(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    takeNothing(arguments, "skip");
    RVGitMergeManager manager(repository);
    const RVGitMergeMode mode = modeUnderWay(manager, "skip");
    if (mode == RVGitMergeModeMerge || mode == RVGitMergeModeSquash)
        throw UsageError("a merge has no steps to skip");
    std::optional<RVError> error;
    const bool done = manager.skipCurrentOperation(&error);
    reportOperation(done, error, repository, output);
}

void runAbort(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    takeNothing(arguments, "abort");
    RVGitMergeManager manager(repository);
    (void)modeUnderWay(manager, "abort");
    std::optional<RVError> error;
    const bool done = manager.abortCurrentOperation(&error);
    reportOperation(done, error, repository, output);
}

void runQuit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    takeNothing(arguments, "quit");
    RVGitMergeManager manager(repository);
    std::optional<RVError> error;
    bool done = false;
    switch (modeUnderWay(manager, "quit")) {
        case RVGitMergeModeCherryPick:
            done = manager.quitCherryPick(&error);
            break;
        case RVGitMergeModeRevert:
            done = manager.quitRevert(&error);
            break;
        default:
            throw UsageError("only a cherry-pick or a revert can be quit; abort gives up the rest");
    }
    reportOperation(done, error, repository, output);
}

void runResolve(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments, Output&) {
    using Action = bool (RVGitMergeManager::*)(const std::vector<std::string>&, RVErrorPlace);
    static constexpr std::pair<std::string_view, Action> actions[] = {
        {"--add", &RVGitMergeManager::resolveUnmergedFilesByAdding},
        {"--remove", &RVGitMergeManager::resolveUnmergedFilesByRemoving},
        {"--ours", &RVGitMergeManager::restoreOurVersionForUnmergedFiles},
        {"--theirs", &RVGitMergeManager::restoreTheirVersionForUnmergedFiles},
        {"--base", &RVGitMergeManager::restoreAncestorVersionForUnmergedFiles},
        {"--markers", &RVGitMergeManager::restoreUnmergedVersionForFiles},
    };
    Action action = nullptr;
    std::vector<std::string> paths;
    while (const auto word = arguments.next()) {
        const auto* found = std::find_if(std::begin(actions), std::end(actions),
                                         [&](const auto& one) { return one.first == *word; });
        if (found != std::end(actions) && !action) {
            action = found->second;
        } else if (*word == "--") {
            for (std::string& path : arguments.rest())
                paths.push_back(std::move(path));
        } else if (word->starts_with('-')) {
            throw UsageError("resolve takes no " + *word + " here");
        } else {
            paths.push_back(*word);
        }
    }
    if (!action || paths.empty())
        throw UsageError(
            "resolve needs one of --add, --remove, --ours, --theirs, --base and --markers, and "
            "paths");
    takePathsLiterally();
    RVGitMergeManager manager(repository);
    std::optional<RVError> error;
    if ((manager.*action)(paths, &error))
        return;
    if (!error)
        throw UsageError("one of the files has no such version, or cannot be written");
    throw Failure(error);
}
