#include "RVGit/worktree/RVGitIgnores.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <string_view>
#include <utility>

#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

// A directory, and a path from there.
using Place = std::pair<std::string, std::string>;

// Where the file lies in the repository; absent for one that lies elsewhere, which is the caller's
// own. The git directories come first, since ".git" may be a link.
std::optional<Place> placeInRepository(const RVGitRepository* repository,
                                       const std::string& filePath) {
    if (!repository)
        return std::nullopt;
    for (const auto& root : {repository->gitDirectoryPath(), repository->commonGitDirectoryPath(),
                             repository->workingTreeDirectoryPath()})
        if (root && filePath.starts_with(*root + "/"))
            return Place(*root, filePath.substr(root->size() + 1));
    return std::nullopt;
}

// The same for reading. The folder "info" may be a link, as tools make it whose repositories share
// theirs; the file itself may not.
std::optional<Place> placeForReading(const RVGitRepository* repository,
                                     const std::string& filePath) {
    auto place = placeInRepository(repository, filePath);
    if (place && place->second == "info/exclude")
        place = Place(pathByDeletingLastComponent(filePath), lastPathComponent(filePath));
    return place;
}

// The contents of the caller's own file. A link may lead to a device, which could be read without
// end.
std::optional<std::string> contentsOfOwnFile(const std::string& filePath) {
    std::error_code failure;
    return std::filesystem::is_regular_file(filePath, failure)
               ? RVFileManager::UTF8ContentsOfFileAtPath(filePath)
               : std::nullopt;
}

// Where the caller's own file is written; its directory is made if it is missing.
Place placeForWritingOwnFile(const std::string& filePath) {
    std::string directory = pathByDeletingLastComponent(filePath);
    std::error_code failure;
    std::filesystem::create_directories(directory, failure);
    return {std::move(directory), lastPathComponent(filePath)};
}

bool contains(const std::vector<std::string>& patterns, const std::string& pattern) {
    return std::find(patterns.begin(), patterns.end(), pattern) != patterns.end();
}

}  // namespace

RVGitIgnores::RVGitIgnores(std::shared_ptr<RVGitRepository> repository, std::string filePath)
    : RVGitRepositoryPart(std::move(repository)), filePath_(std::move(filePath)) {
    requireParameter(this->repository() != nullptr, "repository");
}

RVGitIgnores::RVGitIgnores(std::weak_ptr<RVGitRepository> owner, std::string filePath)
    : RVGitRepositoryPart(std::move(owner)), filePath_(std::move(filePath)) {}

std::shared_ptr<RVGitIgnores> RVGitIgnores::defaultIgnoresForRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    requireParameter(repository != nullptr, "repository");
    auto filePath = repository->defaultIgnoresPath();
    return filePath ? std::make_shared<RVGitIgnores>(repository, *std::move(filePath)) : nullptr;
}

std::shared_ptr<RVGitIgnores> RVGitIgnores::ignoresWithExcludeFileForRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    requireParameter(repository != nullptr, "repository");
    auto filePath = repository->defaultExcludesPath();
    requireParameter(filePath.has_value(), "filePath");
    return std::make_shared<RVGitIgnores>(repository, *std::move(filePath));
}

std::shared_ptr<RVGitIgnores> RVGitIgnores::ignoresWithFilePath(const std::string&) {
    throw RVInvalidParameterException("repository");
}

std::optional<std::vector<std::string>>
RVGitIgnores::allIgnorePatternsFromDefaultIgnoresForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto ignores = defaultIgnoresForRepository(repository);
    if (!ignores) {
        clearErrorPlace(error);
        return std::nullopt;
    }
    return ignores->allIgnorePatterns(error);
}

std::optional<std::vector<std::string>> RVGitIgnores::allIgnorePatternsFromExcludeFileForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return ignoresWithExcludeFileForRepository(repository)->allIgnorePatterns(error);
}

std::optional<std::vector<std::string>> RVGitIgnores::allIgnorePatterns(RVErrorPlace error) const {
    const auto lines = readIgnorePatterns(error);
    if (!lines)
        return std::nullopt;
    std::vector<std::string> patterns;
    for (const std::string& line : *lines) {
        const auto pattern = trimmedWhitespaceAndNewline(line);
        if (!pattern.empty() && !pattern.starts_with('#'))
            patterns.emplace_back(pattern);
    }
    return patterns;
}

std::optional<std::vector<std::string>> RVGitIgnores::rawIgnorePatterns(RVErrorPlace error) const {
    return readIgnorePatterns(error);
}

std::optional<std::vector<std::string>> RVGitIgnores::readIgnorePatterns(RVErrorPlace error) const {
    if (!RVFileManager::fileExistsAtPath(filePath_))
        return std::vector<std::string>();
    const auto place = placeForReading(repository().get(), filePath_);
    auto contents = place
                        ? RVContainedFiles(place->first)
                              .UTF8Contents(place->second, std::numeric_limits<std::size_t>::max())
                        : contentsOfOwnFile(filePath_);
    if (!contents) {
        fillErrorPlace(error, gitErrorWithCode(RVGitIgnoresReadError, makeErrorUserInfo()));
        return std::nullopt;
    }
    if (contents->empty())
        return std::vector<std::string>();
    if (contents->ends_with('\n'))
        contents->pop_back();
    return componentsSeparatedByString(*contents, "\n");
}

bool RVGitIgnores::existsIgnorePattern(const std::string&, RVErrorPlace error) const {
    const auto lines = readIgnorePatterns(error);
    if (lines && lines->empty())
        clearErrorPlace(error);
    return lines && !lines->empty();
}

bool RVGitIgnores::writeIgnorePatterns(const std::vector<std::string>& patterns,
                                       RVErrorPlace error) const {
    const std::string contents = stringByJoiningComponents(patterns, "\n") + "\n";
    if (isValidUTF8(contents) && writeContents(contents))
        return true;
    fillErrorPlace(error, gitErrorWithCode(RVGitIgnoresWriteError, makeErrorUserInfo()));
    return false;
}

bool RVGitIgnores::writeContents(const std::string& contents) const {
    const auto inRepository = placeInRepository(repository().get(), filePath_);
    const auto [directory, path] = inRepository ? *inRepository : placeForWritingOwnFile(filePath_);
    const RVContainedFiles files(directory);
    std::optional<RVData> oldContents = "";
    if (files.exists(path)) {
        if (!RVFileManager::isWritableFileAtPath(filePath_))
            return false;
        oldContents = files.contents(path, std::numeric_limits<std::size_t>::max());
    } else if (const auto end = path.rfind('/');
               end != path.npos && !files.makeDirectories(path.substr(0, end))) {
        return false;
    }
    if (files.writeInPlace(path, contents))
        return true;
    // On a full disk there is room for as much as there was.
    if (oldContents)
        (void)files.writeInPlace(path, *oldContents);
    return false;
}

bool RVGitIgnores::setIgnorePatterns(const std::vector<std::string>& patterns,
                                     RVErrorPlace error) const {
    return writeIgnorePatterns(patterns, error);
}

bool RVGitIgnores::addIgnorePattern(const std::string& pattern, RVErrorPlace error) const {
    return addIgnorePatterns({pattern}, error);
}

bool RVGitIgnores::addIgnorePatterns(const std::vector<std::string>& patterns,
                                     RVErrorPlace error) const {
    auto lines = readIgnorePatterns(error);
    if (!lines)
        return false;
    const auto oldCount = lines->size();
    for (const std::string& pattern : patterns)
        if (!contains(*lines, pattern))
            lines->push_back(pattern);
    return lines->size() == oldCount || writeIgnorePatterns(*lines, error);
}

bool RVGitIgnores::removeIgnorePattern(const std::string& pattern, RVErrorPlace error) const {
    return removeIgnorePatterns({pattern}, error);
}

bool RVGitIgnores::removeIgnorePatterns(const std::vector<std::string>& patterns,
                                        RVErrorPlace error) const {
    auto lines = readIgnorePatterns(error);
    if (!lines)
        return false;
    std::erase_if(*lines, [&](const std::string& line) { return contains(patterns, line); });
    return writeIgnorePatterns(*lines, error);
}

RVUserInfo RVGitIgnores::makeErrorUserInfo() const {
    RVUserInfo userInfo = {{RVGitFilePathErrorKey, filePath_}};
    if (const auto repository = this->repository())
        userInfo.emplace(RVGitRepositoryPathErrorKey, repository->path());
    return userInfo;
}
