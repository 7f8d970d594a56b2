#include "client/OperationText.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/Terminal.h"

namespace {

constexpr std::size_t lengthOfHash = 8;

/// As much of a hash as a person reads; what is none stays as it is.
std::string shortened(const std::string& revision) {
    const bool isHash = std::ranges::all_of(revision, [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
    });
    return printable(isHash ? revision.substr(0, lengthOfHash) : revision);
}

std::string branchText(const RVGitMergeManager& manager) {
    constexpr std::string_view beginning = "refs/heads/";
    const auto name = manager.originalRefName();
    if (!name)
        return "a detached HEAD";
    return printable(name->starts_with(beginning) ? name->substr(beginning.size()) : *name);
}

/// "merging a and b": all that MERGE_HEAD holds.
std::string revisionsText(std::string_view revisions) {
    std::string text;
    while (!revisions.empty()) {
        const std::string_view line = revisions.substr(0, revisions.find('\n'));
        text += (text.empty() ? "" : " and ") + shortened(std::string(line));
        revisions.remove_prefix(std::min(line.size() + 1, revisions.size()));
    }
    return text;
}

std::string rebaseText(const RVGitMergeManager& manager, std::string_view what) {
    std::string text = std::string(what) + " " + branchText(manager);
    if (manager.lastSequenceStep() > 0)
        text += ", " + std::to_string(manager.nextSequenceStep()) + " of " +
                std::to_string(manager.lastSequenceStep());
    if (const auto revision = manager.nextSequenceRevision())
        text += ", at " + shortened(*revision);
    return text;
}

/// Git counts what is left of a sequence, and not what is done.
std::string sequenceText(const RVGitMergeManager& manager, std::string_view what) {
    std::string text = std::string(what) + " on " + branchText(manager);
    if (manager.lastSequenceStep() > 0)
        text += ", " + std::to_string(manager.lastSequenceStep()) + " left";
    if (const auto revision = manager.mergedRevision())
        text += ", at " + shortened(*revision);
    else if (const auto next = manager.nextSequenceRevision())
        text += ", at " + shortened(*next);
    return text;
}

}  // namespace

std::string operationText(const std::shared_ptr<RVGitRepository>& repository) {
    const RVGitMergeManager manager(repository);
    switch (manager.currentMergeMode()) {
        case RVGitMergeModeMerge:
            return "merging " + revisionsText(manager.mergedRevision().value_or("")) + " into " +
                   branchText(manager);
        case RVGitMergeModeSquash:
            return "squashing into " + branchText(manager);
        case RVGitMergeModeRebase:
            return rebaseText(manager, "rebasing");
        case RVGitMergeModeEditing:
            return rebaseText(manager, manager.isEditingRevision() ? "editing" : "rebasing");
        case RVGitMergeModeCherryPick:
            return sequenceText(manager, "cherry-picking");
        case RVGitMergeModeRevert:
            return sequenceText(manager, "reverting");
        case RVGitMergeModeNone:
            break;
    }
    return "";
}

void reportOperation(bool done, const std::optional<RVError>& error,
                     const std::shared_ptr<RVGitRepository>& repository, Output& output) {
    const std::string underWay = operationText(repository);
    if (!done) {
        if (!error)
            throw UsageError("it could not be done");
        if (underWay.empty())
            throw Failure(error);
        throw Failure{*error, underWay +
                                  "\n(rvgit status shows the conflicts; then: rvgit resolve, "
                                  "continue, skip or abort)"};
    }
    if (!underWay.empty())
        output << "Stopped: " << underWay << "\n";
}
