#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/objects/RVGitCompactHash.h"

class RVGitRepository;

/// A path with the mode and the object that stand there: base of the entries of trees, of the
/// index, of the working tree and of merge results. A snapshot, readable on any thread.
class RVGIT_EXPORT RVGitFileEntry {
public:
    /// The repository is required.
    RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                   std::optional<std::string> objectHash, RVGitFileMode fileMode);
    virtual ~RVGitFileEntry();

    [[nodiscard]] static std::shared_ptr<RVGitFileEntry> fileEntryWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string filePath,
        std::optional<std::string> objectHash, RVGitFileMode fileMode);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// Relative to the top of the tree that the entry belongs to.
    [[nodiscard]] const std::string& filePath() const { return filePath_; }
    /// The last component of the path.
    [[nodiscard]] std::string fileName() const;
    /// Made on each call.
    [[nodiscard]] std::optional<std::string> objectHash() const;
    [[nodiscard]] RVGitFileMode fileMode() const { return static_cast<RVGitFileMode>(fileMode_); }

    [[nodiscard]] bool isNoFileType() const;
    [[nodiscard]] bool isRegularFileType() const;
    [[nodiscard]] bool isExecutableFileType() const;
    [[nodiscard]] bool isSymbolicLinkFileType() const;
    [[nodiscard]] bool isSubmoduleFileType() const;
    [[nodiscard]] bool isDirectoryFileType() const;

    /// "Directory", "Regular", "Executable", "Symbolic Link" or "Submodule", and "None" for
    /// anything else.
    [[nodiscard]] static std::string stringRepresentationForFileMode(RVGitFileMode fileMode);
    /// The mode of git's six octal digits; an unknown text counts as a regular file, whereas
    /// RVGitObject::fileModeFromString() answers that there is no mode.
    [[nodiscard]] static RVGitFileMode fileModeFromString(std::string_view text);

    /// Compares the path and the hash; two absent hashes are equal.
    [[nodiscard]] bool isEqualToFileEntry(const RVGitFileEntry& other) const;

protected:
    /// The repository is required.
    RVGitFileEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                   RVGitCompactHash objectHash, RVGitFileMode fileMode);

    void setFileMode(RVGitFileMode fileMode) { fileMode_ = static_cast<std::uint32_t>(fileMode); }

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string filePath_;
    /// A text only where it is no hash as git prints it.
    std::variant<std::monostate, RVGitCompactHash, std::shared_ptr<const std::string>> objectHash_;
    /// Entries are held by the ten thousand: the enumeration would take twice the room.
    std::uint32_t fileMode_;
};
