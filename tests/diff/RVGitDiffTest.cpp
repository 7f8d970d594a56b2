#include "RVGit/diff/RVGitDiff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffMap.h"
#include "RVGit/diff/RVGitDiffParser.h"
#include "RVGit/diff/RVGitDiffSettings.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

namespace {

constexpr char rawDiff[] =
    "diff --git a/x b/y\nsimilarity index 90%\nrename from x\nrename to y\n"
    "index 1234567..89abcde 100755\n--- a/x\n+++ b/y\n"
    "@@ -1,2 +1,2 @@\n a\n-b\n+B\n@@ -9 +9,2 @@\n c\n+d\n\\ No newline at end of file\n";

TEST(RVGitDiffModelTest, HoldsWhatTheMapHolds) {
    const auto diff = RVGitDiff::diffFromRawDiff(rawDiff);
    ASSERT_TRUE(diff);
    EXPECT_EQ(diff->repository(), nullptr);
    EXPECT_EQ(diff->rawDiff(), rawDiff);
    EXPECT_EQ(diff->filePath(), "y");
    EXPECT_EQ(diff->oldFilePath(), "x");
    EXPECT_EQ(diff->header(), std::string(rawDiff).substr(0, std::string(rawDiff).find("@@")));
    EXPECT_THAT(diff->extendedHeaders(),
                ElementsAre("similarity index 90%", "rename from x", "rename to y",
                            "index 1234567..89abcde 100755"));
    EXPECT_FALSE(diff->isBinary());
    EXPECT_EQ(diff->fileStatus(), RVGitFileStatusRenamed);
    EXPECT_EQ(diff->fileStatusSimilarityIndex(), 90u);
    EXPECT_EQ(diff->objectHash(), "89abcde");
    EXPECT_THAT(diff->originalObjectHashes(), ElementsAre("1234567"));
    EXPECT_EQ(diff->originalObjectHash(), "1234567");
    EXPECT_EQ(diff->fileMode(), RVGitFileModeExecutable);
    EXPECT_EQ(diff->originalFileMode(), RVGitFileModeExecutable);
    EXPECT_THAT(diff->originalFileModes(), ElementsAre("100755"));
    EXPECT_TRUE(diff->containsNoNewlineAtEOFWarning());
    EXPECT_EQ(diff->linesAdded(), 2u);
    EXPECT_EQ(diff->linesDeleted(), 1u);
    ASSERT_EQ(diff->chunks().size(), 2u);
    EXPECT_EQ(diff->chunks()[0]->diff(), diff);
    EXPECT_EQ(diff->chunks()[1]->lines()[1].lineNumbers(), std::vector<std::uint32_t>({9, 10}));
    EXPECT_FALSE(
        RVGitDiff::diffFromRawDiff("diff --git a/x b/x\n")->containsNoNewlineAtEOFWarning());
}

TEST(RVGitDiffModelTest, NewDiffIsBlank) {
    const auto diff = std::make_shared<RVGitDiff>();
    EXPECT_EQ(diff->repository(), nullptr);
    EXPECT_EQ(diff->rawDiff(), std::nullopt);
    EXPECT_EQ(diff->header(), std::nullopt);
    EXPECT_THAT(diff->chunks(), IsEmpty());
    EXPECT_FALSE(diff->isCombinedDiff());
    EXPECT_EQ(diff->originalObjectHash(), std::nullopt);
    EXPECT_EQ(diff->originalFileMode(), RVGitFileModeNone);
    EXPECT_EQ(diff->linesAdded(), 0u);
}

TEST(RVGitDiffModelTest, FieldsCanBeSet) {
    RVGitDiff diff;
    diff.setRawDiff("diff --combined x\n");
    EXPECT_EQ(diff.rawDiff(), "diff --combined x\n");
    EXPECT_TRUE(diff.isCombinedDiff());
    diff.setRawDiff(std::nullopt);
    EXPECT_EQ(diff.rawDiff(), std::nullopt);
    diff.setFilePath("new");
    diff.setOldFilePath("old");
    diff.setHeader("header");
    diff.setExtendedHeaders({"mode"});
    diff.setBinary(true);
    diff.setFileStatusSimilarityIndex(7);
    diff.setObjectHash("1");
    diff.setOriginalObjectHashes({"2", "3"});
    diff.setFileMode(RVGitFileModeSymbolicLink);
    diff.setOriginalFileModes({"160000"});
    diff.setContainsNoNewlineAtEOFWarning(true);
    EXPECT_EQ(diff.filePath(), "new");
    EXPECT_EQ(diff.oldFilePath(), "old");
    EXPECT_EQ(diff.header(), "header");
    EXPECT_THAT(diff.extendedHeaders(), ElementsAre("mode"));
    EXPECT_TRUE(diff.isBinary());
    EXPECT_EQ(diff.fileStatusSimilarityIndex(), 7u);
    EXPECT_EQ(diff.objectHash(), "1");
    EXPECT_EQ(diff.originalObjectHash(), "2");
    EXPECT_EQ(diff.fileMode(), RVGitFileModeSymbolicLink);
    EXPECT_EQ(diff.originalFileMode(), RVGitFileModeSubmodule);
    EXPECT_TRUE(diff.containsNoNewlineAtEOFWarning());
}

TEST(RVGitDiffModelTest, TotalChunksAlwaysCountsTheChunks) {
    const auto diff = RVGitDiff::diffFromRawDiff(rawDiff);
    ASSERT_TRUE(diff);
    diff->setTotalChunks(17);
    EXPECT_EQ(diff->totalChunks(), 2u);
    diff->setChunks({});
    EXPECT_EQ(diff->totalChunks(), 0u);
}

TEST(RVGitDiffModelTest, TheDiffOfAFileIsThatOfItsPath) {
    const auto diffOf = [](std::optional<std::string> path, std::optional<std::string> oldPath) {
        const auto diff = std::make_shared<RVGitDiff>();
        diff->setFilePath(std::move(path));
        diff->setOldFilePath(std::move(oldPath));
        return diff;
    };
    const auto first = diffOf("a!", "a!");
    const auto second = diffOf("a?", "a?");
    const auto renamed = diffOf("new", "old");
    const auto deleted = diffOf(std::nullopt, "deleted");
    const auto composed = diffOf("caf\u00E9", "caf\u00E9");
    const RVGitDiff::Diffs diffs = {{first, second, renamed, deleted, composed}};
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, "a!"), first);
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, "a?"), second);
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, "new"), renamed);
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, "deleted"), deleted);
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, "cafe\u0301"), composed);
    EXPECT_EQ(RVGitDiff::diffOfFile({{renamed, deleted}}, "old"), renamed)
        << "the first, not the one of that old path";
}

TEST(RVGitDiffModelTest, WithoutADiffOfThePathTheFirstCountsUnlessThePathMayBeAPattern) {
    const auto other = std::make_shared<RVGitDiff>();
    const auto another = std::make_shared<RVGitDiff>();
    other->setFilePath("other");
    for (const char* path : {"file", "dir/file", "a:b", "a]b", "a!", ""})
        EXPECT_EQ(RVGitDiff::diffOfFile({{other, another}}, path), other) << path;
    for (const char* path : {"a*", "a?", "[a]", "a\\b", ":a", ":(literal)other"})
        EXPECT_EQ(RVGitDiff::diffOfFile({{other, another}}, path), nullptr) << path;
    EXPECT_EQ(RVGitDiff::diffOfFile(RVGitDiff::Diffs({another}), "file"), another)
        << "a diff without any path";
}

TEST(RVGitDiffModelTest, WithoutDiffsThereIsNoneOfAFile) {
    EXPECT_EQ(RVGitDiff::diffOfFile(std::nullopt, "file"), nullptr);
    EXPECT_EQ(RVGitDiff::diffOfFile(std::vector<std::shared_ptr<RVGitDiff>>(), "file"), nullptr);
}

TEST(RVGitDiffModelTest, StatusIsAskedForByName) {
    RVGitDiff diff;
    for (const auto status : {RVGitFileStatusAdded, RVGitFileStatusDeleted, RVGitFileStatusModified,
                              RVGitFileStatusRenamed, RVGitFileStatusCopied}) {
        diff.setFileStatus(status);
        EXPECT_EQ(diff.isFileStatusAdded(), status == RVGitFileStatusAdded);
        EXPECT_EQ(diff.isFileStatusDeleted(), status == RVGitFileStatusDeleted);
        EXPECT_EQ(diff.isFileStatusModified(), status == RVGitFileStatusModified);
        EXPECT_EQ(diff.isFileStatusRenamed(), status == RVGitFileStatusRenamed);
        EXPECT_EQ(diff.isFileStatusCopied(), status == RVGitFileStatusCopied);
    }
}

TEST(RVGitDiffModelTest, OnlyTheWordCombinedMakesACombinedDiff) {
    EXPECT_TRUE(RVGitDiff::diffFromRawDiff("diff --combined x\n")->isCombinedDiff());
    EXPECT_FALSE(RVGitDiff::diffFromRawDiff("diff --cc x\n")->isCombinedDiff());
    EXPECT_FALSE(RVGitDiff::diffFromRawDiff(rawDiff)->isCombinedDiff());
    EXPECT_EQ(RVGitDiff::diffFromRawDiff("diff --cc x\n")->header(), std::nullopt);
}

TEST(RVGitDiffModelTest, OriginalHashOfAnAddedFileIsAbsent) {
    const auto diff =
        RVGitDiff::diffFromRawDiff("diff --git a/x b/x\nnew file mode 100644\nindex " +
                                   std::string(40, '0') + ".." + std::string(40, 'a') + "\n");
    ASSERT_TRUE(diff);
    EXPECT_THAT(diff->originalObjectHashes(), ElementsAre(RVGitNullObjectHash));
    EXPECT_EQ(diff->originalObjectHash(), std::nullopt);
    EXPECT_TRUE(diff->isFileStatusAdded());
}

TEST(RVGitDiffModelTest, TextThatCannotBeReadIsNoDiffIfAPlaceIsGiven) {
    const std::string text = "diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+a\nbad\n";
    EXPECT_THAT([&](RVErrorPlace error) { return RVGitDiff::diffFromRawDiff(text, error); },
                failsWith(RVGitOutputParserError));
    const auto diff = RVGitDiff::diffFromRawDiff(text);
    ASSERT_TRUE(diff);
    EXPECT_EQ(diff->linesAdded(), 1u);
}

TEST(RVGitDiffModelTest, SettingsHoldWhatIsCompared) {
    RVGitDiffSettings settings;
    EXPECT_THAT(settings.revisions(), IsEmpty());
    EXPECT_FALSE(settings.logOptions());
    EXPECT_FALSE(settings.diffOptions());
    settings.setRevisions({"a", "b"});
    settings.setLogOptions(RVOptions{{RVGitLogOptionLimit, 1}});
    settings.setDiffOptions(RVOptions{{RVGitDiffOptionBinary, true}});
    const RVGitDiffSettings copy = settings;
    settings.setRevisions({});
    EXPECT_THAT(copy.revisions(), ElementsAre("a", "b"));
    EXPECT_EQ(copy.logOptions()->size(), 1u);
    EXPECT_TRUE(optionIsSet(copy.diffOptions(), RVGitDiffOptionBinary));
}

// Comparing, with the real git.
class RVGitDiffTest : public RVGitRepositoryTestCase {
protected:
    void SetUp() override {
        first_ = commitFile(repositoryPath(), "f", "1\n2\n3\n", "First");
        second_ = commitFile(repositoryPath(), "f", "1\nTWO\n3\n", "Second");
        writeFile(repositoryPath() + "/f", "1\nTWO\nTHREE\n");
        gitInRepository({"add", "f"});
        writeFile(repositoryPath() + "/f", "ONE\nTWO\nTHREE\n");
    }
    // The changed lines, each with its status.
    static std::string changesOf(const RVGitDiff::Diffs& diffs) {
        std::string changes;
        for (const auto& diff : diffs.value()) {
            for (const auto& chunk : diff->chunks()) {
                for (const auto& line : chunk->lines())
                    changes += line.isContextLine() ? "" : line.contentWithStatus() + ";";
            }
        }
        return changes;
    }

    std::string first_;
    std::string second_;
    RVOptions none_;
};

TEST_F(RVGitDiffTest, ComparesWhatItsNameSays) {
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
                  second_, {}, repository(), none_)),
              "-2;+TWO;");
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingRevisions({first_, second_}, {"f"},
                                                                repository(), none_)),
              "-2;+TWO;");
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsForRevisionRange(first_ + ".." + second_, {},
                                                            repository(), none_)),
              "-2;+TWO;");
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
                  {}, repository(), none_)),
              "-1;+ONE;");
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingWorkingTreeWithRevision(first_, {},
                                                                              repository(), none_)),
              "-1;-2;-3;+ONE;+TWO;+THREE;");
    EXPECT_EQ(
        changesOf(RVGitDiff::allDiffsByComparingIndexWithRevision(first_, {}, repository(), none_)),
        "-2;-3;+TWO;+THREE;");
    for (const auto& noRevision : {std::optional<std::string>(), std::optional<std::string>("")})
        EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingIndexWithRevision(
                      noRevision, {}, repository(), std::nullopt)),
                  "-3;+THREE;");
    EXPECT_EQ(
        changesOf(RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths({}, repository(), none_)),
        "-3;+THREE;");
    EXPECT_THAT(
        *RVGitDiff::allDiffsByComparingRevisions({first_, second_}, {"other"}, repository(), none_),
        IsEmpty());
}

TEST_F(RVGitDiffTest, GoesThroughGitLogOnlyWithOptions) {
    const RVRecordingGit recorder = useRecordingGit();
    (void)RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(second_, {}, repository(),
                                                                        none_);
    EXPECT_THAT(recorder.lastInvocation().arguments, IsSupersetOf({"log", "-1"}));
    (void)RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(second_, {}, repository(),
                                                                        std::nullopt);
    EXPECT_THAT(recorder.lastInvocation().arguments, IsSupersetOf({"diff", "-p"}));
    (void)RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths({"f"}, repository(), none_);
    EXPECT_THAT(recorder.lastInvocation().arguments, IsSupersetOf({"--staged", "--", "f"}));
}

TEST_F(RVGitDiffTest, PatchesAreGitsOwnBytes) {
    const auto patch =
        RVGitDiff::generatePatchByComparingRevision(first_, second_, {}, repository(), none_);
    ASSERT_TRUE(patch);
    EXPECT_THAT(*patch, HasSubstr("\n-2\n+TWO\n"));
    EXPECT_THAT(RVGitDiff::generatePatchByComparingRevisionWithAncestorForRevision(
                    second_, {}, repository(), none_)
                    .value(),
                HasSubstr("\n-2\n+TWO\n"));
}

TEST_F(RVGitDiffTest, FailureOfGitIsAFailure) {
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitDiff::allDiffsByComparingRevisions({"nowhere"}, {}, repository(), none_, &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitDiffTest, BlobsAreComparedByHash) {
    const auto hashOf = [&](const std::string& revision) {
        return gitInRepository({"rev-parse", revision + ":f"});
    };
    const auto diff =
        RVGitDiff::diffByComparingBlob(hashOf(first_), hashOf(second_), repository(), std::nullopt);
    ASSERT_TRUE(diff);
    EXPECT_EQ(diff->linesAdded(), 1u);
    EXPECT_EQ(diff->repository(), repository());
    // No git compares a blob with an absent one.
    std::optional<RVError> error;
    EXPECT_EQ(RVGitDiff::diffByComparingBlob(hashOf(first_), std::nullopt, repository(),
                                             std::nullopt, &error),
              nullptr);
    EXPECT_TRUE(error);
    EXPECT_EQ(RVGitDiff::diffByComparingBlob(hashOf(first_), hashOf(first_), repository(),
                                             std::nullopt, &error),
              nullptr);
    EXPECT_FALSE(error);
}

TEST_F(RVGitDiffTest, ABlobIsComparedWithDevNullAndWithoutTheOptions) {
    const std::string hash = gitInRepository({"rev-parse", first_ + ":f"});
    const RVRecordingGit recorder = useRecordingGit();
    for (const bool isLeft : {true, false}) {
        (void)RVGitDiff::diffByComparingBlob(isLeft ? std::optional(hash) : std::nullopt,
                                             isLeft ? std::nullopt : std::optional(hash),
                                             repository(),
                                             RVOptions{{RVGitDiffOptionBinary, true}});
        const auto arguments = lastArguments(recorder);
        ASSERT_GT(arguments.size(), 2u);
        const std::vector<std::string> sides(arguments.end() - 2, arguments.end());
        EXPECT_EQ(sides[isLeft ? 0 : 1], hash);
        EXPECT_EQ(sides[isLeft ? 1 : 0], "/dev/null");
        EXPECT_THAT(arguments, Not(testing::Contains("--binary")));
    }
}

TEST_F(RVGitDiffTest, ABlobIsComparedWithTheEmptyBlobOnEitherSide) {
    const std::string hash = gitInRepository({"rev-parse", first_ + ":f"});
    const auto added =
        RVGitDiff::diffByComparingBlobWithEmptyBlob(std::nullopt, hash, repository());
    ASSERT_TRUE(added);
    EXPECT_EQ(added->linesAdded(), 3u);
    EXPECT_EQ(added->linesDeleted(), 0u);
    const auto deleted =
        RVGitDiff::diffByComparingBlobWithEmptyBlob(hash, std::nullopt, repository());
    ASSERT_TRUE(deleted);
    EXPECT_EQ(deleted->linesAdded(), 0u);
    EXPECT_EQ(deleted->linesDeleted(), 3u);
    std::optional<RVError> error;
    EXPECT_EQ(
        RVGitDiff::diffByComparingBlobWithEmptyBlob("nothing", std::nullopt, repository(), &error),
        nullptr);
    EXPECT_TRUE(error);
    EXPECT_THROW(
        (void)RVGitDiff::diffByComparingBlobWithEmptyBlob(std::nullopt, std::nullopt, repository()),
        RVInvalidParameterException);
}

TEST_F(RVGitDiffTest, WithFilePathsItIsTheLastCommitThatTouchedOne) {
    const std::string third = commitFile(repositoryPath(), "other", "1\n", "Third");
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
                  third, {"f"}, repository(), none_)),
              "-3;+THREE;");
}

TEST_F(RVGitDiffTest, WithoutOptionsTheWorkingTreeIsCompared) {
    EXPECT_EQ(changesOf(RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
                  second_, {}, repository(), std::nullopt)),
              "-1;+ONE;-3;+THREE;");
}

// UTF-16 holds NUL bytes, which stand between the commits of a log.
TEST_F(RVGitDiffTest, UTF16AsTextIsReadByGitDiffAndNotByGitLog) {
    using namespace std::string_literals;
    const auto textInUTF16 = [](const std::string& ascii) {
        std::string text = "\xFF\xFE";
        for (const char character : ascii)
            text += {character, '\0'};
        return text;
    };
    gitInRepository({"checkout", "-q", "-f"});
    commitFile(repositoryPath(), ".gitattributes", "*.u16 diff\n", "Attributes");
    commitFile(repositoryPath(), "a.u16", textInUTF16("one\ntwo\n"), "Text");
    commitFile(repositoryPath(), "a.u16", textInUTF16("one\n2\n"), "Change");
    const auto diffs =
        RVGitDiff::allDiffsByComparingRevisions({"HEAD~", "HEAD"}, {}, repository(), none_);
    ASSERT_TRUE(diffs);
    ASSERT_EQ(diffs->size(), 1u);
    EXPECT_FALSE(diffs->front()->isBinary());
    EXPECT_EQ(diffs->front()->linesAdded(), 1u);
    EXPECT_EQ(diffs->front()->linesDeleted(), 1u);
    // The second byte of the last newline is a line without one.
    EXPECT_EQ(changesOf(diffs), "-\0t\0w\0o\0;+\0\x32\0;\\ No newline at end of file;"s);
    const auto diffsOfLog = RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
        "HEAD", {}, repository(), none_);
    ASSERT_TRUE(diffsOfLog);
    EXPECT_THAT(*diffsOfLog, IsEmpty());
}

TEST_F(RVGitDiffTest, UTF16IsBinaryUnlessAnAttributeSaysOtherwise) {
    using namespace std::string_literals;
    gitInRepository({"checkout", "-q", "-f"});
    commitFile(repositoryPath(), "a.u16",
               "\xFF\xFE"
               "a\0\n\0"s,
               "Text");
    const auto diffs = RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
        "HEAD", {"a.u16"}, repository(), none_);
    ASSERT_TRUE(diffs);
    ASSERT_EQ(diffs->size(), 1u);
    EXPECT_TRUE(diffs->front()->isBinary());
    EXPECT_THAT(diffs->front()->chunks(), IsEmpty());
}

// Where an empty line of context stands without its blank, it is passed over.
TEST_F(RVGitDiffTest, SuppressedBlanksOfContextLoseTheirLineInTextThatIsGiven) {
    const auto diff = RVGitDiff::diffFromRawDiff(
        "diff --git a/g b/g\n"
        "index 11d2a3a..5de8b1f 100644\n"
        "--- a/g\n"
        "+++ b/g\n"
        "@@ -1,4 +1,4 @@\n"
        " a\n"
        "\n"
        " b\n"
        "-c\n"
        "+C\n");
    ASSERT_TRUE(diff);
    EXPECT_EQ(diff->linesAdded(), 1u);
    EXPECT_EQ(diff->linesDeleted(), 1u);
    const auto& lines = diff->chunks()[0]->lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[1].content(), "b");
    EXPECT_THAT(lines[1].lineNumbers(), ElementsAre(2u, 2u));
}

TEST_F(RVGitDiffTest, TheConfigurationSuppressesNoBlanksOfContext) {
    gitInRepository({"checkout", "-q", "-f"});
    commitFile(repositoryPath(), "g", "a\n\nb\nc\n", "Blank");
    commitFile(repositoryPath(), "g", "a\n\nb\nC\n", "Change");
    gitInRepository({"config", "diff.suppressBlankEmpty", "true"});
    const auto byDiff =
        RVGitDiff::allDiffsByComparingRevisions({"HEAD~", "HEAD"}, {}, repository(), none_);
    const auto byLog = RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
        "HEAD", {}, repository(), RVOptions());
    for (const auto& diffs : {byDiff, byLog}) {
        const auto& lines = diffs.value().at(0)->chunks()[0]->lines();
        ASSERT_EQ(lines.size(), 5u);
        EXPECT_EQ(lines[1].contentWithStatus(), " ");
        EXPECT_THAT(lines[1].lineNumbers(), ElementsAre(2u, 2u));
        EXPECT_EQ(lines[2].content(), "b");
        EXPECT_THAT(lines[2].lineNumbers(), ElementsAre(3u, 3u));
    }
}

TEST_F(RVGitDiffTest, AMergeOfEightParentsIsACombinedDiff) {
    gitInRepository({"checkout", "-q", "-f"});
    std::vector<std::string> command = {"commit-tree", "-m", "Merge"};
    for (int parent = 0; parent < 8; ++parent) {
        writeFile(repositoryPath() + "/f", "parent " + std::to_string(parent) + "\n");
        gitInRepository({"add", "f"});
        command.insert(command.end(),
                       {"-p", gitInRepository({"commit-tree", "-m", "Parent", "-p", second_,
                                               gitInRepository({"write-tree"})})});
    }
    writeFile(repositoryPath() + "/f", "merged\n");
    gitInRepository({"add", "f"});
    command.push_back(gitInRepository({"write-tree"}));
    const std::string merge = gitInRepository(command);
    const auto diffs = RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
        merge, {}, repository(), RVOptions{{RVGitDiffOptionMergeCommitsMergedFilePaths, true}});
    ASSERT_TRUE(diffs);
    ASSERT_EQ(diffs->size(), 1u);
    const auto& diff = diffs->front();
    EXPECT_TRUE(diff->isCombinedDiff());
    EXPECT_EQ(diff->originalObjectHashes().size(), 8u);
    ASSERT_EQ(diff->totalChunks(), 1u);
    EXPECT_EQ(diff->chunks()[0]->fileRanges().size(), 9u);
    EXPECT_EQ(diff->linesAdded(), 1u);
    EXPECT_EQ(diff->linesDeleted(), 8u);
    const auto changeset = RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
        merge, {}, repository(), RVOptions{{RVGitDiffOptionMergeCommitsMergedFilePaths, true}});
    ASSERT_TRUE(changeset);
    ASSERT_EQ(changeset->totalFilesChanged(), 1u);
    const auto& entry = changeset->entries().front();
    EXPECT_TRUE(entry->isCombinedDiff());
    EXPECT_EQ(entry->originalObjectHashes().size(), 8u);
    EXPECT_EQ(entry->originalFileModes().size(), 8u);
    EXPECT_EQ(entry->objectHash(), diff->objectHash());
    EXPECT_EQ(entry->linesAdded(), 0u);
    EXPECT_EQ(entry->linesDeleted(), 0u);
}

TEST_F(RVGitDiffTest, NoBlobAtAllIsAFailedPrecondition) {
    try {
        (void)RVGitDiff::diffByComparingBlob(std::nullopt, std::nullopt, repository(), none_);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(),
                     "Invalid parameter not satisfying: leftObjectHash || rightObjectHash");
    }
}

TEST_F(RVGitDiffTest, EqualityIsThatOfTheRawText) {
    const auto map = RVGitDiffParser::diffFromGitDiffOutputData(rawDiff).value();
    const auto here = RVGitDiff::diffWithRepository(repository(), map);
    const auto nowhere = RVGitDiff::diffWithRepository(nullptr, map);
    EXPECT_EQ(here->repository(), repository());
    EXPECT_TRUE(here->isEqualToDiff(*nowhere));
    nowhere->setRawDiff("other");
    EXPECT_FALSE(here->isEqualToDiff(*nowhere));
}

TEST_F(RVGitDiffTest, ADiffThatNothingSharesMakesPatches) {
    const RVGitDiff diff = *RVGitDiff::diffFromRawDiff(rawDiff);
    EXPECT_EQ(diff.patchForChunkAtIndex(0), *diff.header() + diff.chunks()[0]->rawChunk());
    EXPECT_THAT(diff.indexPatchForChunkAtIndex(0, {2}), HasSubstr(" b\n+B\n"));
    EXPECT_THAT(diff.worktreePatchForChunkAtIndex(0, {2}), HasSubstr(" a\n+B\n"));
}

TEST_F(RVGitDiffTest, PatchesOfAChunkComeFromTheGenerator) {
    const auto diff = RVGitDiff::diffFromRawDiff(rawDiff);
    ASSERT_TRUE(diff);
    EXPECT_EQ(diff->patchForChunkAtIndex(1), *diff->header() + diff->chunks()[1]->rawChunk());
    EXPECT_EQ(diff->patchForChunkAtIndex(2), std::nullopt);
    EXPECT_THAT(diff->indexPatchForChunkAtIndex(0, {2}),
                HasSubstr("@@ -1,2 +1,3 @@\n a\n b\n+B\n"));
    EXPECT_THAT(diff->worktreePatchForChunkAtIndex(0, {2}), HasSubstr("@@ -1,1 +1,2 @@\n a\n+B\n"));
}

}  // namespace
