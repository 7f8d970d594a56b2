#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/history/RVGitShortlogCommand.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitShortlogOutputParser parser({reinterpret_cast<const char*>(data), size});
    if (!parser.parse())
        std::abort();
    for (const auto& item : parser.result())
        if (item.authorName.empty() || item.authorEmail.empty())
            std::abort();
    return 0;
}
