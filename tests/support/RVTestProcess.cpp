#include "tests/support/RVTestProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace {

[[noreturn]] void throwSystemError(int code, const std::string& what) {
    throw std::system_error(code, std::generic_category(), what);
}

/// A file in memory: with one at each standard stream the child can be waited for without a loop
/// that drains it.
class MemoryFile {
public:
    explicit MemoryFile(const char* name) : descriptor_(memfd_create(name, MFD_CLOEXEC)) {
        if (descriptor_ < 0) {
            throwSystemError(errno, "memfd_create");
        }
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(descriptor_); }

    [[nodiscard]] int descriptor() const { return descriptor_; }

    void fill(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
            if (count < 0) {
                throwSystemError(errno, "write");
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        lseek(descriptor_, 0, SEEK_SET);
    }

    [[nodiscard]] std::string contents() const {
        std::string bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t count = pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                        static_cast<off_t>(done));
            if (count <= 0) {
                throwSystemError(errno, "pread");
            }
            done += static_cast<std::size_t>(count);
        }
        return bytes;
    }

private:
    int descriptor_;
};

}  // namespace

RVTestProcessResult runTestProcess(const std::vector<std::string>& commandLine,
                                   const std::string& directory,
                                   const std::optional<std::string>& standardInput) {
    const MemoryFile input("input");
    const MemoryFile output("output");
    const MemoryFile errorOutput("error");
    if (standardInput) {
        input.fill(*standardInput);
    }

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (standardInput) {
        posix_spawn_file_actions_adddup2(&actions, input.descriptor(), STDIN_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, output.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errorOutput.descriptor(), STDERR_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());

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
        throwSystemError(code, "cannot launch " + commandLine.at(0) + " in " + directory);
    }

    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            throwSystemError(errno, "waitpid");
        }
    }
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), output.contents(),
            errorOutput.contents()};
}

std::string findTestProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "/usr/local/bin:/usr/bin:/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        const std::string candidate = directory + "/" + name;
        if (!directory.empty() && access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
    }
    throw std::runtime_error("no " + name + " in PATH");
}
