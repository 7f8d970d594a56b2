#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorCodes.h"

const RVGitErrorTable& RVGitCommand::sharedGitErrorDefinitions() {
    static const RVGitErrorTable table = {
        {.errorCode = RVGitCommandUsageError,
         .exitCodes = {129},
         .standardErrorPatterns = {"^Usage:"}},
        {.errorCode = RVGitCommandUsageError,
         .exitCodes = {1},
         .standardOutputPatterns = {"^Usage:"}},
        {.errorCode = RVGitConfigBadValueError,
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: bad config value", "fatal: bad numeric config value"}},
        {.errorCode = RVGitGPGSigningKeyUnvailableError,
         .exitCodes = {128},
         .standardErrorPatterns = {"error: gpg failed to sign the data"}},
        {.errorCode = RVGitGPGSigningFailedError,
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: cannot run", "No such file or directory"}},
        {.errorCode = RVGitGPGSignatureMissingError,
         .exitCodes = {128},
         .standardErrorPatterns = {"does not have a GPG signature"}},
        {.errorCode = RVGitGPGSignatureUntrustedError,
         .exitCodes = {128},
         .standardErrorPatterns = {"has an untrusted GPG signature"}},
        {.errorCode = RVGitBadDefaultRevisionError,
         .exitCodes = {128},
         .standardErrorPatterns = {"bad default revision"}},
        // Has no entry in the catalogue: commands absorb it.
        {.errorCode = 107,
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: your current branch '(.+)' does not have any commits "
                                   "yet"}},
        {.errorCode = RVGitBadRevisionError,
         .exitCodes = {1},
         .standardErrorPatterns = {"checkout (.+): command returned error:"}},
        {.errorCode = RVGitRemoteSyncError, .commandNames = {"pull", "push"}, .exitCodes = {1}},
        {.errorCode = RVGitRemoteRepositoryNotFoundError,
         .exitCodes = {128},
         .standardErrorPatterns = {"does not appear to be a git repository", "not found",
                                   "Could not find Repository"}},
        {.errorCode = RVGitRemoteConnectionError,
         .exitCodes = {128},
         .standardErrorPatterns = {"Connection refused", "Operation timed out"}},
        {.errorCode = RVGitRemoteAuthError,
         .exitCodes = {128},
         .standardErrorPatterns = {"Too many authentication failures", "Authentication failed",
                                   "Permission denied", "fatal: HTTP request failed",
                                   "fatal: unable to access"}},
        {.errorCode = RVGitRefsReadError,
         .exitCodes = {255},
         .standardErrorPatterns = {"error: some refs could not be read"}},
        {.errorCode = RVGitNoWorkTreeError,
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: This operation must be run in a work tree"}},
        {.errorCode = RVGitNoWorkTreeError,
         .exitCodes = {1},
         .standardErrorPatterns = {"cannot be used without a working tree"}},
        {.errorCode = RVGitNoGitRepoError,
         .exitCodes = {128},
         .standardErrorPatterns = {"fatal: Not a git repository"}},
        {.errorCode = RVGitAskpassError,
         .exitCodes = {128},
         .standardErrorPatterns = {"Device not configured"}},
        {.errorCode = RVGitIndexLockError,
         .standardErrorPatterns = {"fatal: Unable to create .+index.lock.+: File exists"}},
        {.errorCode = RVGitNoDefaultMergeBranchError,
         .exitCodes = {1},
         .standardErrorPatterns = {"you must specify a branch",
                                   "There are no candidates for merging among the refs that you "
                                   "just fetched"}},
    };
    return table;
}

const RVGitErrorTable& RVGitCommand::gitErrorDefinitions() {
    static const RVGitErrorTable table;
    return table;
}
