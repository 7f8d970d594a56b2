#include "RVGit/submodules/RVGitSubmoduleCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRequirement.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Command = RVGitSubmoduleCommand;
using Parser = RVGitSubmoduleStatusOutputParser;
using Item = RVGitSubmoduleOutputParserResultItem;

constexpr char hash[] = "0123456789abcdef0123456789abcdef01234567";

/// "status|path|hash or -|describe or -" of each item.
std::vector<std::string> summaryOf(const std::vector<Item>& items) {
    std::vector<std::string> summary;
    for (const Item& item : items)
        summary.push_back(std::to_string(item.status) + "|" + item.path + "|" +
                          item.commitHash.value_or("-") + "|" + item.describe.value_or("-"));
    return summary;
}

std::vector<std::string> parsed(const std::string& output) {
    Parser parser(output);
    std::optional<RVError> error;
    EXPECT_TRUE(parser.parse(&error));
    EXPECT_FALSE(error);
    return summaryOf(parser.result());
}

TEST(RVGitSubmoduleStatusOutputParserTest, ReadsEachFlag) {
    const std::string h = hash;
    EXPECT_THAT(parsed(" " + h + " clean (heads/main)\n-" + h + " uninitialized\n+" + h +
                       " updated (v1.0-2-g0123abc)\nU" + h + " a b/unmerged\n"),
                ElementsAre("1|clean|" + h + "|heads/main", "2|uninitialized|" + h + "|-",
                            "3|updated|" + h + "|v1.0-2-g0123abc", "4|a b/unmerged|" + h + "|-"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, ReadsALineWithoutAHash) {
    EXPECT_THAT(parsed("+ a b\n"), ElementsAre("3|a b|-|-"));
    EXPECT_THAT(parsed("+ a (b)\n"), ElementsAre("3|a (b)|-|-"));
    EXPECT_THAT(parsed("- a\n  a\nU a\n"), IsEmpty());
}

TEST(RVGitSubmoduleStatusOutputParserTest, NullAsDescribeIsNone) {
    EXPECT_THAT(parsed(std::string(" ") + hash + " a ((null))\n"),
                ElementsAre(std::string("1|a|") + hash + "|-"));
    EXPECT_THAT(parsed(std::string(" ") + hash + " a (null)\n"),
                ElementsAre(std::string("1|a|") + hash + "|null"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, LeavesOutWhatFitsNothing) {
    EXPECT_THAT(parsed(""), IsEmpty());
    EXPECT_THAT(parsed("\n\nEntering 'a'\n 0123 a\n"), IsEmpty());
    EXPECT_THAT(parsed(std::string("*") + hash + " a\n"), IsEmpty());
    EXPECT_THAT(parsed(" " + std::string(40, 'A') + " a\n"), IsEmpty());
    EXPECT_THAT(parsed(std::string(" ") + hash + "\n"), IsEmpty());
    EXPECT_THAT(parsed(std::string(" ") + hash + " \n"), IsEmpty());
}

TEST(RVGitSubmoduleStatusOutputParserTest, AHashBySHA256IsRefused) {
    Parser parser(" " + std::string(64, 'a') + " lib (heads/main)\n");
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
}

TEST(RVGitSubmoduleStatusOutputParserTest, OfTheSamePathTheLastLineCounts) {
    EXPECT_THAT(parsed(std::string(" ") + hash + " a (x)\n-" + hash + " b\n-" + hash + " a\n"),
                ElementsAre(std::string("2|a|") + hash + "|-", std::string("2|b|") + hash + "|-"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, KeepsBracketsAndBlanksInPaths) {
    const std::string h = hash;
    EXPECT_THAT(parsed(" " + h + " a (b) (heads/main)\n " + h + "  blank ahead (x)\n " + h +
                       " caf\u00e9 (v(1))\n"),
                ElementsAre("1|a (b)|" + h + "|heads/main", "1| blank ahead|" + h + "|x",
                            "1|caf\u00e9|" + h + "|v(1)"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, ALineInAnotherEncodingDoesNotSpoilTheOthers) {
    const std::string h = hash;
    EXPECT_THAT(parsed(" " + h + " caf\u00e9 (x)\n " + h + " caf\xe9z (x)\n"),
                ElementsAre("1|caf\u00e9|" + h + "|x", "1|caf\u00e9z|" + h + "|x"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, ReadsCRLF) {
    EXPECT_THAT(parsed(std::string(" ") + hash + " a (x)\r\n"),
                ElementsAre(std::string("1|a|") + hash + "|x"));
}

TEST(RVGitSubmoduleStatusOutputParserTest, SurvivesDamage) {
    const std::string output = std::string(" ") + hash + " a b (heads/main)\n-" + hash +
                               " caf\u00e9\n+" + hash + " c (v1)\nU" + hash + " d\n+ e\n";
    for (const std::string& damaged : damagedOutputs(output)) {
        Parser parser(damaged);
        ASSERT_TRUE(parser.parse());
        for (const Item& item : parser.result()) {
            EXPECT_FALSE(item.path.empty());
            EXPECT_GE(item.status, RVGitSubmoduleStatusClean);
            EXPECT_LE(item.status, RVGitSubmoduleStatusUnmerged);
            EXPECT_TRUE(!item.commitHash || item.commitHash->size() == 40);
        }
    }
}

class RVGitSubmoduleCommandLineTest : public RVGitSubmoduleTestCase {
protected:
    /// Whether git succeeds is of no interest here; and `git submodule` starts others, so that the
    /// first recorded call counts.
    std::vector<std::string> firstArgumentsOf(Command& command) {
        recorder_.clear();
        (void)command.run();
        return recorder_.invocations().front().arguments;
    }
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitSubmoduleCommandLineTest, HasNeitherPathOfTheRepository) {
    const auto command = Command::gitSubmoduleStatusCommandWithRepository(repository(), {});
    EXPECT_THAT(firstArgumentsOf(*command), ElementsAre("--no-pager", "submodule", "status"));
    const auto call = recorder_.invocations().front();
    EXPECT_EQ(call.workingDirectory, repositoryPath());
    EXPECT_EQ(call.environment.at("GIT_LITERAL_PATHSPECS"), "1");
    EXPECT_EQ(command->gitSubCommand(), "status");
}

TEST_F(RVGitSubmoduleCommandLineTest, IsMadeByFiveFactories) {
    const std::vector<std::string> paths = {"a b", "c"};
    const auto line = [&](const std::shared_ptr<Command>& command) {
        auto arguments = firstArgumentsOf(*command);
        return std::vector<std::string>(arguments.begin() + 2, arguments.end());
    };
    const auto& r = repository();
    EXPECT_THAT(line(Command::gitSubmoduleAddCommandWithRepository(r, "a b", "u://x", 0)),
                ElementsAre("add", "u://x", "a b"));
    EXPECT_THAT(line(Command::gitSubmoduleAddCommandWithRepository(r, "a", "u://x",
                                                                   RVGitSubmoduleAddOptionForce)),
                ElementsAre("add", "--force", "u://x", "a"));
    EXPECT_THAT(line(Command::gitSubmoduleAddCommandWithRepository(r, "a", std::nullopt, 6)),
                ElementsAre("add", "a"));
    EXPECT_THAT(line(Command::gitSubmoduleStatusCommandWithRepository(r, paths)),
                ElementsAre("status", "a b", "c"));
    EXPECT_THAT(line(Command::gitSubmoduleUpdateCommandWithRepository(r, paths, 0)),
                ElementsAre("update", "a b", "c"));
    EXPECT_THAT(line(Command::gitSubmoduleUpdateCommandWithRepository(r, std::nullopt, 1)),
                ElementsAre("update", "--init"));
    EXPECT_THAT(line(Command::gitSubmoduleUpdateCommandWithRepository(r, std::nullopt, 2)),
                ElementsAre("update", "--recursive"));
    EXPECT_THAT(line(Command::gitSubmoduleUpdateCommandWithRepository(r, std::nullopt, 4)),
                ElementsAre("update", "--force"));
    EXPECT_THAT(line(Command::gitSubmoduleUpdateCommandWithRepository(r, {{"a"}}, 7)),
                ElementsAre("update", "--init", "--recursive", "--force", "a"));
    EXPECT_THAT(line(Command::gitSubmoduleSyncCommandWithRepository(r, paths)),
                ElementsAre("sync", "a b", "c"));
    EXPECT_THAT(line(Command::gitSubmoduleSyncCommandWithRepository(r, std::nullopt)),
                ElementsAre("sync"));
    EXPECT_THAT(line(Command::gitSubmoduleInitCommandWithRepository(r, paths)),
                ElementsAre("init", "a b", "c"));
    EXPECT_THAT(line(Command::gitSubmoduleInitCommandWithRepository(r, std::nullopt)),
                ElementsAre("init"));
}

TEST_F(RVGitSubmoduleCommandLineTest, APathThatLooksLikeAnOptionIsNone) {
    EXPECT_THAT(firstArgumentsOf(
                    *Command::gitSubmoduleUpdateCommandWithRepository(repository(), {{"-x"}}, 0)),
                ElementsAre("--no-pager", "submodule", "update", "./-x"));
}

TEST_F(RVGitSubmoduleCommandLineTest, AnAddressThatLooksLikeAnOptionIsRefused) {
    recorder_.clear();
    const auto command =
        Command::gitSubmoduleAddCommandWithRepository(repository(), "a", "--reference=/etc", 0);
    EXPECT_TRUE(failedWith(command->run(&error), RVGitRVGitGenericError));
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

class RVGitSubmoduleCommandTest : public RVGitSubmoduleTestCase {};

TEST_F(RVGitSubmoduleCommandTest, StatusGivesTheSubmodules) {
    addSubmodule("a");
    addSubmodule("x y/\u00e9");
    const auto command = Command::gitSubmoduleStatusCommandWithRepository(repository(), {});
    EXPECT_TRUE(succeeded(command->run(&error)));
    const std::string head = gitLine({"rev-parse", "HEAD"}, "library");
    EXPECT_THAT(summaryOf(command->submodules()),
                ElementsAre("1|a|" + head + "|heads/main", "1|x y/\u00e9|" + head + "|heads/main"));
}

TEST_F(RVGitSubmoduleCommandTest, OthersThanStatusGiveNone) {
    addSubmodule("a");
    const auto command = Command::gitSubmoduleInitCommandWithRepository(repository(), {});
    EXPECT_TRUE(succeeded(command->run(&error)));
    EXPECT_THAT(command->submodules(), IsEmpty());
}

TEST_F(RVGitSubmoduleCommandTest, AddingAtAPathThatExistsFailsWith2804) {
    writeFile("repository/there", "x");
    stageAll();
    const auto failure = errorOf(*Command::gitSubmoduleAddCommandWithRepository(
        repository(), "there", scratchPath("library"), 0));
    EXPECT_EQ(failure.code(), RVGitAddSubmodulePathAlreadyExistsError);
    EXPECT_EQ(failure.userInfoString(RVGitSubmodulePathErrorKey), "there");
    EXPECT_EQ(failure.localizedFailureReason(),
              "Could not add the submodule at path “there”. The path already exists.");
}

TEST_F(RVGitSubmoduleCommandTest, AddingOverAGitDirectoryFailsWith2805) {
    addSubmodule("a");
    gitInRepository({"rm", "-q", "-f", "a"});
    gitInRepository({"commit", "-q", "-m", "Remove"});
    makeLibrary("other");
    const auto failure = errorOf(
        *Command::gitSubmoduleAddCommandWithRepository(repository(), "a", scratchPath("other"), 0));
    EXPECT_EQ(failure.code(), RVGitAddSubmoduleGitDirectoryAlreadyExistsError);
    EXPECT_EQ(failure.userInfoString(RVGitSubmoduleNameErrorKey), "a");
    EXPECT_TRUE(succeeded(Command::gitSubmoduleAddCommandWithRepository(
                              repository(), "a", scratchPath("other"), RVGitSubmoduleAddOptionForce)
                              ->run(&error)));
}

TEST_F(RVGitSubmoduleCommandTest, AMissingGitDirectoryIs2801) {
    RVGIT_TEST_NEEDS_GIT("2.34",
                         "its submodule status passes over it, or ends with another exit code");
    addSubmodule("lib", "na me");
    fs::remove_all(pathInRepository(".git/modules/na me"));
    const auto failure =
        errorOf(*Command::gitSubmoduleStatusCommandWithRepository(repository(), {{"lib"}}));
    EXPECT_EQ(failure.code(), RVGitSubmoduleStatusMissingGitDirError);
    EXPECT_EQ(failure.userInfoString(RVGitSubmoduleNameErrorKey), "na me");
    EXPECT_EQ(failure.localizedDescription(), "");
}

TEST_F(RVGitSubmoduleCommandTest, AMissingMappingIs2800) {
    addSubmodule("lib");
    gitInRepository({"config", "-f", ".gitmodules", "--remove-section", "submodule.lib"});
    const auto failure =
        errorOf(*Command::gitSubmoduleStatusCommandWithRepository(repository(), std::nullopt));
    EXPECT_EQ(failure.code(), RVGitSubmoduleStatusMissingMappingError);
    EXPECT_EQ(failure.userInfoString(RVGitSubmodulePathErrorKey), "lib");
}

TEST_F(RVGitSubmoduleCommandTest, RowsForWhatGitDoesNotPrintToday) {
    RVFakeGit fake = useFakeGit();
    const auto status = [&] {
        return Command::gitSubmoduleStatusCommandWithRepository(repository(), std::nullopt);
    };
    const auto add = [&] {
        return Command::gitSubmoduleAddCommandWithRepository(repository(), "a", "u", 0);
    };
    fake.setAnswer({.standardError = "sh: 1: Segmentation fault\n", .exitCode = 139});
    EXPECT_THAT(status(), failsWith(Command::crashedStatusErrorCode));
    EXPECT_THAT(add(), failsWith(RVGitRVGitGenericError));
    fake.setAnswer({.standardError = "Segmentation fault\n", .exitCode = 1});
    EXPECT_THAT(status(), failsWith(RVGitRVGitGenericError));
    for (const int exitCode : {1, 128}) {
        fake.setAnswer(
            {.standardError = "'a' already exists in the index\n", .exitCode = exitCode});
        EXPECT_THAT(add(), failsWith(RVGitAddSubmodulePathAlreadyExistsError));
        EXPECT_THAT(status(), failsWith(RVGitRVGitGenericError));
        fake.setAnswer({.standardError = "A git directory for 'a' is found locally with "
                                         "remote(s):\n  origin\tu\n",
                        .exitCode = exitCode});
        EXPECT_THAT(add(), failsWith(RVGitAddSubmoduleGitDirectoryAlreadyExistsError));
    }
    fake.setAnswer({.standardError = "'a' already exists in the index\n", .exitCode = 2});
    EXPECT_THAT(add(), failsWith(RVGitRVGitGenericError));
    fake.setAnswer(
        {.standardError = "fatal: Not a git repository: /r/.git/modules/x/y\n", .exitCode = 128});
    EXPECT_THAT(status(), failsWith(RVGitSubmoduleStatusMissingGitDirError));
    fake.setAnswer({.standardError = "No submodule mapping found in .gitmodules for path 'a'\n",
                    .exitCode = 1});
    EXPECT_THAT(status(), failsWith(RVGitSubmoduleStatusMissingMappingError));
}

TEST_F(RVGitSubmoduleCommandTest, AStatusThatPrintsOnStandardErrorHasFailedWhateverItsExitCode) {
    RVFakeGit fake = useFakeGit();
    const std::string line = std::string(" ") + hash + " a (x)\n";
    fake.setAnswer(
        {.standardOutput = line,
         .standardError = "No submodule mapping found in .gitmodules for path 'sub dir/b'\n"});
    const auto status = Command::gitSubmoduleStatusCommandWithRepository(repository(), {});
    const auto failure = errorOf(*status);
    EXPECT_EQ(failure.code(), RVGitSubmoduleStatusMissingMappingError);
    EXPECT_EQ(failure.userInfoString(RVGitSubmodulePathErrorKey), "sub dir/b");
    EXPECT_THAT(status->submodules(), SizeIs(1));

    fake.setAnswer({.standardOutput = line, .standardError = "perl: warning: no locale\n"});
    EXPECT_THAT(Command::gitSubmoduleStatusCommandWithRepository(repository(), {}),
                failsWith(RVGitRVGitGenericError));
    // Others may say what they like.
    EXPECT_TRUE(Command::gitSubmoduleSyncCommandWithRepository(repository(), {})->run(&error));
    fake.setAnswer({.standardOutput = line});
    EXPECT_TRUE(Command::gitSubmoduleStatusCommandWithRepository(repository(), {})->run(&error));
}

TEST_F(RVGitSubmoduleCommandTest, TakesPathsAsTheyAre) {
    addSubmodule("a*");
    addSubmodule("ab");
    const auto command = Command::gitSubmoduleStatusCommandWithRepository(repository(), {{"a*"}});
    setEnvironmentVariable("GIT_GLOB_PATHSPECS", "1");
    EXPECT_TRUE(succeeded(command->run(&error)));
    ASSERT_THAT(command->submodules(), SizeIs(1));
    EXPECT_EQ(command->submodules().front().path, "a*");
}

TEST_F(RVGitSubmoduleCommandTest, AnInheritedVariableNamesNoOtherRepository) {
    makeLibrary();
    addSubmodule("lib");
    initRepository("other");
    setEnvironmentVariable("GIT_DIR", scratchPath("other/.git"));
    setEnvironmentVariable("GIT_WORK_TREE", scratchPath("other"));
    const auto command = Command::gitSubmoduleStatusCommandWithRepository(repository(), {});
    EXPECT_TRUE(command->run(&error));
    ASSERT_THAT(command->submodules(), SizeIs(1));
    EXPECT_EQ(command->submodules().front().path, "lib");
}

}  // namespace
