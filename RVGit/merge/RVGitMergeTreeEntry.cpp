#include "RVGit/merge/RVGitMergeTreeEntry.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"

namespace {

using Version = RVGitMergeTreeEntry::Version;

std::optional<std::string> hashOf(const Version& version) {
    return version ? version->objectHash() : std::nullopt;
}

RVGitFileMode modeOf(const Version& version) {
    return version ? version->fileMode() : RVGitFileModeNone;
}

bool isSubmodule(const Version& version) {
    return modeOf(version) == RVGitFileModeSubmodule;
}

}  // namespace

/// What the entry has as a file entry.
struct RVGitMergeTreeEntry::Identity {
    std::optional<std::string> filePath = {};
    std::optional<std::string> objectHash = RVGitNullObjectHash;
    RVGitFileMode fileMode = RVGitFileModeNone;

    /// Of one version's path and mode; nothing where it is missing.
    static Identity of(const Version& version) {
        Identity identity;
        if (version)
            identity.filePath = version->filePath();
        identity.fileMode = modeOf(version);
        return identity;
    }
    [[nodiscard]] Identity withHashOf(const Version& version) && {
        objectHash = hashOf(version);
        return std::move(*this);
    }
};

RVGitMergeTreeEntry::Identity RVGitMergeTreeEntry::identityOf(RVGitMergeTreeEntryType type,
                                                              const Version& baseVersion,
                                                              const Version& ourVersion,
                                                              const Version& theirVersion,
                                                              const Version& resultVersion) {
    const auto ofBothSides = [&] {
        Identity identity = Identity::of(theirVersion);
        if (modeOf(ourVersion) != modeOf(theirVersion))
            identity.fileMode = RVGitFileModeNone;
        return identity;
    };
    switch (type) {
        case RVGitMergeTreeEntryTypeMerged:
            return Identity::of(resultVersion).withHashOf(resultVersion);
        case RVGitMergeTreeEntryTypeChangedInBoth:
            return ofBothSides();
        case RVGitMergeTreeEntryTypeAddedInRemote:
            return Identity::of(theirVersion).withHashOf(theirVersion);
        case RVGitMergeTreeEntryTypeAddedInLocal:
            return Identity::of(ourVersion).withHashOf(ourVersion);
        case RVGitMergeTreeEntryTypeAddedInBoth: {
            const auto hash = hashOf(ourVersion);
            return hash && hash == hashOf(theirVersion) ? ofBothSides().withHashOf(theirVersion)
                                                        : ofBothSides();
        }
        case RVGitMergeTreeEntryTypeRemovedInRemote:
            return Identity::of(ourVersion);
        case RVGitMergeTreeEntryTypeRemovedInLocal:
            return Identity::of(theirVersion);
        case RVGitMergeTreeEntryTypeRemovedInBoth:
            return Identity::of(baseVersion);
        case RVGitMergeTreeEntryTypeUnknown:
            break;
    }
    return {};
}

RVGitMergeTreeEntry::RVGitMergeTreeEntry(RVGitMergeTreeEntryType type,
                                         std::optional<std::string> diff,
                                         const Version& baseVersion, const Version& ourVersion,
                                         const Version& theirVersion, const Version& resultVersion,
                                         bool isBinaryFile,
                                         std::shared_ptr<RVGitRepository> repository)
    : RVGitMergeTreeEntry(identityOf(type, baseVersion, ourVersion, theirVersion, resultVersion),
                          type, std::move(diff), baseVersion, ourVersion, theirVersion,
                          resultVersion, isBinaryFile, std::move(repository)) {}

RVGitMergeTreeEntry::RVGitMergeTreeEntry(const Identity& identity, RVGitMergeTreeEntryType type,
                                         std::optional<std::string> diff, Version baseVersion,
                                         Version ourVersion, Version theirVersion,
                                         Version resultVersion, bool isBinaryFile,
                                         std::shared_ptr<RVGitRepository> repository)
    : RVGitFileEntry(std::move(repository),
                     // What stands for the path that there is not must not be taken for one.
                     identity.filePath.value_or("OVERWRITTEN_IN_MERGE_TREE_ENTRY"),
                     identity.objectHash, identity.fileMode),
      type_(type),
      hasFilePath_(identity.filePath.has_value()),
      isBinaryFile_(isBinaryFile),
      baseVersion_(std::move(baseVersion)),
      ourVersion_(std::move(ourVersion)),
      theirVersion_(std::move(theirVersion)),
      resultVersion_(std::move(resultVersion)) {
    if (!diff)
        return;
    const auto owner = std::make_shared<const std::string>(*std::move(diff));
    setDiff(owner, *owner);
}

std::shared_ptr<RVGitMergeTreeEntry> RVGitMergeTreeEntry::mergeTreeEntryWithType(
    RVGitMergeTreeEntryType type, std::optional<std::string> diff, const Version& baseVersion,
    const Version& ourVersion, const Version& theirVersion, const Version& resultVersion,
    bool isBinaryFile, std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitMergeTreeEntry>(type, std::move(diff), baseVersion, ourVersion,
                                                 theirVersion, resultVersion, isBinaryFile,
                                                 std::move(repository));
}

std::shared_ptr<RVGitMergeTreeEntry> RVGitMergeTreeEntry::mergeTreeEntryWithParserResultItem(
    RVGitMergeTreeOutputParserResultItem item, std::shared_ptr<RVGitRepository> repository) {
    const auto version = [&](std::optional<std::string>& path, std::optional<std::string>& hash,
                             RVGitFileMode mode) -> Version {
        if (!path)
            return nullptr;
        return RVGitFileEntry::fileEntryWithRepository(repository, *std::move(path),
                                                       std::move(hash), mode);
    };
    const auto type = typeFromMessage(item.message);
    const auto base = version(item.baseFilepath, item.baseObjectHash, item.baseFileMode);
    const auto our = version(item.ourFilepath, item.ourObjectHash, item.ourFileMode);
    const auto their = version(item.theirFilepath, item.theirObjectHash, item.theirFileMode);
    const auto result = version(item.resultFilepath, item.resultObjectHash, item.resultFileMode);
    return mergeTreeEntryWithType(type, std::move(item.diff), base, our, their, result,
                                  item.isBinaryFile, std::move(repository));
}

RVGitMergeTreeEntryType RVGitMergeTreeEntry::typeFromMessage(
    const std::optional<std::string>& message) {
    static constexpr std::pair<std::string_view, RVGitMergeTreeEntryType> types[] = {
        {"merged", RVGitMergeTreeEntryTypeMerged},
        {"changed in both", RVGitMergeTreeEntryTypeChangedInBoth},
        {"added in remote", RVGitMergeTreeEntryTypeAddedInRemote},
        {"added in local", RVGitMergeTreeEntryTypeAddedInLocal},
        {"added in both", RVGitMergeTreeEntryTypeAddedInBoth},
        {"removed in remote", RVGitMergeTreeEntryTypeRemovedInRemote},
        {"removed in local", RVGitMergeTreeEntryTypeRemovedInLocal},
        {"removed in both", RVGitMergeTreeEntryTypeRemovedInBoth},
    };
    if (!message)
        return RVGitMergeTreeEntryTypeUnknown;
    const std::string text = lowercaseString(*message);
    for (const auto& [name, type] : types)
        if (name == text)
            return type;
    return RVGitMergeTreeEntryTypeUnknown;
}

std::optional<std::string> RVGitMergeTreeEntry::filePath() const {
    if (!hasFilePath_)
        return std::nullopt;
    return RVGitFileEntry::filePath();
}

std::optional<std::string> RVGitMergeTreeEntry::diff() const {
    if (!diff_)
        return std::nullopt;
    return std::string(*diff_);
}

bool RVGitMergeTreeEntry::hasConflict() const {
    switch (type_) {
        case RVGitMergeTreeEntryTypeMerged:
        case RVGitMergeTreeEntryTypeAddedInRemote:
        case RVGitMergeTreeEntryTypeAddedInLocal:
        case RVGitMergeTreeEntryTypeRemovedInBoth:
            return false;
        default:
            break;
    }
    const bool hasSubmodule = isSubmodule(baseVersion_) || isSubmodule(ourVersion_) ||
                              isSubmodule(theirVersion_) || isSubmodule(resultVersion_);
    return ((isBinaryFile_ || hasSubmodule) && isBinaryOrSubmoduleConflict()) || hasFileConflict();
}

bool RVGitMergeTreeEntry::isBinaryOrSubmoduleConflict() const {
    switch (type_) {
        case RVGitMergeTreeEntryTypeChangedInBoth:
        case RVGitMergeTreeEntryTypeAddedInBoth:
            return hashOf(ourVersion_) != hashOf(theirVersion_);
        case RVGitMergeTreeEntryTypeRemovedInRemote:
            return hashOf(baseVersion_) != hashOf(ourVersion_);
        case RVGitMergeTreeEntryTypeRemovedInLocal:
            return hashOf(baseVersion_) != hashOf(theirVersion_);
        default:
            return false;
    }
}

bool RVGitMergeTreeEntry::hasFileConflict() const {
    if (type_ == RVGitMergeTreeEntryTypeRemovedInLocal)
        return hashOf(baseVersion_) != hashOf(theirVersion_);
    if (type_ == RVGitMergeTreeEntryTypeRemovedInRemote)
        return hashOf(baseVersion_) != hashOf(ourVersion_);
    if (!diff_)
        return false;
    for (std::size_t start = 0;;) {
        const std::string_view line = diff_->substr(start);
        if (line.starts_with("+<<<<<<< .our") || line.starts_with("+>>>>>>> .their"))
            return true;
        const auto end = diff_->find('\n', start);
        if (end == std::string_view::npos)
            return false;
        start = end + 1;
    }
}
