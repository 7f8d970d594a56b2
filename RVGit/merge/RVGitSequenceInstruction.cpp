#include "RVGit/merge/RVGitSequenceInstruction.h"

#include <utility>

RVGitSequenceInstruction::RVGitSequenceInstruction(std::string command, std::string commitHash)
    : command_(std::move(command)), commitHash_(std::move(commitHash)) {}

std::shared_ptr<RVGitSequenceInstruction> RVGitSequenceInstruction::sequenceInstructionWithCommand(
    std::string command, std::string commitHash) {
    return std::make_shared<RVGitSequenceInstruction>(std::move(command), std::move(commitHash));
}

std::string RVGitSequenceInstruction::stringValue() const {
    return command_ + " " + commitHash_;
}
