#pragma once

#include "RVGit/command/RVGitValues.h"

/// What the index's stages mean.
class RVGitIndexHelper {
public:
    [[nodiscard]] static RVGitIndexStage indexStageFromString(std::string_view text) {
        return RVGitIndexStageFromString(text);
    }
    [[nodiscard]] static std::string stringRepresentationForIndexStage(RVGitIndexStage stage) {
        return RVGitStringForIndexStage(stage);
    }
};
