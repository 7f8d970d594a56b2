#include "RVGit/worktree/RVGitWorkingTreeHelper.h"

#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

TEST(RVGitWorkingTreeHelperValuesTest, StatusesHaveWordsAndLetters) {
    const struct {
        RVGitFileStatus status;
        const char* word;
        const char* letter;
    } forms[] = {
        {RVGitFileStatusUntracked, "Untracked", "?"},
        {RVGitFileStatusIgnored, "Ignored", "!"},
        {RVGitFileStatusUnchanged, "Unchanged", " "},
        {RVGitFileStatusAdded, "Added", "A"},
        {RVGitFileStatusCopied, "Copied", "C"},
        {RVGitFileStatusModified, "Modified", "M"},
        {RVGitFileStatusRenamed, "Renamed", "R"},
        {RVGitFileStatusTypeChanged, "Type Changed", "T"},
        {RVGitFileStatusDeleted, "Deleted", "D"},
        {RVGitFileStatusUnmerged, "Unmerged", "U"},
    };
    std::uint64_t value = 0;
    for (const auto& [status, word, letter] : forms) {
        EXPECT_EQ(status, ++value);
        EXPECT_EQ(RVGitWorkingTreeHelper::stringRepresentationForFileStatus(status), word);
        EXPECT_EQ(RVGitWorkingTreeHelper::shortStringRepresentationForFileStatus(status), letter);
        EXPECT_EQ(RVGitWorkingTreeHelper::fileStatusFromString(letter), status);
    }
    for (const auto status : {RVGitFileStatusNone, static_cast<RVGitFileStatus>(11)}) {
        EXPECT_EQ(RVGitWorkingTreeHelper::stringRepresentationForFileStatus(status), "None");
        EXPECT_EQ(RVGitWorkingTreeHelper::shortStringRepresentationForFileStatus(status),
                  std::nullopt);
    }
    for (const char* text : {"", "X", "m", "MM", "Modified"})
        EXPECT_EQ(RVGitWorkingTreeHelper::fileStatusFromString(text), RVGitFileStatusUnchanged);
}

TEST(RVGitWorkingTreeHelperValuesTest, AConflictHasAnUnmergedSideOrTwoAddedOrDeletedOnes) {
    std::string pairs;
    for (const char left : std::string("?! ACMRTDU"))
        for (const char right : std::string("?! ACMRTDU"))
            if (RVGitWorkingTreeHelper::isUnmergedPathForLeftFileStatus(
                    RVGitWorkingTreeHelper::fileStatusFromString({&left, 1}),
                    RVGitWorkingTreeHelper::fileStatusFromString({&right, 1})))
                pairs += {left, right, ','};
    EXPECT_EQ(pairs, "?U,!U, U,AA,AU,CU,MU,RU,TU,DD,DU,U?,U!,U ,UA,UC,UM,UR,UT,UD,UU,");
}

class RVGitWorkingTreeHelperTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> version(const std::string& filePath) const {
        return std::make_shared<RVGitIndexEntry>(repository(), filePath, std::nullopt,
                                                 RVGitFileModeRegular, RVGitIndexStageDefault,
                                                 std::nullopt);
    }
    /// The two references.
    [[nodiscard]] std::string references(std::shared_ptr<RVGitIndexEntry> ours,
                                         std::shared_ptr<RVGitIndexEntry> theirs) const {
        RVGitWorkingTreeEntry entry(repository(), "file", RVGitFileModeRegular,
                                    RVGitFileStatusUnmerged, RVGitFileStatusUnmerged);
        entry.setUnmergedOursVersion(std::move(ours));
        entry.setUnmergedTheirsVersion(std::move(theirs));
        entry.setHasLoadedIndexVersions(true);
        return RVGitWorkingTreeHelper::unmergedOursFileReferenceForWorkingTreeEntry(entry) + " " +
               RVGitWorkingTreeHelper::unmergedTheirsFileReferenceForWorkingTreeEntry(entry);
    }
};

TEST_F(RVGitWorkingTreeHelperTest, TwoVersionsAreNamedByTheirStages) {
    EXPECT_EQ(references(version("ours"), version("theirs")), ":2:ours :3:theirs");
}

TEST_F(RVGitWorkingTreeHelperTest, TheOnlyVersionIsNamedByItsPath) {
    EXPECT_EQ(references(version("ours"), nullptr), "ours /dev/null");
    EXPECT_EQ(references(nullptr, version("theirs")), "/dev/null theirs");
}

TEST_F(RVGitWorkingTreeHelperTest, NoVersionIsTheNullFile) {
    EXPECT_EQ(references(nullptr, nullptr), "/dev/null /dev/null");
}

}  // namespace
