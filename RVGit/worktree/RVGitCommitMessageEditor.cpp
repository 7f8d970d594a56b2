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

bool RVGitCommitMessageEditor::isCommitMessageSafe(std::string_view commitMessage) {
    if (commitMessage.find('\0') != std::string_view::npos)
        return false;
    for (;;) {
        const auto end = commitMessage.find('\n');
        if (commitMessage.substr(0, end) == delimiter)
            return false;
        if (end == std::string_view::npos)
            return true;
        commitMessage.remove_prefix(end + 1);
    }
}

bool RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(const RVURL& url,
                                                                       RVErrorPlace error) const {
    requireParameter(url.isFileURL(), "url.isFileURL");
    if (!isCommitMessageSafe(commitMessage_)) {
        fillErrorPlace(error, posixError(EINVAL, url.path()));
        return false;
    }
    const std::string script = "#!/bin/sh\n/bin/cat << '" + std::string(delimiter) +
                               "' > \"$1\"\n" + commitMessage_ + "\n" + std::string(delimiter);
    return RVFileManager::writeFileAtomically(url.path(), script, 0755, error);
}
