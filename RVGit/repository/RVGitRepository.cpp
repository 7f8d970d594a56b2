#include "RVGit/repository/RVGitRepository.h"

#include "RVGit/base/RVPath.h"
#include "RVGit/repository/RVGitConfig.h"

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

std::optional<RVURL> RVGitRepository::fileURL() const {
    if (path_.empty())
        return std::nullopt;
    return RVURL::fileURLWithPath(path_);
}

std::string RVGitRepository::name() const {
    return lastPathComponent(path_);
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
