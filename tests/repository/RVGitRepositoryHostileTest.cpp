#include <sys/stat.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;

/// Repositories that do not lie where git made them, or hold what git does not make.
class RVGitRepositoryHostileTest : public RVGitRepositoryTestCase {
protected:
    static void expectWorkingTree(const std::string& openedPath, const std::string& workingTree) {
        SCOPED_TRACE(openedPath);
        const auto repository = RVGitRepository::repositoryWithPath(openedPath);
        EXPECT_TRUE(repository->isValid());
        EXPECT_EQ(repository->path(), workingTree);
        EXPECT_EQ(repository->workingTreeDirectoryPath(), workingTree);
    }
    std::string makeLinkedWorktree(const std::string& name) {
        makeCommit();
        const std::string path = scratchPath(name);
        gitInRepository({"worktree", "add", "--detach", path});
        return path;
    }
    void putLinkInPlaceOf(const std::string& path, const std::string& target) const {
        fs::remove(path);
        fs::create_symlink(target, path);
    }
};

TEST_F(RVGitRepositoryHostileTest, ASeparateGitDirectoryHasTheTreeThatLeadsToIt) {
    const std::string tree = scratchPath("tree");
    makeDirectory("store");
    git({"init", "-q", "--separate-git-dir", scratchPath("store/git"), tree});
    const std::string inner = makeDirectory("tree/inner");
    expectWorkingTree(tree, tree);
    expectWorkingTree(inner, tree);
    EXPECT_EQ(RVGitRepository::repositoryWithPath(tree)->gitDirectoryPath(),
              scratchPath("store/git"));
    // From inside the git directory nothing leads to the tree.
    EXPECT_FALSE(RVGitRepository::repositoryWithPath(scratchPath("store/git"))->isValid());
}

TEST_F(RVGitRepositoryHostileTest, ALinkedWorktreeThatWasMovedOpensWhereItIs) {
    const std::string old = makeLinkedWorktree("old");
    const std::string moved = scratchPath("moved");
    fs::rename(old, moved);
    expectWorkingTree(moved, moved);
    expectWorkingTree(makeDirectory(moved + "/inner"), moved);
}

TEST_F(RVGitRepositoryHostileTest, ALinkedWorktreeThatWasCopiedOpensWhereItIs) {
    const std::string original = makeLinkedWorktree("original");
    const std::string copy = scratchPath("copy");
    fs::copy(original, copy, fs::copy_options::recursive);
    expectWorkingTree(copy, copy);
    expectWorkingTree(original, original);
}

TEST_F(RVGitRepositoryHostileTest, ThePlacesThatLeadBackAreTakenWithoutAskingGitMore) {
    const std::string linked = makeLinkedWorktree("linked");
    const RVRecordingGit recorder = useRecordingGit();
    recorder.clear();
    expectWorkingTree(linked, linked);
    EXPECT_EQ(recorder.invocations().size(), 3U);
}

TEST_F(RVGitRepositoryHostileTest, GitsReasonForAnInvalidRepositoryIsTold) {
    EXPECT_EQ(RVGitRepository::reasonForInvalidRepositoryAtPath(repositoryPath()), std::nullopt);
    EXPECT_THAT(RVGitRepository::reasonForInvalidRepositoryAtPath(makeDirectory("plain")),
                Optional(HasSubstr("ot a git repository")));
    EXPECT_EQ(RVGitRepository::reasonForInvalidRepositoryAtPath(scratchPath("missing")),
              "No such file or directory");
    EXPECT_EQ(RVGitRepository::reasonForInvalidRepositoryAtPath(writeFile("file", "")),
              "Not a directory");
    gitInRepository({"config", "core.repositoryFormatVersion", "1"});
    gitInRepository({"config", "extensions.fromTheFuture", "true"});
    EXPECT_THAT(RVGitRepository::reasonForInvalidRepositoryAtPath(repositoryPath()),
                Optional(HasSubstr("fromthefuture")));
}

TEST_F(RVGitRepositoryHostileTest, NoFileIsReadOrWrittenThroughALink) {
    const std::string outside = writeFile("outside", "a stranger's\n");
    const std::string gitDirectory = repositoryPath() + "/.git";
    putLinkInPlaceOf(gitDirectory + "/description", outside);
    EXPECT_THAT([&](RVErrorPlace error) { return repository()->description(error); },
                failsWith(RVGitDescriptionReadError));
    EXPECT_THAT([&](RVErrorPlace error) { return repository()->setDescription("mine", error); },
                failsWith(RVGitDescriptionWriteError));
    EXPECT_EQ(readFile(outside), "a stranger's\n");
}

TEST_F(RVGitRepositoryHostileTest, APipeInPlaceOfAFileHoldsNobody) {
    const std::string gitDirectory = repositoryPath() + "/.git";
    for (const char* name : {"/HEAD", "/description"}) {
        fs::remove(gitDirectory + name);
        ASSERT_EQ(::mkfifo((gitDirectory + name).c_str(), 0600), 0);
    }
    EXPECT_EQ(repository()->HEADRefName(), std::nullopt);
    EXPECT_FALSE(repository()->isHEADBranchDetached());
    EXPECT_EQ(repository()->description(), std::nullopt);
    EXPECT_FALSE(repository()->setDescription("text"));
}

TEST_F(RVGitRepositoryHostileTest, AHEADThatIsALinkIsReadByGit) {
    const std::string commit = makeCommit();
    putLinkInPlaceOf(repositoryPath() + "/.git/HEAD", "refs/heads/main");
    EXPECT_EQ(repository()->HEADRefName(), "refs/heads/main");
    EXPECT_FALSE(repository()->isHEADBranchDetached());
    EXPECT_EQ(repository()->HEADRevision(), commit);
}

TEST_F(RVGitRepositoryHostileTest, AHEADThatStandsInForATableIsReadByGit) {
    writeFile("repository/.git/HEAD", "ref: refs/heads/.invalid\n");
    RVFakeGit git = useFakeGit();
    git.setAnswer("symbolic-ref", {.standardOutput = "refs/heads/topic\n"});
    EXPECT_EQ(repository()->HEADRefName(), "refs/heads/topic");
    EXPECT_FALSE(repository()->isHEADBranchDetached());
    const std::string hash(40, 'a');
    RVFakeGit detached = fakeGit("detached");
    detached.setAnswer({.exitCode = 1});
    detached.setAnswer("rev-parse", {.standardOutput = hash + "\n"});
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(detached.path()));
    EXPECT_EQ(repository()->HEADRefName(), hash);
    EXPECT_TRUE(repository()->isHEADBranchDetached());
}

TEST_F(RVGitRepositoryHostileTest, TheSharedExcludesAreTheFileThatGitReads) {
    const std::string linked = makeLinkedWorktree("linked");
    const auto worktree = RVGitRepository::repositoryWithPath(linked);
    EXPECT_EQ(worktree->sharedExcludesPath(), repositoryPath() + "/.git/info/exclude");
    EXPECT_EQ(repository()->sharedExcludesPath(), repository()->defaultExcludesPath());
    EXPECT_TRUE(worktree->sharedExcludes()->addIgnorePattern("ignored"));
    writeFile(linked + "/ignored", "");
    EXPECT_EQ(gitLine({"status", "--porcelain"}, linked), "");
    EXPECT_EQ(RVGitRepository::repositoryWithPath(makeDirectory("none"))->sharedExcludes(),
              nullptr);
}

TEST_F(RVGitRepositoryHostileTest, TheOptionsForUntrustedRepositoriesRunNothing) {
    makeCommit();
    const std::string marker = scratchPath("ran");
    const std::string program = writeFile("program", "#!/bin/sh\ntouch '" + marker + "'\n", 0755);
    gitInRepository({"config", "core.fsmonitor", program});
    writeFile("repository/.git/hooks/post-index-change", "#!/bin/sh\ntouch '" + marker + "'\n",
              0755);
    const auto binary = RVGitBinary::gitBinaryWithPath(gitPath());
    binary->setDefaultOptions(RVGitBinary::defaultOptionsForUntrustedRepositories());
    RVGitBinary::setDefaultGitBinary(binary);
    const auto command = RVGitCommand::gitCommandWithRepository(repository());
    command->setGitCommand("status");
    EXPECT_TRUE(command->run());
    EXPECT_FALSE(fileExists(marker));
}

}  // namespace
