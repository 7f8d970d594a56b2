#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

using Texts = std::vector<std::string>;

// What a user's configuration of git does to what is loaded. The last commit is signed by nobody
// known and changes a file, a file with a name that git quotes, a copy, a rename and a submodule.
class RVGitDiffConfigurationTest : public RVGitRepositoryTestCase {
protected:
    void SetUp() override {
        const std::string inner = initRepository("inner");
        commitFile(inner, "in", "1\n", "Inner");
        gitInRepository(
            {"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", inner, "inner"});
        write("f", "one two\nthree\n\nfour\n");
        write("\xC3\xA9 x", "1\n2\n");
        write("source", "1\n2\n3\n4\n5\n6\n7\n8\n");
        write("old", "a\nb\nc\nd\ne\nf\ng\n");
        commitAll();
        commitFile(repositoryPath() + "/inner", "in", "2\n", "Inner change");
        write("f", "one 2\nthree\n\nfour\nfive\n");
        write("\xC3\xA9 x", "1\n2\n3\n");
        write("kopie", "1\n2\n3\n4\n5\n6\n7\n8\n");
        std::filesystem::rename(repositoryPath() + "/old", repositoryPath() + "/new");
        commitAll();
        gitInRepository({"update-ref", "HEAD", makeSignedCopyOfCommit("HEAD", repositoryPath())});
    }
    void write(const std::string& name, const std::string& contents) const {
        writeFile(repositoryPath() + "/" + name, contents);
    }
    void commitAll() const {
        gitInRepository({"add", "-A"});
        gitInRepository({"commit", "--quiet", "-m", "Message"});
    }
    static std::string text(const RVGitDiff& diff) {
        std::string text = diff.oldFilePath().value_or("(none)") + " > " +
                           diff.filePath().value_or("(none)") + " " +
                           std::string(RVGitStringForFileStatus(diff.fileStatus())) + "\n";
        for (const auto& chunk : diff.chunks()) {
            for (const RVGitDiffChunkLine& line : chunk->lines())
                text += line.contentWithStatus() + "\n";
        }
        return text;
    }
    /// All that the last commit changed, by git log or by git diff.
    [[nodiscard]] Texts diffs(bool byLog, const RVOptions& options = {}) const {
        const auto loaded = byLog ? RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
                                        "HEAD", {}, repository(), options)
                                  : RVGitDiff::allDiffsByComparingRevisions({"HEAD~", "HEAD"}, {},
                                                                            repository(), options);
        Texts texts;
        for (const auto& diff : loaded.value())
            texts.push_back(text(*diff));
        return texts;
    }
    [[nodiscard]] Texts changeset(bool byLog) const {
        const auto loaded =
            byLog ? RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
                        "HEAD", {}, repository(), RVOptions())
                  : RVGitChangeset::changesetByComparingRevisions({"HEAD~", "HEAD"}, {},
                                                                  repository(), RVOptions());
        Texts texts;
        for (const auto& entry : loaded->entries()) {
            texts.push_back(entry->oldFilePath().value_or("(none)") + " > " +
                            entry->filePath().value_or("(none)") + " " +
                            std::string(RVGitStringForFileStatus(entry->fileStatus())) + " " +
                            std::to_string(entry->linesAdded()) + " " +
                            std::to_string(entry->linesDeleted()));
        }
        return texts;
    }
    void configure(const std::string& key, const std::string& value) const {
        gitInRepository({"config", key, value});
    }
};

TEST_F(RVGitDiffConfigurationTest, WithoutAnyEverythingIsThere) {
    for (const bool byLog : {true, false}) {
        const Texts texts = diffs(byLog);
        ASSERT_EQ(texts.size(), 5u);
        EXPECT_EQ(texts[0], "f > f Modified\n-one two\n+one 2\n three\n \n four\n+five\n");
        EXPECT_THAT(texts[1], HasSubstr("inner > inner Modified\n-Subproject commit "));
        EXPECT_THAT(texts[2], HasSubstr("(none) > kopie Added\n+1\n"));
        EXPECT_EQ(texts[3], "old > new Renamed\n");
        EXPECT_EQ(texts[4], "\xC3\xA9 x > \xC3\xA9 x Modified\n 1\n 2\n+3\n");
        EXPECT_THAT(changeset(byLog),
                    testing::ElementsAre("f > f Modified 2 1", "inner > inner Modified 1 1",
                                         "kopie > kopie Added 8 0", "old > new Renamed 0 0",
                                         "\xC3\xA9 x > \xC3\xA9 x Modified 1 0"));
    }
}

TEST_F(RVGitDiffConfigurationTest, MostOfItChangesNothing) {
    const Texts expectedDiffs[] = {diffs(false), diffs(true)};
    const Texts expectedChangesets[] = {changeset(false), changeset(true)};
    for (const auto& [key, value] :
         std::vector<std::pair<std::string, std::string>>{{"diff.noprefix", "true"},
                                                          {"diff.mnemonicPrefix", "true"},
                                                          {"diff.algorithm", "patience"},
                                                          {"diff.algorithm", "histogram"},
                                                          {"diff.algorithm", "minimal"},
                                                          {"diff.external", "false"},
                                                          {"diff.wordRegex", "."},
                                                          {"color.ui", "always"},
                                                          {"color.diff", "always"},
                                                          {"core.quotePath", "false"},
                                                          {"core.quotePath", "true"},
                                                          {"core.pager", "false"},
                                                          {"log.showSignature", "true"},
                                                          {"log.showRoot", "false"},
                                                          {"diff.colorMoved", "zebra"},
                                                          {"diff.submodule", "short"}}) {
        configure(key, value);
        for (const bool byLog : {true, false}) {
            EXPECT_EQ(diffs(byLog), expectedDiffs[byLog]) << key << "=" << value;
            EXPECT_EQ(changeset(byLog), expectedChangesets[byLog]) << key << "=" << value;
        }
        gitInRepository({"config", "--unset", key});
    }
}

TEST_F(RVGitDiffConfigurationTest, TheFirstCommitIsShownWhateverIsConfigured) {
    gitInRepository({"checkout", "--quiet", "--orphan", "root"});
    gitInRepository({"rm", "--quiet", "-r", "-f", "."});
    write("first", "needle\n");
    commitAll();
    configure("log.showRoot", "false");
    EXPECT_EQ(diffs(true), Texts{"(none) > first Added\n+needle\n"});
    EXPECT_EQ(changeset(true), Texts{"first > first Added 1 0"});
    const auto found = RVGitCommit::allCommitsForRevisions(
        {"HEAD"}, {}, repository(), RVOptions{{RVGitLogOptionSearchContentPatterns, {"needle"}}});
    EXPECT_THAT(found, testing::Optional(testing::SizeIs(1)));
}

// Of a quoted path only the quotes go where it is not all ASCII.
TEST_F(RVGitDiffConfigurationTest, UnquotedLettersKeepTheEscapesBesideThem) {
    const std::string name = "\xC3\xA9 \"q\"";
    write(name, "1\n");
    commitAll();
    EXPECT_EQ(diffs(true), Texts{"(none) > " + name + " Added\n+1\n"});
    configure("core.quotePath", "false");
    EXPECT_EQ(diffs(true), Texts{"(none) > \xC3\xA9 \\\"q\\\" Added\n+1\n"});
    EXPECT_EQ(changeset(true), Texts{name + " > " + name + " Added 1 0"});
}

// Options that come later win, so that the configuration decides on copies.
TEST_F(RVGitDiffConfigurationTest, RenamesOfTheConfigurationDecideOnCopies) {
    configure("diff.renames", "copies");
    for (const bool byLog : {true, false}) {
        EXPECT_THAT(changeset(byLog), Contains("source > kopie Copied 0 0"));
        EXPECT_THAT(changeset(byLog), Contains("old > new Renamed 0 0"));
        EXPECT_EQ(diffs(byLog).size(), 5u);
    }
    // Only git diff is told to look for them.
    EXPECT_THAT(diffs(false), Contains("source > kopie Copied\n"));
    EXPECT_THAT(diffs(true), Contains(HasSubstr("(none) > kopie Added\n")));
}

TEST_F(RVGitDiffConfigurationTest, TheLogOfASubmoduleIsNoDiffAndCostsNoOther) {
    const Texts all = diffs(true);
    configure("diff.submodule", "log");
    for (const bool byLog : {true, false}) {
        const Texts texts = diffs(byLog);
        EXPECT_EQ(texts, (Texts{all[0], all[2], all[3], all[4]}));
        EXPECT_THAT(changeset(byLog), Contains("inner > inner Modified 1 1"));
    }
    // Only git diff reads the option.
    const RVOptions shortOption = {{RVGitDiffOptionSubmodule, "short"}};
    EXPECT_EQ(diffs(false, shortOption), all);
    EXPECT_EQ(diffs(true, shortOption).size(), 4u);
    gitInRepository({"config", "--unset", "diff.submodule"});
    EXPECT_EQ(diffs(false, {{RVGitDiffOptionSubmodule, "log"}}).size(), 4u);
}

TEST_F(RVGitDiffConfigurationTest, TheDiffOfASubmoduleIsThatOfItsFiles) {
    const Texts all = diffs(true);
    const Texts expected = {all[0], "inner/in > inner/in Modified\n-1\n+2\n", all[2], all[3],
                            all[4]};
    configure("diff.submodule", "diff");
    EXPECT_EQ(diffs(true), expected);
    EXPECT_EQ(diffs(false), expected);
    gitInRepository({"config", "--unset", "diff.submodule"});
    EXPECT_EQ(diffs(false, {{RVGitDiffOptionSubmodule, "diff"}}), expected);
}

}  // namespace
