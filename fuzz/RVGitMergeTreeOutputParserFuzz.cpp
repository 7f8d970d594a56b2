#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"
#include "RVGit/repository/RVGitRepository.h"

// Whatever the bytes: each entry has a message, sides are whole or absent, no line of the report is
// kept twice, and every entry can be judged.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto& repository =
        *new std::shared_ptr(RVGitRepository::bareRepositoryWithGitDirectoryPath("/nowhere"));
    RVGitMergeTreeOutputParser parser(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parser.parse())
        std::abort();
    // Bytes that are not UTF-8 take up to three when they are decoded.
    std::size_t rest = 3 * size;
    for (RVGitMergeTreeOutputParserResultItem& item : parser.takeIndexedResults()) {
        if (!item.message || item.message->empty())
            std::abort();
        const std::size_t kept = item.message->size() + item.diff.value_or("").size();
        if (kept > rest || (item.diff && (item.diff->empty() || item.diff->ends_with('\n'))))
            std::abort();
        rest -= kept;
        for (const auto& [path, hash] : {std::pair(&item.baseFilepath, &item.baseObjectHash),
                                         std::pair(&item.ourFilepath, &item.ourObjectHash),
                                         std::pair(&item.theirFilepath, &item.theirObjectHash),
                                         std::pair(&item.resultFilepath, &item.resultObjectHash)})
            if (path->has_value() != hash->has_value() ||
                (*path && ((*path)->empty() || !isValidUTF8(**path) || (*hash)->size() != 40)))
                std::abort();
        const auto entry =
            RVGitMergeTreeEntry::mergeTreeEntryWithParserResultItem(std::move(item), repository);
        (void)entry->hasConflict();
        if (entry->type() == RVGitMergeTreeEntryTypeUnknown && entry->filePath())
            std::abort();
    }
    return 0;
}
