#include "RVGit/svn/RVGitSVNRefSpec.h"

std::shared_ptr<RVGitSVNRefSpec> RVGitSVNRefSpec::SVNRefSpecFromString(std::string_view text) {
    // Without a colon both parts are the whole text.
    return SVNRefSpecWithRemotePath(std::string(text.substr(0, text.find(':'))),
                                    std::string(text.substr(text.rfind(':') + 1)));
}

std::shared_ptr<RVGitSVNRefSpec> RVGitSVNRefSpec::SVNRefSpecWithRemotePath(
    std::optional<std::string> remotePath, std::optional<std::string> localRefName) {
    return std::make_shared<RVGitSVNRefSpec>(std::move(remotePath), std::move(localRefName));
}

std::string RVGitSVNRefSpec::stringValue() const {
    return remotePath_.value_or("") + ":" + localRefName_.value_or("");
}
