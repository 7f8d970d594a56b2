#include <algorithm>
#include <filesystem>

#include "RVGit/archive/RVGitArchiver.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"

void runArchive(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output) {
    const auto revision = arguments.nextOperand("archive");
    const auto file = arguments.nextOperand("archive");
    if (!file)
        throw UsageError("archive needs a revision and a file");
    std::vector<std::string> paths = arguments.operands("archive");
    takePathsLiterally();
    // git runs elsewhere.
    std::error_code ignored;
    const auto archiver = std::make_shared<RVGitArchiver>(
        repository, *revision, paths.empty() ? std::nullopt : std::optional(std::move(paths)),
        standardizedPath(std::filesystem::absolute(*file, ignored).string()));
    whenInterrupted([archiver] { archiver->cancel(); });
    std::optional<RVError> error;
    try {
        if (!archiver->run(&error))
            throw Failure(error);
    } catch (const RVGitCommandArgumentsOverflowException&) {
        throw UsageError("archive takes no more than some 4000 paths");
    }
    const auto archived = archiver->archivedFilePaths();
    const auto files = std::count_if(archived.begin(), archived.end(),
                                     [](const auto& path) { return !path.ends_with('/'); });
    output << "Packed " << std::to_string(files) << (files == 1 ? " file" : " files") << " into "
           << printable(*file) << "\n";
}
