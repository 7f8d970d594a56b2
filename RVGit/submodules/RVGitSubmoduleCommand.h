#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"

/// What `git submodule status` prints of one submodule.
struct RVGIT_EXPORT RVGitSubmoduleOutputParserResultItem {
    std::string path = {};
    /// What is checked out; for a submodule that is not initialized, what the index records.
    std::optional<std::string> commitHash = {};
    std::optional<std::string> describe = {};
    RVGitSubmoduleStatus status = RVGitSubmoduleStatusNone;
};

/// Reads the lines of `git submodule status`: a flag, a hash, the path and, where git has one, a
/// name of the commit in brackets. A line that is none of this is left out; of several with the
/// same path the last one counts. Where there is no name of the commit, a path that ends in
/// brackets is read as if it had one: RVGitSubmoduleLoader, which knows the paths, sets it right. A
/// path with a line break cannot be read. Code 11 for a hash by SHA-256.
class RVGIT_EXPORT RVGitSubmoduleStatusOutputParser
    : public RVGitItemOutputParser<RVGitSubmoduleOutputParserResultItem> {
public:
    /// Each line is decoded by itself, so that a path in another encoding does not spoil the
    /// others.
    explicit RVGitSubmoduleStatusOutputParser(std::string_view outputData);

    /// In the order in which the paths first appeared.
    [[nodiscard]] const std::vector<RVGitSubmoduleOutputParserResultItem>& result() const {
        return resultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Bits of the options of gitSubmoduleAddCommandWithRepository().
enum RVGitSubmoduleAddOptions : unsigned {
    /// Adds an ignored path, and takes over a git directory that is there already.
    RVGitSubmoduleAddOptionForce = 1,
};

/// Bits of the options of gitSubmoduleUpdateCommandWithRepository().
enum RVGitSubmoduleUpdateOptions : unsigned {
    RVGitSubmoduleUpdateOptionInitialize = 1,
    /// Submodules of submodules, too.
    RVGitSubmoduleUpdateOptionRecursive = 2,
    /// Throws local changes away.
    RVGitSubmoduleUpdateOptionForce = 4,
};

/// Runs `git submodule`, in the top of the working tree and without the paths of the repository,
/// which git cannot have there. Paths are taken as they are, never as patterns; one that begins
/// with "-" goes as "./-...", and an address that does is refused with code 1.
///
/// Failure: 2804 for an add at a path that exists, 2805 for one whose git directory does; for the
/// status 2800 where ".gitmodules" has no entry for a path, 2801 where a git directory is gone, and
/// 2802, which has no texts, where git itself crashed.
///
/// The others fail with code 1, too, where git says that it could not write a configuration or a
/// file, and ends with 0 all the same.
///
/// Kept for compatibility: a status that prints anything on standard error has failed, whatever its
/// exit code. A shell or a Perl that warns of a missing locale "en_US.UTF-8", or git that warns of
/// a suspicious name in ".gitmodules", makes it fail with code 1.
class RVGIT_EXPORT RVGitSubmoduleCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitSubmoduleCommand(const std::shared_ptr<RVGitRepository>& repository);

    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand>
    gitSubmoduleAddCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                         std::string path, std::optional<std::string> remoteURL,
                                         unsigned options);
    /// Of all submodules without paths; so below.
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand>
    gitSubmoduleStatusCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                            std::optional<std::vector<std::string>> filePaths);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand>
    gitSubmoduleUpdateCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                            std::optional<std::vector<std::string>> filePaths,
                                            unsigned options);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand>
    gitSubmoduleSyncCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                          std::optional<std::vector<std::string>> filePaths);
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand>
    gitSubmoduleInitCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                          std::optional<std::vector<std::string>> filePaths);

    /// Stands ahead of the paths.
    [[nodiscard]] const std::optional<std::string>& remoteURL() const { return remoteURL_; }
    void setRemoteURL(std::optional<std::string> URL) { remoteURL_ = std::move(URL); }
    [[nodiscard]] bool initializesSubmodules() const { return initializesSubmodules_; }
    void setInitializesSubmodules(bool initializes) { initializesSubmodules_ = initializes; }
    [[nodiscard]] bool recursesSubmodules() const { return recursesSubmodules_; }
    void setRecursesSubmodules(bool recurses) { recursesSubmodules_ = recurses; }
    [[nodiscard]] bool usesForce() const { return usesForce_; }
    void setUsesForce(bool uses) { usesForce_ = uses; }

    /// After the run of a status.
    [[nodiscard]] const std::vector<RVGitSubmoduleOutputParserResultItem>& submodules() const {
        return submodules_;
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

    /// The code of a status in which git crashed, which is not in the catalogue.
    static constexpr std::int64_t crashedStatusErrorCode = 2802;

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidInitialize() override;
    void gitCommandDidTerminate() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleCommand> commandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, const char* subCommand,
        std::optional<std::vector<std::string>> filePaths);
    [[nodiscard]] bool isStatus() const;

    std::optional<std::string> remoteURL_;
    bool initializesSubmodules_ = false;
    bool recursesSubmodules_ = false;
    bool usesForce_ = false;
    std::vector<RVGitSubmoduleOutputParserResultItem> submodules_;
};
