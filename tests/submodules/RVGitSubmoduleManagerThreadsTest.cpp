#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVHangingGit.h"

namespace fs = std::filesystem;

namespace {

class RVGitSubmoduleManagerThreadsTest : public RVGitSubmoduleTestCase {};

TEST_F(RVGitSubmoduleManagerThreadsTest, AnOperationWhoseCommandsAreCancelledTakesNoFurtherStep) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "precious\n");
    const auto before = filesBelow(repositoryPath());
    RVGitSubmoduleManager& manager = this->manager();
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager.removeSubmoduleAtPath("lib", 0, e); },
        [&](RVErrorPlace e) {
            return manager.removeSubmoduleAtPath("lib", RVGitSubmoduleRemoveOptionForce, e);
        },
        [&](RVErrorPlace e) { return manager.moveSubmoduleWithPath("lib", "new", e); },
        [&](RVErrorPlace e) { return manager.relocateSubmoduleWithPath("lib", "new", e); },
        [&](RVErrorPlace e) { return manager.renameSubmoduleWithName("lib", "new", e); },
        [&](RVErrorPlace e) {
            return manager.renameSubmoduleKeepingLinksWithName("lib", "new", e);
        },
        [&](RVErrorPlace e) { return !manager.submoduleContainsUncommittedWork("lib", e); }};
    // Each reads the list by these, and is stopped in the last or the first of them.
    for (const char* pattern : {"*' diff '*", "*' ls-files '*", "*' submodule status '*"}) {
        const std::string path = writeFile(
            "slow-git/git",
            "#!/bin/sh\ncase \" $* \" in " + std::string(pattern) +
                ") [ -e \"$BEGUN\" ] || { : > \"$BEGUN\"; exec sleep 60; };; esac\nexec '" +
                gitPath() + "' \"$@\"\n",
            0755);
        setEnvironmentVariable("BEGUN", scratchPath("begun"));
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
        for (const auto& operation : operations) {
            fs::remove(scratchPath("begun"));
            const RVCanceller canceller(scratchPath("begun"));
            error = RVError("", 1);
            EXPECT_FALSE(operation(&error)) << pattern;
            EXPECT_EQ(error, std::nullopt);
            EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "") << pattern;
        }
    }
}

TEST_F(RVGitSubmoduleManagerThreadsTest, WhatIsCancelledBeforeItHasLookedChangesNothing) {
    addSubmodule("lib");
    const std::string path =
        writeFile("slow-git/git",
                  "#!/bin/sh\ncase \" $* \" in *' submodule '*) : > \"$CHANGED\";; esac\n"
                  "case \" $* \" in *' ls-files '*) [ -e \"$BEGUN\" ] || { : > \"$BEGUN\"; exec "
                  "sleep 60; };; "
                  "esac\nexec '" +
                      gitPath() + "' \"$@\"\n",
                  0755);
    setEnvironmentVariable("BEGUN", scratchPath("begun"));
    setEnvironmentVariable("CHANGED", scratchPath("changed"));
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager().updateAllSubmodulesWithOptions(0, e); },
        [&](RVErrorPlace e) { return manager().synchronizeAllSubmoduleURLs(e); }};
    for (const auto& operation : operations) {
        fs::remove(scratchPath("begun"));
        const RVCanceller canceller(scratchPath("begun"));
        error = RVError("", 1);
        EXPECT_FALSE(operation(&error));
        EXPECT_EQ(error, std::nullopt);
        EXPECT_FALSE(fileExists("changed"));
    }
}

TEST_F(RVGitSubmoduleManagerThreadsTest, ASectionThatWasNotLookedUpIsNotSaidToBeMissing) {
    addSubmodule("lib");
    const auto before = filesBelow(repositoryPath());
    for (const auto& configs :
         {RVGitSubmoduleConfigManager::defaultManagerWithRepository(repository()),
          RVGitSubmoduleConfigManager::localConfigManagerWithRepository(repository())})
        for (const bool isRemoval : {false, true}) {
            const RVHangingGit git(scratchPath("hanging-git"), gitPath(), {"*' config '*"});
            error = RVError("", 1);
            EXPECT_FALSE(
                isRemoval ? configs->removeConfigSectionForSubmoduleWithName("lib", &error)
                          : configs->renameConfigSectionForSubmoduleWithName("lib", "new", &error));
            EXPECT_EQ(error, std::nullopt);
        }
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

}  // namespace
