#pragma once

#include "RVGit/command/RVGitValues.h"

/// What the statuses of a file mean.
class RVGitWorkingTreeHelper {
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
};
