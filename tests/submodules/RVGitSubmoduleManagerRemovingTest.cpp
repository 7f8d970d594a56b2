#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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
