#include "RVGit/repository/RVGitRefSpec.h"

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"

std::shared_ptr<RVGitRefSpec> RVGitRefSpec::refSpecFromString(std::string_view text) {
    auto names = componentsSeparatedByString(text, ":");
    if (names.size() == 1)
        return refSpecWithLocalRefName(names[0]);
    if (names.size() == 2)
        return refSpecWithLocalRefName(names[0], names[1]);
    return refSpecWithLocalRefName(std::nullopt, std::nullopt);
}

std::shared_ptr<RVGitRefSpec> RVGitRefSpec::matchingRefsRefSpec() {
    return refSpecWithLocalRefName("", "");
}

std::shared_ptr<RVGitRefSpec> RVGitRefSpec::deleteRefSpecWithRemoteRefName(
    std::optional<std::string> remoteRefName) {
    return refSpecWithLocalRefName("", std::move(remoteRefName));
}

std::shared_ptr<RVGitRefSpec> RVGitRefSpec::refSpecWithLocalRefName(
    std::optional<std::string> localRefName) {
    return refSpecWithLocalRefName(std::move(localRefName), std::nullopt);
}

std::shared_ptr<RVGitRefSpec> RVGitRefSpec::refSpecWithLocalRefName(
    std::optional<std::string> localRefName, std::optional<std::string> remoteRefName) {
    return std::make_shared<RVGitRefSpec>(std::move(localRefName), std::move(remoteRefName));
}

std::string RVGitRefSpec::stringValue() const {
    if (!localRefName_ && !remoteRefName_)
        return "";
    if (!localRefName_)
        return "HEAD:" + *remoteRefName_;
    bool matchesRefs = localRefName_->empty() && remoteRefName_ && remoteRefName_->empty();
    if (RVStringIsEmpty(remoteRefName_) && !matchesRefs)
        return *localRefName_;
    return *localRefName_ + ":" + *remoteRefName_;
}

std::shared_ptr<RVGitRefSpec> RVGitMakeRefSpec(std::optional<std::string> localRefName,
                                               std::optional<std::string> remoteRefName) {
    return RVGitRefSpec::refSpecWithLocalRefName(std::move(localRefName), std::move(remoteRefName));
}
