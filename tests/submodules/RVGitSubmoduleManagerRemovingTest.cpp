#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "tests/submodules/RVGitSubmoduleManagerTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerRemovingTest : public RVGitSubmoduleManagerTestCase {};

TEST_F(RVGitSubmoduleManagerRemovingTest, RemovesAllButTheGitDirectory) {
    addSubmodule("libs/a", "the.name");
    addSubmodule("libs/b");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("libs/a", 0, &error)));
    EXPECT_THAT(
        placesOf("libs/a", "the.name"),
        UnorderedElementsAre(Pair("git directory", "there"), Pair("core.worktree", testing::_)));
    EXPECT_EQ(placesOf("libs/b", "libs/b").size(), 7);
    EXPECT_THAT(configText(), Not(HasSubstr("the.name")));
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-status"}), "M\t.gitmodules\nD\tlibs/a");
}

TEST_F(RVGitSubmoduleManagerRemovingTest, RemovesTheGitDirectoryWithBit4) {
    addSubmodule("libs/a", "the.name");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath(
        "libs/a", RVGitSubmoduleRemoveOptionRemoveGitDirectory, &error)));
    EXPECT_THAT(placesOf("libs/a", "the.name"), IsEmpty());
    EXPECT_FALSE(existsInRepository(".git/modules/the.name"));
    EXPECT_TRUE(existsInRepository(".git/modules"));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, KeepsTheWorkingTreeWithBit2) {
    addSubmodule("lib");
    EXPECT_TRUE(succeeded(
        manager().removeSubmoduleAtPath("lib", RVGitSubmoduleRemoveOptionKeepWorkingTree, &error)));
    EXPECT_THAT(placesOf("lib", "lib"),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", testing::_),
                                     Pair("git directory", "there"),
                                     Pair("core.worktree", "../../../lib")));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
}

TEST_F(RVGitSubmoduleManagerRemovingTest,
       KeepsTheWorkingTreeAndRemovesTheGitDirectoryWithBits2And4) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "changed\n");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 6, &error)));
    EXPECT_THAT(placesOf("lib", "lib"),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", testing::_)));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "changed\n");
}

TEST_F(RVGitSubmoduleManagerRemovingTest, ADirtyOneIsNotRemovedAndNothingIsTouched) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "changed\n");
    const auto before = filesBelow(repositoryPath());
    for (const unsigned options : {0U, 4U}) {
        EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", options, &error),
                               RVGitRemoveSubmoduleWithLocalModificationsError));
        EXPECT_EQ(error->userInfoString(RVGitSubmodulePathErrorKey), "lib");
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    }
    EXPECT_TRUE(
        succeeded(manager().removeSubmoduleAtPath("lib", RVGitSubmoduleRemoveOptionForce, &error)));
    EXPECT_FALSE(existsInRepository("lib"));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, ChangesThatTheListDoesNotShowAreNotLost) {
    RVGIT_TEST_NEEDS_GIT("2.23", "its diff dies of a submodule whose git directory is gone");
    addSubmodule("gone");
    addSubmodule("lib");
    addSubmodule("z");
    const auto refuses = [&] {
        const auto before = filesBelow(repositoryPath());
        EXPECT_FALSE(submoduleAt("lib")->isDirty());
        EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 0, &error),
                               RVGitRemoveSubmoduleWithLocalModificationsError));
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    };
    writeFile("repository/lib/lib.c", "changed\n");
    gitInRepository({"config", "submodule.lib.ignore", "all"});
    refuses();
    gitInRepository({"config", "--unset", "submodule.lib.ignore"});
    fs::remove_all(pathInRepository(".git/modules/gone"));
    refuses();
    gitAt("lib", {"commit", "-q", "-a", "-m", "Keep"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, UntrackedFilesAloneDoNotProtectIt) {
    RVGIT_TEST_NEEDS_GIT("2.31", "it calls a submodule with untracked files dirty");
    addSubmodule("lib");
    writeFile("repository/lib/new", "x");
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, RemovesAnUninitializedOneAndItsGitDirectory) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 4, &error)));
    EXPECT_THAT(placesOf("lib", "lib"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerRemovingTest, RemovesBrokenOnes) {
    RVGIT_TEST_NEEDS_GIT(
        "2.20", "its status and its staging die of a submodule whose directory is missing");
    addSubmodule("gone");
    fs::remove_all(pathInRepository(".git/modules/gone"));
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("gone", 4, &error)));
    EXPECT_THAT(placesOf("gone", "gone"), IsEmpty());

    addSubmodule("nomapping");
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.nomapping"});
    stageAll();
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("nomapping", 4, &error)));
    EXPECT_THAT(placesOf("nomapping", "nomapping"), IsEmpty());

    declareSubmodule("declared", "declared");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("declared", 4, &error)));
    EXPECT_THAT(placesOf("declared", "declared"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerRemovingTest, RemovesAnOldLayoutWithItsGitDirectory) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("old", 4, &error)));
    EXPECT_THAT(placesOf("old", "old"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerRemovingTest, AGitDirectoryInTheWorkingTreeIsKeptWithoutBit4) {
    const auto embed = [&](const std::string& path) {
        git({"clone", "-q", scratchPath("library"), pathInRepository(path)});
        return commitInSubmodule(path);
    };
    const std::string hash = embed("old");
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    EXPECT_TRUE(
        succeeded(manager().removeSubmoduleAtPath("old", RVGitSubmoduleRemoveOptionForce, &error)));
    EXPECT_THAT(placesOf("old", "old"), testing::ElementsAre(Pair("core.worktree", testing::_),
                                                             Pair("git directory", "there")));
    EXPECT_EQ(
        gitInRepository({"--git-dir=.git/modules/old", "--work-tree=.", "cat-file", "-t", hash}),
        "commit");

    addSubmodule("outer");
    const std::string nested = embed("outer/in");
    git({"submodule", "--quiet", "add", scratchPath("library"), "in"}, pathInRepository("outer"));
    gitAt("outer", {"commit", "-q", "-m", "Nest"});
    gitInRepository({"commit", "-q", "-a", "-m", "Nest"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("outer", 0, &error)));
    EXPECT_FALSE(existsInRepository("outer"));
    EXPECT_EQ(gitInRepository({"--git-dir=.git/modules/outer/modules/in", "--work-tree=.",
                               "cat-file", "-t", nested}),
              "commit");

    // No name says where to keep it.
    embed("nomapping");
    stageAll();
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("nomapping", 0, &error),
                           RVGitRVGitGenericError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath(
        "nomapping", RVGitSubmoduleRemoveOptionRemoveGitDirectory, &error)));
    EXPECT_FALSE(existsInRepository("nomapping"));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, WhatCannotBeListedOfItIsNotTakenForNothing) {
    addSubmodule("outer");
    git({"clone", "-q", scratchPath("library"), pathInRepository("outer/in")});
    git({"submodule", "--quiet", "add", scratchPath("library"), "in"}, pathInRepository("outer"));
    gitAt("outer", {"commit", "-q", "-m", "Nest"});
    gitInRepository({"commit", "-q", "-a", "-m", "Nest"});
    const std::string path = writeFile("failing/git",
                                       "#!/bin/sh\ncase \" $* \" in *'/outer '*' ls-files '*) "
                                       "exit 128;; esac\nexec '" +
                                           gitPath() + "' \"$@\"\n",
                                       0755);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    EXPECT_TRUE(succeeded(
        manager().removeSubmoduleAtPath("outer", RVGitSubmoduleRemoveOptionForce, &error)));
    EXPECT_FALSE(existsInRepository("outer"));
    EXPECT_TRUE(existsInRepository(".git/modules/outer/modules/in/HEAD"));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, ADamagedGitDirectoryInTheWorkingTreeIsKeptWithoutBit4) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    gitInRepository({"commit", "-q", "-m", "Add"});
    fs::remove(pathInRepository("old/.git/HEAD"));
    EXPECT_FALSE(manager().removeSubmoduleAtPath("old", RVGitSubmoduleRemoveOptionForce, &error));
    EXPECT_TRUE(error);
    EXPECT_TRUE(existsInRepository("old/.git/objects"));
    EXPECT_TRUE(existsInRepository("old/lib.c"));
}

TEST_F(RVGitSubmoduleManagerRemovingTest,
       ModificationsAreProtectedWhateverTheListSaysOfTheSubmodule) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "precious\n");
    gitInRepository({"config", "diff.ignoreSubmodules", "all"});
    const auto isProtected = [&](RVGitSubmoduleStatus status) {
        EXPECT_EQ(submoduleAt("lib")->status(), status);
        EXPECT_FALSE(submoduleAt("lib")->isDirty());
        EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
        const auto before = filesBelow(repositoryPath());
        EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 0, &error),
                               RVGitRemoveSubmoduleWithLocalModificationsError));
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    };
    gitInRepository({"config", "--remove-section", "submodule.lib"});
    isProtected(RVGitSubmoduleStatusUninitialized);
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.lib"});
    gitInRepository({"commit", "-q", "-a", "-m", "No mapping"});
    isProtected(RVGitSubmoduleStatusMissingConfiguration);
    gitAt("lib", {"checkout", "-q", "lib.c"});
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, OneWhoseNameBeginsThatOfAnotherIsRemovedWhole) {
    addSubmodule("three");
    addSubmodule("three.js");
    const auto other = placesOf("three.js", "three.js");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("three", 4, &error)));
    EXPECT_THAT(placesOf("three", "three"), IsEmpty());
    EXPECT_EQ(placesOf("three.js", "three.js"), other);
}

TEST_F(RVGitSubmoduleManagerRemovingTest, NamesWithBracketsAreRenamedAndRemoved) {
    addSubmodule("pages/[id]");
    EXPECT_TRUE(
        succeeded(manager().renameSubmoduleKeepingLinksWithName("pages/[id]", "[new]", &error)));
    EXPECT_EQ(placesOf("pages/[id]", "[new]").size(), 7);
    gitInRepository({"commit", "-q", "-a", "-m", "Rename"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("pages/[id]", 4, &error)));
    EXPECT_THAT(placesOf("pages/[id]", "[new]"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerRemovingTest, APatternInAPathRemovesNothingElse) {
    git({"--literal-pathspecs", "submodule", "--quiet", "add", scratchPath("library"), "*"},
        repositoryPath());
    writeFile("repository/file.txt", "uncommitted\n");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("*", 0, &error)));
    EXPECT_EQ(readFile("repository/file.txt"), "uncommitted\n");
    EXPECT_EQ(gitInRepository({"ls-files"}), ".gitmodules\nfile.txt");
}

TEST_F(RVGitSubmoduleManagerRemovingTest, ModificationsThatAConfigurationHidesAreProtected) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "precious\n");
    const auto isProtected = [&] {
        EXPECT_FALSE(submoduleAt("lib")->isDirty());
        const auto before = filesBelow(repositoryPath());
        EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 0, &error),
                               RVGitRemoveSubmoduleWithLocalModificationsError));
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    };
    gitInRepository({"config", "-f", ".gitmodules", "submodule.lib.ignore", "all"});
    gitInRepository({"commit", "-q", "-a", "-m", "Ignore"});
    isProtected();
    gitInRepository({"config", "-f", ".gitmodules", "submodule.lib.ignore", "none"});
    gitInRepository({"config", "submodule.lib.ignore", "dirty"});
    isProtected();
    // Untracked files alone are not.
    gitAt("lib", {"checkout", "-q", "lib.c"});
    writeFile("repository/lib/new", "x");
    gitInRepository({"commit", "-q", "-a", "-m", "Ignore none"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
}

// Uncommitted work.

TEST_F(RVGitSubmoduleManagerRemovingTest, FindsUncommittedWorkOfEveryKind) {
    makeLibrary("middle");
    git({"submodule", "--quiet", "add", scratchPath("library"), "inner"}, "middle");
    git({"commit", "-q", "-m", "Add"}, "middle");
    addSubmodule("lib", {}, scratchPath("middle"));
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    // What git leaves out by its configuration is lost all the same.
    gitInRepository({"config", "submodule.lib.ignore", "all"});
    gitAt("lib", {"config", "status.showUntrackedFiles", "no"});
    gitAt("lib", {"config", "submodule.inner.ignore", "all"});
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_FALSE(error);
    const auto loses = [&] { return manager().submoduleContainsUncommittedWork("lib", &error); };
    writeFile("repository/lib/new", "x");
    EXPECT_TRUE(loses());
    gitAt("lib", {"add", "new"});
    EXPECT_TRUE(loses());
    gitAt("lib", {"rm", "-q", "-f", "new"});
    EXPECT_FALSE(loses());
    writeFile("repository/lib/inner/new", "x");
    EXPECT_TRUE(loses());
    fs::remove(pathInRepository("lib/inner/new"));
    writeFile("repository/lib/inner/lib.c", "changed\n");
    EXPECT_TRUE(loses());
    gitAt("lib/inner", {"checkout", "-q", "lib.c"});
    EXPECT_FALSE(loses());
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleManagerRemovingTest, WithoutARepositoryAnyFileIsUncommittedWork) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
    writeFile("repository/lib/file", "x");
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_FALSE(error);
    fs::remove_all(pathInRepository("lib"));
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
}

TEST_F(RVGitSubmoduleManagerRemovingTest, WorkThatCannotBeLookedForCountsAsThere) {
    addSubmodule("lib");
    const std::string config = readFile("repository/.git/modules/lib/config");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("--ignore-submodules=none", {.standardError = "fatal: no\n", .exitCode = 128});
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(error);
}

}  // namespace
