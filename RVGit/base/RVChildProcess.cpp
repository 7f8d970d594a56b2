#include "RVGit/base/RVChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVSystem.h"

using Clock = std::chrono::steady_clock;

namespace {

// What a pipe holds by default, and what it is enlarged to once as much has come: fewer switches
// between the child and the reader.
constexpr std::size_t pipeCapacity = std::size_t{64} << 10;
constexpr std::size_t largePipeCapacity = std::size_t{1} << 20;
constexpr std::size_t smallestRead = std::size_t{16} << 10;

struct Pipe {
    RVDescriptor readEnd;
    RVDescriptor writeEnd;

    // 0 or errno's value.
    int open() { return RVSystem::makePipe(readEnd, writeEnd); }
};

int openForReading(const std::string& path, RVDescriptor& descriptor) {
    // Without O_NONBLOCK a named pipe would hold the caller until somebody writes to it.
    descriptor =
        RVDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!descriptor.isOpen() || fstat(descriptor.number(), &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    fcntl(descriptor.number(), F_SETFL, fcntl(descriptor.number(), F_GETFL) & ~O_NONBLOCK);
    return RVSystem::moveAboveStandardStreams(descriptor);
}

int duplicate(int number, RVDescriptor& descriptor) {
    descriptor = RVDescriptor(fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    return descriptor.isOpen() ? 0 : errno;
}

void makeNonBlocking(const RVDescriptor& descriptor) {
    fcntl(descriptor.number(), F_SETFL, fcntl(descriptor.number(), F_GETFL) | O_NONBLOCK);
}

// Keeps SIGPIPE from this thread while a pipe is written, and takes back the one that a reader who
// went away has caused. The process's own settings are never touched.
class BrokenPipeSignalBlock {
public:
    BrokenPipeSignalBlock() {
        sigemptyset(&brokenPipe_);
        sigaddset(&brokenPipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &brokenPipe_, &previous_);
    }
    ~BrokenPipeSignalBlock() {
        const timespec now{};
        if (!wasPending_)
            while (sigtimedwait(&brokenPipe_, nullptr, &now) < 0 && errno == EINTR) {
            }
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }
    BrokenPipeSignalBlock(const BrokenPipeSignalBlock&) = delete;
    BrokenPipeSignalBlock& operator=(const BrokenPipeSignalBlock&) = delete;

private:
    sigset_t brokenPipe_;
    sigset_t previous_;
    bool wasPending_;
};

// Whether the system would get another text than the launch holds.
bool launchHoldsNUL(const RVChildProcess::Launch& launch) {
    const auto textHoldsNUL = [](const std::string& text) { return holdsNUL(text); };
    const std::string* inputPath = launch.standardInput.filePath();
    return holdsNUL(launch.path) || (inputPath && holdsNUL(*inputPath)) ||
           (launch.workingDirectory && holdsNUL(*launch.workingDirectory)) ||
           std::ranges::any_of(launch.arguments, textHoldsNUL) || launch.environment.holdsNUL();
}

// The texts of a list as execve() takes them; they must outlive it.
class ArgumentPointers {
public:
    ArgumentPointers(const std::string& first, const std::vector<std::string>& others) {
        pointers_.reserve(others.size() + 2);
        add(first);
        for (const std::string& each : others)
            add(each);
        pointers_.push_back(nullptr);
    }
    char* const* data() const { return pointers_.data(); }

private:
    void add(const std::string& text) { pointers_.push_back(const_cast<char*>(text.c_str())); }
    std::vector<char*> pointers_;
};

int spawn(const RVChildProcess::Launch& launch, const RVDescriptor& input,
          const RVDescriptor& output, const RVDescriptor& error, pid_t& pid) {
    // Relative to this process, as it was when somebody looked whether the file is there; the child
    // would take it relative to its working directory.
    const std::string path = RVFileManager::absolutePath(launch.path);
    const ArgumentPointers arguments(launch.path, launch.arguments);
    const RVChildEnvironment::Pointers environment(launch.environment);
    return RVSystem::spawn({path.c_str(), arguments.data(), environment.data(),
                            launch.workingDirectory ? launch.workingDirectory->c_str() : nullptr,
                            input.number(), output.number(), error.number()},
                           pid);
}

}  // namespace

// Feeds and drains one child until it has exited and its output is read.
class RVChildProcess::Pump {
public:
    Pump(pid_t pid, RVDescriptor input, std::string_view inputBytes, int wakeDescriptor)
        : pid_(pid),
          exitWatch_(RVSystem::exitWatchOfChild(pid)),
          input_(std::move(input)),
          inputBytes_(inputBytes),
          wakeDescriptor_(wakeDescriptor) {
        if (input_.isOpen())
            makeNonBlocking(input_);
    }
    // For an exception that is no handler's: the child goes with it.
    ~Pump() {
        if (reaped_)
            return;
        kill(-pid_, SIGKILL);
        reap();
    }
    Pump(const Pump&) = delete;
    Pump& operator=(const Pump&) = delete;

    void addOutput(RVDescriptor descriptor, RVDataBuffer& buffer, const OutputHandler& handler) {
        makeNonBlocking(descriptor);
        outputs_[outputCount_++] = Output{std::move(descriptor), &buffer, &handler};
    }

    void run() {
        while (!isDone()) {
            waitForEvents();
            const Clock::time_point now = Clock::now();
            if (wakeEvents_ && !cancelledAt_)
                beginTermination(now);
            if (cancelledAt_ && !killed_ && now >= *cancelledAt_ + cancelGrace) {
                kill(-pid_, SIGKILL);
                killed_ = true;
            }
            if (inputEvents_)
                feedInput();
            for (Output& output : outputs_)
                if (output.events)
                    drainUnlessItThrows(output);
            if (!exitedAt_ && hasExited()) {
                exitedAt_ = lastByteAt_ = Clock::now();
                isQuiet_ = false;
            }
        }
        // What a cancelled child has started goes with it. The child is not reaped yet, so the
        // process group cannot be anybody else's.
        if (cancelledAt_)
            kill(-pid_, SIGKILL);
        reap();
    }

    int exitCode() const { return exitCode_; }
    const std::exception_ptr& exception() const { return exception_; }

private:
    struct Output {
        RVDescriptor descriptor;
        RVDataBuffer* buffer = nullptr;
        const OutputHandler* handler = nullptr;
        short events = 0;
        bool pipeEnlarged = false;
    };

    bool hasOpenOutputs() const {
        return outputs_[0].descriptor.isOpen() || outputs_[1].descriptor.isOpen();
    }

    bool isDone() const {
        if (!exitedAt_)
            return false;
        if (!hasOpenOutputs())
            return true;
        // A slow handler, or this thread being held up, is not silence: only once nothing is left
        // to read does the grace count.
        const Clock::time_point now = Clock::now();
        return (isQuiet_ && now >= lastByteAt_ + outputGrace) || now >= *exitedAt_ + outputLimit;
    }

    void waitForEvents() {
        // A closed descriptor is -1, which poll ignores.
        pollfd events[] = {{input_.number(), POLLOUT, 0},
                           {outputs_[0].descriptor.number(), POLLIN, 0},
                           {outputs_[1].descriptor.number(), POLLIN, 0},
                           {exitedAt_ ? -1 : exitWatch_.number(), POLLIN, 0},
                           {cancelledAt_ ? -1 : wakeDescriptor_, POLLIN, 0}};
        const int count = poll(events, std::size(events), pollTimeout());
        if (count < 0)
            for (pollfd& event : events)
                event.revents = 0;
        isQuiet_ = count == 0;
        inputEvents_ = events[0].revents;
        outputs_[0].events = events[1].revents;
        outputs_[1].events = events[2].revents;
        exitEvents_ = events[3].revents;
        wakeEvents_ = events[4].revents;
    }

    int pollTimeout() const {
        using std::chrono::milliseconds;
        std::optional<Clock::time_point> deadline;
        if (exitedAt_)
            deadline = std::min(lastByteAt_ + outputGrace, *exitedAt_ + outputLimit);
        else if (cancelledAt_ && !killed_)
            deadline = *cancelledAt_ + cancelGrace;
        int timeout = -1;
        if (deadline) {
            const auto left = std::chrono::ceil<milliseconds>(*deadline - Clock::now());
            timeout = static_cast<int>(std::max(left, milliseconds(0)).count());
        }
        // Where the system has no descriptor for a process, its exit is looked for.
        constexpr int exitPollInterval = 10;
        if (!exitedAt_ && !exitWatch_.isOpen())
            timeout = timeout < 0 ? exitPollInterval : std::min(timeout, exitPollInterval);
        return timeout;
    }

    void beginTermination(Clock::time_point now) {
        cancelledAt_ = now;
        kill(-pid_, SIGTERM);
    }

    void feedInput() {
        while (!inputBytes_.empty()) {
            const ssize_t written = write(input_.number(), inputBytes_.data(), inputBytes_.size());
            if (written >= 0) {
                inputBytes_.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno == EAGAIN) {
                return;
            } else if (errno != EINTR) {
                // The reader went away, which is its right: its exit code says what it thinks.
                break;
            }
        }
        input_.close();
    }

    void drainUnlessItThrows(Output& output) {
        try {
            drain(output);
        } catch (...) {
            // The second time it is no handler: there is no memory for what the child still says.
            if (exception_)
                output.descriptor.close();
            else
                exception_ = std::current_exception();
            if (!cancelledAt_)
                beginTermination(Clock::now());
        }
    }

    // Goes on while much is there, since to ask costs as much as to read; but no longer than the
    // other output and the input can wait for their turn.
    void drain(Output& output) {
        std::size_t taken = 0;
        std::size_t count = 0;
        do {
            count = readOnce(output);
            taken += count;
        } while (count >= smallestRead && taken < largePipeCapacity);
    }

    // How many bytes have come; 0 where there are none now, or none any more.
    std::size_t readOnce(Output& output) {
        const std::size_t most = output.pipeEnlarged ? largePipeCapacity : pipeCapacity;
        // What is left is enough while little comes: most often it is the end that is read.
        std::size_t room = std::min(most, output.buffer->tailCapacity());
        if (room < smallestRead)
            room = most;
        char* tail = output.buffer->reserveTail(room);
        const ssize_t result = read(output.descriptor.number(), tail, room);
        if (result < 0 && (errno == EAGAIN || errno == EINTR))
            return 0;
        if (result <= 0) {
            output.descriptor.close();
            return 0;
        }
        const auto count = static_cast<std::size_t>(result);
        output.buffer->commitTail(count);
        if (exitedAt_)
            lastByteAt_ = Clock::now();
        // Not only where one read gives so much: a child that writes less at a time would be waited
        // for, and wait, at every write.
        if (!output.pipeEnlarged && output.buffer->size() >= pipeCapacity) {
            RVSystem::enlargePipe(output.descriptor, static_cast<int>(largePipeCapacity));
            output.pipeEnlarged = true;
        }
        if (*output.handler && !exception_)
            (*output.handler)({tail, count});
        return count;
    }

    bool hasExited() const {
        if (exitWatch_.isOpen())
            return exitEvents_ != 0;
        siginfo_t info{};
        // Where SIGCHLD is ignored, the child may be gone before there is a descriptor for it.
        if (waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
            return errno == ECHILD;
        return info.si_pid == pid_;
    }

    void reap() {
        reaped_ = true;
        int status = 0;
        pid_t reaped;
        while ((reaped = waitpid(pid_, &status, 0)) < 0 && errno == EINTR) {
        }
        if (reaped == pid_)
            exitCode_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    const pid_t pid_;
    RVDescriptor exitWatch_;
    RVDescriptor input_;
    std::string_view inputBytes_;
    const int wakeDescriptor_;
    Output outputs_[2];
    std::size_t outputCount_ = 0;
    short inputEvents_ = 0;
    short exitEvents_ = 0;
    short wakeEvents_ = 0;
    std::optional<Clock::time_point> cancelledAt_;
    std::optional<Clock::time_point> exitedAt_;
    Clock::time_point lastByteAt_;
    bool isQuiet_ = false;
    bool killed_ = false;
    bool reaped_ = false;
    int exitCode_ = unknownExitCode;
    std::exception_ptr exception_;
};

// Lets terminate() reach the pump while it runs.
class RVChildProcess::WakeRegistration {
public:
    WakeRegistration(RVChildProcess& process, const RVSystem::Waker& waker) : process_(process) {
        std::lock_guard lock(process_.wakeMutex_);
        process_.wake_ = [&waker] { waker.wake(); };
        if (process_.terminated_)
            waker.wake();
    }
    ~WakeRegistration() {
        std::lock_guard lock(process_.wakeMutex_);
        process_.wake_ = nullptr;
    }
    WakeRegistration(const WakeRegistration&) = delete;
    WakeRegistration& operator=(const WakeRegistration&) = delete;

private:
    RVChildProcess& process_;
};

int RVChildProcess::run(const Launch& launch, const OutputHandler& standardOutputHandler,
                        const OutputHandler& standardErrorHandler) {
    if (launchHoldsNUL(launch))
        return EINVAL;
    Pipe output;
    Pipe error;
    Pipe input;
    int failure = output.open();
    if (!failure)
        failure = error.open();
    const RVData* inputBytes = launch.standardInput.bytes();
    if (!failure && inputBytes)
        failure = input.open();
    if (!failure && launch.standardInput.filePath())
        failure = openForReading(*launch.standardInput.filePath(), input.readEnd);
    if (!failure && launch.standardInput.descriptor() >= 0)
        failure = duplicate(launch.standardInput.descriptor(), input.readEnd);
    RVSystem::Waker waker;
    if (!failure)
        failure = waker.open();
    pid_t pid = 0;
    if (!failure)
        failure = spawn(launch, input.readEnd, output.writeEnd, error.writeEnd, pid);
    if (failure)
        return failure;
    input.readEnd.close();
    output.writeEnd.close();
    error.writeEnd.close();

    std::optional<BrokenPipeSignalBlock> signalBlock;
    if (inputBytes)
        signalBlock.emplace();
    {
        Pump pump(pid, std::move(input.writeEnd), inputBytes ? *inputBytes : std::string_view(),
                  waker.number());
        pump.addOutput(std::move(output.readEnd), *standardOutput_, standardOutputHandler);
        pump.addOutput(std::move(error.readEnd), *standardError_, standardErrorHandler);
        const WakeRegistration registration(*this, waker);
        pump.run();
        exitCode_ = pump.exitCode();
        handlerException_ = pump.exception();
    }
    standardOutput_->shrinkToFit();
    standardError_->shrinkToFit();
    return 0;
}

void RVChildProcess::terminate() {
    std::lock_guard lock(wakeMutex_);
    terminated_ = true;
    if (wake_)
        wake_();
}
