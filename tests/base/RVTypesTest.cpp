#include "RVGit/base/RVTypes.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

enum Letter : std::uint64_t { LetterB = 2 };

constexpr auto highest = std::numeric_limits<std::int64_t>::max();
constexpr auto lowest = std::numeric_limits<std::int64_t>::min();

TEST(RVValueTest, StringLiteralIsTextAndNotBoolean) {
    const RVValue value = "yes";
    ASSERT_NE(value.string(), nullptr);
    EXPECT_EQ(*value.string(), "yes");
    EXPECT_FALSE(value.boolValue());
}

TEST(RVValueTest, KeepsTheTypeItWasMadeOf) {
    EXPECT_NE(RVValue(std::string("a")).string(), nullptr);
    EXPECT_NE(RVValue(std::string_view("a")).string(), nullptr);
    EXPECT_NE(RVValue(RVValue::StringList{"a"}).stringList(), nullptr);
    EXPECT_NE(RVValue((RVValue::StringMap{{"a", "b"}})).stringMap(), nullptr);
    EXPECT_NE(RVValue(RVDate{}).date(), nullptr);
    EXPECT_EQ(RVValue(1).string(), nullptr);
    EXPECT_EQ(RVValue("a").stringList(), nullptr);
    EXPECT_EQ(RVValue("a").stringMap(), nullptr);
    EXPECT_EQ(RVValue(1).date(), nullptr);
}

TEST(RVValueTest, OptionsTakeNumbersAndBracedTextsWithoutCeremony) {
    const int limit = 100;
    const std::string second = "b";
    const RVOptions options{{"limit", limit},
                            {"zero", 0},
                            {"both", {"a", second}},
                            {"three", {"a", std::string_view("b"), "c"}},
                            {"one", {"a"}},
                            {"none", {}},
                            {"text", "a"}};
    EXPECT_EQ(options.at("limit"), RVValue(std::int64_t{100}));
    EXPECT_EQ(options.at("zero"), RVValue(std::int64_t{0}));
    EXPECT_EQ(options.at("both"), RVValue(RVValue::StringList{"a", "b"}));
    EXPECT_EQ(options.at("three"), RVValue(RVValue::StringList{"a", "b", "c"}));
    EXPECT_EQ(options.at("one"), RVValue(RVValue::StringList{"a"}));
    EXPECT_EQ(options.at("none"), RVValue(RVValue::StringList{}));
    EXPECT_EQ(options.at("text").stringList(), nullptr);
    EXPECT_EQ(RVValue({"a", "b"}), options.at("both"));
}

TEST(RVValueTest, NumbersAndBooleansAreReadAsEachOther) {
    EXPECT_EQ(RVValue(true).integerValue(), 1);
    EXPECT_EQ(RVValue(false).integerValue(), 0);
    EXPECT_TRUE(RVValue(-1).boolValue());
    EXPECT_FALSE(RVValue(0).boolValue());
    EXPECT_TRUE(RVValue(0.25).boolValue());
    EXPECT_EQ(RVValue(0.75).integerValue(), 0);
    EXPECT_EQ(RVValue(-3.9).integerValue(), -3);
    EXPECT_EQ(RVValue(LetterB).integerValue(), 2);
    EXPECT_EQ(RVValue(std::numeric_limits<std::uint64_t>::max()).unsignedValue(),
              std::numeric_limits<std::uint64_t>::max());
}

TEST(RVValueTest, FractionsBeyondTheRangeGiveTheLimit) {
    EXPECT_EQ(RVValue(1e300).integerValue(), highest);
    EXPECT_EQ(RVValue(-1e300).integerValue(), lowest);
    EXPECT_EQ(RVValue(0x1p63).integerValue(), highest);
    EXPECT_EQ(RVValue(-0x1p63).integerValue(), lowest);
    EXPECT_EQ(RVValue(std::numeric_limits<double>::quiet_NaN()).integerValue(), 0);
}

TEST(RVValueTest, TextIsReadAsTheDecimalNumberAtItsStart) {
    EXPECT_EQ(RVValue(" 12 files").integerValue(), 12);
    EXPECT_TRUE(RVValue("1").boolValue());
    EXPECT_FALSE(RVValue("true").boolValue());
    EXPECT_EQ(RVValue("7").unsignedValue(), 7U);
}

TEST(RVValueTest, OtherTypesAreFalseAndZero) {
    EXPECT_FALSE(RVValue(RVValue::StringList{"1"}).boolValue());
    EXPECT_EQ(RVValue((RVValue::StringMap{{"1", "1"}})).integerValue(), 0);
    EXPECT_EQ(RVValue(RVDate(std::chrono::seconds(5))).integerValue(), 0);
}

TEST(RVValueTest, DisplayStringShowsEveryType) {
    EXPECT_EQ(RVValue(-5).displayString(), "-5");
    EXPECT_EQ(RVValue(true).displayString(), "YES");
    EXPECT_EQ(RVValue(1.5).displayString(), "1.5");
    EXPECT_EQ(RVValue("text").displayString(), "text");
    EXPECT_EQ(RVValue(RVValue::StringList{"a", "b"}).displayString(), "a, b");
    EXPECT_EQ(RVValue(RVValue::StringList{}).displayString(), "");
    EXPECT_EQ(RVValue((RVValue::StringMap{{"A", "1"}, {"B", "2"}})).displayString(), "A=1, B=2");
    EXPECT_EQ(RVValue(RVDate(std::chrono::seconds(0))).displayString(), "1970-01-01T00:00:00Z");
}

TEST(RVValueTest, EqualityMindsTheType) {
    EXPECT_EQ(RVValue(1), RVValue(1L));
    EXPECT_FALSE(RVValue(1) == RVValue(true));
    EXPECT_FALSE(RVValue("1") == RVValue(1));
}

}  // namespace
