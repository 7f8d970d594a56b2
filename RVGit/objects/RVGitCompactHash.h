#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The hash of an object, or none, in little room: forty digits as git prints them are kept as
/// twenty bytes, any other text as it is. For entries that are held by the ten thousand. Immutable.
class RVGitCompactHash {
public:
    /// None.
    RVGitCompactHash() = default;
    explicit RVGitCompactHash(const std::optional<std::string>& text);
    /// Absent unless the text is forty hexadecimal digits with lower-case letters.
    [[nodiscard]] static std::optional<RVGitCompactHash> hashOfDigits(std::string_view text);

    /// Exactly the text that it was made of; absent for none.
    [[nodiscard]] std::optional<std::string> text() const;

    /// Whether the texts are the same, or both are none.
    friend bool operator==(const RVGitCompactHash& left, const RVGitCompactHash& right);

private:
    using Bytes = std::array<std::uint8_t, 20>;

    std::variant<std::monostate, Bytes, std::shared_ptr<const std::string>> value_;
};
