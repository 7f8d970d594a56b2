#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerTest : public RVGitSubmoduleTestCase {
protected:
    [[nodiscard]] std::string head() const { return gitLine({"rev-parse", "HEAD"}, "library"); }
    [[nodiscard]] std::string indexEntry(const std::string& path) const {
        return "160000 " + head() + " 0\t" + path;
    }
    [[nodiscard]] std::string configText() const { return readFile("repository/.git/config"); }
};

TEST_F(RVGitSubmoduleManagerTest, RequiresARepository) {
    EXPECT_THROW(RVGitSubmoduleManager(std::shared_ptr<RVGitRepository>()),
                 RVInvalidParameterException);
}

// Adding.

TEST_F(RVGitSubmoduleManagerTest, MayAddWhereNothingOrAnEmptyDirectoryIs) {
    makeDirectory("repository/empty");
    for (const char* path : {"new", "deep/er/new", "empty", "./x/../y", "lib (v1)"})
        EXPECT_TRUE(succeeded(manager().canAddSubmoduleAtPath(path, &error))) << path;
    EXPECT_TRUE(succeeded(manager().canAddSubmoduleAtPath(pathInRepository("new"), &error)));
}

TEST_F(RVGitSubmoduleManagerTest, MayNotAddOutsideOfTheRepository) {
    for (const std::string path :
         {"../x", "a/../../x", "/nowhere", "../repository2/x", ".git/x", ".git"}) {
        EXPECT_TRUE(failedWith(manager().canAddSubmoduleAtPath(path, &error),
                               RVGitAddSubmodulePathOutsideRepositoryError))
            << path;
        EXPECT_EQ(error->userInfoString(RVGitSubmoduleNameErrorKey), path);
    }
}

TEST_F(RVGitSubmoduleManagerTest, MayNotAddWhereSomethingIs) {
    writeFile("repository/full/file", "x");
    addSubmodule("place", "the-name");
    fs::create_symlink("nowhere", pathInRepository("dangling"));
    for (const std::string path : {"file.txt", "full", "place", "the-name", "dangling", "."}) {
        EXPECT_TRUE(failedWith(manager().canAddSubmoduleAtPath(path, &error),
                               RVGitAddSubmodulePathAlreadyExistsError))
            << path;
        EXPECT_EQ(error->userInfoString(RVGitSubmoduleNameErrorKey), path);
        EXPECT_EQ(error->userInfoString(RVGitSubmodulePathErrorKey), std::nullopt);
    }
}

TEST_F(RVGitSubmoduleManagerTest, MayAddFailsWhereTheNamesCannotBeRead) {
    writeFile("repository/.gitmodules", "[broken\n");
    EXPECT_TRUE(
        failedWith(manager().canAddSubmoduleAtPath("new", &error), RVGitConfigInvalidFileError));
}

TEST_F(RVGitSubmoduleManagerTest, Adds) {
    EXPECT_TRUE(
        succeeded(manager().addSubmoduleWithURL(scratchPath("library"), "libs/a", 0, &error)));
    EXPECT_THAT(placesOf("libs/a", "libs/a"),
                UnorderedElementsAre(
                    Pair("index", indexEntry("libs/a")), Pair(".gitmodules", "libs/a"),
                    Pair("config", scratchPath("library")), Pair("working tree", "filled"),
                    Pair("link", "gitdir: ../../.git/modules/libs/a"),
                    Pair("git directory", "there"), Pair("core.worktree", "../../../../libs/a")));
}

TEST_F(RVGitSubmoduleManagerTest, AddingReportsTheErrorOfGit) {
    EXPECT_TRUE(
        failedWith(manager().addSubmoduleWithURL(scratchPath("library"), "file.txt", 0, &error),
                   RVGitAddSubmodulePathAlreadyExistsError));
    EXPECT_FALSE(manager().addSubmoduleWithURL(scratchPath("nowhere"), "new", 0, &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(placesOf("new", "new"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, AnIgnoredPathIsAddedWithForce) {
    writeFile("repository/.gitignore", "ignored\n");
    EXPECT_FALSE(manager().addSubmoduleWithURL(scratchPath("library"), "ignored", 0, &error));
    EXPECT_TRUE(succeeded(manager().addSubmoduleWithURL(scratchPath("library"), "ignored",
                                                        RVGitSubmoduleAddOptionForce, &error)));
}

// Removing.

TEST_F(RVGitSubmoduleManagerTest, RemovesAllButTheGitDirectory) {
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

TEST_F(RVGitSubmoduleManagerTest, RemovesTheGitDirectoryWithBit4) {
    addSubmodule("libs/a", "the.name");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath(
        "libs/a", RVGitSubmoduleRemoveOptionRemoveGitDirectory, &error)));
    EXPECT_THAT(placesOf("libs/a", "the.name"), IsEmpty());
    EXPECT_FALSE(existsInRepository(".git/modules/the.name"));
    EXPECT_TRUE(existsInRepository(".git/modules"));
}

TEST_F(RVGitSubmoduleManagerTest, KeepsTheWorkingTreeWithBit2) {
    addSubmodule("lib");
    EXPECT_TRUE(succeeded(
        manager().removeSubmoduleAtPath("lib", RVGitSubmoduleRemoveOptionKeepWorkingTree, &error)));
    EXPECT_THAT(placesOf("lib", "lib"),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", testing::_),
                                     Pair("git directory", "there"),
                                     Pair("core.worktree", "../../../lib")));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
}

TEST_F(RVGitSubmoduleManagerTest, KeepsTheWorkingTreeAndRemovesTheGitDirectoryWithBits2And4) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "changed\n");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 6, &error)));
    EXPECT_THAT(placesOf("lib", "lib"),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", testing::_)));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "changed\n");
}

TEST_F(RVGitSubmoduleManagerTest, ADirtyOneIsNotRemovedAndNothingIsTouched) {
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

TEST_F(RVGitSubmoduleManagerTest, ChangesThatTheListDoesNotShowAreNotLost) {
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

TEST_F(RVGitSubmoduleManagerTest, UntrackedFilesAloneDoNotProtectIt) {
    RVGIT_TEST_NEEDS_GIT("2.31", "it calls a submodule with untracked files dirty");
    addSubmodule("lib");
    writeFile("repository/lib/new", "x");
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 0, &error)));
}

TEST_F(RVGitSubmoduleManagerTest, OneThatIsNotThereIsNoError) {
    addSubmodule("lib");
    error = RVError("domain", 1);
    EXPECT_FALSE(manager().removeSubmoduleAtPath("other", 0, &error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(manager().moveSubmoduleWithPath("other", "new", &error));
    EXPECT_FALSE(manager().renameSubmoduleWithName("other", "new", &error));
    EXPECT_FALSE(manager().relocateSubmoduleWithPath("other", "new", &error));
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("other", &error));
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleManagerTest, RemovesAnUninitializedOneAndItsGitDirectory) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 4, &error)));
    EXPECT_THAT(placesOf("lib", "lib"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, RemovesBrokenOnes) {
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

TEST_F(RVGitSubmoduleManagerTest, RemovesAnOldLayoutWithItsGitDirectory) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("old", 4, &error)));
    EXPECT_THAT(placesOf("old", "old"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, AGitDirectoryInTheWorkingTreeIsKeptWithoutBit4) {
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

TEST_F(RVGitSubmoduleManagerTest, ADamagedGitDirectoryInTheWorkingTreeIsKeptWithoutBit4) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    gitInRepository({"commit", "-q", "-m", "Add"});
    fs::remove(pathInRepository("old/.git/HEAD"));
    EXPECT_FALSE(manager().removeSubmoduleAtPath("old", RVGitSubmoduleRemoveOptionForce, &error));
    EXPECT_TRUE(error);
    EXPECT_TRUE(existsInRepository("old/.git/objects"));
    EXPECT_TRUE(existsInRepository("old/lib.c"));
}

TEST_F(RVGitSubmoduleManagerTest, ModificationsAreProtectedWhateverTheListSaysOfTheSubmodule) {
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

TEST_F(RVGitSubmoduleManagerTest, OneWhoseNameBeginsThatOfAnotherIsRemovedWhole) {
    addSubmodule("three");
    addSubmodule("three.js");
    const auto other = placesOf("three.js", "three.js");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("three", 4, &error)));
    EXPECT_THAT(placesOf("three", "three"), IsEmpty());
    EXPECT_EQ(placesOf("three.js", "three.js"), other);
}

TEST_F(RVGitSubmoduleManagerTest, NamesWithBracketsAreRenamedAndRemoved) {
    addSubmodule("pages/[id]");
    EXPECT_TRUE(
        succeeded(manager().renameSubmoduleKeepingLinksWithName("pages/[id]", "[new]", &error)));
    EXPECT_EQ(placesOf("pages/[id]", "[new]").size(), 7);
    gitInRepository({"commit", "-q", "-a", "-m", "Rename"});
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("pages/[id]", 4, &error)));
    EXPECT_THAT(placesOf("pages/[id]", "[new]"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, APatternInAPathRemovesNothingElse) {
    git({"--literal-pathspecs", "submodule", "--quiet", "add", scratchPath("library"), "*"},
        repositoryPath());
    writeFile("repository/file.txt", "uncommitted\n");
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("*", 0, &error)));
    EXPECT_EQ(readFile("repository/file.txt"), "uncommitted\n");
    EXPECT_EQ(gitInRepository({"ls-files"}), ".gitmodules\nfile.txt");
}

// Moving.

TEST_F(RVGitSubmoduleManagerTest, MovesToAPathOfTheSameDepth) {
    addSubmodule("old", "the.name");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    EXPECT_THAT(placesOf("new", "the.name"),
                UnorderedElementsAre(
                    Pair("index", indexEntry("new")), Pair(".gitmodules", "new"),
                    Pair("config", scratchPath("library")), Pair("working tree", "filled"),
                    Pair("link", "gitdir: ../.git/modules/the.name"),
                    Pair("git directory", "there"), Pair("core.worktree", "../../../new")));
    EXPECT_FALSE(existsInRepository("old"));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
    // ".gitmodules" is left for the caller to stage.
    EXPECT_EQ(gitInRepository({"status", "--short"}), " M .gitmodules\nR  old -> new");
}

TEST_F(RVGitSubmoduleManagerTest, MovesWithItsChanges) {
    addSubmodule("old");
    writeFile("repository/old/lib.c", "changed\n");
    writeFile("repository/old/new", "x");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    EXPECT_EQ(readFile("repository/new/lib.c"), "changed\n");
    EXPECT_EQ(readFile("repository/new/new"), "x");
}

TEST_F(RVGitSubmoduleManagerTest, AnEmptyDirectoryMakesRoom) {
    addSubmodule("old");
    makeDirectory("repository/new");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerTest, SomethingInTheWayFailsInTheMoveAndNothingLaterHappens) {
    addSubmodule("old");
    writeFile("repository/full/file", "x");
    writeFile("repository/plain", "x");
    fs::create_symlink("nowhere", pathInRepository("dangling"));
    makeDirectory("outside");
    fs::create_symlink(scratchPath("outside"), pathInRepository("linked"));
    stageAll();
    const auto before = filesBelow(repositoryPath());
    for (const char* path : {"full", "plain", "dangling", "linked"}) {
        EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("old", path, &error), EEXIST))
            << path;
        EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    }
    EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("old", "old/in/it", &error), EINVAL));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("old", "./old", &error),
                           RVGitMoveFileSelfTargetError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

TEST_F(RVGitSubmoduleManagerTest, MovesAnUninitializedOneWithoutADirectory) {
    addSubmodule("old");
    gitInRepository({"submodule", "--quiet", "deinit", "old"});
    fs::remove(pathInRepository("old"));
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    const auto places = placesOf("new", "old");
    EXPECT_EQ(places.at(".gitmodules"), "new");
    EXPECT_EQ(places.at("core.worktree"), "../../../new");
    EXPECT_FALSE(existsInRepository("new"));
}

TEST_F(RVGitSubmoduleManagerTest, MovingToAnotherDepthLeavesTheLinkStale) {
    addSubmodule("old");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "deep/er/new", &error)));
    const auto places = placesOf("deep/er/new", "old");
    EXPECT_EQ(places.at(".gitmodules"), "deep/er/new");
    EXPECT_EQ(places.at("core.worktree"), "../../../deep/er/new");
    EXPECT_EQ(places.at("link"), "gitdir: ../.git/modules/old");
    EXPECT_NE(runGit({"rev-parse", "HEAD"}, pathInRepository("deep/er/new")).exitCode, 0);
}

TEST_F(RVGitSubmoduleManagerTest, MovesAnOldLayout) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "a/new", &error)));
    EXPECT_EQ(submoduleAt("a/new")->status(), RVGitSubmoduleStatusClean);
    EXPECT_EQ(runGit({"config", "core.worktree"}, pathInRepository("a/new")).exitCode, 1);
    EXPECT_EQ(runGit({"config", "core.worktree"}, repositoryPath()).exitCode, 1);
}

TEST_F(RVGitSubmoduleManagerTest, MovesALinkedWorktreeAndLeavesItsRepository) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"});
    fs::remove(pathInRepository("lib"));
    git({"worktree", "add", "-b", "wt", pathInRepository("lib")}, "library");
    gitInRepository({"submodule", "init"});
    const auto before = filesBelow(scratchPath("library"));
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 4, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("lib", "other", &error),
                           RVGitMoveFileOutsideRepositoryError));
    EXPECT_EQ(differences(before, filesBelow(scratchPath("library"))), "");
    EXPECT_TRUE(existsInRepository("lib/lib.c"));
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_TRUE(existsInRepository("new/lib.c"));
    EXPECT_EQ(differences(before, filesBelow(scratchPath("library"))), "");
}

TEST_F(RVGitSubmoduleManagerTest, StagesOnlyTheTwoPaths) {
    git({"--literal-pathspecs", "submodule", "--quiet", "add", scratchPath("library"), "*"},
        repositoryPath());
    gitInRepository({"commit", "-q", "-m", "Add"});
    writeFile("repository/file.txt", "not staged\n");
    writeFile("repository/untracked", "x");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("*", "[a-z]*", &error)));
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-only", "--no-renames"}), "*\n[a-z]*");
}

// Relocating.

TEST_F(RVGitSubmoduleManagerTest, RelocatesToAnyDepthAndKeepsBothLinksRight) {
    addSubmodule("old", "the.name");
    writeFile("repository/old/lib.c", "changed\n");
    std::string path = "old";
    for (const std::string next : {"deep/er/new", "x", "[a]/*", "sp ace/n"}) {
        SCOPED_TRACE(next);
        ASSERT_TRUE(succeeded(manager().relocateSubmoduleWithPath(path, next, &error)));
        EXPECT_EQ(placesOf(next, "the.name").at(".gitmodules"), next);
        EXPECT_EQ(gitAt(next, {"rev-parse", "HEAD"}), head());
        EXPECT_EQ(readFile(pathInRepository(next) + "/lib.c"), "changed\n");
        EXPECT_FALSE(existsInRepository(path));
        path = next;
    }
    EXPECT_EQ(gitInRepository({"diff", "--name-only"}), "sp ace/n");
}

TEST_F(RVGitSubmoduleManagerTest, RelocatesIntoAnEmptyDirectory) {
    addSubmodule("old");
    makeDirectory("repository/a/new");
    EXPECT_TRUE(succeeded(manager().relocateSubmoduleWithPath("old", "a/new", &error)));
    EXPECT_EQ(gitAt("a/new", {"rev-parse", "HEAD"}), head());
}

TEST_F(RVGitSubmoduleManagerTest, ARelocationThatFailsLeavesAllAsItWas) {
    addSubmodule("old");
    addSubmodule("uninitialized");
    writeFile("repository/full/file", "x");
    makeDirectory("repository/empty");
    stageAll();
    gitInRepository({"config", "-f", ".gitmodules", "submodule.x.path", "x"});
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("old", "full", &error),
                           RVGitMoveFileAlreadyExistsError));
    EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("old", "old", &error),
                           RVGitMoveFileSelfTargetError));
    // ".gitmodules" has a change that is not staged.
    EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("old", "empty", &error),
                           RVGitRVGitGenericError));
    EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("old", "a/b/c", &error),
                           RVGitRVGitGenericError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

// Renaming.

TEST_F(RVGitSubmoduleManagerTest, RenamesToANameOfTheSameDepth) {
    addSubmodule("libs/a", "old.name");
    addSubmodule("b");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("old.name", "new.name", &error)));
    EXPECT_THAT(placesOf("libs/a", "new.name"),
                UnorderedElementsAre(
                    Pair("index", indexEntry("libs/a")), Pair(".gitmodules", "libs/a"),
                    Pair("config", scratchPath("library")), Pair("working tree", "filled"),
                    Pair("link", "gitdir: ../../.git/modules/new.name"),
                    Pair("git directory", "there"), Pair("core.worktree", "../../../libs/a")));
    EXPECT_THAT(configText(), Not(HasSubstr("old.name")));
    EXPECT_FALSE(existsInRepository(".git/modules/old.name"));
    EXPECT_EQ(submoduleAt("libs/a")->status(), RVGitSubmoduleStatusClean);
    EXPECT_EQ(submoduleAt("b")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerTest, RenamingToAnotherDepthLeavesCoreWorktreeStale) {
    addSubmodule("lib");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("lib", "deep/er", &error)));
    const auto places = placesOf("lib", "deep/er");
    EXPECT_EQ(places.at(".gitmodules"), "lib");
    EXPECT_EQ(places.at("link"), "gitdir: ../.git/modules/deep/er");
    EXPECT_EQ(places.at("core.worktree"), "../../../lib");
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
}

TEST_F(RVGitSubmoduleManagerTest, RenamesToANameOfAnyDepthAndKeepsBothLinksRight) {
    addSubmodule("libs/a", "old");
    std::string name = "old";
    for (const std::string next : {"of/an/other", "x", "d.o/t"}) {
        SCOPED_TRACE(next);
        ASSERT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName(name, next, &error)));
        const auto places = placesOf("libs/a", next);
        EXPECT_EQ(places.at("link"), "gitdir: ../../.git/modules/" + next);
        EXPECT_EQ(
            places.at("core.worktree"),
            RVGitSubmoduleHelper::relativeWorkingTreePathForSubmoduleWithName(next, "libs/a"));
        EXPECT_EQ(places.size(), 7);
        EXPECT_EQ(submoduleAt("libs/a")->status(), RVGitSubmoduleStatusClean);
        name = next;
    }
    stageAll();
    gitInRepository({"submodule", "--quiet", "deinit", "libs/a"});
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName(name, "last", &error)));
    gitInRepository({"submodule", "--quiet", "update", "--init"});
    EXPECT_EQ(submoduleAt("libs/a")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerTest, RenamesAndRelocatesOneWithSubmodulesInIt) {
    RVGIT_TEST_NEEDS_GIT("2.23", "its mv leaves the links of nested submodules as they are");
    const auto addInner = [&](const std::string& outer, const std::string& inner,
                              const std::string& path) {
        makeLibrary(outer);
        git({"submodule", "--quiet", "add", scratchPath(inner), path}, outer);
        git({"commit", "-q", "-m", "Add"}, outer);
    };
    addInner("middle", "library", "deep/est");
    addInner("outer", "middle", "in ner");
    addSubmodule("a/outer", "outer/name", scratchPath("outer"));
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    const auto stateOfAll = [&] {
        return gitInRepository({"submodule", "--quiet", "foreach", "--recursive",
                                "git rev-parse --show-toplevel; git status --short"});
    };
    const auto expected = [&](const std::string& path) {
        const std::string outer = pathInRepository(path);
        return outer + "\n" + outer + "/in ner\n" + outer + "/in ner/deep/est";
    };
    EXPECT_EQ(stateOfAll(), expected("a/outer"));
    EXPECT_TRUE(succeeded(manager().relocateSubmoduleWithPath("a/outer", "x", &error)));
    EXPECT_EQ(stateOfAll(), expected("x"));
    std::string name = "outer/name";
    for (const std::string next : {"short", "of/an/other"}) {
        SCOPED_TRACE(next);
        EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName(name, next, &error)));
        EXPECT_EQ(stateOfAll(), expected("x"));
        name = next;
    }
    EXPECT_EQ(submoduleAt("x")->status(), RVGitSubmoduleStatusClean);
    EXPECT_FALSE(submoduleAt("x")->isDirty());

    // The same call again goes on where one of the links could not be written.
    const std::string inner = ".git/modules/of/an/other/modules/in ner/modules/deep/est/config";
    writeFile("repository/" + inner + ".lock", "");
    EXPECT_FALSE(manager().renameSubmoduleKeepingLinksWithName(name, "last", &error));
    EXPECT_TRUE(error);
    fs::remove(pathInRepository(".git/modules/last/modules/in ner/modules/deep/est/config.lock"));
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName(name, "last", &error)));
    EXPECT_EQ(stateOfAll(), expected("x"));

    // Also where git still opens the submodule, since it is not to look into those in it.
    gitInRepository({"config", "submodule.last.ignore", "dirty"});
    writeFile("repository/.git/modules/last/modules/in ner/config.lock", "");
    EXPECT_FALSE(manager().renameSubmoduleKeepingLinksWithName("last", "next", &error));
    fs::remove(pathInRepository(".git/modules/next/modules/in ner/config.lock"));
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName("last", "next", &error)));
    EXPECT_EQ(stateOfAll(), expected("x"));
}

TEST_F(RVGitSubmoduleManagerTest, OneThatTheListTakesForBrokenIsRenamedWithItsLink) {
    makeLibrary("outer");
    git({"submodule", "--quiet", "add", scratchPath("library"), "in"}, "outer");
    git({"commit", "-q", "-m", "Add"}, "outer");
    addSubmodule("lib", "name", scratchPath("outer"));
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    fs::remove_all(pathInRepository(".git/modules/name/modules/in"));
    EXPECT_EQ(submoduleAt("lib")->status(), RVGitSubmoduleStatusMissingGitDirectory);
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("name", "new", &error)));
    EXPECT_EQ(placesOf("lib", "new").at("link"), "gitdir: ../.git/modules/new");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName("new", "a/b", &error)));
    EXPECT_EQ(placesOf("lib", "a/b").at("link"), "gitdir: ../.git/modules/a/b");
    EXPECT_EQ(placesOf("lib", "a/b").at("core.worktree"), "../../../../lib");
}

TEST_F(RVGitSubmoduleManagerTest, LinksOfOtherPlacesAreLeftByARename) {
    makeLibrary("middle");
    git({"submodule", "--quiet", "add", scratchPath("library"), "inner"}, "middle");
    git({"commit", "-q", "-m", "Add"}, "middle");
    addSubmodule("lib", {}, scratchPath("middle"));
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    // A working tree elsewhere, which refers to the git directory, too.
    const std::string config = pathInRepository(".git/modules/lib/modules/inner/config");
    writeFile("elsewhere/.git", "gitdir: " + pathInRepository(".git/modules/lib/modules/inner"));
    git({"config", "-f", config, "core.worktree", scratchPath("elsewhere")});
    EXPECT_TRUE(succeeded(manager().renameSubmoduleKeepingLinksWithName("lib", "new", &error)));
    EXPECT_EQ(readFile("elsewhere/.git"),
              "gitdir: " + pathInRepository(".git/modules/lib/modules/inner"));
    EXPECT_EQ(gitLine({"config", "-f", pathInRepository(".git/modules/new/modules/inner/config"),
                       "core.worktree"}),
              scratchPath("elsewhere"));
}

TEST_F(RVGitSubmoduleManagerTest, RenamesOneWithoutAGitDirectory) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    fs::remove_all(pathInRepository(".git/modules"));
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("lib", "deep/er", &error)));
    EXPECT_THAT(placesOf("lib", "deep/er"),
                UnorderedElementsAre(Pair("index", indexEntry("lib")), Pair(".gitmodules", "lib"),
                                     Pair("working tree", "empty")));
    EXPECT_FALSE(existsInRepository(".git/modules"));
}

TEST_F(RVGitSubmoduleManagerTest, TheNameOfAnotherIsNotTaken) {
    addSubmodule("a");
    addSubmodule("b");
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("a", "b", &error),
                           RVGitMoveFileAlreadyExistsError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    // A git directory that is left of an earlier one.
    gitInRepository({"rm", "-q", "-f", "b"});
    const auto files = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("a", "b", &error), EEXIST));
    EXPECT_EQ(differences(files, filesBelow(repositoryPath())), "");
}

TEST_F(RVGitSubmoduleManagerTest, GitDirectoriesInOneAnotherAreLeftAlone) {
    // Made by a git that did not look, in this order.
    addSubmodule("inner", "lib/inner");
    addSubmodule("outer", "lib2");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "outer"});
    for (const auto& entry : fs::directory_iterator(pathInRepository(".git/modules/lib2")))
        fs::rename(entry.path(),
                   fs::path(pathInRepository(".git/modules/lib")) / entry.path().filename());
    gitInRepository(
        {"config", "-f", ".gitmodules", "--rename-section", "submodule.lib2", "submodule.lib"});
    stageAll();
    const auto before = filesBelow(repositoryPath());
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("outer", 4, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("inner", 4, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("lib", "x", &error),
                           RVGitMoveFileOutsideRepositoryError));
    EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
}

TEST_F(RVGitSubmoduleManagerTest, ModificationsThatAConfigurationHidesAreProtected) {
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

TEST_F(RVGitSubmoduleManagerTest, FindsUncommittedWorkOfEveryKind) {
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

TEST_F(RVGitSubmoduleManagerTest, WithoutARepositoryAnyFileIsUncommittedWork) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
    writeFile("repository/lib/file", "x");
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_FALSE(error);
    fs::remove_all(pathInRepository("lib"));
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
}

TEST_F(RVGitSubmoduleManagerTest, WorkThatCannotBeLookedForCountsAsThere) {
    addSubmodule("lib");
    const std::string config = readFile("repository/.git/modules/lib/config");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("--ignore-submodules=none", {.standardError = "fatal: no\n", .exitCode = 128});
    EXPECT_TRUE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(error);
}

// Updating.

TEST_F(RVGitSubmoduleManagerTest, UpdatesInitializesAndSynchronizes) {
    addSubmodule("a");
    addSubmodule("b");
    gitInRepository({"submodule", "--quiet", "deinit", "--all"});
    EXPECT_TRUE(succeeded(manager().updateAllSubmodulesWithOptions(0, &error)));
    EXPECT_EQ(placesOf("a", "a").at("working tree"), "empty");
    EXPECT_TRUE(succeeded(manager().initSubmoduleAtPath("a", &error)));
    EXPECT_EQ(placesOf("a", "a").at("config"), scratchPath("library"));
    EXPECT_THAT(placesOf("b", "b"), Not(Contains(Key("config"))));
    EXPECT_TRUE(succeeded(manager().updateSubmoduleAtPath("a", 0, &error)));
    EXPECT_EQ(readFile("repository/a/lib.c"), "int one;\n");
    EXPECT_TRUE(succeeded(
        manager().updateSubmoduleAtPaths({"b"}, RVGitSubmoduleUpdateOptionInitialize, &error)));
    EXPECT_EQ(readFile("repository/b/lib.c"), "int one;\n");

    makeLibrary("other");
    for (const char* name : {"a", "b"})
        gitInRepository({"config", "-f", ".gitmodules", std::string("submodule.") + name + ".url",
                         scratchPath("other")});
    EXPECT_TRUE(succeeded(manager().synchronizeURLForSubmoduleAtPath("a", &error)));
    EXPECT_EQ(placesOf("a", "a").at("config"), scratchPath("other"));
    EXPECT_EQ(gitAt("a", {"config", "remote.origin.url"}), scratchPath("other"));
    EXPECT_EQ(placesOf("b", "b").at("config"), scratchPath("library"));
    EXPECT_TRUE(succeeded(manager().synchronizeAllSubmoduleURLs(&error)));
    EXPECT_EQ(placesOf("b", "b").at("config"), scratchPath("other"));

    gitInRepository({"submodule", "--quiet", "deinit", "--all", "-f"});
    EXPECT_TRUE(succeeded(manager().initSubmodulesAtPaths({"a", "b"}, &error)));
    EXPECT_EQ(placesOf("b", "b").at("config"), scratchPath("other"));
    gitInRepository({"submodule", "--quiet", "deinit", "--all", "-f"});
    EXPECT_TRUE(succeeded(manager().initAllSubmodules(&error)));
    EXPECT_EQ(placesOf("a", "a").at("config"), scratchPath("other"));
}

TEST_F(RVGitSubmoduleManagerTest, AnEmptyListOfPathsIsNotAll) {
    addSubmodule("a");
    gitInRepository({"submodule", "--quiet", "deinit", "--all"});
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_TRUE(manager().updateSubmoduleAtPaths({}, 7, &error));
    EXPECT_TRUE(manager().initSubmodulesAtPaths({}, &error));
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, ForceThrowsChangesAwayAndNothingElseDoes) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "changed\n");
    for (const unsigned options : {0U, 1U, 2U, 3U}) {
        EXPECT_TRUE(succeeded(manager().updateAllSubmodulesWithOptions(options, &error)));
        EXPECT_EQ(readFile("repository/lib/lib.c"), "changed\n");
    }
    EXPECT_TRUE(succeeded(
        manager().updateAllSubmodulesWithOptions(RVGitSubmoduleUpdateOptionForce, &error)));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
}

TEST_F(RVGitSubmoduleManagerTest, TheErrorOfAnUpdateIsReported) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    fs::remove_all(pathInRepository(".git/modules"));
    fs::remove_all(scratchPath("library"));
    EXPECT_FALSE(manager().updateAllSubmodulesWithOptions(1, &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitSubmoduleManagerTest, TheRepositoryForwards) {
    const auto r = RVGitRepository::repositoryWithPath(repositoryPath());
    EXPECT_EQ(r->submoduleManager(), r->submoduleManager());
    EXPECT_EQ(r->submoduleManager()->repository(), r);
    EXPECT_TRUE(succeeded(r->canAddSubmoduleAtPath("a", &error)));
    EXPECT_TRUE(succeeded(r->addSubmoduleWithURL(scratchPath("library"), "a", 0, &error)));
    EXPECT_TRUE(succeeded(r->moveSubmoduleAtPath("a", "b", &error)));
    EXPECT_TRUE(succeeded(r->renameSubmoduleWithName("a", "c", &error)));
    stageAll();
    EXPECT_TRUE(succeeded(r->initAllSubmodules(&error)));
    EXPECT_TRUE(succeeded(r->initSubmoduleAtPath("b", &error)));
    EXPECT_TRUE(succeeded(r->initSubmodulesAtPaths({"b"}, &error)));
    EXPECT_TRUE(succeeded(r->synchronizeAllSubmoduleURLs(&error)));
    EXPECT_TRUE(succeeded(r->synchronizeURLForSubmoduleAtPath("b", &error)));
    EXPECT_TRUE(succeeded(r->updateAllSubmodulesWithOptions(0, &error)));
    EXPECT_TRUE(succeeded(r->updateSubmoduleAtPath("b", 0, &error)));
    EXPECT_TRUE(succeeded(r->removeSubmoduleAtPath("b", 4, &error)));
    EXPECT_THAT(placesOf("b", "c"), IsEmpty());
}

TEST_F(RVGitSubmoduleManagerTest, TheRepositorysManagerDoesNotKeepItAlive) {
    auto owner = RVGitRepository::repositoryWithPath(repositoryPath());
    const std::weak_ptr<RVGitRepository> observer = owner;
    auto owned = owner->submoduleManager();
    owner.reset();
    EXPECT_FALSE(observer.expired());
    owned.reset();
    EXPECT_TRUE(observer.expired());
}

}  // namespace
