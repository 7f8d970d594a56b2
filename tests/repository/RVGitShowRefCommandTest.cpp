#include "RVGit/repository/RVGitShowRefCommand.h"

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string hashA(40, 'a');
const std::string hashB(40, 'b');
const std::string hash0 = "0123456789abcdef0123456789abcdef01234567";

struct Ref {
    std::string name;
    std::optional<std::string> hash;
    std::optional<std::string> tagHash;
    friend bool operator==(const Ref&, const Ref&) = default;
    friend void PrintTo(const Ref& ref, std::ostream* stream) {
        *stream << ref.hash.value_or("-") << " " << ref.name << " " << ref.tagHash.value_or("-");
    }
};

struct Result {
    bool parsed = true;
    std::vector<Ref> refs;
    friend bool operator==(const Result&, const Result&) = default;
    friend void PrintTo(const Result& result, std::ostream* stream) {
        *stream << (result.parsed ? "read: " : "refused: ") << testing::PrintToString(result.refs);
    }
};

std::vector<Ref> refsOfItems(const std::vector<RVGitRefOutputParserResultItem>& items) {
    std::vector<Ref> refs;
    for (const auto& item : items)
        refs.push_back({item.fullRefName, item.commitHash, item.tagObjectHash});
    return refs;
}

Result parse(std::string_view output) {
    RVGitRefOutputParser parser(output);
    bool parsed = parser.parse();
    return {parsed, refsOfItems(parser.refs())};
}

// The plain way: the expression on every line, and a search through all refs for every name.
Result parseSlowly(std::string_view output) {
    static const RVRegularExpression expression(R"(^([0-9a-f]{40})\s+(.*))");
    Result result;
    for (const auto& line : componentsSeparatedByString(stringUsingBestEncoding(output), "\n")) {
        if (line.empty())
            continue;
        auto components = componentsMatchedByRegularExpression(line, expression);
        if (components.empty()) {
            result.parsed = false;
            break;
        }
        std::string name = *components[2];
        bool peeled = name.ends_with("^{}");
        if (peeled)
            name.resize(name.size() - 3);
        auto found = std::find_if(result.refs.begin(), result.refs.end(),
                                  [&](const Ref& ref) { return ref.name == name; });
        if (peeled && found != result.refs.end())
            *found = {name, components[1], found->hash};
        else if (!peeled && found != result.refs.end())
            *found = {name, components[1], std::nullopt};
        else if (!peeled)
            result.refs.push_back({name, components[1], std::nullopt});
    }
    return result;
}

}  // namespace

TEST(RVGitRefOutputParserTest, ReadsHashesAndNames) {
    EXPECT_EQ(parse(hashA + " refs/heads/main\n" + hashB + " refs/tags/v1 with blank\n"),
              (Result{true,
                      {{"refs/heads/main", hashA, std::nullopt},
                       {"refs/tags/v1 with blank", hashB, std::nullopt}}}));
}

TEST(RVGitRefOutputParserTest, NothingAndNewlinesGiveNoRefs) {
    EXPECT_EQ(parse(""), Result());
    EXPECT_EQ(parse("\n\n"), Result());
}

TEST(RVGitRefOutputParserTest, APeeledLineMovesTheHashToTheTagObject) {
    EXPECT_EQ(parse(hashA + " refs/tags/v1\n" + hashB + " refs/tags/v1^{}\n"),
              (Result{true, {{"refs/tags/v1", hashB, hashA}}}));
}

TEST(RVGitRefOutputParserTest, APeeledLineWithoutItsTagIsIgnored) {
    EXPECT_EQ(parse(hashA + " refs/tags/v1\n" + hashB + " refs/tags/v2^{}\n"),
              (Result{true, {{"refs/tags/v1", hashA, std::nullopt}}}));
    EXPECT_EQ(parse(hashB + " ^{}\n"), Result());
}

TEST(RVGitRefOutputParserTest, ARepeatedNameReplacesItsRefInPlace) {
    EXPECT_EQ(parse(hashA + " x\n" + hashB + " y\n" + hash0 + " x\n"),
              (Result{true, {{"x", hash0, std::nullopt}, {"y", hashB, std::nullopt}}}));
    EXPECT_EQ(parse(hashA + " x\n" + hashB + " x^{}\n" + hash0 + " x\n"),
              (Result{true, {{"x", hash0, std::nullopt}}}));
}

TEST(RVGitRefOutputParserTest, ATabOrSeveralBlanksSeparateToo) {
    EXPECT_EQ(
        parse(hashA + "\trefs/heads/a\n" + hashB + "  \t refs/heads/b\n"),
        (Result{true,
                {{"refs/heads/a", hashA, std::nullopt}, {"refs/heads/b", hashB, std::nullopt}}}));
    // A wide blank, which only the expression knows.
    EXPECT_EQ(parse(hashA + "\u3000refs/heads/c\n"),
              (Result{true, {{"refs/heads/c", hashA, std::nullopt}}}));
}

TEST(RVGitRefOutputParserTest, NamesBeyondASCIIAreKept) {
    EXPECT_EQ(parse(hashA + " refs/heads/fünf-五\n"),
              (Result{true, {{"refs/heads/fünf-五", hashA, std::nullopt}}}));
}

TEST(RVGitRefOutputParserTest, CarriageReturnsAreNoPartOfANameAndTheLastNewlineMayMiss) {
    EXPECT_EQ(
        parse(hashA + " refs/heads/a\r\n" + hashB + " refs/heads/b"),
        (Result{true,
                {{"refs/heads/a", hashA, std::nullopt}, {"refs/heads/b", hashB, std::nullopt}}}));
}

TEST(RVGitRefOutputParserTest, ALineOfAnotherFormFailsWithCode11AndKeepsWhatWasRead) {
    for (const std::string& line :
         {std::string("nonsense"), hashA, hashA + "x refs/heads/a",
          hashA.substr(1) + " refs/heads/a", std::string(40, 'A') + " refs/heads/a",
          " " + hashA + " refs/heads/a"}) {
        std::string output = hashB + " refs/heads/first\n" + line + "\n" + hashB + " refs/x\n";
        RVGitRefOutputParser parser(output);
        std::optional<RVError> error;
        EXPECT_FALSE(parser.parse(&error)) << line;
        ASSERT_NE(error, std::nullopt);
        EXPECT_EQ(error->code(), RVGitOutputParserError);
        EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitRefOutputParser");
        EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), line);
        EXPECT_THAT(refsOfItems(parser.refs()),
                    ElementsAre(Ref{"refs/heads/first", hashB, std::nullopt}));
    }
}

TEST(RVGitRefOutputParserTest, DamagedOutputIsReadAsByTheExpression) {
    std::string output =
        hash0 + " refs/heads/main\n" + hashA + " refs/tags/v1\n" + hashB + " refs/tags/v1^{}\n";
    for (const auto& damaged : damagedOutputs(output))
        ASSERT_EQ(parse(damaged), parseSlowly(damaged)) << testing::PrintToString(damaged);
}

TEST(RVGitRefOutputParserTest, RandomOutputIsReadAsByTheExpression) {
    const std::vector<std::string> pieces = {
        hashA,         hashB,    hash0,    std::string(39, 'c'),
        "refs/heads/", "x",      "y",      "^{}",
        "^{",          " ",      "  ",     "\t",
        "\r",          "\n",     "\v",     "\f",
        "\u0085",      "\u00A0", "\u2028", "\u3000",
        "\u1680",      "é",      "\xFF",   std::string(1, '\0'),
        "\x1F\x7F",    "A",      "\u0660"};
    std::mt19937 random(20200102);
    for (int round = 0; round < 20000; ++round) {
        std::string output;
        for (auto lines = random() % 4; lines-- > 0;) {
            if (random() % 8 != 0)
                output += pieces[random() % 3] + (random() % 2 ? " " : "\t");
            for (auto count = random() % 5; count-- > 0;)
                output += pieces[random() % pieces.size()];
            output += "\n";
        }
        ASSERT_EQ(parse(output), parseSlowly(output)) << testing::PrintToString(output);
    }
}

TEST(RVGitRefOutputParserTest, TwentyThousandRefsComeInTheirOrder) {
    std::string output;
    for (int index = 0; index < 20000; ++index) {
        std::string name = "refs/tags/" + std::to_string(index * 7919 % 20000);
        output += hashA + " " + name + "\n" + hashB + " " + name + "^{}\n";
    }
    RVGitRefOutputParser parser(output);
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.refs().size(), 20000u);
    for (std::size_t index = 0; index < 20000; ++index) {
        ASSERT_EQ(parser.refs()[index].fullRefName,
                  "refs/tags/" + std::to_string(index * 7919 % 20000));
        ASSERT_EQ(parser.refs()[index].commitHash, hashB);
        ASSERT_EQ(parser.refs()[index].tagObjectHash, hashA);
    }
}

class RVGitShowRefCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitShowRefCommand> makeCommand(
        const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitShowRefCommand::gitShowRefCommandWithRepository(repository(), options);
    }
};

TEST_F(RVGitShowRefCommandTest, ArgumentsOfEachOption) {
    auto recorder = useRecordingGit();
    auto argumentsWith = [&](const std::optional<RVOptions>& options) {
        makeCommand(options)->run();
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsWith(std::nullopt), ElementsAre("show-ref"));
    EXPECT_THAT(argumentsWith(RVOptions{}), ElementsAre("show-ref"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitShowRefOptionHead, true}}),
                ElementsAre("show-ref", "--head"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitShowRefOptionHeads, true}}),
                ElementsAre("show-ref", "--heads"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitShowRefOptionTags, true}}),
                ElementsAre("show-ref", "--tags", "--dereference"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitShowRefOptionHead, false},
                                        {RVGitShowRefOptionHeads, false},
                                        {RVGitShowRefOptionTags, false}}),
                ElementsAre("show-ref"));
}

TEST_F(RVGitShowRefCommandTest, ArgumentsOfEachField) {
    auto recorder = useRecordingGit();
    auto argumentsAfter = [&](auto fill) {
        auto command = makeCommand();
        fill(*command);
        command->run();
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setShowsHashesOnly(true); }),
                ElementsAre("show-ref", "-s"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setRefName("main"); }),
                ElementsAre("show-ref", "main"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setRefName(""); }),
                ElementsAre("show-ref"));
    EXPECT_THAT(
        argumentsAfter([](auto& command) {
            command.setRefName("main");
            command.setShowsHashesOnly(true);
            command.setShowsTags(true);
            command.setShowsHeads(true);
            command.setShowsHead(true);
        }),
        ElementsAre("show-ref", "--head", "--heads", "--tags", "--dereference", "-s", "main"));
}

TEST_F(RVGitShowRefCommandTest, ListsWhatGitLists) {
    std::string hash = makeCommit();
    gitInRepository({"tag", "-a", "-m", "Message", "v1"});
    gitInRepository({"branch", "topic"});
    std::string tagHash = gitInRepository({"rev-parse", "v1"});

    auto command = makeCommand();
    ASSERT_TRUE(command->run());
    EXPECT_THAT(refsOfItems(command->refs()),
                ElementsAre(Ref{"refs/heads/main", hash, std::nullopt},
                            Ref{"refs/heads/topic", hash, std::nullopt},
                            Ref{"refs/tags/v1", tagHash, std::nullopt}));

    command = makeCommand(RVOptions{{RVGitShowRefOptionHead, true}});
    ASSERT_TRUE(command->run());
    ASSERT_EQ(command->refs().size(), 4u);
    EXPECT_EQ(command->refs()[0].fullRefName, "HEAD");
}

TEST_F(RVGitShowRefCommandTest, AnAnnotatedTagHasTheCommitAndTheTagObject) {
    std::string hash = makeCommit();
    gitInRepository({"tag", "-a", "-m", "Message", "v1"});
    gitInRepository({"tag", "light"});
    auto command = makeCommand(RVOptions{{RVGitShowRefOptionTags, true}});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(refsOfItems(command->refs()),
                ElementsAre(Ref{"refs/tags/light", hash, std::nullopt},
                            Ref{"refs/tags/v1", hash, gitInRepository({"rev-parse", "v1"})}));
}

TEST_F(RVGitShowRefCommandTest, FindingNothingIsASuccessWithoutRefs) {
    auto command = makeCommand();
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(command->exitCode(), 1);
    EXPECT_THAT(command->refs(), IsEmpty());

    makeCommit();
    command = makeCommand();
    command->setRefName("nothing-of-that-name");
    EXPECT_TRUE(command->run(&error));
    EXPECT_THAT(command->refs(), IsEmpty());
}

TEST_F(RVGitShowRefCommandTest, OtherExitCodesFail) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = hashA + " refs/heads/x\n", .exitCode = 128});
    auto command = makeCommand();
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(command->refs(), IsEmpty());
}

TEST_F(RVGitShowRefCommandTest, OutputOfAnotherFormFailsWithCode11) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "nonsense\n"});
    EXPECT_THAT(makeCommand(), failsWith(RVGitOutputParserError));
}

TEST_F(RVGitShowRefCommandTest, HashesOnlyAreLeftUnread) {
    std::string hash = makeCommit();
    auto command = makeCommand();
    command->setShowsHashesOnly(true);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->standardOutputString(), hash + "\n");
    EXPECT_THAT(command->refs(), IsEmpty());
}

TEST_F(RVGitShowRefCommandTest, TheOneErrorRow) {
    const auto& table = RVGitShowRefCommand::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 1u);
    EXPECT_EQ(table[0].errorCode, RVGitNoRefsError);
    EXPECT_THAT(table[0].commandNames, ElementsAre("show-ref"));
    EXPECT_THAT(table[0].exitCodes, ElementsAre(1));
}

TEST_F(RVGitShowRefCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitShowRefCommand(nullptr, std::nullopt), RVInvalidParameterException);
}
