#include "RVGit/base/RVDateFormatter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using namespace std::chrono;

constexpr RVDate firstDate = sys_days(year(0) / 1 / 1);
constexpr RVDate lastDate = sys_days(year(9999) / 12 / 31) + hours(24) - seconds(1);

/// Takes fixed pieces from the front of a text; once one is missing, nothing fits any more.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    int digits(std::size_t count) {
        int value = 0;
        for (; count > 0; --count) {
            if (rest_.empty() || rest_.front() < '0' || rest_.front() > '9') {
                valid_ = false;
                return 0;
            }
            value = value * 10 + (rest_.front() - '0');
            rest_.remove_prefix(1);
        }
        return value;
    }
    bool skip(char character) {
        if (rest_.empty() || rest_.front() != character)
            return false;
        rest_.remove_prefix(1);
        return true;
    }
    void require(char character) { valid_ = skip(character) && valid_; }
    bool isCompleteAndValid() const { return valid_ && rest_.empty(); }

private:
    std::string_view rest_;
    bool valid_ = true;
};

}  // namespace

std::string rvgit::rfc3339DateString(RVDate date) {
    date = std::clamp(date, firstDate, lastDate);
    const auto midnight = floor<days>(date);
    const year_month_day day(midnight);
    const hh_mm_ss time(date - midnight);
    char text[64];
    const int length = std::snprintf(
        text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    return std::string(text, static_cast<std::size_t>(length));
}

std::optional<RVDate> rvgit::dateFromISO8601String(std::string_view text) {
    Scanner scanner(text);
    const int yearNumber = scanner.digits(4);
    scanner.require('-');
    const int monthNumber = scanner.digits(2);
    scanner.require('-');
    const int dayNumber = scanner.digits(2);
    scanner.require('T');
    const int hour = scanner.digits(2);
    scanner.require(':');
    const int minute = scanner.digits(2);
    scanner.require(':');
    const int second = scanner.digits(2);

    minutes zone{0};
    if (!scanner.skip('Z')) {
        const bool isWest = scanner.skip('-');
        if (!isWest)
            scanner.require('+');
        const int zoneHour = scanner.digits(2);
        scanner.skip(':');
        const int zoneMinute = scanner.digits(2);
        if (zoneHour > 23 || zoneMinute > 59)
            return std::nullopt;
        zone = hours(zoneHour) + minutes(zoneMinute);
        if (isWest)
            zone = -zone;
    }

    const year_month_day date(year(yearNumber), month(static_cast<unsigned>(monthNumber)),
                              day(static_cast<unsigned>(dayNumber)));
    if (!scanner.isCompleteAndValid() || !date.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return sys_days(date) + hours(hour) + minutes(minute) + seconds(second) - zone;
}
