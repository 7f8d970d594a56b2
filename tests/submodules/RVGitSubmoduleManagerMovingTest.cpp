#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "tests/submodules/RVGitSubmoduleManagerTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerMovingTest : public RVGitSubmoduleManagerTestCase {};

// Moving.

TEST_F(RVGitSubmoduleManagerMovingTest, MovesToAPathOfTheSameDepth) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, MovesWithItsChanges) {
    addSubmodule("old");
    writeFile("repository/old/lib.c", "changed\n");
    writeFile("repository/old/new", "x");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    EXPECT_EQ(readFile("repository/new/lib.c"), "changed\n");
    EXPECT_EQ(readFile("repository/new/new"), "x");
}

TEST_F(RVGitSubmoduleManagerMovingTest, AnEmptyDirectoryMakesRoom) {
    addSubmodule("old");
    makeDirectory("repository/new");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    EXPECT_EQ(submoduleAt("new")->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleManagerMovingTest, SomethingInTheWayFailsInTheMoveAndNothingLaterHappens) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, MovesAnUninitializedOneWithoutADirectory) {
    addSubmodule("old");
    gitInRepository({"submodule", "--quiet", "deinit", "old"});
    fs::remove(pathInRepository("old"));
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "new", &error)));
    const auto places = placesOf("new", "old");
    EXPECT_EQ(places.at(".gitmodules"), "new");
    EXPECT_EQ(places.at("core.worktree"), "../../../new");
    EXPECT_FALSE(existsInRepository("new"));
}

TEST_F(RVGitSubmoduleManagerMovingTest, MovingToAnotherDepthLeavesTheLinkStale) {
    addSubmodule("old");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "deep/er/new", &error)));
    const auto places = placesOf("deep/er/new", "old");
    EXPECT_EQ(places.at(".gitmodules"), "deep/er/new");
    EXPECT_EQ(places.at("core.worktree"), "../../../deep/er/new");
    EXPECT_EQ(places.at("link"), "gitdir: ../.git/modules/old");
    EXPECT_NE(runGit({"rev-parse", "HEAD"}, pathInRepository("deep/er/new")).exitCode, 0);
}

TEST_F(RVGitSubmoduleManagerMovingTest, MovesAnOldLayout) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("old", "a/new", &error)));
    EXPECT_EQ(submoduleAt("a/new")->status(), RVGitSubmoduleStatusClean);
    EXPECT_EQ(runGit({"config", "core.worktree"}, pathInRepository("a/new")).exitCode, 1);
    EXPECT_EQ(runGit({"config", "core.worktree"}, repositoryPath()).exitCode, 1);
}

TEST_F(RVGitSubmoduleManagerMovingTest, MovesALinkedWorktreeAndLeavesItsRepository) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, StagesOnlyTheTwoPaths) {
    git({"--literal-pathspecs", "submodule", "--quiet", "add", scratchPath("library"), "*"},
        repositoryPath());
    gitInRepository({"commit", "-q", "-m", "Add"});
    writeFile("repository/file.txt", "not staged\n");
    writeFile("repository/untracked", "x");
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("*", "[a-z]*", &error)));
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-only", "--no-renames"}), "*\n[a-z]*");
}

// Relocating.

TEST_F(RVGitSubmoduleManagerMovingTest, RelocatesToAnyDepthAndKeepsBothLinksRight) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, RelocatesIntoAnEmptyDirectory) {
    addSubmodule("old");
    makeDirectory("repository/a/new");
    EXPECT_TRUE(succeeded(manager().relocateSubmoduleWithPath("old", "a/new", &error)));
    EXPECT_EQ(gitAt("a/new", {"rev-parse", "HEAD"}), head());
}

TEST_F(RVGitSubmoduleManagerMovingTest, ARelocationThatFailsLeavesAllAsItWas) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, RenamesToANameOfTheSameDepth) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, RenamingToAnotherDepthLeavesCoreWorktreeStale) {
    addSubmodule("lib");
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("lib", "deep/er", &error)));
    const auto places = placesOf("lib", "deep/er");
    EXPECT_EQ(places.at(".gitmodules"), "lib");
    EXPECT_EQ(places.at("link"), "gitdir: ../.git/modules/deep/er");
    EXPECT_EQ(places.at("core.worktree"), "../../../lib");
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
}

TEST_F(RVGitSubmoduleManagerMovingTest, RenamesToANameOfAnyDepthAndKeepsBothLinksRight) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, RenamesAndRelocatesOneWithSubmodulesInIt) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, OneThatTheListTakesForBrokenIsRenamedWithItsLink) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, LinksOfOtherPlacesAreLeftByARename) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, RenamesOneWithoutAGitDirectory) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "lib"});
    fs::remove_all(pathInRepository(".git/modules"));
    EXPECT_TRUE(succeeded(manager().renameSubmoduleWithName("lib", "deep/er", &error)));
    EXPECT_THAT(placesOf("lib", "deep/er"),
                UnorderedElementsAre(Pair("index", indexEntry("lib")), Pair(".gitmodules", "lib"),
                                     Pair("working tree", "empty")));
    EXPECT_FALSE(existsInRepository(".git/modules"));
}

TEST_F(RVGitSubmoduleManagerMovingTest, TheNameOfAnotherIsNotTaken) {
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

TEST_F(RVGitSubmoduleManagerMovingTest, GitDirectoriesInOneAnotherAreLeftAlone) {
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

}  // namespace
