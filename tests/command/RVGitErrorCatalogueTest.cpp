#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/command/RVGitError.h"

using testing::HasSubstr;
using testing::Optional;

namespace {

struct NamedCode {
    std::int64_t number;
    std::int64_t code;
    std::string_view name;
    std::string_view title;
    std::string_view reason;
    std::vector<std::string_view> keys = {};
};

#define NAMED(constant) constant, #constant

// The texts letter for letter: translations go by them.
const NamedCode namedCodes[] = {
    {1, NAMED(RVGitRVGitGenericError), "A Git Error Occurred",
     "A Git command failed to execute. Please see the Git error message below for details."},
    {10, NAMED(RVGitCommandUsageError), "Internal Git API Error",
     "A Git command failed to execute because of wrong arguments."},
    {11, NAMED(RVGitOutputParserError), "Internal Git API Error",
     "Output from a Git command could not be parsed."},
    {100,
     NAMED(RVGitNoGitRepoError),
     "No Git Repository Found",
     "The path “%@” does not contain a valid Git repository.",
     {"RVGitRepositoryPathErrorKey"}},
    {101, NAMED(RVGitNoRefsError), "NO_REFS_ERROR_DESCRIPTION", "NO_REFS_ERROR_FAILURE_REASON"},
    {102,
     NAMED(RVGitNoWorkTreeError),
     "No Working Tree Found",
     "The Git command requires to be run in a working tree and the repository at path “%@” appears "
     "to be a bare repository.",
     {"RVGitRepositoryPathErrorKey"}},
    {103,
     NAMED(RVGitIndexLockError),
     "Index Locked by Another Git Process",
     "The repository at path “%@” is locked by another Git process. If there is no other Git "
     "process running, the file “.git/index.lock” needs to be removed manually.",
     {"RVGitRepositoryPathErrorKey"}},
    {104, NAMED(RVGitRefsReadError), "REFS_READ_ERROR_DESCRIPTION",
     "REFS_READ_ERROR_FAILURE_REASON"},
    {105, NAMED(RVGitBadDefaultRevisionError), "BAD_DEFAULT_REVISION_ERROR_DESCRIPTION",
     "BAD_DEFAULT_REVISION_ERROR_FAILURE_REASON"},
    {106, NAMED(RVGitBadRevisionError), "BAD_REVISION_ERROR_DESCRIPTION",
     "BAD_REVISION_ERROR_FAILURE_REASON"},
    {108, NAMED(RVGitGPGSigningKeyUnvailableError), "Could Not Sign Data",
     "Signing is active but no valid signing key could be found."},
    {109, NAMED(RVGitGPGSignatureMissingError), "Cannot Merge",
     "The source contains unsigned commits."},
    {110, NAMED(RVGitGPGSignatureUntrustedError), "Cannot Merge",
     "The source contains commits with an untrusted signature."},
    {111, NAMED(RVGitGPGSigningFailedError), "Could Not Sign Data",
     "Signing failed because either the signing program is missing or an invalid signing key was "
     "used."},
    {200, NAMED(RVGitAskpassError), "Git Askpass Error",
     "The program set for GIT_ASKPASS did not respond."},
    {201, NAMED(RVGitRemoteSyncError), "Synchronization With Remote Failed",
     "Connection to the remote was successful but an error was encountered."},
    {202, NAMED(RVGitRemoteAuthError), "Connection to Remote Failed",
     "Unable to connect to the remote repository. Please verify the URL and authentication "
     "information."},
    {203, NAMED(RVGitRemoteRepositoryNotFoundError), "Remote Repository Not Found",
     "Connection to the remote was successful but no Git repository found."},
    {204, NAMED(RVGitRemoteConnectionError), "Connection to Remote Failed",
     "Unable to connect to the remote repository. Please verify the URL and authentication "
     "information."},
    {300,
     NAMED(RVGitDescriptionReadError),
     "Failed to Write Description",
     "Failed to read the description of the repository at path “%@”. Make sure the path exists and "
     "is readable for your user.",
     {"RVGitRepositoryPathErrorKey"}},
    {301,
     NAMED(RVGitDescriptionWriteError),
     "Failed to Write Description",
     "Failed to write the description for the repository at path “%@”. Make sure the path is "
     "writable for your user.",
     {"RVGitRepositoryPathErrorKey"}},
    {400,
     NAMED(RVGitIgnoresReadError),
     "Failed to Write Ignores",
     "Failed to read ignores file at path “%@”. Make sure the path exists and is readable for your "
     "user.",
     {"RVGitIgnoresPathErrorKey"}},
    {401,
     NAMED(RVGitIgnoresWriteError),
     "Failed to Write Description",
     "Failed to write the ignores file at path “%@”. Make sure the path is writable for your user.",
     {"RVGitIgnoresPathErrorKey"}},
    {1000,
     NAMED(RVGitConfigBadValueError),
     "Could Not Read Config Key Value",
     "The config key “%@” either has multiple values or could not be returned as a boolean or "
     "integer value.",
     {"RVGitConfigKeyErrorKey"}},
    {1001, NAMED(RVGitConfigInvalidFileError), "CONFIG_INVALID_FILE_ERROR_DESCRIPTION",
     "CONFIG_INVALID_FILE_ERROR_FAILURE_REASON"},
    {1002,
     NAMED(RVGitConfigKeyNotFoundError),
     "Could Not Find Config Key",
     "The config key “%@” does not exit.",
     {"RVGitConfigKeyErrorKey"}},
    {1003,
     NAMED(RVGitConfigMultipleValuesForKeyError),
     "Config Key Has Multiple Values",
     "The config key “%@” has multiple values but retrieving or setting a single value was "
     "requested.",
     {"RVGitConfigKeyErrorKey"}},
    {1004,
     NAMED(RVGitConfigReadError),
     "Could Not Read Config File",
     "Unable to read the config file at path “%@”. Please make sure the config file is a valid Git "
     "configuration file and that you have permissions to read it.",
     {"RVGitConfigFileErrorKey"}},
    {1005, NAMED(RVGitConfigSectionNotFoundError), "Could Not Find Config Section",
     "A config section with name “%@” could not be found."},
    {1006,
     NAMED(RVGitConfigWriteError),
     "Could Not Write Config File",
     "Unable to write to the config file at path “%@”. Please make sure you have permissions to "
     "write the config file.",
     {"RVGitConfigFileErrorKey"}},
    {1100,
     NAMED(RVGitInitRepositoryFileExistsError),
     "Failed to Initialize Repository",
     "Failed to initialize a new Git repository at path “%@”. The path exists but is not an empty "
     "directory.",
     {"RVGitRepositoryPathErrorKey"}},
    {1101,
     NAMED(RVGitInitRepositoryPathNotWritableError),
     "Failed to Initialize Repository",
     "Failed to initialize a new Git repository at path “%@”. The path is not writable for your "
     "user.",
     {"RVGitRepositoryPathErrorKey"}},
    {1102,
     NAMED(RVGitInitRepositoryInvalidPathError),
     "Failed to Initialize Repository",
     "Failed to initialize a new Git repository at path “%@”. The path exists but is not an empty "
     "directory.",
     {"RVGitRepositoryPathErrorKey"}},
    {1200,
     NAMED(RVGitBlobReadError),
     "Could Not Read Blob",
     "Could not read blob for current file at path “%@”.",
     {"RVGitFilePathErrorKey"}},
    {1201, NAMED(RVGitBlobNotFoundError), "Could Not Load Blob",
     "Could not load blob. The object does not exist."},
    {1300,
     NAMED(RVGitAddFilesError),
     "Could Not Stage All Files",
     "Could not stage all files. The file path “%@” could not be found.",
     {"RVGitFilePathErrorKey"}},
    {1400,
     NAMED(RVGitApplyPatchCorruptError),
     "Could Not Apply Patch",
     "Could not apply the patch. The patch seems to be corrupted at line %@.",
     {"RVGitPatchLineNumberErrorKey"}},
    {1401, NAMED(RVGitApplyPatchWithNoChangesError), "Could Not Apply Patch",
     "Could not apply the patch because it does not introduce any changes."},
    {1402, NAMED(RVGitApplyPatchWithNoTargetError), "Could Not Apply Patch",
     "Could not apply the patch. The target file of the patch is missing."},
    {1500,
     NAMED(RVGitArchiveFilesError),
     "Failed to Create Archive",
     "The file path “%@” could not be found in revision “%@”.",
     {"RVGitFilePathErrorKey", "RVGitRevisionErrorKey"}},
    {1600,
     NAMED(RVGitCheckoutUncommittedChangesError),
     "Could Not Checkout Revision",
     "Could not checkout revision “%@”. The working tree contains changes that would have been "
     "overwritten. Please commit or stash all changes and try again.",
     {"RVGitRevisionErrorKey"}},
    {1700,
     NAMED(RVGitCreateTagAlreadyExistsError),
     "Could Not Create Tag",
     "A tag with name “%@” already exists.",
     {"RVGitRefNameErrorKey"}},
    {1701,
     NAMED(RVGitCreateTagInvalidObjectError),
     "Could Not Create Tag",
     "The revision referenced by “%@” does not appear to be valid.",
     {"RVGitRevisionErrorKey"}},
    {1702,
     NAMED(RVGitDeleteTagNotFoundError),
     "Could Not Delete Tag",
     "Could not find a tag with name “%@”.",
     {"RVGitRefNameErrorKey"}},
    {1800, NAMED(RVGitSVNInstallationError), "Git-SVN Installation Error",
     "The git-svn installation could not find required libraries. Please check your Git and "
     "git-svn installation."},
    {1900, NAMED(RVGitLogNoSuchRevisionError), "LOG_NO_SUCH_REVISION_ERROR_DESCRIPTION",
     "LOG_NO_SUCH_REVISION_ERROR_FAILURE_REASON"},
    {2000, NAMED(RVGitMergeConflictsError), "Merging Failed",
     "Could not merge all changes automatically. Please resolve all conflicts and commit to "
     "complete the merge."},
    {2001, NAMED(RVGitMergeUncommittedChangesError), "Merging Failed",
     "Could not start merge. Your working tree contains changes that would be overwritten by "
     "merge. Please commit or stash your changes before merging."},
    {2002, NAMED(RVGitMergeUnmergedChangesError), "Merging Failed",
     "Could not start merge. Your working tree contains unmerged changes. Please resolve and "
     "commit any changes before merging."},
    {2004, NAMED(RVGitMergetoolMergeFailedError), "MERGETOOL_MERGE_FAILED_ERROR_DESCRIPTION",
     "MERGETOOL_MERGE_FAILED_ERROR_FAILURE_REASON"},
    {2005,
     NAMED(RVGitNoDefaultMergeBranchError),
     "Synchronization With Remote Failed",
     "Synchronization with the remote failed. There is no remote branch configured to merge with "
     "branch “%@” by default.",
     {"RVGitRefNameErrorKey"}},
    {2006, NAMED(RVGitMergeWillFailDueToConflictsError), "Merging Will Fail",
     "There will be conflicts when performing a merge."},
    {2100,
     NAMED(RVGitMoveFileAlreadyExistsError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The destination file already exists.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2101,
     NAMED(RVGitMoveFileDestinationDirectoryMissingError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The destination directory does not exist.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2102,
     NAMED(RVGitMoveFileNotUnderVersionControlError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The file is not under version control.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2103,
     NAMED(RVGitMoveFileOutsideRepositoryError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The destination file is outside the repository.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2104,
     NAMED(RVGitMoveFileSelfTargetError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The source and destination file are identical.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2105,
     NAMED(RVGitMoveFileSourceDirectoryEmptyError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The file is a directory and not under version control.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2106,
     NAMED(RVGitMoveFileSourceNotFoundError),
     "Could Not Rename File",
     "Could not move the file “%@” to “%@”. The source file does not exist.",
     {"RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"}},
    {2200, NAMED(RVGitRebaseConflictsError), "Rebase Failed",
     "A merge conflict occurred while rebasing. Please resolve all conflicts and press continue to "
     "commit your changes and to proceed with the next commit."},
    {2201, NAMED(RVGitRebaseUncommittedChangesError), "Rebase Failed",
     "Could not start rebase. Your working tree contains changes that would be overwritten by "
     "rebase. Please commit or stash your changes before rebasing."},
    {2202, NAMED(RVGitRebaseUnmergedChangesError), "Rebase Failed",
     "Failed to continue with rebase. You have to resolve all unmerged changes before you can "
     "continue."},
    {2300,
     NAMED(RVGitCreateRemoteAlreadyExistsError),
     "Could Not Create Remote",
     "A remote with name “%@” already exists",
     {"RVGitRemoteNameErrorKey"}},
    {2301,
     NAMED(RVGitCreateRemoteInvalidNameError),
     "Could Not Create Remote",
     "The remote name “%@” is invalid.",
     {"RVGitRemoteNameErrorKey"}},
    {2302,
     NAMED(RVGitRenameRemoteAlreadyExistsError),
     "Remote Name Already Exists",
     "A remote with name “%@” already exists. Please choose another name.",
     {"RVGitRemoteNameErrorKey"}},
    {2303, NAMED(RVGitRenameRemoteInvalidNameError), "Invalid Remote Name",
     "Remote names may not contain spaces, slashes, dots or control characters."},
    {2400, NAMED(RVGitRemotePushNoUpstreamBranchError), "Synchronization With Remote Failed",
     "Synchronization with the remote failed. The current branch has no upstream branch "
     "configured. Please set up a tracking for the current branch."},
    {2401,
     NAMED(RVGitRemotePushRejectedError),
     "Synchronization With Remote Failed",
     "Synchronization with the remote failed. The commit history of branch “%@” can not be "
     "appended to the remote commit history. If you enforce it, it might result in the loss of "
     "commits.\n\nThis usually happens when you change a commit after you have already pushed it "
     "to the remote.",
     {"RVGitRevisionErrorKey"}},
    {2500,
     NAMED(RVGitCreateBranchFromStashInvalidNameError),
     "Could Not Create Branch",
     "Could not create new branch from stash. “%@” is not a valid branch name.",
     {"RVGitRefNameErrorKey"}},
    {2501, NAMED(RVGitCreateBranchFromStashNotFoundError), "Could Not Create Branch",
     "Could not create new branch from stash. The stash could not be found."},
    {2502, NAMED(RVGitCreateBranchFromStashNoStashesError), "Could Not Create Branch",
     "Could not create new branch from stash. You currently do not have any stashes."},
    {2503, NAMED(RVGitCreateBranchFromStashUncommittedChangesError), "Could Not Create Branch",
     "Could not create new branch from stash. Your working tree contains changes that would be "
     "overwritten. Please commit or stash your changes before creating a new branch from the "
     "stash."},
    {2504, NAMED(RVGitCreateBranchInvalidNameError), "Could Not Create Branch",
     "Ref names may not contain spaces, slashes, dots or control characters."},
    {2505,
     NAMED(RVGitCreateBranchInvalidObjectError),
     "Could Not Create Branch",
     "The revision referenced by “%@” does not appear to be valid.",
     {"RVGitRevisionErrorKey"}},
    {2506,
     NAMED(RVGitCreateBranchRefAlreadyExistsError),
     "Could Not Create Branch",
     "A branch with name “%@” already exists.",
     {"RVGitRefNameErrorKey"}},
    {2507, NAMED(RVGitRenameBranchInvalidObjectError),
     "RENAME_BRANCH_INVALID_OBJECT_ERROR_DESCRIPTION",
     "RENAME_BRANCH_INVALID_OBJECT_ERROR_FAILURE_REASON"},
    {2508, NAMED(RVGitRenameBranchRefAlreadyExistsError),
     "RENAME_BRANCH_REF_ALREADY_EXISTS_ERROR_DESCRIPTION",
     "RENAME_BRANCH_REF_ALREADY_EXISTS_ERROR_FAILURE_REASON"},
    {2509, NAMED(RVGitTrackBranchInvalidObjectError),
     "TRACK_BRANCH_INVALID_OBJECT_ERROR_DESCRIPTION",
     "TRACK_BRANCH_INVALID_OBJECT_ERROR_FAILURE_REASON"},
    {2510,
     NAMED(RVGitDeleteBranchNoSuchBranchError),
     "Could Not Delete Branch",
     "Could not find a branch with name “%@”.",
     {"RVGitRefNameErrorKey"}},
    {2511,
     NAMED(RVGitDeleteCurrentBranchError),
     "Could Not Delete Branch",
     "Branch “%@” is your current HEAD. You cannot delete the branch you are currently on.",
     {"RVGitRefNameErrorKey"}},
    {2512, NAMED(RVGitDeleteUnmergedBranchError), "Could Not Delete Branches",
     "Some branches are not fully merged and need to be deleted with the force option."},
    {2600,
     NAMED(RVGitRemoveOperationNotPermittedError),
     "Operation Not Permitted",
     "Could not remove file at path '%@'.",
     {"RVGitSubmodulePathErrorKey"}},
    {2601, NAMED(RVGitRemoveFileWithLocalModificationsError), "Could Not Remove Files",
     "Could not remove files with local modifications."},
    {2602,
     NAMED(RVGitRemoveSubmoduleWithLocalModificationsError),
     "Could Not Remove Submodule",
     "Could not remove submodule at path “%@”. The submodule has local modifications.",
     {"RVGitSubmodulePathErrorKey"}},
    {2700, NAMED(RVGitSaveStashInitialCommitError), "Could Not Save Stash",
     "Could not save stash. You need the initial commit first."},
    {2701, NAMED(RVGitSaveStashNoChangesError), "Could Not Save Stash",
     "Could not save stash. There are no local changes to save."},
    {2702, NAMED(RVGitApplyStashMergeConflictsError), "Could Not Apply Stash",
     "A merge conflict occurred while applying the stash. Please resolve all conflicts."},
    {2703, NAMED(RVGitApplyStashNotFoundError), "Could Not Apply Stash",
     "Could not apply the stash. The stash could not be found."},
    {2704, NAMED(RVGitApplyStashNoStashesError), "Could Not Apply Stash",
     "Could not apply the stash. You currently do not have any stashes."},
    {2705, NAMED(RVGitApplyStashUncommittedChangesError), "Could Not Apply Stash",
     "Could not apply stash. Your working tree contains changes that would be overwritten. Please "
     "commit or stash your changes before applying the stash."},
    {2706, NAMED(RVGitDropStashNotFoundError), "Could Not Drop Stash",
     "Could not drop the stash. The stash could not be found."},
    {2707, NAMED(RVGitDropStashNoStashesError), "Could Not Drop Stash",
     "Could not drop the stash. You currently do not have any stashes."},
    {2800, NAMED(RVGitSubmoduleStatusMissingMappingError), "", ""},
    {2801, NAMED(RVGitSubmoduleStatusMissingGitDirError), "", ""},
    {2803,
     NAMED(RVGitAddSubmodulePathOutsideRepositoryError),
     "Could Not Add Submodule",
     "Could not add the submodule at path “%@”. The path is outside of the repository path.",
     {"RVGitSubmoduleNameErrorKey"}},
    {2804,
     NAMED(RVGitAddSubmodulePathAlreadyExistsError),
     "Could Not Add Submodule",
     "Could not add the submodule at path “%@”. The path already exists.",
     {"RVGitSubmodulePathErrorKey"}},
    {2805,
     NAMED(RVGitAddSubmoduleGitDirectoryAlreadyExistsError),
     "Could Not Add Submodule",
     "Could not add the submodule at path “%@”. A Git directory with the same name already exists.",
     {"RVGitSubmoduleNameErrorKey"}},
    {2900,
     NAMED(RVGitTreeNotATreeObjectError),
     "Could Not Load Tree",
     "Could not load Git tree for “%@”. The specified object is not a tree object.",
     {"RVGitObjectHashErrorKey"}},
    {2901,
     NAMED(RVGitTreeNotFoundError),
     "Could Not Load Tree",
     "Could not load Git tree for SHA “%@”. The specified object does not exist.",
     {"RVGitObjectHashErrorKey"}},
    {3000,
     NAMED(RVGitUpdateIndexNoSuchFileError),
     "Could Not Update Index",
     "Could not update the index. The file “%@” does not exist or is not under version control.",
     {"RVGitFilePathErrorKey"}},
};

#undef NAMED

class RVGitErrorCatalogueTest : public testing::Test {
protected:
    RVGitErrorCatalogueTest() { loadErrorDefinitionsForGitErrorDomain(); }

    static const RVErrorDefinition* definition(std::int64_t code) {
        return RVErrorManager::sharedManager().definition(RVGitErrorDomain, code);
    }
};

std::size_t countOfPlaces(std::string_view format) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = format.find("%@", at)) != std::string_view::npos; at += 2)
        ++count;
    return count;
}

TEST_F(RVGitErrorCatalogueTest, HoldsExactlyTheHundredCodes) {
    EXPECT_EQ(std::size(namedCodes), 100U);
    std::vector<std::int64_t> found;
    for (std::int64_t code = -1; code < 10000; ++code) {
        if (definition(code))
            found.push_back(code);
    }
    std::vector<std::int64_t> expected;
    for (const NamedCode& named : namedCodes)
        expected.push_back(named.number);
    EXPECT_EQ(found, expected);
}

TEST_F(RVGitErrorCatalogueTest, EachCodeHasTheValueAndNameOfItsConstant) {
    for (const NamedCode& named : namedCodes) {
        EXPECT_EQ(named.code, named.number) << named.name;
        ASSERT_NE(definition(named.code), nullptr) << named.name;
        EXPECT_EQ(definition(named.code)->name, named.name);
        EXPECT_EQ(definition(named.code)->code, named.code);
    }
}

TEST_F(RVGitErrorCatalogueTest, EachCodeHasItsTextsAndKeys) {
    for (const NamedCode& named : namedCodes) {
        const RVErrorDefinition& entry = *definition(named.code);
        EXPECT_EQ(entry.description, named.title);
        EXPECT_EQ(entry.failureReason, named.reason);
        EXPECT_EQ(entry.failureReasonKeys, named.keys) << named.name;
    }
}

TEST_F(RVGitErrorCatalogueTest, EveryPlaceInAReasonHasAKeyBut1005) {
    for (const NamedCode& named : namedCodes) {
        const RVErrorDefinition& entry = *definition(named.code);
        std::size_t keys = entry.failureReasonKeys.size();
        EXPECT_EQ(countOfPlaces(entry.failureReason), named.code == 1005 ? 1U : keys) << named.name;
        for (std::string_view key : entry.failureReasonKeys) {
            EXPECT_TRUE(key.starts_with("RVGit") && key.ends_with("ErrorKey")) << named.name;
        }
    }
}

TEST_F(RVGitErrorCatalogueTest, EveryCodeGivesARecordWithItsTexts) {
    for (const NamedCode& named : namedCodes) {
        const RVErrorDefinition& entry = *definition(named.code);
        RVUserInfo userInfo;
        for (std::string_view key : entry.failureReasonKeys)
            userInfo.emplace(key, "<" + std::string(key) + ">");
        RVError error = gitErrorWithCode(named.code, userInfo);
        EXPECT_EQ(error.domain(), "RVGitErrorDomain");
        EXPECT_EQ(error.code(), named.number);
        EXPECT_EQ(error.localizedDescription(), std::string(entry.description)) << named.name;
        EXPECT_EQ(error.localizedDescription()->empty(), named.code == 2800 || named.code == 2801);
        for (const auto& [key, value] : userInfo)
            EXPECT_THAT(error.localizedFailureReason(), Optional(HasSubstr(*value.string())));
    }
}

TEST_F(RVGitErrorCatalogueTest, LoadingItAgainDoesNothing) {
    const RVErrorDefinition* before = definition(1);
    loadErrorDefinitionsForGitErrorDomain();
    EXPECT_EQ(definition(1), before);
}

}  // namespace
