#include "RVGit/diff/RVGitDiffPatchGenerator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestLines.h"

namespace {

using Selection = std::set<std::size_t>;
using testing::HasSubstr;

constexpr int indexMode = RVGitDiffPatchGenerator::IndexMode;
constexpr int worktreeMode = RVGitDiffPatchGenerator::WorktreeMode;

const std::string fileHeader =
    "diff --git a/f b/f\nindex 1111111..2222222 100644\n--- a/f\n+++ b/f\n";
const std::string nullHash(40, '0');

std::shared_ptr<RVGitDiff> diffFrom(const std::string& rawDiff) {
    auto diff = RVGitDiff::diffFromRawDiff(rawDiff);
    EXPECT_NE(diff, nullptr);
    return diff;
}

std::string patchOf(const std::string& rawDiff, const Selection& selection, int mode) {
    return RVGitDiffPatchGenerator(diffFrom(rawDiff)).patchForChunkAtIndex(0, selection, mode);
}

TEST(RVGitDiffPatchGeneratorTest, TakesOneOfSeveralChangedLines) {
    const std::string diff = fileHeader + "@@ -10,3 +10,4 @@ function\n a\n-b\n+c\n+d\n e\n";
    EXPECT_EQ(patchOf(diff, {2}, indexMode), fileHeader + "@@ -10,3 +10,4 @@\n a\n b\n+c\n e\n");
    EXPECT_EQ(patchOf(diff, {2}, worktreeMode), fileHeader + "@@ -10,3 +10,4 @@\n a\n+c\n d\n e\n");
}

TEST(RVGitDiffPatchGeneratorTest, TheTwoModesHaveNames) {
    const auto diff = diffFrom(fileHeader + "@@ -10,3 +10,4 @@\n a\n-b\n+c\n+d\n e\n");
    const RVGitDiffPatchGenerator generator(diff);
    EXPECT_EQ(generator.diff(), diff);
    EXPECT_EQ(generator.indexPatchForChunkAtIndex(0, {1}),
              generator.patchForChunkAtIndex(0, {1}, indexMode));
    EXPECT_EQ(generator.worktreePatchForChunkAtIndex(0, {1}),
              generator.patchForChunkAtIndex(0, {1}, worktreeMode));
    EXPECT_NE(generator.indexPatchForChunkAtIndex(0, {1}),
              generator.worktreePatchForChunkAtIndex(0, {1}));
}

TEST(RVGitDiffPatchGeneratorTest, AWholeChunkKeepsItsTextAndHeader) {
    const std::string first = "@@ -1 +1 @@ f\n-a\n+b\n";
    const std::string second = "@@ -9,2 +9,2 @@\n a\n-b\n\\ No newline at end of file\n+c\n";
    const RVGitDiffPatchGenerator generator(diffFrom(fileHeader + first + second));
    EXPECT_EQ(generator.patchForChunkAtIndex(0), fileHeader + first);
    EXPECT_EQ(generator.patchForChunkAtIndex(1), fileHeader + second);
}

TEST(RVGitDiffPatchGeneratorTest, AnIndexPastTheEndGivesNothing) {
    const RVGitDiffPatchGenerator generator(diffFrom(fileHeader + "@@ -1 +1 @@\n-a\n+b\n"));
    EXPECT_EQ(generator.patchForChunkAtIndex(1), std::nullopt);
    EXPECT_EQ(generator.patchForChunkAtIndex(std::size_t(-1)), std::nullopt);
}

TEST(RVGitDiffPatchGeneratorTest, AnEmptySelectionChangesNothing) {
    EXPECT_EQ(patchOf(fileHeader + "@@ -1,2 +1,2 @@\n-a\n+b\n c\n", {}, indexMode),
              fileHeader + "@@ -1,2 +1,2 @@\n a\n c\n");
    EXPECT_EQ(patchOf(fileHeader + "@@ -1,2 +1,2 @@\n-a\n+b\n c\n", {}, worktreeMode),
              fileHeader + "@@ -1,2 +1,2 @@\n b\n c\n");
}

TEST(RVGitDiffPatchGeneratorTest, ANewFileKeepsItsHeaderWhenLinesAreStaged) {
    const std::string header =
        "diff --git a/n b/n\nnew file mode 100644\nindex 0000000..2222222\n--- /dev/null\n"
        "+++ b/n\n";
    EXPECT_EQ(patchOf(header + "@@ -0,0 +1,3 @@\n+a\n+b\n+c\n", {0, 2}, indexMode),
              header + "@@ -0,0 +1,2 @@\n+a\n+c\n");
}

TEST(RVGitDiffPatchGeneratorTest, ANewFileGetsAnOldSideWhenLinesAreTakenBack) {
    const std::string diff =
        "diff --git a/n b/n\nnew file mode 100644\nindex 0000000..2222222\n--- /dev/null\n"
        "+++ b/n\n@@ -0,0 +1,3 @@\n+a\n+b\n+c\n";
    const std::string header =
        "diff --git a/n b/n\nindex " + nullHash + "..2222222\n--- a/n\n+++ b/n\n";
    EXPECT_EQ(patchOf(diff, {1}, worktreeMode), header + "@@ -1,2 +1,3 @@\n a\n+b\n c\n");
    EXPECT_EQ(patchOf(diff, {0, 1, 2}, worktreeMode), header + "@@ -0,0 +1,3 @@\n+a\n+b\n+c\n");
}

TEST(RVGitDiffPatchGeneratorTest, ADeletedFileKeepsItsHeader) {
    const std::string header =
        "diff --git a/d b/d\ndeleted file mode 100644\nindex 1111111..0000000\n--- a/d\n"
        "+++ /dev/null\n";
    const std::string chunk = "@@ -1,2 +0,0 @@\n-a\n-b\n";
    EXPECT_EQ(patchOf(header + chunk, {0}, indexMode), header + "@@ -1,2 +0,1 @@\n-a\n b\n");
    EXPECT_EQ(patchOf(header + chunk, {0}, worktreeMode), header + "@@ -1,1 +0,0 @@\n-a\n");
}

TEST(RVGitDiffPatchGeneratorTest, AMarkerOfAMissingNewlineIsCopiedOnlyIfSelected) {
    const std::string marker = "\\ No newline at end of file\n";
    const std::string diff = fileHeader + "@@ -1 +1 @@\n-a\n" + marker + "+b\n" + marker;
    EXPECT_EQ(patchOf(diff, {0, 1, 2, 3}, indexMode),
              fileHeader + "@@ -1,1 +1,1 @@\n-a\n" + marker + "+b\n" + marker);
    EXPECT_EQ(patchOf(diff, {0, 2}, indexMode), fileHeader + "@@ -1,1 +1,1 @@\n-a\n+b\n");
    EXPECT_EQ(patchOf(diff, {1}, indexMode), fileHeader + "@@ -1,1 +1,1 @@\n a\n" + marker);
    EXPECT_EQ(patchOf(diff, {3}, worktreeMode), fileHeader + "@@ -1,1 +1,1 @@\n b\n" + marker);
}

TEST(RVGitDiffPatchGeneratorTest, OfACombinedDiffTheFirstTwoRangesCount) {
    const std::string chunk = "@@@ -1,2 -3,2 +5,3 @@@\n  a\n- b\n +c\n";
    const std::string diff = "diff --cc f\nindex 1111111,2222222..3333333\n--- a/f\n+++ b/f\n";
    EXPECT_EQ(RVGitDiffPatchGenerator(diffFrom(diff + chunk)).patchForChunkAtIndex(0), chunk);
    EXPECT_EQ(patchOf(diff + chunk, {2}, indexMode), "@@ -1,2 +3,3 @@\n  a\n b\n +c\n");
}

TEST(RVGitDiffPatchGeneratorTest, ALengthMayFallBelowZero) {
    EXPECT_EQ(patchOf(fileHeader + "@@ -1,0 +1,0 @@\n-a\n-b\n", {}, worktreeMode),
              fileHeader + "@@ -1,-2 +1,0 @@\n");
    EXPECT_EQ(patchOf(fileHeader + "@@ -1,0 +1,0 @@\n+a\n", {}, indexMode),
              fileHeader + "@@ -1,0 +1,-1 @@\n");
}

TEST(RVGitDiffPatchGeneratorTest, AnyOtherModeIsTakenForTheSecond) {
    const std::string diff = fileHeader + "@@ -10,3 +10,4 @@\n a\n-b\n+c\n+d\n e\n";
    for (const int mode : {2, -1})
        EXPECT_EQ(patchOf(diff, {2}, mode), patchOf(diff, {2}, worktreeMode));
}

TEST(RVGitDiffPatchGeneratorTest, NeedsADiff) {
    EXPECT_THROW(RVGitDiffPatchGenerator(nullptr), RVInvalidParameterException);
}

TEST(RVGitDiffPatchGeneratorTest, LinesNeedAChunkWithTwoRanges) {
    const std::string text = fileHeader + "@@ -1 +1 @@\n-a\n+b\n";
    EXPECT_THROW((void)RVGitDiffPatchGenerator(diffFrom(text)).patchForChunkAtIndex(1, {}, 0),
                 RVInvalidParameterException);
    const auto diff = diffFrom(text);
    diff->setChunks({RVGitDiffChunk::diffChunkWithRawChunk("@@ -1 @@\n", {{1, 1}}, {})});
    EXPECT_THROW((void)RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(0, {}, 0),
                 RVInvalidParameterException);
}

// Against git.

class RVGitDiffPatchApplicationTest : public RVGitRepositoryTestCase {
protected:
    using Files = std::map<std::string, std::string>;

    /// A tree of these files.
    std::string makeTree(const Files& files) {
        const std::string directory = makeDirectory("tree" + std::to_string(++numberOfTrees_));
        for (const auto& [path, contents] : files)
            writeFile(directory + "/" + path, contents);
        readTree("4b825dc642cb6eb9a060e54bf8d69288fbee4904");
        git({"--git-dir=" + repositoryPath() + "/.git", "--work-tree=" + directory, "add", "-A",
             "."},
            directory);
        return gitInRepository({"write-tree"});
    }
    void readTree(const std::string& tree) {
        if (numberOfTrees_ == 1)
            git({"hash-object", "-w", "-t", "tree", "--stdin"}, repositoryPath(), "");
        git({"read-tree", tree}, repositoryPath());
    }
    [[nodiscard]] std::vector<std::shared_ptr<RVGitDiff>> diffsBetween(const std::string& oldTree,
                                                                       const std::string& newTree,
                                                                       int contextLines = 3) const {
        const auto diffs = RVGitDiff::allDiffsByComparingRevisions(
            {oldTree, newTree}, {}, repository(),
            RVOptions{{RVGitDiffOptionContextLines, contextLines}});
        EXPECT_TRUE(diffs);
        return *diffs;
    }
    /// Whether the patch passes git's check in its mode, and then applies.
    bool applies(const std::string& patch, int mode) const {
        for (const bool checks : {true, false}) {
            const auto command = RVGitApplyCommand::gitApplyCommandWithRepository(
                repository(), RVData(patch),
                RVOptions{{RVGitApplyOptionCached, true},
                          {RVGitApplyOptionReverse, mode == worktreeMode}});
            command->setChecksApplicability(checks);
            if (!command->run())
                return false;
        }
        return true;
    }
    /// What the index holds of these files; absent where it has none.
    std::map<std::string, std::optional<std::string>> indexedFiles(
        const std::vector<std::string>& paths) const {
        std::string names;
        for (const std::string& path : paths)
            names += ":" + path + "\n";
        const std::string output = git({"cat-file", "--batch"}, repositoryPath(), names);
        std::map<std::string, std::optional<std::string>> files;
        std::size_t position = 0;
        for (const std::string& path : paths) {
            const std::size_t end = output.find('\n', position);
            const std::string line = output.substr(position, end - position);
            position = end + 1;
            if (line.ends_with(" missing")) {
                files[path] = std::nullopt;
                continue;
            }
            const std::size_t size = std::stoul(line.substr(line.rfind(' ')));
            files[path] = output.substr(position, size);
            position += size + 1;
        }
        return files;
    }
    /// One file, before and after, with the patch of a selection of its first chunk.
    bool applies(const std::optional<std::string>& before, const std::optional<std::string>& after,
                 const Selection& selection, int mode) {
        const std::string oldTree = makeTree(before ? Files{{"f", *before}} : Files{});
        const std::string newTree = makeTree(after ? Files{{"f", *after}} : Files{});
        readTree(mode == indexMode ? oldTree : newTree);
        const auto diff = diffsBetween(oldTree, newTree).at(0);
        return applies(RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(0, selection, mode),
                       mode);
    }

private:
    int numberOfTrees_ = 0;
};

TEST_F(RVGitDiffPatchApplicationTest, GitRefusesAPatchOfAnEmptySelection) {
    EXPECT_FALSE(applies("a\nb\n", "a\nc\n", {}, indexMode));
    EXPECT_FALSE(applies("a\nb\n", "a\nc\n", {}, worktreeMode));
    EXPECT_FALSE(applies(std::nullopt, "a\nb\n", {}, indexMode));
    EXPECT_FALSE(applies(std::nullopt, "a\nb\n", {}, worktreeMode));
}

TEST_F(RVGitDiffPatchApplicationTest, GitRefusesToDeleteAPartOfADeletedFile) {
    EXPECT_FALSE(applies("a\nb\n", std::nullopt, {0}, indexMode));
    EXPECT_TRUE(applies("a\nb\n", std::nullopt, {0, 1}, indexMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], std::nullopt);
}

TEST_F(RVGitDiffPatchApplicationTest, APartOfADeletedFileCanBeRestored) {
    EXPECT_TRUE(applies("a\nb\n", std::nullopt, {1}, worktreeMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "b\n");
}

TEST_F(RVGitDiffPatchApplicationTest, APartOfANewFileCanBeTakenBack) {
    EXPECT_TRUE(applies(std::nullopt, "a\nb\nc\n", {1}, worktreeMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "a\nc\n");
}

TEST_F(RVGitDiffPatchApplicationTest, GitRefusesAChangedLineWithoutItsNoNewlineMarker) {
    // The lines: -b, marker, +c, marker.
    EXPECT_FALSE(applies("b", "c", {0, 2, 3}, indexMode));
    EXPECT_TRUE(applies("b", "c", {0, 1, 2, 3}, indexMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "c");
    EXPECT_FALSE(applies("b", "c", {0, 1, 2}, worktreeMode));
    EXPECT_TRUE(applies("b", "c", {0, 1, 2, 3}, worktreeMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "b");
}

TEST_F(RVGitDiffPatchApplicationTest, GitRefusesContextWithoutItsNoNewlineMarker) {
    // The lines: -a, +b, context, marker.
    EXPECT_FALSE(applies("a\nz", "b\nz", {0, 1}, indexMode));
    EXPECT_TRUE(applies("a\nz", "b\nz", {0, 1, 3}, indexMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "b\nz");
}

TEST_F(RVGitDiffPatchApplicationTest, ANewLastLineWithoutItsMarkerGetsANewline) {
    EXPECT_TRUE(applies("a\n", "a\nb", {1}, indexMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "a\nb\n");
}

TEST_F(RVGitDiffPatchApplicationTest, ANewFileTakenBackWhollyStaysEmpty) {
    EXPECT_TRUE(applies(std::nullopt, "a\nb\n", {0, 1}, worktreeMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "");
}

TEST_F(RVGitDiffPatchApplicationTest, AmongEqualLinesALaterChunkMayGoToAnotherPlace) {
    std::string equalLines;
    for (int line = 0; line < 40; ++line)
        equalLines += "same\n";
    const std::string start = "1\n2\n3\n4\n5\n6\n7\n8\n";
    const std::string half = equalLines.substr(equalLines.size() / 2);
    const std::string oldTree = makeTree({{"f", start + equalLines}});
    const std::string newTree = makeTree({{"f", "a\nb\nc\n" + start + half + "new\n" + half}});
    const auto diff = diffsBetween(oldTree, newTree).at(0);
    ASSERT_EQ(diff->chunks().size(), 2);
    // The new location counts the three lines of the first chunk, and that is where git looks
    // first.
    readTree(oldTree);
    EXPECT_TRUE(applies(*RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(1), indexMode));
    const std::string moved = "same\nsame\nsame\n";
    EXPECT_EQ(indexedFiles({"f"})["f"], start + half + moved + "new\n" + half.substr(moved.size()));
    // With the first chunk ahead of it, it goes to its place.
    readTree(oldTree);
    EXPECT_TRUE(applies(*RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(0), indexMode));
    EXPECT_TRUE(applies(*RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(1), indexMode));
    EXPECT_EQ(indexedFiles({"f"})["f"], "a\nb\nc\n" + start + half + "new\n" + half);
}

// Random selections.

using Lines = std::vector<std::string>;

/// A file before and after. Most lines are the only ones of their kind, as otherwise no patch
/// would say for sure where it belongs.
struct Versions {
    std::string before;
    std::string after;
};

Versions randomVersions(std::mt19937& random, int number) {
    const auto oneIn = [&](unsigned count) { return random() % count == 0; };
    const std::string lineEnd = oneIn(4) ? "\r\n" : "\n";
    const std::string name = std::to_string(number);
    const auto newLine = [&](const char* kind, unsigned index) {
        return (oneIn(12) ? "}" : kind + name + " " + std::to_string(index)) + lineEnd;
    };
    Lines before;
    Lines after;
    const unsigned rareness = oneIn(2) ? 3 : 12;
    const unsigned count = static_cast<unsigned>(random() % 40);
    for (unsigned index = 0; index < count; ++index) {
        while (oneIn(rareness))
            after.push_back(newLine("added ", static_cast<unsigned>(random())));
        before.push_back(newLine("line ", index));
        if (!oneIn(rareness))
            after.push_back(before.back());
    }
    if (oneIn(3))
        after.push_back(newLine("last ", 0));
    const auto text = [&](const Lines& lines) {
        std::string joinedLines = joined(lines);
        if (oneIn(4) && joinedLines.size() > lineEnd.size())
            joinedLines.resize(joinedLines.size() - lineEnd.size());
        return joinedLines;
    };
    std::string oldText = text(before);
    return {std::move(oldText), text(after)};
}

/// A selection of changed lines that leaves no line behind an unterminated one.
Selection randomSelection(std::mt19937& random, const RVGitDiffChunk& chunk, bool selectsAll) {
    const auto lines = chunk.lines();
    Selection selection;
    for (std::size_t index = 0; index < lines.size(); ++index)
        if ((lines[index].isAddedLine() || lines[index].isDeletedLine()) &&
            (selectsAll || random() % 2 == 0))
            selection.insert(index);
    // Whatever comes behind the unterminated last line of the old side needs it gone.
    for (std::size_t index = 1; index < lines.size(); ++index)
        if (lines[index].isNoNewlineAtEndOfFileLine() && lines[index - 1].isDeletedLine() &&
            selection.upper_bound(index) != selection.end())
            selection.insert(index - 1);
    return selection;
}

Selection complement(const RVGitDiffChunk& chunk, const Selection& selection) {
    Selection others;
    const auto lines = chunk.lines();
    for (std::size_t index = 0; index < lines.size(); ++index)
        if ((lines[index].isAddedLine() || lines[index].isDeletedLine()) &&
            !selection.contains(index))
            others.insert(index);
    return others;
}

/// With the markers of all lines that the patch will hold.
Selection withMarkers(const RVGitDiffChunk& chunk, Selection selection, int mode) {
    const auto lines = chunk.lines();
    for (std::size_t index = 1; index < lines.size(); ++index) {
        const bool staysAsContext =
            lines[index - 1].isContextLine() ||
            (mode == indexMode ? lines[index - 1].isDeletedLine() : lines[index - 1].isAddedLine());
        if (lines[index].isNoNewlineAtEndOfFileLine() &&
            (staysAsContext || selection.contains(index - 1)))
            selection.insert(index);
    }
    return selection;
}

/// The file that the selection means, the plain way: the base, in which the selected lines of the
/// chunk are changed.
std::string fileMeantBy(const Versions& versions, const RVGitDiffChunk& chunk,
                        const Selection& selection, int mode) {
    const Lines before = linesOf(versions.before);
    const Lines after = linesOf(versions.after);
    const auto start = [&](std::size_t side) {
        const RVGitDiffRange& range = chunk.fileRanges()[side];
        return static_cast<std::size_t>(range.length == 0 ? range.location : range.location - 1);
    };
    std::size_t oldIndex = start(0);
    std::size_t newIndex = start(1);
    const bool isIndexMode = mode == indexMode;
    const Lines& base = isIndexMode ? before : after;
    Lines result(base.begin(), base.begin() + std::ptrdiff_t(isIndexMode ? oldIndex : newIndex));
    std::size_t index = 0;
    for (const RVGitDiffChunkLine& line : chunk.lines()) {
        const bool isSelected = selection.contains(index++);
        if (line.isContextLine()) {
            result.push_back(before.at(oldIndex++));
            ++newIndex;
        } else if (line.isDeletedLine()) {
            const std::string& text = before.at(oldIndex++);
            if (isSelected != isIndexMode)
                result.push_back(text);
        } else if (line.isAddedLine()) {
            const std::string& text = after.at(newIndex++);
            if (isSelected == isIndexMode)
                result.push_back(text);
        }
    }
    result.insert(result.end(), base.begin() + std::ptrdiff_t(isIndexMode ? oldIndex : newIndex),
                  base.end());
    return joined(result);
}

/// RVGIT_TEST_PATCHES sets another number.
int numberOfRandomPatches() {
    const char* number = std::getenv("RVGIT_TEST_PATCHES");
    return number ? std::atoi(number) : 10000;
}

TEST_F(RVGitDiffPatchApplicationTest, RandomSelectionsGiveTheFilesThatTheyMean) {
    constexpr int filesAtOnce = 200;
    std::mt19937 random(1);
    int numberOfPatches = 0;
    std::map<RVGitFileStatus, int> numberOfStatus;
    for (int round = 0; numberOfPatches < numberOfRandomPatches(); ++round) {
        Files oldFiles;
        Files newFiles;
        for (int file = 0; file < filesAtOnce; ++file) {
            const std::string path = "dir " + std::to_string(file % 7) + "/" + std::to_string(file);
            const Versions versions = randomVersions(random, round * filesAtOnce + file);
            const auto kind = random() % 8;
            if (kind != 0)
                oldFiles[path] = versions.before;
            if (kind != 1)
                newFiles[kind == 2 ? path + " renamed" : path] = versions.after;
        }
        const std::string oldTree = makeTree(oldFiles);
        const std::string newTree = makeTree(newFiles);
        const auto diffs = diffsBetween(oldTree, newTree, static_cast<int>(1 + random() % 4));

        // All patches of a mode are applied at once, each to a file of its own.
        std::string patches[2];
        std::map<std::string, std::string> meant[2];
        // What each mode leaves undone of some files, as a patch in the other mode.
        std::string complements[2];
        std::vector<std::string> completedPaths;
        for (const auto& diff : diffs) {
            if (diff->chunks().empty())
                continue;
            const auto chunkIndex = random() % diff->chunks().size();
            const RVGitDiffChunk& chunk = *diff->chunks()[chunkIndex];
            const Versions versions = {diff->oldFilePath() ? oldFiles.at(*diff->oldFilePath()) : "",
                                       diff->filePath() ? newFiles.at(*diff->filePath()) : ""};
            // Only a whole file can be deleted.
            const Selection staged = randomSelection(random, chunk, diff->isFileStatusDeleted());
            const Selection takenBack = complement(chunk, staged);
            const RVGitDiffPatchGenerator generator(diff);
            const auto add = [&](const Selection& selection, int mode, const std::string& path) {
                if (selection.empty())
                    return;
                patches[mode] += generator.patchForChunkAtIndex(
                    chunkIndex, withMarkers(chunk, selection, mode), mode);
                meant[mode][path] = fileMeantBy(versions, chunk, selection, mode);
                ++numberOfPatches;
                ++numberOfStatus[diff->fileStatus()];
            };
            add(staged, indexMode, diff->filePath().value_or(diff->oldFilePath().value_or("")));
            add(takenBack, worktreeMode,
                diff->oldFilePath().value_or(diff->filePath().value_or("")));
            if (diff->isFileStatusDeleted())
                add(randomSelection(random, chunk, false), worktreeMode, *diff->oldFilePath());
            // What is not taken back is what is staged.
            if (diff->chunks().size() == 1) {
                if (!staged.empty() && !takenBack.empty() && !diff->isFileStatusRenamed()) {
                    complements[indexMode] += generator.patchForChunkAtIndex(
                        chunkIndex, withMarkers(chunk, takenBack, worktreeMode), worktreeMode);
                    complements[worktreeMode] += generator.patchForChunkAtIndex(
                        chunkIndex, withMarkers(chunk, staged, indexMode), indexMode);
                    completedPaths.push_back(*diff->filePath());
                }
                ASSERT_EQ(fileMeantBy(versions, chunk, staged, indexMode),
                          fileMeantBy(versions, chunk, takenBack, worktreeMode));
            }
        }
        for (const int mode : {indexMode, worktreeMode}) {
            readTree(mode == indexMode ? oldTree : newTree);
            ASSERT_TRUE(applies(patches[mode], mode)) << "round " << round << ", mode " << mode;
            std::vector<std::string> paths;
            for (const auto& [path, contents] : meant[mode])
                paths.push_back(path);
            const auto results = indexedFiles(paths);
            for (const auto& [path, contents] : meant[mode])
                ASSERT_EQ(results.at(path).value_or(""), contents)
                    << path << ", round " << round << ", mode " << mode;
            // A selection with its complement is the whole, whichever way.
            ASSERT_FALSE(completedPaths.empty());
            ASSERT_TRUE(applies(complements[mode], mode)) << "round " << round;
            const Files& completed = mode == indexMode ? newFiles : oldFiles;
            for (const auto& [path, contents] : indexedFiles(completedPaths)) {
                const auto expected = completed.find(path);
                ASSERT_EQ(contents, expected == completed.end() ? std::nullopt
                                                                : std::optional(expected->second))
                    << path << ", round " << round << ", mode " << mode;
            }
        }
        // Whole chunks make of any files the new ones.
        readTree(oldTree);
        ASSERT_TRUE(applies(patches[indexMode], indexMode));
        std::string wholeChunks;
        std::vector<std::string> changedPaths;
        for (const auto& diff : diffsBetween(gitInRepository({"write-tree"}), newTree)) {
            if (diff->chunks().size() != 1 || !diff->filePath())
                continue;
            wholeChunks += *RVGitDiffPatchGenerator(diff).patchForChunkAtIndex(0);
            changedPaths.push_back(*diff->filePath());
        }
        ASSERT_TRUE(applies(wholeChunks, indexMode)) << "round " << round;
        for (const auto& [path, contents] : indexedFiles(changedPaths))
            ASSERT_EQ(contents, newFiles.at(path)) << path << ", round " << round;
    }
    for (const auto status : {RVGitFileStatusModified, RVGitFileStatusAdded, RVGitFileStatusDeleted,
                              RVGitFileStatusRenamed})
        EXPECT_GT(numberOfStatus[status], 5) << RVGitStringForFileStatus(status);
}

}  // namespace
