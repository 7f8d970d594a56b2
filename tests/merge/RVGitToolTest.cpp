#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Paths = std::vector<std::string>;

class RVGitToolTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitToolTest, TheLineOfAMergeTool) {
    const auto recorder = useRecordingGit();
    using Command = RVGitMergeToolCommand;
    auto command = Command::gitMergeToolCommandWithRepository(repository(), "a file");
    EXPECT_THAT(argumentsOf(recorder, *command),
                ElementsAre("-c", "mergetool.keepBackup=false", "mergetool", "--no-prompt", "--",
                            "a file"));
    command = Command::gitMergeToolCommandWithRepository(repository());
    command->setKeepsBackupFiles(true);
    EXPECT_THAT(argumentsOf(recorder, *command),
                ElementsAre("-c", "mergetool.keepBackup=true", "mergetool", "--no-prompt"));
    command = Command::gitMergeToolCommandWithRepository(repository(), "-x");
    command->setMergeToolName("--tool");
    EXPECT_THAT(argumentsOf(recorder, *command),
                ElementsAre("-c", "mergetool.keepBackup=false", "mergetool", "--no-prompt",
                            "--tool=--tool", "--", "-x"));
}

TEST_F(RVGitToolTest, TheLineOfADiffTool) {
    const auto recorder = useRecordingGit();
    struct Case {
        std::optional<Paths> revisions;
        std::optional<Paths> filePaths;
        std::optional<std::string> name;
        bool performsDirectoryDiff;
        bool comparesIndex;
        Paths expected;
    };
    const Case cases[] = {
        {std::nullopt, std::nullopt, std::nullopt, false, false, {}},
        {std::nullopt, std::nullopt, std::nullopt, true, false, {"--dir-diff"}},
        {std::nullopt, std::nullopt, std::nullopt, false, true, {"--staged"}},
        {std::nullopt, std::nullopt, "-x", false, false, {"--tool=-x"}},
        {Paths{"a", "b"}, std::nullopt, std::nullopt, false, false, {"a", "b"}},
        {std::nullopt, Paths{"-x", "y"}, std::nullopt, false, false, {"--", "-x", "y"}},
        {Paths{}, Paths{}, std::nullopt, false, false, {"--"}},
        {Paths{"a..b"},
         Paths{"f"},
         "tool",
         true,
         true,
         {"--dir-diff", "--staged", "--tool=tool", "a..b", "--", "f"}},
    };
    for (const Case& each : cases) {
        const auto command = RVGitDiffToolCommand::gitDiffToolCommandWithRepository(repository());
        command->setRevisions(each.revisions);
        command->setFilePaths(each.filePaths);
        command->setDiffToolName(each.name);
        command->setPerformsDirectoryDiff(each.performsDirectoryDiff);
        command->setComparesIndex(each.comparesIndex);
        (void)command->run();
        Paths expected = {"difftool", "--no-prompt", "--no-symlinks"};
        expected.insert(expected.end(), each.expected.begin(), each.expected.end());
        EXPECT_EQ(lastArguments(recorder), expected);
    }
}

TEST_F(RVGitToolTest, ADiffToolTakesNoRevisionForAnOption) {
    const auto recorder = useRecordingGit();
    recorder.clear();
    const auto command = RVGitDiffToolCommand::gitDiffToolCommandWithRepository(repository());
    command->setRevisions(Paths{"--extcmd=touch x"});
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitToolTest, AFailedMergeIs2004WithThePath) {
    auto fake = useFakeGit();
    const auto failing = [&] {
        return RVGitMergeToolCommand::gitMergeToolCommandWithRepository(repository(), "x");
    };
    fake.setAnswer({.standardError = "merge of a file failed\n", .exitCode = 1});
    const auto error = errorOf(*failing());
    EXPECT_EQ(error.code(), RVGitMergetoolMergeFailedError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "a file");
    fake.setAnswer({.standardError = "merge of a file failed\n", .exitCode = 2});
    EXPECT_THAT(failing(), failsWith(RVGitRVGitGenericError));
    fake.setAnswer({.standardError = "No files need merging\n", .exitCode = 1});
    EXPECT_THAT(failing(), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitToolTest, ToolsNeedARepository) {
    EXPECT_THROW((void)RVGitMergeTool::mergeToolWithRepository(nullptr, "x"),
                 RVInvalidParameterException);
    EXPECT_THROW((void)RVGitDiffTool::diffToolWithRepository(nullptr, "x"),
                 RVInvalidParameterException);
}

}  // namespace
