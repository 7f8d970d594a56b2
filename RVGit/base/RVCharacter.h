#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "RVGit/base/RVExport.h"

// Characters of UTF-8 text, which may count several bytes each.

inline namespace RVGIT_EXPORT rvgit {

/// Of ASCII, whatever the locale.
[[nodiscard]] inline bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Whether the byte goes on with a character that began before it.
[[nodiscard]] inline bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// What stands between the first and the last character; empty for a text of fewer than three.
[[nodiscard]] inline std::string_view withoutFirstAndLastCharacter(std::string_view text) {
    if (!text.empty())
        text.remove_prefix(1);
    while (!text.empty() && continuesCharacter(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && continuesCharacter(text.back()))
        text.remove_suffix(1);
    if (!text.empty())
        text.remove_suffix(1);
    return text;
}

/// The text from its character of that index on; absent for a text of fewer characters.
[[nodiscard]] inline std::optional<std::string_view> textFromCharacter(std::string_view text,
                                                                       std::size_t index) {
    for (; index > 0; --index) {
        if (text.empty())
            return std::nullopt;
        text.remove_prefix(1);
        while (!text.empty() && continuesCharacter(text.front()))
            text.remove_prefix(1);
    }
    return text;
}

}  // namespace rvgit
