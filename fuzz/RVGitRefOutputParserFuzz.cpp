#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/repository/RVGitShowRefCommand.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitRefOutputParser parser({reinterpret_cast<const char*>(data), size});
    (void)parser.parse();
    for (const auto& item : parser.refs())
        if (!item.commitHash || item.commitHash->size() != 40 ||
            (item.tagObjectHash && item.tagObjectHash->size() != 40))
            std::abort();
    return 0;
}
