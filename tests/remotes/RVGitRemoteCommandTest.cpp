#include "RVGit/remotes/RVGitRemoteCommand.h"

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

Strings parsed(std::string_view output) {
    RVGitRemoteOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    Strings texts;
    for (const auto& item : parser.remotes())
        texts.push_back(item.name + " " + item.downstreamURL.value_or("-") + " " +
                        item.upstreamURL.value_or("-"));
    return texts;
}

class RVGitRemoteCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitRemoteCommand> creating(std::string name, std::string URL = "url") {
        return RVGitRemoteCommand::gitCreateRemoteCommandWithRepository(
            repository(), std::move(name), std::move(URL));
    }
    std::shared_ptr<RVGitRemoteCommand> renaming(std::string name, std::string newName) {
        return RVGitRemoteCommand::gitRenameRemoteCommandWithRepository(
            repository(), std::move(name), std::move(newName));
    }
    std::shared_ptr<RVGitRemoteCommand> deleting(std::string name) {
        return RVGitRemoteCommand::gitDeleteRemoteCommandWithRepository(repository(),
                                                                        std::move(name));
    }
};

TEST_F(RVGitRemoteCommandTest, ExactCommandLines) {
    auto recorder = useRecordingGit();
    EXPECT_THAT(
        argumentsOf(recorder, *RVGitRemoteCommand::gitRemoteCommandWithRepository(repository())),
        ElementsAre("remote", "-v"));
    EXPECT_THAT(argumentsOf(recorder, *creating("origin", "https://example.org/x.git")),
                ElementsAre("remote", "add", "origin", "https://example.org/x.git"));
    EXPECT_THAT(argumentsOf(recorder, *renaming("origin", "upstream")),
                ElementsAre("remote", "rename", "origin", "upstream"));
    EXPECT_THAT(argumentsOf(recorder, *deleting("upstream")),
                ElementsAre("remote", "rm", "upstream"));
    const auto all = std::make_shared<RVGitRemoteCommand>(repository());
    all->setCreatesRemote(true);
    all->setRenamesRemote(true);
    all->setDeletesRemote(true);
    EXPECT_THAT(argumentsOf(recorder, *all), ElementsAre("remote", "add"));
    const auto named = std::make_shared<RVGitRemoteCommand>(repository());
    named->setRemoteNames(Strings{"origin"});
    EXPECT_THAT(argumentsOf(recorder, *named), ElementsAre("remote", "-v", "origin"));
    EXPECT_THAT(named->remotes(), IsEmpty());
}

TEST_F(RVGitRemoteCommandTest, NothingBecomesAnOption) {
    gitInRepository({"remote", "add", "origin", "url"});
    const RVRepositorySnapshot before(repositoryPath());
    const std::string configuration = gitInRepository({"config", "--local", "--list"});
    for (const std::string text : {"-f", "--mirror=fetch", "-t", "-"}) {
        EXPECT_THAT(creating(text), failsWith(RVGitCreateRemoteInvalidNameError)) << text;
        EXPECT_THAT(creating("x", text), failsWith(RVGitRVGitGenericError)) << text;
        EXPECT_THAT(renaming("origin", text), failsWith(RVGitRenameRemoteInvalidNameError));
        EXPECT_THAT(renaming(text, "x"), failsWith(RVGitRenameRemoteInvalidNameError));
        // Nothing is made whose name could be invalid.
        EXPECT_THAT(deleting(text), failsWith(RVGitRVGitGenericError));
    }
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
    EXPECT_EQ(gitInRepository({"config", "--local", "--list"}), configuration);
}

TEST_F(RVGitRemoteCommandTest, AnExistingNameFailsWith2300) {
    gitInRepository({"remote", "add", "origin", "url"});
    const auto error = errorOf(*creating("origin"));
    EXPECT_EQ(error.code(), RVGitCreateRemoteAlreadyExistsError);
    EXPECT_EQ(error.userInfoString(RVGitRemoteNameErrorKey), "origin");
}

TEST_F(RVGitRemoteCommandTest, TheOldExitCodeMeans2300Too) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: remote origin already exists.\n", .exitCode = 128});
    EXPECT_THAT(creating("origin"), failsWith(RVGitCreateRemoteAlreadyExistsError));
    EXPECT_THAT(renaming("a", "origin"), failsWith(RVGitRenameRemoteAlreadyExistsError));
}

TEST_F(RVGitRemoteCommandTest, AnInvalidNameFailsWith2301) {
    const auto error = errorOf(*creating("a..b"));
    EXPECT_EQ(error.code(), RVGitCreateRemoteInvalidNameError);
    EXPECT_EQ(error.userInfoString(RVGitRemoteNameErrorKey), "a..b");
}

TEST_F(RVGitRemoteCommandTest, RenamingToAnExistingNameFailsWith2302) {
    gitInRepository({"remote", "add", "a", "url"});
    gitInRepository({"remote", "add", "b", "url"});
    const auto error = errorOf(*renaming("a", "b"));
    EXPECT_EQ(error.code(), RVGitRenameRemoteAlreadyExistsError);
    // Git names "b"; the command's own names go over that.
    EXPECT_EQ(error.userInfoString(RVGitRemoteNameErrorKey), "a");
}

TEST_F(RVGitRemoteCommandTest, RenamingToAnInvalidNameFailsWith2303) {
    gitInRepository({"remote", "add", "a", "url"});
    EXPECT_THAT(renaming("a", "b..c"), failsWith(RVGitRenameRemoteInvalidNameError));
}

TEST_F(RVGitRemoteCommandTest, OtherFailuresAreNamedAfterTheFirstRemote) {
    const auto error = errorOf(*deleting("missing"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfoString(RVGitRemoteNameErrorKey), "missing");
}

TEST_F(RVGitRemoteCommandTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitRemoteCommand::gitRemoteCommandWithRepository(nullptr),
                 RVInvalidParameterException);
}

TEST(RVGitRemoteOutputParserTest, TheLinesOfOneNameAreOneRemote) {
    EXPECT_THAT(parsed("b\tfetch-url (fetch)\nb\tpush url (push)\na\turl (fetch)\n"),
                ElementsAre("b fetch-url push url", "a url -"));
}

TEST(RVGitRemoteOutputParserTest, LinesOfOtherShapesGiveTheNameAlone) {
    EXPECT_THAT(parsed("name\nx\turl\ny\turl\tmore (fetch)\nz\turl (fetch) [blob:none]\n"),
                ElementsAre("name - -", "x - -", "y - -", "z - -"));
}

TEST(RVGitRemoteOutputParserTest, AnAddressMayEndInItsOwnWords) {
    EXPECT_THAT(parsed("a\tx (push) (fetch)\nb\t (push)\n"), ElementsAre("a x (push) -", "b - "));
}

TEST(RVGitRemoteOutputParserTest, LivesWithDamagedOutput) {
    const std::string output =
        "origin\thttps://example.org/a b (fetch)\norigin\t../c (push)\na/b\n";
    for (const std::string& damaged : damagedOutputs(output)) {
        RVGitRemoteOutputParser parser(damaged);
        EXPECT_TRUE(parser.parse());
        for (const auto& item : parser.remotes())
            EXPECT_EQ(item.name.find('\t'), std::string::npos);
    }
}

}  // namespace
