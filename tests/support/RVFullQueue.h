#pragma once

#include <atomic>
#include <cstddef>
#include <future>
#include <thread>
#include <vector>

#include "RVGit/base/RVOperationQueue.h"

/// Holds every slot of a queue for as long as it lives: whatever is to run then runs beside it.
class RVFullQueue {
public:
    explicit RVFullQueue(RVOperationQueue& queue) {
        const std::size_t slots = queue.maxConcurrentOperationCount();
        std::atomic<std::size_t> holding = 0;
        for (std::size_t index = 0; index < slots; ++index)
            holders_.emplace_back([&queue, &holding, released = released_] {
                queue.runBlock([&] {
                    ++holding;
                    released.wait();
                });
            });
        while (holding < slots)
            std::this_thread::yield();
    }
    ~RVFullQueue() {
        release_.set_value();
        for (std::thread& holder : holders_)
            holder.join();
    }
    RVFullQueue(const RVFullQueue&) = delete;
    RVFullQueue& operator=(const RVFullQueue&) = delete;

private:
    std::promise<void> release_;
    std::shared_future<void> released_ = release_.get_future().share();
    std::vector<std::thread> holders_;
};
