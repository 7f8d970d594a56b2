#pragma once

#include <map>
#include <string>
#include <vector>

/// All of a repository that an operation which failed, or was given up, must leave as it was: read
/// by the git in PATH and from the disk, without the library, and changing nothing.
///
///     const RVRepositorySnapshot before(path);
///     // ... start a rebase, abort it ...
///     EXPECT_EQ(RVRepositorySnapshot(path).differencesFrom(before), "");
struct RVRepositorySnapshot {
    /// `workingTree` is the top of a working tree, a linked one too, or a bare repository. Throws
    /// std::runtime_error where git finds no repository there.
    explicit RVRepositorySnapshot(const std::string& workingTree);

    /// The contents of the file HEAD: a branch or a hash.
    std::string head;
    /// The hash of every ref, by full name; ORIG_HEAD and its like are none.
    std::map<std::string, std::string> refs;
    /// The hash that the last entry of a reflog arrives at, by the name of the ref, HEAD too.
    std::map<std::string, std::string> reflogEnds;
    /// The entries of the index with flags, modes, hashes and stages.
    std::vector<std::string> index;
    /// Every file outside the git directory with its kind, its run bit, and its bytes or the target
    /// of a link; a directory counts by what is in it.
    std::map<std::string, std::string> workingTree;
    /// What tells of an operation under way: "MERGE_HEAD", "rebase-merge", ...
    std::vector<std::string> stateFiles;
    /// Files of git's that end in ".lock".
    std::vector<std::string> locks;

    /// What is not as in the other one, a line for each; empty if all is.
    [[nodiscard]] std::string differencesFrom(const RVRepositorySnapshot& before) const;
};
