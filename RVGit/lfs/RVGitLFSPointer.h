#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// The keys that every pointer has.
inline constexpr char RVGitLFSPointerVersion[] = "version";
inline constexpr char RVGitLFSPointerOID[] = "oid";
inline constexpr char RVGitLFSPointerSize[] = "size";

/// The small text file that stands in git for a large one: a plain value. Lines of a key and a
/// value, of which three are required and any others are kept.
class RVGIT_EXPORT RVGitLFSPointer {
public:
    using Entries = std::map<std::string, std::string, std::less<>>;

    /// Each of the three keys is required: RVInvalidParameterException with the text "An LFS
    /// pointer must contain a 'version' key.", or "an 'oid' key", or "a 'size' key".
    RVGIT_EXPORT RVGitLFSPointer(Entries entries, std::string stringRepresentation);

    /// Null for bytes that are not UTF-8 or lack one of the three keys. A key consists of digits,
    /// lower-case letters, dots and dashes; other lines are dropped, and of a repeated key the last
    /// value counts. No value is checked.
    [[nodiscard]] RVGIT_EXPORT static std::shared_ptr<RVGitLFSPointer> pointerFromData(
        std::string_view data);
    /// Whether all of the three keys are there.
    [[nodiscard]] RVGIT_EXPORT static bool validatePointerDictionary(const Entries& entries);
    /// Throws as the constructor does.
    RVGIT_EXPORT static void requireKeys(const Entries& entries);

    [[nodiscard]] const Entries& allEntries() const { return entries_; }
    /// The text as it was read.
    [[nodiscard]] const std::string& stringRepresentation() const { return stringRepresentation_; }
    /// The address of the format's description.
    [[nodiscard]] const std::string& version() const { return entries_.at(RVGitLFSPointerVersion); }
    /// "sha256:" and the hash of the contents.
    [[nodiscard]] const std::string& objectID() const { return entries_.at(RVGitLFSPointerOID); }
    /// The bytes of the contents, as text.
    [[nodiscard]] const std::string& size() const { return entries_.at(RVGitLFSPointerSize); }

private:
    Entries entries_;
    std::string stringRepresentation_;
};
