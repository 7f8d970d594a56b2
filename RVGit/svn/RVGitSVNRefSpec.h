#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "RVGit/base/RVExport.h"

/// Which path of a Subversion repository is kept under which local ref: "trunk:refs/remotes/x/y". A
/// plain value. Unlike git's own, it has no "+".
class RVGIT_EXPORT RVGitSVNRefSpec {
public:
    RVGitSVNRefSpec(std::optional<std::string> remotePath, std::optional<std::string> localRefName)
        : remotePath_(std::move(remotePath)), localRefName_(std::move(localRefName)) {}

    /// The texts in front of the first colon and behind the last one; without a colon, the whole
    /// text for both.
    [[nodiscard]] static std::shared_ptr<RVGitSVNRefSpec> SVNRefSpecFromString(
        std::string_view text);
    [[nodiscard]] static std::shared_ptr<RVGitSVNRefSpec> SVNRefSpecWithRemotePath(
        std::optional<std::string> remotePath, std::optional<std::string> localRefName);

    [[nodiscard]] const std::optional<std::string>& remotePath() const { return remotePath_; }
    void setRemotePath(std::optional<std::string> path) { remotePath_ = std::move(path); }
    [[nodiscard]] const std::optional<std::string>& localRefName() const { return localRefName_; }
    void setLocalRefName(std::optional<std::string> name) { localRefName_ = std::move(name); }

    /// Both with a colon between them; an absent one is left out.
    [[nodiscard]] std::string stringValue() const;
    [[nodiscard]] std::string description() const { return stringValue(); }

private:
    std::optional<std::string> remotePath_;
    std::optional<std::string> localRefName_;
};
