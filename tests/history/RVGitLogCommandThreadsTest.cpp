#include "RVGit/history/RVGitLogCommand.h"

#include <memory>
#include <string>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// Records that are read while more of them arrive.
class RVGitLogCommandThreadsTest : public RVGitRepositoryTestCase {
protected:
    // A git that does what the shell lines say, whatever it is asked for.
    void useScript(const std::string& lines) {
        const std::string path = writeFile("script-git/git",
                                           "#!/bin/sh\n"
                                           "case \"$*\" in *--version*) "
                                           "echo git version 2.39.5; exit;; esac\n" +
                                               lines,
                                           0755);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    }
    // A record in the log's format.
    static std::string record(const std::string& hash, const std::string& message = "Message") {
        return stringByJoiningComponents(
            {hash, "tree", "parent", "Ada", "1", "a@b", "Ada", "2", "a@b", " (HEAD)", message},
            "\x1f\x1d\x1f");
    }
    static std::string quoted(const std::string& path) { return "'" + path + "'"; }
    std::shared_ptr<RVGitLogCommand> logCommand() {
        return RVGitLogCommand::gitLogCommandWithRepository(repository(), std::nullopt);
    }
    // Runs a listing that prints this and then never ends, and cancels it.
    std::shared_ptr<RVGitLogCommand> cancelledCommand(const std::string& output) {
        const RVHangingGit git = hangingGit("log", output);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
        auto command = logCommand();
        command->enqueueCommand();
        git.waitUntilBegun();
        command->cancel();
        command->waitUntilFinished();
        EXPECT_TRUE(command->isCancelled());
        return command;
    }
};

TEST_F(RVGitLogCommandThreadsTest, OutputThatArrivesInAnyPiecesIsReadAsInOne) {
    std::string output;
    for (int count = 0; count < 300; ++count)
        output +=
            record(std::to_string(count), count % 9 == 0 ? "caf\xe9" : "Message\n\nBody") + '\0';
    output += record("last");
    const std::string path = writeFile("output", output);
    for (const int size : {1, 7, 113, 4096}) {
        const std::string part = size == 1 ? "head -c 2000 " : "cat ";
        useScript(part + quoted(path) + " | dd bs=" + std::to_string(size) + " 2>/dev/null\n" +
                  (size == 1 ? "tail -c +2001 " + quoted(path) : ""));
        const auto command = logCommand();
        ASSERT_TRUE(command->run());
        RVGitCommitOutputParser parser(std::string_view(output),
                                       RVGitCommitOutputParser::gitCommitLogPrettyFormat());
        ASSERT_TRUE(parser.parse());
        ASSERT_EQ(command->commits()->size(), 301U);
        for (std::size_t index = 0; index < 301; ++index)
            EXPECT_EQ((*command->commits())[index].description(),
                      parser.commits()[index].description());
    }
}

TEST_F(RVGitLogCommandThreadsTest, ARecordThatCannotBeReadFailsTheRun) {
    const std::string bad = record("bad",
                                   "a\x1f\x1d\x1f"
                                   "b");
    const std::string path =
        writeFile("output", record("1") + '\0' + record("2") + '\0' + bad + '\0' + record("3"));
    useScript("dd bs=50 2>/dev/null < " + quoted(path) + "\n");
    const auto command = logCommand();
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitCommitOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), bad);
    EXPECT_EQ(command->commits(), std::nullopt);
}

TEST_F(RVGitLogCommandThreadsTest, AFailureThrowsAwayWhatWasParsedAhead) {
    const std::string path = writeFile("output", record("1") + '\0' + record("2") + '\0');
    useScript("cat " + quoted(path) + "\necho 'fatal: broken' >&2\nexit 128\n");
    const auto command = logCommand();
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    EXPECT_TRUE(error);
    EXPECT_EQ(command->commits(), std::nullopt);
}

TEST_F(RVGitLogCommandThreadsTest, AnAbsorbedFailureThrowsAwayWhatWasParsedAhead) {
    const std::string path = writeFile("output", record("1") + '\0' + record("2") + '\0');
    useScript("cat " + quoted(path) +
              "\necho \"fatal: your current branch 'main' does not have any commits yet\" >&2\n"
              "exit 128\n");
    const auto command = logCommand();
    EXPECT_TRUE(command->run());
    ASSERT_TRUE(command->commits());
    EXPECT_THAT(*command->commits(), IsEmpty());
}

TEST_F(RVGitLogCommandThreadsTest, CutOffOutputThatDoesNotParseIsNoError) {
    const auto command =
        cancelledCommand(record("1") + '\0' + record("2") + '\0' + record("3").substr(0, 20));
    EXPECT_FALSE(command->error());
    EXPECT_EQ(command->commits(), std::nullopt);
}

TEST_F(RVGitLogCommandThreadsTest, OutputThatParsesIsTheResult) {
    const auto command =
        cancelledCommand(record("1") + '\0' + record("2") + '\0' + record("3", "Cut o"));
    EXPECT_FALSE(command->error());
    ASSERT_TRUE(command->commits());
    ASSERT_THAT(*command->commits(), SizeIs(3));
    EXPECT_EQ(command->commits()->back().message(), "Cut o");
}

}  // namespace
