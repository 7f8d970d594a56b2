#include "RVGit/worktree/RVGitWorkingTreeEntryLoader.h"

#include <sys/stat.h>

#include <filesystem>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";

const RVOptions unchangedToo = {{RVGitWorkingTreeOptionIncludeUnchangedFiles, true}};
const RVOptions assumeUnchangedToo = {{RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles, true}};

class RVGitWorkingTreeEntryLoaderTest : public RVGitWorkingTreeTestCase {
protected:
    [[nodiscard]] RVGitWorkingTreeEntryLoader loader() const {
        return RVGitWorkingTreeEntryLoader(repository());
    }
    /// The argument lists of a listing, without what every command has.
    [[nodiscard]] std::vector<std::vector<std::string>> commandsOf(
        const std::optional<RVOptions>& options,
        const std::optional<std::string>& filePath = std::nullopt) {
        const auto recorder = useRecordingGit();
        (void)loader().loadWorkingTreeEntriesForFilePath(filePath, options);
        auto lists = recorder.argumentLists();
        for (auto& list : lists)
            list.erase(list.begin(), list.begin() + 3);
        return lists;
    }
    /// A listing of what git is made to say.
    [[nodiscard]] std::vector<std::string> listingOf(
        const std::string& status, const std::string& index,
        const std::optional<RVOptions>& options = std::nullopt) {
        fake_ = useFakeGit();
        fake_->setAnswer("status", {.standardOutput = status});
        fake_->setAnswer("ls-files", {.standardOutput = index});
        return listing(options);
    }

private:
    std::optional<RVFakeGit> fake_;
};

TEST_F(RVGitWorkingTreeEntryLoaderTest, RequiresARepository) {
    EXPECT_THROW((void)RVGitWorkingTreeEntryLoader::loaderWithRepository(nullptr),
                 RVInvalidParameterException);
    EXPECT_EQ(RVGitWorkingTreeEntryLoader::loaderWithRepository(repository())->repository(),
              repository());
}

// Options.

TEST_F(RVGitWorkingTreeEntryLoaderTest, ThePlainListingIsOneCommand) {
    makeCommit();
    writeFile("repository/file.txt", "changed");
    EXPECT_THAT(commandsOf(std::nullopt), ElementsAre(ElementsAre("status", "--porcelain")));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, OptionsThatArePresentArePassed) {
    EXPECT_THAT(commandsOf(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 2},
                                     {RVGitWorkingTreeOptionIgnoreSubmodulesMode, 4},
                                     {RVGitWorkingTreeOptionIncludeIgnoredFiles, true}}),
                ElementsAre(ElementsAre("status", "--porcelain", "--ignored",
                                        "--untracked-files=normal", "--ignore-submodules=all")));
    EXPECT_THAT(commandsOf(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 0},
                                     {RVGitWorkingTreeOptionIgnoreSubmodulesMode, 0},
                                     {RVGitWorkingTreeOptionIncludeIgnoredFiles, false},
                                     {RVGitWorkingTreeOptionRecursive, true}}),
                ElementsAre(ElementsAre("status", "--porcelain")));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, WithoutAModeOfUntrackedFilesTheConfigurationDecides) {
    writeFile("repository/new", "");
    EXPECT_THAT(listing(), ElementsAre("?? Regular new"));
    gitInRepository({"config", "status.showUntrackedFiles", "no"});
    EXPECT_THAT(listing(), IsEmpty());
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 3}}),
                ElementsAre("?? Regular new"));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, EachOfThreeOptionsReadsTheIndex) {
    makeCommit();
    for (const char* option : {RVGitWorkingTreeOptionIncludeUnchangedFiles,
                               RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles,
                               RVGitWorkingTreeOptionIncludeSubmodules}) {
        EXPECT_THAT(commandsOf(RVOptions{{option, true}}),
                    ElementsAre(ElementsAre("status", "--porcelain"),
                                ElementsAre("ls-files", "-z", "-v", "--stage")))
            << option;
        EXPECT_THAT(commandsOf(RVOptions{{option, false}}),
                    ElementsAre(ElementsAre("status", "--porcelain")))
            << option;
    }
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnAbsentOrEmptyPathOrADotIsTheWholeTree) {
    commitFile("repository", "dir/a", "", "Message");
    writeFile("repository/dir/a", "changed");
    const auto whole = commandsOf(unchangedToo);
    EXPECT_THAT(whole, ElementsAre(ElementsAre("status", "--porcelain"),
                                   ElementsAre("ls-files", "-z", "-v", "--stage")));
    EXPECT_EQ(commandsOf(unchangedToo, ""), whole);
    EXPECT_EQ(commandsOf(unchangedToo, "."), whole);
    EXPECT_THAT(commandsOf(unchangedToo, "dir"),
                ElementsAre(ElementsAre("status", "--porcelain", "--", "dir"),
                            ElementsAre("ls-files", "-z", "-v", "--stage", "--", "dir")));
    EXPECT_EQ(listing(std::nullopt, "."), listing());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, TheCountTakesNoPath) {
    for (const char* file : {"dir/a", "b"})
        writeFile("repository/"s + file, "");
    const auto recorder = useRecordingGit();
    EXPECT_EQ(loader().countWorkingTreeEntriesForFilePath("dir", std::nullopt), 2u);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("status", "--porcelain"));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, LoadsWhatHasChanged) {
    writeFile("repository/dir/a", "");
    const auto changed = loader().loadChangedFilesInfoForFilePath(
        "dir", RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 3}});
    ASSERT_TRUE(changed);
    ASSERT_EQ(changed->size(), 1u);
    EXPECT_EQ(changed->front().filePath, "dir/a");
    std::optional<RVError> error;
    EXPECT_FALSE(loader().loadChangedFilesInfoForFilePath("../x", std::nullopt, &error));
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, LoadsTheEntriesOfTheIndexThatAreAskedFor) {
    addSubmodule("module");
    stageFile("assumed", "");
    stageFile("plain", "");
    gitInRepository({"update-index", "--assume-unchanged", "assumed"});
    const auto paths = [&](const std::optional<RVOptions>& options,
                           const std::optional<std::string>& filePath = std::nullopt) {
        std::vector<std::string> list;
        const auto loaded = loader().loadIndexEntriesForFilePath(filePath, options);
        EXPECT_TRUE(loaded.has_value());
        for (const auto& entry : loaded.value_or(RVGitIndex::Entries()))
            list.push_back(entry->filePath());
        return list;
    };
    EXPECT_THAT(paths(std::nullopt), IsEmpty());
    EXPECT_THAT(paths(unchangedToo), ElementsAre(".gitmodules", "assumed", "module", "plain"));
    EXPECT_THAT(paths(unchangedToo, "plain"), ElementsAre("plain"));
    EXPECT_THAT(paths(assumeUnchangedToo), ElementsAre("assumed"));
    EXPECT_THAT(paths(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true}}),
                ElementsAre("module"));
    EXPECT_THAT(paths(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true},
                                {RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles, true}}),
                ElementsAre("assumed", "module"));
    EXPECT_THAT(paths(RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true},
                                {RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles, true}}),
                ElementsAre(".gitmodules", "assumed", "module", "plain"));
}

// Modes.

TEST_F(RVGitWorkingTreeEntryLoaderTest, TheModeIsThatOfTheItemItself) {
    const auto mode = [&](const std::string& path) {
        return loader().fileModeForFileAtPath(scratchPath(path));
    };
    makeDirectory("dir");
    writeFile("regular", "");
    writeFile("executable", "", 0744);
    writeFile("for-others", "", 0655);
    std::filesystem::create_symlink("dir", scratchPath("link"));
    std::filesystem::create_symlink("nowhere", scratchPath("dangling"));
    ASSERT_EQ(mkfifo(scratchPath("pipe").c_str(), 0600), 0);
    EXPECT_EQ(mode("dir"), 16384u);
    EXPECT_EQ(mode("regular"), 33188u);
    EXPECT_EQ(mode("executable"), 33277u);
    EXPECT_EQ(mode("for-others"), 33188u);
    EXPECT_EQ(mode("link"), 40960u);
    EXPECT_EQ(mode("dangling"), 40960u);
    EXPECT_EQ(mode("pipe"), 0u);
    EXPECT_EQ(mode("missing"), 0u);
    EXPECT_EQ(mode("regular/below"), 0u);
    EXPECT_EQ(mode(std::string("regular\0below", 13)), 0u);
}

// The merge.

TEST_F(RVGitWorkingTreeEntryLoaderTest, NoChangeIsAnEmptyList) {
    makeCommit();
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, WithoutChangesEveryEntryOfTheIndexIsUnchanged) {
    stageFile("b", "");
    stageFile("dir/a", "");
    std::filesystem::create_symlink("nowhere", scratchPath("repository/link"));
    writeFile("repository/tool", "", 0755);
    gitInRepository({"add", "."});
    commitIndex();
    EXPECT_THAT(listing(unchangedToo), ElementsAre("   Regular b", "   Regular dir/a",
                                                   "   Symbolic Link link", "   Executable tool"));
    const auto entry = entryAt("dir/a", unchangedToo);
    ASSERT_TRUE(entry);
    EXPECT_TRUE(entry->hasLoadedIndexVersions());
    EXPECT_EQ(entry->stagedVersion()->objectHash(), gitInRepository({"rev-parse", ":dir/a"}));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, ChangesComeFirstAndThenTheIndex) {
    for (const char* file : {"a", "m", "z"})
        commitFile("repository", file, file, "Message");
    writeFile("repository/z", "changed");
    writeFile("repository/b", "new");
    EXPECT_THAT(listing(unchangedToo),
                ElementsAre(" M Regular z", "?? Regular b", "   Regular a", "   Regular m"));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, ChangedEntriesGetTheirVersionsWithTheListing) {
    makeCommit();
    stageFile("file.txt", "staged");
    const auto recorder = useRecordingGit();
    const auto entry = entryAt("file.txt", unchangedToo);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->fileMode(), RVGitFileModeRegular);
    EXPECT_TRUE(entry->hasLoadedIndexVersions());
    ASSERT_TRUE(entry->stagedVersion());
    EXPECT_EQ(recorder.invocations().size(), 2u);
    EXPECT_EQ(entry->stagedVersion()->objectHash(), gitInRepository({"rev-parse", ":file.txt"}));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, APathThatTheIndexDoesNotHaveStaysWithoutItsVersions) {
    makeCommit();
    gitInRepository({"rm", "-q", "--cached", "file.txt"});
    const auto entry = entryAt("file.txt", unchangedToo);
    ASSERT_TRUE(entry);
    EXPECT_EQ(textOfEntry(*entry), "D? Regular file.txt");
    EXPECT_FALSE(entry->hasLoadedIndexVersions());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, EntriesAssumedUnchangedAreListedWhereAskedFor) {
    for (const char* file : {"assumed", "plain", "skipped"})
        commitFile("repository", file, file, "Message");
    gitInRepository({"update-index", "--assume-unchanged", "assumed"});
    gitInRepository({"update-index", "--skip-worktree", "skipped"});
    writeFile("repository/assumed", "changed");
    EXPECT_THAT(listing(), IsEmpty());
    EXPECT_THAT(listing(assumeUnchangedToo), ElementsAre("   Regular assumed"));
    EXPECT_TRUE(entryAt("assumed", assumeUnchangedToo)->isAssumeUnchangedFile());
    EXPECT_THAT(listing(unchangedToo),
                ElementsAre("   Regular assumed", "   Regular plain", "   Regular skipped"));
    EXPECT_FALSE(entryAt("skipped", unchangedToo)->isAssumeUnchangedFile());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnUnchangedEntryThatTheIndexGaveIsNotListedUnlessAskedFor) {
    stageFile("dir/assumed", "");
    stageFile("dir/plain", "");
    addSubmodule("changed");
    addSubmodule("clean");
    gitInRepository({"update-index", "--assume-unchanged", "dir/assumed"});
    EXPECT_THAT(listing(assumeUnchangedToo, "dir"), ElementsAre("   Regular dir/assumed"));
    EXPECT_THAT(listing(unchangedToo, "dir"),
                ElementsAre("   Regular dir/assumed", "   Regular dir/plain"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true}}), IsEmpty());
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true},
                                  {RVGitWorkingTreeOptionIncludeAssumeUnchangedFiles, true}}),
                ElementsAre("   Regular dir/assumed"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true}}, "dir"),
                IsEmpty())
        << "the flag alone is not enough";
    writeFile("repository/changed/inside", "changed");
    EXPECT_THAT(listing(), ElementsAre(" M Submodule changed"));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, TheStagesOfAPathAreOneEntry) {
    const auto record = [](const char* stage, const char* path) {
        return "M 100644 " + hash + " " + stage + "\t" + path + "\0"s;
    };
    const std::string index = record("1", "a") + record("2", "a") + record("3", "a") +
                              record("1", "b") + record("3", "b") + record("0", "c");
    EXPECT_THAT(listingOf("UU a\n", index), ElementsAre("UU None a"));
    const auto texts = listingOf("UU a\n", index, unchangedToo);
    EXPECT_THAT(texts, ElementsAre("UU None a", "   None b", "   Regular c"));
    const auto loaded = entriesByPath(unchangedToo);
    EXPECT_EQ(loaded.at("a")->stagedVersion(), nullptr);
    EXPECT_EQ(loaded.at("a")->unmergedBaseVersion()->stage(), 1u);
    EXPECT_EQ(loaded.at("a")->unmergedOursVersion()->stage(), 2u);
    EXPECT_EQ(loaded.at("a")->unmergedTheirsVersion()->stage(), 3u);
    EXPECT_FALSE(loaded.at("b")->isUnmergedFile()) << "the letters tell of a conflict";
    EXPECT_EQ(loaded.at("b")->unmergedBaseVersion()->stage(), 1u);
    EXPECT_EQ(loaded.at("b")->unmergedOursVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, ALaterLineOfAPathReplacesTheEarlierOneInItsPlace) {
    EXPECT_THAT(listingOf("?? a\n M b\nM  a\n", "H 100644 " + hash + " 0\ta\0"s, unchangedToo),
                ElementsAre("M  None a", " M None b"));
    EXPECT_NE(entryAt("a", unchangedToo)->stagedVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, PathsAreTheSameWhereTheirTextsAre) {
    const auto record = [](const std::string& path) {
        return "H 100644 " + hash + " 0\t" + path + "\0"s;
    };
    // Two names that are decoded to the same text, with another one between them.
    EXPECT_THAT(listingOf("", record("caf\xC3\xA9") + record("cafx\xC3\xA9") + record("caf\xE9"),
                          unchangedToo),
                ElementsAre("   Regular caf\u00E9", "   Regular cafx\u00E9"));
    EXPECT_THAT(listingOf(" M caf\u00E9\n", record("cafe\u0301"), unchangedToo),
                ElementsAre(" M None caf\u00E9", "   Regular cafe\u0301"));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AFailedStatusIsAFailure) {
    std::optional<RVError> error;
    EXPECT_FALSE(loader().loadWorkingTreeEntriesForFilePath("../outside", unchangedToo, &error));
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnUnreadableStatusIsAFailure) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "R  a\n"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return loader().loadWorkingTreeEntriesForFilePath(std::nullopt, std::nullopt, error);
        },
        failsWith(RVGitOutputParserError));
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnUnreadableIndexLeavesTheChangesAndFillsThePlace) {
    auto fake = useFakeGit();
    fake.setAnswer("status", {.standardOutput = " M a\n"});
    fake.setAnswer("ls-files", {.standardError = "fatal: broken\n", .exitCode = 128});
    std::optional<RVError> error;
    const auto entries =
        loader().loadWorkingTreeEntriesForFilePath(std::nullopt, unchangedToo, &error);
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 1u);
    EXPECT_FALSE(entries->front()->hasLoadedIndexVersions());
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, ASuccessLeavesThePlaceAsItWas) {
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_TRUE(loader().loadWorkingTreeEntriesForFilePath(std::nullopt, unchangedToo, &error));
    EXPECT_EQ(error, RVError("before", 1));
}

// Directories and submodules.

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnUntrackedDirectoryIsADirectoryAndTheIndexStaysUnread) {
    makeCommit();
    writeFile("repository/dir/a", "");
    EXPECT_THAT(listing(), ElementsAre("?? Directory dir"));
    EXPECT_EQ(commandsOf(std::nullopt).size(), 1u);
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnIgnoredDirectoryIsADirectoryAndReadsTheIndex) {
    writeFile("repository/.gitignore", "dir/\n");
    writeFile("repository/dir/a", "");
    const RVOptions ignoredToo = {{RVGitWorkingTreeOptionIncludeIgnoredFiles, true}};
    EXPECT_THAT(listing(ignoredToo), ElementsAre("?? Regular .gitignore", "!! Directory dir"));
    EXPECT_EQ(commandsOf(ignoredToo).size(), 2u);
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AFileThatGaveWayToADirectoryIsRegularAndReadsTheIndex) {
    makeCommit();
    std::filesystem::remove(scratchPath("repository/file.txt"));
    writeFile("repository/file.txt/inside", "");
    EXPECT_THAT(listing(), ElementsAre(" D Regular file.txt"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionUntrackedFilesMode, 3}}),
                ElementsAre(" D Regular file.txt", "?? Regular file.txt/inside"));
    EXPECT_EQ(commandsOf(std::nullopt).size(), 2u);
}

TEST_F(RVGitWorkingTreeEntryLoaderTest, AnUntrackedDirectoryIsNoSubmoduleWhateverTheIndexSays) {
    makeDirectory("repository/m");
    EXPECT_THAT(listingOf("D  m\n?? m/\n", "H 160000 " + hash + " 0\tm\0"s),
                ElementsAre("D? Directory m"));
    const auto untracked = entryAt("m");
    ASSERT_TRUE(untracked);
    EXPECT_TRUE(untracked->hasLoadedIndexVersions());
    ASSERT_TRUE(untracked->stagedVersion());
    EXPECT_EQ(untracked->stagedVersion()->objectHash(), hash);
    EXPECT_EQ(untracked->stagedVersion()->fileMode(), RVGitFileModeSubmodule);
}

}  // namespace
