#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinition.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVGitTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace {

class RVGitCommandErrorDefinitionManagerTest : public RVGitTestCase {
protected:
    std::shared_ptr<RVGitCommand> command(RVFakeGit::Answer answer) {
        RVFakeGit fake = fakeGit();
        fake.setAnswer(std::move(answer));
        auto made =
            RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        made->setGitCommand("verb");
        return made;
    }

    /// 0 if no row matches.
    std::int64_t codeForCommand(RVGitCommand& command) const {
        auto row = manager_.gitCommandErrorDefinitionForCommand(command);
        return row ? row->errorCode() : 0;
    }

    RVGitCommandErrorDefinitionManager manager_;
};

std::vector<std::int64_t> codes(const RVGitCommandErrorDefinitionManager& manager) {
    std::vector<std::int64_t> list;
    for (const auto& row : *manager.allGitCommandErrorDefinitions())
        list.push_back(row->errorCode());
    return list;
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, WithoutRowsNothingMatches) {
    auto failed = command({.exitCode = 1});
    ASSERT_FALSE(failed->run());
    EXPECT_THAT(codes(manager_), IsEmpty());
    EXPECT_EQ(manager_.gitCommandErrorDefinitionForCommand(*failed), nullptr);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, RowsAreSortedByCodeDescending) {
    manager_.addGitCommandErrorDefinitions({{.errorCode = 10}, {.errorCode = 300}});
    auto before = manager_.allGitCommandErrorDefinitions();
    manager_.addGitCommandErrorDefinitions({{.errorCode = 20}, {.errorCode = 300}});
    EXPECT_THAT(codes(manager_), ElementsAre(300, 300, 20, 10));
    EXPECT_EQ(before->size(), 2U);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, TheHighestCodeOfTwoRowsThatMatchWins) {
    manager_.addGitCommandErrorDefinitions({
        {.errorCode = 202, .exitCodes = {1}, .standardErrorPatterns = {"rejected"}},
        {.errorCode = 2401, .exitCodes = {1}, .standardErrorPatterns = {"rejected"}},
        {.errorCode = 2500, .exitCodes = {2}, .standardErrorPatterns = {"rejected"}},
    });
    auto failed = command({.standardError = "! [Rejected]\n", .exitCode = 1});
    ASSERT_FALSE(failed->run());
    EXPECT_EQ(codeForCommand(*failed), 2401);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, EveryFieldOfARowMustMatch) {
    const RVGitErrorRow whole = {.errorCode = 5,
                                 .commandNames = {"verb"},
                                 .subCommandNames = {"sub"},
                                 .commandArguments = {"b", "a"},
                                 .exitCodes = {3},
                                 .standardErrorPatterns = {"err"},
                                 .standardOutputPatterns = {"out"}};
    auto failed = command({.standardOutput = "out", .standardError = "err", .exitCode = 3});
    failed->setGitSubCommand("sub");
    failed->addGitCommandArguments({"a", "b", "c"});
    ASSERT_FALSE(failed->run());

    auto codeWith = [&](auto change) {
        RVGitErrorRow row = whole;
        change(row);
        RVGitCommandErrorDefinitionManager manager;
        manager.addGitCommandErrorDefinitions({row});
        auto found = manager.gitCommandErrorDefinitionForCommand(*failed);
        return found ? found->errorCode() : 0;
    };
    EXPECT_EQ(codeWith([](RVGitErrorRow&) {}), 5);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.commandNames = {"noun"}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.subCommandNames = {"other"}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.commandArguments = {"a", "d"}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.commandArguments = {"A"}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.exitCodes = {4}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.standardErrorPatterns = {"out"}; }), 0);
    EXPECT_EQ(codeWith([](RVGitErrorRow& row) { row.standardOutputPatterns = {"err"}; }), 0);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, ArgumentsOfARowAreNotLookedForAmongTheOptions) {
    manager_.addGitCommandErrorDefinitions({{.errorCode = 5, .commandArguments = {"--list"}}});
    auto asOption = command({.exitCode = 1});
    asOption->addGitCommandOption("--list");
    ASSERT_FALSE(asOption->run());
    EXPECT_EQ(codeForCommand(*asOption), 0);
    auto asArgument = command({.exitCode = 1});
    asArgument->addGitCommandArgument("--list");
    ASSERT_FALSE(asArgument->run());
    EXPECT_EQ(codeForCommand(*asArgument), 5);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, TheDefaultManagerHoldsTheSharedTable) {
    auto& manager = RVGitCommandErrorDefinitionManager::defaultManager();
    EXPECT_EQ(&manager, &RVGitCommandErrorDefinitionManager::defaultManager());
    std::vector<std::int64_t> shared;
    for (const RVGitErrorRow& row : RVGitCommand::sharedGitErrorDefinitions())
        shared.push_back(row.errorCode);
    EXPECT_EQ(shared.size(), 21U);
    EXPECT_THAT(codes(manager), IsSupersetOf(shared));
    EXPECT_EQ(codes(manager).back(), RVGitCommandUsageError);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, ACancelEndsTheSearch) {
    manager_.addGitCommandErrorDefinitions(
        {{.errorCode = 5, .standardErrorPatterns = {"rejected"}}});
    auto failed = command({.standardError = "rejected\n", .exitCode = 1});
    ASSERT_FALSE(failed->run());
    EXPECT_EQ(codeForCommand(*failed), 5);
    failed->cancel();
    EXPECT_EQ(codeForCommand(*failed), 0);
}

TEST_F(RVGitCommandErrorDefinitionManagerTest, TenHostileMegabytesAreMatchedByAllRows) {
    // Without the rows' required texts; but the first letters of many.
    std::string output;
    while (output.size() < 10 << 20)
        output += "fatal: error: fatal: Unable to creat\u00E9 \u212Ag ";
    auto failed = command({.standardError = output, .exitCode = 128});
    ASSERT_FALSE(failed->run());
    EXPECT_EQ(failed->error()->code(), 1);
    output += "FATAL: NOT A GIT REPOSITORY";
    failed = command({.standardError = output, .exitCode = 128});
    ASSERT_FALSE(failed->run());
    EXPECT_EQ(failed->error()->code(), 100);
}

}  // namespace
