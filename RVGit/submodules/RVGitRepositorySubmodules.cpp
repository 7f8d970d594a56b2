// The part of RVGitRepository that forwards to the submodules' loader and manager.

#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"

std::shared_ptr<RVGitSubmoduleLoader> RVGitRepository::submoduleLoader() {
    return submoduleLoader_.part(shared_from_this(),
                                 [this] { return new RVGitSubmoduleLoader(weak_from_this()); });
}

std::shared_ptr<RVGitSubmoduleManager> RVGitRepository::submoduleManager() {
    return submoduleManager_.part(shared_from_this(),
                                  [this] { return new RVGitSubmoduleManager(weak_from_this()); });
}

std::optional<std::vector<std::string>> RVGitRepository::allSubmoduleNames(RVErrorPlace error) {
    return submoduleLoader()->allSubmoduleNames(error);
}

std::optional<std::vector<std::shared_ptr<RVGitSubmodule>>> RVGitRepository::allSubmodules(
    RVErrorPlace error) {
    return submoduleLoader()->allSubmodules(error);
}

std::shared_ptr<RVGitSubmodule> RVGitRepository::submoduleForName(const std::string& name,
                                                                  RVErrorPlace error) {
    return submoduleLoader()->submoduleForName(name, error);
}

std::shared_ptr<RVGitSubmodule> RVGitRepository::submoduleForPath(const std::string& path,
                                                                  RVErrorPlace error) {
    return submoduleLoader()->submoduleForPath(path, error);
}

bool RVGitRepository::canAddSubmoduleAtPath(const std::string& path, RVErrorPlace error) {
    return submoduleManager()->canAddSubmoduleAtPath(path, error);
}

bool RVGitRepository::addSubmoduleWithURL(const std::string& URL, const std::string& atPath,
                                          unsigned options, RVErrorPlace error) {
    return submoduleManager()->addSubmoduleWithURL(URL, atPath, options, error);
}

bool RVGitRepository::removeSubmoduleAtPath(const std::string& path, unsigned options,
                                            RVErrorPlace error) {
    return submoduleManager()->removeSubmoduleAtPath(path, options, error);
}

bool RVGitRepository::moveSubmoduleAtPath(const std::string& path, const std::string& toNewPath,
                                          RVErrorPlace error) {
    return submoduleManager()->moveSubmoduleWithPath(path, toNewPath, error);
}

bool RVGitRepository::renameSubmoduleWithName(const std::string& name, const std::string& toNewName,
                                              RVErrorPlace error) {
    return submoduleManager()->renameSubmoduleWithName(name, toNewName, error);
}

bool RVGitRepository::updateAllSubmodulesWithOptions(unsigned options, RVErrorPlace error) {
    return submoduleManager()->updateAllSubmodulesWithOptions(options, error);
}

bool RVGitRepository::updateSubmoduleAtPath(const std::string& path, unsigned options,
                                            RVErrorPlace error) {
    return submoduleManager()->updateSubmoduleAtPath(path, options, error);
}

bool RVGitRepository::synchronizeAllSubmoduleURLs(RVErrorPlace error) {
    return submoduleManager()->synchronizeAllSubmoduleURLs(error);
}

bool RVGitRepository::synchronizeURLForSubmoduleAtPath(const std::string& path,
                                                       RVErrorPlace error) {
    return submoduleManager()->synchronizeURLForSubmoduleAtPath(path, error);
}

bool RVGitRepository::initAllSubmodules(RVErrorPlace error) {
    return submoduleManager()->initAllSubmodules(error);
}

bool RVGitRepository::initSubmoduleAtPath(const std::string& path, RVErrorPlace error) {
    return submoduleManager()->initSubmoduleAtPath(path, error);
}

bool RVGitRepository::initSubmodulesAtPaths(const std::vector<std::string>& paths,
                                            RVErrorPlace error) {
    return submoduleManager()->initSubmodulesAtPaths(paths, error);
}
