#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/command/RVGitError.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

namespace {

struct NamedCode {
    std::int64_t number;
    std::int64_t code;
    std::string_view name;
};

#define NAMED(constant) constant, #constant

constexpr NamedCode namedCodes[] = {
    {1, NAMED(RVGitRVGitGenericError)},
    {10, NAMED(RVGitCommandUsageError)},
    {11, NAMED(RVGitOutputParserError)},
    {100, NAMED(RVGitNoGitRepoError)},
    {101, NAMED(RVGitNoRefsError)},
    {102, NAMED(RVGitNoWorkTreeError)},
    {103, NAMED(RVGitIndexLockError)},
    {104, NAMED(RVGitRefsReadError)},
    {105, NAMED(RVGitBadDefaultRevisionError)},
    {106, NAMED(RVGitBadRevisionError)},
    {108, NAMED(RVGitGPGSigningKeyUnvailableError)},
    {109, NAMED(RVGitGPGSignatureMissingError)},
    {110, NAMED(RVGitGPGSignatureUntrustedError)},
    {111, NAMED(RVGitGPGSigningFailedError)},
    {200, NAMED(RVGitAskpassError)},
    {201, NAMED(RVGitRemoteSyncError)},
    {202, NAMED(RVGitRemoteAuthError)},
    {203, NAMED(RVGitRemoteRepositoryNotFoundError)},
    {204, NAMED(RVGitRemoteConnectionError)},
    {300, NAMED(RVGitDescriptionReadError)},
    {301, NAMED(RVGitDescriptionWriteError)},
    {400, NAMED(RVGitIgnoresReadError)},
    {401, NAMED(RVGitIgnoresWriteError)},
    {1000, NAMED(RVGitConfigBadValueError)},
    {1001, NAMED(RVGitConfigInvalidFileError)},
    {1002, NAMED(RVGitConfigKeyNotFoundError)},
    {1003, NAMED(RVGitConfigMultipleValuesForKeyError)},
    {1004, NAMED(RVGitConfigReadError)},
    {1005, NAMED(RVGitConfigSectionNotFoundError)},
    {1006, NAMED(RVGitConfigWriteError)},
    {1100, NAMED(RVGitInitRepositoryFileExistsError)},
    {1101, NAMED(RVGitInitRepositoryPathNotWritableError)},
    {1102, NAMED(RVGitInitRepositoryInvalidPathError)},
    {1200, NAMED(RVGitBlobReadError)},
    {1201, NAMED(RVGitBlobNotFoundError)},
    {1300, NAMED(RVGitAddFilesError)},
    {1400, NAMED(RVGitApplyPatchCorruptError)},
    {1401, NAMED(RVGitApplyPatchWithNoChangesError)},
    {1402, NAMED(RVGitApplyPatchWithNoTargetError)},
    {1500, NAMED(RVGitArchiveFilesError)},
    {1600, NAMED(RVGitCheckoutUncommittedChangesError)},
    {1700, NAMED(RVGitCreateTagAlreadyExistsError)},
    {1701, NAMED(RVGitCreateTagInvalidObjectError)},
    {1702, NAMED(RVGitDeleteTagNotFoundError)},
    {1800, NAMED(RVGitSVNInstallationError)},
    {1900, NAMED(RVGitLogNoSuchRevisionError)},
    {2000, NAMED(RVGitMergeConflictsError)},
    {2001, NAMED(RVGitMergeUncommittedChangesError)},
    {2002, NAMED(RVGitMergeUnmergedChangesError)},
    {2004, NAMED(RVGitMergetoolMergeFailedError)},
    {2005, NAMED(RVGitNoDefaultMergeBranchError)},
    {2006, NAMED(RVGitMergeWillFailDueToConflictsError)},
    {2100, NAMED(RVGitMoveFileAlreadyExistsError)},
    {2101, NAMED(RVGitMoveFileDestinationDirectoryMissingError)},
    {2102, NAMED(RVGitMoveFileNotUnderVersionControlError)},
    {2103, NAMED(RVGitMoveFileOutsideRepositoryError)},
    {2104, NAMED(RVGitMoveFileSelfTargetError)},
    {2105, NAMED(RVGitMoveFileSourceDirectoryEmptyError)},
    {2106, NAMED(RVGitMoveFileSourceNotFoundError)},
    {2200, NAMED(RVGitRebaseConflictsError)},
    {2201, NAMED(RVGitRebaseUncommittedChangesError)},
    {2202, NAMED(RVGitRebaseUnmergedChangesError)},
    {2300, NAMED(RVGitCreateRemoteAlreadyExistsError)},
    {2301, NAMED(RVGitCreateRemoteInvalidNameError)},
    {2302, NAMED(RVGitRenameRemoteAlreadyExistsError)},
    {2303, NAMED(RVGitRenameRemoteInvalidNameError)},
    {2400, NAMED(RVGitRemotePushNoUpstreamBranchError)},
    {2401, NAMED(RVGitRemotePushRejectedError)},
    {2500, NAMED(RVGitCreateBranchFromStashInvalidNameError)},
    {2501, NAMED(RVGitCreateBranchFromStashNotFoundError)},
    {2502, NAMED(RVGitCreateBranchFromStashNoStashesError)},
    {2503, NAMED(RVGitCreateBranchFromStashUncommittedChangesError)},
    {2504, NAMED(RVGitCreateBranchInvalidNameError)},
    {2505, NAMED(RVGitCreateBranchInvalidObjectError)},
    {2506, NAMED(RVGitCreateBranchRefAlreadyExistsError)},
    {2507, NAMED(RVGitRenameBranchInvalidObjectError)},
    {2508, NAMED(RVGitRenameBranchRefAlreadyExistsError)},
    {2509, NAMED(RVGitTrackBranchInvalidObjectError)},
    {2510, NAMED(RVGitDeleteBranchNoSuchBranchError)},
    {2511, NAMED(RVGitDeleteCurrentBranchError)},
    {2512, NAMED(RVGitDeleteUnmergedBranchError)},
    {2600, NAMED(RVGitRemoveOperationNotPermittedError)},
    {2601, NAMED(RVGitRemoveFileWithLocalModificationsError)},
    {2602, NAMED(RVGitRemoveSubmoduleWithLocalModificationsError)},
    {2700, NAMED(RVGitSaveStashInitialCommitError)},
    {2701, NAMED(RVGitSaveStashNoChangesError)},
    {2702, NAMED(RVGitApplyStashMergeConflictsError)},
    {2703, NAMED(RVGitApplyStashNotFoundError)},
    {2704, NAMED(RVGitApplyStashNoStashesError)},
    {2705, NAMED(RVGitApplyStashUncommittedChangesError)},
    {2706, NAMED(RVGitDropStashNotFoundError)},
    {2707, NAMED(RVGitDropStashNoStashesError)},
    {2800, NAMED(RVGitSubmoduleStatusMissingMappingError)},
    {2801, NAMED(RVGitSubmoduleStatusMissingGitDirError)},
    {2803, NAMED(RVGitAddSubmodulePathOutsideRepositoryError)},
    {2804, NAMED(RVGitAddSubmodulePathAlreadyExistsError)},
    {2805, NAMED(RVGitAddSubmoduleGitDirectoryAlreadyExistsError)},
    {2900, NAMED(RVGitTreeNotATreeObjectError)},
    {2901, NAMED(RVGitTreeNotFoundError)},
    {3000, NAMED(RVGitUpdateIndexNoSuchFileError)},
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

TEST_F(RVGitErrorCatalogueTest, TextsAreKeptWithTheirOddities) {
    EXPECT_EQ(definition(300)->description, "Failed to Write Description");
    EXPECT_EQ(definition(400)->description, "Failed to Write Ignores");
    EXPECT_EQ(definition(401)->description, "Failed to Write Description");
    EXPECT_EQ(definition(1002)->failureReason, "The config key “%@” does not exit.");
    EXPECT_EQ(definition(1102)->failureReason, definition(1100)->failureReason);
    EXPECT_EQ(definition(101)->description, "NO_REFS_ERROR_DESCRIPTION");
    EXPECT_EQ(definition(101)->failureReason, "NO_REFS_ERROR_FAILURE_REASON");
    EXPECT_EQ(definition(2300)->failureReason, "A remote with name “%@” already exists");
    EXPECT_EQ(definition(2600)->failureReason, "Could not remove file at path '%@'.");
    EXPECT_EQ(definition(2800)->failureReason, "");
    EXPECT_EQ(definition(2801)->description, "");
    EXPECT_EQ(definition(103)->failureReason,
              "The repository at path “%@” is locked by another Git process. If there is no other "
              "Git process running, the file “.git/index.lock” needs to be removed manually.");
    EXPECT_EQ(definition(2401)->failureReason,
              "Synchronization with the remote failed. The commit history of branch “%@” can not "
              "be appended to the remote commit history. If you enforce it, it might result in the "
              "loss of commits.\n\nThis usually happens when you change a commit after you have "
              "already pushed it to the remote.");
}

TEST_F(RVGitErrorCatalogueTest, KeysAreKeptWithTheirOddities) {
    EXPECT_THAT(definition(1005)->failureReasonKeys, IsEmpty());
    EXPECT_THAT(definition(2401)->failureReasonKeys, ElementsAre("RVGitRevisionErrorKey"));
    EXPECT_THAT(definition(2803)->failureReasonKeys, ElementsAre("RVGitSubmoduleNameErrorKey"));
    EXPECT_THAT(definition(2600)->failureReasonKeys, ElementsAre("RVGitSubmodulePathErrorKey"));
    EXPECT_THAT(definition(1500)->failureReasonKeys,
                ElementsAre("RVGitFilePathErrorKey", "RVGitRevisionErrorKey"));
    EXPECT_THAT(definition(2104)->failureReasonKeys,
                ElementsAre("RVGitSourceFilePathErrorKey", "RVGitDestinationFilePathErrorKey"));
}

TEST_F(RVGitErrorCatalogueTest, LoadingItAgainDoesNothing) {
    const RVErrorDefinition* before = definition(1);
    loadErrorDefinitionsForGitErrorDomain();
    EXPECT_EQ(definition(1), before);
}

}  // namespace
