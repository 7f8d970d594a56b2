#include "RVGit/base/RVOperationQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "RVGit/base/RVError.h"

namespace {

class FunctionOperation : public RVOperation {
public:
    explicit FunctionOperation(std::function<void()> function) : function_(std::move(function)) {}

private:
    void main() override { function_(); }
    std::function<void()> function_;
};

std::shared_ptr<RVOperation> operation(std::function<void()> function) {
    return std::make_shared<FunctionOperation>(std::move(function));
}

// Holds operations until the test lets them go.
class Gate {
public:
    void open() {
        std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex_);
        ++arrived_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_; });
    }
    void waitForArrivals(int count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this, count] { return arrived_ >= count; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
    int arrived_ = 0;
};

TEST(RVOperationQueueThreadsTest, RunsOperationsInOrderOneAtATimeOnASerialQueue) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    std::vector<int> order;
    for (int number = 0; number < 100; ++number)
        queue->addOperation(operation([&order, number] { order.push_back(number); }));
    queue->waitUntilAllOperationsAreFinished();
    std::vector<int> expected(100);
    for (int number = 0; number < 100; ++number)
        expected[static_cast<std::size_t>(number)] = number;
    EXPECT_EQ(order, expected);
}

TEST(RVOperationQueueThreadsTest, NeverRunsMoreThanTheLimit) {
    RVOperationQueue queue("bounded", 4);
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::atomic<int> done = 0;
    const auto work = [&] {
        const int now = ++running;
        for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        --running;
        ++done;
    };
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 8; ++caller)
        callers.emplace_back([&] {
            for (int count = 0; count < 50; ++count) {
                queue.addOperation(operation(work));
                queue.runOperation(operation(work));
            }
        });
    for (std::thread& caller : callers)
        caller.join();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(done, 800);
    EXPECT_LE(most, 4);
    EXPECT_GE(most, 2);
}

TEST(RVOperationQueueThreadsTest, ARunOnAThreadOfTheQueueTakesNoSecondSlot) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    bool ran = false;
    queue->runBlock([&] {
        EXPECT_TRUE(queue->isCurrent());
        queue->runBlock([&] { ran = true; });
    });
    EXPECT_TRUE(ran);
    EXPECT_FALSE(queue->isCurrent());
}

TEST(RVOperationQueueThreadsTest, NestingAcrossTwoQueuesIsSeenThrough) {
    const auto first = RVOperationQueue::serialQueue("first");
    const auto second = RVOperationQueue::serialQueue("second");
    bool ran = false;
    first->runBlock([&] { second->runBlock([&] { first->runBlock([&] { ran = true; }); }); });
    EXPECT_TRUE(ran);
}

TEST(RVOperationQueueThreadsTest, AnOperationMayWaitForOneThatIsQueuedBehindIt) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    bool ran = false;
    auto outer = operation([&] {
        auto inner = operation([&] { ran = true; });
        queue->addOperation(inner);
        inner->waitUntilFinished();
        EXPECT_TRUE(ran);
    });
    queue->addOperation(outer);
    outer->waitUntilFinished();
    EXPECT_TRUE(ran);
}

TEST(RVOperationQueueThreadsTest, AnExceptionReachesWhoeverWaitsAndTheQueueGoesOn) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    EXPECT_THROW(queue->runBlock([] { throw std::runtime_error("no"); }), std::runtime_error);
    auto failing = operation([] { throw std::runtime_error("no"); });
    queue->addOperation(failing);
    EXPECT_THROW(failing->waitUntilFinished(), std::runtime_error);
    EXPECT_THROW(failing->waitUntilFinished(), std::runtime_error);
    bool ran = false;
    queue->runBlock([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(RVOperationQueueThreadsTest, ACancelledOperationThatWaitsIsFinishedAtOnceAndNeverRuns) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    Gate gate;
    queue->addOperation(operation([&] { gate.pass(); }));
    bool ran = false;
    auto waiting = operation([&] { ran = true; });
    queue->addOperation(waiting);
    gate.waitForArrivals(1);
    waiting->cancel();
    EXPECT_TRUE(waiting->isFinished());
    waiting->waitUntilFinished();
    gate.open();
    queue->waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(ran);
}

bool finishesSoon(const std::shared_ptr<RVOperation>& operation) {
    for (int attempt = 0; attempt < 1000 && !operation->isFinished(); ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return operation->isFinished();
}

TEST(RVOperationQueueThreadsTest, ARunOnTheCallersThreadHandsItsSlotToWhatWasQueuedMeanwhile) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<int> order;
    std::vector<std::shared_ptr<RVOperation>> queued;
    queue->runBlock([&] {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        for (int number = 0; number < 3; ++number) {
            queued.push_back(operation([&order, number] { order.push_back(number); }));
            queue->addOperation(queued.back());
        }
        EXPECT_TRUE(order.empty());
    });
    for (const auto& each : queued)
        ASSERT_TRUE(finishesSoon(each));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    // The slot has come back: another run finds it, and so does what is added.
    auto last = operation([] {});
    queue->addOperation(last);
    EXPECT_TRUE(finishesSoon(last));
    bool ran = false;
    queue->runBlock([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(RVOperationQueueThreadsTest, SlotsAreHandedOnWhereCallersAndWorkersCompete) {
    RVOperationQueue queue("bounded", 2);
    std::atomic<int> ran = 0;
    std::vector<std::shared_ptr<RVOperation>> all;
    std::mutex mutex;
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller)
        callers.emplace_back([&] {
            for (int count = 0; count < 100; ++count) {
                auto added = operation([&] { ++ran; });
                queue.runBlock([&] { queue.addOperation(added); });
                std::lock_guard lock(mutex);
                all.push_back(added);
            }
        });
    for (std::thread& caller : callers)
        caller.join();
    for (const auto& each : all)
        ASSERT_TRUE(finishesSoon(each));
    EXPECT_EQ(ran, 400);
}

TEST(RVOperationQueueThreadsTest, AnOperationThatWaitsForItsOwnEndIsTold) {
    RVOperationQueue queue("bounded", 2);
    std::shared_ptr<RVOperation> own;
    const auto waitsForItself = [&] {
        EXPECT_THROW(own->waitUntilFinished(), RVInternalInconsistencyException);
        EXPECT_THROW(queue.runOperation(own), RVInternalInconsistencyException);
        // By way of another operation on the same thread, too.
        queue.runBlock(
            [&] { EXPECT_THROW(own->waitUntilFinished(), RVInternalInconsistencyException); });
    };
    own = operation(waitsForItself);
    queue.addOperation(own);
    EXPECT_TRUE(finishesSoon(own));
    own = operation(waitsForItself);
    own->start();
    EXPECT_TRUE(finishesSoon(own));
}

TEST(RVOperationQueueThreadsTest, ACompletionBlockThatWaitsForItsOwnOperationIsTold) {
    RVOperationQueue queue("bounded", 2);
    std::atomic<int> told = 0;
    const auto waitsForItself = [&](RVOperation& ended) {
        EXPECT_THROW(ended.waitUntilFinished(), RVInternalInconsistencyException);
        ++told;
    };
    const auto queued = operation([] {});
    queued->setCompletionBlock(waitsForItself);
    queue.addOperation(queued);
    ASSERT_TRUE(finishesSoon(queued));
    const auto started = operation([] {});
    started->setCompletionBlock(waitsForItself);
    started->start();
    ASSERT_TRUE(finishesSoon(started));
    const auto cancelled = operation([] {});
    cancelled->setCompletionBlock(waitsForItself);
    cancelled->cancel();
    EXPECT_EQ(told, 3);
}

TEST(RVOperationQueueThreadsTest, OfOperationsThatWaitForEachOtherOneIsTold) {
    RVOperationQueue queue("bounded", 3);
    std::vector<std::shared_ptr<RVOperation>> ring(3);
    Gate gate;
    std::atomic<int> told = 0;
    for (std::size_t number = 0; number < ring.size(); ++number)
        ring[number] = operation([&, number] {
            gate.pass();
            try {
                ring[(number + 1) % ring.size()]->waitUntilFinished();
            } catch (const RVInternalInconsistencyException&) {
                ++told;
            }
        });
    for (const auto& each : ring)
        queue.addOperation(each);
    gate.waitForArrivals(3);
    gate.open();
    for (const auto& each : ring)
        ASSERT_TRUE(finishesSoon(each));
    EXPECT_EQ(told, 1);
}

TEST(RVOperationQueueThreadsTest, OperationsThatAllWaitForAllDoNotWaitForEachOther) {
    RVOperationQueue queue("bounded", 3);
    Gate gate;
    std::atomic<int> returned = 0;
    std::atomic<bool> otherRan = false;
    std::vector<std::shared_ptr<RVOperation>> waiters;
    for (int number = 0; number < 3; ++number) {
        waiters.push_back(operation([&] {
            gate.pass();
            queue.waitUntilAllOperationsAreFinished();
            EXPECT_TRUE(otherRan);
            ++returned;
        }));
        queue.addOperation(waiters.back());
    }
    queue.addOperation(operation([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        otherRan = true;
    }));
    gate.waitForArrivals(3);
    gate.open();
    for (const auto& each : waiters)
        ASSERT_TRUE(finishesSoon(each));
    EXPECT_EQ(returned, 3);
    queue.waitUntilAllOperationsAreFinished();
}

TEST(RVOperationQueueThreadsTest, CancellingAllReachesWaitingAndRunningOperations) {
    RVOperationQueue queue("bounded", 2);
    Gate gate;
    std::vector<std::shared_ptr<RVOperation>> operations;
    for (int number = 0; number < 6; ++number)
        operations.push_back(operation([&] { gate.pass(); }));
    for (const auto& each : operations)
        queue.addOperation(each);
    gate.waitForArrivals(2);
    queue.cancelAllOperations();
    gate.open();
    queue.waitUntilAllOperationsAreFinished();
    for (const auto& each : operations)
        EXPECT_TRUE(each->isCancelled() && each->isFinished());
}

TEST(RVOperationQueueThreadsTest, WaitingForAllOnAThreadOfTheQueueLeavesItselfOut) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    bool returned = false;
    queue->runBlock([&] {
        queue->waitUntilAllOperationsAreFinished();
        returned = true;
    });
    EXPECT_TRUE(returned);
}

TEST(RVOperationQueueThreadsTest, WaitingForAllOnTheOnlySlotRunsWhatWaitsForIt) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    std::vector<int> order;
    queue->runBlock([&] {
        for (int number = 0; number < 3; ++number)
            queue->addOperation(operation([&order, number] { order.push_back(number); }));
        queue->waitUntilAllOperationsAreFinished();
        EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    });
}

TEST(RVOperationQueueThreadsTest, WorkOutlivesTheQueue) {
    Gate gate;
    std::atomic<bool> ran = false;
    auto late = operation([&] {
        gate.pass();
        ran = true;
    });
    {
        RVOperationQueue queue("short-lived", 1);
        queue.addOperation(late);
        gate.waitForArrivals(1);
    }
    gate.open();
    late->waitUntilFinished();
    EXPECT_TRUE(ran);
}

TEST(RVOperationThreadsTest, StartRunsWithoutAQueueAndReturns) {
    Gate gate;
    auto started = operation([&] { gate.pass(); });
    started->start();
    gate.waitForArrivals(1);
    EXPECT_FALSE(started->isFinished());
    gate.open();
    started->waitUntilFinished();
    EXPECT_TRUE(started->isFinished());
}

TEST(RVOperationThreadsTest, RunsOnceOnly) {
    const auto queue = RVOperationQueue::serialQueue("serial");
    int runs = 0;
    auto once = operation([&] { ++runs; });
    queue->runOperation(once);
    queue->runOperation(once);
    EXPECT_EQ(runs, 1);
}

TEST(RVOperationQueueThreadsTest, TheCompletionBlockIsCalledOnceHoweverTheWorkEnds) {
    int calls = 0;
    std::exception_ptr exception;
    const auto watched = [&](std::function<void()> work) {
        auto result = operation(std::move(work));
        result->setCompletionBlock([&](RVOperation& ended) {
            ++calls;
            exception = ended.exception();
        });
        return result;
    };
    const auto queue = RVOperationQueue::serialQueue("serial");

    queue->runOperation(watched([&] { EXPECT_EQ(calls, 0); }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(exception, nullptr);

    EXPECT_THROW(queue->runOperation(watched([] { throw std::runtime_error("raised"); })),
                 std::runtime_error);
    EXPECT_EQ(calls, 2);
    EXPECT_NE(exception, nullptr);

    const auto cancelled = watched([] { FAIL(); });
    cancelled->cancel();
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(exception, nullptr);
    EXPECT_TRUE(cancelled->isFinished());
    queue->runOperation(cancelled);
    cancelled->cancel();
    EXPECT_EQ(calls, 3);
}

TEST(RVOperationQueueThreadsTest, WaitersComeBackBehindTheCompletionBlockAndGetWhatItRaises) {
    bool called = false;
    const auto raising = operation([] {});
    raising->setCompletionBlock([&](RVOperation& ended) {
        EXPECT_FALSE(ended.isFinished());
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        called = true;
        throw std::runtime_error("raised by the block");
    });
    raising->start();
    EXPECT_THROW(raising->waitUntilFinished(), std::runtime_error);
    EXPECT_TRUE(called);
}

}  // namespace
