#include "RVGit/lfs/RVGitLFSPointer.h"

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"

RVGitLFSPointer::RVGitLFSPointer(Entries entries, std::string stringRepresentation)
    : entries_(std::move(entries)), stringRepresentation_(std::move(stringRepresentation)) {
    requireKeys(entries_);
}

std::shared_ptr<RVGitLFSPointer> RVGitLFSPointer::pointerFromData(std::string_view data) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^([0-9a-z\.-]+)\s+(.+)$)", RVRegularExpression::DotMatchesLineSeparators);
    if (!isValidUTF8(data))
        return nullptr;
    Entries entries;
    for (std::size_t start = 0; start < data.size();) {
        const std::size_t end = std::min(data.find('\n', start), data.size());
        const auto components = expression->firstMatch(data.substr(start, end - start));
        if (!components.empty())
            entries.insert_or_assign(std::string(*components[1]), std::string(*components[2]));
        start = end + 1;
    }
    if (!validatePointerDictionary(entries))
        return nullptr;
    return std::make_shared<RVGitLFSPointer>(std::move(entries), std::string(data));
}

bool RVGitLFSPointer::validatePointerDictionary(const Entries& entries) {
    return entries.contains(RVGitLFSPointerVersion) && entries.contains(RVGitLFSPointerOID) &&
           entries.contains(RVGitLFSPointerSize);
}

void RVGitLFSPointer::requireKeys(const Entries& entries) {
    static constexpr const char* texts[][2] = {
        {RVGitLFSPointerVersion, "An LFS pointer must contain a 'version' key."},
        {RVGitLFSPointerOID, "An LFS pointer must contain an 'oid' key."},
        {RVGitLFSPointerSize, "An LFS pointer must contain a 'size' key."}};
    for (const auto& [key, text] : texts)
        if (!entries.contains(key))
            throw RVInvalidParameterException::withText(text);
}
