#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/history/RVGitBlameOutputParser.h"

// Whatever the bytes, they can be read: all lines but the last are whole, and texts are UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitBlameOutputParser parser(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parser.parse())
        std::abort();
    const auto& items = parser.annotatedLines();
    if (items.size() != parser.currentLineNumber() &&
        items.size() != parser.currentLineNumber() + 1)
        std::abort();
    for (std::size_t index = 0; index < items.size(); ++index) {
        const RVGitBlameOutputParserResultItem& item = items[index];
        if (item.lineContents.has_value() != (index < parser.currentLineNumber()))
            std::abort();
        for (const auto& text : {item.authorEmail, item.committerEmail, item.filePath,
                                 item.authorName, item.lineContents}) {
            if (text && !isValidUTF8(*text))
                std::abort();
        }
        (void)item.authorDate();
        (void)item.committerDate();
    }
    return 0;
}
