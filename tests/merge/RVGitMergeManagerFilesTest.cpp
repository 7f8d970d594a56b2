#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;
using testing::HasSubstr;

/// Conflicts, file by file.
class RVGitMergeManagerFilesTest : public RVGitMergeManagerTestCase {};

TEST_F(RVGitMergeManagerFilesTest, TheSixWaysToResolve) {
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        SCOPED_TRACE(path());
        stopMerge();
        const std::string marked = read("file");
        EXPECT_THAT(marked, HasSubstr("<<<<<<<"));
        const std::string stages = unmerged();
        EXPECT_TRUE(manager().canResolveUnmergedFileByAdding("file"));
        EXPECT_TRUE(manager().canResolveUnmergedFileByRemoving("file"));
        EXPECT_TRUE(manager().canRestoreAncestorVersionForUnmergedFile("file"));
        EXPECT_TRUE(manager().canRestoreOurVersionForUnmergedFile("file"));
        EXPECT_TRUE(manager().canRestoreTheirVersionForUnmergedFile("file"));
        EXPECT_FALSE(manager().canRestoreAncestorVersionForUnmergedFile("other"));
        EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("missing"));

        expectSuccess(
            [&](RVErrorPlace e) { return manager().restoreOurVersionForUnmergedFile("file", e); });
        EXPECT_EQ(read("file"), "ours\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreTheirVersionForUnmergedFile("file", e);
        });
        EXPECT_EQ(read("file"), "four\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreAncestorVersionForUnmergedFile("file", e);
        });
        EXPECT_EQ(read("file"), "base\n");
        EXPECT_EQ(unmerged(), stages);
        expectSuccess(
            [&](RVErrorPlace e) { return manager().restoreUnmergedVersionForFile("file", e); });
        EXPECT_THAT(read("file"), HasSubstr("<<<<<<<"));
        EXPECT_EQ(unmerged(), stages);
        const std::string elsewhere = makeDirectory(path() + " elsewhere");
        write("file", "untouched\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreUnmergedVersionForFiles({"file"}, elsewhere, e);
        });
        EXPECT_THAT(readFile(elsewhere + "/file"), HasSubstr("<<<<<<<"));
        EXPECT_EQ(read("file"), "untouched\n");

        expectSuccess(
            [&](RVErrorPlace e) { return manager().resolveUnmergedFileByRemoving("file", e); });
        EXPECT_EQ(unmerged(), "");
        EXPECT_FALSE(fileExists(path() + "/file"));
        EXPECT_TRUE(manager().continueCurrentOperation());
    }
}

TEST_F(RVGitMergeManagerFilesTest, AFileThatOneSideHasDeleted) {
    stopMerge("gone");
    EXPECT_TRUE(manager().canRestoreAncestorVersionForUnmergedFile("file"));
    EXPECT_TRUE(manager().canRestoreOurVersionForUnmergedFile("file"));
    EXPECT_FALSE(manager().canRestoreTheirVersionForUnmergedFile("file"));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().restoreTheirVersionForUnmergedFile("file", e); },
        failsWith(RVGitRVGitGenericError));
    fs::remove(path() + "/file");
    EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("file"));
    // A link that leads nowhere can be staged.
    fs::create_symlink("nowhere", path() + "/file");
    EXPECT_TRUE(manager().canResolveUnmergedFileByAdding("file"));
    expectSuccess([&](RVErrorPlace e) { return manager().resolveUnmergedFileByAdding("file", e); });
    EXPECT_EQ(gitHere({"show", ":file"}), "nowhere");
}

TEST_F(RVGitMergeManagerFilesTest, RestoringTheAncestorStopsAtTheFirstThatHasNone) {
    stopMerge();
    std::optional<RVError> error = RVError("left", 4711);
    EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFiles({"file", "other", "x"}, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(read("file"), "base\n");
    EXPECT_EQ(read("other"), "other\n");
    EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFiles({}));
    // A file that cannot be written leaves the place alone.
    fs::remove(path() + "/file");
    fs::create_directory(path() + "/file");
    write("file/inside", "kept\n");
    error = RVError("left", 4711);
    EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFile("file", &error));
    EXPECT_EQ(error.value().code(), 4711);
    EXPECT_EQ(read("file/inside"), "kept\n");
}

TEST_F(RVGitMergeManagerFilesTest, ListsAreCutIntoBatches) {
    const auto limit = RVGitCommand::maximumNumberOfAllowedFilePathArguments();
    gitHere({"checkout", "-q", "-b", "many", "main"});
    const Words names = {"a", "b", "c", "d", "e"};
    for (const std::string& name : names)
        write(name, "ours\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Ours of many"});
    gitHere({"checkout", "-q", "-b", "others", "main"});
    for (const std::string& name : names)
        write(name, "theirs\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Theirs of many"});
    gitHere({"checkout", "-q", "many"});
    stopMerge("others");
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    EXPECT_TRUE(manager().restoreTheirVersionForUnmergedFiles(names));
    for (const std::string& name : names)
        EXPECT_EQ(read(name), "theirs\n");
    EXPECT_NE(unmerged(), "");
    EXPECT_TRUE(manager().restoreOurVersionForUnmergedFiles(names));
    for (const std::string& name : names)
        EXPECT_EQ(read(name), "ours\n");
    const std::string elsewhere = makeDirectory("elsewhere");
    EXPECT_TRUE(manager().restoreUnmergedVersionForFiles(names, elsewhere));
    EXPECT_TRUE(manager().restoreUnmergedVersionForFiles(names));
    for (const std::string& name : names) {
        EXPECT_THAT(read(name), HasSubstr("<<<<<<<"));
        EXPECT_THAT(readFile(elsewhere + "/" + name), HasSubstr("<<<<<<<"));
    }
    // A batch that fails ends it.
    EXPECT_FALSE(manager().restoreUnmergedVersionForFiles({"a", "b", "missing", "c", "d"}));
    EXPECT_TRUE(manager().resolveUnmergedFilesByAdding(names));
    EXPECT_EQ(unmerged(), "");
    EXPECT_TRUE(manager().resolveUnmergedFilesByRemoving(names));
    for (const std::string& name : names)
        EXPECT_FALSE(fileExists(path() + "/" + name));
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(limit);
}

TEST_F(RVGitMergeManagerFilesTest, NothingIsWrittenThroughALinkOutOfTheTree) {
    gitHere({"checkout", "-q", "main"});
    write("dir/file", "base\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Directory"});
    gitHere({"checkout", "-q", "-b", "their-dir"});
    write("dir/file", "theirs\n");
    gitHere({"commit", "-q", "-a", "-m", "Theirs in a directory"});
    gitHere({"checkout", "-q", "main"});
    write("dir/file", "ours\n");
    gitHere({"commit", "-q", "-a", "-m", "Ours in a directory"});
    stopMerge("their-dir");
    writeFile("outside/file", "precious\n");
    fs::remove_all(path() + "/dir");
    fs::create_directory_symlink(scratchPath("outside"), path() + "/dir");

    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return manager().restoreAncestorVersionForUnmergedFile("dir/file", error);
        },
        failsWith(ENOTDIR));
    EXPECT_EQ(readFile("outside/file"), "precious\n");
    EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("dir/file"));
    // Git puts a directory in the link's place, or fails; it does not follow it either.
    (void)manager().restoreOurVersionForUnmergedFile("dir/file");
    (void)manager().restoreTheirVersionForUnmergedFile("dir/file");
    (void)manager().restoreUnmergedVersionForFile("dir/file");
    (void)manager().resolveUnmergedFileByAdding("dir/file");
    (void)manager().resolveUnmergedFileByRemoving("dir/file");
    EXPECT_EQ(readFile("outside/file"), "precious\n");

    // A link in the file's own place is replaced.
    makePlace(RVGitMergePlace::Repository);
    stopMerge();
    fs::remove(path() + "/file");
    fs::create_symlink(scratchPath("outside/file"), path() + "/file");
    EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFile("file"));
    EXPECT_EQ(readFile("outside/file"), "precious\n");
    EXPECT_EQ(read("file"), "base\n");
    EXPECT_FALSE(fs::is_symlink(path() + "/file"));
}

TEST_F(RVGitMergeManagerFilesTest, PathsThatAreNoPlainNames) {
    // One file of each name, in conflict.
    const Words names = {"-dash", "--force", "a b",        "new\nline", "quo\"te", ":(top)x",
                         "*",     "[ab]",    "latin \xE9", "é",         "a..-b"};
    const auto commitAll = [&](const std::string& contents) {
        for (const std::string& name : names)
            write(name, contents);
        gitHere({"add", "-A"});
        gitHere({"commit", "-q", "-m", contents});
    };
    commitAll("base\n");
    gitHere({"checkout", "-q", "-b", "theirs"});
    commitAll("theirs\n");
    gitHere({"checkout", "-q", "main"});
    commitAll("ours\n");
    stopMerge("theirs");
    setEnvironmentVariable("GIT_LITERAL_PATHSPECS", "1");
    for (const std::string& name : names) {
        EXPECT_TRUE(manager().restoreTheirVersionForUnmergedFile(name)) << name;
        EXPECT_EQ(read(name), "theirs\n");
        EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFile(name)) << name;
        EXPECT_EQ(read(name), "base\n");
        EXPECT_TRUE(manager().restoreUnmergedVersionForFile(name)) << name;
        EXPECT_THAT(read(name), HasSubstr("<<<<<<<"));
    }
    EXPECT_TRUE(manager().resolveUnmergedFilesByAdding(names));
    EXPECT_EQ(unmerged(), "");
    const RVRepositorySnapshot before(path());
    for (const std::string& name : {"nul\0x"s, "../file"s, scratchPath("x"), ""s, "a/../file"s}) {
        EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFile(name));
        EXPECT_FALSE(manager().canResolveUnmergedFileByAdding(name));
        EXPECT_FALSE(manager().canRestoreAncestorVersionForUnmergedFile(name));
    }
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
}

}  // namespace
