#include <set>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitRefUpdatesOutputParser.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "tests/remotes/RVGitTransferTestCase.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// The table of refs as real transfers print it.
class RVGitRefUpdatesTest : public RVGitTransferTestCase {
protected:
    RVGitRefUpdatesTest() {
        serveRepository();
        gitInRepository({"remote", "add", "origin", servedPath()});
        EXPECT_EQ(codeOf(*pull()), 0);
    }
    /// "type from -> to" of each line that the parser reads.
    static std::vector<std::string> updatesIn(std::string_view output) {
        RVGitRefUpdatesOutputParser parser(output);
        EXPECT_TRUE(parser.parse());
        std::vector<std::string> updates;
        for (const auto& item : parser.result())
            updates.push_back(std::to_string(item.type) + " " + item.from.value_or("absent") +
                              " -> " + item.to.value_or("absent"));
        return updates;
    }
    /// The lines that look like rows of the table and are not read.
    static std::vector<std::string> unreadRowsIn(const std::string& output) {
        std::vector<std::string> rows;
        for (const std::string& line : componentsSeparatedByString(output, "\n"))
            if (line.size() > 3 && line[0] == ' ' && line[2] == ' ' && line[3] != ' ' &&
                updatesIn(line).empty())
                rows.push_back(line);
        return rows;
    }
    void branchThere(const std::string& name, const std::string& revision = "main") {
        git({"branch", "-f", name, revision}, servedPath());
    }
    std::string otherCommitThere() {
        return gitLine({"commit-tree", "-m", "Other", "main^{tree}"}, servedPath());
    }
    static void expectDamageIsRead(const std::string& output) {
        for (const std::string& line : componentsSeparatedByString(output, "\n"))
            for (const auto& damaged : damagedOutputs(line)) {
                RVGitRefUpdatesOutputParser parser(damaged);
                ASSERT_TRUE(parser.parse());
                ASSERT_LE(parser.result().size(), 2u);
            }
    }
};

TEST_F(RVGitRefUpdatesTest, OfAFetchInEveryState) {
    RVGIT_TEST_NEEDS_GIT("2.20", "its fetch replaces tags that are there");
    branchThere("same");
    branchThere("gone");
    branchThere("forced");
    ASSERT_EQ(codeOf(*fetch()), 0);
    git({"branch", "-D", "gone"}, servedPath());
    branchThere("forced", otherCommitThere());
    branchThere("new");
    branchThere("ünï/cöde");
    git({"tag", "v1", "main"}, servedPath());
    gitInRepository({"tag", "v1", gitInRepository({"commit-tree", "-m", "x", "HEAD^{tree}"})});
    git({"tag", "v2", "main"}, servedPath());
    const std::string source = scratchPath("source of a.git");
    commitFile(source, "two", "2", "Two");
    git({"push", servedPath(), "main"}, source);
    const auto command = fetch(RVOptions{{RVGitFetchOptionPruneObsoleteRemoteBranches, true},
                                         {RVGitFetchOptionForceTagsDownload, true}});
    // A tag that would be replaced is rejected, and all else is done.
    EXPECT_THAT(command, failsWith(1));
    const std::string output = command->standardErrorString();
    EXPECT_THAT(updatesIn(output),
                UnorderedElementsAre("4 absent -> origin/gone", "1 main -> origin/main",
                                     "5 same -> origin/same", "3 new -> origin/new",
                                     "3 ünï/cöde -> origin/ünï/cöde",
                                     "6 v1 -> v1  (would clobber existing tag)", "3 v2 -> v2"))
        << output;
    // A forced update has three dots.
    const auto unread = unreadRowsIn(output);
    ASSERT_EQ(unread.size(), 1u) << output;
    EXPECT_THAT(unread[0], testing::MatchesRegex(" \\+ [0-9a-f]+\\.\\.\\.[0-9a-f]+ forced  +-> "
                                                 "origin/forced  \\(forced update\\)"));
    expectDamageIsRead(output);
}

TEST_F(RVGitRefUpdatesTest, OfAFetchWithoutATrackedRef) {
    const auto command = RVGitFetchCommand::gitFetchCommandWithRepository(
        repository(), servedPath(), RVGitRefSpec::refSpecFromString("main"));
    ASSERT_EQ(codeOf(*command), 0);
    EXPECT_THAT(updatesIn(command->standardErrorString()), IsEmpty());
    EXPECT_THAT(unreadRowsIn(command->standardErrorString()),
                ElementsAre(" * branch            main       -> FETCH_HEAD"));
}

TEST_F(RVGitRefUpdatesTest, OfAPushInEveryState) {
    for (const char* name : {"same", "gone", "forced", "behind", "hooked"})
        branchThere(name, "main");
    branchThere("behind", otherCommitThere());
    branchThere("forced", otherCommitThere());
    writeFile("served/a.git/hooks/update",
              "#!/bin/sh\n[ \"$1\" != refs/heads/hooked ] || { echo not today; exit 1; }\n", 0755);
    const std::string base = gitInRepository({"rev-parse", "main"});
    makeCommit();
    gitInRepository({"tag", "v1"});
    RVGitPushCommand::RefSpecs specs;
    for (const std::string& text :
         {std::string("main"), base + ":refs/heads/same", std::string(":refs/heads/gone"),
          std::string("+main:forced"), std::string("main:behind"), std::string("main:hooked"),
          std::string("main:refs/heads/new"), std::string("v1")})
        specs.push_back(RVGitRefSpec::refSpecFromString(text));
    const auto command = RVGitPushCommand::gitPushCommandWithRepository(
        repository(), remote(), std::optional(specs), std::nullopt);
    EXPECT_NE(codeOf(*command), 0);
    const std::string output = command->standardErrorString();
    EXPECT_THAT(updatesIn(output),
                UnorderedElementsAre("1 main -> main", "5 " + base + " -> same", "3 main -> new",
                                     "3 v1 -> v1", "6 main -> behind (fetch first)",
                                     "6 main -> hooked (hook declined)"))
        << output;
    // A deleted ref has no arrow, and a forced update three dots.
    const auto unread = unreadRowsIn(output);
    ASSERT_EQ(unread.size(), 2u) << output;
    EXPECT_THAT(unread, testing::Contains(" - [deleted]         gone"));
    EXPECT_THAT(unread, testing::Contains(testing::HasSubstr("main -> forced (forced update)")));
    expectDamageIsRead(output);
}

}  // namespace
