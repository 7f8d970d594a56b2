#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"
#include "RVGit/diff/RVGitDiffParser.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/history/RVGitBlameOutputParser.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/history/RVGitMergeBaseCommand.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/objects/RVGitTreeCommand.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

// Repositories whose hashes have 64 digits are not supported: nothing of them is shown, rather than
// a part.

namespace {

using namespace std::string_literals;

const std::string hash(64, 'a');
const std::string shortHash(40, 'a');

template <typename Parser, typename... Arguments>
void expectFailure(const std::string& output, const std::string& goodOutput,
                   Arguments... arguments) {
    Parser parser(output, arguments...);
    EXPECT_THAT([&](RVErrorPlace error) { return parser.parse(error); },
                failsWith(RVGitOutputParserError))
        << output;
    Parser goodParser(goodOutput, arguments...);
    EXPECT_TRUE(goodParser.parse());
}

TEST(RVGitObjectFormatTest, AHashOf64DigitsIsToldFromAllElse) {
    EXPECT_TRUE(isSHA256Hash(hash));
    EXPECT_TRUE(beginsWithSHA256Hash(hash + " x"));
    EXPECT_FALSE(isSHA256Hash(hash + "a"));
    EXPECT_FALSE(beginsWithSHA256Hash(hash + "a"));
    EXPECT_FALSE(isSHA256Hash(shortHash));
    EXPECT_FALSE(isSHA256Hash(std::string(64, 'g')));
    EXPECT_FALSE(isSHA256Hash(std::string(64, 'A')));
    EXPECT_FALSE(beginsWithSHA256Hash(""));
}

TEST(RVGitObjectFormatTest, EveryParserFailsWith11) {
    const auto of = [](const std::string& before, const std::string& after) {
        return std::pair(before + hash + after, before + shortHash + after);
    };
    const auto [diff, goodDiff] = of("diff --git a/f b/f\nindex ", ".." + shortHash + " 100644\n");
    expectFailure<RVGitDiffOutputParser>(diff, goodDiff);
    expectFailure<RVGitDiffParser>(goodDiff + diff + goodDiff, goodDiff);
    const auto [newDiff, goodNewDiff] = of("diff --git a/f b/f\nindex " + shortHash + "..", "\n");
    expectFailure<RVGitDiffOutputParser>(newDiff, goodNewDiff);
    const auto [raw, goodRaw] = of(":100644 100644 ", " " + shortHash + " M\0f\0"s);
    expectFailure<RVGitDiffStatsOutputParser>(raw, goodRaw);
    const auto [blame, goodBlame] = of("", " 1 1 1\nauthor A\n\tx\n");
    expectFailure<RVGitBlameOutputParser>(blame, goodBlame);
    expectFailure<RVGitCommitOutputParser>(hash + "\0"s, shortHash + "\0"s,
                                           std::vector<std::string>{"%H"});
    expectFailure<RVGitCommitOutputParser>(hash + "\0"s, shortHash + "\0"s,
                                           std::vector<std::string>{"%T"});
    expectFailure<RVGitCommitOutputParser>(hash + " " + hash + "\0"s, shortHash + "\0"s,
                                           std::vector<std::string>{"%P"});
    expectFailure<RVGitMergeBaseOutputParser>(hash + "\n", shortHash + "\n");
    const auto [tag, goodTag] =
        of("refs/tags/v\x1f\x1d\x1f"
           "commit\x1f\x1d\x1f",
           "\x1f\x1d\x1f\x1f\x1d\x1f"
           "1\x1f\x1d\x1f\0"s);
    expectFailure<RVGitForEachRefTagOutputParser>(tag, goodTag);
    const auto [tree, goodTree] = of("100644 blob ", "\tf\0"s);
    expectFailure<RVGitTreeOutputParser>(tree, goodTree);
    const auto [ref, goodRef] = of("", " refs/heads/main\n");
    expectFailure<RVGitRefOutputParser>(ref, goodRef);
    const auto [index, goodIndex] = of("H 100644 ", " 0\tf\0"s);
    expectFailure<RVGitIndexOutputParser>(index, goodIndex);
    const auto [preview, goodPreview] = of("changed in both\n  base   100644 ", " f\n");
    expectFailure<RVGitMergeTreeOutputParser>(preview, goodPreview);
}

TEST(RVGitObjectFormatTest, FiltersOfTheIndexSkipNoRecord) {
    const std::string output = "H 100644 " + hash + " 0\tother\0"s;
    RVGitIndexOutputParser parser(output);
    parser.setFilePaths({"f"});
    EXPECT_FALSE(parser.parse());
    const std::string goodOutput = "H 100644 " + shortHash + " 0\tother\0"s;
    RVGitIndexOutputParser goodParser(goodOutput);
    goodParser.setFilePaths({"f"});
    EXPECT_TRUE(goodParser.parse());
    EXPECT_TRUE(goodParser.indexedResultCache().empty());
}

class RVGitSHA256RepositoryTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitSHA256RepositoryTest, TellsItsFormatAndListsNothing) {
    RVGIT_TEST_NEEDS_GIT("2.29", "it knows no other object format");
    EXPECT_EQ(repository()->objectFormat(), "sha1");
    const std::string path = makeDirectory("sha256");
    git({"init", "-q", "--object-format=sha256", path});
    writeFile("sha256/f", "1\n");
    git({"add", "."}, path);
    git({"commit", "-q", "-m", "1"}, path);
    git({"tag", "v1"}, path);
    writeFile("sha256/f", "2\n");
    const auto other = RVGitRepository::repositoryWithPath(path);
    ASSERT_TRUE(other->isValid());
    EXPECT_EQ(other->objectFormat(), "sha256");

    const auto expect11 = [](const auto& operation) {
        EXPECT_THAT(operation, failsWith(RVGitOutputParserError));
    };
    const RVOptions none;
    expect11([&](RVErrorPlace error) {
        return RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
            "HEAD", {}, other, none, error);
    });
    expect11([&](RVErrorPlace error) {
        return RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision("HEAD", {}, other,
                                                                             none, error);
    });
    expect11([&](RVErrorPlace error) {
        return RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths({}, other, none,
                                                                                  error);
    });
    expect11([&](RVErrorPlace error) {
        return RVGitCommit::allCommitsForRevisions({}, {}, other, none, error);
    });
    expect11([&](RVErrorPlace error) {
        return RVGitCommit::allCommitHashesForRevisions({}, {}, other, none, error);
    });
    expect11([&](RVErrorPlace error) {
        return RVGitRef::allRefsForRepository(other, std::nullopt, error);
    });
    expect11([&](RVErrorPlace error) { return RVGitTag::allTagsForRepository(other, error); });
    expect11([&](RVErrorPlace error) { return other->index()->indexEntryForFilePath("f", error); });
    expect11([&](RVErrorPlace error) {
        return RVGitBlame::blameForFilePath("f", "HEAD", other, error);
    });

    EXPECT_EQ(RVGitRepository::repositoryWithPath(makeDirectory("none"))->objectFormat(),
              std::nullopt);
    // A git that knows of no other format.
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = "--show-object-format\n"});
    EXPECT_EQ(repository()->objectFormat(), "sha1");
}

}  // namespace
