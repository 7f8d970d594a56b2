#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitRepository;

/// What the configuration says of one remote: a snapshot. A plain and a Subversion section of the
/// same name are one record.
class RVGIT_EXPORT RVGitRemoteConfig {
public:
    RVGitRemoteConfig(std::shared_ptr<RVGitRepository> repository, std::string name,
                      RVOptions gitConfigOptions);

    /// In the order of the names' bytes. Runs one `git config`. Absent on failure.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>>
    allRemoteConfigsForRepository(const std::shared_ptr<RVGitRepository>& repository,
                                  RVErrorPlace error = nullptr);
    /// The same by name.
    using ByRemoteName = std::map<std::string, std::shared_ptr<RVGitRemoteConfig>, std::less<>>;
    [[nodiscard]] static std::optional<ByRemoteName> allRemoteConfigsByRemoteNameForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    /// The first value of a key that is repeated, here and below.
    [[nodiscard]] const std::optional<std::string>& URL() const { return URL_; }
    [[nodiscard]] const std::optional<std::string>& pushURL() const { return pushURL_; }
    [[nodiscard]] const std::optional<std::vector<std::string>>& fetchRefSpecs() const {
        return fetchRefSpecs_;
    }
    [[nodiscard]] const std::optional<std::vector<std::string>>& pushRefSpecs() const {
        return pushRefSpecs_;
    }
    /// Whether the last value is "true", exactly; here and below.
    [[nodiscard]] bool skipsDefaultUpdate() const { return skipsDefaultUpdate_; }
    [[nodiscard]] bool skipsFetchAll() const { return skipsFetchAll_; }

    /// The whole section: a string for each key (in lower case), or a list if it is repeated.
    [[nodiscard]] const RVOptions& gitConfigOptions() const { return gitConfigOptions_; }
    [[nodiscard]] const RVOptions& dictionaryRepresentation() const { return gitConfigOptions_; }
    /// In any case of the key's letters.
    [[nodiscard]] std::optional<RVValue> valueForConfigKey(std::string_view key) const;
    /// The last element of a list, which is absent for a list without any.
    [[nodiscard]] std::optional<std::string> lastValueForConfigKey(std::string_view key) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::optional<std::string> URL_;
    std::optional<std::string> pushURL_;
    std::optional<std::vector<std::string>> fetchRefSpecs_;
    std::optional<std::vector<std::string>> pushRefSpecs_;
    bool skipsDefaultUpdate_ = false;
    bool skipsFetchAll_ = false;
    RVOptions gitConfigOptions_;
};

/// Loads those records; it keeps none.
class RVGIT_EXPORT RVGitRemoteConfigLoader {
public:
    /// The repository is required.
    explicit RVGitRemoteConfigLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitRemoteConfigLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>> allRemoteConfigs(
        RVErrorPlace error = nullptr) const;
    /// Null with a cleared place if there is none of that name. Loads all of them.
    [[nodiscard]] std::shared_ptr<RVGitRemoteConfig> remoteConfigForRemoteWithName(
        const std::string& name, RVErrorPlace error = nullptr) const;

    /// What allRemoteConfigs() does.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitRemoteConfig>>>
    fetchAllRemoteConfigs(RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
};

// The values of a key in a section of the configuration, whichever way it holds them.

/// Of a list, the first; absent without the key.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitFirstConfigValue(
    const RVOptions& section, std::string_view key);
/// Of a list, the last.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitLastConfigValue(const RVOptions& section,
                                                                           std::string_view key);
/// A single value as a list of one.
[[nodiscard]] RVGIT_EXPORT std::optional<std::vector<std::string>> RVGitAllConfigValues(
    const RVOptions& section, std::string_view key);
/// The sections of the repository's configuration whose keys match the expression, by name: one
/// `git config`. Absent on failure, and with a cleared place if it was cancelled; no section at all
/// is a success.
[[nodiscard]] RVGIT_EXPORT std::optional<std::map<std::string, RVOptions, std::less<>>>
RVGitConfigSections(const std::shared_ptr<RVGitRepository>& repository,
                    const std::string& regularExpression, RVErrorPlace error);
