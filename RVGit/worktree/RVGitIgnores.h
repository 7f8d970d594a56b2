#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/repository/RVGitRepositoryPart.h"

class RVGitRepository;

/// One ignore file as a list of lines, read and rewritten directly: the ".gitignore" of a
/// repository or its "info/exclude". Nothing of the file is kept, so the object may be used on any
/// thread. Each change reads the file and writes all of it anew, without a lock: of two writers at
/// once the later one wins.
///
/// A pattern is a line, without its "\n"; a carriage return belongs to it, and a byte order mark to
/// the first. It is written as it stands: the name of a file is a pattern only once the caller has
/// escaped what git reads otherwise. A newline cannot be: "?" matches it.
///
/// A file that does not exist has no lines. Code 400 if the file cannot be read, is no regular file
/// or is no valid UTF-8, which leaves it untouched; 401 if it cannot be written. Within the
/// repository no link is followed: one in the place of the file cannot be read. The paths are
/// under RVGitRepositoryPathErrorKey and RVGitFilePathErrorKey; kept for compatibility: the text of
/// these errors takes its path from RVGitIgnoresPathErrorKey, which is not filled, so that it shows
/// none.
class RVGIT_EXPORT RVGitIgnores : public RVGitRepositoryPart {
public:
    /// The repository is required. The path is absolute.
    RVGitIgnores(std::shared_ptr<RVGitRepository> repository, std::string filePath);

    /// The ".gitignore" in the root of the working tree; null for a bare repository.
    [[nodiscard]] static std::shared_ptr<RVGitIgnores> defaultIgnoresForRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// "info/exclude" in the git directory, which an invalid repository does not have: it throws
    /// RVInvalidParameterException.
    [[nodiscard]] static std::shared_ptr<RVGitIgnores> ignoresWithExcludeFileForRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// Kept for compatibility: always throws RVInvalidParameterException, for want of a repository.
    [[noreturn]] static std::shared_ptr<RVGitIgnores> ignoresWithFilePath(
        const std::string& filePath);

    /// allIgnorePatterns() of these. A bare repository has no default ones: absent, with a cleared
    /// place.
    [[nodiscard]] static std::optional<std::vector<std::string>>
    allIgnorePatternsFromDefaultIgnoresForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::vector<std::string>>
    allIgnorePatternsFromExcludeFileForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::string& filePath() const { return filePath_; }

    // Reading.

    /// The lines that have an effect, trimmed: no blank ones and no comments.
    [[nodiscard]] std::optional<std::vector<std::string>> allIgnorePatterns(
        RVErrorPlace error = nullptr) const;
    /// The same as readIgnorePatterns().
    [[nodiscard]] std::optional<std::vector<std::string>> rawIgnorePatterns(
        RVErrorPlace error = nullptr) const;
    /// All lines as they stand, comments and blank ones included.
    [[nodiscard]] std::optional<std::vector<std::string>> readIgnorePatterns(
        RVErrorPlace error = nullptr) const;
    /// Kept for compatibility: true as soon as the file has any line, whatever the pattern. Without
    /// lines false, with a cleared place.
    [[nodiscard]] bool existsIgnorePattern(const std::string& pattern,
                                           RVErrorPlace error = nullptr) const;

    // Writing. The file keeps its identity and its permissions, and a link at its path stays. It is
    // not written atomically; if writing fails half-way, what it held is put back, where it can be
    // read and as far as it can be written. A file that does not exist is made, with its directory.

    /// Replaces the lines. Each ends in a newline; none at all make a file of one newline. Code 401
    /// also for a pattern that is no valid UTF-8, since the file could not be read again.
    [[nodiscard]] bool writeIgnorePatterns(const std::vector<std::string>& patterns,
                                           RVErrorPlace error = nullptr) const;
    /// The same.
    [[nodiscard]] bool setIgnorePatterns(const std::vector<std::string>& patterns,
                                         RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool addIgnorePattern(const std::string& pattern,
                                        RVErrorPlace error = nullptr) const;
    /// Appends those that are not among the lines yet; if none is new, nothing is written. One with
    /// a newline becomes two lines, and so is never among them.
    [[nodiscard]] bool addIgnorePatterns(const std::vector<std::string>& patterns,
                                         RVErrorPlace error = nullptr) const;
    /// Removes every line that equals the pattern, and writes the file even if there is none.
    [[nodiscard]] bool removeIgnorePattern(const std::string& pattern,
                                           RVErrorPlace error = nullptr) const;
    /// The same for the lines that equal one of the patterns.
    [[nodiscard]] bool removeIgnorePatterns(const std::vector<std::string>& patterns,
                                            RVErrorPlace error = nullptr) const;

private:
    friend class RVGitRepository;
    /// The ignores that `owner` itself owns, and that must not keep it alive.
    RVGitIgnores(std::weak_ptr<RVGitRepository> owner, std::string filePath);

    [[nodiscard]] bool writeContents(const std::string& contents) const;
    [[nodiscard]] RVUserInfo makeErrorUserInfo() const;

    std::string filePath_;
};
