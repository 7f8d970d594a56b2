#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitRepository;

/// Which of git's standard attributes apply to a file: delta, diff, encoding, eol, export-ignore,
/// export-subst, filter, ident, merge, text and whitespace; others are never asked for. A snapshot,
/// immutable; any thread.
///
/// To learn the attributes of files, call allEffectiveGitAttributesForFilePaths(). The two
/// operations that stand beside it are kept for compatibility: they read git's output line by line,
/// while git prints it in the form with NUL bytes, so that they fail with code 11.
class RVGIT_EXPORT RVGitAttributes {
public:
    /// The repository is required.
    RVGitAttributes(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                    RVValue::StringMap attributes);
    [[nodiscard]] static std::shared_ptr<RVGitAttributes> gitAttributesWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string filePath,
        RVValue::StringMap attributes);

    // Reading. Each runs one `git check-attr`, whatever the number of paths, which are relative to
    // the root of the repository.

    /// One object for each path, in the order of the paths; an empty one at the end has none. A
    /// path outside the repository fails all of them. Absent on failure.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitAttributes>>>
    allEffectiveGitAttributesForFilePaths(const std::vector<std::string>& filePaths,
                                          const std::shared_ptr<RVGitRepository>& repository,
                                          RVErrorPlace error = nullptr);
    /// Kept for compatibility: absent with code 11 for one path or more, as told above.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitAttributes>>>
    allGitAttributesForFilePaths(const std::vector<std::string>& filePaths,
                                 const std::shared_ptr<RVGitRepository>& repository,
                                 RVErrorPlace error = nullptr);
    /// Kept for compatibility: null with code 11, as told above.
    [[nodiscard]] static std::shared_ptr<RVGitAttributes> gitAttributesForFilePath(
        const std::string& filePath, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Changing. Attributes can only be read: each throws RVInternalInconsistencyException.

    [[noreturn]] static bool setGitAttributeWithName(
        const std::string& name, const std::string& filePathPattern,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[noreturn]] static bool setValue(const std::string& value, const std::string& attributeName,
                                      const std::string& filePathPattern,
                                      const std::shared_ptr<RVGitRepository>& repository,
                                      RVErrorPlace error = nullptr);
    [[noreturn]] static bool unsetGitAttributeWithName(
        const std::string& name, const std::string& filePathPattern,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[noreturn]] static bool removeGitAttributeWithName(
        const std::string& name, const std::string& filePathPattern,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& filePath() const { return filePath_; }
    /// Value by name: "set", "unset", "unspecified" or the text that the attribute is set to.
    [[nodiscard]] const RVValue::StringMap& attributes() const { return attributes_; }

    /// Whether the attribute has a value other than "unspecified". Kept for compatibility: "unset"
    /// counts as set.
    [[nodiscard]] bool isGitAttributeSetWithName(std::string_view name) const;
    /// "unspecified" is a value too; absent for a name that was not asked for.
    [[nodiscard]] std::optional<std::string> valueForGitAttributeWithName(
        std::string_view name) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string filePath_;
    RVValue::StringMap attributes_;
};
