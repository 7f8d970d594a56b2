#include "RVGit/base/RVContainedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVSystem.h"

namespace {

/// The open directory that a path leads to, and the last component of the path; a directory that
/// is not open has left errno.
struct Place {
    RVDescriptor directory;
    std::string name;
};

Place placeOf(const std::optional<std::string>& root, std::string_view path) {
    const int flags = RVSystem::openDirectoryFlags;
    Place place{RVDescriptor(-1), {}};
    errno = EINVAL;
    if (!root || path.empty() || path.front() == '/' || path.find('\0') != path.npos ||
        root->find('\0') != root->npos)
        return place;
    RVDescriptor directory(::open(root->c_str(), flags));
    while (directory.isOpen()) {
        const std::string_view component = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(component.size() + 1, path.size()));
        const bool isLast = path.find_first_not_of('/') == path.npos;
        if (component == ".." || (isLast && (component.empty() || component == "."))) {
            errno = EINVAL;
            return place;
        }
        if (isLast) {
            place.name = component;
            place.directory = std::move(directory);
            return place;
        }
        if (!component.empty() && component != ".")
            directory = RVDescriptor(
                ::openat(directory.number(), std::string(component).c_str(), flags | O_NOFOLLOW));
    }
    return place;
}

std::optional<struct stat> statusOf(const std::optional<std::string>& root, std::string_view path) {
    const Place place = placeOf(root, path);
    struct stat status;
    if (!place.directory.isOpen() ||
        ::fstatat(place.directory.number(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return status;
}

std::string fullPath(const std::optional<std::string>& root, std::string_view path) {
    return pathByAppendingComponent(root.value_or(""), path);
}

int errorNumberForUnusableFile(const struct stat& status) {
    return S_ISLNK(status.st_mode) ? ELOOP : S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

/// A new file beside the target, whose permissions the umask decides.
RVDescriptor openUniqueFile(int directory, std::string& name) {
    std::random_device source;
    for (;;) {
        name = ".rvgit-";
        for (int count = 0; count < 12; ++count)
            name += "0123456789abcdefghijklmnopqrstuv"[source() % 32];
        RVDescriptor file(::openat(directory, name.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (file.isOpen() || errno != EEXIST)
            return file;
    }
}

}  // namespace

RVContainedFiles::RVContainedFiles(std::optional<std::string> directoryPath)
    : directoryPath_(std::move(directoryPath)) {}

bool RVContainedFiles::exists(std::string_view path) const {
    return statusOf(directoryPath_, path).has_value();
}

bool RVContainedFiles::isDirectory(std::string_view path) const {
    const auto status = statusOf(directoryPath_, path);
    return status && S_ISDIR(status->st_mode);
}

std::optional<double> RVContainedFiles::modificationTime(std::string_view path) const {
    const auto status = statusOf(directoryPath_, path);
    if (!status)
        return std::nullopt;
    return static_cast<double>(status->st_mtim.tv_sec) +
           static_cast<double>(status->st_mtim.tv_nsec) / 1e9;
}

std::optional<RVData> RVContainedFiles::contents(std::string_view path, std::size_t maximumSize,
                                                 RVErrorPlace error) const {
    const auto fail = [&](int errorNumber) {
        fillErrorPlace(error, posixError(errorNumber, fullPath(directoryPath_, path)));
        return std::nullopt;
    };
    const Place place = placeOf(directoryPath_, path);
    if (!place.directory.isOpen())
        return fail(errno);
    struct stat status;
    // A device may act on being opened: look before.
    if (::fstatat(place.directory.number(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return fail(errno);
    if (!S_ISREG(status.st_mode))
        return fail(errorNumberForUnusableFile(status));
    const RVDescriptor file(::openat(place.directory.number(), place.name.c_str(),
                                     O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return fail(errno);
    if (!S_ISREG(status.st_mode))
        return fail(EINVAL);
    if (static_cast<std::uint64_t>(status.st_size) > maximumSize)
        return fail(EFBIG);
    RVData bytes;
    // One byte more than the size, so that the end is found without growing.
    bytes.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t size = 0;
    for (;;) {
        const auto count = ::read(file.number(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return fail(errno);
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
        if (size > maximumSize)
            return fail(EFBIG);
        if (size == bytes.size())
            bytes.resize(size * 2);
    }
    bytes.resize(size);
    return bytes;
}

std::optional<std::string> RVContainedFiles::UTF8Contents(std::string_view path,
                                                          std::size_t maximumSize,
                                                          RVErrorPlace error) const {
    auto bytes = contents(path, maximumSize, error);
    if (bytes && !isValidUTF8(*bytes)) {
        fillErrorPlace(error, posixError(EILSEQ, fullPath(directoryPath_, path)));
        return std::nullopt;
    }
    return bytes;
}

bool RVContainedFiles::writeInPlace(std::string_view path, std::string_view bytes,
                                    RVErrorPlace error) const {
    const auto fail = [&](int errorNumber) {
        fillErrorPlace(error, posixError(errorNumber, fullPath(directoryPath_, path)));
        return false;
    };
    const Place place = placeOf(directoryPath_, path);
    if (!place.directory.isOpen())
        return fail(errno);
    const int directory = place.directory.number();
    struct stat status;
    // A device may act on being opened: look before.
    const bool exists = ::fstatat(directory, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return fail(errorNumberForUnusableFile(status));
    RVDescriptor file(::openat(directory, place.name.c_str(),
                               O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                               0666));
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return fail(errno);
    if (!S_ISREG(status.st_mode))
        return fail(EINVAL);
    if (::ftruncate(file.number(), 0) != 0 || !file.write(bytes) || !file.close())
        return fail(errno);
    return true;
}

bool RVContainedFiles::makeDirectories(std::string_view path, RVErrorPlace error) const {
    for (std::size_t end = 0; end != path.npos;) {
        end = path.find('/', end + 1);
        const Place place = placeOf(directoryPath_, path.substr(0, end));
        struct stat status;
        if (!place.directory.isOpen() ||
            (::mkdirat(place.directory.number(), place.name.c_str(), 0777) != 0 &&
             errno != EEXIST) ||
            ::fstatat(place.directory.number(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) !=
                0) {
            fillErrorPlace(error, posixError(errno, fullPath(directoryPath_, path)));
            return false;
        }
        if (!S_ISDIR(status.st_mode)) {
            fillErrorPlace(error, posixError(ENOTDIR, fullPath(directoryPath_, path)));
            return false;
        }
    }
    return true;
}

bool RVContainedFiles::writeAtomically(std::string_view path, std::string_view bytes,
                                       RVErrorPlace error) const {
    const auto fail = [&](int errorNumber) {
        fillErrorPlace(error, posixError(errorNumber, fullPath(directoryPath_, path)));
        return false;
    };
    const Place place = placeOf(directoryPath_, path);
    if (!place.directory.isOpen())
        return fail(errno);
    const int directory = place.directory.number();
    struct stat status;
    const bool keepsPermissions =
        ::fstatat(directory, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(status.st_mode);
    std::string temporaryName;
    RVDescriptor file = openUniqueFile(directory, temporaryName);
    if (!file.isOpen())
        return fail(errno);
    if (file.write(bytes) &&
        (!keepsPermissions || ::fchmod(file.number(), status.st_mode & 0777) == 0) &&
        file.close() &&
        ::renameat(directory, temporaryName.c_str(), directory, place.name.c_str()) == 0)
        return true;
    const int errorNumber = errno;
    ::unlinkat(directory, temporaryName.c_str(), 0);
    return fail(errorNumber);
}
