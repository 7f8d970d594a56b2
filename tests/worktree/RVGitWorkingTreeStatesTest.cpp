#include <filesystem>
#include <set>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/worktree/RVGitWorkingTreeStatesTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RVGitWorkingTreeStatesTest : public RVGitWorkingTreeStatesTestCase {
protected:
    /// Files in the state that the letters tell; "D_" is "D " and untracked. Commits first.
    void makeStates(const std::vector<std::string>& states) const {
        for (const std::string& state : states)
            if (!isNew(state[0]) && state != " A")
                writeContents(fileOf(state));
        gitInRepository({"add", "."});
        commitIndex();
        for (const std::string& state : states)
            makeState(state[0], state[1], fileOf(state));
    }
    /// The name tells the letters, without blanks.
    [[nodiscard]] static std::string fileOf(const std::string& state) {
        return "state " + stringByReplacingOccurrences(state, " ", "-");
    }

private:
    [[nodiscard]] static bool isNew(char left) {
        return left == 'A' || left == '?' || left == '!' || left == 'R' || left == 'C';
    }

    void makeState(char left, char right, const std::string& file) const {
        switch (left) {
            case 'M':
                changeFile(file);
                stage(file);
                break;
            case 'T':
                replaceByLink(file);
                stage(file);
                break;
            case 'D':
                gitInRepository({"rm", "-q", "--cached", "--", ":(literal)" + file});
                if (right == ' ')
                    remove(file);
                break;
            case 'A':
                writeContents(file);
                stage(file);
                break;
            default:
                break;
        }
        switch (right) {
            case 'M':
                if (left == 'T')
                    replaceByLink(file, "another target");
                else
                    writeFile("repository/" + file, contentsForFile(file) + "changed again\n");
                break;
            case 'T':
                if (left == 'T') {
                    remove(file);
                    changeFile(file);
                } else {
                    replaceByLink(file);
                }
                break;
            case 'D':
                remove(file);
                break;
            case 'A':
                writeContents(file);
                gitInRepository({"add", "-N", "--", file});
                break;
            default:
                break;
        }
    }
};

TEST_F(RVGitWorkingTreeStatesTest, EachPairOfLettersOfFilesThatKeepTheirNames) {
    const std::vector<std::string> states = {" M", " T", " D", " A", "M ", "MM", "MT",
                                             "MD", "T ", "TM", "TT", "TD", "A ", "AM",
                                             "AT", "AD", "D ", "D?", "DA"};
    makeStates(states);
    std::vector<std::string> letters;
    for (const auto& entry : entries())
        letters.push_back(textOfEntry(*entry).substr(0, 2) + entry->filePath());
    std::vector<std::string> expected;
    for (const std::string& state : states)
        expected.push_back(state + fileOf(state));
    EXPECT_THAT(letters, testing::UnorderedElementsAreArray(expected));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, EachPairOfLettersOfRenamedFiles) {
    for (const char* file : {"plain", "then changed", "then deleted", "then link"})
        writeContents(file);
    gitInRepository({"add", "."});
    commitIndex();
    for (const char* file : {"plain", "then changed", "then deleted", "then link"})
        gitInRepository({"mv", file, std::string("new ") + file});
    writeFile("repository/new then changed", "changed");
    remove("new then deleted");
    replaceByLink("new then link");
    EXPECT_THAT(listing(), UnorderedElementsAre("R  Regular new plain <- plain",
                                                "RM Regular new then changed <- then changed",
                                                "RD None new then deleted <- then deleted",
                                                "RT Symbolic Link new then link <- then link"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ACopyIsListedWhereGitLooksForCopies) {
    RVGIT_TEST_NEEDS_GIT("2.18", "it cannot be told to look for copies");
    writeContents("original");
    gitInRepository({"add", "."});
    commitIndex();
    changeFile("original");
    writeContents("copy");
    std::filesystem::copy_file(scratchPath("repository/copy"), scratchPath("repository/copy 2"));
    for (const char* file : {"copy", "copy 2"})
        writeFile(std::string("repository/") + file, contentsForFile("original"));
    gitInRepository({"add", "."});
    writeFile("repository/copy 2", "changed");
    gitInRepository({"config", "status.renames", "copies"});
    EXPECT_THAT(listing(),
                UnorderedElementsAre("C  Regular copy <- original", "CM Regular copy 2 <- original",
                                     "M  Regular original"));
    EXPECT_EQ(entryAt("copy")->baseVersion(), nullptr) << "HEAD is asked for the new path";
}

TEST_F(RVGitWorkingTreeStatesTest, ACopyMayBeDeletedOrReplacedByALink) {
    RVGIT_TEST_NEEDS_GIT("2.18", "it cannot be told to look for copies");
    gitInRepository({"config", "status.renames", "copies"});
    writeContents("original");
    gitInRepository({"add", "."});
    commitIndex();
    for (const char* copy : {"copy", "copy 2"})
        writeFile(std::string("repository/") + copy, contentsForFile("original"));
    changeFile("original");
    gitInRepository({"add", "."});
    remove("copy");
    replaceByLink("copy 2");
    EXPECT_THAT(listing(),
                UnorderedElementsAre("CD None copy <- original",
                                     "CT Symbolic Link copy 2 <- original", "M  Regular original"));
}

TEST_F(RVGitWorkingTreeStatesTest, ARenameInTheWorkingTreeAloneKeepsBothNamesInOnePath) {
    RVGIT_TEST_NEEDS_GIT("2.17", "it does not tell the new name of a rename");
    writeContents("old");
    gitInRepository({"add", "."});
    commitIndex();
    std::filesystem::rename(scratchPath("repository/old"), scratchPath("repository/new"));
    gitInRepository({"add", "-N", "new"});
    EXPECT_THAT(listing(), ElementsAre(" R None old -> new"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true}}),
                ElementsAre(" R None old -> new", "   Regular new", "   Regular old"));
}

TEST_F(RVGitWorkingTreeStatesTest, ACopyInTheWorkingTreeAloneKeepsBothNamesInOnePath) {
    RVGIT_TEST_NEEDS_GIT("2.18", "it cannot be told to look for copies");
    gitInRepository({"config", "status.renames", "copies"});
    writeContents("old");
    gitInRepository({"add", "."});
    commitIndex();
    writeFile("repository/new", contentsForFile("old"));
    gitInRepository({"add", "-N", "new"});
    changeFile("old");
    EXPECT_THAT(listing(), UnorderedElementsAre(" C None old -> new", " M Regular old"));
}

TEST_F(RVGitWorkingTreeStatesTest, ADeletedFileMayComeBackAsARenamedOrCopiedOne) {
    RVGIT_TEST_NEEDS_GIT("2.18", "it cannot be told to look for copies");
    for (const char* file : {"old", "new"})
        writeContents(file);
    gitInRepository({"add", "."});
    commitIndex();
    gitInRepository({"rm", "-q", "--cached", "new"});
    writeFile("repository/new", contentsForFile("old"));
    gitInRepository({"add", "-N", "new"});
    remove("old");
    EXPECT_THAT(listing(), ElementsAre("DR None old -> new"));
    changeFile("old");
    gitInRepository({"config", "status.renames", "copies"});
    EXPECT_THAT(listing(), UnorderedElementsAre("DC None old -> new", " M Regular old"));
}

TEST_F(RVGitWorkingTreeStatesTest, TheSevenKindsOfConflict) {
    makeConflicts();
    EXPECT_THAT(listing(), UnorderedElementsAre(
                               "UU Regular both", "AA Regular added", "DU Regular ours-deleted",
                               "UD Regular theirs-deleted", "DD None renamed",
                               "AU Regular renamed-by-us", "UA Regular renamed-by-them"));
    expectListingOfGit();
    const auto stages = [&](const std::string& file) {
        // Attached, and loaded one by one.
        std::string text;
        for (const auto& entry : {entryAt(file, everything), entryAt(file)}) {
            text += entry->unmergedBaseVersion() ? "1" : "-";
            text += entry->unmergedOursVersion() ? "2" : "-";
            text += entry->unmergedTheirsVersion() ? "3 " : "- ";
        }
        return text;
    };
    EXPECT_EQ(stages("both"), "123 123 ");
    EXPECT_EQ(stages("added"), "-23 -23 ");
    EXPECT_EQ(stages("ours-deleted"), "1-3 1-3 ");
    EXPECT_EQ(stages("theirs-deleted"), "12- 12- ");
    EXPECT_EQ(stages("renamed"), "1-- 1-- ");
    EXPECT_EQ(stages("renamed-by-us"), "-2- -2- ");
    EXPECT_EQ(stages("renamed-by-them"), "--3 --3 ");
}

TEST_F(RVGitWorkingTreeStatesTest, AFileOfWhichOnlyTheIntentIsKnown) {
    makeCommit();
    writeFile("repository/intent", "contents");
    gitInRepository({"add", "-N", "intent"});
    EXPECT_THAT(listing(), ElementsAre(" A Regular intent"));
    const auto entry = entryAt("intent", everything);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->stagedVersion()->objectHash(), "e69de29bb2d1d6434b8b29ae775ad8c2e48c5391");
    EXPECT_EQ(entry->baseVersion(), nullptr);
}

TEST_F(RVGitWorkingTreeStatesTest, AChangedModeIsAChange) {
    makeCommit();
    std::filesystem::permissions(scratchPath("repository/file.txt"),
                                 std::filesystem::perms::owner_all);
    EXPECT_THAT(listing(), ElementsAre(" M Executable file.txt"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, LinksAreNotFollowed) {
    makeDirectory("repository/dir");
    writeFile("repository/dir/file", "");
    std::filesystem::create_directory_symlink("dir", scratchPath("repository/to dir"));
    std::filesystem::create_symlink("nowhere", scratchPath("repository/dangling"));
    EXPECT_THAT(listing(), UnorderedElementsAre("?? Directory dir", "?? Symbolic Link to dir",
                                                "?? Symbolic Link dangling"));
    gitInRepository({"add", "."});
    commitIndex();
    EXPECT_THAT(listing(), IsEmpty());
    remove("dangling");
    replaceByLink("to dir", "elsewhere");
    EXPECT_THAT(listing(), UnorderedElementsAre(" D None dangling", " M Symbolic Link to dir"));
    expectListingOfGit();
}

// Submodules.

TEST_F(RVGitWorkingTreeStatesTest, ACleanSubmoduleIsListedWithUnchangedFiles) {
    addSubmodule("module");
    EXPECT_THAT(listing(), IsEmpty());
    EXPECT_THAT(listing(everything), ElementsAre("   Regular .gitmodules", "   Submodule module"));
}

TEST_F(RVGitWorkingTreeStatesTest, AChangedSubmoduleHasItsModeFromTheIndex) {
    const std::string module = addSubmodule("module");
    writeFile("repository/module/inside", "changed");
    EXPECT_THAT(listing(), ElementsAre(" M Submodule module"));
    EXPECT_EQ(entryAt("module")->stagedVersion()->objectHash(),
              gitInRepository({"rev-parse", ":module"}));
    expectListingOfGit();
    git({"checkout", "-q", "inside"}, module);
    writeFile("repository/module/untracked", "");
    EXPECT_THAT(listing(), ElementsAre(" M Submodule module"));
    EXPECT_THAT(listing(RVOptions{
                    {RVGitWorkingTreeOptionIgnoreSubmodulesMode, RVGitIgnoreSubmodulesModeDirty}}),
                IsEmpty());
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ASubmoduleOfAnotherCommitMayBeStaged) {
    const std::string module = addSubmodule("module");
    commitFile(module, "inside", "2", "Moved");
    EXPECT_THAT(listing(), ElementsAre(" M Submodule module"));
    EXPECT_THAT(listing(RVOptions{
                    {RVGitWorkingTreeOptionIgnoreSubmodulesMode, RVGitIgnoreSubmodulesModeDirty}}),
                ElementsAre(" M Submodule module"));
    EXPECT_THAT(listing(RVOptions{
                    {RVGitWorkingTreeOptionIgnoreSubmodulesMode, RVGitIgnoreSubmodulesModeAll}}),
                IsEmpty());
    gitInRepository({"add", "module"});
    EXPECT_THAT(listing(), ElementsAre("M  Submodule module"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ASubmoduleMayHaveAnotherName) {
    addSubmodule("module");
    gitInRepository({"mv", "module", "new module"});
    EXPECT_THAT(listing(), UnorderedElementsAre("M  Regular .gitmodules",
                                                "R  Submodule new module <- module"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ASubmoduleThatIsNotInitialisedIsUnchanged) {
    addSubmodule("module");
    gitInRepository({"submodule", "--quiet", "deinit", "-f", "module"});
    EXPECT_THAT(listing(), IsEmpty());
    EXPECT_THAT(listing(everything), ElementsAre("   Regular .gitmodules", "   Submodule module"));
}

TEST_F(RVGitWorkingTreeStatesTest, ADeletedSubmoduleHasNoModeUnlessTheIndexIsRead) {
    addSubmodule("module");
    std::filesystem::remove_all(scratchPath("repository/module"));
    EXPECT_THAT(listing(), ElementsAre(" D None module"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeSubmodules, true}}),
                ElementsAre(" D Submodule module"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ARepositoryThatIsNoSubmoduleIsAnUntrackedDirectory) {
    makeCommit();
    commitFile(initRepository("repository/nested"), "inside", "", "Message");
    EXPECT_THAT(listing(), ElementsAre("?? Directory nested"));
    EXPECT_THAT(listing(everything), Contains("?? Directory nested"));
    expectListingOfGit();
}

// Kinds of repositories.

TEST_F(RVGitWorkingTreeStatesTest, AnUnbornBranchListsWhatIsStagedAndUntracked) {
    EXPECT_THAT(listing(everything), IsEmpty());
    stageFile("staged", "1");
    writeFile("repository/new", "");
    EXPECT_THAT(listing(), ElementsAre("A  Regular staged", "?? Regular new"));
    EXPECT_EQ(entryAt("staged")->baseVersion(), nullptr);
    writeFile("repository/staged", "2");
    EXPECT_THAT(listing(), ElementsAre("AM Regular staged", "?? Regular new"));
    expectListingOfGit();
}

TEST_F(RVGitWorkingTreeStatesTest, ABareRepositoryHasNoWorkingTree) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(initBareRepository());
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(bare, &error));
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitWorkingTreeStatesTest, ALinkedWorktreeHasAListingOfItsOwn) {
    makeCommit();
    const std::string path = scratchPath("linked");
    gitInRepository({"worktree", "add", path});
    writeFile("linked/file.txt", "changed");
    writeFile("repository/new", "");
    const auto linked = RVGitRepository::repositoryWithPath(path);
    const auto changed = RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(linked);
    ASSERT_TRUE(changed);
    ASSERT_EQ(changed->size(), 1u);
    EXPECT_EQ(textOfEntry(*changed->front()), " M Regular file.txt");
    EXPECT_EQ(changed->front()->absoluteFilePath(), path + "/file.txt");
    EXPECT_NE(changed->front()->stagedVersion(), nullptr);
    EXPECT_THAT(listing(), ElementsAre("?? Regular new"));
}

// Everything at once.

TEST_F(RVGitWorkingTreeStatesTest, ATreeWithEveryStateAtOnceIsWhatGitTellsInAnotherFormat) {
    const std::string module = addSubmodule("changed module");
    addSubmodule("clean module");
    for (const char* file : {"unchanged", "dir/unchanged", "assumed", "skipped", "renamed 1",
                             "renamed 2", "renamed 3", "mode", "caf\u00E9", "\"q\"\\\t\n"})
        writeContents(file);
    writeFile("repository/.gitignore", "*.o\nignored dir/\n");
    gitInRepository({"add", "."});
    makeConflicts();

    for (const char* number : {"1", "2", "3"})
        gitInRepository({"mv", std::string("renamed ") + number, std::string("new ") + number});
    changeFile("new 2");
    remove("new 3");
    std::filesystem::permissions(scratchPath("repository/mode"), std::filesystem::perms::owner_all);
    for (const char* file : {"caf\u00E9", "\"q\"\\\t\n", "assumed", "skipped"})
        changeFile(file);
    gitInRepository({"update-index", "--assume-unchanged", "assumed"});
    gitInRepository({"update-index", "--skip-worktree", "skipped"});
    writeFile("repository/changed module/inside", "changed");
    for (const char* file : {"new file", "new dir/a", "new dir/b/c", "x.o", "ignored dir/y"})
        writeContents(file);
    std::filesystem::create_symlink("nowhere", scratchPath("repository/new link"));
    stageFile("added", "settled\n");
    for (const char* file : {"staged", "staged twice"}) {
        writeContents(file);
        stage(file);
    }
    changeFile("staged twice");
    writeContents("intent");
    gitInRepository({"add", "-N", "intent"});
    expectListingOfGit();

    std::set<std::string> letters;
    for (const auto& entry : entries(everything))
        letters.insert(textOfEntry(*entry).substr(0, 2));
    EXPECT_THAT(letters, ElementsAre("  ", " A", " M", "!!", "??", "A ", "AM", "AU", "DD", "DU",
                                     "M ", "R ", "RD", "RM", "UA", "UD", "UU"));
}

}  // namespace
