#include "RVGit/merge/RVGitMergeTreeEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVError.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

using Entry = RVGitMergeTreeEntry;
using Version = RVGitMergeTreeEntry::Version;

const std::string hashes[] = {
    "0000000000000000000000000000000000000001", "0000000000000000000000000000000000000002",
    "0000000000000000000000000000000000000003", "0000000000000000000000000000000000000004"};
const std::string marked = "@@ -1 +1,5 @@\n+<<<<<<< .our\n a\n+=======\n+b\n+>>>>>>> .their";

std::shared_ptr<RVGitRepository> repository() {
    return RVGitRepository::bareRepositoryWithGitDirectoryPath("/nowhere.git");
}

Version version(const std::string& path, const std::string& hash,
                RVGitFileMode mode = RVGitFileModeRegular) {
    return RVGitFileEntry::fileEntryWithRepository(repository(), path, hash, mode);
}

/// An entry of which each side has a path of its own.
struct Sides {
    Version base = version("base", hashes[0]);
    Version our = version("our", hashes[1]);
    Version their = version("their", hashes[2]);
    Version result = version("result", hashes[3]);

    [[nodiscard]] std::shared_ptr<Entry> entry(RVGitMergeTreeEntryType type,
                                               std::optional<std::string> diff = std::nullopt,
                                               bool isBinaryFile = false) const {
        return Entry::mergeTreeEntryWithType(type, std::move(diff), base, our, their, result,
                                             isBinaryFile, repository());
    }
};

TEST(RVGitMergeTreeEntryTest, TypesComeFromMessagesInAnyCase) {
    EXPECT_EQ(Entry::typeFromMessage("merged"), RVGitMergeTreeEntryTypeMerged);
    EXPECT_EQ(Entry::typeFromMessage("Changed In Both"), RVGitMergeTreeEntryTypeChangedInBoth);
    EXPECT_EQ(Entry::typeFromMessage("added in remote"), RVGitMergeTreeEntryTypeAddedInRemote);
    EXPECT_EQ(Entry::typeFromMessage("added in local"), RVGitMergeTreeEntryTypeAddedInLocal);
    EXPECT_EQ(Entry::typeFromMessage("ADDED IN BOTH"), RVGitMergeTreeEntryTypeAddedInBoth);
    EXPECT_EQ(Entry::typeFromMessage("removed in remote"), RVGitMergeTreeEntryTypeRemovedInRemote);
    EXPECT_EQ(Entry::typeFromMessage("removed in local"), RVGitMergeTreeEntryTypeRemovedInLocal);
    EXPECT_EQ(Entry::typeFromMessage("removed in both"), RVGitMergeTreeEntryTypeRemovedInBoth);
    EXPECT_EQ(Entry::typeFromMessage("merged "), RVGitMergeTreeEntryTypeUnknown);
    EXPECT_EQ(Entry::typeFromMessage(""), RVGitMergeTreeEntryTypeUnknown);
    EXPECT_EQ(Entry::typeFromMessage(std::nullopt), RVGitMergeTreeEntryTypeUnknown);
}

TEST(RVGitMergeTreeEntryTest, TheValuesOfTypesAreFixed) {
    EXPECT_EQ(RVGitMergeTreeEntryTypeUnknown, 0);
    EXPECT_EQ(RVGitMergeTreeEntryTypeMerged, 1);
    EXPECT_EQ(RVGitMergeTreeEntryTypeChangedInBoth, 2);
    EXPECT_EQ(RVGitMergeTreeEntryTypeAddedInRemote, 3);
    EXPECT_EQ(RVGitMergeTreeEntryTypeAddedInLocal, 4);
    EXPECT_EQ(RVGitMergeTreeEntryTypeAddedInBoth, 5);
    EXPECT_EQ(RVGitMergeTreeEntryTypeRemovedInRemote, 6);
    EXPECT_EQ(RVGitMergeTreeEntryTypeRemovedInLocal, 7);
    EXPECT_EQ(RVGitMergeTreeEntryTypeRemovedInBoth, 8);
}

TEST(RVGitMergeTreeEntryTest, TheTypeSaysOfWhichSideTheEntryIs) {
    Sides sides;
    sides.base = version("base", hashes[0], RVGitFileModeSymbolicLink);
    sides.our = version("our", hashes[1], RVGitFileModeExecutable);
    sides.their = version("their", hashes[2], RVGitFileModeRegular);
    sides.result = version("result", hashes[3], RVGitFileModeSubmodule);
    struct Expected {
        RVGitMergeTreeEntryType type;
        std::optional<std::string> filePath;
        RVGitFileMode fileMode;
        std::string objectHash;
    };
    const Expected table[] = {
        {RVGitMergeTreeEntryTypeMerged, "result", RVGitFileModeSubmodule, hashes[3]},
        {RVGitMergeTreeEntryTypeChangedInBoth, "their", RVGitFileModeNone, RVGitNullObjectHash},
        {RVGitMergeTreeEntryTypeAddedInRemote, "their", RVGitFileModeRegular, hashes[2]},
        {RVGitMergeTreeEntryTypeAddedInLocal, "our", RVGitFileModeExecutable, hashes[1]},
        {RVGitMergeTreeEntryTypeAddedInBoth, "their", RVGitFileModeNone, RVGitNullObjectHash},
        {RVGitMergeTreeEntryTypeRemovedInRemote, "our", RVGitFileModeExecutable,
         RVGitNullObjectHash},
        {RVGitMergeTreeEntryTypeRemovedInLocal, "their", RVGitFileModeRegular, RVGitNullObjectHash},
        {RVGitMergeTreeEntryTypeRemovedInBoth, "base", RVGitFileModeSymbolicLink,
         RVGitNullObjectHash},
        {RVGitMergeTreeEntryTypeUnknown, std::nullopt, RVGitFileModeNone, RVGitNullObjectHash},
    };
    for (const Expected& expected : table) {
        const auto entry = sides.entry(expected.type);
        EXPECT_EQ(entry->type(), expected.type);
        EXPECT_EQ(entry->filePath(), expected.filePath) << expected.type;
        EXPECT_EQ(entry->fileMode(), expected.fileMode) << expected.type;
        EXPECT_EQ(entry->objectHash(), expected.objectHash) << expected.type;
        if (expected.filePath) {
            EXPECT_EQ(entry->fileName(), *expected.filePath);
        }
    }
}

TEST(RVGitMergeTreeEntryTest, EqualModesAndHashesOfBothSidesAreTheEntrys) {
    Sides sides;
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeChangedInBoth)->fileMode(), RVGitFileModeRegular);
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeAddedInBoth)->fileMode(), RVGitFileModeRegular);
    sides.our = version("our", hashes[2]);
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeAddedInBoth)->objectHash(), hashes[2]);
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeChangedInBoth)->objectHash(), RVGitNullObjectHash);
}

TEST(RVGitMergeTreeEntryTest, AMissingSideGivesNothing) {
    Sides sides;
    sides.base = sides.our = sides.their = sides.result = nullptr;
    const auto merged = sides.entry(RVGitMergeTreeEntryTypeMerged);
    EXPECT_EQ(merged->filePath(), std::nullopt);
    EXPECT_EQ(merged->objectHash(), std::nullopt);
    EXPECT_EQ(merged->fileMode(), RVGitFileModeNone);
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeAddedInBoth)->objectHash(), RVGitNullObjectHash);
    for (int type = 0; type <= 8; ++type) {
        const auto entry = sides.entry(static_cast<RVGitMergeTreeEntryType>(type), "x", true);
        EXPECT_EQ(entry->filePath(), std::nullopt);
        EXPECT_FALSE(entry->hasConflict());
    }
}

TEST(RVGitMergeTreeEntryTest, WhatStandsForAMissingPathIsNoPathOfTheRepository) {
    const auto entry = Sides().entry(RVGitMergeTreeEntryTypeUnknown);
    const RVGitFileEntry& base = *entry;
    EXPECT_EQ(base.filePath(), "OVERWRITTEN_IN_MERGE_TREE_ENTRY");
}

TEST(RVGitMergeTreeEntryTest, SomeTypesNeverConflict) {
    Sides sides;
    sides.our = version("our", hashes[1], RVGitFileModeSubmodule);
    for (const auto type :
         {RVGitMergeTreeEntryTypeMerged, RVGitMergeTreeEntryTypeAddedInRemote,
          RVGitMergeTreeEntryTypeAddedInLocal, RVGitMergeTreeEntryTypeRemovedInBoth})
        EXPECT_FALSE(sides.entry(type, marked, true)->hasConflict()) << type;
}

TEST(RVGitMergeTreeEntryTest, MarkersInTheDiffAreAConflict) {
    Sides sides;
    sides.their = sides.our;
    for (const auto type : {RVGitMergeTreeEntryTypeUnknown, RVGitMergeTreeEntryTypeChangedInBoth,
                            RVGitMergeTreeEntryTypeAddedInBoth}) {
        EXPECT_TRUE(sides.entry(type, marked)->hasConflict());
        EXPECT_TRUE(sides.entry(type, "+>>>>>>> .their")->hasConflict());
        EXPECT_TRUE(sides.entry(type, " a\n+<<<<<<< .ours or so")->hasConflict());
        EXPECT_FALSE(sides.entry(type, " +<<<<<<< .our\n-<<<<<<< .our\n+x\n+<<<<<<< our\n+=======")
                         ->hasConflict());
        EXPECT_FALSE(sides.entry(type, "")->hasConflict());
        EXPECT_FALSE(sides.entry(type)->hasConflict());
    }
}

TEST(RVGitMergeTreeEntryTest, ARemovedFileConflictsWhereTheOtherSideHasChangedIt) {
    Sides sides;
    EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeRemovedInLocal)->hasConflict());
    EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeRemovedInRemote)->hasConflict());
    sides.their = version("their", hashes[0]);
    EXPECT_FALSE(sides.entry(RVGitMergeTreeEntryTypeRemovedInLocal, marked)->hasConflict());
    EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeRemovedInRemote)->hasConflict());
    sides.our = version("our", hashes[0]);
    EXPECT_FALSE(sides.entry(RVGitMergeTreeEntryTypeRemovedInRemote, marked)->hasConflict());
    sides.our = nullptr;
    EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeRemovedInRemote)->hasConflict());
}

TEST(RVGitMergeTreeEntryTest, BinaryFilesConflictWhereTheirHashesDiffer) {
    Sides sides;
    for (const auto type :
         {RVGitMergeTreeEntryTypeChangedInBoth, RVGitMergeTreeEntryTypeAddedInBoth}) {
        EXPECT_TRUE(sides.entry(type, std::nullopt, true)->hasConflict());
        EXPECT_FALSE(sides.entry(type, std::nullopt, false)->hasConflict());
        EXPECT_TRUE(sides.entry(type, std::nullopt, true)->isBinaryOrSubmoduleConflict());
    }
    EXPECT_EQ(sides.entry(RVGitMergeTreeEntryTypeAddedInBoth, std::nullopt, true)->objectHash(),
              RVGitNullObjectHash);
    EXPECT_FALSE(sides.entry(RVGitMergeTreeEntryTypeUnknown, std::nullopt, true)->hasConflict());
    sides.their = sides.our;
    EXPECT_FALSE(
        sides.entry(RVGitMergeTreeEntryTypeChangedInBoth, std::nullopt, true)->hasConflict());
    // The markers count for a binary entry, too, where there are any.
    EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeChangedInBoth, marked, true)->hasConflict());
}

TEST(RVGitMergeTreeEntryTest, SubmodulesConflictWhereTheirHashesDiffer) {
    for (Version Sides::*side : {&Sides::base, &Sides::our, &Sides::their, &Sides::result}) {
        Sides sides;
        sides.*side =
            version("module", (sides.*side)->objectHash().value_or(""), RVGitFileModeSubmodule);
        EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeChangedInBoth)->hasConflict());
        EXPECT_TRUE(sides.entry(RVGitMergeTreeEntryTypeAddedInBoth)->hasConflict());
        EXPECT_FALSE(sides.entry(RVGitMergeTreeEntryTypeUnknown)->hasConflict());
        sides.their = version("module", hashes[1], RVGitFileModeSubmodule);
        EXPECT_FALSE(sides.entry(RVGitMergeTreeEntryTypeChangedInBoth)->hasConflict());
    }
}

TEST(RVGitMergeTreeEntryTest, AnItemBecomesAnEntryWithTheSidesThatItTells) {
    RVGitMergeTreeOutputParserResultItem item;
    item.message = "Removed in local";
    item.diff = "+x";
    item.baseFilepath = item.theirFilepath = "file";
    item.baseObjectHash = hashes[0];
    item.theirObjectHash = hashes[1];
    item.baseFileMode = RVGitFileModeRegular;
    item.theirFileMode = RVGitFileModeExecutable;
    item.isBinaryFile = true;
    const auto owner = repository();
    const auto entry = Entry::mergeTreeEntryWithParserResultItem(item, owner);
    EXPECT_EQ(entry->type(), RVGitMergeTreeEntryTypeRemovedInLocal);
    EXPECT_EQ(entry->diff(), "+x");
    EXPECT_TRUE(entry->isBinaryFile());
    EXPECT_EQ(entry->repository(), owner);
    ASSERT_TRUE(entry->baseVersion());
    EXPECT_EQ(entry->baseVersion()->filePath(), "file");
    EXPECT_EQ(entry->baseVersion()->objectHash(), hashes[0]);
    EXPECT_EQ(entry->theirVersion()->fileMode(), RVGitFileModeExecutable);
    EXPECT_EQ(entry->ourVersion(), nullptr);
    EXPECT_EQ(entry->resultVersion(), nullptr);
    EXPECT_EQ(entry->filePath(), "file");
    EXPECT_EQ(entry->fileMode(), RVGitFileModeExecutable);
}

TEST(RVGitMergeTreeEntryTest, NeedsARepository) {
    EXPECT_THROW(
        (void)Entry::mergeTreeEntryWithType(RVGitMergeTreeEntryTypeMerged, std::nullopt, nullptr,
                                            nullptr, nullptr, nullptr, false, nullptr),
        RVInvalidParameterException);
}

}  // namespace
