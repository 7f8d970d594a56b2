#include "RVGit/history/RVGitContributionInfo.h"

#include "RVGit/command/RVGitActor.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;

class RVGitContributionInfoTest : public RVGitRepositoryTestCase {
protected:
    void commitAs(const std::string& name, const std::string& file) {
        setEnvironmentVariable("GIT_AUTHOR_NAME", name);
        setEnvironmentVariable("GIT_AUTHOR_EMAIL", name + "@example.org");
        commitFile(repositoryPath(), file, std::to_string(++numberOfCommits_), "Message");
    }
    using Infos = std::optional<std::vector<std::shared_ptr<RVGitContributionInfo>>>;
    static std::vector<std::string> texts(const Infos& infos) {
        std::vector<std::string> list;
        if (infos)
            for (const auto& info : *infos)
                list.push_back(std::to_string(info->numberOfCommits()) + " " +
                               *info->author()->displayName());
        return list;
    }

private:
    int numberOfCommits_ = 0;
};

TEST_F(RVGitContributionInfoTest, ListsAuthorsWithThoseOfMostCommitsFirst) {
    commitAs("Ada", "a");
    commitAs("Bob", "b");
    commitAs("Bob", "a");
    auto infos =
        RVGitContributionInfo::allContributionInfosForRepository(repository(), "main", 0, 0);
    EXPECT_THAT(texts(infos), ElementsAre("2 Bob <Bob@example.org>", "1 Ada <Ada@example.org>"));
    ASSERT_TRUE(infos && !infos->empty());
    EXPECT_EQ(infos->front()->revision(), "main");
    EXPECT_EQ(infos->front()->filePaths(), std::nullopt);
}

TEST_F(RVGitContributionInfoTest, CountsOnlyCommitsThatChangeTheFiles) {
    commitAs("Ada", "a");
    commitAs("Bob", "b");
    commitAs("Bob", "a");
    std::vector<std::string> filePaths = {"b"};
    auto infos = RVGitContributionInfo::allContributionInfosForRepository(repository(), "main",
                                                                          filePaths, 0, 0);
    EXPECT_THAT(texts(infos), ElementsAre("1 Bob <Bob@example.org>"));
    ASSERT_TRUE(infos && !infos->empty());
    EXPECT_EQ(infos->front()->filePaths(), filePaths);
}

TEST_F(RVGitContributionInfoTest, TheLimitIsANumberOfCommits) {
    commitAs("Ada", "a");
    commitAs("Bob", "b");
    EXPECT_THAT(
        texts(RVGitContributionInfo::allContributionInfosForRepository(repository(), "main", 1, 0)),
        ElementsAre("1 Bob <Bob@example.org>"));
}

TEST_F(RVGitContributionInfoTest, CountsCommittersOnRequest) {
    commitAs("Ada", "a");
    EXPECT_THAT(texts(RVGitContributionInfo::allContributionInfosForRepository(
                    repository(), "main", 0, RVGitContributionInfoOptionCommitters)),
                ElementsAre("1 " + std::string(userName) + " <" + userEmail + ">"));
    EXPECT_THAT(
        texts(RVGitContributionInfo::allContributionInfosForRepository(repository(), "main", 0, 2)),
        ElementsAre("1 Ada <Ada@example.org>"));
}

TEST_F(RVGitContributionInfoTest, FailureOfGitIsAnError) {
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitContributionInfo::allContributionInfosForRepository(
                repository(), "nonsense", 0, 0, error);
        },
        failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitContributionInfoTest, AFactoryMakesOneWithoutFilePaths) {
    auto author = RVGitActor::actorWithName("Ada", "ada@example.org");
    auto info = RVGitContributionInfo::contributionInfoWithAuthor(author, 3, "main");
    EXPECT_EQ(info->author(), author);
    EXPECT_EQ(info->numberOfCommits(), 3u);
    EXPECT_EQ(info->revision(), "main");
    EXPECT_EQ(info->filePaths(), std::nullopt);
}

TEST_F(RVGitContributionInfoTest, NeedsAnAuthor) {
    EXPECT_THROW(RVGitContributionInfo(nullptr, 1, "main", std::nullopt),
                 RVInvalidParameterException);
}
