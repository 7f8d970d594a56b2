#include "RVGit/remotes/RVGitBranchCommand.h"

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;
using Item = RVGitBranchOutputParserResultItem;

const std::string hashA(40, 'a');
const std::string hashB(40, 'b');

std::string textOf(const Item& item) {
    return (item.isHead ? "*" : "") + item.fullRefName.value_or("-") + " " +
           item.commitHash.value_or("-") + " +" + std::to_string(item.ahead) + " -" +
           std::to_string(item.behind);
}

Strings textsOf(const std::vector<Item>& items) {
    Strings texts;
    for (const Item& item : items)
        texts.push_back(textOf(item));
    return texts;
}

Strings parsed(std::string_view output) {
    RVGitBranchOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    return textsOf(parser.branches());
}

class RVGitBranchCommandTest : public RVGitRepositoryTestCase {
protected:
    /// From 2.43 on, git words its refusals to delete anew.
    static bool hasNewWords() {
        return RVGitBinary::defaultGitBinary()->isVersionAtLeast("2.43.0");
    }
    std::shared_ptr<RVGitBranchCommand> deleting(Strings names, bool forced = false) {
        return RVGitBranchCommand::gitDeleteBranchCommandWithRepository(repository(),
                                                                        std::move(names), forced);
    }
};

class RVGitBranchCommandLineTest : public RVGitBranchCommandTest {
protected:
    Strings argumentsWith(const RVOptions& options, Strings names = {"topic"}) {
        auto command = std::make_shared<RVGitBranchCommand>(repository(), options);
        command->setRefNames(std::move(names));
        return argumentsOf(recorder_, *command);
    }

    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitBranchCommandLineTest, Lists) {
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitBranchCommandWithRepository(repository())),
        ElementsAre("branch", "--no-color", "--no-abbrev", "-v"));
}

TEST_F(RVGitBranchCommandLineTest, ListsRemoteBranches) {
    const auto command = std::make_shared<RVGitBranchCommand>(
        repository(), RVOptions{{RVGitBranchOptionShowRemoteBranches, true}});
    EXPECT_TRUE(command->showsRemoteBranches());
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("branch", "--no-color", "--no-abbrev", "-v", "-r"));
}

TEST_F(RVGitBranchCommandLineTest, OnlyAListingShowsRemoteBranches) {
    EXPECT_THAT(argumentsWith(
                    {{RVGitBranchOptionShowRemoteBranches, true}, {RVGitBranchOptionDelete, true}}),
                ElementsAre("branch", "-d", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, WithoutNamesEveryOptionLists) {
    const auto command = std::make_shared<RVGitBranchCommand>(
        repository(), RVOptions{{RVGitBranchOptionForceDeletion, true}});
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("branch", "--no-color", "--no-abbrev", "-v"));
}

TEST_F(RVGitBranchCommandLineTest, Creates) {
    EXPECT_THAT(argumentsOf(recorder_, *RVGitBranchCommand::gitCreateBranchCommandWithRepository(
                                           repository(), "topic", std::nullopt)),
                ElementsAre("branch", "--no-track", "topic"));
    EXPECT_THAT(argumentsOf(recorder_, *RVGitBranchCommand::gitCreateBranchCommandWithRepository(
                                           repository(), "refs/heads/topic", "HEAD~1")),
                ElementsAre("branch", "--no-track", "topic", "HEAD~1"));
}

TEST_F(RVGitBranchCommandLineTest, CreatesWithATrackedRef) {
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitCreateTrackingBranchCommandWithRepository(
                                   repository(), "topic", "refs/remotes/origin/topic")),
        ElementsAre("branch", "--track", "topic", "refs/remotes/origin/topic"));
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitCreateTrackingBranchCommandWithRepository(
                                   repository(), "topic", std::nullopt)),
        ElementsAre("branch", "--track", "topic"));
    const auto command = RVGitBranchCommand::gitCreateTrackingBranchCommandWithRepository(
        repository(), "topic", "origin/topic");
    command->setStartingPoint("v1");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("branch", "--track", "topic", "origin/topic", "v1"));
}

TEST_F(RVGitBranchCommandLineTest, AddsTracking) {
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitAddTrackingBranchCommandWithRepository(
                                   repository(), "refs/heads/topic", "refs/heads/main")),
        ElementsAre("branch", "-u", "refs/heads/main", "topic"));
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitAddTrackingBranchCommandWithRepository(
                                   repository(), "topic", std::nullopt)),
        ElementsAre("branch", "-u", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, RemovesTracking) {
    EXPECT_THAT(
        argumentsOf(recorder_, *RVGitBranchCommand::gitRemoveTrackingBranchCommandWithRepository(
                                   repository(), "refs/heads/topic")),
        ElementsAre("branch", "--unset-upstream", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, Deletes) {
    EXPECT_THAT(argumentsOf(recorder_, *deleting({"one", "refs/heads/two"})),
                ElementsAre("branch", "-d", "one", "two"));
    EXPECT_THAT(argumentsOf(recorder_, *deleting({"one"}, true)),
                ElementsAre("branch", "-D", "one"));
    EXPECT_THAT(argumentsWith({{RVGitBranchOptionForceDeletion, true}}),
                ElementsAre("branch", "-D", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, Renames) {
    const auto renaming = [&](std::optional<std::string> newName, bool forced) {
        return RVGitBranchCommand::gitRenameBranchCommandWithRepository(
            repository(), "refs/heads/old", std::move(newName), forced);
    };
    EXPECT_THAT(argumentsOf(recorder_, *renaming("refs/heads/new", false)),
                ElementsAre("branch", "-m", "old", "new"));
    EXPECT_THAT(argumentsOf(recorder_, *renaming("new", true)),
                ElementsAre("branch", "-M", "old", "new"));
    EXPECT_THAT(argumentsOf(recorder_, *renaming(std::nullopt, false)),
                ElementsAre("branch", "-m", "old"));
    EXPECT_THAT(argumentsWith({{RVGitBranchOptionForceRenaming, true}}),
                ElementsAre("branch", "-M", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, TheFirstThatIsSetCounts) {
    RVOptions options = {{RVGitBranchOptionRename, true},
                         {RVGitBranchOptionDelete, true},
                         {RVGitBranchOptionAddTracking, true},
                         {RVGitBranchOptionRemoveTracking, true},
                         {RVGitBranchOptionCreateTracking, true}};
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "-m", "topic"));
    options.erase(RVGitBranchOptionRename);
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "-d", "topic"));
    options.erase(RVGitBranchOptionDelete);
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "-u", "topic"));
    options.erase(RVGitBranchOptionAddTracking);
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "--unset-upstream", "topic"));
    options.erase(RVGitBranchOptionRemoveTracking);
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "--track", "topic"));
}

TEST_F(RVGitBranchCommandLineTest, OptionsThatAreFalseDoNothing) {
    const RVOptions options = {
        {RVGitBranchOptionRename, false},         {RVGitBranchOptionForceRenaming, false},
        {RVGitBranchOptionDelete, false},         {RVGitBranchOptionForceDeletion, false},
        {RVGitBranchOptionCreateTracking, false}, {RVGitBranchOptionAddTracking, false},
        {RVGitBranchOptionRemoveTracking, false}, {RVGitBranchOptionShowRemoteBranches, false}};
    EXPECT_THAT(argumentsWith(options), ElementsAre("branch", "--no-track", "topic"));
}

TEST_F(RVGitBranchCommandTest, NoNameBecomesAnOption) {
    makeCommit();
    gitInRepository({"branch", "topic"});
    const RVRepositorySnapshot before(repositoryPath());
    using Command = RVGitBranchCommand;
    for (const std::string text : {"-D", "--list", "-dmain", "--edit-description", "-"}) {
        const std::pair<std::shared_ptr<RVGitBranchCommand>, int> cases[] = {
            {Command::gitCreateBranchCommandWithRepository(repository(), text, "topic"), 2504},
            {Command::gitCreateBranchCommandWithRepository(repository(), "new", text), 2505},
            {Command::gitCreateTrackingBranchCommandWithRepository(repository(), "new", text),
             2509},
            {Command::gitAddTrackingBranchCommandWithRepository(repository(), "topic", text), 2509},
            {Command::gitAddTrackingBranchCommandWithRepository(repository(), text, "main"), 2504},
            {Command::gitRemoveTrackingBranchCommandWithRepository(repository(), text), 2504},
            {deleting({"topic", text}), 2510},
            {Command::gitRenameBranchCommandWithRepository(repository(), "topic", text, true),
             2504},
            {Command::gitRenameBranchCommandWithRepository(repository(), text, "topic", true),
             2504}};
        for (const auto& [command, code] : cases)
            EXPECT_THAT(command, failsWith(code)) << text;
    }
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitBranchCommandTest, NamesThatHideSomethingFailAndChangeNothing) {
    makeCommit();
    const RVRepositorySnapshot before(repositoryPath());
    for (const std::string& name :
         {std::string("a\0b", 3), std::string("a\nb"), std::string("a b"), std::string("*"),
          std::string(":/"), std::string("a..b"), std::string(""), std::string("@{-1}"),
          std::string("a.lock"), std::string("/a//b/")}) {
        const auto command = RVGitBranchCommand::gitCreateBranchCommandWithRepository(
            repository(), name, std::nullopt);
        EXPECT_NE(errorOf(*command).code(), 0) << name;
    }
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitBranchCommandTest, AnInvalidNameFailsWith2504) {
    makeCommit();
    const auto error = errorOf(*RVGitBranchCommand::gitCreateBranchCommandWithRepository(
        repository(), "a..b", std::nullopt));
    EXPECT_EQ(error.code(), RVGitCreateBranchInvalidNameError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "a..b");
}

TEST_F(RVGitBranchCommandTest, AnUnknownStartingPointFailsWith2505) {
    makeCommit();
    const auto answer = "fatal: Not a valid object name: 'missing'.\n";
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = answer, .exitCode = 128});
    const auto error = errorOf(*RVGitBranchCommand::gitCreateBranchCommandWithRepository(
        repository(), "topic", "missing"));
    EXPECT_EQ(error.code(), RVGitCreateBranchInvalidObjectError);
    EXPECT_EQ(error.userInfoString(RVGitObjectHashErrorKey), "missing");
    EXPECT_FALSE(error.userInfo().contains(RVGitRevisionErrorKey));
}

TEST_F(RVGitBranchCommandTest, TheRealGitSaysTheSameOfAnUnknownStartingPoint) {
    makeCommit();
    const auto error = errorOf(*RVGitBranchCommand::gitCreateBranchCommandWithRepository(
        repository(), "topic", "missing"));
    EXPECT_EQ(error.code(), RVGitCreateBranchInvalidObjectError);
}

TEST_F(RVGitBranchCommandTest, AnExistingNameFailsWith2506) {
    makeCommit();
    const auto error = errorOf(*RVGitBranchCommand::gitCreateBranchCommandWithRepository(
        repository(), "main", std::nullopt));
    EXPECT_EQ(error.code(), RVGitCreateBranchRefAlreadyExistsError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "main");
}

TEST_F(RVGitBranchCommandTest, ARefusedRenamingHasTheCodeOfARefusedCreation) {
    makeCommit();
    gitInRepository({"branch", "topic"});
    const auto error = errorOf(*RVGitBranchCommand::gitRenameBranchCommandWithRepository(
        repository(), "topic", "main", false));
    EXPECT_EQ(error.code(), RVGitCreateBranchRefAlreadyExistsError);
}

TEST_F(RVGitBranchCommandTest, TheRowsThatAskForAnOptionNeverMatch) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "error: refname refs/heads/x not found\n", .exitCode = 128});
    // A row for every command takes "not found" for that of a remote repository.
    EXPECT_EQ(errorOf(*RVGitBranchCommand::gitRenameBranchCommandWithRepository(repository(), "x",
                                                                                "y", false))
                  .code(),
              RVGitRemoteRepositoryNotFoundError);
    int rows = 0;
    for (const auto& row : RVGitBranchCommand::gitErrorDefinitions())
        rows += row.commandArguments.empty() ? 0 : 1;
    EXPECT_EQ(rows, 3);
    EXPECT_EQ(RVGitBranchCommand::gitErrorDefinitions().size(), 10U);
}

TEST_F(RVGitBranchCommandTest, AnUnknownTrackedRefFailsWith2509WhereGitSaysSoOnItsOutput) {
    auto fake = useFakeGit();
    fake.setAnswer(
        {.standardOutput = "fatal: Not a valid object name: 'origin/x'\n", .exitCode = 128});
    const auto error = errorOf(*RVGitBranchCommand::gitAddTrackingBranchCommandWithRepository(
        repository(), "topic", "origin/x"));
    EXPECT_EQ(error.code(), RVGitTrackBranchInvalidObjectError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "origin/x");
}

TEST_F(RVGitBranchCommandTest, DeletingAnUnknownBranchFailsWith2510) {
    makeCommit();
    const auto error = errorOf(*deleting({"missing"}));
    EXPECT_EQ(error.code(), RVGitDeleteBranchNoSuchBranchError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "missing");
    EXPECT_FALSE(error.userInfo().contains(RVGitMultipleRefNamesErrorKey));
}

TEST_F(RVGitBranchCommandTest, DeletingTheCurrentBranchFailsWith2511) {
    makeCommit();
    const auto error = errorOf(*deleting({"main"}));
    if (hasNewWords()) {
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        return;
    }
    EXPECT_EQ(error.code(), RVGitDeleteCurrentBranchError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "main");
}

TEST_F(RVGitBranchCommandTest, TheOldWordsForTheCurrentBranchMean2511Too) {
    auto fake = useFakeGit();
    fake.setAnswer(
        {.standardError = "error: Cannot delete the branch 'main' which you are currently on.\n",
         .exitCode = 1});
    const auto error = errorOf(*deleting({"main"}));
    EXPECT_EQ(error.code(), RVGitDeleteCurrentBranchError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "main");
}

TEST_F(RVGitBranchCommandTest, TheNewestWordsForTheCurrentBranchAreNotKnown) {
    auto fake = useFakeGit();
    fake.setAnswer(
        {.standardError = "error: cannot delete branch 'main' used by worktree at '/repository'\n",
         .exitCode = 1});
    EXPECT_THAT(deleting({"main"}), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitBranchCommandTest, UnmergedBranchesFailWith2512AndAreNamed) {
    makeCommit();
    for (const char* name : {"one", "two"}) {
        gitInRepository({"checkout", "-q", "-b", name, "main"});
        makeCommit();
    }
    gitInRepository({"checkout", "-q", "main"});
    gitInRepository({"branch", "merged"});
    const auto error = errorOf(*deleting({"one", "merged", "two"}));
    EXPECT_EQ(error.code(), RVGitDeleteUnmergedBranchError);
    EXPECT_EQ(error.userInfoString(RVGitRefNameErrorKey), "one");
    EXPECT_EQ(error.userInfo().contains(RVGitMultipleRefNamesErrorKey), !hasNewWords());
    if (!hasNewWords()) {
        const auto* names = error.userInfo().at(RVGitMultipleRefNamesErrorKey).stringList();
        ASSERT_NE(names, nullptr);
        EXPECT_THAT(*names, ElementsAre("one", "two"));
    }
    EXPECT_EQ(gitInRepository({"branch", "--format=%(refname:short)"}), "main\none\ntwo");
    EXPECT_TRUE(deleting({"one", "two"}, true)->run());
    EXPECT_EQ(gitInRepository({"branch", "--format=%(refname:short)"}), "main");
}

TEST_F(RVGitBranchCommandTest, TheNewestWordsForUnmergedBranchesNameNone) {
    auto fake = useFakeGit();
    fake.setAnswer(
        {.standardError = "error: the branch 'one' is not fully merged\n", .exitCode = 1});
    const auto error = errorOf(*deleting({"one"}));
    EXPECT_EQ(error.code(), RVGitDeleteUnmergedBranchError);
    EXPECT_FALSE(error.userInfo().contains(RVGitMultipleRefNamesErrorKey));
}

TEST_F(RVGitBranchCommandTest, RefsThatCannotBeReadFailNoListing) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "  main " + hashA + " Subject\n",
                    .standardError = "error: some refs could not be read\n",
                    .exitCode = 255});
    const auto command = RVGitBranchCommand::gitBranchCommandWithRepository(repository());
    EXPECT_TRUE(command->run());
    EXPECT_THAT(textsOf(command->branches()), ElementsAre("refs/heads/main " + hashA + " +0 -0"));
}

TEST_F(RVGitBranchCommandTest, OnlyAListingIsParsed) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "  main " + hashA + " Subject\n"});
    const auto command = RVGitBranchCommand::gitCreateBranchCommandWithRepository(
        repository(), "topic", std::nullopt);
    EXPECT_TRUE(command->run());
    EXPECT_THAT(command->branches(), IsEmpty());
}

TEST_F(RVGitBranchCommandTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitBranchCommand::gitBranchCommandWithRepository(nullptr),
                 RVInvalidParameterException);
}

// The parser.

TEST(RVGitBranchOutputParserTest, ReadsNamesHashesAndTheMark) {
    EXPECT_THAT(parsed("  a/b-c.d   " + hashA + " Subject\n* main " + hashB + " \n"),
                ElementsAre("refs/heads/a/b-c.d " + hashA + " +0 -0",
                            "*refs/heads/main " + hashB + " +0 -0"));
}

TEST(RVGitBranchOutputParserTest, ReadsCounts) {
    EXPECT_THAT(
        parsed("  a " + hashA + " [ahead 2] S\n  b " + hashA + " [behind 13] S\n  c " + hashA +
               " [ahead 1, behind 25] S\n  d " + hashA + " [gone] S\n"),
        ElementsAre("refs/heads/a " + hashA + " +2 -0", "refs/heads/b " + hashA + " +0 -13",
                    "refs/heads/c " + hashA + " +1 -25", "refs/heads/d " + hashA + " +0 -0"));
}

TEST(RVGitBranchOutputParserTest, ASubjectWithBracketsIsTakenForCounts) {
    EXPECT_THAT(parsed("  a " + hashA + " [ahead 7] of the others\n"),
                ElementsAre("refs/heads/a " + hashA + " +7 -0"));
}

TEST(RVGitBranchOutputParserTest, ANameInParenthesesIsADetachedHead) {
    for (const char* name :
         {"(HEAD detached at 1a2b3c)", "(HEAD detached from v1)", "(no branch)",
          "(no branch, rebasing topic)", "(detached from 1a2b3c)", "(anything)", "(a) b)"})
        EXPECT_THAT(parsed("* " + std::string(name) + " " + hashA + " Subject\n"),
                    ElementsAre("*- " + hashA + " +0 -0"))
            << name;
}

TEST(RVGitBranchOutputParserTest, ABranchOfAnotherWorktreeIsMissing) {
    EXPECT_THAT(parsed("+ linked " + hashA + " Subject\n  main " + hashB + " Subject\n"),
                ElementsAre("refs/heads/main " + hashB + " +0 -0"));
}

TEST(RVGitBranchOutputParserTest, HashesOfOtherLengthsAreSkipped) {
    EXPECT_THAT(parsed("  a " + hashA.substr(1) + " S\n  b " + hashA + "a S\n  c abc S\n  d " +
                       std::string(40, 'A') + " S\n"),
                IsEmpty());
}

TEST(RVGitBranchOutputParserTest, AHashOf64DigitsFails) {
    const std::string hash(64, 'a');
    for (const char* beginning : {"  main ", "* main ", "+ linked ", "* (HEAD detached at x) "}) {
        const std::string line = beginning + hash + " Subject\n";
        RVGitBranchOutputParser parser(line);
        EXPECT_THAT([&](RVErrorPlace error) { return parser.parse(error); }, failsWith(11)) << line;
    }
    // In a subject it means nothing.
    EXPECT_THAT(parsed("+ linked " + hashA + " " + hash + " \n"), IsEmpty());
}

TEST(RVGitBranchOutputParserTest, NamesWithOtherBlanksAndLettersStay) {
    EXPECT_THAT(parsed("  h\xC3\xA9\xC2\xA0x " + hashA + " S\n  \xE3\x80\x80y " + hashA + " S\n"),
                ElementsAre("refs/heads/h\xC3\xA9\xC2\xA0x " + hashA + " +0 -0",
                            "refs/heads/y " + hashA + " +0 -0"));
}

/// The expression alone, in front of which the parser cuts plain lines by hand.
Strings parsedByExpression(std::string_view output) {
    const RVRegularExpression expression(
        R"(^(\*)?\s*(\(.+\)|[^ ]+)\s+([0-9a-f]{40})\s+(\[(ahead (\d+),?\s?)?(behind (\d+))?\])?)",
        RVRegularExpression::DotMatchesLineSeparators);
    Strings texts;
    const std::string text = stringUsingBestEncoding(output);
    for (const std::string& line : componentsSeparatedByString(text, "\n")) {
        const auto components = expression.firstMatch(line);
        if (components.empty())
            continue;
        const auto count = [&](std::size_t group) {
            return components[group] ? static_cast<std::uint64_t>(integerValue(*components[group]))
                                     : 0;
        };
        const std::string name = stringByTrimmingWhitespaceAndNewline(*components[2]);
        Item item;
        if (!name.starts_with("("))
            item.fullRefName = name.starts_with("/") ? "refs/heads" + name : "refs/heads/" + name;
        item.commitHash = *components[3];
        item.isHead = components[1] == "*";
        item.ahead = count(6);
        item.behind = count(8);
        texts.push_back(textOf(item));
    }
    return texts;
}

TEST(RVGitBranchOutputParserTest, CuttingByHandAgreesWithTheExpression) {
    std::mt19937 random(20260107);
    const Strings pieces = {"*",
                            "+",
                            " ",
                            "  ",
                            "main",
                            "(HEAD)",
                            hashA,
                            hashB,
                            "[ahead 1]",
                            "[behind 2]",
                            "\t",
                            "\xC2\xA0",
                            "[gone]",
                            "Subject",
                            "\xE3\x80\x80",
                            "[ahead 3, behind 4]",
                            "\r",
                            "(",
                            ")",
                            "\xC3\xA9",
                            "->",
                            "[]",
                            "0",
                            "\x0b"};
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 10);
    for (int round = 0; round < 4000; ++round) {
        std::string line = round % 2 == 0 ? "  main " + hashA + " " : "";
        for (int count = length(random); count > 0; --count)
            line += pieces[piece(random)];
        EXPECT_EQ(parsed(line + "\n"), parsedByExpression(line)) << line;
    }
}

TEST(RVGitBranchOutputParserTest, LivesWithDamagedOutput) {
    const std::string output = "* main " + hashA + " [ahead 1, behind 2] Subject\n  a/b  " + hashB +
                               " \n* (HEAD detached at x) " + hashA + " S\n";
    for (const std::string& damaged : damagedOutputs(output)) {
        RVGitBranchOutputParser parser(damaged);
        (void)parser.parse();
        for (const Item& item : parser.branches()) {
            ASSERT_TRUE(item.commitHash.has_value());
            EXPECT_EQ(item.commitHash->size(), 40U);
            EXPECT_TRUE(!item.fullRefName || item.fullRefName->starts_with("refs/heads/"));
        }
    }
}

TEST(RVGitDeleteBranchErrorOutputParserTest, ReadsTheNamesOfUnmergedBranches) {
    RVGitDeleteBranchErrorOutputParser parser(
        "error: The branch 'one' is not fully merged.\n"
        "If you are sure you want to delete it, run 'git branch -D one'.\n"
        "error: branch 'x' not found.\n"
        "error: The branch 'it's' is not fully merged.\n"
        "hint: error: The branch 'three' is not fully merged.\n"
        "error: The branch '' is not fully merged.\n"
        "error: The branch 'four' is not fully merged\n");
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.refNames(), ElementsAre("one", "it's"));
}

}  // namespace
