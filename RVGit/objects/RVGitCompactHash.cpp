#include "RVGit/objects/RVGitCompactHash.h"

#include <cstddef>
#include <utility>

namespace {

constexpr std::string_view hashDigits = "0123456789abcdef";
constexpr std::uint8_t noDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> makeDigitValues() {
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::size_t value = 0; value < hashDigits.size(); ++value)
        values[static_cast<unsigned char>(hashDigits[value])] = static_cast<std::uint8_t>(value);
    return values;
}

constexpr std::array<std::uint8_t, 256> digitValues = makeDigitValues();

}  // namespace

RVGitCompactHash::RVGitCompactHash(const std::optional<std::string>& text) {
    if (!text)
        return;
    if (auto hash = hashOfDigits(*text))
        *this = std::move(*hash);
    else
        value_ = std::make_shared<const std::string>(*text);
}

std::optional<RVGitCompactHash> RVGitCompactHash::hashOfDigits(std::string_view text) {
    Bytes bytes;
    if (text.size() != 2 * bytes.size())
        return std::nullopt;
    unsigned seen = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const unsigned high = digitValues[static_cast<unsigned char>(text[2 * index])];
        const unsigned low = digitValues[static_cast<unsigned char>(text[2 * index + 1])];
        seen |= high | low;
        bytes[index] = static_cast<std::uint8_t>(high << 4 | low);
    }
    if (seen == noDigit)
        return std::nullopt;
    RVGitCompactHash hash;
    hash.value_ = bytes;
    return hash;
}

std::optional<std::string> RVGitCompactHash::text() const {
    if (const auto* text = std::get_if<std::shared_ptr<const std::string>>(&value_))
        return **text;
    const Bytes* bytes = std::get_if<Bytes>(&value_);
    if (!bytes)
        return std::nullopt;
    std::string digits;
    digits.reserve(2 * bytes->size());
    for (const std::uint8_t byte : *bytes) {
        digits += hashDigits[byte >> 4];
        digits += hashDigits[byte & 0xF];
    }
    return digits;
}

bool operator==(const RVGitCompactHash& left, const RVGitCompactHash& right) {
    const auto* leftBytes = std::get_if<RVGitCompactHash::Bytes>(&left.value_);
    const auto* rightBytes = std::get_if<RVGitCompactHash::Bytes>(&right.value_);
    return leftBytes && rightBytes ? *leftBytes == *rightBytes : left.text() == right.text();
}
