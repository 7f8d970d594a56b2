#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/merge/RVGitMergeManager.h"
#include "tests/support/RVGitTestCase.h"

/// Where an operation is tried.
enum class RVGitMergePlace {
    Repository,
    DetachedHead,
    LinkedWorktree,
    WorktreeOfBareRepository,
    Submodule,
};
inline constexpr RVGitMergePlace allMergePlaces[] = {
    RVGitMergePlace::Repository, RVGitMergePlace::DetachedHead, RVGitMergePlace::LinkedWorktree,
    RVGitMergePlace::WorktreeOfBareRepository, RVGitMergePlace::Submodule};

/// Base of tests of what can stop half way. Every editor that git could open fails loudly.
///
/// The history, every commit a tag of its own subject, each line a branch of its first word:
///
///     Base                        "file" is "base", "other" is "other"
///       main:   Ours              "file" is "ours"
///       topic:  One Two Three Four    new "one"; "file" is "two"; new "three"; "file" is "four"
///       clean:  Clean             new "clean"
///       same:   Same After        "file" is "ours", as in Ours; new "after"
///       third:  Third             "file" is "third"
///       later:  Early Middle Late     "file" is "early"; "file" is "middle"; new "late"
///       gone:   Gone              "file" is deleted
class RVGitMergeTestCase : public RVGitTestCase {
protected:
    RVGitMergeTestCase();

    /// Makes a working tree with "main" checked out, and a manager for it; the former one is given
    /// up.
    void makePlace(RVGitMergePlace place);
    /// Its working tree.
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const {
        return manager_->repository();
    }
    [[nodiscard]] RVGitMergeManager& manager() const { return *manager_; }

    /// The real git in the working tree.
    std::string gitHere(const std::vector<std::string>& arguments) const;
    /// The same of one that must stop.
    void stopGit(const std::vector<std::string>& arguments) const;
    [[nodiscard]] std::string hash(const std::string& revision) const;
    /// Checks the branch out, or its commit where HEAD is to be detached.
    void checkOut(const std::string& branch) const;
    void write(const std::string& name, std::string_view contents) const;
    [[nodiscard]] std::string read(const std::string& name) const;
    /// A rebase onto main by the apply backend.
    void stopRebaseByApplying() const;
    /// Whether git itself chooses the merge backend. An older one chooses the other, which knows no
    /// editor.
    [[nodiscard]] static bool rebasesByMerging();
    /// The title that git gives a merge into main; older ones name main, too.
    [[nodiscard]] static testing::Matcher<const std::string&> isTitleOfMerge(
        const std::string& branch);
    /// The subjects of the last commits, the newest first.
    [[nodiscard]] std::vector<std::string> subjects(std::size_t count) const;
    /// The whole message of HEAD.
    [[nodiscard]] std::string message() const;
    /// "refs/heads/<branch>", or absent where HEAD is detached.
    [[nodiscard]] std::optional<std::string> refName(const std::string& branch) const;
    /// Has the rebases of git itself work off this list; "%One" is the hash of One.
    void setSequence(const std::string& list);

private:
    void importHistory(const std::string& repositoryPath) const;

    RVGitMergePlace place_ = RVGitMergePlace::Repository;
    int numberOfPlaces_ = 0;
    std::string path_;
    std::shared_ptr<RVGitMergeManager> manager_;
};
