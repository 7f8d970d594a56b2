#include "RVGit/repository/RVGitRepository.h"

#include <cerrno>
#include <limits>

#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitInitCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "RVGit/worktree/RVGitIndex.h"

namespace {

constexpr std::string_view gitDirectoryLinkPrefix = "gitdir:";

// More than any path or ref name takes.
constexpr std::size_t maximumSizeOfShortFile = std::size_t{64} << 10;

bool writeGitDirectoryFileLink(const std::string& directoryPath,
                               const std::string& gitDirectoryPath, RVErrorPlace error) {
    return RVFileManager::writeFileAtomically(pathByAppendingComponent(directoryPath, ".git"),
                                              "gitdir: " + gitDirectoryPath, 0644, error);
}

RVError errorWithPath(RVGitErrorCode code, const std::string& path) {
    return gitErrorWithCode(code, {{RVGitRepositoryPathErrorKey, path}});
}

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
    // Where it was cancelled, what is found at the path may be the repository around it.
    const RVGitCancellationWatch watch;
    if (!RVGitInitCommand::gitInitCommandWithPath(path, options)->run(error) ||
        watch.isCancelled(error))
        return nullptr;
    auto repository = repositoryWithPath(path);
    return watch.isCancelled(error) ? nullptr : repository;
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
    return config_.part(shared_from_this(), [this] { return new RVGitConfig(weak_from_this()); });
}

std::shared_ptr<RVGitIndex> RVGitRepository::index() {
    return index_.part(shared_from_this(), [this] { return new RVGitIndex(weak_from_this()); });
}

std::shared_ptr<RVGitIgnores> RVGitRepository::ignores() {
    return ownedIgnores(ignores_, defaultIgnoresPath());
}

std::shared_ptr<RVGitIgnores> RVGitRepository::excludes() {
    return ownedIgnores(excludes_, defaultExcludesPath());
}

std::shared_ptr<RVGitIgnores> RVGitRepository::sharedExcludes() {
    return ownedIgnores(sharedExcludes_, sharedExcludesPath());
}

std::shared_ptr<RVGitIgnores> RVGitRepository::ownedIgnores(
    RVGitRepositoryPartSlot<RVGitIgnores>& slot, std::optional<std::string> filePath) {
    if (!filePath)
        return nullptr;
    return slot.part(shared_from_this(),
                     [&] { return new RVGitIgnores(weak_from_this(), *std::move(filePath)); });
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
    return command->run() && !command->isCancelled() && command->refs().empty();
}

bool RVGitRepository::isGitSVNRepository() const {
    auto directory = SVNDirectoryPath();
    return directory && RVFileManager::isDirectoryAtPath(*directory);
}

std::optional<std::string> RVGitRepository::contentsOfHEADFile() const {
    const RVContainedFiles files(gitDirectoryPath_);
    std::optional<RVError> error;
    auto contents = files.UTF8Contents("HEAD", maximumSizeOfShortFile, &error);
    // Where refs lie in tables the file is a stand-in, and old gits made a link of it.
    const bool isStandIn = contents && contents->starts_with("ref: refs/heads/.invalid");
    const bool isLink = !contents && error->code() == ELOOP;
    if (!isStandIn && !isLink)
        return contents;
    const RVGitCancellationWatch watch;
    if (auto refName = outputOfGitInGitDirectory("symbolic-ref", {"-q", "HEAD"}))
        return "ref: " + *refName;
    if (watch.isCancelled())
        return std::nullopt;
    return outputOfGitInGitDirectory("rev-parse", {"-q", "--verify", "HEAD"});
}

std::optional<std::string> RVGitRepository::objectFormat() const {
    if (!valid_)
        return std::nullopt;
    // A git that knows of one format alone hands the option back.
    constexpr char option[] = "--show-object-format";
    auto format = outputOfGitInGitDirectory("rev-parse", {option});
    return format == option ? "sha1" : format;
}

std::optional<std::string> RVGitRepository::outputOfGitInGitDirectory(
    const char* gitCommand, const std::vector<std::string>& arguments) const {
    const auto command = RVGitCommand::gitCommandWithGitBinary(RVGitBinary::defaultGitBinary(),
                                                               gitDirectoryPath_, std::nullopt);
    command->setGitCommand(gitCommand);
    command->addGitCommandArguments(arguments);
    if (!command->run() || command->isCancelled())
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(command->standardOutputString());
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
    if (!command->run() || command->isCancelled())
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

std::optional<std::string> RVGitRepository::commonGitDirectoryPath() const {
    if (!gitDirectoryPath_)
        return std::nullopt;
    const auto contents =
        RVContainedFiles(gitDirectoryPath_).UTF8Contents("commondir", maximumSizeOfShortFile);
    const std::string path = stringByTrimmingWhitespaceAndNewline(contents.value_or(""));
    if (path.empty())
        return gitDirectoryPath_;
    return standardizedPath(
        isAbsolutePath(path) ? path : pathByAppendingComponent(*gitDirectoryPath_, path));
}

std::optional<std::string> RVGitRepository::sharedExcludesPath() const {
    const auto directory = commonGitDirectoryPath();
    if (!directory)
        return std::nullopt;
    return pathByAppendingComponent(*directory, "info/exclude");
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
    const auto contents = RVContainedFiles(gitDirectoryPath_)
                              .contents("description", std::numeric_limits<std::size_t>::max());
    if (!contents) {
        fillErrorPlace(error, errorWithPath(RVGitDescriptionReadError, path_));
        return std::nullopt;
    }
    return stringUsingBestEncoding(*contents);
}

bool RVGitRepository::setDescription(const std::string& description, RVErrorPlace error) const {
    const RVContainedFiles files(gitDirectoryPath_);
    if (!files.exists("description") && !files.writeInPlace("description", "")) {
        clearErrorPlace(error);
        return false;
    }
    if (RVFileManager::isWritableFileAtPath(*descriptionPath()) &&
        files.writeInPlace("description", description))
        return true;
    fillErrorPlace(error, errorWithPath(RVGitDescriptionWriteError, path_));
    return false;
}

std::optional<std::string> RVGitRepository::gitDirectoryPathFromGitDirectoryFileLink(
    RVErrorPlace error) const {
    clearErrorPlace(error);
    if (!gitDirectoryPath_)
        return std::nullopt;
    const RVContainedFiles files(pathByDeletingLastComponent(*gitDirectoryPath_));
    const auto contents =
        files.UTF8Contents(lastPathComponent(*gitDirectoryPath_), maximumSizeOfShortFile, error);
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
