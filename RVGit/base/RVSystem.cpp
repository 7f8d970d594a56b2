#include "RVGit/base/RVSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#ifdef RVGIT_PORTABLE
#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <climits>
#else
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#endif

int RVSystem::moveAboveStandardStreams(RVDescriptor& descriptor) {
    if (descriptor.number() > STDERR_FILENO)
        return 0;
    const int moved = fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        return errno;
    descriptor = RVDescriptor(moved);
    return 0;
}

namespace {

int renameAfterALook(const char* path, const char* newPath) {
    struct stat status;
    if (lstat(newPath, &status) == 0)
        return EEXIST;
    return rename(path, newPath) == 0 ? 0 : errno;
}

}  // namespace

#ifndef RVGIT_PORTABLE

const int RVSystem::openDirectoryFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

int RVSystem::makePipe(RVDescriptor& readEnd, RVDescriptor& writeEnd) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    readEnd = RVDescriptor(ends[0]);
    writeEnd = RVDescriptor(ends[1]);
    const int error = moveAboveStandardStreams(readEnd);
    return error ? error : moveAboveStandardStreams(writeEnd);
}

void RVSystem::enlargePipe(const RVDescriptor& pipe, int capacity) {
    fcntl(pipe.number(), F_SETPIPE_SZ, capacity);
}

RVDescriptor RVSystem::exitWatchOfChild(pid_t pid) {
    return RVDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

int RVSystem::renameWithoutReplacing(const char* path, const char* newPath) {
    if (renameat2(AT_FDCWD, path, AT_FDCWD, newPath, RENAME_NOREPLACE) == 0)
        return 0;
    // Not every file system knows the flag.
    return errno == EINVAL || errno == ENOSYS ? renameAfterALook(path, newPath) : errno;
}

int RVSystem::Waker::open() {
    readEnd_ = RVDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return readEnd_.isOpen() ? 0 : errno;
}

void RVSystem::Waker::wake() const {
    eventfd_write(readEnd_.number(), 1);
}

namespace {

class SpawnSettings {
public:
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    SpawnSettings() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
};

}  // namespace

// The descriptors are all above 2, so that dup2 onto 0, 1 and 2 in turn overwrites none of them.
int RVSystem::spawn(const Spawn& spawn, pid_t& pid) {
    SpawnSettings settings;
    posix_spawn_file_actions_t* actions = &settings.actions;
    // Where there is no memory for one of them, the child would run in another place, or with more
    // open than it is to have.
    int failure =
        spawn.standardInput >= 0
            ? posix_spawn_file_actions_adddup2(actions, spawn.standardInput, STDIN_FILENO)
            : posix_spawn_file_actions_addopen(actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (!failure)
        failure = posix_spawn_file_actions_adddup2(actions, spawn.standardOutput, STDOUT_FILENO);
    if (!failure)
        failure = posix_spawn_file_actions_adddup2(actions, spawn.standardError, STDERR_FILENO);
    if (!failure)
        failure = posix_spawn_file_actions_addclosefrom_np(actions, STDERR_FILENO + 1);
    if (!failure && spawn.workingDirectory)
        failure = posix_spawn_file_actions_addchdir_np(actions, spawn.workingDirectory);
    if (failure)
        return failure;

    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&settings.attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&settings.attributes, &signals);
    posix_spawnattr_setflags(&settings.attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    return posix_spawn(&pid, spawn.path, actions, &settings.attributes, spawn.arguments,
                       spawn.environment);
}

RVDescriptor RVSystem::openUniqueFile(std::string& pathTemplate) {
    return RVDescriptor(::mkostemp(pathTemplate.data(), O_CLOEXEC));
}

#else  // The stand-ins.

const int RVSystem::openDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

namespace {

void closeInChildren(int descriptor) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

// What may be called between fork() and execve() is what a signal handler may call: nothing here
// allocates or locks. Returns errno's value, if at all.
int becomeChild(const RVSystem::Spawn& spawn, int statusDescriptor) {
    setsid();
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number)
        sigaction(number, &standard, nullptr);
    if (spawn.workingDirectory && chdir(spawn.workingDirectory) != 0)
        return errno;
    const int input =
        spawn.standardInput >= 0 ? spawn.standardInput : open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input < 0 || dup2(input, STDIN_FILENO) < 0 ||
        dup2(spawn.standardOutput, STDOUT_FILENO) < 0 ||
        dup2(spawn.standardError, STDERR_FILENO) < 0)
        return errno;
    // /dev/null may have become descriptor 0 itself, which dup2 then leaves as it is.
    fcntl(STDIN_FILENO, F_SETFD, 0);

    // poll() says of many descriptors at once which are open.
    constexpr int most = 256;
    const long limit = std::min<long>(sysconf(_SC_OPEN_MAX), INT_MAX - most);
    for (int first = STDERR_FILENO + 1; first < limit; first += most) {
        pollfd descriptors[most];
        for (int index = 0; index < most; ++index)
            descriptors[index] = {first + index, 0, 0};
        if (poll(descriptors, most, 0) < 0)
            for (pollfd& descriptor : descriptors)
                descriptor.revents = 0;
        for (const pollfd& descriptor : descriptors)
            if (!(descriptor.revents & POLLNVAL) && descriptor.fd != statusDescriptor)
                close(descriptor.fd);
    }

    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(spawn.path, spawn.arguments, spawn.environment);
    return errno;
}

}  // namespace

int RVSystem::makePipe(RVDescriptor& readEnd, RVDescriptor& writeEnd) {
    int ends[2];
    if (pipe(ends) != 0)
        return errno;
    readEnd = RVDescriptor(ends[0]);
    writeEnd = RVDescriptor(ends[1]);
    for (RVDescriptor* end : {&readEnd, &writeEnd}) {
        closeInChildren(end->number());
        if (const int error = moveAboveStandardStreams(*end))
            return error;
    }
    return 0;
}

void RVSystem::enlargePipe(const RVDescriptor&, int) {}

RVDescriptor RVSystem::exitWatchOfChild(pid_t) {
    return RVDescriptor();
}

int RVSystem::renameWithoutReplacing(const char* path, const char* newPath) {
    return renameAfterALook(path, newPath);
}

int RVSystem::Waker::open() {
    const int error = makePipe(readEnd_, writeEnd_);
    if (!error)
        // A pipe that is full wakes as well as one that holds a byte.
        fcntl(writeEnd_.number(), F_SETFL, O_NONBLOCK);
    return error;
}

void RVSystem::Waker::wake() const {
    while (write(writeEnd_.number(), "", 1) < 0 && errno == EINTR) {
    }
}

int RVSystem::spawn(const Spawn& spawn, pid_t& pid) {
    RVDescriptor statusReadEnd;
    RVDescriptor statusWriteEnd;
    if (const int error = makePipe(statusReadEnd, statusWriteEnd))
        return error;
    // No handler of this process is to run in the child.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    pid = fork();
    const int forkError = pid < 0 ? errno : 0;
    if (pid == 0) {
        const int error = becomeChild(spawn, statusWriteEnd.number());
        while (write(statusWriteEnd.number(), &error, sizeof error) < 0 && errno == EINTR) {
        }
        _exit(127);
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    if (pid < 0)
        return forkError;
    statusWriteEnd.close();
    int error = 0;
    ssize_t count;
    while ((count = read(statusReadEnd.number(), &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (count != static_cast<ssize_t>(sizeof error))
        return 0;
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    return error;
}

RVDescriptor RVSystem::openUniqueFile(std::string& pathTemplate) {
    RVDescriptor file(::mkstemp(pathTemplate.data()));
    if (file.isOpen())
        closeInChildren(file.number());
    return file;
}

#endif
