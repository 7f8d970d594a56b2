#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"

class RVGitRepository;

/// Base of what has an object hash: commits, tags, blobs and trees. A snapshot that holds its
/// repository strongly; immutable here, so any thread may read it.
class RVGIT_EXPORT RVGitObject {
public:
    /// The repository is required.
    RVGitObject(std::shared_ptr<RVGitRepository> repository, RVGitObjectType objectType,
                std::optional<std::string> objectHash);
    virtual ~RVGitObject();

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] RVGitObjectType objectType() const { return objectType_; }
    /// Absent where the object is known by other means, such as a blob of the working tree.
    [[nodiscard]] virtual std::optional<std::string> objectHash() const { return objectHash_; }
    /// shortenObjectHash() of the hash; absent without one.
    [[nodiscard]] std::optional<std::string> shortObjectHash() const;

    [[nodiscard]] bool isBlobObject() const;
    [[nodiscard]] bool isTreeObject() const;
    [[nodiscard]] bool isCommitObject() const;
    [[nodiscard]] bool isTagObject() const;

    /// The type of "tree", "blob", "commit" or "tag" in any case; none for any other text.
    [[nodiscard]] static RVGitObjectType objectTypeFromString(std::string_view text);
    /// "Tree", "Blob", "Commit" or "Tag", and "None" for anything else.
    [[nodiscard]] static std::string stringRepresentationForObjectType(RVGitObjectType objectType);
    /// The mode of git's six octal digits, and no mode for an unknown text:
    /// RVGitFileEntry::fileModeFromString() answers "regular" there.
    [[nodiscard]] static RVGitFileMode fileModeFromString(std::string_view text);

    /// "revision:filePath", an absent part counting as empty: "HEAD:" is the tree of HEAD.
    [[nodiscard]] static std::string objectReferenceWithRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath);

    /// The first 8 characters; a shorter hash comes back as it is, an absent one absent.
    [[nodiscard]] static std::optional<std::string> shortenObjectHash(
        const std::optional<std::string>& objectHash);
    /// The first `length` characters; absent if the hash has fewer. Kept for compatibility: unlike
    /// the form without a length, this one does not give a shorter hash back.
    [[nodiscard]] static std::optional<std::string> shortenObjectHash(
        const std::optional<std::string>& objectHash, std::size_t length);
    /// The same as shortenObjectHash() without a length.
    [[nodiscard]] static std::optional<std::string> abbreviateObjectHash(
        const std::optional<std::string>& objectHash);
    /// Whether the hash is exactly forty zeros.
    [[nodiscard]] static bool isNullObjectHash(const std::optional<std::string>& objectHash);

protected:
    /// A blank object, without a repository, for the subclass that has such a thing.
    explicit RVGitObject(RVGitObjectType objectType);

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::optional<std::string> objectHash_;
    RVGitObjectType objectType_;
};
