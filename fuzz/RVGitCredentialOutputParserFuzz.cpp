#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitCredentialCommand.h"

// Whatever a helper prints: a value is text without "=" or newline, and output is read exactly if
// each of its lines has one of the five keys.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    RVGitCredentialOutputParser parser(output);
    const bool parsed = parser.parse();
    for (const auto& value :
         {parser.scheme(), parser.host(), parser.path(), parser.user(), parser.password()})
        if (value && (value->find_first_of("=\n") != std::string::npos || !isValidUTF8(*value)))
            std::abort();
    bool readable = true;
    for (const auto& line : componentsSeparatedByString(
             size == 0 ? std::string() : stringUsingBestEncoding(output), "\n"))
        readable = readable && (line.empty() || line.starts_with("protocol=") ||
                                line.starts_with("host=") || line.starts_with("path=") ||
                                line.starts_with("username=") || line.starts_with("password="));
    if (parsed != readable)
        std::abort();
    return 0;
}
