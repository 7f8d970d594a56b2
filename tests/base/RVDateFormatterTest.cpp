#include "RVGit/base/RVDateFormatter.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using std::chrono::seconds;

std::optional<std::int64_t> secondsOf(std::string_view text) {
    const auto date = dateFromISO8601String(text);
    if (!date)
        return std::nullopt;
    return date->time_since_epoch().count();
}

TEST(RVDateFormatterTest, WritesRFC3339InUTC) {
    EXPECT_EQ(rfc3339DateString(RVDate(seconds(0))), "1970-01-01T00:00:00Z");
    EXPECT_EQ(rfc3339DateString(RVDate(seconds(-1))), "1969-12-31T23:59:59Z");
    EXPECT_EQ(rfc3339DateString(RVDate(seconds(1577934245))), "2020-01-02T03:04:05Z");
    EXPECT_EQ(rfc3339DateString(RVDate(seconds(951782400))), "2000-02-29T00:00:00Z");
    EXPECT_EQ(rfc3339DateString(RVDate(seconds(2147483647))), "2038-01-19T03:14:07Z");
}

TEST(RVDateFormatterTest, DatesBeyondFourDigitsOfYearsGiveTheLimit) {
    EXPECT_EQ(rfc3339DateString(RVDate::max()), "9999-12-31T23:59:59Z");
    EXPECT_EQ(rfc3339DateString(RVDate::min()), "0000-01-01T00:00:00Z");
}

TEST(RVDateFormatterTest, AcceptsTheFormsOfAZone) {
    EXPECT_EQ(secondsOf("2020-01-02T03:04:05Z"), 1577934245);
    EXPECT_EQ(secondsOf("2020-01-02T03:04:05+00:00"), 1577934245);
    EXPECT_EQ(secondsOf("2020-01-02T03:04:05-00:00"), 1577934245);
    EXPECT_EQ(secondsOf("2020-01-02T03:04:05+0000"), 1577934245);
    EXPECT_EQ(secondsOf("2020-01-02T04:04:05+01:00"), 1577934245);
    EXPECT_EQ(secondsOf("2020-01-01T21:34:05-0530"), 1577934245);
    EXPECT_EQ(secondsOf("2024-01-01T10:00:00+01:00"), 1704099600);
}

TEST(RVDateFormatterTest, AcceptsLeapDaysOfLeapYearsAlone) {
    EXPECT_TRUE(secondsOf("2024-02-29T00:00:00Z"));
    EXPECT_TRUE(secondsOf("2000-02-29T00:00:00Z"));
    EXPECT_FALSE(secondsOf("2023-02-29T00:00:00Z"));
    EXPECT_FALSE(secondsOf("1900-02-29T00:00:00Z"));
}

TEST(RVDateFormatterTest, RejectsEverythingElse) {
    for (const std::string_view text : {"",
                                        "Z",
                                        "2020",
                                        "2020-01-02",
                                        "2020-01-02T03:04:05",
                                        "2020-01-02T03:04:05z",
                                        "2020-01-02 03:04:05Z",
                                        "2020-01-02T03:04:05 +0000",
                                        " 2020-01-02T03:04:05Z",
                                        "2020-01-02T03:04:05Z ",
                                        "2020-01-02T03:04:05ZZ",
                                        "2020-01-02T03:04:05+1",
                                        "2020-01-02T03:04:05+01",
                                        "2020-01-02T03:04:05+01:",
                                        "2020-01-02T03:04:05+01:0",
                                        "2020-01-02T03:04:05+24:00",
                                        "2020-01-02T03:04:05+01:60",
                                        "2020-01-02T03:04:05+-100",
                                        "2020-13-02T03:04:05Z",
                                        "2020-00-02T03:04:05Z",
                                        "2020-01-00T03:04:05Z",
                                        "2020-01-32T03:04:05Z",
                                        "2020-04-31T03:04:05Z",
                                        "2020-01-02T24:00:00Z",
                                        "2020-01-02T03:60:05Z",
                                        "2020-01-02T03:04:60Z",
                                        "2020-1-2T03:04:05Z",
                                        "20200102T030405Z",
                                        "2020-01-02T03:04:05.5Z",
                                        "+020-01-02T03:04:05Z",
                                        "2020-01-02T03:04:0\xC3Z",
                                        "٢٠٢٠-01-02T03:04:05Z"})
        EXPECT_FALSE(secondsOf(text)) << text;
}

TEST(RVDateFormatterTest, NoCutTextIsADate) {
    const std::string_view text = "2020-01-02T03:04:05+01:00";
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(secondsOf(text.substr(0, length))) << length;
}

TEST(RVDateFormatterTest, ReadsWhatItWrites) {
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::int64_t> instants(-62167219200, 253402300799);
    for (int count = 0; count < 2000; ++count) {
        const RVDate date{seconds(instants(random))};
        EXPECT_EQ(dateFromISO8601String(rfc3339DateString(date)), date);
    }
}

}  // namespace
