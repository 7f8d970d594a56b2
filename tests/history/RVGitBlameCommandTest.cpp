#include "RVGit/history/RVGitBlameCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class RVGitBlameCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitBlameCommand> command(std::optional<std::string> revision,
                                               std::optional<std::string> filePath) const {
        return RVGitBlameCommand::gitBlameCommandWithRepository(repository(), std::move(revision),
                                                                std::move(filePath));
    }
};

TEST_F(RVGitBlameCommandTest, ArgumentsAreTheRevisionAndThePath) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_TRUE(command("HEAD", "file.txt")->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("blame", "--porcelain", "HEAD", "--", "file.txt"));
    EXPECT_TRUE(command(std::nullopt, "file.txt")->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("blame", "--porcelain", "--", "file.txt"));
    EXPECT_FALSE(command("HEAD", std::nullopt)->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("blame", "--porcelain", "HEAD", "--"));
}

TEST_F(RVGitBlameCommandTest, FieldsSetBeforeTheRunAreUsed) {
    const std::string hash = makeCommit();
    auto blame = command(std::nullopt, std::nullopt);
    EXPECT_EQ(blame->revision(), std::nullopt);
    EXPECT_EQ(blame->filePath(), std::nullopt);
    blame->setRevision(hash);
    blame->setFilePath("file.txt");
    EXPECT_THAT(blame->annotatedLines(), IsEmpty());
    ASSERT_TRUE(blame->run());
    ASSERT_EQ(blame->annotatedLines().size(), 1u);
    EXPECT_EQ(blame->annotatedLines()[0].commitHash, hash);
    EXPECT_EQ(blame->takeAnnotatedLines().size(), 1u);
}

TEST_F(RVGitBlameCommandTest, FailureNamesTheRevisionAndThePath) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_FALSE(command("HEAD", "missing.txt")->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "HEAD");
    EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), "missing.txt");

    EXPECT_FALSE(command("nowhere", "file.txt")->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "nowhere");
}

TEST_F(RVGitBlameCommandTest, FailureLeavesAbsentFieldsOutOfTheUserInfo) {
    std::optional<RVError> error;
    EXPECT_FALSE(command(std::nullopt, std::nullopt)->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), std::nullopt);
    EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), std::nullopt);
}

TEST_F(RVGitBlameCommandTest, LinesReadBeforeAFailureAreKept) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer("blame", {.standardOutput = "a 1 1 1\nauthor A\n\tx\nb 2 2 1\n",
                             .standardError = "fatal: disk on fire\n",
                             .exitCode = 128});
    auto blame = command("HEAD", "file.txt");
    std::optional<RVError> error;
    EXPECT_FALSE(blame->run(&error));
    EXPECT_TRUE(error);
    ASSERT_EQ(blame->annotatedLines().size(), 2u);
    EXPECT_EQ(blame->annotatedLines()[0].lineContents, "x");
}

TEST_F(RVGitBlameCommandTest, OutputThatIsNoBlameIsNoFailure) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer("blame", {.standardOutput = "what\nis\nthis\n"});
    auto blame = command("HEAD", "file.txt");
    std::optional<RVError> error;
    EXPECT_TRUE(blame->run(&error));
    EXPECT_FALSE(error);
    ASSERT_EQ(blame->annotatedLines().size(), 1u);
    EXPECT_EQ(blame->annotatedLines()[0].commitHash, std::nullopt);
}

TEST_F(RVGitBlameCommandTest, RepositoryIsRequired) {
    EXPECT_THROW((void)RVGitBlameCommand::gitBlameCommandWithRepository(nullptr, "HEAD", "a"),
                 RVInvalidParameterException);
}

}  // namespace
