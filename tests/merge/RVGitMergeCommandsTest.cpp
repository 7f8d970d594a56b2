#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Words = std::vector<std::string>;

/// The command lines of the four commands, and the codes of their failures.
class RVGitMergeCommandsTest : public RVGitRepositoryTestCase {
protected:
    template <typename Command>
    std::shared_ptr<Command> make(const std::optional<RVOptions>& options = std::nullopt) const {
        return std::make_shared<Command>(repository(), options);
    }
    template <typename Command>
    Words argumentsWithOptions(const RVRecordingGit& recorder,
                               const std::optional<RVOptions>& options) const {
        return argumentsOf(recorder, *make<Command>(options));
    }
    /// The error; absent where it succeeds.
    template <typename Command>
    static std::optional<RVError> outcomeOf(Command& command) {
        std::optional<RVError> error;
        const bool succeeded = command.run(&error);
        EXPECT_EQ(succeeded, !error);
        return error;
    }
    /// The code for what a git would say.
    template <typename Command>
    std::int64_t codeFor(RVFakeGit::Answer answer) {
        RVFakeGit fake = useFakeGit();
        fake.setAnswer(std::move(answer));
        const auto error = outcomeOf(*make<Command>());
        return error ? error->code() : 0;
    }
    static std::int64_t codeOf(const std::optional<RVError>& error) {
        return error ? error->code() : 0;
    }

    /// "main" and "topic" have changed the same line since "base".
    void makeConflict() const {
        commitFile(repositoryPath(), "file", "base\n", "Base");
        gitInRepository({"tag", "base"});
        gitInRepository({"checkout", "-q", "-b", "topic"});
        commitFile(repositoryPath(), "file", "theirs\n", "Theirs");
        gitInRepository({"checkout", "-q", "main"});
        commitFile(repositoryPath(), "file", "ours\n", "Ours");
    }
};

Words withCommonOptions(Words words) {
    words.insert(words.begin(), {"-c", "core.trustctime=false"});
    return words;
}

TEST_F(RVGitMergeCommandsTest, ArgumentsOfAMerge) {
    const auto recorder = useRecordingGit();
    const auto expect = [&](const std::optional<RVOptions>& options, const Words& expected) {
        auto command = RVGitMergeCommand::gitMergeCommandWithRepository(repository(), options);
        command->setRevision("topic");
        EXPECT_THAT(argumentsOf(recorder, *command), ElementsAreArray(withCommonOptions(expected)));
    };
    expect(std::nullopt, {"merge", "topic"});
    expect(RVOptions(), {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionCommitChanges, false}}, {"merge", "--no-commit", "topic"});
    expect(RVOptions{{RVGitMergeOptionCommitChanges, true}}, {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionFastForward, false}}, {"merge", "--no-ff", "topic"});
    expect(RVOptions{{RVGitMergeOptionFastForward, true}}, {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionSquashCommits, true}}, {"merge", "--squash", "topic"});
    expect(RVOptions{{RVGitMergeOptionSquashCommits, false}}, {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionVerifySignatures, true}},
           {"merge", "--verify-signatures", "topic"});
    expect(RVOptions{{RVGitMergeOptionNoVerify, true}}, {"merge", "--no-verify", "topic"});
    expect(RVOptions{{RVGitMergeOptionNoVerify, false}}, {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionCommitChanges, false}, {RVGitMergeOptionFastForward, false}},
           {"merge", "--no-commit", "--no-ff", "topic"});
    expect(RVOptions{{RVGitMergeOptionVerifySignatures, true},
                     {RVGitMergeOptionAllowedSignersFile, "/a b"}},
           {"-c", "gpg.ssh.allowedSignersFile=/a b", "merge", "--verify-signatures", "topic"});
    expect(RVOptions{{RVGitMergeOptionAllowedSignersFile, "/a"}}, {"merge", "topic"});
    expect(RVOptions{{RVGitMergeOptionVerifySignatures, false},
                     {RVGitMergeOptionAllowedSignersFile, "/a"}},
           {"merge", "topic"});

    const auto everything = make<RVGitMergeCommand>();
    everything->setNoVerify(true);
    everything->setCommitsChanges(false);
    everything->setSquashesChanges(true);
    everything->setFastForwards(false);
    everything->setAbortsMerge(true);
    everything->setVerifiesSignatures(true);
    everything->setAllowedSignersFile("/a");
    everything->setRevision("topic");
    EXPECT_THAT(argumentsOf(recorder, *everything),
                ElementsAre("-c", "core.trustctime=false", "-c", "gpg.ssh.allowedSignersFile=/a",
                            "merge", "--no-verify", "--no-commit", "--squash", "--no-ff", "--abort",
                            "--verify-signatures", "topic"));
    EXPECT_THAT(argumentsWithOptions<RVGitMergeCommand>(recorder, std::nullopt),
                ElementsAre("-c", "core.trustctime=false", "merge"));
}

TEST_F(RVGitMergeCommandsTest, OptionsOfAMergeBecomeFields) {
    const auto plain = make<RVGitMergeCommand>();
    EXPECT_TRUE(plain->commitsChanges());
    EXPECT_TRUE(plain->fastForwards());
    EXPECT_FALSE(plain->squashesChanges());
    EXPECT_FALSE(plain->verifiesSignatures());
    EXPECT_FALSE(plain->noVerify());
    EXPECT_FALSE(plain->abortsMerge());
    EXPECT_EQ(plain->revision(), std::nullopt);
    EXPECT_EQ(plain->allowedSignersFile(), std::nullopt);
    EXPECT_EQ(make<RVGitMergeCommand>(RVOptions{{RVGitMergeOptionAllowedSignersFile, "/a"}})
                  ->allowedSignersFile(),
              std::nullopt);
    EXPECT_EQ(make<RVGitMergeCommand>(RVOptions{{RVGitMergeOptionVerifySignatures, false},
                                                {RVGitMergeOptionAllowedSignersFile, "/a"}})
                  ->allowedSignersFile(),
              "/a");
    EXPECT_STREQ(RVGitMergeOptionSquashCommits, "RVGitMergeOptionSquashCommits");
}

TEST_F(RVGitMergeCommandsTest, ArgumentsOfARebase) {
    const auto recorder = useRecordingGit();
    const char* preserving = isTestedGitAtLeast("2.18") ? "--rebase-merges" : "--preserve-merges";
    const auto expect = [&](const std::optional<RVOptions>& options, const Words& expected) {
        auto command = RVGitRebaseCommand::gitRebaseCommandWithRepository(repository(), options);
        command->setRevision("topic");
        command->setCurrentBaseRevision("from");
        command->setTargetBaseRevision("to");
        EXPECT_THAT(argumentsOf(recorder, *command), ElementsAreArray(withCommonOptions(expected)));
    };
    expect(std::nullopt, {"rebase", "topic"});
    expect(RVOptions{{RVGitRebaseOptionKeepsEmptyCommits, true}},
           {"rebase", "--keep-empty", "topic"});
    expect(RVOptions{{RVGitRebaseOptionPreservesMergeCommits, true}},
           {"rebase", preserving, "topic"});
    expect(RVOptions{{RVGitRebaseOptionInteractive, true}}, {"rebase", "--interactive", "topic"});
    expect(RVOptions{{RVGitRebaseOptionCleanupCommit, "whitespace"}},
           {"-c", "commit.cleanup=whitespace", "rebase", "topic"});
    expect(RVOptions{{RVGitRebaseOptionCleanupCommit, ""}}, {"rebase", "topic"});
    expect(RVOptions{{RVGitRebaseOptionOnto, true}}, {"rebase", "--onto", "to", "from", "topic"});
    expect(RVOptions{{RVGitRebaseOptionAutosquash, true}},
           {"-c", "sequence.editor=:", "rebase", "--interactive", "--autosquash", "topic"});
    expect(RVOptions{{RVGitRebaseOptionNoVerify, true}}, {"rebase", "--no-verify", "topic"});
    for (const char* key :
         {RVGitRebaseOptionKeepsEmptyCommits, RVGitRebaseOptionPreservesMergeCommits,
          RVGitRebaseOptionInteractive, RVGitRebaseOptionOnto, RVGitRebaseOptionAutosquash,
          RVGitRebaseOptionNoVerify})
        expect(RVOptions{{key, false}}, {"rebase", "topic"});

    const auto everything = make<RVGitRebaseCommand>();
    everything->setNoVerify(true);
    everything->setCommitCleanupOptionValue("strip");
    everything->setCleanUpCommits(true);
    everything->setInteractiveRebase(true);
    everything->setAutosquash(true);
    everything->setAbortsRebase(true);
    everything->setContinuesRebase(true);
    everything->setSkipsRebase(true);
    everything->setKeepsEmptyCommits(true);
    everything->setPreservesMergeCommits(true);
    everything->setRebasesRootCommit(true);
    everything->setRebaseOnto(true);
    everything->setTargetBaseRevision("to");
    EXPECT_THAT(argumentsOf(recorder, *everything),
                ElementsAre("-c", "core.trustctime=false", "-c", "commit.cleanup=strip", "-c",
                            "sequence.editor=:", "-c", "core.editor=:", "rebase", "--no-verify",
                            "--interactive", "--autosquash", "--abort", "--continue", "--skip",
                            "--keep-empty", preserving, "--root", "--onto", "to"));
    EXPECT_THAT(argumentsWithOptions<RVGitRebaseCommand>(recorder, std::nullopt),
                ElementsAre("-c", "core.trustctime=false", "rebase"));
}

TEST_F(RVGitMergeCommandsTest, MergesArePreservedInTheWayOfTheVersion) {
    for (const auto& [version, option] :
         {std::pair("2.17.9", "--preserve-merges"), std::pair("2.18.0", "--rebase-merges")}) {
        RVFakeGit fake = fakeGit();
        fake.setVersion(std::string("git version ") + version);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        const auto command = make<RVGitRebaseCommand>();
        command->setPreservesMergeCommits(true);
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->gitCommandOptions(), Words{option});
    }
}

TEST_F(RVGitMergeCommandsTest, OptionsOfARebaseBecomeFields) {
    const auto plain = make<RVGitRebaseCommand>();
    for (const bool flag :
         {plain->keepsEmptyCommits(), plain->preservesMergeCommits(), plain->interactiveRebase(),
          plain->cleanUpCommits(), plain->rebaseOnto(), plain->autosquash(), plain->noVerify(),
          plain->continuesRebase(), plain->abortsRebase(), plain->skipsRebase(),
          plain->rebasesRootCommit()})
        EXPECT_FALSE(flag);
    const auto emptyCleanup =
        make<RVGitRebaseCommand>(RVOptions{{RVGitRebaseOptionCleanupCommit, ""}});
    EXPECT_EQ(emptyCleanup->commitCleanupOptionValue(), "");
    EXPECT_FALSE(emptyCleanup->cleanUpCommits());
    EXPECT_TRUE(make<RVGitRebaseCommand>(RVOptions{{RVGitRebaseOptionAutosquash, true}})
                    ->interactiveRebase());
}

template <typename Command>
struct OptionKeys;
template <>
struct OptionKeys<RVGitCherryPickCommand> {
    static constexpr const char* word = "cherry-pick";
    static constexpr const char* mainline = RVGitCherryPickOptionMainlineParentNumber;
    static constexpr const char* commit = RVGitCherryPickOptionCommitChanges;
    static constexpr const char* fastForward = RVGitCherryPickOptionFastForward;
};
template <>
struct OptionKeys<RVGitRevertCommand> {
    static constexpr const char* word = "revert";
    static constexpr const char* mainline = RVGitRevertOptionMainlineParentNumber;
    static constexpr const char* commit = RVGitRevertOptionCommitChanges;
    static constexpr const char* fastForward = RVGitRevertOptionFastForward;
};

template <typename Command>
class RVGitPickCommandsTest : public RVGitMergeCommandsTest {};
using PickCommands = testing::Types<RVGitCherryPickCommand, RVGitRevertCommand>;
TYPED_TEST_SUITE(RVGitPickCommandsTest, PickCommands);

TYPED_TEST(RVGitPickCommandsTest, ArgumentsOfEachField) {
    using Keys = OptionKeys<TypeParam>;
    const auto recorder = this->useRecordingGit();
    const auto expect = [&](const std::optional<RVOptions>& options, const Words& expected) {
        const auto command = this->template make<TypeParam>(options);
        command->setRevisions(Words{"a", "b..c"});
        Words words = {"-c", "core.trustctime=false", Keys::word};
        words.insert(words.end(), expected.begin(), expected.end());
        words.insert(words.end(), {"a", "b..c"});
        EXPECT_THAT(this->argumentsOf(recorder, *command), ElementsAreArray(words));
    };
    expect(std::nullopt, {});
    expect(RVOptions{{Keys::mainline, 2}}, {"--mainline", "2"});
    expect(RVOptions{{Keys::mainline, 0}}, {});
    expect(RVOptions{{Keys::commit, false}}, {"--no-commit"});
    expect(RVOptions{{Keys::commit, true}}, {});
    expect(RVOptions{{Keys::fastForward, true}}, {"--ff"});
    expect(RVOptions{{Keys::fastForward, false}}, {});

    const auto everything = this->template make<TypeParam>();
    everything->setMainlineParentNumber(1);
    everything->setCommitsChanges(false);
    everything->setFastForwards(true);
    everything->setContinuesProcess(true);
    everything->setSkipsProcess(true);
    everything->setAbortsProcess(true);
    everything->setQuitsProcess(true);
    Words words = {"-c", "core.trustctime=false", Keys::word, "--mainline",
                   "1",  "--no-commit",           "--ff",     "--continue"};
    // Older gits cannot skip.
    if (isTestedGitAtLeast("2.23"))
        words.emplace_back("--skip");
    words.insert(words.end(), {"--abort", "--quit"});
    EXPECT_THAT(this->argumentsOf(recorder, *everything), ElementsAreArray(words));
    const auto plain = this->template make<TypeParam>();
    EXPECT_EQ(plain->revisions(), std::nullopt);
    EXPECT_EQ(plain->mainlineParentNumber(), 0u);
    EXPECT_TRUE(plain->commitsChanges());
    EXPECT_FALSE(plain->fastForwards() || plain->continuesProcess() || plain->skipsProcess() ||
                 plain->abortsProcess() || plain->quitsProcess());
    EXPECT_THAT(this->argumentsOf(recorder, *plain),
                ElementsAre("-c", "core.trustctime=false", Keys::word));
}

TYPED_TEST(RVGitPickCommandsTest, AnOldGitIsNotToldToSkip) {
    for (const auto& [version, options] :
         {std::pair("2.22.9", Words{}), std::pair("2.23.0", Words{"--skip"})}) {
        RVFakeGit fake = this->fakeGit();
        fake.setVersion(std::string("git version ") + version);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        const auto command = this->template make<TypeParam>();
        command->setSkipsProcess(true);
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->gitCommandOptions(), options);
    }
}

TYPED_TEST(RVGitPickCommandsTest, TheRowsOfAMergeCountToo) {
    EXPECT_EQ(this->template codeFor<TypeParam>(
                  {.standardOutput = "Automatic merge failed; fix\n", .exitCode = 128}),
              RVGitMergeConflictsError);
    EXPECT_EQ(this->template codeFor<TypeParam>(
                  {.standardError = "error: Failed to merge in the changes.\n", .exitCode = 1}),
              RVGitMergeConflictsError);
    EXPECT_EQ(this->template codeFor<TypeParam>(
                  {.standardError = std::string("error: ") + OptionKeys<TypeParam>::word +
                                    " is not possible because you have unmerged files.\n",
                   .exitCode = 1}),
              RVGitMergeUnmergedChangesError);
}

TYPED_TEST(RVGitPickCommandsTest, ChangesInTheWayAreCode2001FromOlderGitsAlone) {
    const std::string said =
        "error: Your local changes to the following files would be overwritten by merge:\n";
    EXPECT_EQ(this->template codeFor<TypeParam>({.standardError = said, .exitCode = 1}),
              RVGitMergeUncommittedChangesError);
    EXPECT_EQ(this->template codeFor<TypeParam>({.standardError = said, .exitCode = 128}),
              RVGitRVGitGenericError);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(this->gitPath()));
    this->makeConflict();
    this->writeFile("repository/file", "changed\n");
    const RVRepositorySnapshot before(this->repositoryPath());
    const auto command = this->template make<TypeParam>();
    command->setRevisions(Words{"topic"});
    EXPECT_NE(this->outcomeOf(*command), std::nullopt);
    EXPECT_EQ(RVRepositorySnapshot(this->repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeCommandsTest, ConflictsOfAMergeAre2000) {
    makeConflict();
    const auto command = make<RVGitMergeCommand>();
    command->setRevision("topic");
    EXPECT_THAT(command, failsWith(RVGitMergeConflictsError));
}

TEST_F(RVGitMergeCommandsTest, ConflictsOfAPickAre2200) {
    makeConflict();
    const auto pick = make<RVGitCherryPickCommand>();
    pick->setRevisions(Words{"topic"});
    EXPECT_THAT(pick, failsWith(RVGitRebaseConflictsError));
    gitInRepository({"cherry-pick", "--abort"});
    commitFile(repositoryPath(), "file", "later\n", "Later");
    const auto revert = make<RVGitRevertCommand>();
    revert->setRevisions(Words{"HEAD^"});
    EXPECT_THAT(revert, failsWith(RVGitRebaseConflictsError));
}

TEST_F(RVGitMergeCommandsTest, RefusalsOfAMerge) {
    makeConflict();
    gitInRepository({"checkout", "-q", "-b", "behind", "base"});
    writeFile("repository/file", "changed\n");
    const auto fastForward = make<RVGitMergeCommand>();
    fastForward->setRevision("topic");
    EXPECT_THAT(fastForward, failsWith(RVGitMergeUncommittedChangesError));
    EXPECT_EQ(readFile("repository/file"), "changed\n");
    // Where it would have to make a commit, git ends with another exit code.
    gitInRepository({"checkout", "-q", "-f", "main"});
    writeFile("repository/file", "changed\n");
    const auto merge = make<RVGitMergeCommand>();
    merge->setRevision("topic");
    const auto error = outcomeOf(*merge);
    ASSERT_TRUE(error);
    EXPECT_EQ(codeOf(error), RVGitRVGitGenericError);
    // 2 of the way that newer gits merge in, 128 of the one before.
    const auto exitCode = error->userInfo().at(RVGitCommandExitCodeErrorKey).integerValue();
    if (isTestedGitAtLeast("2.39"))
        EXPECT_EQ(exitCode, 2);
    else
        EXPECT_THAT(exitCode, AnyOf(2, 128));
    EXPECT_EQ(readFile("repository/file"), "changed\n");
    // What older gits print, and newer ones with the exit code 128.
    EXPECT_EQ(
        codeFor<RVGitMergeCommand>(
            {.standardError = "error: 'merge' is not possible because you have unmerged files.\n",
             .exitCode = 1}),
        RVGitMergeUnmergedChangesError);
    EXPECT_EQ(codeFor<RVGitMergeCommand>(
                  {.standardError = "error: Failed to merge submodule sub\n", .exitCode = 1}),
              RVGitMergeConflictsError);
    EXPECT_EQ(
        codeFor<RVGitMergeCommand>({.standardOutput = "Automatic merge failed\n", .exitCode = 2}),
        RVGitRVGitGenericError);
}

TEST_F(RVGitMergeCommandsTest, AMergeInAMergeIsCode1FromTheRealGit) {
    makeConflict();
    (void)runGit({"merge", "topic"}, repositoryPath());
    const auto command = make<RVGitMergeCommand>();
    command->setRevision("topic");
    const auto error = outcomeOf(*command);
    ASSERT_TRUE(error);
    EXPECT_EQ(codeOf(error), RVGitRVGitGenericError);
    EXPECT_EQ(error->userInfo().at(RVGitCommandExitCodeErrorKey).integerValue(), 128);
}

TEST_F(RVGitMergeCommandsTest, ConflictsOfARebaseAre2200WithEitherBackend) {
    makeConflict();
    for (const char* backend : {"--merge", "--apply"}) {
        // The merge backend of older gits says nothing by which a conflict could be told.
        if (!isTestedGitAtLeast("2.20") && std::string_view(backend) == "--merge")
            continue;
        const auto command = make<RVGitRebaseCommand>();
        // Older gits know no such option, since it is what they do anyway.
        if (isTestedGitAtLeast("2.26") || std::string_view(backend) == "--merge")
            command->addGitCommandOption(backend);
        command->setRevision("topic");
        const auto error = outcomeOf(*command);
        ASSERT_TRUE(error);
        EXPECT_EQ(codeOf(error), RVGitRebaseConflictsError) << backend;
        EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "topic");
        EXPECT_NE(error->userInfoString(RVLocalizedDescriptionErrorKey), std::nullopt);
        gitInRepository({"rebase", "--abort"});
    }
}

TEST_F(RVGitMergeCommandsTest, RowsOfARebaseThatTheRealGitStillProvokes) {
    makeConflict();
    const auto codeOfRebase = [&](const std::optional<std::string>& revision) {
        const auto command = make<RVGitRebaseCommand>();
        command->setRevision(revision);
        const auto error = outcomeOf(*command);
        if (error) {
            EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), revision);
        }
        return codeOf(error);
    };
    EXPECT_EQ(codeOfRebase(std::nullopt), RVGitRebaseCommand::noTrackingInformationErrorCode);
    writeFile("repository/file", "changed\n");
    EXPECT_EQ(codeOfRebase("topic"), RVGitRVGitGenericError);
    gitInRepository({"add", "file"});
    EXPECT_EQ(codeOfRebase("topic"), RVGitRebaseUncommittedChangesError);
    gitInRepository({"reset", "-q", "--hard"});
    EXPECT_EQ(codeOfRebase("topic"), RVGitRebaseConflictsError);
    EXPECT_EQ(codeOfRebase("topic"), RVGitRebaseCommand::rebaseInProgressErrorCode);
    EXPECT_EQ(codeOfRebase("nowhere"), RVGitRebaseCommand::rebaseInProgressErrorCode);
    gitInRepository({"rebase", "--abort"});
    EXPECT_EQ(codeOfRebase("nowhere"), RVGitRVGitGenericError);
}

TEST_F(RVGitMergeCommandsTest, RowsOfARebaseThatOlderGitsProvoke) {
    const auto codeOf = [&](std::string output, std::string error, int exitCode) {
        return codeFor<RVGitRebaseCommand>({.standardOutput = std::move(output),
                                            .standardError = std::move(error),
                                            .exitCode = exitCode});
    };
    EXPECT_EQ(codeOf("When you have resolved this problem, run\n", "", 128),
              RVGitRebaseConflictsError);
    EXPECT_EQ(codeOf("", "error: could not apply 1a2b... Message\n", 128),
              RVGitRebaseConflictsError);
    EXPECT_EQ(codeOf("", "Failed to merge in the changes.\n", 128), RVGitRebaseConflictsError);
    EXPECT_EQ(codeOf("Cannot rebase: You have unstaged changes.\n", "", 1),
              RVGitRebaseUncommittedChangesError);
    EXPECT_EQ(codeOf("", "Your index contains uncommitted changes.\n", 1),
              RVGitRebaseUncommittedChangesError);
    EXPECT_EQ(codeOf("", "It seems that there is already a rebase-apply directory\n", 1),
              RVGitRebaseCommand::rebaseInProgressErrorCode);
    EXPECT_EQ(codeOf("You must edit all merge conflicts and then\n", "", 1),
              RVGitRebaseUnmergedChangesError);
    EXPECT_EQ(codeOf("There is no tracking information for the current branch.\n", "", 1),
              RVGitRebaseCommand::noTrackingInformationErrorCode);
    EXPECT_EQ(codeOf("You must edit all merge conflicts and then\n", "", 128),
              RVGitRVGitGenericError);
}

TEST_F(RVGitMergeCommandsTest, ARevertKnowsItsOwnRow) {
    EXPECT_EQ(codeFor<RVGitRevertCommand>(
                  {.standardError = "error: could not revert 1a2b\n", .exitCode = 1}),
              RVGitRebaseConflictsError);
    EXPECT_EQ(codeFor<RVGitRevertCommand>(
                  {.standardError = "error: could not revert 1a2b\n", .exitCode = 128}),
              RVGitRVGitGenericError);
    EXPECT_EQ(codeFor<RVGitRevertCommand>(
                  {.standardError = "error: could not apply 1a2b\n", .exitCode = 1}),
              RVGitRVGitGenericError);
    EXPECT_EQ(RVGitRevertCommand::gitErrorDefinitions().size(), 5u);
    EXPECT_EQ(&RVGitCherryPickCommand::gitErrorDefinitions(),
              &RVGitMergeCommand::gitErrorDefinitions());
}

TEST_F(RVGitMergeCommandsTest, WhatNoGitTakes) {
    makeConflict();
    const auto revert = make<RVGitRevertCommand>(RVOptions{{RVGitRevertOptionFastForward, true}});
    revert->setRevisions(Words{"HEAD"});
    const auto error = outcomeOf(*revert);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfo().at(RVGitCommandExitCodeErrorKey).integerValue(), 129);
    EXPECT_EQ(error->code(), RVGitCommandUsageError);
    const auto merge = make<RVGitMergeCommand>(
        RVOptions{{RVGitMergeOptionSquashCommits, true}, {RVGitMergeOptionFastForward, false}});
    merge->setRevision("topic");
    const auto refused = outcomeOf(*merge);
    ASSERT_TRUE(refused);
    EXPECT_EQ(codeOf(refused), RVGitRVGitGenericError);
    EXPECT_EQ(refused->userInfo().at(RVGitCommandExitCodeErrorKey).integerValue(), 128);
}

TEST_F(RVGitMergeCommandsTest, ARevisionIsNeverAnOption) {
    makeConflict();
    const auto recorder = useRecordingGit();
    const std::string option = "--exec=touch " + scratchPath("proof");
    const auto merge = make<RVGitMergeCommand>();
    merge->setRevision("--abort");
    const auto rebase = make<RVGitRebaseCommand>();
    rebase->setRevision(option);
    const auto onto = make<RVGitRebaseCommand>(RVOptions{{RVGitRebaseOptionOnto, true}});
    onto->setTargetBaseRevision(option);
    onto->setRevision("main");
    const auto from = make<RVGitRebaseCommand>(RVOptions{{RVGitRebaseOptionOnto, true}});
    from->setTargetBaseRevision("main");
    from->setCurrentBaseRevision(option);
    const auto pick = make<RVGitCherryPickCommand>();
    pick->setRevisions(Words{"topic", "--strategy=evil"});
    const auto revert = make<RVGitRevertCommand>();
    revert->setRevisions(Words{"-n"});
    EXPECT_THAT(merge, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(rebase, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(onto, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(from, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(pick, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(revert, failsWith(RVGitRVGitGenericError));
    // What selects commits elsewhere is an abbreviated option here: "--allow-unrelated-histories".
    const auto all = make<RVGitMergeCommand>();
    all->setRevision("--all");
    EXPECT_THAT(all, failsWith(RVGitRVGitGenericError));
    const auto rebaseAll = make<RVGitRebaseCommand>();
    rebaseAll->setRevision("--all");
    EXPECT_THAT(rebaseAll, failsWith(RVGitRVGitGenericError));
    // And to pick or revert every commit is more than to select.
    const auto pickAll = make<RVGitCherryPickCommand>();
    pickAll->setRevisions(Words{"--all"});
    EXPECT_THAT(pickAll, failsWith(RVGitRVGitGenericError));
    const auto revertAll = make<RVGitRevertCommand>();
    revertAll->setRevisions(Words{"--all"});
    EXPECT_THAT(revertAll, failsWith(RVGitRVGitGenericError));
    EXPECT_TRUE(recorder.argumentLists().empty());
    EXPECT_FALSE(fileExists("proof"));
}

TEST_F(RVGitMergeCommandsTest, NoEditorIsInheritedAndTheCallersOwnIsKept) {
    setEnvironmentVariable("GIT_EDITOR", "false");
    setEnvironmentVariable("GIT_SEQUENCE_EDITOR", "false");
    setEnvironmentVariable("GIT_MERGE_AUTOEDIT", "yes");
    setEnvironmentVariable("GIT_CHERRY_PICK_HELP", "words of another git");
    const auto recorder = useRecordingGit();
    const auto expectNoEditor = [&](RVGitCommand& command) {
        (void)command.run();
        const auto environment = recorder.lastInvocation().environment;
        EXPECT_EQ(environment.at("GIT_EDITOR"), ":");
        EXPECT_EQ(environment.at("GIT_SEQUENCE_EDITOR"), ":");
        EXPECT_FALSE(environment.contains("GIT_MERGE_AUTOEDIT"));
        EXPECT_FALSE(environment.contains("GIT_CHERRY_PICK_HELP"));
    };
    expectNoEditor(*make<RVGitMergeCommand>());
    expectNoEditor(*make<RVGitRebaseCommand>());
    expectNoEditor(*make<RVGitCherryPickCommand>());
    expectNoEditor(*make<RVGitRevertCommand>());
    const auto command = make<RVGitRebaseCommand>();
    command->setValueForEnvironmentVariable("true", "GIT_EDITOR");
    command->setValueForEnvironmentVariable("/script", "GIT_SEQUENCE_EDITOR");
    (void)command->run();
    EXPECT_EQ(recorder.lastInvocation().environment.at("GIT_EDITOR"), "true");
    EXPECT_EQ(recorder.lastInvocation().environment.at("GIT_SEQUENCE_EDITOR"), "/script");
}

TEST_F(RVGitMergeCommandsTest, NoEditorIsOpenedWhereTheEnvironmentIsSanitized) {
    setEnvironmentVariable("GIT_EDITOR", "false");
    setEnvironmentVariable("GIT_SEQUENCE_EDITOR", "false");
    const auto recorder = useRecordingGit();
    const auto expectNoEditor = [&](const std::shared_ptr<RVGitCommand>& command) {
        command->setSanitizesEnvironment(true);
        (void)command->run();
        const auto environment = recorder.lastInvocation().environment;
        EXPECT_EQ(environment.at("GIT_EDITOR"), ":");
        EXPECT_EQ(environment.at("GIT_SEQUENCE_EDITOR"), ":");
    };
    expectNoEditor(make<RVGitMergeCommand>());
    expectNoEditor(make<RVGitRebaseCommand>());
    expectNoEditor(make<RVGitCherryPickCommand>());
    expectNoEditor(make<RVGitRevertCommand>());
}

TEST_F(RVGitMergeCommandsTest, NeedARepository) {
    EXPECT_THROW((void)RVGitMergeCommand::gitMergeCommandWithRepository(nullptr, std::nullopt),
                 RVInvalidParameterException);
    EXPECT_THROW((void)RVGitRebaseCommand::gitRebaseCommandWithRepository(nullptr, std::nullopt),
                 RVInvalidParameterException);
    EXPECT_THROW(
        (void)RVGitCherryPickCommand::gitCherryPickCommandWithRepository(nullptr, std::nullopt),
        RVInvalidParameterException);
    EXPECT_THROW((void)RVGitRevertCommand::gitRevertCommandWithRepository(nullptr, std::nullopt),
                 RVInvalidParameterException);
}

}  // namespace
