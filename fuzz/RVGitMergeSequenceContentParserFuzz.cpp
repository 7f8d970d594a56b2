#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitMergeSequenceContentParser.h"

// The bytes are a to-do list. Whatever they are, each instruction is two words, their list written
// anew reads the same, and a failure leaves what stands ahead of the bad line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string contents(reinterpret_cast<const char*>(data), size);
    RVGitMergeSequenceContentParser parser(contents);
    std::optional<RVError> error;
    const bool parsed = parser.parse(&error);
    if (parsed == error.has_value() || (error && error->code() != RVGitOutputParserError))
        std::abort();

    std::string written;
    bool isPlain = true;
    const auto instructions = parser.sequenceInstructions();
    for (const auto& instruction : instructions) {
        for (const std::string& word : {instruction->command(), instruction->commitHash()})
            if (word.empty() || word.find_first_of(" \t\n") != std::string::npos ||
                contents.find(word) == std::string::npos)
                std::abort();
        // A carriage return within a line is part of a word, but not at the end of a line.
        isPlain = isPlain && trimmedWhitespaceAndNewline(instruction->stringValue()) ==
                                 instruction->stringValue();
        written += instruction->stringValue() + "\n";
    }
    RVGitMergeSequenceContentParser again(written);
    if (isPlain && !again.parse())
        std::abort();
    if (isPlain && again.allRevisions() != parser.allRevisions())
        std::abort();
    if (parser.revisionsCount() != instructions.size() ||
        parser.nextRevision().has_value() == instructions.empty() ||
        (!instructions.empty() && (*parser.nextRevision() != instructions.front()->commitHash() ||
                                   *parser.lastRevision() != instructions.back()->commitHash())))
        std::abort();
    return 0;
}
