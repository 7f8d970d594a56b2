#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"

// Whatever the bytes: no pattern and no file name holds a blank, and all is UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitLFSTrackOutputParser parser({reinterpret_cast<const char*>(data), size});
    (void)parser.parse();
    for (const auto& item : parser.trackedFilePatterns())
        for (const std::string& text : {item.trackedFilePattern, item.attributeFileName})
            if (text.find(' ') != std::string::npos || !isValidUTF8(text))
                std::abort();
    return 0;
}
