#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

/// The file-system operations that the library needs, with error records for failures. All
/// operations are free of state and safe on any thread. Errors are those of posixError(), with the
/// path. A path that holds a NUL names nothing (EINVAL): it is never cut off there.
class RVGIT_EXPORT RVFileManager {
public:
    /// A relative path below the current directory of this process; unchanged if it is absolute or
    /// empty, or if that directory is gone.
    [[nodiscard]] static std::string absolutePath(const std::string& path);
    [[nodiscard]] static bool fileExistsAtPath(const std::string& path);
    /// False also for a path that does not exist. Links are followed.
    [[nodiscard]] static bool isDirectoryAtPath(const std::string& path);
    [[nodiscard]] static bool isSymbolicLinkAtPath(const std::string& path);
    [[nodiscard]] static bool isReadableFileAtPath(const std::string& path);
    [[nodiscard]] static bool isWritableFileAtPath(const std::string& path);
    /// A regular file (or a link to one) with the run bit for this user.
    [[nodiscard]] static bool isExecutableFileAtPath(const std::string& path);
    [[nodiscard]] static bool isEmptyDirectoryAtPath(const std::string& path,
                                                     RVErrorPlace error = nullptr);
    /// Sorted by bytes, without "." and "..".
    [[nodiscard]] static std::vector<std::string> namesInDirectoryAtPath(
        const std::string& path, RVErrorPlace error = nullptr);

    [[nodiscard]] static std::optional<RVData> contentsOfFileAtPath(const std::string& path,
                                                                    RVErrorPlace error = nullptr);
    /// The contents if they are valid UTF-8; an error record if not.
    [[nodiscard]] static std::optional<std::string> UTF8ContentsOfFileAtPath(
        const std::string& path, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::string> destinationOfSymbolicLinkAtPath(
        const std::string& path, RVErrorPlace error = nullptr);

    /// Writes a new file beside the target and renames it over the target, so that a reader sees
    /// the old contents or the new, and a failure leaves the old. A link at the path is replaced.
    /// `permissions` are those of the file afterwards.
    [[nodiscard]] static bool writeFileAtomically(const std::string& path,
                                                  std::string_view contents,
                                                  unsigned permissions = 0644,
                                                  RVErrorPlace error = nullptr);
    /// Removes a file, a link (not what it points at), or a directory with all that is in it.
    [[nodiscard]] static bool removeItemAtPath(const std::string& path,
                                               RVErrorPlace error = nullptr);

    /// The directory for temporary files: TMPDIR or /tmp, without a trailing slash. Absolute, since
    /// children run elsewhere.
    [[nodiscard]] static std::string temporaryDirectory();
    /// A path in the temporary directory that nothing has been made at.
    [[nodiscard]] static std::string temporaryFilePath();
    /// Has the file removed when this process ends in order.
    static void removeFileAtExit(std::string path);
    /// A new empty file or directory of a unique name, readable by this user alone.
    [[nodiscard]] static std::optional<std::string> createEmptyTemporaryFile(
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::string> createTemporaryDirectory(
        RVErrorPlace error = nullptr);
};
