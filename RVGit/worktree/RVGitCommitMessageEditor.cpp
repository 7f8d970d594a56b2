#include "RVGit/worktree/RVGitCommitMessageEditor.h"

#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVURL.h"

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
    const std::string delimiter =
        "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b";
    requireParameter(url.isFileURL(), "url.isFileURL");
    const std::string script =
        "#!/bin/sh\n/bin/cat << '" + delimiter + "' > \"$1\"\n" + commitMessage_ + "\n" + delimiter;
    return RVFileManager::writeFileAtomically(url.path(), script, 0755, error);
}
