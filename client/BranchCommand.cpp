#include <algorithm>

#include "RVGit/command/RVGitValues.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/BranchText.h"
#include "client/Commands.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

std::string shortName(const std::string& fullRefName) {
    const RVGitRefType type = RVGitRef::refTypeForRefName(fullRefName);
    return printable(type == RVGitRefTypeStash ? fullRefName
                                               : RVGitMakeShortRefName(fullRefName, type));
}

// Whether the option stands next; if not, the word that does is kept for the caller.
bool takeOption(std::vector<std::string>& words, std::string_view option) {
    if (words.empty() || words.front() != option)
        return false;
    words.erase(words.begin());
    return true;
}

void expect(const std::vector<std::string>& words, std::size_t least, std::size_t most,
            const std::string& action) {
    for (const std::string& word : words)
        if (word.starts_with('-'))
            throw UsageError("branch " + action + " has no option " + word);
    if (words.size() < least)
        throw UsageError("branch " + action + " needs a name" + (least > 1 ? " and another" : ""));
    if (words.size() > most)
        throw UsageError("branch " + action + " takes no " + words[most]);
}

void printBranches(const Repository& repository, Output& output) {
    std::optional<RVError> error;
    const auto states = RVGitBranch::allBranchTrackingStatesForRepository(repository, &error);
    if (!states)
        throw Failure(error);
    std::size_t width = 0;
    for (const auto& state : *states)
        width = std::max(width, shortName(state.fullRefName).size());
    width = std::min<std::size_t>(width, 40);
    const auto isHead = [](const RVGitBranchTrackingState& state) { return state.isHead; };
    if (std::none_of(states->begin(), states->end(), isHead)) {
        const std::string head = repository->HEADRefName().value_or("unreadable");
        output << "* "
               << (repository->isHEADBranchDetached()
                       ? "detached at " + output.in(Colour::Yellow, printable(head))
                       : output.in(Colour::Green, shortName(head)) + " (no commit yet)")
               << "\n";
    }
    for (const auto& state : *states) {
        const std::string name = padded(shortName(state.fullRefName), width);
        // A line does not end in the blanks of a column.
        std::string rest = state.upstreamRefName ? "  " + trackingText(state, output) : "";
        if (state.worktreePath && !state.isHead)
            rest += "  (checked out in " + printable(*state.worktreePath) + ")";
        output << (state.isHead ? "* " : "  ")
               << (state.isHead ? output.in(Colour::Green, name) : name) << " "
               << output.in(Colour::Yellow, state.commitHash.substr(0, 8)) << rest << "\n";
    }
}

}  // namespace

std::string trackingText(const RVGitBranchTrackingState& state, const Output& output) {
    std::string text = output.in(Colour::Cyan, shortName(state.upstreamRefName.value_or("")));
    if (state.isUpstreamGone)
        return text + ", gone";
    if (state.commitsAhead > 0)
        text += ", " + std::to_string(state.commitsAhead) + " ahead";
    if (state.commitsBehind > 0)
        text += ", " + std::to_string(state.commitsBehind) + " behind";
    return text;
}

void runBranch(const Repository& repository, Arguments arguments, Output& output) {
    const std::string action = arguments.next().value_or("list");
    std::vector<std::string> words = arguments.rest();
    std::optional<RVError> error;
    bool done = false;
    if (action == "list") {
        if (!words.empty())
            throw UsageError("branch list takes no " + words.front());
        return printBranches(repository, output);
    }
    if (action == "create") {
        expect(words, 1, 2, action);
        const auto revision = words.size() > 1 ? std::optional(words[1]) : std::nullopt;
        // A branch that the listing cannot tell is made all the same.
        (void)RVGitBranch::createBranchWithRefName(words[0], revision, repository, &error);
        done = !error;
    } else if (action == "rename") {
        const bool forced = takeOption(words, "--force");
        expect(words, 2, 2, action);
        done = RVGitBranch::renameBranchWithRefName(words[0], words[1], repository, forced, &error);
    } else if (action == "delete") {
        const bool forced = takeOption(words, "--force");
        expect(words, 1, words.size(), action);
        done = RVGitBranch::deleteBranchesWithRefNames(words, repository, forced, &error);
    } else if (action == "track") {
        expect(words, 2, 2, action);
        done = RVGitBranch::addTrackingForBranchWithRefName(words[0], words[1], repository, &error);
    } else if (action == "untrack") {
        expect(words, 1, 1, action);
        done = RVGitBranch::removeTrackingForBranchWithRefName(words[0], repository, &error);
    } else {
        throw UsageError("branch has no " + action);
    }
    if (!done)
        throw Failure(error);
}
