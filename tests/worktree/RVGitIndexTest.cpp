#include "RVGit/worktree/RVGitIndex.h"

#include "RVGit/base/RVError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";

class RVGitIndexEntryTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] RVGitIndexEntry entry(RVGitIndexStage stage = RVGitIndexStageDefault,
                                        std::optional<char> flag = std::nullopt,
                                        const std::string& filePath = "a") const {
        return {repository(), filePath, hash, RVGitFileModeRegular, stage, flag};
    }
};

TEST_F(RVGitIndexEntryTest, KeepsItsFields) {
    const auto flagged = entry(RVGitIndexStageTheirs, 'H');
    EXPECT_EQ(flagged.repository(), repository());
    EXPECT_EQ(flagged.filePath(), "a");
    EXPECT_EQ(flagged.objectHash(), hash);
    EXPECT_EQ(flagged.fileMode(), RVGitFileModeRegular);
    EXPECT_EQ(flagged.stage(), RVGitIndexStageTheirs);
    EXPECT_EQ(flagged.flag(), "H");
    EXPECT_EQ(entry().flag(), std::nullopt);
}

TEST_F(RVGitIndexEntryTest, IsOfExactlyOneStage) {
    for (auto stage : {RVGitIndexStageDefault, RVGitIndexStageBase, RVGitIndexStageOurs,
                       RVGitIndexStageTheirs}) {
        EXPECT_EQ(entry(stage).isDefaultStage(), stage == RVGitIndexStageDefault);
        EXPECT_EQ(entry(stage).isBaseStage(), stage == RVGitIndexStageBase);
        EXPECT_EQ(entry(stage).isOursStage(), stage == RVGitIndexStageOurs);
        EXPECT_EQ(entry(stage).isTheirsStage(), stage == RVGitIndexStageTheirs);
    }
}

TEST_F(RVGitIndexEntryTest, TheFlagTellsOfAssumeUnchanged) {
    for (const char flag : std::string("hsrmc"))
        EXPECT_TRUE(entry(RVGitIndexStageDefault, flag).isAssumeUnchangedFlagSet());
    for (const char flag : std::string("HSRMCKk"))
        EXPECT_FALSE(entry(RVGitIndexStageDefault, flag).isAssumeUnchangedFlagSet());
    EXPECT_FALSE(entry().isAssumeUnchangedFlagSet());
}

TEST_F(RVGitIndexEntryTest, EqualityTakesPathHashStageAndFlag) {
    const auto plain = entry(RVGitIndexStageOurs, 'H');
    EXPECT_TRUE(plain.isEqualToIndexEntry(entry(RVGitIndexStageOurs, 'H')));
    EXPECT_TRUE(entry().isEqualToIndexEntry(entry()));
    EXPECT_FALSE(plain.isEqualToIndexEntry(entry(RVGitIndexStageTheirs, 'H')));
    EXPECT_FALSE(plain.isEqualToIndexEntry(entry(RVGitIndexStageOurs, 'h')));
    EXPECT_FALSE(plain.isEqualToIndexEntry(entry(RVGitIndexStageOurs)));
    EXPECT_FALSE(plain.isEqualToIndexEntry(entry(RVGitIndexStageOurs, 'H', "b")));
}

class RVGitIndexTest : public RVGitWorkingTreeTestCase {
protected:
    /// "STAGE PATH" of each entry.
    [[nodiscard]] static std::vector<std::string> texts(
        const std::optional<RVGitIndex::Entries>& entries) {
        EXPECT_TRUE(entries.has_value());
        std::vector<std::string> texts;
        for (const auto& entry : entries.value_or(RVGitIndex::Entries()))
            texts.push_back(std::to_string(entry->stage()) + " " + entry->filePath());
        return texts;
    }
};

TEST_F(RVGitIndexTest, RequiresARepository) {
    EXPECT_THROW((void)RVGitIndex::indexWithRepository(nullptr), RVInvalidParameterException);
    EXPECT_EQ(RVGitIndex::indexWithRepository(repository())->repository(), repository());
}

TEST_F(RVGitIndexTest, ARepositoryAndItsIndexKeepEachOtherOnlyWhereOneIsHeld) {
    auto other = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        repositoryPath(), repositoryPath() + "/.git");
    const std::weak_ptr<RVGitRepository> watched = other;
    auto index = other->index();
    other.reset();
    EXPECT_THAT(texts(index->allIndexEntries()), IsEmpty());
    EXPECT_FALSE(watched.expired());
    index.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(RVGitIndexTest, ListsAllEntriesInGitsOrder) {
    for (const char* file : {"b", "dir/c", "a"})
        stageFile(file, file);
    const auto entries = repository()->index()->allIndexEntries();
    ASSERT_TRUE(entries);
    EXPECT_THAT(texts(entries), ElementsAre("0 a", "0 b", "0 dir/c"));
    EXPECT_EQ((*entries)[2]->objectHash(), gitInRepository({"rev-parse", ":dir/c"}));
    EXPECT_EQ((*entries)[2]->fileMode(), RVGitFileModeRegular);
    EXPECT_EQ((*entries)[2]->flag(), "H");
    EXPECT_EQ((*entries)[2]->repository(), repository());
}

TEST_F(RVGitIndexTest, ListsThePathAndWhatLiesBelowIt) {
    for (const char* file : {"directory", "dir/c", "dir/a"})
        stageFile(file, file);
    const auto index = repository()->index();
    EXPECT_THAT(texts(index->indexEntriesForFilePath("dir")), ElementsAre("0 dir/a", "0 dir/c"));
    EXPECT_THAT(texts(index->indexEntriesForFilePath("directory")), ElementsAre("0 directory"));
    EXPECT_THAT(texts(index->indexEntriesForFilePath("missing")), IsEmpty());
    EXPECT_THAT(texts(index->indexEntriesForFilePaths({{"dir/c", "directory"}}, 0)),
                ElementsAre("0 dir/c", "0 directory"));
}

TEST_F(RVGitIndexTest, APatternFindsNothing) {
    for (const char* file : {"a.txt", "*", "*.txt"})
        stageFile(file, file);
    const auto index = repository()->index();
    EXPECT_THAT(texts(index->indexEntriesForFilePaths({{"*"}}, 0)), ElementsAre("0 *", "0 *.txt"));
    for (const char* pattern : {"?.txt", "a*", ":(literal)a.txt", ":(top)"}) {
        std::optional<RVError> error;
        EXPECT_THAT(texts(index->indexEntriesForFilePaths({{pattern}}, 0, &error)), IsEmpty())
            << pattern;
        EXPECT_EQ(error, std::nullopt) << pattern;
    }
}

TEST_F(RVGitIndexTest, OptionsSelectKindsOfEntries) {
    addSubmodule("module");
    stageFile("assumed", "");
    stageFile("dir/plain", "");
    gitInRepository({"update-index", "--assume-unchanged", "assumed"});
    const auto index = repository()->index();
    const auto list = [&](unsigned options,
                          const std::optional<std::vector<std::string>>& paths = std::nullopt) {
        return texts(index->indexEntriesForFilePaths(paths, options));
    };
    EXPECT_THAT(list(0), ElementsAre("0 .gitmodules", "0 assumed", "0 dir/plain", "0 module"));
    EXPECT_THAT(list(RVGitIndexOptionAssumeUnchangedFiles), ElementsAre("0 assumed"));
    EXPECT_THAT(list(RVGitIndexOptionSubmodules), ElementsAre("0 module"));
    EXPECT_THAT(list(3), ElementsAre("0 assumed", "0 module"));
    EXPECT_THAT(list(RVGitIndexOptionSubmodules, {{"dir", "module"}}),
                ElementsAre("0 dir/plain", "0 module"));
}

TEST_F(RVGitIndexTest, TheOptionsAreNoArguments) {
    const auto recorder = useRecordingGit();
    const auto index = repository()->index();
    (void)index->allIndexEntries();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("ls-files", "-z", "-v", "--stage"));
    (void)index->indexEntriesForFilePaths({{"-a", "b"}}, 3);
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("ls-files", "-z", "-v", "--stage", "--", "-a", "b"));
}

TEST_F(RVGitIndexTest, FindsTheEntryAtAStage) {
    makeConflicts();
    const auto index = repository()->index();
    EXPECT_EQ(index->indexEntryForFilePath("both", RVGitIndexStageTheirs)->objectHash(),
              gitInRepository({"rev-parse", ":3:both"}));
    EXPECT_EQ(index->indexEntryForFilePath("renamed-by-us", RVGitIndexStageOurs)->objectHash(),
              gitInRepository({"rev-parse", ":2:renamed-by-us"}));
}

TEST_F(RVGitIndexTest, AnEntryThatIsMissingIsNoError) {
    makeConflicts();
    const auto index = repository()->index();
    auto error = filledPlace();
    EXPECT_EQ(index->indexEntryForFilePath("both", &error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(index->indexEntryForFilePath("missing", &error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    stageFile("dir/file", "");
    EXPECT_EQ(index->indexEntryForFilePath("dir"), nullptr);
}

TEST_F(RVGitIndexTest, AnEntryIsFoundInEitherUnicodeForm) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "H 100644 " + hash + " 0\tcaf\u00E9\0"s});
    const auto entry = repository()->index()->indexEntryForFilePath("cafe\u0301");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->filePath(), "caf\u00E9");
    // Its twin comes first where that is what was asked for.
    fake.setAnswer({.standardOutput = "H 100644 " + hash + " 0\tcafe\u0301\0"s + "H 100644 " +
                                      hash + " 0\tcaf\u00E9\0"s});
    EXPECT_EQ(repository()->index()->indexEntryForFilePath("caf\u00E9")->filePath(), "caf\u00E9");
}

TEST_F(RVGitIndexTest, AFailureStaysInThePlace) {
    const auto index = repository()->index();
    std::optional<RVError> error;
    EXPECT_EQ(index->indexEntryForFilePath("../outside", &error), nullptr);
    EXPECT_TRUE(error.has_value());
    error.reset();
    EXPECT_EQ(index->indexEntriesForFilePath("../outside", &error), std::nullopt);
    EXPECT_TRUE(error.has_value());
}

}  // namespace
