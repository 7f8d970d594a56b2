#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"
#include "tests/merge/RVGitRewritingTestCase.h"

namespace {

using testing::IsEmpty;

/// What does nothing, or is refused before anything is done.
class RVGitMergeManagerRewritingRefusalsTest : public RVGitRewritingTestCase {};

TEST_F(RVGitMergeManagerRewritingRefusalsTest, AnEmptyListIsDoneWithAtOnce) {
    const auto hashes = makeLetters(2);
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager().deleteRevisions({}));
    EXPECT_TRUE(manager().moveRevisionsAboveRevision({}, hashes[0]));
    EXPECT_TRUE(manager().moveRevisionsBelowRevision({}, hashes[0]));
    EXPECT_TRUE(manager().squashRevisions({}));
    EXPECT_TRUE(manager().fixupRevisions({}, hashes[0]));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, OneCommitWithoutATargetFailsSilently) {
    const auto hashes = makeLetters(2);
    const auto recorder = useRecordingGit();
    std::optional<RVError> error = RVError("old", 1);
    EXPECT_FALSE(manager().squashRevisions({hashes[1]}, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_FALSE(manager().fixupRevisions({hashes[1]}, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, ATargetAmongTheChosenFailsSilently) {
    const auto hashes = makeLetters(3);
    std::optional<RVError> error = RVError("old", 1);
    EXPECT_FALSE(manager().squashRevisions({hashes[2], hashes[1]}, hashes[1], &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(subjects(), "A B C");
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(temporaryDirectory()), IsEmpty());
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, OnlyTwoCommandsCombine) {
    const auto hashes = makeLetters(3);
    for (const char* command : {"pick", "drop", "", "squash "})
        EXPECT_THROW((void)manager().combineRevisions({hashes[2]}, hashes[1], command),
                     RVInvalidParameterException);
    EXPECT_TRUE(
        manager().combineRevisions({hashes[2]}, hashes[1], RVGitSequenceInstructionCommandFixup));
    EXPECT_EQ(subjects(), "A B");
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, ARevisionOutsideOfTheHistoryIsRefused) {
    makeLetters(3);
    gitInRepository({"checkout", "-q", "-b", "other", "HEAD^"});
    commitFile("repository", "x", "x\n", "X");
    gitInRepository({"checkout", "-q", "main"});
    const std::string other = hashOf("X");
    const std::string newest = hashOf("C");
    const RVRepositorySnapshot before(repositoryPath());
    for (const std::string& revision :
         {other, std::string(40, '1'), std::string("HEAD"), std::string("main~1"),
          newest.substr(0, 12), std::string("missing"), std::string(), std::string("-x"),
          std::string("--all"), std::string("a\0b", 3), std::string("x\ny"), std::string("\xff")}) {
        const auto refused = [&](const auto& gesture) {
            std::optional<RVError> error;
            EXPECT_FALSE(gesture(&error)) << revision;
            EXPECT_TRUE(error) << revision;
        };
        refused([&](RVErrorPlace e) { return manager().deleteRevisions({revision}, e); });
        refused([&](RVErrorPlace e) { return manager().deleteRevisions({revision, newest}, e); });
        refused([&](RVErrorPlace e) {
            return manager().moveRevisionsAboveRevision({revision}, newest, e);
        });
        refused([&](RVErrorPlace e) {
            return manager().moveRevisionsBelowRevision({newest}, revision, e);
        });
        refused([&](RVErrorPlace e) { return manager().squashRevisions({newest, revision}, e); });
        refused([&](RVErrorPlace e) { return manager().fixupRevisions({revision}, newest, e); });
        refused([&](RVErrorPlace e) { return manager().setCommitMessage("New", revision, e); });
        refused([&](RVErrorPlace e) { return manager().editRevision(revision, e); });
        refused([&](RVErrorPlace e) { return manager().editRevision(revision, true, e); });
    }
    std::optional<RVError> error;
    EXPECT_FALSE(manager().deleteRevisions({other}, &error));
    EXPECT_EQ(error.value().code(), RVGitLogNoSuchRevisionError);
    EXPECT_EQ(error.value().userInfoString(RVGitRevisionErrorKey), other);
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, WithoutACommitThereIsNothingToRewrite) {
    std::optional<RVError> error;
    EXPECT_FALSE(manager().deleteRevisions({std::string(40, '1')}, &error));
    EXPECT_TRUE(error);
    error.reset();
    EXPECT_FALSE(manager().editRevision(std::string(40, '1'), &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, ASelectionThatAShellWouldReadIsRefused) {
    const auto hashes = makeLetters(2);
    const auto recorder = useRecordingGit();
    const std::string sign = scratchPath("sign");
    for (const std::string& selected :
         {"x; touch " + sign, "$(touch " + sign + ")", "x\ntouch " + sign, std::string()}) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().rebaseOntoWithRevision("main", {hashes[1], selected}, "main",
                                                        std::nullopt, error);
            },
            failsWith(RVGitRVGitGenericError));
    }
    EXPECT_FALSE(fileExists(sign));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
    // The other revisions are git's, but never its options.
    for (const auto& [revision, target] :
         {std::pair("--exec=x", "main"), std::pair("main", "-x")}) {
        std::optional<RVError> error;
        EXPECT_FALSE(
            manager().rebaseOntoWithRevision(revision, {hashes[1]}, target, std::nullopt, &error));
        EXPECT_TRUE(error);
        EXPECT_THAT(recorder.invocations(), IsEmpty());
    }
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, AMessageThatWouldRunIsRefused) {
    const auto hashes = makeLetters(2);
    const RVRepositorySnapshot before(repositoryPath());
    const std::string delimiter =
        "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b";
    for (const std::string& message :
         {delimiter, "Subject\n" + delimiter + "\ntouch " + scratchPath("sign"),
          std::string("a\0b", 3)}) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().setCommitMessage(message, hashes[1], error);
            },
            failsWith(RVGitRVGitGenericError));
    }
    EXPECT_FALSE(fileExists("sign"));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingRefusalsTest, WithoutAPlaceForScriptsNothingIsDone) {
    const auto hashes = makeLetters(3);
    const RVRepositorySnapshot before(repositoryPath());
    setEnvironmentVariable("TMPDIR", scratchPath("missing"));
    const auto failed = [&](const auto& gesture) {
        std::optional<RVError> error;
        EXPECT_FALSE(gesture(&error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    };
    failed([&](RVErrorPlace e) { return manager().deleteRevisions({hashes[1]}, e); });
    failed([&](RVErrorPlace e) {
        return manager().moveRevisionsAboveRevision({hashes[1]}, hashes[2], e);
    });
    failed([&](RVErrorPlace e) { return manager().squashRevisions({hashes[2], hashes[1]}, e); });
    failed([&](RVErrorPlace e) { return manager().setCommitMessage("New", hashes[1], e); });
    failed([&](RVErrorPlace e) { return manager().editRevision(hashes[1], e); });
    failed([&](RVErrorPlace e) {
        return manager().rebaseOntoWithRevision("main", {hashes[1]}, "main", std::nullopt, e);
    });
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

}  // namespace
