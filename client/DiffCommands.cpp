#include <algorithm>

#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "client/Commands.h"

namespace {

void printHeader(std::string_view header, Output& output) {
    while (!header.empty()) {
        const std::string_view line = header.substr(0, header.find('\n'));
        output << output.bold(printable(line)) << "\n";
        header.remove_prefix(std::min(line.size() + 1, header.size()));
    }
}

void printDiff(const RVGitDiff& diff, Output& output) {
    if (diff.header())
        printHeader(*diff.header(), output);
    else
        output << output.bold("diff --cc " + printable(diff.filePath().value_or(""))) << "\n";
    for (const auto& chunk : diff.chunks()) {
        output << output.in(Colour::Cyan, printable(chunk->header())) << "\n";
        for (const RVGitDiffChunkLine& line : chunk->lines()) {
            const std::string text = printable(line.contentWithStatusView());
            if (line.isAddedLine())
                output << output.in(Colour::Green, text);
            else if (line.isDeletedLine())
                output << output.in(Colour::Red, text);
            else
                output << text;
            output << "\n";
        }
    }
}

void printDiffs(const std::vector<std::shared_ptr<RVGitDiff>>& diffs, Output& output) {
    for (const auto& diff : diffs)
        printDiff(*diff, output);
}

std::string counted(std::uint64_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void printChangeset(const RVGitChangeset& changeset, Output& output) {
    for (const auto& entry : changeset.entries()) {
        output << output.in(Colour::Yellow,
                            RVGitShortStringForFileStatus(entry->fileStatus()).value_or(" "))
               << " "
               << output.in(Colour::Green, padded("+" + std::to_string(entry->linesAdded()), 7))
               << output.in(Colour::Red, padded("-" + std::to_string(entry->linesDeleted()), 7));
        if (entry->isFileStatusRenamed() || entry->isFileStatusCopied())
            output << printable(entry->oldFilePath().value_or("")) << " -> ";
        output << printable(entry->filePath().value_or("")) << "\n";
    }
    output << counted(changeset.totalFilesChanged(), "file") << " changed, "
           << counted(changeset.totalLinesAdded(), "line") << " added, "
           << counted(changeset.totalLinesDeleted(), "line") << " deleted\n";
}

}  // namespace

void runShow(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    const std::string revision = arguments.valueOf("show");
    if (revision.starts_with('-'))
        throw UsageError("show has no option " + revision);
    if (const auto word = arguments.next())
        throw UsageError("show takes no " + *word);
    // Of a merge, what it brought to its first parent.
    const RVOptions options = {{RVGitDiffOptionMergeCommitsFirstParent, true}};
    std::optional<RVError> error;
    const auto changeset = RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
        revision, {}, repository, options, &error);
    if (!changeset)
        throw Failure(error);
    const auto diffs = changeset->allDiffs(&error);
    if (!diffs)
        throw Failure(error);
    printChangeset(*changeset, output);
    output << "\n";
    // The log leaves all of them out where one of them holds a NUL byte.
    if (diffs->empty() && !changeset->entries().empty())
        output << "A file that holds a NUL byte keeps the lines from being shown here: try rvgit "
                  "diff\n";
    printDiffs(*diffs, output);
}

void runDiff(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    std::vector<std::string> revisions;
    std::vector<std::string> paths;
    takePathsLiterally();
    RVOptions options;
    while (const auto word = arguments.next()) {
        if (*word == "--staged")
            options.insert_or_assign(RVGitDiffOptionStaged, true);
        else if (*word == "--")
            paths = arguments.rest();
        else if (word->starts_with('-'))
            throw UsageError("diff has no option " + *word);
        else
            revisions.push_back(*word);
    }
    const std::size_t maximum = options.empty() ? 2 : 1;
    if (revisions.size() > maximum)
        throw UsageError("diff takes no more than " + counted(maximum, "revision") + " here");
    std::optional<RVError> error;
    const auto diffs =
        RVGitDiff::allDiffsByComparingRevisions(revisions, paths, repository, options, &error);
    if (!diffs)
        throw Failure(error);
    printDiffs(*diffs, output);
}
