#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"

class RVGitRemoteBranch;
class RVGitRepository;

/// A remote of a repository, as far as a transfer needs to know it.
class RVGIT_EXPORT RVGitRemote {
public:
    using Branches = std::optional<std::vector<std::shared_ptr<RVGitRemoteBranch>>>;

    RVGitRemote(std::shared_ptr<RVGitRepository> repository, std::string name,
                std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
                Branches branches)
        : repository_(std::move(repository)),
          name_(std::move(name)),
          downstreamURL_(std::move(downstreamURL)),
          upstreamURL_(std::move(upstreamURL)),
          branches_(std::move(branches)) {}

    [[nodiscard]] static std::shared_ptr<RVGitRemote> remoteWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name,
        std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
        Branches branches) {
        return std::make_shared<RVGitRemote>(std::move(repository), std::move(name),
                                             std::move(downstreamURL), std::move(upstreamURL),
                                             std::move(branches));
    }

    [[nodiscard]] const std::string& name() const { return name_; }
    /// The URL that is fetched from.
    [[nodiscard]] const std::optional<std::string>& downstreamURL() const { return downstreamURL_; }
    /// The URL that is pushed to.
    [[nodiscard]] const std::optional<std::string>& upstreamURL() const { return upstreamURL_; }

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::optional<std::string> downstreamURL_;
    std::optional<std::string> upstreamURL_;
    Branches branches_;
};
