#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"

class RVGitDiffChunk;
class RVGitRepository;
class RVGitWorkingTreeManager;

/// Drives the library with random operations in a repository and keeps, in the plainest way, what
/// they should leave: the files of HEAD, of the index and of the working tree. An operation that
/// fails fails the test.
class RVGitWorkingTreeModel {
public:
    /// Contents by path.
    using Files = std::map<std::string, std::string>;

    /// In a new repository at the directory.
    RVGitWorkingTreeModel(std::string directory, unsigned seed);
    ~RVGitWorkingTreeModel();

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

    // What should be.

    [[nodiscard]] const Files& head() const { return head_; }
    [[nodiscard]] const Files& index() const { return index_; }
    [[nodiscard]] const Files& files() const { return files_; }
    /// Of HEAD, the index or the working tree.
    [[nodiscard]] std::set<std::string> allPaths() const;
    [[nodiscard]] bool isTracked(const std::string& path) const { return index_.contains(path); }

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] unsigned below(std::size_t limit) {
        return static_cast<unsigned>(random_() % limit);
    }

private:
    /// What a stash holds: the tracked files as they were in the working tree, and the untracked.
    struct StashedFiles {
        Files base;
        Files tracked;
        Files untracked;
    };

    /// One of all paths that the condition holds for, if any.
    template <typename Condition>
    [[nodiscard]] std::optional<std::string> pathWhere(Condition condition);
    [[nodiscard]] std::optional<std::string> unusedPath(bool forMove);
    [[nodiscard]] std::string randomText();
    [[nodiscard]] std::string edited(const std::string& text);
    void write(const std::string& path, const std::string& contents);
    [[nodiscard]] bool isOnDisk(const std::string& path) const { return files_.contains(path); }
    /// Of a file that both sides have.
    [[nodiscard]] static bool differ(const Files& before, const Files& after,
                                     const std::string& path) {
        return before.contains(path) && after.contains(path) && before.at(path) != after.at(path);
    }
    /// The tracked files as they are on disk.
    [[nodiscard]] Files trackedFiles() const;
    [[nodiscard]] bool isClean() const { return index_ == head_ && trackedFiles() == index_; }
    /// Stages some of the lines of a file in which the two differ, or takes them back.
    bool applyLines(const Files& before, const Files& after, bool stages);
    /// Some of the lines of the chunk that have changed.
    [[nodiscard]] std::set<std::uint64_t> someChangesOf(const RVGitDiffChunk& chunk);
    void expectDone(bool done);

    std::mt19937 random_;
    std::string directory_;
    std::shared_ptr<RVGitRepository> repository_;
    std::shared_ptr<RVGitWorkingTreeManager> manager_;
    std::optional<RVError> error_;
    unsigned numberOfLines_ = 0;
    Files head_;
    bool isBorn_ = false;
    Files index_;
    Files files_;
    std::vector<StashedFiles> stashes_;
};
