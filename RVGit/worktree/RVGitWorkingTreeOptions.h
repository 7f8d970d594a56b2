#pragma once

#include <cstdint>

/// Which untracked files `git status` shows.
enum RVGitUntrackedFilesMode : std::uint64_t {
    /// Not passed: git's configuration decides.
    RVGitUntrackedFilesModeDefault = 0,
    RVGitUntrackedFilesModeNo = 1,
    /// Directories as one.
    RVGitUntrackedFilesModeNormal = 2,
    RVGitUntrackedFilesModeAll = 3,
};

/// Which changes of submodules `git status` leaves out.
enum RVGitIgnoreSubmodulesMode : std::uint64_t {
    /// Not passed: git's configuration decides.
    RVGitIgnoreSubmodulesModeDefault = 0,
    RVGitIgnoreSubmodulesModeNone = 1,
    /// Kept for compatibility: passes the word "tracked", which git refuses.
    RVGitIgnoreSubmodulesModeTracked = 2,
    RVGitIgnoreSubmodulesModeDirty = 3,
    RVGitIgnoreSubmodulesModeAll = 4,
};

// What a listing of the working tree contains. Each may be absent.

/// Boolean, false if absent: lists every entry of the index, changed or not.
inline constexpr char RVGitWorkingTreeOptionIncludeUnchangedFiles[] =
    "RVGitWorkingTreeOptionIncludeUnchangedFiles";
/// Boolean, false if absent: lists entries that git is told to take for unchanged, too.
inline constexpr char RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles[] =
    "RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles";
/// Boolean: lists ignored files, too.
inline constexpr char RVGitWorkingTreeOptionIncludeIgnoredFiles[] =
    "RVGitWorkingTreeOptionIncludeIgnoredFiles";
/// Boolean, false if absent: loads the index entries of submodules, so that they have their modes.
/// A listing that finds a directory that is not untracked among the changes sets it by itself.
inline constexpr char RVGitWorkingTreeOptionIncludeSubmodules[] =
    "RVGitWorkingTreeOptionIncludeSubmodules";
/// A RVGitUntrackedFilesMode; if absent, git's configuration decides.
inline constexpr char RVGitWorkingTreeOptionUntrackedFilesMode[] =
    "RVGitWorkingTreeOptionUntrackedFilesMode";
/// A RVGitIgnoreSubmodulesMode; if absent, git's configuration decides.
inline constexpr char RVGitWorkingTreeOptionIgnoreSubmodulesMode[] =
    "RVGitWorkingTreeOptionIgnoreSubmodulesMode";
/// Kept for compatibility: nothing reads it.
inline constexpr char RVGitWorkingTreeOptionRecursive[] = "RVGitWorkingTreeOptionRecursive";
