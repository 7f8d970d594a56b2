#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/repository/RVGitRepositoryPart.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"

class RVGitDiff;
class RVGitIndexEntry;
class RVGitRepository;
class RVGitSubmodule;
class RVGitSubmoduleConfig;
class RVGitSubmoduleConfigLoader;
struct RVGitSubmoduleOutputParserResultItem;

/// What is known of a submodule before it is joined with its configuration.
struct RVGIT_EXPORT RVGitSubmoduleStatusInfo {
    std::string path = {};
    std::optional<std::string> commitHash = {};
    std::optional<std::string> describe = {};
    RVGitSubmoduleStatus status = RVGitSubmoduleStatusNone;
    bool dirty = false;
};

/// Builds the list of a repository's submodules from the index, ".gitmodules", the repository's own
/// configuration, `git submodule status` and a diff. A broken submodule stays in the list, with a
/// status that says what is broken. It keeps nothing of the list: each operation runs git anew,
/// blocks, and may be called on any thread, but not on one of the command queue.
/// RVGitRepository::submoduleLoader() hands one out.
class RVGIT_EXPORT RVGitSubmoduleLoader : public RVGitRepositoryPart {
public:
    using Submodules = std::vector<std::shared_ptr<RVGitSubmodule>>;
    using StatusInfos = std::vector<RVGitSubmoduleStatusInfo>;
    using IndexEntries = std::map<std::string, std::shared_ptr<RVGitIndexEntry>, std::less<>>;
    using Configs = std::map<std::string, std::shared_ptr<RVGitSubmoduleConfig>, std::less<>>;

    /// The repository is required, and kept alive.
    explicit RVGitSubmoduleLoader(std::shared_ptr<RVGitRepository> repository);
    ~RVGitSubmoduleLoader();
    [[nodiscard]] static std::shared_ptr<RVGitSubmoduleLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] std::shared_ptr<RVGitSubmoduleConfigLoader> submoduleConfigLoader() const;

    /// Those of the index, in the order of git's status, and behind them those that ".gitmodules"
    /// alone names. Absent where the index, a configuration or the diff cannot be read, and with a
    /// cleared place where all commands of the queue are cancelled meanwhile. Five
    /// processes; where the status fails, one more for each submodule. Kept for compatibility: the
    /// last submodule then stands twice, unless it is the broken one, and what is dirty is what the
    /// diff of the last path says; and a status that fails for another reason than a broken
    /// submodule leaves those of ".gitmodules" alone, as if they were missing in the index.
    [[nodiscard]] std::optional<Submodules> allSubmodules(RVErrorPlace error = nullptr) const;
    /// The names in ".gitmodules".
    [[nodiscard]] std::optional<std::vector<std::string>> allSubmoduleNames(
        RVErrorPlace error = nullptr) const;
    /// Lists all. Null with a cleared place if there is none.
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleForName(
        const std::string& name, RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleForPath(
        const std::string& path, RVErrorPlace error = nullptr) const;

    // What the list is made of. Absent on failure.

    /// Of a conflict, one side.
    [[nodiscard]] std::optional<IndexEntries> submoduleIndexEntriesBySubmodulePath(
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<Configs> submoduleConfigsBySubmoduleName(
        RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<Configs> localSubmoduleConfigsBySubmoduleName(
        RVErrorPlace error = nullptr) const;
    /// Without those that have no path.
    [[nodiscard]] std::optional<Configs> submoduleConfigsBySubmodulePath(
        RVErrorPlace error = nullptr) const;
    /// The status of each path, as far as it can be had. Fails where one path fails with an unknown
    /// code, or the diff does.
    [[nodiscard]] std::optional<StatusInfos> loadSubmoduleStatusForSubmodulePaths(
        const std::vector<std::string>& submodulePaths, RVErrorPlace error = nullptr) const;
    /// `git submodule status`, of all submodules without paths. The codes of RVGitSubmoduleCommand.
    [[nodiscard]] std::optional<std::vector<RVGitSubmoduleOutputParserResultItem>>
    loadGitSubmoduleStatusForSubmodulePaths(
        const std::optional<std::vector<std::string>>& submodulePaths,
        RVErrorPlace error = nullptr) const;
    /// Those of the paths whose working trees have changes.
    [[nodiscard]] std::optional<std::vector<std::string>> dirtySubmodulePathsForSubmodulePaths(
        const std::vector<std::string>& submodulePaths, RVErrorPlace error = nullptr) const;
    /// The diffs of the working tree with the index, in the short form for submodules; of all files
    /// without paths. Paths are taken as they are.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<RVGitDiff>>> loadDiffsForFilePaths(
        const std::vector<std::string>& filePaths, RVErrorPlace error = nullptr) const;

private:
    friend class RVGitRepository;
    /// The repository's own, which does not keep it alive.
    explicit RVGitSubmoduleLoader(std::weak_ptr<RVGitRepository> owner);

    [[nodiscard]] std::optional<StatusInfos> loadStatusForEachPath(
        const std::vector<std::string>& submodulePaths, RVErrorPlace error) const;
    [[nodiscard]] bool markDirtySubmodules(const std::vector<std::string>& submodulePaths,
                                           StatusInfos& infos, RVErrorPlace error) const;

    mutable std::once_flag configLoaderOnce_;
    mutable std::shared_ptr<RVGitSubmoduleConfigLoader> configLoader_;
};
