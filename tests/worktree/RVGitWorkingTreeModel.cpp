#include "tests/worktree/RVGitWorkingTreeModel.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffChunk.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitStash.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestLines.h"

namespace {

using Lines = std::vector<std::string>;

/// The file that is left of the chunk's side `base` (0 old, 1 new) when the selected changes are
/// made in it, or taken back.
std::string fileWithChanges(const std::string& text, const RVGitDiffChunk& chunk,
                            const std::set<std::uint64_t>& selected, std::size_t base) {
    const Lines before = linesOf(text);
    const RVGitDiffRange range = chunk.fileRanges()[base];
    auto next = static_cast<std::size_t>(range.length == 0 ? range.location : range.location - 1);
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

}  // namespace

RVGitWorkingTreeModel::RVGitWorkingTreeModel(std::string directory, unsigned seed)
    : random_(seed),
      directory_(std::move(directory)),
      repository_(RVGitRepository::repositoryWithWorkingTreeDirectoryPath(directory_,
                                                                          directory_ + "/.git")),
      manager_(RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository_)) {}

RVGitWorkingTreeModel::~RVGitWorkingTreeModel() = default;

void RVGitWorkingTreeModel::write(const std::string& path, const std::string& contents) {
    files_[path] = contents;
    writeTestFile(directory_ + "/" + path, contents);
}

void RVGitWorkingTreeModel::expectDone(bool done) {
    EXPECT_TRUE(done) << (error_ ? error_->localizedFailureReason().value_or("") : "");
    EXPECT_EQ(error_.has_value(), !done);
}

template <typename Condition>
std::optional<std::string> RVGitWorkingTreeModel::pathWhere(Condition condition) {
    std::vector<std::string> paths;
    for (const std::string& path : allPaths())
        if (condition(path))
            paths.push_back(path);
    if (paths.empty())
        return std::nullopt;
    return paths[below(paths.size())];
}

std::set<std::string> RVGitWorkingTreeModel::allPaths() const {
    std::set<std::string> paths;
    for (const Files* side : {&head_, &index_, &files_})
        for (const auto& [path, contents] : *side)
            paths.insert(path);
    return paths;
}

std::optional<std::string> RVGitWorkingTreeModel::unusedPath(bool forMove) {
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
std::string RVGitWorkingTreeModel::randomText() {
    std::string text;
    for (unsigned count = below(30); count > 0; --count)
        text += "line " + std::to_string(++numberOfLines_) + (below(8) == 0 ? "\r\n" : "\n");
    return text;
}

std::string RVGitWorkingTreeModel::edited(const std::string& text) {
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

RVGitWorkingTreeModel::Files RVGitWorkingTreeModel::trackedFiles() const {
    Files tracked;
    for (const auto& [path, contents] : files_)
        if (isTracked(path))
            tracked.emplace(path, contents);
    return tracked;
}

bool RVGitWorkingTreeModel::createFile() {
    const auto path = unusedPath(false);
    if (!path)
        return false;
    write(*path, randomText());
    return true;
}

bool RVGitWorkingTreeModel::editFile() {
    const auto path = pathWhere([this](const auto& each) { return isOnDisk(each); });
    if (!path)
        return false;
    write(*path, edited(files_.at(*path)));
    return true;
}

bool RVGitWorkingTreeModel::deleteFile() {
    const auto path = pathWhere([this](const auto& each) { return isOnDisk(each); });
    if (!path)
        return false;
    files_.erase(*path);
    std::filesystem::remove(directory_ + "/" + *path);
    return true;
}

bool RVGitWorkingTreeModel::stageFile() {
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

bool RVGitWorkingTreeModel::stageAll() {
    expectDone(manager_->stageAllFiles(&error_));
    index_ = files_;
    return true;
}

std::set<std::uint64_t> RVGitWorkingTreeModel::someChangesOf(const RVGitDiffChunk& chunk) {
    std::vector<std::uint64_t> changes;
    for (std::uint64_t line = 0; line < chunk.lines().size(); ++line)
        if (!chunk.lines()[line].isContextLine())
            changes.push_back(line);
    std::shuffle(changes.begin(), changes.end(), random_);
    return {changes.begin(), changes.begin() + 1 + below(changes.size())};
}

bool RVGitWorkingTreeModel::applyLines(const Files& before, const Files& after, bool stages) {
    const auto path = pathWhere([&](const auto& each) { return differ(before, after, each); });
    if (!path)
        return false;
    const auto compare = stages
                             ? &RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths
                             : &RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths;
    const auto diffs = compare({*path}, repository_, std::nullopt, &error_);
    if (!diffs || diffs->size() != 1) {
        ADD_FAILURE() << "There is no diff of " << *path;
        return true;
    }
    const RVGitDiff& diff = *diffs->front();
    const auto chunkIndex = below(diff.chunks().size());
    const RVGitDiffChunk& chunk = *diff.chunks()[chunkIndex];
    const auto selected = someChangesOf(chunk);
    const auto patch = stages ? diff.indexPatchForChunkAtIndex(chunkIndex, selected)
                              : diff.worktreePatchForChunkAtIndex(chunkIndex, selected);
    expectDone(manager_->applyPatch(
        patch, RVOptions{{RVGitApplyOptionCached, true}, {RVGitApplyOptionReverse, !stages}},
        &error_));
    index_[*path] = fileWithChanges(index_.at(*path), chunk, selected, stages ? 0 : 1);
    return true;
}

bool RVGitWorkingTreeModel::stageLines() {
    return applyLines(index_, files_, true);
}

bool RVGitWorkingTreeModel::unstageLines() {
    return applyLines(head_, index_, false);
}

bool RVGitWorkingTreeModel::unstageFile() {
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

bool RVGitWorkingTreeModel::discardFile() {
    const auto path = pathWhere([this](const auto& each) { return head_.contains(each); });
    if (!path)
        return false;
    expectDone(manager_->revertFiles({*path}, &error_));
    index_[*path] = files_[*path] = head_.at(*path);
    return true;
}

bool RVGitWorkingTreeModel::removeFile() {
    const auto path = pathWhere([this](const auto& each) { return isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->removeFiles({*path}, &error_));
    index_.erase(*path);
    files_.erase(*path);
    return true;
}

bool RVGitWorkingTreeModel::untrackFile() {
    const auto path = pathWhere([this](const auto& each) { return isTracked(each); });
    if (!path)
        return false;
    expectDone(manager_->untrackFiles({*path}, &error_));
    index_.erase(*path);
    return true;
}

bool RVGitWorkingTreeModel::moveFile() {
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

bool RVGitWorkingTreeModel::saveStash() {
    // A file that was taken out of the index alone is both deleted and untracked: what git makes of
    // that is tested with the stashes.
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
        repository_, below(2) == 0 ? std::optional<std::string>("A message: why") : std::nullopt,
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

bool RVGitWorkingTreeModel::popStash() {
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
    expectDone(RVGitStash::applyStashAtIndex(index, repository_, true, &error_));
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

bool RVGitWorkingTreeModel::commit() {
    if (index_ == head_)
        return false;
    expectDone(manager_->commitWithMessage("Message\n\n# no remark", 0, &error_));
    head_ = index_;
    isBorn_ = true;
    return true;
}
