#include "RVGit/worktree/RVGitWorkingTreeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitWorkingTreeManagerTest : public RVGitWorkingTreeManagerTestCase {
protected:
    /// Two paths to a command line from here on.
    static void cutListsAfterTwoPaths() {
        RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    }
    /// A git that fails where the word stands on the line; a recording git gets the other calls.
    [[nodiscard]] std::pair<RVFakeGit, RVRecordingGit> useGitThatFailsFor(
        const std::string& word,
        const RVFakeGit::Answer& answer = {.standardError = "fatal: no\n", .exitCode = 128}) const {
        RVRecordingGit recorder(scratchPath("recording-git"), gitPath());
        RVFakeGit fake(scratchPath("fake-git"), recorder.path());
        fake.passOtherCallsOn();
        fake.setAnswer(word, answer);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        return {fake, recorder};
    }
    void commitFiles(const Paths& paths, std::string_view contents = "one\n") const {
        for (const std::string& path : paths)
            write(path, contents);
        commitAll();
    }

    const Paths fivePaths = {"a", "b", "c", "d", "e"};
};

TEST_F(RVGitWorkingTreeManagerTest, NeedsARepository) {
    EXPECT_THROW(RVGitWorkingTreeManager(nullptr), RVInvalidParameterException);
    EXPECT_EQ(RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository())->repository(),
              repository());
}

TEST_F(RVGitWorkingTreeManagerTest, TheLineOfEachOperation) {
    const Paths paths = {"a", "-b"};
    const struct {
        std::function<bool()> run;
        Paths expected;
    } cases[] = {
        {[&] { return manager().checkoutRevision("topic"); }, {"checkout", "topic"}},
        {[&] { return manager().resetToRevision("HEAD^", RVGitResetModeKeep, std::nullopt); },
         {"reset", "-q", "--keep", "HEAD^"}},
        {[&] { return manager().resetToRevision(std::nullopt, RVGitResetModeNone, paths); },
         {"reset", "-q", "--", "a", "-b"}},
        {[&] { return manager().resetToRevision(std::nullopt, RVGitResetModeNone, Paths()); },
         {"reset", "-q", "--"}},
        {[&] { return manager().stageFiles(paths); }, {"add", "--all", "--", "a", "-b"}},
        {[&] { return manager().stageFiles(paths, RVGitStageOptionNone); },
         {"add", "--all", "--", "a", "-b"}},
        {[&] { return manager().stageFiles(paths, RVGitStageOptionForce); },
         {"add", "--all", "-f", "--", "a", "-b"}},
        {[&] { return manager().stageFiles(paths, RVGitStageOptionIntentToAdd); },
         {"add", "--all", "--intent-to-add", "--", "a", "-b"}},
        {[&] { return manager().stageFiles(paths, 3U); },
         {"add", "--all", "-f", "--intent-to-add", "--", "a", "-b"}},
        {[&] { return manager().stageAllFiles(); }, {"add", "--all", "."}},
        {[&] { return manager().unstageFiles(paths); }, {"reset", "-q", "HEAD", "--", "a", "-b"}},
        {[&] { return manager().unstageAllFiles(); }, {"reset", "-q", "HEAD", "--", "."}},
        {[&] { return manager().removeFiles(paths); },
         {"rm", "-q", "-f", "-r", "--ignore-unmatch", "--", "a", "-b"}},
        {[&] { return manager().untrackFiles(paths); },
         {"rm", "-q", "-f", "-r", "--cached", "--ignore-unmatch", "--", "a", "-b"}},
        {[&] { return manager().moveFileAtPath("a", "-b", 0); }, {"mv", "a", "./-b"}},
        {[&] { return manager().moveFileAtPath("a", "-b", RVGitMoveOptionForce); },
         {"mv", "-f", "a", "./-b"}},
        {[&] { return manager().revertFiles(paths); }, {"checkout", "HEAD", "--", "a", "-b"}},
        {[&] { return manager().revertFiles(paths, "v1"); }, {"checkout", "v1", "--", "a", "-b"}},
        {[&] { return manager().revertFiles(paths, "--ours"); },
         {"checkout", "--ours", "--", "a", "-b"}},
        {[&] { return manager().revertUnmergedFiles(paths); }, {"checkout", "-m", "--", "a", "-b"}},
        {[&] { return manager().unresolveIndexEntries(paths); },
         {"update-index", "--unresolve", "a", "./-b"}},
        {[&] { return manager().setAssumeUnchangedFlagForFilePaths(paths); },
         {"update-index", "--ignore-missing", "--assume-unchanged", "a", "./-b"}},
        {[&] { return manager().unsetAssumeUnchangedFlagForFilePaths(paths); },
         {"update-index", "--ignore-missing", "--no-assume-unchanged", "a", "./-b"}},
        {[&] { return manager().commitWithMessage("Message", RVGitCommitOptionAllowEmpty); },
         {"-c", "i18n.commitencoding=UTF-8", "-c", "commit.verbose=false", "commit",
          "--allow-empty", "-F-"}},
        {[&] {
             return manager().applyPatch("patch", RVOptions{{RVGitApplyOptionCached, true}});
         },
         {"apply", "--cached", "-"}},
        {[&] {
             return manager().applyPatchFromFileAtURL(RVURL::fileURLWithPath("/tmp/a b.patch"),
                                                      RVOptions{{RVGitApplyOptionReverse, true}});
         },
         {"apply", "--reverse", "--", "/tmp/a b.patch"}},
        {[&] {
             return manager()
                 .patchByComparingIndexWithBaseForFilePaths(paths, std::nullopt)
                 .has_value();
         },
         {"diff", "--cached", "--src-prefix=a/", "--dst-prefix=b/", "--no-color",
          "--word-diff=none", "--no-ext-diff", "--full-index", "-C", "-M", "--", "a", "-b"}},
        {[&] {
             return manager()
                 .patchByComparingWorkingTreeWithIndexForFilePaths(
                     std::nullopt, RVOptions{{RVGitDiffOptionBinary, true}})
                 .has_value();
         },
         {"diff", "--src-prefix=a/", "--dst-prefix=b/", "--no-color", "--word-diff=none",
          "--no-ext-diff", "--full-index", "-C", "-M", "--binary"}},
    };
    const auto recorder = useDeafRecordingGit();
    for (const auto& [run, expected] : cases) {
        EXPECT_TRUE(run());
        EXPECT_EQ(lastArguments(recorder), expected);
    }
    EXPECT_EQ(recorder.invocations().size(), std::size(cases));
}

TEST_F(RVGitWorkingTreeManagerTest, AnEmptyListRunsNothing) {
    const auto recorder = useRecordingGit();
    std::optional<RVError> error;
    EXPECT_TRUE(manager().stageFiles({}, &error));
    EXPECT_TRUE(manager().stageFiles({}, 3U, &error));
    EXPECT_TRUE(manager().unstageFiles({}, &error));
    EXPECT_TRUE(manager().removeFiles({}, &error));
    EXPECT_TRUE(manager().untrackFiles({}, &error));
    EXPECT_TRUE(manager().revertFiles({}, &error));
    EXPECT_TRUE(manager().revertFiles({}, "nowhere", &error));
    EXPECT_TRUE(manager().setAssumeUnchangedFlagForFilePaths({}, &error));
    EXPECT_TRUE(manager().unsetAssumeUnchangedFlagForFilePaths({}, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeManagerTest, AnEmptyListOfUnmergedFilesRuns) {
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().revertUnmergedFiles({}));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("checkout", "-m", "--"));
    EXPECT_TRUE(manager().unresolveIndexEntries({}));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("update-index", "--unresolve"));
}

TEST_F(RVGitWorkingTreeManagerTest, StagingPassesItsOptionsToTheFirstBatchAlone) {
    cutListsAfterTwoPaths();
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().stageFiles(fivePaths, 3U));
    EXPECT_THAT(
        commandLines(recorder),
        ElementsAre(Paths{"add", "--all", "-f", "--intent-to-add", "--", "a", "b"},
                    Paths{"add", "--all", "--", "c", "d"}, Paths{"add", "--all", "--", "e"}));
}

TEST_F(RVGitWorkingTreeManagerTest, RevertingGoesToHeadAfterTheFirstBatch) {
    cutListsAfterTwoPaths();
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().revertFiles(fivePaths, "v1"));
    EXPECT_THAT(commandLines(recorder), ElementsAre(Paths{"checkout", "v1", "--", "a", "b"},
                                                    Paths{"checkout", "HEAD", "--", "c", "d"},
                                                    Paths{"checkout", "HEAD", "--", "e"}));
}

TEST_F(RVGitWorkingTreeManagerTest, OtherOperationsRepeatThemselvesForEachBatch) {
    using Manager = RVGitWorkingTreeManager;
    using Operation = bool (Manager::*)(const Paths&, RVErrorPlace);
    const std::pair<Operation, Paths> cases[] = {
        {&Manager::unstageFiles, {"reset", "-q", "HEAD", "--"}},
        {&Manager::removeFiles, {"rm", "-q", "-f", "-r", "--ignore-unmatch", "--"}},
        {&Manager::untrackFiles, {"rm", "-q", "-f", "-r", "--cached", "--ignore-unmatch", "--"}},
        {&Manager::setAssumeUnchangedFlagForFilePaths,
         {"update-index", "--ignore-missing", "--assume-unchanged"}},
        {&Manager::unsetAssumeUnchangedFlagForFilePaths,
         {"update-index", "--ignore-missing", "--no-assume-unchanged"}},
    };
    cutListsAfterTwoPaths();
    const auto recorder = useDeafRecordingGit();
    for (const auto& [operation, words] : cases) {
        recorder.clear();
        EXPECT_TRUE((manager().*operation)(fivePaths, nullptr));
        std::vector<Paths> expected(3, words);
        expected[0].insert(expected[0].end(), {"a", "b"});
        expected[1].insert(expected[1].end(), {"c", "d"});
        expected[2].emplace_back("e");
        EXPECT_EQ(commandLines(recorder), expected);
    }
}

TEST_F(RVGitWorkingTreeManagerTest, OperationsThatDoNotBatchRunOnceOrThrow) {
    cutListsAfterTwoPaths();
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().revertUnmergedFiles(fivePaths));
    EXPECT_TRUE(manager().unresolveIndexEntries(fivePaths));
    EXPECT_TRUE(manager().resetToRevision("HEAD", RVGitResetModeNone, fivePaths));
    EXPECT_EQ(recorder.invocations().size(), 3U);

    const Paths tooMany(4097, "a");
    using Overflow = RVGitCommandArgumentsOverflowException;
    EXPECT_THROW((void)manager().revertUnmergedFiles(tooMany), Overflow);
    EXPECT_THROW((void)manager().unresolveIndexEntries(tooMany), Overflow);
    EXPECT_THROW((void)manager().resetToRevision("HEAD", RVGitResetModeNone, tooMany), Overflow);
    EXPECT_EQ(recorder.invocations().size(), 3U);
}

TEST_F(RVGitWorkingTreeManagerTest, AMaximumOfZeroPassesOnePathAtATime) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(0);
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().revertFiles({"a", "b", "c"}, "v1"));
    EXPECT_THAT(commandLines(recorder), ElementsAre(Paths{"checkout", "v1", "--", "a"},
                                                    Paths{"checkout", "HEAD", "--", "b"},
                                                    Paths{"checkout", "HEAD", "--", "c"}));
}

TEST_F(RVGitWorkingTreeManagerTest, AListAsLongAsTheLimitIsOneBatch) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(5);
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().unstageFiles(fivePaths));
    EXPECT_EQ(recorder.invocations().size(), 1U);
}

TEST_F(RVGitWorkingTreeManagerTest, ABatchThatFailsLeavesTheEarlierOnesAppliedAndReportsItsError) {
    cutListsAfterTwoPaths();
    const auto run = [&](const auto& operation) { return errorOf(operation); };
    for (const std::string& path : fivePaths)
        write(path, "one\n");
    const auto [fake, recorder] = useGitThatFailsFor("c");
    const auto expectFailureOfTheSecondBatch = [&recorder = recorder](const RVError& error) {
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        EXPECT_EQ(error.userInfoString(RVGitCommandErrorOutputErrorKey), "fatal: no\n");
        EXPECT_EQ(recorder.invocations().size(), 1U);
        recorder.clear();
    };
    recorder.clear();
    expectFailureOfTheSecondBatch(
        run([&](RVErrorPlace error) { return manager().stageFiles(fivePaths, error); }));
    EXPECT_THAT(status(), ElementsAre("A  a", "A  b", "?? c", "?? d", "?? e"));

    commitAll();
    for (const std::string& path : fivePaths)
        write(path, "two\n");
    git({"add", "."}, repositoryPath());
    recorder.clear();
    expectFailureOfTheSecondBatch(
        run([&](RVErrorPlace error) { return manager().unstageFiles(fivePaths, error); }));
    EXPECT_THAT(status(), ElementsAre(" M a", " M b", "M  c", "M  d", "M  e"));
    expectFailureOfTheSecondBatch(
        run([&](RVErrorPlace error) { return manager().untrackFiles(fivePaths, error); }));
    EXPECT_THAT(records({"ls-files", "-z"}), ElementsAre("c", "d", "e"));
    git({"add", "."}, repositoryPath());
    expectFailureOfTheSecondBatch(
        run([&](RVErrorPlace error) { return manager().removeFiles(fivePaths, error); }));
    EXPECT_THAT(records({"ls-files", "-z"}), ElementsAre("c", "d", "e"));
    EXPECT_FALSE(exists("b"));
    EXPECT_EQ(read("c"), "two\n");
}

TEST_F(RVGitWorkingTreeManagerTest, TheFirstBatchAloneDecidesOnRevertingAndMarking) {
    cutListsAfterTwoPaths();
    commitFiles(fivePaths);
    for (const std::string& path : fivePaths)
        write(path, "two\n");
    const auto [fake, recorder] = useGitThatFailsFor("c");
    recorder.clear();
    std::optional<RVError> error;
    EXPECT_TRUE(manager().revertFiles(fivePaths, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitCommandErrorOutputErrorKey), "fatal: no\n");
    EXPECT_THAT(status(), ElementsAre(" M c", " M d", " M e"));
    EXPECT_EQ(recorder.invocations().size(), 1U);

    error.reset();
    EXPECT_TRUE(manager().setAssumeUnchangedFlagForFilePaths(fivePaths, &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(records({"ls-files", "-v", "-z"}), ElementsAre("h a", "h b", "H c", "H d", "H e"));
    error.reset();
    EXPECT_TRUE(manager().unsetAssumeUnchangedFlagForFilePaths({"a", "d", "c"}, &error));
    EXPECT_TRUE(error);
    EXPECT_THAT(records({"ls-files", "-v", "-z"}), ElementsAre("H a", "h b", "H c", "H d", "H e"));

    const Paths firstFails = {"c", "a", "b"};
    EXPECT_FALSE(manager().revertFiles(firstFails));
    EXPECT_FALSE(manager().setAssumeUnchangedFlagForFilePaths(firstFails));
    EXPECT_FALSE(manager().unsetAssumeUnchangedFlagForFilePaths(firstFails));
    EXPECT_THAT(status(), ElementsAre(" M c", " M d", " M e"));
}

TEST_F(RVGitWorkingTreeManagerTest, StagingBeyondTheLimitForcesTheFirstBatchAlone) {
    write(".gitignore", "*.ignored\n");
    Paths paths;
    for (int index = 0; index < 4000; ++index) {
        paths.push_back(std::to_string(index) + ".ignored");
        write(paths.back(), "one\n");
    }
    paths.emplace_back("last");
    write("last", "one\n");
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager().stageFiles(paths, RVGitStageOptionForce));
    const auto lines = commandLines(recorder);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(Paths(lines[0].begin(), lines[0].begin() + 4),
                ElementsAre("add", "--all", "-f", "--"));
    EXPECT_THAT(Paths(lines[0].begin() + 4, lines[0].end()),
                testing::ElementsAreArray(paths.begin(), paths.end() - 1));
    EXPECT_THAT(lines[1], ElementsAre("add", "--all", "--", "last"));
    EXPECT_EQ(records({"ls-files", "-z"}).size(), 4001U);
}

TEST_F(RVGitWorkingTreeManagerTest, RevertingBeyondTheLimitTakesTheRestFromHead) {
    Paths paths;
    for (int index = 0; index < 4001; ++index)
        paths.push_back("file" + std::to_string(index));
    commitFiles(paths, "old\n");
    for (const std::string& path : paths)
        write(path, "new\n");
    commitAll();
    write(paths.back(), "changed\n");
    EXPECT_TRUE(manager().revertFiles(paths, "HEAD^"));
    EXPECT_EQ(read(paths.front()), "old\n");
    EXPECT_EQ(read(paths[3999]), "old\n");
    EXPECT_EQ(read(paths.back()), "new\n");

    paths.back() = "missing";
    std::optional<RVError> error;
    EXPECT_TRUE(manager().revertFiles(paths, "HEAD", &error));
    EXPECT_EQ(read(paths[3999]), "new\n");
    ASSERT_TRUE(error);
    EXPECT_THAT(error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                testing::HasSubstr("'missing' did not match"));
}

TEST_F(RVGitWorkingTreeManagerTest, UnstagingOnAnUnbornBranchWorksOnPresentGits) {
    write("a", "one\n");
    write("b", "two\n");
    git({"add", "."}, repositoryPath());
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager().unstageFiles({"a"}));
    EXPECT_EQ(recorder.invocations().size(), 1U);
    EXPECT_THAT(status(), ElementsAre("A  b", "?? a"));
    EXPECT_TRUE(manager().unstageAllFiles());
    EXPECT_THAT(status(), ElementsAre("?? a", "?? b"));
    EXPECT_EQ(read("a"), "one\n");
}

class RVGitUnstagingFallbackTest : public RVGitWorkingTreeManagerTest {
protected:
    static constexpr char answerOfOldGits[] = "fatal: Failed to resolve 'HEAD' as a valid ref.\n";
    /// A path that no other test unstages.
    static constexpr char unbornPath[] = "unborn/path";

    /// Registers the row of RVGitResetCommand, which is not registered by itself, for command lines
    /// that hold the path alone: rows cannot be taken back.
    static void registerRow() {
        RVGitErrorTable table = RVGitResetCommand::gitErrorDefinitions();
        for (RVGitErrorRow& row : table)
            row.commandArguments = {unbornPath};
        static const bool once = [&] {
            RVGitCommandErrorDefinitionManager::defaultManager().addGitCommandErrorDefinitions(
                table);
            return true;
        }();
        (void)once;
    }
    void stageFourFiles() const {
        for (const char* path : {unbornPath, "a", "b", "c"})
            write(path, "one\n");
        git({"add", "."}, repositoryPath());
    }
};

TEST_F(RVGitUnstagingFallbackTest, RemovesFromTheIndexWhereHeadCannotBeResolved) {
    registerRow();
    stageFourFiles();
    const auto [fake, recorder] =
        useGitThatFailsFor("reset", {.standardError = answerOfOldGits, .exitCode = 128});
    recorder.clear();
    cutListsAfterTwoPaths();
    std::optional<RVError> error;
    EXPECT_TRUE(manager().unstageFiles({unbornPath, "a", unbornPath, "b"}, &error));
    EXPECT_EQ(error, std::nullopt);
    const Paths words = {"rm", "-q", "-f", "-r", "--cached", "--ignore-unmatch", "--", unbornPath};
    std::vector<Paths> expected(2, words);
    expected[0].emplace_back("a");
    expected[1].emplace_back("b");
    EXPECT_EQ(commandLines(recorder), expected);
    EXPECT_THAT(status(), ElementsAre("A  c", "?? a", "?? b", "?? unborn/path"));
    EXPECT_EQ(read(unbornPath), "one\n");
}

TEST_F(RVGitUnstagingFallbackTest, ReportsTheFailureOfTheRemoval) {
    registerRow();
    stageFourFiles();
    auto [fake, recorder] =
        useGitThatFailsFor("reset", {.standardError = answerOfOldGits, .exitCode = 128});
    fake.setAnswer("rm", {.standardError = "fatal: no\n", .exitCode = 128});
    cutListsAfterTwoPaths();
    const auto error = errorOf([&](RVErrorPlace place) {
        return manager().unstageFiles({unbornPath, "a", unbornPath, "b"}, place);
    });
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfoString(RVGitCommandErrorOutputErrorKey), "fatal: no\n");
    EXPECT_THAT(status(), ElementsAre("A  a", "A  b", "A  c", "A  unborn/path"));
}

TEST_F(RVGitUnstagingFallbackTest, IsNotTakenAfterAnotherFailure) {
    registerRow();
    stageFourFiles();
    // The same words, but on a line that the registered row does not match; and other words.
    const std::pair<const char*, const char*> cases[] = {{answerOfOldGits, "a"},
                                                         {"fatal: no\n", unbornPath}};
    for (const auto& [message, path] : cases) {
        const auto [fake, recorder] =
            useGitThatFailsFor("reset", {.standardError = message, .exitCode = 128});
        recorder.clear();
        const auto error = errorOf(
            [&, path = path](RVErrorPlace place) { return manager().unstageFiles({path}, place); });
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        EXPECT_EQ(error.userInfoString(RVGitCommandErrorOutputErrorKey), message);
        EXPECT_THAT(recorder.invocations(), IsEmpty());
    }
    EXPECT_EQ(status().size(), 4U);
}

TEST_F(RVGitWorkingTreeManagerTest, MovingAPathToItselfRunsNothingAndClearsThePlace) {
    const auto recorder = useRecordingGit();
    const std::string composed = "caf\u00e9", decomposed = "cafe\u0301";
    for (const auto& [from, to] : {std::pair<std::string, std::string>("a", "a"),
                                   {composed, decomposed},
                                   {decomposed, composed}}) {
        std::optional<RVError> error = RVError("old", 1);
        EXPECT_TRUE(manager().moveFileAtPath(from, to, RVGitMoveOptionForce, &error));
        EXPECT_EQ(error, std::nullopt);
        EXPECT_TRUE(manager().moveFileAtPath(from, to, 0));
    }
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeManagerTest, ARenameThatChangesCaseAloneIsForced) {
    const auto recorder = useDeafRecordingGit();
    const std::pair<std::string, std::string> cases[] = {
        {"readme", "README"}, {"Dir/File", "dir/file"}, {"\u00c9t\u00e9", "e\u0301te\u0301"}};
    for (const auto& [from, to] : cases) {
        EXPECT_TRUE(manager().moveFileAtPath(from, to, 0));
        EXPECT_THAT(lastArguments(recorder), ElementsAre("mv", "-f", from, to));
    }
}

TEST_F(RVGitWorkingTreeManagerTest, APatchFileMustBeAFileURL) {
    try {
        (void)manager().applyPatchFromFileAtURL(RVURL("https://example.org/a"), std::nullopt);
        FAIL();
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: url.isFileURL");
    }
}

}  // namespace
