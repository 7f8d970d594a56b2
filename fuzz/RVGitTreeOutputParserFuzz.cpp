#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/objects/RVGitTreeCommand.h"

// Whatever the bytes: an entry has a hash of 40 digits and a path in UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitTreeOutputParser parser(std::string_view(reinterpret_cast<const char*>(data), size));
    (void)parser.parse();
    for (const RVGitTreeOutputParserResultItem& item : parser.treeEntries()) {
        if (item.objectHash.size() != 40 || item.filePath.empty() || !isValidUTF8(item.filePath))
            std::abort();
    }
    return 0;
}
