#include "RVGit/objects/RVGitBlob.h"

#include <sys/stat.h>
#include <unistd.h>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace {

using namespace std::string_literals;

class RVGitBlobTest : public RVGitRepositoryTestCase {
protected:
    std::string workingTreePath(const std::string& path) const {
        return repositoryPath() + "/" + path;
    }
    void expectUnreadable(const std::string& path) {
        std::optional<RVError> error;
        EXPECT_EQ(RVGitBlob::blobForCurrentFileAtPath(path, repository(), &error), nullptr);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), RVGitBlobReadError);
        EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), path);
    }
};

TEST_F(RVGitBlobTest, ConstructorsSetWhatTheyAreGiven) {
    const auto ofPath = RVGitBlob::blobWithRepositoryFilePath(repository(), "a", "text");
    EXPECT_EQ(ofPath->filePath(), "a");
    EXPECT_EQ(ofPath->blobHash(), std::nullopt);
    EXPECT_EQ(ofPath->revision(), std::nullopt);
    EXPECT_EQ(ofPath->contents(), "text");
    EXPECT_EQ(ofPath->size(), 4u);
    EXPECT_TRUE(ofPath->isBlobObject());

    const auto ofHash = RVGitBlob::blobWithRepositoryBlobHash(repository(), "abc", "");
    EXPECT_EQ(ofHash->blobHash(), "abc");
    EXPECT_EQ(ofHash->objectHash(), "abc");
    EXPECT_EQ(ofHash->filePath(), std::nullopt);
    EXPECT_EQ(ofHash->size(), 0u);

    const auto ofRevision = RVGitBlob::blobWithRepository(repository(), "HEAD", "a", "text");
    EXPECT_EQ(ofRevision->revision(), "HEAD");
    EXPECT_EQ(ofRevision->filePath(), "a");
    EXPECT_EQ(ofRevision->blobHash(), std::nullopt);

    const RVGitBlob complete(repository(), "abc", "HEAD", "a", RVData("text"));
    EXPECT_EQ(complete.blobHash(), "abc");
    EXPECT_EQ(complete.revision(), "HEAD");
    EXPECT_EQ(complete.filePath(), "a");
}

TEST_F(RVGitBlobTest, SharesABuffer) {
    RVDataBuffer buffer;
    buffer.append("shared");
    const auto shared = std::make_shared<const RVDataBuffer>(std::move(buffer));
    const RVGitBlob blob(repository(), std::nullopt, std::nullopt, "a", shared);
    EXPECT_EQ(blob.contents(), "shared");
    EXPECT_EQ(blob.contents().data(), shared->view().data());
    EXPECT_THROW(RVGitBlob(repository(), std::nullopt, std::nullopt, "a",
                           std::shared_ptr<const RVDataBuffer>()),
                 RVInvalidParameterException);
}

TEST_F(RVGitBlobTest, EqualityTakesContentsOnly) {
    const auto blob = RVGitBlob::blobWithRepository(repository(), "HEAD", "a", "same");
    EXPECT_TRUE(
        blob->isEqualToBlob(*RVGitBlob::blobWithRepositoryBlobHash(repository(), "1", "same")));
    EXPECT_FALSE(
        blob->isEqualToBlob(*RVGitBlob::blobWithRepository(repository(), "HEAD", "a", "")));
}

TEST_F(RVGitBlobTest, IsReadByHash) {
    const std::string contents = "bytes \0\xFF\r\n without end"s;
    commitFile("repository", "file", contents, "Message");
    const std::string hash = gitInRepository({"rev-parse", "HEAD:file"});
    std::optional<RVError> error;
    const auto blob = RVGitBlob::blobForHash(hash, repository(), &error);
    ASSERT_NE(blob, nullptr);
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(blob->contents(), contents);
    EXPECT_EQ(blob->size(), contents.size());
    EXPECT_EQ(blob->blobHash(), hash);
    EXPECT_EQ(blob->revision(), std::nullopt);
    EXPECT_EQ(blob->filePath(), std::nullopt);
    EXPECT_EQ(blob->repository(), repository());
}

TEST_F(RVGitBlobTest, IsReadByRevisionAndPath) {
    commitFile("repository", "dir/a b", "first", "First");
    commitFile("repository", "dir/a b", "second", "Second");
    const auto blob = RVGitBlob::blobForRevision("HEAD~1", "dir/a b", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->contents(), "first");
    EXPECT_EQ(blob->revision(), "HEAD~1");
    EXPECT_EQ(blob->filePath(), "dir/a b");
    EXPECT_EQ(blob->blobHash(), std::nullopt);
}

TEST_F(RVGitBlobTest, IsReadFromTheIndexWithoutARevision) {
    commitFile("repository", "file", "committed", "Message");
    writeFile(workingTreePath("file"), "staged");
    gitInRepository({"add", "file"});
    const auto blob = RVGitBlob::blobForRevision(std::nullopt, "file", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->contents(), "staged");
}

TEST_F(RVGitBlobTest, AnEmptyBlobIsThere) {
    commitFile("repository", "file", "", "Message");
    const auto blob = RVGitBlob::blobForRevision("HEAD", "file", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->size(), 0u);
}

TEST_F(RVGitBlobTest, WhatDoesNotExistFailsWith1201) {
    makeCommit();
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBlob::blobForRevision("HEAD", "missing", repository(), error);
        },
        failsWith(RVGitBlobNotFoundError));
    EXPECT_THAT(
        [&](RVErrorPlace error) { return RVGitBlob::blobForHash("missing", repository(), error); },
        failsWith(RVGitBlobNotFoundError));
    EXPECT_EQ(RVGitBlob::blobForHash("missing", repository()), nullptr);
}

TEST_F(RVGitBlobTest, LargeContentsOutliveTheCommand) {
    const std::string contents(std::size_t{20} << 20, 'x');
    commitFile("repository", "large", contents, "Message");
    const auto blob = RVGitBlob::blobForRevision("HEAD", "large", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_TRUE(blob->contents() == contents);
}

TEST_F(RVGitBlobTest, IsReadFromTheWorkingTree) {
    writeFile(workingTreePath("dir/file"), "current\0bytes"s);
    std::optional<RVError> error;
    const auto blob = RVGitBlob::blobForCurrentFileAtPath("dir/file", repository(), &error);
    ASSERT_NE(blob, nullptr);
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(blob->contents(), "current\0bytes"s);
    EXPECT_EQ(blob->filePath(), "dir/file");
    EXPECT_EQ(blob->revision(), std::nullopt);
    EXPECT_EQ(blob->blobHash(), std::nullopt);
}

TEST_F(RVGitBlobTest, OfASymbolicLinkHoldsTheTarget) {
    writeFile(workingTreePath("target"), "contents of the target");
    ASSERT_EQ(symlink("target", workingTreePath("link").c_str()), 0);
    const auto blob = RVGitBlob::blobForCurrentFileAtPath("link", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->contents(), "target");
}

TEST_F(RVGitBlobTest, OfALinkToADirectoryHoldsTheTarget) {
    makeDirectory(workingTreePath("directory"));
    ASSERT_EQ(symlink("directory", workingTreePath("link").c_str()), 0);
    const auto blob = RVGitBlob::blobForCurrentFileAtPath("link", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->contents(), "directory");
}

TEST_F(RVGitBlobTest, ADanglingLinkFailsWith1200) {
    ASSERT_EQ(symlink("missing", workingTreePath("link").c_str()), 0);
    expectUnreadable("link");
}

TEST_F(RVGitBlobTest, WhatLiesBehindALinkFailsWith1200) {
    makeDirectory("elsewhere/inner");
    writeFile("elsewhere/inner/file", "secret");
    ASSERT_EQ(symlink(scratchPath("elsewhere").c_str(), workingTreePath("dir").c_str()), 0);
    expectUnreadable("dir/inner/file");
    expectUnreadable("dir/inner");
    // A device would be read without end.
    ASSERT_EQ(symlink("/dev", workingTreePath("devices").c_str()), 0);
    expectUnreadable("devices/zero");
}

TEST_F(RVGitBlobTest, WhatIsNoRegularFileFailsWith1200) {
    ASSERT_EQ(mkfifo(workingTreePath("pipe").c_str(), 0600), 0);
    expectUnreadable("pipe");
}

TEST_F(RVGitBlobTest, ADirectoryFailsWith1200) {
    makeDirectory(workingTreePath("directory"));
    expectUnreadable("directory");
}

TEST_F(RVGitBlobTest, AMissingFileFailsWith1200) {
    expectUnreadable("missing");
    EXPECT_EQ(RVGitBlob::blobForCurrentFileAtPath("missing", repository()), nullptr);
}

TEST_F(RVGitBlobTest, AnUnreadableFileFailsWith1200) {
    writeFile(workingTreePath("secret"), "secret", 0000);
    const RVUnprivilegedUser user(repositoryPath());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    expectUnreadable("secret");
}

TEST_F(RVGitBlobTest, ThePathMayLeaveTheWorkingTree) {
    writeFile("outside", "outside");
    const auto blob = RVGitBlob::blobForCurrentFileAtPath("../outside", repository());
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(blob->contents(), "outside");
    EXPECT_EQ(blob->filePath(), "../outside");
}

TEST_F(RVGitBlobTest, ABareRepositoryHasNoCurrentFiles) {
    const auto bare =
        RVGitRepository::bareRepositoryWithGitDirectoryPath(repositoryPath() + "/.git");
    std::optional<RVError> error;
    EXPECT_EQ(RVGitBlob::blobForCurrentFileAtPath("HEAD", bare, &error), nullptr);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitBlobReadError);
    EXPECT_EQ(error->localizedFailureReason(),
              "Could not read blob for current file at path “HEAD”.");
}

}  // namespace
