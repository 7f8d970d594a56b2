#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/objects/RVGitFileEntry.h"

struct RVGitMergeTreeOutputParserResultItem;

/// What a merge would do with a path: git's words, as which they stand in its report.
enum RVGitMergeTreeEntryType : std::int64_t {
    RVGitMergeTreeEntryTypeUnknown = 0,
    RVGitMergeTreeEntryTypeMerged = 1,
    RVGitMergeTreeEntryTypeChangedInBoth = 2,
    RVGitMergeTreeEntryTypeAddedInRemote = 3,
    RVGitMergeTreeEntryTypeAddedInLocal = 4,
    RVGitMergeTreeEntryTypeAddedInBoth = 5,
    RVGitMergeTreeEntryTypeRemovedInRemote = 6,
    RVGitMergeTreeEntryTypeRemovedInLocal = 7,
    RVGitMergeTreeEntryTypeRemovedInBoth = 8,
};

/// One path of a merge that has not been made, with its versions: "our" is that of the revision
/// that is merged into, "their" that of the one that is merged. A snapshot, readable on any thread.
/// One that a command has made keeps the whole report of the command alive.
class RVGIT_EXPORT RVGitMergeTreeEntry : public RVGitFileEntry {
public:
    using List = std::vector<std::shared_ptr<RVGitMergeTreeEntry>>;
    using Version = std::shared_ptr<RVGitFileEntry>;

    /// Versions that the report does not tell are null. The repository is required.
    RVGitMergeTreeEntry(RVGitMergeTreeEntryType type, std::optional<std::string> diff,
                        const Version& baseVersion, const Version& ourVersion,
                        const Version& theirVersion, const Version& resultVersion,
                        bool isBinaryFile, std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitMergeTreeEntry> mergeTreeEntryWithType(
        RVGitMergeTreeEntryType type, std::optional<std::string> diff, const Version& baseVersion,
        const Version& ourVersion, const Version& theirVersion, const Version& resultVersion,
        bool isBinaryFile, std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitMergeTreeEntry> mergeTreeEntryWithParserResultItem(
        RVGitMergeTreeOutputParserResultItem item, std::shared_ptr<RVGitRepository> repository);

    /// Of an entry's first line, in any case of the letters.
    [[nodiscard]] static RVGitMergeTreeEntryType typeFromMessage(
        const std::optional<std::string>& message);

    [[nodiscard]] RVGitMergeTreeEntryType type() const { return type_; }
    /// From our version to the result, with conflict markers in it as added lines; absent where
    /// there are no lines, and where they are more than 20 MiB. Made on each call.
    [[nodiscard]] std::optional<std::string> diff() const;
    /// The same without a copy, as long as the entry lives.
    [[nodiscard]] std::optional<std::string_view> diffView() const { return diff_; }
    /// Whether the report holds no lines for it, or too many.
    [[nodiscard]] bool isBinaryFile() const { return isBinaryFile_; }
    [[nodiscard]] const Version& baseVersion() const { return baseVersion_; }
    [[nodiscard]] const Version& ourVersion() const { return ourVersion_; }
    [[nodiscard]] const Version& theirVersion() const { return theirVersion_; }
    [[nodiscard]] const Version& resultVersion() const { return resultVersion_; }

    // The hash and the mode of the entry are those of the version that the type goes by. The hash
    // is RVGitNullObjectHash where the merge would make a new object, or none, and the mode is none
    // where our mode and theirs differ.

    /// That of the version that the type goes by; absent for an unknown type.
    [[nodiscard]] std::optional<std::string> filePath() const;

    /// Whether a merge would stop at the path.
    [[nodiscard]] bool hasConflict() const;
    /// Whether the versions cannot be brought together without their lines: by hashes alone.
    [[nodiscard]] bool isBinaryOrSubmoduleConflict() const;
    /// Whether the lines of the versions collide: by the markers in the diff, or by hashes where
    /// one side has removed the file.
    [[nodiscard]] bool hasFileConflict() const;

private:
    friend class RVGitMergeTreeCommand;
    struct Identity;
    /// `diff` is valid as long as its owner lives.
    void setDiff(std::shared_ptr<const void> owner, std::string_view diff) {
        diffOwner_ = std::move(owner);
        diff_ = diff;
    }
    [[nodiscard]] static Identity identityOf(RVGitMergeTreeEntryType type,
                                             const Version& baseVersion, const Version& ourVersion,
                                             const Version& theirVersion,
                                             const Version& resultVersion);
    RVGitMergeTreeEntry(const Identity& identity, RVGitMergeTreeEntryType type,
                        std::optional<std::string> diff, Version baseVersion, Version ourVersion,
                        Version theirVersion, Version resultVersion, bool isBinaryFile,
                        std::shared_ptr<RVGitRepository> repository);

    RVGitMergeTreeEntryType type_;
    bool hasFilePath_;
    bool isBinaryFile_;
    /// What the diff is a part of.
    std::shared_ptr<const void> diffOwner_;
    std::optional<std::string_view> diff_;
    Version baseVersion_;
    Version ourVersion_;
    Version theirVersion_;
    Version resultVersion_;
};
