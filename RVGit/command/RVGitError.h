#pragma once

#include <cstdint>
#include <exception>
#include <memory>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

class RVGitCommand;
class RVGitRepository;

/// The domain of every error record that the library makes.
inline constexpr char RVGitErrorDomain[] = "RVGitErrorDomain";

inline namespace RVGIT_EXPORT rvgit {

/// An error record with the title and reason of the catalogue, which are absent for a code that it
/// does not hold. Any thread.
[[nodiscard]] RVError gitErrorWithCode(std::int64_t code, RVUserInfo userInfo = {});

/// The error of a command that has exited: the code of the row that it matches, or
/// RVGitRVGitGenericError if there is none. What the row captures goes over the given user info,
/// that of standard output over that of standard error.
[[nodiscard]] RVError gitErrorWithCommand(RVGitCommand& command, RVUserInfo userInfo = {});

/// The error of a command that something raised has ended, for whoever cannot be thrown at, such as
/// a completion handler: RVGitRVGitGenericError with what was said as
/// RVGitCommandErrorOutputErrorKey.
[[nodiscard]] RVError gitErrorWithException(const std::exception_ptr& exception);

}  // namespace rvgit

/// User info for errors that are made without a command: the version of the default binary, if
/// there is one, and the repository's path, with the given entries over them.
[[nodiscard]] RVUserInfo RVGitMakeErrorUserInfo(const std::shared_ptr<RVGitRepository>& repository,
                                                const RVUserInfo& userInfo = {});

inline namespace RVGIT_EXPORT rvgit {

/// Registers the catalogue; done on first use, and a second call does nothing.
void loadErrorDefinitionsForGitErrorDomain();

}  // namespace rvgit
