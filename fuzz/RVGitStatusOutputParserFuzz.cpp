#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/worktree/RVGitStatusCommand.h"

// Whatever the bytes: a path has no slash at its ends and is UTF-8, and only a staged rename or
// copy has an original one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RVGitStatusOutputParser parser(std::string_view(reinterpret_cast<const char*>(data), size));
    (void)parser.parse();
    const auto isPath = [](const std::string& text) {
        return isValidUTF8(text) && !text.starts_with('/') && !text.ends_with('/');
    };
    for (const RVGitStatusOutputParserResultItem& item : parser.changedFiles()) {
        const bool hasTwoPaths = item.leftFileStatus == RVGitFileStatusRenamed ||
                                 item.leftFileStatus == RVGitFileStatusCopied;
        if (!isPath(item.filePath) || item.originalFilePath.has_value() != hasTwoPaths ||
            (item.originalFilePath && !isPath(*item.originalFilePath)) ||
            item.leftFileStatus == RVGitFileStatusNone ||
            item.rightFileStatus == RVGitFileStatusNone)
            std::abort();
    }
    return 0;
}
