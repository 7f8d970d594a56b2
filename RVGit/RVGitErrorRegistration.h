#pragma once

#include "RVGit/base/RVExport.h"

class RVGitCommandErrorDefinitionManager;

inline namespace RVGIT_EXPORT rvgit {

/// Registers the rows of every class that has some. Called once, when the default manager is made.
void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager);

}  // namespace rvgit
