#include <filesystem>
#include <set>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitTreeEntry.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/support/RVPorcelainStatus.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const RVOptions everything = {{RVGitWorkingTreeOptionIncludeUnchangedFiles, true},
                              {RVGitWorkingTreeOptionIncludeIgnoredFiles, true},
                              {RVGitWorkingTreeOptionUntrackedFilesMode, 3}};

class RVGitWorkingTreeStatesTest : public RVGitWorkingTreeTestCase {
protected:
    void writeContents(const std::string& file) const {
        writeFile("repository/" + file, contentsForFile(file));
    }
    void change(const std::string& file) const {
        writeFile("repository/" + file, contentsForFile(file) + "changed\n");
    }
    void stage(const std::string& file) const { gitInRepository({"add", "-f", "--", file}); }
    void remove(const std::string& file) const {
        std::filesystem::remove(scratchPath("repository/" + file));
    }
    void replaceByLink(const std::string& file, const std::string& target = "target") const {
        remove(file);
        std::filesystem::create_symlink(target, scratchPath("repository/" + file));
    }

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

    /// Compares the whole listing with what another format of git's tells.
    void expectListingOfGit() const {
        const auto statuses = porcelainStatusesByPath(
            git({"status", "--porcelain=v2", "-z", "--ignored", "--untracked-files=all"},
                repositoryPath()));
        std::set<std::string> paths;
        for (const auto& [path, status] : statuses)
            paths.insert(path);
        const std::string tracked = git({"ls-files", "-z"}, repositoryPath());
        for (const auto& path : componentsSeparatedByNULByte(tracked))
            if (!path.empty())
                paths.insert(std::string(path));

        const auto entries = entriesByPath(everything);
        std::set<std::string> listed;
        for (const auto& [path, entry] : entries) {
            listed.insert(path);
            SCOPED_TRACE(path);
            const auto status = statuses.find(path);
            if (status != statuses.end())
                expectEntry(*entry, status->second);
            else
                EXPECT_THAT(textOfEntry(*entry), testing::StartsWith("   "));
        }
        EXPECT_EQ(listed, paths);
    }

private:
    [[nodiscard]] static bool isNew(char left) {
        return left == 'A' || left == '?' || left == '!' || left == 'R' || left == 'C';
    }

    void makeState(char left, char right, const std::string& file) const {
        switch (left) {
            case 'M':
                change(file);
                stage(file);
                break;
            case 'T':
                replaceByLink(file);
                stage(file);
                break;
            case 'D':
                gitInRepository({"rm", "-q", "--cached", "--", file});
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
                    change(file);
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

    /// An entry against the record of the same path.
    void expectEntry(const RVGitWorkingTreeEntry& entry, const RVPorcelainStatus& status) const {
        EXPECT_EQ(textOfEntry(entry).substr(0, 2), std::string({status.left, status.right}));
        EXPECT_EQ(entry.originalFilePath(), status.originalPath);
        EXPECT_EQ(entry.isUnmergedFile(), status.isUnmerged);
        if (status.hashes.empty())
            return;
        const auto expectVersion = [](const std::shared_ptr<RVGitFileEntry>& version,
                                      const std::string& mode, const std::string& hash) {
            if (hash == RVGitNullObjectHash) {
                EXPECT_EQ(version, nullptr);
                return;
            }
            ASSERT_TRUE(version);
            EXPECT_EQ(version->objectHash(), hash);
            EXPECT_EQ(version->fileMode(), RVGitFileModeFromString(mode));
        };
        if (status.isUnmerged) {
            expectVersion(entry.unmergedBaseVersion(), status.modes[0], status.hashes[0]);
            expectVersion(entry.unmergedOursVersion(), status.modes[1], status.hashes[1]);
            expectVersion(entry.unmergedTheirsVersion(), status.modes[2], status.hashes[2]);
            EXPECT_EQ(entry.stagedVersion(), nullptr);
        } else {
            // Git reads a leading colon as magic.
            if (!status.path.starts_with(':'))
                expectVersion(entry.baseVersion(), status.modes[0], status.hashes[0]);
            // For git a file of which only the intent is known is not in the index, where it stands
            // with the hash of an empty one.
            if (status.right != 'A')
                expectVersion(entry.stagedVersion(), status.modes[1], status.hashes[1]);
        }
        // Git tells no mode of what is left over of a deleted file, and a deleted submodule keeps
        // the mode of the index here.
        const std::string& mode = status.modes.back();
        if (status.right != '?' && !status.submodule.starts_with('S')) {
            EXPECT_EQ(entry.fileMode(),
                      mode == "000000" ? RVGitFileModeNone : RVGitFileModeFromString(mode));
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
    writeContents("original");
    gitInRepository({"add", "."});
    commitIndex();
    change("original");
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

TEST_F(RVGitWorkingTreeStatesTest, ARenameInTheWorkingTreeAloneKeepsBothNamesInOnePath) {
    writeContents("old");
    gitInRepository({"add", "."});
    commitIndex();
    std::filesystem::rename(scratchPath("repository/old"), scratchPath("repository/new"));
    gitInRepository({"add", "-N", "new"});
    EXPECT_THAT(listing(), ElementsAre(" R None old -> new"));
    EXPECT_THAT(listing(RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true}}),
                ElementsAre(" R None old -> new", "   Regular new", "   Regular old"));
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
    gitInRepository({"worktree", "add", "-q", path});
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
    change("new 2");
    remove("new 3");
    std::filesystem::permissions(scratchPath("repository/mode"), std::filesystem::perms::owner_all);
    for (const char* file : {"caf\u00E9", "\"q\"\\\t\n", "assumed", "skipped"})
        change(file);
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
    change("staged twice");
    writeContents("intent");
    gitInRepository({"add", "-N", "intent"});
    expectListingOfGit();

    std::set<std::string> letters;
    for (const auto& entry : entries(everything))
        letters.insert(textOfEntry(*entry).substr(0, 2));
    EXPECT_THAT(letters, ElementsAre("  ", " A", " M", "!!", "??", "A ", "AM", "AU", "DD", "DU",
                                     "M ", "R ", "RD", "RM", "UA", "UD", "UU"));
}

// Ugly names.

const std::vector<std::string> uglyNames = {
    "-dash",  ":colon",   ":(top)",    "[brackets]", "star*",      "quest?",     " before",
    "after ", "tab\t",    "new\nline", "\r",         "\"quoted\"", "\"",         "back\\slash",
    "\\101",  "a -> b",   "-> b",      "caf\u00E9",  "cafe\u0301", "\u00E9 \t",  "\U0001F389",
    "#hash",  "!bang",    "~",         "$x",         "'single'",   "a//b\u2028", "\x01\x7F",
    "{a,b}",  "x -> y/z", "a\"b c",    "%s%d",
};

class RVGitUglyNamesTest : public RVGitWorkingTreeStatesTest {};

TEST_F(RVGitUglyNamesTest, EveryNameComesThroughStatusAndIndex) {
    std::set<std::string> expected;
    for (const std::string& name : uglyNames) {
        writeFile("repository/" + name, "1");
        expected.insert(std::filesystem::path(name).lexically_normal().string());
    }
    expected.insert(std::string(255, 'x'));
    writeFile("repository/" + std::string(255, 'x'), "1");
    const auto listed = [&](const char* letters, const RVOptions& options) {
        std::set<std::string> paths;
        for (const auto& entry : entries(options)) {
            EXPECT_EQ(textOfEntry(*entry).substr(0, 2), letters) << entry->filePath();
            EXPECT_EQ(entry->fileMode(), RVGitFileModeRegular) << entry->filePath();
            EXPECT_TRUE(paths.insert(entry->filePath()).second) << entry->filePath();
        }
        return paths;
    };
    const RVOptions untracked = {{RVGitWorkingTreeOptionUntrackedFilesMode, 3}};
    EXPECT_EQ(listed("??", untracked), expected);
    gitInRepository({"add", "."});
    EXPECT_EQ(listed("A ", everything), expected);
    expectListingOfGit();
    commitIndex();
    EXPECT_EQ(listed("  ", everything), expected);
    for (const std::string& path : expected)
        writeFile("repository/" + path, "22");
    EXPECT_EQ(listed(" M", everything), expected);
    expectListingOfGit();
    gitInRepository({"rm", "-q", "--cached", "-r", "."});
    EXPECT_EQ(listed("D?", untracked), expected);
}

TEST_F(RVGitUglyNamesTest, WithoutQuotesOfGitOtherScriptsComeThroughUnlessTheyAreQuotedAnyway) {
    gitInRepository({"config", "core.quotePath", "false"});
    for (const char* name : {"caf\u00E9", "cafe\u0301", "\u00E9 a", "\U0001F389"})
        writeFile(std::string("repository/") + name, "");
    EXPECT_THAT(listing(), UnorderedElementsAre("?? Regular caf\u00E9", "?? Regular cafe\u0301",
                                                "?? Regular \u00E9 a", "?? Regular \U0001F389"));
    // Quoted text that is not ASCII loses its quotes alone.
    writeFile("repository/\u00E9\t", "");
    EXPECT_THAT(listing(), Contains("?? None \u00E9\\t"));
}

TEST_F(RVGitUglyNamesTest, ANameThatIsNoUTF8IsTextThatNamesNoFile) {
    writeFile("repository/caf\xE9", "1");
    EXPECT_THAT(listing(), ElementsAre("?? None caf\u00E9"));
    gitInRepository({"add", "."});
    EXPECT_THAT(listing(everything), ElementsAre("A  None caf\u00E9"));
    // Beside a file of that text the two are one entry, of the later line.
    writeFile("repository/caf\u00E9", "2", 0755);
    EXPECT_THAT(listing(), ElementsAre("?? Executable caf\u00E9"));
    // Unquoted, it spoils the other names, all of which are then decoded as one byte a character.
    gitInRepository({"config", "core.quotePath", "false"});
    EXPECT_THAT(listing(), ElementsAre("A  Executable caf\u00E9", "?? None caf\u00C3\u00A9"));
    EXPECT_EQ(gitInRepository({"ls-files", "-z"}), std::string("caf\xE9\0", 5))
        << "nothing is lost";
}

TEST_F(RVGitUglyNamesTest, ARenameToANameWithAnArrowCannotBeListed) {
    writeContents("plain");
    gitInRepository({"add", "."});
    commitIndex();
    gitInRepository({"mv", "plain", "a -> b"});
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(repository(), &error));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "R  plain -> \"a -> b\"");
    EXPECT_EQ(gitInRepository({"ls-files"}), "a -> b") << "nothing is lost";
    commitIndex();
    change("a -> b");
    EXPECT_THAT(listing(), ElementsAre(" M Regular a -> b"));
}

TEST_F(RVGitUglyNamesTest, RenamesOfOtherUglyNamesAreListed) {
    const std::vector<std::string> names = {" a ", "tab\t", "caf\u00E9", "\"q\"", "-dash"};
    for (const std::string& name : names)
        writeContents(name);
    gitInRepository({"add", "."});
    commitIndex();
    std::vector<std::string> expected;
    for (const std::string& name : names) {
        gitInRepository({"mv", "--", name, "dir" + name});
        expected.push_back("R  Regular dir" + name + " <- " + name);
    }
    EXPECT_THAT(listing(), testing::UnorderedElementsAreArray(expected));
    expectListingOfGit();
}

TEST_F(RVGitUglyNamesTest, APathIsASpecificationOfGits) {
    for (const char* name : {"star*", "starling", ":colon", "[a]", "a"})
        stageFile(name, "");
    const auto listedAt = [&](const std::string& filePath) {
        return listing(std::nullopt, filePath);
    };
    EXPECT_THAT(listedAt("star*"), ElementsAre("A  Regular star*", "A  Regular starling"));
    EXPECT_THAT(listedAt("[a]"), ElementsAre("A  Regular [a]", "A  Regular a"));
    EXPECT_THAT(listedAt(":(literal)star*"), ElementsAre("A  Regular star*"));
    EXPECT_THAT(listedAt(":(literal):colon"), ElementsAre("A  Regular :colon"));
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitWorkingTreeEntry::workingTreeEntriesForFilePath(":(colon", repository(),
                                                                      std::nullopt, &error));
    EXPECT_TRUE(error.has_value());
    // One file is looked up by its directory, so that its own name may be anything.
    EXPECT_TRUE(RVGitWorkingTreeEntry::workingTreeEntryForFilePath(":colon", repository()));
    EXPECT_EQ(RVGitWorkingTreeEntry::workingTreeEntryForFilePath("star*", repository())->filePath(),
              "star*");
}

TEST_F(RVGitUglyNamesTest, AVersionThatIsReadAloneIsLookedUpByASpecification) {
    for (const char* name : {"star*", "starling", "[a]", "a", ":colon"})
        commitFile("repository", std::string("./") + name, name, "Message");
    for (const char* name : {"star*", "[a]", ":colon"})
        writeFile(std::string("repository/") + name, "changed");
    for (const char* name : {"star*", "[a]"}) {
        const auto entry = entryAt(name);
        ASSERT_TRUE(entry->stagedVersion()) << name;
        EXPECT_EQ(entry->stagedVersion()->filePath(), name);
        ASSERT_TRUE(entry->baseVersion()) << name;
        EXPECT_EQ(entry->baseVersion()->filePath(), name);
    }
    // A leading colon is magic, so that the version is found with a listing of the index alone.
    EXPECT_EQ(entryAt(":colon")->stagedVersion(), nullptr);
    EXPECT_EQ(entryAt(":colon")->baseVersion(), nullptr);
    EXPECT_NE(entryAt(":colon", everything)->stagedVersion(), nullptr);
}

}  // namespace
