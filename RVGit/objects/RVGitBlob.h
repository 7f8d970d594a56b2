#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/objects/RVGitObject.h"

class RVDataBuffer;

/// The contents of a file as git keeps them, or as they lie in the working tree. Where the blob
/// comes from decides which of hash, revision and path are set. Immutable, readable on any thread.
class RVGIT_EXPORT RVGitBlob : public RVGitObject {
public:
    /// The repository is required.
    RVGitBlob(std::shared_ptr<RVGitRepository> repository, std::optional<std::string> blobHash,
              std::optional<std::string> revision, std::optional<std::string> filePath,
              RVData contents);
    /// Shares the bytes of a finished command instead of copying them. The buffer is required.
    RVGitBlob(std::shared_ptr<RVGitRepository> repository, std::optional<std::string> blobHash,
              std::optional<std::string> revision, std::optional<std::string> filePath,
              std::shared_ptr<const RVDataBuffer> contents);

    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobWithRepositoryFilePath(
        std::shared_ptr<RVGitRepository> repository, std::string filePath, RVData contents);
    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobWithRepositoryBlobHash(
        std::shared_ptr<RVGitRepository> repository, std::string blobHash, RVData contents);
    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::optional<std::string> revision,
        std::optional<std::string> filePath, RVData contents);

    /// Runs `git show` with the hash; the blob has that hash and neither revision nor path. Null
    /// on failure: code 1201 if there is no such object and git says so in words known here.
    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobForHash(
        const std::string& blobHash, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// Runs `git show` with "revision:filePath"; an empty or absent revision is the index. The
    /// blob has the revision and the path and no hash. Null on failure: code 1201 if the revision
    /// or the path does not exist.
    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Reads the file from the working tree; no git is run. The contents of a symbolic link are
    /// its target's path. The path is joined with the top of the working tree as it is, so ".."
    /// leaves the tree. Null with code 1200 if the file, or what a link points to, cannot be read,
    /// is no regular file, or lies behind a link, where git sees no file of the tree.
    [[nodiscard]] static std::shared_ptr<RVGitBlob> blobForCurrentFileAtPath(
        const std::string& filePath, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    [[nodiscard]] std::optional<std::string> blobHash() const { return objectHash(); }
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    /// The bytes; the view holds as long as the blob.
    [[nodiscard]] std::string_view contents() const;
    [[nodiscard]] std::size_t size() const { return contents().size(); }

    /// Compares the contents only.
    [[nodiscard]] bool isEqualToBlob(const RVGitBlob& other) const;

private:
    std::optional<std::string> revision_;
    std::optional<std::string> filePath_;
    RVData data_;
    std::shared_ptr<const RVDataBuffer> buffer_;
};
