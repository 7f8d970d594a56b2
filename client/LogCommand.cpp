#include "RVGit/base/RVDateFormatter.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/CommitList.h"

namespace {

RVDate dateOf(const std::string& option, const std::string& value) {
    for (const char* completion : {"", "T00:00:00Z", "Z"})
        if (const auto date = dateFromISO8601String(value + completion))
            return *date;
    throw UsageError(option + " needs a date such as 2024-01-31 or 2024-01-31T12:00:00+01:00");
}

void addToList(RVOptions& options, const char* key, std::string value) {
    RVValue::StringList list;
    if (const auto found = options.find(key); found != options.end())
        list = *found->second.stringList();
    list.push_back(std::move(value));
    options.insert_or_assign(key, std::move(list));
}

}  // namespace

void runLog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output) {
    RVOptions options;
    CommitListStyle style;
    std::vector<std::string> revisions;
    std::vector<std::string> paths;
    takePathsLiterally();
    while (const auto word = arguments.next()) {
        if (*word == "--limit" || *word == "-n") {
            options.insert_or_assign(RVGitLogOptionLimit, arguments.numberOf(*word));
        } else if (*word == "--offset") {
            options.insert_or_assign(RVGitLogOptionOffset, arguments.numberOf(*word));
        } else if (*word == "--all") {
            options.insert_or_assign(RVGitLogOptionAllRefs, true);
        } else if (*word == "--first-parent") {
            options.insert_or_assign(RVGitLogOptionFirstParent, true);
            style.firstParentOnly = true;
        } else if (*word == "--signatures") {
            options.insert_or_assign(RVGitLogOptionVerifiesSignatures, true);
            if (const auto file = repository->allowedSignersFileFullPath())
                options.insert_or_assign(RVGitLogOptionAllowedSignersFile, *file);
            style.showsSignatures = true;
        } else if (*word == "--author") {
            addToList(options, RVGitLogOptionSearchAuthorPatterns, arguments.valueOf(*word));
            style.drawsGraph = false;
        } else if (*word == "--message") {
            addToList(options, RVGitLogOptionSearchPatterns, arguments.valueOf(*word));
            style.drawsGraph = false;
        } else if (*word == "--content") {
            addToList(options, RVGitLogOptionSearchContentPatterns, arguments.valueOf(*word));
            style.drawsGraph = false;
        } else if (*word == "--since") {
            options.insert_or_assign(RVGitLogOptionSinceDate,
                                     dateOf(*word, arguments.valueOf(*word)));
        } else if (*word == "--until") {
            options.insert_or_assign(RVGitLogOptionUntilDate,
                                     dateOf(*word, arguments.valueOf(*word)));
        } else if (*word == "--") {
            paths = arguments.rest();
        } else if (word->starts_with('-')) {
            throw UsageError("log has no option " + *word);
        } else {
            revisions.push_back(*word);
        }
    }
    // Of a list that leaves commits out the lanes would never end.
    if (!paths.empty())
        style.drawsGraph = false;
    // A graph needs its parents below their children, whatever the clocks said.
    if (style.drawsGraph)
        options.insert_or_assign(RVGitLogOptionSortByDate, true);
    std::optional<RVError> error;
    const auto commits =
        RVGitCommit::allCommitsForRevisions(revisions, paths, repository, options, &error);
    if (!commits)
        throw Failure(error);
    printCommits(*commits, style, output);
}
