#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "tests/lfs/RVGitLFSSmudgeTestCase.h"
#include "tests/support/RVTestRights.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitLFSSmudgeCommandTest : public RVGitLFSSmudgeTestCase {
protected:
    /// The run fails with the system's error at the path, before anything is launched.
    void expectRefusal(const char* path, int code) {
        const auto recorder = useRecordingGit();
        const auto command = commandFor(pointerFor("one"), scratchPath("output"));
        const auto error = errorOf(*command);
        EXPECT_EQ(error.domain(), RVPOSIXErrorDomain);
        EXPECT_EQ(error.code(), code);
        EXPECT_EQ(error.userInfoString(RVFilePathErrorKey), path);
        EXPECT_TRUE(error.localizedFailureReason());
        EXPECT_EQ(command->data(), nullptr);
        EXPECT_THAT(recorder.invocations(), IsEmpty());
        EXPECT_FALSE(fileExists("output"));
    }
};

TEST_F(RVGitLFSSmudgeCommandTest, FeedsThePointerAndTakesNoArguments) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto pointer = keepObject("one");
        const auto recorder = useRecordingGit();
        const auto command = commandFor(pointer);
        EXPECT_THAT(argumentsOf(recorder, *command), ElementsAre("lfs", "smudge"));
        EXPECT_EQ(recorder.lastInvocation().standardInput, pointer->stringRepresentation());
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, GivesTheContents) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto command = commandFor(keepObject("one\0two\n\xFF"));
        EXPECT_EQ(command->data(), nullptr);
        EXPECT_TRUE(command->run());
        ASSERT_TRUE(command->data());
        EXPECT_EQ(command->data()->view(), "one\0two\n\xFF");
        EXPECT_THAT(namesInTemporaryDirectory(), ElementsAre("smudge_input.lock"));
        EXPECT_THAT(gitInRepository({"status", "--porcelain"}), "");
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AFinishedCommandKeepsNoFileOpen) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto numberOfDescriptors = [] {
            const std::filesystem::directory_iterator entries("/proc/self/fd");
            return std::distance(begin(entries), end(entries));
        };
        EXPECT_TRUE(commandFor(keepObject("one"))->run());
        const auto before = numberOfDescriptors();
        const auto command = commandFor(keepObject("two"));
        const auto failing = commandFor(pointerFor("nowhere"));
        EXPECT_TRUE(command->run());
        EXPECT_FALSE(failing->run());
        EXPECT_EQ(numberOfDescriptors(), before);
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, WritesTheContentsToTheOutputPath) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto pointer = keepObject("one");
        writeFile("target", "before");
        std::filesystem::create_symlink(scratchPath("target"), scratchPath("out put"));
        const auto command = commandFor(pointer, scratchPath("out put"));
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->data()->view(), "one");
        EXPECT_EQ(readFile("out put"), "one");
        EXPECT_EQ(readFile("target"), "before");
        EXPECT_EQ(command->outputError(), std::nullopt);
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AnOutputThatCannotBeWrittenIsNoFailure) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto command = commandFor(keepObject("one"), scratchPath("missing/output"));
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->data()->view(), "one");
        ASSERT_TRUE(command->outputError());
        EXPECT_EQ(command->outputError()->code(), ENOENT);
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, MissingContentsFailAndChangeNothing) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        writeFile("output", "before");
        const auto command = commandFor(pointerFor("nowhere"), scratchPath("output"));
        EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
        EXPECT_EQ(command->data(), nullptr);
        EXPECT_EQ(readFile("output"), "before");
        EXPECT_THAT(namesInTemporaryDirectory(), ElementsAre("smudge_input.lock"));
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, APointerInPlaceOfTheContentsIsToldByWhatItIs) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto expectPointer = [&](const std::shared_ptr<RVGitLFSPointer>& pointer) {
            const auto command = commandFor(pointer, scratchPath("output"));
            EXPECT_TRUE(command->run());
            ASSERT_NE(command->data(), nullptr);
            const auto data = RVGitLFSPointer::pointerFromData(command->data()->view());
            ASSERT_TRUE(data);
            EXPECT_EQ(data->objectID(), pointer->objectID());
            EXPECT_EQ(readFile("output"), command->data()->view());
        };
        const auto missing = pointerFor("nowhere");
        for (const char* line : {"skipdownloaderrors = true", "fetchexclude = *"}) {
            writeFile(repositoryPath() + "/.lfsconfig", "[lfs]\n\t" + std::string(line) + "\n");
            expectPointer(missing);
        }
        std::filesystem::remove(repositoryPath() + "/.lfsconfig");
        setEnvironmentVariable("GIT_LFS_SKIP_SMUDGE", "1");
        expectPointer(missing);
        RVGitLFSPointer::Entries entries = missing->allEntries();
        // One that it takes for a pointer and writes in its own way.
        expectPointer(std::make_shared<RVGitLFSPointer>(
            entries, "version http://git-media.io/v/2\noid " + missing->objectID() + "\nsize " +
                         missing->size()));
        setEnvironmentVariable("GIT_LFS_SKIP_SMUDGE", std::nullopt);
        const auto command = commandFor(keepObject("one"), scratchPath("output"));
        EXPECT_TRUE(command->run());
        EXPECT_EQ(readFile("output"), "one");
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AFileThatIsReplacedKeepsItsPermissions) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto pointer = keepObject("one");
        writeFile("program", "before", 0750);
        EXPECT_TRUE(commandFor(pointer, scratchPath("program"))->run());
        struct stat status;
        ASSERT_EQ(::stat(scratchPath("program").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0750U);
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AnEmptyFileComesBackEmpty) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto command = commandFor(pointerFor(""), scratchPath("output"));
        EXPECT_TRUE(command->run());
        ASSERT_TRUE(command->data());
        EXPECT_EQ(command->data()->view(), "");
        EXPECT_EQ(readFile("output"), "");
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AFailureToLaunchRemovesTheFileAndGivesTheLockBack) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto fake = useFakeGit();
        std::filesystem::remove(fake.path());
        const auto failed = commandFor(pointerFor("one"));
        EXPECT_THAT(failed, failsWith(RVGitNoGitRepoError));
        EXPECT_THAT(namesInTemporaryDirectory(), ElementsAre("smudge_input.lock"));
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(gitPath()));
        EXPECT_TRUE(commandFor(keepObject("one"))->run());
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, WithoutAPointerNothingIsHandedOver) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto recorder = useRecordingGit();
        (void)commandFor(nullptr)->run();
        EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);
        EXPECT_THAT(namesInTemporaryDirectory(), IsEmpty());
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, TheFileIsThereWhileGitRunsAndForThisUserAlone) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const std::string path = writeFile(
            "looking-git/git",
            "#!/bin/sh\ncase \" $* \" in *' --version '*) echo git version 2.39.5; exit;; esac\n"
            "cat /tmp/smudge_input; stat -c ' %a %U' /tmp/smudge_input\n",
            0755);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
        const auto pointer = pointerFor("one");
        const auto command = commandFor(pointer);
        EXPECT_TRUE(command->run());
        EXPECT_THAT(std::string(command->data()->view()),
                    testing::StartsWith(pointer->stringRepresentation() + " 600 "));
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AFileLeftByACrashIsReplaced) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const auto pointer = keepObject("one");
        writeFile(inputPath, "left over");
        const auto command = commandFor(pointer);
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->data()->view(), "one");
        EXPECT_FALSE(fileExists(inputPath));
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, ALinkInTheFilesPlaceIsRefusedAndNotFollowed) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        const std::string target = writeFile("target", "before");
        for (const std::string& destination : {target, scratchPath("dangling")}) {
            std::filesystem::create_symlink(destination, inputPath);
            expectRefusal(inputPath, ELOOP);
            EXPECT_TRUE(std::filesystem::is_symlink(inputPath));
            std::filesystem::remove(inputPath);
        }
        EXPECT_EQ(readFile("target"), "before");
        EXPECT_FALSE(fileExists("dangling"));
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, ALinkInTheLocksPlaceIsRefusedAndNotFollowed) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        std::filesystem::create_symlink(scratchPath("dangling"), lockPath);
        expectRefusal(lockPath, ELOOP);
        EXPECT_FALSE(fileExists("dangling"));
        EXPECT_FALSE(fileExists(inputPath));
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, WhatIsNoPlainFileIsRefused) {
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        for (const char* path : {inputPath, lockPath}) {
            std::filesystem::remove(lockPath);
            std::filesystem::create_directory(path);
            expectRefusal(path, EISDIR);
            std::filesystem::remove(path);
            EXPECT_EQ(::mkfifo(path, 0600), 0);
            expectRefusal(path, EINVAL);
            std::filesystem::remove(path);
        }
    });
}

TEST_F(RVGitLFSSmudgeCommandTest, AFileOfAnotherUserIsRefusedAndLeftAsItIs) {
    RVGIT_TEST_NEEDS_RIGHTS(::geteuid() == 0, "only root can give a file away");
    IN_PRIVATE_TEMPORARY_DIRECTORY({
        for (const char* path : {inputPath, lockPath}) {
            std::filesystem::remove(lockPath);
            writeFile(path, "somebody's");
            EXPECT_EQ(::chown(path, 65534, 65534), 0);
            // The system itself may keep even root from opening such a file where others may write.
            const int probe = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
            const int code = probe < 0 && path == lockPath ? EACCES : EPERM;
            ::close(probe);
            expectRefusal(path, code);
            EXPECT_EQ(readFile(path), "somebody's");
            std::filesystem::remove(path);
        }
    });
}

}  // namespace
