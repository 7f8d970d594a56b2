#include "RVGit/command/RVGitError.h"

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinition.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

void mergeOver(RVUserInfo& userInfo, const RVUserInfo& entries) {
    for (const auto& [key, value] : entries)
        userInfo.insert_or_assign(key, value);
}

}  // namespace

RVError rvgit::gitErrorWithCode(std::int64_t code, RVUserInfo userInfo) {
    loadErrorDefinitionsForGitErrorDomain();
    return RVErrorManager::sharedManager().errorWithDomain(RVGitErrorDomain, code,
                                                           std::move(userInfo));
}

RVError rvgit::gitErrorWithCommand(RVGitCommand& command, RVUserInfo userInfo) {
    auto row =
        RVGitCommandErrorDefinitionManager::defaultManager().gitCommandErrorDefinitionForCommand(
            command);
    if (!row)
        return gitErrorWithCode(RVGitRVGitGenericError, std::move(userInfo));
    if (auto components = row->matchedComponentsForStandardError(command.standardErrorString()))
        mergeOver(userInfo, *components);
    if (auto components = row->matchedComponentsForStandardOutput(command.standardOutputString()))
        mergeOver(userInfo, *components);
    return gitErrorWithCode(row->errorCode(), std::move(userInfo));
}

RVError rvgit::gitErrorWithException(const std::exception_ptr& exception) {
    std::string text;
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception& raised) {
        text = raised.what();
    } catch (...) {
        text = "Something was raised that is no std::exception.";
    }
    return gitErrorWithCode(RVGitRVGitGenericError,
                            {{RVGitCommandErrorOutputErrorKey, std::move(text)}});
}

RVUserInfo RVGitMakeErrorUserInfo(const std::shared_ptr<RVGitRepository>& repository,
                                  const RVUserInfo& userInfo) {
    RVUserInfo merged;
    auto gitBinary = RVGitBinary::defaultGitBinary();
    if (gitBinary && gitBinary->version())
        merged.emplace(RVGitBinaryVersionErrorKey, *gitBinary->version());
    if (repository)
        merged.emplace(RVGitRepositoryPathErrorKey, repository->path());
    mergeOver(merged, userInfo);
    return merged;
}
