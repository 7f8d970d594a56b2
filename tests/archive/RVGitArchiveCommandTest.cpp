#include "RVGit/archive/RVGitArchiveCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class RVGitArchiveCommandTest : public RVGitFlagTestCase {
protected:
    using Paths = std::vector<std::string>;

    RVGitArchiveCommandTest() {
        commitFile("repository", "a file", "one\n", "Message");
        commitFile("repository", "dir/\u00e9", "two\n", "Message");
    }

    [[nodiscard]] std::shared_ptr<RVGitArchiveCommand> commandFor(
        const std::string& destination, std::optional<Paths> filePaths = std::nullopt,
        const std::string& revision = "HEAD") const {
        return RVGitArchiveCommand::gitArchiveCommandWithRepository(
            repository(), revision, std::move(filePaths), scratchPath(destination));
    }
    /// What a tar archive holds, in its order.
    [[nodiscard]] std::string namesInTar(const std::string& path,
                                         const std::string& option = "-tf") const {
        const auto result =
            runProgram({"tar", "--quoting-style=literal", option, scratchPath(path)});
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        return result.standardOutput;
    }
    [[nodiscard]] std::string fileInTar(const std::string& path, const std::string& name) const {
        return runProgram({"tar", "-xOf", scratchPath(path), name}).standardOutput;
    }
};

TEST_F(RVGitArchiveCommandTest, ArgumentsOfEachField) {
    const auto recorder = useRecordingGit();
    const std::string zip = scratchPath("a.zip");
    EXPECT_THAT(argumentsOf(recorder, *commandFor("a.zip")),
                ElementsAre("archive", "--verbose", "--worktree-attributes", "-o", zip, "HEAD"));
    for (const auto& [format, option] : std::vector<std::pair<std::int64_t, std::string>>{
             {RVGitArchiveFormatZip, "--format=zip"}, {RVGitArchiveFormatTar, "--format=tar"}}) {
        const auto command = commandFor("a.zip");
        command->setFormat(format);
        EXPECT_EQ(command->format(), format);
        EXPECT_THAT(argumentsOf(recorder, *command),
                    ElementsAre("archive", "--verbose", "--worktree-attributes", option, "-o", zip,
                                "HEAD"));
    }
    for (const std::int64_t other : {-1, 3}) {
        const auto command = commandFor("a.zip");
        command->setFormat(other);
        EXPECT_EQ(argumentsOf(recorder, *command).size(), 6U);
    }
    EXPECT_THAT(argumentsOf(recorder, *commandFor("a.zip", Paths{"dir", "a file"}, "main")),
                ElementsAre("archive", "--verbose", "--worktree-attributes", "-o", zip, "main",
                            "--", "dir", "a file"));
}

TEST_F(RVGitArchiveCommandTest, AnEmptyListOfPathsStillAddsTheDashes) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *commandFor("a.zip", Paths{})),
                ElementsAre("archive", "--verbose", "--worktree-attributes", "-o",
                            scratchPath("a.zip"), "HEAD", "--"));
}

TEST_F(RVGitArchiveCommandTest, TheExtensionChoosesTheFormat) {
    for (const char* name : {"a.zip", "a.tar", "a.tgz", "a.tar.gz", "a"}) {
        ASSERT_TRUE(commandFor(name)->run()) << name;
        const std::string bytes = readFile(name);
        const std::string start = bytes.substr(0, 2);
        if (std::string_view(name) == "a.zip")
            EXPECT_EQ(start, "PK");
        else if (std::string_view(name).ends_with("gz"))
            EXPECT_EQ(start, "\x1f\x8b");
        else
            EXPECT_EQ(bytes.substr(257, 5), "ustar");
    }
    EXPECT_EQ(namesInTar("a.tgz"), "a file\ndir/\ndir/\u00e9\n");
}

TEST_F(RVGitArchiveCommandTest, TheFormatBeatsTheExtension) {
    const auto zip = commandFor("a.tar");
    zip->setFormat(RVGitArchiveFormatZip);
    ASSERT_TRUE(zip->run());
    EXPECT_THAT(readFile("a.tar"), StartsWith("PK"));
    const auto tar = commandFor("a.zip");
    tar->setFormat(RVGitArchiveFormatTar);
    ASSERT_TRUE(tar->run());
    EXPECT_EQ(namesInTar("a.zip"), "a file\ndir/\ndir/\u00e9\n");
}

TEST_F(RVGitArchiveCommandTest, TellsWhatWentIn) {
    const auto all = commandFor("all.tar");
    EXPECT_THAT(all->archivedFilePaths(), IsEmpty());
    ASSERT_TRUE(all->run());
    EXPECT_THAT(all->archivedFilePaths(), ElementsAre("a file", "dir/", "dir/\u00e9"));
    EXPECT_EQ(all->archivedFilePathsResult(), all->archivedFilePaths());

    const auto one = commandFor("one.tar", Paths{"a file"});
    ASSERT_TRUE(one->run());
    EXPECT_THAT(one->archivedFilePaths(), ElementsAre("a file"));
    EXPECT_EQ(fileInTar("one.tar", "a file"), "one\n");
}

TEST_F(RVGitArchiveCommandTest, AttributesOfTheWorkingTreeLeaveOutAndSubstitute) {
    commitFile("repository", "version", "$Format:%s$\n", "The subject");
    writeFile("repository/.gitattributes", "dir export-ignore\nversion export-subst\n");
    const auto command = commandFor("a.tar");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->archivedFilePaths(), ElementsAre("a file", "version"));
    EXPECT_EQ(fileInTar("a.tar", "version"), "The subject\n");
}

TEST_F(RVGitArchiveCommandTest, AnOlderRevisionHasItsOwnFiles) {
    const auto command = commandFor("a.tar", std::nullopt, "HEAD~1");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->archivedFilePaths(), ElementsAre("a file"));
}

TEST_F(RVGitArchiveCommandTest, ARelativeDestinationIsBelowTheRepository) {
    const auto command =
        RVGitArchiveCommand::gitArchiveCommandWithRepository(repository(), "HEAD", {}, "-o.tar");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(namesInTar("repository/-o.tar"), "a file\ndir/\ndir/\u00e9\n");
    const auto failing =
        RVGitArchiveCommand::gitArchiveCommandWithRepository(repository(), "no", {}, "new.tar");
    EXPECT_THAT(failing, failsWith(RVGitArchiveFilesError));
    EXPECT_FALSE(fileExists("repository/new.tar"));
}

TEST_F(RVGitArchiveCommandTest, ABadRevisionFailsWith1500AndLeavesNothing) {
    for (const char* revision : {"missing", "", "HEAD:nothing", "\x80"}) {
        const auto command = commandFor("a.zip", std::nullopt, revision);
        const auto error = errorOf(*command);
        EXPECT_EQ(error.code(), RVGitArchiveFilesError) << revision;
        EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), std::nullopt);
        EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), std::nullopt);
        EXPECT_THAT(command->archivedFilePaths(), IsEmpty());
        EXPECT_FALSE(fileExists("a.zip"));
    }
}

TEST_F(RVGitArchiveCommandTest, ARevisionThatIsAnOptionNeverReachesGit) {
    const auto recorder = useRecordingGit();
    const std::string evil = scratchPath("evil");
    for (const std::string& revision :
         {"--exec=touch " + evil, "--remote=ext::touch " + evil, std::string("-l"),
          std::string("--all"), std::string("-")}) {
        EXPECT_THAT(commandFor("a.zip", std::nullopt, revision), failsWith(RVGitArchiveFilesError));
        EXPECT_THAT(recorder.invocations(), IsEmpty()) << revision;
    }
    EXPECT_FALSE(fileExists("a.zip"));
    EXPECT_FALSE(fileExists("evil"));
}

TEST_F(RVGitArchiveCommandTest, AMissingPathFails) {
    const auto command = commandFor("a.zip", Paths{"a file", "missing"});
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(command->archivedFilePaths(), IsEmpty());
    EXPECT_FALSE(fileExists("a.zip"));
}

TEST_F(RVGitArchiveCommandTest, TheMissingPathOfOtherGitsFailsWith1500) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: path not found: x\n", .exitCode = 128});
    EXPECT_THAT(commandFor("a.zip", Paths{"x"}), failsWith(RVGitArchiveFilesError));
    fake.setAnswer({.standardError = "fatal: Not a valid object name x\n", .exitCode = 128});
    EXPECT_THAT(commandFor("a.zip"), failsWith(RVGitArchiveFilesError));
    fake.setAnswer({.standardError = "fatal: Not a valid object name x\n", .exitCode = 1});
    EXPECT_THAT(commandFor("a.zip"), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitArchiveCommandTest, PathsThatLookLikeOptionsAreFiles) {
    commitFile("repository", "-o", "three\n", "Message");
    const auto command = commandFor("a.tar", Paths{"-o"});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->archivedFilePaths(), ElementsAre("-o"));
}

TEST_F(RVGitArchiveCommandTest, AFileThatWasThereIsReplaced) {
    writeFile("a.tar", std::string(100'000, 'x'));
    ASSERT_TRUE(commandFor("a.tar")->run());
    EXPECT_EQ(namesInTar("a.tar"), "a file\ndir/\ndir/\u00e9\n");
}

TEST_F(RVGitArchiveCommandTest, AFileThatWasThereIsNotRemovedByAFailure) {
    writeFile("a.tar", "before");
    EXPECT_THAT(commandFor("a.tar", std::nullopt, "missing"), failsWith(RVGitArchiveFilesError));
    EXPECT_TRUE(fileExists("a.tar"));
}

TEST_F(RVGitArchiveCommandTest, ADestinationThatCannotBeMadeFails) {
    // The first is a row that every command has, whose text names what it was made for.
    for (const auto& [name, code] : std::vector<std::pair<std::string, std::int64_t>>{
             {"missing/a.zip", RVGitGPGSigningFailedError},
             {"repository", RVGitRVGitGenericError},
             {"repository/a file/a.zip", RVGitRVGitGenericError}}) {
        const auto command = commandFor(name);
        EXPECT_THAT(command, failsWith(code)) << name;
        EXPECT_THAT(command->archivedFilePaths(), IsEmpty());
    }
    EXPECT_TRUE(std::filesystem::is_directory(repositoryPath()));
    EXPECT_EQ(readFile("repository/a file"), "one\n");
}

TEST_F(RVGitArchiveCommandTest, AFullDiskFailsAndLeavesTheDeviceBehindTheDestination) {
    std::filesystem::create_symlink("/dev/full", scratchPath("a.tar"));
    EXPECT_THAT(commandFor("a.tar"), failsWith(RVGitRVGitGenericError));
    EXPECT_TRUE(fileExists("a.tar"));
    struct stat status;
    EXPECT_EQ(::stat("/dev/full", &status), 0);
}

TEST_F(RVGitArchiveCommandTest, EveryLineOfStandardErrorIsAPath) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "a\r\n\nwarning: b\nc"});
    const auto command = commandFor("a.zip");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->archivedFilePaths(), ElementsAre("a\r", "warning: b", "c"));
}

TEST_F(RVGitArchiveCommandTest, TheRowsStandInTheirOrder) {
    const auto& table = RVGitArchiveCommand::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 2U);
    for (const RVGitErrorRow& row : table) {
        EXPECT_EQ(row.errorCode, 1500);
        EXPECT_THAT(row.commandNames, ElementsAre("archive"));
        EXPECT_THAT(row.exitCodes, ElementsAre(128));
        EXPECT_THAT(row.standardErrorMatchedComponentNames, IsEmpty());
    }
    EXPECT_THAT(table[0].standardErrorPatterns, ElementsAre("fatal: path not found:"));
    EXPECT_THAT(table[1].standardErrorPatterns, ElementsAre("Not a valid object name"));
}

TEST_F(RVGitArchiveCommandTest, NeedsARepository) {
    EXPECT_THROW(
        (void)RVGitArchiveCommand::gitArchiveCommandWithRepository(nullptr, "HEAD", {}, "a.zip"),
        RVInvalidParameterException);
}

}  // namespace
