#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/repository/RVGitRepositoryPart.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"

class RVGitConfig;
class RVGitRepository;

/// Reads what the two files say of the submodules. It holds nothing: each operation is one
/// `git config`, blocks until that has ended, and may be called on any thread. Errors are those of
/// RVGitConfig; code 11 where a key has no value at all, kept for compatibility.
class RVGIT_EXPORT RVGitSubmoduleConfigLoader : public RVGitRepositoryPart {
public:
    using Configs = std::vector<std::shared_ptr<RVGitSubmoduleConfig>>;

    /// The repository is required, and kept alive.
    explicit RVGitSubmoduleConfigLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleConfigLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    /// Those of ".gitmodules", sorted by name; absent on failure. Without the file there are none.
    [[nodiscard]] std::optional<Configs> allSubmoduleConfigs(RVErrorPlace error = nullptr) const;
    /// Those of the repository's own configuration file.
    [[nodiscard]] std::optional<Configs> allLocalSubmoduleConfigs(
        RVErrorPlace error = nullptr) const;
    /// Null with a cleared place if there is none of the name.
    [[nodiscard]] std::shared_ptr<RVGitSubmoduleConfig> submoduleConfigForSubmoduleWithName(
        const std::string& name, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitSubmoduleConfig> localSubmoduleConfigForSubmoduleWithName(
        const std::string& name, RVErrorPlace error = nullptr) const;
    /// Those of any configuration.
    [[nodiscard]] std::optional<Configs> submoduleConfigsFromConfig(
        const std::shared_ptr<RVGitConfig>& config, RVGitSubmoduleConfigType configType,
        RVErrorPlace error = nullptr) const;

private:
    friend class RVGitSubmoduleLoader;
    /// That of the repository's own loader, which does not keep the repository alive.
    explicit RVGitSubmoduleConfigLoader(std::weak_ptr<RVGitRepository> owner);
};
