#include <array>
#include <memory>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

// The first spelling of a path, as it is made into one, that exists.
template <typename MakePath>
std::optional<std::string> firstExistingPath(const std::array<std::string, 3>& spellings,
                                             MakePath makePath) {
    for (const std::string& spelling : spellings) {
        if (spelling.empty())
            continue;
        std::string path = makePath(spelling);
        if (RVFileManager::fileExistsAtPath(path))
            return path;
    }
    return std::nullopt;
}

struct TemporaryAllowedSignersFile {
    std::unique_ptr<RVOperationQueue> lock = RVOperationQueue::serialQueue(
        "com.varnelsoft.Varnel.temporaryAllowedSignersFileURLAccesor");
    std::optional<std::string> path;

    static TemporaryAllowedSignersFile& shared() {
        static auto* const file = new TemporaryAllowedSignersFile;
        return *file;
    }
};

}  // namespace

std::optional<std::string> RVGitRepository::allowedSignersFileFullPath() {
    auto configured = config()->allowedSignersFile();
    if (RVStringIsEmpty(configured))
        return temporaryAllowedSignersFilePath();
    auto file = existingFileAt(*configured);
    if (!file)
        file = existingFileRelativeToRepoWith(*configured);
    if (!file)
        file = existingFileWithTildeExpandedWithPath(*configured);
    return file ? file : temporaryAllowedSignersFilePath();
}

std::array<std::string, 3> RVGitRepository::spellingsOfPath(const std::string& path) const {
    std::string withoutLeadingWhitespace = removeLeadingWhitespace(path);
    return {path, withoutLeadingWhitespace, trimWhitespacesFor(withoutLeadingWhitespace)};
}

std::optional<std::string> RVGitRepository::existingFileAt(const std::string& path) const {
    return firstExistingPath(spellingsOfPath(path),
                             [](const std::string& spelling) { return spelling; });
}

std::optional<std::string> RVGitRepository::existingFileRelativeToRepoWith(
    const std::string& path) const {
    RVURL base = RVURL::fileURLWithPath(path_);
    return firstExistingPath(spellingsOfPath(path), [&base](const std::string& spelling) {
        return RVURL::fileURLWithPath(spelling, base).path();
    });
}

std::optional<std::string> RVGitRepository::existingFileWithTildeExpandedWithPath(
    const std::string& path) const {
    return firstExistingPath(spellingsOfPath(path), [](const std::string& spelling) {
        return pathByExpandingTilde(spelling);
    });
}

std::string RVGitRepository::removeLeadingWhitespace(const std::string& text) const {
    static const RVNeverDestroyed<RVRegularExpression> leadingWhitespace("^\\s+");
    return leadingWhitespace->stringByReplacingMatches(text, "");
}

std::string RVGitRepository::trimWhitespacesFor(const std::string& text) const {
    return stringByTrimmingWhitespaceAndNewline(text);
}

RVOperationQueue& RVGitRepository::temporaryAllowedSignersFileLock() {
    return *TemporaryAllowedSignersFile::shared().lock;
}

std::optional<std::string> RVGitRepository::temporaryAllowedSignersFilePath() {
    std::optional<std::string> result;
    temporaryAllowedSignersFileLock().runBlock([&result] {
        auto& path = TemporaryAllowedSignersFile::shared().path;
        if (!path || !RVFileManager::fileExistsAtPath(*path)) {
            path = RVFileManager::createEmptyTemporaryFile();
            if (path)
                RVFileManager::removeFileAtExit(*path);
        }
        result = path;
    });
    return result;
}

std::optional<std::string> RVGitRepository::temporaryFilePath() {
    std::optional<std::string> result;
    temporaryAllowedSignersFileLock().runBlock(
        [&result] { result = TemporaryAllowedSignersFile::shared().path; });
    return result;
}

void RVGitRepository::setTemporaryFilePath(const std::optional<std::string>& path) {
    temporaryAllowedSignersFileLock().runBlock(
        [&path] { TemporaryAllowedSignersFile::shared().path = path; });
}
