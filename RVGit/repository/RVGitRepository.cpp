#include "RVGit/repository/RVGitRepository.h"

#include <fstream>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitInitCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "RVGit/worktree/RVGitIndex.h"

namespace {

constexpr std::string_view gitDirectoryLinkPrefix = "gitdir:";

// What git prints in a directory, trimmed; absent if it fails. The bytes are not decoded, since a
// path in another encoding must stay the one that it is.
std::optional<std::string> outputOfGit(const std::string& directoryPath, const char* gitCommand,
                                       const std::vector<std::string>& arguments,
                                       RVErrorPlace error = nullptr) {
    auto command = RVGitCommand::gitCommandWithRepositoryPath(directoryPath);
    command->setGitCommand(gitCommand);
    command->addGitCommandArguments(arguments);
    if (!command->run(error))
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(command->standardOutputData());
}

bool writeGitDirectoryFileLink(const std::string& directoryPath,
                               const std::string& gitDirectoryPath, RVErrorPlace error) {
    return RVFileManager::writeFileAtomically(pathByAppendingComponent(directoryPath, ".git"),
                                              "gitdir: " + gitDirectoryPath, 0644, error);
}

RVError errorWithPath(RVGitErrorCode code, const std::string& path) {
    return gitErrorWithCode(code, {{RVGitRepositoryPathErrorKey, path}});
}

// The first spelling of a path, as it is made into one, that exists.
template <typename MakePath>
std::optional<std::string> firstExistingPath(const std::array<std::string, 3>& spellings,
                                             MakePath makePath) {
    for (const std::string& spelling : spellings) {
        if (spelling.empty())
            continue;
        std::string path = makePath(spelling);
        if (RVFileManager::fileExistsAtPath(path))
            return path;
    }
    return std::nullopt;
}

struct TemporaryAllowedSignersFile {
    std::unique_ptr<RVOperationQueue> lock = RVOperationQueue::serialQueue(
        "com.varnelsoft.Varnel.temporaryAllowedSignersFileURLAccesor");
    std::optional<std::string> path;

    static TemporaryAllowedSignersFile& shared() {
        static auto* const file = new TemporaryAllowedSignersFile;
        return *file;
    }
};

}  // namespace

RVGitRepository::RVGitRepository(const std::string& path) {
    initializeWithPath(path);
}

RVGitRepository::RVGitRepository(const std::optional<std::string>& workingTreeDirectoryPath,
                                 const std::optional<std::string>& gitDirectoryPath)
    : valid_(gitDirectoryPath.has_value()) {
    if (workingTreeDirectoryPath)
        workingTreeDirectoryPath_ = standardizedPath(*workingTreeDirectoryPath);
    if (gitDirectoryPath)
        gitDirectoryPath_ = standardizedPath(*gitDirectoryPath);
    path_ = workingTreeDirectoryPath ? *workingTreeDirectoryPath : gitDirectoryPath.value_or("");
}

RVGitRepository::~RVGitRepository() = default;

std::shared_ptr<RVGitRepository> RVGitRepository::repositoryWithPath(const std::string& path) {
    return std::make_shared<RVGitRepository>(path);
}

std::shared_ptr<RVGitRepository> RVGitRepository::bareRepositoryWithGitDirectoryPath(
    const std::optional<std::string>& gitDirectoryPath) {
    return std::make_shared<RVGitRepository>(std::nullopt, gitDirectoryPath);
}

std::shared_ptr<RVGitRepository> RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
    const std::string& workingTreeDirectoryPath,
    const std::optional<std::string>& gitDirectoryPath) {
    return std::make_shared<RVGitRepository>(workingTreeDirectoryPath, gitDirectoryPath);
}

bool RVGitRepository::isGitRepositoryAtPath(const std::string& path) {
    std::string directoryPath = standardizedPath(path);
    return isAbsolutePath(directoryPath) && RVFileManager::isDirectoryAtPath(directoryPath) &&
           outputOfGit(directoryPath, "rev-parse", {"--git-dir"});
}

std::optional<std::string> RVGitRepository::rootPathForRepositoryAtPath(const std::string& path) {
    auto repository = repositoryWithPath(path);
    return repository->isValid() ? std::optional(repository->path()) : std::nullopt;
}

std::shared_ptr<RVGitRepository> RVGitRepository::createRepositoryAtPath(
    const std::string& path, const std::optional<RVOptions>& options, RVErrorPlace error) {
    if (!isAbsolutePath(path)) {
        fillErrorPlace(error, errorWithPath(RVGitInitRepositoryInvalidPathError, path));
        return nullptr;
    }
    if (RVFileManager::fileExistsAtPath(path) && !RVFileManager::isDirectoryAtPath(path)) {
        fillErrorPlace(error, errorWithPath(RVGitInitRepositoryFileExistsError, path));
        return nullptr;
    }
    if (!RVGitInitCommand::gitInitCommandWithPath(path, options)->run(error))
        return nullptr;
    return repositoryWithPath(path);
}

void RVGitRepository::initializeWithPath(const std::string& path) {
    path_ = path;
    std::string directoryPath = standardizedPath(path);
    if (!RVFileManager::isDirectoryAtPath(directoryPath))
        return;

    std::optional<RVError> error;
    bool isBareRepository = isBareRepositoryAtPath(directoryPath, &error);
    if (error)
        return;
    if (auto root = normalizedRepositoryPath(directoryPath, isBareRepository)) {
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
        } else {
            root = pathByDeletingLastComponent(gitDirectory);
        }
        workingTree = root;
    }

    gitDirectoryPath_ = standardizedPath(gitDirectory);
    if (workingTree)
        workingTreeDirectoryPath_ = standardizedPath(*workingTree);
    return standardizedPath(root);
}

std::optional<RVURL> RVGitRepository::fileURL() const {
    if (path_.empty())
        return std::nullopt;
    return RVURL::fileURLWithPath(path_);
}

std::string RVGitRepository::name() const {
    return lastPathComponent(path_);
}

std::shared_ptr<RVGitConfig> RVGitRepository::config() {
    std::call_once(configOnce_, [this] { config_.reset(new RVGitConfig(weak_from_this())); });
    return {shared_from_this(), config_.get()};
}

std::shared_ptr<RVGitIndex> RVGitRepository::index() {
    std::call_once(indexOnce_, [this] { index_.reset(new RVGitIndex(weak_from_this())); });
    return {shared_from_this(), index_.get()};
}

std::shared_ptr<RVGitIgnores> RVGitRepository::ignores() {
    return ownedIgnores(ignoresOnce_, ignores_, defaultIgnoresPath());
}

std::shared_ptr<RVGitIgnores> RVGitRepository::excludes() {
    return ownedIgnores(excludesOnce_, excludes_, defaultExcludesPath());
}

std::shared_ptr<RVGitIgnores> RVGitRepository::ownedIgnores(std::once_flag& once,
                                                            std::unique_ptr<RVGitIgnores>& owned,
                                                            std::optional<std::string> filePath) {
    if (!filePath)
        return nullptr;
    std::call_once(once,
                   [&] { owned.reset(new RVGitIgnores(weak_from_this(), *std::move(filePath))); });
    return {shared_from_this(), owned.get()};
}

bool RVGitRepository::isDetachedWorkingTree() {
    return config()->valueForConfigKey("core.worktree").has_value();
}

bool RVGitRepository::isGitDirectoryFileLink() const {
    return !gitDirectoryPath_ || RVFileManager::fileExistsAtPath(*gitDirectoryPath_) ||
           !RVFileManager::isDirectoryAtPath(*gitDirectoryPath_);
}

bool RVGitRepository::isGitWorktreeRepository() const {
    auto target = gitDirectoryPathFromGitDirectoryFileLink();
    return target && target->find(".git/worktrees/") != std::string::npos;
}

bool RVGitRepository::isSubmoduleRepository() const {
    auto target = gitDirectoryPathFromGitDirectoryFileLink();
    return target && target->find(".git/modules/") != std::string::npos;
}

bool RVGitRepository::isEmpty() {
    auto command =
        RVGitShowRefCommand::gitShowRefCommandWithRepository(shared_from_this(), std::nullopt);
    command->setShowsHeads(true);
    return command->run() && command->refs().empty();
}

bool RVGitRepository::isGitSVNRepository() const {
    auto directory = SVNDirectoryPath();
    return directory && RVFileManager::isDirectoryAtPath(*directory);
}

std::optional<std::string> RVGitRepository::contentsOfHEADFile() const {
    auto file = HEADFilePath();
    return file ? RVFileManager::UTF8ContentsOfFileAtPath(*file) : std::nullopt;
}

bool RVGitRepository::isHEADBranchDetached() const {
    auto contents = contentsOfHEADFile();
    return contents && !contents->starts_with("ref: ");
}

std::optional<std::string> RVGitRepository::HEADRefName() const {
    auto contents = contentsOfHEADFile();
    if (!contents)
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(
        stringByReplacingOccurrences(*contents, "ref:", ""));
}

std::optional<std::string> RVGitRepository::HEADRevision() {
    auto command =
        RVGitShowRefCommand::gitShowRefCommandWithRepository(shared_from_this(), std::nullopt);
    command->setShowsHashesOnly(true);
    command->setRefName(HEADRefName());
    if (!command->run())
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(command->standardOutputString());
}

std::optional<std::string> RVGitRepository::gitDirectoryComponent(
    std::string_view component) const {
    if (!gitDirectoryPath_)
        return std::nullopt;
    return pathByAppendingComponent(*gitDirectoryPath_, component);
}

std::optional<std::string> RVGitRepository::workingTreeComponent(std::string_view component) const {
    if (!workingTreeDirectoryPath_)
        return std::nullopt;
    return pathByAppendingComponent(*workingTreeDirectoryPath_, component);
}

std::optional<std::string> RVGitRepository::gitDirectoryComponentUnlessBare(
    std::string_view component) const {
    return isBare() ? std::nullopt : gitDirectoryComponent(component);
}

std::optional<std::string> RVGitRepository::configFilePath() const {
    return gitDirectoryComponent("config");
}

std::optional<std::string> RVGitRepository::HEADFilePath() const {
    return gitDirectoryComponent("HEAD");
}

std::optional<std::string> RVGitRepository::cherryPickHEADFilePath() const {
    return gitDirectoryComponentUnlessBare("CHERRY_PICK_HEAD");
}

std::optional<std::string> RVGitRepository::mergeHEADFilePath() const {
    return gitDirectoryComponentUnlessBare("MERGE_HEAD");
}

std::optional<std::string> RVGitRepository::rebaseDirectoryPath() const {
    return gitDirectoryComponentUnlessBare("rebase-apply");
}

std::optional<std::string> RVGitRepository::descriptionPath() const {
    return gitDirectoryComponent("description");
}

std::optional<std::string> RVGitRepository::defaultIgnoresPath() const {
    return workingTreeComponent(".gitignore");
}

std::optional<std::string> RVGitRepository::defaultExcludesPath() const {
    return gitDirectoryComponent("info/exclude");
}

std::optional<std::string> RVGitRepository::mergeCommitMessagePath() const {
    return gitDirectoryComponentUnlessBare("MERGE_MSG");
}

std::optional<std::string> RVGitRepository::squashCommitMessagePath() const {
    return gitDirectoryComponentUnlessBare("SQUASH_MSG");
}

std::optional<std::string> RVGitRepository::submodulesFilePath() const {
    return workingTreeComponent(".gitmodules");
}

std::optional<std::string> RVGitRepository::clonedSubmodulesDirectory() const {
    return gitDirectoryComponent("modules");
}

std::optional<std::string> RVGitRepository::SVNDirectoryPath() const {
    return gitDirectoryComponentUnlessBare("svn");
}

std::optional<std::string> RVGitRepository::SVNMetadatapath() const {
    auto directory = SVNDirectoryPath();
    if (directory)
        directory = pathByAppendingComponent(*directory, ".metadata");
    return directory;
}

std::optional<std::string> RVGitRepository::description(RVErrorPlace error) const {
    auto file = descriptionPath();
    auto contents = file ? RVFileManager::contentsOfFileAtPath(*file) : std::nullopt;
    if (!contents) {
        fillErrorPlace(error, errorWithPath(RVGitDescriptionReadError, path_));
        return std::nullopt;
    }
    return stringUsingBestEncoding(*contents);
}

bool RVGitRepository::setDescription(const std::string& description, RVErrorPlace error) const {
    auto file = descriptionPath();
    if (file && RVFileManager::fileExistsAtPath(*file)) {
        if (!RVFileManager::isWritableFileAtPath(*file)) {
            fillErrorPlace(error, errorWithPath(RVGitDescriptionWriteError, path_));
            return false;
        }
    } else if (!file || !std::ofstream(*file)) {
        clearErrorPlace(error);
        return false;
    }

    // Closing writes what is buffered: only then is it known whether all of it could be written.
    std::ofstream stream(*file, std::ios::binary | std::ios::trunc);
    stream << description;
    stream.close();
    if (!stream) {
        fillErrorPlace(error, errorWithPath(RVGitDescriptionWriteError, path_));
        return false;
    }
    return true;
}

std::optional<std::string> RVGitRepository::gitDirectoryPathFromGitDirectoryFileLink(
    RVErrorPlace error) const {
    clearErrorPlace(error);
    auto contents = gitDirectoryPath_
                        ? RVFileManager::UTF8ContentsOfFileAtPath(*gitDirectoryPath_, error)
                        : std::nullopt;
    if (!contents || !contents->starts_with(gitDirectoryLinkPrefix))
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(
        std::string_view(*contents).substr(gitDirectoryLinkPrefix.size()));
}

bool RVGitRepository::updateGitDirectoryFileLinkWithPath(const std::string& path,
                                                         RVErrorPlace error) const {
    return writeGitDirectoryFileLink(workingTreeDirectoryPath_.value_or(path_), path, error);
}

bool RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(const std::string& path,
                                                                const std::string& gitDirectoryPath,
                                                                RVErrorPlace error) {
    std::string file = pathByAppendingComponent(path, ".git");
    if (!RVFileManager::fileExistsAtPath(file) || RVFileManager::isDirectoryAtPath(file)) {
        clearErrorPlace(error);
        return false;
    }
    return writeGitDirectoryFileLink(path, gitDirectoryPath, error);
}

bool RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(const RVURL& url) {
    return RVFileManager::fileExistsAtPath(pathByAppendingComponent(url.path(), "commondir")) &&
           RVFileManager::fileExistsAtPath(pathByAppendingComponent(url.path(), "gitdir"));
}

std::optional<RVURL> RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(
    const RVURL& url) {
    // The newline at the end goes with the last component.
    auto contents =
        RVFileManager::UTF8ContentsOfFileAtPath(pathByAppendingComponent(url.path(), "gitdir"));
    if (!contents)
        return std::nullopt;
    return RVURL::fileURLWithPath(*contents, url).URLByDeletingLastPathComponent();
}

std::optional<std::string> RVGitRepository::allowedSignersFileFullPath() {
    auto configured = config()->allowedSignersFile();
    if (RVStringIsEmpty(configured))
        return temporaryAllowedSignersFilePath();
    auto file = existingFileAt(*configured);
    if (!file)
        file = existingFileRelativeToRepoWith(*configured);
    if (!file)
        file = existingFileWithTildeExpandedWithPath(*configured);
    return file ? file : temporaryAllowedSignersFilePath();
}

std::array<std::string, 3> RVGitRepository::spellingsOfPath(const std::string& path) const {
    std::string withoutLeadingWhitespace = removeLeadingWhitespace(path);
    return {path, withoutLeadingWhitespace, trimWhitespacesFor(withoutLeadingWhitespace)};
}

std::optional<std::string> RVGitRepository::existingFileAt(const std::string& path) const {
    return firstExistingPath(spellingsOfPath(path),
                             [](const std::string& spelling) { return spelling; });
}

std::optional<std::string> RVGitRepository::existingFileRelativeToRepoWith(
    const std::string& path) const {
    RVURL base = RVURL::fileURLWithPath(path_);
    return firstExistingPath(spellingsOfPath(path), [&base](const std::string& spelling) {
        return RVURL::fileURLWithPath(spelling, base).path();
    });
}

std::optional<std::string> RVGitRepository::existingFileWithTildeExpandedWithPath(
    const std::string& path) const {
    return firstExistingPath(spellingsOfPath(path), [](const std::string& spelling) {
        return pathByExpandingTilde(spelling);
    });
}

std::string RVGitRepository::removeLeadingWhitespace(const std::string& text) const {
    static const RVNeverDestroyed<RVRegularExpression> leadingWhitespace("^\\s+");
    return leadingWhitespace->stringByReplacingMatches(text, "");
}

std::string RVGitRepository::trimWhitespacesFor(const std::string& text) const {
    return stringByTrimmingWhitespaceAndNewline(text);
}

RVOperationQueue& RVGitRepository::temporaryAllowedSignersFileLock() {
    return *TemporaryAllowedSignersFile::shared().lock;
}

std::optional<std::string> RVGitRepository::temporaryAllowedSignersFilePath() {
    std::optional<std::string> result;
    temporaryAllowedSignersFileLock().runBlock([&result] {
        auto& path = TemporaryAllowedSignersFile::shared().path;
        if (!path || !RVFileManager::fileExistsAtPath(*path))
            path = RVFileManager::createEmptyTemporaryFile();
        result = path;
    });
    return result;
}

std::optional<std::string> RVGitRepository::temporaryFilePath() {
    std::optional<std::string> result;
    temporaryAllowedSignersFileLock().runBlock(
        [&result] { result = TemporaryAllowedSignersFile::shared().path; });
    return result;
}

void RVGitRepository::setTemporaryFilePath(const std::optional<std::string>& path) {
    temporaryAllowedSignersFileLock().runBlock(
        [&path] { TemporaryAllowedSignersFile::shared().path = path; });
}
