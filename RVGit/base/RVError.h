#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// User-info keys under which the composed texts of an error record stand.
inline constexpr char RVLocalizedDescriptionErrorKey[] = "RVLocalizedDescriptionErrorKey";
inline constexpr char RVLocalizedFailureReasonErrorKey[] = "RVLocalizedFailureReasonErrorKey";

/// The domain of errors that come from the operating system; their codes are errno values.
inline constexpr char RVPOSIXErrorDomain[] = "RVPOSIXErrorDomain";
/// User-info key of the path at which the operating system failed.
inline constexpr char RVFilePathErrorKey[] = "RVFilePathErrorKey";

/// A failure as a value: a domain, a code within it, and what is known of the circumstances.
class RVGIT_EXPORT RVError {
public:
    RVError(std::string domain, std::int64_t code, RVUserInfo userInfo = {})
        : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}

    [[nodiscard]] const std::string& domain() const { return domain_; }
    [[nodiscard]] std::int64_t code() const { return code_; }
    [[nodiscard]] const RVUserInfo& userInfo() const { return userInfo_; }

    /// The title and the reason for a person to read; absent where the catalogue has none.
    [[nodiscard]] std::optional<std::string> localizedDescription() const;
    [[nodiscard]] std::optional<std::string> localizedFailureReason() const;

    /// The text under a user-info key; absent if there is none or it is no text.
    [[nodiscard]] std::optional<std::string> userInfoString(std::string_view key) const;

    friend bool operator==(const RVError&, const RVError&) = default;

private:
    std::string domain_;
    std::int64_t code_;
    RVUserInfo userInfo_;
};

/// Where an operation leaves its error; null if the caller does not ask for one.
using RVErrorPlace = std::optional<RVError>*;

inline namespace RVGIT_EXPORT rvgit {

/// Empties the place, if there is one: the operation failed to find something, which is no error.
inline void clearErrorPlace(RVErrorPlace error) {
    if (error)
        error->reset();
}

inline void fillErrorPlace(RVErrorPlace error, RVError record) {
    if (error)
        *error = std::move(record);
}

/// A failure of the operating system, with errno's value as the code and its text as the reason;
/// with a path, also that and a title that names it.
[[nodiscard]] RVError posixError(int errorNumber, std::string_view path = {});

}  // namespace rvgit

/// A caller broke a precondition: "Invalid parameter not satisfying: " and the condition.
class RVGIT_EXPORT RVInvalidParameterException : public std::invalid_argument {
public:
    explicit RVInvalidParameterException(const std::string& condition)
        : std::invalid_argument("Invalid parameter not satisfying: " + condition) {}
    /// One whose text is the given one alone.
    [[nodiscard]] static RVInvalidParameterException withText(const std::string& text) {
        return {text, 0};
    }

private:
    RVInvalidParameterException(const std::string& text, int) : std::invalid_argument(text) {}
};

/// The library's own state contradicts itself.
class RVGIT_EXPORT RVInternalInconsistencyException : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

inline namespace RVGIT_EXPORT rvgit {

/// Throws RVInvalidParameterException with the condition's text unless `holds`.
inline void requireParameter(bool holds, const char* condition) {
    if (!holds)
        throw RVInvalidParameterException(condition);
}

}  // namespace rvgit
