// What is left where one step of an add, update, init or sync fails, and that the same call copes
// with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

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
using testing::AnyOf;
using testing::Contains;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

class RVGitSubmoduleManagerUpdatingTest : public RVGitOneSubmoduleTestCase {
protected:
    /// What fails in it changes nothing.
    void expectNoChange(const std::function<void()>& failing) {
        const auto before = filesBelow(repositoryPath());
        failing();
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    }
    void withLockedConfiguration(const std::function<void()>& failing) {
        for (const bool isDirectory : {false, true}) {
            if (isDirectory)
                makeDirectory("repository/.git/config.lock");
            else
                lock(".git/config");
            expectNoChange(failing);
            unlock(".git/config");
        }
    }
    /// With each of the directories in turn that may not be written in.
    void withProtected(const std::vector<std::string>& directories,
                       const std::function<void()>& failing) {
        for (const std::string& directory : directories) {
            SCOPED_TRACE(directory);
            protectDirectory(directory);
            expectNoChange(failing);
            unprotect();
        }
    }

    [[nodiscard]] RVGitSubmoduleStatus statusOf(const std::string& path) const {
        const auto submodule = submoduleAt(path);
        return submodule ? submodule->status() : RVGitSubmoduleStatusNone;
    }

    [[nodiscard]] bool isDirty(const std::string& path) const {
        const auto submodule = submoduleAt(path);
        return submodule && submodule->isDirty();
    }

    // Adding "new".

    [[nodiscard]] bool add(const std::string& path = "new") {
        return manager().addSubmoduleWithURL(scratchPath("library"), path, 0, &error);
    }
    /// The same call again copes, and nothing is missing then.
    void addsNow(const std::string& path = "new") {
        EXPECT_TRUE(succeeded(add(path)));
        EXPECT_EQ(places(path, path).size(), 7U);
        EXPECT_EQ(statusOf(path), RVGitSubmoduleStatusClean);
        EXPECT_FALSE(isDirty(path));
        EXPECT_EQ(gitInRepository({"status", "--short"}), "M  .gitmodules\nA  " + path);
        EXPECT_TRUE(failedWith(add(path), RVGitAddSubmodulePathAlreadyExistsError));
    }

    // Updating "lib".

    /// "lib" has another commit checked out than the recorded one, with another "lib.c".
    void checkOutAnother() {
        writeFile("repository/lib/lib.c", "int two;\n");
        gitAt("lib", {"commit", "-q", "-a", "-m", "Two"});
    }
    void deinit() const { gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"}); }
    void deinitAndRemoveGitDirectory() {
        deinit();
        fs::remove_all(pathInRepository(".git/modules/name"));
        gitInRepository({"submodule", "--quiet", "init"});
    }
    [[nodiscard]] bool update(unsigned options = 0) {
        return manager().updateAllSubmodulesWithOptions(options, &error);
    }
    void updatesNow(unsigned options = 0) {
        EXPECT_TRUE(succeeded(update(options)));
        EXPECT_EQ(places().size(), 7U);
        EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusClean);
        EXPECT_FALSE(isDirty("lib"));
        EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
    }

    // Synchronizing "lib", whose address has changed to "/elsewhere".

    void changeAddress() const {
        gitInRepository({"config", "-f", ".gitmodules", "submodule.name.url", "/elsewhere"});
    }
    [[nodiscard]] std::string remoteAddress() const {
        return gitAt("lib", {"config", "remote.origin.url"});
    }
    [[nodiscard]] bool sync() { return manager().synchronizeAllSubmoduleURLs(&error); }
    void synchronizesNow() {
        EXPECT_TRUE(succeeded(sync()));
        EXPECT_EQ(places().at("config"), "/elsewhere");
        EXPECT_EQ(remoteAddress(), "/elsewhere");
        EXPECT_EQ(places().size(), 7U);
    }

    [[nodiscard]] bool init() { return manager().initAllSubmodules(&error); }
    void initializesNow() {
        EXPECT_TRUE(succeeded(init()));
        EXPECT_EQ(places().at("config"), scratchPath("library"));
    }
};

// Locks.

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWithALockedIndexDoesNothing) {
    lock(".git/index");
    // Older gits do not say why.
    EXPECT_TRUE(failedWith(
        add(), isTestedGitAtLeast("2.34") ? RVGitIndexLockError : RVGitRVGitGenericError));
    EXPECT_THAT(places("new", "new"), IsEmpty());
    unlock(".git/index");
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWithALockedSubmodulesFile) {
    lock(".gitmodules");
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    EXPECT_THAT(places("new", "new"),
                UnorderedElementsAre(Pair("index", _), Pair("config", _),
                                     Pair("working tree", "filled"), Pair("link", _),
                                     Pair("git directory", "there"), Pair("core.worktree", _)));
    unlock(".gitmodules");
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWithALockedConfigurationIsNoSuccess) {
    lock(".git/config");
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    EXPECT_THAT(places("new", "new"), Not(Contains(Key("config"))));
    EXPECT_EQ(places("new", "new").size(), 6U);
    unlock(".git/config");
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, UpdatingWithALockedIndexOfTheSubmodule) {
    checkOutAnother();
    lock(".git/modules/name/index");
    const auto before = filesBelow(pathInRepository("lib"));
    EXPECT_TRUE(failedWith(update(), RVGitIndexLockError));
    EXPECT_EQ(differences(before, filesBelow(pathInRepository("lib"))), "");
    EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusUpdated);
    unlock(".git/modules/name/index");
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, UpdatingWithALockedConfigurationOfTheSubmodule) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it writes no configuration of a submodule");
    checkOutAnother();
    lock(".git/modules/name/config");
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusUpdated);
    unlock(".git/modules/name/config");
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, InitializingWithALockedConfigurationDoesNothing) {
    deinit();
    withLockedConfiguration([&] {
        EXPECT_TRUE(failedWith(init(), RVGitRVGitGenericError));
        EXPECT_TRUE(
            failedWith(update(RVGitSubmoduleUpdateOptionInitialize), RVGitRVGitGenericError));
        EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusUninitialized);
    });
    initializesNow();
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, SynchronizingWithALockedConfigurationDoesNothing) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it changes the submodule first");
    changeAddress();
    withLockedConfiguration([&] { EXPECT_TRUE(failedWith(sync(), RVGitRVGitGenericError)); });
    synchronizesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, SynchronizingWithALockedConfigurationOfTheSubmodule) {
    changeAddress();
    lock(".git/modules/name/config");
    EXPECT_TRUE(failedWith(sync(), RVGitRVGitGenericError));
    EXPECT_EQ(places().at("config"), "/elsewhere");
    EXPECT_EQ(remoteAddress(), scratchPath("library"));
    unlock(".git/modules/name/config");
    synchronizesNow();
}

// Something in the way.

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWhereADirectoryIsInTheWay) {
    writeFile("repository/new/mine", "mine\n");
    EXPECT_TRUE(failedWith(add(), RVGitAddSubmodulePathAlreadyExistsError));
    EXPECT_EQ(error->userInfoString(RVGitSubmodulePathErrorKey), "new");
    EXPECT_THAT(places("new", "new"), UnorderedElementsAre(Pair("working tree", "filled")));
    EXPECT_EQ(readFile("repository/new/mine"), "mine\n");
    // An empty one makes room, and comes back where nothing else fills it.
    fs::remove(pathInRepository("new/mine"));
    EXPECT_FALSE(manager().addSubmoduleWithURL(scratchPath("nowhere"), "new", 0, &error));
    EXPECT_THAT(places("new", "new"), UnorderedElementsAre(Pair("working tree", "empty")));
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWhereTheGitDirectoryIsInTheWay) {
    git({"clone", "-q", "--bare", scratchPath("library"), pathInRepository(".git/modules/new")});
    EXPECT_TRUE(failedWith(add(), RVGitAddSubmoduleGitDirectoryAlreadyExistsError));
    EXPECT_THAT(places("new", "new"), UnorderedElementsAre(Pair("git directory", "there")));
    fs::remove_all(pathInRepository(".git/modules/new"));
    writeFile("repository/.git/modules/new", "a file\n");
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    // Git leaves an empty directory.
    EXPECT_THAT(places("new", "new"), UnorderedElementsAre(Pair("working tree", "empty")));
    EXPECT_EQ(readFile("repository/.git/modules/new"), "a file\n");
    fs::remove(pathInRepository(".git/modules/new"));
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, ASectionThatIsNotStagedIsStagedByTheSameCall) {
    for (const std::string path : {"new", "q\"q\\q"}) {
        EXPECT_TRUE(succeeded(add(path)));
        gitInRepository({"reset", "-q", "HEAD", "--", ".gitmodules"});
        EXPECT_TRUE(succeeded(add(path)));
        EXPECT_EQ(gitInRepository({"diff", "--name-only"}), "");
        EXPECT_TRUE(failedWith(add(path), RVGitAddSubmodulePathAlreadyExistsError));
        gitInRepository({"commit", "-q", "-m", "Add"});
    }
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, OneThatIsHalfAddedIsNotTakenForAnother) {
    lock(".gitmodules");
    EXPECT_FALSE(add());
    unlock(".gitmodules");
    const auto before = places("new", "new");
    // Another commit than the recorded one would be staged.
    commitInSubmodule("new");
    EXPECT_TRUE(failedWith(add(), RVGitAddSubmodulePathAlreadyExistsError));
    EXPECT_EQ(places("new", "new"), before);
    gitAt("new", {"reset", "-q", "--hard", "HEAD~1"});
    declareSubmodule("new", "new", "/another");
    EXPECT_TRUE(failedWith(add(), RVGitAddSubmodulePathAlreadyExistsError));
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-only"}), "new");
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, CloningWhereADirectoryOrAFileIsInTheWay) {
    deinitAndRemoveGitDirectory();
    writeFile("repository/lib/mine", "mine\n");
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    EXPECT_EQ(readFile("repository/lib/mine"), "mine\n");
    EXPECT_THAT(places(), UnorderedElementsAre(Pair("index", _), Pair(".gitmodules", _),
                                               Pair("config", _), Pair("working tree", "filled")));
    fs::remove_all(pathInRepository("lib"));
    writeFile("repository/lib", "mine\n");
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    EXPECT_EQ(readFile("repository/lib"), "mine\n");
    fs::remove(pathInRepository("lib"));
    writeFile("repository/.git/modules/name", "a file\n");
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    fs::remove(pathInRepository(".git/modules/name"));
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, UpdatingAllReadsTheIndexOnce) {
    const RVRecordingGit recorder = useRecordingGit();
    ASSERT_TRUE(manager().updateAllSubmodulesWithOptions(0));
    // git submodule itself asks with other options.
    const auto lists = recorder.argumentLists();
    EXPECT_EQ(std::ranges::count_if(lists,
                                    [](const std::vector<std::string>& arguments) {
                                        return std::ranges::count(arguments, "--no-pager") > 0 &&
                                               std::ranges::count(arguments, "ls-files") > 0;
                                    }),
              1);
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, FilesInTheWayOfACheckoutAreNotReplaced) {
    deinit();
    const auto refuses = [&](unsigned options = RVGitSubmoduleUpdateOptionInitialize) {
        const auto before = filesBelow(repositoryPath());
        EXPECT_TRUE(failedWith(update(options), RVGitAddSubmodulePathAlreadyExistsError));
        EXPECT_EQ(error->userInfoString(RVGitSubmodulePathErrorKey), "lib");
        EXPECT_TRUE(failedWith(manager().updateSubmoduleAtPaths({"./lib/"}, options, &error),
                               RVGitAddSubmodulePathAlreadyExistsError));
        EXPECT_EQ(differences(before, filesBelow(repositoryPath())), "");
    };
    // One that git does not check out is no matter.
    writeFile("repository/lib/lib.c", "mine\n");
    EXPECT_TRUE(succeeded(update()));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "mine\n");
    refuses();
    refuses(RVGitSubmoduleUpdateOptionInitialize | RVGitSubmoduleUpdateOptionRecursive);
    gitInRepository({"submodule", "--quiet", "init"});
    refuses(0);
    fs::remove(pathInRepository("lib/lib.c"));
    writeFile("repository/lib/lib.c/mine", "mine\n");
    refuses();
    // What belongs to another commit, and what stays.
    fs::remove_all(pathInRepository("lib/lib.c"));
    writeFile("repository/lib/lib.c", "int one;\n");
    writeFile("repository/lib/mine", "mine\n");
    // Older gits call a submodule dirty that has an untracked file.
    if (!isTestedGitAtLeast("2.31"))
        writeFile("repository/.git/modules/name/info/exclude", "mine\n");
    updatesNow();
    EXPECT_EQ(readFile("repository/lib/mine"), "mine\n");

    deinit();
    writeFile("repository/lib/lib.c", "mine\n");
    updatesNow(RVGitSubmoduleUpdateOptionInitialize | RVGitSubmoduleUpdateOptionForce);
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, FilesInTheWayDeepInsideAreNotReplaced) {
    makeLibrary("middle");
    git({"submodule", "--quiet", "add", scratchPath("library"), "inner"}, "middle");
    git({"commit", "-q", "-m", "Add"}, "middle");
    addSubmodule("outer", {}, scratchPath("middle"));
    EXPECT_TRUE(succeeded(
        update(RVGitSubmoduleUpdateOptionInitialize | RVGitSubmoduleUpdateOptionRecursive)));
    gitAt("outer", {"submodule", "--quiet", "deinit", "inner"});
    gitAt("outer", {"submodule", "--quiet", "init"});
    writeFile("repository/outer/inner/lib.c", "mine\n");
    EXPECT_TRUE(failedWith(update(RVGitSubmoduleUpdateOptionRecursive),
                           RVGitAddSubmodulePathAlreadyExistsError));
    EXPECT_EQ(error->userInfoString(RVGitSubmodulePathErrorKey), "inner");
    EXPECT_TRUE(succeeded(update()));
    EXPECT_EQ(readFile("repository/outer/inner/lib.c"), "mine\n");
}

// Missing permissions.

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWhereADirectoryMayNotBeWrittenIn) {
    // "Permission denied", which counts as said by a server; older gits do not always say why.
    withProtected({".", ".git", ".git/modules"}, [&] {
        EXPECT_FALSE(add());
        ASSERT_TRUE(error);
        if (isTestedGitAtLeast("2.34"))
            EXPECT_EQ(error->code(), RVGitRemoteAuthError);
        else
            EXPECT_THAT(error->code(), AnyOf(RVGitRemoteAuthError, RVGitRVGitGenericError));
    });
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, AddingWhereNothingCanBeStaged) {
    protectDirectory(".git/objects");
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    EXPECT_EQ(places("new", "new").size(), 7U);
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-only"}), "new");
    unprotect();
    addsNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, UpdatingWhereTheGitDirectoryMayNotBeWrittenIn) {
    checkOutAnother();
    protectDirectory(".git/modules/name");
    // Older gits do not say why.
    EXPECT_TRUE(failedWith(
        update(), isTestedGitAtLeast("2.39") ? RVGitRemoteAuthError : RVGitRVGitGenericError));
    EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusUpdated);
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int two;\n");
    unprotect();
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, UpdatingWhereTheWorkingTreeMayNotBeWrittenIn) {
    checkOutAnother();
    protectDirectory("lib");
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    // Git has gone to the recorded commit without the files.
    EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusClean);
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int two;\n");
    EXPECT_TRUE(isDirty("lib"));
    unprotect();
    // The file counts as changed by the user now, and is kept.
    EXPECT_TRUE(succeeded(update()));
    EXPECT_TRUE(isDirty("lib"));
    updatesNow(RVGitSubmoduleUpdateOptionForce);
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, CloningWhereADirectoryMayNotBeWrittenIn) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it removes the directory where its clone fails");
    deinitAndRemoveGitDirectory();
    withProtected({".git/modules", "lib"},
                  [&] { EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError)); });
    updatesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, InitializingWhereTheConfigurationMayNotBeWritten) {
    deinit();
    withProtected({".git"}, [&] {
        EXPECT_TRUE(failedWith(init(), RVGitRemoteAuthError));
        EXPECT_TRUE(failedWith(update(RVGitSubmoduleUpdateOptionInitialize), RVGitRemoteAuthError));
    });
    initializesNow();
}

TEST_F(RVGitSubmoduleManagerUpdatingTest, SynchronizingWhereAConfigurationMayNotBeWritten) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it changes the submodule first");
    changeAddress();
    withProtected({".git"}, [&] { EXPECT_TRUE(failedWith(sync(), RVGitRemoteAuthError)); });
    protectDirectory(".git/modules/name");
    EXPECT_TRUE(failedWith(sync(), RVGitRemoteAuthError));
    EXPECT_EQ(places().at("config"), "/elsewhere");
    EXPECT_EQ(remoteAddress(), scratchPath("library"));
    unprotect();
    synchronizesNow();
}

// A full disk.

class RVGitSubmoduleUpdatingFullDiskTest : public RVGitSubmoduleManagerUpdatingTest {
protected:
    /// The library gets a file that is larger than what is left on the disk.
    void makeLibraryLarge() const {
        std::string contents(400'000, 'x');
        std::uint32_t state = 1;
        // Not to be made smaller.
        for (char& byte : contents)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        commitFile("library", "big", contents, "Grow");
    }
};

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, Adding) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    fillDisk();
    const auto before = places();
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    EXPECT_THAT(places("new", "new"), IsEmpty());
    EXPECT_EQ(places(), before);
    makeRoom();
    addsNow();
}

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, AddingWithoutRoomForTheFiles) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    makeLibraryLarge();
    fillDisk(200'000);
    EXPECT_TRUE(failedWith(add(), RVGitRVGitGenericError));
    EXPECT_THAT(places("new", "new"),
                UnorderedElementsAre(Pair("working tree", "filled"), Pair("link", _),
                                     Pair("git directory", "there"), Pair("core.worktree", _)));
    makeRoom();
    EXPECT_TRUE(succeeded(add()));
    EXPECT_EQ(places("new", "new").size(), 7U);
    EXPECT_TRUE(isDirty("new"));
    EXPECT_TRUE(
        succeeded(manager().updateSubmoduleAtPath("new", RVGitSubmoduleUpdateOptionForce, &error)));
    EXPECT_FALSE(isDirty("new"));
}

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, Updating) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it replaces files where the disk is full");
    RVGIT_TEST_NEEDS_SMALL_DISK();
    checkOutAnother();
    fillDisk();
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int two;\n");
    makeRoom();
    EXPECT_EQ(statusOf("lib"), RVGitSubmoduleStatusUpdated);
    updatesNow();
}

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, UpdatingWithoutRoomForTheFiles) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    makeLibraryLarge();
    gitAt("lib", {"pull", "-q"});
    gitInRepository({"commit", "-q", "-a", "-m", "Grow"});
    deinitAndRemoveGitDirectory();
    fillDisk(200'000);
    EXPECT_TRUE(failedWith(update(), RVGitRVGitGenericError));
    makeRoom();
    // For git nothing is left to be done.
    EXPECT_TRUE(succeeded(update()));
    EXPECT_TRUE(isDirty("lib"));
    updatesNow(RVGitSubmoduleUpdateOptionForce);
}

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, Initializing) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    deinit();
    fillDisk();
    const std::string before = readFile("repository/.git/config");
    EXPECT_TRUE(failedWith(init(), RVGitRVGitGenericError));
    EXPECT_EQ(readFile("repository/.git/config"), before);
    EXPECT_FALSE(existsInRepository(".git/config.lock"));
    makeRoom();
    initializesNow();
}

TEST_F(RVGitSubmoduleUpdatingFullDiskTest, Synchronizing) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    changeAddress();
    fillDisk();
    const std::string before = readFile("repository/.git/config");
    EXPECT_TRUE(failedWith(sync(), RVGitRVGitGenericError));
    EXPECT_EQ(readFile("repository/.git/config"), before);
    EXPECT_EQ(remoteAddress(), scratchPath("library"));
    makeRoom();
    synchronizesNow();
}

}  // namespace
