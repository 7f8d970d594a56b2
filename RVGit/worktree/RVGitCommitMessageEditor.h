#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVURL;

/// Writes a shell script that git runs as its editor, and that puts a fixed message into the file
/// that it is given: the answer to a rebase or a cherry-pick that stops for a message.
///
/// Git hands the value of "GIT_EDITOR" to a shell, so that a path with a blank or another special
/// character must be quoted there: `'/tmp/a b/editor'`.
class RVGIT_EXPORT RVGitCommitMessageEditor {
public:
    explicit RVGitCommitMessageEditor(std::string commitMessage);
    [[nodiscard]] static std::shared_ptr<RVGitCommitMessageEditor>
    commitMessageEditorWithCommitMessage(std::string commitMessage);
    /// Makes an editor and has it write its script.
    [[nodiscard]] static bool createGitCommitMessageEditorScriptAtURL(const RVURL& url,
                                                                      std::string commitMessage,
                                                                      RVErrorPlace error = nullptr);

    [[nodiscard]] const std::string& commitMessage() const { return commitMessage_; }

    /// Whether a script can hand the message over whole. False for one with a line that equals the
    /// script's delimiter, a fixed word of 64 digits, where the shell would end the message and
    /// run what follows, and for one with a NUL byte, which no shell keeps.
    [[nodiscard]] static bool isCommitMessageSafe(std::string_view commitMessage);

    /// Writes the script to a file URL (required), with the permissions 0755. What stood there is
    /// replaced in one step, and kept on failure, which leaves an error of the operating system.
    /// The file is the caller's to delete.
    ///
    /// The message arrives byte for byte, with a newline at its end, and nothing in it is expanded.
    /// One that is not safe is refused (EINVAL).
    [[nodiscard]] bool createGitCommitMessageEditorScriptAtURL(const RVURL& url,
                                                               RVErrorPlace error = nullptr) const;

private:
    std::string commitMessage_;
};
