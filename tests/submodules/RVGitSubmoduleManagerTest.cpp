#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "tests/submodules/RVGitSubmoduleManagerTestCase.h"

namespace fs = std::filesystem;

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerTest : public RVGitSubmoduleManagerTestCase {};

TEST_F(RVGitSubmoduleManagerTest, RequiresARepository) {
    EXPECT_THROW(RVGitSubmoduleManager(std::shared_ptr<RVGitRepository>()),
                 RVInvalidParameterException);
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

// The repository.

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
