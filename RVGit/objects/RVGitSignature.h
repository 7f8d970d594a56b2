#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// Who signed a tag or a commit, with which key, and what the verification made of it.
/// Immutable, so any thread may read it.
class RVGIT_EXPORT RVGitSignature {
public:
    RVGitSignature(std::optional<std::string> name, std::optional<std::string> email,
                   std::optional<std::string> fingerprint, std::optional<std::string> signingKey,
                   std::optional<std::string> status);

    [[nodiscard]] static std::shared_ptr<RVGitSignature> signatureWithName(
        std::optional<std::string> name, std::optional<std::string> email,
        std::optional<std::string> fingerprint, std::optional<std::string> signingKey,
        std::optional<std::string> status);

    [[nodiscard]] const std::optional<std::string>& name() const { return name_; }
    [[nodiscard]] const std::optional<std::string>& email() const { return email_; }
    [[nodiscard]] const std::optional<std::string>& fingerprint() const { return fingerprint_; }
    [[nodiscard]] const std::optional<std::string>& signingKey() const { return signingKey_; }
    /// The letter of git's "%G?": G good, B bad, U good with unknown validity, X expired, Y made
    /// by an expired key, R made by a revoked key, E cannot be checked, N none.
    [[nodiscard]] const std::optional<std::string>& status() const { return status_; }

    /// The letter of a status word of GPG ("GOODSIG" is "G"); "E" for any word unknown to it.
    [[nodiscard]] static std::string signatureStatusFromTagSignatureStatus(std::string_view word);

private:
    std::optional<std::string> name_;
    std::optional<std::string> email_;
    std::optional<std::string> fingerprint_;
    std::optional<std::string> signingKey_;
    std::optional<std::string> status_;
};
