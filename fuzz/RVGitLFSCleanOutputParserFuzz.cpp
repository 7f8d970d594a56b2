#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"

// Whatever the bytes: there is a pointer exactly if its three keys are there.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitLFSCleanOutputParser parser({reinterpret_cast<const char*>(data), size});
    if (!parser.parse())
        std::abort();
    for (const auto& [key, value] : parser.resultCache())
        if (key.empty() || value.empty())
            std::abort();
    bool isPointer = true;
    try {
        if (parser.pointer().allEntries() != parser.resultCache())
            std::abort();
    } catch (const RVInvalidParameterException&) {
        isPointer = false;
    }
    if (isPointer != RVGitLFSPointer::validatePointerDictionary(parser.resultCache()))
        std::abort();
    return 0;
}
