#include "RVGit/objects/RVGitCompactHash.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

std::optional<RVGitCompactHash> RVGitCompactHash::hashOfDigits(std::string_view text) {
    constexpr std::size_t length = 2 * std::tuple_size_v<decltype(bytes_)>;
    if (text.size() != length)
        return std::nullopt;
    // Loops without branches over whole vectors: a compiler makes a few wide instructions of them.
    constexpr std::size_t paddedLength = 64;
    std::array<std::uint8_t, paddedLength> digits;
    digits.fill('0');
    std::memcpy(digits.data(), text.data(), length);
    std::array<std::uint8_t, paddedLength> values;
    std::uint8_t differences = 0;
    for (std::size_t index = 0; index < paddedLength; ++index) {
        const std::uint8_t digit = digits[index];
        const auto value = static_cast<std::uint8_t>((digit & 0xF) + (digit & 0x40 ? 9 : 0));
        const auto expected = static_cast<std::uint8_t>(value + (value < 10 ? '0' : 'a' - 10));
        differences |= static_cast<std::uint8_t>((digit ^ expected) | (value & 0xF0));
        values[index] = value;
    }
    if (differences != 0)
        return std::nullopt;
    std::array<std::uint8_t, paddedLength / 2> bytes;
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<std::uint8_t>(values[2 * index] << 4 | values[2 * index + 1]);
    RVGitCompactHash hash;
    std::copy_n(bytes.begin(), hash.bytes_.size(), hash.bytes_.begin());
    return hash;
}

std::string RVGitCompactHash::text() const {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes_.size());
    for (const std::uint8_t byte : bytes_) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}
