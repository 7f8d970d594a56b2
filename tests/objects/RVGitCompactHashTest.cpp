#include "RVGit/objects/RVGitCompactHash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

const std::string hash = "0123456789abcdef0123456789abcdeffedcba98";

TEST(RVGitCompactHashTest, FortyDigitsComeBackAsTheyWere) {
    for (const std::string& text : {hash, std::string(40, '0'), std::string(40, 'f')}) {
        const auto compact = RVGitCompactHash::hashOfDigits(text);
        ASSERT_TRUE(compact);
        EXPECT_EQ(compact->text(), text);
    }
    EXPECT_EQ(RVGitCompactHash().text(), std::string(40, '0'));
}

TEST(RVGitCompactHashTest, EveryDigitIsReadAndNoOtherByteAtEveryPlace) {
    for (std::size_t place = 0; place < hash.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string text = hash;
            text[place] = static_cast<char>(byte);
            const auto compact = RVGitCompactHash::hashOfDigits(text);
            const bool isDigit =
                std::string("0123456789abcdef").find(text[place]) != std::string::npos;
            ASSERT_EQ(compact.has_value(), isDigit) << testing::PrintToString(text);
            ASSERT_TRUE(!compact || compact->text() == text) << testing::PrintToString(text);
        }
    }
}

TEST(RVGitCompactHashTest, OtherLengthsAreNoHash) {
    for (const std::string& text : {std::string(), hash.substr(1), hash + "0", hash + hash})
        EXPECT_EQ(RVGitCompactHash::hashOfDigits(text), std::nullopt) << text;
}

TEST(RVGitCompactHashTest, EqualityTakesEveryDigit) {
    EXPECT_EQ(RVGitCompactHash::hashOfDigits(hash), RVGitCompactHash::hashOfDigits(hash));
    for (std::size_t place = 0; place < hash.size(); ++place) {
        std::string other = hash;
        other[place] = other[place] == '0' ? '1' : '0';
        EXPECT_NE(RVGitCompactHash::hashOfDigits(hash), RVGitCompactHash::hashOfDigits(other));
    }
}

}  // namespace
