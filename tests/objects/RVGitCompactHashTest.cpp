#include "RVGit/objects/RVGitCompactHash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

const std::string hash = "0123456789abcdef0123456789abcdeffedcba98";

TEST(RVGitCompactHashTest, NoneIsNotEmpty) {
    EXPECT_EQ(RVGitCompactHash().text(), std::nullopt);
    EXPECT_EQ(RVGitCompactHash(std::nullopt).text(), std::nullopt);
    EXPECT_EQ(RVGitCompactHash("").text(), "");
}

TEST(RVGitCompactHashTest, AnyTextComesBackAsItWas) {
    const std::string texts[] = {hash,
                                 std::string(40, '0'),
                                 std::string(40, 'f'),
                                 hash.substr(1),
                                 hash + "0",
                                 "0123456789ABCDEF0123456789ABCDEFFEDCBA98",
                                 std::string(40, '\0'),
                                 std::string(40, '\xFF'),
                                 "abc",
                                 ""};
    for (const std::string& text : texts)
        EXPECT_EQ(RVGitCompactHash(text).text(), text);
}

TEST(RVGitCompactHashTest, EveryByteAtEveryPlaceComesBackAsItWas) {
    for (std::size_t place = 0; place < hash.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string text = hash;
            text[place] = static_cast<char>(byte);
            ASSERT_EQ(RVGitCompactHash(text).text(), text);
            const bool isDigit = std::string("0123456789abcdef").find(text[place]) < 16;
            ASSERT_EQ(RVGitCompactHash::hashOfDigits(text).has_value(), isDigit) << text;
        }
    }
}

TEST(RVGitCompactHashTest, OnlyFortyDigitsAreAHashOfDigits) {
    EXPECT_EQ(RVGitCompactHash::hashOfDigits(hash), RVGitCompactHash(hash));
    EXPECT_EQ(RVGitCompactHash::hashOfDigits(hash.substr(1)), std::nullopt);
    EXPECT_EQ(RVGitCompactHash::hashOfDigits(hash + "0"), std::nullopt);
    EXPECT_EQ(RVGitCompactHash::hashOfDigits(""), std::nullopt);
}

TEST(RVGitCompactHashTest, EqualityIsThatOfTheTexts) {
    EXPECT_EQ(RVGitCompactHash(hash), RVGitCompactHash(hash));
    EXPECT_EQ(RVGitCompactHash("abc"), RVGitCompactHash("abc"));
    EXPECT_EQ(RVGitCompactHash(), RVGitCompactHash());
    EXPECT_NE(RVGitCompactHash(hash), RVGitCompactHash(std::string(40, '0')));
    EXPECT_NE(RVGitCompactHash(hash), RVGitCompactHash("abc"));
    EXPECT_NE(RVGitCompactHash("abc"), RVGitCompactHash("abd"));
    EXPECT_NE(RVGitCompactHash(""), RVGitCompactHash());
}

}  // namespace
