#include "RVGit/objects/RVGitSignature.h"

#include <utility>

RVGitSignature::RVGitSignature(std::optional<std::string> name, std::optional<std::string> email,
                               std::optional<std::string> fingerprint,
                               std::optional<std::string> signingKey,
                               std::optional<std::string> status)
    : name_(std::move(name)),
      email_(std::move(email)),
      fingerprint_(std::move(fingerprint)),
      signingKey_(std::move(signingKey)),
      status_(std::move(status)) {}

std::shared_ptr<RVGitSignature> RVGitSignature::signatureWithName(
    std::optional<std::string> name, std::optional<std::string> email,
    std::optional<std::string> fingerprint, std::optional<std::string> signingKey,
    std::optional<std::string> status) {
    return std::make_shared<RVGitSignature>(std::move(name), std::move(email),
                                            std::move(fingerprint), std::move(signingKey),
                                            std::move(status));
}

std::string RVGitSignature::signatureStatusFromTagSignatureStatus(std::string_view word) {
    static constexpr std::pair<std::string_view, const char*> letters[] = {
        {"GOODSIG", "G"},   {"BADSIG", "B"},    {"EXPSIG", "X"},
        {"EXPKEYSIG", "Y"}, {"REVKEYSIG", "R"}, {"ERRSIG", "E"},
    };
    for (const auto& [name, letter] : letters)
        if (word == name)
            return letter;
    return "E";
}
