#include <filesystem>
#include <system_error>

#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

// More than any path takes.
constexpr std::size_t maximumSizeOfLinkFile = std::size_t{64} << 10;

// What git prints in a directory, trimmed; absent if it fails or is cancelled. The bytes are not
// decoded, since a path in another encoding must stay the one that it is.
std::optional<std::string> outputOfGit(const std::string& directoryPath, const char* gitCommand,
                                       const std::vector<std::string>& arguments,
                                       RVErrorPlace error = nullptr) {
    auto command = RVGitCommand::gitCommandWithRepositoryPath(directoryPath);
    command->setGitCommand(gitCommand);
    command->addGitCommandArguments(arguments);
    if (!command->run(error) || command->isCancelled())
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(command->standardOutputData());
}

// Whether the ".git" in a working tree is the git directory, or a file that leads there.
bool leadsToGitDirectory(const std::string& workingTree, const std::string& gitDirectory) {
    const std::string link = pathByAppendingComponent(workingTree, ".git");
    std::string target = link;
    if (!RVFileManager::isDirectoryAtPath(link)) {
        const auto contents = RVContainedFiles(workingTree).contents(".git", maximumSizeOfLinkFile);
        constexpr std::string_view prefix = "gitdir:";
        if (!contents || !contents->starts_with(prefix))
            return false;
        target = stringByTrimmingWhitespaceAndNewline(contents->substr(prefix.size()));
        if (!isAbsolutePath(target))
            target = pathByAppendingComponent(workingTree, target);
    }
    std::error_code failure;
    return std::filesystem::equivalent(target, gitDirectory, failure);
}

bool liesInDirectory(const std::string& path, const std::string& directory) {
    std::error_code failure;
    for (std::string inner = std::filesystem::canonical(path, failure).string();
         !failure && !inner.empty(); inner = pathByDeletingLastComponent(inner)) {
        if (std::filesystem::equivalent(inner, directory, failure))
            return true;
        if (inner == "/")
            return false;
    }
    return false;
}

}  // namespace

bool RVGitRepository::isGitRepositoryAtPath(const std::string& path) {
    std::string directoryPath = standardizedPath(path);
    return isAbsolutePath(directoryPath) && RVFileManager::isDirectoryAtPath(directoryPath) &&
           outputOfGit(directoryPath, "rev-parse", {"--git-dir"});
}

std::optional<std::string> RVGitRepository::reasonForInvalidRepositoryAtPath(
    const std::string& path) {
    const std::string directoryPath = standardizedPath(path);
    if (!RVFileManager::isDirectoryAtPath(directoryPath)) {
        const bool exists = RVFileManager::fileExistsAtPath(directoryPath);
        return std::make_error_code(exists ? std::errc::not_a_directory
                                           : std::errc::no_such_file_or_directory)
            .message();
    }
    std::optional<RVError> error;
    if (outputOfGit(directoryPath, "rev-parse", {"--git-dir"}, &error) || !error)
        return std::nullopt;
    const auto output = error->userInfo().find(RVGitCommandErrorOutputErrorKey);
    if (output == error->userInfo().end())
        return error->localizedDescription();
    return stringByTrimmingWhitespaceAndNewline(output->second.displayString());
}

std::optional<std::string> RVGitRepository::rootPathForRepositoryAtPath(const std::string& path) {
    auto repository = repositoryWithPath(path);
    return repository->isValid() ? std::optional(repository->path()) : std::nullopt;
}

void RVGitRepository::initializeWithPath(const std::string& path) {
    path_ = path;
    std::string directoryPath = standardizedPath(path);
    if (!RVFileManager::isDirectoryAtPath(directoryPath))
        return;

    const RVGitCancellationWatch watch;
    std::optional<RVError> error;
    bool isBareRepository = isBareRepositoryAtPath(directoryPath, &error);
    if (error || watch.isCancelled())
        return;
    auto root = normalizedRepositoryPath(directoryPath, isBareRepository);
    // What git had no time to say would count as not configured, for the life of the object: the
    // working tree would be another one.
    if (watch.isCancelled()) {
        gitDirectoryPath_.reset();
        workingTreeDirectoryPath_.reset();
    } else if (root) {
        path_ = *std::move(root);
        valid_ = true;
    }
}

bool RVGitRepository::isBareRepositoryAtPath(const std::string& path, RVErrorPlace error) {
    return outputOfGit(path, "rev-parse", {"--is-bare-repository"}, error) == "true";
}

std::optional<std::string> RVGitRepository::normalizedRepositoryPath(const std::string& path,
                                                                     bool isBareRepository) {
    auto printedDirectory = outputOfGit(path, "rev-parse", {"--git-dir"});
    if (!printedDirectory)
        return std::nullopt;
    const bool isAbsolute = isAbsolutePath(*printedDirectory);
    const bool isPathItself = *printedDirectory == ".";
    // Git prints a relative directory where it lies in or is the path.
    std::string gitDirectory = isAbsolute     ? *printedDirectory
                               : isPathItself ? path
                                              : pathByAppendingComponent(path, *printedDirectory);
    auto workingTree = outputOfGit(path, "config", {"--get", "core.worktree"});
    // The worktrees of a submodule share its configuration, but the tree that it names is that of
    // the submodule alone. From here it may even be the git directory, whose files would pass for
    // files of the working tree.
    if (workingTree && !isBareRepository &&
        isAlternateWorktreeGitDirectoryAtURL(RVURL::fileURLWithPath(gitDirectory))) {
        workingTree = outputOfGit(path, "rev-parse", {"--show-toplevel"});
        if (RVStringIsEmpty(workingTree))
            workingTree.reset();
    }

    std::string root;
    if (isBareRepository) {
        workingTree.reset();
        root = gitDirectory;
    } else if (workingTree) {
        if (!isAbsolutePath(*workingTree))
            workingTree = standardizedPath(
                pathByAppendingComponent(isAbsolute ? gitDirectory : path, *workingTree));
        auto isInside = outputOfGit(path, "rev-parse", {"--is-inside-work-tree"});
        if (!isInside)
            return std::nullopt;
        root = *isInside == "true" ? *workingTree : gitDirectory;
    } else {
        if (!isAbsolute && !isPathItself) {
            root = path;
        } else if (auto url = RVURL::fileURLWithPath(gitDirectory);
                   isAlternateWorktreeGitDirectoryAtURL(url)) {
            auto rootURL = workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(url);
            if (!rootURL)
                return std::nullopt;
            root = rootURL->path();
            // Of a worktree that was copied, the git directory names the other place.
            if (!liesInDirectory(path, root) && !liesInDirectory(path, gitDirectory))
                root.clear();
        } else {
            root = pathByDeletingLastComponent(gitDirectory);
        }
        if (root.empty() || !leadsToGitDirectory(root, gitDirectory)) {
            auto topLevel = outputOfGit(path, "rev-parse", {"--show-toplevel"});
            if (RVStringIsEmpty(topLevel))
                return std::nullopt;
            root = *std::move(topLevel);
        }
        workingTree = root;
    }

    gitDirectoryPath_ = standardizedPath(gitDirectory);
    if (workingTree)
        workingTreeDirectoryPath_ = standardizedPath(*workingTree);
    return standardizedPath(root);
}

bool RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(const RVURL& url) {
    return RVFileManager::fileExistsAtPath(pathByAppendingComponent(url.path(), "commondir")) &&
           RVFileManager::fileExistsAtPath(pathByAppendingComponent(url.path(), "gitdir"));
}

std::optional<RVURL> RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(
    const RVURL& url) {
    // The newline at the end goes with the last component.
    const auto contents =
        RVContainedFiles(url.path()).UTF8Contents("gitdir", maximumSizeOfLinkFile);
    if (!contents)
        return std::nullopt;
    return RVURL::fileURLWithPath(*contents, url).URLByDeletingLastPathComponent();
}
