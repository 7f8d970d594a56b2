#include "RVGit/base/RVOperation.h"

#include <mutex>
#include <thread>
#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"

// One for each operation that this thread is running, or whose completion block it is in, innermost
// first.
class RVOperation::Execution {
public:
    explicit Execution(RVOperation& operation) : operation_(operation), outer_(innermost_) {
        innermost_ = this;
    }
    ~Execution() { innermost_ = outer_; }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    static const Execution* innermost() { return innermost_; }
    const Execution* outer() const { return outer_; }
    RVOperation& operation() const { return operation_; }

private:
    static thread_local const Execution* innermost_;
    RVOperation& operation_;
    const Execution* const outer_;
};

thread_local const RVOperation::Execution* RVOperation::Execution::innermost_ = nullptr;

// Says of all operations that this thread is running what they wait for now. Threads that run none
// can take no part in a circle.
class RVOperation::Wait {
public:
    explicit Wait(const RVOperation& awaited) {
        if (!Execution::innermost())
            return;
        const std::lock_guard lock(mutex());
        for (const RVOperation* next = &awaited; next; next = next->awaited_)
            if (isRunningHere(*next))
                throw RVInternalInconsistencyException(
                    "An operation waits for its own end, or for one that waits for it");
        setAwaited(&awaited);
    }
    ~Wait() {
        if (!Execution::innermost())
            return;
        const std::lock_guard lock(mutex());
        setAwaited(nullptr);
    }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

private:
    static std::mutex& mutex() {
        static RVNeverDestroyed<std::mutex> mutex;
        return *mutex;
    }
    static bool isRunningHere(const RVOperation& operation) {
        for (const Execution* each = Execution::innermost(); each; each = each->outer())
            if (&each->operation() == &operation)
                return true;
        return false;
    }
    static void setAwaited(const RVOperation* awaited) {
        for (const Execution* each = Execution::innermost(); each; each = each->outer())
            each->operation().awaited_ = awaited;
    }
};

RVOperation::~RVOperation() = default;

void RVOperation::start() {
    std::thread([self = shared_from_this()] { self->execute(); }).detach();
}

void RVOperation::cancel() {
    cancelled_.store(true, std::memory_order_release);
    State ready = State::Ready;
    if (state_.compare_exchange_strong(ready, State::Executing))
        finish();
}

void RVOperation::waitUntilFinished() {
    RVOperationQueue::runIfWaitingInCurrentQueue(*this);
    if (!isFinished()) {
        const Wait wait(*this);
        for (State state = state_.load(); state != State::Finished; state = state_.load())
            state_.wait(state);
    }
    if (exception_)
        std::rethrow_exception(exception_);
}

void RVOperation::execute() {
    State ready = State::Ready;
    if (!state_.compare_exchange_strong(ready, State::Executing))
        return;
    try {
        const Execution execution(*this);
        main();
    } catch (...) {
        exception_ = std::current_exception();
    }
    finish();
}

void RVOperation::finish() {
    // Taken out first: the block may hold the operation that holds it.
    if (const CompletionBlock block = std::exchange(completionBlock_, nullptr)) {
        try {
            const Execution execution(*this);
            block(*this);
        } catch (...) {
            if (!exception_)
                exception_ = std::current_exception();
        }
    }
    state_.store(State::Finished);
    state_.notify_all();
}
