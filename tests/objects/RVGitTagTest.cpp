#include "RVGit/objects/RVGitTag.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

class RVGitTagTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitRef> ref(std::string name = "refs/tags/v1") const {
        return RVGitRef::refWithRepository(repository(), std::move(name), "abc");
    }
    std::vector<std::string> tagNames() const {
        std::vector<std::string> names;
        const auto tags = RVGitTag::allTagsForRepository(repository());
        EXPECT_TRUE(tags.has_value());
        for (const auto& tag : tags.value_or(std::vector<std::shared_ptr<RVGitTag>>()))
            names.push_back(tag->refName());
        return names;
    }
    std::shared_ptr<RVGitTag> tag(const std::string& name) const {
        auto found = RVGitTag::tagForRefName(name, repository());
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    void annotate(const std::string& name, const std::string& message,
                  const std::string& revision = "HEAD") const {
        git({"tag", "--annotate", "--cleanup=verbatim", "--file=-", name, revision},
            repositoryPath(), message);
    }
};

TEST_F(RVGitTagTest, AnAnnotatedTagHasItsObjectAndMessage) {
    const auto tagRef = ref();
    const auto annotated = RVGitTag::tagWithRepository(repository(), tagRef, "def", "Message",
                                                       RVDate(std::chrono::seconds(5)));
    EXPECT_EQ(annotated->repository(), repository());
    EXPECT_EQ(annotated->ref(), tagRef);
    EXPECT_EQ(annotated->fullRefName(), "refs/tags/v1");
    EXPECT_EQ(annotated->refName(), "v1");
    EXPECT_EQ(annotated->commitHash(), "abc");
    EXPECT_EQ(annotated->objectHash(), "def");
    EXPECT_EQ(annotated->message(), "Message");
    EXPECT_EQ(annotated->creatorDate(), RVDate(std::chrono::seconds(5)));
    EXPECT_EQ(annotated->objectType(), RVGitObjectTypeTag);
    EXPECT_TRUE(annotated->isTagObject());
}

TEST_F(RVGitTagTest, WithoutAnObjectHashTheMessageIsDropped) {
    const auto lightweight = RVGitTag::tagWithRepository(
        repository(), ref(), std::nullopt, "Message", RVDate(std::chrono::seconds(5)));
    EXPECT_EQ(lightweight->objectType(), RVGitObjectTypeNone);
    EXPECT_FALSE(lightweight->isTagObject());
    EXPECT_EQ(lightweight->message(), std::nullopt);
    EXPECT_EQ(lightweight->creatorDate(), RVDate(std::chrono::seconds(5)));
}

TEST_F(RVGitTagTest, ShorterFormsLeaveTheRestAbsent) {
    const auto plain = RVGitTag::tagWithRepository(repository(), ref());
    EXPECT_EQ(plain->objectHash(), std::nullopt);
    EXPECT_EQ(plain->creatorDate(), std::nullopt);
    const auto withHash = RVGitTag::tagWithRepository(repository(), ref(), "def");
    EXPECT_TRUE(withHash->isTagObject());
    EXPECT_EQ(withHash->message(), std::nullopt);
    EXPECT_EQ(RVGitTag::tagWithRepository(repository(), ref(), "def", "Message")->message(),
              "Message");
}

TEST_F(RVGitTagTest, RequiresRepositoryAndRef) {
    EXPECT_THROW((void)RVGitTag::tagWithRepository(nullptr, ref()), RVInvalidParameterException);
    EXPECT_THROW((void)RVGitTag::tagWithRepository(repository(), nullptr),
                 RVInvalidParameterException);
}

TEST_F(RVGitTagTest, ListsWithOneForEachRef) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(RVGitTag::allTagsForRepository(repository()), Optional(IsEmpty()));
    EXPECT_THAT(recorder.invocations(), SizeIs(1));
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("for-each-ref",
                            "--format=%(refname)%1f%1d%1f%(objecttype)%1f%1d%1f%(objectname)"
                            "%1f%1d%1f%(*objectname)%1f%1d%1f%(creatordate:unix)%1f%1d%1f"
                            "%(contents)%00",
                            "refs/tags"));
}

TEST_F(RVGitTagTest, ListsTagsByName) {
    const std::string first = makeCommit();
    gitInRepository({"tag", "light"});
    annotate("annotated", "Message\n\nMore\n\n");
    gitInRepository({"branch", "v0"});
    const auto tags = RVGitTag::allTagsForRepository(repository());
    ASSERT_THAT(tags, Optional(SizeIs(2)));
    const auto& annotated = *(*tags)[0];
    EXPECT_EQ(annotated.fullRefName(), "refs/tags/annotated");
    EXPECT_EQ(annotated.commitHash(), first);
    EXPECT_EQ(annotated.objectHash(), gitInRepository({"rev-parse", "annotated"}));
    EXPECT_EQ(annotated.message(), "Message\n\nMore");
    EXPECT_EQ(annotated.creatorDate(), RVDate(std::chrono::seconds(defaultTime)));
    const auto& lightweight = *(*tags)[1];
    EXPECT_EQ(lightweight.fullRefName(), "refs/tags/light");
    EXPECT_EQ(lightweight.commitHash(), first);
    EXPECT_EQ(lightweight.objectHash(), std::nullopt);
    EXPECT_EQ(lightweight.objectType(), RVGitObjectTypeNone);
    EXPECT_EQ(lightweight.message(), std::nullopt);
    EXPECT_EQ(lightweight.creatorDate(), RVDate(std::chrono::seconds(defaultTime)));
}

TEST_F(RVGitTagTest, LoadsTheCommitThatItPointsTo) {
    const std::string commit = makeCommit("Tagged");
    annotate("v1", "Message");
    makeCommit("Later");
    const auto loaded = tag("v1")->commit();
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->commitHash(), commit);
}

TEST_F(RVGitTagTest, TheDateIsTheTaggers) {
    makeCommit();
    setDates("1600000000 +0200");
    annotate("v1", "Message");
    gitInRepository({"tag", "light"});
    EXPECT_EQ(tag("v1")->creatorDate(), RVDate(std::chrono::seconds(1600000000)));
    EXPECT_EQ(tag("light")->creatorDate(), RVDate(std::chrono::seconds(defaultTime)));
}

TEST_F(RVGitTagTest, ATreeOrABlobMayBeTagged) {
    makeCommit();
    const std::string tree = gitInRepository({"rev-parse", "HEAD^{tree}"});
    const std::string blob = gitInRepository({"rev-parse", "HEAD:file.txt"});
    gitInRepository({"tag", "tree", tree});
    gitInRepository({"tag", "blob", blob});
    annotate("annotated-tree", "A tree", tree);
    annotate("annotated-blob", "A blob", blob);
    EXPECT_EQ(tag("tree")->commitHash(), tree);
    EXPECT_EQ(tag("tree")->objectHash(), std::nullopt);
    EXPECT_EQ(tag("tree")->creatorDate(), RVDate());
    EXPECT_EQ(tag("blob")->commitHash(), blob);
    EXPECT_EQ(tag("annotated-tree")->commitHash(), tree);
    EXPECT_EQ(tag("annotated-tree")->message(), "A tree");
    EXPECT_EQ(tag("annotated-blob")->commitHash(), blob);
    EXPECT_TRUE(tag("annotated-blob")->isTagObject());
}

TEST_F(RVGitTagTest, ATagOfATagIsPeeledAsGitPeelsIt) {
    makeCommit();
    annotate("inner", "Inner");
    annotate("outer", "Outer", "inner");
    const auto outer = tag("outer");
    ASSERT_TRUE(outer);
    EXPECT_EQ(outer->objectHash(), gitInRepository({"rev-parse", "outer"}));
    EXPECT_EQ(outer->message(), "Outer");
    EXPECT_EQ(outer->commitHash(),
              gitInRepository({"for-each-ref", "--format=%(*objectname)", "refs/tags/outer"}));
    EXPECT_THAT(*outer->commitHash(),
                testing::AnyOf(gitInRepository({"rev-parse", "inner"}),
                               gitInRepository({"rev-parse", "inner^{commit}"})));
}

TEST_F(RVGitTagTest, AMessageWithTheBoundaryBytesDropsTheTag) {
    makeCommit();
    annotate("bad",
             "a\x1f\x1d\x1f"
             "b");
    annotate("good",
             "a\x1f\x1d"
             "b");
    EXPECT_THAT(tagNames(), ElementsAre("good"));
    std::optional<RVError> error;
    EXPECT_EQ(RVGitTag::tagForRefName("bad", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitTagTest, NamesAndMessagesMayBeOfAnyKind) {
    makeCommit();
    const std::string bytes = "\x01\x02\x7f binary \xF0\x9F\x8D\x8A";
    annotate("v1/été", bytes);
    annotate("latin", "caf\xE9");
    EXPECT_THAT(tagNames(), ElementsAre("latin", "v1/été"));
    EXPECT_EQ(tag("v1/été")->message(), bytes);
    EXPECT_EQ(tag("latin")->message(), "café");
}

TEST_F(RVGitTagTest, AMessageOf100KBComesBackWhole) {
    makeCommit();
    std::string message;
    while (message.size() < 100'000)
        message += "Line of the message é\n";
    annotate("v1", message);
    EXPECT_EQ(*tag("v1")->message() + "\n", message);
}

TEST_F(RVGitTagTest, ListsTwentyThousandTags) {
    const std::string commit = makeCommit();
    annotate("annotated", "Message");
    const std::string object = gitInRepository({"rev-parse", "annotated"});
    std::string instructions;
    for (int number = 0; number < 10000; ++number) {
        const std::string name = std::to_string(number);
        instructions += "create refs/tags/a" + name + " " + object + "\n";
        instructions += "create refs/tags/l" + name + " " + commit + "\n";
    }
    git({"update-ref", "--stdin"}, repositoryPath(), instructions);
    const auto tags = RVGitTag::allTagsForRepository(repository());
    ASSERT_THAT(tags, Optional(SizeIs(20001)));
    EXPECT_EQ(tags->front()->message(), "Message");
    EXPECT_EQ(tags->front()->commitHash(), commit);
    EXPECT_EQ(tags->back()->refName(), "l9999");
    EXPECT_EQ(tags->back()->commitHash(), commit);
}

TEST_F(RVGitTagTest, AFailureToListIsReported) {
    const auto missing = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        repositoryPath(), scratchPath("missing"));
    std::optional<RVError> error;
    EXPECT_EQ(RVGitTag::allTagsForRepository(missing, &error), std::nullopt);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitNoGitRepoError);
    error.reset();
    EXPECT_EQ(RVGitTag::tagForRefName("v1", missing, &error), nullptr);
    EXPECT_TRUE(error.has_value());
}

TEST_F(RVGitTagTest, IsFoundByShortAndFullName) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"tag", "dir/v1"});
    EXPECT_EQ(tag("v1")->fullRefName(), "refs/tags/v1");
    EXPECT_EQ(tag("refs/tags/v1")->fullRefName(), "refs/tags/v1");
    EXPECT_EQ(tag("dir/v1")->fullRefName(), "refs/tags/dir/v1");
}

TEST_F(RVGitTagTest, IsFoundByANameComposedInAnotherWay) {
    makeCommit();
    gitInRepository({"tag", "e\u0301te"});
    EXPECT_EQ(tag("\u00e9te")->refName(), "e\u0301te");
    // Its twin comes first where that is what was asked for.
    gitInRepository({"tag", "\u00e9te"});
    EXPECT_EQ(tag("\u00e9te")->refName(), "\u00e9te");
    EXPECT_EQ(tag("e\u0301te")->refName(), "e\u0301te");
}

TEST_F(RVGitTagTest, AnUnknownNameGivesNothingWithoutError) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    std::optional<RVError> error = RVError("left over", 1);
    EXPECT_EQ(RVGitTag::tagForRefName("v", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(RVGitTag::tagForRefName("refs/heads/v1", repository()), nullptr);
}

TEST_F(RVGitTagTest, CreatesALightweightTag) {
    const std::string first = makeCommit();
    makeCommit();
    const auto created = RVGitTag::createTagWithRefName("v1", first, repository());
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->refName(), "v1");
    EXPECT_EQ(created->commitHash(), first);
    EXPECT_FALSE(created->isTagObject());
}

TEST_F(RVGitTagTest, CreatesAnAnnotatedTag) {
    const std::string commit = makeCommit();
    const auto created =
        RVGitTag::createTagWithRefName("v1", "Première version\n", std::nullopt, repository());
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->commitHash(), commit);
    EXPECT_EQ(created->message(), "Première version");
    EXPECT_EQ(gitInRepository({"cat-file", "-t", "v1"}), "tag");
}

TEST_F(RVGitTagTest, CreatingWhatExistsFails) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTag::createTagWithRefName("v1", "HEAD", repository(), error);
        },
        failsWith(RVGitCreateTagAlreadyExistsError));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTag::createTagWithRefName("v2", "missing", repository(), error);
        },
        failsWith(RVGitCreateTagInvalidObjectError));
}

TEST_F(RVGitTagTest, DeletesATag) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"tag", "v2"});
    EXPECT_TRUE(RVGitTag::deleteTagWithRefName("v1", repository()));
    EXPECT_THAT(tagNames(), ElementsAre("v2"));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTag::deleteTagWithRefName("v1", repository(), error);
        },
        failsWith(RVGitDeleteTagNotFoundError));
}

}  // namespace
