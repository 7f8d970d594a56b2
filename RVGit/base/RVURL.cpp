#include "RVGit/base/RVURL.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"

namespace {

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// The components of a URL as they stand in its text.
struct Components {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> user;
    std::optional<std::string_view> password;
    std::optional<std::string_view> host;
    std::optional<std::string_view> port;
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;

    explicit Components(std::string_view text) {
        const auto colon = text.find(':');
        if (colon != std::string_view::npos && isScheme(text.substr(0, colon))) {
            scheme = text.substr(0, colon);
            text.remove_prefix(colon + 1);
        }
        fragment = takeBehind(text, '#');
        query = takeBehind(text, '?');
        path = text;
        if (text.starts_with("//")) {
            const auto end = std::min(text.find('/', 2), text.size());
            splitAuthority(text.substr(2, end - 2));
            path = text.substr(end);
        }
    }

private:
    static bool isScheme(std::string_view text) {
        return !text.empty() && isLetter(text.front()) &&
               std::all_of(text.begin(), text.end(), [](char character) {
                   return isLetter(character) || isDigit(character) || character == '+' ||
                          character == '-' || character == '.';
               });
    }
    static std::optional<std::string_view> takeBehind(std::string_view& text, char mark) {
        const auto position = text.find(mark);
        if (position == std::string_view::npos)
            return std::nullopt;
        const auto taken = text.substr(position + 1);
        text = text.substr(0, position);
        return taken;
    }
    void splitAuthority(std::string_view authority) {
        // The last one: no host contains the sign, while people do write it in user names.
        const auto at = authority.rfind('@');
        if (at != std::string_view::npos) {
            std::string_view credentials = authority.substr(0, at);
            password = takeBehind(credentials, ':');
            user = credentials;
            authority.remove_prefix(at + 1);
        }
        const auto lastNonDigit = std::find_if_not(authority.rbegin(), authority.rend(), isDigit);
        if (lastNonDigit != authority.rend() && *lastNonDigit == ':') {
            const auto digits = static_cast<std::size_t>(lastNonDigit - authority.rbegin());
            port = authority.substr(authority.size() - digits);
            authority.remove_suffix(digits + 1);
        }
        host = authority;
    }
};

int hexDigitValue(char character) {
    if (isDigit(character))
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const int high =
            text[index] == '%' && text.size() - index > 2 ? hexDigitValue(text[index + 1]) : -1;
        const int low = high < 0 ? -1 : hexDigitValue(text[index + 2]);
        if (low < 0) {
            decoded += text[index];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        index += 2;
    }
    return decoded;
}

std::optional<std::string> percentDecoded(std::optional<std::string_view> text) {
    if (!text)
        return std::nullopt;
    return percentDecoded(*text);
}

std::optional<std::string> copied(std::optional<std::string_view> text) {
    if (!text)
        return std::nullopt;
    return std::string(*text);
}

std::string percentEncodedPath(std::string_view path) {
    std::string encoded;
    for (const char character : path) {
        if (isLetter(character) || isDigit(character) ||
            std::string_view("-._~!$&'()*+,;=:@/").find(character) != std::string_view::npos) {
            encoded += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        encoded += '%';
        encoded += "0123456789ABCDEF"[byte / 16];
        encoded += "0123456789ABCDEF"[byte % 16];
    }
    return encoded;
}

/// The URL's text with another path in place of its own, which is a part of that text.
RVURL URLByReplacingPath(const RVURL& url, std::string_view path, std::string_view newPath) {
    const std::string_view text = url.absoluteString();
    const auto start = static_cast<std::size_t>(path.data() - text.data());
    std::string newText(text.substr(0, start));
    newText += newPath;
    newText += text.substr(start + path.size());
    return RVURL(std::move(newText));
}

}  // namespace

RVURL::RVURL(std::string text) : text_(std::move(text)) {}

RVURL RVURL::fileURLWithPath(std::string_view path) {
    std::string absolutePath(path);
    if (!isAbsolutePath(path)) {
        std::error_code ignored;
        const auto directory = std::filesystem::current_path(ignored).string();
        absolutePath = pathByAppendingComponent(directory.empty() ? "/" : directory, path);
    }
    return RVURL("file://" + percentEncodedPath(absolutePath));
}

RVURL RVURL::fileURLWithPath(std::string_view path, const RVURL& base) {
    if (isAbsolutePath(path))
        return fileURLWithPath(path);
    const auto joinedPath = pathByAppendingComponent(base.path(), path);
    // A relative path may begin with a tilde, which then is a name like any other.
    return fileURLWithPath(isAbsolutePath(joinedPath) ? standardizedPath(joinedPath) : joinedPath);
}

std::optional<std::string> RVURL::scheme() const {
    return copied(Components(text_).scheme);
}

std::optional<std::string> RVURL::user() const {
    return percentDecoded(Components(text_).user);
}

std::optional<std::string> RVURL::password() const {
    return percentDecoded(Components(text_).password);
}

std::optional<std::string> RVURL::host() const {
    return percentDecoded(Components(text_).host);
}

std::optional<int> RVURL::port() const {
    const auto text = Components(text_).port;
    if (!text)
        return std::nullopt;
    int number = 0;
    const auto result = std::from_chars(text->data(), text->data() + text->size(), number);
    if (result.ec != std::errc() || number > 65535)
        return std::nullopt;
    return number;
}

std::string RVURL::path() const {
    return percentDecoded(Components(text_).path);
}

std::optional<std::string> RVURL::query() const {
    return copied(Components(text_).query);
}

std::optional<std::string> RVURL::fragment() const {
    return copied(Components(text_).fragment);
}

bool RVURL::isFileURL() const {
    const auto text = scheme();
    return text && lowercaseString(*text) == "file";
}

RVURL RVURL::URLByDeletingLastPathComponent() const {
    const auto path = Components(text_).path;
    return URLByReplacingPath(*this, path, pathByDeletingLastComponent(path));
}

RVURL RVURL::URLByAppendingPathComponent(std::string_view component) const {
    const Components components(text_);
    // Behind a host a path begins with a slash.
    const std::string_view base =
        components.path.empty() && components.host ? std::string_view("/") : components.path;
    return URLByReplacingPath(*this, components.path,
                              pathByAppendingComponent(base, percentEncodedPath(component)));
}

RVURL rvgit::normalizedKeychainURL(const RVURL& url) {
    const Components components(url.absoluteString());
    std::string text;
    if (components.scheme)
        text += lowercaseString(*components.scheme) + ":";
    if (components.host) {
        std::string_view host = *components.host;
        const std::string_view port = components.port.value_or("");
        while (port.empty() && host.ends_with(':'))
            host.remove_suffix(1);
        text += "//" + lowercaseString(host);
        if (!port.empty())
            text += ":" + std::string(port);
    }
    return RVURL(text + std::string(components.path));
}
