#pragma once

#include <memory>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

class RVGitCommand;
class RVGitRefSpec;
class RVGitRemote;

inline namespace RVGIT_EXPORT rvgit {

// What commands share that talk to another repository.

/// The name of the remote; "." without one, which is the repository itself.
[[nodiscard]] std::string nameOfRemote(const std::shared_ptr<RVGitRemote>& remote);

/// With the remote's name, and the ref spec and the address that is fetched from, if there are any.
[[nodiscard]] RVUserInfo userInfoOfFetch(RVUserInfo userInfo,
                                         const std::shared_ptr<RVGitRemote>& remote,
                                         const std::shared_ptr<RVGitRefSpec>& refSpec);

/// Adds the place of a clone, the last argument: the path, or, where something is at the path, "."
/// with that as the directory in which git runs.
void addPlaceOfClone(RVGitCommand& command, const std::string& localPath);

}  // namespace rvgit
