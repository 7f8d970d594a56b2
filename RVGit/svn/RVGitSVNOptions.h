#pragma once

// Options of RVGitSVNCloneCommand, and of RVGitRemote where it makes a Subversion remote.

/// Boolean: trunk, branches and tags stand in the directories of these names.
inline constexpr char RVGitSVNOptionStandardDirectoryLayout[] =
    "RVGitSVNOptionStandardDirectoryLayout";
/// Lists of text: directories of the Subversion repository.
inline constexpr char RVGitSVNOptionTrunkDirectories[] = "RVGitSVNOptionTrunkDirectories";
inline constexpr char RVGitSVNOptionBranchesDirectories[] = "RVGitSVNOptionBranchesDirectories";
inline constexpr char RVGitSVNOptionTagsDirectories[] = "RVGitSVNOptionTagsDirectories";
