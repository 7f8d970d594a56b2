#include "RVGit/submodules/RVGitSubmoduleLoader.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"
#include "RVGit/submodules/RVGitSubmodulePathspec.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"

namespace {

using Items = std::vector<RVGitSubmoduleOutputParserResultItem>;
using Paths = std::vector<std::string>;

// A name or a path may be written in two Unicode forms.
template <typename Value>
Value valueForText(const std::map<std::string, Value, std::less<>>& values,
                   const std::string& text) {
    auto found = values.find(text);
    if (found == values.end() && !isASCII(text))
        found = std::find_if(values.begin(), values.end(), [&](const auto& entry) {
            return isEqualToUnicodeString(entry.first, text);
        });
    return found == values.end() ? Value() : found->second;
}

bool containsText(const Paths& texts, const std::string& text) {
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& other) {
        return isEqualToUnicodeString(other, text);
    });
}

template <typename Key>
std::optional<RVGitSubmoduleLoader::Configs> configsByKey(
    const std::optional<RVGitSubmoduleConfigLoader::Configs>& configs, Key key) {
    if (!configs)
        return std::nullopt;
    RVGitSubmoduleLoader::Configs byKey;
    for (const auto& config : *configs)
        if (const std::optional<std::string> text = key(*config))
            byKey.insert_or_assign(*text, config);
    return byKey;
}

std::optional<std::string> nameOf(const RVGitSubmoduleConfig& config) {
    return config.name();
}

// Where git names no commit, a path that ends in brackets was read as if it did.
std::string pathWithDescribe(const RVGitSubmoduleOutputParserResultItem& item) {
    return item.path + " (" + item.describe.value_or("") + ")";
}

RVGitSubmoduleStatusInfo infoOfItem(const RVGitSubmoduleOutputParserResultItem& item) {
    return {.path = item.path,
            .commitHash = item.commitHash,
            .describe = item.describe,
            .status = item.status};
}

std::optional<RVGitSubmoduleStatus> statusOfErrorCode(std::int64_t code) {
    switch (code) {
        case RVGitSubmoduleStatusMissingGitDirError:
            return RVGitSubmoduleStatusMissingGitDirectory;
        case RVGitSubmoduleStatusMissingMappingError:
            return RVGitSubmoduleStatusMissingConfiguration;
        case RVGitSubmoduleCommand::crashedStatusErrorCode:
            return RVGitSubmoduleStatusUninitialized;
        default:
            return std::nullopt;
    }
}

}  // namespace

RVGitSubmoduleLoader::RVGitSubmoduleLoader(std::shared_ptr<RVGitRepository> repository)
    : RVGitRepositoryPart(std::move(repository)) {
    requireParameter(this->repository() != nullptr, "repository");
}

RVGitSubmoduleLoader::RVGitSubmoduleLoader(std::weak_ptr<RVGitRepository> owner)
    : RVGitRepositoryPart(std::move(owner)) {}

RVGitSubmoduleLoader::~RVGitSubmoduleLoader() = default;

std::shared_ptr<RVGitSubmoduleLoader> RVGitSubmoduleLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitSubmoduleLoader>(std::move(repository));
}

std::shared_ptr<RVGitSubmoduleConfigLoader> RVGitSubmoduleLoader::submoduleConfigLoader() const {
    std::call_once(configLoaderOnce_, [this] {
        configLoader_.reset(
            new RVGitSubmoduleConfigLoader(std::weak_ptr<RVGitRepository>(repository())));
    });
    // Whoever keeps it keeps the repository, too.
    const auto kept = std::make_shared<
        std::pair<std::shared_ptr<RVGitSubmoduleConfigLoader>, std::shared_ptr<RVGitRepository>>>(
        configLoader_, repository());
    return {kept, configLoader_.get()};
}

std::optional<RVGitSubmoduleLoader::Submodules> RVGitSubmoduleLoader::allSubmodules(
    RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    const auto entries = submoduleIndexEntriesBySubmodulePath(error);
    if (!entries)
        return std::nullopt;
    const auto configs = submoduleConfigLoader()->allSubmoduleConfigs(error);
    const auto configsByPath = configsByKey(configs, std::mem_fn(&RVGitSubmoduleConfig::path));
    if (!configsByPath)
        return std::nullopt;
    const auto localConfigs = localSubmoduleConfigsBySubmoduleName(error);
    if (!localConfigs)
        return std::nullopt;
    Paths paths;
    std::transform(entries->begin(), entries->end(), std::back_inserter(paths),
                   [](const auto& entry) { return entry.first; });
    const auto infos = loadSubmoduleStatusForSubmodulePaths(paths, error);
    // What is missing in a list that was cut off would count as missing in the index.
    if (watch.isCancelled(error) || !infos)
        return std::nullopt;

    Submodules submodules;
    std::set<std::string, std::less<>> names;
    const auto addSubmodule = [&](const std::string& name, const std::string& path,
                                  const std::shared_ptr<RVGitSubmoduleConfig>& config) {
        auto submodule = RVGitSubmodule::submoduleWithRepository(repository(), name, path);
        submodule->setConfig(config);
        submodule->setLocalConfig(valueForText(*localConfigs, name));
        if (const auto entry = valueForText(*entries, path))
            submodule->setIndexCommitHash(entry->objectHash());
        names.insert(precomposedString(name));
        submodules.push_back(submodule);
        return submodule;
    };
    for (const auto& info : *infos) {
        const auto config = valueForText(*configsByPath, info.path);
        const auto submodule = addSubmodule(config ? config->name() : info.path, info.path, config);
        submodule->setStatus(info.status);
        submodule->setCommitHash(info.commitHash);
        submodule->setDirty(info.dirty);
        submodule->setDescribe(info.describe);
        if (info.status == RVGitSubmoduleStatusUninitialized && !info.commitHash)
            submodule->setCommitHash(submodule->indexCommitHash());
    }
    for (const auto& config : *configs) {
        if (names.contains(precomposedString(config->name())))
            continue;
        addSubmodule(config->name(), config->path().value_or(config->name()), config)
            ->setStatus(RVGitSubmoduleStatusMissingWorkingTreePath);
    }
    return submodules;
}

std::optional<std::vector<std::string>> RVGitSubmoduleLoader::allSubmoduleNames(
    RVErrorPlace error) const {
    const auto configs = submoduleConfigLoader()->allSubmoduleConfigs(error);
    if (!configs)
        return std::nullopt;
    std::vector<std::string> names;
    for (const auto& config : *configs)
        names.push_back(config->name());
    return names;
}

std::shared_ptr<RVGitSubmodule> RVGitSubmoduleLoader::submoduleForName(const std::string& name,
                                                                       RVErrorPlace error) const {
    const auto submodules = allSubmodules(error);
    if (!submodules)
        return nullptr;
    for (const auto& submodule : *submodules)
        if (isEqualToUnicodeString(submodule->name(), name))
            return submodule;
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitSubmodule> RVGitSubmoduleLoader::submoduleForPath(const std::string& path,
                                                                       RVErrorPlace error) const {
    const auto submodules = allSubmodules(error);
    if (!submodules)
        return nullptr;
    for (const auto& submodule : *submodules)
        if (isEqualToUnicodeString(submodule->path(), path))
            return submodule;
    clearErrorPlace(error);
    return nullptr;
}

std::optional<RVGitSubmoduleLoader::IndexEntries>
RVGitSubmoduleLoader::submoduleIndexEntriesBySubmodulePath(RVErrorPlace error) const {
    const auto entries = repository()->index()->indexEntriesForFilePaths(
        std::nullopt, RVGitIndexOptionSubmodules, error);
    if (!entries)
        return std::nullopt;
    IndexEntries byPath;
    for (const auto& entry : *entries)
        byPath.insert_or_assign(entry->filePath(), entry);
    return byPath;
}

std::optional<RVGitSubmoduleLoader::Configs> RVGitSubmoduleLoader::submoduleConfigsBySubmoduleName(
    RVErrorPlace error) const {
    return configsByKey(submoduleConfigLoader()->allSubmoduleConfigs(error), nameOf);
}

std::optional<RVGitSubmoduleLoader::Configs>
RVGitSubmoduleLoader::localSubmoduleConfigsBySubmoduleName(RVErrorPlace error) const {
    return configsByKey(submoduleConfigLoader()->allLocalSubmoduleConfigs(error), nameOf);
}

std::optional<RVGitSubmoduleLoader::Configs> RVGitSubmoduleLoader::submoduleConfigsBySubmodulePath(
    RVErrorPlace error) const {
    return configsByKey(submoduleConfigLoader()->allSubmoduleConfigs(error),
                        std::mem_fn(&RVGitSubmoduleConfig::path));
}

std::optional<RVGitSubmoduleLoader::StatusInfos>
RVGitSubmoduleLoader::loadSubmoduleStatusForSubmodulePaths(
    const std::vector<std::string>& submodulePaths, RVErrorPlace error) const {
    if (submodulePaths.empty())
        return StatusInfos();
    std::optional<RVError> failure;
    const auto items = loadGitSubmoduleStatusForSubmodulePaths(std::nullopt, &failure);
    StatusInfos infos;
    if (items) {
        const std::set<std::string, std::less<>> known(submodulePaths.begin(),
                                                       submodulePaths.end());
        for (const auto& item : *items) {
            infos.push_back(infoOfItem(item));
            if (item.describe && !known.contains(item.path) &&
                known.contains(pathWithDescribe(item))) {
                infos.back().path = pathWithDescribe(item);
                infos.back().describe.reset();
            }
        }
    } else if (statusOfErrorCode(failure->code())) {
        // One broken submodule spoils the whole output.
        auto each = loadStatusForEachPath(submodulePaths, error);
        if (!each)
            return std::nullopt;
        infos = *std::move(each);
    }
    if (!markDirtySubmodules(submodulePaths, infos, error))
        return std::nullopt;
    return infos;
}

std::optional<RVGitSubmoduleLoader::StatusInfos> RVGitSubmoduleLoader::loadStatusForEachPath(
    const std::vector<std::string>& submodulePaths, RVErrorPlace error) const {
    StatusInfos infos;
    std::optional<Items> items;
    for (const std::string& path : submodulePaths) {
        std::optional<RVError> failure;
        items = loadGitSubmoduleStatusForSubmodulePaths(Paths{path}, &failure);
        RVGitSubmoduleStatusInfo info{.path = path};
        if (items) {
            if (!items->empty()) {
                info = infoOfItem(items->front());
                if (info.path != path && pathWithDescribe(items->front()) == path)
                    info.describe.reset();
                info.path = path;
            }
        } else if (const auto status = statusOfErrorCode(failure->code())) {
            info.status = *status;
        } else {
            fillErrorPlace(error, *std::move(failure));
            return std::nullopt;
        }
        infos.push_back(std::move(info));
    }
    // Kept for compatibility: the last path stands in the result a second time.
    if (items && !items->empty())
        infos.push_back(infos.back());
    return infos;
}

bool RVGitSubmoduleLoader::markDirtySubmodules(const std::vector<std::string>& submodulePaths,
                                               StatusInfos& infos, RVErrorPlace error) const {
    std::optional<RVError> failure;
    std::optional<Paths> dirtyPaths =
        dirtySubmodulePathsForSubmodulePaths(submodulePaths, &failure);
    if (!dirtyPaths && failure->code() != RVGitNoGitRepoError) {
        fillErrorPlace(error, *std::move(failure));
        return false;
    }
    if (!dirtyPaths) {
        for (auto& info : infos) {
            failure.reset();
            dirtyPaths = dirtySubmodulePathsForSubmodulePaths({info.path}, &failure);
            if (dirtyPaths) {
                info.dirty = containsText(*dirtyPaths, info.path);
            } else if (failure->code() != RVGitNoGitRepoError) {
                fillErrorPlace(error, *std::move(failure));
                return false;
            } else if (info.status < RVGitSubmoduleStatusMissingConfiguration) {
                info.status = RVGitSubmoduleStatusMissingGitDirectory;
            }
        }
    }
    // Kept for compatibility: what was asked for each path is overwritten by what the last one of
    // them gave.
    for (auto& info : infos) {
        info.dirty = dirtyPaths && containsText(*dirtyPaths, info.path);
        if (info.status == RVGitSubmoduleStatusClean && !info.describe)
            info.status = RVGitSubmoduleStatusUninitialized;
    }
    return true;
}

std::optional<std::vector<RVGitSubmoduleOutputParserResultItem>>
RVGitSubmoduleLoader::loadGitSubmoduleStatusForSubmodulePaths(
    const std::optional<std::vector<std::string>>& submodulePaths, RVErrorPlace error) const {
    const auto command = RVGitSubmoduleCommand::gitSubmoduleStatusCommandWithRepository(
        repository(), submodulePaths);
    if (!command->run(error))
        return std::nullopt;
    return command->submodules();
}

std::optional<std::vector<std::string>> RVGitSubmoduleLoader::dirtySubmodulePathsForSubmodulePaths(
    const std::vector<std::string>& submodulePaths, RVErrorPlace error) const {
    if (submodulePaths.empty())
        return Paths();
    const auto diffs = loadDiffsForFilePaths(submodulePaths, error);
    if (!diffs)
        return std::nullopt;
    Paths dirtyPaths;
    for (const auto& diff : *diffs)
        if (diff->filePath() &&
            trimmedWhitespaceAndNewline(diff->rawDiff().value_or("")).ends_with("-dirty"))
            dirtyPaths.push_back(*diff->filePath());
    return dirtyPaths;
}

std::optional<std::vector<std::shared_ptr<RVGitDiff>>> RVGitSubmoduleLoader::loadDiffsForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) const {
    std::vector<std::shared_ptr<RVGitDiff>> diffs;
    Paths remaining = literalPathspecs(filePaths);
    do {
        auto found = RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
            RVGitCommand::filePathsForGitCommand(remaining, nullptr), repository(),
            RVOptions{{RVGitDiffOptionSubmodule, "short"}}, error);
        if (!found)
            return std::nullopt;
        diffs.insert(diffs.end(), found->begin(), found->end());
        remaining = RVGitCommand::remainingFilePathsFromFilePaths(remaining);
    } while (!remaining.empty());
    return diffs;
}
