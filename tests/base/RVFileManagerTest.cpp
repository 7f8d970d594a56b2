#include "RVGit/base/RVFileManager.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>

#include "tests/support/RVGitTestCase.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class RVFileManagerTest : public RVGitTestCase {
protected:
    /// The file "file", with one byte that is no UTF-8.
    std::string path = scratchPath("file \xFF");
    std::optional<RVError> error;

    [[nodiscard]] static unsigned permissionsOf(const std::string& file) {
        struct stat status;
        return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    void expectError(int code, const std::string& failedPath) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
        EXPECT_EQ(error->code(), code);
        EXPECT_EQ(error->userInfoString(RVFilePathErrorKey), failedPath);
        error.reset();
    }
};

TEST_F(RVFileManagerTest, KindsOfFilesAreToldApart) {
    writeFile(path, "x");
    const auto directory = makeDirectory("directory");
    std::filesystem::create_symlink(path, scratchPath("link"));
    std::filesystem::create_symlink("nowhere", scratchPath("dangling"));
    std::filesystem::create_directory_symlink(directory, scratchPath("directory link"));

    EXPECT_TRUE(RVFileManager::fileExistsAtPath(path));
    EXPECT_TRUE(RVFileManager::fileExistsAtPath(directory));
    EXPECT_TRUE(RVFileManager::fileExistsAtPath(scratchPath("link")));
    EXPECT_FALSE(RVFileManager::fileExistsAtPath(scratchPath("dangling")));
    EXPECT_FALSE(RVFileManager::fileExistsAtPath(scratchPath("nothing")));
    EXPECT_FALSE(RVFileManager::fileExistsAtPath(""));

    EXPECT_TRUE(RVFileManager::isDirectoryAtPath(directory));
    EXPECT_TRUE(RVFileManager::isDirectoryAtPath(scratchPath("directory link")));
    EXPECT_FALSE(RVFileManager::isDirectoryAtPath(path));
    EXPECT_FALSE(RVFileManager::isDirectoryAtPath(scratchPath("nothing")));

    EXPECT_TRUE(RVFileManager::isSymbolicLinkAtPath(scratchPath("link")));
    EXPECT_TRUE(RVFileManager::isSymbolicLinkAtPath(scratchPath("dangling")));
    EXPECT_FALSE(RVFileManager::isSymbolicLinkAtPath(path));
    EXPECT_FALSE(RVFileManager::isSymbolicLinkAtPath(scratchPath("nothing")));
}

TEST_F(RVFileManagerTest, PermissionsSayWhatMayBeDone) {
    writeFile("plain", "");
    writeFile("program", "", 0755);
    makeDirectory("directory");
    std::filesystem::create_symlink("program", scratchPath("link"));
    EXPECT_TRUE(RVFileManager::isReadableFileAtPath(scratchPath("plain")));
    EXPECT_TRUE(RVFileManager::isWritableFileAtPath(scratchPath("plain")));
    EXPECT_FALSE(RVFileManager::isReadableFileAtPath(scratchPath("nothing")));
    EXPECT_FALSE(RVFileManager::isWritableFileAtPath(scratchPath("nothing")));
    EXPECT_TRUE(RVFileManager::isExecutableFileAtPath(scratchPath("program")));
    EXPECT_TRUE(RVFileManager::isExecutableFileAtPath(scratchPath("link")));
    EXPECT_FALSE(RVFileManager::isExecutableFileAtPath(scratchPath("plain")));
    EXPECT_FALSE(RVFileManager::isExecutableFileAtPath(scratchPath("directory")));
    EXPECT_FALSE(RVFileManager::isExecutableFileAtPath(scratchPath("nothing")));
    writeFile("closed", "", 0);
    const RVUnprivilegedUser user(scratchDirectory());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    EXPECT_FALSE(RVFileManager::isReadableFileAtPath(scratchPath("closed")));
    EXPECT_FALSE(RVFileManager::isWritableFileAtPath(scratchPath("closed")));
}

TEST_F(RVFileManagerTest, NamesInADirectoryAreSortedAndComplete) {
    const auto directory = makeDirectory("directory");
    EXPECT_TRUE(RVFileManager::isEmptyDirectoryAtPath(directory, &error));
    EXPECT_FALSE(error);
    writeFile("directory/b", "");
    writeFile("directory/.a", "");
    writeFile("directory/\xFF", "");
    makeDirectory("directory/A b");
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(directory, &error),
                ElementsAre(".a", "A b", "b", "\xFF"));
    EXPECT_FALSE(error);
    EXPECT_FALSE(RVFileManager::isEmptyDirectoryAtPath(directory, &error));
    EXPECT_FALSE(error);
}

TEST_F(RVFileManagerTest, DirectoryThatCannotBeReadIsAnError) {
    writeFile(path, "");
    EXPECT_FALSE(RVFileManager::isEmptyDirectoryAtPath(path, &error));
    expectError(ENOTDIR, path);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchPath("nothing"), &error), IsEmpty());
    expectError(ENOENT, scratchPath("nothing"));
    EXPECT_FALSE(RVFileManager::isEmptyDirectoryAtPath(scratchPath("nothing")));
}

TEST_F(RVFileManagerTest, ContentsAreTheBytesOfTheFile) {
    for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 1'000'000u}) {
        std::string contents(size, 'x');
        for (std::size_t index = 0; index < size; ++index)
            contents[index] = static_cast<char>(index * 7);
        writeFile(path, contents);
        EXPECT_EQ(RVFileManager::contentsOfFileAtPath(path, &error), contents);
        EXPECT_FALSE(error);
    }
}

TEST_F(RVFileManagerTest, FileThatGivesNoSizeIsReadToItsEnd) {
    const auto contents = RVFileManager::contentsOfFileAtPath("/proc/self/environ");
    ASSERT_TRUE(contents);
    EXPECT_THAT(*contents, testing::HasSubstr("PATH="));
    EXPECT_EQ(RVFileManager::contentsOfFileAtPath("/dev/null"), "");
}

TEST_F(RVFileManagerTest, PathWithANULIsNotCutOffThere) {
    const std::string suffix("\0yz", 3);
    const std::string file = writeFile("notes", "text") + suffix;
    const std::string directory = makeDirectory("folder") + suffix;
    std::filesystem::create_symlink("notes", scratchPath("link"));
    const std::string link = scratchPath("link") + suffix;
    EXPECT_FALSE(RVFileManager::fileExistsAtPath(file));
    EXPECT_FALSE(RVFileManager::isDirectoryAtPath(directory));
    EXPECT_FALSE(RVFileManager::isSymbolicLinkAtPath(link));
    EXPECT_FALSE(RVFileManager::isReadableFileAtPath(file));
    EXPECT_FALSE(RVFileManager::isWritableFileAtPath(file));
    EXPECT_FALSE(RVFileManager::isExecutableFileAtPath("/bin/sh" + suffix));
    EXPECT_FALSE(RVFileManager::isEmptyDirectoryAtPath(directory, &error));
    expectError(EINVAL, directory);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(directory, &error), IsEmpty());
    expectError(EINVAL, directory);
    EXPECT_FALSE(RVFileManager::contentsOfFileAtPath(file, &error));
    expectError(EINVAL, file);
    EXPECT_FALSE(RVFileManager::destinationOfSymbolicLinkAtPath(link, &error));
    expectError(EINVAL, link);
    EXPECT_FALSE(RVFileManager::writeFileAtomically(file, "other", 0644, &error));
    expectError(EINVAL, file);
    EXPECT_FALSE(RVFileManager::removeItemAtPath(file, &error));
    expectError(EINVAL, file);
    EXPECT_EQ(readFile("notes"), "text");
}

TEST_F(RVFileManagerTest, NamedPipeDoesNotHoldTheReader) {
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(RVFileManager::contentsOfFileAtPath(path), "");
}

TEST_F(RVFileManagerTest, FileThatCannotBeReadIsAnError) {
    EXPECT_EQ(RVFileManager::contentsOfFileAtPath(path, &error), std::nullopt);
    expectError(ENOENT, path);
    EXPECT_EQ(RVFileManager::contentsOfFileAtPath(scratchDirectory(), &error), std::nullopt);
    expectError(EISDIR, scratchDirectory());
    EXPECT_EQ(RVFileManager::contentsOfFileAtPath(path), std::nullopt);
}

TEST_F(RVFileManagerTest, ContentsThatAreNotUTF8AreAnErrorWhereTextIsAskedFor) {
    writeFile(path, "Größe\n");
    EXPECT_EQ(RVFileManager::UTF8ContentsOfFileAtPath(path, &error), "Größe\n");
    EXPECT_FALSE(error);
    writeFile(path,
              "Gr\xF6\xDF"
              "e");
    EXPECT_EQ(RVFileManager::UTF8ContentsOfFileAtPath(path, &error), std::nullopt);
    expectError(EILSEQ, path);
    EXPECT_EQ(RVFileManager::UTF8ContentsOfFileAtPath(scratchPath("nothing"), &error),
              std::nullopt);
    expectError(ENOENT, scratchPath("nothing"));
}

TEST_F(RVFileManagerTest, DestinationOfALinkIsItsText) {
    for (const std::size_t length : {1u, 255u, 256u, 257u, 3000u}) {
        const std::string destination(length, 'x');
        ASSERT_EQ(::symlink(destination.c_str(), path.c_str()), 0);
        EXPECT_EQ(RVFileManager::destinationOfSymbolicLinkAtPath(path, &error), destination);
        ASSERT_TRUE(RVFileManager::removeItemAtPath(path));
    }
    writeFile(path, "");
    EXPECT_EQ(RVFileManager::destinationOfSymbolicLinkAtPath(path, &error), std::nullopt);
    expectError(EINVAL, path);
}

TEST_F(RVFileManagerTest, WritingReplacesContentsAndPermissions) {
    EXPECT_TRUE(RVFileManager::writeFileAtomically(path, "one", 0600, &error));
    EXPECT_EQ(readFile(path), "one");
    EXPECT_EQ(permissionsOf(path), 0600U);
    EXPECT_TRUE(RVFileManager::writeFileAtomically(path, "", 0755, &error));
    EXPECT_EQ(readFile(path), "");
    EXPECT_EQ(permissionsOf(path), 0755U);
    const std::string large(5'000'000, 'x');
    EXPECT_TRUE(RVFileManager::writeFileAtomically(path, large));
    EXPECT_EQ(readFile(path), large);
    EXPECT_EQ(permissionsOf(path), 0644U);
    EXPECT_FALSE(error);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()),
                ElementsAre("file \xFF"));
}

TEST_F(RVFileManagerTest, WritingReplacesALinkAndNotItsTarget) {
    writeFile("target", "old");
    ASSERT_EQ(::symlink("target", path.c_str()), 0);
    EXPECT_TRUE(RVFileManager::writeFileAtomically(path, "new"));
    EXPECT_FALSE(RVFileManager::isSymbolicLinkAtPath(path));
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(readFile("target"), "old");
}

TEST_F(RVFileManagerTest, WritingWorksWithTheLongestNames) {
    const auto longPath = scratchPath(std::string(255, 'x'));
    EXPECT_TRUE(RVFileManager::writeFileAtomically(longPath, "a", 0644, &error));
    EXPECT_EQ(readFile(longPath), "a");
}

TEST_F(RVFileManagerTest, FailedWriteLeavesNothingBehind) {
    makeDirectory(path);
    EXPECT_FALSE(RVFileManager::writeFileAtomically(path, "new", 0644, &error));
    expectError(EISDIR, path);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()),
                ElementsAre("file \xFF"));
    const auto missing = scratchPath("missing/file");
    EXPECT_FALSE(RVFileManager::writeFileAtomically(missing, "new", 0644, &error));
    expectError(ENOENT, missing);
    EXPECT_FALSE(RVFileManager::writeFileAtomically(missing, "new"));
}

TEST_F(RVFileManagerTest, FullDiskLeavesTheOldContents) {
    writeFile(path, "old");
    rlimit saved;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto savedHandler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1000, saved.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool isWritten =
        RVFileManager::writeFileAtomically(path, std::string(5000, 'x'), 0644, &error);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    ::signal(SIGXFSZ, savedHandler);
    EXPECT_FALSE(isWritten);
    expectError(EFBIG, path);
    EXPECT_EQ(readFile(path), "old");
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()),
                ElementsAre("file \xFF"));
}

TEST_F(RVFileManagerTest, RemovingTakesTreesAndLeavesTargetsOfLinks) {
    writeFile("tree/a/b", "");
    writeFile("kept/c", "");
    ASSERT_EQ(::symlink("../kept", scratchPath("tree/link").c_str()), 0);
    EXPECT_TRUE(RVFileManager::removeItemAtPath(scratchPath("tree"), &error));
    EXPECT_FALSE(fileExists("tree"));
    EXPECT_TRUE(fileExists("kept/c"));
    ASSERT_EQ(::symlink("kept", path.c_str()), 0);
    EXPECT_TRUE(RVFileManager::removeItemAtPath(path, &error));
    EXPECT_FALSE(fileExists(path));
    EXPECT_TRUE(RVFileManager::removeItemAtPath(scratchPath("kept/c"), &error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(RVFileManager::removeItemAtPath(scratchPath("tree"), &error));
    expectError(ENOENT, scratchPath("tree"));
    EXPECT_FALSE(RVFileManager::removeItemAtPath(scratchPath("kept/c/d"), &error));
    expectError(ENOENT, scratchPath("kept/c/d"));
}

TEST_F(RVFileManagerTest, TemporaryDirectoryIsThatOfTheEnvironment) {
    setEnvironmentVariable("TMPDIR", "/some where//");
    EXPECT_EQ(RVFileManager::temporaryDirectory(), "/some where");
    setEnvironmentVariable("TMPDIR", "/");
    EXPECT_EQ(RVFileManager::temporaryDirectory(), "/");
    EXPECT_THAT(RVFileManager::temporaryFilePath(), StartsWith("/rvgit-"));
    setEnvironmentVariable("TMPDIR", "below/it/");
    EXPECT_EQ(RVFileManager::temporaryDirectory(),
              std::filesystem::current_path().string() + "/below/it");
    setEnvironmentVariable("TMPDIR", "");
    EXPECT_EQ(RVFileManager::temporaryDirectory(), "/tmp");
    setEnvironmentVariable("TMPDIR", std::nullopt);
    EXPECT_EQ(RVFileManager::temporaryDirectory(), "/tmp");
}

TEST_F(RVFileManagerTest, TemporaryItemsAreNewPrivateAndEmpty) {
    const auto directory = makeDirectory("temporary files");
    setEnvironmentVariable("TMPDIR", directory);
    const auto file = RVFileManager::createEmptyTemporaryFile(&error);
    const auto otherFile = RVFileManager::createEmptyTemporaryFile(&error);
    const auto temporaryDirectory = RVFileManager::createTemporaryDirectory(&error);
    ASSERT_TRUE(file && otherFile && temporaryDirectory);
    EXPECT_FALSE(error);
    EXPECT_NE(file, otherFile);
    EXPECT_THAT(*file, StartsWith(directory + "/"));
    EXPECT_EQ(readFile(*file), "");
    EXPECT_EQ(permissionsOf(*file), 0600U);
    EXPECT_THAT(*temporaryDirectory, StartsWith(directory + "/"));
    EXPECT_TRUE(RVFileManager::isEmptyDirectoryAtPath(*temporaryDirectory));
    EXPECT_EQ(permissionsOf(*temporaryDirectory), 0700U);
}

TEST_F(RVFileManagerTest, TemporaryPathsAreUniqueAndUnused) {
    const auto directory = makeDirectory("temporary files");
    setEnvironmentVariable("TMPDIR", directory);
    std::set<std::string> paths;
    for (int count = 0; count < 1000; ++count) {
        paths.insert(RVFileManager::temporaryFilePath());
        EXPECT_THAT(*paths.begin(), StartsWith(directory + "/"));
    }
    EXPECT_EQ(paths.size(), 1000U);
    EXPECT_TRUE(RVFileManager::isEmptyDirectoryAtPath(directory));
}

TEST_F(RVFileManagerTest, MissingTemporaryDirectoryIsAnError) {
    const auto missing = scratchPath("missing");
    setEnvironmentVariable("TMPDIR", missing);
    EXPECT_EQ(RVFileManager::createEmptyTemporaryFile(&error), std::nullopt);
    expectError(ENOENT, missing);
    EXPECT_EQ(RVFileManager::createTemporaryDirectory(&error), std::nullopt);
    expectError(ENOENT, missing);
    EXPECT_EQ(RVFileManager::createEmptyTemporaryFile(), std::nullopt);
}

TEST_F(RVFileManagerTest, FailuresLeaveNoDescriptorOpen) {
    const auto openDescriptors = [] {
        return RVFileManager::namesInDirectoryAtPath("/proc/self/fd").size();
    };
    makeDirectory(path);
    const auto before = openDescriptors();
    for (int count = 0; count < 50; ++count) {
        EXPECT_FALSE(RVFileManager::contentsOfFileAtPath(scratchDirectory()));
        EXPECT_FALSE(RVFileManager::writeFileAtomically(path, "new"));
        EXPECT_TRUE(RVFileManager::writeFileAtomically(scratchPath("good"), "new"));
        EXPECT_TRUE(RVFileManager::createEmptyTemporaryFile());
    }
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
