#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"

// The outputs that a list of branches is made of: the first byte chooses the parser.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view output(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0]) {
        case 'd': {
            RVGitForEachRefBranchOutputParser parser(output);
            if (!parser.parse())
                std::abort();
            for (const auto& item : parser.resultItems())
                if (!isValidUTF8(item.fullRefName))
                    std::abort();
            break;
        }
        case 'e': {
            RVGitDeleteBranchErrorOutputParser parser(output);
            if (!parser.parse())
                std::abort();
            for (const auto& name : parser.refNames())
                if (name.empty())
                    std::abort();
            break;
        }
        case 't': {
            RVGitBranchTrackingStateOutputParser parser(output);
            (void)parser.parse();
            for (const auto& state : parser.indexedResultCache())
                if (!isValidUTF8(state.fullRefName) || state.commitHash.size() < 40)
                    std::abort();
            break;
        }
        default: {
            RVGitBranchOutputParser parser(output);
            (void)parser.parse();
            for (const auto& item : parser.branches())
                if (!item.commitHash || item.commitHash->size() != 40 ||
                    (item.fullRefName && (!item.fullRefName->starts_with("refs/heads/") ||
                                          item.fullRefName->starts_with("refs/heads/("))))
                    std::abort();
        }
    }
    return 0;
}
