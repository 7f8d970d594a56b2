#include "RVGit/objects/RVGitObject.h"

#include <utility>

#include "RVGit/base/RVError.h"

RVGitObject::RVGitObject(std::shared_ptr<RVGitRepository> repository, RVGitObjectType objectType,
                         std::optional<std::string> objectHash)
    : repository_(std::move(repository)),
      objectHash_(std::move(objectHash)),
      objectType_(objectType) {
    requireParameter(repository_ != nullptr, "repository");
}

RVGitObject::RVGitObject(RVGitObjectType objectType) : objectType_(objectType) {}

RVGitObject::~RVGitObject() = default;

std::optional<std::string> RVGitObject::shortObjectHash() const {
    return shortenObjectHash(objectHash());
}

bool RVGitObject::isBlobObject() const {
    return objectType_ == RVGitObjectTypeBlob;
}
bool RVGitObject::isTreeObject() const {
    return objectType_ == RVGitObjectTypeTree;
}
bool RVGitObject::isCommitObject() const {
    return objectType_ == RVGitObjectTypeCommit;
}
bool RVGitObject::isTagObject() const {
    return objectType_ == RVGitObjectTypeTag;
}

RVGitObjectType RVGitObject::objectTypeFromString(std::string_view text) {
    return RVGitObjectTypeFromString(text);
}

std::string RVGitObject::stringRepresentationForObjectType(RVGitObjectType objectType) {
    return RVGitStringForObjectType(objectType);
}

RVGitFileMode RVGitObject::fileModeFromString(std::string_view text) {
    return RVGitKnownFileModeFromString(text).value_or(RVGitFileModeNone);
}

std::string RVGitObject::objectReferenceWithRevision(const std::optional<std::string>& revision,
                                                     const std::optional<std::string>& filePath) {
    return RVGitMakeObjectReference(revision, filePath);
}

std::optional<std::string> RVGitObject::shortenObjectHash(
    const std::optional<std::string>& objectHash) {
    return RVGitShortenHash(objectHash);
}

std::optional<std::string> RVGitObject::shortenObjectHash(
    const std::optional<std::string>& objectHash, std::size_t length) {
    return RVGitShortenHashWithLength(objectHash, length);
}

std::optional<std::string> RVGitObject::abbreviateObjectHash(
    const std::optional<std::string>& objectHash) {
    return shortenObjectHash(objectHash);
}

bool RVGitObject::isNullObjectHash(const std::optional<std::string>& objectHash) {
    return objectHash == RVGitNullObjectHash;
}
