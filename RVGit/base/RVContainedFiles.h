#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

/// The files below a directory that strangers may have filled: a git directory or a working tree.
/// Below the directory no symbolic link is ever followed, neither one in the place of a file nor
/// one on the way to it; nothing but a regular file is read, and no more of it than is asked for,
/// so that no pipe or device holds the caller. Free of state, safe on any thread.
///
/// Paths are relative to the directory. One that is empty or absolute, or holds ".." or a NUL,
/// names nothing: EINVAL. Errors are those of posixError(), with the path; a link is ELOOP (or
/// ENOTDIR on the way), any other file that is not regular EINVAL, one that is too large EFBIG.
class RVGIT_EXPORT RVContainedFiles {
public:
    /// An absent directory holds nothing. Links on the way to the directory itself are followed.
    explicit RVContainedFiles(std::optional<std::string> directoryPath);

    /// True for anything at the path, a dangling link too.
    [[nodiscard]] bool exists(std::string_view path) const;
    [[nodiscard]] bool isDirectory(std::string_view path) const;
    /// Seconds since 1970, of anything at the path.
    [[nodiscard]] std::optional<double> modificationTime(std::string_view path) const;
    /// The bytes of a regular file of at most so many.
    [[nodiscard]] std::optional<RVData> contents(std::string_view path, std::size_t maximumSize,
                                                 RVErrorPlace error = nullptr) const;
    /// The same if they are valid UTF-8; EILSEQ if not.
    [[nodiscard]] std::optional<std::string> UTF8Contents(std::string_view path,
                                                          std::size_t maximumSize,
                                                          RVErrorPlace error = nullptr) const;
    /// Writes into the file that is there, which stays the same file with the same permissions, or
    /// makes a new one. After a failure it may hold a part of the bytes.
    [[nodiscard]] bool writeInPlace(std::string_view path, std::string_view bytes,
                                    RVErrorPlace error = nullptr) const;
    /// Makes the directory and those that lead to it, as far as they are missing.
    [[nodiscard]] bool makeDirectories(std::string_view path, RVErrorPlace error = nullptr) const;
    /// Replaces the file, or a link in its place, in one step; on failure what was there stays. A
    /// regular file keeps its permissions. No directory is made.
    [[nodiscard]] bool writeAtomically(std::string_view path, std::string_view bytes,
                                       RVErrorPlace error = nullptr) const;

private:
    std::optional<std::string> directoryPath_;
};
