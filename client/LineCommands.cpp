#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffPatchGenerator.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "client/Commands.h"

// Lines of one file, by the numbers that "lines" shows.

namespace {

/// Throws Failure if git fails, UsageError if the file has no such changes.
std::shared_ptr<RVGitDiff> changesOf(const std::string& path, bool isStaged,
                                     const std::shared_ptr<RVGitRepository>& repository) {
    takePathsLiterally();
    std::optional<RVError> error;
    const auto compare = isStaged
                             ? &RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths
                             : &RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths;
    const auto diffs = compare({path}, repository, std::nullopt, &error);
    if (!diffs)
        throw Failure(error);
    auto diff = RVGitDiff::diffOfFile(diffs, path);
    if (!diff || diff->chunks().empty())
        throw UsageError(path + (isStaged ? " has no lines that are staged"
                                          : " has no lines that are changed and not staged"));
    if (!diff->header())
        throw UsageError(path + " has a conflict");
    return diff;
}

/// A number from 1 to `limit`, taken off the front of the text.
std::size_t takeNumber(std::string_view& text, std::size_t limit, const std::string& word) {
    std::size_t number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem != std::errc() || number < 1 || number > limit)
        throw UsageError("there is nothing with the numbers " + word);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool take(std::string_view& text, char character) {
    if (!text.starts_with(character))
        return false;
    text.remove_prefix(1);
    return true;
}

/// "2" is all of the second chunk, "2:1,4-6" are some of its lines.
void addSelection(RVGitDiffPatchGenerator::Lines& selection, const std::string& word,
                  const RVGitDiff& diff) {
    std::string_view rest = word;
    const std::size_t chunk = takeNumber(rest, diff.chunks().size(), word) - 1;
    const std::size_t count = diff.chunks()[chunk]->lines().size();
    auto& lines = selection[chunk];
    if (rest.empty()) {
        for (std::size_t line = 0; line < count; ++line)
            lines.insert(line);
        return;
    }
    for (char separator = ':'; take(rest, separator); separator = ',') {
        const std::size_t first = takeNumber(rest, count, word);
        const std::size_t last = take(rest, '-') ? takeNumber(rest, count, word) : first;
        for (std::size_t line = first; line <= last; ++line)
            lines.insert(line - 1);
    }
    if (!rest.empty())
        throw UsageError("lines are given as CHUNK or CHUNK:LINE,FIRST-LAST, and not as " + word);
}

struct Change {
    const char* command;
    bool isStaged;
    bool isTakenBack;
    bool isCached;
};

void applyChange(const Change& change, const std::shared_ptr<RVGitRepository>& repository,
                 Arguments arguments) {
    const std::string path = arguments.operandOf(change.command);
    const auto diff = changesOf(path, change.isStaged, repository);
    RVGitDiffPatchGenerator::Lines selection;
    while (const auto word = arguments.nextOperand(change.command))
        addSelection(selection, *word, *diff);
    const auto patch = change.isTakenBack ? diff->locatedWorktreePatchForLinesWithIndexes(selection)
                                          : diff->locatedIndexPatchForLinesWithIndexes(selection);
    if (!patch)
        throw UsageError(std::string(change.command) + " needs lines that are changed");
    std::optional<RVError> error;
    const bool done = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository)
                          ->applyPatch(*patch,
                                       RVOptions{{RVGitApplyOptionCached, change.isCached},
                                                 {RVGitApplyOptionReverse, change.isTakenBack}},
                                       &error);
    if (!done)
        throw Failure(error);
}

}  // namespace

void runLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    bool isStaged = false;
    std::vector<std::string> paths;
    while (const auto word = arguments.next()) {
        if (*word == "--staged")
            isStaged = true;
        else if (*word == "--")
            std::ranges::move(arguments.rest(), std::back_inserter(paths));
        else if (word->starts_with('-'))
            throw UsageError("lines has no option " + *word);
        else
            paths.push_back(*word);
    }
    if (paths.size() != 1)
        throw UsageError("lines needs one path");
    const std::string& path = paths.front();
    const auto diff = changesOf(path, isStaged, repository);
    std::size_t chunkNumber = 0;
    for (const auto& chunk : diff->chunks()) {
        output << output.in(Colour::Cyan,
                            std::to_string(++chunkNumber) + "  " + printable(chunk->header()))
               << "\n";
        std::size_t lineNumber = 0;
        for (const RVGitDiffChunkLine& line : chunk->lines()) {
            ++lineNumber;
            const std::string text = printable(line.contentWithStatusView());
            const bool isChanged = line.isAddedLine() || line.isDeletedLine();
            output << padded(
                isChanged ? std::to_string(chunkNumber) + ":" + std::to_string(lineNumber) : "", 8);
            if (isChanged)
                output << output.in(line.isAddedLine() ? Colour::Green : Colour::Red, text);
            else
                output << text;
            output << "\n";
        }
    }
}

void runAddLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments, Output&) {
    applyChange({"add-lines", false, false, true}, repository, std::move(arguments));
}

void runUnstageLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                     Output&) {
    applyChange({"unstage-lines", true, true, true}, repository, std::move(arguments));
}

void runDiscardLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                     Output&) {
    applyChange({"discard-lines", false, true, false}, repository, std::move(arguments));
}
