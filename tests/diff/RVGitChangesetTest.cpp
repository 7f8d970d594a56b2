#include "RVGit/diff/RVGitChangeset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVString.h"
#include "RVGit/diff/RVGitChangesetLoader.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffLoader.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using Arguments = std::vector<std::string>;

const RVOptions noOptions;

Arguments list(auto... words) {
    return {words...};
}

Arguments operator+(Arguments left, const Arguments& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

const Arguments logOptions = {"-c", "i18n.logOutputEncoding=UTF-8", "-c", "log.date=default",
                              "-c", "log.showSignature=false",      "log"};
const Arguments logTail = {"-z", "--no-color", "--use-mailmap", "--pretty=format:"};
const Arguments diffTail = {"--no-color", "--word-diff=none", "--no-ext-diff", "--full-index", "-C",
                            "-M"};
const Arguments statsOptions = {
    "-z", "--no-color", "--word-diff=none", "--no-ext-diff", "--full-index", "--no-abbrev", "-C",
    "-M", "--raw",      "--numstat"};
const Arguments patchOptions = {"-z", "-p", "--src-prefix=a/", "--dst-prefix=b/", "--full-index"};

class RVGitChangesetTest : public RVGitRepositoryTestCase {
protected:
    void commitAll() {
        git({"add", "-A"}, repositoryPath());
        git({"commit", "--quiet", "--allow-empty", "-m", "Message"}, repositoryPath());
    }
    void write(const std::string& path, const std::string& contents) {
        writeFile(repositoryPath() + "/" + path, contents);
    }
    /// "R file<old +1 -2" of each.
    static Arguments summary(const std::shared_ptr<RVGitChangeset>& changeset) {
        Arguments list;
        if (!changeset)
            return {"(failed)"};
        for (const auto& entry : changeset->entries())
            list.push_back(
                RVGitShortStringForFileStatus(entry->fileStatus()).value_or("-") + " " +
                entry->filePath().value_or("-") + "<" + entry->oldFilePath().value_or("-") + " +" +
                std::to_string(entry->linesAdded()) + " -" + std::to_string(entry->linesDeleted()));
        return list;
    }
    [[nodiscard]] std::shared_ptr<RVGitChangeset> changesetOfHead(
        const RVOptions& options = {}, const Arguments& filePaths = {}) const {
        return RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
            "HEAD", filePaths, repository(), options);
    }
};

TEST_F(RVGitChangesetTest, ArgumentsOfTheChangesetLoader) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const auto argumentsAfter = [&](auto fill) {
        const auto loader = RVGitChangesetLoader::loaderWithRepository(repository());
        fill(*loader);
        (void)loader->loadChangeset();
        return lastArguments(recorder);
    };
    const Arguments log = logOptions + list("-1", "--pretty=format:") + statsOptions;
    const Arguments diff = list("diff") + statsOptions;
    EXPECT_EQ(argumentsAfter([](auto&) {}), diff + diffTail);
    EXPECT_EQ(argumentsAfter([](auto& loader) { loader.setLogOptions(noOptions); }),
              log + logTail + list("--"));
    EXPECT_EQ(argumentsAfter([](auto& loader) {
                  loader.setRevisions({"HEAD"});
                  loader.setFilePaths({"a", "b"});
                  loader.setLogOptions(noOptions);
              }),
              log + logTail + list("HEAD", "--", "a", "b", "--"));
    EXPECT_EQ(argumentsAfter([](auto& loader) {
                  loader.setRevisions({"HEAD", "HEAD"});
                  loader.setFilePaths({"a"});
              }),
              diff + diffTail + list("HEAD", "HEAD", "--", "a"));
    const std::pair<const char*, Arguments> options[] = {
        {RVGitDiffOptionMergeCommitsFirstParent, {"-m", "--first-parent"}},
        {RVGitDiffOptionMergeCommitsMergedFilePaths, {"-c"}},
        {RVGitDiffOptionNoRenames, {"--no-renames"}},
        {RVGitDiffOptionContextLines, {}}};
    for (const auto& [option, flags] : options)
        EXPECT_EQ(argumentsAfter([&option = option](auto& loader) {
                      loader.setLogOptions(RVOptions{{option, true}});
                  }),
                  log + flags + logTail + list("--"));
    EXPECT_EQ(
        argumentsAfter([](auto& loader) {
            loader.setDiffOptions(RVOptions{{RVGitDiffOptionNoRenames, true},
                                            {RVGitDiffOptionStaged, true},
                                            {RVGitDiffOptionMergeCommitsFirstParent, true},
                                            {RVGitDiffOptionMergeCommitsMergedFilePaths, true}});
        }),
        diff + list("-m", "--first-parent", "-c", "--no-renames") + diffTail +
            list("--staged", "--no-renames"));
    EXPECT_EQ(argumentsAfter([](auto& loader) {
                  loader.setLogOptions(RVOptions{{RVGitDiffOptionNoRenames, true},
                                                 {RVGitLogOptionFirstParent, true}});
                  loader.setDiffOptions(RVOptions{{RVGitDiffOptionNoRenames, false}});
              }),
              log + logTail + list("--first-parent", "--"));
}

TEST_F(RVGitChangesetTest, ArgumentsOfTheDiffLoader) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const auto argumentsAfter = [&](const Arguments& filePaths, auto fill) {
        const auto loader = RVGitDiffLoader::loaderWithRepository(repository());
        fill(*loader);
        EXPECT_TRUE(loader->generatePatchForFilePaths(filePaths));
        const Arguments arguments = lastArguments(recorder);
        EXPECT_TRUE(loader->loadDiffsForFilePaths(filePaths));
        EXPECT_EQ(lastArguments(recorder), arguments);
        return arguments;
    };
    const Arguments log = logOptions + list("-1", "--pretty=format:") + patchOptions;
    const Arguments diff = list("diff") + patchOptions;
    EXPECT_EQ(argumentsAfter({}, [](auto&) {}), diff + diffTail);
    EXPECT_EQ(argumentsAfter({"a", "b"},
                             [](auto& loader) {
                                 loader.setLogOptions(noOptions);
                                 loader.setRevisions({"HEAD"});
                             }),
              log + logTail + list("HEAD", "--", "a", "b", "--"));
    EXPECT_EQ(argumentsAfter({},
                             [](auto& loader) {
                                 loader.setLogOptions(
                                     RVOptions{{RVGitDiffOptionContextLines, 0},
                                               {RVGitDiffOptionMergeCommitsFirstParent, true},
                                               {RVGitDiffOptionMergeCommitsMergedFilePaths, true}});
                             }),
              log + list("-m", "--first-parent", "-c", "-U0") + logTail + list("--"));
    EXPECT_EQ(argumentsAfter({"a"},
                             [](auto& loader) {
                                 loader.setDiffOptions(RVOptions{{RVGitDiffOptionContextLines, 12},
                                                                 {RVGitDiffOptionBinary, true}});
                             }),
              diff + list("-U12") + diffTail + list("--binary", "--", "a"));
}

TEST_F(RVGitChangesetTest, ArgumentsOfEachComparison) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const Arguments diff = list("diff") + statsOptions + diffTail;
    const auto last = [&](const std::shared_ptr<RVGitChangeset>& changeset) {
        EXPECT_NE(changeset, nullptr);
        return lastArguments(recorder);
    };
    using C = RVGitChangeset;
    const auto& r = repository();
    EXPECT_EQ(last(C::changesetByComparingRevisionWithAncestorForRevision("HEAD", {"a"}, r,
                                                                          std::nullopt)),
              diff + list("HEAD", "--", "a"));
    EXPECT_EQ(
        last(C::changesetByComparingRevisionWithAncestorForRevision("HEAD", {}, r, noOptions)),
        logOptions + list("-1", "--pretty=format:") + statsOptions + logTail + list("HEAD", "--"));
    EXPECT_EQ(last(C::changesetByComparingRevisions({"HEAD", "main"}, {"a"}, r, noOptions)),
              diff + list("HEAD", "main", "--", "a"));
    EXPECT_EQ(last(C::changesetForRevisionRange("HEAD..main", {}, r, noOptions)),
              diff + list("HEAD..main"));
    EXPECT_EQ(last(C::changesetByComparingWorkingTreeWithIndexWithForFilePaths({}, r, noOptions)),
              diff);
    EXPECT_EQ(last(C::changesetByComparingWorkingTreeWithRevision("HEAD", {}, r, noOptions)),
              diff + list("HEAD"));
    const Arguments staged = diff + list("--staged");
    EXPECT_EQ(last(C::changesetByComparingIndexWithRevision("HEAD", {}, r, std::nullopt)),
              staged + list("HEAD"));
    EXPECT_EQ(last(C::changesetByComparingIndexWithRevision("", {}, r, noOptions)), staged);
    EXPECT_EQ(last(C::changesetByComparingIndexWithBaseForFilePaths({"a"}, r, noOptions)),
              staged + list("--", "a"));
}

TEST_F(RVGitChangesetTest, ReadsWhatACommitChanged) {
    write("modified", "1\n2\n");
    write("deleted", "1\n");
    write("old", "some\nlines\nof\ntext\n");
    commitAll();
    write("modified", "1\n3\n4\n");
    write("new \t\"\\ é", "something else\n");
    git({"rm", "--quiet", "deleted"}, repositoryPath());
    git({"mv", "old", "renamed"}, repositoryPath());
    commitAll();
    const auto changeset = changesetOfHead();
    ASSERT_THAT(summary(changeset),
                ElementsAre("D deleted<deleted +0 -1", "M modified<modified +2 -1",
                            "A new \t\"\\ é<new \t\"\\ é +1 -0", "R renamed<old +0 -0"));
    EXPECT_EQ(changeset->totalFilesChanged(), 4u);
    EXPECT_EQ(changeset->totalLinesAdded(), 3u);
    EXPECT_EQ(changeset->totalLinesDeleted(), 2u);
    const auto& entries = changeset->entries();
    EXPECT_TRUE(entries[0]->isFileStatusDeleted());
    EXPECT_TRUE(entries[1]->isFileStatusModified());
    EXPECT_TRUE(entries[2]->isFileStatusAdded());
    EXPECT_TRUE(entries[3]->isFileStatusRenamed());
    EXPECT_FALSE(entries[3]->isFileStatusCopied());
    EXPECT_EQ(entries[3]->fileStatusSimilarityIndex(), 100u);
    EXPECT_EQ(entries[1]->objectHash(), gitInRepository({"rev-parse", "HEAD:modified"}));
    EXPECT_EQ(entries[1]->originalObjectHash(), gitInRepository({"rev-parse", "HEAD~:modified"}));
    EXPECT_EQ(entries[1]->originalFileMode(), RVGitFileModeRegular);
    EXPECT_FALSE(entries[1]->isCombinedDiff());
    EXPECT_EQ(entries[2]->originalObjectHash(), std::nullopt);
    EXPECT_THAT(entries[2]->originalFileModes(), ElementsAre("000000"));
    EXPECT_EQ(changeset->entryForFilePath("renamed"), entries[3]);
    EXPECT_EQ(changeset->entryForFilePath("old"), nullptr);
}

TEST_F(RVGitChangesetTest, AMergeComparedWithAllParentsIsCombinedAndHasNoCounts) {
    write("f", "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    commitAll();
    git({"checkout", "--quiet", "-b", "side"}, repositoryPath());
    write("f", "one\n2\n3\n4\n5\n6\n7\n8\n9\n");
    commitAll();
    git({"checkout", "--quiet", "main"}, repositoryPath());
    write("f", "1\n2\n3\n4\n5\n6\n7\n8\nnine\n");
    commitAll();
    git({"merge", "--quiet", "side", "-m", "Merge"}, repositoryPath());
    EXPECT_THAT(summary(changesetOfHead()), IsEmpty());
    EXPECT_THAT(summary(changesetOfHead({{RVGitDiffOptionMergeCommitsFirstParent, true}})),
                ElementsAre("M f<f +1 -1"));
    const auto changeset = changesetOfHead({{RVGitDiffOptionMergeCommitsMergedFilePaths, true}});
    ASSERT_THAT(summary(changeset), ElementsAre("M f<f +0 -0"));
    EXPECT_TRUE(changeset->entries()[0]->isCombinedDiff());
    EXPECT_THAT(changeset->entries()[0]->originalFileModes(), ElementsAre("100644", "100644"));
}

TEST_F(RVGitChangesetTest, ComparesWorkingTreeIndexAndRevisions) {
    write("a", "1\n");
    write("b", "1\n");
    commitAll();
    write("a", "2\n");
    git({"add", "a"}, repositoryPath());
    write("b", "2\n3\n");
    using C = RVGitChangeset;
    const auto& r = repository();
    EXPECT_THAT(
        summary(C::changesetByComparingWorkingTreeWithIndexWithForFilePaths({}, r, noOptions)),
        ElementsAre("M b<b +2 -1"));
    EXPECT_THAT(summary(C::changesetByComparingIndexWithBaseForFilePaths({}, r, noOptions)),
                ElementsAre("M a<a +1 -1"));
    EXPECT_THAT(summary(C::changesetByComparingWorkingTreeWithRevision("HEAD", {}, r, noOptions)),
                ElementsAre("M a<a +1 -1", "M b<b +2 -1"));
    EXPECT_THAT(
        summary(C::changesetByComparingWorkingTreeWithRevision("HEAD", {"b"}, r, noOptions)),
        ElementsAre("M b<b +2 -1"));
}

TEST_F(RVGitChangesetTest, LoadsTheDiffOfARenameThroughBothPaths) {
    write("old", "1\n2\n3\n4\n5\n");
    commitAll();
    git({"mv", "old", "new"}, repositoryPath());
    write("new", "1\n2\n3\n4\nfive\n");
    write("other", "1\n");
    commitAll();
    const auto changeset = changesetOfHead();
    ASSERT_TRUE(changeset);
    const auto recorder = useRecordingGit();
    const auto diff = changeset->diffForEntryWithFilePath("new");
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->filePath(), "new");
    EXPECT_EQ(diff->oldFilePath(), "old");
    EXPECT_TRUE(diff->isFileStatusRenamed());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAreArray(logOptions + list("-1", "--pretty=format:") + patchOptions +
                                 logTail + list("HEAD", "--", "new", "old", "--")));
    const auto other = changeset->diffForEntryWithFilePath("other");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->filePath(), "other");
    EXPECT_THAT(lastArguments(recorder),
                ElementsAreArray(logOptions + list("-1", "--pretty=format:") + patchOptions +
                                 logTail + list("HEAD", "--", "other", "--")));
}

TEST_F(RVGitChangesetTest, AnUnknownPathGivesNothingAndClearsThePlace) {
    makeCommit();
    std::optional<RVError> error = RVError("domain", 1);
    EXPECT_EQ(changesetOfHead()->diffForEntryWithFilePath("missing", &error), nullptr);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(changesetOfHead()->diffForEntryWithFilePath("missing"), nullptr);
}

TEST_F(RVGitChangesetTest, AllDiffsAreThoseOfAllFiles) {
    write("a", "1\n");
    write("b", "1\n");
    commitAll();
    const auto changeset = changesetOfHead({}, {"a"});
    ASSERT_TRUE(changeset);
    ASSERT_THAT(changeset->entries(), SizeIs(1));
    const auto diffs = changeset->allDiffs();
    ASSERT_TRUE(diffs);
    ASSERT_THAT(*diffs, SizeIs(2));
    EXPECT_EQ((*diffs)[1]->filePath(), "b");
    EXPECT_EQ((*diffs)[1]->linesAdded(), 1u);
}

TEST_F(RVGitChangesetTest, GeneratesThePatchThatGitPrints) {
    makeCommit();
    makeCommit();
    RVGitDiffLoader loader(repository());
    loader.setRevisions({"HEAD~", "HEAD"});
    EXPECT_EQ(loader.generatePatch(),
              git({"diff", "--full-index", "HEAD~", "HEAD"}, repositoryPath()));
    EXPECT_EQ(loader.generatePatchForFilePaths({"missing"}), "");
}

TEST_F(RVGitChangesetTest, TheDiffOfAnEntryIsThatOfItsFile) {
    for (const char* name : {"a!", "a?", "a[b]", "ab", "*", ":k"})
        write(name, "1\n");
    commitAll();
    for (const char* name : {"a!", "a?", "a[b]", "ab", "*", ":k"})
        write(name, std::string(name) + "\n");
    commitAll();
    const auto changeset = changesetOfHead();
    ASSERT_TRUE(changeset);
    for (const char* name : {"a!", "a?", "ab", "*"}) {
        const auto diff = changeset->diffForEntryWithFilePath(name);
        ASSERT_NE(diff, nullptr) << name;
        EXPECT_EQ(diff->filePath(), name);
    }
    // To git it is a pattern that does not match itself.
    std::optional<RVError> error = RVError("domain", 1);
    EXPECT_EQ(changeset->diffForEntryWithFilePath(":k", &error), nullptr);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitChangesetTest, TheDiffOfADeletedFileIsFoundByItsOldPath) {
    write("d!", "1\n");
    write("d?", "1\n");
    commitAll();
    git({"rm", "--quiet", "d!", "d?"}, repositoryPath());
    commitAll();
    const auto diff = changesetOfHead()->diffForEntryWithFilePath("d?");
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->oldFilePath(), "d?");
    EXPECT_EQ(diff->filePath(), std::nullopt);
}

TEST_F(RVGitChangesetTest, CopiesAreFoundOnlyWhereTheConfigurationSaysSo) {
    write("a", "1\n2\n3\n4\n5\n6\n");
    write("kept", "a\nb\nc\nd\ne\nf\n");
    commitAll();
    write("b", "1\n2\n3\n4\n5\n6\n");
    write("a", "1\n2\n3\n4\n5\nsix\n");
    write("copy of kept", "a\nb\nc\nd\ne\nf\n");
    commitAll();
    EXPECT_THAT(summary(changesetOfHead()),
                ElementsAre("M a<a +1 -1", "A b<b +6 -0", "A copy of kept<copy of kept +6 -0"));
    git({"config", "diff.renames", "copies"}, repositoryPath());
    const auto changeset = changesetOfHead();
    ASSERT_TRUE(changeset);
    EXPECT_THAT(summary(changeset),
                ElementsAre("M a<a +1 -1", "C b<a +0 -0", "C copy of kept<kept +0 -0"));
    EXPECT_TRUE(changeset->entries()[1]->isFileStatusCopied());
    // The source stands ahead of it.
    const auto diff = changeset->diffForEntryWithFilePath("b");
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->filePath(), "b");
    EXPECT_TRUE(diff->isFileStatusCopied());
}

TEST_F(RVGitChangesetTest, WithoutRenamesInTheConfigurationTheDiffIsThatOfADeletion) {
    write("b", "1\n2\n3\n4\n5\n6\n");
    commitAll();
    git({"mv", "b", "c"}, repositoryPath());
    commitAll();
    git({"config", "diff.renames", "false"}, repositoryPath());
    const auto changeset = changesetOfHead();
    ASSERT_TRUE(changeset);
    EXPECT_THAT(summary(changeset), ElementsAre("R c<b +0 -0"));
    EXPECT_EQ(changeset->allDiffs()->size(), 2u);
}

TEST_F(RVGitChangesetTest, DiffsOfAnIndexChangesetAreThoseOfTheIndex) {
    write("f", "1\n");
    commitAll();
    write("f", "2\n");
    git({"add", "f"}, repositoryPath());
    write("f", "3\n");
    const auto changeset =
        RVGitChangeset::changesetByComparingIndexWithBaseForFilePaths({}, repository(), noOptions);
    ASSERT_NE(changeset, nullptr);
    const auto recorder = useRecordingGit();
    const auto diff = changeset->diffForEntryWithFilePath("f");
    ASSERT_NE(diff, nullptr);
    EXPECT_THAT(lastArguments(recorder), testing::Contains("--staged"));
    EXPECT_EQ(diff->chunks().at(0)->content(), "1\n2\n");
    ASSERT_TRUE(changeset->allDiffs());
    EXPECT_THAT(lastArguments(recorder), testing::Contains("--staged"));
}

TEST_F(RVGitChangesetTest, WithFilePathsItIsTheLastCommitThatTouchedOne) {
    write("a", "1\n");
    commitAll();
    write("b", "1\n");
    commitAll();
    EXPECT_THAT(summary(changesetOfHead({}, {"a"})), ElementsAre("A a<a +1 -0"));
}

TEST_F(RVGitChangesetTest, AnUnknownRevisionFails) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_EQ(RVGitChangeset::changesetByComparingRevisions({"missing"}, {}, repository(),
                                                            noOptions, &error),
              nullptr);
    EXPECT_NE(error, std::nullopt);
    error.reset();
    EXPECT_EQ(RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
                  "missing", {}, repository(), noOptions, &error),
              nullptr);
    EXPECT_NE(error, std::nullopt);
    RVGitDiffLoader loader(repository());
    loader.setRevisions({"missing"});
    error.reset();
    EXPECT_EQ(loader.loadDiffs(&error), std::nullopt);
    EXPECT_NE(error, std::nullopt);
    EXPECT_EQ(loader.generatePatch(), std::nullopt);
}

TEST_F(RVGitChangesetTest, HoldsTenThousandFiles) {
    constexpr std::size_t count = 10000;
    std::string index;
    for (std::size_t number = 0; number < count; ++number)
        index += "100644 blob " + std::string("e69de29bb2d1d6434b8b29ae775ad8c2e48c5391") +
                 "\tdir " + std::to_string(number % 100) + "/" + std::to_string(number) + "\n";
    commitAll();
    git({"hash-object", "-w", "--stdin"}, repositoryPath(), "");
    git({"update-index", "--index-info"}, repositoryPath(), index);
    const auto changeset =
        RVGitChangeset::changesetByComparingIndexWithBaseForFilePaths({}, repository(), noOptions);
    ASSERT_NE(changeset, nullptr);
    EXPECT_EQ(changeset->totalFilesChanged(), count);
    EXPECT_TRUE(changeset->entries().back()->isFileStatusAdded());
}

TEST_F(RVGitChangesetTest, PathsAreComparedInComposedForm) {
    RVGitDiffStatsOutputParserResultItem item;
    item.filePath = item.originalFilePath = "caf\u00e9";
    const auto entry = std::make_shared<RVGitChangesetEntry>(item);
    const auto changeset =
        RVGitChangeset::changesetWithRepository(repository(), RVGitDiffSettings(), {entry});
    EXPECT_EQ(changeset->entryForFilePath("cafe\u0301"), entry);
    EXPECT_EQ(changeset->repository(), repository());
}

TEST_F(RVGitChangesetTest, AFileIsFoundBesideItsTwinInAnotherForm) {
    const std::string composed = "ni\u00f1o";
    const std::string decomposed = "nin\u0303o";
    write(composed, "composed\n");
    write(decomposed, "decomposed\n");
    commitAll();
    write(composed, "composed 2\n");
    write(decomposed, "decomposed 2\n");
    const auto changeset = RVGitChangeset::changesetByComparingWorkingTreeWithIndexWithForFilePaths(
        {}, repository(), noOptions);
    ASSERT_NE(changeset, nullptr);
    for (const std::string& path : {composed, decomposed}) {
        const auto entry = changeset->entryForFilePath(path);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->filePath(), path);
        const auto diff = changeset->diffForEntryWithFilePath(path);
        ASSERT_NE(diff, nullptr);
        EXPECT_EQ(diff->filePath(), path);
    }
    const auto diffs = changeset->allDiffs();
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, composed)->filePath(), composed);
    EXPECT_EQ(RVGitDiff::diffOfFile(diffs, decomposed)->filePath(), decomposed);
}

TEST_F(RVGitChangesetTest, OfEntriesTheFirstIsFoundByAnyForm) {
    RVGitChangeset::Entries entries;
    for (const char* path :
         {"K", "n\u0303", "\u00f1", "\u00f1", "\u212A", "a\u0323\u0308", "\xFF", "plain"}) {
        RVGitDiffStatsOutputParserResultItem item;
        item.filePath = path;
        entries.push_back(std::make_shared<RVGitChangesetEntry>(item));
    }
    entries.push_back(
        std::make_shared<RVGitChangesetEntry>(RVGitDiffStatsOutputParserResultItem()));
    const auto changeset =
        RVGitChangeset::changesetWithRepository(repository(), RVGitDiffSettings(), entries);
    // A slow twin.
    for (const std::string path :
         {"K", "\u212A", "n\u0303", "\u00f1", "a\u0323\u0308", "a\u0308\u0323", "\u1EA1\u0308",
          "\xFF", "\u00ff", "plain", "n"}) {
        std::shared_ptr<RVGitChangesetEntry> expected;
        for (const bool isExact : {true, false})
            for (const auto& entry : entries)
                if (!expected && entry->filePath() &&
                    (isExact ? *entry->filePath() == path
                             : isEqualToUnicodeString(*entry->filePath(), path)))
                    expected = entry;
        EXPECT_EQ(changeset->entryForFilePath(path), expected) << path;
    }
}

TEST_F(RVGitChangesetTest, AnEntryWithoutParentsHasNoOriginal) {
    const RVGitChangesetEntry entry({});
    EXPECT_EQ(entry.originalObjectHash(), std::nullopt);
    EXPECT_EQ(entry.originalFileMode(), RVGitFileModeNone);
    EXPECT_FALSE(entry.isCombinedDiff());
}

TEST_F(RVGitChangesetTest, NeedsARepository) {
    EXPECT_THROW(RVGitChangeset(nullptr, {}, {}), RVInvalidParameterException);
    EXPECT_THROW(RVGitChangesetLoader{nullptr}, RVInvalidParameterException);
    EXPECT_THROW(RVGitDiffLoader{nullptr}, RVInvalidParameterException);
}

}  // namespace
