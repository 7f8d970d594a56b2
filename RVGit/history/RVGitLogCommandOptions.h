#pragma once

/// The home of the options of RVGitLogCommand, which RVGitCommit's queries and the reflog take
/// too. The value of each key is its own name.
class RVGitLogCommandOptions {};

// Booleans, false unless given.

/// Tells of each commit the refs that point to it. RVGitCommit's lists do so by themselves.
inline constexpr char RVGitLogOptionDecorate[] = "RVGitLogOptionDecorate";
/// Follows the first parent of each merge alone.
inline constexpr char RVGitLogOptionFirstParent[] = "RVGitLogOptionFirstParent";
/// Kept for compatibility: has no effect. RVGitLogCommand::setUsesExtendedRegexSyntax() has.
inline constexpr char RVGitLogOptionExtendedRegexSyntax[] = "RVGitLogOptionExtendedRegexSyntax";
/// Verifies signatures: gpg or ssh-keygen runs for each commit.
inline constexpr char RVGitLogOptionVerifiesSignatures[] = "RVGitLogOptionVerifiesSignatures";
/// The oldest first; limit and offset count from the newest all the same.
inline constexpr char RVGitLogOptionReverseOrder[] = "RVGitLogOptionReverseOrder";
/// No parent ahead of its children, and lines of history not mixed. Without this and the next, by
/// the committer's date alone.
inline constexpr char RVGitLogOptionSortByTopoOrder[] = "RVGitLogOptionSortByTopoOrder";
/// No parent ahead of its children, and otherwise by the committer's date.
inline constexpr char RVGitLogOptionSortByDate[] = "RVGitLogOptionSortByDate";
/// Goes on with the former name of a file; takes exactly one path.
inline constexpr char RVGitLogOptionFollowRenames[] = "RVGitLogOptionFollowRenames";
/// Of diffs: a rename is a deletion and an addition.
inline constexpr char RVGitLogOptionNoRenames[] = "RVGitLogOptionNoRenames";
/// Begins at all branches, beside the revisions that are given; so the next two.
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

// Dates, of the committer: commits that are not older, and not newer, than these.
inline constexpr char RVGitLogOptionSinceDate[] = "RVGitLogOptionSinceDate";
inline constexpr char RVGitLogOptionUntilDate[] = "RVGitLogOptionUntilDate";
