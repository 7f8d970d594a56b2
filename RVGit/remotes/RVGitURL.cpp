#include "RVGit/remotes/RVGitURL.h"

#include <algorithm>
#include <string_view>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"

namespace {

bool isHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

bool isURLCharacter(char character) {
    return character > ' ' && character != '\x7F' &&
           std::string_view("<>\"\\^`{|}").find(character) == std::string_view::npos;
}

bool canBeURL(std::string_view text) {
    if (!isValidUTF8(text))
        return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool isASCIICharacter = static_cast<unsigned char>(text[index]) < 0x80;
        if (isASCIICharacter && !isURLCharacter(text[index]))
            return false;
        if (text[index] == '%' && (text.size() - index < 3 || !isHexDigit(text[index + 1]) ||
                                   !isHexDigit(text[index + 2])))
            return false;
    }
    return true;
}

std::size_t numberOfCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

bool hasScheme(const RVURL& url, std::string_view scheme) {
    return url.scheme() == scheme;
}

}  // namespace

std::optional<RVURL> rvgit::URLWithGitURLString(const std::optional<std::string>& text) {
    if (!text || text->starts_with('.'))
        return std::nullopt;
    if (text->starts_with('/') && text->find(' ') != std::string::npos)
        return RVURL::fileURLWithPath(*text);
    if (!canBeURL(*text))
        return std::nullopt;
    return RVURL(*text);
}

bool rvgit::isSCPSyntax(const RVURL& url) {
    const std::string_view text = url.absoluteString();
    const auto colon = text.find(':');
    return colon != std::string_view::npos && text.find(':', colon + 1) == std::string_view::npos &&
           text.find("://") == std::string_view::npos &&
           numberOfCharacters(text.substr(colon + 1)) >= 3;
}

std::optional<RVURL> rvgit::gitURL(const RVURL& url) {
    const std::string& text = url.absoluteString();
    const bool isShortForm = isSCPSyntax(url);
    if (!url.scheme() && !isShortForm) {
        if (!isAbsolutePath(text))
            return std::nullopt;
        return RVURL("file://" + text);
    }
    if (hasScheme(url, "git+ssh") || isSVNSSHProtocol(url))
        return RVURL(text.substr(4));
    if (isShortForm) {
        const bool hasSlash = text.find(":/") != std::string::npos;
        return RVURL("ssh://" + stringByReplacingOccurrences(text, hasSlash ? ":/" : ":", "/"));
    }
    return url;
}

std::optional<std::string> rvgit::gitURLString(const RVURL& url) {
    const auto real = gitURL(url);
    return real ? std::optional(real->absoluteString()) : std::nullopt;
}

std::optional<std::string> rvgit::gitURLUsername(const RVURL& url) {
    return isSCPSyntax(url) ? gitURL(url)->user() : url.user();
}

std::optional<std::string> rvgit::gitURLHostname(const RVURL& url) {
    return isSCPSyntax(url) ? gitURL(url)->host() : url.host();
}

std::optional<std::string> rvgit::gitURLPath(const RVURL& url) {
    const auto real = gitURL(url);
    return real ? std::optional(real->path()) : std::nullopt;
}

std::optional<std::string> rvgit::gitURLProtocol(const RVURL& url) {
    if (isSCPSyntax(url) || hasScheme(url, "git+ssh"))
        return "ssh";
    return isFileProtocol(url) ? "file" : url.scheme();
}

bool rvgit::isSVNSSHProtocol(const RVURL& url) {
    return hasScheme(url, "svn+ssh");
}

bool rvgit::isFileProtocol(const RVURL& url) {
    return !url.scheme() || hasScheme(url, "file");
}

bool rvgit::isGitProtocol(const RVURL& url) {
    return hasScheme(url, "git");
}

bool rvgit::isSSHProtocol(const RVURL& url) {
    return isSCPSyntax(url) || hasScheme(url, "ssh") || hasScheme(url, "git+ssh") ||
           isSVNSSHProtocol(url);
}

bool rvgit::isHTTPProtocol(const RVURL& url) {
    return hasScheme(url, "http");
}

bool rvgit::isHTTPSProtocol(const RVURL& url) {
    return hasScheme(url, "https");
}

bool rvgit::isFTPProtocol(const RVURL& url) {
    return hasScheme(url, "ftp");
}

bool rvgit::isFTPSProtocol(const RVURL& url) {
    return hasScheme(url, "ftps");
}

bool rvgit::isValidGitURLProtocol(const RVURL& url) {
    return isSSHProtocol(url) || isGitProtocol(url) || isFileProtocol(url) ||
           isHTTPSProtocol(url) || isHTTPProtocol(url) || isFTPSProtocol(url) || isFTPProtocol(url);
}

bool rvgit::isValidGitURL(const RVURL& url) {
    const auto path = gitURLPath(url);
    return gitURLString(url) && isValidGitURLProtocol(url) &&
           !RVStringIsEmpty(gitURLHostname(url)) && !RVStringIsEmpty(path) &&
           (!isFileProtocol(url) || isAbsolutePath(*path));
}

bool rvgit::isAnonymousProtocol(const RVURL& url) {
    return (!url.scheme() && !isSCPSyntax(url)) || hasScheme(url, "file") || isGitProtocol(url);
}

bool rvgit::requiresAuthentication(const RVURL& url) {
    return !isAnonymousProtocol(url) && gitURLUsername(url);
}
