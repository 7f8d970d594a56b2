#include "RVGit/submodules/RVGitSubmoduleLoader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class RVGitSubmoduleLoaderTest : public RVGitSubmoduleTestCase {
protected:
    /// "path: status" of each, with " dirty" behind it.
    std::vector<std::string> summary() {
        std::vector<std::string> lines;
        const auto submodules = loader().allSubmodules(&error);
        EXPECT_TRUE(succeeded(submodules.has_value()));
        for (const auto& submodule : submodules.value_or(RVGitSubmoduleLoader::Submodules()))
            lines.push_back(submodule->path() + ": " + std::to_string(submodule->status()) +
                            (submodule->isDirty() ? " dirty" : ""));
        return lines;
    }
};

TEST_F(RVGitSubmoduleLoaderTest, RequiresARepository) {
    EXPECT_THROW(RVGitSubmoduleLoader(std::shared_ptr<RVGitRepository>()),
                 RVInvalidParameterException);
}

TEST_F(RVGitSubmoduleLoaderTest, WithoutSubmodulesNoSubmoduleCommandRuns) {
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_THAT(loader().allSubmodules(&error), Optional(IsEmpty()));
    EXPECT_FALSE(error);
    for (const auto& arguments : recorder.argumentLists())
        EXPECT_THAT(arguments, testing::Not(testing::Contains("submodule")));
    EXPECT_THAT(recorder.argumentLists(), SizeIs(3));
}

TEST_F(RVGitSubmoduleLoaderTest, AnUnbornSuperprojectHasThoseOfItsIndex) {
    const std::string unborn = initRepository("unborn");
    git({"submodule", "--quiet", "add", scratchPath("library"), "lib"}, unborn);
    const auto submodules =
        RVGitSubmoduleLoader(RVGitRepository::repositoryWithPath(unborn)).allSubmodules(&error);
    ASSERT_THAT(submodules, Optional(SizeIs(1)));
    EXPECT_EQ(submodules->front()->status(), RVGitSubmoduleStatusClean);
}

TEST_F(RVGitSubmoduleLoaderTest, ABareRepositoryHasNone) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(initBareRepository());
    EXPECT_THAT(RVGitSubmoduleLoader(bare).allSubmodules(&error), Optional(IsEmpty()));
}

TEST_F(RVGitSubmoduleLoaderTest, ACleanSubmoduleHasEverything) {
    addSubmodule("a/lib", "the.lib");
    gitInRepository({"config", "submodule.the.lib.branch", "local"});
    const auto submodule = submoduleAt("a/lib");
    ASSERT_TRUE(submodule);
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    EXPECT_EQ(submodule->repository(), repository());
    EXPECT_EQ(submodule->name(), "the.lib");
    EXPECT_EQ(submodule->commitHash(), head);
    EXPECT_EQ(submodule->indexCommitHash(), head);
    EXPECT_EQ(submodule->describe(), "heads/main");
    EXPECT_EQ(submodule->status(), RVGitSubmoduleStatusClean);
    EXPECT_FALSE(submodule->isDirty());
    EXPECT_EQ(submodule->config()->path(), "a/lib");
    EXPECT_EQ(submodule->localConfig()->path(), std::nullopt);
    EXPECT_EQ(submodule->URL(), scratchPath("library"));
    EXPECT_EQ(submodule->upstreamBranch(), "local");
    EXPECT_EQ(submodule->revision(), std::nullopt);
}

TEST_F(RVGitSubmoduleLoaderTest, FindsByNameAndPath) {
    addSubmodule("caf\u00e9", "na me");
    EXPECT_EQ(loader().submoduleForName("na me")->path(), "caf\u00e9");
    EXPECT_EQ(loader().submoduleForPath("cafe\u0301")->name(), "na me");
    EXPECT_THAT(loader().allSubmoduleNames(), Optional(ElementsAre("na me")));
    error = RVError("domain", 1);
    EXPECT_EQ(loader().submoduleForName("caf\u00e9", &error), nullptr);
    EXPECT_FALSE(error);
    error = RVError("domain", 1);
    EXPECT_EQ(loader().submoduleForPath("na me", &error), nullptr);
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleLoaderTest, EachStateOneByOne) {
    addSubmodule("clean");
    addSubmodule("uninitialized");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "uninitialized"});
    addSubmodule("updated");
    const std::string other = commitInSubmodule("updated");
    addSubmodule("modified");
    writeFile("repository/modified/lib.c", "int two;\n");
    addSubmodule("untracked");
    writeFile("repository/untracked/new", "x");
    declareSubmodule("declared", "de/clared");
    // Files that are only untracked make it dirty for older gits.
    EXPECT_THAT(summary(),
                ElementsAre("clean: 1", "modified: 1 dirty", "uninitialized: 2",
                            isTestedGitAtLeast("2.31") ? "untracked: 1" : "untracked: 1 dirty",
                            "updated: 3", "de/clared: 7"));

    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    EXPECT_EQ(submoduleAt("updated")->commitHash(), other);
    EXPECT_EQ(submoduleAt("updated")->indexCommitHash(), head);
    EXPECT_EQ(submoduleAt("uninitialized")->commitHash(), head);
    EXPECT_EQ(submoduleAt("uninitialized")->describe(), std::nullopt);
    EXPECT_EQ(submoduleAt("de/clared")->name(), "declared");
    EXPECT_EQ(submoduleAt("de/clared")->commitHash(), std::nullopt);
    EXPECT_EQ(submoduleAt("de/clared")->indexCommitHash(), std::nullopt);
}

TEST_F(RVGitSubmoduleLoaderTest, AConflictIsUnmerged) {
    addSubmodule("lib");
    gitInRepository({"checkout", "--quiet", "-b", "side"});
    commitInSubmodule("lib");
    gitInRepository({"commit", "--quiet", "-am", "Side"});
    gitInRepository({"checkout", "--quiet", "main"});
    gitAt("lib", {"checkout", "--quiet", "HEAD^"});
    gitAt("lib", {"commit", "--quiet", "--allow-empty", "-m", "Another"});
    gitInRepository({"commit", "--quiet", "-am", "Main"});
    addSubmodule("other");
    EXPECT_NE(runGit({"merge", "side"}, repositoryPath()).exitCode, 0);
    EXPECT_THAT(summary(), ElementsAre("lib: 4", "other: 1"));
    const auto submodule = submoduleAt("lib");
    ASSERT_TRUE(submodule);
    EXPECT_TRUE(submodule->isValid());
    EXPECT_EQ(submodule->describe(), std::nullopt);
    EXPECT_TRUE(submodule->indexCommitHash());
}

TEST_F(RVGitSubmoduleLoaderTest, OneWithoutAMappingKeepsTheOthersAndTheLastStandsTwice) {
    addSubmodule("a");
    addSubmodule("broken");
    addSubmodule("c");
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.broken"});
    EXPECT_THAT(summary(), ElementsAre("a: 1", "broken: 5", "c: 1", "c: 1"));
    const auto submodule = submoduleAt("broken");
    ASSERT_TRUE(submodule);
    EXPECT_EQ(submodule->name(), "broken");
    EXPECT_EQ(submodule->config(), nullptr);
    // Its section of the repository's own configuration has that name, too.
    EXPECT_NE(submodule->localConfig(), nullptr);
    EXPECT_FALSE(submodule->isValid());
    EXPECT_EQ(submodule->indexCommitHash(), gitLine({"rev-parse", "HEAD"}, "library"));
}

TEST_F(RVGitSubmoduleLoaderTest, TheLastStandsOnceWhereItIsTheBrokenOne) {
    addSubmodule("a");
    addSubmodule("broken");
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.broken"});
    EXPECT_THAT(summary(), ElementsAre("a: 1", "broken: 5"));
}

TEST_F(RVGitSubmoduleLoaderTest, AMissingGitDirectoryIsSix) {
    RVGIT_TEST_NEEDS_GIT("2.34",
                         "its submodule status passes over it, or tells nothing of the others");
    addSubmodule("a");
    addSubmodule("gone");
    addSubmodule("z");
    fs::remove_all(pathInRepository(".git/modules/gone"));
    EXPECT_THAT(summary(), ElementsAre("a: 1", "gone: 6", "z: 1", "z: 1"));
    EXPECT_EQ(submoduleAt("gone")->name(), "gone");
    EXPECT_EQ(submoduleAt("gone")->layoutFormat(), RVGitSubmoduleLayoutFormatUnknown);
}

TEST_F(RVGitSubmoduleLoaderTest, WhatIsDirtyIsWhatTheLastDiffSaysWhereTheWholeOneFails) {
    RVGIT_TEST_NEEDS_GIT("2.34",
                         "its submodule status passes over it, or tells nothing of the others");
    addSubmodule("a");
    addSubmodule("gone");
    addSubmodule("z");
    fs::remove_all(pathInRepository(".git/modules/gone"));
    writeFile("repository/a/lib.c", "changed\n");
    // "a" was found to be dirty when it was asked for alone, and is overwritten.
    EXPECT_THAT(summary(), ElementsAre("a: 1", "gone: 6", "z: 1", "z: 1"));
    writeFile("repository/z/lib.c", "changed\n");
    EXPECT_THAT(summary(), ElementsAre("a: 1", "gone: 6", "z: 1 dirty", "z: 1 dirty"));
}

TEST_F(RVGitSubmoduleLoaderTest, AllStatesAtOnce) {
    RVGIT_TEST_NEEDS_GIT("2.20", "its submodule status stops at the first that is broken");
    makeLibrary("outer");
    git({"submodule", "--quiet", "add", scratchPath("library"), "inner"}, "outer");
    git({"commit", "-q", "-m", "Add"}, "outer");
    addSubmodule("clean");
    addSubmodule("conflict");
    addSubmodule("deep/ly/nested (x)", "n.a me");
    addSubmodule("dirty");
    addSubmodule("gone");
    addSubmodule("nomapping");
    addSubmodule("uninit (v1)");
    addSubmodule("untracked");
    addSubmodule("updated");
    addSubmodule("z by its own", {}, scratchPath("outer"));
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    std::string stages = "0 " + std::string(40, '0') + "\tconflict\n";
    for (const char* stage : {"1", "2", "3"})
        stages += "160000 " + head + " " + stage + "\tconflict\n";
    git({"update-index", "--index-info"}, repositoryPath(), stages);
    writeFile("repository/untracked/new", "x");
    writeFile("repository/z by its own/inner/lib.c", "changed\n");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "uninit (v1)"});
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.nomapping"});
    fs::remove_all(pathInRepository(".git/modules/gone"));
    commitInSubmodule("updated");
    writeFile("repository/updated/lib.c", "changed\n");
    writeFile("repository/dirty/lib.c", "changed\n");
    declareSubmodule("declared", "declared");
    // What the last diff says is all that is dirty then.
    EXPECT_THAT(summary(), ElementsAre("clean: 1", "conflict: 4", "deep/ly/nested (x): 1",
                                       "dirty: 1", "gone: 6", "nomapping: 5", "uninit (v1): 2",
                                       "untracked: 1", "updated: 3", "z by its own: 1 dirty",
                                       "z by its own: 1 dirty", "declared: 7"));
}

TEST_F(RVGitSubmoduleLoaderTest, APathInBracketsIsNoDescribe) {
    addSubmodule("lib (v1)");
    addSubmodule("lib (v2)");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib (v1)"});
    EXPECT_THAT(summary(), ElementsAre("lib (v1): 2", "lib (v2): 1"));
    EXPECT_EQ(submoduleAt("lib (v1)")->describe(), std::nullopt);
    EXPECT_EQ(submoduleAt("lib (v2)")->describe(), "heads/main");
}

TEST_F(RVGitSubmoduleLoaderTest, UglyNamesAndPaths) {
    RVGIT_TEST_NEEDS_GIT("2.20", "its submodule script cannot read all of these names");
    const std::vector<std::string> paths = {"*",      ":x",        "[ab]",  "a b",   "caf\u00e9",
                                            "d.o.ts", "quo\"te'",  "ti~ld", "x\\y",  "#hash",
                                            "{c}",    "%percent%", "$var",  "\ttab", "!no"};
    for (const std::string& path : paths) {
        // git submodule add takes some of these for patterns unless told otherwise.
        git({"--literal-pathspecs", "submodule", "--quiet", "add", "--name", "name of " + path,
             "--", scratchPath("library"), path},
            repositoryPath());
    }
    gitInRepository({"commit", "-q", "-m", "All"});
    for (const std::string& path : paths) {
        const auto submodule = submoduleAt(path);
        ASSERT_NE(submodule, nullptr) << path;
        EXPECT_EQ(submodule->name(), "name of " + path);
        EXPECT_EQ(submodule->status(), RVGitSubmoduleStatusClean);
        EXPECT_FALSE(submodule->isDirty());
    }
    writeFile("repository/*/lib.c", "changed\n");
    EXPECT_TRUE(submoduleAt("*")->isDirty());
    EXPECT_FALSE(submoduleAt("a b")->isDirty());
    setEnvironmentVariable("GIT_LITERAL_PATHSPECS", "1");
    EXPECT_TRUE(submoduleAt("*")->isDirty());
    EXPECT_THAT(loader().dirtySubmodulePathsForSubmodulePaths({":x", "*"}, &error),
                Optional(ElementsAre("*")));
}

TEST_F(RVGitSubmoduleLoaderTest, APathThatBeginsWithADashIsFound) {
    // git submodule add cannot make one, but a tree can hold one.
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    gitInRepository({"update-index", "--add", "--cacheinfo", "160000," + head + ",-x"});
    addSubmodule("lib");
    EXPECT_THAT(summary(), ElementsAre("-x: 5", "lib: 1", "lib: 1"));
}

TEST_F(RVGitSubmoduleLoaderTest, NestedThreeDeepIsDirtyThroughAll) {
    const std::string inner = makeLibrary("inner");
    const std::string middle = makeLibrary("middle");
    git({"submodule", "--quiet", "add", inner, "inner"}, middle);
    git({"commit", "-q", "-m", "Add"}, middle);
    const std::string outer = makeLibrary("outer");
    git({"submodule", "--quiet", "add", middle, "middle"}, outer);
    git({"commit", "-q", "-m", "Add"}, outer);
    addSubmodule("outer", {}, outer);
    gitInRepository({"submodule", "--quiet", "update", "--init", "--recursive"});
    EXPECT_THAT(summary(), ElementsAre("outer: 1"));
    writeFile("repository/outer/middle/inner/lib.c", "changed\n");
    EXPECT_THAT(summary(), ElementsAre("outer: 1 dirty"));

    const auto outerRepository = submoduleAt("outer")->submoduleRepository();
    const auto middleSubmodule =
        RVGitSubmoduleLoader(outerRepository).submoduleForPath("middle", &error);
    ASSERT_NE(middleSubmodule, nullptr);
    EXPECT_TRUE(middleSubmodule->isDirty());
    const auto innerSubmodule = RVGitSubmoduleLoader(middleSubmodule->submoduleRepository())
                                    .submoduleForPath("inner", &error);
    ASSERT_NE(innerSubmodule, nullptr);
    EXPECT_TRUE(innerSubmodule->isDirty());
    EXPECT_EQ(innerSubmodule->numberOfDirtyChanges(), 1);
    EXPECT_EQ(innerSubmodule->submoduleRepository()->gitDirectoryPath(),
              pathInRepository(".git/modules/outer/modules/middle/modules/inner"));
}

TEST_F(RVGitSubmoduleLoaderTest, AnOldLayoutHasItsGitDirectoryInside) {
    git({"clone", "-q", scratchPath("library"), pathInRepository("old")});
    gitInRepository({"submodule", "--quiet", "add", scratchPath("library"), "old"});
    ASSERT_TRUE(fs::is_directory(pathInRepository("old/.git")));
    addSubmodule("new");
    EXPECT_THAT(summary(), ElementsAre("new: 1", "old: 1"));
    EXPECT_EQ(submoduleAt("old")->layoutFormat(), RVGitSubmoduleLayoutFormatEmbedded);
    EXPECT_EQ(submoduleAt("new")->layoutFormat(), RVGitSubmoduleLayoutFormatLinked);
}

TEST_F(RVGitSubmoduleLoaderTest, ALinkedWorktreeMayStandInTheSubmodulesPlace) {
    addSubmodule("lib");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "lib"});
    fs::remove(pathInRepository("lib"));
    git({"worktree", "add", "-b", "wt", pathInRepository("lib")}, "library");
    EXPECT_THAT(summary(), ElementsAre("lib: 2"));
    gitInRepository({"submodule", "init"});
    EXPECT_THAT(summary(), ElementsAre("lib: 1"));
    EXPECT_EQ(submoduleAt("lib")->submoduleRepository()->gitDirectoryPath(),
              scratchPath("library/.git/worktrees/lib"));
}

TEST_F(RVGitSubmoduleLoaderTest, RelativeAddressesAreKeptAsWritten) {
    gitInRepository({"config", "remote.origin.url", scratchPath("superproject")});
    gitInRepository({"submodule", "--quiet", "add", "../library", "lib"});
    const auto submodule = submoduleAt("lib");
    ASSERT_TRUE(submodule);
    EXPECT_EQ(submodule->config()->URL(), "../library");
    EXPECT_EQ(submodule->URL(), scratchPath("library"));
}

TEST_F(RVGitSubmoduleLoaderTest, AFailureThatNoSubmoduleExplainsLeavesTheStatusListEmpty) {
    addSubmodule("lib");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("status", {.standardError = "fatal: something else\n", .exitCode = 1});
    EXPECT_THAT(summary(), ElementsAre("lib: 7"));
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleLoaderTest, AnUnknownFailureOfOnePathEndsTheList) {
    addSubmodule("a");
    addSubmodule("b");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("b", {.standardError = "fatal: something else\n", .exitCode = 1});
    fake.setAnswer("status", {.standardError = "No submodule mapping found in .gitmodules for "
                                               "path 'a'\n",
                              .exitCode = 1});
    EXPECT_EQ(loader().allSubmodules(&error), std::nullopt);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
}

TEST_F(RVGitSubmoduleLoaderTest, AnUnknownFailureOfOneDiffEndsTheList) {
    addSubmodule("a");
    const std::string path =
        writeFile("failing-git",
                  "#!/bin/sh\ncase \" $* \" in *' diff '*)\n"
                  "if [ -e \"$ASKED\" ]; then echo 'fatal: something else' >&2; "
                  "exit 1; fi\n: > \"$ASKED\"\n"
                  "echo 'fatal: Not a git repository' >&2; exit 128;; esac\n"
                  "exec \"$REAL\" \"$@\"\n",
                  0755);
    setEnvironmentVariable("ASKED", scratchPath("asked"));
    setEnvironmentVariable("REAL", gitPath());
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    EXPECT_EQ(loader().allSubmodules(&error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    EXPECT_TRUE(fileExists("asked"));
}

TEST_F(RVGitSubmoduleLoaderTest, ACrashOfGitForOnePathIsUninitialized) {
    addSubmodule("a");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("status", {.standardError = "Segmentation fault\n", .exitCode = 139});
    EXPECT_THAT(summary(), ElementsAre("a: 2"));
    EXPECT_EQ(submoduleAt("a")->commitHash(), gitLine({"rev-parse", "HEAD"}, "library"));
}

TEST_F(RVGitSubmoduleLoaderTest, ACleanLineWithoutDescribeIsUninitialized) {
    addSubmodule("a");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("status", {.standardOutput = " " + std::string(40, '1') + " a\n"});
    EXPECT_THAT(summary(), ElementsAre("a: 2"));
    fake.setAnswer("status", {.standardOutput = " " + std::string(40, '1') + " a ((null))\n"});
    EXPECT_THAT(summary(), ElementsAre("a: 2"));
}

TEST_F(RVGitSubmoduleLoaderTest, ALineWithoutAHashHasNoCommit) {
    addSubmodule("a");
    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("status", {.standardOutput = "+ a\n"});
    EXPECT_THAT(summary(), ElementsAre("a: 3"));
    EXPECT_EQ(submoduleAt("a")->commitHash(), std::nullopt);
    EXPECT_EQ(submoduleAt("a")->updatedCommitsAhead(), 0);
}

TEST_F(RVGitSubmoduleLoaderTest, EachSourceThatFailsFailsTheList) {
    addSubmodule("a");
    const std::string config = readFile("repository/.git/config");
    const std::string modules = readFile("repository/.gitmodules");
    writeFile("repository/.gitmodules", "[broken\n");
    EXPECT_EQ(loader().allSubmodules(&error), std::nullopt);
    EXPECT_EQ(error->code(), RVGitConfigInvalidFileError);
    EXPECT_EQ(loader().allSubmoduleNames(&error), std::nullopt);
    EXPECT_EQ(loader().submoduleConfigsBySubmoduleName(&error), std::nullopt);
    EXPECT_EQ(loader().submoduleConfigsBySubmodulePath(&error), std::nullopt);
    writeFile("repository/.gitmodules", modules);

    RVFakeGit fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("diff", {.standardError = "fatal: no diff\n", .exitCode = 128});
    EXPECT_EQ(loader().allSubmodules(&error), std::nullopt);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    fake.setAnswer("ls-files", {.standardError = "fatal: no index\n", .exitCode = 128});
    EXPECT_EQ(loader().submoduleIndexEntriesBySubmodulePath(&error), std::nullopt);
    EXPECT_EQ(loader().allSubmodules(&error), std::nullopt);
}

TEST_F(RVGitSubmoduleLoaderTest, NothingIsAskedForNoPaths) {
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_THAT(loader().loadSubmoduleStatusForSubmodulePaths({}, &error), Optional(IsEmpty()));
    EXPECT_THAT(loader().dirtySubmodulePathsForSubmodulePaths({}, &error), Optional(IsEmpty()));
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
}

TEST_F(RVGitSubmoduleLoaderTest, MapsByNameAndPath) {
    addSubmodule("p", "n");
    declareSubmodule("no path", "x");
    gitInRepository({"config", "-f", ".gitmodules", "--unset", "submodule.no path.path"});
    const auto keysOf = [](const auto& map) {
        std::vector<std::string> keys;
        for (const auto& entry : *map)
            keys.push_back(entry.first);
        return keys;
    };
    EXPECT_THAT(keysOf(loader().submoduleConfigsBySubmoduleName()), ElementsAre("n", "no path"));
    EXPECT_THAT(keysOf(loader().submoduleConfigsBySubmodulePath()), ElementsAre("p"));
    EXPECT_THAT(keysOf(loader().localSubmoduleConfigsBySubmoduleName()), ElementsAre("n"));
    EXPECT_THAT(keysOf(loader().submoduleIndexEntriesBySubmodulePath()), ElementsAre("p"));
    // Its path is its name then.
    EXPECT_EQ(submoduleAt("no path")->status(), RVGitSubmoduleStatusMissingWorkingTreePath);
    EXPECT_EQ(loader().submoduleConfigLoader(), loader().submoduleConfigLoader());
    EXPECT_EQ(loader().submoduleConfigLoader()->repository(), repository());
}

TEST_F(RVGitSubmoduleLoaderTest, RunsFiveProcessesForACleanList) {
    addSubmodule("a");
    addSubmodule("b");
    RVRecordingGit recorder = useRecordingGit();
    EXPECT_THAT(loader().allSubmodules(), Optional(SizeIs(2)));
    std::vector<std::string> words;
    for (const auto& arguments : recorder.argumentLists())
        for (const std::string& argument : arguments)
            if (argument == "ls-files" || argument == "config" || argument == "submodule" ||
                argument == "diff")
                words.push_back(argument);
    EXPECT_THAT(words, ElementsAre("ls-files", "config", "config", "submodule", "diff"));
}

TEST_F(RVGitSubmoduleLoaderTest, TheRepositoryOwnsItsLoaderAndTheLoaderDoesNotOwnIt) {
    addSubmodule("a");
    auto owner = RVGitRepository::repositoryWithPath(repositoryPath());
    const std::weak_ptr<RVGitRepository> observer = owner;
    auto owned = owner->submoduleLoader();
    EXPECT_EQ(owned, owner->submoduleLoader());
    EXPECT_EQ(owned->repository(), owner);
    EXPECT_THAT(owner->allSubmoduleNames(), Optional(ElementsAre("a")));
    EXPECT_THAT(owner->allSubmodules(), Optional(SizeIs(1)));
    EXPECT_EQ(owner->submoduleForName("a")->path(), "a");
    EXPECT_EQ(owner->submoduleForPath("a")->name(), "a");
    owner.reset();
    EXPECT_FALSE(observer.expired());
    auto configLoader = owned->submoduleConfigLoader();
    owned.reset();
    EXPECT_FALSE(observer.expired());
    configLoader.reset();
    EXPECT_TRUE(observer.expired());
}

TEST_F(RVGitSubmoduleLoaderTest, TwoHundredSubmodules) {
    for (int number = 0; number < 200; ++number) {
        const std::string path = "libs/lib" + std::to_string(number);
        // Uninitialized ones cost least.
        declareSubmodule(path, path);
    }
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    std::string entries;
    for (int number = 0; number < 200; ++number)
        entries += "160000 " + head + "\tlibs/lib" + std::to_string(number) + "\n";
    git({"update-index", "--index-info"}, repositoryPath(), entries);
    const auto submodules = loader().allSubmodules(&error);
    ASSERT_THAT(submodules, Optional(SizeIs(200)));
    for (const auto& submodule : *submodules)
        EXPECT_EQ(submodule->status(), RVGitSubmoduleStatusUninitialized);
}

}  // namespace
