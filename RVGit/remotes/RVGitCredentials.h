#pragma once

#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"

/// A name and a password for a server, immutable.
class RVGIT_EXPORT RVGitCredentials {
public:
    RVGitCredentials(std::string scheme, std::string host, std::optional<std::string> path,
                     std::string user, std::string password)
        : scheme_(std::move(scheme)),
          host_(std::move(host)),
          path_(std::move(path)),
          user_(std::move(user)),
          password_(std::move(password)) {}

    [[nodiscard]] const std::string& scheme() const { return scheme_; }
    /// With the port, if there is one, behind a colon.
    [[nodiscard]] const std::string& host() const { return host_; }
    /// Absent unless credentials are kept by path.
    [[nodiscard]] const std::optional<std::string>& path() const { return path_; }
    [[nodiscard]] const std::string& user() const { return user_; }
    [[nodiscard]] const std::string& password() const { return password_; }

private:
    std::string scheme_;
    std::string host_;
    std::optional<std::string> path_;
    std::string user_;
    std::string password_;
};
