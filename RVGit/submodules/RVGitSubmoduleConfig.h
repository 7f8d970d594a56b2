#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitRepository;

/// Which file the configuration of a submodule stands in.
enum RVGitSubmoduleConfigType : std::int64_t {
    /// ".gitmodules", which travels with the repository: a stranger's words.
    RVGitSubmoduleConfigTypeDefault = 1,
    /// The repository's own configuration, into which `init` copies.
    RVGitSubmoduleConfigTypeLocal = 2,
};

/// What `git submodule update` does with a submodule.
enum RVGitSubmoduleUpdateStrategy : std::int64_t {
    /// No value, or one that is none of these: a command of the user's, for one.
    RVGitSubmoduleUpdateStrategyUnknown = 0,
    RVGitSubmoduleUpdateStrategyNone = 1,
    RVGitSubmoduleUpdateStrategyCheckout = 2,
    RVGitSubmoduleUpdateStrategyMerge = 3,
    RVGitSubmoduleUpdateStrategyRebase = 4,
};

/// Which changes of a submodule the status leaves out.
enum RVGitSubmoduleStatusIgnoreMode : std::int64_t {
    RVGitSubmoduleStatusIgnoreModeUnknown = 0,
    RVGitSubmoduleStatusIgnoreModeNone = 1,
    RVGitSubmoduleStatusIgnoreModeAll = 2,
    RVGitSubmoduleStatusIgnoreModeDirty = 3,
    RVGitSubmoduleStatusIgnoreModeUntracked = 4,
};

/// Whether a fetch of the superproject fetches the submodule.
enum RVGitSubmoduleRecurseSubmodulesOption : std::int64_t {
    RVGitSubmoduleRecurseSubmodulesOptionUnknown = 0,
    RVGitSubmoduleRecurseSubmodulesOptionFalse = 1,
    RVGitSubmoduleRecurseSubmodulesOptionTrue = 2,
    RVGitSubmoduleRecurseSubmodulesOptionOnDemand = 3,
};

/// The keys of a submodule's section, twice, for compatibility.
inline constexpr char RVGitSubmodulePathConfigKey[] = "path";
inline constexpr char RVGitSubmoduleURLConfigKey[] = "url";
inline constexpr char RVGitSubmoduleUpdateConfigKey[] = "update";
inline constexpr char RVGitSubmoduleIgnoreConfigKey[] = "ignore";
inline constexpr char RVGitSubmoduleFetchRecurseSubmodulesConfigKey[] = "fetchrecursesubmodules";
inline constexpr char RVGitSubmoduleConfigKeyPath[] = "path";
inline constexpr char RVGitSubmoduleConfigKeyURL[] = "url";
inline constexpr char RVGitSubmoduleConfigKeyUpdate[] = "update";
inline constexpr char RVGitSubmoduleConfigKeyIgnore[] = "ignore";
inline constexpr char RVGitSubmoduleConfigKeyBranch[] = "branch";
inline constexpr char RVGitSubmoduleConfigKeyFetchRecurseSubmodules[] = "fetchrecursesubmodules";

/// What one of the two files says of one submodule. A snapshot, readable on any thread. Name,
/// path and address are whatever the file says: of ".gitmodules" none of them is to be trusted.
class RVGIT_EXPORT RVGitSubmoduleConfig {
public:
    /// The repository is required. `values` are those of the section: of a list the last one
    /// counts, and what is neither text nor a list of texts is left out.
    RVGitSubmoduleConfig(std::shared_ptr<RVGitRepository> repository,
                         RVGitSubmoduleConfigType configType, std::string name,
                         const RVOptions& values);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleConfig> submoduleConfigWithRepository(
        std::shared_ptr<RVGitRepository> repository, RVGitSubmoduleConfigType configType,
        std::string name, const RVOptions& values);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] RVGitSubmoduleConfigType configType() const { return configType_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    /// By key in lower case.
    [[nodiscard]] const RVValue::StringMap& values() const { return values_; }
    /// In any case of the letters; absent without a value.
    [[nodiscard]] std::optional<std::string> configValueForKey(const std::string& key) const;

    /// From the top of the working tree. Absent where only the other file gives it.
    [[nodiscard]] std::optional<std::string> path() const;
    [[nodiscard]] std::optional<std::string> URL() const;
    /// The branch of the submodule's remote that is followed.
    [[nodiscard]] std::optional<std::string> branch() const;
    [[nodiscard]] RVGitSubmoduleUpdateStrategy updateStrategy() const;
    [[nodiscard]] RVGitSubmoduleStatusIgnoreMode statusIgnoreMode() const;
    [[nodiscard]] RVGitSubmoduleRecurseSubmodulesOption recurseSubmodules() const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    RVGitSubmoduleConfigType configType_;
    std::string name_;
    RVValue::StringMap values_;
};
