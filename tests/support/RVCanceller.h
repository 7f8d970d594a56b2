#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "RVGit/command/RVGitCommandQueue.h"

/// Cancels all commands of the shared queue, or does what else it is given, on a thread of its own,
/// as soon as there is a file at the path: a git or a hook that the test has made leaves it there,
/// and goes on waiting. Ends with the scope.
class RVCanceller {
public:
    explicit RVCanceller(std::string path, std::function<void()> cancel = cancelSharedQueue)
        : thread_([this, path = std::move(path), cancel = std::move(cancel)] {
              while (!isOver_) {
                  if (std::filesystem::exists(path)) {
                      cancel();
                      return;
                  }
                  std::this_thread::sleep_for(std::chrono::milliseconds(2));
              }
          }) {}
    RVCanceller(const RVCanceller&) = delete;
    RVCanceller& operator=(const RVCanceller&) = delete;
    ~RVCanceller() {
        isOver_ = true;
        thread_.join();
    }

private:
    static void cancelSharedQueue() { RVGitCommandQueue::sharedQueue().cancelAllCommands(); }

    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};
