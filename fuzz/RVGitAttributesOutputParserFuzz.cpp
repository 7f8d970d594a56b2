#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/worktree/RVGitCheckAttrCommand.h"

// The same bytes as lines and as triples. Whatever they are: an item has an attribute or more, all
// of its texts are UTF-8, and triples are read exactly where their number of pieces comes out even.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    RVGitAttributesOutputParser parser(output);
    (void)parser.parse();
    auto items = parser.takeIndexedResults();
    auto triples = RVGitAttributesOutputParser::itemsFromNULSeparatedOutput(output);
    const auto pieces = componentsSeparatedByNULByte(output);
    if (triples.has_value() != (pieces.size() % 3 == 1 && pieces.back().empty()))
        std::abort();
    if (triples)
        items.insert(items.end(), triples->begin(), triples->end());
    for (const RVGitAttributesOutputParserResultItem& item : items) {
        if (item.attributes.empty() || !isValidUTF8(item.filePath))
            std::abort();
        for (const auto& [name, value] : item.attributes)
            if (!isValidUTF8(name) || !isValidUTF8(value))
                std::abort();
    }
    return 0;
}
