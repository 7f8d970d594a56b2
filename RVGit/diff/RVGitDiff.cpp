#include "RVGit/diff/RVGitDiff.h"

#include <algorithm>
#include <utility>

#include "RVGit/diff/RVGitDiffMap.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"
#include "RVGit/objects/RVGitObject.h"

RVGitDiff::RVGitDiff(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {}

RVGitDiff::~RVGitDiff() = default;

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

bool RVGitDiff::isEqualToDiff(const RVGitDiff& other) const {
    return rawDiff() == other.rawDiff();
}

std::optional<std::string> RVGitDiff::rawDiff() const {
    if (!contents_ || !contents_->raw)
        return std::nullopt;
    return contents_->textOfRange(*contents_->raw);
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
