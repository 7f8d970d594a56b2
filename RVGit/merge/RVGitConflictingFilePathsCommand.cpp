#include "RVGit/merge/RVGitConflictingFilePathsCommand.h"

#include <utility>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitFilePathsOutputParser.h"
#include "RVGit/command/RVGitValues.h"

namespace {

constexpr char firstVersion[] = "2.38.0";

/// Whether git has made the merge: its output then begins with the hash of a tree.
bool holdsTree(std::string_view output) {
    const std::string_view first = output.substr(0, output.find('\0'));
    return first.size() >= 40 &&
           first.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace

RVGitConflictingFilePathsCommand::RVGitConflictingFilePathsCommand(
    const std::shared_ptr<RVGitRepository>& repository, std::string revision,
    std::string intoRevision)
    : RVGitCommand(repository),
      revision_(std::move(revision)),
      intoRevision_(std::move(intoRevision)) {}

std::shared_ptr<RVGitConflictingFilePathsCommand>
RVGitConflictingFilePathsCommand::gitConflictingFilePathsCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string revision,
    std::string intoRevision) {
    return std::make_shared<RVGitConflictingFilePathsCommand>(repository, std::move(revision),
                                                              std::move(intoRevision));
}

bool RVGitConflictingFilePathsCommand::isSupportedByGitBinary(const RVGitBinary& gitBinary) {
    return gitBinary.isVersionAtLeast(firstVersion);
}

void RVGitConflictingFilePathsCommand::gitCommandWillInitialize() {
    setGitCommand("merge-tree");
    if (!isSupportedByGitBinary(*gitBinary()))
        refuseGitCommandArgument(RVGitRVGitGenericError, RVGitCommandErrorOutputErrorKey,
                                 std::string("To foretell the conflicts of a merge, git ") +
                                     firstVersion + " or later is needed; this is git " +
                                     gitBinary()->version().value_or("of an unknown version"));
    addGitCommandOptions({"--write-tree", "-z", "--name-only", "--no-messages"});
    // No selections either: git would take "--all" for an abbreviation of an option of its own.
    addGitCommandNames({intoRevision_, revision_});
}

bool RVGitConflictingFilePathsCommand::gitCommandShouldHandleError(const RVError&) {
    // With code 1 git also says that it does not know a revision.
    return exitCode() != 1 || !holdsTree(standardOutputData());
}

bool RVGitConflictingFilePathsCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (isCancelled())
        return true;
    if (!holdsTree(standardOutputData()) || beginsWithSHA256Hash(standardOutputData())) {
        fillErrorPlace(error, gitErrorWithCode(RVGitOutputParserError));
        return false;
    }
    RVGitFilePathsOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    conflictingFilePaths_ = parser.takeIndexedResults();
    conflictingFilePaths_.erase(conflictingFilePaths_.begin());
    return parsed;
}
