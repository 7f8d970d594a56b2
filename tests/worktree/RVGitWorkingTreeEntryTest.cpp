#include "RVGit/worktree/RVGitWorkingTreeEntry.h"

#include <filesystem>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/objects/RVGitTreeEntry.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";

class RVGitWorkingTreeEntryTest : public RVGitWorkingTreeTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitIndexEntry> version(
        std::optional<std::string> objectHash) const {
        return std::make_shared<RVGitIndexEntry>(repository(), "file.txt", std::move(objectHash),
                                                 RVGitFileModeRegular, RVGitIndexStageDefault,
                                                 std::nullopt);
    }
    [[nodiscard]] static std::string contentsOf(const std::shared_ptr<RVGitBlob>& blob) {
        return blob ? std::string(blob->contents()) : "no blob";
    }
};

TEST_F(RVGitWorkingTreeEntryTest, TheLeftStatusIsTheStagedOne) {
    const auto plain = newEntry(RVGitFileStatusAdded, RVGitFileStatusModified, "dir/a");
    EXPECT_EQ(plain->repository(), repository());
    EXPECT_EQ(plain->filePath(), "dir/a");
    EXPECT_EQ(plain->fileMode(), RVGitFileModeRegular);
    EXPECT_EQ(plain->objectHash(), std::nullopt);
    EXPECT_EQ(plain->stagedStatus(), RVGitFileStatusAdded);
    EXPECT_EQ(plain->currentStatus(), RVGitFileStatusModified);
    EXPECT_EQ(plain->unmergedOursStatus(), 0u);
    EXPECT_EQ(plain->unmergedTheirsStatus(), 0u);
    EXPECT_EQ(plain->originalFilePath(), std::nullopt);
    EXPECT_FALSE(plain->isUnmergedFile());
    EXPECT_FALSE(plain->hasLoadedIndexVersions());
}

TEST_F(RVGitWorkingTreeEntryTest, AConflictKeepsTheRawStatuses) {
    const std::pair<RVGitFileStatus, RVGitFileStatus> pairs[] = {
        {RVGitFileStatusUnmerged, RVGitFileStatusUnmerged},
        {RVGitFileStatusAdded, RVGitFileStatusAdded},
        {RVGitFileStatusDeleted, RVGitFileStatusDeleted},
        {RVGitFileStatusAdded, RVGitFileStatusUnmerged},
        {RVGitFileStatusUnmerged, RVGitFileStatusAdded},
        {RVGitFileStatusDeleted, RVGitFileStatusUnmerged},
        {RVGitFileStatusUnmerged, RVGitFileStatusDeleted},
    };
    for (const auto& [left, right] : pairs) {
        const auto conflict = newEntry(left, right);
        EXPECT_TRUE(conflict->isUnmergedFile());
        EXPECT_EQ(conflict->stagedStatus(), RVGitFileStatusUnmerged);
        EXPECT_EQ(conflict->currentStatus(), RVGitFileStatusUnmerged);
        EXPECT_EQ(conflict->unmergedOursStatus(), left);
        EXPECT_EQ(conflict->unmergedTheirsStatus(), right);
    }
}

TEST_F(RVGitWorkingTreeEntryTest, RequiresARepository) {
    EXPECT_THROW((void)std::make_shared<Entry>(nullptr, "a", RVGitFileModeNone, RVGitFileStatusNone,
                                               RVGitFileStatusNone),
                 RVInvalidParameterException);
    const std::shared_ptr<RVGitRepository> none;
    EXPECT_THROW((void)Entry::countChangedWorkingTreeEntriesForRepository(none, std::nullopt),
                 RVInvalidParameterException);
    EXPECT_THROW((void)Entry::changedWorkingTreeEntriesForRepository(none),
                 RVInvalidParameterException);
    EXPECT_THROW((void)Entry::allWorkingTreeEntriesForRepository(none),
                 RVInvalidParameterException);
    EXPECT_THROW((void)Entry::workingTreeEntriesForFilePath("a", none, std::nullopt),
                 RVInvalidParameterException);
    EXPECT_THROW((void)Entry::workingTreeEntryForFilePath("a", none), RVInvalidParameterException);
}

TEST_F(RVGitWorkingTreeEntryTest, TheAbsolutePathLiesBelowTheRepository) {
    const auto deep = newEntry(RVGitFileStatusAdded, RVGitFileStatusUnchanged, "dir/a b");
    EXPECT_EQ(deep->absoluteFilePath(), repositoryPath() + "/dir/a b");
    EXPECT_EQ(&deep->absoluteFilePath(), &deep->absoluteFilePath());
}

TEST_F(RVGitWorkingTreeEntryTest, ComputedBooleansReadNoStoredOnes) {
    const auto plain = newEntry(RVGitFileStatusUntracked, RVGitFileStatusUntracked);
    plain->setUnmergedFile(true);
    plain->setAssumeUnchangedFile(true);
    EXPECT_FALSE(plain->isUnmergedFile());
    EXPECT_FALSE(plain->isAssumeUnchangedFile());
    EXPECT_FALSE(plain->isIgnored());
    plain->setIgnored(true);
    EXPECT_TRUE(plain->isIgnored());
    EXPECT_FALSE(plain->isIgnoredFile());
    EXPECT_TRUE(newEntry(RVGitFileStatusIgnored, RVGitFileStatusIgnored)->isIgnoredFile());
    EXPECT_FALSE(newEntry(RVGitFileStatusDeleted, RVGitFileStatusIgnored)->isIgnoredFile());
    EXPECT_FALSE(newEntry(RVGitFileStatusIgnored, RVGitFileStatusDeleted)->isIgnoredFile());
}

TEST_F(RVGitWorkingTreeEntryTest, AnIgnoredFileOfAListingIsNotMarked) {
    writeFile("repository/.gitignore", "ignored\n");
    writeFile("repository/ignored", "");
    const auto ignored =
        entryAt("ignored", RVOptions{{RVGitWorkingTreeOptionIncludeIgnoredFiles, true}});
    ASSERT_TRUE(ignored);
    EXPECT_TRUE(ignored->isIgnoredFile());
    EXPECT_FALSE(ignored->isIgnored());
}

// Versions.

TEST_F(RVGitWorkingTreeEntryTest, TheStagedVersionIsLoadedOnceWhenItIsRead) {
    makeCommit();
    stageFile("file.txt", "staged");
    const auto recorder = useRecordingGit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    const auto staged = changed->stagedVersion();
    ASSERT_TRUE(staged);
    EXPECT_EQ(staged->objectHash(), gitInRepository({"rev-parse", ":file.txt"}));
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("ls-files", "-z", "-v", "--stage", "--", "file.txt"));
    EXPECT_EQ(changed->stagedVersion(), staged);
    EXPECT_EQ(recorder.invocations().size(), 1u);
}

TEST_F(RVGitWorkingTreeEntryTest, AnUntrackedOrDeletedFileHasNoStagedVersion) {
    makeCommit();
    const auto recorder = useRecordingGit();
    for (const auto status : {RVGitFileStatusUntracked, RVGitFileStatusDeleted})
        EXPECT_EQ(newEntry(status, RVGitFileStatusUntracked)->stagedVersion(), nullptr);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryTest, AMissingVersionIsFinalOnceTheIndexHasBeenLoaded) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    changed->setHasLoadedIndexVersions(true);
    EXPECT_EQ(changed->stagedVersion(), nullptr);
    const auto conflict = newEntry(RVGitFileStatusUnmerged, RVGitFileStatusUnmerged);
    conflict->setHasLoadedIndexVersions(true);
    EXPECT_EQ(conflict->unmergedBaseVersion(), nullptr);
    EXPECT_EQ(conflict->unmergedOursVersion(), nullptr);
    EXPECT_EQ(conflict->unmergedTheirsVersion(), nullptr);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryTest, AVersionThatIsSetIsReadWhateverTheStatus) {
    const auto untracked = newEntry(RVGitFileStatusUntracked, RVGitFileStatusUntracked);
    const auto some = version(hash);
    untracked->setStagedVersion(some);
    untracked->setUnmergedBaseVersion(some);
    untracked->setUnmergedOursVersion(some);
    untracked->setUnmergedTheirsVersion(some);
    const auto base = std::make_shared<RVGitTreeEntry>(
        repository(), "file.txt", RVGitObjectTypeBlob, hash, RVGitFileModeRegular, 0);
    untracked->setBaseVersion(base);
    EXPECT_EQ(untracked->stagedVersion(), some);
    EXPECT_EQ(untracked->unmergedBaseVersion(), some);
    EXPECT_EQ(untracked->unmergedOursVersion(), some);
    EXPECT_EQ(untracked->unmergedTheirsVersion(), some);
    EXPECT_EQ(untracked->baseVersion(), base);
}

TEST_F(RVGitWorkingTreeEntryTest, AStagedVersionIsMadeOfWhatTheIndexSaysAndThenKept) {
    const auto recorder = useRecordingGit();
    const auto changed = newEntry(RVGitFileStatusUntracked, RVGitFileStatusUntracked);
    changed->setStagedVersion(RVGitCompactHash::hashOfDigits(hash).value(), RVGitFileModeExecutable,
                              'h');
    const auto staged = changed->stagedVersion();
    ASSERT_TRUE(staged);
    EXPECT_EQ(staged->filePath(), "file.txt");
    EXPECT_EQ(staged->repository(), repository());
    EXPECT_EQ(staged->objectHash(), hash);
    EXPECT_EQ(staged->fileMode(), RVGitFileModeExecutable);
    EXPECT_EQ(staged->stage(), RVGitIndexStageDefault);
    EXPECT_EQ(staged->flag(), "h");
    EXPECT_EQ(changed->stagedVersion(), staged);
    EXPECT_TRUE(changed->isAssumeUnchangedFile());
    changed->setStagedVersion(RVGitCompactHash(), RVGitFileModeRegular, std::nullopt);
    EXPECT_EQ(changed->stagedVersion()->objectHash(), RVGitNullObjectHash);
    EXPECT_EQ(changed->stagedVersion()->flag(), std::nullopt);
    changed->setStagedVersion(nullptr);
    EXPECT_EQ(changed->stagedVersion(), nullptr);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryTest, TheVersionsOfAConflictAreLoadedOneByOne) {
    makeConflicts();
    const auto recorder = useRecordingGit();
    const auto conflict = newEntry(RVGitFileStatusUnmerged, RVGitFileStatusUnmerged, "both");
    const std::pair<std::shared_ptr<RVGitIndexEntry>, std::string> versions[] = {
        {conflict->unmergedBaseVersion(), ":1:both"},
        {conflict->unmergedOursVersion(), ":2:both"},
        {conflict->unmergedTheirsVersion(), ":3:both"}};
    EXPECT_EQ(recorder.invocations().size(), 3u);
    for (const auto& [loaded, reference] : versions)
        EXPECT_EQ(loaded->objectHash(), gitInRepository({"rev-parse", reference}));
    EXPECT_EQ(conflict->unmergedOursVersion(), versions[1].first);
    EXPECT_EQ(conflict->stagedVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeEntryTest, AFileWithoutAConflictHasNoUnmergedVersions) {
    makeConflicts();
    const auto recorder = useRecordingGit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusModified, "both");
    EXPECT_EQ(changed->unmergedBaseVersion(), nullptr);
    EXPECT_EQ(changed->unmergedOursVersion(), nullptr);
    EXPECT_EQ(changed->unmergedTheirsVersion(), nullptr);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryTest, TheBaseVersionComesFromHEAD) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    const auto base = changed->baseVersion();
    ASSERT_TRUE(base);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("ls-tree", "-z", "HEAD", "--", "file.txt"));
    EXPECT_EQ(base->objectHash(), gitInRepository({"rev-parse", "HEAD:file.txt"}));
    EXPECT_EQ(changed->baseVersion(), base);
    EXPECT_EQ(recorder.invocations().size(), 1u);
}

TEST_F(RVGitWorkingTreeEntryTest, AnUntrackedOrAddedFileHasNoBaseVersion) {
    makeCommit();
    const auto recorder = useRecordingGit();
    for (const auto status : {RVGitFileStatusUntracked, RVGitFileStatusAdded})
        EXPECT_EQ(newEntry(status, RVGitFileStatusModified)->baseVersion(), nullptr);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryTest, ARenamedFileHasItsBaseAtTheOriginalPathAndACopiedOneAtTheNew) {
    makeCommit();
    const auto renamed = newEntry(RVGitFileStatusRenamed, RVGitFileStatusUnchanged, "new");
    renamed->setOriginalFilePath("file.txt");
    ASSERT_TRUE(renamed->baseVersion());
    EXPECT_EQ(renamed->baseVersion()->filePath(), "file.txt");
    EXPECT_EQ(contentsOf(renamed->blobForBaseVersion()), "1");
    const auto copied = newEntry(RVGitFileStatusCopied, RVGitFileStatusUnchanged, "new");
    copied->setOriginalFilePath("file.txt");
    EXPECT_EQ(copied->baseVersion(), nullptr);
    EXPECT_THAT([&](RVErrorPlace error) { return copied->blobForBaseVersion(error); },
                failsWith(1201));
}

TEST_F(RVGitWorkingTreeEntryTest, AVersionThatCouldNotBeLoadedIsTriedAgain) {
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    EXPECT_EQ(changed->stagedVersion(), nullptr);
    EXPECT_EQ(changed->baseVersion(), nullptr);
    makeCommit();
    EXPECT_NE(changed->stagedVersion(), nullptr);
    EXPECT_NE(changed->baseVersion(), nullptr);
    const auto conflict = newEntry(RVGitFileStatusUnmerged, RVGitFileStatusUnmerged, "both");
    EXPECT_EQ(conflict->unmergedOursVersion(), nullptr);
    makeConflicts();
    EXPECT_NE(conflict->unmergedOursVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeEntryTest, AssumeUnchangedIsReadFromTheStagedVersion) {
    makeCommit();
    const auto plain = newEntry(RVGitFileStatusUnchanged, RVGitFileStatusUnchanged);
    EXPECT_FALSE(plain->isAssumeUnchangedFile());
    gitInRepository({"update-index", "--assume-unchanged", "file.txt"});
    EXPECT_FALSE(plain->isAssumeUnchangedFile()) << "a snapshot";
    EXPECT_TRUE(
        newEntry(RVGitFileStatusUnchanged, RVGitFileStatusUnchanged)->isAssumeUnchangedFile());
}

// Contents.

TEST_F(RVGitWorkingTreeEntryTest, EachVersionHasItsContents) {
    makeCommit();
    stageFile("file.txt", "staged");
    writeFile("repository/file.txt", "current");
    const auto changed = entryAt("file.txt");
    ASSERT_TRUE(changed);
    EXPECT_EQ(contentsOf(changed->blobForCurrentVersion()), "current");
    EXPECT_EQ(contentsOf(changed->blobForStagedVersion()), "staged");
    EXPECT_EQ(contentsOf(changed->blobForBaseVersion()), "1");
}

TEST_F(RVGitWorkingTreeEntryTest, ADeletedFileHasNoCurrentContentsAndClearsThePlace) {
    auto error = filledPlace();
    EXPECT_EQ(
        newEntry(RVGitFileStatusUnchanged, RVGitFileStatusDeleted)->blobForCurrentVersion(&error),
        nullptr);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitWorkingTreeEntryTest, AFileThatCannotBeReadIsAnError) {
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return newEntry(RVGitFileStatusUnchanged, RVGitFileStatusModified)
                ->blobForCurrentVersion(error);
        },
        failsWith(1200));
}

TEST_F(RVGitWorkingTreeEntryTest, AMissingVersionClearsThePlaceButThatOfOurSide) {
    const auto plain = newEntry(RVGitFileStatusUntracked, RVGitFileStatusUntracked);
    auto error = filledPlace();
    EXPECT_EQ(plain->blobForStagedVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(plain->blobForUnmergedBaseVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(plain->blobForUnmergedTheirsVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(plain->blobForUnmergedOursVersion(&error), nullptr);
    EXPECT_EQ(error, filledPlace());
    error = filledPlace();
    EXPECT_EQ(plain->blobForBaseVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(newEntry(RVGitFileStatusAdded, RVGitFileStatusModified)->blobForBaseVersion(&error),
              nullptr);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitWorkingTreeEntryTest, EachSideOfAConflictHasItsContents) {
    makeConflicts();
    const auto conflict = entryAt("both");
    ASSERT_TRUE(conflict);
    const std::string base = contentsForFile("both");
    EXPECT_EQ(contentsOf(conflict->blobForUnmergedBaseVersion()), base);
    EXPECT_EQ(contentsOf(conflict->blobForUnmergedOursVersion()), base + "ours\n");
    EXPECT_EQ(contentsOf(conflict->blobForUnmergedTheirsVersion()), base + "theirs\n");
    EXPECT_EQ(contentsOf(conflict->blobForBaseVersion()), base + "ours\n");
    EXPECT_EQ(conflict->blobForStagedVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeEntryTest, TheBaseContentsAreThoseOfTheBaseVersion) {
    makeCommit();
    const std::string other = gitInRepository({"rev-parse", makeCommit() + ":file.txt"});
    makeCommit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    changed->setBaseVersion(std::make_shared<RVGitTreeEntry>(
        repository(), "file.txt", RVGitObjectTypeBlob, other, RVGitFileModeRegular, 1));
    EXPECT_EQ(contentsOf(changed->blobForBaseVersion()), "2");
    changed->setBaseVersion(nullptr);
    EXPECT_EQ(contentsOf(changed->blobForBaseVersion()), "3");
}

TEST_F(RVGitWorkingTreeEntryTest, AVersionThatCannotBeLoadedIsMissingWithoutAnError) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: broken\n", .exitCode = 128});
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusModified);
    auto error = filledPlace();
    EXPECT_EQ(changed->blobForStagedVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    const auto conflict = newEntry(RVGitFileStatusUnmerged, RVGitFileStatusUnmerged);
    error = filledPlace();
    EXPECT_EQ(conflict->blobForUnmergedTheirsVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(conflict->blobForUnmergedBaseVersion(&error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(conflict->blobForUnmergedOursVersion(&error), nullptr);
    EXPECT_EQ(error, filledPlace());
}

TEST_F(RVGitWorkingTreeEntryTest, AnObjectThatIsGoneIsAnError) {
    makeCommit();
    const auto changed = newEntry(RVGitFileStatusModified, RVGitFileStatusUnchanged);
    changed->setStagedVersion(version(hash));
    std::optional<RVError> error;
    EXPECT_EQ(changed->blobForStagedVersion(&error), nullptr);
    EXPECT_TRUE(error.has_value());
}

// Equality.

TEST_F(RVGitWorkingTreeEntryTest, EqualityTakesPathAndStatuses) {
    const auto one = newEntry(RVGitFileStatusAdded, RVGitFileStatusModified);
    EXPECT_TRUE(
        one->isEqualToWorkingTreeEntry(*newEntry(RVGitFileStatusAdded, RVGitFileStatusModified)));
    EXPECT_FALSE(
        one->isEqualToWorkingTreeEntry(*newEntry(RVGitFileStatusAdded, RVGitFileStatusDeleted)));
    EXPECT_FALSE(one->isEqualToWorkingTreeEntry(
        *newEntry(RVGitFileStatusModified, RVGitFileStatusModified)));
    EXPECT_FALSE(one->isEqualToWorkingTreeEntry(
        *newEntry(RVGitFileStatusAdded, RVGitFileStatusModified, "other")));
    const auto conflict = newEntry(RVGitFileStatusUnmerged, RVGitFileStatusAdded);
    EXPECT_TRUE(conflict->isEqualToWorkingTreeEntry(
        *newEntry(RVGitFileStatusUnmerged, RVGitFileStatusAdded)));
    EXPECT_FALSE(conflict->isEqualToWorkingTreeEntry(
        *newEntry(RVGitFileStatusUnmerged, RVGitFileStatusDeleted)));
    EXPECT_FALSE(
        conflict->isEqualToWorkingTreeEntry(*newEntry(RVGitFileStatusAdded, RVGitFileStatusAdded)));
}

TEST_F(RVGitWorkingTreeEntryTest, AnOriginalPathHereEqualsNoneThereButNotTheOtherWayRound) {
    const auto with = newEntry(RVGitFileStatusRenamed, RVGitFileStatusUnchanged);
    with->setOriginalFilePath("old");
    const auto without = newEntry(RVGitFileStatusRenamed, RVGitFileStatusUnchanged);
    EXPECT_TRUE(with->isEqualToWorkingTreeEntry(*without));
    EXPECT_FALSE(without->isEqualToWorkingTreeEntry(*with));
    EXPECT_TRUE(with->isEqualToWorkingTreeEntry(*with));
    const auto other = newEntry(RVGitFileStatusRenamed, RVGitFileStatusUnchanged);
    other->setOriginalFilePath("older");
    EXPECT_FALSE(with->isEqualToWorkingTreeEntry(*other));
}

// Listing.

TEST_F(RVGitWorkingTreeEntryTest, CountsStatusLinesAndRunsNothingElse) {
    makeCommit();
    writeFile("repository/file.txt", "changed");
    writeFile("repository/dir/a", "");
    writeFile("repository/dir/b", "");
    const auto recorder = useRecordingGit();
    const auto count = [&](const std::optional<RVOptions>& options) {
        return Entry::countChangedWorkingTreeEntriesForRepository(repository(), options);
    };
    EXPECT_EQ(count(std::nullopt), 2u);
    EXPECT_EQ(count(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 3}}), 3u);
    EXPECT_EQ(count(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 1},
                              {RVGitWorkingTreeOptionIncludeUnchangedFiles, true}}),
              1u);
    EXPECT_EQ(recorder.invocations().size(), 3u);
}

TEST_F(RVGitWorkingTreeEntryTest, AFailedCountIsZeroWithAnError) {
    const auto invalid = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        repositoryPath(), makeDirectory("nothing"));
    std::optional<RVError> error;
    EXPECT_EQ(Entry::countChangedWorkingTreeEntriesForRepository(invalid, std::nullopt, &error),
              0u);
    EXPECT_TRUE(error.has_value());
    error.reset();
    EXPECT_EQ(
        Entry::countChangedWorkingTreeEntriesForRepository(repository(), std::nullopt, &error), 0u);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitWorkingTreeEntryTest, ChangedEntriesComeWithoutOptions) {
    makeCommit();
    writeFile("repository/dir/a", "");
    const auto recorder = useRecordingGit();
    const auto changed = Entry::changedWorkingTreeEntriesForRepository(repository());
    ASSERT_TRUE(changed);
    EXPECT_EQ(changed->size(), 1u);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("status", "--porcelain"));
    EXPECT_EQ(recorder.invocations().size(), 1u);
}

TEST_F(RVGitWorkingTreeEntryTest, AllEntriesAreThoseOfTheIndexAndEveryUntrackedFile) {
    makeCommit();
    writeFile("repository/dir/a", "");
    writeFile("repository/dir/b", "");
    const auto recorder = useRecordingGit();
    const auto all = Entry::allWorkingTreeEntriesForRepository(repository());
    ASSERT_TRUE(all);
    std::vector<std::string> texts;
    for (const auto& one : *all)
        texts.push_back(textOfEntry(*one));
    EXPECT_THAT(
        texts, UnorderedElementsAre("   Regular file.txt", "?? Regular dir/a", "?? Regular dir/b"));
    EXPECT_EQ(recorder.invocations().size(), 2u);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("ls-files", "-z", "-v", "--stage"));
    EXPECT_EQ(Entry::allWorkingTreeEntriesForRepository(repository(), std::nullopt)->size(), 1u);
}

TEST_F(RVGitWorkingTreeEntryTest, OneFileIsFoundInWhateverState) {
    commitFile("repository", "dir/same", "", "Message");
    commitFile("repository", "dir/changed", "", "Message");
    writeFile("repository/dir/changed", "changed");
    writeFile("repository/dir/new/deep", "");
    writeFile("repository/.gitignore", "*.o\n");
    writeFile("repository/top.o", "");
    const auto text = [&](const std::string& filePath) {
        const auto found = Entry::workingTreeEntryForFilePath(filePath, repository());
        return found ? textOfEntry(*found) : "none";
    };
    EXPECT_EQ(text("dir/same"), "   Regular dir/same");
    EXPECT_EQ(text("dir/changed"), " M Regular dir/changed");
    EXPECT_EQ(text("dir/new/deep"), "?? Regular dir/new/deep");
    EXPECT_EQ(text("top.o"), "!! Regular top.o");
    EXPECT_EQ(text("dir"), "none");
}

TEST_F(RVGitWorkingTreeEntryTest, OneFileIsLookedUpInItsDirectory) {
    commitFile("repository", "dir/a", "", "Message");
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(Entry::workingTreeEntryForFilePath("dir/a", repository()));
    const auto calls = recorder.argumentLists();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(
        std::vector(calls[0].begin() + 3, calls[0].end()),
        ElementsAre("status", "--porcelain", "--ignored", "--untracked-files=all", "--", "dir"));
    EXPECT_THAT(std::vector(calls[1].begin() + 3, calls[1].end()),
                ElementsAre("ls-files", "-z", "-v", "--stage", "--", "dir"));
}

TEST_F(RVGitWorkingTreeEntryTest, OneFileIsFoundInEitherUnicodeForm) {
    commitFile("repository", "caf\u00E9", "", "Message");
    const auto found = Entry::workingTreeEntryForFilePath("cafe\u0301", repository());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->filePath(), "caf\u00E9");
    // Its twin comes first where that is what was asked for.
    commitFile("repository", "cafe\u0301", "", "Message");
    for (const std::string path : {"cafe\u0301", "caf\u00E9"})
        EXPECT_EQ(Entry::workingTreeEntryForFilePath(path, repository())->filePath(), path);
}

TEST_F(RVGitWorkingTreeEntryTest, AFileThatIsMissingIsNoError) {
    makeCommit();
    auto error = filledPlace();
    EXPECT_EQ(Entry::workingTreeEntryForFilePath("missing", repository(), &error), nullptr);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitWorkingTreeEntryTest, AFailedLookUpLeavesTheError) {
    std::optional<RVError> error;
    EXPECT_EQ(Entry::workingTreeEntryForFilePath("../outside/file", repository(), &error), nullptr);
    EXPECT_TRUE(error.has_value());
}

}  // namespace
