#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/lfs/RVGitLFSPointer.h"

// Whatever the bytes: a pointer has its three keys and the whole text, and reads the same again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto pointer = RVGitLFSPointer::pointerFromData(bytes);
    if (!pointer)
        return 0;
    if (!isValidUTF8(bytes) || pointer->stringRepresentation() != bytes ||
        !RVGitLFSPointer::validatePointerDictionary(pointer->allEntries()))
        std::abort();
    std::string text;
    for (const auto& [key, value] : pointer->allEntries())
        text += key + " " + value + "\n";
    const auto again = RVGitLFSPointer::pointerFromData(text);
    if (!again || again->allEntries() != pointer->allEntries())
        std::abort();
    return 0;
}
