#pragma once

#include <memory>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"

class RVURL;

/// Writes a shell script that git runs as its sequence editor, and that puts a fixed list of
/// instructions into the file that it is given: a rebase of which each step is known beforehand.
class RVGIT_EXPORT RVGitSequenceEditor {
public:
    explicit RVGitSequenceEditor(RVGitSequenceInstruction::List sequenceInstructions);
    [[nodiscard]] static std::shared_ptr<RVGitSequenceEditor>
    sequenceEditorWithSequenceInstructions(RVGitSequenceInstruction::List sequenceInstructions);
    /// Makes an editor and has it write its script.
    [[nodiscard]] static bool createGitSequenceEditorScriptAtURL(
        const RVURL& url, RVGitSequenceInstruction::List sequenceInstructions,
        RVErrorPlace error = nullptr);

    /// Oldest commit first, as git takes them.
    [[nodiscard]] const RVGitSequenceInstruction::List& sequenceInstructions() const {
        return sequenceInstructions_;
    }

    /// Writes the script to a file URL (required), with the permissions 0755. What stood there is
    /// replaced in one step, and kept on failure, which leaves an error of the operating system.
    /// The file is the caller's to delete.
    ///
    /// The instructions stand in the script unquoted. One that is not made of two words without
    /// any character that a shell reads is refused: code 1, with the instruction's second word
    /// under RVGitRevisionErrorKey, and nothing is written.
    [[nodiscard]] bool createGitSequenceEditorScriptAtURL(const RVURL& url,
                                                          RVErrorPlace error = nullptr) const;

private:
    RVGitSequenceInstruction::List sequenceInstructions_;
};
