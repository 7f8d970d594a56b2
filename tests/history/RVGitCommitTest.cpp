#include "RVGit/history/RVGitCommit.h"

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitActor.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/repository/RVGitRef.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string someHash(40, 'a');

RVDate seconds(std::int64_t count) {
    return RVDate(std::chrono::seconds(count));
}

class RVGitCommitTest : public RVGitRepositoryTestCase {
protected:
    RVGitCommit::List allCommits(const std::vector<std::string>& revisions = {},
                                 const std::optional<RVOptions>& options = std::nullopt) {
        std::optional<RVError> error;
        auto commits =
            RVGitCommit::allCommitsForRevisions(revisions, {}, repository(), options, &error);
        EXPECT_TRUE(commits);
        EXPECT_FALSE(error);
        return commits.value_or(RVGitCommit::List());
    }

    std::shared_ptr<RVGitCommit> headCommit() {
        auto commit = RVGitCommit::commitForCommitHash("HEAD", repository());
        EXPECT_NE(commit, nullptr);
        return commit;
    }

    // Writes a commit object as it is, checks it out and returns its hash.
    std::string writeCommitObject(const std::string& headersAndMessage) {
        const std::string tree = gitInRepository({"write-tree"});
        std::string hash = git({"hash-object", "-t", "commit", "-w", "--literally", "--stdin"},
                               repositoryPath(), "tree " + tree + "\n" + headersAndMessage);
        hash.erase(hash.find('\n'));
        git({"update-ref", "refs/heads/main", hash}, repositoryPath());
        return hash;
    }
};

const std::string identityLines =
    "author Ada <a@b> 1 +0000\n"
    "committer Ada <a@b> 2 +0000\n";

TEST_F(RVGitCommitTest, ListsCommitsWithAllFields) {
    setDates("1577934245 +0100", "1577934300 -0500");
    const std::string first = makeCommit("First");
    const std::string second = makeCommit("Second\nline\n\nBody one\n\nBody two\n");
    gitInRepository({"tag", "-a", "-m", "x", "v1"});
    const auto commits = allCommits();
    ASSERT_THAT(commits, SizeIs(2));

    const RVGitCommit& newest = *commits[0];
    EXPECT_TRUE(newest.isCommitObject());
    EXPECT_EQ(newest.repository(), repository());
    EXPECT_EQ(newest.commitHash(), second);
    EXPECT_EQ(newest.objectHash(), second);
    EXPECT_EQ(newest.shortObjectHash(), second.substr(0, 8));
    EXPECT_EQ(newest.treeHash(), gitInRepository({"rev-parse", "HEAD^{tree}"}));
    EXPECT_THAT(newest.parentCommitHashes(), ElementsAre(first));
    EXPECT_EQ(newest.author()->displayName(), std::string(userName) + " <" + userEmail + ">");
    EXPECT_EQ(newest.authorDate(), seconds(1577934245));
    EXPECT_EQ(newest.committer()->name(), userName);
    EXPECT_EQ(newest.committer()->email(), userEmail);
    EXPECT_EQ(newest.committerDate(), seconds(1577934300));
    EXPECT_EQ(newest.message(), "Second\nline\n\nBody one\n\nBody two");
    EXPECT_EQ(newest.subject(), "Second\nline");
    EXPECT_EQ(newest.body(), "Body one\n\nBody two");
    EXPECT_FALSE(newest.isSVNCommit());
    EXPECT_EQ(newest.SVNRevision(), std::nullopt);
    EXPECT_EQ(newest.tree(), nullptr);
    EXPECT_EQ(newest.topoOrder(), 0U);
    ASSERT_TRUE(newest.refs());
    std::vector<std::string> names;
    for (const auto& ref : *newest.refs()) {
        names.push_back(*ref->fullRefName());
        EXPECT_EQ(ref->commitHash(), second);
        EXPECT_EQ(ref->repository(), repository());
    }
    EXPECT_THAT(names, ElementsAre("HEAD", "refs/heads/main", "refs/tags/v1"));
    ASSERT_NE(newest.signature(), nullptr);
    EXPECT_EQ(newest.signature()->status(), std::nullopt);
    EXPECT_EQ(newest.signature()->name(), std::nullopt);

    EXPECT_EQ(commits[1]->commitHash(), first);
    EXPECT_EQ(commits[1]->refs(), std::nullopt);
    EXPECT_EQ(commits[1]->topoOrder(), 1U);
    EXPECT_EQ(commits[1]->subject(), "First");
    EXPECT_EQ(commits[1]->body(), std::nullopt);
}

TEST_F(RVGitCommitTest, GettersSayTheSameOnceTheFieldsAreMade) {
    makeCommit("Parent");
    makeCommit("Subject\n\nBody\n\ngit-svn-id: https://host/trunk@42 01-ab");
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    const auto texts = [&] {
        return std::vector<std::optional<std::string>>{
            commit->commitHash(),
            commit->objectHash(),
            commit->treeHash(),
            commit->subject(),
            commit->body(),
            commit->message(),
            std::string(commit->commitHashView().value_or("none")),
            std::string(commit->messageView().value_or("none")),
            std::string(commit->parentCommitHashViews().at(0))};
    };
    const auto before = texts();
    const auto dates = std::pair(commit->authorDate(), commit->committerDate());
    EXPECT_TRUE(commit->isSVNCommit());
    EXPECT_EQ(commit->tree(), nullptr);
    const auto parents = commit->parentCommitHashes();
    ASSERT_NE(commit->author(), nullptr);
    EXPECT_EQ(texts(), before);
    EXPECT_EQ(std::pair(commit->authorDate(), commit->committerDate()), dates);
    EXPECT_EQ(commit->parentCommitHashes(), parents);
    EXPECT_EQ(commit->parentCount(), 1U);
    EXPECT_TRUE(commit->isSVNCommit());
    EXPECT_EQ(commit->tree(), nullptr);
}

TEST_F(RVGitCommitTest, CommitsOutliveTheirListing) {
    makeCommit("First");
    makeCommit("Second");
    auto commits = allCommits();
    const auto first = commits.back();
    commits.clear();
    EXPECT_EQ(first->message(), "First");
    EXPECT_EQ(first->author()->name(), userName);
}

TEST_F(RVGitCommitTest, MergesAndRootsAreToldByTheNumberOfParents) {
    makeCommit("root");
    const std::string root = gitInRepository({"rev-parse", "HEAD"});
    for (const char* branch : {"one", "two", "three"}) {
        gitInRepository({"checkout", "-q", "-b", branch, root});
        gitInRepository({"commit", "-q", "--allow-empty", "-m", branch});
    }
    gitInRepository({"checkout", "-q", "main"});
    gitInRepository({"merge", "-q", "--no-ff", "-m", "two parents", "one"});
    gitInRepository({"merge", "-q", "--no-ff", "-m", "octopus", "two", "three"});

    const auto octopus = headCommit();
    ASSERT_TRUE(octopus);
    EXPECT_THAT(
        octopus->parentCommitHashes(),
        ElementsAre(gitInRepository({"rev-parse", "HEAD^1"}), gitInRepository({"rev-parse", "two"}),
                    gitInRepository({"rev-parse", "three"})));
    EXPECT_TRUE(octopus->isMergeCommit());
    EXPECT_FALSE(octopus->isRootCommit());
    const auto merge = RVGitCommit::commitForCommitHash("HEAD^1", repository());
    ASSERT_TRUE(merge);
    EXPECT_EQ(merge->parentCount(), 2U);
    EXPECT_TRUE(merge->isMergeCommit());
    EXPECT_FALSE(merge->isRootCommit());
    const auto plain = RVGitCommit::commitForCommitHash("one", repository());
    ASSERT_TRUE(plain);
    EXPECT_FALSE(plain->isMergeCommit());
    EXPECT_TRUE(plain->isRootCommit());
    const auto first = RVGitCommit::commitForCommitHash(root, repository());
    ASSERT_TRUE(first);
    EXPECT_THAT(first->parentCommitHashes(), IsEmpty());
    EXPECT_FALSE(first->isMergeCommit());
    EXPECT_FALSE(first->isRootCommit());
}

TEST_F(RVGitCommitTest, AnEmptyMessageIsEmptyAndNotAbsent) {
    gitInRepository({"commit", "--allow-empty", "--allow-empty-message", "-m", ""});
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    EXPECT_EQ(commit->message(), "");
    EXPECT_EQ(commit->subject(), "");
    EXPECT_EQ(commit->body(), std::nullopt);
}

TEST_F(RVGitCommitTest, CommitsInAnotherEncodingAreReadAsText) {
    makeCommit("Größe");
    gitInRepository({"-c", "i18n.commitEncoding=ISO-8859-1", "-c", "user.name=Zo\xeb", "commit",
                     "--allow-empty", "-m", "caf\xe9"});
    const auto declared = headCommit();
    ASSERT_TRUE(declared);
    EXPECT_EQ(declared->message(), "café");
    EXPECT_EQ(declared->author()->name(), "Zoë");

    const std::string parent = gitInRepository({"rev-parse", "HEAD"});
    writeCommitObject("parent " + parent + "\n" + identityLines + "\nundeclared caf\xe9\n");
    const auto commits = allCommits();
    ASSERT_THAT(commits, SizeIs(3));
    EXPECT_EQ(commits[0]->message(), "undeclared café");
    EXPECT_EQ(commits[1]->message(), "café");
    EXPECT_EQ(commits[2]->message(), "Größe");
}

TEST_F(RVGitCommitTest, NamesKeepTheirQuotes) {
    gitInRepository({"-c", "user.name=Joe \"J\" O'Neil, (x) | y", "commit", "--allow-empty", "-m",
                     "a \"b\" 'c' %H (HEAD -> x)"});
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    EXPECT_EQ(commit->author()->name(), "Joe \"J\" O'Neil, (x) | y");
    EXPECT_EQ(commit->message(), "a \"b\" 'c' %H (HEAD -> x)");
}

// The format's "%an" is the name as it stands in the commit; the mailmap counts where git searches.
TEST_F(RVGitCommitTest, TheMailmapCountsForSearchesOnly) {
    writeFile(repositoryPath() + "/.mailmap", "Lovelace <ada@new.org> <ada@old.org>\n");
    gitInRepository({"add", ".mailmap"});
    gitInRepository({"-c", "user.name=Ada", "-c", "user.email=ada@old.org", "commit", "-m", "one"});
    makeCommit();
    const auto found = allCommits(
        {}, RVOptions{{RVGitLogOptionSearchAuthorPatterns, std::vector<std::string>{"lovelace"}}});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0]->author()->displayName(), "Ada <ada@old.org>");
}

TEST_F(RVGitCommitTest, AMessageOfAMegabyteIsReadWhole) {
    std::string message = "Subject\n\n";
    while (message.size() < (1 << 20))
        message += "A line of the body, number " + std::to_string(message.size()) + "\n";
    message += "end";
    writeFile("message", message);
    gitInRepository({"commit", "--allow-empty", "-F", scratchPath("message")});
    makeCommit("after");
    const auto commits = allCommits();
    ASSERT_THAT(commits, SizeIs(2));
    EXPECT_EQ(commits[1]->message(), message);
    EXPECT_EQ(commits[1]->subject(), "Subject");
}

TEST_F(RVGitCommitTest, AMessageWithTheFieldBoundaryFailsTheListing) {
    makeCommit("good");
    makeCommit("bad \x1f\x1d\x1f message");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitCommit::allCommitsForRevisions({}, {}, repository(), std::nullopt, error);
        },
        failsWith(RVGitOutputParserError));
}

TEST_F(RVGitCommitTest, ADateBeyond32BitsSaturates) {
    makeCommit();
    writeCommitObject("author A <a@b> 4000000000 +0000\ncommitter A <a@b> 2147483648 +0000\n\nx\n");
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    EXPECT_EQ(commit->authorDate(), seconds(2147483647));
    EXPECT_EQ(commit->committerDate(), seconds(2147483647));
}

TEST_F(RVGitCommitTest, ADetachedHEADIsADecorationOfItsOwn) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    const auto commit = headCommit();
    ASSERT_TRUE(commit);
    ASSERT_TRUE(commit->refs());
    ASSERT_THAT(*commit->refs(), SizeIs(2));
    EXPECT_EQ((*commit->refs())[0]->fullRefName(), "HEAD");
    EXPECT_EQ((*commit->refs())[1]->fullRefName(), "refs/heads/main");
}

TEST_F(RVGitCommitTest, ListingsOverrideTheDecorateOption) {
    makeCommit();
    const auto commits = allCommits({}, RVOptions{{RVGitLogOptionDecorate, false}});
    EXPECT_TRUE(commits[0]->refs());
}

TEST_F(RVGitCommitTest, TheOrderRunsOnFromTheOffset) {
    for (int count = 0; count < 4; ++count)
        makeCommit();
    const auto page =
        allCommits({}, RVOptions{{RVGitLogOptionOffset, 1}, {RVGitLogOptionLimit, 2}});
    ASSERT_THAT(page, SizeIs(2));
    EXPECT_EQ(page[0]->topoOrder(), 1U);
    EXPECT_EQ(page[1]->topoOrder(), 2U);
    EXPECT_EQ(page[0]->commitHash(), gitInRepository({"rev-parse", "HEAD~1"}));

    const auto beyond = allCommits({}, RVOptions{{RVGitLogOptionOffset, 1000}});
    EXPECT_THAT(beyond, IsEmpty());
}

TEST_F(RVGitCommitTest, TheOrderStartsFromTheLow32BitsOfTheOffset) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = stringByJoiningComponents(std::vector<std::string>(11, "1"),
                                                                "\x1f\x1d\x1f")});
    const auto commits = allCommits({}, RVOptions{{RVGitLogOptionOffset, (1LL << 32) + 5}});
    ASSERT_THAT(commits, SizeIs(1));
    EXPECT_EQ(commits[0]->topoOrder(), 5U);
}

TEST_F(RVGitCommitTest, AnUnbornBranchHasNoCommits) {
    EXPECT_THAT(allCommits(), IsEmpty());
    EXPECT_THAT(*RVGitCommit::allCommitHashesForRevisions({}, {}, repository()), IsEmpty());
    EXPECT_EQ(RVGitCommit::countAllCommitsForRevisions({}, {}, repository()), 0);
}

TEST_F(RVGitCommitTest, LooksUpOneCommit) {
    const std::string first = makeCommit("First");
    makeCommit("Second");
    std::optional<RVError> error;
    const auto commit = RVGitCommit::commitForCommitHash(first, repository(), &error);
    ASSERT_NE(commit, nullptr);
    EXPECT_FALSE(error);
    EXPECT_EQ(commit->message(), "First");

    EXPECT_EQ(RVGitCommit::commitForCommitHash(someHash, repository(), &error), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(RVGitCommit::commitForCommitHash("missing", repository(), &error), nullptr);
    EXPECT_EQ(error->code(), RVGitLogNoSuchRevisionError);
}

TEST_F(RVGitCommitTest, VerifyingAnUnsignedCommitGivesTheStatusN) {
    const std::string hash = makeCommit();
    const auto commit = RVGitCommit::commitForCommitHash(hash, repository(), true);
    ASSERT_NE(commit, nullptr);
    EXPECT_EQ(commit->signature()->status(), "N");
    EXPECT_EQ(commit->signature()->name(), std::nullopt);
    if (isTestedGitAtLeast("2.20")) {
        EXPECT_EQ(commit->signature()->fingerprint(), "");
    } else {
        EXPECT_EQ(commit->signature()->fingerprint(), std::nullopt);
    }
}

TEST_F(RVGitCommitTest, VerifyingASignedCommitUsesTheAllowedSigners) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const auto key = runProgram({"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", "key"});
    ASSERT_EQ(key.exitCode, 0) << key.standardError;
    gitInRepository({"config", "gpg.format", "ssh"});
    gitInRepository({"config", "user.signingKey", scratchPath("key")});
    gitInRepository({"commit", "--allow-empty", "-S", "-m", "signed"});
    const std::string signers =
        writeFile("signers", std::string(userEmail) + " " + readFile("key.pub"));
    const auto commits = allCommits({}, RVOptions{{RVGitLogOptionVerifiesSignatures, true},
                                                  {RVGitLogOptionAllowedSignersFile, signers}});
    ASSERT_THAT(commits, SizeIs(1));
    EXPECT_EQ(commits[0]->signature()->status(), "G");
    EXPECT_THAT(commits[0]->signature()->signingKey().value_or(""), testing::StartsWith("SHA256:"));
    // The principal of an SSH key is an address alone.
    EXPECT_EQ(commits[0]->signature()->name(), std::nullopt);
}

TEST_F(RVGitCommitTest, RangesLeadFromTheSecondRevisionToTheFirst) {
    const std::string base = makeCommit("base");
    gitInRepository({"branch", "other"});
    const std::string left = makeCommit("left");
    gitInRepository({"checkout", "-q", "other"});
    gitInRepository({"commit", "-q", "--allow-empty", "-m", "right"});
    const std::string right = gitInRepository({"rev-parse", "HEAD"});

    const auto range = RVGitCommit::allCommitsFromRevision("main", base, repository());
    ASSERT_TRUE(range);
    ASSERT_THAT(*range, SizeIs(1));
    EXPECT_EQ(range->front()->commitHash(), left);
    EXPECT_THAT(*RVGitCommit::allCommitHashesFromRevision("main", base, repository()),
                ElementsAre(left));
    EXPECT_THAT(*RVGitCommit::allCommitHashesFromRevision(base, "main", repository()), IsEmpty());

    const auto both = RVGitCommit::allCommitsByComparingRevision("main", "other", repository());
    ASSERT_TRUE(both);
    ASSERT_THAT(*both, SizeIs(2));
    EXPECT_THAT(*RVGitCommit::allCommitHashesByComparingRevision("main", "other", repository()),
                testing::UnorderedElementsAre(left, right));

    const RVRecordingGit recorder = useRecordingGit();
    (void)RVGitCommit::allCommitsFromRevision("main", base, repository());
    EXPECT_THAT(lastArguments(recorder), testing::Contains(base + "..main"));
    (void)RVGitCommit::allCommitsByComparingRevision("main", "other", repository());
    EXPECT_THAT(lastArguments(recorder), testing::Contains("main...other"));
}

TEST_F(RVGitCommitTest, QueriesTakeRevisionsPathsAndOptions) {
    const std::string first = commitFile(repositoryPath(), "a b", "1", "first");
    const std::string second = commitFile(repositoryPath(), "c", "1", "second");
    gitInRepository({"branch", "old", first});
    EXPECT_THAT(*RVGitCommit::allCommitHashesForRevisions({}, {}, repository()),
                ElementsAre(second, first));
    EXPECT_THAT(*RVGitCommit::allCommitHashesForRevisions({"old"}, {}, repository()),
                ElementsAre(first));
    EXPECT_THAT(*RVGitCommit::allCommitHashesForRevisions({"main"}, {"a b"}, repository()),
                ElementsAre(first));
    EXPECT_THAT(*RVGitCommit::allCommitHashesForRevisions(
                    {}, {}, repository(),
                    RVOptions{{RVGitLogOptionSearchPatterns, std::vector<std::string>{"SECOND"}}}),
                ElementsAre(second));
    EXPECT_EQ(RVGitCommit::countAllCommitsForRevisions({}, {}, repository()), 2);
    EXPECT_EQ(RVGitCommit::countAllCommitsForRevisions({"old"}, {}, repository()), 1);
    EXPECT_EQ(RVGitCommit::countAllCommitsForRevisions({}, {"missing"}, repository()), 0);
}

TEST_F(RVGitCommitTest, AnEmptyListOfRevisionsIsPassedAsItIs) {
    makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    allCommits();
    auto arguments = lastArguments(recorder);
    EXPECT_THAT(arguments, testing::Not(testing::Contains("HEAD")));
    EXPECT_EQ(arguments.back(), "--");
    EXPECT_EQ(arguments[arguments.size() - 2], "--decorate=full");
}

TEST_F(RVGitCommitTest, OneCommitIsAskedForWithALimit) {
    const std::string hash = makeCommit();
    const RVRecordingGit recorder = useRecordingGit();
    (void)RVGitCommit::commitForCommitHash(hash, repository());
    auto arguments = lastArguments(recorder);
    EXPECT_THAT(std::vector(arguments.end() - 4, arguments.end()),
                ElementsAre("-n1", "--decorate=full", hash, "--"));
    EXPECT_THAT(arguments, testing::Not(testing::Contains(testing::HasSubstr("%G?"))));
    (void)RVGitCommit::commitForCommitHash(hash, repository(), true);
    EXPECT_THAT(lastArguments(recorder), testing::Contains(testing::HasSubstr("%G?")));
}

TEST_F(RVGitCommitTest, FailuresAreAbsentOrNotFound) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_EQ(RVGitCommit::allCommitsForRevisions({"x"}, {}, repository(), std::nullopt, &error),
              std::nullopt);
    EXPECT_EQ(error.value().code(), 1900);
    error.reset();
    EXPECT_EQ(
        RVGitCommit::allCommitHashesForRevisions({"x"}, {}, repository(), std::nullopt, &error),
        std::nullopt);
    EXPECT_EQ(error.value().code(), 1900);
    error.reset();
    EXPECT_EQ(
        RVGitCommit::countAllCommitsForRevisions({"x"}, {}, repository(), std::nullopt, &error),
        RVNotFound);
    EXPECT_EQ(error.value().code(), 1900);
    EXPECT_EQ(RVGitCommit::allCommitsForRevisions({"x"}, {}, repository()), std::nullopt);
}

TEST_F(RVGitCommitTest, QueriesNeedARepository) {
    EXPECT_THROW((void)RVGitCommit::allCommitsForRevisions({}, {}, nullptr),
                 RVInvalidParameterException);
    EXPECT_THROW((void)RVGitCommit::commitForCommitHash(someHash, nullptr),
                 RVInvalidParameterException);
    EXPECT_THROW((void)RVGitCommit::countAllCommitsForRevisions({}, {}, nullptr),
                 RVInvalidParameterException);
}

}  // namespace
