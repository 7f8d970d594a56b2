#pragma once

/// The home of the options of RVGitLogCommand, which RVGitCommit's queries and the reflog take
/// too. The value of each key is its own name.
class RVGitLogCommandOptions {};

// Booleans.
inline constexpr char RVGitLogOptionDecorate[] = "RVGitLogOptionDecorate";
inline constexpr char RVGitLogOptionFirstParent[] = "RVGitLogOptionFirstParent";
/// Kept for compatibility: has no effect. RVGitLogCommand::setUsesExtendedRegexSyntax() has.
inline constexpr char RVGitLogOptionExtendedRegexSyntax[] = "RVGitLogOptionExtendedRegexSyntax";
inline constexpr char RVGitLogOptionVerifiesSignatures[] = "RVGitLogOptionVerifiesSignatures";
inline constexpr char RVGitLogOptionReverseOrder[] = "RVGitLogOptionReverseOrder";
inline constexpr char RVGitLogOptionSortByTopoOrder[] = "RVGitLogOptionSortByTopoOrder";
inline constexpr char RVGitLogOptionSortByDate[] = "RVGitLogOptionSortByDate";
inline constexpr char RVGitLogOptionFollowRenames[] = "RVGitLogOptionFollowRenames";
inline constexpr char RVGitLogOptionNoRenames[] = "RVGitLogOptionNoRenames";
inline constexpr char RVGitLogOptionAllBranches[] = "RVGitLogOptionAllBranches";
inline constexpr char RVGitLogOptionAllRemoteBranches[] = "RVGitLogOptionAllRemoteBranches";
inline constexpr char RVGitLogOptionAllTags[] = "RVGitLogOptionAllTags";
/// All refs, whatever the three above say.
inline constexpr char RVGitLogOptionAllRefs[] = "RVGitLogOptionAllRefs";

// Unsigned numbers; 0 is no limit and no offset.
inline constexpr char RVGitLogOptionLimit[] = "RVGitLogOptionLimit";
inline constexpr char RVGitLogOptionOffset[] = "RVGitLogOptionOffset";

/// Text: the path of the file that names who may sign with which SSH key. Read only together with
/// RVGitLogOptionVerifiesSignatures.
inline constexpr char RVGitLogOptionAllowedSignersFile[] = "RVGitLogOptionAllowedSignersFile";

// Lists of text: git's patterns, case ignored, of which one must match.
inline constexpr char RVGitLogOptionSearchPatterns[] = "RVGitLogOptionSearchPatterns";
inline constexpr char RVGitLogOptionSearchAuthorPatterns[] = "RVGitLogOptionSearchAuthorPatterns";
inline constexpr char RVGitLogOptionSearchCommitterPatterns[] =
    "RVGitLogOptionSearchCommitterPatterns";
/// Searched in the lines that a commit adds or removes.
inline constexpr char RVGitLogOptionSearchContentPatterns[] = "RVGitLogOptionSearchContentPatterns";

// Dates.
inline constexpr char RVGitLogOptionSinceDate[] = "RVGitLogOptionSinceDate";
inline constexpr char RVGitLogOptionUntilDate[] = "RVGitLogOptionUntilDate";
