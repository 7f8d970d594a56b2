#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// The hash of an object in the room of its twenty bytes, for what is held by the ten thousand.
class RVGIT_EXPORT RVGitCompactHash {
public:
    /// All zeros.
    RVGitCompactHash() = default;
    /// Absent unless the text is forty hexadecimal digits with lower-case letters, as git prints
    /// them.
    [[nodiscard]] static std::optional<RVGitCompactHash> hashOfDigits(std::string_view text);

    /// The forty digits.
    [[nodiscard]] std::string text() const;

    friend bool operator==(const RVGitCompactHash&, const RVGitCompactHash&) = default;

private:
    std::array<std::uint8_t, 20> bytes_ = {};
};
