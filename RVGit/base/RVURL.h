#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// A URL as its text, with the generic components of RFC 3986. Parsing never fails: what is no
/// URL has a path alone. Components are percent-decoded where said so.
class RVGIT_EXPORT RVURL {
public:
    explicit RVURL(std::string text);
    /// A "file" URL of the path, percent-encoded. A relative path is taken relative to the current
    /// directory of the process.
    [[nodiscard]] static RVURL fileURLWithPath(std::string_view path);
    /// A "file" URL of the path, taken relative to the base's path, as a directory, unless it is
    /// absolute; without "." and "..".
    [[nodiscard]] static RVURL fileURLWithPath(std::string_view path, const RVURL& base);

    [[nodiscard]] const std::string& absoluteString() const { return text_; }
    [[nodiscard]] std::optional<std::string> scheme() const;
    /// Percent-decoded, as are the next two.
    [[nodiscard]] std::optional<std::string> user() const;
    [[nodiscard]] std::optional<std::string> password() const;
    /// With the brackets of an IPv6 address. Empty, and not absent, between the slashes of
    /// "file:///".
    [[nodiscard]] std::optional<std::string> host() const;
    /// Absent also if it is no number from 0 to 65535.
    [[nodiscard]] std::optional<int> port() const;
    /// Percent-decoded.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] std::optional<std::string> query() const;
    [[nodiscard]] std::optional<std::string> fragment() const;
    [[nodiscard]] bool isFileURL() const;
    /// Without the last component and the slash in front of it; query and fragment stay.
    [[nodiscard]] RVURL URLByDeletingLastPathComponent() const;
    /// With the component behind exactly one slash, percent-encoded; query and fragment stay.
    [[nodiscard]] RVURL URLByAppendingPathComponent(std::string_view component) const;

    friend bool operator==(const RVURL&, const RVURL&) = default;

private:
    std::string text_;
};

inline namespace RVGIT_EXPORT rvgit {

/// The form under which a credential for the URL is kept: scheme and host in lower case, port and
/// path as they are, which is how git looks for it; no user, password, query or fragment, so that
/// it is found whoever's name stands in an address.
[[nodiscard]] RVURL normalizedKeychainURL(const RVURL& url);

}  // namespace rvgit
