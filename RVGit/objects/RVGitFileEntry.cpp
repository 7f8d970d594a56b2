#include "RVGit/objects/RVGitFileEntry.h"

#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVPath.h"

RVGitFileEntry::RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                               std::optional<std::string> objectHash, RVGitFileMode fileMode)
    : RVGitFileEntry(std::move(repository), std::move(filePath), RVGitCompactHash(objectHash),
                     fileMode) {}

RVGitFileEntry::RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                               RVGitCompactHash objectHash, RVGitFileMode fileMode)
    : repository_(std::move(repository)),
      filePath_(std::move(filePath)),
      objectHash_(std::move(objectHash)),
      fileMode_(static_cast<std::uint32_t>(fileMode)) {
    requireParameter(repository_ != nullptr, "repository");
}

RVGitFileEntry::~RVGitFileEntry() = default;

std::shared_ptr<RVGitFileEntry> RVGitFileEntry::fileEntryWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string filePath,
    std::optional<std::string> objectHash, RVGitFileMode fileMode) {
    return std::make_shared<RVGitFileEntry>(std::move(repository), std::move(filePath),
                                            std::move(objectHash), fileMode);
}

std::string RVGitFileEntry::fileName() const {
    return lastPathComponent(filePath_);
}

bool RVGitFileEntry::isNoFileType() const {
    return fileMode_ == RVGitFileModeNone;
}
bool RVGitFileEntry::isRegularFileType() const {
    return fileMode_ == RVGitFileModeRegular;
}
bool RVGitFileEntry::isExecutableFileType() const {
    return fileMode_ == RVGitFileModeExecutable;
}
bool RVGitFileEntry::isSymbolicLinkFileType() const {
    return fileMode_ == RVGitFileModeSymbolicLink;
}
bool RVGitFileEntry::isSubmoduleFileType() const {
    return fileMode_ == RVGitFileModeSubmodule;
}
bool RVGitFileEntry::isDirectoryFileType() const {
    return fileMode_ == RVGitFileModeDirectory;
}

std::string RVGitFileEntry::stringRepresentationForFileMode(RVGitFileMode fileMode) {
    return RVGitStringForFileMode(fileMode);
}

RVGitFileMode RVGitFileEntry::fileModeFromString(std::string_view text) {
    return RVGitFileModeFromString(text);
}

bool RVGitFileEntry::isEqualToFileEntry(const RVGitFileEntry& other) const {
    return filePath_ == other.filePath_ && objectHash_ == other.objectHash_;
}
