#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

// Whatever the bytes: parsing succeeds, hashes have 40 digits, paths are UTF-8, and only the last
// item may lack its paths.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitDiffStatsOutputParser parser(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parser.parse())
        std::abort();
    const auto& items = parser.indexedResultCache();
    for (const RVGitDiffStatsOutputParserResultItem& item : items) {
        const bool isWhole = item.filePath && item.originalFilePath;
        if (item.objectHash.size() != 40 || (!isWhole && &item != &items.back()))
            std::abort();
        if (isWhole && (!isValidUTF8(*item.filePath) || !isValidUTF8(*item.originalFilePath)))
            std::abort();
    }
    return 0;
}
