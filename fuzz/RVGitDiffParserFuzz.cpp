#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffParser.h"

// Whatever the bytes: the blocks make up the output, all texts are UTF-8, and a chunk's raw text is
// its header with its lines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    std::string blocks;
    for (const auto block : RVGitDiffParser::diffDataComponentsFromMultipleDiffOutput(output))
        blocks += block;
    if (blocks != output)
        std::abort();

    RVGitDiffParser parser(output);
    if (!parser.parse())
        std::abort();
    for (const RVGitDiffMap& map : parser.result()) {
        const auto diff = RVGitDiff::diffWithRepository(nullptr, map);
        if (!isValidUTF8(diff->rawDiff().value()))
            std::abort();
        for (const auto& chunk : diff->chunks()) {
            std::string raw = chunk->header() + "\n";
            for (const RVGitDiffChunkLine& line : chunk->lines()) {
                raw += line.contentWithStatus() + "\n";
                if (line.lineNumbers().size() != chunk->fileRanges().size())
                    std::abort();
            }
            if (raw != chunk->rawChunk())
                std::abort();
        }
    }
    return 0;
}
