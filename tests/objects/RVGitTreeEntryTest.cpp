#include "RVGit/objects/RVGitTreeEntry.h"

#include <unistd.h>

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class RVGitTreeEntryTest : public RVGitRepositoryTestCase {
protected:
    void commitTree() {
        commitFile("repository", "README", "read me", "Message");
        commitFile("repository", "dir/sub/deep.txt", "deep", "Message");
        commitFile("repository", "dir/tool", "tool", "Message");
        gitInRepository({"update-index", "--chmod=+x", "dir/tool"});
        ASSERT_EQ(symlink("README", (repositoryPath() + "/link").c_str()), 0);
        gitInRepository({"add", "link"});
        gitInRepository({"update-index", "--add", "--cacheinfo",
                         "160000," + gitInRepository({"rev-parse", "HEAD"}) + ",module"});
        gitInRepository({"commit", "--quiet", "--message=More"});
    }
    static std::vector<std::string> paths(const std::optional<RVGitTreeEntry::Entries>& entries) {
        std::vector<std::string> result;
        for (const auto& entry : entries.value_or(RVGitTreeEntry::Entries()))
            result.push_back(entry->filePath());
        return result;
    }
};

TEST_F(RVGitTreeEntryTest, NeverKeepsASize) {
    const auto entry = RVGitTreeEntry::treeEntryWithRepository(
        repository(), "a/b", RVGitObjectTypeBlob, "abc", RVGitFileModeRegular, 17);
    EXPECT_EQ(entry->filePath(), "a/b");
    EXPECT_EQ(entry->fileName(), "b");
    EXPECT_EQ(entry->objectType(), RVGitObjectTypeBlob);
    EXPECT_EQ(entry->objectHash(), "abc");
    EXPECT_EQ(entry->fileMode(), RVGitFileModeRegular);
    EXPECT_EQ(entry->fileSize(), 0u);
}

TEST_F(RVGitTreeEntryTest, IsOfExactlyOneType) {
    for (auto type : {RVGitObjectTypeTree, RVGitObjectTypeBlob, RVGitObjectTypeCommit}) {
        const RVGitTreeEntry entry(repository(), "a", type, "abc", RVGitFileModeNone, 0);
        EXPECT_EQ(entry.isTreeObject(), type == RVGitObjectTypeTree);
        EXPECT_EQ(entry.isBlobObject(), type == RVGitObjectTypeBlob);
        EXPECT_EQ(entry.isCommitObject(), type == RVGitObjectTypeCommit);
    }
}

TEST_F(RVGitTreeEntryTest, AllEntriesOfTheRoot) {
    commitTree();
    const auto entries =
        RVGitTreeEntry::allTreeEntriesForRevision("HEAD", std::nullopt, repository());
    ASSERT_THAT(paths(entries), ElementsAre("README", "dir", "link", "module"));
    EXPECT_TRUE((*entries)[0]->isBlobObject());
    EXPECT_TRUE((*entries)[0]->isRegularFileType());
    EXPECT_EQ((*entries)[0]->objectHash(), gitInRepository({"rev-parse", "HEAD:README"}));
    EXPECT_TRUE((*entries)[1]->isTreeObject());
    EXPECT_TRUE((*entries)[1]->isDirectoryFileType());
    EXPECT_TRUE((*entries)[2]->isSymbolicLinkFileType());
    EXPECT_TRUE((*entries)[3]->isCommitObject());
    EXPECT_TRUE((*entries)[3]->isSubmoduleFileType());
}

TEST_F(RVGitTreeEntryTest, PathsBeginWithTheGivenDirectory) {
    commitTree();
    EXPECT_THAT(paths(RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "dir", repository())),
                ElementsAre("dir/sub", "dir/tool"));
    EXPECT_THAT(paths(RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "dir/", repository())),
                ElementsAre("dir/sub", "dir/tool"));
    EXPECT_THAT(paths(RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "dir/sub", repository())),
                ElementsAre("dir/sub/deep.txt"));
    EXPECT_THAT(paths(RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "", repository())),
                ElementsAre("README", "dir", "link", "module"));
}

TEST_F(RVGitTreeEntryTest, PathsAreRelativeToATreeGivenByHash) {
    commitTree();
    const std::string hash = gitInRepository({"rev-parse", "HEAD:dir"});
    EXPECT_THAT(paths(RVGitTreeEntry::allTreeEntriesForTreeHash(hash, repository())),
                ElementsAre("sub", "tool"));
}

TEST_F(RVGitTreeEntryTest, OptionsReachTheCommandLine) {
    commitTree();
    const auto recorder = useRecordingGit();
    const auto argumentsWithOptions = [&](unsigned options) {
        EXPECT_TRUE(
            RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "dir", repository(), options));
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsWithOptions(0u), ElementsAre("ls-tree", "-z", "HEAD:dir"));
    EXPECT_THAT(argumentsWithOptions(RVGitTreeEntryOptionRecursesDirectories),
                ElementsAre("ls-tree", "-z", "-r", "HEAD:dir"));
    EXPECT_THAT(argumentsWithOptions(RVGitTreeEntryOptionIncludesFileSize),
                ElementsAre("ls-tree", "-z", "-l", "HEAD:dir"));
    EXPECT_THAT(argumentsWithOptions(RVGitTreeEntryOptionRecursesDirectories |
                                     RVGitTreeEntryOptionIncludesFileSize),
                ElementsAre("ls-tree", "-z", "-r", "-l", "HEAD:dir"));
    EXPECT_TRUE(RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "dir", repository()));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("ls-tree", "-z", "HEAD:dir"));
}

TEST_F(RVGitTreeEntryTest, RecursionListsFilesAlone) {
    commitTree();
    const auto entries = RVGitTreeEntry::allTreeEntriesForRevision(
        "HEAD", std::nullopt, repository(),
        RVGitTreeEntryOptionRecursesDirectories | RVGitTreeEntryOptionIncludesFileSize);
    ASSERT_THAT(paths(entries),
                ElementsAre("README", "dir/sub/deep.txt", "dir/tool", "link", "module"));
    EXPECT_TRUE((*entries)[2]->isExecutableFileType());
    EXPECT_EQ((*entries)[0]->fileSize(), 0u);
}

TEST_F(RVGitTreeEntryTest, OneEntryOfAPath) {
    commitTree();
    const auto file =
        RVGitTreeEntry::treeEntryForRevision("HEAD", "dir/sub/deep.txt", repository());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->filePath(), "dir/sub/deep.txt");
    EXPECT_EQ(file->objectHash(), gitInRepository({"rev-parse", "HEAD:dir/sub/deep.txt"}));
    const auto directory = RVGitTreeEntry::treeEntryForRevision("HEAD", "dir", repository());
    ASSERT_NE(directory, nullptr);
    EXPECT_EQ(directory->filePath(), "dir");
    EXPECT_TRUE(directory->isTreeObject());
}

TEST_F(RVGitTreeEntryTest, NoEntryIsNoError) {
    commitTree();
    std::optional<RVError> error = RVError("left over", 1);
    EXPECT_EQ(RVGitTreeEntry::treeEntryForRevision("HEAD", "missing", repository(), &error),
              nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitTreeEntryTest, FailuresReachThePlace) {
    commitTree();
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTreeEntry::treeEntryForRevision("missing", "dir", repository(), error);
        },
        failsWith(RVGitTreeNotFoundError));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTreeEntry::allTreeEntriesForRevision("HEAD", "missing", repository(),
                                                             error);
        },
        failsWith(RVGitTreeNotFoundError));
    EXPECT_EQ(RVGitTreeEntry::allTreeEntriesForTreeHash("missing", repository()), std::nullopt);
}

TEST_F(RVGitTreeEntryTest, WithoutAPathOneEntryIsAUsageError) {
    commitTree();
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTreeEntry::treeEntryForRevision("HEAD", std::nullopt, repository(), error);
        },
        failsWith(RVGitCommandUsageError));
}

TEST_F(RVGitTreeEntryTest, AnEmptyTreeHasNoEntries) {
    const std::string hash = gitInRepository({"hash-object", "-t", "tree", "-w", "/dev/null"});
    EXPECT_THAT(RVGitTreeEntry::allTreeEntriesForTreeHash(hash, repository()), Optional(IsEmpty()));
}

}  // namespace
