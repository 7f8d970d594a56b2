#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitActor.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitContributionInfo.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/repository/RVGitRefLogEntry.h"
#include "RVGit/repository/RVGitRefLogEntryManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"

namespace {

std::string shortHash(const std::optional<std::string>& hash) {
    return RVGitShortenHash(hash).value_or("        ");
}

std::string firstLine(const std::string& text) {
    return printable(text.substr(0, text.find('\n')));
}

}  // namespace

void runTags(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output) {
    if (const auto word = arguments.next())
        throw UsageError("tags takes no " + *word);
    std::optional<RVError> error;
    const auto tags = RVGitTag::allTagsForRepository(repository, &error);
    if (!tags)
        throw Failure(error);
    for (const auto& tag : *tags)
        output << output.in(Colour::Yellow, shortHash(tag->commitHash())) << " "
               << dateText(tag->creatorDate()) << " "
               << output.in(Colour::Green, printable(tag->refName())) << " "
               << firstLine(tag->message().value_or("")) << "\n";
}

void runBlame(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output) {
    const std::string file = arguments.operandOf("blame");
    const std::string revision = arguments.nextOperand("blame").value_or(RVGitHEADRevision);
    if (const auto word = arguments.nextOperand("blame"))
        throw UsageError("blame takes no " + *word);
    std::optional<RVError> error;
    const auto blame = RVGitBlame::blameForFilePath(file, revision, repository, &error);
    if (!blame)
        throw Failure(error);
    for (const auto& line : blame->annotatedLines()) {
        const auto& commit = line->commit();
        const auto author = commit->author();
        output << output.in(Colour::Yellow, shortHash(commit->commitHash())) << " "
               << output.in(Colour::Cyan,
                            padded(printable(author ? author->name().value_or("") : ""), 18))
               << " " << dateText(commit->authorDate()) << " "
               << std::to_string(line->finalLineNumber()) << ") "
               << printable(line->lineContents().value_or("")) << "\n";
    }
}

void runReflog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    RVOptions options;
    std::string refName = RVGitHEADRevision;
    while (const auto word = arguments.next()) {
        if (*word == "--limit")
            options.insert_or_assign(RVGitLogOptionLimit, arguments.numberOf(*word));
        else if (word->starts_with('-'))
            throw UsageError("reflog has no option " + *word);
        else
            refName = *word;
    }
    std::optional<RVError> error;
    const auto entries = RVGitRefLogEntryManager(repository)
                             .loadRefLogEntriesForRefWithName(refName, options, &error);
    if (!entries)
        throw Failure(error);
    for (const auto& entry : *entries)
        output << output.in(Colour::Yellow, shortHash(entry->revision())) << " "
               << dateText(entry->date()) << " "
               << output.in(Colour::Green, padded(printable(entry->commandName()), 10)) << " "
               << firstLine(entry->subject()) << "\n";
}

void runShortlog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output) {
    std::size_t limit = 0;
    unsigned options = 0;
    std::string revision = RVGitHEADRevision;
    while (const auto word = arguments.next()) {
        if (*word == "--limit")
            limit = arguments.numberOf(*word);
        else if (*word == "--committers")
            options |= RVGitContributionInfoOptionCommitters;
        else if (word->starts_with('-'))
            throw UsageError("shortlog has no option " + *word);
        else
            revision = *word;
    }
    std::optional<RVError> error;
    const auto contributions = RVGitContributionInfo::allContributionInfosForRepository(
        repository, revision, limit, options, &error);
    if (!contributions)
        throw Failure(error);
    for (const auto& contribution : *contributions) {
        const std::string count = std::to_string(contribution->numberOfCommits());
        output << std::string(count.size() < 6 ? 6 - count.size() : 0, ' ') << count << "  "
               << printable(contribution->author()->displayName().value_or("")) << "\n";
    }
}
