#include "RVGit/repository/RVGitRef.h"

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/worktree/RVGitStash.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

using std::nullopt;
using testing::ElementsAre;

namespace {

constexpr auto unknownRefType = static_cast<RVGitRefType>(99);
const std::string someHash(40, 'a');

}  // namespace

// Names.

TEST(RVGitRefNameTest, PrefixOfEachType) {
    EXPECT_EQ(RVGitRef::refPrefixForRefType(RVGitRefTypeNone), nullopt);
    EXPECT_EQ(RVGitRef::refPrefixForRefType(RVGitRefTypeBranch), "refs/heads/");
    EXPECT_EQ(RVGitRef::refPrefixForRefType(RVGitRefTypeRemoteBranch), "refs/remotes/");
    EXPECT_EQ(RVGitRef::refPrefixForRefType(RVGitRefTypeTag), "refs/tags/");
    EXPECT_EQ(RVGitRef::refPrefixForRefType(RVGitRefTypeStash), "refs/");
    EXPECT_EQ(RVGitRef::refPrefixForRefType(unknownRefType), nullopt);
}

TEST(RVGitRefNameTest, TypeThatFollowsFromAName) {
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/heads/main"), RVGitRefTypeBranch);
    EXPECT_EQ(RVGitRef::refTypeForRefName("HEAD"), RVGitRefTypeBranch);
    EXPECT_EQ(RVGitRef::refTypeForRefName("grafted"), RVGitRefTypeBranch);
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/remotes/origin/main"), RVGitRefTypeRemoteBranch);
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/tags/v1"), RVGitRefTypeTag);
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/stash"), RVGitRefTypeStash);
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/notes/commits"), RVGitRefTypeStash);
    EXPECT_EQ(RVGitRef::refTypeForRefName("refs/"), RVGitRefTypeStash);
    EXPECT_EQ(RVGitRef::refTypeForRefName("main"), RVGitRefTypeNone);
    EXPECT_EQ(RVGitRef::refTypeForRefName("head"), RVGitRefTypeNone);
    EXPECT_EQ(RVGitRef::refTypeForRefName("HEAD2"), RVGitRefTypeNone);
    EXPECT_EQ(RVGitRef::refTypeForRefName(""), RVGitRefTypeNone);
}

TEST(RVGitRefNameTest, LongForms) {
    EXPECT_EQ(RVGitRef::makeFullRefName("main", RVGitRefTypeBranch), "refs/heads/main");
    EXPECT_EQ(RVGitRef::makeFullRefName("a/b", RVGitRefTypeBranch), "refs/heads/a/b");
    EXPECT_EQ(RVGitRef::makeFullRefName("/main", RVGitRefTypeBranch), "refs/heads/main");
    EXPECT_EQ(RVGitRef::makeFullRefName("origin/x", RVGitRefTypeRemoteBranch),
              "refs/remotes/origin/x");
    EXPECT_EQ(RVGitRef::makeFullRefName("v1", RVGitRefTypeTag), "refs/tags/v1");
    EXPECT_EQ(RVGitRef::makeFullRefName("stash", RVGitRefTypeStash), "refs/stash");
    EXPECT_EQ(RVGitRef::makeFullRefName("main", RVGitRefTypeNone), "main");
    EXPECT_EQ(RVGitRef::makeFullRefName("HEAD", RVGitRefTypeTag), "HEAD");
    EXPECT_EQ(RVGitRef::makeFullRefName("refs/heads/x", RVGitRefTypeTag), "refs/heads/x");
    EXPECT_EQ(RVGitMakeFullRefName("main", RVGitRefTypeBranch), "refs/heads/main");
}

TEST(RVGitRefNameTest, ShortForms) {
    EXPECT_EQ(RVGitRef::makeRefName("refs/heads/main", RVGitRefTypeBranch), "main");
    EXPECT_EQ(RVGitRef::makeRefName("refs/remotes/origin/x", RVGitRefTypeRemoteBranch), "origin/x");
    EXPECT_EQ(RVGitRef::makeRefName("refs/tags/v1", RVGitRefTypeTag), "v1");
    EXPECT_EQ(RVGitRef::makeRefName("refs/stash", RVGitRefTypeStash), "stash");
    EXPECT_EQ(RVGitRef::makeRefName("main", RVGitRefTypeBranch), "main");
    EXPECT_EQ(RVGitRef::makeRefName("heads/main", RVGitRefTypeBranch), "heads/main");
    EXPECT_EQ(RVGitRef::makeRefName("refs/heads/main", RVGitRefTypeNone), "refs/heads/main");
    EXPECT_EQ(RVGitMakeShortRefName("refs/heads/main", RVGitRefTypeBranch), "main");
}

TEST(RVGitRefNameTest, AShortFormCutsByLengthWithoutLookingAtThePrefix) {
    EXPECT_EQ(RVGitRef::makeRefName("refs/remotes/origin/x", RVGitRefTypeBranch), "s/origin/x");
    EXPECT_EQ(RVGitRef::makeRefName("refs/heads/", RVGitRefTypeBranch), "refs/heads/");
    EXPECT_EQ(RVGitRef::makeRefName("refs/x", RVGitRefTypeBranch), "refs/x");
    EXPECT_EQ(RVGitRef::makeRefName("refs/", RVGitRefTypeStash), "refs/");
    // Characters are counted, so that none is cut apart.
    EXPECT_EQ(RVGitRef::makeRefName("refs/öööööö€x", RVGitRefTypeBranch), "€x");
    EXPECT_EQ(RVGitRef::makeRefName("refs/öööööö", RVGitRefTypeBranch), "refs/öööööö");
}

TEST(RVGitRefNameTest, NamesOfARemotesBranchesOnThisSide) {
    auto name = RVGitRef::makeFullRemoteRefNameWithRemoteName;
    EXPECT_EQ(name("origin", "refs/heads/x"), "refs/remotes/origin/x");
    EXPECT_EQ(name("origin", "x"), "refs/remotes/origin/x");
    EXPECT_EQ(name("origin", "a/b"), "refs/remotes/origin/a/b");
    EXPECT_EQ(name("origin", "HEAD"), "refs/remotes/origin/HEAD");
    EXPECT_EQ(name(".", "x"), "refs/heads/x");
    EXPECT_EQ(name(".", "refs/tags/x"), "refs/tags/x");
    EXPECT_EQ(name(nullopt, "refs/heads/origin/x"), "refs/remotes/origin/x");
    EXPECT_EQ(name(nullopt, "refs/heads/HEAD"), "HEAD");
    EXPECT_EQ(RVGitMakeFullRemoteRefName("origin", "refs/heads/x"), "refs/remotes/origin/x");
}

TEST(RVGitRefNameTest, NamesOnTheRemotesSide) {
    auto name = RVGitRef::makeFullRefNameForRemoteWithName;
    EXPECT_EQ(name("origin", "refs/remotes/origin/main"), "refs/heads/main");
    EXPECT_EQ(name("origin", "refs/remotes/origin/a/b"), "refs/heads/a/b");
    EXPECT_EQ(name(nullopt, "refs/remotes/main"), "refs/heads/main");
    EXPECT_EQ(name("origin", "refs/heads/main"), nullopt);
    EXPECT_EQ(name("origin", "refs/tags/v1"), nullopt);
    EXPECT_EQ(name("origin", "main"), nullopt);
    EXPECT_EQ(name("longer-name", "refs/remotes/o/x"), nullopt);
    EXPECT_EQ(RVGitMakeFullRefNameForRemote("origin", "refs/remotes/origin/main"),
              "refs/heads/main");
}

TEST(RVGitRefNameTest, TheRemotesNameIsCutByLengthWithoutLookingAtIt) {
    auto name = RVGitRef::makeFullRefNameForRemoteWithName;
    EXPECT_EQ(name("abc", "refs/remotes/origin/x"), "refs/heads/gin/x");
    EXPECT_EQ(name("é", "refs/remotes/ö/x"), "refs/heads/x");
    EXPECT_EQ(name("ab", "refs/remotes/öü/x"), "refs/heads/x");
}

TEST(RVGitRefNameTest, TheLocalRemoteHasBranchesOnly) {
    auto name = RVGitRef::makeFullRefNameForRemoteWithName;
    EXPECT_EQ(name(".", "refs/heads/main"), "refs/heads/main");
    EXPECT_EQ(name(".", "HEAD"), "HEAD");
    EXPECT_EQ(name(".", "grafted"), "refs/heads/grafted");
    EXPECT_EQ(name(".", "refs/remotes/origin/main"), nullopt);
    EXPECT_EQ(name(".", "main"), nullopt);
}

// Objects.

class RVGitRefTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitRef> makeRef(const std::string& fullRefName) const {
        return RVGitRef::refWithRepository(repository(), fullRefName, someHash);
    }
    /// "name hash" of each; a blank alone behind a name stands for no hash.
    static std::vector<std::string> texts(const std::vector<std::shared_ptr<RVGitRef>>& refs) {
        std::vector<std::string> list;
        for (const auto& ref : refs)
            list.push_back(*ref->fullRefName() + " " + ref->commitHash().value_or(""));
        return list;
    }
    [[nodiscard]] std::vector<std::string> allRefs() const {
        auto refs = RVGitRef::allRefsForRepository(repository(), nullopt);
        return refs ? texts(*refs) : std::vector<std::string>{"absent"};
    }
    /// A place that holds something, to see whether it is cleared.
    static std::optional<RVError> filledPlace() { return RVError("domain", 1); }
};

TEST_F(RVGitRefTest, FieldsAreThoseGiven) {
    auto ref = makeRef("refs/heads/main");
    EXPECT_EQ(ref->repository(), repository());
    EXPECT_EQ(ref->fullRefName(), "refs/heads/main");
    EXPECT_EQ(ref->refName(), "main");
    EXPECT_EQ(ref->commitHash(), someHash);
    ref->setCommitHash(nullopt);
    EXPECT_EQ(ref->commitHash(), nullopt);
}

TEST_F(RVGitRefTest, NeedsARepository) {
    try {
        RVGitRef ref(nullptr, "refs/heads/main", nullopt);
        FAIL();
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: repository");
    }
}

TEST_F(RVGitRefTest, TypeOfAnObjectIsStricterThanThatOfAName) {
    EXPECT_EQ(makeRef("HEAD")->refType(), RVGitRefTypeBranch);
    EXPECT_EQ(makeRef("refs/heads/x")->refType(), RVGitRefTypeBranch);
    EXPECT_EQ(makeRef("refs/remotes/origin/x")->refType(), RVGitRefTypeRemoteBranch);
    EXPECT_EQ(makeRef("refs/tags/x")->refType(), RVGitRefTypeTag);
    EXPECT_EQ(makeRef("refs/stash")->refType(), RVGitRefTypeStash);
    EXPECT_EQ(makeRef("refs/stashed")->refType(), RVGitRefTypeStash);
    EXPECT_EQ(makeRef("refs/notes/commits")->refType(), RVGitRefTypeNone);
    EXPECT_EQ(makeRef("grafted")->refType(), RVGitRefTypeNone);
    EXPECT_EQ(makeRef("main")->refType(), RVGitRefTypeNone);
}

TEST_F(RVGitRefTest, QuestionsOfType) {
    auto answers = [](const std::shared_ptr<RVGitRef>& ref) {
        return std::vector<bool>{ref->isBranchRefType(), ref->isRemoteBranchRefType(),
                                 ref->isTagRefType(), ref->isStashRefType(), ref->isHeadRef()};
    };
    EXPECT_THAT(answers(makeRef("HEAD")), ElementsAre(true, false, false, false, true));
    EXPECT_THAT(answers(makeRef("refs/heads/HEAD")), ElementsAre(true, false, false, false, false));
    EXPECT_THAT(answers(makeRef("refs/remotes/o/x")),
                ElementsAre(false, true, false, false, false));
    EXPECT_THAT(answers(makeRef("refs/tags/x")), ElementsAre(false, false, true, false, false));
    EXPECT_THAT(answers(makeRef("refs/stash")), ElementsAre(false, false, false, true, false));
    EXPECT_THAT(answers(makeRef("refs/notes/x")), ElementsAre(false, false, false, false, false));
}

TEST_F(RVGitRefTest, ShortNameOfEachType) {
    EXPECT_EQ(makeRef("HEAD")->refName(), "HEAD");
    EXPECT_EQ(makeRef("refs/heads/a/b")->refName(), "a/b");
    EXPECT_EQ(makeRef("refs/remotes/origin/x")->refName(), "origin/x");
    EXPECT_EQ(makeRef("refs/tags/v1")->refName(), "v1");
    EXPECT_EQ(makeRef("refs/stash")->refName(), "stash");
    EXPECT_EQ(makeRef("refs/notes/commits")->refName(), "refs/notes/commits");
}

TEST_F(RVGitRefTest, IsUsedThroughTheProtocol) {
    std::shared_ptr<RVGitRefProtocol> ref = makeRef("refs/tags/v1");
    EXPECT_EQ(ref->fullRefName(), "refs/tags/v1");
    EXPECT_EQ(ref->refName(), "v1");
    EXPECT_EQ(ref->commitHash(), someHash);
}

TEST_F(RVGitRefTest, ACommitIsLoadedOnceAndKept) {
    std::string hash = makeCommit("A message");
    auto ref = RVGitRef::refWithRepository(repository(), "refs/heads/main", hash);
    auto recorder = useRecordingGit();
    auto commit = ref->commit();
    ASSERT_NE(commit, nullptr);
    EXPECT_EQ(commit->commitHash(), hash);
    EXPECT_EQ(commit->message(), "A message");
    ref->setCommitHash(someHash);
    EXPECT_EQ(ref->commit(), commit);
    EXPECT_EQ(recorder.invocations().size(), 1u);
}

TEST_F(RVGitRefTest, ThereIsNoCommitWithoutAHashOrWhereItCannotBeLoaded) {
    auto recorder = useRecordingGit();
    EXPECT_EQ(RVGitRef::refWithRepository(repository(), "refs/heads/x", nullopt)->commit(),
              nullptr);
    EXPECT_TRUE(recorder.invocations().empty());
    EXPECT_EQ(makeRef("refs/heads/x")->commit(), nullptr);
}

TEST_F(RVGitRefTest, ARefMadeOfACommitHasItAndItsHash) {
    std::string hash = makeCommit();
    auto commit = RVGitCommit::commitForCommitHash(hash, repository());
    auto ref = RVGitRef::refWithRepository(repository(), "refs/heads/main", commit);
    auto recorder = useRecordingGit();
    EXPECT_EQ(ref->commitHash(), hash);
    EXPECT_EQ(ref->commit(), commit);
    EXPECT_TRUE(recorder.invocations().empty());

    ref = RVGitRef::refWithRepository(repository(), "refs/heads/main",
                                      std::shared_ptr<RVGitCommit>());
    EXPECT_EQ(ref->commitHash(), nullopt);
    EXPECT_EQ(ref->commit(), nullptr);
}

// Validity.

TEST_F(RVGitRefTest, ValidNamesAreThoseThatGitAccepts) {
    EXPECT_FALSE(RVGitRef::isValidRefName(nullopt));
    for (const std::string name : {"main", "a/b",  "refs/heads/main",
                                   "HEAD", "-x",   "@",
                                   "fünf", "a.b",  "",
                                   "a..b", "a b",  "a~",
                                   "a^",   "a:b",  "a?",
                                   "a*",   "a[",   "a\\b",
                                   ".a",   "a.",   "a.lock",
                                   "a@{b", "/a",   "a/",
                                   "a//b", "\x01", "--branch"}) {
        std::string fullName = name.starts_with("refs/") ? name : "refs/" + name;
        EXPECT_EQ(RVGitRef::isValidRefName(name),
                  runGit({"check-ref-format", fullName}).exitCode == 0)
            << name;
    }
    EXPECT_TRUE(RVGitValidateRefName("main"));
    EXPECT_FALSE(RVGitValidateRefName("a b"));
    EXPECT_FALSE(RVGitValidateRefName(nullopt));
}

TEST_F(RVGitRefTest, ValidityIsAskedWithoutARepository) {
    auto recorder = useRecordingGit();
    EXPECT_TRUE(RVGitRef::isValidRefName("main"));
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "check-ref-format", "refs/main"));
    EXPECT_TRUE(RVGitRef::isValidRefName("refs/heads/main"));
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "check-ref-format", "refs/heads/main"));
}

// Lookup.

TEST_F(RVGitRefTest, ListsAllRefsInGitsOrderButTheStash) {
    std::string hash = makeCommit();
    gitInRepository({"branch", "topic"});
    gitInRepository({"tag", "-a", "-m", "Message", "v1"});
    gitInRepository({"update-ref", "refs/remotes/origin/main", hash});
    gitInRepository({"update-ref", "refs/notes/commits", hash});
    gitInRepository({"update-ref", "refs/stash", hash});
    gitInRepository({"update-ref", "refs/stash2", hash});
    EXPECT_THAT(allRefs(), ElementsAre("refs/heads/main " + hash, "refs/heads/topic " + hash,
                                       "refs/notes/commits " + hash,
                                       "refs/remotes/origin/main " + hash, "refs/stash2 " + hash,
                                       "refs/tags/v1 " + gitInRepository({"rev-parse", "v1"})));
}

TEST_F(RVGitRefTest, OptionsChooseTheRefs) {
    std::string hash = makeCommit();
    gitInRepository({"tag", "-a", "-m", "Message", "v1"});
    auto refs =
        RVGitRef::allRefsForRepository(repository(), RVOptions{{RVGitShowRefOptionTags, true}});
    ASSERT_NE(refs, nullopt);
    EXPECT_THAT(texts(*refs), ElementsAre("refs/tags/v1 " + hash));
}

TEST_F(RVGitRefTest, AnEmptyRepositoryHasItsUnbornBranchWithoutAHash) {
    std::optional<RVError> error;
    auto refs = RVGitRef::allRefsForRepository(repository(), nullopt, &error);
    ASSERT_NE(refs, nullopt);
    EXPECT_EQ(error, nullopt);
    ASSERT_EQ(refs->size(), 1u);
    EXPECT_EQ(refs->front()->fullRefName(), "refs/heads/main");
    EXPECT_EQ(refs->front()->commitHash(), nullopt);
    EXPECT_EQ(refs->front()->repository(), repository());
}

TEST_F(RVGitRefTest, AnUnbornBranchBesideOthersComesLast) {
    std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    EXPECT_THAT(allRefs(), ElementsAre("refs/heads/main " + hash, "refs/heads/another "));
}

TEST_F(RVGitRefTest, HeadThatNamesNoBranchAndNoCommitGivesNothingOnlyToWhoAsksForErrors) {
    RVGIT_TEST_NEEDS_REF_FILES("HEAD is damaged in its file");
    std::string hash = makeCommit();
    writeFile(repositoryPath() + "/.git/HEAD", someHash + "\n");
    EXPECT_THAT(allRefs(), ElementsAre("refs/heads/main " + hash));
    auto error = filledPlace();
    EXPECT_EQ(RVGitRef::allRefsForRepository(repository(), nullopt, &error), nullopt);
    EXPECT_EQ(error, nullopt);
}

TEST_F(RVGitRefTest, ADetachedHeadAddsNothing) {
    std::string hash = makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_THAT(allRefs(), ElementsAre("refs/heads/main " + hash));
}

TEST_F(RVGitRefTest, FailureOfGitIsAnError) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: no\n", .exitCode = 128});
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRef::allRefsForRepository(repository(), nullopt, &error), nullopt);
    ASSERT_NE(error, nullopt);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    error.reset();
    EXPECT_EQ(RVGitRef::refForFullRefName("refs/heads/main", repository(), nullopt, &error),
              nullptr);
    ASSERT_NE(error, nullopt);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
}

TEST_F(RVGitRefTest, ARefIsFoundByItsFullName) {
    std::string hash = makeCommit();
    auto ref = RVGitRef::refForFullRefName("refs/heads/main", repository(), nullopt);
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->commitHash(), hash);
}

TEST_F(RVGitRefTest, ANameIsFoundInEitherUnicodeForm) {
    makeCommit();
    gitInRepository({"branch", "caf\u00E9"});
    auto ref = RVGitRef::refForFullRefName("refs/heads/cafe\u0301", repository(), nullopt);
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->fullRefName(), "refs/heads/caf\u00E9");
    // Its twin comes first where that is what was asked for.
    gitInRepository({"branch", "cafe\u0301"});
    for (const std::string name : {"refs/heads/cafe\u0301", "refs/heads/caf\u00E9"}) {
        ref = RVGitRef::refForFullRefName(name, repository(), nullopt);
        ASSERT_NE(ref, nullptr);
        EXPECT_EQ(ref->fullRefName(), name);
    }
}

TEST_F(RVGitRefTest, NotFoundIsNoError) {
    makeCommit();
    auto error = filledPlace();
    EXPECT_EQ(RVGitRef::refForFullRefName("main", repository(), nullopt, &error), nullptr);
    EXPECT_EQ(error, nullopt);
    EXPECT_EQ(RVGitRef::refForFullRefName("refs/heads/none", repository(), nullopt), nullptr);
}

TEST_F(RVGitRefTest, HeadIsTheCheckedOutBranch) {
    std::string hash = makeCommit();
    auto ref = RVGitRef::headRefForRepository(repository());
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->fullRefName(), "refs/heads/main");
    EXPECT_EQ(ref->commitHash(), hash);
}

TEST_F(RVGitRefTest, HeadOnAnUnbornBranchHasNoHash) {
    auto ref = RVGitRef::headRefForRepository(repository());
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->fullRefName(), "refs/heads/main");
    EXPECT_EQ(ref->commitHash(), nullopt);
}

TEST_F(RVGitRefTest, ADetachedHeadIsNoRef) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    auto error = filledPlace();
    EXPECT_EQ(RVGitRef::headRefForRepository(repository(), &error), nullptr);
    EXPECT_EQ(error, nullopt);
}

TEST_F(RVGitRefTest, AnUnreadableHeadIsTheReadError) {
    auto missing = RVGitRepository::bareRepositoryWithGitDirectoryPath(scratchPath("missing"));
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRef::headRefForRepository(missing, &error), nullptr);
    ASSERT_NE(error, nullopt);
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
}

TEST_F(RVGitRefTest, AHeadThatIsALinkElsewhereIsNotRead) {
    const std::string directory = makeDirectory("bare");
    // It would be read without end.
    std::filesystem::create_symlink("/dev/zero", directory + "/HEAD");
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(directory);
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRef::headRefForRepository(repository, &error), nullptr);
    ASSERT_NE(error, nullopt);
    EXPECT_EQ(error->code(), ELOOP);
}

TEST_F(RVGitRefTest, TheInitialRefIsTheBranchThatHeadNames) {
    auto ref = RVGitRef::initialRefFromHeadFileForRepository(repository());
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->fullRefName(), "refs/heads/main");
    EXPECT_EQ(ref->commitHash(), nullopt);
    // Also of a branch that has commits: the file alone is read.
    makeCommit();
    EXPECT_NE(RVGitRef::initialRefFromHeadFileForRepository(repository()), nullptr);
}

TEST_F(RVGitRefTest, ThereIsNoInitialRefWhereHeadNamesNoBranch) {
    writeFile(repositoryPath() + "/.git/HEAD", someHash + "\n");
    auto error = filledPlace();
    EXPECT_EQ(RVGitRef::initialRefFromHeadFileForRepository(repository(), &error), nullptr);
    EXPECT_EQ(error, nullopt);

    auto missing = RVGitRepository::bareRepositoryWithGitDirectoryPath(scratchPath("missing"));
    error = filledPlace();
    EXPECT_EQ(RVGitRef::initialRefFromHeadFileForRepository(missing, &error), nullptr);
    EXPECT_EQ(error, nullopt);
}

TEST_F(RVGitRefTest, ADetachedHeadWithoutAnyBranchLeavesTheListWhole) {
    const std::string hash = makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    auto error = filledPlace();
    error.reset();
    const auto refs = RVGitRef::allRefsForRepository(repository(), nullopt, &error);
    ASSERT_TRUE(refs.has_value());
    ASSERT_EQ(refs->size(), 1U);
    EXPECT_EQ(refs->front()->fullRefName(), "refs/tags/v1");
    EXPECT_EQ(error, nullopt);
    gitInRepository({"tag", "-d", "v1"});
    EXPECT_TRUE(RVGitRef::allRefsForRepository(repository(), nullopt, &error).value().empty());
}

TEST_F(RVGitRefTest, AHeadThatNamesNothingGivesNoListIfAPlaceIsGiven) {
    RVGIT_TEST_NEEDS_REF_FILES("HEAD is damaged in its file");
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    writeFile(repositoryPath() + "/.git/HEAD", someHash + "\n");
    std::optional<RVError> error;
    EXPECT_EQ(RVGitRef::allRefsForRepository(repository(), nullopt, &error), nullopt);
    EXPECT_EQ(error, nullopt);
    EXPECT_TRUE(RVGitRef::allRefsForRepository(repository(), nullopt).has_value());
}

TEST_F(RVGitRefTest, OfBothUnicodeFormsEachIsFoundByItsOwnBytes) {
    makeCommit();
    const std::string composed = "refs/heads/h\xC3\xA9";
    const std::string decomposed = "refs/heads/he\xCC\x81";
    gitInRepository({"update-ref", composed, "HEAD"});
    EXPECT_EQ(RVGitRef::refForFullRefName(decomposed, repository(), nullopt)->fullRefName(),
              composed);
    gitInRepository({"update-ref", decomposed, "HEAD"});
    for (const std::string& name : {composed, decomposed})
        EXPECT_EQ(RVGitRef::refForFullRefName(name, repository(), nullopt)->fullRefName(), name);
}

TEST_F(RVGitRefTest, AnObjectIsThatOfTheRefsType) {
    const std::string hash = makeCommit();
    gitInRepository({"remote", "add", "origin", "url"});
    gitInRepository({"update-ref", "refs/remotes/origin/main", hash});
    gitInRepository({"tag", "v1"});
    gitInRepository({"update-ref", "refs/notes/x", hash});
    writeFile("repository/new", "contents");
    gitInRepository({"stash", "push", "-q", "--include-untracked"});
    const auto objectOf = [&](const std::string& name) {
        auto error = filledPlace();
        auto object = RVGitRef::refWithRepository(repository(), name, hash)->refObject(&error);
        EXPECT_EQ(error.has_value(), object != nullptr) << name;
        return object;
    };
    EXPECT_TRUE(std::dynamic_pointer_cast<RVGitBranch>(objectOf("refs/heads/main")));
    EXPECT_TRUE(std::dynamic_pointer_cast<RVGitRemoteBranch>(objectOf("refs/remotes/origin/main")));
    EXPECT_TRUE(std::dynamic_pointer_cast<RVGitTag>(objectOf("refs/tags/v1")));
    EXPECT_TRUE(std::dynamic_pointer_cast<RVGitStash>(objectOf("refs/stash@{0}")));
    for (const char* name : {"refs/notes/x", "refs/heads/missing", "refs/remotes/origin/missing",
                             "refs/tags/missing", "refs/stash", "HEAD"})
        EXPECT_EQ(objectOf(name), nullptr) << name;
}
