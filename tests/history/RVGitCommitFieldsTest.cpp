#include "RVGit/command/RVGitActor.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/objects/RVGitTree.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

const std::string someHash(40, 'a');

RVDate seconds(std::int64_t count) {
    return RVDate(std::chrono::seconds(count));
}

// What a commit says of itself and takes from its setters, without a listing around it.
class RVGitCommitFieldsTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitCommit> headCommit() {
        auto commit = RVGitCommit::commitForCommitHash("HEAD", repository());
        EXPECT_NE(commit, nullptr);
        return commit;
    }

    std::shared_ptr<RVGitCommit> commitWithMessage(std::optional<std::string> message) {
        return RVGitCommit::commitWithRepository(repository(), someHash, std::nullopt, {}, nullptr,
                                                 std::nullopt, nullptr, std::nullopt,
                                                 std::move(message));
    }
};

TEST_F(RVGitCommitFieldsTest, SubversionFieldsComeFromTheMessage) {
    makeCommit("Subject\n\ngit-svn-id: https://host/a@b/trunk@1234 0a-1b-2c\n");
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    EXPECT_TRUE(commit->isSVNCommit());
    EXPECT_EQ(commit->SVNRepositoryURL(), "https://host/a@b/trunk");
    EXPECT_EQ(commit->SVNRevision(), "1234");
    EXPECT_EQ(commit->SVNRepositoryUUID(), "0a-1b-2c");
    EXPECT_TRUE(commit->isSVNCommit());

    for (const char* message :
         {"git-svn-id: url@x 0a", "git-svn-id: @1 0a", "Git-svn-id: u@1 0a", "git-svn-id:u@1 0a"}) {
        const auto other = commitWithMessage(message);
        EXPECT_FALSE(other->isSVNCommit()) << message;
        EXPECT_EQ(other->SVNRepositoryURL(), std::nullopt);
    }
    const auto later = commitWithMessage("git-svn-id: broken\n\ngit-svn-id: u@1 f");
    EXPECT_TRUE(later->isSVNCommit());
    EXPECT_EQ(later->SVNRepositoryURL(), "u");
}

TEST_F(RVGitCommitFieldsTest, SubjectAndBodyAreDerivedFromTheMessage) {
    const auto blank = commitWithMessage("  One line \n");
    EXPECT_EQ(blank->subject(), "One line");
    EXPECT_EQ(blank->body(), std::nullopt);
    EXPECT_EQ(blank->message(), "  One line \n");

    const auto two = commitWithMessage(" Subject \nmore \n\n\n Body \n");
    EXPECT_EQ(two->subject(), " Subject \nmore ");
    EXPECT_EQ(two->body(), "Body");

    const auto emptyBody = commitWithMessage("Subject\n\n");
    EXPECT_EQ(emptyBody->subject(), "Subject");
    EXPECT_EQ(emptyBody->body(), "");

    const auto absent = commitWithMessage(std::nullopt);
    EXPECT_EQ(absent->subject(), std::nullopt);
    EXPECT_EQ(absent->body(), std::nullopt);
}

TEST_F(RVGitCommitFieldsTest, DerivingAgainLeavesWhatTheMessageDoesNotHold) {
    const auto commit = commitWithMessage("Old\n\nbody\n\ngit-svn-id: u@1 f");
    commit->setSubjectFromCommitMessage("New");
    commit->setBodyFromCommitMessage("New");
    commit->setSVNInfoFromCommitMessage("New");
    EXPECT_EQ(commit->subject(), "New");
    EXPECT_EQ(commit->body(), "body\n\ngit-svn-id: u@1 f");
    EXPECT_TRUE(commit->isSVNCommit());
    commit->setSVNInfoFromCommitMessage("git-svn-id: v@2 e");
    EXPECT_EQ(commit->SVNRepositoryURL(), "v");
    EXPECT_EQ(commit->SVNRevision(), "2");
    EXPECT_EQ(commit->SVNRepositoryUUID(), "e");
}

TEST_F(RVGitCommitFieldsTest, ACommitMadeByHandHasWhatItWasGiven) {
    const auto author = RVGitActor::actorWithName("Ada", "a@b");
    const auto committer = RVGitActor::actorWithName("Grace", "g@h");
    const auto signature = RVGitSignature::signatureWithName("n", "e", "f", "k", "G");
    const auto commit = RVGitCommit::commitWithRepository(
        repository(), someHash, "tree", {"p1", "p2"}, author, seconds(1), committer, seconds(2),
        "Subject\n\nBody", signature);
    EXPECT_EQ(commit->commitHash(), someHash);
    EXPECT_EQ(commit->objectHash(), someHash);
    EXPECT_EQ(commit->treeHash(), "tree");
    EXPECT_THAT(commit->parentCommitHashes(), ElementsAre("p1", "p2"));
    EXPECT_EQ(commit->author(), author);
    EXPECT_EQ(commit->authorDate(), seconds(1));
    EXPECT_EQ(commit->committer(), committer);
    EXPECT_EQ(commit->committerDate(), seconds(2));
    EXPECT_EQ(commit->subject(), "Subject");
    EXPECT_EQ(commit->body(), "Body");
    EXPECT_EQ(commit->signature(), signature);
    EXPECT_EQ(commitWithMessage("x")->signature(), nullptr);
    EXPECT_EQ(commitWithMessage("x")->author(), nullptr);
}

TEST_F(RVGitCommitFieldsTest, ABlankCommitIsValid) {
    const RVGitCommit commit;
    EXPECT_TRUE(commit.isCommitObject());
    EXPECT_EQ(commit.repository(), nullptr);
    EXPECT_EQ(commit.commitHash(), std::nullopt);
    EXPECT_EQ(commit.shortObjectHash(), std::nullopt);
    EXPECT_THAT(commit.parentCommitHashes(), IsEmpty());
    EXPECT_EQ(commit.author(), nullptr);
    EXPECT_EQ(commit.authorDate(), std::nullopt);
    EXPECT_EQ(commit.message(), std::nullopt);
    EXPECT_EQ(commit.messageView(), std::nullopt);
    EXPECT_EQ(commit.subject(), std::nullopt);
    EXPECT_EQ(commit.signature(), nullptr);
    EXPECT_EQ(commit.refs(), std::nullopt);
    EXPECT_FALSE(commit.isMergeCommit());
    EXPECT_FALSE(commit.isRootCommit());
}

TEST_F(RVGitCommitFieldsTest, EveryFieldCanBeSet) {
    makeCommit("Subject\n\nBody");
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    const auto author = RVGitActor::actorWithName("Ada", "a@b");
    const auto signature = RVGitSignature::signatureWithName("n", "e", "f", "k", "G");
    const auto tree = RVGitTree::treeWithRepository(repository(), someHash, {});
    const auto ref = RVGitRef::refWithRepository(repository(), "refs/heads/x", someHash);
    commit->setCommitHash(someHash);
    commit->setTreeHash("tree");
    commit->setParentCommitHashes({"a", "b"});
    commit->setAuthor(author);
    commit->setAuthorDate(seconds(3));
    commit->setCommitter(nullptr);
    commit->setCommitterDate(std::nullopt);
    commit->setMessage("M");
    commit->setRefs(RVGitCommit::Refs{ref});
    commit->setSignature(signature);
    commit->setTopoOrder(1ULL << 40);
    commit->setSVNCommit(true);
    commit->setSVNRepositoryUUID("uuid");
    commit->setSVNRepositoryURL("url");
    commit->setSVNRevision("r");
    commit->setTree(tree);
    EXPECT_EQ(commit->commitHash(), someHash);
    EXPECT_EQ(commit->objectHash(), someHash);
    EXPECT_EQ(commit->treeHash(), "tree");
    EXPECT_THAT(commit->parentCommitHashes(), ElementsAre("a", "b"));
    EXPECT_TRUE(commit->isMergeCommit());
    EXPECT_EQ(commit->author(), author);
    EXPECT_EQ(commit->authorDate(), seconds(3));
    EXPECT_EQ(commit->committer(), nullptr);
    EXPECT_EQ(commit->committerDate(), std::nullopt);
    EXPECT_EQ(commit->message(), "M");
    EXPECT_EQ(commit->subject(), "Subject");
    EXPECT_EQ(commit->body(), "Body");
    EXPECT_THAT(commit->refs(), Optional(ElementsAre(ref)));
    EXPECT_EQ(commit->signature(), signature);
    EXPECT_EQ(commit->topoOrder(), 1ULL << 40);
    EXPECT_TRUE(commit->isSVNCommit());
    EXPECT_EQ(commit->SVNRepositoryUUID(), "uuid");
    EXPECT_EQ(commit->SVNRepositoryURL(), "url");
    EXPECT_EQ(commit->SVNRevision(), "r");
    EXPECT_EQ(commit->tree(), tree);
    commit->setSubject(std::nullopt);
    commit->setBody("B");
    commit->setRefs(std::nullopt);
    EXPECT_EQ(commit->subject(), std::nullopt);
    EXPECT_EQ(commit->body(), "B");
    EXPECT_EQ(commit->refs(), std::nullopt);
}

TEST_F(RVGitCommitFieldsTest, WhatIsComputedFromTheParentsChangesWithThem) {
    makeCommit();
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    std::vector<std::string> told;
    const auto tell = [&](std::string_view field) { told.emplace_back(field); };
    const auto merge = commit->observe("mergeCommit", [&](std::string_view field) {
        tell(field);
        EXPECT_TRUE(commit->isMergeCommit());
    });
    const auto root = commit->observe("rootCommit", tell);
    const auto parents = commit->observe("parentCommitHashes", tell);
    const auto message = commit->observe("message", tell);
    commit->setParentCommitHashes({"a", "b"});
    EXPECT_THAT(told,
                testing::UnorderedElementsAre("mergeCommit", "rootCommit", "parentCommitHashes"));
    told.clear();
    commit->setMessage("new");
    commit->setTreeHash("new");
    EXPECT_THAT(told, ElementsAre("message"));
}

TEST_F(RVGitCommitFieldsTest, ItemsAndCommitsOfAReflogFormatAreCommitsToo) {
    const std::string record = someHash + "\x1f\x1d\x1f" + "commit: Subject" + "\x1f\x1d\x1f" +
                               "HEAD@{2024-01-01T10:00:00Z}";
    RVGitCommitOutputParser parser(record, RVGitCommitOutputParser::gitRefLogPrettyFormat(), false);
    ASSERT_TRUE(parser.parse());
    const auto commit = RVGitCommit::commitWithRepository(repository(), parser.commits().at(0));
    EXPECT_EQ(commit->commitHash(), someHash);
    EXPECT_EQ(commit->message(), "commit: Subject");
    EXPECT_EQ(commit->committerDate(), seconds(1704103200));
    EXPECT_EQ(commit->authorDate(), std::nullopt);
    ASSERT_NE(commit->author(), nullptr);
    EXPECT_EQ(commit->author()->displayName(), std::nullopt);
    ASSERT_NE(commit->signature(), nullptr);
}

TEST(RVGitCommitRepeatedFieldsTest, EveryPlaceCountsInOrder) {
    using namespace std::string_literals;
    const std::string boundary = "\x1f\x1d\x1f";
    const auto item = [&](std::vector<std::string> format, const std::vector<std::string>& values)
        -> std::optional<RVGitCommitOutputParserResultItem> {
        std::string record;
        for (const std::string& value : values)
            record += (record.empty() ? "" : boundary) + value;
        RVGitCommitOutputParser parser(record + "\0"s, std::move(format));
        EXPECT_TRUE(parser.parse());
        if (parser.commits().empty())
            return std::nullopt;
        return parser.commits().front();
    };
    // The last counts.
    EXPECT_EQ(item({"%H", "%an", "%an"}, {"1", "first", "last"})->authorName(), "last");
    // But what it ignores leaves the one ahead of it.
    EXPECT_EQ(item({"%H", "%GP", "%GP"}, {"1", "key", "%GP"})->GPGKeyIdentifier(), "key");
    EXPECT_EQ(item({"%H", "%GP", "%GP"}, {"1", "%GP", "key"})->GPGKeyIdentifier(), "key");
    EXPECT_EQ(item({"%H", "%GP", "%GP"}, {"1", "%GP", "%GP"})->GPGKeyIdentifier(), std::nullopt);
    const auto signer = item({"%H", "%GS", "%GS"}, {"1", "A <a@b>", "nobody"});
    EXPECT_EQ(signer->GPGUsername(), "A");
    EXPECT_EQ(signer->GPGEmail(), "a@b");
    EXPECT_EQ(item({"%GS", "%H", "%GS"}, {"A <a@b>", "1", "B <b@b>"})->GPGUsername(), "B");
    // Any selector without a brace drops the record.
    EXPECT_FALSE(item({"%gD", "%gD"}, {"none", "stash@{2024-01-01T10:00:00+01:00}"}));
    EXPECT_FALSE(item({"%gD", "%gD"}, {"stash@{2024-01-01T10:00:00+01:00}", "none"}));
}

TEST(RVGitCommitPeopleTest, AuthorAndCommitterAreReadWithoutACopy) {
    using namespace std::string_literals;
    const std::string boundary = "\x1f\x1d\x1f";
    RVGitCommitOutputParser parser("A" + boundary + "a@b" + boundary + "C" + boundary + "c@d\0"s,
                                   {"%an", "%ae", "%cn", "%ce"});
    ASSERT_TRUE(parser.parse());
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath("/nowhere");
    const auto commit = RVGitCommit::commitWithRepository(repository, parser.commits().front());
    const auto expectViews = [&](std::optional<std::string_view> name,
                                 std::optional<std::string_view> email) {
        EXPECT_EQ(commit->authorNameView(), name);
        EXPECT_EQ(commit->authorEmailView(), email);
        EXPECT_EQ(commit->committerNameView(), "C");
        EXPECT_EQ(commit->committerEmailView(), "c@d");
    };
    expectViews("A", "a@b");
    const auto author = commit->author();
    ASSERT_TRUE(author);
    const auto committer = commit->committer();
    EXPECT_EQ(author->name(), "A");
    expectViews("A", "a@b");
    // It is one object, whatever else is made.
    author->setName("B");
    expectViews("B", "a@b");
    (void)commit->signature();
    EXPECT_EQ(commit->author(), author);
    EXPECT_EQ(commit->committer(), committer);
    expectViews("B", "a@b");
    commit->setAuthor(nullptr);
    expectViews(std::nullopt, std::nullopt);
    EXPECT_EQ(RVGitCommit().authorNameView(), std::nullopt);
}

}  // namespace
