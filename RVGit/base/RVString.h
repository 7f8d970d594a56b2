#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVRegularExpression;

// Bytes into text. All text in the library is UTF-8.

/// A line that was not UTF-8: where it ends, its "\n" included, among the bytes and in the text.
struct RVDecodedLine {
    std::size_t endInBytes = 0;
    std::size_t endInText = 0;
};

/// A name or path that many others are compared with as by isEqualToUnicodeString(): it is composed
/// but once. The text must outlive it.
class RVGIT_EXPORT RVUnicodeString {
public:
    explicit RVUnicodeString(std::string_view text);
    [[nodiscard]] bool isEqualTo(std::string_view other) const;

private:
    std::string_view text_;
    bool isValid_;
    /// Made when it is first needed.
    mutable std::optional<std::string> composed_;
};

inline namespace RVGIT_EXPORT rvgit {

[[nodiscard]] bool isASCII(std::string_view text);
[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// Text of unknown encoding: well-formed UTF-16 behind a byte-order mark; of anything else each
/// line by itself, so that one in another encoding does not spoil the others: UTF-8 where its bytes
/// are valid UTF-8, and otherwise Windows-1252, in which every byte means something, so that
/// nothing is lost. Lines end at "\n".
[[nodiscard]] std::string stringUsingBestEncoding(std::string_view bytes);

/// The same, telling which lines were not UTF-8, in order: all others have the same bytes in the
/// text. None are told of text in UTF-16.
[[nodiscard]] std::string stringUsingBestEncoding(std::string_view bytes,
                                                  std::vector<RVDecodedLine>& decodedLines);

/// Text in UTF-8; each invalid sequence becomes U+FFFD.
[[nodiscard]] std::string stringUsingUTF8Encoding(std::string_view bytes);

/// The pieces between NUL bytes, as views into `bytes`; a final NUL gives a final empty piece, and
/// no bytes at all give one empty piece. So do the other operations that split.
[[nodiscard]] std::vector<std::string_view> componentsSeparatedByNULByte(std::string_view bytes);

/// The pieces between occurrences of `sequence`, each decoded by itself with
/// stringUsingBestEncoding().
[[nodiscard]] std::vector<std::string> componentsSeparatedByStringSequence(
    std::string_view bytes, std::string_view sequence);

// Text.

[[nodiscard]] std::vector<std::string> componentsSeparatedByString(std::string_view text,
                                                                   std::string_view separator);
[[nodiscard]] std::string stringByJoiningComponents(const std::vector<std::string>& components,
                                                    std::string_view separator);
[[nodiscard]] std::string stringByReplacingOccurrences(std::string_view text,
                                                       std::string_view target,
                                                       std::string_view replacement);

/// White space is Unicode's (category Z and tab), newlines are U+000A to U+000D, U+0085, U+2028
/// and U+2029.
[[nodiscard]] std::string_view trimmedWhitespaceAndNewline(std::string_view text);
[[nodiscard]] std::string stringByTrimmingWhitespaceAndNewline(std::string_view text);
[[nodiscard]] std::string_view trimmedNewlines(std::string_view text);

/// Equality of names and paths: the same text after canonical composition, so that a letter with
/// an accent equals its decomposed form. Bytes that are not UTF-8 equal only themselves.
[[nodiscard]] bool isEqualToUnicodeString(std::string_view left, std::string_view right);
/// Whether the text contains the other in any case of the letters. Every text contains the empty
/// one.
[[nodiscard]] bool containsStringSearchingInsensitive(std::string_view text,
                                                      std::string_view searched);
/// The canonically composed form (NFC); bytes that are not UTF-8 come back as they are.
[[nodiscard]] std::string precomposedString(std::string_view text);
/// The form in which texts that differ in the case of their letters alone are the same; of bytes
/// that are not UTF-8, ASCII alone.
[[nodiscard]] std::string foldedString(std::string_view text);
/// In lower case, by the same rules in every locale; of bytes that are not UTF-8, ASCII alone.
[[nodiscard]] std::string lowercaseString(std::string_view text);

/// Compares dotted versions by numeric components, a missing component counting as 0. Each
/// component is the number at its start ("3-rc1" is 3); what follows the first component that
/// does not begin with a digit is ignored, as is any suffix behind white space.
[[nodiscard]] bool isGreaterThanOrEqualToVersion(std::string_view version,
                                                 std::string_view required);

/// Lines, ended by "\n", as an editor counts them: a final newline adds none, an unterminated last
/// line counts, the empty text has none.
[[nodiscard]] std::size_t lineCount(std::string_view text);

/// Numbers at the start of a text, after white space: what does not begin with one is 0, and
/// what is out of range gives the limit.
[[nodiscard]] std::int32_t int32Value(std::string_view text);
[[nodiscard]] std::int64_t integerValue(std::string_view text);

[[nodiscard]] bool isMatchedByRegularExpression(std::string_view text,
                                                const RVRegularExpression& expression);
/// The first match: the whole match, then each group, absent where a group took no part. Empty
/// if nothing matches.
[[nodiscard]] std::vector<std::optional<std::string>> componentsMatchedByRegularExpression(
    std::string_view text, const RVRegularExpression& expression);

}  // namespace rvgit

[[nodiscard]] inline bool RVStringIsEmpty(const std::optional<std::string>& text) {
    return !text || text->empty();
}
template <typename T>
[[nodiscard]] bool RVArrayIsEmpty(const std::optional<std::vector<T>>& list) {
    return !list || list->empty();
}
[[nodiscard]] inline bool RVEqualStrings(const std::optional<std::string>& left,
                                         const std::optional<std::string>& right) {
    return left == right;
}
/// "YES" or "NO", for descriptions.
[[nodiscard]] RVGIT_EXPORT const char* RVStringFromBOOL(bool value);

inline namespace RVGIT_EXPORT rvgit {

/// Debug text of named properties: "<Name: key = value; ...>", absent values as "(null)".
[[nodiscard]] std::string prettyDescriptionWithItems(
    std::string_view className,
    const std::vector<std::pair<std::string, std::optional<std::string>>>& items);

/// Text with the places "%@" filled in order; a place without a value stays empty.
[[nodiscard]] std::string stringByFillingPlaceholders(std::string_view format,
                                                      const std::vector<std::string>& values);

}  // namespace rvgit
