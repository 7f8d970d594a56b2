#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>

#include "tests/support/RVGitTestCase.h"

namespace {

using testing::HasSubstr;

class RVRepositorySnapshotTest : public RVGitTestCase {
protected:
    RVRepositorySnapshotTest() : path_(initRepository()) {
        commitFile(path_, "file", "1\n", "One");
        commitFile(path_, "file", "2\n", "Two");
        writeFile("repository/sub/untracked", "1\n");
        std::filesystem::create_symlink("nowhere", path_ + "/link");
    }

    /// What a change of the repository looks like.
    std::string differencesAfter(const std::function<void()>& change) const {
        const RVRepositorySnapshot before(path_);
        change();
        return RVRepositorySnapshot(path_).differencesFrom(before);
    }

    const std::string path_;
};

TEST_F(RVRepositorySnapshotTest, NothingChangesByLooking) {
    EXPECT_EQ(differencesAfter([] {}), "");
}

TEST_F(RVRepositorySnapshotTest, EachKindOfChangeIsSeen) {
    RVGIT_TEST_NEEDS_REF_FILES("HEAD and the reflogs are looked for in their files");
    const std::string two = gitLine({"rev-parse", "HEAD"}, path_);
    EXPECT_THAT(differencesAfter([&] {
                    git({"checkout", "-q", "-b", "topic"}, path_);
                }),
                HasSubstr("HEAD: \"ref: refs/heads/main\n\" became \"ref: refs/heads/topic\n\""));
    EXPECT_THAT(differencesAfter([&] {
                    git({"branch", "other"}, path_);
                }),
                HasSubstr("ref refs/heads/other: nothing became \"" + two + "\""));
    EXPECT_THAT(differencesAfter([&] {
                    git({"reset", "-q", "--soft", "HEAD^"}, path_);
                }),
                HasSubstr("reflog's end HEAD: \"" + two + "\" became \""));
    EXPECT_THAT(differencesAfter([&] {
                    git({"update-index", "--assume-unchanged", "file"}, path_);
                }),
                HasSubstr("index entry new: \"h 100644"));
    EXPECT_THAT(differencesAfter([&] { writeFile("repository/sub/untracked", "2\n"); }),
                HasSubstr("file sub/untracked: \"file 1\n\" became \"file 2\n\""));
    EXPECT_THAT(differencesAfter([&] {
                    std::filesystem::permissions(path_ + "/file",
                                                 std::filesystem::perms::owner_all);
                }),
                HasSubstr("file file: \"file 2\n\" became \"program 2\n\""));
    EXPECT_THAT(differencesAfter([&] {
                    std::filesystem::remove(path_ + "/link");
                    writeFile("repository/link", "nowhere");
                }),
                HasSubstr("file link: \"link to nowhere\" became \"file nowhere\""));
    EXPECT_THAT(differencesAfter([&] { std::filesystem::remove(path_ + "/link"); }),
                HasSubstr("file link: \"file nowhere\" became nothing"));
    EXPECT_THAT(differencesAfter([&] { writeFile("repository/.git/MERGE_HEAD", two); }),
                HasSubstr("state file new: \"MERGE_HEAD\""));
    EXPECT_THAT(differencesAfter([&] { writeFile("repository/.git/refs/heads/a.lock", ""); }),
                HasSubstr("lock new: \"refs/heads/a.lock\""));
}

TEST_F(RVRepositorySnapshotTest, ALongFileIsComparedToItsEnd) {
    writeFile("repository/long", std::string(5000, 'a') + "b");
    EXPECT_THAT(
        differencesAfter([&] { writeFile("repository/long", std::string(5000, 'a') + "c"); }),
        HasSubstr("file long:"));
}

TEST_F(RVRepositorySnapshotTest, ALinkedWorktreeAndABareRepositoryHaveTheirOwn) {
    RVGIT_TEST_NEEDS_REF_FILES("HEAD and the reflogs are looked for in their files");
    git({"worktree", "add", scratchPath("linked"), "-b", "linked"}, path_);
    const RVRepositorySnapshot linked(scratchPath("linked"));
    EXPECT_EQ(linked.head, "ref: refs/heads/linked\n");
    EXPECT_EQ(linked.workingTree.size(), 1u);
    EXPECT_TRUE(linked.reflogEnds.contains("refs/heads/main"));
    EXPECT_TRUE(linked.reflogEnds.contains("HEAD"));
    const RVRepositorySnapshot bare(initBareRepository());
    EXPECT_EQ(bare.head, "ref: refs/heads/main\n");
    EXPECT_TRUE(bare.workingTree.empty());
    EXPECT_THROW(RVRepositorySnapshot(makeDirectory("none")), std::runtime_error);
}

}  // namespace
