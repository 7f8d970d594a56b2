#include "RVGit/archive/RVGitArchiveCommand.h"

#include <sys/stat.h>
#include <unistd.h>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitFilePathsOutputParser.h"

RVGitArchiveCommand::RVGitArchiveCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::string revision,
                                         std::optional<std::vector<std::string>> filePaths,
                                         std::string destination)
    : RVGitCommand(repository),
      revision_(std::move(revision)),
      filePaths_(std::move(filePaths)),
      destination_(std::move(destination)) {}

std::shared_ptr<RVGitArchiveCommand> RVGitArchiveCommand::gitArchiveCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string revision,
    std::optional<std::vector<std::string>> filePaths, std::string destination) {
    return std::make_shared<RVGitArchiveCommand>(repository, std::move(revision),
                                                 std::move(filePaths), std::move(destination));
}

const RVGitErrorTable& RVGitArchiveCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitArchiveFilesError)
            .command("archive")
            .exitCode(128)
            .standardError("fatal: path not found:"),
        gitErrorRow(RVGitArchiveFilesError)
            .command("archive")
            .exitCode(128)
            .standardError("Not a valid object name"),
    };
    return *table;
}

void RVGitArchiveCommand::gitCommandWillInitialize() {
    struct stat status;
    destinationWasThere_ = ::lstat(absoluteDestination().c_str(), &status) == 0;

    setGitCommand("archive");
    addGitCommandOption("--verbose");
    addGitCommandOption("--worktree-attributes");
    if (format_ == RVGitArchiveFormatZip)
        addGitCommandOption("--format=zip");
    else if (format_ == RVGitArchiveFormatTar)
        addGitCommandOption("--format=tar");
    addGitCommandOptions({"-o", destination_});
    addGitCommandName(revision_, RVGitArchiveFilesError);
    if (filePaths_)
        addGitCommandFilePaths(*filePaths_);
}

void RVGitArchiveCommand::gitCommandDidTerminate() {
    if (exitCode() == 0 || destinationWasThere_)
        return;
    const std::string path = absoluteDestination();
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        ::unlink(path.c_str());
}

bool RVGitArchiveCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    // With "--verbose" git lists what it packs on standard error.
    RVGitFilePathsOutputParser parser(standardErrorData(), false);
    if (!parser.parse(error))
        return false;
    archivedFilePaths_ = parser.takeIndexedResults();
    return true;
}

std::string RVGitArchiveCommand::absoluteDestination() const {
    return isAbsolutePath(destination_)
               ? destination_
               : pathByAppendingComponent(workingDirectory().value_or("."), destination_);
}
