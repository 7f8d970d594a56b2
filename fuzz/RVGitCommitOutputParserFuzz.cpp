#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "RVGit/base/RVString.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/worktree/RVGitStash.h"

// The first byte chooses the format; the rest is what git printed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::vector<std::string>* formats[] = {
        &RVGitCommitOutputParser::gitCommitLogPrettyFormat(),
        &RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG(),
        &RVGitCommitOutputParser::gitCommitHashLogPrettyFormat(),
        &RVGitCommitOutputParser::gitRefLogPrettyFormat()};
    const std::string_view output(reinterpret_cast<const char*>(data) + 1, size - 1);
    RVGitCommitOutputParser parser(output, *formats[data[0] % 4], data[0] % 8 < 4);
    parser.parse();
    for (const auto& item : parser.commits()) {
        for (const auto& text : {item.GPGStatus(), item.GPGUsername(), item.GPGEmail(),
                                 item.GPGKeyIdentifier(), item.GPGSigningKey()})
            if (text && !isValidUTF8(*text))
                std::abort();
        if (!isValidUTF8(item.description()) ||
            item.parentCount() != item.parentCommitHashes().size() ||
            item.hasRefs() == item.refs().empty())
            std::abort();
        const std::string message = item.message().value_or("");
        for (const auto& text : {RVGitStash::parseStashMessageFromCommitMessage(message),
                                 RVGitStash::parseOriginBranchFromCommitMessage(message)})
            if (text && (!isValidUTF8(*text) || message.find(*text) == std::string::npos))
                std::abort();
    }
    return 0;
}
