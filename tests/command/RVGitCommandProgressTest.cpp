#include "RVGit/command/RVGitCommandProgress.h"

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "tests/support/RVGitTestCase.h"

using testing::ElementsAre;

namespace {

constexpr char allStages[] =
    "Compressing objects: 100% (3/3), done.\n"
    "Receiving objects: 100% (5/5), done.\n"
    "Resolving deltas: 100% (2/2), done.\n";

class RVGitCommandProgressTest : public RVGitTestCase {
protected:
    static double progressOf(const std::string& command, std::string_view output) {
        RVGitCommandProgress progress(command);
        progress.updateProgressWithOutputString(output);
        return progress.overallProgress();
    }

    static bool isUpdatedBy(std::string_view output) {
        RVGitCommandProgress progress("fetch");
        progress.updateProgressWithOutputString(output);
        progress.finishProgress();
        return progress.isUpdated();
    }
};

TEST_F(RVGitCommandProgressTest, AFreshObjectHasOneEmptyLine) {
    RVGitCommandProgress progress("fetch");
    EXPECT_EQ(progress.currentProgressOutput(), "");
    EXPECT_EQ(progress.lineCount(), 1U);
    EXPECT_EQ(progress.lastIndexOfOutputBuffer(), 0U);
    EXPECT_EQ(progress.lastProgressOutputLine(), "");
    EXPECT_EQ(progress.outputBuffer(), std::vector<std::string>{""});
    EXPECT_EQ(progress.command(), "fetch");
    EXPECT_EQ(progress.overallProgress(), 0);
    EXPECT_TRUE(progress.isIndeterminate());
    EXPECT_FALSE(progress.isUpdated());
}

TEST_F(RVGitCommandProgressTest, ALineRewrittenByCarriageReturnsKeepsItsLastForm) {
    RVGitCommandProgress progress("clone");
    progress.updateProgressWithOutputString(
        "Receiving objects: 10% (1/10)\rReceiving objects: 20% (2/10)\r");
    EXPECT_EQ(progress.currentProgressOutput(), "Receiving objects: 20% (2/10)");
    EXPECT_EQ(progress.lineCount(), 1U);
    EXPECT_DOUBLE_EQ(progress.overallProgress(), 0.2 / 3);
}

TEST_F(RVGitCommandProgressTest, ALineEndedByCarriageReturnAndNewlineIsKept) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputString("done\r\n");
    EXPECT_EQ(progress.currentProgressOutput(), "done\n");
    EXPECT_EQ(progress.lineCount(), 2U);
    EXPECT_EQ(progress.lastProgressOutputLine(), "");
    EXPECT_EQ(progress.lastIndexOfOutputBuffer(), 1U);
}

TEST_F(RVGitCommandProgressTest, AChunkThatContinuesALineOverwritesIt) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputString("first\nsec");
    progress.updateProgressWithOutputString("ond\n");
    EXPECT_EQ(progress.currentProgressOutput(), "first\nond\n");
    progress.updateProgressWithOutputString("partial");
    progress.updateProgressWithOutputString("\n");
    EXPECT_EQ(progress.currentProgressOutput(), "first\nond\n\n");
}

TEST_F(RVGitCommandProgressTest, ACarriageReturnAloneEmptiesNothingUntilMoreFollows) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputString("line");
    progress.updateProgressWithOutputString("\r");
    EXPECT_EQ(progress.currentProgressOutput(), "line");
    progress.updateProgressWithOutputString("\rx");
    EXPECT_EQ(progress.currentProgressOutput(), "x");
}

TEST_F(RVGitCommandProgressTest, AnEmptyChunkEndsTheIndeterminateState) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputString("");
    EXPECT_FALSE(progress.isIndeterminate());
    EXPECT_EQ(progress.lineCount(), 1U);
}

TEST_F(RVGitCommandProgressTest, BytesThatAreNotUTF8BecomeReplacementCharacters) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputData(
        "a\xC3\xA9"
        "b\xFF\n\xC3");
    EXPECT_EQ(progress.currentProgressOutput(), "aéb\xEF\xBF\xBD\n\xEF\xBF\xBD");
}

TEST_F(RVGitCommandProgressTest, EveryStageWeighsTheSame) {
    EXPECT_EQ(progressOf("clone", allStages), 1);
    EXPECT_EQ(progressOf("fetch", allStages), 0.75);
    EXPECT_EQ(progressOf("pull", allStages), 0.75);
    EXPECT_DOUBLE_EQ(progressOf("push", allStages), 1.0 / 3);
    EXPECT_DOUBLE_EQ(progressOf("push", "Compressing objects:   6%\nWriting objects:  30% (3/10)"),
                     0.12);
    EXPECT_EQ(progressOf("fetch", "Unpacking objects: 100% (5/5), done.\n"), 0.25);
}

TEST_F(RVGitCommandProgressTest, AnyOtherCommandCountsTheDefaultStages) {
    EXPECT_EQ(progressOf("submodule", allStages), 0.75);
    EXPECT_EQ(progressOf("Clone", allStages), 0.75);
    RVGitCommandProgress nameless(std::nullopt);
    nameless.updateProgressWithOutputString(allStages);
    EXPECT_EQ(nameless.overallProgress(), 0.75);
    EXPECT_EQ(&RVGitCommandProgress::regularExpressionsForCommand("archive"),
              &RVGitCommandProgress::defaultRegularExpressionsForCommandProgress());
    EXPECT_EQ(RVGitCommandProgress::defaultRegularExpressionsForCommandProgress().size(), 4U);
    EXPECT_EQ(RVGitCommandProgress::regularExpressionsForFetchCommandProgress().size(), 4U);
    EXPECT_EQ(RVGitCommandProgress::regularExpressionsForPullCommandProgress().size(), 4U);
    EXPECT_EQ(RVGitCommandProgress::regularExpressionsForPushCommandProgress().size(), 3U);
    EXPECT_EQ(RVGitCommandProgress::regularExpressionsForCloneCommandProgress().size(), 3U);
}

TEST_F(RVGitCommandProgressTest, AValueOver100CannotPushTheResultPast1) {
    EXPECT_EQ(progressOf("clone", "Receiving objects: 900%"), 1);
    EXPECT_EQ(progressOf("clone", "Receiving objects: 99999999999999999999999%"), 1);
}

TEST_F(RVGitCommandProgressTest, StagesAreFoundByTheirFirstMatchAndExactWords) {
    EXPECT_DOUBLE_EQ(progressOf("clone", "Receiving objects: 30%\nReceiving objects: 60%\n"), 0.1);
    EXPECT_EQ(progressOf("clone", "receiving objects: 30%\nReceiving objects:30%\n"), 0);
    EXPECT_DOUBLE_EQ(progressOf("clone", "remote: Compressing objects: 30% (3/10)\n"), 0.1);
}

TEST_F(RVGitCommandProgressTest, TheStagesOfACommandStandInGitsOrder) {
    const auto stagesOf = [](const std::optional<std::string>& command) {
        std::vector<std::string> stages;
        for (const auto& stage : RVGitCommandProgress::regularExpressionsForCommand(command))
            stages.emplace_back(stage.requiredText());
        return stages;
    };
    const std::string compressing = "Compressing objects: ", receiving = "Receiving objects: ",
                      resolving = "Resolving deltas: ", unpacking = "Unpacking objects: ",
                      writing = "Writing objects: ";
    for (const char* command : {"fetch", "pull", "archive"})
        EXPECT_THAT(stagesOf(command), ElementsAre(compressing, receiving, resolving, unpacking));
    EXPECT_THAT(stagesOf(std::nullopt), ElementsAre(compressing, receiving, resolving, unpacking));
    EXPECT_THAT(stagesOf("push"), ElementsAre(compressing, writing, unpacking));
    EXPECT_THAT(stagesOf("clone"), ElementsAre(compressing, receiving, resolving));
}

TEST_F(RVGitCommandProgressTest, ALineWithTwoStagesCountsForBothInAnyOrder) {
    for (const char* line : {"Compressing objects: 30% Resolving deltas: 60%",
                             "Resolving deltas: 60% Compressing objects: 30%"}) {
        EXPECT_DOUBLE_EQ(progressOf("clone", line), 0.3);
        EXPECT_DOUBLE_EQ(progressOf("fetch", line), 0.225);
        EXPECT_DOUBLE_EQ(progressOf("push", line), 0.1);
    }
    // Each stage keeps the value of its own words, and a later line changes neither.
    EXPECT_DOUBLE_EQ(progressOf("clone",
                                "Receiving objects: 30% Resolving deltas: 60%\n"
                                "Resolving deltas: 90% Receiving objects: 90%\n"),
                     0.3);
}

TEST_F(RVGitCommandProgressTest, WithoutExpressionsThereIsNoProgress) {
    EXPECT_EQ(RVGitCommandProgress::overallProgressFromProgressOutput(allStages, {}), 0);
}

TEST_F(RVGitCommandProgressTest, FinishingReportsTheWhole) {
    RVGitCommandProgress progress("fetch");
    progress.updateProgressWithOutputString(allStages);
    EXPECT_EQ(progress.overallProgress(), 0.75);
    progress.finishProgress();
    EXPECT_EQ(progress.overallProgress(), 1);
    EXPECT_FALSE(progress.isUpdated());
}

TEST_F(RVGitCommandProgressTest, OnlyRefsThatAreNotUpToDateCountAsUpdated) {
    EXPECT_FALSE(isUpdatedBy(""));
    EXPECT_FALSE(isUpdatedBy(allStages));
    EXPECT_FALSE(isUpdatedBy("From /tmp/x\n = [up to date]      main       -> origin/main\n"));
    EXPECT_TRUE(
        isUpdatedBy("From /tmp/x\n = [up to date]      main       -> origin/main\n"
                    " * [new branch]      side       -> origin/side\n"));
    EXPECT_TRUE(isUpdatedBy("   1a2b3c4..5d6e7f8  main       -> origin/main\n"));
}

TEST_F(RVGitCommandProgressTest, ResettingForgetsTheOutputOnly) {
    RVGitCommandProgress progress("clone");
    progress.updateProgressWithOutputString(allStages);
    progress.reset();
    EXPECT_EQ(progress.currentProgressOutput(), "");
    EXPECT_EQ(progress.lineCount(), 1U);
    EXPECT_EQ(progress.overallProgress(), 1);
    EXPECT_FALSE(progress.isIndeterminate());
    progress.updateProgress();
    EXPECT_EQ(progress.overallProgress(), 0);
    progress.setOverallProgress(0.5);
    EXPECT_EQ(progress.overallProgress(), 0.5);
}

TEST_F(RVGitCommandProgressTest, SearchingOnlyLinesWithAPercentageChangesNothing) {
    const std::vector<std::string> pieces = {"Receiving objects: ",
                                             "Resolving deltas: ",
                                             "12%",
                                             "100% (1/1)",
                                             "\r",
                                             "\n",
                                             "rename {a => b} (%)",
                                             " ",
                                             "x"};
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        RVGitCommandProgress progress("clone");
        for (int chunk = 0; chunk < 3; ++chunk) {
            std::string text;
            for (int piece = 0; piece < 8; ++piece)
                text += pieces[random() % pieces.size()];
            progress.updateProgressWithOutputString(text);
            EXPECT_EQ(progress.overallProgress(),
                      RVGitCommandProgress::overallProgressFromProgressOutput(
                          progress.currentProgressOutput(),
                          RVGitCommandProgress::regularExpressionsForCommand("clone")));
        }
    }
}

TEST_F(RVGitCommandProgressTest, TenMegabytesInManyChunksAreSearchedOnce) {
    RVGitCommandProgress progress("fetch");
    std::string lines;
    for (int line = 0; line < 10; ++line)
        lines += "remote: " + std::to_string(line) + "%\n";
    constexpr int numberOfChunks = 100000;
    for (int chunk = 0; chunk < numberOfChunks; ++chunk)
        progress.updateProgressWithOutputString(lines);
    EXPECT_EQ(progress.overallProgress(), 0);
    EXPECT_EQ(progress.lineCount(), 10 * numberOfChunks + 1);
    progress.updateProgressWithOutputString("Receiving objects: 50%\r");
    EXPECT_EQ(progress.overallProgress(), 0.125);
    progress.updateProgressWithOutputString("Receiving objects: 100%\nReceiving objects: 1%\n");
    EXPECT_EQ(progress.overallProgress(), 0.25);
    progress.reset();
    progress.updateProgressWithOutputString("Resolving deltas: 40%");
    EXPECT_EQ(progress.overallProgress(), 0.1);
}

}  // namespace
