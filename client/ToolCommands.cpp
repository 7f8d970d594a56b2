#include <condition_variable>
#include <mutex>
#include <utility>

#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"

namespace {

/// Waits for the one call of a tool's handler.
class ToolEnding {
public:
    [[nodiscard]] std::function<void(int, const std::optional<RVError>&)> handler() {
        return [this](int exitCode, const std::optional<RVError>& error) {
            const std::lock_guard lock(mutex_);
            exitCode_ = exitCode;
            error_ = error;
            ended_ = true;
            changed_.notify_all();
        };
    }
    /// The exit code; throws the error.
    int wait() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return ended_; });
        if (error_)
            throw Failure{*error_};
        return exitCode_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ended_ = false;
    int exitCode_ = 0;
    std::optional<RVError> error_;
};

/// The tool of the user's configuration, unless one was named.
std::string toolName(const std::optional<std::string>& given,
                     const std::shared_ptr<RVGitRepository>& repository,
                     std::initializer_list<const char*> configKeys) {
    if (given)
        return *given;
    for (const char* key : configKeys)
        if (const auto name = repository->config()->lastValueForConfigKey(key))
            return *name;
    throw UsageError(std::string("no tool is named, by --tool or by \"") + *configKeys.begin() +
                     "\" in the configuration");
}

}  // namespace

void runMergeTool(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                  Output&) {
    std::optional<std::string> name;
    bool keepsBackupFiles = false;
    std::vector<std::string> paths;
    while (const auto word = arguments.next()) {
        if (*word == "--tool")
            name = arguments.valueOf(*word);
        else if (*word == "--keep-backup")
            keepsBackupFiles = true;
        else if (*word == "--")
            for (std::string& path : arguments.rest())
                paths.push_back(std::move(path));
        else if (word->starts_with('-'))
            throw UsageError("mergetool has no option " + *word);
        else
            paths.push_back(*word);
    }
    if (paths.empty())
        throw UsageError("mergetool needs a path");
    const auto tool = RVGitMergeTool::mergeToolWithRepository(
        repository, toolName(name, repository, {"merge.tool"}));
    tool->setKeepsBackupFiles(keepsBackupFiles);
    takePathsLiterally();
    whenInterrupted([tool] { tool->cancel(); });
    for (const std::string& path : paths) {
        ToolEnding ending;
        tool->launchWithFilePath(path, ending.handler());
        // Only one that was cancelled ends in another way without an error.
        if (ending.wait() != 0)
            return;
    }
}

void runDiffTool(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output) {
    std::optional<std::string> name;
    unsigned options = 0;
    std::vector<std::string> revisions;
    std::optional<std::vector<std::string>> paths;
    while (const auto word = arguments.next()) {
        if (*word == "--tool")
            name = arguments.valueOf(*word);
        else if (*word == "--dir-diff")
            options |= RVGitDiffToolOptionPerformsDirectoryDiff;
        else if (*word == "--staged")
            options |= RVGitDiffToolOptionComparesIndex;
        else if (*word == "--")
            paths = arguments.rest();
        else if (word->starts_with('-'))
            throw UsageError("difftool has no option " + *word);
        else
            revisions.push_back(*word);
    }
    const auto tool = RVGitDiffTool::diffToolWithRepository(
        repository, toolName(name, repository, {"diff.tool", "merge.tool"}));
    takePathsLiterally();
    whenInterrupted([tool] { tool->cancel(); });
    ToolEnding ending;
    tool->launchWithRevisions(std::move(revisions), std::move(paths), options, ending.handler());
    (void)ending.wait();
    if (const auto text = tool->standardOutput())
        output << *text;
}
