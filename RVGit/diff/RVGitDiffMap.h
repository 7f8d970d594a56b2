#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffContents.h"

// Keys of a diff map.

/// Text: every line of the file's diff, each followed by "\n".
inline constexpr char RVGitDiffRawKey[] = "RVGitDiffRawKey";
/// Text: the header lines. Absent for a combined diff.
inline constexpr char RVGitDiffHeaderKey[] = "RVGitDiffHeaderKey";
/// List of text: the extended header lines, as they stand.
inline constexpr char RVGitDiffExtendedHeadersKey[] = "RVGitDiffExtendedHeadersKey";
/// Text: the path in the new version. Absent for a deleted file.
inline constexpr char RVGitDiffFilePathKey[] = "RVGitDiffFilePathKey";
/// Text: the path in the old version. Absent for a new file.
inline constexpr char RVGitDiffOldFilePathKey[] = "RVGitDiffOldFilePathKey";
/// Text: one of the status letters below.
inline constexpr char RVGitDiffFileStatusKey[] = "RVGitDiffFileStatusKey";
/// Integer, in per cent.
inline constexpr char RVGitDiffFileStatusSimilarityIndexKey[] =
    "RVGitDiffFileStatusSimilarityIndexKey";
/// Text: the hash of the new version, as long as git printed it.
inline constexpr char RVGitDiffObjectHashKey[] = "RVGitDiffObjectHashKey";
/// List of text: one hash for each parent.
inline constexpr char RVGitDiffOriginalObjectHashesKey[] = "RVGitDiffOriginalObjectHashesKey";
/// Text: the mode as printed, for instance "100644".
inline constexpr char RVGitDiffFileModeKey[] = "RVGitDiffFileModeKey";
/// List of text: the earlier mode or modes.
inline constexpr char RVGitDiffOriginalFileModesKey[] = "RVGitDiffOriginalFileModesKey";
/// Boolean: present, and true, where git said that the files are binary.
inline constexpr char RVGitDiffIsBinaryKey[] = "RVGitDiffIsBinaryKey";
/// List of chunk maps. Absent if there are no chunks.
inline constexpr char RVGitDiffChunksKey[] = "RVGitDiffChunksKey";

// Keys of a chunk map.

/// Text: the header line and every line of the chunk, each followed by "\n".
inline constexpr char RVGitDiffChunkRawKey[] = "RVGitDiffChunkRawKey";
/// List of ranges: one for each parent, then one for the new file.
inline constexpr char RVGitDiffChunkFileRangesKey[] = "RVGitDiffChunkFileRangesKey";
/// List of line maps. Kept for compatibility: its text is that of RVGitDiffChunkLineStatusKey,
/// which lives in another map.
inline constexpr char RVGitDiffChunkLinesKey[] = "RVGitDiffChunkLineStatusKey";

// Keys of a line map.

/// List of unsigned: the line's number in each parent, then in the new file. In a version in which
/// the line does not stand, it is the number of the last line before.
inline constexpr char RVGitDiffChunkLineLineNumbersKey[] = "RVGitDiffChunkLineLineNumbersKey";
/// Text: one of the line types below.
inline constexpr char RVGitDiffChunkLineTypeKey[] = "RVGitDiffChunkLineTypeKey";
/// Text: the status columns, one for each parent.
inline constexpr char RVGitDiffChunkLineStatusKey[] = "RVGitDiffChunkLineStatusKey";
/// Text: the line behind its status columns. Kept for compatibility: the text has no plural.
inline constexpr char RVGitDiffChunkLineContentsKey[] = "RVGitDiffChunkLineContentKey";

// Status letters.
inline constexpr char RVGitDiffFileStatusModified[] = "M";
inline constexpr char RVGitDiffFileStatusAdded[] = "A";
inline constexpr char RVGitDiffFileStatusDeleted[] = "D";
inline constexpr char RVGitDiffFileStatusRenamed[] = "R";
inline constexpr char RVGitDiffFileStatusCopied[] = "C";

// Line types.
inline constexpr char RVGitDiffChunkLineTypeContext[] = " ";
inline constexpr char RVGitDiffChunkLineTypeAdded[] = "+";
inline constexpr char RVGitDiffChunkLineTypeDeleted[] = "-";
/// Two slashes, though the character in git's output is a backslash.
inline constexpr char RVGitDiffChunkLineTypeNoNewlineAtEndOfFile[] = "//";

class RVGitDiffChunkMap;
class RVGitDiffChunkLineMap;

/// A value of a diff map, chunk map or line map.
using RVGitDiffMapValue =
    std::variant<std::string, std::int64_t, bool, std::vector<std::string>,
                 std::vector<std::uint32_t>, std::vector<RVGitDiffRange>,
                 std::vector<RVGitDiffChunkMap>, std::vector<RVGitDiffChunkLineMap>>;

/// One line of a chunk, as RVGitDiffMap is one file.
class RVGIT_EXPORT RVGitDiffChunkLineMap {
public:
    /// `lineIndex` counts from the first line of the chunk.
    RVGitDiffChunkLineMap(std::shared_ptr<const RVGitDiffContents> contents, std::size_t chunkIndex,
                          std::size_t lineIndex);

    [[nodiscard]] std::vector<std::string> allKeys() const;
    [[nodiscard]] bool containsObjectForKey(std::string_view key) const;
    [[nodiscard]] std::optional<RVGitDiffMapValue> objectForKey(std::string_view key) const;

    [[nodiscard]] std::vector<std::uint32_t> gitDiffChunkLineLineNumbers() const;
    [[nodiscard]] RVGitDiffLineType gitDiffChunkLineType() const;
    [[nodiscard]] std::string gitDiffChunkLineStatus() const;
    [[nodiscard]] std::string gitDiffChunkLineContents() const;

private:
    [[nodiscard]] const RVGitDiffContents::Chunk& chunk() const;
    [[nodiscard]] const RVGitDiffContents::Line& line() const;

    std::shared_ptr<const RVGitDiffContents> contents_;
    std::size_t chunkIndex_;
    std::size_t lineIndex_;
};

/// One chunk, as RVGitDiffMap is one file.
class RVGIT_EXPORT RVGitDiffChunkMap {
public:
    RVGitDiffChunkMap(std::shared_ptr<const RVGitDiffContents> contents, std::size_t chunkIndex);

    [[nodiscard]] std::vector<std::string> allKeys() const;
    [[nodiscard]] bool containsObjectForKey(std::string_view key) const;
    [[nodiscard]] std::optional<RVGitDiffMapValue> objectForKey(std::string_view key) const;

    [[nodiscard]] std::string gitDiffChunkRaw() const;
    [[nodiscard]] std::vector<RVGitDiffRange> gitDiffChunkFileRanges() const;
    [[nodiscard]] std::vector<RVGitDiffChunkLineMap> gitDiffChunkLines() const;

private:
    std::shared_ptr<const RVGitDiffContents> contents_;
    std::size_t chunkIndex_;
};

/// What was parsed of one file's diff, under the keys above: the form in which RVGitDiffParser
/// hands diffs to RVGitDiff. A value that is read is made then, of the text that git printed and
/// that the map keeps alive; so copies are cheap. Immutable: any thread may read it.
class RVGIT_EXPORT RVGitDiffMap {
public:
    /// An empty map.
    RVGitDiffMap();
    explicit RVGitDiffMap(std::shared_ptr<const RVGitDiffContents> contents);

    [[nodiscard]] bool isEmpty() const { return allKeys().empty(); }
    [[nodiscard]] std::vector<std::string> allKeys() const;
    [[nodiscard]] bool containsObjectForKey(std::string_view key) const;
    /// Absent for a key that the map does not hold.
    [[nodiscard]] std::optional<RVGitDiffMapValue> objectForKey(std::string_view key) const;

    // The values by key, absent where the key is.
    [[nodiscard]] std::optional<std::string> gitDiffRaw() const;
    [[nodiscard]] std::optional<std::string> gitDiffHeader() const;
    [[nodiscard]] std::optional<std::vector<std::string>> gitDiffExtendedHeaders() const;
    [[nodiscard]] std::optional<std::string> gitDiffFilePath() const;
    [[nodiscard]] std::optional<std::string> gitDiffOldFilePath() const;
    [[nodiscard]] std::optional<std::string> gitDiffObjectHash() const;
    [[nodiscard]] std::optional<std::vector<std::string>> gitDiffOriginalObjectHashes() const;
    [[nodiscard]] std::optional<std::vector<std::string>> gitDiffOriginalFileModes() const;
    [[nodiscard]] std::optional<std::vector<RVGitDiffChunkMap>> gitDiffChunks() const;

    // Converted values.

    /// Unchanged without a letter.
    [[nodiscard]] RVGitFileStatus gitDiffFileStatus() const;
    /// Regular without a mode, or for one that is unknown.
    [[nodiscard]] RVGitFileMode gitDiffFileMode() const;
    /// 0 if there is none.
    [[nodiscard]] std::uint64_t gitDiffFileStatusSimilarityIndex() const;
    [[nodiscard]] bool gitDiffIsBinary() const;

    /// The structs underneath.
    [[nodiscard]] const std::shared_ptr<const RVGitDiffContents>& contents() const {
        return contents_;
    }

private:
    std::shared_ptr<const RVGitDiffContents> contents_;
};
