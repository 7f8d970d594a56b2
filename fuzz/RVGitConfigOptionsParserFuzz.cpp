#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitFilePathsOutputParser.h"
#include "RVGit/history/RVGitMergeBaseCommand.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"

namespace {

void readOptions(std::string_view output) {
    RVGitConfigOptionsParser parser(output);
    (void)parser.parse();
    const RVOptions options = parser.configOptions();
    for (const auto& [key, value] : options)
        if (!isValidUTF8(key) || (!value.string() && !value.stringList()))
            std::abort();
    for (const auto& [section, values] :
         RVGitConfigOptionsParser::parseConfigOptionsBySection(options))
        for (const auto& [key, value] : values)
            if (key.find('.') != std::string::npos)
                std::abort();
}

void readFilePaths(std::string_view output, bool endInNULBytes) {
    RVGitFilePathsOutputParser parser(output, endInNULBytes);
    if (!parser.parse())
        std::abort();
    for (const auto& path : parser.filePaths())
        if (path.empty() || !isValidUTF8(path))
            std::abort();
}

}  // namespace

// The small parsers of records that may stand in any output: the first byte chooses one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view output(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0]) {
        case 'p':
            readFilePaths(output, true);
            break;
        case 'l':
            readFilePaths(output, false);
            break;
        case 'm': {
            RVGitMergeBaseOutputParser parser(output);
            const bool parsed = parser.parse();
            if (const auto* result = parser.result(); result && result->commitHash.size() != 40)
                std::abort();
            if (parsed && !output.empty() && output.front() != '\n' && !parser.result())
                std::abort();
            break;
        }
        default:
            readOptions(output);
    }
    return 0;
}
