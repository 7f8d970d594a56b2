#include <filesystem>
#include <map>
#include <set>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitTreeEntry.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/worktree/RVGitWorkingTreeStatesTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::vector<std::string> uglyNames = {
    "-dash",  ":colon",   ":(top)",    "[brackets]", "star*",      "quest?",     " before",
    "after ", "tab\t",    "new\nline", "\r",         "\"quoted\"", "\"",         "back\\slash",
    "\\101",  "a -> b",   "-> b",      "caf\u00E9",  "cafe\u0301", "\u00E9 \t",  "\U0001F389",
    "#hash",  "!bang",    "~",         "$x",         "'single'",   "a//b\u2028", "\x01\x7F",
    "{a,b}",  "x -> y/z", "a\"b c",    "%s%d",
};

class RVGitWorkingTreePathNamesTest : public RVGitWorkingTreeStatesTestCase {};

TEST_F(RVGitWorkingTreePathNamesTest, EveryNameComesThroughStatusAndIndex) {
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

TEST_F(RVGitWorkingTreePathNamesTest,
       NamesOfOtherScriptsAreTheSameWhetherOrNotGitIsConfiguredToQuoteThem) {
    gitInRepository({"config", "core.quotePath", "false"});
    for (const char* name : {"caf\u00E9", "cafe\u0301", "\u00E9 a", "\U0001F389", "\u00E9\t",
                             "\u00E9 \"q\" \\", "\u00E9\n"})
        writeFile(std::string("repository/") + name, "");
    EXPECT_THAT(listing(), UnorderedElementsAre("?? Regular caf\u00E9", "?? Regular cafe\u0301",
                                                "?? Regular \u00E9 a", "?? Regular \U0001F389",
                                                "?? Regular \u00E9\t", "?? Regular \u00E9 \"q\" \\",
                                                "?? Regular \u00E9\n"));
}

TEST_F(RVGitWorkingTreePathNamesTest, ANameThatIsNoUTF8IsTextThatNamesNoFile) {
    writeFile("repository/caf\xE9", "1");
    EXPECT_THAT(listing(), ElementsAre("?? None caf\u00E9"));
    gitInRepository({"add", "."});
    EXPECT_THAT(listing(everything), ElementsAre("A  None caf\u00E9"));
    // Beside a file of that text the two are one entry, of the later line.
    writeFile("repository/caf\u00E9", "2", 0755);
    EXPECT_THAT(listing(), ElementsAre("?? Executable caf\u00E9"));
    // Unquoted, it is decoded by itself, and spoils no other name.
    gitInRepository({"config", "core.quotePath", "false"});
    EXPECT_THAT(listing(), ElementsAre("?? Executable caf\u00E9"));
    EXPECT_EQ(gitInRepository({"ls-files", "-z"}), std::string("caf\xE9\0", 5))
        << "nothing is lost";
}

TEST_F(RVGitWorkingTreePathNamesTest, AControlCharacterThatGitWritesAsALetterMakesItAnotherName) {
    const std::map<std::string, char> files = {
        {"bell", '\x07'}, {"backspace", '\x08'}, {"vertical", '\x0B'}, {"form feed", '\x0C'}};
    const auto odd = [&](const std::string& file) { return file + files.at(file) + "x"; };
    std::vector<std::string> untracked;
    std::vector<std::string> staged;
    for (const auto& [file, character] : files) {
        stageFile(file, "old");
        untracked.push_back("?? Regular " + file);
        staged.push_back("A  Regular " + file);
        staged.push_back("   Regular " + odd(file));
    }
    commitIndex();
    for (const auto& [file, character] : files) {
        writeFile("repository/" + file, "changed");
        writeFile("repository/" + odd(file), "odd");
    }
    EXPECT_THAT(listing(), testing::UnorderedElementsAreArray(untracked))
        << "of the two names the later line's is left, as the other file";

    const auto expectFilesAndIndex = [&](const std::string& letters) {
        const auto statuses =
            porcelainStatusesByPath(git({"status", "--porcelain=v2", "-z"}, repositoryPath()));
        EXPECT_EQ(statuses.size(), 2 * files.size());
        for (const auto& [file, character] : files) {
            ASSERT_TRUE(statuses.contains(file) && statuses.contains(odd(file))) << file;
            EXPECT_EQ(statuses.at(file).right, 'M');
            EXPECT_EQ(statuses.at(odd(file)).left, letters[0]);
            EXPECT_EQ(readFile("repository/" + file), "changed");
            EXPECT_EQ(readFile("repository/" + odd(file)), "odd");
            EXPECT_EQ(gitInRepository({"show", ":" + file}), "old");
        }
    };
    expectFilesAndIndex("??");

    // The index is read without quotes.
    gitInRepository({"add", "-A", "--", ":(glob)*x"});
    EXPECT_THAT(listing(everything), testing::UnorderedElementsAreArray(staged));
    expectFilesAndIndex("A ");

    // Two more characters go with the letter.
    gitInRepository({"reset", "-q", "--hard"});
    writeFile("repository/long\x07xyz", "1");
    EXPECT_THAT(listing(), ElementsAre(std::string("?? None long\0z", 14)));
    EXPECT_EQ(readFile("repository/long\x07xyz"), "1");
}

TEST_F(RVGitWorkingTreePathNamesTest, ARenameToANameWithAnArrowCannotBeListed) {
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
    changeFile("a -> b");
    EXPECT_THAT(listing(), ElementsAre(" M Regular a -> b"));
}

TEST_F(RVGitWorkingTreePathNamesTest, RenamesOfOtherUglyNamesAreListed) {
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

TEST_F(RVGitWorkingTreePathNamesTest, APathIsASpecificationOfGits) {
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

TEST_F(RVGitWorkingTreePathNamesTest, ADirectoryInWhichAFileIsLookedUpIsASpecificationToo) {
    for (const char* name : {":dir/a", "caf\u00E9/a", "star*/a"})
        stageFile(name, "");
    const auto isFound = [&](const std::string& filePath) {
        auto error = filledPlace();
        const auto entry =
            RVGitWorkingTreeEntry::workingTreeEntryForFilePath(filePath, repository(), &error);
        EXPECT_EQ(error.has_value(), entry != nullptr) << "the place is cleared";
        return entry != nullptr;
    };
    EXPECT_TRUE(isFound("star*/a"));
    EXPECT_TRUE(isFound("caf\u00E9/a"));
    EXPECT_FALSE(isFound("cafe\u0301/a"));
    EXPECT_FALSE(isFound(":dir/a"));
}

TEST_F(RVGitWorkingTreePathNamesTest, APatternFindsChangesButNothingOfTheIndex) {
    for (const char* name : {"star*", "starling", "starry"})
        stageFile(name, "");
    commitIndex();
    writeFile("repository/starry", "changed");
    EXPECT_THAT(listing(everything, "starling"), ElementsAre("   Regular starling"));
    EXPECT_THAT(listing(everything, "star*"), ElementsAre(" M Regular starry", "   Regular star*"))
        << "the name that begins with the pattern";
    EXPECT_THAT(listing(everything, ":(literal)star*"), IsEmpty());
    for (const char* pattern : {"star*", ":(literal)starry"}) {
        const auto changed = entries(everything, pattern);
        ASSERT_FALSE(changed.empty()) << pattern;
        EXPECT_EQ(textOfEntry(*changed.front()), " M Regular starry") << pattern;
        EXPECT_FALSE(changed.front()->hasLoadedIndexVersions()) << pattern;
    }
}

TEST_F(RVGitWorkingTreePathNamesTest, AVersionThatIsReadAloneIsLookedUpByASpecification) {
    for (const char* name : {"star*", "starling", "[a]", "a", ":colon"})
        commitFile("repository", std::string("./") + name, name, "Message");
    for (const char* name : {"star*", "[a]", ":colon"})
        writeFile(std::string("repository/") + name, "changed");
    for (const char* name : {"star*", "[a]"}) {
        const auto entry = entryAt(name);
        ASSERT_TRUE(entry);
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
