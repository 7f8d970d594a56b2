#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/repository/RVGitRepositoryPart.h"

class RVGitConfigCommand;
class RVGitRepository;

/// The type words of a configuration that is not a file's.
inline constexpr char RVGitConfigFileTypeGlobal[] = "global";
inline constexpr char RVGitConfigFileTypeSystem[] = "system";

/// Configuration keys.
inline constexpr char RVGitUserNameConfigKey[] = "user.name";
inline constexpr char RVGitUserEmailConfigKey[] = "user.email";
inline constexpr char RVGitUserSigningKeyConfigKey[] = "user.signingkey";
inline constexpr char RVGitGPGSignConfigKey[] = "commit.gpgsign";
inline constexpr char RVGitGPGProgramConfigKey[] = "gpg.program";
inline constexpr char RVGitSSHProgramConfigKey[] = "gpg.ssh.program";
inline constexpr char RVGitGPGFormatConfigKey[] = "gpg.format";
inline constexpr char RVGitGPGSSHAllowedSignersFileConfigKey[] = "gpg.ssh.allowedsignersfile";
inline constexpr char RVGitVarnelConvertGitMojiToCodeOnCommitConfigKey[] =
    "varnel.convertGitMojiToCodeOnCommit";
inline constexpr char RVGitCoreExcludesFileConfigKey[] = "core.excludesfile";
inline constexpr char RVGitHTTPProxyConfigKey[] = "http.proxy";
inline constexpr char RVGitHTTPSSLVerifyConfigKey[] = "http.sslverify";
inline constexpr char RVGitStatusShowUntrackedFilesConfigKey[] = "status.showuntrackedfiles";

/// One scope of git's configuration: the system's, the user's, a repository's merged view, or one
/// file. It holds nothing of it: each operation is one `git config`, blocks until that has ended,
/// and may be called on any thread.
///
/// A key that is not set is no error: reading it gives nothing and an empty place. Other failures
/// give nothing or false with a filled place, codes 1001 to 1006 and the common ones; code 111 for
/// a file that does not exist where all of it is read.
class RVGIT_EXPORT RVGitConfig : public RVGitRepositoryPart {
public:
    /// `repository`'s path is the working directory; absent, git runs where this process does, and
    /// a config keeps its repository alive. `configFile` is an absolute path or a type word;
    /// absent, git reads all scopes and writes the repository's.
    RVGitConfig(std::shared_ptr<RVGitRepository> repository, std::optional<std::string> configFile);

    [[nodiscard]] static std::shared_ptr<RVGitConfig> systemWideConfig();
    /// The user's file and those that it includes.
    [[nodiscard]] static std::shared_ptr<RVGitConfig> globalConfig();
    /// Git's merged view of all scopes; what is written goes to the repository's.
    [[nodiscard]] static std::shared_ptr<RVGitConfig> configWithRepository(
        std::shared_ptr<RVGitRepository> repository);
    /// The repository's file alone.
    [[nodiscard]] static std::shared_ptr<RVGitConfig> repositoryConfigForRepository(
        std::shared_ptr<RVGitRepository> repository);
    /// The file ".gitmodules". A bare repository has none, and gives the merged view.
    [[nodiscard]] static std::shared_ptr<RVGitConfig> submoduleConfigForRepository(
        std::shared_ptr<RVGitRepository> repository);
    /// The Subversion bridge's metadata. A bare repository has none, and gives the merged view.
    [[nodiscard]] static std::shared_ptr<RVGitConfig> gitSVNConfigForRepository(
        std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitConfig> configWithFilePath(
        std::optional<std::string> filePath);

    [[nodiscard]] const std::optional<std::string>& configFile() const { return configFile_; }
    /// `configFile` if it is an absolute path.
    [[nodiscard]] std::optional<std::string> configFilePath() const;
    /// `configFile` if it is not.
    [[nodiscard]] std::optional<std::string> configFileOption() const;

    // Reading.

    /// The last value, newlines and all.
    [[nodiscard]] std::optional<std::string> valueForConfigKey(const std::string& configKey,
                                                               RVErrorPlace error = nullptr) const;
    /// Options are those of RVGitConfigCommand.
    [[nodiscard]] std::optional<std::string> valueForConfigKey(
        const std::string& configKey, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> firstValueForConfigKey(
        const std::string& configKey, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> lastValueForConfigKey(
        const std::string& configKey, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::vector<std::string> valuesForConfigKey(const std::string& configKey,
                                                              RVErrorPlace error = nullptr) const;
    /// The values of all keys that match a POSIX extended regular expression, by key as git
    /// prints it (section and name in lower case). One value is a string, several are a list of
    /// strings in the order of the configuration. Keys come in the order of their bytes.
    [[nodiscard]] RVOptions valuesForConfigKeyByRegularExpression(
        const std::string& regularExpression, RVErrorPlace error = nullptr) const;
    /// The same, for a caller that must tell that nothing is set from what was not read: absent
    /// with an error where the reading failed, with a cleared place where it was cancelled.
    [[nodiscard]] std::optional<RVOptions> wholeValuesForConfigKeyByRegularExpression(
        const std::string& regularExpression, RVErrorPlace error = nullptr) const;
    /// False if the key is not set. For a value that is no boolean, code 1000 from old gits, and
    /// the generic code 1 from those whose message is worded anew.
    [[nodiscard]] bool boolForConfigKey(const std::string& configKey,
                                        RVErrorPlace error = nullptr) const;
    /// The largest number if the key is not set. Code 1000 for a value that is no number.
    [[nodiscard]] std::int64_t integerForConfigKey(const std::string& configKey,
                                                   RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool containsConfigKeyWithName(const std::string& configKey) const;
    [[nodiscard]] bool containsMultipleValuesForConfigKey(const std::string& configKey) const;
    /// Kept for compatibility: the name is an unanchored regular expression, so that a longer
    /// section name that contains it is found too.
    [[nodiscard]] bool containsSectionWithName(const std::string& sectionName) const;
    /// All keys, in the shape of valuesForConfigKeyByRegularExpression(). A key that has no value
    /// at all makes it fail with code 11.
    [[nodiscard]] RVOptions allConfigValues(RVErrorPlace error = nullptr) const;
    /// The same with one string for each key: the last value, trimmed.
    [[nodiscard]] RVValue::StringMap allEffectiveConfigValues(RVErrorPlace error = nullptr) const;

    [[nodiscard]] static std::optional<std::string> globalValueForConfigKey(
        const std::string& configKey, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::vector<std::string> globalValuesForConfigKey(
        const std::string& configKey, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::string> valueForConfigKey(
        const std::string& configKey, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::vector<std::string> valuesForConfigKey(
        const std::string& configKey, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Writing.

    /// Replaces all values of the key by this one; an absent one unsets the key.
    [[nodiscard]] bool setValue(const std::optional<std::string>& value,
                                const std::string& configKey, RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool setValue(const std::optional<std::string>& value,
                                const std::string& configKey,
                                const std::optional<RVOptions>& options,
                                RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool setBool(bool value, const std::string& configKey,
                               RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool setInteger(std::int64_t value, const std::string& configKey,
                                  RVErrorPlace error = nullptr) const;
    /// Unsets the key and adds each value. A failure half-way leaves the key partly written; so
    /// does a cancel of all commands, behind which nothing more is written: false with a cleared
    /// place. The same of addValues().
    [[nodiscard]] bool setValues(const std::vector<std::string>& values,
                                 const std::string& configKey, RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool addValue(const std::string& value, const std::string& configKey,
                                RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool addValues(const std::vector<std::string>& values,
                                 const std::string& configKey, RVErrorPlace error = nullptr) const;
    /// An absent new value unsets the old one.
    [[nodiscard]] bool replaceValue(const std::string& value,
                                    const std::optional<std::string>& newValue,
                                    const std::string& configKey,
                                    RVErrorPlace error = nullptr) const;
    /// Unsets the entries of the key that have this value. False with an empty place if there are
    /// none.
    [[nodiscard]] bool unsetValue(const std::string& value, const std::string& configKey,
                                  RVErrorPlace error = nullptr) const;
    /// Unsets all entries of the key. False with an empty place if there are none.
    [[nodiscard]] bool unsetConfigKey(const std::string& configKey,
                                      RVErrorPlace error = nullptr) const;
    /// Code 1005 if there is no such section; 1006 where git could not write the file, though it
    /// exits with 0 then.
    [[nodiscard]] bool removeSection(const std::string& sectionName,
                                     RVErrorPlace error = nullptr) const;
    /// The same codes. 1006, and git is not run, for a new name with a line break, which would
    /// leave a file that no git can read.
    [[nodiscard]] bool renameSection(const std::string& sectionName,
                                     const std::string& newSectionName,
                                     RVErrorPlace error = nullptr) const;

    // Named keys. The getters cannot tell a key that is not set from a failure.

    [[nodiscard]] std::optional<std::string> userName() const;
    [[nodiscard]] bool setUserName(const std::optional<std::string>& userName,
                                   RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> userEmail() const;
    [[nodiscard]] bool setUserEmail(const std::optional<std::string>& userEmail,
                                    RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> userSigningKey() const;
    [[nodiscard]] bool setUserSigningKey(const std::optional<std::string>& userSigningKey,
                                         RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool gpgSigningEnabled() const;
    [[nodiscard]] bool setGPGSigningEnabled(bool enabled, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> gpgProgramPath() const;
    [[nodiscard]] bool setGPGProgramPath(const std::optional<std::string>& path,
                                         RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> sshProgramPath() const;
    [[nodiscard]] bool setSSHProgramPath(const std::optional<std::string>& path,
                                         RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> gpgFormat() const;
    [[nodiscard]] bool setGPGFormat(const std::optional<std::string>& format,
                                    RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<std::string> allowedSignersFile() const;
    [[nodiscard]] bool setAllowedSignersFile(const std::optional<std::string>& path,
                                             RVErrorPlace error = nullptr) const;
    [[nodiscard]] bool convertGitMojiToCodeOnCommit() const;
    [[nodiscard]] bool setConvertGitMojiToCodeOnCommit(bool converts,
                                                       RVErrorPlace error = nullptr) const;

private:
    friend class RVGitRepository;
    /// The config that `owner` itself owns, and that must not keep it alive.
    explicit RVGitConfig(std::weak_ptr<RVGitRepository> owner);

    [[nodiscard]] std::shared_ptr<RVGitConfigCommand> commandWithAction(
        const char* configAction, const std::optional<RVOptions>& options = std::nullopt) const;

    std::optional<std::string> configFile_;
};
