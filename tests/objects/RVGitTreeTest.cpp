#include "RVGit/objects/RVGitTree.h"

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::SizeIs;

class RVGitTreeTest : public RVGitRepositoryTestCase {
protected:
    RVGitTreeTest() {
        commitFile("repository", "a", "a", "Message");
        commitFile("repository", "dir/b", "b", "Message");
        commitFile("repository", "dir/c", "c", "Message");
    }
};

TEST_F(RVGitTreeTest, ConstructorsSetWhatTheyAreGiven) {
    auto entry = RVGitTreeEntry::treeEntryWithRepository(repository(), "a", RVGitObjectTypeBlob,
                                                         "abc", RVGitFileModeRegular, 0);
    const std::string hash = "0123456789abcdef0123456789abcdef01234567";
    const auto ofHash = RVGitTree::treeWithRepository(repository(), hash, {entry});
    EXPECT_EQ(ofHash->treeHash(), hash);
    EXPECT_EQ(ofHash->shortTreeHash(), "01234567");
    EXPECT_EQ(ofHash->revision(), std::nullopt);
    EXPECT_EQ(ofHash->filePath(), std::nullopt);
    EXPECT_THAT(ofHash->entries(), testing::ElementsAre(entry));
    EXPECT_TRUE(ofHash->isTreeObject());

    const auto ofRevision = RVGitTree::treeWithRepository(repository(), "HEAD", "dir", {});
    EXPECT_EQ(ofRevision->treeHash(), std::nullopt);
    EXPECT_EQ(ofRevision->revision(), "HEAD");
    EXPECT_EQ(ofRevision->filePath(), "dir");
    EXPECT_THAT(ofRevision->entries(), testing::IsEmpty());

    const RVGitTree complete(repository(), hash, "HEAD", "dir", {entry});
    EXPECT_EQ(complete.treeHash(), hash);
    EXPECT_EQ(complete.revision(), "HEAD");
    EXPECT_EQ(complete.filePath(), "dir");
}

TEST_F(RVGitTreeTest, IsLoadedByRevisionAndPath) {
    const auto tree = RVGitTree::treeForRevision("HEAD", "dir", repository());
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->revision(), "HEAD");
    EXPECT_EQ(tree->filePath(), "dir");
    EXPECT_EQ(tree->treeHash(), std::nullopt);
    ASSERT_THAT(tree->entries(), SizeIs(2));
    EXPECT_EQ(tree->entries()[1]->filePath(), "dir/c");
}

TEST_F(RVGitTreeTest, IsLoadedByHash) {
    const std::string hash = gitInRepository({"rev-parse", "HEAD:dir"});
    const auto tree = RVGitTree::treeForTreeHash(hash, repository());
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->treeHash(), hash);
    EXPECT_EQ(tree->filePath(), std::nullopt);
    ASSERT_THAT(tree->entries(), SizeIs(2));
    EXPECT_EQ(tree->entries()[1]->filePath(), "c");
}

TEST_F(RVGitTreeTest, TheRootHasNoPath) {
    const auto tree = RVGitTree::rootTreeForRevision("HEAD", repository());
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->revision(), "HEAD");
    EXPECT_EQ(tree->filePath(), std::nullopt);
    EXPECT_THAT(tree->entries(), SizeIs(2));
}

TEST_F(RVGitTreeTest, FailuresReachThePlace) {
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTree::rootTreeForRevision("missing", repository(), error);
        },
        failsWith(RVGitTreeNotFoundError));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTree::treeForTreeHash(gitInRepository({"rev-parse", "HEAD:a"}),
                                              repository(), error);
        },
        failsWith(RVGitTreeNotATreeObjectError));
}

TEST_F(RVGitTreeTest, ForwardsToTheEntries) {
    const std::string hash = gitInRepository({"rev-parse", "HEAD:dir"});
    EXPECT_THAT(*RVGitTree::allTreeEntriesForTreeHash(hash, repository()), SizeIs(2));
    EXPECT_THAT(*RVGitTree::allTreeEntriesForRevision("HEAD", "dir", repository()), SizeIs(2));
    EXPECT_THAT(*RVGitTree::allTreeEntriesForRevision("HEAD", std::nullopt, repository(),
                                                      RVGitTreeEntryOptionRecursesDirectories),
                SizeIs(3));
    EXPECT_EQ(RVGitTree::treeEntryForRevision("HEAD", "dir/c", repository())->filePath(), "dir/c");
}

}  // namespace
