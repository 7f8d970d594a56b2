#include "RVGit/worktree/RVGitCommitMessageEditor.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVURL.h"

namespace {

constexpr std::string_view delimiter =
    "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b";

// Whether the shell would find the end of the message inside it, and run what follows. A shell
// may drop NUL bytes before it compares.
bool holdsDelimiterLine(std::string message) {
    std::erase(message, '\0');
    for (const std::string& line : componentsSeparatedByString(message, "\n"))
        if (line == delimiter)
            return true;
    return false;
}

}  // namespace

RVGitCommitMessageEditor::RVGitCommitMessageEditor(std::string commitMessage)
    : commitMessage_(std::move(commitMessage)) {}

std::shared_ptr<RVGitCommitMessageEditor>
RVGitCommitMessageEditor::commitMessageEditorWithCommitMessage(std::string commitMessage) {
    return std::make_shared<RVGitCommitMessageEditor>(std::move(commitMessage));
}

bool RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(const RVURL& url,
                                                                       std::string commitMessage,
                                                                       RVErrorPlace error) {
    return commitMessageEditorWithCommitMessage(std::move(commitMessage))
        ->createGitCommitMessageEditorScriptAtURL(url, error);
}

bool RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(const RVURL& url,
                                                                       RVErrorPlace error) const {
    requireParameter(url.isFileURL(), "url.isFileURL");
    if (holdsDelimiterLine(commitMessage_)) {
        fillErrorPlace(error, posixError(EINVAL, url.path()));
        return false;
    }
    const std::string script = "#!/bin/sh\n/bin/cat << '" + std::string(delimiter) +
                               "' > \"$1\"\n" + commitMessage_ + "\n" + std::string(delimiter);
    return RVFileManager::writeFileAtomically(url.path(), script, 0755, error);
}
