#include <unistd.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitInitCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace {

class RVGitRepositoryOpeningTest : public RVGitRepositoryTestCase {
protected:
    static void expectPaths(const std::string& openedPath, const std::string& path,
                            const std::string& gitDirectoryPath,
                            const std::optional<std::string>& workingTreeDirectoryPath) {
        SCOPED_TRACE(openedPath);
        const auto repository = RVGitRepository::repositoryWithPath(openedPath);
        EXPECT_TRUE(repository->isValid());
        EXPECT_EQ(repository->path(), path);
        EXPECT_EQ(repository->gitDirectoryPath(), gitDirectoryPath);
        EXPECT_EQ(repository->workingTreeDirectoryPath(), workingTreeDirectoryPath);
        EXPECT_EQ(repository->isBare(), !workingTreeDirectoryPath);
    }
    static void expectInvalid(const std::string& openedPath) {
        SCOPED_TRACE(openedPath);
        const auto repository = RVGitRepository::repositoryWithPath(openedPath);
        EXPECT_FALSE(repository->isValid());
        EXPECT_FALSE(repository->isBare());
        EXPECT_EQ(repository->path(), openedPath);
        EXPECT_EQ(repository->gitDirectoryPath(), std::nullopt);
        EXPECT_EQ(repository->workingTreeDirectoryPath(), std::nullopt);
        EXPECT_EQ(repository->configFilePath(), std::nullopt);
        EXPECT_EQ(repository->defaultIgnoresPath(), std::nullopt);
    }

    std::string makeLinkedWorktree(const std::string& repositoryPath,
                                   const std::string& name) const {
        const std::string path = scratchPath(name);
        git({"worktree", "add", "--detach", path}, repositoryPath);
        return path;
    }
};

TEST_F(RVGitRepositoryOpeningTest, AWorkingTreeIsFoundFromAnywhereInIt) {
    const std::string tree = repositoryPath();
    const std::string directory = makeDirectory(tree + "/a/b c");
    expectPaths(tree, tree, tree + "/.git", tree);
    expectPaths(directory, tree, tree + "/.git", tree);
}

TEST_F(RVGitRepositoryOpeningTest, TheGitDirectoryIsAPathOfTheWorkingTree) {
    const std::string tree = repositoryPath();
    expectPaths(tree + "/.git", tree, tree + "/.git", tree);
    expectPaths(tree + "/.git/objects/pack", tree, tree + "/.git", tree);
}

TEST_F(RVGitRepositoryOpeningTest, PathsAreStandardized) {
    const std::string tree = repositoryPath();
    makeDirectory(tree + "/a");
    expectPaths(tree + "/a/.././", tree, tree + "/.git", tree);
    expectPaths(tree + "//", tree, tree + "/.git", tree);
    setEnvironmentVariable("HOME", scratchDirectory());
    expectPaths("~/repository", tree, tree + "/.git", tree);
}

TEST_F(RVGitRepositoryOpeningTest, ABareRepositoryHasNoWorkingTree) {
    const std::string bare = initBareRepository();
    expectPaths(bare, bare, bare, std::nullopt);
    expectPaths(bare + "/objects/pack", bare, bare, std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, ARepositoryMadeBareByItsConfigurationIsItsGitDirectory) {
    const std::string tree = repositoryPath();
    git({"config", "core.bare", "true"}, tree);
    expectPaths(tree, tree + "/.git", tree + "/.git", std::nullopt);
    expectPaths(tree + "/.git", tree + "/.git", tree + "/.git", std::nullopt);
    expectPaths(makeDirectory(tree + "/a"), tree + "/.git", tree + "/.git", std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, ALinkedWorktreeHasItsGitDirectoryUnderTheMainOne) {
    makeCommit();
    const std::string worktree = makeLinkedWorktree(repositoryPath(), "linked tree");
    // Not every git keeps the blank.
    const std::string gitDirectory = gitLine({"rev-parse", "--absolute-git-dir"}, worktree);
    EXPECT_THAT(gitDirectory, StartsWith(repositoryPath() + "/.git/worktrees/linked"));
    expectPaths(worktree, worktree, gitDirectory, worktree);
    expectPaths(makeDirectory(worktree + "/a"), worktree, gitDirectory, worktree);
    expectPaths(gitDirectory, worktree, gitDirectory, worktree);
}

TEST_F(RVGitRepositoryOpeningTest, ALinkedWorktreeOfABareRepositoryIsNotBare) {
    makeCommit();
    const std::string bare = scratchPath("bare.git");
    git({"clone", "-q", "--bare", repositoryPath(), bare});
    const std::string worktree = makeLinkedWorktree(bare, "linked");
    expectPaths(worktree, worktree, bare + "/worktrees/linked", worktree);
}

TEST_F(RVGitRepositoryOpeningTest, ALinkedWorktreeWhoseLinkBackIsMissingIsInvalid) {
    makeCommit();
    const std::string worktree = makeLinkedWorktree(repositoryPath(), "linked");
    const std::string link = repositoryPath() + "/.git/worktrees/linked/gitdir";
    std::filesystem::remove(link);
    makeDirectory(link);
    expectInvalid(worktree);
}

TEST_F(RVGitRepositoryOpeningTest, ASubmoduleIsARepositoryOfItsOwn) {
    makeCommit();
    const std::string super = initRepository("super");
    git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", repositoryPath(),
         "libs/sub"},
        super);
    const std::string tree = super + "/libs/sub";
    const std::string gitDirectory = super + "/.git/modules/libs/sub";
    expectPaths(tree, tree, gitDirectory, tree);
    expectPaths(makeDirectory(tree + "/a"), tree, gitDirectory, tree);
    expectPaths(super + "/libs", super, super + "/.git", super);
    // The process stands outside of the tree that the configuration names.
    expectPaths(gitDirectory, gitDirectory, gitDirectory, tree);
}

// Its configuration is the submodule's, which names the submodule's own tree, from the git
// directory of the submodule.
TEST_F(RVGitRepositoryOpeningTest, ALinkedWorktreeOfASubmoduleIsATreeOfItsOwn) {
    makeCommit();
    const std::string super = initRepository("super");
    git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", repositoryPath(),
         "sub"},
        super);
    ASSERT_EQ(gitLine({"config", "--get", "core.worktree"}, super + "/sub"), "../../../sub");
    const std::string worktree = makeLinkedWorktree(super + "/sub", "linked");
    const std::string gitDirectory = super + "/.git/modules/sub/worktrees/linked";
    expectPaths(worktree, worktree, gitDirectory, worktree);
    expectPaths(makeDirectory(worktree + "/a"), worktree, gitDirectory, worktree);
    expectPaths(gitDirectory, worktree, gitDirectory, worktree);
    expectPaths(super + "/sub", super + "/sub", super + "/.git/modules/sub", super + "/sub");
}

TEST_F(RVGitRepositoryOpeningTest,
       AConfiguredTreeIsTheRootFromInsideAndTheGitDirectoryIsFromOutside) {
    const std::string main = repositoryPath();
    const std::string outside = makeDirectory("tree outside");
    git({"config", "core.worktree", outside}, main);
    expectPaths(main, main + "/.git", main + "/.git", outside);
    expectPaths(main + "/.git", main + "/.git", main + "/.git", outside);

    const std::string inside = makeDirectory(main + "/tree inside");
    const std::string deeper = makeDirectory(inside + "/a");
    git({"config", "core.worktree", inside}, main);
    expectPaths(inside, inside, main + "/.git", inside);
    expectPaths(deeper, inside, main + "/.git", inside);
    expectPaths(main, main + "/.git", main + "/.git", inside);
}

TEST_F(RVGitRepositoryOpeningTest, ARelativeConfiguredTreeIsTakenFromTheGitDirectory) {
    const std::string main = repositoryPath();
    const std::string tree = makeDirectory(main + "/tree");
    git({"config", "core.worktree", "../tree"}, main);
    expectPaths(tree, tree, main + "/.git", tree);
    expectPaths(main + "/.git", main + "/.git", main + "/.git", tree);
    // Kept for compatibility: from the path itself where git prints a relative directory.
    expectPaths(main, main + "/.git", main + "/.git", scratchPath("tree"));
}

TEST_F(RVGitRepositoryOpeningTest, AConfiguredTreeOfABareRepositoryDoesNotCount) {
    const std::string main = repositoryPath();
    git({"config", "core.worktree", scratchDirectory()}, main);
    git({"config", "core.bare", "true"}, main);
    expectPaths(main, main + "/.git", main + "/.git", std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, AFailureHalfWayLeavesNoPaths) {
    const std::string main = repositoryPath();
    RVFakeGit fake = useFakeGit();
    fake.setAnswer("--is-bare-repository", {.standardOutput = "false\n"});
    fake.setAnswer("--git-dir",
                   {.standardError = "fatal: not a git repository\n", .exitCode = 128});
    expectInvalid(main);

    RVFakeGit other = fakeGit("other");
    other.setAnswer("--is-bare-repository", {.standardOutput = "false\n"});
    other.setAnswer("--git-dir", {.standardOutput = ".git\n"});
    other.setAnswer("core.worktree", {.standardOutput = "/tree\n"});
    other.setAnswer("--is-inside-work-tree", {.exitCode = 128});
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(other.path()));
    expectInvalid(main);
}

TEST_F(RVGitRepositoryOpeningTest, NamesMayHoldBlanksNewlinesAndAnyLetter) {
    for (const std::string name : {"with blank", "Z\xC3\xBCrich \xE6\x9D\xB1\xE4\xBA\xAC",
                                   "two\nlines", "ends in \n", "100%20 #1?", "~tilde"}) {
        const std::string tree = initRepository(name);
        expectPaths(tree, tree, tree + "/.git", tree);
        expectPaths(makeDirectory(tree + "/a"), tree, tree + "/.git", tree);
        commitFile(tree, "file", "", "Message");
        // Older gits lose the end of the name.
        if (name.back() == '\n' && !isTestedGitAtLeast("2.23"))
            continue;
        const std::string worktree = makeLinkedWorktree(tree, "linked to " + name);
        expectPaths(worktree, worktree, gitLine({"rev-parse", "--absolute-git-dir"}, worktree),
                    worktree);
    }
}

TEST_F(RVGitRepositoryOpeningTest, ANameInAnotherEncodingKeepsItsBytes) {
    const std::string tree = initRepository("Z\xFCrich");
    const std::string directory = makeDirectory(tree + "/a");
    expectPaths(directory, tree, tree + "/.git", tree);
    const std::string bare = initBareRepository("B\xE2le\xFF");
    expectPaths(bare + "/refs", bare, bare, std::nullopt);
    git({"config", "core.worktree", directory}, tree);
    expectPaths(directory, directory, tree + "/.git", directory);
}

TEST_F(RVGitRepositoryOpeningTest, WhiteSpaceAtTheEndOfABareRepositorysNameIsLostFromBelow) {
    const std::string bare = initBareRepository("bare \n");
    expectPaths(bare, bare, bare, std::nullopt);
    // Git's output is trimmed, and here the name stands at its end.
    expectPaths(bare + "/refs", scratchPath("bare"), scratchPath("bare"), std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, ALinkToATreeGivesTheTreeFromBelowAndTheLinkAtItsRoot) {
    const std::string link = scratchPath("link");
    std::filesystem::create_directory_symlink(repositoryPath(), link);
    makeDirectory(repositoryPath() + "/a");
    expectPaths(link, link, link + "/.git", link);
    expectPaths(link + "/a", repositoryPath(), repositoryPath() + "/.git", repositoryPath());
}

TEST_F(RVGitRepositoryOpeningTest, WhatIsNoRepositoryIsInvalidAndKeepsItsPath) {
    expectInvalid(scratchPath("missing"));
    expectInvalid(scratchPath("missing/../missing/"));
    expectInvalid(writeFile("file", ""));
    expectInvalid(makeDirectory("directory"));
    expectInvalid("");
}

TEST_F(RVGitRepositoryOpeningTest, OpeningRunsFourCommandsInThePathAndNamesNoGitDirectory) {
    const std::string outside = makeDirectory("tree");
    git({"config", "core.worktree", outside}, repositoryPath());
    const RVRecordingGit recorder = useRecordingGit();
    const auto repository = RVGitRepository::repositoryWithPath(repositoryPath() + "/");
    EXPECT_THAT(recorder.argumentLists(),
                ElementsAre(ElementsAre("--no-pager", "rev-parse", "--is-bare-repository"),
                            ElementsAre("--no-pager", "rev-parse", "--git-dir"),
                            ElementsAre("--no-pager", "config", "--get", "core.worktree"),
                            ElementsAre("--no-pager", "rev-parse", "--is-inside-work-tree")));
    for (const auto& invocation : recorder.invocations())
        EXPECT_EQ(invocation.workingDirectory, repositoryPath());

    recorder.clear();
    (void)RVGitRepository::repositoryWithWorkingTreeDirectoryPath(repositoryPath(),
                                                                  repositoryPath() + "/.git");
    EXPECT_TRUE(recorder.invocations().empty());
}

TEST_F(RVGitRepositoryOpeningTest, GivenPathsAreStandardizedAndTheRootIsAsGiven) {
    const auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/a/../tree/", "/tree/./.git/");
    EXPECT_TRUE(repository->isValid());
    EXPECT_EQ(repository->path(), "/a/../tree/");
    EXPECT_EQ(repository->workingTreeDirectoryPath(), "/tree");
    EXPECT_EQ(repository->gitDirectoryPath(), "/tree/.git");

    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath("/bare.git/");
    EXPECT_TRUE(bare->isValid());
    EXPECT_TRUE(bare->isBare());
    EXPECT_EQ(bare->path(), "/bare.git/");
    EXPECT_EQ(bare->gitDirectoryPath(), "/bare.git");
    EXPECT_EQ(bare->workingTreeDirectoryPath(), std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, WithoutAGitDirectoryARepositoryIsInvalid) {
    const auto tree = RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/tree", {});
    EXPECT_FALSE(tree->isValid());
    EXPECT_EQ(tree->path(), "/tree");
    EXPECT_EQ(tree->configFilePath(), std::nullopt);
    EXPECT_EQ(tree->defaultIgnoresPath(), "/tree/.gitignore");
    const auto nothing = RVGitRepository::bareRepositoryWithGitDirectoryPath(std::nullopt);
    EXPECT_FALSE(nothing->isValid());
    EXPECT_FALSE(nothing->isBare());
    EXPECT_EQ(nothing->path(), "");
    EXPECT_EQ(nothing->fileURL(), std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, ARepositoryIsToldByAnAbsoluteDirectoryInWhichGitFindsOne) {
    EXPECT_TRUE(RVGitRepository::isGitRepositoryAtPath(repositoryPath()));
    EXPECT_TRUE(RVGitRepository::isGitRepositoryAtPath(repositoryPath() + "/.git/refs/"));
    EXPECT_TRUE(RVGitRepository::isGitRepositoryAtPath(initBareRepository()));
    EXPECT_FALSE(RVGitRepository::isGitRepositoryAtPath(scratchDirectory()));
    EXPECT_FALSE(RVGitRepository::isGitRepositoryAtPath(repositoryPath() + "/.git/HEAD"));
    EXPECT_FALSE(RVGitRepository::isGitRepositoryAtPath(repositoryPath() + "/missing"));
    EXPECT_FALSE(RVGitRepository::isGitRepositoryAtPath("."));
    EXPECT_FALSE(RVGitRepository::isGitRepositoryAtPath(""));
}

TEST_F(RVGitRepositoryOpeningTest, ThePathDeepInATreeFindsItsRoot) {
    EXPECT_EQ(RVGitRepository::rootPathForRepositoryAtPath(makeDirectory(repositoryPath() + "/a")),
              repositoryPath());
    EXPECT_EQ(RVGitRepository::rootPathForRepositoryAtPath(scratchDirectory()), std::nullopt);
}

TEST_F(RVGitRepositoryOpeningTest, ARepositoryIsMadeWithTheOptionsOfInit) {
    const std::string path = scratchPath("new/deep");
    const auto made = RVGitRepository::createRepositoryAtPath(path, std::nullopt);
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->isValid());
    EXPECT_EQ(made->path(), path);
    EXPECT_FALSE(made->isBare());
    const auto bare = RVGitRepository::createRepositoryAtPath(
        scratchPath("made.git"), RVOptions{{RVGitInitOptionBare, true}});
    ASSERT_TRUE(bare);
    EXPECT_TRUE(bare->isBare());
}

TEST_F(RVGitRepositoryOpeningTest, ARepositoryIsMadeInAnExistingDirectory) {
    const std::string path = makeDirectory("directory");
    writeFile("directory/file", "text");
    const auto made = RVGitRepository::createRepositoryAtPath(path, std::nullopt);
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->isValid());
    EXPECT_EQ(readFile("directory/file"), "text");
    EXPECT_TRUE(RVGitRepository::createRepositoryAtPath(path, std::nullopt));
}

TEST_F(RVGitRepositoryOpeningTest, MakingARepositoryOnARelativePathFailsWith1102) {
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRepository::createRepositoryAtPath("relative", std::nullopt, &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitInitRepositoryInvalidPathError);
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), "relative");
}

TEST_F(RVGitRepositoryOpeningTest, MakingARepositoryOnAFileFailsWith1100) {
    const std::string file = writeFile("file", "text");
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRepository::createRepositoryAtPath(file, std::nullopt, &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitInitRepositoryFileExistsError);
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), file);
    EXPECT_EQ(readFile("file"), "text");
}

TEST_F(RVGitRepositoryOpeningTest, MakingARepositoryThatGitRefusesGivesTheCommandsError) {
    const std::string path = writeFile("file", "") + "/below";
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRepository::createRepositoryAtPath(path, std::nullopt, &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), path);
    EXPECT_TRUE(error->userInfoString(RVGitCommandErrorOutputErrorKey));
}

}  // namespace
