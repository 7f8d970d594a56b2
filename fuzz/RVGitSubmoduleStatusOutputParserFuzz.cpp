#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "RVGit/submodules/RVGitSubmoduleCommand.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitSubmoduleStatusOutputParser parser({reinterpret_cast<const char*>(data), size});
    if (!parser.parse())
        std::abort();
    std::set<std::string> paths;
    for (const auto& item : parser.result()) {
        if (item.path.empty() || item.path.find('\n') != std::string::npos ||
            !paths.insert(item.path).second)
            std::abort();
        if (item.status < RVGitSubmoduleStatusClean || item.status > RVGitSubmoduleStatusUnmerged)
            std::abort();
        if (item.commitHash ? item.commitHash->size() != 40
                            : item.status != RVGitSubmoduleStatusUpdated || item.describe)
            std::abort();
        if (item.describe && (item.describe->empty() || *item.describe == "(null)"))
            std::abort();
    }
    return 0;
}
