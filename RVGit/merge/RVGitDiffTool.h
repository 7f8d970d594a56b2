#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitDiffToolCommand;
class RVGitRepository;
class RVOperationQueue;

/// Bits of RVGitDiffTool's options.
enum RVGitDiffToolOption : unsigned {
    /// The tool is run once, with two directories, and not once for each file.
    RVGitDiffToolOptionPerformsDirectoryDiff = 1,
    /// What is staged, in the place of the working tree.
    RVGitDiffToolOptionComparesIndex = 2,
};

/// Shows changes in another program, by `git difftool`, without blocking the caller. Launches of
/// one object run one after the other, on a queue of its own, which is not counted against the
/// limit of the commands. All operations may be called on any thread; what is under way when the
/// object is destroyed goes on to its end.
class RVGIT_EXPORT RVGitDiffTool {
public:
    using CompletionHandler =
        std::function<void(int exitCode, const std::optional<RVError>& error)>;

    /// The repository is required. The name is that of a tool that git knows or the configuration
    /// defines.
    RVGitDiffTool(std::shared_ptr<RVGitRepository> repository, std::string name);
    ~RVGitDiffTool();
    RVGitDiffTool(const RVGitDiffTool&) = delete;
    RVGitDiffTool& operator=(const RVGitDiffTool&) = delete;
    [[nodiscard]] static std::shared_ptr<RVGitDiffTool> diffToolWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] RVOperationQueue& queue() const { return *queue_; }
    /// That of the latest launch; null before the first.
    [[nodiscard]] std::shared_ptr<RVGitDiffToolCommand> diffToolCommand() const;

    // Of the latest launch: 0 and absent before it has ended. In the handler of an earlier one they
    // speak of the latest, too.

    [[nodiscard]] int exitCode() const;
    [[nodiscard]] std::optional<std::string> standardOutput() const;
    [[nodiscard]] std::optional<std::string> standardError() const;

    /// Puts the tool on the queue and returns at once: for revisions as `git diff` takes them, and
    /// those of the files that are given, if any. The options are bits of RVGitDiffToolOption. The
    /// handler, which may be absent, is called exactly once, on a thread of the queue, when the
    /// launch has ended in whatever way: without an error after cancel(), too; with code 100 if git
    /// could not be launched.
    void launchWithRevisions(std::optional<std::vector<std::string>> revisions,
                             std::optional<std::vector<std::string>> filePaths, unsigned options,
                             CompletionHandler completionHandler);
    /// Ends the latest launch, be it running or waiting; nothing where there is none.
    void cancel();

private:
    /// Null until it has finished.
    [[nodiscard]] std::shared_ptr<RVGitDiffToolCommand> finishedCommand() const;

    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::unique_ptr<RVOperationQueue> queue_;
    mutable std::mutex mutex_;
    std::shared_ptr<RVGitDiffToolCommand> diffToolCommand_;
};
