#include "RVGit/base/RVFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <random>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVSystem.h"

namespace {

/// Fills the place with errno's failure, for a caller that returns false or nothing.
std::nullopt_t failWithErrno(const std::string& path, RVErrorPlace error) {
    fillErrorPlace(error, posixError(errno, path));
    return std::nullopt;
}

/// Sets errno for a path that holds a NUL: cut off there it would name another file.
bool isUnusable(const std::string& path) {
    if (!holdsNUL(path))
        return false;
    errno = EINVAL;
    return true;
}

std::string temporaryPathTemplate() {
    return pathByAppendingComponent(RVFileManager::temporaryDirectory(), "rvgit-XXXXXX");
}

std::optional<struct stat> statusOfFile(const std::string& path) {
    struct stat status;
    if (isUnusable(path) || ::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status;
}

bool hasAccess(const std::string& path, int mode) {
    return !isUnusable(path) && ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

// What is to be removed at the end, and the process that said so: one that was forked off it has
// the list, too.
struct FilesRemovedAtExit {
    std::mutex mutex;
    std::vector<std::string> paths;
    const pid_t process = ::getpid();

    static FilesRemovedAtExit& shared() {
        static RVNeverDestroyed<FilesRemovedAtExit> files;
        return *files;
    }
    static void remove() {
        FilesRemovedAtExit& files = shared();
        const std::lock_guard lock(files.mutex);
        if (files.process != ::getpid())
            return;
        for (const std::string& path : files.paths)
            ::unlink(path.c_str());
        files.paths.clear();
    }
};

}  // namespace

std::string RVFileManager::absolutePath(const std::string& path) {
    if (path.empty() || isAbsolutePath(path))
        return path;
    std::error_code failure;
    const std::string directory = std::filesystem::current_path(failure);
    return failure ? path : pathByAppendingComponent(directory, path);
}

bool RVFileManager::fileExistsAtPath(const std::string& path) {
    return statusOfFile(path).has_value();
}

bool RVFileManager::isDirectoryAtPath(const std::string& path) {
    const auto status = statusOfFile(path);
    return status && S_ISDIR(status->st_mode);
}

bool RVFileManager::isSymbolicLinkAtPath(const std::string& path) {
    struct stat status;
    return !isUnusable(path) && ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool RVFileManager::isReadableFileAtPath(const std::string& path) {
    return hasAccess(path, R_OK);
}

bool RVFileManager::isWritableFileAtPath(const std::string& path) {
    return hasAccess(path, W_OK);
}

bool RVFileManager::isExecutableFileAtPath(const std::string& path) {
    const auto status = statusOfFile(path);
    return status && S_ISREG(status->st_mode) && hasAccess(path, X_OK);
}

bool RVFileManager::isEmptyDirectoryAtPath(const std::string& path, RVErrorPlace error) {
    std::optional<RVError> failure;
    const auto names = namesInDirectoryAtPath(path, &failure);
    if (!failure)
        return names.empty();
    fillErrorPlace(error, *std::move(failure));
    return false;
}

std::vector<std::string> RVFileManager::namesInDirectoryAtPath(const std::string& path,
                                                               RVErrorPlace error) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(
        isUnusable(path) ? nullptr : ::opendir(path.c_str()), ::closedir);
    if (!directory) {
        failWithErrno(path, error);
        return {};
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
        errno = 0;
    }
    if (errno != 0) {
        failWithErrno(path, error);
        return {};
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<RVData> RVFileManager::contentsOfFileAtPath(const std::string& path,
                                                          RVErrorPlace error) {
    // Without O_NONBLOCK a named pipe would hold the caller until somebody writes to it.
    const RVDescriptor file(
        isUnusable(path) ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0)
        return failWithErrno(path, error);
    constexpr std::size_t leastRoom = 4096;
    RVData contents;
    std::size_t size = 0;
    // One byte more than the size, so that the end is found without growing.
    contents.resize(S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) + 1
                                            : leastRoom);
    for (;;) {
        const auto count = ::read(file.number(), contents.data() + size, contents.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failWithErrno(path, error);
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
        if (size == contents.size())
            contents.resize(std::max(leastRoom, size * 2));
    }
    contents.resize(size);
    return contents;
}

std::optional<std::string> RVFileManager::UTF8ContentsOfFileAtPath(const std::string& path,
                                                                   RVErrorPlace error) {
    auto contents = contentsOfFileAtPath(path, error);
    if (contents && !isValidUTF8(*contents)) {
        fillErrorPlace(error, posixError(EILSEQ, path));
        return std::nullopt;
    }
    return contents;
}

std::optional<std::string> RVFileManager::destinationOfSymbolicLinkAtPath(const std::string& path,
                                                                          RVErrorPlace error) {
    if (isUnusable(path))
        return failWithErrno(path, error);
    std::string destination(256, '\0');
    for (;;) {
        const auto length = ::readlink(path.c_str(), destination.data(), destination.size());
        if (length < 0)
            return failWithErrno(path, error);
        if (static_cast<std::size_t>(length) < destination.size()) {
            destination.resize(static_cast<std::size_t>(length));
            return destination;
        }
        destination.resize(destination.size() * 2);
    }
}

bool RVFileManager::writeFileAtomically(const std::string& path, std::string_view contents,
                                        unsigned permissions, RVErrorPlace error) {
    if (isUnusable(path)) {
        failWithErrno(path, error);
        return false;
    }
    // A short name of its own, since the target's may be as long as a name can be.
    std::string temporaryPath =
        pathByAppendingComponent(pathByDeletingLastComponent(path), ".rvgit-XXXXXX");
    RVDescriptor file(RVSystem::openUniqueFile(temporaryPath));
    if (file.number() < 0) {
        failWithErrno(path, error);
        return false;
    }
    if (file.write(contents) && ::fchmod(file.number(), permissions) == 0 && file.close() &&
        ::rename(temporaryPath.c_str(), path.c_str()) == 0)
        return true;
    failWithErrno(path, error);
    ::unlink(temporaryPath.c_str());
    return false;
}

bool RVFileManager::removeItemAtPath(const std::string& path, RVErrorPlace error) {
    if (isUnusable(path)) {
        failWithErrno(path, error);
        return false;
    }
    std::error_code failure;
    if (std::filesystem::remove_all(path, failure) > 0 && !failure)
        return true;
    fillErrorPlace(error, posixError(failure ? failure.value() : ENOENT, path));
    return false;
}

std::string RVFileManager::temporaryDirectory() {
    const char* directory = std::getenv("TMPDIR");
    std::string path = absolutePath(directory && *directory ? directory : "/tmp");
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string RVFileManager::temporaryFilePath() {
    std::random_device source;
    std::string path;
    do {
        path = pathByAppendingComponent(temporaryDirectory(), "rvgit-");
        for (int count = 0; count < 16; ++count)
            path += "0123456789abcdefghijklmnopqrstuv"[source() % 32];
    } while (fileExistsAtPath(path) || isSymbolicLinkAtPath(path));
    return path;
}

void RVFileManager::removeFileAtExit(std::string path) {
    static std::once_flag once;
    std::call_once(once, [] { std::atexit(FilesRemovedAtExit::remove); });
    FilesRemovedAtExit& files = FilesRemovedAtExit::shared();
    const std::lock_guard lock(files.mutex);
    files.paths.push_back(std::move(path));
}

std::optional<std::string> RVFileManager::createEmptyTemporaryFile(RVErrorPlace error) {
    std::string path = temporaryPathTemplate();
    const RVDescriptor file(RVSystem::openUniqueFile(path));
    if (file.number() < 0)
        return failWithErrno(temporaryDirectory(), error);
    return path;
}

std::optional<std::string> RVFileManager::createTemporaryDirectory(RVErrorPlace error) {
    std::string path = temporaryPathTemplate();
    if (!::mkdtemp(path.data()))
        return failWithErrno(temporaryDirectory(), error);
    return path;
}
