#include "RVGit/objects/RVGitFileEntry.h"

#include <utility>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVPath.h"

RVGitFileEntry::RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                               std::optional<std::string> objectHash, RVGitFileMode fileMode)
    : repository_(std::move(repository)),
      filePath_(std::move(filePath)),
      fileMode_(static_cast<std::uint32_t>(fileMode)) {
    requireParameter(repository_ != nullptr, "repository");
    if (!objectHash)
        return;
    if (const auto hash = RVGitCompactHash::hashOfDigits(*objectHash))
        objectHash_ = *hash;
    else
        objectHash_ = std::make_shared<const std::string>(std::move(*objectHash));
}

RVGitFileEntry::RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                               RVGitCompactHash objectHash, RVGitFileMode fileMode)
    : repository_(std::move(repository)),
      filePath_(std::move(filePath)),
      objectHash_(objectHash),
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

std::optional<std::string> RVGitFileEntry::objectHash() const {
    if (const auto* hash = std::get_if<RVGitCompactHash>(&objectHash_))
        return hash->text();
    if (const auto* text = std::get_if<std::shared_ptr<const std::string>>(&objectHash_))
        return **text;
    return std::nullopt;
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
    return filePath_ == other.filePath_ && objectHash() == other.objectHash();
}
