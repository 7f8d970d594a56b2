#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>

#include "RVGit/base/RVExport.h"

/// A piece of work that runs once, on a queue or on a thread of its own. It is made by
/// std::make_shared. All public operations may be called on any thread.
class RVGIT_EXPORT RVOperation : public std::enable_shared_from_this<RVOperation> {
public:
    virtual ~RVOperation();
    RVOperation(const RVOperation&) = delete;
    RVOperation& operator=(const RVOperation&) = delete;

    /// Runs the work on a thread of its own, without any queue, and returns at once.
    void start();

    /// Asks the work to end early. Work that has not begun never does and counts as finished.
    virtual void cancel();
    [[nodiscard]] bool isCancelled() const { return cancelled_.load(std::memory_order_acquire); }
    [[nodiscard]] bool isFinished() const {
        return state_.load(std::memory_order_acquire) == State::Finished;
    }

    /// Blocks until the work has finished, and rethrows the exception that ended it, if any. On
    /// a thread of the queue that the operation still waits in, it is run there and then, so that
    /// a queue cannot wait for itself. Throws RVInternalInconsistencyException where the wait could
    /// never end: in a handler, a hook or the completion block of the operation itself, or of one
    /// that it waits for.
    void waitUntilFinished();

    using CompletionBlock = std::function<void(RVOperation&)>;
    /// Called once when the work has ended, in whatever way: done, failed, not launched, raised
    /// something, or cancelled before it began. On the thread that ended it, which is that of
    /// cancel() in the last case, and before those who wait come back, so that it cannot wait for
    /// its own operation. What it raises reaches those who wait. To be set before the operation is
    /// started or queued.
    void setCompletionBlock(CompletionBlock block) { completionBlock_ = std::move(block); }
    /// What has ended the work and is rethrown to those who wait; null if nothing has. To be read
    /// in the completion block and once the operation has finished.
    [[nodiscard]] const std::exception_ptr& exception() const { return exception_; }

protected:
    RVOperation() = default;

    /// The work itself. An exception ends it and is rethrown to whoever waits.
    virtual void main() = 0;

private:
    friend class RVOperationQueue;
    class Execution;
    class Wait;
    enum class State { Ready, Executing, Finished };

    /// Runs main() unless the operation was cancelled or run before; never throws.
    void execute();
    void finish();

    std::atomic<State> state_ = State::Ready;
    std::atomic<bool> cancelled_ = false;
    std::exception_ptr exception_;
    /// What the thread that runs this operation waits for; guarded by the lock of all waits.
    const RVOperation* awaited_ = nullptr;
    CompletionBlock completionBlock_;
};
