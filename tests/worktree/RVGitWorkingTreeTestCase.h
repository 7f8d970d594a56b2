#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "tests/support/RVGitRepositoryTestCase.h"

/// Base of tests that list a working tree.
class RVGitWorkingTreeTestCase : public RVGitRepositoryTestCase {
protected:
    using Entry = RVGitWorkingTreeEntry;
    using EntriesByPath = std::map<std::string, std::shared_ptr<Entry>>;

    /// Writes the file below the repository and stages it.
    void stageFile(const std::string& file, std::string_view contents) const;
    /// Commits whatever is staged.
    void commitIndex(const std::string& message = "Message") const;
    /// Twenty lines that no other name has, so that git sees a rename.
    [[nodiscard]] static std::string contentsForFile(const std::string& file);

    /// A branch on which "both", "ours-deleted" and "theirs-deleted" are changed against the
    /// current one, "added" is added, and "renamed" has another name; and a merge that stops with
    /// each of the seven kinds of conflict. Commits whatever is staged before that.
    void makeConflicts() const;
    /// Adds a submodule of one commit at the path, and commits it; returns its absolute path.
    std::string addSubmodule(const std::string& path) const;
    /// Fails the test if there is no list.
    [[nodiscard]] RVGitWorkingTreeEntry::Entries entries(
        const std::optional<RVOptions>& options = std::nullopt,
        const std::optional<std::string>& filePath = std::nullopt) const;
    /// Fails the test if a path appears twice.
    [[nodiscard]] EntriesByPath entriesByPath(
        const std::optional<RVOptions>& options = std::nullopt) const;
    /// The entry of that path; fails the test, and gives a new one, if there is none.
    [[nodiscard]] std::shared_ptr<Entry> entryAt(
        const std::string& filePath, const std::optional<RVOptions>& options = std::nullopt) const;

    /// An entry that no listing has made, so that nothing is attached to it.
    [[nodiscard]] std::shared_ptr<Entry> newEntry(RVGitFileStatus leftStatus,
                                                  RVGitFileStatus rightStatus,
                                                  const std::string& filePath = "file.txt") const;
    [[nodiscard]] static std::optional<RVError> filledPlace() { return RVError("before", 1); }

    /// The letters as git prints them (those of the sides of a conflict), the mode as a word and
    /// the path: "RM Regular new <- old".
    [[nodiscard]] static std::string textOfEntry(const RVGitWorkingTreeEntry& entry);
    /// The texts of the entries in their order.
    [[nodiscard]] std::vector<std::string> listing(
        const std::optional<RVOptions>& options = std::nullopt,
        const std::optional<std::string>& filePath = std::nullopt) const;
};
