#include "RVGit/base/RVString.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVRegularExpression.h"

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// How many bytes at the start of the text are ASCII.
std::size_t lengthOfASCIIPrefix(std::string_view text) {
    std::size_t offset = 0;
    for (; text.size() - offset >= 16; offset += 16) {
        std::uint64_t words[2];
        std::memcpy(words, text.data() + offset, sizeof words);
        if ((words[0] | words[1]) & 0x8080808080808080)
            break;
    }
    while (offset < text.size() && static_cast<unsigned char>(text[offset]) < 0x80)
        ++offset;
    return offset;
}

struct Sequence {
    std::size_t length;
    bool isValid;
};

/// The sequence at the start of a text that is not empty: one character, or the longest beginning
/// of one where it is cut off, or one byte that cannot begin any.
Sequence firstUTF8Sequence(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return {1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // Narrower bounds of the second byte keep out overlong forms, surrogates and what is beyond
    // U+10FFFF.
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (text.size() < 2 || byte(1) < lowest || byte(1) > highest)
        return {1, false};
    for (std::size_t index = 2; index < length; ++index)
        if (index == text.size() || (byte(index) & 0xC0) != 0x80)
            return {index, false};
    return {length, true};
}

/// How many bytes at the start of the text are valid UTF-8.
std::size_t lengthOfUTF8Prefix(std::string_view text) {
    std::size_t offset = 0;
    for (;;) {
        offset += lengthOfASCIIPrefix(text.substr(offset));
        // Text in other scripts has runs of long characters.
        while (offset < text.size() && static_cast<unsigned char>(text[offset]) >= 0x80) {
            const auto sequence = firstUTF8Sequence(text.substr(offset));
            if (!sequence.isValid)
                return offset;
            offset += sequence.length;
        }
        if (offset == text.size())
            return offset;
    }
}

void appendUTF8(std::string& text, char16_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | (character >> 12));
        text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    }
}

void appendWindows1252(std::string& text, std::string_view bytes) {
    // The five bytes that the encoding leaves open are the control characters of that number.
    static constexpr char16_t upperControls[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        appendUTF8(text, byte >= 0x80 && byte < 0xA0 ? upperControls[byte - 0x80] : byte);
    }
}

/// Absent if there is no byte-order mark or the text is not well-formed.
std::optional<std::string> stringFromMarkedUTF16(std::string_view bytes) {
    if (bytes.size() < 2 || bytes.size() % 2 != 0)
        return std::nullopt;
    const bool isLittleEndian = bytes.starts_with("\xFF\xFE");
    if (!isLittleEndian && !bytes.starts_with("\xFE\xFF"))
        return std::nullopt;
    std::u16string units(bytes.size() / 2 - 1, u'\0');
    for (std::size_t index = 0; index < units.size(); ++index) {
        const auto first = static_cast<unsigned char>(bytes[2 * index + 2]);
        const auto second = static_cast<unsigned char>(bytes[2 * index + 3]);
        units[index] =
            static_cast<char16_t>(isLittleEndian ? first | second << 8 : first << 8 | second);
    }
    if (units.size() > std::numeric_limits<std::int32_t>::max() / 3)
        return std::nullopt;
    std::string text(units.size() * 3, '\0');
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(text.data(), static_cast<std::int32_t>(text.size()), &length, units.data(),
                static_cast<std::int32_t>(units.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

template <typename Piece, typename Text, typename Convert>
std::vector<Piece> split(Text text, std::string_view separator, const Convert& convert) {
    std::vector<Piece> pieces;
    for (;;) {
        const auto end = separator.empty() ? std::string_view::npos : text.find(separator);
        pieces.push_back(convert(text.substr(0, end)));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + separator.size());
    }
}

/// The length of the white space or newline character at the start or the end of the text, or 0.
/// Valid and invalid UTF-8 alike: no character's encoding is part of another's.
std::size_t lengthOfBlank(std::string_view text, bool atEnd) {
    static constexpr std::string_view blanks[] = {" ",
                                                  "\t",
                                                  "\n",
                                                  "\v",
                                                  "\f",
                                                  "\r",
                                                  "\xC2\x85",
                                                  "\xC2\xA0",
                                                  "\xE1\x9A\x80",
                                                  "\xE2\x80\x80",
                                                  "\xE2\x80\x81",
                                                  "\xE2\x80\x82",
                                                  "\xE2\x80\x83",
                                                  "\xE2\x80\x84",
                                                  "\xE2\x80\x85",
                                                  "\xE2\x80\x86",
                                                  "\xE2\x80\x87",
                                                  "\xE2\x80\x88",
                                                  "\xE2\x80\x89",
                                                  "\xE2\x80\x8A",
                                                  "\xE2\x80\xA8",
                                                  "\xE2\x80\xA9",
                                                  "\xE2\x80\xAF",
                                                  "\xE2\x81\x9F",
                                                  "\xE3\x80\x80"};
    if (text.empty())
        return 0;
    const char edge = atEnd ? text.back() : text.front();
    if (edge > ' ' && edge < '\x7F')
        return 0;
    for (const auto blank : blanks)
        if (atEnd ? text.ends_with(blank) : text.starts_with(blank))
            return blank.size();
    return 0;
}

void requireICUSuccess(UErrorCode status) {
    if (U_FAILURE(status))
        throw RVInternalInconsistencyException(std::string("ICU failed: ") + u_errorName(status));
}

const icu::Normalizer2& composer() {
    UErrorCode status = U_ZERO_ERROR;
    const auto* normalizer = icu::Normalizer2::getNFCInstance(status);
    requireICUSuccess(status);
    return *normalizer;
}

/// For valid UTF-8 alone.
bool isComposed(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const bool isComposed = composer().isNormalizedUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())), status);
    requireICUSuccess(status);
    return isComposed;
}

/// For valid UTF-8 alone.
std::string composedString(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    std::string composed;
    icu::StringByteSink<std::string> sink(&composed);
    composer().normalizeUTF8(0, icu::StringPiece(text.data(), static_cast<int32_t>(text.size())),
                             sink, nullptr, status);
    requireICUSuccess(status);
    return composed;
}

enum class CaseForm { Lower, Folded };

std::string stringInCaseForm(std::string_view text, CaseForm form) {
    if (isASCII(text) || !isValidUTF8(text)) {
        std::string lower(text);
        for (char& character : lower)
            if (character >= 'A' && character <= 'Z')
                character = static_cast<char>(character - 'A' + 'a');
        return lower;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    const icu::StringPiece piece(text.data(), static_cast<int32_t>(text.size()));
    if (form == CaseForm::Lower)
        icu::CaseMap::utf8ToLower("", 0, piece, sink, nullptr, status);
    else
        icu::CaseMap::utf8Fold(0, piece, sink, nullptr, status);
    requireICUSuccess(status);
    return result;
}

/// Takes the digits at the start of the text away; what is out of range gives the limit.
std::uint64_t takeNumber(std::string_view& text) {
    constexpr auto limit = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t number = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        const auto digit = static_cast<std::uint64_t>(text.front() - '0');
        number = number > (limit - digit) / 10 ? limit : number * 10 + digit;
    }
    return number;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    while (const auto length = lengthOfBlank(text, false))
        text.remove_prefix(length);
    return text;
}

/// Takes the next component of a version away; absent if the rest does not begin with one.
std::optional<std::uint64_t> takeVersionComponent(std::string_view& version) {
    if (version.empty() || !isDigit(version.front()))
        return std::nullopt;
    const auto number = takeNumber(version);
    const auto end = version.find_first_of(". \t");
    const bool isLast = end == std::string_view::npos || version[end] != '.';
    version.remove_prefix(isLast ? version.size() : end + 1);
    return number;
}

}  // namespace

bool rvgit::isASCII(std::string_view text) {
    return lengthOfASCIIPrefix(text) == text.size();
}

bool rvgit::isValidUTF8(std::string_view bytes) {
    return lengthOfUTF8Prefix(bytes) == bytes.size();
}

std::string rvgit::stringUsingBestEncoding(std::string_view bytes) {
    std::vector<RVDecodedLine> decodedLines;
    return stringUsingBestEncoding(bytes, decodedLines);
}

std::string rvgit::stringUsingBestEncoding(std::string_view bytes,
                                           std::vector<RVDecodedLine>& decodedLines) {
    decodedLines.clear();
    std::size_t validLength = lengthOfUTF8Prefix(bytes);
    if (validLength == bytes.size())
        return std::string(bytes);
    if (auto text = stringFromMarkedUTF16(bytes))
        return *std::move(text);
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (std::size_t position = 0;;) {
        const std::size_t invalid = position + validLength;
        if (invalid == bytes.size())
            return text.append(bytes.substr(position));
        const std::size_t newline = bytes.substr(position, validLength).rfind('\n');
        const std::size_t start =
            newline == std::string_view::npos ? position : position + newline + 1;
        const std::size_t end = std::min(bytes.find('\n', invalid), bytes.size() - 1) + 1;
        text.append(bytes.substr(position, start - position));
        appendWindows1252(text, bytes.substr(start, end - start));
        decodedLines.push_back({end, text.size()});
        position = end;
        validLength = lengthOfUTF8Prefix(bytes.substr(position));
    }
}

std::string rvgit::stringUsingUTF8Encoding(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (;;) {
        const auto validLength = lengthOfUTF8Prefix(bytes);
        text += bytes.substr(0, validLength);
        bytes.remove_prefix(validLength);
        if (bytes.empty())
            return text;
        text += replacementCharacter;
        bytes.remove_prefix(firstUTF8Sequence(bytes).length);
    }
}

std::vector<std::string_view> rvgit::componentsSeparatedByNULByte(std::string_view bytes) {
    return split<std::string_view>(bytes, std::string_view("\0", 1),
                                   [](std::string_view piece) { return piece; });
}

std::vector<std::string> rvgit::componentsSeparatedByStringSequence(std::string_view bytes,
                                                                    std::string_view sequence) {
    return split<std::string>(
        bytes, sequence, [](std::string_view piece) { return stringUsingBestEncoding(piece); });
}

std::vector<std::string> rvgit::componentsSeparatedByString(std::string_view text,
                                                            std::string_view separator) {
    return split<std::string>(text, separator,
                              [](std::string_view piece) { return std::string(piece); });
}

std::string rvgit::stringByJoiningComponents(const std::vector<std::string>& components,
                                             std::string_view separator) {
    std::string text;
    for (const auto& component : components) {
        if (&component != &components.front())
            text += separator;
        text += component;
    }
    return text;
}

std::string rvgit::stringByReplacingOccurrences(std::string_view text, std::string_view target,
                                                std::string_view replacement) {
    return stringByJoiningComponents(componentsSeparatedByString(text, target), replacement);
}

std::string_view rvgit::trimmedWhitespaceAndNewline(std::string_view text) {
    text = withoutLeadingBlanks(text);
    while (const auto length = lengthOfBlank(text, true))
        text.remove_suffix(length);
    return text;
}

std::string rvgit::stringByTrimmingWhitespaceAndNewline(std::string_view text) {
    return std::string(trimmedWhitespaceAndNewline(text));
}

std::string_view rvgit::trimmedNewlines(std::string_view text) {
    static constexpr std::string_view newlines[] = {
        "\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9",
    };
    for (bool found = true; found;) {
        found = false;
        for (std::string_view newline : newlines) {
            if (text.starts_with(newline)) {
                text.remove_prefix(newline.size());
                found = true;
            } else if (text.ends_with(newline)) {
                text.remove_suffix(newline.size());
                found = true;
            }
        }
    }
    return text;
}

bool rvgit::isEqualToUnicodeString(std::string_view left, std::string_view right) {
    return RVUnicodeString(left).isEqualTo(right);
}

RVUnicodeString::RVUnicodeString(std::string_view text)
    : text_(text), isValid_(isASCII(text) || isValidUTF8(text)) {}

bool RVUnicodeString::isEqualTo(std::string_view other) const {
    const auto [here, there] = std::ranges::mismatch(text_, other);
    const auto isASCIIOrEnd = [](auto position, auto end) {
        return position == end || static_cast<unsigned char>(*position) < 0x80;
    };
    // Nothing composes across a letter of ASCII, nor into another one.
    if (isASCIIOrEnd(here, text_.end()) && isASCIIOrEnd(there, other.end()))
        return here == text_.end() && there == other.end();
    if (!isValid_ || !isValidUTF8(other))
        return false;
    if (!composed_)
        composed_ = composedString(text_);
    return isComposed(other) ? *composed_ == other : *composed_ == composedString(other);
}

bool rvgit::containsStringSearchingInsensitive(std::string_view text, std::string_view searched) {
    return stringInCaseForm(text, CaseForm::Folded)
               .find(stringInCaseForm(searched, CaseForm::Folded)) != std::string::npos;
}

std::string rvgit::precomposedString(std::string_view text) {
    if (isASCII(text) || !isValidUTF8(text))
        return std::string(text);
    return composedString(text);
}

std::string rvgit::foldedString(std::string_view text) {
    return stringInCaseForm(text, CaseForm::Folded);
}

std::string rvgit::lowercaseString(std::string_view text) {
    return stringInCaseForm(text, CaseForm::Lower);
}

bool rvgit::isGreaterThanOrEqualToVersion(std::string_view version, std::string_view required) {
    version = withoutLeadingBlanks(version);
    required = withoutLeadingBlanks(required);
    for (;;) {
        const auto component = takeVersionComponent(version);
        const auto requiredComponent = takeVersionComponent(required);
        if (!component && !requiredComponent)
            return true;
        if (component.value_or(0) != requiredComponent.value_or(0))
            return component.value_or(0) > requiredComponent.value_or(0);
        // What follows the last component is no part of the version.
        if (!component)
            version = {};
        if (!requiredComponent)
            required = {};
    }
}

std::size_t rvgit::lineCount(std::string_view text) {
    const auto newlines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    return newlines + (!text.empty() && text.back() != '\n');
}

std::int64_t rvgit::integerValue(std::string_view text) {
    using Limits = std::numeric_limits<std::int64_t>;
    text = withoutLeadingBlanks(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    const auto number = takeNumber(text);
    if (number > static_cast<std::uint64_t>(Limits::max()))
        return isNegative ? Limits::min() : Limits::max();
    return isNegative ? -static_cast<std::int64_t>(number) : static_cast<std::int64_t>(number);
}

std::int32_t rvgit::int32Value(std::string_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(integerValue(text), Limits::min(), Limits::max()));
}

bool rvgit::isMatchedByRegularExpression(std::string_view text,
                                         const RVRegularExpression& expression) {
    return expression.matches(text);
}

std::vector<std::optional<std::string>> rvgit::componentsMatchedByRegularExpression(
    std::string_view text, const RVRegularExpression& expression) {
    const auto views = expression.firstMatch(text);
    return {views.begin(), views.end()};
}

const char* RVStringFromBOOL(bool value) {
    return value ? "YES" : "NO";
}

std::string rvgit::prettyDescriptionWithItems(
    std::string_view className,
    const std::vector<std::pair<std::string, std::optional<std::string>>>& items) {
    std::string text = "<" + std::string(className);
    std::string_view separator = ": ";
    for (const auto& [name, value] : items) {
        text += separator;
        text += name + " = " + value.value_or("(null)");
        separator = "; ";
    }
    return text + ">";
}

std::string rvgit::stringByFillingPlaceholders(std::string_view format,
                                               const std::vector<std::string>& values) {
    const auto pieces = componentsSeparatedByString(format, "%@");
    std::string text = pieces.front();
    for (std::size_t index = 1; index < pieces.size(); ++index) {
        if (index <= values.size())
            text += values[index - 1];
        text += pieces[index];
    }
    return text;
}
