#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"

namespace {

bool holdsSHA256Hash(std::string_view output) {
    for (std::size_t start = 0; start < output.size(); ++start)
        if (beginsWithSHA256Hash(output.substr(start)))
            return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    RVGitSubmoduleStatusOutputParser parser(output);
    std::optional<RVError> error;
    if (!parser.parse(&error)) {
        // Only for a hash by SHA-256.
        if (!error || error->code() != RVGitOutputParserError || !holdsSHA256Hash(output))
            std::abort();
        return 0;
    }
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
