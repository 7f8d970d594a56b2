#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVChildEnvironment.h"
#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVStandardInput.h"
#include "RVGit/base/RVTypes.h"

/// One run of one child process: launch, feed, drain, reap. The child has a session of its own,
/// so it has no terminal to ask on; default signals; and the descriptors 0, 1 and 2 alone.
///
/// Exit and end of output are two events. Where something that the child has started still holds
/// a pipe after the child has exited, reading goes on until `outputGrace` has passed without a
/// byte, or `outputLimit` in all, and then stops.
class RVGIT_EXPORT RVChildProcess {
public:
    static constexpr std::chrono::milliseconds outputGrace{250};
    static constexpr std::chrono::milliseconds outputLimit{10'000};
    /// What exitCode() is where the system does not tell: this process ignores SIGCHLD, or somebody
    /// else in it has waited for the child.
    static constexpr int unknownExitCode = 255;
    /// How long a cancelled child may take to end after SIGTERM before SIGKILL follows.
    static constexpr std::chrono::milliseconds cancelGrace{2'000};

    struct Launch {
        /// A relative one is taken from this process's current directory, not the child's.
        std::string path;
        std::vector<std::string> arguments;
        RVChildEnvironment environment;
        /// Absent: that of this process.
        std::optional<std::string> workingDirectory;
        RVStandardInput standardInput;
    };

    /// Called on the thread of run() with the bytes that have just arrived.
    using OutputHandler = std::function<void(std::string_view bytes)>;

    RVChildProcess() = default;
    RVChildProcess(const RVChildProcess&) = delete;
    RVChildProcess& operator=(const RVChildProcess&) = delete;

    /// Launches the child and blocks until it has exited and its output is read. 0, or the errno
    /// value with which the launch failed: missing or unusable executable, working directory or
    /// input file; or EINVAL, if a path, an argument or a variable holds a NUL, where the system
    /// would cut it off. An exception of a handler ends the child as terminate() does: it
    /// has its grace to clean up, and its output is read to the end, but no handler is called any
    /// more. The exception is kept in handlerException().
    [[nodiscard]] int run(const Launch& launch, const OutputHandler& standardOutputHandler = {},
                          const OutputHandler& standardErrorHandler = {});

    /// Ends a running child: SIGTERM to its process group, and SIGKILL after `cancelGrace`. A child
    /// that has not been launched yet is ended as soon as it is. Any thread.
    void terminate();

    /// The exit status, or 128 + N for a child that was killed by signal N.
    [[nodiscard]] int exitCode() const { return exitCode_; }
    /// The first exception of a handler; null if there was none.
    [[nodiscard]] const std::exception_ptr& handlerException() const { return handlerException_; }
    [[nodiscard]] const RVDataBuffer& standardOutput() const { return *standardOutput_; }
    [[nodiscard]] const RVDataBuffer& standardError() const { return *standardError_; }
    /// For whoever wants to keep the output beyond the life of this object.
    [[nodiscard]] std::shared_ptr<const RVDataBuffer> sharedStandardOutput() const {
        return standardOutput_;
    }

private:
    class Pump;
    class WakeRegistration;
    std::shared_ptr<RVDataBuffer> standardOutput_ = std::make_shared<RVDataBuffer>();
    std::shared_ptr<RVDataBuffer> standardError_ = std::make_shared<RVDataBuffer>();
    int exitCode_ = 0;
    std::exception_ptr handlerException_;
    std::mutex wakeMutex_;
    /// Empty unless a child runs.
    std::function<void()> wake_;
    bool terminated_ = false;
};
