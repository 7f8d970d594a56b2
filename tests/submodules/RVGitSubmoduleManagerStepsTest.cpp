// What is left where one step of an operation fails, and that the same call copes with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestSmallDisk.h"

namespace fs = std::filesystem;

namespace {

using testing::_;
using testing::Contains;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerStepsTest : public RVGitOneSubmoduleTestCase {
protected:
    [[nodiscard]] std::string section(const std::string& file) const {
        return readFile("repository/" + file);
    }
};

// Removing.

TEST_F(RVGitSubmoduleManagerStepsTest, RemovingWithALockedIndex) {
    lock(".git/index");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 4, &error), RVGitIndexLockError));
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("index", _), Pair(".gitmodules", "lib"),
                                               Pair("config", _), Pair("git directory", "there"),
                                               Pair("core.worktree", _)));
    unlock(".git/index");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 4, &error)));
    EXPECT_THAT(places(), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerStepsTest, UntrackingWithALockedIndex) {
    lock(".git/index");
    const auto before = places();
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 6, &error), RVGitIndexLockError));
    EXPECT_EQ(places(), before);
    unlock(".git/index");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 6, &error)));
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", _)));
}

TEST_F(RVGitSubmoduleManagerStepsTest, UntrackingWithALockedSubmodulesFile) {
    lock(".gitmodules");
    EXPECT_FALSE(manager().removeSubmoduleAtPath("lib", 2, &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(places(), Not(Contains(Key("index"))));
    EXPECT_EQ(places().at(".gitmodules"), "lib");
    EXPECT_EQ(places().at("working tree"), "filled");
    unlock(".gitmodules");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 2, &error)));
    EXPECT_THAT(places(),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", _),
                                     Pair("git directory", "there"), Pair("core.worktree", _)));
}

TEST_F(RVGitSubmoduleManagerStepsTest, RemovingWithChangesOfTheSubmodulesFileThatAreNotStaged) {
    gitInRepository({"config", "-f", ".gitmodules", "submodule.x.path", "x"});
    EXPECT_TRUE(
        failedWith(manager().removeSubmoduleAtPath("lib", 0, &error), RVGitRVGitGenericError));
    EXPECT_THAT(places(), Contains(Key("index")));
    EXPECT_THAT(places(), Not(Contains(Key("working tree"))));
    gitInRepository({"add", ".gitmodules"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
    EXPECT_THAT(places(),
                UnorderedElementsAre(Pair("git directory", "there"), Pair("core.worktree", _)));
}

TEST_F(RVGitSubmoduleManagerStepsTest, RemovingWithALockedConfiguration) {
    lock(".git/config");
    EXPECT_FALSE(manager().removeSubmoduleAtPath("lib", 4, &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("config", _)));
    unlock(".git/config");
    // It is in no list any more; its section stays.
    EXPECT_FALSE(manager().removeSubmoduleAtPath("lib", 4, &error));
    EXPECT_FALSE(error);
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("config", _)));
}

TEST_F(RVGitSubmoduleManagerStepsTest, WhatIsDeclaredAloneMayBeAnyDirectory) {
    writeFile("repository/src/work", "uncommitted\n");
    declareSubmodule("evil", "src");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("src", 0, &error),
                           RVGitRemoveSubmoduleWithLocalModificationsError));
    EXPECT_EQ(readFile("repository/src/work"), "uncommitted\n");
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("src", &error));
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("src", 2, &error)));
    EXPECT_EQ(readFile("repository/src/work"), "uncommitted\n");
}

// Moving.

TEST_F(RVGitSubmoduleManagerStepsTest, MovingWithALockedConfigurationOfTheSubmodule) {
    lock(".git/modules/name/config");
    EXPECT_FALSE(manager().moveSubmoduleWithPath("lib", "new", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(places("new").at("working tree"), "filled");
    EXPECT_EQ(places("new").at("core.worktree"), "../../../lib");
    EXPECT_EQ(places("lib").at(".gitmodules"), "lib");
    EXPECT_FALSE(existsInRepository("lib"));
    unlock(".git/modules/name/config");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerStepsTest, MovingWithALockedSubmodulesFile) {
    lock(".gitmodules");
    EXPECT_FALSE(manager().moveSubmoduleWithPath("lib", "new", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(places("new").at("working tree"), "filled");
    EXPECT_EQ(places("new").at("core.worktree"), "../../../new");
    EXPECT_EQ(places("lib").at(".gitmodules"), "lib");
    EXPECT_THAT(places("lib"), Contains(Key("index")));
    unlock(".gitmodules");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerStepsTest, MovingWithALockedIndexSucceedsAndStagesNothing) {
    lock(".git/index");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_EQ(places("new").at(".gitmodules"), "new");
    EXPECT_THAT(places("lib"), Contains(Key("index")));
    EXPECT_THAT(places("new"), Not(Contains(Key("index"))));
}

// Renaming.

TEST_F(RVGitSubmoduleManagerStepsTest, RenamingWithALockedSubmodulesFile) {
    lock(".gitmodules");
    EXPECT_FALSE(manager().renameSubmoduleWithName("name", "new", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(places("lib", "new").at("git directory"), "there");
    EXPECT_EQ(places("lib", "new").at("link"), "gitdir: ../.git/modules/new");
    EXPECT_EQ(places("lib", "name").at(".gitmodules"), "lib");
    EXPECT_THAT(places("lib", "name"), Contains(Key("config")));
    unlock(".gitmodules");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("name", "new", &error)));
    EXPECT_EQ(places("lib", "new").size(), 7);
    EXPECT_EQ(submoduleAt("lib")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerStepsTest, RenamingWithALockedConfiguration) {
    lock(".git/config");
    EXPECT_FALSE(manager().renameSubmoduleWithName("name", "new", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(places("lib", "new").at(".gitmodules"), "lib");
    EXPECT_THAT(places("lib", "name"), Contains(Key("config")));
    unlock(".git/config");
    // The old name is in no list any more; an init makes the section of the new one.
    EXPECT_FALSE(manager().renameSubmoduleWithName("name", "new", &error));
    EXPECT_FALSE(error);
    EXPECT_TRUE(succeeded(manager().initSubmoduleAtPath("lib", &error)));
    EXPECT_EQ(submoduleAt("lib")->status(), RVGitSubmoduleStatusClean);
}

// Missing permissions.

class RVGitSubmodulePermissionsTest : public RVGitSubmoduleManagerStepsTest {};

TEST_F(RVGitSubmodulePermissionsTest, RemovingAWorkingTreeThatMayNotBeRemoved) {
    protectDirectory("lib");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 4, &error), EACCES));
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(places().size(), 7);
    unprotect();
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 4, &error)));
    EXPECT_THAT(places(), IsEmpty());
}

TEST_F(RVGitSubmodulePermissionsTest, RemovingAGitDirectoryThatMayNotBeRemoved) {
    protectDirectory(".git/modules");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 4, &error), EACCES));
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("config", _)));
}

TEST_F(RVGitSubmodulePermissionsTest, UntrackingAndRemovingAGitDirectoryThatMayNotBeRemoved) {
    protectDirectory(".git/modules");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 6, &error), EACCES));
    EXPECT_THAT(places(), Not(Contains(Key("index"))));
    EXPECT_EQ(places().at(".gitmodules"), "lib");
    unprotect();
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 6, &error)));
    EXPECT_FALSE(existsInRepository(".git/modules/name"));
}

TEST_F(RVGitSubmodulePermissionsTest, MovingWhereItMayNot) {
    makeDirectory("repository/target");
    protectDirectory("target");
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("lib", "target/new", &error), EACCES));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    unprotect();
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "target/new", &error)));
    EXPECT_EQ(places("target/new").at(".gitmodules"), "target/new");
}

TEST_F(RVGitSubmodulePermissionsTest, RenamingWhereItMayNot) {
    protectDirectory(".git/modules");
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("name", "new", &error), EACCES));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    unprotect();
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("name", "new", &error)));
    EXPECT_EQ(places("lib", "new").size(), 7);
}

TEST_F(RVGitSubmodulePermissionsTest, RenamingWithALinkThatMayNotBeWritten) {
    protectDirectory("lib");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("name", "new", &error)));
    EXPECT_EQ(places("lib", "new").at("link"), "gitdir: ../.git/modules/name");
    EXPECT_EQ(places("lib", "new").at("git directory"), "there");
    EXPECT_EQ(places("lib", "new").at(".gitmodules"), "lib");
}

TEST_F(RVGitSubmodulePermissionsTest, ALinkThatCouldNotBeWrittenIsWrittenByTheNextCall) {
    protectDirectory("lib");
    EXPECT_TRUE(
        failedWith(manager().renameSubmoduleKeepingLinksWithName("name", "n/new", &error), EACCES));
    EXPECT_EQ(places("lib", "n/new").at("git directory"), "there");
    EXPECT_EQ(places("lib", "name").at(".gitmodules"), "lib");
    unprotect();
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName("name", "n/new", &error)));
    EXPECT_EQ(places("lib", "n/new").at("link"), "gitdir: ../.git/modules/n/new");
    EXPECT_EQ(gitAt("lib", {"status", "--short"}), "");
}

// A full disk. It can only be had in a process with mounts of its own.

class RVGitSubmoduleFullDiskTest : public RVGitSubmoduleManagerStepsTest {};

TEST_F(RVGitSubmoduleFullDiskTest, ListingFailsBeforeTheFirstStep) {
    RVGIT_TEST_NEEDS_GIT("2.34", "its listing writes nothing, and does not fail");
    RVGIT_TEST_NEEDS_SMALL_DISK();
    fillDisk();
    const auto before = filesBelow(repositoryPath());
    // Git would write the index of the submodule anew where it only looks.
    EXPECT_TRUE(
        failedWith(manager().removeSubmoduleAtPath("lib", 2, &error), RVGitRVGitGenericError));
    EXPECT_TRUE(
        failedWith(manager().moveSubmoduleWithPath("lib", "new", &error), RVGitRVGitGenericError));
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("name", "new", &error),
                           RVGitRVGitGenericError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

TEST_F(RVGitSubmoduleFullDiskTest, Removing) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    setEnvironmentVariable("GIT_OPTIONAL_LOCKS", "0");
    fillDisk();
    const auto before = places();
    EXPECT_FALSE(manager().removeSubmoduleAtPath("lib", 2, &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(places(), before);
    makeRoom();
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 2, &error)));
    EXPECT_THAT(places(), Not(Contains(Key("index"))));
    EXPECT_THAT(places(), Not(Contains(Key(".gitmodules"))));
}

TEST_F(RVGitSubmoduleFullDiskTest, Moving) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    setEnvironmentVariable("GIT_OPTIONAL_LOCKS", "0");
    fillDisk();
    EXPECT_FALSE(manager().moveSubmoduleWithPath("lib", "new", &error));
    EXPECT_TRUE(error);
    // The configurations are whole, in their old state.
    EXPECT_EQ(places("new")["core.worktree"], "../../../lib");
    EXPECT_EQ(places("new")[".gitmodules"], "lib");
    EXPECT_EQ(places("new")["working tree"], "filled");
    makeRoom();
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleFullDiskTest, Renaming) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    setEnvironmentVariable("GIT_OPTIONAL_LOCKS", "0");
    fillDisk();
    // Git says that it succeeded.
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("name", "new", &error),
                           RVGitConfigWriteError));
    EXPECT_EQ(places("lib", "name")[".gitmodules"], "lib");
    EXPECT_EQ(places("lib", "new")["git directory"], "there");
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
    makeRoom();
    // The link could not be written, and leads to the old name until it is.
    (void)manager().renameSubmoduleWithName("name", "new", &error);
    EXPECT_EQ(places("lib", "new")[".gitmodules"], "lib");
    EXPECT_THAT(places("lib", "new"), Contains(Key("config")));
}

}  // namespace
