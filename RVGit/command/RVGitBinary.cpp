#include "RVGit/command/RVGitBinary.h"

#include <cstdlib>
#include <mutex>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCommand.h"

namespace {

struct DefaultBinary {
    std::mutex mutex;
    std::shared_ptr<RVGitBinary> gitBinary;
};

DefaultBinary& defaultBinary() {
    static RVNeverDestroyed<DefaultBinary> binary;
    return *binary;
}

}  // namespace

RVGitBinary::RVGitBinary(std::string path, std::optional<std::string> libexecPath)
    : path_(std::move(path)),
      libexecPath_(std::move(libexecPath)),
      launchPath_(RVFileManager::absolutePath(path_)) {
    if (libexecPath_) {
        launchLibexecPath_ = RVFileManager::absolutePath(*libexecPath_);
        std::string prefix =
            pathByDeletingLastComponent(pathByDeletingLastComponent(*launchLibexecPath_));
        perlLibraryPath_ = pathByAppendingComponent(prefix, "lib/perl5/site_perl");
        templatesDirectoryPath_ = pathByAppendingComponent(prefix, "share/git-core/templates");
    }
    version_ = gitBinaryVersion();
    valid_ = isVersionAtLeast(minimumVersionRequirement());
}

std::shared_ptr<RVGitBinary> RVGitBinary::gitBinaryWithPath(
    std::string path, std::optional<std::string> libexecPath) {
    return std::make_shared<RVGitBinary>(std::move(path), std::move(libexecPath));
}

bool RVGitBinary::isGitBinaryAtPath(const std::string& path) {
    return RVFileManager::isExecutableFileAtPath(path) && RVGitBinary(path).isValid();
}

std::shared_ptr<RVGitBinary> RVGitBinary::defaultGitBinary() {
    std::lock_guard lock(defaultBinary().mutex);
    return defaultBinary().gitBinary;
}

void RVGitBinary::setDefaultGitBinary(std::shared_ptr<RVGitBinary> gitBinary) {
    std::lock_guard lock(defaultBinary().mutex);
    defaultBinary().gitBinary = std::move(gitBinary);
}

std::string RVGitBinary::minimumVersionRequirement() {
    return "2.1.0";
}

bool RVGitBinary::isVersionAtLeast(std::string_view required) const {
    return version_ && isGreaterThanOrEqualToVersion(*version_, required);
}

void RVGitBinary::setAdditionalPaths(std::vector<std::string> paths) {
    additionalPaths_ = std::move(paths);
    launchAdditionalPaths_.clear();
    for (const std::string& path : additionalPaths_)
        launchAdditionalPaths_.push_back(RVFileManager::absolutePath(path));
}

std::optional<std::string> RVGitBinary::gitBinaryVersion() {
    if (!RVFileManager::isExecutableFileAtPath(launchPath_))
        return std::nullopt;
    // Not owned: the command is waited for, and the constructor has no owner to name yet.
    std::shared_ptr<RVGitBinary> self(std::shared_ptr<void>(), this);
    auto command = RVGitCommand::gitCommandWithGitBinary(self);
    command->addGitOption("--version");
    if (!command->run())
        return std::nullopt;
    const std::string& output = command->standardOutputString();
    if (!output.starts_with("git version"))
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(
        stringByReplacingOccurrences(output, "git version", ""));
}

std::vector<std::string> RVGitBinary::defaultOptionsForUntrustedRepositories() {
    return {"-c", "core.fsmonitor=false",    "-c", "core.hooksPath=/dev/null",
            "-c", "protocol.ext.allow=never"};
}

std::shared_ptr<RVGitBinary> RVGitBinary::gitBinaryInPath() {
    const char* path = std::getenv("PATH");
    for (const std::string& directory : componentsSeparatedByString(path ? path : "", ":")) {
        // A relative directory would be searched in whatever repository this process stands in.
        if (!isAbsolutePath(directory))
            continue;
        const std::string candidate = pathByAppendingComponent(directory, "git");
        if (RVFileManager::isExecutableFileAtPath(candidate))
            return gitBinaryWithPath(candidate);
    }
    return nullptr;
}
