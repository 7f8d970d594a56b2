#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffChunk.h"

class RVGitDiffMap;
class RVGitDiffPatchGenerator;
class RVGitRepository;

/// What changed in one file. A snapshot; a raw text is made when it is read, of what git printed.
/// Where the configuration has a textconv program for the file, it shows what that program makes of
/// it, and no patch of it applies.
class RVGIT_EXPORT RVGitDiff {
public:
    using Diffs = std::optional<std::vector<std::shared_ptr<RVGitDiff>>>;
    using FilePaths = std::vector<std::string>;

    explicit RVGitDiff(std::shared_ptr<RVGitRepository> repository = nullptr);
    ~RVGitDiff();

    // Comparing, each by one run of git. Without file paths all files are compared. Absent, with
    // the place filled, if git failed. The options are those of RVGitDiffCommand and of
    // RVGitDiffLoader.

    /// What a revision changed against its parent; the options may be those of RVGitLogCommand too.
    /// Without options (std::nullopt, not RVOptions(), and `{}` does not compile) the working tree
    /// is compared with the revision instead. With file paths it is what the last commit changed
    /// that touched one of them, be it the revision or one before it. Empty where a changed text
    /// holds a NUL byte: see RVGitComparisonLoader.
    [[nodiscard]] static Diffs allDiffsByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    static Diffs allDiffsByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, RVEmptyBraces options,
        RVErrorPlace error = nullptr) = delete;
    /// The same as a patch.
    [[nodiscard]] static std::optional<RVData>
    generatePatchByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    static std::optional<RVData> generatePatchByComparingRevisionWithAncestorForRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, RVEmptyBraces options,
        RVErrorPlace error = nullptr) = delete;
    /// What leads from the first revision to the second, as a patch.
    [[nodiscard]] static std::optional<RVData> generatePatchByComparingRevision(
        const std::string& revision, const std::string& withRevision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// Of two revisions, what leads from the first to the second; of one, from it to the working
    /// tree; of none, from the index to the working tree. With RVGitDiffOptionStaged the index
    /// stands in the place of the working tree, and HEAD in that of the index.
    [[nodiscard]] static Diffs allDiffsByComparingRevisions(
        const std::vector<std::string>& revisions, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// What leads from one end of "a..b" to the other, or to the second of "a...b" from what both
    /// have in common.
    [[nodiscard]] static Diffs allDiffsForRevisionRange(
        const std::string& revisionRange, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// What has changed and is not staged.
    [[nodiscard]] static Diffs allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
        const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    /// What leads from the revision to the working tree, staged or not.
    [[nodiscard]] static Diffs allDiffsByComparingWorkingTreeWithRevision(
        const std::string& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// What leads from the revision to the index. An absent or empty one leaves the choice to git,
    /// which is HEAD.
    [[nodiscard]] static Diffs allDiffsByComparingIndexWithRevision(
        const std::optional<std::string>& revision, const FilePaths& filePaths,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// What is staged.
    [[nodiscard]] static Diffs allDiffsByComparingIndexWithBaseForFilePaths(
        const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options, RVErrorPlace error = nullptr);
    /// Of what a comparison gave that was asked for one file, that file's diff. Git takes a path
    /// for a pattern, so that the first diff may be another's; it counts only for a path that
    /// cannot be a pattern. Null without one.
    [[nodiscard]] static std::shared_ptr<RVGitDiff> diffOfFile(const Diffs& diffs,
                                                               std::string_view filePath);
    /// At least one hash is required; an absent one becomes "/dev/null", with which git fails to
    /// compare a blob. The options are not passed on. Null with a cleared place if the blobs are
    /// the same.
    [[nodiscard]] static std::shared_ptr<RVGitDiff> diffByComparingBlob(
        const std::optional<std::string>& leftObjectHash,
        const std::optional<std::string>& rightObjectHash,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);
    /// The same with the repository's empty blob, which is added to it, in the place of an absent
    /// one.
    [[nodiscard]] static std::shared_ptr<RVGitDiff> diffByComparingBlobWithEmptyBlob(
        const std::optional<std::string>& leftObjectHash,
        const std::optional<std::string>& rightObjectHash,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    // Converting.

    /// What a parser has read of one file.
    [[nodiscard]] static std::shared_ptr<RVGitDiff> diffWithRepository(
        std::shared_ptr<RVGitRepository> repository, const RVGitDiffMap& gitDiff);
    /// A diff without a repository, of the text of one file's diff. Null, with code 11, if the text
    /// cannot be read and a place was given; without a place, of whatever could be read.
    [[nodiscard]] static std::shared_ptr<RVGitDiff> diffFromRawDiff(std::string_view rawDiff,
                                                                    RVErrorPlace error = nullptr);

    // Patches of one chunk, as RVGitDiffPatchGenerator makes them.
    [[nodiscard]] std::optional<RVData> patchForChunkAtIndex(std::size_t chunkIndex) const;
    [[nodiscard]] RVData indexPatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    [[nodiscard]] RVData worktreePatchForChunkAtIndex(
        std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const;
    // Patches of lines of any chunks, which land where the lines stand, whatever else is applied:
    // see RVGitDiffPatchGenerator::locatedPatchForLinesWithIndexes().
    [[nodiscard]] std::optional<RVData> locatedIndexPatchForLinesWithIndexes(
        const std::map<std::size_t, std::set<std::size_t>>& linesWithIndexes) const;
    [[nodiscard]] std::optional<RVData> locatedWorktreePatchForLinesWithIndexes(
        const std::map<std::size_t, std::set<std::size_t>>& linesWithIndexes) const;

    /// Whether the raw texts are the same; nothing else counts.
    [[nodiscard]] bool isEqualToDiff(const RVGitDiff& other) const;

    /// Null for a diff that was made from text alone.
    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// The diff as git printed it, without blank lines.
    [[nodiscard]] std::optional<std::string> rawDiff() const;
    void setRawDiff(std::optional<std::string> rawDiff);
    /// The same in the bytes that git printed, of which the text is decoded line by line.
    [[nodiscard]] std::optional<RVData> rawDiffBytes() const;
    /// Absent for a deleted file.
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    void setFilePath(std::optional<std::string> path) { filePath_ = std::move(path); }
    /// Absent for a new file.
    [[nodiscard]] const std::optional<std::string>& oldFilePath() const { return oldFilePath_; }
    void setOldFilePath(std::optional<std::string> path) { oldFilePath_ = std::move(path); }
    /// The header lines; absent for a combined diff.
    [[nodiscard]] const std::optional<std::string>& header() const { return header_; }
    void setHeader(std::optional<std::string> header) {
        header_ = std::move(header);
        headerBytes_.reset();
    }
    /// The same in the bytes that git printed; the text, if it was set.
    [[nodiscard]] const std::optional<RVData>& headerBytes() const {
        return headerBytes_ ? headerBytes_ : header_;
    }
    [[nodiscard]] const std::vector<std::string>& extendedHeaders() const {
        return extendedHeaders_;
    }
    void setExtendedHeaders(std::vector<std::string> headers) {
        extendedHeaders_ = std::move(headers);
    }
    [[nodiscard]] const std::vector<std::shared_ptr<RVGitDiffChunk>>& chunks() const {
        return chunks_;
    }
    void setChunks(std::vector<std::shared_ptr<RVGitDiffChunk>> chunks) {
        chunks_ = std::move(chunks);
    }
    [[nodiscard]] bool isBinary() const { return isBinary_; }
    void setBinary(bool isBinary) { isBinary_ = isBinary; }
    [[nodiscard]] std::uint64_t totalChunks() const { return chunks_.size(); }
    /// Kept for compatibility: has no effect.
    void setTotalChunks(std::uint64_t) {}
    [[nodiscard]] RVGitFileStatus fileStatus() const { return fileStatus_; }
    void setFileStatus(RVGitFileStatus status) { fileStatus_ = status; }
    /// In per cent.
    [[nodiscard]] std::uint64_t fileStatusSimilarityIndex() const {
        return fileStatusSimilarityIndex_;
    }
    void setFileStatusSimilarityIndex(std::uint64_t index) { fileStatusSimilarityIndex_ = index; }
    [[nodiscard]] const std::optional<std::string>& objectHash() const { return objectHash_; }
    void setObjectHash(std::optional<std::string> hash) { objectHash_ = std::move(hash); }
    /// One for each parent.
    [[nodiscard]] const std::vector<std::string>& originalObjectHashes() const {
        return originalObjectHashes_;
    }
    void setOriginalObjectHashes(std::vector<std::string> hashes) {
        originalObjectHashes_ = std::move(hashes);
    }
    [[nodiscard]] RVGitFileMode fileMode() const { return fileMode_; }
    void setFileMode(RVGitFileMode mode) { fileMode_ = mode; }
    /// As git prints them.
    [[nodiscard]] const std::vector<std::string>& originalFileModes() const {
        return originalFileModes_;
    }
    void setOriginalFileModes(std::vector<std::string> modes) {
        originalFileModes_ = std::move(modes);
    }
    /// Whether any line says that a version ends without a line break.
    [[nodiscard]] bool containsNoNewlineAtEOFWarning() const {
        return containsNoNewlineAtEOFWarning_;
    }
    void setContainsNoNewlineAtEOFWarning(bool contains) {
        containsNoNewlineAtEOFWarning_ = contains;
    }

    /// Whether the raw text begins with "diff --combined". Kept for compatibility: false for
    /// "diff --cc".
    [[nodiscard]] bool isCombinedDiff() const;
    /// The first one; absent if there is none or it is all zeros.
    [[nodiscard]] std::optional<std::string> originalObjectHash() const;
    /// The first one; none if there is none.
    [[nodiscard]] RVGitFileMode originalFileMode() const;
    [[nodiscard]] std::uint64_t linesAdded() const;
    [[nodiscard]] std::uint64_t linesDeleted() const;
    [[nodiscard]] bool isFileStatusAdded() const { return fileStatus_ == RVGitFileStatusAdded; }
    [[nodiscard]] bool isFileStatusDeleted() const { return fileStatus_ == RVGitFileStatusDeleted; }
    [[nodiscard]] bool isFileStatusModified() const {
        return fileStatus_ == RVGitFileStatusModified;
    }
    [[nodiscard]] bool isFileStatusRenamed() const { return fileStatus_ == RVGitFileStatusRenamed; }
    [[nodiscard]] bool isFileStatusCopied() const { return fileStatus_ == RVGitFileStatusCopied; }

private:
    [[nodiscard]] RVGitDiffPatchGenerator patchGenerator() const;

    std::shared_ptr<RVGitRepository> repository_;
    /// Where the raw text stands.
    std::shared_ptr<const RVGitDiffContents> contents_;
    std::optional<std::string> filePath_;
    std::optional<std::string> oldFilePath_;
    std::optional<std::string> header_;
    /// Only where they are not those of the text.
    std::optional<RVData> headerBytes_;
    std::vector<std::string> extendedHeaders_;
    std::vector<std::shared_ptr<RVGitDiffChunk>> chunks_;
    bool isBinary_ = false;
    RVGitFileStatus fileStatus_ = RVGitFileStatusNone;
    std::uint64_t fileStatusSimilarityIndex_ = 0;
    std::optional<std::string> objectHash_;
    std::vector<std::string> originalObjectHashes_;
    RVGitFileMode fileMode_ = RVGitFileModeNone;
    std::vector<std::string> originalFileModes_;
    bool containsNoNewlineAtEOFWarning_ = false;
};
