#pragma once

#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVURL.h"

// The forms of address that git accepts, asked of a URL. One of them is no URL: the short form,
// "user@host:path", without a scheme and with a path that is relative to the user's directory. All
// of these are pure: nothing is looked up on the disk or the net. Schemes count as they are
// written: git knows "https" and no "HTTPS".

inline namespace RVGIT_EXPORT rvgit {

/// The URL of what somebody has typed or a configuration holds. Absent for absent text, for a
/// relative path (text that begins with "."), and for what is no URL: characters that no URL holds
/// (blanks, controls, <>"\^`{|}), a "%" that escapes nothing, and bytes that are not UTF-8. Only
/// an absolute path may hold blanks: it becomes a "file" URL, percent-encoded.
[[nodiscard]] std::optional<RVURL> URLWithGitURLString(const std::optional<std::string>& text);

/// Whether this is the short form: no "://", exactly one colon, and at least three characters
/// behind it. Kept for compatibility: whatever stands in front of the colon, a drive letter or
/// nothing at all included.
[[nodiscard]] bool isSCPSyntax(const RVURL& url);

/// The address as a real URL: "ssh://" for the short form, "git+ssh" and "svn+ssh", "file://" for
/// an absolute path; any other with a scheme is unchanged. Absent for a relative path.
[[nodiscard]] std::optional<RVURL> gitURL(const RVURL& url);
/// The text of gitURL().
[[nodiscard]] std::optional<std::string> gitURLString(const RVURL& url);
[[nodiscard]] std::optional<std::string> gitURLUsername(const RVURL& url);
[[nodiscard]] std::optional<std::string> gitURLHostname(const RVURL& url);
/// The path of gitURL().
[[nodiscard]] std::optional<std::string> gitURLPath(const RVURL& url);
/// "ssh" for the short form and "git+ssh", "file" without a scheme, else the scheme: "svn+ssh"
/// stays.
[[nodiscard]] std::optional<std::string> gitURLProtocol(const RVURL& url);

[[nodiscard]] bool isSVNSSHProtocol(const RVURL& url);
/// Kept for compatibility: true for a short form with a user, too, since it has no scheme.
[[nodiscard]] bool isFileProtocol(const RVURL& url);
[[nodiscard]] bool isGitProtocol(const RVURL& url);
/// The short form, "ssh", "git+ssh" or "svn+ssh".
[[nodiscard]] bool isSSHProtocol(const RVURL& url);
[[nodiscard]] bool isHTTPProtocol(const RVURL& url);
[[nodiscard]] bool isHTTPSProtocol(const RVURL& url);
[[nodiscard]] bool isFTPProtocol(const RVURL& url);
[[nodiscard]] bool isFTPSProtocol(const RVURL& url);
/// Any of ssh, git, file, http, https, ftp and ftps, as above.
[[nodiscard]] bool isValidGitURLProtocol(const RVURL& url);
/// A valid protocol, a host and a path. Kept for compatibility: the host is asked of a file, too,
/// so that a plain local path is not valid here.
[[nodiscard]] bool isValidGitURL(const RVURL& url);
/// Neither git nor the file system asks who comes.
[[nodiscard]] bool isAnonymousProtocol(const RVURL& url);
/// Whether there is a user name in an address that is not anonymous. An https address without one
/// may ask for a password all the same.
[[nodiscard]] bool requiresAuthentication(const RVURL& url);

}  // namespace rvgit
