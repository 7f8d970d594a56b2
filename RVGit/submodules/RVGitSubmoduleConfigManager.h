#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"

class RVGitConfig;
class RVGitRepository;

/// Writes what one of the two files says of the submodules. Each operation is one or two
/// `git config`, blocks until they have ended, and may be called on any thread. Errors are those of
/// RVGitConfig. Nothing is written, and it is code 1006, where ".gitmodules" is a symbolic link:
/// git would write into the file that it names.
class RVGIT_EXPORT RVGitSubmoduleConfigManager {
public:
    /// Both are required. The repository is kept alive.
    RVGitSubmoduleConfigManager(std::shared_ptr<RVGitRepository> repository,
                                RVGitSubmoduleConfigType configType);
    /// For ".gitmodules". Only the file is changed; nothing is staged.
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleConfigManager> defaultManagerWithRepository(
        std::shared_ptr<RVGitRepository> repository);
    /// For the repository's own configuration.
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleConfigManager>
    localConfigManagerWithRepository(std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] RVGitSubmoduleConfigType configType() const { return configType_; }

    // Setting. An enumeration's 0 has no text and counts as an absent value, which unsets the key.
    // Unsetting a key that is not set is false with a cleared place.

    [[nodiscard]] bool setPath(const std::string& path, const std::string& forSubmoduleWithName,
                               RVErrorPlace error = nullptr);
    [[nodiscard]] bool setURL(const std::string& URL, const std::string& forSubmoduleWithName,
                              RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetURLForSubmoduleWithName(const std::string& name,
                                                    RVErrorPlace error = nullptr);
    [[nodiscard]] bool setUpdateStrategy(RVGitSubmoduleUpdateStrategy updateStrategy,
                                         const std::string& forSubmoduleWithName,
                                         RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetUpdateStrategyForSubmoduleWithName(const std::string& name,
                                                               RVErrorPlace error = nullptr);
    [[nodiscard]] bool setStatusIgnoreMode(RVGitSubmoduleStatusIgnoreMode statusIgnoreMode,
                                           const std::string& forSubmoduleWithName,
                                           RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetStatusIgnoreModeForSubmoduleWithName(const std::string& name,
                                                                 RVErrorPlace error = nullptr);
    [[nodiscard]] bool setBranch(const std::string& branch, const std::string& forSubmoduleWithName,
                                 RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetBranchForSubmoduleWithName(const std::string& name,
                                                       RVErrorPlace error = nullptr);
    [[nodiscard]] bool setRecurseSubmodulesOption(
        RVGitSubmoduleRecurseSubmodulesOption recurseSubmodulesOption,
        const std::string& forSubmoduleWithName, RVErrorPlace error = nullptr);
    [[nodiscard]] bool unsetRecurseSubmodulesOptionForSubmoduleWithName(
        const std::string& name, RVErrorPlace error = nullptr);

    // Sections. True, and nothing is written, where there is none of the name; false with a cleared
    // place if the look for it is cancelled. Code 1006 for a new name with a line break.

    [[nodiscard]] bool renameConfigSectionForSubmoduleWithName(const std::string& name,
                                                               const std::string& toNewName,
                                                               RVErrorPlace error = nullptr);
    [[nodiscard]] bool removeConfigSectionForSubmoduleWithName(const std::string& name,
                                                               RVErrorPlace error = nullptr);

private:
    [[nodiscard]] bool mayWrite(RVErrorPlace error) const;
    [[nodiscard]] bool setValue(const std::optional<std::string>& value, const std::string& name,
                                const char* key, RVErrorPlace error) const;
    [[nodiscard]] bool unsetValue(const std::string& name, const char* key,
                                  RVErrorPlace error) const;
    [[nodiscard]] bool containsSectionForSubmoduleWithName(const std::string& name) const;
    /// One key after the other; to nowhere without a new name.
    [[nodiscard]] bool moveKeys(const std::string& name, const std::optional<std::string>& newName,
                                RVErrorPlace error) const;
    void failToWrite(RVErrorPlace error) const;

    std::shared_ptr<RVGitRepository> repository_;
    RVGitSubmoduleConfigType configType_;
    std::shared_ptr<RVGitConfig> config_;
};
