#include "tests/support/RVPorcelainStatus.h"

#include <stdexcept>
#include <utility>

namespace {

/// Takes the text up to the separator off the front.
std::string takeUntil(std::string_view& text, char separator) {
    const auto end = text.find(separator);
    if (end == std::string_view::npos)
        throw std::runtime_error("a field is missing: " + std::string(text));
    std::string field(text.substr(0, end));
    text.remove_prefix(end + 1);
    return field;
}

std::string withoutSlashAtEnd(std::string path) {
    if (path.ends_with('/'))
        path.pop_back();
    return path;
}

}  // namespace

std::vector<RVPorcelainStatus> porcelainStatuses(std::string_view output) {
    std::vector<RVPorcelainStatus> statuses;
    while (!output.empty()) {
        const std::string kind = takeUntil(output, ' ');
        RVPorcelainStatus status;
        if (kind == "?" || kind == "!") {
            status.left = status.right = kind[0];
        } else if (kind == "1" || kind == "2" || kind == "u") {
            const std::string letters = takeUntil(output, ' ');
            status.left = letters.at(0) == '.' ? ' ' : letters.at(0);
            status.right = letters.at(1) == '.' ? ' ' : letters.at(1);
            status.submodule = takeUntil(output, ' ');
            status.isUnmerged = kind == "u";
            for (int count = status.isUnmerged ? 4 : 3; count > 0; --count)
                status.modes.push_back(takeUntil(output, ' '));
            for (int count = status.isUnmerged ? 3 : 2; count > 0; --count)
                status.hashes.push_back(takeUntil(output, ' '));
            if (kind == "2")
                (void)takeUntil(output, ' ');
        } else {
            throw std::runtime_error("not a record: " + kind);
        }
        status.path = withoutSlashAtEnd(takeUntil(output, '\0'));
        if (kind == "2")
            status.originalPath = takeUntil(output, '\0');
        statuses.push_back(std::move(status));
    }
    return statuses;
}

std::map<std::string, RVPorcelainStatus> porcelainStatusesByPath(std::string_view output) {
    std::map<std::string, RVPorcelainStatus> byPath;
    for (const auto& status : porcelainStatuses(output)) {
        const std::string& path = status.path;
        const auto [found, isNew] = byPath.try_emplace(path, status);
        if (isNew)
            continue;
        const bool isLeftOver = status.left == '?' || status.left == '!';
        if (found->second.left != 'D' || !isLeftOver)
            throw std::runtime_error("a path that comes twice: " + path);
        found->second.right = status.right;
    }
    return byPath;
}
