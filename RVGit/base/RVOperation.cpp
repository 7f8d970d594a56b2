#include "RVGit/base/RVOperation.h"

#include <thread>
#include <utility>

#include "RVGit/base/RVOperationQueue.h"

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
    for (State state = state_.load(); state != State::Finished; state = state_.load())
        state_.wait(state);
    if (exception_)
        std::rethrow_exception(exception_);
}

void RVOperation::execute() {
    State ready = State::Ready;
    if (!state_.compare_exchange_strong(ready, State::Executing))
        return;
    try {
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
            block(*this);
        } catch (...) {
            if (!exception_)
                exception_ = std::current_exception();
        }
    }
    state_.store(State::Finished);
    state_.notify_all();
}
