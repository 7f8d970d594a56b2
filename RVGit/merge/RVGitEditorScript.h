#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"

class RVGitCommand;

inline namespace RVGIT_EXPORT rvgit {

// The scripts that git runs in place of an editor, while it rewrites history: each is written to a
// new temporary file and stays there, since git may run it again when the operation is continued.

/// Whether a shell takes the text for one word and for nothing but itself. False for no text.
[[nodiscard]] bool isPlainShellWord(std::string_view text);

/// The path of a script as the value of "GIT_EDITOR" or "GIT_SEQUENCE_EDITOR", which git hands to
/// a shell: the path itself, or quoted where it holds a character that a shell reads.
[[nodiscard]] std::string editorCommandForScriptPath(std::string_view path);

/// The path of a new script of RVGitSequenceEditor. Absent, with its error, on failure.
[[nodiscard]] std::optional<std::string> temporarySequenceEditorScript(
    RVGitSequenceInstruction::List sequenceInstructions, RVErrorPlace error = nullptr);

/// The path of a new script of RVGitCommitMessageEditor. Absent, with its error, on failure. A
/// message that a script cannot hand over whole, so that a shell would run part of it, is refused
/// with code 1.
[[nodiscard]] std::optional<std::string> temporaryCommitMessageEditorScript(
    const std::string& commitMessage, RVErrorPlace error = nullptr);

/// Has git take every message and every list as it proposes them, whatever editor is configured or
/// inherited, and stop at conflicts as it does by itself. Whoever has an answer sets "GIT_EDITOR"
/// or "GIT_SEQUENCE_EDITOR" afterwards.
void openNoEditor(RVGitCommand& command);

/// The same just ahead of the launch, for a command whose environment has been sanitized since:
/// both variables are taken away then, and git would open what is configured.
void openNoEditorUnlessSet(RVGitCommand& command);

/// Has git know the messages that it is given for what they are, UTF-8: where another encoding is
/// configured for commits it would take them to be in that.
void takeMessagesAsUTF8(RVGitCommand& command);

}  // namespace rvgit
