#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"

/// Who made something: a name with an e-mail address, either of which may be absent. A plain
/// value; one object is used by one thread at a time while it is changed.
class RVGIT_EXPORT RVGitActor {
public:
    RVGitActor() = default;
    RVGitActor(std::optional<std::string> name, std::optional<std::string> email)
        : name_(std::move(name)), email_(std::move(email)) {}

    [[nodiscard]] static std::shared_ptr<RVGitActor> actor();
    [[nodiscard]] static std::shared_ptr<RVGitActor> actorWithName(
        std::optional<std::string> name, std::optional<std::string> email);

    /// "name <email>", or the one that is present, or absent.
    [[nodiscard]] static std::optional<std::string> displayNameWithName(
        const std::optional<std::string>& name, const std::optional<std::string>& email);
    /// The same text.
    [[nodiscard]] static std::optional<std::string> identifierWithName(
        const std::optional<std::string>& name, const std::optional<std::string>& email);

    [[nodiscard]] const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> name) { name_ = std::move(name); }
    [[nodiscard]] const std::optional<std::string>& email() const { return email_; }
    void setEmail(std::optional<std::string> email) { email_ = std::move(email); }
    [[nodiscard]] std::optional<std::string> identifier() const {
        return identifierWithName(name_, email_);
    }
    [[nodiscard]] std::optional<std::string> displayName() const {
        return displayNameWithName(name_, email_);
    }

    /// Whether the identifiers are equal.
    [[nodiscard]] bool isEqualToGitActor(const RVGitActor& other) const;
    [[nodiscard]] bool isEqual(const RVGitActor& other) const {
        return this == &other || isEqualToGitActor(other);
    }
    friend bool operator==(const RVGitActor& left, const RVGitActor& right) {
        return left.isEqual(right);
    }

private:
    std::optional<std::string> name_;
    std::optional<std::string> email_;
};
