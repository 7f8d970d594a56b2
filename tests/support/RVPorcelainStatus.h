#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What `git status --porcelain=v2 -z` says of one path: a second source, read without the library,
/// for tests of the listing.
struct RVPorcelainStatus {
    /// Without a slash at the end.
    std::string path;
    /// Where a renamed or copied file came from.
    std::optional<std::string> originalPath;
    /// The letters of the index and of the working tree: ' ' for no change, "??" and "!!" for
    /// untracked and ignored files.
    char left = ' ';
    char right = ' ';
    /// Of a conflict: then `hashes` are those of the three stages, and otherwise those of HEAD and
    /// of the index.
    bool isUnmerged = false;
    /// "N..." unless it is a submodule.
    std::string submodule;
    /// In octal digits: of HEAD, the index and the working tree, or of the three stages and the
    /// working tree.
    std::vector<std::string> modes;
    std::vector<std::string> hashes;
};

/// The records in git's order, byte for byte. Throws std::runtime_error at what it does not know.
[[nodiscard]] std::vector<RVPorcelainStatus> porcelainStatuses(std::string_view output);
/// The same by path. A path that git prints twice, deleted in the index and then untracked (or
/// ignored), is one: 'D' on the left, '?' (or '!') on the right. Throws for any other that comes
/// twice.
[[nodiscard]] std::map<std::string, RVPorcelainStatus> porcelainStatusesByPath(
    std::string_view output);
