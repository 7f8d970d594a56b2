#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitRemoteBranchOutputParser.h"

// Every item has a name below the remotes, and a hash unless only a remote's HEAD named it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitRemoteBranchOutputParser parser(
        std::string_view(reinterpret_cast<const char*>(data), size));
    (void)parser.parse();
    for (const auto& item : parser.remoteBranches())
        if (!item.fullRefName.starts_with("refs/remotes/") || !isValidUTF8(item.fullRefName) ||
            (item.commitHash ? item.commitHash->size() != 40 : !item.isHead))
            std::abort();
    return 0;
}
