#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVSystem.h"
#include "RVGit/lfs/RVGitLFSPointer.h"

namespace {

constexpr char inputPath[] = "/tmp/smudge_input";
constexpr char lockPath[] = "/tmp/smudge_input.lock";

// A file that is replaced stays executable.
unsigned permissionsForFile(const std::string& path) {
    struct stat status;
    const bool isFile = ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? status.st_mode & 0777U : 0644U;
}

// 0, or what is wrong with a file that others may have put in the way.
int errorForFile(const struct stat& status) {
    if (S_ISLNK(status.st_mode))
        return ELOOP;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    return status.st_uid == ::geteuid() ? 0 : EPERM;
}

}  // namespace

/// The file with the pointer, and the lock on it: removed and given back in this order.
class RVGitLFSSmudgeCommand::InputFile {
public:
    InputFile() = default;
    ~InputFile() {
        struct stat status;
        if (written_ && ::lstat(inputPath, &status) == 0 && status.st_ino == inode_ &&
            status.st_dev == device_)
            ::unlink(inputPath);
        if (lock_ >= 0)
            ::close(lock_);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// False if the operation is cancelled meanwhile, or with an error.
    bool lock(const RVOperation& operation, RVErrorPlace error) {
        lock_ = ::open(lockPath, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        struct stat status;
        int failure = lock_ < 0 || ::fstat(lock_, &status) != 0 ? errno : errorForFile(status);
        // A blocking wait could not be cancelled.
        for (auto pause = std::chrono::milliseconds(1); failure == 0;
             pause = std::min(pause * 2, std::chrono::milliseconds(50))) {
            if (operation.isCancelled())
                return false;
            if (::flock(lock_, LOCK_EX | LOCK_NB) == 0)
                return true;
            if (errno != EWOULDBLOCK && errno != EINTR)
                failure = errno;
            else
                std::this_thread::sleep_for(pause);
        }
        fillErrorPlace(error, posixError(failure, lockPath));
        return false;
    }

    /// The descriptor that the text is read from, or -1 with an error.
    int write(std::string_view text, RVErrorPlace error) {
        struct stat status;
        const int failure = ::lstat(inputPath, &status) == 0 ? errorForFile(status)
                            : errno == ENOENT                ? 0
                                                             : errno;
        if (failure != 0) {
            fillErrorPlace(error, posixError(failure, inputPath));
            return -1;
        }
        // Read through the descriptor that it was written by: nobody can come in between.
        std::string temporaryPath = std::string(inputPath) + ".XXXXXX";
        RVDescriptor file = RVSystem::openUniqueFile(temporaryPath);
        if (file.isOpen() && ::fstat(file.number(), &status) == 0 && file.write(text) &&
            ::lseek(file.number(), 0, SEEK_SET) == 0 &&
            ::rename(temporaryPath.c_str(), inputPath) == 0) {
            written_ = true;
            inode_ = status.st_ino;
            device_ = status.st_dev;
            return file.release();
        }
        fillErrorPlace(error, posixError(errno, inputPath));
        if (file.isOpen())
            ::unlink(temporaryPath.c_str());
        return -1;
    }

private:
    int lock_ = -1;
    bool written_ = false;
    ino_t inode_ = 0;
    dev_t device_ = 0;
};

RVGitLFSSmudgeCommand::RVGitLFSSmudgeCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitLFSCommand(repository) {}

RVGitLFSSmudgeCommand::~RVGitLFSSmudgeCommand() = default;

std::shared_ptr<RVGitLFSSmudgeCommand> RVGitLFSSmudgeCommand::gitLFSSmudgeCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSSmudgeCommand>(repository);
}

void RVGitLFSSmudgeCommand::main() {
    // Also where nothing is launched, and none of the hooks behind the launch is called.
    struct Release {
        std::unique_ptr<InputFile>& inputFile;
        ~Release() { inputFile.reset(); }
    } release{inputFile_};
    RVGitLFSCommand::main();
}

void RVGitLFSSmudgeCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("smudge");
    if (!pointer_)
        return;
    inputFile_ = std::make_unique<InputFile>();
    std::optional<RVError> error;
    if (inputFile_->lock(*this, &error)) {
        const int file = inputFile_->write(pointer_->stringRepresentation(), &error);
        if (file >= 0)
            setStandardInput(RVStandardInput::openFile(file));
    }
    if (error)
        finishWithError(*error);
}

void RVGitLFSSmudgeCommand::gitCommandDidTerminate() {
    inputFile_.reset();
}

bool RVGitLFSSmudgeCommand::gitCommandWillParseOutput(RVErrorPlace) {
    // What a cancelled run has printed may be cut off, and must not replace a whole file.
    if (isCancelled() && exitCode() != 0)
        return true;
    data_ = standardOutputBuffer();
    if (outputPath_)
        (void)RVFileManager::writeFileAtomically(*outputPath_, data_->view(),
                                                 permissionsForFile(*outputPath_), &outputError_);
    return true;
}
