#include "RVGit/base/RVContainedFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/RVGitTestCase.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;

class RVContainedFilesTest : public RVGitTestCase {
protected:
    RVContainedFilesTest() : files_(makeDirectory("directory")) {
        writeFile("directory/file", "12345");
        writeFile("directory/sub/file", "inner");
        writeFile("outside/file", "secret");
        fs::create_symlink("file", scratchPath("directory/link"));
        fs::create_symlink("nowhere", scratchPath("directory/dangling"));
        fs::create_symlink(scratchPath("outside"), scratchPath("directory/way out"));
        EXPECT_EQ(mkfifo(scratchPath("directory/pipe").c_str(), 0600), 0);
    }

    std::int64_t errorOfReading(std::string_view path, std::size_t maximumSize = 5) const {
        std::optional<RVError> error;
        EXPECT_EQ(files_.contents(path, maximumSize, &error), std::nullopt) << path;
        return error ? error->code() : 0;
    }
    std::int64_t errorOfWriting(std::string_view path) const {
        std::optional<RVError> error;
        EXPECT_FALSE(files_.writeAtomically(path, "new", &error)) << path;
        return error ? error->code() : 0;
    }

    const RVContainedFiles files_;
};

TEST_F(RVContainedFilesTest, ReadsRegularFilesUpToTheLimit) {
    EXPECT_EQ(files_.contents("file", 5), "12345");
    EXPECT_EQ(files_.contents("sub/file", 5), "inner");
    EXPECT_EQ(files_.contents("./sub//./file", 5), "inner");
    EXPECT_EQ(errorOfReading("file", 4), EFBIG);
    EXPECT_EQ(errorOfReading("missing"), ENOENT);
    EXPECT_EQ(errorOfReading("missing/file"), ENOENT);
    EXPECT_EQ(errorOfReading("file/file"), ENOTDIR);
    EXPECT_EQ(errorOfReading("sub"), EISDIR);
    writeFile("directory/latin", "\xE9");
    std::optional<RVError> error;
    EXPECT_EQ(files_.UTF8Contents("latin", 5, &error), std::nullopt);
    EXPECT_EQ(error.value().code(), EILSEQ);
    EXPECT_EQ(error.value().userInfoString(RVFilePathErrorKey), scratchPath("directory/latin"));
}

TEST_F(RVContainedFilesTest, ReadsNoFileThatIsNotRegularAndFollowsNoLink) {
    EXPECT_EQ(errorOfReading("pipe"), EINVAL);
    EXPECT_EQ(errorOfReading("link"), ELOOP);
    EXPECT_EQ(errorOfReading("dangling"), ELOOP);
    EXPECT_EQ(errorOfReading("way out/file", 100), ENOTDIR);
    EXPECT_TRUE(files_.exists("way out"));
    EXPECT_FALSE(files_.isDirectory("way out"));
    EXPECT_FALSE(files_.exists("way out/file"));
    EXPECT_EQ(files_.modificationTime("way out/file"), std::nullopt);
    // A file that is as large as the disk is long, as far as its status tells.
    fs::resize_file(writeFile("directory/huge", ""), 1ull << 30);
    EXPECT_EQ(errorOfReading("huge", 1 << 20), EFBIG);
}

TEST_F(RVContainedFilesTest, ReadsWhatAStatusTellsNothingOf) {
    // A device, and a file whose size is said to be 0.
    const RVContainedFiles devices("/dev");
    EXPECT_EQ(devices.contents("zero", 100), std::nullopt);
    EXPECT_TRUE(devices.exists("zero"));
    const RVContainedFiles process("/proc/self");
    EXPECT_GT(process.contents("status", 1 << 20)->size(), 100u);
    EXPECT_EQ(process.contents("status", 10), std::nullopt);
}

TEST_F(RVContainedFilesTest, TellsWhatExists) {
    for (const char* path : {"file", "sub", "sub/file", "link", "dangling", "pipe"})
        EXPECT_TRUE(files_.exists(path)) << path;
    for (const char* path : {"missing", "sub/missing", "file/file"})
        EXPECT_FALSE(files_.exists(path)) << path;
    EXPECT_TRUE(files_.isDirectory("sub"));
    EXPECT_FALSE(files_.isDirectory("file"));
    EXPECT_FALSE(files_.isDirectory("link"));
    const timespec times[] = {{1, 0}, {1577934245, 500000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, scratchPath("directory/file").c_str(), times, 0), 0);
    EXPECT_EQ(files_.modificationTime("file"), 1577934245.5);
}

TEST_F(RVContainedFilesTest, PathsThatLeadElsewhereNameNothing) {
    writeFile("file", "beside");
    for (const std::string& path :
         {""s, "/"s, "."s, "sub/.."s, "../file"s, "sub/../../file"s, "/etc/passwd"s, "file\0"s,
          "sub/."s, "./"s, scratchPath("directory/file")}) {
        EXPECT_EQ(errorOfReading(path), EINVAL);
        EXPECT_EQ(errorOfWriting(path), EINVAL);
        EXPECT_FALSE(files_.exists(path)) << path;
    }
    const RVContainedFiles nothing(std::nullopt);
    EXPECT_FALSE(nothing.exists("file"));
    EXPECT_EQ(nothing.contents("file", 5), std::nullopt);
    EXPECT_FALSE(nothing.writeAtomically("file", ""));
}

TEST_F(RVContainedFilesTest, WritesInOneStep) {
    EXPECT_TRUE(files_.writeAtomically("sub/new", "a\0b"s));
    EXPECT_EQ(readFile("directory/sub/new"), "a\0b"s);
    EXPECT_EQ(fs::status(scratchPath("directory/sub/new")).permissions(), fs::perms(0644));
    fs::permissions(scratchPath("directory/file"), fs::perms(0750));
    EXPECT_TRUE(files_.writeAtomically("file", "6"));
    EXPECT_EQ(readFile("directory/file"), "6");
    EXPECT_EQ(fs::status(scratchPath("directory/file")).permissions(), fs::perms(0750));
}

TEST_F(RVContainedFilesTest, WritesThroughNoLink) {
    EXPECT_TRUE(files_.writeAtomically("link", "new"));
    EXPECT_FALSE(fs::is_symlink(scratchPath("directory/link")));
    EXPECT_EQ(readFile("directory/file"), "12345");
    EXPECT_EQ(errorOfWriting("way out/file"), ENOTDIR);
    EXPECT_EQ(errorOfWriting("way out/new"), ENOTDIR);
    EXPECT_EQ(readFile("outside/file"), "secret");
    EXPECT_FALSE(fileExists("outside/new"));
}

TEST_F(RVContainedFilesTest, AFailedWriteLeavesNothingBehind) {
    EXPECT_EQ(errorOfWriting("sub"), EISDIR);
    EXPECT_EQ(errorOfWriting("missing/file"), ENOENT);
    EXPECT_TRUE(files_.isDirectory("sub"));
    for (const auto& entry : fs::directory_iterator(scratchPath("directory")))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".rvgit"));
}

}  // namespace
