#include "RVGit/worktree/RVGitIgnores.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

using Lines = std::vector<std::string>;

/// An error that must be gone, or replaced, afterwards.
std::optional<RVError> staleError() {
    return RVError("stale", 1);
}

struct stat statusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

/// No file can grow beyond so many bytes while it lives: a write is cut off there and then fails.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &oldLimit_), 0);
        const struct rlimit limit = {bytes, oldLimit_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &oldLimit_);
        std::signal(SIGXFSZ, oldHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*oldHandler_)(int);
    struct rlimit oldLimit_ = {};
};

class RVGitIgnoresTest : public RVGitRepositoryTestCase {
protected:
    const std::string path = scratchPath("repository/.gitignore");
    const std::shared_ptr<RVGitIgnores> ignores =
        std::make_shared<RVGitIgnores>(repository(), path);

    std::string contents() const { return readFile(path); }
    void expectError(const std::optional<RVError>& error, std::int64_t code) const {
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), code);
        EXPECT_EQ(error->domain(), RVGitErrorDomain);
        EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), repositoryPath());
        EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), path);
        EXPECT_FALSE(error->userInfo().contains(RVGitIgnoresPathErrorKey));
    }
    /// Every operation that reads fails with 400.
    void expectUnreadable() const {
        auto error = staleError();
        EXPECT_EQ(ignores->readIgnorePatterns(&error), std::nullopt);
        expectError(error, RVGitIgnoresReadError);
        error = staleError();
        EXPECT_EQ(ignores->rawIgnorePatterns(&error), std::nullopt);
        expectError(error, RVGitIgnoresReadError);
        error = staleError();
        EXPECT_EQ(ignores->allIgnorePatterns(&error), std::nullopt);
        expectError(error, RVGitIgnoresReadError);
        error = staleError();
        EXPECT_FALSE(ignores->existsIgnorePattern("a", &error));
        expectError(error, RVGitIgnoresReadError);
        error = staleError();
        EXPECT_FALSE(ignores->addIgnorePattern("a", &error));
        expectError(error, RVGitIgnoresReadError);
        error = staleError();
        EXPECT_FALSE(ignores->removeIgnorePattern("a", &error));
        expectError(error, RVGitIgnoresReadError);
    }
    void expectUnwritable(const Lines& patterns = {"a"}) const {
        auto error = staleError();
        EXPECT_FALSE(ignores->writeIgnorePatterns(patterns, &error));
        expectError(error, RVGitIgnoresWriteError);
        EXPECT_FALSE(ignores->setIgnorePatterns(patterns));
    }
};

TEST_F(RVGitIgnoresTest, KnowsRepositoryAndPath) {
    EXPECT_EQ(ignores->repository(), repository());
    EXPECT_EQ(ignores->filePath(), path);
    EXPECT_THROW(RVGitIgnores(nullptr, path), RVInvalidParameterException);
}

TEST_F(RVGitIgnoresTest, TheTwoFilesOfARepository) {
    EXPECT_EQ(RVGitIgnores::defaultIgnoresForRepository(repository())->filePath(), path);
    EXPECT_EQ(RVGitIgnores::ignoresWithExcludeFileForRepository(repository())->filePath(),
              repositoryPath() + "/.git/info/exclude");
    EXPECT_THROW((void)RVGitIgnores::defaultIgnoresForRepository(nullptr),
                 RVInvalidParameterException);
    EXPECT_THROW((void)RVGitIgnores::ignoresWithExcludeFileForRepository(nullptr),
                 RVInvalidParameterException);
}

TEST_F(RVGitIgnoresTest, ABareRepositoryHasTheExcludeFileOnly) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(initBareRepository());
    EXPECT_EQ(RVGitIgnores::defaultIgnoresForRepository(bare), nullptr);
    EXPECT_EQ(bare->ignores(), nullptr);
    auto error = staleError();
    EXPECT_EQ(RVGitIgnores::allIgnorePatternsFromDefaultIgnoresForRepository(bare, &error),
              std::nullopt);
    EXPECT_FALSE(error.has_value());
    writeFile("bare.git/info/exclude", "*.o\n");
    EXPECT_THAT(RVGitIgnores::allIgnorePatternsFromExcludeFileForRepository(bare),
                Optional(ElementsAre("*.o")));
}

TEST_F(RVGitIgnoresTest, AnInvalidRepositoryHasNeither) {
    const auto invalid = std::make_shared<RVGitRepository>(scratchPath("nowhere"), std::nullopt);
    EXPECT_EQ(invalid->excludes(), nullptr);
    EXPECT_THROW((void)RVGitIgnores::ignoresWithExcludeFileForRepository(invalid),
                 RVInvalidParameterException);
}

TEST_F(RVGitIgnoresTest, APathAloneAlwaysThrows) {
    try {
        (void)RVGitIgnores::ignoresWithFilePath(path);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: repository");
    }
}

TEST_F(RVGitIgnoresTest, ReadsTheEffectivePatternsOfBothFiles) {
    writeFile(path, "# comment\n*.o\n");
    writeFile("repository/.git/info/exclude", " *.log \n");
    EXPECT_THAT(RVGitIgnores::allIgnorePatternsFromDefaultIgnoresForRepository(repository()),
                Optional(ElementsAre("*.o")));
    EXPECT_THAT(RVGitIgnores::allIgnorePatternsFromExcludeFileForRepository(repository()),
                Optional(ElementsAre("*.log")));
}

TEST_F(RVGitIgnoresTest, AFileThatDoesNotExistIsAnEmptyListAndNoError) {
    std::optional<RVError> error;
    EXPECT_THAT(ignores->readIgnorePatterns(&error), Optional(IsEmpty()));
    EXPECT_THAT(ignores->rawIgnorePatterns(&error), Optional(IsEmpty()));
    EXPECT_THAT(ignores->allIgnorePatterns(&error), Optional(IsEmpty()));
    EXPECT_FALSE(error.has_value());
    EXPECT_FALSE(fileExists(path));
}

TEST_F(RVGitIgnoresTest, LinesAreReadAsTheyStand) {
    const struct {
        std::string contents;
        Lines lines;
        Lines patterns;
    } cases[] = {
        {"", {}, {}},
        {"\n", {""}, {}},
        {"\n\n", {"", ""}, {}},
        {"a", {"a"}, {"a"}},
        {"a\n", {"a"}, {"a"}},
        {"a\n\n", {"a", ""}, {"a"}},
        {"a\n\n# comment\nb\n", {"a", "", "# comment", "b"}, {"a", "b"}},
        {"a\r\n\r\nb\r\n", {"a\r", "\r", "b\r"}, {"a", "b"}},
        {" a b \n\t# no\n\\#yes\n!c\\ \n",
         {" a b ", "\t# no", "\\#yes", "!c\\ "},
         {"a b", "\\#yes", "!c\\"}},
        {"\u00a0\n\u2003x\u2028\n", {"\u00a0", "\u2003x\u2028"}, {"x"}},
        {"n\0l\n"s, {"n\0l"s}, {"n\0l"s}},
        {"\u00e9\ne\u0301\n", {"\u00e9", "e\u0301"}, {"\u00e9", "e\u0301"}},
    };
    for (const auto& [contents, lines, patterns] : cases) {
        writeFile(path, contents);
        EXPECT_EQ(ignores->readIgnorePatterns(), lines) << contents;
        EXPECT_EQ(ignores->rawIgnorePatterns(), lines) << contents;
        EXPECT_EQ(ignores->allIgnorePatterns(), patterns) << contents;
    }
}

TEST_F(RVGitIgnoresTest, ARewriteKeepsEveryByteAndEndsInANewline) {
    for (const std::string& contents : {"a\n"s, "a"s, "\n"s, "\n\n\n"s, "# c\r\n\r\n a \r\n"s,
                                        "\r"s, "a\0b\n\n"s, "\u00e9\t\nx"s}) {
        writeFile(path, contents);
        ASSERT_TRUE(ignores->writeIgnorePatterns(*ignores->readIgnorePatterns()));
        EXPECT_EQ(this->contents(), contents.ends_with('\n') ? contents : contents + "\n");
    }
}

TEST_F(RVGitIgnoresTest, DamagedFilesAreRewrittenUnchangedOrLeftAlone) {
    int numberUnreadable = 0;
    for (const std::string& contents : damagedOutputs("# c\n\n*.o\r\n!\u00e9 \\ \n")) {
        writeFile(path, contents);
        const bool succeeded = ignores->addIgnorePattern("new");
        const std::string expected =
            contents.empty() || contents.ends_with('\n') ? contents : contents + "\n";
        EXPECT_EQ(this->contents(), succeeded ? expected + "new\n" : contents)
            << testing::PrintToString(contents);
        numberUnreadable += !succeeded;
    }
    EXPECT_GT(numberUnreadable, 0);
}

TEST_F(RVGitIgnoresTest, WritesLines) {
    auto error = staleError();
    EXPECT_TRUE(ignores->writeIgnorePatterns({"a", "", " b ", "c\r"}, &error));
    EXPECT_EQ(contents(), "a\n\n b \nc\r\n");
    EXPECT_TRUE(ignores->setIgnorePatterns({"x"}));
    EXPECT_EQ(contents(), "x\n");
    EXPECT_TRUE(ignores->setIgnorePatterns({}));
    EXPECT_EQ(contents(), "\n");
}

TEST_F(RVGitIgnoresTest, AddingMakesTheFileAndItsDirectory) {
    EXPECT_TRUE(ignores->addIgnorePattern("*.o"));
    EXPECT_EQ(contents(), "*.o\n");
    const std::string deepPath = scratchPath("new/and/deep/.gitignore");
    EXPECT_TRUE(RVGitIgnores(repository(), deepPath).addIgnorePatterns({"a", "b"}));
    EXPECT_EQ(readFile(deepPath), "a\nb\n");
}

TEST_F(RVGitIgnoresTest, AddsBehindWhatIsThere) {
    writeFile(path, "# c\n\nb");
    EXPECT_TRUE(ignores->addIgnorePattern("a"));
    EXPECT_TRUE(ignores->addIgnorePatterns({"d", "b", "# c", "d", "B", "b "}));
    EXPECT_EQ(contents(), "# c\n\nb\na\nd\nB\nb \n");
}

TEST_F(RVGitIgnoresTest, AddingWhatIsThereWritesNothing) {
    writeFile(path, "a\nb");
    EXPECT_TRUE(ignores->addIgnorePattern("b"));
    EXPECT_TRUE(ignores->addIgnorePatterns({"b", "a"}));
    EXPECT_TRUE(ignores->addIgnorePatterns({}));
    EXPECT_EQ(contents(), "a\nb");
    fs::remove(path);
    EXPECT_TRUE(ignores->addIgnorePatterns({}));
    EXPECT_FALSE(fileExists(path));
}

TEST_F(RVGitIgnoresTest, PatternsAreComparedExactly) {
    writeFile(path, "a\r\n\u00e9\n");
    EXPECT_TRUE(ignores->addIgnorePatterns({"a", "e\u0301"}));
    EXPECT_EQ(contents(), "a\r\n\u00e9\na\ne\u0301\n");
    EXPECT_TRUE(ignores->removeIgnorePatterns({"a", "\u00e9"}));
    EXPECT_EQ(contents(), "a\r\ne\u0301\n");
}

TEST_F(RVGitIgnoresTest, RemovesEveryEqualLine) {
    writeFile(path, "a\n# c\nb\n\na\n a\n");
    EXPECT_TRUE(ignores->removeIgnorePattern("a"));
    EXPECT_EQ(contents(), "# c\nb\n\n a\n");
    EXPECT_TRUE(ignores->removeIgnorePatterns({"# c", "", "missing"}));
    EXPECT_EQ(contents(), "b\n a\n");
}

TEST_F(RVGitIgnoresTest, RemovingTheLastLineLeavesOneNewline) {
    writeFile(path, "a\n");
    EXPECT_TRUE(ignores->removeIgnorePattern("a"));
    EXPECT_EQ(contents(), "\n");
}

TEST_F(RVGitIgnoresTest, RemovingWritesEvenIfNothingIsRemoved) {
    writeFile(path, "a");
    EXPECT_TRUE(ignores->removeIgnorePattern("b"));
    EXPECT_EQ(contents(), "a\n");
    writeFile(path, "a");
    EXPECT_TRUE(ignores->removeIgnorePatterns({}));
    EXPECT_EQ(contents(), "a\n");
    fs::remove(path);
    EXPECT_TRUE(ignores->removeIgnorePattern("b"));
    EXPECT_EQ(contents(), "\n");
}

TEST_F(RVGitIgnoresTest, AnyLineMakesAnyPatternExist) {
    auto error = staleError();
    EXPECT_FALSE(ignores->existsIgnorePattern("a", &error));
    EXPECT_FALSE(error.has_value());
    writeFile(path, "");
    EXPECT_FALSE(ignores->existsIgnorePattern("a"));
    for (const char* contents : {"a\n", "b\n", "# a\n", "\n"}) {
        writeFile(path, contents);
        EXPECT_TRUE(ignores->existsIgnorePattern("a")) << contents;
    }
}

TEST_F(RVGitIgnoresTest, InvalidUTF8FailsWith400AndStaysUntouched) {
    for (const std::string& contents : {"*.o\ncaf\xE9\n"s, "\xFF\xFE*\0"s, "\xED\xA0\x80"s}) {
        writeFile(path, contents);
        expectUnreadable();
        EXPECT_EQ(this->contents(), contents);
    }
}

TEST_F(RVGitIgnoresTest, APatternThatIsNoUTF8IsNotWritten) {
    writeFile(path, "a\n");
    auto error = staleError();
    EXPECT_FALSE(ignores->addIgnorePattern("caf\xE9", &error));
    expectError(error, RVGitIgnoresWriteError);
    EXPECT_EQ(contents(), "a\n");
}

TEST_F(RVGitIgnoresTest, WhatIsNoRegularFileIsNeitherReadNorWritten) {
    makeDirectory(path);
    expectUnreadable();
    expectUnwritable();
    fs::remove(path);
    fs::create_symlink("/dev/zero", path);
    expectUnreadable();
    expectUnwritable();
    fs::remove(path);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    expectUnreadable();
    expectUnwritable();
}

TEST_F(RVGitIgnoresTest, TheTextsOfTheErrorsShowNoPath) {
    makeDirectory(path);
    std::optional<RVError> error;
    EXPECT_EQ(ignores->readIgnorePatterns(&error), std::nullopt);
    EXPECT_EQ(error.value().localizedFailureReason(),
              "Failed to read ignores file at path “”. Make sure the path exists and is readable "
              "for your user.");
    EXPECT_FALSE(ignores->writeIgnorePatterns({"a"}, &error));
    EXPECT_EQ(error.value().localizedFailureReason(),
              "Failed to write the ignores file at path “”. Make sure the path is writable for "
              "your user.");
}

TEST_F(RVGitIgnoresTest, ADirectoryThatCannotBeMadeFailsWith401) {
    const std::string file = writeFile("file", "bytes");
    const RVGitIgnores below(repository(), file + "/directory/.gitignore");
    EXPECT_THAT(below.readIgnorePatterns(), Optional(IsEmpty()));
    for (const auto& failing : {std::make_shared<RVGitIgnores>(repository(), file + "/.gitignore"),
                                std::make_shared<RVGitIgnores>(repository(), below.filePath()),
                                std::make_shared<RVGitIgnores>(repository(), "/proc/new/x")}) {
        auto error = staleError();
        EXPECT_FALSE(failing->addIgnorePattern("a", &error));
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), RVGitIgnoresWriteError);
        EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), failing->filePath());
    }
    EXPECT_EQ(readFile(file), "bytes");
}

TEST_F(RVGitIgnoresTest, AReadOnlyFileFailsWith401) {
    writeFile(path, "old\n", 0444);
    {
        const RVUnprivilegedUser user(repositoryPath());
        RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
        EXPECT_THAT(ignores->readIgnorePatterns(), Optional(ElementsAre("old")));
        expectUnwritable();
        EXPECT_FALSE(ignores->addIgnorePattern("a"));
        EXPECT_FALSE(ignores->removeIgnorePattern("old"));
        EXPECT_TRUE(ignores->addIgnorePattern("old"));
    }
    EXPECT_EQ(contents(), "old\n");
}

TEST_F(RVGitIgnoresTest, AReadOnlyDirectoryFailsWith401OnlyForANewFile) {
    fs::permissions(repositoryPath(), fs::perms(0555));
    {
        const RVUnprivilegedUser user(repositoryPath());
        RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
        expectUnwritable();
        EXPECT_FALSE(
            RVGitIgnores(repository(), repositoryPath() + "/new/.gitignore").addIgnorePattern("a"));
    }
    EXPECT_FALSE(fileExists(path));
    fs::permissions(repositoryPath(), fs::perms(0755));
    writeFile(path, "old\n", 0666);
    fs::permissions(repositoryPath(), fs::perms(0555));
    {
        const RVUnprivilegedUser user(repositoryPath());
        EXPECT_TRUE(ignores->addIgnorePattern("a"));
    }
    fs::permissions(repositoryPath(), fs::perms(0755));
    EXPECT_EQ(contents(), "old\na\n");
}

TEST_F(RVGitIgnoresTest, AFileThatCannotBeReadCanBeReplaced) {
    writeFile(path, "old\n", 0222);
    {
        const RVUnprivilegedUser user(repositoryPath());
        RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
        EXPECT_TRUE(ignores->writeIgnorePatterns({"new"}));
    }
    fs::permissions(path, fs::perms(0644));
    EXPECT_EQ(contents(), "new\n");
}

TEST_F(RVGitIgnoresTest, AnUnreadableFileFailsWith400) {
    writeFile(path, "old\n", 0222);
    {
        const RVUnprivilegedUser user(repositoryPath());
        RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
        expectUnreadable();
    }
    fs::permissions(path, fs::perms(0644));
    EXPECT_EQ(contents(), "old\n");
}

TEST_F(RVGitIgnoresTest, TheFileKeepsItsIdentityAndPermissions) {
    writeFile(path, "a long old line\n", 0640);
    fs::create_hard_link(path, scratchPath("other"));
    const auto before = statusOf(path);
    EXPECT_TRUE(ignores->writeIgnorePatterns({"a"}));
    const auto after = statusOf(path);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(readFile("other"), "a\n");
}

TEST_F(RVGitIgnoresTest, NothingIsReadOrWrittenThroughALink) {
    writeFile("shared", "a\n", 0600);
    fs::create_symlink("../shared", path);
    expectUnreadable();
    expectUnwritable();
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(readFile("shared"), "a\n");
}

TEST_F(RVGitIgnoresTest, AFileOfTheCallersOwnIsReadThroughALink) {
    writeFile("shared", "a\n");
    fs::create_symlink("shared", scratchPath("own"));
    EXPECT_THAT(RVGitIgnores(repository(), scratchPath("own")).readIgnorePatterns(),
                Optional(ElementsAre("a")));
}

TEST_F(RVGitIgnoresTest, TheGitDirectoryItselfMayBeALink) {
    const std::string tree = makeDirectory("tree");
    fs::create_symlink(repositoryPath() + "/.git", tree + "/.git");
    const auto other =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(tree, tree + "/.git");
    const auto excludes = RVGitIgnores::ignoresWithExcludeFileForRepository(other);
    EXPECT_TRUE(excludes->setIgnorePatterns({"a"}));
    EXPECT_THAT(excludes->readIgnorePatterns(), Optional(ElementsAre("a")));
    EXPECT_EQ(readFile("repository/.git/info/exclude"), "a\n");
}

TEST_F(RVGitIgnoresTest, NothingIsWrittenThroughADanglingLink) {
    fs::create_symlink("../shared", path);
    EXPECT_THAT(ignores->readIgnorePatterns(), Optional(IsEmpty()));
    expectUnwritable();
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_FALSE(fileExists("shared"));
}

TEST_F(RVGitIgnoresTest, NothingIsReadThroughALinkOnTheWay) {
    makeDirectory("elsewhere");
    writeFile("elsewhere/.gitignore", "secret\n");
    fs::create_symlink("../elsewhere", repositoryPath() + "/link");
    std::optional<RVError> error;
    EXPECT_EQ(RVGitIgnores(repository(), repositoryPath() + "/link/.gitignore")
                  .readIgnorePatterns(&error),
              std::nullopt);
    EXPECT_EQ(error.value().code(), RVGitIgnoresReadError);
}

TEST_F(RVGitIgnoresTest, NothingIsWrittenThroughALinkOnTheWay) {
    makeDirectory("elsewhere");
    fs::create_symlink("../elsewhere", repositoryPath() + "/link");
    for (const char* name : {"/link/.gitignore", "/link/new/.gitignore"}) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return RVGitIgnores(repository(), repositoryPath() + name)
                    .addIgnorePattern("a", error);
            },
            failsWith(RVGitIgnoresWriteError));
    }
    EXPECT_TRUE(fs::is_empty(scratchPath("elsewhere")));
}

TEST_F(RVGitIgnoresTest, AWriteThatFailsHalfWayPutsTheOldContentsBack) {
    const std::string old = "# kept\n" + std::string(1000, 'o') + "\n";
    writeFile(path, old);
    auto error = staleError();
    bool succeeded = true;
    {
        const FileSizeLimit limit(4096);
        succeeded = ignores->addIgnorePattern(std::string(100'000, 'x'), &error);
    }
    EXPECT_FALSE(succeeded);
    expectError(error, RVGitIgnoresWriteError);
    EXPECT_EQ(contents(), old);
}

TEST_F(RVGitIgnoresTest, AWriteThatFailsHalfWayLeavesANewFileEmpty) {
    bool succeeded = true;
    {
        const FileSizeLimit limit(4096);
        succeeded = ignores->addIgnorePattern(std::string(100'000, 'x'));
    }
    EXPECT_FALSE(succeeded);
    EXPECT_EQ(contents(), "");
}

TEST_F(RVGitIgnoresTest, AFullDiskFailsWith401AndKeepsTheOldContents) {
    // In a child with mounts of its own, so that none can stay behind.
    enum { Kept = 0, NotMounted = 10, Succeeded, OtherError, Lost };
    const std::string disk = makeDirectory("disk");
    const std::string file = disk + "/.gitignore";
    const std::string old(6000, 'o');
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // A thread that is not copied may hold a lock that is: better killed than waited for.
        ::alarm(30);
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0)
            ::_exit(NotMounted);
        const RVGitIgnores full(repository(), file);
        std::optional<RVError> error;
        if (!full.writeIgnorePatterns({old}))
            ::_exit(OtherError);
        if (full.addIgnorePattern(std::string(100'000, 'x'), &error))
            ::_exit(Succeeded);
        if (!error || error->code() != RVGitIgnoresWriteError)
            ::_exit(OtherError);
        ::_exit(full.readIgnorePatterns() == Lines{old} ? Kept : Lost);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    RVGIT_TEST_NEEDS_RIGHTS(WEXITSTATUS(status) != NotMounted, "no disk can be mounted");
    EXPECT_EQ(WEXITSTATUS(status), Kept);
}

TEST_F(RVGitIgnoresTest, GitIgnoresWhatIsAdded) {
    for (const char* name : {"a.o", "#hash", " blank", "na me", "\u00e9", "kept"})
        writeFile(scratchPath("repository/") + name, "");
    ASSERT_TRUE(repository()->ignores()->addIgnorePatterns({"*.o", "\\#hash", " blank"}));
    ASSERT_TRUE(repository()->excludes()->addIgnorePatterns({"na me", "\u00e9"}));
    EXPECT_EQ(gitInRepository({"status", "--short"}), "?? .gitignore\n?? kept");
}

TEST_F(RVGitIgnoresTest, TheRepositoryOwnsItsTwoFiles) {
    const auto ignored = repository()->ignores();
    const auto excluded = repository()->excludes();
    EXPECT_EQ(ignored->filePath(), path);
    EXPECT_EQ(excluded->filePath(), repositoryPath() + "/.git/info/exclude");
    EXPECT_EQ(repository()->ignores(), ignored);
    EXPECT_EQ(repository()->excludes(), excluded);
    EXPECT_EQ(ignored->repository(), repository());
}

TEST_F(RVGitIgnoresTest, OwnedFilesDoNotKeepTheRepositoryAliveButTheirPointersDo) {
    auto owner = std::make_shared<RVGitRepository>(repositoryPath(), repositoryPath() + "/.git");
    const std::weak_ptr<RVGitRepository> observer = owner;
    auto ignored = owner->ignores();
    auto excluded = owner->excludes();
    owner.reset();
    EXPECT_FALSE(observer.expired());
    EXPECT_EQ(ignored->repository(), observer.lock());
    ignored.reset();
    excluded.reset();
    EXPECT_TRUE(observer.expired());
}

}  // namespace
