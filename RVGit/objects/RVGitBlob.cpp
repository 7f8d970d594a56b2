#include "RVGit/objects/RVGitBlob.h"

#include <filesystem>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitShowCommand.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

bool liesBehindSymbolicLink(const std::string& directory, const std::string& filePath) {
    for (auto end = filePath.find('/'); end != filePath.npos; end = filePath.find('/', end + 1))
        if (RVFileManager::isSymbolicLinkAtPath(
                pathByAppendingComponent(directory, filePath.substr(0, end))))
            return true;
    return false;
}

std::optional<RVData> contentsOfRegularFile(const std::string& path) {
    std::error_code failure;
    return std::filesystem::is_regular_file(path, failure)
               ? RVFileManager::contentsOfFileAtPath(path)
               : std::nullopt;
}

}  // namespace

RVGitBlob::RVGitBlob(std::shared_ptr<RVGitRepository> repository,
                     std::optional<std::string> blobHash, std::optional<std::string> revision,
                     std::optional<std::string> filePath, RVData contents)
    : RVGitObject(std::move(repository), RVGitObjectTypeBlob, std::move(blobHash)),
      revision_(std::move(revision)),
      filePath_(std::move(filePath)),
      data_(std::move(contents)) {}

RVGitBlob::RVGitBlob(std::shared_ptr<RVGitRepository> repository,
                     std::optional<std::string> blobHash, std::optional<std::string> revision,
                     std::optional<std::string> filePath,
                     std::shared_ptr<const RVDataBuffer> contents)
    : RVGitObject(std::move(repository), RVGitObjectTypeBlob, std::move(blobHash)),
      revision_(std::move(revision)),
      filePath_(std::move(filePath)),
      buffer_(std::move(contents)) {
    requireParameter(buffer_ != nullptr, "contents");
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobWithRepositoryFilePath(
    std::shared_ptr<RVGitRepository> repository, std::string filePath, RVData contents) {
    return std::make_shared<RVGitBlob>(std::move(repository), std::nullopt, std::nullopt,
                                       std::move(filePath), std::move(contents));
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobWithRepositoryBlobHash(
    std::shared_ptr<RVGitRepository> repository, std::string blobHash, RVData contents) {
    return std::make_shared<RVGitBlob>(std::move(repository), std::move(blobHash), std::nullopt,
                                       std::nullopt, std::move(contents));
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::optional<std::string> revision,
    std::optional<std::string> filePath, RVData contents) {
    return std::make_shared<RVGitBlob>(std::move(repository), std::nullopt, std::move(revision),
                                       std::move(filePath), std::move(contents));
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobForHash(
    const std::string& blobHash, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    auto command = RVGitShowCommand::gitShowCommandWithRepository(repository, blobHash);
    if (!command->run(error))
        return nullptr;
    return std::make_shared<RVGitBlob>(repository, blobHash, std::nullopt, std::nullopt,
                                       command->standardOutputBuffer());
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    auto command = RVGitShowCommand::gitShowCommandWithRepository(repository, revision, filePath);
    if (!command->run(error))
        return nullptr;
    return std::make_shared<RVGitBlob>(repository, std::nullopt, revision, filePath,
                                       command->standardOutputBuffer());
}

std::shared_ptr<RVGitBlob> RVGitBlob::blobForCurrentFileAtPath(
    const std::string& filePath, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    requireParameter(repository != nullptr, "repository");
    std::optional<RVData> contents;
    if (const auto& workingTree = repository->workingTreeDirectoryPath()) {
        const std::string path = pathByAppendingComponent(*workingTree, filePath);
        // Follows the link: one whose target cannot be read is not readable either.
        if (RVFileManager::isReadableFileAtPath(path) &&
            !liesBehindSymbolicLink(*workingTree, filePath))
            contents = RVFileManager::isSymbolicLinkAtPath(path)
                           ? RVFileManager::destinationOfSymbolicLinkAtPath(path)
                           : contentsOfRegularFile(path);
    }
    if (!contents) {
        fillErrorPlace(error,
                       gitErrorWithCode(RVGitBlobReadError, {{RVGitFilePathErrorKey, filePath}}));
        return nullptr;
    }
    return blobWithRepositoryFilePath(repository, filePath, std::move(*contents));
}

std::string_view RVGitBlob::contents() const {
    return buffer_ ? buffer_->view() : std::string_view(data_);
}

bool RVGitBlob::isEqualToBlob(const RVGitBlob& other) const {
    return contents() == other.contents();
}
