#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

// What the commands have in common that merge, rebase, cherry-pick and revert.

inline namespace RVGIT_EXPORT rvgit {

/// The value of the option, where it is given.
inline void readBooleanOption(const std::optional<RVOptions>& options, std::string_view key,
                              bool& value) {
    if (const RVValue* given = valueForOption(options, key))
        value = given->boolValue();
}
/// The same; what is no text does not count as given.
inline void readTextOption(const std::optional<RVOptions>& options, std::string_view key,
                           std::optional<std::string>& value) {
    const RVValue* given = valueForOption(options, key);
    if (given && given->string())
        value = *given->string();
}

/// Has git take every message and every list as it proposes them, whatever editor is configured or
/// inherited. Whoever has an answer sets "GIT_EDITOR" or "GIT_SEQUENCE_EDITOR" afterwards.
void openNoEditor(RVGitCommand& command);

}  // namespace rvgit
