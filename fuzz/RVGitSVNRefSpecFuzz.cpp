#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "RVGit/svn/RVGitSVNRefSpec.h"

// Whatever the text: with one colon it comes back as it was, and what comes back stays.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto spec = RVGitSVNRefSpec::SVNRefSpecFromString(text);
    const std::string value = spec->stringValue();
    const std::size_t colon = text.find(':');
    if (colon != std::string_view::npos && text.rfind(':') == colon && value != text)
        std::abort();
    if (RVGitSVNRefSpec::SVNRefSpecFromString(value)->stringValue() != value)
        std::abort();
    return 0;
}
