#include "RVGit/archive/RVGitArchiver.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "RVGit/archive/RVGitArchiveCommand.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitError.h"

RVGitArchiver::RVGitArchiver(std::shared_ptr<RVGitRepository> repository, std::string revision,
                             std::optional<std::vector<std::string>> filePaths,
                             std::string destination)
    : repository_(std::move(repository)),
      revision_(std::move(revision)),
      filePaths_(std::move(filePaths)),
      destination_(std::move(destination)) {
    requireParameter(repository_ != nullptr, "repository");
}

RVGitArchiver::~RVGitArchiver() = default;

void RVGitArchiver::archiveWithProgressHandler(ProgressHandler progressHandler,
                                               CompletionHandler completionHandler) {
    std::unique_lock lock(mutex_);
    requireIdle();
    progressHandler_ = std::move(progressHandler);
    completionHandler_ = std::move(completionHandler);
    startLocked(lock);
}

void RVGitArchiver::start() {
    std::unique_lock lock(mutex_);
    requireIdle();
    startLocked(lock);
}

void RVGitArchiver::requireIdle() const {
    if (running_)
        throw RVInternalInconsistencyException("Archiver is already running.");
}

void RVGitArchiver::startLocked(std::unique_lock<std::mutex>& lock) {
    // Throws for an archiver that no shared pointer owns, and that would never hear of the end.
    const std::weak_ptr<RVGitArchiver> weakSelf = shared_from_this();
    const auto command = RVGitArchiveCommand::gitArchiveCommandWithRepository(
        repository_, revision_, filePaths_, destination_);
    command->setProgressHandler([weakSelf](RVGitCommandProgress& progress) {
        if (const auto self = weakSelf.lock())
            self->gitCommandDidUpdateProgress(progress);
    });
    // The command's own completion handler hears nothing of a launch that failed.
    command->setCompletionBlock([weakSelf](RVOperation& operation) {
        if (const auto self = weakSelf.lock())
            self->gitCommandDidFinish(static_cast<RVGitArchiveCommand&>(operation));
    });
    command_ = command;
    error_.reset();
    archivedFilePaths_.clear();
    running_ = true;
    lock.unlock();
    try {
        command->start();
    } catch (...) {
        // There is no thread to be had.
        lock.lock();
        running_ = false;
        idle_.notify_all();
        throw;
    }
}

void RVGitArchiver::cancel() {
    std::shared_ptr<RVGitArchiveCommand> command;
    {
        std::lock_guard lock(mutex_);
        if (running_)
            command = command_;
    }
    if (command)
        command->cancel();
}

void RVGitArchiver::waitUntilFinished() {
    std::unique_lock lock(mutex_);
    const std::shared_ptr<RVGitArchiveCommand> command = running_ ? command_ : nullptr;
    // A handler can wait for the run that it has started, but not for itself.
    const bool isHandler = std::count(deliveringThreads_.begin(), deliveringThreads_.end(),
                                      std::this_thread::get_id()) > 0;
    idle_.wait(lock, [&] { return !running_ && (isHandler || deliveringThreads_.empty()); });
    lock.unlock();
    if (command)
        command->waitUntilFinished();
}

bool RVGitArchiver::run(RVErrorPlace error) {
    start();
    const auto command = this->command();
    waitUntilFinished();
    // The run may have ended before it was waited for.
    command->waitUntilFinished();
    const std::optional<RVError> failure = this->error();
    if (failure)
        fillErrorPlace(error, *failure);
    return !failure;
}

bool RVGitArchiver::isRunning() const {
    std::lock_guard lock(mutex_);
    return running_;
}

void RVGitArchiver::setProgressHandler(ProgressHandler handler) {
    std::lock_guard lock(mutex_);
    progressHandler_ = std::move(handler);
}

void RVGitArchiver::setCompletionHandler(CompletionHandler handler) {
    std::lock_guard lock(mutex_);
    completionHandler_ = std::move(handler);
}

std::optional<RVError> RVGitArchiver::error() const {
    std::lock_guard lock(mutex_);
    return error_;
}

std::vector<std::string> RVGitArchiver::archivedFilePaths() const {
    std::lock_guard lock(mutex_);
    return archivedFilePaths_;
}

std::shared_ptr<RVGitArchiveCommand> RVGitArchiver::command() const {
    std::lock_guard lock(mutex_);
    return command_;
}

void RVGitArchiver::gitCommandDidUpdateProgress(RVGitCommandProgress& progress) {
    std::unique_lock lock(mutex_);
    const ProgressHandler handler = progressHandler_;
    lock.unlock();
    if (handler)
        handler(progress.currentProgressOutput(), progress.overallProgress());
}

void RVGitArchiver::gitCommandDidFinish(RVGitArchiveCommand& command) {
    std::unique_lock lock(mutex_);
    error_ = command.error();
    // Something raised is no success for a handler, which nothing can be rethrown to.
    if (!error_ && command.exception())
        error_ = gitErrorWithException(command.exception());
    archivedFilePaths_ = command.archivedFilePathsResult();
    const CompletionHandler handler = completionHandler_;
    const auto filePaths = archivedFilePaths_;
    const auto error = error_;
    running_ = false;
    deliveringThreads_.push_back(std::this_thread::get_id());
    idle_.notify_all();
    lock.unlock();
    const auto becomeIdle = [&] {
        lock.lock();
        deliveringThreads_.erase(std::find(deliveringThreads_.begin(), deliveringThreads_.end(),
                                           std::this_thread::get_id()));
        idle_.notify_all();
    };
    try {
        if (handler)
            handler(filePaths, error);
    } catch (...) {
        becomeIdle();
        throw;
    }
    becomeIdle();
}
