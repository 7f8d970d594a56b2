#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/worktree/RVGitIndexHelper.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"

namespace {

/// The first byte tells the filters; the rest is what git printed.
void parse(unsigned filters, std::string_view output) {
    RVGitIndexOutputParser parser(output);
    parser.setFiltersAssumeUnchangedFiles(filters & 1);
    parser.setFiltersSubmodules(filters & 2);
    if (filters & 4)
        parser.setFilePaths({"dir", "caf\u00E9"});
    (void)parser.parse();
    for (const RVGitIndexOutputParserResultItem& item : parser.indexEntries()) {
        if (item.objectHash.text().value_or("").size() != 40 || item.filePath.empty() ||
            !isValidUTF8(item.filePath) || item.stage > RVGitIndexStageTheirs)
            std::abort();
        if ((filters & 7) == 1 && item.flag &&
            !RVGitIndexHelper::isAssumeUnchangedFlag({&*item.flag, 1}))
            std::abort();
    }
}

}  // namespace

// Whatever the bytes: an entry has a hash of 40 digits and a path in UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0)
        parse(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
