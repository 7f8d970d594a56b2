#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVCanceller.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using testing::Not;

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
        [&](RVErrorPlace e) { return !manager.submoduleContainsUncommittedWork("lib", e); },
        // A list that is cut off would tell of submodules that are missing in the index.
        [&](RVErrorPlace e) { return loader().allSubmodules(e).has_value(); }};
    // Each reads the list by these, and is stopped in the last or the first of them.
    for (const char* words : {"diff", "ls-files", "submodule status"}) {
        for (const auto& operation : operations) {
            const RVHangingGit git = hangingGit(words);
            RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
            const RVCanceller canceller(git.begunPath());
            error = RVError("", 1);
            EXPECT_FALSE(operation(&error)) << words;
            EXPECT_EQ(error, std::nullopt);
            EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "") << words;
        }
    }
}

TEST_F(RVGitSubmoduleManagerThreadsTest, WhatIsCancelledBeforeItHasLookedChangesNothing) {
    addSubmodule("lib");
    // It is given every call but the one that hangs.
    const RVRecordingGit recorder = recordingGit();
    const std::function<bool(RVErrorPlace)> operations[] = {
        [&](RVErrorPlace e) { return manager().updateAllSubmodulesWithOptions(0, e); },
        [&](RVErrorPlace e) { return manager().synchronizeAllSubmoduleURLs(e); }};
    for (const auto& operation : operations) {
        const RVHangingGit git(scratchPath("hanging-git"), recorder.path(),
                               RVHangingGit::Call::withWords("ls-files"));
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
        const RVCanceller canceller(git.begunPath());
        error = RVError("", 1);
        EXPECT_FALSE(operation(&error));
        EXPECT_EQ(error, std::nullopt);
        EXPECT_THAT(recorder.argumentLists(),
                    AllOf(Not(IsEmpty()), Each(Not(Contains("submodule")))));
    }
}

TEST_F(RVGitSubmoduleManagerThreadsTest, ASectionThatWasNotLookedUpIsNotSaidToBeMissing) {
    addSubmodule("lib");
    const auto before = filesBelow(repositoryPath());
    for (const auto& configs :
         {RVGitSubmoduleConfigManager::defaultManagerWithRepository(repository()),
          RVGitSubmoduleConfigManager::localConfigManagerWithRepository(repository())})
        for (const bool isRemoval : {false, true}) {
            const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                            {"*' config '*"});
            error = RVError("", 1);
            EXPECT_FALSE(
                isRemoval ? configs->removeConfigSectionForSubmoduleWithName("lib", &error)
                          : configs->renameConfigSectionForSubmoduleWithName("lib", "new", &error));
            EXPECT_EQ(error, std::nullopt);
        }
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

}  // namespace
