#include "RVGit/diff/RVGitDiffMap.h"

#include <array>
#include <utility>

namespace {

using Contents = RVGitDiffContents;

std::vector<std::string> textsOfRanges(const Contents& contents,
                                       const std::vector<Contents::Range>& ranges) {
    std::vector<std::string> texts;
    texts.reserve(ranges.size());
    for (const Contents::Range range : ranges)
        texts.emplace_back(contents.firstLineOfRange(range));
    return texts;
}

const char* textForLineType(RVGitDiffLineType type) {
    switch (type) {
        case RVGitDiffLineAdded:
            return RVGitDiffChunkLineTypeAdded;
        case RVGitDiffLineDeleted:
            return RVGitDiffChunkLineTypeDeleted;
        case RVGitDiffLineNoNewlineAtEndOfFile:
            return RVGitDiffChunkLineTypeNoNewlineAtEndOfFile;
        case RVGitDiffLineContext:
            break;
    }
    return RVGitDiffChunkLineTypeContext;
}

// One row a key: whether something stands under it, and what.
template <typename Map>
struct Entry {
    const char* key;
    bool (*isPresent)(const Map& map);
    RVGitDiffMapValue (*value)(const Map& map);
};

template <typename Map>
bool always(const Map&) {
    return true;
}

using LineMap = RVGitDiffChunkLineMap;
const std::array<Entry<LineMap>, 4> lineEntries = {{
    {RVGitDiffChunkLineLineNumbersKey, always,
     [](const LineMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkLineLineNumbers(); }},
    {RVGitDiffChunkLineTypeKey, always,
     [](const LineMap& map) -> RVGitDiffMapValue {
         return std::string(textForLineType(map.gitDiffChunkLineType()));
     }},
    {RVGitDiffChunkLineStatusKey, always,
     [](const LineMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkLineStatus(); }},
    {RVGitDiffChunkLineContentsKey, always,
     [](const LineMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkLineContents(); }},
}};

using ChunkMap = RVGitDiffChunkMap;
const std::array<Entry<ChunkMap>, 3> chunkEntries = {{
    {RVGitDiffChunkRawKey, always,
     [](const ChunkMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkRaw(); }},
    {RVGitDiffChunkFileRangesKey, always,
     [](const ChunkMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkFileRanges(); }},
    {RVGitDiffChunkLinesKey, always,
     [](const ChunkMap& map) -> RVGitDiffMapValue { return map.gitDiffChunkLines(); }},
}};

using Map = RVGitDiffMap;
const std::array<Entry<Map>, 13> diffEntries = {{
    {RVGitDiffRawKey, [](const Map& map) { return map.contents()->raw.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.gitDiffRaw(); }},
    {RVGitDiffHeaderKey, [](const Map& map) { return map.contents()->header.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.gitDiffHeader(); }},
    {RVGitDiffExtendedHeadersKey,
     [](const Map& map) { return !map.contents()->extendedHeaders.empty(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.gitDiffExtendedHeaders(); }},
    {RVGitDiffFilePathKey, [](const Map& map) { return map.contents()->filePath.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->filePath; }},
    {RVGitDiffOldFilePathKey,
     [](const Map& map) { return map.contents()->oldFilePath.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->oldFilePath; }},
    {RVGitDiffFileStatusKey, [](const Map& map) { return map.contents()->fileStatus.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue {
         return std::string(1, *map.contents()->fileStatus);
     }},
    {RVGitDiffFileStatusSimilarityIndexKey,
     [](const Map& map) { return map.contents()->similarityIndex.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->similarityIndex; }},
    {RVGitDiffObjectHashKey, [](const Map& map) { return map.contents()->objectHash.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->objectHash; }},
    {RVGitDiffOriginalObjectHashesKey,
     [](const Map& map) { return map.contents()->originalObjectHashes.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->originalObjectHashes; }},
    {RVGitDiffFileModeKey, [](const Map& map) { return map.contents()->fileMode.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->fileMode; }},
    {RVGitDiffOriginalFileModesKey,
     [](const Map& map) { return map.contents()->originalFileModes.has_value(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.contents()->originalFileModes; }},
    {RVGitDiffIsBinaryKey, [](const Map& map) { return map.contents()->isBinary; },
     [](const Map&) -> RVGitDiffMapValue { return true; }},
    {RVGitDiffChunksKey, [](const Map& map) { return !map.contents()->chunks.empty(); },
     [](const Map& map) -> RVGitDiffMapValue { return *map.gitDiffChunks(); }},
}};

template <typename AnyMap, std::size_t count>
std::vector<std::string> keysOf(const AnyMap& map,
                                const std::array<Entry<AnyMap>, count>& entries) {
    std::vector<std::string> keys;
    for (const auto& entry : entries) {
        if (entry.isPresent(map))
            keys.emplace_back(entry.key);
    }
    return keys;
}

template <typename AnyMap, std::size_t count>
const Entry<AnyMap>* presentEntry(const AnyMap& map,
                                  const std::array<Entry<AnyMap>, count>& entries,
                                  std::string_view key) {
    for (const auto& entry : entries) {
        if (key == entry.key)
            return entry.isPresent(map) ? &entry : nullptr;
    }
    return nullptr;
}

template <typename AnyMap, std::size_t count>
std::optional<RVGitDiffMapValue> valueForKey(const AnyMap& map,
                                             const std::array<Entry<AnyMap>, count>& entries,
                                             std::string_view key) {
    const auto* entry = presentEntry(map, entries, key);
    return entry ? std::optional(entry->value(map)) : std::nullopt;
}

}  // namespace

// A line.

RVGitDiffChunkLineMap::RVGitDiffChunkLineMap(std::shared_ptr<const RVGitDiffContents> contents,
                                             std::size_t chunkIndex, std::size_t lineIndex)
    : contents_(std::move(contents)), chunkIndex_(chunkIndex), lineIndex_(lineIndex) {}

const Contents::Chunk& RVGitDiffChunkLineMap::chunk() const {
    return contents_->chunks[chunkIndex_];
}

const Contents::Line& RVGitDiffChunkLineMap::line() const {
    return contents_->lines[chunk().firstLine + lineIndex_];
}

std::vector<std::string> RVGitDiffChunkLineMap::allKeys() const {
    return keysOf(*this, lineEntries);
}

bool RVGitDiffChunkLineMap::containsObjectForKey(std::string_view key) const {
    return presentEntry(*this, lineEntries, key) != nullptr;
}

std::optional<RVGitDiffMapValue> RVGitDiffChunkLineMap::objectForKey(std::string_view key) const {
    return valueForKey(*this, lineEntries, key);
}

std::vector<std::uint32_t> RVGitDiffChunkLineMap::gitDiffChunkLineLineNumbers() const {
    const std::uint32_t* first = contents_->lineNumbersOf(chunk(), lineIndex_);
    return {first, first + chunk().columnCount};
}

RVGitDiffLineType RVGitDiffChunkLineMap::gitDiffChunkLineType() const {
    return RVGitDiffLineType(line().type);
}

std::string RVGitDiffChunkLineMap::gitDiffChunkLineStatus() const {
    return std::string(contents_->status(line()));
}

std::string RVGitDiffChunkLineMap::gitDiffChunkLineContents() const {
    return std::string(contents_->content(line()));
}

// A chunk.

RVGitDiffChunkMap::RVGitDiffChunkMap(std::shared_ptr<const RVGitDiffContents> contents,
                                     std::size_t chunkIndex)
    : contents_(std::move(contents)), chunkIndex_(chunkIndex) {}

std::vector<std::string> RVGitDiffChunkMap::allKeys() const {
    return keysOf(*this, chunkEntries);
}

bool RVGitDiffChunkMap::containsObjectForKey(std::string_view key) const {
    return presentEntry(*this, chunkEntries, key) != nullptr;
}

std::optional<RVGitDiffMapValue> RVGitDiffChunkMap::objectForKey(std::string_view key) const {
    return valueForKey(*this, chunkEntries, key);
}

std::string RVGitDiffChunkMap::gitDiffChunkRaw() const {
    return contents_->textOfRange(contents_->chunks[chunkIndex_].raw);
}

std::vector<RVGitDiffRange> RVGitDiffChunkMap::gitDiffChunkFileRanges() const {
    return contents_->chunks[chunkIndex_].fileRanges;
}

std::vector<RVGitDiffChunkLineMap> RVGitDiffChunkMap::gitDiffChunkLines() const {
    std::vector<RVGitDiffChunkLineMap> lines;
    const std::size_t count = contents_->chunks[chunkIndex_].lineCount;
    lines.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        lines.emplace_back(contents_, chunkIndex_, index);
    return lines;
}

// A file.

RVGitDiffMap::RVGitDiffMap() : contents_(std::make_shared<const RVGitDiffContents>()) {}

RVGitDiffMap::RVGitDiffMap(std::shared_ptr<const RVGitDiffContents> contents)
    : contents_(std::move(contents)) {}

std::vector<std::string> RVGitDiffMap::allKeys() const {
    return keysOf(*this, diffEntries);
}

bool RVGitDiffMap::containsObjectForKey(std::string_view key) const {
    return presentEntry(*this, diffEntries, key) != nullptr;
}

std::optional<RVGitDiffMapValue> RVGitDiffMap::objectForKey(std::string_view key) const {
    return valueForKey(*this, diffEntries, key);
}

std::optional<std::string> RVGitDiffMap::gitDiffRaw() const {
    return contents_->raw ? std::optional(contents_->textOfRange(*contents_->raw)) : std::nullopt;
}

std::optional<std::string> RVGitDiffMap::gitDiffHeader() const {
    return contents_->header ? std::optional(contents_->textOfRange(*contents_->header))
                             : std::nullopt;
}

std::optional<std::vector<std::string>> RVGitDiffMap::gitDiffExtendedHeaders() const {
    if (contents_->extendedHeaders.empty())
        return std::nullopt;
    return textsOfRanges(*contents_, contents_->extendedHeaders);
}

std::optional<std::string> RVGitDiffMap::gitDiffFilePath() const {
    return contents_->filePath;
}

std::optional<std::string> RVGitDiffMap::gitDiffOldFilePath() const {
    return contents_->oldFilePath;
}

std::optional<std::string> RVGitDiffMap::gitDiffObjectHash() const {
    return contents_->objectHash;
}

std::optional<std::vector<std::string>> RVGitDiffMap::gitDiffOriginalObjectHashes() const {
    return contents_->originalObjectHashes;
}

std::optional<std::vector<std::string>> RVGitDiffMap::gitDiffOriginalFileModes() const {
    return contents_->originalFileModes;
}

std::optional<std::vector<RVGitDiffChunkMap>> RVGitDiffMap::gitDiffChunks() const {
    if (contents_->chunks.empty())
        return std::nullopt;
    std::vector<RVGitDiffChunkMap> chunks;
    chunks.reserve(contents_->chunks.size());
    for (std::size_t index = 0; index < contents_->chunks.size(); ++index)
        chunks.emplace_back(contents_, index);
    return chunks;
}

RVGitFileStatus RVGitDiffMap::gitDiffFileStatus() const {
    const auto status = contents_->fileStatus;
    return RVGitFileStatusFromString(status ? std::string_view(&*status, 1) : std::string_view());
}

RVGitFileMode RVGitDiffMap::gitDiffFileMode() const {
    return RVGitFileModeFromString(contents_->fileMode.value_or(std::string()));
}

std::uint64_t RVGitDiffMap::gitDiffFileStatusSimilarityIndex() const {
    return static_cast<std::uint64_t>(contents_->similarityIndex.value_or(0));
}

bool RVGitDiffMap::gitDiffIsBinary() const {
    return contents_->isBinary;
}
