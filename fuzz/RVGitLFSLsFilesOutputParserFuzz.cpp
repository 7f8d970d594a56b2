#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/lfs/RVGitLFSLsFilesCommand.h"

// Whatever the bytes: the paths are those of the lines that match the definition of a line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto& definition = *new RVRegularExpression(
        R"(^[0-9a-f]+\s+\*{1}\s+(.+))", RVRegularExpression::DotMatchesLineSeparators);
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    RVGitLFSLsFilesOutputParser parser(bytes);
    if (!parser.parse())
        std::abort();
    std::vector<std::string> expected;
    for (const std::string& line :
         componentsSeparatedByString(stringUsingBestEncoding(bytes), "\n"))
        if (const auto components = definition.firstMatch(line); !components.empty())
            expected.emplace_back(*components[1]);
    if (parser.files() != expected)
        std::abort();
    return 0;
}
