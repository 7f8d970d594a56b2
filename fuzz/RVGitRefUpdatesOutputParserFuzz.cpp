#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/command/RVGitRefUpdatesOutputParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitRefUpdatesOutputParser parser({reinterpret_cast<const char*>(data), size});
    if (!parser.parse())
        std::abort();
    for (const auto& item : parser.result())
        if (!item.summary || !item.to || item.type < RVGitRefUpdateTypeNone ||
            item.type > RVGitRefUpdateTypeRejected)
            std::abort();
    return 0;
}
