#include "RVGit/merge/RVGitEditorScript.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitSequenceEditor.h"
#include "RVGit/worktree/RVGitCommitMessageEditor.h"

namespace {

/// Blanks and control characters, and what POSIX reserves for the shell.
bool isReadByShell(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte <= ' ' || byte == 0x7F ||
           std::string_view("|&;<>()$`\\\"'*?[]{}!#~=%").find(character) != std::string_view::npos;
}

}  // namespace

bool rvgit::isPlainShellWord(std::string_view text) {
    return !text.empty() && std::ranges::none_of(text, isReadByShell);
}

std::string rvgit::editorCommandForScriptPath(std::string_view path) {
    if (isPlainShellWord(path))
        return std::string(path);
    std::string quoted = "'";
    for (const char character : path) {
        if (character == '\'')
            quoted += "'\\''";
        else
            quoted += character;
    }
    return quoted + '\'';
}

std::optional<std::string> rvgit::temporarySequenceEditorScript(
    RVGitSequenceInstruction::List sequenceInstructions, RVErrorPlace error) {
    std::string path = RVFileManager::temporaryFilePath();
    if (!RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(
            RVURL::fileURLWithPath(path), std::move(sequenceInstructions), error))
        return std::nullopt;
    return path;
}

std::optional<std::string> rvgit::temporaryCommitMessageEditorScript(
    const std::string& commitMessage, RVErrorPlace error) {
    if (!RVGitCommitMessageEditor::isCommitMessageSafe(commitMessage)) {
        fillErrorPlace(error, gitErrorWithCode(RVGitRVGitGenericError));
        return std::nullopt;
    }
    std::string path = RVFileManager::temporaryFilePath();
    if (!RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(
            RVURL::fileURLWithPath(path), commitMessage, error))
        return std::nullopt;
    return path;
}

void rvgit::openNoEditor(RVGitCommand& command) {
    command.addEnvironmentVariables({{"GIT_EDITOR", ":"}, {"GIT_SEQUENCE_EDITOR", ":"}});
    // It would have git open an editor where it does not by itself.
    command.setValueForEnvironmentVariable(std::nullopt, "GIT_MERGE_AUTOEDIT");
    // What a rebase tells its steps: git would forget which commit it was picking when it stops.
    command.setValueForEnvironmentVariable(std::nullopt, "GIT_CHERRY_PICK_HELP");
}

void rvgit::takeMessagesAsUTF8(RVGitCommand& command) {
    command.overrideGitConfiguration("i18n.commitEncoding", "UTF-8");
}

void rvgit::openNoEditorUnlessSet(RVGitCommand& command) {
    for (const char* name : {"GIT_EDITOR", "GIT_SEQUENCE_EDITOR"})
        if (!command.valueForEnvironmentVariable(name))
            command.setValueForEnvironmentVariable(":", name);
}
