#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffPatchGenerator.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestLines.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

// Random lines of files in many encodings are staged, taken back and discarded, and the index and
// the files must hold, byte for byte, what the plainest model says.

namespace {

using Selection = std::set<std::size_t>;
using Lines = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

constexpr int indexMode = RVGitDiffPatchGenerator::IndexMode;
constexpr int worktreeMode = RVGitDiffPatchGenerator::WorktreeMode;

/// Lines of one encoding.
class LineMaker {
public:
    LineMaker(std::mt19937& random, unsigned encoding, bool repeatsLines)
        : random_(random), encoding_(encoding), repeatsLines_(repeatsLines) {}

    /// Without a newline at the end, though one may stand inside.
    std::string line() {
        if (repeatsLines_ && random_() % 2 == 0)
            return repeatedLine();
        switch (encoding_ % 6) {
            case 0:
                return latin1();
            case 1:
                return shiftJIS();
            case 2:
                return utf16();
            case 3:
                return binary();
            case 4:
                return "gr\u00FC\u00DFe " + number();
            default:
                switch (random_() % 5) {
                    case 0:
                        return latin1();
                    case 1:
                        return shiftJIS();
                    case 2:
                        return "\u65E5\u672C \u00FC " + number();
                    case 3:
                        return "plain " + number() + (random_() % 2 == 0 ? "\r" : "");
                    default:
                        return binary();
                }
        }
    }
    std::string newline() const {
        return encoding_ % 6 == 2 ? std::string("\n\0", 2) : std::string("\n");
    }

private:
    std::string number() { return std::to_string(++count_) + " " + std::to_string(random_()); }
    char byteOf(int first, int last) {
        return static_cast<char>(first + static_cast<int>(random_() % unsigned(last + 1 - first)));
    }
    std::string repeatedLine() {
        static const std::string lines[] = {"}", "", "caf\xE9", "\xC3\xBC", "\x83\x5C"};
        return lines[random_() % 3 == 0 ? 4 - random_() % 4 : 0];
    }
    std::string latin1() {
        std::string text = "na\xEFve " + number() + " ";
        for (auto length = random_() % 6; length > 0; --length)
            text += byteOf(0x80, 0xFF);
        return text;
    }
    // Second bytes may be a backslash or a letter.
    std::string shiftJIS() {
        std::string text = number() + " \x83\x5C ";
        for (auto length = random_() % 6; length > 0; --length) {
            text += random_() % 2 == 0 ? byteOf(0x81, 0x9F) : byteOf(0xE0, 0xEF);
            text += random_() % 2 == 0 ? byteOf(0x40, 0x7E) : byteOf(0x80, 0xFC);
        }
        return text;
    }
    // Little-endian. U+010A and U+0A0D hold the byte of a newline.
    std::string utf16() {
        std::string text;
        for (const char character : number())
            text += {character, '\0'};
        if (random_() % 3 == 0)
            text += {'\x0A', '\x01'};
        if (random_() % 3 == 0)
            text += {'\x0D', '\x0A'};
        text += {'\xFC', '\0', byteOf(0x01, 0x09), byteOf(0x30, 0x9F)};
        return text;
    }
    // Whatever looks like something else, to git or to a parser.
    std::string binary() {
        static const std::string starts[] = {"-",
                                             "+",
                                             "-- a/f",
                                             "++ b/f",
                                             "@@ -1 +1 @@",
                                             "\\ No newline at end of file",
                                             "diff --git a/x b/x",
                                             "* Unmerged path x",
                                             "Binary files a and b differ",
                                             "\xFF\xFE",
                                             "\xEF\xBB\xBF",
                                             " ",
                                             "\t",
                                             "\r"};
        std::string text = starts[random_() % std::size(starts)] + number();
        for (auto length = random_() % 12; length > 0; --length) {
            const char byte = byteOf(0x00, 0xFF);
            text += byte == '\n' ? '\v' : byte;
        }
        return text;
    }

    std::mt19937& random_;
    unsigned encoding_;
    bool repeatsLines_;
    unsigned count_ = 0;
};

/// The base, in which the selected changes are made or taken back. A line without a newline gets
/// one where another follows it.
std::string fileMeantBy(const std::string& before, const std::string& after, const RVGitDiff& diff,
                        const std::map<std::size_t, Selection>& selections, int mode) {
    const bool isIndexMode = mode == indexMode;
    const Lines oldLines = linesOf(before);
    const Lines newLines = linesOf(after);
    Lines result;
    std::size_t oldIndex = 0;
    std::size_t newIndex = 0;
    const auto keepUntil = [&](std::size_t oldEnd, std::size_t newEnd) {
        for (; oldIndex < oldEnd; ++oldIndex, ++newIndex)
            result.push_back(oldLines.at(oldIndex));
        EXPECT_EQ(newIndex, newEnd);
    };
    for (std::size_t chunkIndex = 0; chunkIndex < diff.chunks().size(); ++chunkIndex) {
        const RVGitDiffChunk& chunk = *diff.chunks()[chunkIndex];
        const auto start = [&](std::size_t side) {
            const RVGitDiffRange& range = chunk.fileRanges()[side];
            return static_cast<std::size_t>(range.length == 0 ? range.location
                                                              : range.location - 1);
        };
        keepUntil(start(0), start(1));
        const auto found = selections.find(chunkIndex);
        std::size_t index = 0;
        for (const RVGitDiffChunkLine& line : chunk.lines()) {
            const bool isSelected = found != selections.end() && found->second.contains(index);
            ++index;
            if (line.isContextLine()) {
                EXPECT_EQ(oldLines.at(oldIndex), newLines.at(newIndex));
                result.push_back(oldLines.at(oldIndex++));
                ++newIndex;
            } else if (line.isDeletedLine()) {
                const std::string& text = oldLines.at(oldIndex++);
                if (isSelected != isIndexMode)
                    result.push_back(text);
            } else if (line.isAddedLine()) {
                const std::string& text = newLines.at(newIndex++);
                if (isSelected == isIndexMode)
                    result.push_back(text);
            }
        }
    }
    keepUntil(oldLines.size(), newLines.size());
    for (std::size_t index = 0; index + 1 < result.size(); ++index)
        if (!result[index].ends_with('\n'))
            result[index] += '\n';
    return joined(result);
}

/// RVGIT_TEST_SELECTIONS sets another number, for each of staging, taking back and discarding.
int numberOfRandomSelections() {
    const char* number = std::getenv("RVGIT_TEST_SELECTIONS");
    return number ? std::atoi(number) : 100;
}

class RVGitPartialPatchTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitPartialPatchTest() {
        // All of it is text, even what holds a NUL.
        writeFile("repository/.git/info/attributes", "* diff -text\n");
    }

    /// Random files, each of them committed, staged and changed again.
    void makeFiles(bool repeatsLines) {
        constexpr int filesAtOnce = 30;
        gitInRepository({"rm", "-rqf", "--ignore-unmatch", "."});
        head_.clear();
        index_.clear();
        files_.clear();
        Lines newPaths;
        for (int file = 0; file < filesAtOnce; ++file) {
            LineMaker maker(random_, static_cast<unsigned>(random_()), repeatsLines);
            const std::string path = "dir " + std::to_string(file % 3) + "/" + std::to_string(file);
            Lines lines = changed({}, maker, 3 + random_() % 30);
            head_[path] = textOf(lines, maker);
            lines = changed(lines, maker, 0);
            index_[path] = textOf(lines, maker);
            lines = changed(lines, maker, 0);
            files_[path] = textOf(lines, maker);
            switch (random_() % 12) {
                case 0:
                    head_.erase(path);
                    break;
                case 1:
                    files_.erase(path);
                    break;
                case 2:
                    // Older gits refuse the patch of a file that they are to add.
                    if (!isTestedGitAtLeast("2.29"))
                        break;
                    head_.erase(path);
                    index_.erase(path);
                    newPaths.push_back(path);
                    break;
                default:
                    break;
            }
        }
        writeAll(head_);
        gitInRepository({"add", "-A", "."});
        gitInRepository({"commit", "-q", "-m", "m", "--allow-empty"});
        writeAll(index_);
        gitInRepository({"add", "-A", "."});
        writeAll(files_);
        if (!newPaths.empty()) {
            newPaths.insert(newPaths.begin(), {"add", "-N", "--"});
            gitInRepository(newPaths);
        }
    }

    /// Stages, takes back or discards some lines of every file that the comparison shows.
    void applySome(const Files& before, Files& after, int mode, bool discards, bool isLocated) {
        const auto compare =
            mode == worktreeMode && !discards
                ? &RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths
                : &RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths;
        const int contextLines = static_cast<int>(isLocated ? random_() % 5 : 1 + random_() % 4);
        const auto diffs = compare({}, repository(),
                                   RVOptions{{RVGitDiffOptionNoRenames, true},
                                             {RVGitDiffOptionContextLines, contextLines}},
                                   nullptr);
        ASSERT_TRUE(diffs);
        Files& changedSide = mode == indexMode ? const_cast<Files&>(before) : after;
        RVData patch;
        Files meant = changedSide;
        for (const auto& diff : *diffs) {
            if (diff->chunks().empty())
                continue;
            const std::string path = diff->filePath() ? *diff->filePath() : *diff->oldFilePath();
            const std::string oldText = diff->oldFilePath() ? before.at(path) : "";
            const std::string newText = diff->filePath() ? after.at(path) : "";
            const auto selections = isLocated ? selectionsOf(*diff) : selectionOf(*diff, mode);
            if (selections.empty())
                continue;
            const RVGitDiffPatchGenerator generator(diff);
            if (isLocated) {
                const auto located = generator.locatedPatchForLinesWithIndexes(selections, mode);
                ASSERT_TRUE(located);
                patch += *located;
            } else {
                const auto& [chunkIndex, lines] = *selections.begin();
                patch += generator.patchForChunkAtIndex(
                    chunkIndex, withMarkers(*diff->chunks()[chunkIndex], lines, mode), mode);
            }
            const std::string result = fileMeantBy(oldText, newText, *diff, selections, mode);
            meant[path] = result;
            // What is wholly deleted, or new no more, goes.
            const bool mayGo =
                mode == indexMode ? !diff->filePath() : isLocated && !diff->oldFilePath();
            if (result.empty() && mayGo)
                meant.erase(path);
            ++numberOfSelections_;
        }
        std::optional<RVError> error;
        ASSERT_TRUE(manager().applyPatch(patch,
                                         RVOptions{{RVGitApplyOptionCached, !discards},
                                                   {RVGitApplyOptionReverse, mode == worktreeMode}},
                                         &error))
            << error->localizedFailureReason().value_or("") << "\n"
            << patch;
        changedSide = std::move(meant);
        expectIndexAndFiles();
    }

    void run(bool isLocated) {
        for (int round = 0; numberOfSelections_ < 3 * numberOfRandomSelections(); ++round) {
            SCOPED_TRACE("round " + std::to_string(round));
            random_.seed(static_cast<unsigned>(round));
            makeFiles(isLocated);
            expectIndexAndFiles();
            applySome(index_, files_, indexMode, false, isLocated);
            if (HasFatalFailure() || HasFailure())
                return;
            applySome(head_, index_, worktreeMode, false, isLocated);
            if (HasFatalFailure() || HasFailure())
                return;
            applySome(index_, files_, worktreeMode, true, isLocated);
            if (HasFatalFailure() || HasFailure())
                return;
        }
        RecordProperty("selections", numberOfSelections_);
    }

private:
    Lines changed(const Lines& lines, LineMaker& maker, std::size_t addedAtEnd) {
        Lines result;
        for (const std::string& line : lines) {
            while (random_() % 9 == 0)
                result.push_back(maker.line());
            if (random_() % 8 != 0)
                result.push_back(line);
        }
        for (; addedAtEnd > 0; --addedAtEnd)
            result.push_back(maker.line());
        if (random_() % 4 == 0)
            result.push_back(maker.line());
        return result;
    }
    std::string textOf(const Lines& lines, const LineMaker& maker) {
        std::string text;
        for (const std::string& line : lines)
            text += line + maker.newline();
        // Not every file ends in a newline.
        if (random_() % 4 == 0 && text.size() > 2)
            text.resize(text.size() - maker.newline().size());
        return text.empty() ? "\n" : text;
    }
    void writeAll(const Files& files) {
        for (const auto& entry : std::filesystem::directory_iterator(repositoryPath()))
            if (entry.path().filename() != ".git")
                std::filesystem::remove_all(entry.path());
        for (const auto& [path, contents] : files)
            write(path, contents);
    }
    void expectIndexAndFiles() const {
        std::string names;
        Lines paths;
        const std::string listing = git({"ls-files", "-z", "--stage"}, repositoryPath());
        std::string hashes;
        for (std::size_t start = 0; start < listing.size();) {
            const std::size_t end = listing.find('\0', start);
            const std::string record = listing.substr(start, end - start);
            start = end + 1;
            paths.push_back(record.substr(record.find('\t') + 1));
            hashes += record.substr(7, 40) + "\n";
        }
        const std::string blobs = git({"cat-file", "--batch"}, repositoryPath(), hashes);
        Files indexed;
        std::size_t position = 0;
        for (const std::string& path : paths) {
            const std::size_t end = blobs.find('\n', position);
            const std::string line = blobs.substr(position, end - position);
            const std::size_t size = std::stoul(line.substr(line.rfind(' ')));
            indexed[path] = blobs.substr(end + 1, size);
            position = end + 1 + size + 1;
        }
        for (const auto& [path, contents] : index_)
            ASSERT_EQ(indexed[path], contents) << "index: " << path;
        for (const auto& [path, contents] : indexed)
            ASSERT_TRUE(index_.contains(path) || contents.empty()) << "index: " << path;
        for (const auto& [path, contents] : files_)
            ASSERT_EQ(read(path), contents) << "file: " << path;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(repositoryPath())) {
            const std::string path = entry.path().lexically_relative(repositoryPath()).string();
            if (entry.is_regular_file() && !path.starts_with(".git/")) {
                ASSERT_TRUE(files_.contains(path)) << "file: " << path;
            }
        }
    }

    Selection someChangesOf(const RVGitDiffChunk& chunk, bool all) {
        Selection selection;
        std::size_t index = 0;
        for (const RVGitDiffChunkLine& line : chunk.lines()) {
            if ((line.isAddedLine() || line.isDeletedLine()) && (all || random_() % 2 == 0))
                selection.insert(index);
            ++index;
        }
        return selection;
    }
    std::map<std::size_t, Selection> selectionsOf(const RVGitDiff& diff) {
        std::map<std::size_t, Selection> selections;
        for (std::size_t index = 0; index < diff.chunks().size(); ++index) {
            auto selection = someChangesOf(*diff.chunks()[index], random_() % 4 == 0);
            if (random_() % 3 != 0 && !selection.empty())
                selections[index] = std::move(selection);
        }
        return selections;
    }
    /// Of one chunk, and so that no line is left behind an unterminated one. Only a whole file can
    /// be deleted.
    std::map<std::size_t, Selection> selectionOf(const RVGitDiff& diff, int mode) {
        const std::size_t chunkIndex = random_() % diff.chunks().size();
        const RVGitDiffChunk& chunk = *diff.chunks()[chunkIndex];
        const bool isWhole = mode == indexMode && !diff.filePath();
        auto selection = someChangesOf(chunk, isWhole);
        const auto& lines = chunk.lines();
        for (std::size_t index = 1; index < lines.size(); ++index) {
            if (!lines[index].isNoNewlineAtEndOfFileLine())
                continue;
            if (mode == indexMode && lines[index - 1].isDeletedLine()) {
                if (selection.upper_bound(index) != selection.end())
                    selection.insert(index - 1);
            } else if (mode == worktreeMode && lines[index - 1].isDeletedLine()) {
                // Restored, it stays the last line only where no added one is left behind it.
                for (std::size_t other = index + 1;
                     selection.contains(index - 1) && other < lines.size(); ++other)
                    if (lines[other].isAddedLine())
                        selection.insert(other);
            }
        }
        if (selection.empty())
            return {};
        return {{chunkIndex, selection}};
    }
    /// With the markers of all lines that the patch will hold.
    static Selection withMarkers(const RVGitDiffChunk& chunk, Selection selection, int mode) {
        const auto& lines = chunk.lines();
        for (std::size_t index = 1; index < lines.size(); ++index) {
            const auto line = lines[index - 1];
            const bool stays = line.isContextLine() ||
                               (mode == indexMode ? line.isDeletedLine() : line.isAddedLine());
            if (lines[index].isNoNewlineAtEndOfFileLine() &&
                (stays || selection.contains(index - 1)))
                selection.insert(index);
        }
        return selection;
    }

    std::mt19937 random_;
    Files head_;
    Files index_;
    Files files_;
    int numberOfSelections_ = 0;
};

TEST_F(RVGitPartialPatchTest, LinesOfOneChunkKeepTheirBytes) {
    run(false);
}

TEST_F(RVGitPartialPatchTest, LocatedLinesOfAnyChunksKeepTheirBytesAndGoToTheirPlaces) {
    run(true);
}

}  // namespace
