#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The manual page, in roff, made of the table of commands.
[[nodiscard]] std::string manualPage(std::string_view version);
/// The script with which a shell completes commands and their options; absent for any but "bash",
/// "zsh" and "fish".
[[nodiscard]] std::optional<std::string> completionScript(std::string_view shell);
