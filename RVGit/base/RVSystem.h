#pragma once

#include <sys/types.h>

#include <string>

#include "RVGit/base/RVDescriptor.h"
#include "RVGit/base/RVExport.h"

/// The few calls for which this library asks more of a system than POSIX.1-2008 promises: what
/// Linux and its C library have. Built with RVGIT_PORTABLE, each is replaced by a stand-in that any
/// Unix has; docs/porting.md tells what that costs. Not for public headers.
class RVGIT_EXPORT RVSystem {
public:
    /// Both ends are closed in children, and above the descriptors 0, 1 and 2. 0, or errno's value.
    [[nodiscard]] static int makePipe(RVDescriptor& readEnd, RVDescriptor& writeEnd);
    /// Lets the pipe hold more, where that can be asked for.
    static void enlargePipe(const RVDescriptor& pipe, int capacity);
    /// A process that runs without the descriptors 0, 1 or 2 gets them for its own files, where
    /// those of a child would overwrite them. 0, or errno's value.
    [[nodiscard]] static int moveAboveStandardStreams(RVDescriptor& descriptor);

    /// Becomes readable when the child exits. Not open where there is no such thing, or no
    /// descriptor left: the exit is then looked for from time to time.
    [[nodiscard]] static RVDescriptor exitWatchOfChild(pid_t pid);

    /// Lets any thread end another one's poll().
    class Waker {
    public:
        /// 0, or errno's value.
        [[nodiscard]] int open();
        /// To be polled for reading.
        [[nodiscard]] int number() const { return readEnd_.number(); }
        void wake() const;

    private:
        RVDescriptor readEnd_;
        RVDescriptor writeEnd_;
    };

    struct Spawn {
        const char* path;
        /// Both end with a null.
        char* const* arguments;
        char* const* environment;
        /// Null: that of this process.
        const char* workingDirectory;
        /// -1: /dev/null. The descriptors are above 2.
        int standardInput;
        int standardOutput;
        int standardError;
    };
    /// Launches a child with these three descriptors and no others, default signals, and a session
    /// of its own. 0, or errno's value.
    [[nodiscard]] static int spawn(const Spawn& spawn, pid_t& pid);

    /// Opens a new file, closed in children, whose path is the template with its last six
    /// characters, "XXXXXX", filled in. Not open, with errno set, on failure.
    [[nodiscard]] static RVDescriptor openUniqueFile(std::string& pathTemplate);

    /// Renames what is at the path unless something is at the new one: that is EEXIST, also where
    /// it has just come, on file systems that can tell. 0, or errno's value.
    [[nodiscard]] static int renameWithoutReplacing(const char* path, const char* newPath);

    /// How a directory is opened that is only to be passed through.
    static const int openDirectoryFlags;
};
