#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitCredentialCommand.h"
#include "RVGit/remotes/RVGitURL.h"

namespace {

void check(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

// Whatever an address is: its answers fit together, what has been made a URL holds nothing that
// ends a line, and the request for its credential has as many lines as it should.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const RVURL url(text);
    const auto real = gitURL(url);
    check(real.has_value() == gitURLString(url).has_value());
    check(real.has_value() == gitURLPath(url).has_value());
    check(real.has_value() || (!url.scheme() && !isSCPSyntax(url)));
    if (isValidGitURL(url))
        check(isValidGitURLProtocol(url) && !gitURLHostname(url)->empty() &&
              !gitURLPath(url)->empty());
    if (requiresAuthentication(url))
        check(!isAnonymousProtocol(url) && gitURLUsername(url));
    if (isSCPSyntax(url))
        check(gitURLProtocol(url) == "ssh" && isSSHProtocol(url));
    if (const auto made = URLWithGitURLString(text)) {
        check(isValidUTF8(made->absoluteString()));
        check(made->absoluteString().find_first_of(std::string(" \n\r\0", 4)) == std::string::npos);
    }
    const RVURL normalized = normalizedKeychainURL(url);
    check(normalizedKeychainURL(normalized) == normalized);
    check(!normalized.user() && !normalized.password() && !normalized.query());
    return 0;
}
