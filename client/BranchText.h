#pragma once

#include <string>

#include "client/Terminal.h"

struct RVGitBranchTrackingState;

/// "origin/main, 1 ahead, 2 behind": what the branch tracks and how far apart the two are.
[[nodiscard]] std::string trackingText(const RVGitBranchTrackingState& state, const Output& output);
