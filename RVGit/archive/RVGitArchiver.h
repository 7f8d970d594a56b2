#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitArchiveCommand;
class RVGitCommandProgress;
class RVGitRepository;

/// Packs a revision, or chosen paths of it, into an archive file, and tells which files went in;
/// the format is that of the destination's extension: zip, tar, tgz or tar.gz. A run can go on in
/// the background or be waited for, and the same archiver can run again afterwards.
///
/// Made by std::make_shared. All operations may be called on any thread; the handlers run on the
/// command's thread. The run holds its archiver weakly: one that is released while it runs hears
/// nothing more, and the run goes on to its end.
///
/// Errors are those of RVGitArchiveCommand, and code 100 where git could not be launched. A
/// cancelled run has no error, and leaves no archive that was not there before.
class RVGIT_EXPORT RVGitArchiver : public std::enable_shared_from_this<RVGitArchiver> {
public:
    /// The text that git has printed so far, and how far it has come, from 0 to 1.
    using ProgressHandler = std::function<void(const std::string& output, double progress)>;
    /// The archived paths, and the error if there is one.
    using CompletionHandler = std::function<void(const std::vector<std::string>& filePaths,
                                                 const std::optional<RVError>& error)>;

    /// The repository is required. Without file paths everything is packed. A relative destination
    /// is below the repository's path.
    RVGitArchiver(std::shared_ptr<RVGitRepository> repository, std::string revision,
                  std::optional<std::vector<std::string>> filePaths, std::string destination);
    ~RVGitArchiver();
    RVGitArchiver(const RVGitArchiver&) = delete;
    RVGitArchiver& operator=(const RVGitArchiver&) = delete;

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& revision() const { return revision_; }
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }
    [[nodiscard]] const std::string& destination() const { return destination_; }

    /// Keeps the handlers and starts. The completion handler is called exactly once, however the
    /// run ends, and may start the next one. Kept for compatibility: the progress handler is never
    /// called, since `git archive` reports no progress. Throws RVInternalInconsistencyException,
    /// "Archiver is already running.", while it runs.
    void archiveWithProgressHandler(ProgressHandler progressHandler,
                                    CompletionHandler completionHandler);
    /// Starts in the background, beside the shared queue and its limit, with the handlers that are
    /// set. Throws as archiveWithProgressHandler() does.
    void start();
    /// Ends a run early; it comes to its completion like any other.
    void cancel();
    /// Returns at once when nothing is running, else when the completion handler has returned; in
    /// that handler, at once. Rethrows what was raised while the command was prepared:
    /// RVGitCommandArgumentsOverflowException for too many paths.
    void waitUntilFinished();
    /// Starts and waits. False and a filled place if there is an error.
    bool run(RVErrorPlace error = nullptr);

    [[nodiscard]] bool isRunning() const;
    void setProgressHandler(ProgressHandler handler);
    void setCompletionHandler(CompletionHandler handler);

    // Of the finished run, until the next one starts.

    [[nodiscard]] std::optional<RVError> error() const;
    /// Those of RVGitArchiveCommand.
    [[nodiscard]] std::vector<std::string> archivedFilePaths() const;
    /// Null before the first run.
    [[nodiscard]] std::shared_ptr<RVGitArchiveCommand> command() const;

    // What the command calls, and nobody else.

    void gitCommandDidUpdateProgress(RVGitCommandProgress& progress);
    void gitCommandDidFinish(RVGitArchiveCommand& command);

private:
    void startLocked(std::unique_lock<std::mutex>& lock);
    void requireIdle() const;

    const std::shared_ptr<RVGitRepository> repository_;
    const std::string revision_;
    const std::optional<std::vector<std::string>> filePaths_;
    const std::string destination_;

    mutable std::mutex mutex_;
    std::condition_variable idle_;
    bool running_ = false;
    /// Those that are in the completion handler: of two runs where one starts the other.
    std::vector<std::thread::id> deliveringThreads_;
    ProgressHandler progressHandler_;
    CompletionHandler completionHandler_;
    std::optional<RVError> error_;
    std::vector<std::string> archivedFilePaths_;
    std::shared_ptr<RVGitArchiveCommand> command_;
};
