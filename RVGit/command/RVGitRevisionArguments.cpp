#include "RVGit/command/RVGitRevisionArguments.h"

#include <algorithm>
#include <string>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitCommand.h"

namespace {

/// The path that git sees in the text.
std::string filePathIn(std::string revision) {
    if (revision.starts_with('^'))
        revision.erase(0, 1);
    // The first commit whose message holds the text, or the path from the top.
    if (revision.starts_with(":/"))
        revision.erase(0, 2);
    return revision;
}

}  // namespace

void rvgit::separateRevisionsFromFiles(RVGitCommand& command) {
    // Without a working tree git looks at no file, and may run where one is called HEAD.
    const auto& directory = command.repositoryPath();
    if (!directory || !command.workingTreeDirectoryPath())
        return;
    const auto isFile = [&](const std::string& revision) {
        const std::string filePath = filePathIn(revision);
        const std::string path = pathByAppendingComponent(*directory, filePath);
        return !filePath.empty() &&
               (RVFileManager::fileExistsAtPath(path) || RVFileManager::isSymbolicLinkAtPath(path));
    };
    if (std::ranges::any_of(command.gitCommandArguments(), isFile))
        command.addGitCommandArgument("--");
}
