#include "RVGit/repository/RVGitRepository.h"

#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace {

class RVGitRepositoryTest : public RVGitRepositoryTestCase {
protected:
    ~RVGitRepositoryTest() override {
        if (const auto path = RVGitRepository::temporaryFilePath())
            std::filesystem::remove(*path);
        RVGitRepository::setTemporaryFilePath(std::nullopt);
    }

    [[nodiscard]] std::string gitDirectory() const { return repositoryPath() + "/.git"; }
    [[nodiscard]] std::string descriptionFile() const { return gitDirectory() + "/description"; }
    static std::optional<RVError> filledPlace() { return gitErrorWithCode(RVGitRVGitGenericError); }
    static void expectError(const std::optional<RVError>& error, std::int64_t code,
                            const std::string& path) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), RVGitErrorDomain);
        EXPECT_EQ(error->code(), code);
        EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), path);
    }
};

TEST_F(RVGitRepositoryTest, NamedPathsLieInTheGitDirectoryOrTheWorkingTree) {
    const auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/tree", "/git dir");
    EXPECT_EQ(repository->configFilePath(), "/git dir/config");
    EXPECT_EQ(repository->HEADFilePath(), "/git dir/HEAD");
    EXPECT_EQ(repository->cherryPickHEADFilePath(), "/git dir/CHERRY_PICK_HEAD");
    EXPECT_EQ(repository->mergeHEADFilePath(), "/git dir/MERGE_HEAD");
    EXPECT_EQ(repository->rebaseDirectoryPath(), "/git dir/rebase-apply");
    EXPECT_EQ(repository->descriptionPath(), "/git dir/description");
    EXPECT_EQ(repository->defaultIgnoresPath(), "/tree/.gitignore");
    EXPECT_EQ(repository->defaultExcludesPath(), "/git dir/info/exclude");
    EXPECT_EQ(repository->mergeCommitMessagePath(), "/git dir/MERGE_MSG");
    EXPECT_EQ(repository->squashCommitMessagePath(), "/git dir/SQUASH_MSG");
    EXPECT_EQ(repository->submodulesFilePath(), "/tree/.gitmodules");
    EXPECT_EQ(repository->clonedSubmodulesDirectory(), "/git dir/modules");
    EXPECT_EQ(repository->SVNDirectoryPath(), "/git dir/svn");
    EXPECT_EQ(repository->SVNMetadatapath(), "/git dir/svn/.metadata");
}

TEST_F(RVGitRepositoryTest, NamedPathsOfWorkInATreeAreAbsentWhenBare) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath("/bare.git");
    EXPECT_EQ(bare->configFilePath(), "/bare.git/config");
    EXPECT_EQ(bare->HEADFilePath(), "/bare.git/HEAD");
    EXPECT_EQ(bare->cherryPickHEADFilePath(), std::nullopt);
    EXPECT_EQ(bare->mergeHEADFilePath(), std::nullopt);
    EXPECT_EQ(bare->rebaseDirectoryPath(), std::nullopt);
    EXPECT_EQ(bare->descriptionPath(), "/bare.git/description");
    EXPECT_EQ(bare->defaultIgnoresPath(), std::nullopt);
    EXPECT_EQ(bare->defaultExcludesPath(), "/bare.git/info/exclude");
    EXPECT_EQ(bare->mergeCommitMessagePath(), std::nullopt);
    EXPECT_EQ(bare->squashCommitMessagePath(), std::nullopt);
    EXPECT_EQ(bare->submodulesFilePath(), std::nullopt);
    EXPECT_EQ(bare->clonedSubmodulesDirectory(), "/bare.git/modules");
    EXPECT_EQ(bare->SVNDirectoryPath(), std::nullopt);
    EXPECT_EQ(bare->SVNMetadatapath(), std::nullopt);
}

TEST_F(RVGitRepositoryTest, TheNameAndTheURLAreThoseOfTheRoot) {
    const auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/a/my tree", "/git");
    EXPECT_EQ(repository->name(), "my tree");
    ASSERT_TRUE(repository->fileURL());
    EXPECT_TRUE(repository->fileURL()->isFileURL());
    EXPECT_EQ(repository->fileURL()->path(), "/a/my tree");
    EXPECT_EQ(RVGitRepository::bareRepositoryWithGitDirectoryPath("/a/bare.git")->name(),
              "bare.git");
}

TEST_F(RVGitRepositoryTest, ADetachedWorkingTreeIsAConfiguredOne) {
    EXPECT_FALSE(repository()->isDetachedWorkingTree());
    gitInRepository({"config", "core.worktree", scratchDirectory()});
    EXPECT_TRUE(repository()->isDetachedWorkingTree());
}

TEST_F(RVGitRepositoryTest, AnEmptyRepositoryHasNoBranch) {
    EXPECT_TRUE(repository()->isEmpty());
    const std::string hash = makeCommit();
    EXPECT_FALSE(repository()->isEmpty());
    gitInRepository({"tag", "v1", hash});
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-q", "-D", "main"});
    EXPECT_TRUE(repository()->isEmpty());
}

TEST_F(RVGitRepositoryTest, ARepositoryThatCannotBeReadIsNotEmpty) {
    std::filesystem::remove_all(repositoryPath());
    EXPECT_FALSE(repository()->isEmpty());
    EXPECT_EQ(repository()->HEADRevision(), std::nullopt);
}

TEST_F(RVGitRepositoryTest, TheSubversionBridgeIsADirectory) {
    EXPECT_FALSE(repository()->isGitSVNRepository());
    writeFile(gitDirectory() + "/svn", "");
    EXPECT_FALSE(repository()->isGitSVNRepository());
    std::filesystem::remove(gitDirectory() + "/svn");
    makeDirectory(gitDirectory() + "/svn");
    EXPECT_TRUE(repository()->isGitSVNRepository());
    EXPECT_FALSE(
        RVGitRepository::bareRepositoryWithGitDirectoryPath(gitDirectory())->isGitSVNRepository());
}

TEST_F(RVGitRepositoryTest, HEADNamesABranchThatMayBeUnborn) {
    EXPECT_EQ(repository()->HEADRefName(), "refs/heads/main");
    EXPECT_FALSE(repository()->isHEADBranchDetached());
    EXPECT_EQ(repository()->HEADRevision(), "");
    const std::string hash = makeCommit();
    EXPECT_EQ(repository()->HEADRefName(), "refs/heads/main");
    EXPECT_EQ(repository()->HEADRevision(), hash);
}

TEST_F(RVGitRepositoryTest, ADetachedHEADIsAHash) {
    const std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_TRUE(repository()->isHEADBranchDetached());
    EXPECT_EQ(repository()->HEADRefName(), hash);
    EXPECT_EQ(repository()->HEADRevision(), "");
}

TEST_F(RVGitRepositoryTest, AMissingHEADFileIsNotDetached) {
    std::filesystem::remove(gitDirectory() + "/HEAD");
    EXPECT_FALSE(repository()->isHEADBranchDetached());
    EXPECT_EQ(repository()->HEADRefName(), std::nullopt);
    const auto invalid = RVGitRepository::repositoryWithPath(scratchPath("missing"));
    EXPECT_FALSE(invalid->isHEADBranchDetached());
    EXPECT_EQ(invalid->HEADRefName(), std::nullopt);
}

TEST_F(RVGitRepositoryTest, HEADRevisionAsksForTheHashOfTheBranch) {
    const RVRecordingGit recorder = useRecordingGit();
    (void)repository()->HEADRevision();
    EXPECT_THAT(lastArguments(recorder), testing::ElementsAre("show-ref", "-s", "refs/heads/main"));
    (void)repository()->isEmpty();
    EXPECT_THAT(lastArguments(recorder), testing::ElementsAre("show-ref", "--heads"));
}

TEST_F(RVGitRepositoryTest, TheDescriptionIsReadAndReplaced) {
    for (const std::string text :
         {"A long description", "short", "", "two\nlines\n", "Z\xC3\xBCrich"}) {
        EXPECT_TRUE(repository()->setDescription(text));
        EXPECT_EQ(repository()->description(), text);
        EXPECT_EQ(readFile(descriptionFile()), text);
    }
}

TEST_F(RVGitRepositoryTest, ADescriptionInAnotherEncodingIsRead) {
    writeFile(descriptionFile(), "Z\xFCrich");
    EXPECT_EQ(repository()->description(), "Z\xC3\xBCrich");
}

TEST_F(RVGitRepositoryTest, ADescriptionThatCannotBeReadFailsWith300) {
    std::filesystem::remove(descriptionFile());
    std::optional<RVError> error;
    EXPECT_EQ(repository()->description(&error), std::nullopt);
    expectError(error, RVGitDescriptionReadError, repositoryPath());

    const auto invalid = RVGitRepository::repositoryWithPath(scratchPath("missing"));
    EXPECT_EQ(invalid->description(&error), std::nullopt);
    expectError(error, RVGitDescriptionReadError, scratchPath("missing"));
}

TEST_F(RVGitRepositoryTest, AMissingDescriptionIsMade) {
    std::filesystem::remove(descriptionFile());
    EXPECT_TRUE(repository()->setDescription("new"));
    EXPECT_EQ(repository()->description(), "new");
}

TEST_F(RVGitRepositoryTest, ADescriptionThatCannotBeMadeFailsWithAnEmptyPlace) {
    std::filesystem::remove_all(gitDirectory());
    auto error = filledPlace();
    EXPECT_FALSE(repository()->setDescription("new", &error));
    EXPECT_EQ(error, std::nullopt);

    error = filledPlace();
    EXPECT_FALSE(
        RVGitRepository::repositoryWithPath(scratchPath("missing"))->setDescription("new", &error));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitRepositoryTest, ADescriptionThatCannotBeWrittenFailsWith301) {
    std::filesystem::remove(descriptionFile());
    std::optional<RVError> error;
    // A full disk.
    std::filesystem::create_symlink("/dev/full", descriptionFile());
    EXPECT_FALSE(repository()->setDescription("text", &error));
    expectError(error, RVGitDescriptionWriteError, repositoryPath());

    std::filesystem::remove(descriptionFile());
    makeDirectory(descriptionFile());
    error.reset();
    EXPECT_FALSE(repository()->setDescription("text", &error));
    expectError(error, RVGitDescriptionWriteError, repositoryPath());
}

TEST_F(RVGitRepositoryTest, ADescriptionWithoutWritePermissionFailsWith301) {
    writeFile(descriptionFile(), "old", 0444);
    const RVUnprivilegedUser user(gitDirectory());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    std::optional<RVError> error;
    EXPECT_FALSE(repository()->setDescription("new", &error));
    expectError(error, RVGitDescriptionWriteError, repositoryPath());
    EXPECT_EQ(readFile(descriptionFile()), "old");
}

TEST_F(RVGitRepositoryTest, EveryGitDirectoryPassesForALink) {
    EXPECT_TRUE(repository()->isGitDirectoryFileLink());
    writeFile("link", "gitdir: /elsewhere");
    EXPECT_TRUE(RVGitRepository::bareRepositoryWithGitDirectoryPath(scratchPath("link"))
                    ->isGitDirectoryFileLink());
}

TEST_F(RVGitRepositoryTest, ALinkFileIsReadUpToItsWhiteSpace) {
    struct Case {
        std::string contents;
        std::optional<std::string> target;
    };
    const std::vector<Case> cases = {
        {"gitdir: /some where/.git\n", "/some where/.git"},
        {"gitdir:../.git/modules/a", "../.git/modules/a"},
        {"gitdir:", ""},
        {"ref: refs/heads/main\n", std::nullopt},
        {"", std::nullopt},
        {" gitdir: /elsewhere", std::nullopt},
    };
    for (const Case& testCase : cases) {
        const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(
            writeFile("link", testCase.contents));
        auto error = filledPlace();
        EXPECT_EQ(repository->gitDirectoryPathFromGitDirectoryFileLink(&error), testCase.target);
        EXPECT_EQ(error, std::nullopt);
    }
}

TEST_F(RVGitRepositoryTest, AGitDirectoryIsNoLinkAndLeavesTheReadError) {
    std::optional<RVError> error;
    EXPECT_EQ(repository()->gitDirectoryPathFromGitDirectoryFileLink(&error), std::nullopt);
    EXPECT_TRUE(error);
    EXPECT_FALSE(repository()->isGitWorktreeRepository());
    EXPECT_FALSE(repository()->isSubmoduleRepository());

    error.reset();
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(
        writeFile("latin", "gitdir: Z\xFCrich"));
    EXPECT_EQ(repository->gitDirectoryPathFromGitDirectoryFileLink(&error), std::nullopt);
    EXPECT_TRUE(error);
}

TEST_F(RVGitRepositoryTest, LinksTellWorktreesFromSubmodules) {
    makeCommit();
    const std::string worktree = scratchPath("linked");
    gitInRepository({"worktree", "add", "--detach", worktree});
    const auto linked =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(worktree, worktree + "/.git");
    EXPECT_TRUE(linked->isGitWorktreeRepository());
    EXPECT_FALSE(linked->isSubmoduleRepository());

    const std::string super = initRepository("super");
    git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", repositoryPath(),
         "sub"},
        super);
    const auto submodule = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        super + "/sub", super + "/sub/.git");
    EXPECT_FALSE(submodule->isGitWorktreeRepository());
    EXPECT_TRUE(submodule->isSubmoduleRepository());
}

TEST_F(RVGitRepositoryTest, TheLinkFileIsWrittenWithoutANewline) {
    const std::string tree = makeDirectory("tree");
    const auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(tree, gitDirectory());
    EXPECT_TRUE(repository->updateGitDirectoryFileLinkWithPath("../some where"));
    EXPECT_EQ(readFile("tree/.git"), "gitdir: ../some where");
    EXPECT_TRUE(repository->updateGitDirectoryFileLinkWithPath(gitDirectory()));
    EXPECT_EQ(gitLine({"rev-parse", "--absolute-git-dir"}, tree), gitDirectory());

    const std::string directory = makeDirectory("bare");
    EXPECT_TRUE(RVGitRepository::bareRepositoryWithGitDirectoryPath(directory)
                    ->updateGitDirectoryFileLinkWithPath("/elsewhere"));
    EXPECT_EQ(readFile("bare/.git"), "gitdir: /elsewhere");
}

TEST_F(RVGitRepositoryTest, ALinkFileThatCannotBeWrittenGivesTheWritesError) {
    const auto repository = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        scratchPath("missing"), gitDirectory());
    std::optional<RVError> error;
    EXPECT_FALSE(repository->updateGitDirectoryFileLinkWithPath("/elsewhere", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
}

TEST_F(RVGitRepositoryTest, TheLinkFileOfADirectoryIsReplacedOnlyIfItIsThereAndAFile) {
    const std::string tree = makeDirectory("tree");
    auto error = filledPlace();
    EXPECT_FALSE(
        RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(tree, "/elsewhere", &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_FALSE(fileExists("tree/.git"));

    writeFile("tree/.git", "gitdir: /old\n");
    EXPECT_TRUE(
        RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(tree, "/elsewhere", &error));
    EXPECT_EQ(readFile("tree/.git"), "gitdir: /elsewhere");

    error = filledPlace();
    EXPECT_FALSE(RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(repositoryPath(),
                                                                            "/elsewhere", &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_TRUE(std::filesystem::is_directory(gitDirectory()));
}

TEST_F(RVGitRepositoryTest, TheGitDirectoryOfALinkedWorktreeNamesItsTree) {
    makeCommit();
    const std::string worktree = scratchPath("linked tree");
    gitInRepository({"worktree", "add", "--detach", worktree});
    // Not every git keeps the blank.
    const RVURL url =
        RVURL::fileURLWithPath(gitLine({"rev-parse", "--absolute-git-dir"}, worktree));
    EXPECT_TRUE(RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(url));
    const auto tree = RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(url);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->path(), worktree);
}

TEST_F(RVGitRepositoryTest, ATreeNamedRelativelyIsFoundFromTheGitDirectory) {
    const std::string directory = makeDirectory("git/worktrees/linked");
    writeFile("git/worktrees/linked/gitdir", "../../../tree/.git\n");
    const auto tree = RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(
        RVURL::fileURLWithPath(directory));
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->path(), scratchPath("tree"));
}

TEST_F(RVGitRepositoryTest, ALinkInThePlaceOfTheFileThatNamesTheTreeIsNotFollowed) {
    const RVURL url = RVURL::fileURLWithPath(makeDirectory("directory"));
    writeFile("elsewhere", "/tree/.git\n");
    // A device would be read without end.
    for (const std::string target : {"../elsewhere", "/dev/full"}) {
        std::filesystem::create_symlink(target, scratchPath("directory/gitdir"));
        EXPECT_EQ(RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(url),
                  std::nullopt)
            << target;
        std::filesystem::remove(scratchPath("directory/gitdir"));
    }
    writeFile("directory/gitdir", std::string(std::size_t{1} << 20, 'a'));
    EXPECT_EQ(RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(url),
              std::nullopt);
}

TEST_F(RVGitRepositoryTest, OneOfTheTwoFilesMakesNoLinkedWorktree) {
    const RVURL url = RVURL::fileURLWithPath(makeDirectory("directory"));
    EXPECT_FALSE(RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(url));
    writeFile("directory/commondir", "../..\n");
    EXPECT_FALSE(RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(url));
    EXPECT_EQ(RVGitRepository::workingTreeDirectoryURLFromAlternateGitDirectoryAtURL(url),
              std::nullopt);
    writeFile("directory/gitdir", "/tree/.git\n");
    EXPECT_TRUE(RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(url));
    std::filesystem::remove(scratchPath("directory/commondir"));
    EXPECT_FALSE(RVGitRepository::isAlternateWorktreeGitDirectoryAtURL(url));
}

TEST_F(RVGitRepositoryTest, WhiteSpaceIsRemovedAtTheStartOrAtBothEnds) {
    EXPECT_EQ(repository()->removeLeadingWhitespace(" \t\n a b \n"), "a b \n");
    EXPECT_EQ(repository()->removeLeadingWhitespace("\xE2\x80\x83wide"), "wide");
    EXPECT_EQ(repository()->removeLeadingWhitespace("a b"), "a b");
    EXPECT_EQ(repository()->removeLeadingWhitespace(" "), "");
    EXPECT_EQ(repository()->trimWhitespacesFor(" \t\n a b \n"), "a b");
}

TEST_F(RVGitRepositoryTest, AllowedSignersAreLookedUpInThreeSpellings) {
    const std::string file = writeFile("signers", "");
    const std::string fileWithBlank = writeFile("blank ", "");
    EXPECT_EQ(repository()->existingFileAt(file), file);
    EXPECT_EQ(repository()->existingFileAt(" \t" + file), file);
    EXPECT_EQ(repository()->existingFileAt(" " + file + "\n"), file);
    EXPECT_EQ(repository()->existingFileAt(" " + fileWithBlank), fileWithBlank);
    EXPECT_EQ(repository()->existingFileAt(scratchPath("missing")), std::nullopt);

    const std::string inTree = writeFile(repositoryPath() + "/keys/signers", "");
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith("keys/signers"), inTree);
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith("  keys/signers \n"), inTree);
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith("../signers"), file);
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith(file), file);
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith("signers"), std::nullopt);
    EXPECT_EQ(repository()->existingFileRelativeToRepoWith(" "), std::nullopt);

    setEnvironmentVariable("HOME", scratchDirectory());
    EXPECT_EQ(repository()->existingFileWithTildeExpandedWithPath("~/signers"), file);
    EXPECT_EQ(repository()->existingFileWithTildeExpandedWithPath(" ~/signers "), file);
    EXPECT_EQ(repository()->existingFileWithTildeExpandedWithPath("~/missing"), std::nullopt);
}

TEST_F(RVGitRepositoryTest, TheConfiguredAllowedSignersFileIsFoundWhicheverWayItIsNamed) {
    setEnvironmentVariable("HOME", scratchDirectory());
    const std::string file = writeFile("signers", "");
    const std::string inTree = writeFile(repositoryPath() + "/local-signers", "");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {file, file},
        {" " + file, file},
        {"local-signers", inTree},
        {" local-signers", inTree},
        {"~/signers", file},
    };
    for (const auto& [value, path] : cases) {
        EXPECT_TRUE(repository()->config()->setAllowedSignersFile(value));
        EXPECT_EQ(repository()->allowedSignersFileFullPath(), path) << value;
    }
    EXPECT_EQ(RVGitRepository::temporaryFilePath(), std::nullopt);
}

TEST_F(RVGitRepositoryTest, TheAllowedSignersFileOfTheUserIsFound) {
    setEnvironmentVariable("HOME", makeDirectory("home"));
    const std::string file = writeFile("signers", "");
    git({"config", "--global", "gpg.ssh.allowedSignersFile", file});
    EXPECT_EQ(repository()->allowedSignersFileFullPath(), file);
}

TEST_F(RVGitRepositoryTest, WithoutAnAllowedSignersFileTheTemporaryOneServes) {
    const auto temporary = repository()->allowedSignersFileFullPath();
    ASSERT_TRUE(temporary);
    EXPECT_EQ(readFile(*temporary), "");
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFilePath(), temporary);
    for (const char* value : {"", "missing", "~/missing"}) {
        EXPECT_TRUE(repository()->config()->setAllowedSignersFile(value));
        EXPECT_EQ(repository()->allowedSignersFileFullPath(), temporary);
    }
}

TEST_F(RVGitRepositoryTest, TheTemporaryFileIsMadeAgainIfItHasVanished) {
    const auto first = RVGitRepository::temporaryAllowedSignersFilePath();
    ASSERT_TRUE(first);
    EXPECT_EQ(RVGitRepository::temporaryFilePath(), first);
    std::filesystem::remove(*first);
    const auto second = RVGitRepository::temporaryAllowedSignersFilePath();
    ASSERT_TRUE(second);
    EXPECT_TRUE(fileExists(*second));
    EXPECT_EQ(RVGitRepository::temporaryFilePath(), second);

    const std::string own = writeFile("own", "");
    std::filesystem::remove(*second);
    RVGitRepository::setTemporaryFilePath(own);
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFilePath(), own);
}

TEST_F(RVGitRepositoryTest, ATemporaryFileThatCannotBeMadeIsAbsent) {
    RVGitRepository::setTemporaryFilePath(scratchPath("vanished"));
    setEnvironmentVariable("TMPDIR", scratchPath("missing"));
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFilePath(), std::nullopt);
    EXPECT_EQ(RVGitRepository::temporaryFilePath(), std::nullopt);
}

}  // namespace
