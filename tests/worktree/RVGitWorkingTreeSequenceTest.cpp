#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffChunk.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitStash.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVPorcelainStatus.h"

namespace {

using Files = std::map<std::string, std::string>;
using Lines = std::vector<std::string>;

/// Each line with the newline at its end.
Lines linesOf(const std::string& text) {
    Lines lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

/// The file that is left of the chunk's side `base` (0 old, 1 new) when the selected changes are
/// made in it, or taken back.
std::string fileWithChanges(const std::string& text, const RVGitDiffChunk& chunk,
                            const std::set<std::uint64_t>& selected, std::size_t base) {
    const Lines before = linesOf(text);
    const RVGitDiffRange range = chunk.fileRanges()[base];
    std::size_t next = range.length == 0 ? range.location : range.location - 1;
    Lines after(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(next));
    for (std::uint64_t index = 0; index < chunk.lines().size(); ++index) {
        const auto line = chunk.lines()[index];
        const bool isMissing = base == 0 ? line.isAddedLine() : line.isDeletedLine();
        if (isMissing) {
            if (selected.contains(index))
                after.push_back(std::string(line.content()) + "\n");
        } else {
            if (line.isContextLine() || !selected.contains(index))
                after.push_back(before.at(next));
            ++next;
        }
    }
    after.insert(after.end(), before.begin() + static_cast<std::ptrdiff_t>(next), before.end());
    return joined(after);
}

/// What a listing says of one path, in the letters of git's short format.
struct Listed {
    std::string letters;
    std::string originalPath;

    bool operator==(const Listed&) const = default;
};
using Listing = std::map<std::string, Listed>;

void PrintTo(const Listed& listed, std::ostream* stream) {
    *stream << '"' << listed.letters << "\" " << listed.originalPath;
}

/// What a stash holds: the tracked files as they were in the working tree, and the untracked ones.
struct StashedFiles {
    Files base;
    Files tracked;
    Files untracked;
};

/// Drives the library with random operations and keeps, in the plainest way, what they should
/// leave: the files of HEAD, of the index and of the working tree.
class RVGitWorkingTreeSequenceTest : public RVGitRepositoryTestCase,
                                     public testing::WithParamInterface<unsigned> {
protected:
    using Operation = bool (RVGitWorkingTreeSequenceTest::*)();

    void runSequence(unsigned seed);

    /// How often each operation has been run and checked.
    std::map<std::string, int> numberOfRuns_;

    // Operations: false where they do not apply to the state as it is.
    bool createFile();
    bool editFile();
    bool deleteFile();
    bool stageFile();
    bool stageAll();
    bool stageLines();
    bool unstageFile();
    bool unstageLines();
    bool discardFile();
    bool removeFile();
    bool untrackFile();
    bool moveFile();
    bool saveStash();
    bool popStash();
    bool commit();

private:
    [[nodiscard]] unsigned below(std::size_t limit) {
        return static_cast<unsigned>(random_() % limit);
    }
    /// A path of HEAD, the index or the working tree that the condition holds for, if any.
    template <typename Condition>
    [[nodiscard]] std::optional<std::string> pathWhere(Condition condition);
    [[nodiscard]] std::set<std::string> allPaths() const;
    [[nodiscard]] std::optional<std::string> unusedPath(bool forMove);
    [[nodiscard]] std::string randomText();
    [[nodiscard]] std::string edited(const std::string& text);
    void write(const std::string& path, const std::string& contents) {
        files_[path] = contents;
        writeFile(directory_ + "/" + path, contents);
    }
    [[nodiscard]] bool isTracked(const std::string& path) const { return index_.contains(path); }
    [[nodiscard]] bool isOnDisk(const std::string& path) const { return files_.contains(path); }
    /// Of a file that both sides have.
    [[nodiscard]] static bool differ(const Files& before, const Files& after,
                                     const std::string& path) {
        return before.contains(path) && after.contains(path) && before.at(path) != after.at(path);
    }
    /// The tracked files as they are on disk.
    [[nodiscard]] Files trackedFiles() const;
    [[nodiscard]] bool isClean() const { return index_ == head_ && trackedFiles() == index_; }
    /// Lines that have changed in one of the diff's chunks, some of them.
    [[nodiscard]] std::set<std::uint64_t> someChangesOf(const RVGitDiffChunk& chunk);
    void expectDone(bool done) {
        EXPECT_TRUE(done) << (error_ ? error_->localizedFailureReason().value_or("") : "");
    }

    void check();
    void checkFiles();
    void checkIndex();
    void checkListing();
    [[nodiscard]] Listing listingOfModel() const;
    [[nodiscard]] Listing listingOfGit() const;

    std::mt19937 random_;
    std::string directory_;
    std::shared_ptr<RVGitRepository> opened_;
    std::shared_ptr<RVGitWorkingTreeManager> manager_;
    std::optional<RVError> error_;
    bool detectsRenames_ = false;
    unsigned numberOfLines_ = 0;
    Files head_;
    bool isBorn_ = false;
    Files index_;
    Files files_;
    std::vector<StashedFiles> stashes_;
    std::string trace_;
};

template <typename Condition>
std::optional<std::string> RVGitWorkingTreeSequenceTest::pathWhere(Condition condition) {
    std::vector<std::string> paths;
    for (const std::string& path : allPaths())
        if (condition(path))
            paths.push_back(path);
    if (paths.empty())
        return std::nullopt;
    return paths[below(paths.size())];
}

std::set<std::string> RVGitWorkingTreeSequenceTest::allPaths() const {
    std::set<std::string> paths;
    for (const Files* side : {&head_, &index_, &files_})
        for (const auto& [path, contents] : *side)
            paths.insert(path);
    return paths;
}

std::optional<std::string> RVGitWorkingTreeSequenceTest::unusedPath(bool forMove) {
    static const std::vector<std::string> paths = {"plain",
                                                   "with blank",
                                                   " blank ahead",
                                                   "blank behind ",
                                                   "tab\tinside",
                                                   "two\nlines",
                                                   "quo\"te",
                                                   "back\\slash",
                                                   "ni\xC3\xB1o",
                                                   "nin\xCC\x83o",
                                                   "star*",
                                                   "#remark",
                                                   "!not",
                                                   "a'b",
                                                   "dir/inside",
                                                   "dir/deep/inside",
                                                   "dir/ni\xC3\xB1o",
                                                   "other dir/inside",
                                                   "-dash"};
    const std::string& path = paths[below(paths.size())];
    if (files_.contains(path) || index_.contains(path))
        return std::nullopt;
    // No "--" stands ahead of the paths of a move, whose directory must exist.
    if (forMove && (path.starts_with('-') || path.find('/') != std::string::npos))
        return std::nullopt;
    return path;
}

// No line comes twice, so that there is but one place at which a patch fits.
std::string RVGitWorkingTreeSequenceTest::randomText() {
    std::string text;
    for (unsigned count = below(30); count > 0; --count)
        text += "line " + std::to_string(++numberOfLines_) + (below(8) == 0 ? "\r\n" : "\n");
    return text;
}

std::string RVGitWorkingTreeSequenceTest::edited(const std::string& text) {
    Lines lines = linesOf(text);
    for (unsigned count = 1 + below(4); count > 0; --count) {
        const auto at = static_cast<std::ptrdiff_t>(below(lines.size() + 1));
        if (below(3) == 0 && std::size_t(at) < lines.size())
            lines.erase(lines.begin() + at);
        else
            lines.insert(lines.begin() + at, "line " + std::to_string(++numberOfLines_) + "\n");
    }
    return joined(lines);
}

Files RVGitWorkingTreeSequenceTest::trackedFiles() const {
    Files tracked;
    for (const auto& [path, contents] : files_)
        if (isTracked(path))
            tracked.emplace(path, contents);
    return tracked;
}

bool RVGitWorkingTreeSequenceTest::createFile() {
    const auto path = unusedPath(false);
    if (!path)
        return false;
    write(*path, randomText());
    return true;
}

bool RVGitWorkingTreeSequenceTest::editFile() {
    const auto path = pathWhere([this](const auto& each) { return isOnDisk(each); });
    if (!path)
        return false;
    write(*path, edited(files_.at(*path)));
    return true;
}

bool RVGitWorkingTreeSequenceTest::deleteFile() {
    const auto path = pathWhere([this](const auto& each) { return isOnDisk(each); });
    if (!path)
        return false;
    files_.erase(*path);
    std::filesystem::remove(directory_ + "/" + *path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::stageFile() {
    const auto path =
        pathWhere([this](const auto& each) { return isOnDisk(each) || isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->stageFiles({*path}, &error_));
    if (files_.contains(*path))
        index_[*path] = files_.at(*path);
    else
        index_.erase(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::stageAll() {
    expectDone(manager_->stageAllFiles(&error_));
    index_ = files_;
    return true;
}

std::set<std::uint64_t> RVGitWorkingTreeSequenceTest::someChangesOf(const RVGitDiffChunk& chunk) {
    std::vector<std::uint64_t> changes;
    for (std::uint64_t line = 0; line < chunk.lines().size(); ++line)
        if (!chunk.lines()[line].isContextLine())
            changes.push_back(line);
    std::shuffle(changes.begin(), changes.end(), random_);
    return {changes.begin(), changes.begin() + 1 + below(changes.size())};
}

bool RVGitWorkingTreeSequenceTest::stageLines() {
    const auto path = pathWhere([this](const auto& each) { return differ(index_, files_, each); });
    if (!path)
        return false;
    const auto diffs = RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
        {*path}, opened_, std::nullopt, &error_);
    EXPECT_TRUE(diffs && diffs->size() == 1);
    const auto& diff = diffs->front();
    const auto chunkIndex = below(diff->chunks().size());
    const RVGitDiffChunk& chunk = *diff->chunks()[chunkIndex];
    const auto selected = someChangesOf(chunk);
    expectDone(manager_->applyPatch(diff->indexPatchForChunkAtIndex(chunkIndex, selected),
                                    RVOptions{{RVGitApplyOptionCached, true}}, &error_));
    index_[*path] = fileWithChanges(index_.at(*path), chunk, selected, 0);
    return true;
}

bool RVGitWorkingTreeSequenceTest::unstageFile() {
    const auto path =
        pathWhere([this](const auto& each) { return head_.contains(each) || isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->unstageFiles({*path}, &error_));
    if (head_.contains(*path))
        index_[*path] = head_.at(*path);
    else
        index_.erase(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::unstageLines() {
    const auto path = pathWhere([this](const auto& each) { return differ(head_, index_, each); });
    if (!path)
        return false;
    const auto diffs = RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths(
        {*path}, opened_, std::nullopt, &error_);
    EXPECT_TRUE(diffs && diffs->size() == 1);
    const auto& diff = diffs->front();
    const auto chunkIndex = below(diff->chunks().size());
    const RVGitDiffChunk& chunk = *diff->chunks()[chunkIndex];
    const auto selected = someChangesOf(chunk);
    expectDone(manager_->applyPatch(
        diff->worktreePatchForChunkAtIndex(chunkIndex, selected),
        RVOptions{{RVGitApplyOptionCached, true}, {RVGitApplyOptionReverse, true}}, &error_));
    index_[*path] = fileWithChanges(index_.at(*path), chunk, selected, 1);
    return true;
}

bool RVGitWorkingTreeSequenceTest::discardFile() {
    const auto path = pathWhere([this](const auto& each) { return head_.contains(each); });
    if (!path)
        return false;
    expectDone(manager_->revertFiles({*path}, &error_));
    index_[*path] = files_[*path] = head_.at(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::removeFile() {
    const auto path = pathWhere([this](const auto& each) { return isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->removeFiles({*path}, &error_));
    index_.erase(*path);
    files_.erase(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::untrackFile() {
    const auto path = pathWhere([this](const auto& each) { return isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->untrackFiles({*path}, &error_));
    index_.erase(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::moveFile() {
    const auto path = pathWhere([this](const auto& each) {
        return isTracked(each) && isOnDisk(each) && !each.starts_with('-');
    });
    const auto newPath = unusedPath(true);
    if (!path || !newPath)
        return false;
    expectDone(manager_->moveFileAtPath(*path, *newPath, 0, &error_));
    index_[*newPath] = index_.at(*path);
    files_[*newPath] = files_.at(*path);
    index_.erase(*path);
    files_.erase(*path);
    return true;
}

bool RVGitWorkingTreeSequenceTest::saveStash() {
    for (const auto& [path, contents] : head_)
        if (!isTracked(path) && files_.contains(path))
            return false;
    const bool includesUntracked = below(2) == 0;
    StashedFiles stash = {.base = head_, .tracked = trackedFiles(), .untracked = {}};
    Files left = head_;
    for (const auto& file : files_)
        if (!isTracked(file.first))
            (includesUntracked ? stash.untracked : left).insert(file);
    const bool hasChanges = isBorn_ && (!isClean() || !stash.untracked.empty());
    if (!hasChanges && below(8) != 0)
        return false;
    const auto saved = RVGitStash::saveStashFromWorkingTreeInRepository(
        opened_, below(2) == 0 ? std::optional<std::string>("A message: why") : std::nullopt,
        includesUntracked ? RVGitStashSaveOptionIncludesUntrackedFiles : 0U, &error_);
    EXPECT_EQ(saved != nullptr, hasChanges);
    if (!hasChanges) {
        EXPECT_EQ(error_->code(),
                  isBorn_ ? RVGitSaveStashNoChangesError : RVGitSaveStashInitialCommitError);
        error_.reset();
        return true;
    }
    stashes_.insert(stashes_.begin(), std::move(stash));
    index_ = head_;
    files_ = left;
    return true;
}

bool RVGitWorkingTreeSequenceTest::popStash() {
    if (stashes_.empty() || !isClean())
        return false;
    const auto index = below(stashes_.size());
    const StashedFiles stash = stashes_[index];
    Files newFiles = stash.untracked;
    for (const auto& file : stash.tracked)
        if (!head_.contains(file.first))
            newFiles.insert(file);
    const auto isInTheWay = [&](const auto& file) { return files_.contains(file.first); };
    if (stash.base != head_ || std::any_of(newFiles.begin(), newFiles.end(), isInTheWay))
        return false;
    expectDone(RVGitStash::applyStashAtIndex(index, opened_, true, &error_));
    stashes_.erase(stashes_.begin() + index);
    for (const auto& [path, contents] : head_)
        files_.erase(path);
    for (const auto& [path, contents] : stash.tracked) {
        files_[path] = contents;
        // What was new comes back staged, all else unstaged.
        if (!head_.contains(path))
            index_[path] = contents;
    }
    files_.insert(stash.untracked.begin(), stash.untracked.end());
    return true;
}

bool RVGitWorkingTreeSequenceTest::commit() {
    if (index_ == head_)
        return false;
    expectDone(manager_->commitWithMessage("Message\n\n# no remark", 0, &error_));
    head_ = index_;
    isBorn_ = true;
    return true;
}

void RVGitWorkingTreeSequenceTest::checkFiles() {
    Files found;
    for (auto entry = std::filesystem::recursive_directory_iterator(directory_);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path().lexically_relative(directory_);
        if (path == ".git")
            entry.disable_recursion_pending();
        else if (!entry->is_directory())
            found.emplace(path, readFile(entry->path().string()));
    }
    EXPECT_EQ(found, files_);
}

void RVGitWorkingTreeSequenceTest::checkIndex() {
    const std::string output = git({"ls-files", "--stage", "-z"}, directory_);
    std::vector<std::string> paths;
    std::string hashes;
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t tab = output.find('\t', start);
        const std::size_t end = output.find('\0', start);
        hashes += output.substr(start + 7, 40) + "\n";
        paths.push_back(output.substr(tab + 1, end - tab - 1));
        start = end + 1;
    }
    const std::string blobs = git({"cat-file", "--batch"}, directory_, hashes);
    Files found;
    std::size_t start = 0;
    for (const std::string& path : paths) {
        const std::size_t size = std::stoul(blobs.substr(blobs.find("blob ", start) + 5));
        start = blobs.find('\n', start) + 1;
        found.emplace(path, blobs.substr(start, size));
        start += size + 1;
    }
    EXPECT_EQ(found, index_);
}

Listing RVGitWorkingTreeSequenceTest::listingOfModel() const {
    Listing listing;
    const auto change = [](const Files& before, const Files& after, const std::string& path) {
        if (!before.contains(path))
            return after.contains(path) ? 'A' : ' ';
        if (!after.contains(path))
            return 'D';
        return before.at(path) == after.at(path) ? ' ' : 'M';
    };
    for (const std::string& path : allPaths()) {
        std::string letters = {change(head_, index_, path), change(index_, files_, path)};
        // A new file is not an added one before git has been told of it.
        if (letters[1] == 'A')
            letters = letters[0] == ' ' ? "??" : "D?";
        if (letters != "  ")
            listing[path] = {letters, ""};
    }
    return listing;
}

/// Read from another of git's formats than the library reads.
Listing RVGitWorkingTreeSequenceTest::listingOfGit() const {
    std::vector<std::string> arguments = {"status", "--porcelain=v2", "-z"};
    if (!detectsRenames_)
        arguments.push_back("--untracked-files=all");
    Listing listing;
    for (const auto& [path, status] : porcelainStatusesByPath(git(arguments, directory_)))
        listing[path] = {{status.left, status.right}, status.originalPath.value_or("")};
    return listing;
}

void RVGitWorkingTreeSequenceTest::checkListing() {
    std::optional<RVOptions> options;
    if (!detectsRenames_)
        options = {{RVGitWorkingTreeOptionUntrackedFilesMode, RVGitUntrackedFilesModeAll}};
    const auto entries =
        RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(opened_, options, &error_);
    ASSERT_TRUE(entries);
    Listing listing;
    for (const auto& entry : *entries)
        listing[entry->filePath()] = {
            RVGitShortStringForFileStatus(entry->stagedStatus()).value_or("") +
                RVGitShortStringForFileStatus(entry->currentStatus()).value_or(""),
            entry->originalFilePath().value_or("")};
    EXPECT_EQ(listing, listingOfGit());
    if (!detectsRenames_) {
        EXPECT_EQ(listing, listingOfModel());
    }
}

void RVGitWorkingTreeSequenceTest::check() {
    SCOPED_TRACE(trace_);
    EXPECT_FALSE(error_) << error_->localizedFailureReason().value_or("");
    checkFiles();
    checkIndex();
    checkListing();
}

void RVGitWorkingTreeSequenceTest::runSequence(unsigned seed) {
    struct Named {
        const char* name;
        Operation operation;
    };
    static constexpr Named operations[] = {
        {"create", &RVGitWorkingTreeSequenceTest::createFile},
        {"create", &RVGitWorkingTreeSequenceTest::createFile},
        {"edit", &RVGitWorkingTreeSequenceTest::editFile},
        {"edit", &RVGitWorkingTreeSequenceTest::editFile},
        {"edit", &RVGitWorkingTreeSequenceTest::editFile},
        {"delete", &RVGitWorkingTreeSequenceTest::deleteFile},
        {"stage", &RVGitWorkingTreeSequenceTest::stageFile},
        {"stage all", &RVGitWorkingTreeSequenceTest::stageAll},
        {"stage lines", &RVGitWorkingTreeSequenceTest::stageLines},
        {"stage lines", &RVGitWorkingTreeSequenceTest::stageLines},
        {"stage lines", &RVGitWorkingTreeSequenceTest::stageLines},
        {"unstage", &RVGitWorkingTreeSequenceTest::unstageFile},
        {"unstage lines", &RVGitWorkingTreeSequenceTest::unstageLines},
        {"unstage lines", &RVGitWorkingTreeSequenceTest::unstageLines},
        {"unstage lines", &RVGitWorkingTreeSequenceTest::unstageLines},
        {"discard", &RVGitWorkingTreeSequenceTest::discardFile},
        {"remove", &RVGitWorkingTreeSequenceTest::removeFile},
        {"untrack", &RVGitWorkingTreeSequenceTest::untrackFile},
        {"move", &RVGitWorkingTreeSequenceTest::moveFile},
        {"stash", &RVGitWorkingTreeSequenceTest::saveStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"pop", &RVGitWorkingTreeSequenceTest::popStash},
        {"commit", &RVGitWorkingTreeSequenceTest::commit},
        {"commit", &RVGitWorkingTreeSequenceTest::commit},
    };
    constexpr int numberOfSteps = 12;
    for (const Named& each : operations)
        numberOfRuns_.try_emplace(each.name, 0);
    random_.seed(seed);
    directory_ = initRepository("sequence");
    opened_ =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(directory_, directory_ + "/.git");
    manager_ = RVGitWorkingTreeManager::workingTreeManagerWithRepository(opened_);
    detectsRenames_ = seed % 2 == 0;
    git({"config", "status.renames", detectsRenames_ ? "true" : "false"}, directory_);
    head_.clear();
    index_.clear();
    files_.clear();
    stashes_.clear();
    isBorn_ = false;
    trace_ = "seed " + std::to_string(seed) + ":";
    // Some start on an unborn branch.
    if (below(6) != 0) {
        while (files_.size() < 4)
            createFile();
        stageAll();
        commit();
    }
    for (int step = 0; step < numberOfSteps && !HasFailure();) {
        const Named& chosen = operations[below(std::size(operations))];
        if (!(this->*chosen.operation)())
            continue;
        ++step;
        ++numberOfRuns_[chosen.name];
        trace_ += std::string(" ") + chosen.name + ",";
        check();
    }
    std::filesystem::remove_all(directory_);
}

constexpr unsigned sequencesOfATest = 50;

TEST_P(RVGitWorkingTreeSequenceTest, EachStepLeavesWhatItShould) {
    for (unsigned number = 0; number < sequencesOfATest && !HasFailure(); ++number)
        runSequence(GetParam() * sequencesOfATest + number);
    for (const auto& [name, number] : numberOfRuns_)
        EXPECT_GE(number, 1) << name << " has not been tried";
}

INSTANTIATE_TEST_SUITE_P(FiveHundredSequences, RVGitWorkingTreeSequenceTest,
                         testing::Range(0U, 10U));

}  // namespace
