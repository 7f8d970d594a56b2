#pragma once

#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

inline namespace RVGIT_EXPORT rvgit {

/// Adds what a reference such as "HEAD:file" or a hash tells to the user info of an error: the
/// reference itself; revision and path, if exactly one colon parts them; without a colon, the
/// reference as an object hash.
void addObjectReferenceToErrorUserInfo(const std::string& objectReference, RVUserInfo& userInfo);

}  // namespace rvgit
