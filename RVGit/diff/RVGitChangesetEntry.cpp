#include "RVGit/diff/RVGitChangesetEntry.h"

#include "RVGit/objects/RVGitObject.h"

std::optional<std::string> RVGitChangesetEntry::originalObjectHash() const {
    const auto& hashes = originalObjectHashes();
    if (hashes.empty() || RVGitObject::isNullObjectHash(hashes.front()))
        return std::nullopt;
    return hashes.front();
}

RVGitFileMode RVGitChangesetEntry::originalFileMode() const {
    const auto& modes = originalFileModes();
    return modes.empty() ? RVGitFileModeNone : RVGitFileModeFromString(modes.front());
}
