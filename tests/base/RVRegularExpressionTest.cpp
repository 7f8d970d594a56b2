#include "RVGit/base/RVRegularExpression.h"

#include <random>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RVRegularExpressionTest : public RVGitTestCase {};

TEST_F(RVRegularExpressionTest, FirstMatchIsTheMatchAndItsGroups) {
    const RVRegularExpression expression("(\\w+)@(\\w+)(!)?");
    EXPECT_EQ(expression.numberOfGroups(), 3U);
    EXPECT_THAT(expression.firstMatch("to me@home, you@work"),
                ElementsAre("me@home", "me", "home", std::nullopt));
    EXPECT_THAT(expression.firstMatch("nothing"), IsEmpty());
    EXPECT_EQ(RVRegularExpression("a").numberOfGroups(), 0U);
}

TEST_F(RVRegularExpressionTest, MatchesAreViewsIntoTheText) {
    const std::string text = "Größe: 12 €";
    const auto match = RVRegularExpression("\\d+").firstMatch(text);
    ASSERT_THAT(match, SizeIs(1));
    EXPECT_EQ(match[0]->data(), text.data() + text.find("12"));
}

TEST_F(RVRegularExpressionTest, GroupThatMatchedNothingIsEmptyAndNotAbsent) {
    EXPECT_THAT(RVRegularExpression("(a*)(b)?").firstMatch("x"), ElementsAre("", "", std::nullopt));
}

TEST_F(RVRegularExpressionTest, SearchBeginsAtTheOffset) {
    const RVRegularExpression expression("a.");
    EXPECT_THAT(expression.firstMatch("a1 a2", 0), ElementsAre("a1"));
    EXPECT_THAT(expression.firstMatch("a1 a2", 1), ElementsAre("a2"));
    EXPECT_THAT(expression.firstMatch("a1 a2", 4), IsEmpty());
    EXPECT_THAT(expression.firstMatch("a1 a2", 5), IsEmpty());
    EXPECT_THAT(expression.firstMatch("a1 a2", 6), IsEmpty());
    EXPECT_THAT(RVRegularExpression("^a").firstMatch("aa", 1), IsEmpty());
    EXPECT_THAT(RVRegularExpression("(?<=a)b").firstMatch("ab", 1), ElementsAre("b"));
    EXPECT_THAT(RVRegularExpression("$").firstMatch("ab", 2), ElementsAre(""));
}

TEST_F(RVRegularExpressionTest, NoMatchBeginsBeforeAnOffsetWithinACharacter) {
    const std::string text = "€a€";
    for (std::size_t offset = 0; offset <= text.size(); ++offset)
        for (const auto& component : RVRegularExpression(".").firstMatch(text, offset))
            EXPECT_GE(component->data(), text.data() + offset);
}

TEST_F(RVRegularExpressionTest, AllMatchesFollowEachOther) {
    EXPECT_THAT(
        RVRegularExpression("(\\d)x").allMatches("1x 2x3x"),
        ElementsAre(ElementsAre("1x", "1"), ElementsAre("2x", "2"), ElementsAre("3x", "3")));
    EXPECT_THAT(RVRegularExpression("a*").allMatches("baa"),
                ElementsAre(ElementsAre(""), ElementsAre("aa"), ElementsAre("")));
    EXPECT_THAT(RVRegularExpression("x").allMatches(""), IsEmpty());
    EXPECT_THAT(RVRegularExpression("").allMatches("€"), SizeIs(2));
}

TEST_F(RVRegularExpressionTest, OptionsChangeWhatMatches) {
    EXPECT_FALSE(RVRegularExpression("straße").matches("STRASSE"));
    EXPECT_TRUE(
        RVRegularExpression("straße", RVRegularExpression::CaseInsensitive).matches("STRASSE"));
    EXPECT_FALSE(RVRegularExpression("a.b").matches("a\nb"));
    EXPECT_TRUE(
        RVRegularExpression("a.b", RVRegularExpression::DotMatchesLineSeparators).matches("a\nb"));
    EXPECT_FALSE(RVRegularExpression("^b$").matches("a\nb\nc"));
    EXPECT_TRUE(
        RVRegularExpression("^b$", RVRegularExpression::AnchorsMatchLines).matches("a\nb\nc"));
}

TEST_F(RVRegularExpressionTest, ClassesAreThoseOfUnicode) {
    EXPECT_TRUE(RVRegularExpression("^\\d$").matches("٣"));
    EXPECT_TRUE(RVRegularExpression("^\\s$").matches("\u00A0"));
    EXPECT_TRUE(RVRegularExpression("^.$").matches("\U0001F600"));
}

TEST_F(RVRegularExpressionTest, PatternThatDoesNotCompileIsAnError) {
    std::string reason;
    EXPECT_FALSE(RVRegularExpression::compile("a(b", 0, &reason));
    EXPECT_THAT(reason, testing::HasSubstr("U_REGEX_MISMATCHED_PAREN"));
    EXPECT_FALSE(RVRegularExpression::compile("[", 0, nullptr));
    EXPECT_THAT([] { RVRegularExpression expression("a(b"); },
                testing::ThrowsMessage<RVInternalInconsistencyException>(testing::StartsWith(
                    "Could not create regular expression from pattern: 'a(b': U_REGEX_")));
}

TEST_F(RVRegularExpressionTest, CompiledExpressionCanBeMoved) {
    auto expression = RVRegularExpression::compile("a(b)", 0, nullptr);
    ASSERT_TRUE(expression);
    RVRegularExpression moved = *std::move(expression);
    EXPECT_THAT(moved.firstMatch("xab"), ElementsAre("ab", "b"));
    moved = RVRegularExpression("c");
    EXPECT_FALSE(moved.matches("ab"));
}

TEST_F(RVRegularExpressionTest, ReplacementTakesGroups) {
    const RVRegularExpression expression("(\\w)(-)?(\\w)");
    EXPECT_EQ(expression.stringByReplacingMatches("ab c-d", "$3$1"), "ba dc");
    EXPECT_EQ(expression.stringByReplacingMatches("ab", "[$0$2$9]"), "[ab]");
    EXPECT_EQ(expression.stringByReplacingMatches("ab", "\\$1\\\\$"), "$1\\$");
    EXPECT_EQ(expression.stringByReplacingMatches("ab", "\\"), "\\");
    EXPECT_EQ(expression.stringByReplacingMatches("", "x"), "");
    EXPECT_EQ(RVRegularExpression("^\\s+").stringByReplacingMatches(" \t a ", ""), "a ");
    EXPECT_EQ(RVRegularExpression("x*").stringByReplacingMatches("a€", "-"), "-a-€-");
    EXPECT_EQ(RVRegularExpression("b").stringByReplacingMatches("\xFF b\xFE", "_"), "\xFF _\xFE");
}

TEST_F(RVRegularExpressionTest, ReplacementTakesTheLastGroupAndNothingForTheOneBehindIt) {
    std::string pattern, text;
    for (int groups = 0; groups < 9; ++groups) {
        SCOPED_TRACE(groups);
        const RVRegularExpression expression(pattern + "x");
        const auto replaced = [&](int group) {
            return expression.stringByReplacingMatches(text + "x",
                                                       "<$" + std::to_string(group) + ">");
        };
        EXPECT_EQ(replaced(groups), groups == 0 ? "<x>" : "<" + text.substr(text.size() - 1) + ">");
        EXPECT_EQ(replaced(groups + 1), "<>");
        pattern += "(\\d)";
        text += std::to_string(groups + 1);
    }
    // No number has two digits.
    EXPECT_EQ(RVRegularExpression("(a)").stringByReplacingMatches("a", "$10$21"), "a01");
}

TEST_F(RVRegularExpressionTest, InvalidBytesMatchAndLeaveOffsetsExact) {
    const std::string text = "\xFF\xFE\xC3 12 \xED\xA0\x80 34\xF0\x9F";
    EXPECT_THAT(RVRegularExpression("\\d+").allMatches(text),
                ElementsAre(ElementsAre("12"), ElementsAre("34")));
    EXPECT_THAT(RVRegularExpression("^(.*)$").firstMatch(text), ElementsAre(text, text));
    EXPECT_THAT(RVRegularExpression("\uFFFD+$").firstMatch(text), ElementsAre("\xF0\x9F"));
}

TEST_F(RVRegularExpressionTest, RandomBytesGiveViewsWithinTheText) {
    std::mt19937 random(5);
    const std::string alphabet = "ab \n\xC3\xA9\xE2\x82\xAC\xF0\x9F\xFF\xED";
    std::vector<RVRegularExpression> expressions;
    for (const auto* pattern : {".", "(a|b)*", "\\S+(\\s)", "^(.*)\\s+(.*)$", "[^a]", "é", "\\b"})
        expressions.emplace_back(pattern, random() % 8);
    for (int count = 0; count < 3000; ++count) {
        std::string text;
        for (auto length = random() % 20; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        for (const auto& expression : expressions) {
            const char* end = text.data();
            for (const auto& match : expression.allMatches(text)) {
                ASSERT_LE(end, match[0]->data());
                end = match[0]->data() + match[0]->size();
                ASSERT_LE(end, text.data() + text.size());
            }
            for (const auto& group : expression.firstMatch(text, random() % (text.size() + 1))) {
                ASSERT_LE(group.value_or(text).data() + group.value_or(text).size(),
                          text.data() + text.size());
            }
        }
    }
}

TEST_F(RVRegularExpressionTest, NULBytesAreCharacters) {
    const std::string text("a\0b", 3);
    EXPECT_TRUE(RVRegularExpression("^a\\x00b$").matches(text));
    EXPECT_TRUE(RVRegularExpression(std::string_view("\0", 1)).matches(text));
}

TEST_F(RVRegularExpressionTest, SearchWithoutEndHasNoMatch) {
    const RVRegularExpression expression("^(a+)+$");
    std::string text(40, 'a');
    text += 'b';
    EXPECT_FALSE(expression.matches(text));
    EXPECT_TRUE(expression.matches("aaa"));
}

TEST_F(RVRegularExpressionTest, SearchThatNeedsTooMuchMemoryHasNoMatch) {
    const RVRegularExpression expression("(.|a)*x");
    std::string text(10'000'000, 'a');
    text += 'x';
    EXPECT_FALSE(expression.matches(text));
    EXPECT_TRUE(expression.matches("aax"));
}

TEST_F(RVRegularExpressionTest, LongTextsAreSearchedToTheirEnd) {
    std::string text(20'000'000, ' ');
    text += "git-svn-id: 7";
    EXPECT_THAT(RVRegularExpression("git-svn-id: (\\d)").firstMatch(text),
                ElementsAre("git-svn-id: 7", "7"));
    EXPECT_THAT(RVRegularExpression("^(.*)(\\d)$").firstMatch(text),
                ElementsAre(text, text.substr(0, text.size() - 1), "7"));
    std::string lines;
    for (int count = 0; count < 200'000; ++count)
        lines += "some line\n";
    EXPECT_THAT(RVRegularExpression("\\w+ (\\w+)").allMatches(lines), SizeIs(200'000));
}

TEST_F(RVRegularExpressionTest, EscapedPatternMatchesItsTextAlone) {
    std::mt19937 random(6);
    const std::string alphabet = "\\^$.|?*+()[]{}-#&~!,:=<>/'\"` \tQEdw1aé\n";
    for (int count = 0; count < 5000; ++count) {
        std::string text;
        for (auto length = random() % 8; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        text = stringUsingUTF8Encoding(text);
        const RVRegularExpression expression(
            "\\A" + RVRegularExpression::escapedPatternForString(text) + "\\z");
        ASSERT_TRUE(expression.matches(text)) << text;
        ASSERT_FALSE(expression.matches(text + "a")) << text;
    }
}

TEST_F(RVRegularExpressionTest, EscapedPatternMeansTheSameToGit) {
    std::string everything;
    for (char character = ' '; character < '\x7F'; ++character)
        everything += character;
    const std::vector<std::string> texts = {
        everything, "a{2}",      "(a|b)*",    "[a-z]",       "}{",       "][",
        "a.b",      "^a$",       "\\d\\w\\.", "a+b?c**",     "{",        "}",
        "\\",       "ü^é",       "\\(a\\)",   "[[:alpha:]]", "a]",       "a|",
        "$HOME",    "a/b:c-d=e", "1{,2}",     "\\{1\\}\\",   "+refs/*:r"};
    git({"init", "-q", "."});
    for (std::size_t index = 0; index < texts.size(); ++index) {
        const auto key = "section.key" + std::to_string(index);
        git({"config", "--add", key, texts[index]});
        git({"config", "--add", key, "other"});
        const auto pattern = "^" + RVRegularExpression::escapedPatternForString(texts[index]) + "$";
        EXPECT_EQ(git({"config", "-z", "--get-all", key, pattern}), texts[index] + '\0') << pattern;
    }
}

TEST_F(RVRegularExpressionTest, ToldOfAPatternIsATextOfEveryMatch) {
    const auto textOf = [](std::string_view pattern, unsigned options = 0) {
        return RVRegularExpression(pattern, options).requiredText();
    };
    EXPECT_EQ(textOf("Receiving objects: +(\\d+)%"), "Receiving objects: ");
    EXPECT_EQ(textOf("fatal: Unable to create .+index.lock.+: File exists"),
              "fatal: Unable to create ");
    EXPECT_EQ(textOf("^Usage:"), "Usage:");
    EXPECT_EQ(textOf("a\\.b\\(c"), "a.b(c");
    EXPECT_EQ(textOf("(first)second"), "second");
    EXPECT_EQ(textOf("colou?r"), "colo");
    EXPECT_EQ(textOf("abü*c"), "ab");
    EXPECT_EQ(textOf("abü+c"), "abü");
    EXPECT_EQ(textOf("ab{2,3}c?"), "a");
    EXPECT_EQ(textOf("[abc]+d[^]e]"), "");
    EXPECT_EQ(textOf("(a(b|\\)))+?xy"), "xy");
    EXPECT_EQ(textOf("a|b"), "");
    EXPECT_EQ(textOf("(?i)abc"), "");
    EXPECT_EQ(textOf("(?=abc)abc"), "");
    EXPECT_EQ(textOf("\\Qa|b\\E"), "");
    EXPECT_EQ(textOf("\\u0041bc"), "");
    EXPECT_EQ(textOf(".*"), "");
    EXPECT_EQ(textOf("Does NOT", RVRegularExpression::CaseInsensitive), "does not");
    EXPECT_EQ(textOf("Süß", RVRegularExpression::CaseInsensitive), "");
}

TEST_F(RVRegularExpressionTest, WhatMatchesHoldsTheTextThatIsTold) {
    const std::string_view patternPieces[] = {"a",    "b",   "K",       "ss",  "ü",   ".",  "\\d",
                                              "[ab]", "(a)", "(?:b|K)", "\\.", "a*",  "b+", "s?",
                                              "K{2}", "$",   "^",       "|",   "\\s*"};
    const std::string_view textPieces[] = {"a", "b",      "K", "k", "\u212A", "ß", "S",
                                           "s", "\u017F", "ü", "1", ".",      " "};
    std::mt19937 random(1);
    int numberOfMatches = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string pattern;
        for (auto count = 1 + random() % 6; count > 0; --count)
            pattern += patternPieces[random() % std::size(patternPieces)];
        const bool ignoresCase = random() % 2 == 0;
        const auto expression = RVRegularExpression::compile(
            pattern, ignoresCase ? unsigned{RVRegularExpression::CaseInsensitive} : 0U, nullptr);
        if (!expression || expression->requiredText().empty())
            continue;
        for (int each = 0; each < 10; ++each) {
            std::string text;
            for (auto count = random() % 8; count > 0; --count)
                text += textPieces[random() % std::size(textPieces)];
            if (!expression->matches(text))
                continue;
            ++numberOfMatches;
            ASSERT_NE((ignoresCase ? foldedString(text) : text).find(expression->requiredText()),
                      std::string::npos)
                << pattern << " in " << text;
        }
    }
    EXPECT_GT(numberOfMatches, 1000);
}

}  // namespace
