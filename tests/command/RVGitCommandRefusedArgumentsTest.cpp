#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitResetCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t refusalCode = RVGitCreateBranchInvalidNameError;

/// What reaches git of texts that come as data.
class RVGitCommandRefusedArgumentsTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitCommand> versionCommand() const {
        auto command = RVGitCommand::gitCommandWithRepository(repository());
        command->setGitCommand("version");
        return command;
    }
    /// The code of the error, or 0 after a success.
    static std::int64_t codeOfRun(const std::shared_ptr<RVGitCommand>& command) {
        std::optional<RVError> error;
        return command->run(&error) ? 0 : error.value().code();
    }
    std::int64_t codeForRevision(const std::string& revision) const {
        const auto command = versionCommand();
        command->addGitCommandRevision(revision, refusalCode);
        return codeOfRun(command);
    }
};

TEST_F(RVGitCommandRefusedArgumentsTest, RevisionsThatWouldBeOptionsAreRefused) {
    const RVRecordingGit recorder = useRecordingGit();
    recorder.clear();
    for (const char* revision :
         {"-d", "-", "--", "--hard", "--output=x", "--all=x", "--globe", "--branchesx", "-c", "^-d",
          "^--all", "a..-b", "a...-b", "..-b", "--all..x", "-a..b"})
        EXPECT_EQ(codeForRevision(revision), refusalCode) << revision;
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitCommandRefusedArgumentsTest, RevisionsThatSelectAreLetThrough) {
    const auto command = versionCommand();
    const std::vector<std::string> revisions = {"--all",
                                                "--branches",
                                                "--tags",
                                                "--remotes",
                                                "--not",
                                                "--reflog",
                                                "--ours",
                                                "--theirs",
                                                "--glob=x",
                                                "--exclude=x",
                                                "--branches=x",
                                                "--tags=x",
                                                "--remotes=x",
                                                "HEAD",
                                                "HEAD^-",
                                                "a-b..c-d",
                                                ":/fix the a..-b",
                                                "x^{/fix a..-b}",
                                                ":1:a..-b",
                                                "HEAD:dir/a...-b",
                                                "x^-1",
                                                "a..b",
                                                "^x",
                                                "",
                                                "@{-1}",
                                                "stash@{0}..a@{1}"};
    command->addGitCommandRevisions(revisions);
    EXPECT_EQ(command->gitCommandArguments(), revisions);
    EXPECT_THAT(codeForRevision("HEAD"), testing::Ne(refusalCode));
}

TEST_F(RVGitCommandRefusedArgumentsTest, NamesThatBeginWithADashAreRefusedWhateverTheyAre) {
    const RVRecordingGit recorder = useRecordingGit();
    recorder.clear();
    for (const char* name : {"-d", "--all", "--tags", "-", "--"}) {
        const auto command = versionCommand();
        command->addGitCommandNames({"plain", name}, refusalCode);
        EXPECT_EQ(codeOfRun(command), refusalCode) << name;
        EXPECT_EQ(command->error()->userInfo().at(RVGitRefNameErrorKey), name);
    }
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitCommandRefusedArgumentsTest, AnErrorStoredByAHookKeepsTheCommandFromItsLaunch) {
    class Refusing : public RVGitCommand {
    public:
        using RVGitCommand::RVGitCommand;
        int numberOfCompletions = 0;

    private:
        void gitCommandWillInitialize() override {
            setGitCommand("version");
            refuseGitCommandArgument(refusalCode, RVGitRevisionErrorKey, "first");
            refuseGitCommandArgument(1, RVGitRevisionErrorKey, "second");
        }
    };
    const RVRecordingGit recorder = useRecordingGit();
    recorder.clear();
    const auto command = std::make_shared<Refusing>(repository());
    command->setCompletionHandler([&](RVGitCommand&) { ++command->numberOfCompletions; });
    EXPECT_EQ(codeOfRun(command), refusalCode);
    EXPECT_EQ(command->error()->userInfo().at(RVGitRevisionErrorKey), "first");
    EXPECT_EQ(command->numberOfCompletions, 0);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitCommandRefusedArgumentsTest, ATagNamedLikeAnOptionDeletesNothing) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTag::createTagWithRefName("-d", "v1", repository(), error);
        },
        failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(gitInRepository({"tag"}), "v1");
}

TEST_F(RVGitCommandRefusedArgumentsTest, AResetToAnOptionThrowsNothingAway) {
    makeCommit();
    const std::string file = writeFile("repository/file", "work");
    gitInRepository({"add", "file"});
    const auto command = RVGitResetCommand::gitResetCommandWithRepository(
        repository(), RVGitResetModeNone, "--hard");
    EXPECT_NE(codeOfRun(command), 0);
    EXPECT_EQ(readFile(file), "work");
    EXPECT_EQ(gitInRepository({"diff", "--cached", "--name-only"}), "file");
}

TEST_F(RVGitCommandRefusedArgumentsTest, AFileNamedLikeAnOptionIsMovedAsAFile) {
    makeCommit();
    writeFile("repository/-f", "work");
    gitInRepository({"add", "--", "-f"});
    EXPECT_EQ(
        codeOfRun(RVGitMoveCommand::gitMoveCommandWithRepository(repository(), "-f", "--moved")),
        0);
    EXPECT_EQ(readFile("repository/--moved"), "work");
}

TEST_F(RVGitCommandRefusedArgumentsTest, AnInstructionOfTwoLinesIsRefused) {
    const std::string commit = makeCommit();
    const auto command =
        RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(repository(), std::nullopt);
    command->setInstructions({"create refs/heads/a " + commit + "\ndelete refs/heads/main"});
    EXPECT_EQ(codeOfRun(command), RVGitRVGitGenericError);
    EXPECT_EQ(gitInRepository({"for-each-ref", "--format=%(refname)"}), "refs/heads/main");
}

TEST_F(RVGitCommandRefusedArgumentsTest, AConfigurationKeyIsNoOptionButAValueMayBeginWithADash) {
    std::optional<RVError> error;
    EXPECT_FALSE(repository()->config()->setValue("x", "--unset-all", &error));
    EXPECT_TRUE(error);
    EXPECT_TRUE(repository()->config()->setValue("--unset", "a.key", &error));
    EXPECT_EQ(gitInRepository({"config", "a.key"}), "--unset");
}

TEST_F(RVGitCommandRefusedArgumentsTest, AnEmptyPathIsRefusedAheadOfTheLaunch) {
    const RVRecordingGit recorder = useRecordingGit();
    recorder.clear();
    const auto behindDashes = versionCommand();
    behindDashes->addGitCommandFilePaths({"file", ""});
    EXPECT_EQ(codeOfRun(behindDashes), RVGitRVGitGenericError);
    const auto plain = versionCommand();
    plain->addGitCommandFilePath("");
    EXPECT_EQ(codeOfRun(plain), RVGitRVGitGenericError);
    EXPECT_FALSE(
        RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository())->removeFiles({""}));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

}  // namespace
