#include "RVGit/objects/RVGitShowCommand.h"

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;

class RVGitShowCommandTest : public RVGitRepositoryTestCase {
protected:
    RVError errorOfReference(const std::string& reference) {
        auto command = std::make_shared<RVGitShowCommand>(repository(), reference);
        return errorOf(*command);
    }
    RVError errorOfFakeGit(const std::string& standardError, int exitCode = 128) {
        RVFakeGit fake = useFakeGit();
        fake.setAnswer({.standardError = standardError, .exitCode = exitCode});
        return errorOfReference("a:b:c");
    }
};

TEST_F(RVGitShowCommandTest, ShowsAHash) {
    const std::string commitHash = makeCommit();
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(RVGitShowCommand::gitShowCommandWithRepository(repository(), commitHash)->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("show", "--no-color", commitHash));
}

TEST_F(RVGitShowCommandTest, ShowsAPathInARevision) {
    makeCommit();
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(
        RVGitShowCommand::gitShowCommandWithRepository(repository(), "HEAD", "file.txt")->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("show", "--no-color", "HEAD:file.txt"));
}

TEST_F(RVGitShowCommandTest, ShowsTheIndexWithoutARevision) {
    makeCommit();
    const auto recorder = useRecordingGit();
    auto command =
        RVGitShowCommand::gitShowCommandWithRepository(repository(), std::nullopt, "file.txt");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("show", "--no-color", ":file.txt"));
    EXPECT_EQ(command->standardOutputData(), "1");
}

TEST_F(RVGitShowCommandTest, AReferenceCanBeReplaced) {
    makeCommit();
    auto command = std::make_shared<RVGitShowCommand>(repository(), "HEAD:missing");
    EXPECT_EQ(command->objectReference(), "HEAD:missing");
    command->setObjectReference("HEAD:file.txt");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->standardOutputData(), "1");
}

TEST_F(RVGitShowCommandTest, AnUnknownRevisionIsABlobNotFound) {
    makeCommit();
    const auto error = errorOfReference("missing");
    EXPECT_EQ(error.code(), RVGitBlobNotFoundError);
    EXPECT_EQ(error.localizedDescription(), "Could Not Load Blob");
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), "missing");
    EXPECT_EQ(error.userInfoString(RVGitObjectHashErrorKey), "missing");
    EXPECT_FALSE(error.userInfo().contains(RVGitRevisionErrorKey));
    EXPECT_FALSE(error.userInfo().contains(RVGitFilePathErrorKey));
}

TEST_F(RVGitShowCommandTest, TheRowOfAnUnknownRevisionCapturesNothing) {
    makeCommit();
    EXPECT_FALSE(errorOfReference("missing").userInfo().contains(RVGitPatchLineNumberErrorKey));
}

TEST_F(RVGitShowCommandTest, AnUnknownPathIsABlobNotFound) {
    makeCommit();
    const auto error = errorOfReference("HEAD:missing/file");
    EXPECT_EQ(error.code(), RVGitBlobNotFoundError);
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), "HEAD:missing/file");
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "HEAD");
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "missing/file");
    EXPECT_FALSE(error.userInfo().contains(RVGitObjectHashErrorKey));
}

TEST_F(RVGitShowCommandTest, AnUnknownRevisionOfAPathIsABlobNotFound) {
    makeCommit();
    const auto error = errorOfReference("missing:file.txt");
    EXPECT_EQ(error.code(), RVGitBlobNotFoundError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "missing");
    EXPECT_EQ(error.userInfoString(RVGitObjectHashErrorKey), "missing");
}

TEST_F(RVGitShowCommandTest, AHashOfNoObjectHasNoRow) {
    makeCommit();
    const std::string hash(40, '1');
    const auto error = errorOfReference(hash);
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfoString(RVGitObjectHashErrorKey), hash);
}

TEST_F(RVGitShowCommandTest, AReferenceWithTwoColonsGivesNoRevisionOrPath) {
    makeCommit();
    const auto error = errorOfReference("HEAD:a:b");
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), "HEAD:a:b");
    EXPECT_FALSE(error.userInfo().contains(RVGitObjectHashErrorKey));
    // What git's message tells is still there.
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "a:b");
    EXPECT_FALSE(
        errorOfFakeGit("fatal: something else").userInfo().contains(RVGitFilePathErrorKey));
}

TEST_F(RVGitShowCommandTest, RowsHoldWithTheirExitCodeOnly) {
    const std::string output =
        "fatal: ambiguous argument 'x': unknown revision or path not in the "
        "working tree.";
    EXPECT_EQ(errorOfFakeGit(output).code(), RVGitBlobNotFoundError);
    EXPECT_EQ(errorOfFakeGit(output, 1).code(), RVGitRVGitGenericError);
}

TEST_F(RVGitShowCommandTest, MessagesOfOldVersionsAreUnderstood) {
    const auto path = errorOfFakeGit("fatal: Path 'a b' does not exist in 'v1.0'");
    EXPECT_EQ(path.code(), RVGitBlobNotFoundError);
    EXPECT_EQ(path.userInfoString(RVGitFilePathErrorKey), "a b");
    EXPECT_EQ(path.userInfoString(RVGitRevisionErrorKey), "v1.0");
    const auto name = errorOfFakeGit("fatal: Invalid object name 'v1.0'.");
    EXPECT_EQ(name.code(), RVGitBlobNotFoundError);
    EXPECT_EQ(name.userInfoString(RVGitObjectHashErrorKey), "v1.0");
}

}  // namespace
