#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorCodes.h"

const RVGitErrorTable& RVGitCommand::sharedGitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitCommandUsageError).exitCode(129).standardError("^Usage:"),
        gitErrorRow(RVGitCommandUsageError).exitCode(1).standardOutput("^Usage:"),
        gitErrorRow(RVGitConfigBadValueError)
            .exitCode(128)
            .standardError("fatal: bad config value")
            .standardError("fatal: bad numeric config value"),
        gitErrorRow(RVGitGPGSigningKeyUnvailableError)
            .exitCode(128)
            .standardError("error: gpg failed to sign the data"),
        gitErrorRow(RVGitGPGSigningFailedError)
            .exitCode(128)
            .standardError("fatal: cannot run")
            .standardError("No such file or directory"),
        gitErrorRow(RVGitGPGSignatureMissingError)
            .exitCode(128)
            .standardError("does not have a GPG signature"),
        gitErrorRow(RVGitGPGSignatureUntrustedError)
            .exitCode(128)
            .standardError("has an untrusted GPG signature"),
        gitErrorRow(RVGitBadDefaultRevisionError)
            .exitCode(128)
            .standardError("bad default revision"),
        // Has no entry in the catalogue: commands absorb it.
        gitErrorRow(107).exitCode(128).standardError(
            "fatal: your current branch '(.+)' does not have any commits "
            "yet"),
        gitErrorRow(RVGitBadRevisionError)
            .exitCode(1)
            .standardError("checkout (.+): command returned error:"),
        gitErrorRow(RVGitRemoteSyncError).command("pull").command("push").exitCode(1),
        gitErrorRow(RVGitRemoteRepositoryNotFoundError)
            .exitCode(128)
            .standardError("does not appear to be a git repository")
            .standardError("not found")
            .standardError("Could not find Repository"),
        gitErrorRow(RVGitRemoteConnectionError)
            .exitCode(128)
            .standardError("Connection refused")
            .standardError("Operation timed out"),
        gitErrorRow(RVGitRemoteAuthError)
            .exitCode(128)
            .standardError("Too many authentication failures")
            .standardError("Authentication failed")
            .standardError("Permission denied")
            .standardError("fatal: HTTP request failed")
            .standardError("fatal: unable to access"),
        gitErrorRow(RVGitRefsReadError)
            .exitCode(255)
            .standardError("error: some refs could not be read"),
        gitErrorRow(RVGitNoWorkTreeError)
            .exitCode(128)
            .standardError("fatal: This operation must be run in a work tree"),
        gitErrorRow(RVGitNoWorkTreeError)
            .exitCode(1)
            .standardError("cannot be used without a working tree"),
        gitErrorRow(RVGitNoGitRepoError).exitCode(128).standardError("fatal: Not a git repository"),
        gitErrorRow(RVGitAskpassError).exitCode(128).standardError("Device not configured"),
        gitErrorRow(RVGitIndexLockError)
            .standardError("fatal: Unable to create .+index.lock.+: File exists"),
        gitErrorRow(RVGitNoDefaultMergeBranchError)
            .exitCode(1)
            .standardError("you must specify a branch")
            .standardError("There are no candidates for merging among the refs that you "
                           "just fetched"),
    };
    return *table;
}
