#pragma once

#include <memory>
#include <string>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitRepository;

inline namespace RVGIT_EXPORT rvgit {

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
