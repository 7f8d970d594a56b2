#pragma once

#include <memory>
#include <string>

class RVGitRepository;

/// What is under way, such as "rebasing topic, 3 of 7, at 1a2b3c4d"; empty if nothing is.
[[nodiscard]] std::string operationText(const std::shared_ptr<RVGitRepository>& repository);
