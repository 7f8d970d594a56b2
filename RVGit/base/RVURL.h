#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A URL as its text, with the generic components of RFC 3986. Parsing never fails: what is no
/// URL has a path alone. Components are percent-decoded where said so.
class RVURL {
public:
    explicit RVURL(std::string text);
    /// A "file" URL of the path, percent-encoded.
    [[nodiscard]] static RVURL fileURLWithPath(std::string_view path);
    /// A "file" URL of the path, taken relative to the base's path unless it is absolute.
    [[nodiscard]] static RVURL fileURLWithPath(std::string_view path, const RVURL& base);

    [[nodiscard]] const std::string& absoluteString() const { return text_; }
    [[nodiscard]] std::optional<std::string> scheme() const;
    /// Percent-decoded.
    [[nodiscard]] std::optional<std::string> user() const;
    [[nodiscard]] std::optional<std::string> password() const;
    [[nodiscard]] std::optional<std::string> host() const;
    [[nodiscard]] std::optional<int> port() const;
    /// Percent-decoded.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] std::optional<std::string> query() const;
    [[nodiscard]] std::optional<std::string> fragment() const;
    [[nodiscard]] bool isFileURL() const;
    [[nodiscard]] RVURL URLByDeletingLastPathComponent() const;
    [[nodiscard]] RVURL URLByAppendingPathComponent(std::string_view component) const;

    friend bool operator==(const RVURL&, const RVURL&) = default;

private:
    std::string text_;
};

/// The form under which a credential for the URL is kept: scheme and host in lower case, no
/// user, password, default port, query or fragment, no trailing slash.
[[nodiscard]] RVURL normalizedKeychainURL(const RVURL& url);
