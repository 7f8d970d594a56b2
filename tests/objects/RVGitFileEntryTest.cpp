#include "RVGit/objects/RVGitFileEntry.h"

#include "RVGit/base/RVError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitFileEntryTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitFileEntry> entry(
        std::string filePath, std::optional<std::string> objectHash = std::nullopt,
        RVGitFileMode fileMode = RVGitFileModeRegular) const {
        return RVGitFileEntry::fileEntryWithRepository(repository(), std::move(filePath),
                                                       std::move(objectHash), fileMode);
    }
};

TEST_F(RVGitFileEntryTest, KeepsItsFields) {
    const auto file = entry("a/b c.txt", "abc", RVGitFileModeExecutable);
    EXPECT_EQ(file->repository(), repository());
    EXPECT_EQ(file->filePath(), "a/b c.txt");
    EXPECT_EQ(file->fileName(), "b c.txt");
    EXPECT_EQ(file->objectHash(), "abc");
    EXPECT_EQ(file->fileMode(), RVGitFileModeExecutable);
}

TEST_F(RVGitFileEntryTest, AnyTextOfAHashComesBackAsItWas) {
    const std::string hash = "0123456789abcdef0123456789abcdef01234567";
    const std::string upperCase = "0123456789ABCDEF0123456789ABCDEF01234567";
    for (const std::string& text : {hash, upperCase, hash + "0", std::string("abc"), std::string()})
        EXPECT_EQ(entry("a", text)->objectHash(), text);
    EXPECT_EQ(entry("a")->objectHash(), std::nullopt);
    EXPECT_TRUE(entry("a", hash)->isEqualToFileEntry(*entry("a", hash)));
    EXPECT_FALSE(entry("a", hash)->isEqualToFileEntry(*entry("a", upperCase)));
}

TEST_F(RVGitFileEntryTest, RequiresARepository) {
    EXPECT_THROW(
        (void)RVGitFileEntry::fileEntryWithRepository(nullptr, "a", "abc", RVGitFileModeRegular),
        RVInvalidParameterException);
}

TEST_F(RVGitFileEntryTest, IsOfExactlyOneFileType) {
    for (auto mode : {RVGitFileModeNone, RVGitFileModeDirectory, RVGitFileModeRegular,
                      RVGitFileModeExecutable, RVGitFileModeSymbolicLink, RVGitFileModeSubmodule}) {
        const auto file = entry("a", std::nullopt, mode);
        EXPECT_EQ(file->isNoFileType(), mode == RVGitFileModeNone);
        EXPECT_EQ(file->isDirectoryFileType(), mode == RVGitFileModeDirectory);
        EXPECT_EQ(file->isRegularFileType(), mode == RVGitFileModeRegular);
        EXPECT_EQ(file->isExecutableFileType(), mode == RVGitFileModeExecutable);
        EXPECT_EQ(file->isSymbolicLinkFileType(), mode == RVGitFileModeSymbolicLink);
        EXPECT_EQ(file->isSubmoduleFileType(), mode == RVGitFileModeSubmodule);
    }
}

TEST_F(RVGitFileEntryTest, EqualityTakesPathAndHashOnly) {
    EXPECT_TRUE(entry("a", "1")->isEqualToFileEntry(*entry("a", "1", RVGitFileModeExecutable)));
    EXPECT_TRUE(entry("a")->isEqualToFileEntry(*entry("a")));
    EXPECT_FALSE(entry("a", "1")->isEqualToFileEntry(*entry("b", "1")));
    EXPECT_FALSE(entry("a", "1")->isEqualToFileEntry(*entry("a", "2")));
    EXPECT_FALSE(entry("a", "1")->isEqualToFileEntry(*entry("a")));
    EXPECT_FALSE(entry("a", "")->isEqualToFileEntry(*entry("a")));
}

TEST(RVGitFileEntryValuesTest, AnUnknownModeIsRegular) {
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("040000"), 16384u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("100644"), 33188u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("100755"), 33277u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("120000"), 40960u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("160000"), 57344u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString("100664"), 33188u);
    EXPECT_EQ(RVGitFileEntry::fileModeFromString(""), 33188u);
}

TEST(RVGitFileEntryValuesTest, ModesHaveTexts) {
    const auto text = &RVGitFileEntry::stringRepresentationForFileMode;
    EXPECT_EQ(text(RVGitFileModeNone), "None");
    EXPECT_EQ(text(RVGitFileModeDirectory), "Directory");
    EXPECT_EQ(text(RVGitFileModeRegular), "Regular");
    EXPECT_EQ(text(RVGitFileModeExecutable), "Executable");
    EXPECT_EQ(text(RVGitFileModeSymbolicLink), "Symbolic Link");
    EXPECT_EQ(text(RVGitFileModeSubmodule), "Submodule");
    EXPECT_EQ(text(static_cast<RVGitFileMode>(33261)), "None");
}

}  // namespace
