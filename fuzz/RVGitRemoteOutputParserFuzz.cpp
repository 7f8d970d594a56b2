#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitRemoteBranchToRemote.h"
#include "RVGit/remotes/RVGitRemoteCommand.h"

// Whatever the bytes, they can be read, and no name comes twice.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    RVGitRemoteOutputParser parser(output);
    if (!parser.parse())
        std::abort();
    std::set<std::string> names;
    for (const auto& item : parser.remotes()) {
        if (item.name.find('\t') != std::string::npos || !names.insert(item.name).second ||
            !isValidUTF8(item.name))
            std::abort();
        const auto path = RVGitRemoteBranchToRemote::refPathForSVNPathSpec(item.name);
        if (path && path->find(':') != std::string::npos)
            std::abort();
    }
    return 0;
}
