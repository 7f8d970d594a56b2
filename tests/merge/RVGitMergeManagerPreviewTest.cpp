#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitConfiguration.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitConflictingFilePathsCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeTreeEntry.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"
#include "tests/support/RVTestRounds.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Entries = RVGitMergeManager::MergeTreeEntries;
using Files = std::map<std::string, std::string>;
using Paths = std::vector<std::string>;

#define NEEDS_TRUE_PREVIEW RVGIT_TEST_NEEDS_GIT("2.38", "it merges nothing but the working tree")

class RVGitMergeManagerPreviewTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] RVGitMergeManager& manager() { return *manager_; }

    /// Replaces the branches "base", "main" (our side, checked out) and "other" (their side).
    void makeBranches(const Files& base, const Files& our, const Files& their) const {
        const auto commit = [](const std::string& branch, const Files& files,
                               const std::string& from) {
            const std::string actor =
                std::string(userName) + " <" + userEmail + "> 1577934245 +0000\n";
            std::string text = "reset refs/heads/" + branch + "\ncommit refs/heads/" + branch +
                               (from.empty() ? "\nmark :1" : "") + "\nauthor " + actor +
                               "committer " + actor + "data 2\nM\n" + from + "deleteall\n";
            for (const auto& [path, contents] : files)
                text += "M 100644 inline " + path + "\ndata " + std::to_string(contents.size()) +
                        "\n" + contents + "\n";
            return text;
        };
        git({"fast-import", "--force", "--quiet"}, repositoryPath(),
            commit("base", base, "") + commit("main", our, "from :1\n") +
                commit("other", their, "from :1\n"));
        gitInRepository({"reset", "-q", "--hard"});
    }
    /// The paths at which the real merge stops, which is then taken back.
    [[nodiscard]] Paths pathsOfRealMerge(const Paths& options = {}) const {
        Paths arguments = {"merge", "--no-commit", "-q"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.emplace_back("other");
        const auto result = runGit(arguments, repositoryPath());
        Paths paths;
        for (const std::string& path : componentsSeparatedByString(
                 git({"diff", "-z", "--name-only", "--diff-filter=U"}, repositoryPath()),
                 std::string(1, '\0')))
            if (!path.empty())
                paths.push_back(path);
        EXPECT_EQ(result.exitCode != 0, !paths.empty()) << result.standardError;
        gitInRepository({"reset", "-q", "--hard", "main"});
        gitInRepository({"clean", "-q", "-f", "-d"});
        std::ranges::sort(paths);
        return paths;
    }
    /// The paths of the conflicts that the report foretells.
    [[nodiscard]] Paths foretoldPaths() {
        Entries conflicts;
        std::optional<RVError> error;
        const bool can = manager().canMergeRevision("other", "main", &conflicts, &error);
        EXPECT_EQ(can, conflicts.empty());
        EXPECT_EQ(can, !error);
        if (error) {
            EXPECT_EQ(error->code(), RVGitMergeWillFailDueToConflictsError);
        }
        Paths paths;
        for (const auto& entry : conflicts)
            paths.push_back(entry->filePath().value_or("absent"));
        std::ranges::sort(paths);
        return paths;
    }
    [[nodiscard]] std::optional<Paths> conflictingPaths() {
        std::optional<RVError> error;
        auto paths = manager().conflictingFilePathsForMergingRevision("other", "main", &error);
        EXPECT_EQ(paths.has_value(), !error);
        if (paths)
            std::ranges::sort(*paths);
        return paths;
    }

private:
    std::shared_ptr<RVGitMergeManager> manager_ =
        RVGitMergeManager::mergeManagerWithRepository(repository());
};

TEST_F(RVGitMergeManagerPreviewTest, AMergeWithoutConflictsCanBeMade) {
    NEEDS_TRUE_PREVIEW;
    makeBranches({{"a", "1\n"}, {"b", "1\n"}}, {{"a", "2\n"}, {"b", "1\n"}},
                 {{"a", "1\n"}, {"b", "2\n"}, {"c", "3\n"}});
    std::optional<RVError> error;
    Entries conflicts;
    EXPECT_TRUE(manager().canMergeRevision("other", "main", &error));
    EXPECT_TRUE(manager().canMergeRevision("other", "main", &conflicts, &error));
    EXPECT_TRUE(
        manager().canMergeRevision("other", "main", std::string("base"), &conflicts, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_THAT(conflicts, IsEmpty());
    EXPECT_THAT(conflictingPaths().value_or(Paths{"absent"}), IsEmpty());
}

TEST_F(RVGitMergeManagerPreviewTest, NothingToMergeIsNoConflict) {
    makeBranches({{"a", "1\n"}}, {{"a", "2\n"}}, {{"a", "1\n"}});
    EXPECT_TRUE(manager().canMergeRevision("base", "main"));
    EXPECT_TRUE(manager().canMergeRevision("main", "base"));
    EXPECT_TRUE(manager().canMergeRevision("main", "main"));
}

TEST_F(RVGitMergeManagerPreviewTest, ConflictsAre2006AndAreTold) {
    NEEDS_TRUE_PREVIEW;
    makeBranches({{"a", "1\n"}, {"b", "1\n"}}, {{"a", "2\n"}, {"b", "2\n"}},
                 {{"a", "3\n"}, {"b", "2\n"}});
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    EXPECT_FALSE(manager().canMergeRevision("other", "main", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVGitErrorDomain);
    EXPECT_EQ(error->code(), RVGitMergeWillFailDueToConflictsError);
    EXPECT_EQ(error->localizedFailureReason(), "There will be conflicts when performing a merge.");
    Entries conflicts;
    EXPECT_FALSE(manager().canMergeRevision("other", "main", &conflicts));
    ASSERT_THAT(conflicts, SizeIs(1));
    EXPECT_EQ(conflicts[0]->filePath(), "a");
    EXPECT_EQ(conflicts[0]->type(), RVGitMergeTreeEntryTypeChangedInBoth);
    EXPECT_EQ(conflicts[0]->ourVersion()->objectHash(), gitInRepository({"rev-parse", "main:a"}));
    EXPECT_THAT(conflictingPaths().value_or(Paths{}), ElementsAre("a"));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerPreviewTest, TheBaseIsGitsUnlessOneIsGiven) {
    makeBranches({{"a", "1\n"}}, {{"a", "2\n"}}, {{"a", "3\n"}});
    const auto recorder = useRecordingGit();
    (void)manager().canMergeRevision("other", "main");
    const auto lists = recorder.argumentLists();
    // The entries are of a repository that is opened anew, by calls of its own.
    ASSERT_GE(lists.size(), 2u);
    EXPECT_THAT(Paths(lists[0].end() - 3, lists[0].end()),
                ElementsAre("merge-base", "main", "other"));
    EXPECT_THAT(Paths(lists[1].end() - 4, lists[1].end()),
                ElementsAre("merge-tree", gitInRepository({"rev-parse", "base"}), "main", "other"));
    recorder.clear();
    (void)manager().canMergeRevision("other", "main", std::string(), nullptr);
    EXPECT_THAT(recorder.argumentLists()[0], testing::Contains("merge-base"));
    recorder.clear();
    // Their side as the base: it has changed nothing.
    EXPECT_TRUE(manager().canMergeRevision("other", "main", std::string("other"), nullptr));
    EXPECT_THAT(recorder.argumentLists()[0], testing::Contains("merge-tree"));
}

TEST_F(RVGitMergeManagerPreviewTest, WithoutACommonAncestorThereIsNoAnswer) {
    makeBranches({{"a", "1\n"}}, {{"a", "2\n"}}, {{"a", "3\n"}});
    gitInRepository({"checkout", "-q", "--orphan", "alone"});
    commitFile("repository", "x", "x\n", "Alone");
    EXPECT_THAT(
        [&](RVErrorPlace error) { return manager().canMergeRevision("alone", "main", error); },
        failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return manager().conflictingFilePathsForMergingRevision("alone", "main", error);
        },
        failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitMergeManagerPreviewTest, AMergeBaseThatSaysNothingIsNoError) {
    auto fake = useFakeGit();
    fake.setAnswer("merge-base", {.exitCode = 0});
    std::optional<RVError> error;
    EXPECT_FALSE(manager().canMergeRevision("other", "main", &error));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitMergeManagerPreviewTest, WhatIsNoRevisionFails) {
    makeBranches({{"a", "1\n"}}, {{"a", "2\n"}}, {{"a", "3\n"}});
    for (const std::string& revision :
         {std::string("missing"), std::string("-x"), std::string("--octopus"), std::string(),
          std::string("a\0b", 3), std::string("a\nb"), std::string("\xff")}) {
        for (const auto& [source, target] :
             {std::pair(revision, std::string("main")), std::pair(std::string("main"), revision)}) {
            std::optional<RVError> error;
            EXPECT_FALSE(manager().canMergeRevision(source, target, &error)) << revision;
            EXPECT_TRUE(error) << revision;
            error.reset();
            EXPECT_FALSE(
                manager().canMergeRevision(source, target, std::string("base"), nullptr, &error))
                << revision;
            EXPECT_TRUE(error) << revision;
            error.reset();
            EXPECT_EQ(manager().conflictingFilePathsForMergingRevision(source, target, &error),
                      std::nullopt)
                << revision;
            EXPECT_TRUE(error) << revision;
        }
        if (revision.empty())
            continue;
        std::optional<RVError> error;
        EXPECT_FALSE(manager().canMergeRevision("other", "main", revision, nullptr, &error));
        EXPECT_TRUE(error) << revision;
    }
}

TEST_F(RVGitMergeManagerPreviewTest, AReportIsJudgedWithoutGit) {
    const std::string one(40, '1');
    const std::string two(40, '2');
    auto fake = useFakeGit();
    const auto conflictsOf = [&](const std::string& report) {
        fake = useFakeGit();
        fake.setAnswer("merge-tree", {.standardOutput = report});
        Entries conflicts;
        (void)manager().canMergeRevision("other", "main", std::string("base"), &conflicts);
        return conflicts.size();
    };
    const auto side = [](const std::string& name, const std::string& mode,
                         const std::string& hash) {
        return "  " + name + " " + mode + " " + hash + " file\n";
    };
    EXPECT_EQ(conflictsOf(""), 0u);
    EXPECT_EQ(
        conflictsOf("merged\n" + side("result", "100644", one) + "@@ -1 +1 @@\n-a\n+b\n" +
                    "added in remote\n" + side("their", "100644", two) + "@@ -0,0 +1 @@\n+x\n"),
        0u);
    EXPECT_EQ(conflictsOf("changed in both\n" + side("our", "100644", one) +
                          side("their", "100644", two) + "@@ -1 +1,5 @@\n+<<<<<<< .our\n"),
              1u);
    EXPECT_EQ(conflictsOf("changed in both\n" + side("our", "100644", one) +
                          side("their", "100644", two) + "@@ -1 +1 @@\n+x\n"),
              0u);
    EXPECT_EQ(conflictsOf("removed in local\n" + side("base", "100644", one) +
                          side("their", "100644", one)),
              0u);
    EXPECT_EQ(conflictsOf("removed in local\n" + side("base", "100644", one) +
                          side("their", "100644", two)),
              1u);
    EXPECT_EQ(
        conflictsOf("added in both\n" + side("our", "100644", one) + side("their", "100644", two)),
        1u);
    EXPECT_EQ(conflictsOf("changed in both\n" + side("base", "160000", one) +
                          side("our", "160000", one) + side("their", "160000", two)),
              1u);
    EXPECT_EQ(conflictsOf("something else\n" + side("our", "100644", one) + "+>>>>>>> .their\n"),
              1u);
    EXPECT_EQ(conflictsOf("something else\n" + side("our", "100644", one) + "+x\n"), 0u);
}

// The merge that git would make.

TEST_F(RVGitMergeManagerPreviewTest, TheLineOfTheTruePreview) {
    NEEDS_TRUE_PREVIEW;
    makeBranches({{"a", "1\n"}}, {{"a", "2\n"}}, {{"a", "3\n"}});
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(manager().conflictingFilePathsForMergingRevision("other", "main"));
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("merge-tree", "--write-tree", "-z", "--name-only", "--no-messages",
                            "main", "other"));
}

TEST_F(RVGitMergeManagerPreviewTest, AnOlderGitIsNotAsked) {
    for (const char* version : {"git version 2.37.9", "git version 2.13.7", "git version 1.9"}) {
        auto fake = useFakeGit();
        fake.setVersion(version);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        fake.setAnswer("merge-tree", {.standardOutput = "wrong"});
        EXPECT_FALSE(RVGitConflictingFilePathsCommand::isSupportedByGitBinary(
            *RVGitBinary::defaultGitBinary()));
        std::optional<RVError> error;
        EXPECT_EQ(manager().conflictingFilePathsForMergingRevision("other", "main", &error),
                  std::nullopt);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), RVGitRVGitGenericError);
        EXPECT_THAT(error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                    HasSubstr("git 2.38.0 or later is needed; this is git " +
                              std::string(version).substr(12)));
    }
}

TEST_F(RVGitMergeManagerPreviewTest, WhatIsNoAnswerIsAnError) {
    const std::string tree(40, 'a');
    const auto codeOf = [&](const RVFakeGit::Answer& answer) {
        auto fake = useFakeGit();
        fake.setAnswer("merge-tree", answer);
        std::optional<RVError> error;
        const auto paths = manager().conflictingFilePathsForMergingRevision("o", "m", &error);
        return paths ? 0 : error ? error->code() : -1;
    };
    EXPECT_EQ(codeOf({.standardOutput = tree + '\0'}), 0);
    EXPECT_EQ(codeOf({.standardOutput = tree + '\0' + "a" + '\0', .exitCode = 1}), 0);
    EXPECT_EQ(codeOf({.standardOutput = tree + '\0' + "a" + '\0', .exitCode = 2}),
              RVGitRVGitGenericError);
    EXPECT_EQ(codeOf({.standardError = "not something we can merge", .exitCode = 1}),
              RVGitRVGitGenericError);
    EXPECT_EQ(codeOf({.standardOutput = "nonsense"}), RVGitOutputParserError);
    EXPECT_EQ(codeOf({}), RVGitOutputParserError);
    // Of a repository whose objects have longer names.
    const std::string longTree(64, 'a');
    EXPECT_EQ(codeOf({.standardOutput = longTree + '\0'}), RVGitOutputParserError);
    EXPECT_EQ(codeOf({.standardOutput = longTree + '\0' + "a" + '\0', .exitCode = 1}),
              RVGitOutputParserError);
}

TEST_F(RVGitMergeManagerPreviewTest, PathsComeAsTheyAre) {
    NEEDS_TRUE_PREVIEW;
    const Paths paths = {"a b", "a\"b", "new\nline", "tab\t", "é", "-x", ":(top)x"};
    Files base;
    Files our;
    Files their;
    for (const std::string& path : paths) {
        // fast-import takes a path in C's quotes.
        std::string quoted = "\"";
        for (const char character : path) {
            if (character == '\n')
                quoted += "\\n";
            else if (character == '"')
                quoted += "\\\"";
            else
                quoted += character;
        }
        quoted += '"';
        base[quoted] = "1\n";
        our[quoted] = "2\n";
        their[quoted] = "3\n";
    }
    makeBranches(base, our, their);
    Paths expected = paths;
    std::ranges::sort(expected);
    EXPECT_EQ(conflictingPaths(), expected);
}

// Where the report alone must differ from a merge.

TEST_F(RVGitMergeManagerPreviewTest, ARenameIsKnownToTheTruePreviewAlone) {
    NEEDS_TRUE_PREVIEW;
    const std::string text = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
    makeBranches({{"old", text}}, {{"new", text}}, {{"old", text + "10\n"}});
    EXPECT_THAT(pathsOfRealMerge(), IsEmpty());
    EXPECT_THAT(conflictingPaths().value_or(Paths{"absent"}), IsEmpty());
    EXPECT_THAT(foretoldPaths(), ElementsAre("old"));
}

TEST_F(RVGitMergeManagerPreviewTest, ARenamedDirectoryIsKnownToTheTruePreviewAlone) {
    NEEDS_TRUE_PREVIEW;
    const std::string text = "1\n2\n3\n4\n5\n6\n7\n8\n9\n";
    makeBranches({{"old/a", text}, {"old/b", text + "b\n"}},
                 {{"new/a", text}, {"new/b", text + "b\n"}},
                 {{"old/a", text}, {"old/b", text + "b\n"}, {"old/c", "c\n"}});
    gitInRepository({"config", "merge.directoryRenames", "conflict"});
    EXPECT_THAT(pathsOfRealMerge(), ElementsAre("new/c"));
    EXPECT_THAT(conflictingPaths().value_or(Paths{}), ElementsAre("new/c"));
    EXPECT_THAT(foretoldPaths(), IsEmpty());
}

TEST_F(RVGitMergeManagerPreviewTest, ABinaryConflictIsSeenInTheLastPlaceAlone) {
    NEEDS_TRUE_PREVIEW;
    const auto binary = [](char last) { return std::string("a\0b", 3) + last + "\n"; };
    makeBranches({{"binary", binary('0')}}, {{"binary", binary('1')}}, {{"binary", binary('2')}});
    EXPECT_THAT(pathsOfRealMerge(), ElementsAre("binary"));
    EXPECT_THAT(conflictingPaths().value_or(Paths{}), ElementsAre("binary"));
    const Paths atTheEnd = foretoldPaths();
    makeBranches({{"binary", binary('0')}, {"z", "1\n"}}, {{"binary", binary('1')}, {"z", "1\n"}},
                 {{"binary", binary('2')}, {"z", "2\n"}});
    EXPECT_THAT(pathsOfRealMerge(), ElementsAre("binary"));
    EXPECT_THAT(conflictingPaths().value_or(Paths{}), ElementsAre("binary"));
    const Paths inTheMiddle = foretoldPaths();
    EXPECT_THAT(atTheEnd, ElementsAre("binary"));
    EXPECT_THAT(inTheMiddle, IsEmpty());
}

// Random merges.

class RVGitMergePreviewModelTest : public RVGitMergeManagerPreviewTest,
                                   public testing::WithParamInterface<unsigned> {};

/// The rounds are spread over as many tests, which run side by side.
constexpr unsigned numberOfParts = 4;

TEST_P(RVGitMergePreviewModelTest, ThePreviewAgreesWithTheMerge) {
    NEEDS_TRUE_PREVIEW;
    std::mt19937 random(GetParam() + 20200102);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    const int rounds = (numberOfTestRounds(60) + static_cast<int>(numberOfParts) - 1) /
                       static_cast<int>(numberOfParts);
    std::size_t numberOfConflicts = 0;
    std::size_t numberOfCleanMerges = 0;
    for (int round = 0; round < rounds; ++round) {
        // No two files have a line in common, so that none is a rename of another.
        const auto randomText = [&](const std::string& path, std::size_t version) {
            std::string text;
            for (int line = 0; line < 12; ++line)
                text += path + " line " + std::to_string(line) +
                        ((version >> line) % 2 != 0 ? " changed" : "") + "\n";
            return text;
        };
        // The bits of a version say which lines have changed, and how is the same on both sides
        // but for the line at the end.
        const auto changed = [&](const std::string& path) {
            std::string text = randomText(path, std::size_t{1} << below(12));
            if (below(4) == 0)
                text += path + " " + std::to_string(below(3)) + "\n";
            return text;
        };
        Files base;
        Files our;
        Files their;
        for (std::size_t file = 0, count = 1 + below(5); file < count; ++file) {
            const std::string path = "file " + std::to_string(file);
            const bool isInBase = below(5) != 0;
            if (isInBase)
                base[path] = randomText(path, 0);
            for (Files* side : {&our, &their}) {
                switch (below(5)) {
                    case 0:
                        break;
                    case 1:
                    case 2:
                        (*side)[path] = changed(path);
                        break;
                    default:
                        if (isInBase)
                            (*side)[path] = base[path];
                }
            }
        }
        SCOPED_TRACE("round " + std::to_string(round) + testing::PrintToString(base) +
                     testing::PrintToString(our) + testing::PrintToString(their));
        makeBranches(base, our, their);
        const Paths merged = pathsOfRealMerge({"-X", "no-renames"});
        ASSERT_EQ(foretoldPaths(), merged);
        ASSERT_EQ(conflictingPaths(), pathsOfRealMerge());
        ++(merged.empty() ? numberOfCleanMerges : numberOfConflicts);
    }
    EXPECT_GT(numberOfConflicts, 0u);
    EXPECT_GT(numberOfCleanMerges, 0u);
}

INSTANTIATE_TEST_SUITE_P(Parts, RVGitMergePreviewModelTest, testing::Range(0U, numberOfParts));

}  // namespace
