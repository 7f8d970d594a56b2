#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVOperation.h"

/// Runs operations in the order in which they were added, at most so many at a time. Threads
/// exist only while there is work. Safe on any thread; work that is under way when the queue is
/// destroyed goes on to its end.
class RVGIT_EXPORT RVOperationQueue {
public:
    RVOperationQueue(std::string name, std::size_t maxConcurrentOperationCount);
    ~RVOperationQueue();
    RVOperationQueue(const RVOperationQueue&) = delete;
    RVOperationQueue& operator=(const RVOperationQueue&) = delete;

    [[nodiscard]] static std::unique_ptr<RVOperationQueue> queueWithMaxConcurrentOperationCount(
        std::string name, std::size_t count);
    /// A queue that runs one operation at a time.
    [[nodiscard]] static std::unique_ptr<RVOperationQueue> serialQueue(std::string name);

    [[nodiscard]] const std::string& name() const;
    [[nodiscard]] std::size_t maxConcurrentOperationCount() const;

    void addOperation(std::shared_ptr<RVOperation> operation);
    /// Runs the operation under the queue's limit, waits for its end and rethrows the exception
    /// that ended it, if any. If a slot is free and nobody waits, it runs on the calling thread,
    /// which saves two thread switches. On a thread of the queue itself it runs there and then
    /// and takes no second slot.
    void runOperation(const std::shared_ptr<RVOperation>& operation);
    /// The same for a piece of code.
    void runBlock(const std::function<void()>& block);

    void cancelAllOperations();
    /// How often that has been called; it counts from before the first of them is cancelled.
    [[nodiscard]] std::uint64_t numberOfCancellations() const;
    /// On a thread of the queue, operations that this thread is running are not waited for, nor
    /// others that wait for all themselves, and those that have no slot yet are run there and then.
    /// An operation that waits for all must not be waited for by another one: neither would end.
    void waitUntilAllOperationsAreFinished();

    /// Whether the calling thread is running an operation of this queue.
    [[nodiscard]] bool isCurrent() const;

private:
    friend class RVOperation;
    struct State;
    /// If the calling thread runs an operation of the queue that the given one waits in, runs it.
    static void runIfWaitingInCurrentQueue(const RVOperation& operation);

    std::shared_ptr<State> state_;
};
