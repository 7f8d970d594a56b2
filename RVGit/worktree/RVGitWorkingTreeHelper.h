#pragma once
#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"

class RVGitWorkingTreeEntry;

/// What the statuses of a file mean, and how git names the sides of a conflict.
class RVGIT_EXPORT RVGitWorkingTreeHelper {
public:
    [[nodiscard]] static RVGitFileStatus fileStatusFromString(std::string_view text) {
        return RVGitFileStatusFromString(text);
    }
    [[nodiscard]] static std::string stringRepresentationForFileStatus(RVGitFileStatus status) {
        return RVGitStringForFileStatus(status);
    }
    [[nodiscard]] static std::optional<std::string> shortStringRepresentationForFileStatus(
        RVGitFileStatus status) {
        return RVGitShortStringForFileStatus(status);
    }

    /// Whether the two sides stand for a conflict: one is Unmerged, or both are Deleted, or both
    /// are Added.
    [[nodiscard]] static bool isUnmergedPathForLeftFileStatus(RVGitFileStatus leftFileStatus,
                                                              RVGitFileStatus rightFileStatus);

    /// What stands for a side of a conflict when the sides are compared: the null file if that
    /// side has no version, ":2:path" or ":3:path" if both have one, and the plain path, which git
    /// reads from the working tree, if only this side has one. May run `git ls-files`, as the
    /// entry's readers of those versions do.
    [[nodiscard]] static std::string unmergedOursFileReferenceForWorkingTreeEntry(
        const RVGitWorkingTreeEntry& entry);
    [[nodiscard]] static std::string unmergedTheirsFileReferenceForWorkingTreeEntry(
        const RVGitWorkingTreeEntry& entry);
};
