#pragma once

#include <memory>
#include <string>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitRepository;

inline namespace RVGIT_EXPORT rvgit {

/// Whether the ".git" file of a working tree names the git directory, which need not be there any
/// more. Both paths have their links resolved.
[[nodiscard]] bool namesGitDirectory(const std::string& workingTree,
                                     const std::string& gitDirectory);

/// The git directory of a submodule has moved, and with it those of the submodules in it, at any
/// depth: has their working trees and them refer to each other again. Both paths are absolute and
/// have their links resolved. What refers to another place, or lies outside of the superproject's
/// working tree, is left as it is. May be repeated after a failure, which is one of RVGitConfig or
/// of writing a ".git" file.
[[nodiscard]] bool relinkNestedSubmodules(const std::string& oldGitDirectory,
                                          const std::string& newGitDirectory,
                                          const std::shared_ptr<RVGitRepository>& superproject,
                                          RVErrorPlace error);

}  // namespace rvgit
