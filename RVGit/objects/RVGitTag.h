#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/objects/RVGitObject.h"
#include "RVGit/repository/RVGitRef.h"

class RVGitSignature;

/// A tag: a ref under "refs/tags/" and, if it is annotated, a tag object with a message. Without
/// an object hash its object type is none and it has no message. A snapshot that stays on one
/// thread, since its ref does; the static operations may be called on any.
class RVGIT_EXPORT RVGitTag : public RVGitObject, public RVGitRefProtocol {
public:
    /// The repository and the ref are required. The message of a tag without an object hash is
    /// dropped.
    RVGitTag(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
             std::optional<std::string> objectHash = std::nullopt,
             std::optional<std::string> message = std::nullopt,
             std::optional<RVDate> creatorDate = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitTag> tagWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
        std::optional<std::string> objectHash = std::nullopt,
        std::optional<std::string> message = std::nullopt,
        std::optional<RVDate> creatorDate = std::nullopt);

    /// Runs one `git for-each-ref`; in git's order, which is by name. Absent on failure. A tag
    /// whose message holds the bytes 0x1F 0x1D 0x1F is left out, for git's output is parted by
    /// them.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitTag>>> allTagsForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Finds the tag by its short or full name. Null with a cleared place if there is none. Lists
    /// all tags: to look up many, ask for the list once.
    [[nodiscard]] static std::shared_ptr<RVGitTag> tagForRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    /// Creates a lightweight tag; without a revision, at HEAD. Null with code 1700 if it exists,
    /// 1701 if the revision cannot be resolved; null with a cleared place, be it made or not, where
    /// all commands are cancelled.
    [[nodiscard]] static std::shared_ptr<RVGitTag> createTagWithRefName(
        const std::string& refName, const std::optional<std::string>& revision,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// With a message the tag is annotated.
    [[nodiscard]] static std::shared_ptr<RVGitTag> createTagWithRefName(
        const std::string& refName, const std::optional<std::string>& message,
        const std::optional<std::string>& revision,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Takes the short name. False with code 1702 if there is no such tag.
    [[nodiscard]] static bool deleteTagWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    /// Runs `git verify-tag`. A bad signature is an answer and no failure: the place is then
    /// cleared. Null for a tag without signature, one that does not exist, and an SSH signature
    /// that does not fit, all without an error. An SSH signature verifies only if git's
    /// configuration names the allowed-signers file, or the form with that file's path is used.
    [[nodiscard]] static std::shared_ptr<RVGitSignature> verifyTagWithRefName(
        const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitSignature> verifyTagWithRefName(
        const std::string& refName, const std::optional<std::string>& allowedSignersFilePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRef>& ref() const { return ref_; }
    /// The tagger's date, or for a lightweight tag the committer's; 1970 where git knows none.
    [[nodiscard]] const std::optional<RVDate>& creatorDate() const { return creatorDate_; }
    /// Without newlines at its ends; it ends in the signature, if there is one.
    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }

    [[nodiscard]] std::optional<std::string> fullRefName() const override;
    [[nodiscard]] std::string refName() const override;
    [[nodiscard]] std::optional<std::string> commitHash() const override;
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit() override;

private:
    std::shared_ptr<RVGitRef> ref_;
    std::optional<RVDate> creatorDate_;
    std::optional<std::string> message_;
};
