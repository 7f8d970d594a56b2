#include "RVGit/base/RVCharacter.h"

#include <gtest/gtest.h>

TEST(RVCharacterTest, OnlyBytesBehindTheFirstContinueACharacter) {
    for (const char byte : {'a', '\0', '\x7F', '\xC3', '\xE2', '\xF0'})
        EXPECT_FALSE(continuesCharacter(byte)) << static_cast<int>(byte);
    for (const char byte : {'\x80', '\xA9', '\xBF'})
        EXPECT_TRUE(continuesCharacter(byte)) << static_cast<int>(byte);
}

TEST(RVCharacterTest, TheFirstAndTheLastCharacterGoWhateverTheirLength) {
    EXPECT_EQ(withoutFirstAndLastCharacter("(a b)"), "a b");
    EXPECT_EQ(withoutFirstAndLastCharacter("\u00E9x\u20AC"), "x");
    EXPECT_EQ(withoutFirstAndLastCharacter("\U0001F389\u00E9\U0001F389"), "\u00E9");
    for (const char* text : {"", "a", "\u20AC", "ab", "\u00E9\u20AC", "\x80\x80"})
        EXPECT_EQ(withoutFirstAndLastCharacter(text), "") << text;
}

TEST(RVCharacterTest, TextIsCutAheadOfACharacter) {
    EXPECT_EQ(textFromCharacter("abc", 0), "abc");
    EXPECT_EQ(textFromCharacter("abc", 2), "c");
    EXPECT_EQ(textFromCharacter("abc", 3), "");
    EXPECT_EQ(textFromCharacter("abc", 4), std::nullopt);
    EXPECT_EQ(textFromCharacter("\u00E9\u20AC\U0001F389x", 2), "\U0001F389x");
    EXPECT_EQ(textFromCharacter("\u00E9\u20AC\U0001F389", 3), "");
    EXPECT_EQ(textFromCharacter("", 0), "");
    EXPECT_EQ(textFromCharacter("", 1), std::nullopt);
}
