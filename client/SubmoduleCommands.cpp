#include <algorithm>
#include <map>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "client/Commands.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

const char* wordFor(RVGitSubmoduleStatus status) {
    switch (status) {
        case RVGitSubmoduleStatusClean:
            return "clean";
        case RVGitSubmoduleStatusUninitialized:
            return "uninitialized";
        case RVGitSubmoduleStatusUpdated:
            return "other commit";
        case RVGitSubmoduleStatusUnmerged:
            return "conflict";
        case RVGitSubmoduleStatusMissingConfiguration:
            return "not in .gitmodules";
        case RVGitSubmoduleStatusMissingGitDirectory:
            return "git directory missing";
        case RVGitSubmoduleStatusMissingWorkingTreePath:
            return "not in the index";
        default:
            return "unknown";
    }
}

std::string remarksOn(RVGitSubmodule& submodule) {
    std::string remarks;
    const auto add = [&remarks](const std::string& remark) {
        remarks += (remarks.empty() ? "" : ", ") + remark;
    };
    if (submodule.status() == RVGitSubmoduleStatusUpdated)
        add("+" + std::to_string(submodule.updatedCommitsAhead()) + " -" +
            std::to_string(submodule.updatedCommitsBehind()));
    if (submodule.isDirty()) {
        const auto count = submodule.numberOfDirtyChanges();
        add(count > 0 ? "dirty: " + std::to_string(count) : "dirty");
    }
    if (submodule.name() != submodule.path())
        add("name " + submodule.name());
    return remarks;
}

void printSubmodules(const Repository& repository, Output& output) {
    std::optional<RVError> error;
    const auto submodules = repository->allSubmodules(&error);
    if (!submodules)
        throw Failure(error);
    std::vector<std::string> listed;
    for (const auto& submodule : *submodules) {
        // Where one is broken the library gives the last one twice.
        if (std::find(listed.begin(), listed.end(), submodule->path()) != listed.end())
            continue;
        listed.push_back(submodule->path());
        const bool isClean =
            submodule->status() == RVGitSubmoduleStatusClean && !submodule->isDirty();
        const std::string hash =
            submodule->commitHash().value_or(submodule->indexCommitHash().value_or(""));
        const std::string remarks = remarksOn(*submodule);
        output << output.in(Colour::Yellow, padded(hash.substr(0, 8), 8)) << "  "
               << output.in(isClean ? Colour::Green : Colour::Red,
                            padded(wordFor(submodule->status()), 21))
               << "  " << printable(submodule->path())
               << (remarks.empty() ? "" : printable("  (" + remarks + ")")) << "\n";
    }
}

// Git leaves them out of an update without a word.
void tellOfUninitialized(const Repository& repository, const std::vector<std::string>& paths,
                         Output& output) {
    const auto submodules = repository->allSubmodules();
    if (!submodules)
        return;
    for (const auto& submodule : *submodules)
        if (!submodule->isRegistered() &&
            (paths.empty() ||
             std::find(paths.begin(), paths.end(), submodule->path()) != paths.end()))
            output << printable(submodule->path())
                   << " is not initialized: update --init checks it out\n";
}

/// The options that are given, taken out of the words; the rest are the operands.
struct Words {
    Words(Arguments& arguments, const std::map<std::string, unsigned>& bits,
          const std::string& action) {
        bool takesOptions = true;
        while (const auto word = arguments.next()) {
            const auto bit = bits.find(*word);
            if (takesOptions && *word == "--")
                takesOptions = false;
            else if (takesOptions && bit != bits.end())
                options |= bit->second;
            else if (takesOptions && word->starts_with('-'))
                throw UsageError("submodule " + action + " takes no " + *word);
            else
                operands.push_back(*word);
        }
    }
    void requireOperands(std::size_t count, const std::string& what) const {
        if (operands.size() != count)
            throw UsageError("submodule needs " + what);
    }

    unsigned options = 0;
    std::vector<std::string> operands;
};

void remove(const Repository& repository, const Words& words, std::optional<RVError>& error,
            bool& done) {
    words.requireOperands(1, "one path");
    const std::string& path = words.operands.front();
    constexpr unsigned safe =
        RVGitSubmoduleRemoveOptionForce | RVGitSubmoduleRemoveOptionKeepWorkingTree;
    if (!(words.options & safe) &&
        repository->submoduleManager()->submoduleContainsUncommittedWork(path, &error)) {
        if (error)
            throw Failure(error);
        throw Failure(gitErrorWithCode(RVGitRemoveSubmoduleWithLocalModificationsError,
                                       {{RVGitSubmodulePathErrorKey, path}}),
                      "It has work that is not committed: --force removes it, --keep leaves it");
    }
    if (!wasInterrupted())
        done = repository->removeSubmoduleAtPath(path, words.options, &error);
}

}  // namespace

void runSubmodule(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                  Output& output) {
    static const std::map<std::string, std::map<std::string, unsigned>> actions = {
        {"list", {}},
        {"add", {{"--force", RVGitSubmoduleAddOptionForce}}},
        {"init", {}},
        {"update",
         {{"--init", RVGitSubmoduleUpdateOptionInitialize},
          {"--recursive", RVGitSubmoduleUpdateOptionRecursive},
          {"--force", RVGitSubmoduleUpdateOptionForce}}},
        {"sync", {}},
        {"remove",
         {{"--force", RVGitSubmoduleRemoveOptionForce},
          {"--keep", RVGitSubmoduleRemoveOptionKeepWorkingTree},
          {"--git-directory", RVGitSubmoduleRemoveOptionRemoveGitDirectory}}},
        {"move", {}},
        {"rename", {}},
    };
    std::string action = arguments.next().value_or("list");
    // As git calls it.
    if (action == "status")
        action = "list";
    const auto found = actions.find(action);
    if (found == actions.end())
        throw UsageError("submodule has no " + printable(action) + "; see rvgit help submodule");
    const Words words(arguments, found->second, action);
    const auto& operands = words.operands;
    if (action == "list") {
        words.requireOperands(0, "nothing to list them");
        return printSubmodules(repository, output);
    }

    const auto manager = repository->submoduleManager();
    std::optional<RVError> error;
    bool done = false;
    if (action == "add") {
        words.requireOperands(2, "an address and a path");
        done = manager->addSubmoduleWithURL(operands[0], operands[1], words.options, &error);
    } else if (action == "init") {
        done = operands.empty() ? manager->initAllSubmodules(&error)
                                : manager->initSubmodulesAtPaths(operands, &error);
    } else if (action == "update") {
        done = operands.empty() ? manager->updateAllSubmodulesWithOptions(words.options, &error)
                                : manager->updateSubmoduleAtPaths(operands, words.options, &error);
        if (done && !(words.options & RVGitSubmoduleUpdateOptionInitialize))
            tellOfUninitialized(repository, operands, output);
    } else if (action == "sync") {
        if (operands.size() > 1)
            throw UsageError("submodule sync takes one path");
        done = operands.empty()
                   ? manager->synchronizeAllSubmoduleURLs(&error)
                   : manager->synchronizeURLForSubmoduleAtPath(operands.front(), &error);
    } else if (action == "remove") {
        remove(repository, words, error, done);
    } else if (action == "move") {
        words.requireOperands(2, "a path and a new path");
        done = manager->relocateSubmoduleWithPath(operands[0], operands[1], &error);
    } else {
        words.requireOperands(2, "a name and a new name");
        done = manager->renameSubmoduleKeepingLinksWithName(operands[0], operands[1], &error);
    }
    if (done)
        return;
    if (!error)
        throw UsageError("there is no submodule " +
                         printable(operands.empty() ? "" : operands.front()));
    throw Failure(error);
}
