#include "bench/support/RVBareProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace {

[[noreturn]] void throwSystemError(int code, const std::string& what) {
    throw std::system_error(code, std::generic_category(), what);
}

struct Pipe {
    int ends[2] = {-1, -1};

    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throwSystemError(errno, "pipe2");
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    void closeEnd(int end) {
        if (ends[end] >= 0) {
            close(ends[end]);
            ends[end] = -1;
        }
    }
};

void drain(Pipe& output, Pipe& errorOutput, RVBareResult& result) {
    static char buffer[1 << 16];
    pollfd descriptors[] = {{output.ends[0], POLLIN, 0}, {errorOutput.ends[0], POLLIN, 0}};
    std::size_t* const counts[] = {&result.outputBytes, &result.errorBytes};
    for (int open = 2; open > 0;) {
        if (poll(descriptors, 2, -1) < 0 && errno != EINTR) {
            throwSystemError(errno, "poll");
        }
        for (int index = 0; index < 2; ++index) {
            if (descriptors[index].fd < 0 || descriptors[index].revents == 0) {
                continue;
            }
            const ssize_t count = read(descriptors[index].fd, buffer, sizeof buffer);
            if (count > 0) {
                *counts[index] += static_cast<std::size_t>(count);
            } else if (count == 0) {
                descriptors[index].fd = -1;
                --open;
            }
        }
    }
}

}  // namespace

RVBareResult runBare(const std::vector<std::string>& commandLine, const std::string& directory) {
    const auto start = std::chrono::steady_clock::now();
    RVBareResult result;
    Pipe output;
    Pipe errorOutput;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errorOutput.ends[1], STDERR_FILENO);
    if (!directory.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    }
    std::vector<char*> arguments;
    for (const std::string& argument : commandLine) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t child = -1;
    const int code =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (code != 0) {
        throwSystemError(code, "cannot launch " + commandLine.at(0));
    }
    output.closeEnd(1);
    errorOutput.closeEnd(1);
    drain(output, errorOutput, result);

    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            throwSystemError(errno, "waitpid");
        }
    }
    result.exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}
