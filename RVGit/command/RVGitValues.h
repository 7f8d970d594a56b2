#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

class RVGitRefSpec;

/// What an object is.
enum RVGitObjectType : std::uint64_t {
    RVGitObjectTypeNone = 0,
    RVGitObjectTypeTree = 1,
    RVGitObjectTypeBlob = 2,
    RVGitObjectTypeCommit = 3,
    RVGitObjectTypeTag = 4,
};

/// Git's modes, but for RVGitFileModeExecutable, which is octal 100775 and not 100755: kept for
/// compatibility.
enum RVGitFileMode : std::uint64_t {
    RVGitFileModeNone = 0,
    RVGitFileModeDirectory = 16384,
    RVGitFileModeRegular = 33188,
    RVGitFileModeExecutable = 33277,
    RVGitFileModeSymbolicLink = 40960,
    RVGitFileModeSubmodule = 57344,
};

/// How a file differs: in a comparison, or in the working tree and the index.
enum RVGitFileStatus : std::uint64_t {
    RVGitFileStatusNone = 0,
    RVGitFileStatusUntracked = 1,
    RVGitFileStatusIgnored = 2,
    RVGitFileStatusUnchanged = 3,
    RVGitFileStatusAdded = 4,
    RVGitFileStatusCopied = 5,
    RVGitFileStatusModified = 6,
    RVGitFileStatusRenamed = 7,
    RVGitFileStatusTypeChanged = 8,
    RVGitFileStatusDeleted = 9,
    RVGitFileStatusUnmerged = 10,
};

/// Which version of a file an entry of the index holds: the staged one, or one of a conflict.
enum RVGitIndexStage : std::uint64_t {
    RVGitIndexStageDefault = 0,
    RVGitIndexStageBase = 1,
    RVGitIndexStageOurs = 2,
    RVGitIndexStageTheirs = 3,
};

/// Of which kind a ref is, by its name.
enum RVGitRefType : std::uint64_t {
    RVGitRefTypeNone = 0,
    RVGitRefTypeBranch = 1,
    RVGitRefTypeRemoteBranch = 2,
    RVGitRefTypeTag = 3,
    RVGitRefTypeStash = 4,
};

inline constexpr char RVGitHEADRevision[] = "HEAD";
inline constexpr char RVGitNullObjectHash[] = "0000000000000000000000000000000000000000";
inline constexpr char RVGitNullFile[] = "/dev/null";
inline constexpr char RVGitOriginRemoteName[] = "origin";
/// The remote that stands for the repository itself.
inline constexpr char RVGitLocalRemoteName[] = ".";
inline constexpr char RVGitMainBranchName[] = "main";
inline constexpr char RVGitMasterBranchName[] = "master";

// Enumerations from and to text.

/// "commit" and its like, in any case; anything else is None.
[[nodiscard]] RVGIT_EXPORT RVGitObjectType RVGitObjectTypeFromString(std::string_view text);
/// "Commit"; "None" for a value that is not listed, here and below.
[[nodiscard]] RVGIT_EXPORT std::string RVGitStringForObjectType(RVGitObjectType objectType);

/// "100644"; anything unknown is Regular.
[[nodiscard]] RVGIT_EXPORT RVGitFileMode RVGitFileModeFromString(std::string_view text);
/// The same, but absent for a text that is none of git's modes.
[[nodiscard]] RVGIT_EXPORT std::optional<RVGitFileMode> RVGitKnownFileModeFromString(
    std::string_view text);
/// "Regular".
[[nodiscard]] RVGIT_EXPORT std::string RVGitStringForFileMode(RVGitFileMode fileMode);

/// "1" to "3"; anything else is Default.
[[nodiscard]] RVGIT_EXPORT RVGitIndexStage RVGitIndexStageFromString(std::string_view text);
/// "Base"; "Default" for a value that is not listed.
[[nodiscard]] RVGIT_EXPORT std::string RVGitStringForIndexStage(RVGitIndexStage stage);

/// A status letter, as git prints it; anything unknown is Unchanged.
[[nodiscard]] RVGIT_EXPORT RVGitFileStatus RVGitFileStatusFromString(std::string_view text);
/// "Type Changed".
[[nodiscard]] RVGIT_EXPORT std::string RVGitStringForFileStatus(RVGitFileStatus status);
/// The letter; absent for None.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitShortStringForFileStatus(
    RVGitFileStatus status);

// Hashes.

inline namespace RVGIT_EXPORT rvgit {

/// Forty hexadecimal digits, in either case; one newline behind them is let pass.
[[nodiscard]] bool isValidCommitHash(std::string_view text);
/// Whether the text is, or begins with, a hash of 64 digits in lower case: that of an object in a
/// repository whose object format is SHA-256. Such repositories are not supported, and every parser
/// that meets such a hash fails with code 11.
[[nodiscard]] bool isSHA256Hash(std::string_view text);
[[nodiscard]] bool beginsWithSHA256Hash(std::string_view text);

}  // namespace rvgit

/// The same as isValidCommitHash().
[[nodiscard]] RVGIT_EXPORT bool RVGitValidateCommitHash(std::string_view hash);
/// The first 8 characters; a shorter hash comes back whole, an absent one absent.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitShortenHash(
    const std::optional<std::string>& hash);
/// The first characters; absent for an absent hash and for one that has fewer.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitShortenHashWithLength(
    const std::optional<std::string>& hash, std::size_t length);

// Ref names.

/// Puts the prefix of the type in front of a name that has none; "HEAD" stays.
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeFullRefName(std::string_view refName,
                                                            RVGitRefType refType);
/// Cuts the length of the type's prefix off a name that begins with "refs/".
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeShortRefName(std::string_view refName,
                                                             RVGitRefType refType);
/// The full name, on this side, of a remote's branch: "refs/remotes/origin/x".
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeFullRemoteRefName(
    const std::optional<std::string>& remoteName, std::string_view refName);
/// The reverse: the full name on the remote's side. Absent for a name that is not of the remote.
[[nodiscard]] RVGIT_EXPORT std::optional<std::string> RVGitMakeFullRefNameForRemote(
    const std::optional<std::string>& remoteName, std::string_view refName);
[[nodiscard]] RVGIT_EXPORT std::shared_ptr<RVGitRefSpec> RVGitMakeRefSpec(
    std::optional<std::string> localRefName, std::optional<std::string> remoteRefName);
/// Asks git whether the name is well formed, which costs a child process. False for an absent one.
[[nodiscard]] RVGIT_EXPORT bool RVGitValidateRefName(const std::optional<std::string>& refName);

// Revisions.

/// "revision:path"; an absent part counts as empty.
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeObjectReference(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath);
/// "second..first": the arguments are turned round on purpose.
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeRevisionRange(std::string_view first,
                                                              std::string_view second);
/// "first...second", in order.
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeRevisionComparisonString(std::string_view first,
                                                                         std::string_view second);

// Names of configuration sections and keys: "branch.NAME" and "branch.NAME.KEY".

[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeBranchConfigSection(std::string_view branch);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeBranchConfigKey(std::string_view branch,
                                                                std::string_view key);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeRemoteConfigSection(std::string_view remote);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeRemoteConfigKey(std::string_view remote,
                                                                std::string_view key);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeSVNRemoteConfigSection(std::string_view remote);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeSVNRemoteConfigKey(std::string_view remote,
                                                                   std::string_view key);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeSubmoduleConfigSection(std::string_view submodule);
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeSubmoduleConfigKey(std::string_view submodule,
                                                                   std::string_view key);

/// The full name of one of the library's queues.
[[nodiscard]] RVGIT_EXPORT std::string RVGitMakeQueueName(std::string_view label);

// Text.

inline namespace RVGIT_EXPORT rvgit {

/// A path as git quotes it, with its quotes and backslash escapes resolved. Text that does not
/// begin with a quote comes back unchanged; quoted text that is not ASCII only loses its first and
/// last character. Kept for compatibility: the letters a, b, v and f behind a backslash, as which
/// git writes the characters 7, 8, 11 and 12, are not known, and are lost with up to two characters
/// that follow, so that the path of another file may come back.
[[nodiscard]] std::string unquotedCString(std::string_view text);
/// The text with a backslash in front of each of "![]?#*".
[[nodiscard]] std::string stringByEscapingReservedGitPatternCharacters(std::string_view text);

}  // namespace rvgit
