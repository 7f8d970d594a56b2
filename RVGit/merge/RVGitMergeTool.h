#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitMergeToolCommand;
class RVGitRepository;
class RVOperationQueue;

/// Has a person resolve conflicts in another program, by `git mergetool`, without blocking the
/// caller. Launches of one object run one after the other, on a queue of its own, which is not
/// counted against the limit of the commands. All operations may be called on any thread; what is
/// under way when the object is destroyed goes on to its end.
class RVGIT_EXPORT RVGitMergeTool {
public:
    using CompletionHandler =
        std::function<void(int exitCode, const std::optional<RVError>& error)>;

    /// The repository is required. The name is that of a tool that git knows or the configuration
    /// defines.
    RVGitMergeTool(std::shared_ptr<RVGitRepository> repository, std::string name);
    ~RVGitMergeTool();
    RVGitMergeTool(const RVGitMergeTool&) = delete;
    RVGitMergeTool& operator=(const RVGitMergeTool&) = delete;
    [[nodiscard]] static std::shared_ptr<RVGitMergeTool> mergeToolWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] RVOperationQueue& queue() const { return *queue_; }
    /// Whether the file with its conflict markers stays, as "NAME.orig"; false at first. Counts for
    /// later launches.
    [[nodiscard]] bool keepsBackupFiles() const;
    void setKeepsBackupFiles(bool keeps);
    /// That of the latest launch; null before the first.
    [[nodiscard]] std::shared_ptr<RVGitMergeToolCommand> mergeToolCommand() const;

    /// Puts the tool on the queue, for one conflicted file, and returns at once. The handler, which
    /// may be absent, is called exactly once, on a thread of the queue, when the launch has ended
    /// in whatever way: without an error if the file was resolved, and after cancel(); with code
    /// 2004 if the tool did not resolve it, 100 if git could not be launched.
    void launchWithFilePath(const std::string& filePath, CompletionHandler completionHandler);
    /// Ends the latest launch, be it running or waiting; nothing where there is none.
    void cancel();

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::unique_ptr<RVOperationQueue> queue_;
    mutable std::mutex mutex_;
    bool keepsBackupFiles_ = false;
    std::shared_ptr<RVGitMergeToolCommand> mergeToolCommand_;
};
