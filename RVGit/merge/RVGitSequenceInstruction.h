#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"

inline constexpr char RVGitSequenceInstructionCommandPick[] = "pick";
inline constexpr char RVGitSequenceInstructionCommandReword[] = "reword";
inline constexpr char RVGitSequenceInstructionCommandDrop[] = "drop";
inline constexpr char RVGitSequenceInstructionCommandEdit[] = "edit";
inline constexpr char RVGitSequenceInstructionCommandSquash[] = "squash";
inline constexpr char RVGitSequenceInstructionCommandFixup[] = "fixup";
inline constexpr char RVGitSequenceInstructionCommandRevert[] = "revert";

/// One line of the list that a rebase, a cherry-pick or a revert works off: what is to be done
/// with which commit. Immutable; readable on any thread.
class RVGIT_EXPORT RVGitSequenceInstruction {
public:
    using List = std::vector<std::shared_ptr<RVGitSequenceInstruction>>;

    RVGitSequenceInstruction(std::string command, std::string commitHash);
    [[nodiscard]] static std::shared_ptr<RVGitSequenceInstruction> sequenceInstructionWithCommand(
        std::string command, std::string commitHash);

    /// One of the constants above, or whatever word stands in git's list ("exec", "label").
    [[nodiscard]] const std::string& command() const { return command_; }
    /// Abbreviated where git's list has it so; of a line that names no commit, its second word.
    [[nodiscard]] const std::string& commitHash() const { return commitHash_; }

    /// "command commitHash".
    [[nodiscard]] std::string stringValue() const;

private:
    std::string command_;
    std::string commitHash_;
};
