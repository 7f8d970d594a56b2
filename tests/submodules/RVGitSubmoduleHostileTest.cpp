// Superprojects of strangers: whatever ".gitmodules" says, nothing outside of the working tree and
// of the folder "modules" is touched.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::AnyOf;
using testing::IsEmpty;

class RVGitSubmoduleHostileTest : public RVGitSubmoduleTestCase {
protected:
    RVGitSubmoduleHostileTest() {
        // What a stranger would like to reach.
        writeFile("precious/file", "precious\n");
        writeFile("precious/HEAD", "ref: refs/heads/main\n");
        writeFile("precious/config", "[core]\n");
        makeDirectory("precious/objects");
        makeDirectory("precious/empty");
        writeFile("repository/src/work", "uncommitted\n");
        fs::create_symlink(scratchPath("precious"), pathInRepository("link"));
    }

    /// All that no operation may change: what is outside of the superproject, and of its git
    /// directory all but the folder "modules", the configuration, the index and its objects.
    [[nodiscard]] std::map<std::string, std::string> untouchable() const {
        std::map<std::string, std::string> files;
        for (const auto& [name, contents] : filesBelow(scratchDirectory())) {
            const bool mayChange =
                name.starts_with("repository/.git/modules") ||
                (name.starts_with("repository/") && !name.starts_with("repository/.git/") &&
                 !name.starts_with("repository/src/") && name != "repository/link") ||
                name == "repository/.git/config" || name.starts_with("repository/.git/objects/");
            if (!mayChange)
                files.emplace(name, contents);
        }
        return files;
    }

    /// Every operation, with every option, on what the file says.
    void runEverythingOn(const std::string& name, const std::string& path) {
        for (unsigned options = 0; options < 8; ++options)
            (void)manager().removeSubmoduleAtPath(path, options & ~1U, &error);
        // A directory of the superproject may be moved, and loses nothing by it.
        if (!path.starts_with("src") || path.find("..") != std::string::npos)
            (void)manager().moveSubmoduleWithPath(path, "moved", &error);
        (void)manager().relocateSubmoduleWithPath(path, "relocated", &error);
        (void)manager().renameSubmoduleWithName(name, "renamed", &error);
        (void)manager().submoduleContainsUncommittedWork(path, &error);
        (void)manager().initAllSubmodules(&error);
        (void)manager().initSubmoduleAtPath(path, &error);
        (void)manager().synchronizeAllSubmoduleURLs(&error);
        (void)manager().synchronizeURLForSubmoduleAtPath(path, &error);
        (void)manager().updateAllSubmodulesWithOptions(7, &error);
        (void)manager().updateSubmoduleAtPath(path, 7, &error);
        (void)manager().canAddSubmoduleAtPath(path, &error);
        (void)manager().addSubmoduleWithURL(scratchPath("library"), path, 1, &error);
    }

    void pathsLeadNowhere(const std::vector<std::string>& paths) {
        addSubmodule("lib");
        const std::string configuration = readFile("repository/.git/config");
        for (const std::string& path : paths) {
            SCOPED_TRACE(testing::PrintToString(path));
            const auto before = untouchable();
            declareSubmodule("evil", path);
            runEverythingOn("evil", path);
            EXPECT_EQ(differences(before, untouchable()), "");
            EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
            gitInRepository({"submodule", "--quiet", "deinit", "-f", "--all"});
            writeFile("repository/.git/config", configuration);
            gitInRepository({"reset", "-q", "--hard"});
            for (const char* leftover : {"moved", "relocated"})
                fs::remove_all(pathInRepository(leftover));
            gitInRepository({"submodule", "--quiet", "update", "--init"});
        }
    }
};

const std::vector<std::string> hostilePaths = {"../precious",
                                               "../../x",
                                               "a/../../precious",
                                               "..",
                                               ".",
                                               "./",
                                               "/",
                                               "a/../../.git/hooks",
                                               ".git",
                                               ".git/hooks",
                                               ".GIT/hooks",
                                               "lib/.git",
                                               "link",
                                               "link/empty",
                                               "link/../../precious",
                                               "src/../../precious",
                                               "-u",
                                               "--force",
                                               ":(top)",
                                               ":/",
                                               "*",
                                               "src",
                                               "src/",
                                               "\n",
                                               "a\nb",
                                               "~/x",
                                               "\xff\xfe"};

class RVGitSubmoduleHostileSlowTest : public RVGitSubmoduleHostileTest {};

TEST_F(RVGitSubmoduleHostileTest, APipeInPlaceOfTheSubmodulesFileIsNotWaitedFor) {
    const std::string file = repositoryPath() + "/.gitmodules";
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    std::optional<RVError> failure;
    EXPECT_FALSE(repository()->allSubmoduleNames(&failure));
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code(), RVGitConfigReadError);
    EXPECT_EQ(failure->userInfoString(RVGitConfigFileErrorKey), file);
    failure.reset();
    EXPECT_FALSE(repository()->allSubmodules(&failure));
    EXPECT_TRUE(failure);
    failure.reset();
    EXPECT_FALSE(repository()->addSubmoduleWithURL("url", "lib", 0, &failure));
    EXPECT_TRUE(failure);
    std::filesystem::remove(file);
}

TEST_F(RVGitSubmoduleHostileSlowTest, PathsInTheSubmodulesFileLeadNowhere) {
    pathsLeadNowhere(hostilePaths);
}

TEST_F(RVGitSubmoduleHostileTest, PathsInTheSubmodulesFileLeadNowhere) {
    pathsLeadNowhere({"../precious", "link", "*"});
}

TEST_F(RVGitSubmoduleHostileTest, AbsolutePathsLeadNowhere) {
    const auto before = untouchable();
    for (const std::string& path : {scratchPath("precious"), scratchPath("precious/empty"),
                                    repositoryPath(), pathInRepository("src")}) {
        SCOPED_TRACE(path);
        declareSubmodule("evil", path);
        runEverythingOn("evil", path);
        EXPECT_EQ(differences(before, untouchable()), "");
    }
}

TEST_F(RVGitSubmoduleHostileTest, NamesInTheSubmodulesFileLeadNowhere) {
    makeDirectory("repository/.git/modules");
    addSubmodule("other");
    for (const std::string name :
         {"../../x", "../../../precious", "../hooks", "..", ".", "a/../../../../precious",
          "a/../other", "./other", "other/", "/other", "other/objects", "other/../other", "-u"}) {
        SCOPED_TRACE(name);
        const auto before = untouchable();
        const auto modules = filesBelow(pathInRepository(".git/modules"));
        declareSubmodule(name, "declared");
        // Git refuses to clone it, so that there is only the entry.
        for (const unsigned options : {4U, 5U, 6U, 7U}) {
            EXPECT_FALSE(manager().removeSubmoduleAtPath("declared", options, &error) &&
                         name != "-u");
            declareSubmodule(name, "declared");
        }
        EXPECT_FALSE(manager().renameSubmoduleWithName(name, "renamed", &error) && name != "-u");
        (void)manager().moveSubmoduleWithPath("declared", "moved", &error);
        (void)manager().updateAllSubmodulesWithOptions(3, &error);
        EXPECT_EQ(differences(before, untouchable()), "");
        EXPECT_EQ(differences(modules, filesBelow(pathInRepository(".git/modules"))), "");
        gitInRepository({"reset", "-q", "--hard"});
    }
}

TEST_F(RVGitSubmoduleHostileTest, ARemovalOfAGitDirectoryOutsideFailsBeforeItsFirstStep) {
    RVGIT_TEST_NEEDS_GIT("2.20", "its deinit fails where it ignores the name");
    addSubmodule("lib");
    gitInRepository({"config", "-f", ".gitmodules", "--rename-section", "submodule.lib",
                     "submodule.../../../precious"});
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "--all"});
    const auto before = filesBelow(scratchDirectory());
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath(
                               "lib", RVGitSubmoduleRemoveOptionRemoveGitDirectory, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_EQ(differences(before, filesBelow(scratchDirectory())), "");
}

TEST_F(RVGitSubmoduleHostileTest, RefusalsNameWhatTheyRefuse) {
    declareSubmodule("evil", "../precious");
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("../precious", 0, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_EQ(error->localizedFailureReason(), "Could not remove file at path '../precious'.");
    EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("../precious", "new", &error),
                           RVGitMoveFileOutsideRepositoryError));
    EXPECT_EQ(error->localizedFailureReason(),
              "Could not move the file “../precious” to “new”. The destination file is outside "
              "the repository.");
    EXPECT_TRUE(failedWith(manager().updateSubmoduleAtPath("../precious", 0, &error),
                           RVGitAddSubmodulePathOutsideRepositoryError));
    EXPECT_EQ(error->localizedFailureReason(),
              "Could not add the submodule at path “../precious”. The path is outside of the "
              "repository path.");
}

TEST_F(RVGitSubmoduleHostileTest, NoOperationGoesToAPlaceOutside) {
    addSubmodule("lib");
    const auto before = filesBelow(scratchDirectory());
    for (const std::string path : {"../new", "link/new", ".git/new", "/new", "", ".", "a/../../b",
                                   "src/../.git/hooks/new"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("lib", path, &error),
                               RVGitMoveFileOutsideRepositoryError));
        EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("lib", path, &error),
                               RVGitMoveFileOutsideRepositoryError));
        EXPECT_TRUE(
            failedWith(manager().addSubmoduleWithURL(scratchPath("library"), path, 0, &error),
                       RVGitAddSubmodulePathOutsideRepositoryError));
    }
    for (const std::string name : {"../new", "..", ".", "", "/new", "a/../../b", "a//b", "new/",
                                   "a\nb", "lib/objects", "lib/new"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("lib", name, &error),
                               RVGitMoveFileOutsideRepositoryError));
    }
    EXPECT_EQ(differences(before, filesBelow(scratchDirectory())), "");
}

TEST_F(RVGitSubmoduleHostileTest, ALinkInTheSubmodulesPlaceIsNotFollowed) {
    addSubmodule("a/lib");
    addSubmodule("lib");
    fs::remove_all(pathInRepository("a"));
    fs::create_symlink(scratchPath("precious"), pathInRepository("a"));
    fs::remove_all(pathInRepository("lib"));
    fs::create_symlink(scratchPath("precious"), pathInRepository("lib"));
    git({"clone", "-q", scratchPath("library"), scratchPath("precious/lib")});
    const auto before = filesBelow(scratchPath("precious"));
    runEverythingOn("a/lib", "a/lib");
    EXPECT_EQ(differences(before, filesBelow(scratchPath("precious"))), "");
    runEverythingOn("lib", "lib");
    EXPECT_EQ(differences(before, filesBelow(scratchPath("precious"))), "");
}

TEST_F(RVGitSubmoduleHostileTest, ALinkInTheFolderModulesIsNotFollowed) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"});
    fs::rename(pathInRepository(".git/modules/lib"), scratchPath("precious/lib"));
    fs::create_symlink(scratchPath("precious/lib"), pathInRepository(".git/modules/lib"));
    fs::create_symlink(scratchPath("precious"), pathInRepository(".git/modules/dir"));
    const auto before = filesBelow(scratchPath("precious"));
    EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", 4, &error),
                           RVGitRemoveOperationNotPermittedError));
    EXPECT_TRUE(failedWith(manager().renameSubmoduleWithName("lib", "dir/new", &error),
                           RVGitMoveFileOutsideRepositoryError));
    EXPECT_TRUE(failedWith(manager().moveSubmoduleWithPath("lib", "new", &error),
                           RVGitMoveFileOutsideRepositoryError));
    EXPECT_EQ(differences(before, filesBelow(scratchPath("precious"))), "");
}

TEST_F(RVGitSubmoduleHostileTest, ALinkInTheSubmodulesFilesPlaceIsNotFollowed) {
    addSubmodule("lib");
    fs::rename(pathInRepository(".gitmodules"), scratchPath("precious/modules"));
    fs::create_symlink(scratchPath("precious/modules"), pathInRepository(".gitmodules"));
    const auto before = filesBelow(scratchDirectory());
    for (const unsigned options : {0U, 2U, 4U, 7U})
        EXPECT_TRUE(failedWith(manager().removeSubmoduleAtPath("lib", options, &error),
                               RVGitConfigWriteError));
    EXPECT_TRUE(
        failedWith(manager().moveSubmoduleWithPath("lib", "new", &error), RVGitConfigWriteError));
    EXPECT_TRUE(failedWith(manager().relocateSubmoduleWithPath("lib", "new", &error),
                           RVGitConfigWriteError));
    EXPECT_TRUE(
        failedWith(manager().renameSubmoduleWithName("lib", "new", &error), RVGitConfigWriteError));
    EXPECT_TRUE(failedWith(manager().addSubmoduleWithURL(scratchPath("library"), "x", 0, &error),
                           RVGitConfigWriteError));
    EXPECT_EQ(differences(before, filesBelow(scratchDirectory())), "");
}

TEST_F(RVGitSubmoduleHostileTest, ADirectoryWithoutARepositoryIsNotTakenForTheSuperproject) {
    addSubmodule("lib");
    // A conflict, so that it is valid, and no repository of its own: git finds the superproject.
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"});
    gitInRepository({"update-index", "--force-remove", "lib"});
    git({"update-index", "--index-info"}, repositoryPath(),
        "160000 " + head + " 2\tlib\n160000 " + std::string(40, '1') + " 3\tlib\n");
    const auto submodule = submoduleAt("lib");
    ASSERT_TRUE(submodule);
    ASSERT_EQ(submodule->status(), RVGitSubmoduleStatusUnmerged);
    ASSERT_EQ(submodule->submoduleRepository()->path(), repositoryPath());
    const auto before = untouchable();
    EXPECT_FALSE(manager().submoduleContainsUncommittedWork("lib", &error));
    EXPECT_TRUE(succeeded(manager().moveSubmoduleWithPath("lib", "new", &error)));
    EXPECT_EQ(runGit({"config", "core.worktree"}, repositoryPath()).exitCode, 1);
    EXPECT_EQ(differences(before, untouchable()), "");
}

TEST_F(RVGitSubmoduleHostileTest, RemovingAConflictWithoutARepositoryLeavesTheSuperproject) {
    addSubmodule("lib");
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"});
    gitInRepository({"update-index", "--force-remove", "lib"});
    git({"update-index", "--index-info"}, repositoryPath(),
        "160000 " + head + " 2\tlib\n160000 " + std::string(40, '1') + " 3\tlib\n");
    const auto before = untouchable();
    EXPECT_TRUE(succeeded(manager().removeSubmoduleAtPath("lib", 4, &error)));
    EXPECT_EQ(differences(before, untouchable()), "");
    EXPECT_TRUE(existsInRepository("file.txt"));
    EXPECT_TRUE(existsInRepository(".git/HEAD"));
    EXPECT_THAT(placesOf("lib", "lib"), IsEmpty());
}

TEST_F(RVGitSubmoduleHostileTest, RenamingInASuperprojectThatIsASubmoduleLeavesItsLink) {
    makeLibrary("outer");
    git({"submodule", "--quiet", "add", scratchPath("library"), "lib"}, "outer");
    git({"commit", "-q", "-m", "Add"}, "outer");
    addSubmodule("outer", {}, scratchPath("outer"));
    const auto outer = RVGitRepository::repositoryWithPath(pathInRepository("outer"));
    const std::string link = readFile("repository/outer/.git");
    RVGitSubmoduleManager outerManager(outer);
    git({"update-index", "--force-remove", "lib"}, outer->path());
    git({"update-index", "--index-info"}, outer->path(),
        "160000 " + std::string(40, '2') + " 2\tlib\n160000 " + std::string(40, '1') + " 3\tlib\n");
    EXPECT_TRUE(succeeded(outerManager.renameSubmoduleWithName("lib", "new", &error)));
    EXPECT_EQ(readFile("repository/outer/.git"), link);
}

TEST_F(RVGitSubmoduleHostileTest, AWorkingTreeThatTheSubmoduleNamesElsewhereIsLeftAlone) {
    addSubmodule("lib");
    gitAt("lib", {"config", "core.worktree", scratchPath("precious")});
    const auto before = untouchable();
    for (const unsigned options : {1U, 5U, 7U})
        EXPECT_FALSE(manager().removeSubmoduleAtPath("lib", options, &error));
    EXPECT_EQ(differences(before, untouchable()), "");
}

TEST_F(RVGitSubmoduleHostileTest, AddressesThatRunSomethingDoNot) {
    for (const std::string& URL :
         {"ext::sh -c touch% " + scratchPath("pwned"), std::string("-u./x"),
          std::string("--upload-pack=touch ") + scratchPath("pwned"),
          std::string("https://127.0.0.1:1/\nhost=example.org"), std::string("fd::17"),
          "ssh://-oProxyCommand=touch " + scratchPath("pwned") + "/x"}) {
        SCOPED_TRACE(URL);
        EXPECT_FALSE(manager().addSubmoduleWithURL(URL, "new", 0, &error));
        EXPECT_TRUE(error);
        declareSubmodule("evil", "evil", URL);
        const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
        gitInRepository({"update-index", "--add", "--cacheinfo", "160000," + head + ",evil"});
        EXPECT_FALSE(
            manager().updateAllSubmodulesWithOptions(RVGitSubmoduleUpdateOptionInitialize, &error));
        EXPECT_TRUE(error);
        EXPECT_FALSE(fileExists("pwned"));
        gitInRepository({"reset", "-q", "--hard"});
        (void)runGit({"config", "--remove-section", "submodule.evil"}, repositoryPath());
        fs::remove_all(pathInRepository("new"));
    }
}

TEST_F(RVGitSubmoduleHostileTest, ACommandAsUpdateStrategyDoesNotRun) {
    addSubmodule("lib");
    gitInRepository(
        {"config", "-f", ".gitmodules", "submodule.lib.update", "!touch " + scratchPath("pwned")});
    commitInSubmodule("lib");
    (void)manager().updateAllSubmodulesWithOptions(7, &error);
    EXPECT_FALSE(fileExists("pwned"));
    fs::remove_all(pathInRepository(".git/modules/lib"));
    fs::remove_all(pathInRepository("lib"));
    (void)manager().updateAllSubmodulesWithOptions(7, &error);
    EXPECT_FALSE(fileExists("pwned"));
}

TEST_F(RVGitSubmoduleHostileTest, TheListingReadsWhateverTheFileSays) {
    addSubmodule("lib");
    for (const std::string& path : hostilePaths)
        declareSubmodule("name of " + std::to_string(path.size()) + "-" +
                             std::to_string(static_cast<unsigned char>(path.back())),
                         path);
    const auto before = filesBelow(scratchPath("precious"));
    const auto submodules = loader().allSubmodules(&error);
    ASSERT_TRUE(succeeded(submodules.has_value()));
    for (const auto& submodule : *submodules) {
        (void)submodule->layoutFormat();
        (void)submodule->originRemote();
        (void)submodule->updatedCommitsAhead();
        (void)submodule->numberOfDirtyChanges();
    }
    EXPECT_EQ(differences(before, filesBelow(scratchPath("precious"))), "");
}

TEST_F(RVGitSubmoduleHostileTest, ASuspiciousNameHidesTheStateOfAllSubmodules) {
    // Git warns on standard error, which counts as a failure that explains nothing.
    addSubmodule("lib");
    declareSubmodule("../../x", "x");
    const auto submodules = loader().allSubmodules(&error);
    ASSERT_TRUE(submodules);
    for (const auto& submodule : *submodules)
        EXPECT_EQ(submodule->status(), RVGitSubmoduleStatusMissingWorkingTreePath);
}

TEST_F(RVGitSubmoduleHostileTest, AllFailsForGitlinksBelowALink) {
    addSubmodule("a/lib");
    fs::remove_all(pathInRepository("a"));
    makeDirectory("precious/lib");
    fs::create_symlink(scratchPath("precious"), pathInRepository("a"));
    const auto before = filesBelow(scratchPath("precious"));
    EXPECT_TRUE(failedWith(manager().updateAllSubmodulesWithOptions(7, &error),
                           RVGitAddSubmodulePathOutsideRepositoryError));
    EXPECT_EQ(error->userInfoString(RVGitSubmoduleNameErrorKey), "a/lib");
    EXPECT_TRUE(failedWith(manager().synchronizeAllSubmoduleURLs(&error),
                           RVGitAddSubmodulePathOutsideRepositoryError));
    EXPECT_EQ(differences(before, filesBelow(scratchPath("precious"))), "");
}

TEST_F(RVGitSubmoduleHostileTest, SafeNames) {
    using Containment = RVGitSubmoduleContainment;
    for (const char* name : {"a", "a/b", "a.b", "..a", "a..", "-u", "a b", "...", "caf\u00e9"})
        EXPECT_TRUE(Containment::isSafeName(name)) << name;
    using namespace std::string_literals;
    for (const std::string& name : {""s, "."s, ".."s, "/"s, "/a"s, "a/"s, "a//b"s, "a/./b"s,
                                    "a/../b"s, "../a"s, "a\nb"s, "a\0b"s})
        EXPECT_FALSE(Containment::isSafeName(name)) << testing::PrintToString(name);
}

}  // namespace
