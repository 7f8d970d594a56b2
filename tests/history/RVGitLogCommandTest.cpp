#include "RVGit/history/RVGitLogCommand.h"

#include <chrono>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitDiffMap.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using Arguments = std::vector<std::string>;

const std::string logFormat =
    "--pretty=format:" + RVGitCommitOutputParser::gitCommitLogPrettyFormatString();
const std::string hashFormat = "--pretty=format:%H";

// The line of a command: what stands between the two fixed beginnings, then the arguments.
Arguments logLine(const Arguments& options, const Arguments& arguments = {"--"},
                  const Arguments& gitOptions = {}) {
    Arguments line = {"-c", "i18n.logOutputEncoding=UTF-8", "-c", "log.date=default",
                      "-c", "log.showSignature=false"};
    line.insert(line.end(), gitOptions.begin(), gitOptions.end());
    line.insert(line.end(), {"log", "-z", "--no-color", "--use-mailmap"});
    line.insert(line.end(), options.begin(), options.end());
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
}

Arguments withLogFormat(const Arguments& options) {
    Arguments line = {logFormat};
    line.insert(line.end(), options.begin(), options.end());
    return line;
}

class RVGitLogCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitLogCommand> logCommand(
        const std::optional<RVOptions>& options = std::nullopt) {
        return RVGitLogCommand::gitLogCommandWithRepository(repository(), options);
    }

    // A record in the log's format.
    static std::string record(const std::string& hash, const std::string& message = "Message") {
        return stringByJoiningComponents(
            {hash, "tree", "parent", "Ada", "1", "a@b", "Ada", "2", "a@b", " (HEAD)", message},
            "\x1f\x1d\x1f");
    }
};

TEST_F(RVGitLogCommandTest, FieldsStartAsOptionsOrDefaultsSay) {
    const auto command = logCommand();
    EXPECT_THAT(command->revisions(), IsEmpty());
    EXPECT_THAT(command->filePaths(), IsEmpty());
    EXPECT_TRUE(command->loadsFullCommitInfo());
    for (const bool value :
         {command->countsCommits(), command->generatesDiffs(), command->generatesDiffStats(),
          command->decoratesCommits(), command->firstParent(), command->usesExtendedRegexSyntax(),
          command->showsSignatures(), command->reversesOrder(), command->sortsByTopoOrder(),
          command->sortsByDate(), command->followsRenames(), command->noRenames(),
          command->showBranches(), command->showRemotes(), command->showTags(), command->showAll(),
          command->showsDiffs()})
        EXPECT_FALSE(value);
    EXPECT_EQ(command->allowedSignersFile(), std::nullopt);
    EXPECT_EQ(command->limit(), 0U);
    EXPECT_EQ(command->offset(), 0U);
    EXPECT_EQ(command->sinceDate(), std::nullopt);
    EXPECT_EQ(command->untilDate(), std::nullopt);
    EXPECT_EQ(command->prettyFormat(), std::nullopt);
    EXPECT_EQ(command->commits(), std::nullopt);
    EXPECT_EQ(command->commitCount(), RVNotFound);
}

TEST_F(RVGitLogCommandTest, EachOptionHasItsPlaceOnTheCommandLine) {
    makeCommit();
    const RVDate date{std::chrono::seconds(defaultTime)};
    const struct {
        RVOptions options;
        Arguments expected;
    } cases[] = {
        {{}, {}},
        {{{RVGitLogOptionDecorate, true}}, {"--decorate=full"}},
        {{{RVGitLogOptionDecorate, false}}, {}},
        {{{RVGitLogOptionFirstParent, true}}, {"--first-parent"}},
        {{{RVGitLogOptionExtendedRegexSyntax, true}}, {}},
        {{{RVGitLogOptionLimit, 5}}, {"-n5"}},
        {{{RVGitLogOptionLimit, 0}}, {}},
        {{{RVGitLogOptionOffset, 7}}, {"--skip=7"}},
        {{{RVGitLogOptionOffset, 0}}, {}},
        {{{RVGitLogOptionSearchPatterns, Arguments{"a", "b c"}}}, {"--grep=a", "--grep=b c", "-i"}},
        {{{RVGitLogOptionSearchPatterns, Arguments{}}}, {}},
        {{{RVGitLogOptionSearchAuthorPatterns, Arguments{"Ada"}}}, {"--author=Ada", "-i"}},
        {{{RVGitLogOptionSearchCommitterPatterns, Arguments{"Grace"}}},
         {"--committer=Grace", "-i"}},
        {{{RVGitLogOptionSearchContentPatterns, Arguments{"x.y"}}}, {"-Gx.y", "-i"}},
        {{{RVGitLogOptionSinceDate, date}}, {"--since=2020-01-02T03:04:05Z"}},
        {{{RVGitLogOptionUntilDate, date}}, {"--until=2020-01-02T03:04:05Z"}},
        {{{RVGitLogOptionReverseOrder, true}}, {"--reverse"}},
        {{{RVGitLogOptionSortByTopoOrder, true}}, {"--topo-order"}},
        {{{RVGitLogOptionSortByDate, true}}, {"--date-order"}},
        {{{RVGitLogOptionNoRenames, true}}, {"--no-renames"}},
        {{{RVGitLogOptionAllBranches, true}}, {"--branches"}},
        {{{RVGitLogOptionAllRemoteBranches, true}}, {"--remotes"}},
        {{{RVGitLogOptionAllTags, true}}, {"--tags"}},
        {{{RVGitLogOptionAllRefs, true}}, {"--all"}},
        {{{RVGitLogOptionAllRefs, true}, {RVGitLogOptionAllBranches, true}}, {"--all"}},
        {{{RVGitLogOptionAllowedSignersFile, "/signers"}}, {}},
        {{{RVGitLogOptionSortByTopoOrder, true}, {RVGitLogOptionSortByDate, true}},
         {"--topo-order", "--date-order"}},
    };
    const RVRecordingGit recorder = useRecordingGit();
    for (const auto& [options, expected] : cases) {
        const auto command = logCommand(options);
        EXPECT_TRUE(command->run());
        EXPECT_THAT(lastArguments(recorder), ElementsAreArray(logLine(withLogFormat(expected))));
    }
}

TEST_F(RVGitLogCommandTest, FollowingRenamesNeedsOnePath) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    const auto command = logCommand(RVOptions{{RVGitLogOptionFollowRenames, true}});
    command->setFilePaths({"file.txt"});
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAreArray(logLine({logFormat, "--follow"}, {"--", "file.txt"})));
}

TEST_F(RVGitLogCommandTest, FlagsChooseTheFormat) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    const auto lineOf = [&](auto change) {
        const auto command = logCommand();
        change(*command);
        EXPECT_TRUE(command->run());
        return lastArguments(recorder);
    };
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) { command.setLoadsFullCommitInfo(false); }),
              logLine({hashFormat}));
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) {
                  command.setLoadsFullCommitInfo(false);
                  command.setShowsSignatures(true);
              }),
              logLine({hashFormat}));
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) { command.setCountsCommits(true); }),
              logLine({"--pretty=format:."}));
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) { command.setGeneratesDiffStats(true); }),
              logLine({"--pretty=format:"}));
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) {
                  command.setCountsCommits(true);
                  command.setGeneratesDiffs(true);
              }),
              logLine({"--pretty=format:"}));
    EXPECT_EQ(lineOf([](RVGitLogCommand& command) { command.setUsesExtendedRegexSyntax(true); }),
              logLine({logFormat, "-E"}));
}

TEST_F(RVGitLogCommandTest, SignaturesHaveAFormatOfTheirOwn) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    const std::string format =
        "--pretty=format:" + RVGitCommitOutputParser::gitCommitLogPrettyFormatGPGString();
    const auto command = logCommand(RVOptions{{RVGitLogOptionVerifiesSignatures, true}});
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAreArray(logLine({format})));
    EXPECT_EQ(command->prettyFormat(),
              RVGitCommitOutputParser::gitCommitLogPrettyFormatGPGString());

    EXPECT_TRUE(logCommand(RVOptions{{RVGitLogOptionVerifiesSignatures, true},
                                     {RVGitLogOptionAllowedSignersFile, "/signers"}})
                    ->run());
    EXPECT_THAT(
        lastArguments(recorder),
        ElementsAreArray(logLine({format}, {"--"}, {"-c", "gpg.ssh.allowedSignersFile=/signers"})));
}

TEST_F(RVGitLogCommandTest, TheAllowedSignersNeedTheVerifyOptionWhateverItsValue) {
    EXPECT_EQ(
        logCommand(RVOptions{{RVGitLogOptionAllowedSignersFile, "/signers"}})->allowedSignersFile(),
        std::nullopt);
    const auto command = logCommand(RVOptions{{RVGitLogOptionVerifiesSignatures, false},
                                              {RVGitLogOptionAllowedSignersFile, "/signers"}});
    EXPECT_FALSE(command->showsSignatures());
    EXPECT_EQ(command->allowedSignersFile(), "/signers");
}

TEST_F(RVGitLogCommandTest, AllOptionsTogetherStandInTheirOrder) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    const auto command =
        logCommand(RVOptions{{RVGitLogOptionDecorate, true},
                             {RVGitLogOptionFirstParent, true},
                             {RVGitLogOptionLimit, 3},
                             {RVGitLogOptionOffset, 1},
                             {RVGitLogOptionSearchPatterns, Arguments{"g"}},
                             {RVGitLogOptionSearchAuthorPatterns, Arguments{"a"}},
                             {RVGitLogOptionSearchCommitterPatterns, Arguments{"c"}},
                             {RVGitLogOptionSearchContentPatterns, Arguments{"x"}},
                             {RVGitLogOptionSinceDate, RVDate{}},
                             {RVGitLogOptionUntilDate, RVDate{}},
                             {RVGitLogOptionReverseOrder, true},
                             {RVGitLogOptionSortByTopoOrder, true},
                             {RVGitLogOptionSortByDate, true},
                             {RVGitLogOptionNoRenames, true},
                             {RVGitLogOptionAllBranches, true},
                             {RVGitLogOptionAllRemoteBranches, true},
                             {RVGitLogOptionAllTags, true}});
    command->setUsesExtendedRegexSyntax(true);
    command->setRevisions({"main", "HEAD"});
    command->setFilePaths({"file.txt", "a b"});
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAreArray(logLine({logFormat,
                                          "-n3",
                                          "--skip=1",
                                          "--first-parent",
                                          "--topo-order",
                                          "--date-order",
                                          "--no-renames",
                                          "--reverse",
                                          "--decorate=full",
                                          "-E",
                                          "--grep=g",
                                          "--author=a",
                                          "--committer=c",
                                          "-Gx",
                                          "-i",
                                          "--since=1970-01-01T00:00:00Z",
                                          "--until=1970-01-01T00:00:00Z",
                                          "--remotes",
                                          "--tags",
                                          "--branches"},
                                         {"main", "HEAD", "--", "file.txt", "a b"})));
}

TEST_F(RVGitLogCommandTest, AnUnbornBranchIsAnEmptyHistory) {
    std::optional<RVError> error;
    const auto listing = logCommand();
    EXPECT_TRUE(listing->run(&error));
    EXPECT_FALSE(error);
    ASSERT_TRUE(listing->commits());
    EXPECT_THAT(*listing->commits(), IsEmpty());

    const auto counting = logCommand();
    counting->setCountsCommits(true);
    EXPECT_TRUE(counting->run(&error));
    EXPECT_FALSE(error);
    EXPECT_EQ(counting->commitCount(), 0);
    EXPECT_EQ(counting->commits(), std::nullopt);
}

TEST_F(RVGitLogCommandTest, ABadDefaultRevisionIsAnEmptyHistory) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = record("abc") + '\0',
                    .standardError = "fatal: bad default revision 'HEAD'\n",
                    .exitCode = 128});
    const auto listing = logCommand();
    EXPECT_TRUE(listing->run());
    ASSERT_TRUE(listing->commits());
    EXPECT_THAT(*listing->commits(), IsEmpty());
    const auto counting = logCommand();
    counting->setCountsCommits(true);
    EXPECT_TRUE(counting->run());
    EXPECT_EQ(counting->commitCount(), 0);
}

TEST_F(RVGitLogCommandTest, ARevisionNamedOnAnUnbornBranchIsUnknown) {
    const auto command = logCommand();
    command->setRevisions({"HEAD"});
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_TRUE(error);
    // With "--" behind it git calls the name a bad revision instead of an ambiguous argument.
    EXPECT_EQ(error->code(), RVGitLogNoSuchRevisionError);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "HEAD");
    EXPECT_EQ(command->commits(), std::nullopt);
}

TEST_F(RVGitLogCommandTest, AnUnknownRevisionFailsWith1900) {
    makeCommit();
    const auto command = logCommand();
    command->setRevisions({"missing"});
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 1900);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "missing");
}

TEST_F(RVGitLogCommandTest, AnAmbiguousArgumentFailsWith1900) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: ambiguous argument 'x': unknown revision or path not "
                                     "in the working tree.\n",
                    .exitCode = 128});
    std::optional<RVError> error;
    EXPECT_FALSE(logCommand()->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 1900);
    EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "x");
}

TEST_F(RVGitLogCommandTest, CountsCommits) {
    const auto count = [&] {
        const auto command = logCommand();
        command->setCountsCommits(true);
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->commits(), std::nullopt);
        return command->commitCount();
    };
    makeCommit();
    EXPECT_EQ(count(), 1);
    makeCommit();
    makeCommit();
    EXPECT_EQ(count(), 3);
}

TEST_F(RVGitLogCommandTest, CountsNothingWhereNothingMatches) {
    makeCommit();
    const auto command = logCommand();
    command->setCountsCommits(true);
    command->setFilePaths({"missing"});
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 0);
}

TEST_F(RVGitLogCommandTest, LoadsDiffsOfOneCommit) {
    makeCommit();
    makeCommit();
    const auto command = logCommand();
    command->setGeneratesDiffs(true);
    command->setLimit(1);
    command->addGitCommandOption("-p");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commits(), std::nullopt);
    EXPECT_THAT(command->loadedDiffStats(), IsEmpty());
    ASSERT_THAT(command->loadedDiffs(), SizeIs(1));
    EXPECT_EQ(command->takeLoadedDiffs()[0].gitDiffFilePath(), "file.txt");
}

TEST_F(RVGitLogCommandTest, LoadsNoDiffsOfSeveralCommits) {
    makeCommit();
    makeCommit();
    const auto command = logCommand();
    command->setGeneratesDiffs(true);
    command->addGitCommandOption("-p");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(std::string(command->standardOutputData()), testing::HasSubstr("file.txt"));
    EXPECT_THAT(command->loadedDiffs(), IsEmpty());
}

TEST_F(RVGitLogCommandTest, LoadsStatistics) {
    makeCommit();
    const auto command = logCommand();
    command->setGeneratesDiffStats(true);
    command->addGitCommandOptions({"--raw", "--no-abbrev", "--numstat"});
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commits(), std::nullopt);
    EXPECT_THAT(command->loadedDiffs(), IsEmpty());
    ASSERT_THAT(command->loadedDiffStats(), SizeIs(1));
    const auto stats = command->takeLoadedDiffStats();
    EXPECT_EQ(stats[0].filePath, "file.txt");
    EXPECT_EQ(stats[0].fileStatus, RVGitFileStatusAdded);
    EXPECT_EQ(stats[0].linesAdded, 1u);
    EXPECT_THAT(command->diffStats(), IsEmpty());
}

TEST_F(RVGitLogCommandTest, PatchesComeAheadOfStatistics) {
    makeCommit();
    const auto command = logCommand();
    command->setGeneratesDiffs(true);
    command->addGitCommandOptions({"--raw", "--numstat", "-p"});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->loadedDiffStats(), IsEmpty());
}

TEST_F(RVGitLogCommandTest, LoadsHashesOnly) {
    const std::string first = makeCommit();
    const std::string second = makeCommit();
    const auto command = logCommand();
    command->setLoadsFullCommitInfo(false);
    ASSERT_TRUE(command->run());
    ASSERT_THAT(*command->commits(), SizeIs(2));
    EXPECT_EQ((*command->commits())[0].commitHash(), second);
    EXPECT_EQ((*command->commits())[1].commitHash(), first);
    EXPECT_EQ((*command->commits())[0].message(), std::nullopt);
}

TEST_F(RVGitLogCommandTest, AHostileConfigurationChangesNothing) {
    makeCommit();
    for (const auto& [key, value] :
         std::vector<std::pair<const char*, const char*>>{{"log.showSignature", "true"},
                                                          {"log.date", "relative"},
                                                          {"i18n.logOutputEncoding", "ISO-8859-1"},
                                                          {"color.ui", "always"},
                                                          {"log.decorate", "short"},
                                                          {"format.pretty", "oneline"},
                                                          {"log.abbrevCommit", "true"}})
        gitInRepository({"config", key, value});
    gitInRepository({"commit", "--allow-empty", "-m", "Größe"});
    const auto command = logCommand(RVOptions{{RVGitLogOptionDecorate, true}});
    ASSERT_TRUE(command->run());
    ASSERT_THAT(*command->commits(), SizeIs(2));
    const auto& newest = command->commits()->front();
    EXPECT_EQ(newest.message(), "Größe");
    EXPECT_EQ(newest.commitHash()->size(), 40U);
    EXPECT_THAT(newest.refs(), ElementsAre("HEAD", "refs/heads/main"));
}

TEST(RVGitLogCommandOptionsTest, EachKeyIsItsOwnName) {
#define EXPECT_OWN_NAME(key) EXPECT_STREQ(key, #key)
    EXPECT_OWN_NAME(RVGitLogOptionDecorate);
    EXPECT_OWN_NAME(RVGitLogOptionFirstParent);
    EXPECT_OWN_NAME(RVGitLogOptionExtendedRegexSyntax);
    EXPECT_OWN_NAME(RVGitLogOptionVerifiesSignatures);
    EXPECT_OWN_NAME(RVGitLogOptionAllowedSignersFile);
    EXPECT_OWN_NAME(RVGitLogOptionLimit);
    EXPECT_OWN_NAME(RVGitLogOptionOffset);
    EXPECT_OWN_NAME(RVGitLogOptionSearchPatterns);
    EXPECT_OWN_NAME(RVGitLogOptionSearchAuthorPatterns);
    EXPECT_OWN_NAME(RVGitLogOptionSearchCommitterPatterns);
    EXPECT_OWN_NAME(RVGitLogOptionSearchContentPatterns);
    EXPECT_OWN_NAME(RVGitLogOptionSinceDate);
    EXPECT_OWN_NAME(RVGitLogOptionUntilDate);
    EXPECT_OWN_NAME(RVGitLogOptionReverseOrder);
    EXPECT_OWN_NAME(RVGitLogOptionSortByTopoOrder);
    EXPECT_OWN_NAME(RVGitLogOptionSortByDate);
    EXPECT_OWN_NAME(RVGitLogOptionFollowRenames);
    EXPECT_OWN_NAME(RVGitLogOptionNoRenames);
    EXPECT_OWN_NAME(RVGitLogOptionAllBranches);
    EXPECT_OWN_NAME(RVGitLogOptionAllRemoteBranches);
    EXPECT_OWN_NAME(RVGitLogOptionAllTags);
    EXPECT_OWN_NAME(RVGitLogOptionAllRefs);
#undef EXPECT_OWN_NAME
}

}  // namespace
