#include "RVGit/base/RVOperationQueue.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

class BlockOperation : public RVOperation {
public:
    explicit BlockOperation(const std::function<void()>& block) : block_(block) {}

private:
    void main() override { block_(); }
    const std::function<void()>& block_;
};

}  // namespace

struct RVOperationQueue::State {
    // One for each operation that this thread is running, innermost first: a hook of one queue's
    // operation may run operations of another queue on the same thread.
    struct Frame {
        State* queue;
        Frame* outer;
        bool waitsForAll = false;
    };
    static thread_local Frame* innermostFrame;

    const std::string name;
    const std::size_t limit;
    std::mutex mutex;
    std::condition_variable finished;
    std::deque<std::shared_ptr<RVOperation>> waiting;
    std::vector<std::shared_ptr<RVOperation>> running;
    // How many of those are in a wait for all others.
    std::size_t numberOfWaitsForAll = 0;
    // Threads that hold a slot: workers, and callers that run their own operation.
    std::size_t slotsInUse = 0;
    std::atomic<std::uint64_t> cancellations = 0;

    State(std::string queueName, std::size_t queueLimit)
        : name(std::move(queueName)), limit(std::max<std::size_t>(queueLimit, 1)) {}

    bool isCurrent() const {
        for (const Frame* frame = innermostFrame; frame; frame = frame->outer)
            if (frame->queue == this)
                return true;
        return false;
    }

    // Says of the operations of this queue that the thread is running that they wait for all
    // others; gives those of which it was not said yet.
    std::vector<Frame*> beginWaitForAll() {
        std::vector<Frame*> frames;
        for (Frame* frame = innermostFrame; frame; frame = frame->outer)
            if (frame->queue == this && !frame->waitsForAll)
                frames.push_back(frame);
        setWaitsForAll(frames, true);
        return frames;
    }
    void endWaitForAll(const std::vector<Frame*>& frames) { setWaitsForAll(frames, false); }
    void setWaitsForAll(const std::vector<Frame*>& frames, bool waits) {
        for (Frame* frame : frames)
            frame->waitsForAll = waits;
        numberOfWaitsForAll += waits ? frames.size() : 0;
        numberOfWaitsForAll -= waits ? 0 : frames.size();
        finished.notify_all();
    }

    // The lock is held when this is called and when it returns.
    void execute(const std::shared_ptr<RVOperation>& operation,
                 std::unique_lock<std::mutex>& lock) {
        running.push_back(operation);
        lock.unlock();
        Frame frame{this, innermostFrame, false};
        innermostFrame = &frame;
        operation->execute();
        innermostFrame = frame.outer;
        lock.lock();
        running.erase(std::find(running.begin(), running.end(), operation));
        finished.notify_all();
    }

    // Gives a held slot to the work that waits, on a new thread, or back.
    static void releaseSlot(const std::shared_ptr<State>& state,
                            std::unique_lock<std::mutex>& lock) {
        if (state->waiting.empty()) {
            --state->slotsInUse;
            return;
        }
        lock.unlock();
        startWorker(state);
    }

    static void startWorker(const std::shared_ptr<State>& state) {
        try {
            std::thread([state] { work(*state); }).detach();
        } catch (...) {
            // No thread to be had: the work is done here rather than never.
            work(*state);
        }
    }

    static void work(State& state) {
        std::unique_lock lock(state.mutex);
        while (!state.waiting.empty())
            state.executeNextWaiting(lock);
        --state.slotsInUse;
    }

    // As execute() has it.
    void executeNextWaiting(std::unique_lock<std::mutex>& lock) {
        std::shared_ptr<RVOperation> operation = std::move(waiting.front());
        waiting.pop_front();
        execute(operation, lock);
        // Its destruction is none of the queue's business.
        lock.unlock();
        operation.reset();
        lock.lock();
    }
};

thread_local RVOperationQueue::State::Frame* RVOperationQueue::State::innermostFrame = nullptr;

RVOperationQueue::RVOperationQueue(std::string name, std::size_t maxConcurrentOperationCount)
    : state_(std::make_shared<State>(std::move(name), maxConcurrentOperationCount)) {}

RVOperationQueue::~RVOperationQueue() = default;

std::unique_ptr<RVOperationQueue> RVOperationQueue::queueWithMaxConcurrentOperationCount(
    std::string name, std::size_t count) {
    return std::make_unique<RVOperationQueue>(std::move(name), count);
}

std::unique_ptr<RVOperationQueue> RVOperationQueue::serialQueue(std::string name) {
    return std::make_unique<RVOperationQueue>(std::move(name), 1);
}

const std::string& RVOperationQueue::name() const {
    return state_->name;
}

std::size_t RVOperationQueue::maxConcurrentOperationCount() const {
    return state_->limit;
}

void RVOperationQueue::addOperation(std::shared_ptr<RVOperation> operation) {
    {
        std::lock_guard lock(state_->mutex);
        state_->waiting.push_back(std::move(operation));
        if (state_->slotsInUse == state_->limit)
            return;
        ++state_->slotsInUse;
    }
    State::startWorker(state_);
}

void RVOperationQueue::runOperation(const std::shared_ptr<RVOperation>& operation) {
    // Held here, since the work may outlive the queue.
    const std::shared_ptr<State> state = state_;
    std::unique_lock lock(state->mutex);
    if (state->isCurrent()) {
        state->execute(operation, lock);
    } else if (state->slotsInUse < state->limit && state->waiting.empty()) {
        ++state->slotsInUse;
        state->execute(operation, lock);
        State::releaseSlot(state, lock);
    } else {
        lock.unlock();
        addOperation(operation);
    }
    if (lock.owns_lock())
        lock.unlock();
    operation->waitUntilFinished();
}

void RVOperationQueue::runBlock(const std::function<void()>& block) {
    runOperation(std::make_shared<BlockOperation>(block));
}

void RVOperationQueue::cancelAllOperations() {
    std::vector<std::shared_ptr<RVOperation>> operations;
    {
        std::lock_guard lock(state_->mutex);
        // Not before: who reads the number and then adds an operation that is cancelled here would
        // have read the new one.
        ++state_->cancellations;
        operations.assign(state_->waiting.begin(), state_->waiting.end());
        operations.insert(operations.end(), state_->running.begin(), state_->running.end());
    }
    for (const auto& operation : operations)
        operation->cancel();
}

std::uint64_t RVOperationQueue::numberOfCancellations() const {
    return state_->cancellations;
}

void RVOperationQueue::waitUntilAllOperationsAreFinished() {
    // Held here, since what is run below may outlive the queue.
    const std::shared_ptr<State> state = state_;
    const bool isCurrent = state->isCurrent();
    std::unique_lock lock(state->mutex);
    const std::vector<State::Frame*> frames = state->beginWaitForAll();
    // This thread may hold the only slot, so what waits for one is run here.
    while (isCurrent && !state->waiting.empty())
        state->executeNextWaiting(lock);
    state->finished.wait(lock, [&] {
        return state->waiting.empty() &&
               state->running.size() <= (isCurrent ? state->numberOfWaitsForAll : 0);
    });
    state->endWaitForAll(frames);
}

bool RVOperationQueue::isCurrent() const {
    return state_->isCurrent();
}

void RVOperationQueue::runIfWaitingInCurrentQueue(const RVOperation& operation) {
    for (State::Frame* frame = State::innermostFrame; frame; frame = frame->outer) {
        State& state = *frame->queue;
        std::unique_lock lock(state.mutex);
        auto found = std::find_if(state.waiting.begin(), state.waiting.end(),
                                  [&](const auto& waiting) { return waiting.get() == &operation; });
        if (found != state.waiting.end()) {
            std::shared_ptr<RVOperation> waiting = std::move(*found);
            state.waiting.erase(found);
            state.execute(waiting, lock);
            return;
        }
    }
}
