#include "RVGit/merge/RVGitSequenceInstruction.h"

#include <gtest/gtest.h>

namespace {

TEST(RVGitSequenceInstructionTest, ItsTextIsTheCommandAndTheHash) {
    const auto instruction = RVGitSequenceInstruction::sequenceInstructionWithCommand(
        RVGitSequenceInstructionCommandPick, "0123456789abcdef0123456789abcdef01234567");
    EXPECT_EQ(instruction->command(), "pick");
    EXPECT_EQ(instruction->commitHash(), "0123456789abcdef0123456789abcdef01234567");
    EXPECT_EQ(instruction->stringValue(), "pick 0123456789abcdef0123456789abcdef01234567");
}

TEST(RVGitSequenceInstructionTest, TheCommandsAreGitsWords) {
    EXPECT_STREQ(RVGitSequenceInstructionCommandPick, "pick");
    EXPECT_STREQ(RVGitSequenceInstructionCommandReword, "reword");
    EXPECT_STREQ(RVGitSequenceInstructionCommandDrop, "drop");
    EXPECT_STREQ(RVGitSequenceInstructionCommandEdit, "edit");
    EXPECT_STREQ(RVGitSequenceInstructionCommandSquash, "squash");
    EXPECT_STREQ(RVGitSequenceInstructionCommandFixup, "fixup");
    EXPECT_STREQ(RVGitSequenceInstructionCommandRevert, "revert");
}

}  // namespace
