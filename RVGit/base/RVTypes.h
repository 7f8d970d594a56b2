#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "RVGit/base/RVExport.h"

/// Bytes in any encoding, as a child process wrote them.
using RVData = std::string;

/// An instant in whole seconds since 1970, UTC.
using RVDate = std::chrono::sys_seconds;

/// The value of counts and indexes that stand for "not found".
inline constexpr std::int64_t RVNotFound = std::numeric_limits<std::int64_t>::max();

/// One value of an option map or of an error's user info: a closed set of types, converted
/// implicitly from the natural C++ types. A string literal becomes text, never a boolean; texts in
/// braces, even one or none, are a list.
class RVGIT_EXPORT RVValue {
public:
    using StringList = std::vector<std::string>;
    using StringMap = std::map<std::string, std::string, std::less<>>;
    /// One text of a braced list. std::string will not do: two literals in braces would be taken
    /// for the begin and the end of one.
    struct Text {
        template <typename T>
        requires std::is_convertible_v<const T&, std::string_view> Text(const T& text)
            : value(text) {}
        std::string_view value;
    };

    RVValue(std::string value) : storage_(std::move(value)) {}
    RVValue(std::string_view value) : storage_(std::string(value)) {}
    RVValue(const char* value) : storage_(std::string(value)) {}
    RVValue(StringList value) : storage_(std::move(value)) {}
    RVValue(std::initializer_list<Text> values) : storage_(StringList()) {
        auto& list = std::get<StringList>(storage_);
        list.reserve(values.size());
        for (const Text& text : values)
            list.emplace_back(text.value);
    }
    RVValue(StringMap value) : storage_(std::move(value)) {}
    RVValue(RVDate value) : storage_(value) {}
    RVValue(double value) : storage_(value) {}
    template <typename T>
    requires std::is_same_v<T, bool> RVValue(T value) : storage_(value) {}
    template <typename T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) RVValue(T value)
        : storage_(static_cast<std::int64_t>(value)) {}
    template <typename T>
    requires std::is_enum_v<T> RVValue(T value) : storage_(static_cast<std::int64_t>(value)) {}

    /// The value if it is of exactly that type, else null.
    [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&storage_); }
    [[nodiscard]] const StringList* stringList() const {
        return std::get_if<StringList>(&storage_);
    }
    [[nodiscard]] const StringMap* stringMap() const { return std::get_if<StringMap>(&storage_); }
    [[nodiscard]] const RVDate* date() const { return std::get_if<RVDate>(&storage_); }

    /// Numbers and booleans read as each other (a number is true unless it is 0); text is read
    /// as a decimal number at its start. Anything else is false or 0.
    [[nodiscard]] bool boolValue() const;
    [[nodiscard]] std::int64_t integerValue() const;
    [[nodiscard]] std::uint64_t unsignedValue() const;

    /// The value as text, as it is shown in messages: lists joined with ", ", maps as
    /// "name=value" pairs, dates in RFC 3339 form.
    [[nodiscard]] std::string displayString() const;

    friend bool operator==(const RVValue&, const RVValue&) = default;

private:
    std::variant<std::int64_t, bool, double, std::string, StringList, StringMap, RVDate> storage_;
};

/// A map from option constants to values. An absent map is not an empty one.
using RVOptions = std::map<std::string, RVValue, std::less<>>;

/// `{}` in the place of an option map, which is absent then. Operations that tell an absent map
/// from an empty one have a deleted overload with it: say RVOptions() there, or std::nullopt.
using RVEmptyBraces = std::nullptr_t;

inline namespace RVGIT_EXPORT rvgit {

/// The value under a key; null if there is none.
[[nodiscard]] inline const RVValue* valueForOption(const std::optional<RVOptions>& options,
                                                   std::string_view key) {
    if (!options)
        return nullptr;
    auto found = options->find(key);
    return found == options->end() ? nullptr : &found->second;
}
/// Whether the option is given, and true.
[[nodiscard]] inline bool optionIsSet(const std::optional<RVOptions>& options,
                                      std::string_view key) {
    const RVValue* value = valueForOption(options, key);
    return value && value->boolValue();
}
/// Sets the value to that of the option, where it is given and of a type that can be read so.
inline void readOption(const std::optional<RVOptions>& options, std::string_view key, bool& value) {
    if (const RVValue* given = valueForOption(options, key))
        value = given->boolValue();
}
inline void readOption(const std::optional<RVOptions>& options, std::string_view key,
                       std::uint64_t& value) {
    if (const RVValue* given = valueForOption(options, key))
        value = given->unsignedValue();
}
inline void readOption(const std::optional<RVOptions>& options, std::string_view key,
                       std::optional<std::string>& value) {
    if (const RVValue* given = valueForOption(options, key); given && given->string())
        value = *given->string();
}
inline void readOption(const std::optional<RVOptions>& options, std::string_view key,
                       RVValue::StringList& value) {
    if (const RVValue* given = valueForOption(options, key); given && given->stringList())
        value = *given->stringList();
}
inline void readOption(const std::optional<RVOptions>& options, std::string_view key,
                       std::optional<RVDate>& value) {
    if (const RVValue* given = valueForOption(options, key); given && given->date())
        value = *given->date();
}

}  // namespace rvgit

/// What an error record carries beside its code, by user-info key.
using RVUserInfo = std::map<std::string, RVValue, std::less<>>;

/// The environment of a child process.
using RVEnvironment = RVValue::StringMap;
