#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"

// Whatever the bytes, they can be read, texts are UTF-8, and no field holds the boundary.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitForEachRefTagOutputParser parser(
        std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parser.parse())
        std::abort();
    for (const auto& item : parser.indexedResultCache()) {
        if (item.tagObjectHash.has_value() != item.message.has_value())
            std::abort();
        for (const std::string& text :
             {item.fullRefName, item.commitHash, item.tagObjectHash.value_or(""),
              item.message.value_or("")}) {
            if (!isValidUTF8(text) || text.find(parser.commitBoundaryString()) != text.npos)
                std::abort();
        }
    }
    return 0;
}
