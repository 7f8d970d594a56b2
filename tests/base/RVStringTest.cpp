#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <limits>
#include <random>

#include "RVGit/base/RVRegularExpression.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

std::string stringUsingUTF8EncodingByICU(const std::string& bytes) {
    std::string text;
    return icu::UnicodeString::fromUTF8(bytes).toUTF8String(text);
}

bool isValidUTF8ByICU(const std::string& bytes) {
    return stringUsingUTF8EncodingByICU(bytes) == bytes;
}

/// Bytes that are often UTF-8, nearly UTF-8, or long runs of ASCII.
std::string randomBytes(std::mt19937& random) {
    static const std::vector<std::string> pieces = {"a",
                                                    "sixteen bytes ok",
                                                    "ü",
                                                    "€",
                                                    "\U0001F600",
                                                    "\U0010FFFF",
                                                    "\uD7FF",
                                                    "\uE000",
                                                    "\xC3",
                                                    "\xA9",
                                                    "\xE2\x82",
                                                    "\xF0\x9F",
                                                    "\xED\xA0\x80",
                                                    "\xC0\xAF",
                                                    "\xF4\x90\x80\x80",
                                                    "\xF5",
                                                    "\xFF",
                                                    "\0"s,
                                                    "\xE0\x80\x80",
                                                    "\x7F"};
    std::string bytes;
    for (auto count = random() % 12; count > 0; --count)
        bytes += random() % 8 == 0 ? std::string(1, static_cast<char>(random() % 256))
                                   : pieces[random() % pieces.size()];
    return bytes;
}

TEST(RVStringTest, ValidUTF8AgreesWithICUOnRandomBytes) {
    std::mt19937 random(1);
    int validCount = 0;
    for (int count = 0; count < 100000; ++count) {
        const auto bytes = randomBytes(random);
        const bool isValid = isValidUTF8(bytes);
        ASSERT_EQ(isValid, isValidUTF8ByICU(bytes)) << testing::PrintToString(bytes);
        validCount += isValid;
    }
    EXPECT_GT(validCount, 1000);
}

TEST(RVStringTest, ValidUTF8AgreesWithICUOnThreeBytesFromAllLeadBytes) {
    std::string bytes(3, '\0');
    for (unsigned number = 0xC00000; number < 0x1000000; ++number) {
        bytes[0] = static_cast<char>(number >> 16);
        bytes[1] = static_cast<char>(number >> 8);
        bytes[2] = static_cast<char>(number);
        if (isValidUTF8(bytes) != isValidUTF8ByICU(bytes))
            FAIL() << testing::PrintToString(bytes);
    }
}

TEST(RVStringTest, InvalidByteIsFoundAtEveryOffset) {
    const std::string text(70, 'a');
    EXPECT_TRUE(isValidUTF8(text));
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        auto bytes = text;
        bytes[offset] = '\xFF';
        EXPECT_FALSE(isValidUTF8(bytes)) << offset;
        EXPECT_EQ(stringUsingUTF8Encoding(bytes),
                  text.substr(0, offset) + "\uFFFD" + text.substr(offset + 1));
    }
}

TEST(RVStringTest, ValidUTF8EndsWithTheText) {
    EXPECT_TRUE(isValidUTF8(""));
    EXPECT_TRUE(isValidUTF8("\0"s));
    EXPECT_TRUE(isValidUTF8(std::string_view("ü\xC3", 2)));
    EXPECT_FALSE(isValidUTF8(std::string_view("ü€", 3)));
    EXPECT_FALSE(isValidUTF8(std::string_view("\U0001F600", 3)));
}

TEST(RVStringTest, OneByteOfAnotherScriptAnywhereIsNotASCII) {
    EXPECT_TRUE(isASCII(""));
    for (std::size_t length = 1; length < 40; ++length) {
        std::string text(length, '\x7F');
        EXPECT_TRUE(isASCII(text));
        for (std::size_t offset = 0; offset < length; ++offset) {
            text[offset] = '\x80';
            EXPECT_FALSE(isASCII(text)) << length << ", " << offset;
            text[offset] = '\0';
        }
    }
}

TEST(RVStringTest, UTF8EncodingReplacesEachInvalidSequence) {
    EXPECT_EQ(stringUsingUTF8Encoding(""), "");
    EXPECT_EQ(stringUsingUTF8Encoding("aü€\U0001F600"), "aü€\U0001F600");
    EXPECT_EQ(stringUsingUTF8Encoding("a\xE2\x82z"), "a\uFFFDz");
    EXPECT_EQ(stringUsingUTF8Encoding("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(stringUsingUTF8Encoding("\xF0\x9F\x98"), "\uFFFD");
    std::mt19937 random(2);
    for (int count = 0; count < 50000; ++count) {
        const auto bytes = randomBytes(random);
        ASSERT_EQ(stringUsingUTF8Encoding(bytes), stringUsingUTF8EncodingByICU(bytes))
            << testing::PrintToString(bytes);
    }
}

TEST(RVStringTest, UnicodeEqualityIsThatOfTheComposedForms) {
    std::mt19937 random(1);
    const std::string_view pieces[] = {"a",      "e",      "n",      "K",          "\u0301",
                                       "\u0308", "\u0323", "\u00E4", "\u00F1",     "\u212A",
                                       "\u1100", "\u1161", "\uAC00", "\U0001D15E", "\xFF"};
    const auto randomText = [&] {
        std::string text;
        for (auto count = random() % 5; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        return text;
    };
    int numberOfEqual = 0;
    for (int round = 0; round < 200000; ++round) {
        const std::string left = randomText();
        const std::string right = randomText();
        const bool areEqual =
            left == right || (isValidUTF8(left) && isValidUTF8(right) &&
                              precomposedString(left) == precomposedString(right));
        ASSERT_EQ(isEqualToUnicodeString(left, right), areEqual) << left << " " << right;
        numberOfEqual += areEqual && left != right;
    }
    EXPECT_GT(numberOfEqual, 50);
}

TEST(RVStringTest, OfEqualTextsTheSameOneIsFoundFirst) {
    const std::vector<std::string> texts = {"a", "n\u0303", "\u00F1", "\u00F1", ""};
    const auto find = [&](std::string_view text) {
        const auto found =
            RVFindUnicodeName(texts.begin(), texts.end(), text,
                              [](const std::string& each) -> std::optional<std::string> {
                                  if (each.empty())
                                      return std::nullopt;
                                  return each;
                              });
        return found - texts.begin();
    };
    EXPECT_EQ(find("a"), 0);
    EXPECT_EQ(find("n\u0303"), 1);
    EXPECT_EQ(find("\u00F1"), 2);
    EXPECT_EQ(find("n"), 5);
    EXPECT_EQ(find(""), 5);
    const std::vector<std::string> decomposed = {"n\u0303"};
    EXPECT_EQ(RVFindUnicodeName(decomposed.begin(), decomposed.end(), "\u00F1",
                                [](const std::string& each) -> std::string_view { return each; }),
              decomposed.begin());
}

TEST(RVStringTest, BestEncodingKeepsUTF8) {
    EXPECT_EQ(stringUsingBestEncoding(""), "");
    EXPECT_EQ(stringUsingBestEncoding("a\0ü\xEF\xBB\xBF"s), "a\0ü\xEF\xBB\xBF"s);
}

TEST(RVStringTest, BestEncodingReadsUTF16BehindItsMark) {
    EXPECT_EQ(stringUsingBestEncoding("\xFF\xFE"
                                      "a\0\xFC\0\x3D\xD8\x00\xDE"s),
              "aü\U0001F600");
    EXPECT_EQ(stringUsingBestEncoding("\xFE\xFF\0a\0\xFC\xD8\x3D\xDE\x00"s), "aü\U0001F600");
    EXPECT_EQ(stringUsingBestEncoding("\xFF\xFE"), "");
}

TEST(RVStringTest, BestEncodingLosesNothingOfBrokenUTF16) {
    EXPECT_EQ(stringUsingBestEncoding("\xFF\xFE"
                                      "a"),
              "ÿþa");
    EXPECT_EQ(stringUsingBestEncoding("\xFF\xFE\x3D\xD8"), "ÿþ=Ø");
}

TEST(RVStringTest, BestEncodingReadsAllElseAsWindows1252) {
    EXPECT_EQ(stringUsingBestEncoding("caf\xE9"), "café");
    EXPECT_EQ(stringUsingBestEncoding("\x80 \x93quoted\x94 \x96 \x9F"), "€ “quoted” – Ÿ");
    EXPECT_EQ(stringUsingBestEncoding("ü\xFF"), "Ã¼ÿ");
}

TEST(RVStringTest, BestEncodingIsThatOfEachLine) {
    EXPECT_EQ(stringUsingBestEncoding("ü\ncaf\xE9\n\xE4\nö"), "ü\ncafé\nä\nö");
    EXPECT_EQ(stringUsingBestEncoding("ü\n\nü\xE9 ü\n\n"), "ü\n\nÃ¼é Ã¼\n\n");
    EXPECT_EQ(stringUsingBestEncoding("ü\n\xC3"), "ü\nÃ");
    EXPECT_EQ(stringUsingBestEncoding("\xC3\n\xBC"), "Ã\n¼");
    // What is not UTF-16 as a whole has no lines in it.
    EXPECT_EQ(stringUsingBestEncoding("a\n\xFF\xFE"
                                      "a\0\nü"s),
              "a\nÿþa\0\nü"s);
}

TEST(RVStringTest, BestEncodingTellsWhichLinesItDecoded) {
    std::vector<RVDecodedLine> lines = {{1, 1}};
    EXPECT_EQ(stringUsingBestEncoding("ü\nü", lines), "ü\nü");
    EXPECT_TRUE(lines.empty());

    // A slow twin, on random lines.
    std::mt19937 random(1);
    const std::string_view pieces[] = {"a", "ü", "\xE9", "\x93", "\n", "\n", "\0", "\xE2\x82"};
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (auto count = random() % 20; count > 0; --count)
            bytes += pieces[random() % std::size(pieces)];
        std::string expected;
        std::vector<RVDecodedLine> expectedLines;
        for (std::size_t start = 0; start < bytes.size();) {
            const std::size_t end = std::min(bytes.find('\n', start), bytes.size() - 1) + 1;
            const std::string line = bytes.substr(start, end - start);
            expected += stringUsingBestEncoding(line);
            start = end;
            if (!isValidUTF8(line))
                expectedLines.push_back({end, expected.size()});
        }
        ASSERT_EQ(stringUsingBestEncoding(bytes, lines), expected);
        ASSERT_EQ(lines.size(), expectedLines.size());
        for (std::size_t index = 0; index < lines.size(); ++index) {
            ASSERT_EQ(lines[index].endInBytes, expectedLines[index].endInBytes);
            ASSERT_EQ(lines[index].endInText, expectedLines[index].endInText);
        }
    }
    EXPECT_EQ(stringUsingBestEncoding("\xFF\xFE"
                                      "a\0\n\0b\0"s,
                                      lines),
              "a\nb");
    EXPECT_TRUE(lines.empty());
}

TEST(RVStringTest, BestEncodingTellsAllBytesApart) {
    std::vector<std::string> texts;
    for (int byte = 0x80; byte < 0x100; ++byte) {
        texts.push_back(stringUsingBestEncoding(std::string(1, static_cast<char>(byte))));
        EXPECT_TRUE(isValidUTF8(texts.back())) << byte;
    }
    std::sort(texts.begin(), texts.end());
    EXPECT_EQ(std::adjacent_find(texts.begin(), texts.end()), texts.end());
}

TEST(RVStringTest, DecodedBytesAreAlwaysValidUTF8) {
    std::mt19937 random(3);
    for (int count = 0; count < 20000; ++count) {
        const auto bytes = randomBytes(random);
        ASSERT_TRUE(isValidUTF8(stringUsingBestEncoding(bytes)));
        ASSERT_TRUE(isValidUTF8(stringUsingBestEncoding("\xFF\xFE" + bytes)));
        ASSERT_TRUE(isValidUTF8(stringUsingUTF8Encoding(bytes)));
    }
}

TEST(RVStringTest, SplittingAtNULKeepsEmptyPieces) {
    EXPECT_THAT(componentsSeparatedByNULByte(""), ElementsAre(""));
    EXPECT_THAT(componentsSeparatedByNULByte("a"), ElementsAre("a"));
    EXPECT_THAT(componentsSeparatedByNULByte("a\0\0caf\xE9\0"s),
                ElementsAre("a", "", "caf\xE9", ""));
}

TEST(RVStringTest, SplittingAtASequenceDecodesEachPieceByItself) {
    EXPECT_THAT(
        componentsSeparatedByStringSequence("caf\xE9\x1F\x1D\x1Fü\x1F\x1D\x1F", "\x1F\x1D\x1F"),
        ElementsAre("café", "ü", ""));
    EXPECT_THAT(componentsSeparatedByStringSequence("", "\x1F"), ElementsAre(""));
    EXPECT_THAT(componentsSeparatedByStringSequence("a\x1F\x1D", "\x1F\x1D\x1F"),
                ElementsAre("a\x1F\x1D"));
}

TEST(RVStringTest, SplittingAndJoiningAreInverse) {
    EXPECT_THAT(componentsSeparatedByString("a, b,c, ", ", "), ElementsAre("a", "b,c", ""));
    EXPECT_THAT(componentsSeparatedByString("aaa", "aa"), ElementsAre("", "a"));
    EXPECT_THAT(componentsSeparatedByString("abc", ""), ElementsAre("abc"));
    EXPECT_THAT(componentsSeparatedByString("", ","), ElementsAre(""));
    EXPECT_EQ(stringByJoiningComponents({}, ","), "");
    EXPECT_EQ(stringByJoiningComponents({"a"}, ","), "a");
    EXPECT_EQ(stringByJoiningComponents({"", "a", ""}, ", "), ", a, ");
}

TEST(RVStringTest, ReplacingTakesEveryOccurrenceOnce) {
    EXPECT_EQ(stringByReplacingOccurrences("git version 2 git version", "git version", ""), " 2 ");
    EXPECT_EQ(stringByReplacingOccurrences("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(stringByReplacingOccurrences("abc", "x", "y"), "abc");
    EXPECT_EQ(stringByReplacingOccurrences("abc", "", "y"), "abc");
}

TEST(RVStringTest, TrimmingTakesUnicodeWhiteSpaceAndNewlines) {
    const std::string blanks =
        " \t\n\v\f\r\u0085\u00A0\u1680\u2000\u200A\u2028\u2029\u202F\u205F\u3000";
    EXPECT_EQ(stringByTrimmingWhitespaceAndNewline(blanks + "a b" + blanks), "a b");
    EXPECT_EQ(stringByTrimmingWhitespaceAndNewline(blanks), "");
    EXPECT_EQ(stringByTrimmingWhitespaceAndNewline(""), "");
}

TEST(RVStringTest, TrimmingTakesNothingElse) {
    for (const auto& text : {"\u200B"s, "\uFEFF"s, "\u1FFF"s, "\u0084"s, "\u00A1"s, "\x1F"s, "\0"s,
                             "\x7F"s, "\xFF"s, "\x85"s, "\xA0"s, "\xC2"s, "\xE2\x80"s, "\x80\x80"s})
        EXPECT_EQ(stringByTrimmingWhitespaceAndNewline(" " + text + " "), text)
            << testing::PrintToString(text);
}

TEST(RVStringTest, TrimmingNewlinesLeavesBlanks) {
    const std::string newlines = "\n\r\v\f\u0085\u2028\u2029\r\n";
    EXPECT_EQ(trimmedNewlines(newlines + " a\nb\t" + newlines), " a\nb\t");
    EXPECT_EQ(trimmedNewlines(newlines), "");
}

TEST(RVStringTest, TrimmedViewLiesInTheText) {
    const std::string_view text = "  a\n";
    EXPECT_EQ(trimmedWhitespaceAndNewline(text).data(), text.data() + 2);
}

TEST(RVStringTest, EqualityOfNamesIsThatOfTheirComposedForms) {
    EXPECT_TRUE(isEqualToUnicodeString("", ""));
    EXPECT_TRUE(isEqualToUnicodeString("a\u0308", "\u00E4"));
    EXPECT_TRUE(isEqualToUnicodeString("refs/heads/Cafe\u0301", "refs/heads/Caf\u00E9"));
    EXPECT_TRUE(isEqualToUnicodeString("\u212A", "K"));
    EXPECT_TRUE(isEqualToUnicodeString("\u1100\u1161", "\uAC00"));
    EXPECT_FALSE(isEqualToUnicodeString("a", "A"));
    EXPECT_FALSE(isEqualToUnicodeString("a", "a "));
    EXPECT_FALSE(isEqualToUnicodeString("a", "ä"));
    EXPECT_FALSE(isEqualToUnicodeString("\uFB01", "fi"));
    EXPECT_FALSE(isEqualToUnicodeString("a\0b"s, "a\0c"s));
}

TEST(RVStringTest, InvalidBytesEqualOnlyThemselves) {
    EXPECT_TRUE(isEqualToUnicodeString("\xFF", "\xFF"));
    EXPECT_FALSE(isEqualToUnicodeString("\xFF", "\xFE"));
    EXPECT_FALSE(isEqualToUnicodeString("\xFF", "\uFFFD"));
}

TEST(RVStringTest, PrecomposingComposes) {
    EXPECT_EQ(precomposedString("Cafe\u0301 u\u0308"), "Caf\u00E9 \u00FC");
    EXPECT_EQ(precomposedString("plain"), "plain");
    EXPECT_EQ(precomposedString(""), "");
    EXPECT_EQ(precomposedString("e\u0301\xFF"), "e\u0301\xFF");
}

TEST(RVStringTest, LowercasingIsTheSameInEveryLocale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale saved;
    icu::Locale::setDefault(icu::Locale("tr", "TR"), status);
    EXPECT_EQ(lowercaseString("ORIGIN"), "origin");
    EXPECT_EQ(lowercaseString("TITLE ÄÖÜ"), "title äöü");
    EXPECT_TRUE(containsStringSearchingInsensitive("TITLE Ä", "title ä"));
    icu::Locale::setDefault(saved, status);
    EXPECT_EQ(lowercaseString("ΣΑΣ"), "σας");
    EXPECT_EQ(lowercaseString("A\xC4"), "a\xC4");
}

TEST(RVStringTest, SearchingIgnoresCase) {
    EXPECT_TRUE(containsStringSearchingInsensitive("The Größe", "GRÖSSE"));
    EXPECT_TRUE(containsStringSearchingInsensitive("abc", ""));
    EXPECT_FALSE(containsStringSearchingInsensitive("", "a"));
    EXPECT_FALSE(containsStringSearchingInsensitive("cafe", "café"));
    EXPECT_TRUE(containsStringSearchingInsensitive("A\xFF", "a"));
}

TEST(RVStringTest, VersionsCompareByNumbers) {
    for (const auto& [version, required, expected] :
         std::vector<std::tuple<std::string, std::string, bool>>{
             {"2.1.0", "2.1.0", true},
             {"2.39.5 (Some Build-1)", "2.1.0", true},
             {"2.0.9", "2.1.0", false},
             {"2.10.0", "2.9.9", true},
             {"2.9.9", "2.10.0", false},
             {"3", "2.99.99", true},
             {"2.1", "2.1.0", true},
             {"2.1.0", "2.1", true},
             {"2.1", "2.1.1", false},
             {"2.1.0.1", "2.1.0", true},
             {"2.39.5.windows.1", "2.39.5", true},
             {"2.39.5.windows.1", "2.39.5.1", false},
             {"2.40.0-rc1", "2.40.0", true},
             {"2.40.0.rc1.99", "2.40.0.1", false},
             {"02.01", "2.1", true},
             {" 2.1\n", "2.1", true},
             {"2.1 9", "2.1.9", false},
             {"2.1\t.9", "2.1.9", false},
             {"", "2.1.0", false},
             {"git", "0.0.1", false},
             {"", "", true},
             {"", "0", true},
             {"2..9", "2.0.1", false},
             {"99999999999999999999999.0", "2", true},
             {"2.1.0", "99999999999999999999999", false},
             {"\xFF", "2", false}})
        EXPECT_EQ(isGreaterThanOrEqualToVersion(version, required), expected)
            << version << " >= " << required;
}

TEST(RVStringTest, LinesAreCountedAsAnEditorDoes) {
    EXPECT_EQ(lineCount(""), 0U);
    EXPECT_EQ(lineCount("\n"), 1U);
    EXPECT_EQ(lineCount("a"), 1U);
    EXPECT_EQ(lineCount("a\n"), 1U);
    EXPECT_EQ(lineCount("a\nb"), 2U);
    EXPECT_EQ(lineCount("a\r\n\nb\n"), 3U);
}

TEST(RVStringTest, NumbersAreReadFromTheStart) {
    EXPECT_EQ(integerValue("42"), 42);
    EXPECT_EQ(integerValue(" \t\n+42abc"), 42);
    EXPECT_EQ(integerValue("-42 7"), -42);
    EXPECT_EQ(integerValue("007"), 7);
    EXPECT_EQ(integerValue("1,000"), 1);
    EXPECT_EQ(integerValue("3.9"), 3);
    for (const auto text : {"", "-", "+", "abc", "--1", "+-1", "- 1", "\xFF", "٣"})
        EXPECT_EQ(integerValue(text), 0) << text;
}

TEST(RVStringTest, NumbersOutOfRangeGiveTheLimit) {
    using Limits64 = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(integerValue("9223372036854775807"), Limits64::max());
    EXPECT_EQ(integerValue("9223372036854775808"), Limits64::max());
    EXPECT_EQ(integerValue("-9223372036854775808"), Limits64::min());
    EXPECT_EQ(integerValue("-9223372036854775807"), Limits64::min() + 1);
    EXPECT_EQ(integerValue("-99999999999999999999999"), Limits64::min());
    EXPECT_EQ(integerValue("18446744073709551616"), Limits64::max());
    EXPECT_EQ(integerValue("18446744073709551615"), Limits64::max());
    using Limits32 = std::numeric_limits<std::int32_t>;
    EXPECT_EQ(int32Value("2147483647"), Limits32::max());
    EXPECT_EQ(int32Value("2147483648"), Limits32::max());
    EXPECT_EQ(int32Value("-2147483648"), Limits32::min());
    EXPECT_EQ(int32Value("-2147483649"), Limits32::min());
    EXPECT_EQ(int32Value("4294967297"), Limits32::max());
    EXPECT_EQ(int32Value(" 12x"), 12);
}

TEST(RVStringTest, NumbersAgreeWithTheStandardLibrary) {
    std::mt19937_64 random(4);
    for (int count = 0; count < 20000; ++count) {
        const auto number = static_cast<std::int64_t>(random()) >> (random() % 64);
        EXPECT_EQ(integerValue(std::to_string(number)), number);
    }
}

TEST(RVStringTest, MatchedComponentsAreTheMatchAndItsGroups) {
    const RVRegularExpression expression("(a)|(b)");
    EXPECT_TRUE(isMatchedByRegularExpression("xb", expression));
    EXPECT_FALSE(isMatchedByRegularExpression("x", expression));
    EXPECT_THAT(componentsMatchedByRegularExpression("xb", expression),
                ElementsAre("b", std::nullopt, "b"));
    EXPECT_THAT(componentsMatchedByRegularExpression("x", expression), IsEmpty());
}

TEST(RVStringTest, AbsentIsEmptyAndEqualToAbsent) {
    EXPECT_TRUE(RVStringIsEmpty(std::nullopt));
    EXPECT_TRUE(RVStringIsEmpty(""));
    EXPECT_FALSE(RVStringIsEmpty(" "));
    EXPECT_TRUE(RVArrayIsEmpty<int>(std::nullopt));
    EXPECT_TRUE(RVArrayIsEmpty<int>(std::vector<int>{}));
    EXPECT_FALSE(RVArrayIsEmpty<int>(std::vector<int>{0}));
    EXPECT_TRUE(RVEqualStrings(std::nullopt, std::nullopt));
    EXPECT_TRUE(RVEqualStrings("a", "a"));
    EXPECT_FALSE(RVEqualStrings("", std::nullopt));
    EXPECT_FALSE(RVEqualStrings("a", "b"));
    EXPECT_STREQ(RVStringFromBOOL(true), "YES");
    EXPECT_STREQ(RVStringFromBOOL(false), "NO");
}

TEST(RVStringTest, DescriptionNamesTheProperties) {
    EXPECT_EQ(prettyDescriptionWithItems("RVGitRef", {{"name", "main"}, {"hash", std::nullopt}}),
              "<RVGitRef: name = main; hash = (null)>");
    EXPECT_EQ(prettyDescriptionWithItems("RVGitRef", {}), "<RVGitRef>");
}

TEST(RVStringTest, PlaceholdersAreFilledInOrder) {
    EXPECT_EQ(stringByFillingPlaceholders("a %@ b %@", {"1", "2"}), "a 1 b 2");
    EXPECT_EQ(stringByFillingPlaceholders("a %@ b %@", {"1"}), "a 1 b ");
    EXPECT_EQ(stringByFillingPlaceholders("%@%@", {"%@", "2"}), "%@2");
    EXPECT_EQ(stringByFillingPlaceholders("100 % %d", {"1"}), "100 % %d");
    EXPECT_EQ(stringByFillingPlaceholders("", {"1"}), "");
}

}  // namespace
