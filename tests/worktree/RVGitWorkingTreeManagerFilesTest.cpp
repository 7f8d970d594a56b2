#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

// What each operation does to the contents of files, above all to those that git could not give
// back: changes that are not committed, and files that it does not know.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RVGitWorkingTreeManagerFilesTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitWorkingTreeManagerFilesTest() {
        write("file", "committed\n");
        write("dir/inner", "committed\n");
        commitAll();
    }

    void link(const std::string& target, const std::string& path) const {
        std::filesystem::create_symlink(target, scratchPath("repository/" + path));
    }
    [[nodiscard]] std::string linkTarget(const std::string& path) const {
        return std::filesystem::read_symlink(scratchPath("repository/" + path));
    }
    /// A file with one change that is staged and another that is not.
    void changeFileTwice() const {
        write("file", "staged\n");
        git({"add", "file"}, repositoryPath());
        write("file", "changed\n");
    }
    /// A submodule "sub" with a changed and an untracked file.
    void addChangedSubmodule() const {
        const std::string library = initRepository("library");
        commitFile(library, "tracked", "one\n", "Message");
        git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", library, "sub"},
            repositoryPath());
        commitAll();
        write("sub/tracked", "changed\n");
        write("sub/untracked", "precious\n");
    }
    /// A conflict in "file", and the working tree as git leaves it.
    void makeConflict() const {
        git({"checkout", "-q", "-b", "theirs"}, repositoryPath());
        commitFile("repository", "file", "theirs\n", "Theirs");
        git({"checkout", "-q", "main"}, repositoryPath());
        commitFile("repository", "file", "ours\n", "Ours");
        EXPECT_EQ(runGit({"merge", "theirs"}, repositoryPath()).exitCode, 1);
    }
};

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingTakesWholeDirectoriesAndRemovals) {
    std::filesystem::remove(scratchPath("repository/dir/inner"));
    write("dir/new", "new\n");
    write("file", "changed\n");
    EXPECT_TRUE(manager().stageFiles({"dir"}));
    EXPECT_THAT(status(), ElementsAre("D  dir/inner", "A  dir/new", " M file"));
    std::filesystem::remove(scratchPath("repository/file"));
    EXPECT_TRUE(manager().stageFiles({"file"}));
    EXPECT_THAT(status(), ElementsAre("D  dir/inner", "A  dir/new", "D  file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingAllTakesEverythingButWhatIsIgnored) {
    write(".gitignore", "ignored\n");
    write("ignored", "ignored\n");
    write("deep/new", "new\n");
    std::filesystem::remove(scratchPath("repository/file"));
    EXPECT_TRUE(manager().stageAllFiles());
    EXPECT_THAT(status(), ElementsAre("A  .gitignore", "A  deep/new", "D  file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingAnIgnoredFileFailsUnlessForced) {
    write(".git/info/exclude", "ignored\n");
    write("ignored", "ignored\n");
    write("file", "changed\n");
    const auto error = errorOf([&](RVErrorPlace place) {
        return manager().stageFiles({"ignored", "file"}, place);
    });
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_THAT(status(), ElementsAre("M  file"));
    EXPECT_TRUE(manager().stageFiles({"ignored"}, RVGitStageOptionForce));
    EXPECT_THAT(status(), ElementsAre("M  file", "A  ignored"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingOneMissingFileStagesNothing) {
    write("file", "changed\n");
    const auto error = errorOf([&](RVErrorPlace place) {
        return manager().stageFiles({"file", "missing"}, place);
    });
    EXPECT_EQ(error.code(), RVGitAddFilesError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "missing");
    EXPECT_THAT(status(), ElementsAre(" M file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingALinkTakesTheLinkAndNotWhatItPointsAt) {
    link("nowhere", "dangling");
    link("dir", "link");
    EXPECT_TRUE(manager().stageFiles({"dangling", "link"}));
    EXPECT_EQ(staged("dangling"), "nowhere");
    EXPECT_EQ(staged("link"), "dir");
    EXPECT_FALSE(manager().stageFiles({"link/inner"}));
    EXPECT_THAT(status(), ElementsAre("A  dangling", "A  link"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingWithIntentKeepsTheContentsOut) {
    write("new", "new\n");
    EXPECT_TRUE(manager().stageFiles({"new"}, RVGitStageOptionIntentToAdd));
    EXPECT_THAT(status(), ElementsAre(" A new"));
    EXPECT_EQ(staged("new"), "");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, StagingASubmoduleTakesItsCommit) {
    addChangedSubmodule();
    EXPECT_TRUE(manager().stageFiles({"sub"}));
    EXPECT_THAT(status(), ElementsAre(" M sub"));
    const std::string hash = commitFile("repository/sub", "tracked", "two\n", "Message");
    EXPECT_TRUE(manager().stageFiles({"sub"}));
    EXPECT_EQ(gitInRepository({"rev-parse", ":sub"}), hash);
    EXPECT_EQ(read("sub/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, UnstagingLeavesTheWorkingTreeAlone) {
    changeFileTwice();
    write("new", "new\n");
    git({"rm", "-q", "--cached", "dir/inner"}, repositoryPath());
    git({"add", "new"}, repositoryPath());
    EXPECT_TRUE(manager().unstageFiles({"file", "new", "dir"}));
    EXPECT_THAT(status(), ElementsAre(" M file", "?? new"));
    EXPECT_EQ(read("file"), "changed\n");
    EXPECT_EQ(read("new"), "new\n");
    EXPECT_EQ(read("dir/inner"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, UnstagingUnknownPathsIsNoFailure) {
    write("untracked", "precious\n");
    EXPECT_TRUE(manager().unstageFiles({"untracked", "missing"}));
    EXPECT_THAT(status(), ElementsAre("?? untracked"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RemovingLosesChangesAndSparesUnknownFiles) {
    changeFileTwice();
    write("dir/untracked", "precious\n");
    write("untracked", "precious\n");
    EXPECT_TRUE(manager().removeFiles({"file", "dir", "untracked", "missing"}));
    EXPECT_THAT(status(),
                ElementsAre("D  dir/inner", "D  file", "?? dir/untracked", "?? untracked"));
    EXPECT_FALSE(exists("file"));
    EXPECT_EQ(read("dir/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RemovingALinkSparesWhatItPointsAt) {
    const std::string outside = writeFile("outside", "precious\n");
    link(outside, "link");
    link("dir", "dirlink");
    git({"add", "."}, repositoryPath());
    EXPECT_TRUE(manager().removeFiles({"link", "dirlink"}));
    EXPECT_THAT(status(), IsEmpty());
    EXPECT_EQ(readFile("outside"), "precious\n");
    EXPECT_EQ(read("dir/inner"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RemovingASubmoduleTakesAllThatIsInIt) {
    addChangedSubmodule();
    EXPECT_TRUE(manager().removeFiles({"sub"}));
    EXPECT_FALSE(exists("sub"));
    EXPECT_THAT(status(), ElementsAre("M  .gitmodules", "D  sub"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RemovingANestedRepositoryIsRefused) {
    const std::string nested = initRepository("repository/nested");
    commitFile(nested, "tracked", "one\n", "Message");
    commitAll();
    write("nested/untracked", "precious\n");
    EXPECT_FALSE(manager().removeFiles({"nested"}));
    EXPECT_EQ(read("nested/untracked"), "precious\n");
    EXPECT_TRUE(exists("nested/.git"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, UntrackingKeepsAllFiles) {
    changeFileTwice();
    addChangedSubmodule();
    EXPECT_TRUE(manager().untrackFiles({".", "missing"}));
    EXPECT_THAT(records({"ls-files", "-z"}), IsEmpty());
    EXPECT_EQ(read("file"), "changed\n");
    EXPECT_EQ(read("dir/inner"), "committed\n");
    EXPECT_EQ(read("sub/tracked"), "changed\n");
    EXPECT_EQ(read("sub/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingLosesStagedAndUnstagedChanges) {
    changeFileTwice();
    std::filesystem::remove(scratchPath("repository/dir/inner"));
    EXPECT_TRUE(manager().revertFiles({"file", "dir/inner"}));
    EXPECT_THAT(status(), IsEmpty());
    EXPECT_EQ(read("file"), "committed\n");
    EXPECT_EQ(read("dir/inner"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingADirectorySparesUnknownFiles) {
    write("dir/inner", "changed\n");
    write("dir/untracked", "precious\n");
    EXPECT_TRUE(manager().revertFiles({"dir"}));
    EXPECT_THAT(status(), ElementsAre("?? dir/untracked"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingAnUnknownFileRevertsNothing) {
    write("untracked", "precious\n");
    write("file", "changed\n");
    EXPECT_THAT(
        [&](RVErrorPlace place) {
            return manager().revertFiles({"file", "untracked"}, place);
        },
        failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(read("untracked"), "precious\n");
    EXPECT_EQ(read("file"), "changed\n");
    git({"add", "untracked"}, repositoryPath());
    EXPECT_FALSE(manager().revertFiles({"untracked"}));
    EXPECT_EQ(read("untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingToARevisionStagesItsContents) {
    commitFile("repository", "file", "newer\n", "Message");
    EXPECT_TRUE(manager().revertFiles({"file"}, "HEAD^"));
    EXPECT_THAT(status(), ElementsAre("M  file"));
    EXPECT_EQ(read("file"), "committed\n");
    const auto error = errorOf(
        [&](RVErrorPlace place) { return manager().revertFiles({"file"}, "nowhere", place); });
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "nowhere");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingReplacesALinkAndNotWhatItPointsAt) {
    const std::string outside = writeFile("outside", "precious\n");
    std::filesystem::remove(scratchPath("repository/file"));
    link(outside, "file");
    EXPECT_TRUE(manager().revertFiles({"file"}));
    EXPECT_EQ(read("file"), "committed\n");
    EXPECT_FALSE(std::filesystem::is_symlink(scratchPath("repository/file")));
    EXPECT_EQ(readFile("outside"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingALinkRestoresIt) {
    link("nowhere", "link");
    commitAll();
    std::filesystem::remove(scratchPath("repository/link"));
    write("link", "a file\n");
    EXPECT_TRUE(manager().revertFiles({"link"}));
    EXPECT_EQ(linkTarget("link"), "nowhere");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingReplacesADirectoryThatStandsInTheWay) {
    std::filesystem::remove(scratchPath("repository/file"));
    write("file/untracked", "lost\n");
    EXPECT_TRUE(manager().revertFiles({"file"}));
    EXPECT_EQ(read("file"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingReplacesUnknownFilesThatTheRevisionHas) {
    git({"rm", "-q", "-r", "file", "dir"}, repositoryPath());
    write(".gitignore", "file\n");
    commitAll();
    write("file", "ignored\n");
    write("dir/inner", "untracked\n");
    EXPECT_TRUE(manager().revertFiles({"file", "dir/inner"}, "HEAD^"));
    EXPECT_EQ(read("file"), "committed\n");
    EXPECT_EQ(read("dir/inner"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingASubmoduleLeavesItsFilesAlone) {
    addChangedSubmodule();
    commitFile("repository/sub", "tracked", "two\n", "Message");
    git({"add", "sub"}, repositoryPath());
    EXPECT_TRUE(manager().revertFiles({"sub"}));
    EXPECT_THAT(status(), ElementsAre(" M sub"));
    EXPECT_EQ(read("sub/tracked"), "two\n");
    EXPECT_EQ(read("sub/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, OneSideOfAConflictIsTaken) {
    makeConflict();
    EXPECT_TRUE(manager().revertFiles({"file"}, "--theirs"));
    EXPECT_EQ(read("file"), "theirs\n");
    EXPECT_TRUE(manager().revertFiles({"file"}, "--ours"));
    EXPECT_EQ(read("file"), "ours\n");
    EXPECT_THAT(status(), ElementsAre("UU file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, AConflictIsWrittenAnew) {
    makeConflict();
    const std::string conflict = read("file");
    write("file", "resolved\n");
    EXPECT_TRUE(manager().revertUnmergedFiles({"file"}));
    EXPECT_EQ(read("file"), "<<<<<<< ours\nours\n=======\ntheirs\n>>>>>>> theirs\n");
    EXPECT_THAT(conflict, HasSubstr("=======\ntheirs\n"));
    EXPECT_THAT(status(), ElementsAre("UU file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, AResolvedConflictIsUnresolved) {
    makeConflict();
    write("file", "resolved\n");
    EXPECT_TRUE(manager().stageFiles({"file"}));
    EXPECT_THAT(status(), ElementsAre("M  file"));
    EXPECT_TRUE(manager().unresolveIndexEntries({"file"}));
    EXPECT_THAT(status(), ElementsAre("UU file"));
    EXPECT_EQ(read("file"), "resolved\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, WithoutAMergeThereIsNothingToUnresolve) {
    write("file", "changed\n");
    EXPECT_TRUE(manager().unresolveIndexEntries({"file", "missing"}));
    EXPECT_THAT(status(), ElementsAre(" M file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, AnAssumedFileLooksUnchangedUntilTheFlagIsGone) {
    write("file", "changed\n");
    EXPECT_TRUE(manager().setAssumeUnchangedFlagForFilePaths({"file"}));
    EXPECT_THAT(status(), IsEmpty());
    EXPECT_TRUE(manager().unsetAssumeUnchangedFlagForFilePaths({"file"}));
    EXPECT_THAT(status(), ElementsAre(" M file"));
    EXPECT_EQ(read("file"), "changed\n");
    EXPECT_THAT(
        [&](RVErrorPlace place) {
            return manager().setAssumeUnchangedFlagForFilePaths({"untracked"}, place);
        },
        failsWith(RVGitUpdateIndexNoSuchFileError));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, MovingKeepsChangesStagedAndUnstaged) {
    changeFileTwice();
    EXPECT_TRUE(manager().moveFileAtPath("file", "moved", 0));
    EXPECT_EQ(read("moved"), "changed\n");
    EXPECT_EQ(staged("moved"), "staged\n");
    EXPECT_FALSE(exists("file"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, MovingADirectoryTakesUnknownFilesAlong) {
    write("dir/untracked", "precious\n");
    EXPECT_TRUE(manager().moveFileAtPath("dir", "moved", 0));
    EXPECT_THAT(status(), ElementsAre("D  dir/inner", "A  moved/inner", "?? moved/untracked"));
    makeDirectory("repository/other");
    EXPECT_TRUE(manager().moveFileAtPath("moved", "other", 0));
    EXPECT_EQ(read("other/moved/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, MovingALinkKeepsItsTarget) {
    link("../nowhere", "link");
    commitAll();
    EXPECT_TRUE(manager().moveFileAtPath("link", "dir/link", 0));
    EXPECT_EQ(linkTarget("dir/link"), "../nowhere");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, MovingOverAFileNeedsForce) {
    write("other", "lost\n");
    EXPECT_THAT(
        [&](RVErrorPlace place) { return manager().moveFileAtPath("file", "other", 0, place); },
        failsWith(RVGitMoveFileAlreadyExistsError));
    EXPECT_EQ(read("other"), "lost\n");
    EXPECT_TRUE(manager().moveFileAtPath("file", "other", RVGitMoveOptionForce));
    EXPECT_EQ(read("other"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, ARenameOfCaseOverwritesWhereTheNamesAreTwoFiles) {
    EXPECT_TRUE(manager().moveFileAtPath("file", "File", 0));
    EXPECT_THAT(status(), ElementsAre("A  File", "D  file"));
    write("file", "lost\n");
    EXPECT_TRUE(manager().moveFileAtPath("File", "file", 0));
    EXPECT_EQ(read("file"), "committed\n");
    EXPECT_THAT(status(), IsEmpty());
}

TEST_F(RVGitWorkingTreeManagerFilesTest, MovingASubmoduleMovesItsFiles) {
    addChangedSubmodule();
    EXPECT_TRUE(manager().moveFileAtPath("sub", "moved", 0));
    EXPECT_EQ(read("moved/tracked"), "changed\n");
    EXPECT_EQ(read("moved/untracked"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, CheckingOutARevisionKeepsChangesOrFails) {
    git({"branch", "topic"}, repositoryPath());
    commitFile("repository", "file", "newer\n", "Message");
    write("dir/inner", "changed\n");
    EXPECT_TRUE(manager().checkoutRevision("topic"));
    EXPECT_EQ(read("dir/inner"), "changed\n");
    EXPECT_EQ(gitInRepository({"symbolic-ref", "--short", "HEAD"}), "topic");
    write("file", "changed\n");
    const auto error =
        errorOf([&](RVErrorPlace place) { return manager().checkoutRevision("main", place); });
    EXPECT_EQ(error.code(), RVGitCheckoutUncommittedChangesError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "main");
    EXPECT_EQ(read("file"), "changed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, CheckingOutARevisionOverwritesIgnoredFiles) {
    git({"branch", "topic"}, repositoryPath());
    git({"rm", "-q", "file"}, repositoryPath());
    write(".gitignore", "file\n");
    commitAll();
    write("file", "ignored\n");
    EXPECT_TRUE(manager().checkoutRevision("topic"));
    EXPECT_EQ(read("file"), "committed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, CheckingOutANameThatIsAFileRevertsTheFile) {
    changeFileTwice();
    EXPECT_TRUE(manager().checkoutRevision("file"));
    EXPECT_EQ(read("file"), "staged\n");
    EXPECT_FALSE(manager().checkoutRevision("nothing at all"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, RevertingWhatIsOnlyIntendedToBeAddedKeepsIt) {
    write("new", "precious\n");
    EXPECT_TRUE(manager().stageFiles({"new"}, RVGitStageOptionIntentToAdd));
    EXPECT_FALSE(manager().revertFiles({"new"}));
    EXPECT_EQ(read("new"), "precious\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, ALinkedWorkingTreeHasAnIndexAndALockOfItsOwn) {
    const std::string path = scratchPath("linked");
    git({"worktree", "add", "-b", "linked", path}, repositoryPath());
    const std::string gitDirectory = gitLine({"rev-parse", "--absolute-git-dir"}, path);
    RVGitWorkingTreeManager linked(
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(path, gitDirectory));
    writeFile("linked/file", "changed\n");
    EXPECT_TRUE(linked.stageFiles({"file"}));
    EXPECT_EQ(gitLine({"status", "--porcelain"}, path), "M  file");
    EXPECT_THAT(status(), IsEmpty());
    writeFile(gitDirectory + "/index.lock", "");
    EXPECT_THAT([&](RVErrorPlace place) { return linked.unstageFiles({"file"}, place); },
                failsWith(RVGitIndexLockError));
    write("file", "changed here\n");
    EXPECT_TRUE(manager().stageFiles({"file"}));
    EXPECT_EQ(readFile("linked/file"), "changed\n");
}

TEST_F(RVGitWorkingTreeManagerFilesTest, ABareRepositoryHasNoWorkingTree) {
    const std::string path = initBareRepository();
    RVGitWorkingTreeManager bare(RVGitRepository::bareRepositoryWithGitDirectoryPath(path));
    for (const auto& error :
         {errorOf([&](RVErrorPlace place) { return bare.stageFiles({"file"}, place); }),
          errorOf([&](RVErrorPlace place) { return bare.removeFiles({"file"}, place); }),
          errorOf([&](RVErrorPlace place) { return bare.moveFileAtPath("a", "b", 0, place); }),
          errorOf([&](RVErrorPlace place) { return bare.revertFiles({"file"}, place); }),
          errorOf([&](RVErrorPlace place) { return bare.commitWithMessage("a", 0, place); })})
        EXPECT_EQ(error.code(), RVGitNoWorkTreeError);
}

TEST_F(RVGitWorkingTreeManagerFilesTest, ResettingWithAnEmptyListMovesHeadAndLosesChanges) {
    const std::string first = gitInRepository({"rev-parse", "HEAD"});
    commitFile("repository", "other", "newer\n", "Message");
    write("file", "changed\n");
    EXPECT_TRUE(manager().resetToRevision("HEAD^", RVGitResetModeHard, Paths()));
    EXPECT_EQ(gitInRepository({"rev-parse", "HEAD"}), first);
    EXPECT_EQ(read("file"), "committed\n");
    EXPECT_FALSE(exists("other"));
}

TEST_F(RVGitWorkingTreeManagerFilesTest, EachResetModeKeepsWhatItPromises) {
    const std::string base = gitInRepository({"rev-parse", "HEAD"});
    const std::string tip = commitFile("repository", "file", "newer\n", "Message");
    write("dir/inner", "changed\n");
    write("untracked", "precious\n");
    const auto resetTo = [&](const std::string& revision, RVGitResetMode mode) {
        return manager().resetToRevision(revision, mode, std::nullopt);
    };
    EXPECT_TRUE(resetTo(base, RVGitResetModeSoft));
    EXPECT_THAT(status(), ElementsAre(" M dir/inner", "M  file", "?? untracked"));
    EXPECT_TRUE(resetTo(tip, RVGitResetModeSoft));
    EXPECT_TRUE(resetTo(base, RVGitResetModeNone));
    EXPECT_THAT(status(), ElementsAre(" M dir/inner", " M file", "?? untracked"));
    EXPECT_TRUE(resetTo(tip, RVGitResetModeNone));
    // Has git look at the files: 2.23 does not after a reset, and then takes them for changed.
    EXPECT_THAT(status(), ElementsAre(" M dir/inner", "?? untracked"));
    EXPECT_TRUE(resetTo(base, RVGitResetModeKeep));
    EXPECT_THAT(status(), ElementsAre(" M dir/inner", "?? untracked"));
    write("file", "changed\n");
    EXPECT_FALSE(resetTo(tip, RVGitResetModeKeep));
    EXPECT_EQ(read("file"), "changed\n");
    EXPECT_TRUE(resetTo(tip, RVGitResetModeHard));
    EXPECT_THAT(status(), ElementsAre("?? untracked"));
    EXPECT_EQ(read("untracked"), "precious\n");
    EXPECT_FALSE(manager().resetToRevision("HEAD", RVGitResetModeHard, Paths{"file"}));
    EXPECT_TRUE(manager().resetToRevision("HEAD^", RVGitResetModeNone, Paths{"file"}));
    EXPECT_THAT(status(), ElementsAre("MM file", "?? untracked"));
}

class RVGitWorkingTreeManagerUnbornTest : public RVGitWorkingTreeManagerTestCase {};

TEST_F(RVGitWorkingTreeManagerUnbornTest, NothingIsLostBeforeTheFirstCommit) {
    write("file", "staged\n");
    write("untracked", "precious\n");
    EXPECT_TRUE(manager().stageFiles({"file"}));
    write("file", "changed\n");
    EXPECT_FALSE(manager().revertFiles({"file", "untracked"}));
    EXPECT_EQ(read("file"), "changed\n");
    EXPECT_EQ(manager().patchByComparingIndexWithBaseForFilePaths(Paths{"file"}, std::nullopt),
              git({"diff", "--cached", "--full-index"}, repositoryPath()));
    EXPECT_TRUE(manager().unstageFiles({"file"}));
    EXPECT_THAT(status(), ElementsAre("?? file", "?? untracked"));
    EXPECT_TRUE(manager().stageFiles({"file"}));
    EXPECT_TRUE(manager().commitWithMessage("First", 0));
    EXPECT_THAT(status(), ElementsAre("?? untracked"));
    EXPECT_EQ(gitInRepository({"show", "HEAD:file"}), "changed");
}

}  // namespace
