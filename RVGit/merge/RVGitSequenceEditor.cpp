#include "RVGit/merge/RVGitSequenceEditor.h"

#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitEditorScript.h"

RVGitSequenceEditor::RVGitSequenceEditor(RVGitSequenceInstruction::List sequenceInstructions)
    : sequenceInstructions_(std::move(sequenceInstructions)) {}

std::shared_ptr<RVGitSequenceEditor> RVGitSequenceEditor::sequenceEditorWithSequenceInstructions(
    RVGitSequenceInstruction::List sequenceInstructions) {
    return std::make_shared<RVGitSequenceEditor>(std::move(sequenceInstructions));
}

bool RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(
    const RVURL& url, RVGitSequenceInstruction::List sequenceInstructions, RVErrorPlace error) {
    return sequenceEditorWithSequenceInstructions(std::move(sequenceInstructions))
        ->createGitSequenceEditorScriptAtURL(url, error);
}

bool RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(const RVURL& url,
                                                             RVErrorPlace error) const {
    requireParameter(url.isFileURL(), "url.isFileURL");
    std::string script = "#!/bin/sh\n/bin/cat /dev/null > \"$1\"";
    for (const auto& instruction : sequenceInstructions_) {
        if (!isPlainShellWord(instruction->command()) ||
            !isPlainShellWord(instruction->commitHash())) {
            fillErrorPlace(error,
                           gitErrorWithCode(RVGitRVGitGenericError,
                                            {{RVGitRevisionErrorKey, instruction->commitHash()}}));
            return false;
        }
        script += "\n/bin/echo " + instruction->stringValue() + " >> \"$1\"";
    }
    return RVFileManager::writeFileAtomically(url.path(), script, 0755, error);
}
