#include "RVGit/diff/RVGitDiff.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffLoader.h"
#include "RVGit/diff/RVGitDiffMap.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"
#include "RVGit/diff/RVGitDiffPatchGenerator.h"
#include "RVGit/objects/RVGitObject.h"

namespace {

// Compares what one revision changed, by `git log`.
RVGitDiffLoader loaderForRevision(const std::string& revision,
                                  const std::shared_ptr<RVGitRepository>& repository,
                                  const std::optional<RVOptions>& options) {
    RVGitDiffLoader loader(repository);
    loader.setRevisions({revision});
    loader.setLogOptions(options);
    return loader;
}

// Compares whatever the revisions name, by `git diff`.
RVGitDiffLoader loaderForRevisions(std::vector<std::string> revisions,
                                   const std::shared_ptr<RVGitRepository>& repository,
                                   const std::optional<RVOptions>& options) {
    RVGitDiffLoader loader(repository);
    loader.setRevisions(std::move(revisions));
    loader.setDiffOptions(options);
    return loader;
}

}  // namespace

RVGitDiff::RVGitDiff(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {}

RVGitDiff::~RVGitDiff() = default;

// Comparing.

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
    const std::string& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevision(revision, repository, options).loadDiffsForFilePaths(filePaths, error);
}

std::optional<RVData> RVGitDiff::generatePatchByComparingRevisionWithAncestorForRevision(
    const std::string& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevision(revision, repository, options)
        .generatePatchForFilePaths(filePaths, error);
}

std::optional<RVData> RVGitDiff::generatePatchByComparingRevision(
    const std::string& revision, const std::string& withRevision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevisions({revision, withRevision}, repository, options)
        .generatePatchForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingRevisions(
    const std::vector<std::string>& revisions, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevisions(revisions, repository, options)
        .loadDiffsForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsForRevisionRange(
    const std::string& revisionRange, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevisions({revisionRange}, repository, options)
        .loadDiffsForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
    const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return loaderForRevisions({}, repository, options).loadDiffsForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingWorkingTreeWithRevision(
    const std::string& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return loaderForRevisions({revision}, repository, options)
        .loadDiffsForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingIndexWithRevision(
    const std::optional<std::string>& revision, const FilePaths& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    RVOptions optionsForIndex = options.value_or(RVOptions());
    optionsForIndex.insert_or_assign(RVGitDiffOptionStaged, true);
    std::vector<std::string> revisions;
    if (!RVStringIsEmpty(revision))
        revisions.push_back(*revision);
    return loaderForRevisions(std::move(revisions), repository, optionsForIndex)
        .loadDiffsForFilePaths(filePaths, error);
}

RVGitDiff::Diffs RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths(
    const FilePaths& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    return allDiffsByComparingIndexWithRevision(std::nullopt, filePaths, repository, options,
                                                error);
}

std::shared_ptr<RVGitDiff> RVGitDiff::diffOfFile(const Diffs& diffs, std::string_view filePath) {
    if (RVArrayIsEmpty(diffs))
        return nullptr;
    const auto found = RVFindUnicodeName(
        diffs->begin(), diffs->end(), filePath,
        [](const auto& diff) { return diff->filePath() ? diff->filePath() : diff->oldFilePath(); });
    if (found != diffs->end())
        return *found;
    // The path that git prints may have been read in another way.
    const bool mayBePattern =
        filePath.starts_with(':') || filePath.find_first_of("*?[\\") != std::string_view::npos;
    return mayBePattern ? nullptr : diffs->front();
}

std::shared_ptr<RVGitDiff> RVGitDiff::diffByComparingBlob(
    const std::optional<std::string>& leftObjectHash,
    const std::optional<std::string>& rightObjectHash,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>&,
    RVErrorPlace error) {
    requireParameter(leftObjectHash || rightObjectHash, "leftObjectHash || rightObjectHash");
    const auto diffs = loaderForRevisions({leftObjectHash.value_or(RVGitNullFile),
                                           rightObjectHash.value_or(RVGitNullFile)},
                                          repository, std::nullopt)
                           .loadDiffs(error);
    if (!diffs)
        return nullptr;
    if (diffs->empty()) {
        clearErrorPlace(error);
        return nullptr;
    }
    return diffs->front();
}

std::shared_ptr<RVGitDiff> RVGitDiff::diffByComparingBlobWithEmptyBlob(
    const std::optional<std::string>& leftObjectHash,
    const std::optional<std::string>& rightObjectHash,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    requireParameter(leftObjectHash || rightObjectHash, "leftObjectHash || rightObjectHash");
    const auto command = RVGitCommand::gitCommandWithRepository(repository);
    command->setGitCommand("hash-object");
    command->addGitCommandOptions({"-w", "--stdin"});
    if (!command->run(error))
        return nullptr;
    const std::string emptyBlob(trimmedNewlines(command->standardOutputData()));
    return diffByComparingBlob(leftObjectHash.value_or(emptyBlob),
                               rightObjectHash.value_or(emptyBlob), repository, std::nullopt,
                               error);
}

// Converting.

std::shared_ptr<RVGitDiff> RVGitDiff::diffWithRepository(
    std::shared_ptr<RVGitRepository> repository, const RVGitDiffMap& gitDiff) {
    auto diff = std::make_shared<RVGitDiff>(std::move(repository));
    const std::shared_ptr<const RVGitDiffContents>& contents = gitDiff.contents();
    diff->contents_ = contents;
    diff->chunks_.reserve(contents->chunks.size());
    for (std::size_t index = 0; index < contents->chunks.size(); ++index) {
        auto chunk = std::make_shared<RVGitDiffChunk>(contents, index);
        chunk->setDiff(diff);
        diff->chunks_.push_back(std::move(chunk));
    }
    diff->containsNoNewlineAtEOFWarning_ =
        std::ranges::any_of(contents->lines, [](const RVGitDiffContents::Line& line) {
            return line.type == RVGitDiffLineNoNewlineAtEndOfFile;
        });
    diff->filePath_ = gitDiff.gitDiffFilePath();
    diff->oldFilePath_ = gitDiff.gitDiffOldFilePath();
    diff->header_ = gitDiff.gitDiffHeader();
    if (contents->header && !contents->decodedLines.empty())
        diff->headerBytes_ = contents->bytesOfRange(*contents->header);
    diff->extendedHeaders_ = gitDiff.gitDiffExtendedHeaders().value_or(std::vector<std::string>());
    diff->isBinary_ = gitDiff.gitDiffIsBinary();
    diff->fileStatus_ = gitDiff.gitDiffFileStatus();
    diff->fileStatusSimilarityIndex_ = gitDiff.gitDiffFileStatusSimilarityIndex();
    diff->objectHash_ = gitDiff.gitDiffObjectHash();
    diff->originalObjectHashes_ =
        gitDiff.gitDiffOriginalObjectHashes().value_or(std::vector<std::string>());
    diff->fileMode_ = gitDiff.gitDiffFileMode();
    diff->originalFileModes_ =
        gitDiff.gitDiffOriginalFileModes().value_or(std::vector<std::string>());
    return diff;
}

std::shared_ptr<RVGitDiff> RVGitDiff::diffFromRawDiff(std::string_view rawDiff,
                                                      RVErrorPlace error) {
    RVGitDiffOutputParser parser(rawDiff);
    if (!parser.parse(error) && error)
        return nullptr;
    return diffWithRepository(nullptr, parser.diff());
}

// Patches.

RVGitDiffPatchGenerator RVGitDiff::patchGenerator() const {
    // It lives no longer than the call, so that it need not own the diff.
    return RVGitDiffPatchGenerator(std::shared_ptr<const RVGitDiff>(std::shared_ptr<void>(), this));
}

std::optional<RVData> RVGitDiff::patchForChunkAtIndex(std::size_t chunkIndex) const {
    return patchGenerator().patchForChunkAtIndex(chunkIndex);
}

RVData RVGitDiff::indexPatchForChunkAtIndex(std::size_t chunkIndex,
                                            const std::set<std::size_t>& linesWithIndexes) const {
    return patchGenerator().indexPatchForChunkAtIndex(chunkIndex, linesWithIndexes);
}

RVData RVGitDiff::worktreePatchForChunkAtIndex(
    std::size_t chunkIndex, const std::set<std::size_t>& linesWithIndexes) const {
    return patchGenerator().worktreePatchForChunkAtIndex(chunkIndex, linesWithIndexes);
}

std::optional<RVData> RVGitDiff::locatedIndexPatchForLinesWithIndexes(
    const std::map<std::size_t, std::set<std::size_t>>& linesWithIndexes) const {
    return patchGenerator().locatedPatchForLinesWithIndexes(linesWithIndexes,
                                                            RVGitDiffPatchGenerator::IndexMode);
}

std::optional<RVData> RVGitDiff::locatedWorktreePatchForLinesWithIndexes(
    const std::map<std::size_t, std::set<std::size_t>>& linesWithIndexes) const {
    return patchGenerator().locatedPatchForLinesWithIndexes(linesWithIndexes,
                                                            RVGitDiffPatchGenerator::WorktreeMode);
}

// Fields.

bool RVGitDiff::isEqualToDiff(const RVGitDiff& other) const {
    return rawDiff() == other.rawDiff();
}

std::optional<std::string> RVGitDiff::rawDiff() const {
    if (!contents_ || !contents_->raw)
        return std::nullopt;
    return contents_->textOfRange(*contents_->raw);
}

std::optional<RVData> RVGitDiff::rawDiffBytes() const {
    if (!contents_ || !contents_->raw)
        return std::nullopt;
    return contents_->bytesOfRange(*contents_->raw);
}

void RVGitDiff::setRawDiff(std::optional<std::string> rawDiff) {
    if (!rawDiff) {
        contents_.reset();
        return;
    }
    auto text = std::make_shared<const std::string>(*std::move(rawDiff));
    auto contents = std::make_shared<RVGitDiffContents>();
    contents->text = *text;
    contents->raw = {0, static_cast<std::uint32_t>(text->size())};
    contents->textOwner = std::move(text);
    contents_ = std::move(contents);
}

bool RVGitDiff::isCombinedDiff() const {
    return contents_ && contents_->raw &&
           contents_->firstLineOfRange(*contents_->raw).starts_with("diff --combined");
}

std::optional<std::string> RVGitDiff::originalObjectHash() const {
    if (originalObjectHashes_.empty() ||
        RVGitObject::isNullObjectHash(originalObjectHashes_.front()))
        return std::nullopt;
    return originalObjectHashes_.front();
}

RVGitFileMode RVGitDiff::originalFileMode() const {
    return originalFileModes_.empty() ? RVGitFileModeNone
                                      : RVGitFileModeFromString(originalFileModes_.front());
}

std::uint64_t RVGitDiff::linesAdded() const {
    std::uint64_t count = 0;
    for (const auto& chunk : chunks_)
        count += chunk->insertions();
    return count;
}

std::uint64_t RVGitDiff::linesDeleted() const {
    std::uint64_t count = 0;
    for (const auto& chunk : chunks_)
        count += chunk->deletions();
    return count;
}
