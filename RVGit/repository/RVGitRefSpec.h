#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// The pair of ref names that fetch and push take: a plain value. Which of the two is the source
/// depends on the command; the one in front is the local one here.
class RVGIT_EXPORT RVGitRefSpec {
public:
    RVGitRefSpec(std::optional<std::string> localRefName, std::optional<std::string> remoteRefName)
        : localRefName_(std::move(localRefName)), remoteRefName_(std::move(remoteRefName)) {}

    /// "local" or "local:remote"; with more colons, a spec without names.
    [[nodiscard]] static std::shared_ptr<RVGitRefSpec> refSpecFromString(std::string_view text);
    /// ":", which pushes every branch that the remote has too.
    [[nodiscard]] static std::shared_ptr<RVGitRefSpec> matchingRefsRefSpec();
    /// ":name", which deletes the remote's ref.
    [[nodiscard]] static std::shared_ptr<RVGitRefSpec> deleteRefSpecWithRemoteRefName(
        std::optional<std::string> remoteRefName);
    [[nodiscard]] static std::shared_ptr<RVGitRefSpec> refSpecWithLocalRefName(
        std::optional<std::string> localRefName);
    [[nodiscard]] static std::shared_ptr<RVGitRefSpec> refSpecWithLocalRefName(
        std::optional<std::string> localRefName, std::optional<std::string> remoteRefName);

    [[nodiscard]] const std::optional<std::string>& localRefName() const { return localRefName_; }
    void setLocalRefName(std::optional<std::string> name) { localRefName_ = std::move(name); }
    [[nodiscard]] const std::optional<std::string>& remoteRefName() const { return remoteRefName_; }
    void setRemoteRefName(std::optional<std::string> name) { remoteRefName_ = std::move(name); }

    /// The form that git takes. An absent local name is "HEAD" beside a remote one; both absent
    /// give "". Names stand in it as they are: a "+" ahead of the local one forces the update, and
    /// a branch may be named so. The full name of a ref ("refs/heads/+main") is never taken for
    /// more than a name.
    [[nodiscard]] std::string stringValue() const;
    [[nodiscard]] std::string description() const { return stringValue(); }

private:
    std::optional<std::string> localRefName_;
    std::optional<std::string> remoteRefName_;
};
