#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVError.h"
#include "client/Terminal.h"

class RVGitRepository;

/// What is under way, such as "rebasing topic, 3 of 7, at 1a2b3c4d"; empty if nothing is.
[[nodiscard]] std::string operationText(const std::shared_ptr<RVGitRepository>& repository);

/// Says what has come of an operation: its end, or the stop, which is no failure of the client's
/// but is its exit code. Throws where it was not done.
void reportOperation(bool done, const std::optional<RVError>& error,
                     const std::shared_ptr<RVGitRepository>& repository, Output& output);
