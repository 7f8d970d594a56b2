#include "RVGit/base/RVTypes.h"

#include <charconv>
#include <cmath>

#include "RVGit/base/RVDateFormatter.h"
#include "RVGit/base/RVString.h"

namespace {

std::int64_t integerFromDouble(double value) {
    if (std::isnan(value))
        return 0;
    // 2^63 itself is no longer a 64-bit integer.
    if (value >= 0x1p63)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -0x1p63)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

}  // namespace

bool RVValue::boolValue() const {
    if (const auto* number = std::get_if<double>(&storage_))
        return *number != 0;
    return integerValue() != 0;
}

std::int64_t RVValue::integerValue() const {
    return std::visit(Overloaded{
                          [](std::int64_t value) { return value; },
                          [](bool value) { return std::int64_t{value}; },
                          [](double value) { return integerFromDouble(value); },
                          [](const std::string& value) { return ::integerValue(value); },
                          [](const auto&) { return std::int64_t{0}; },
                      },
                      storage_);
}

std::uint64_t RVValue::unsignedValue() const {
    return static_cast<std::uint64_t>(integerValue());
}

std::string RVValue::displayString() const {
    return std::visit(
        Overloaded{
            [](std::int64_t value) { return std::to_string(value); },
            [](bool value) { return std::string(RVStringFromBOOL(value)); },
            [](double value) {
                char text[64];
                const auto result = std::to_chars(text, text + sizeof text, value);
                return std::string(text, result.ptr);
            },
            [](const std::string& value) { return value; },
            [](const StringList& value) { return stringByJoiningComponents(value, ", "); },
            [](const StringMap& value) {
                std::vector<std::string> pairs;
                pairs.reserve(value.size());
                for (const auto& [name, text] : value)
                    pairs.emplace_back(name).append(1, '=').append(text);
                return stringByJoiningComponents(pairs, ", ");
            },
            [](RVDate value) { return rfc3339DateString(value); },
        },
        storage_);
}
