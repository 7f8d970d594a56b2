#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git tag`, to create one tag or to delete some. Failure: code 1700 if the tag exists, 1701
/// if the revision cannot be resolved, 1702 if a tag to delete does not exist, 108 if it could not
/// be signed.
class RVGIT_EXPORT RVGitTagCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitTagCommand(const std::shared_ptr<RVGitRepository>& repository);

    /// With a message the tag is annotated, without one it is lightweight. Without a revision it
    /// stands at HEAD. Where tag.gpgSign is configured, git signs every tag, and one without a
    /// message fails: no editor is opened for it.
    [[nodiscard]] static std::shared_ptr<RVGitTagCommand> gitCreateTagCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string refName,
        std::optional<std::string> revision, std::optional<std::string> message);
    [[nodiscard]] static std::shared_ptr<RVGitTagCommand> gitDeleteTagCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::vector<std::string> refNames);

    [[nodiscard]] bool deletesTag() const { return deletesTag_; }
    void setDeletesTag(bool deletes) { deletesTag_ = deletes; }
    /// Has an effect on annotated tags only.
    [[nodiscard]] bool signsTag() const { return signsTag_; }
    void setSignsTag(bool signs) { signsTag_ = signs; }
    /// Short names.
    [[nodiscard]] const std::optional<std::vector<std::string>>& refNames() const {
        return refNames_;
    }
    void setRefNames(std::optional<std::vector<std::string>> refNames) {
        refNames_ = std::move(refNames);
    }
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    /// Given to git on standard input; git removes comment lines and surplus blank ones.
    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }
    void setMessage(std::optional<std::string> message) { message_ = std::move(message); }
    /// The key to sign with; absent or empty: the one that the configuration names.
    [[nodiscard]] const std::optional<std::string>& signingKeyFingerprint() const {
        return signingKeyFingerprint_;
    }
    void setSigningKeyFingerprint(std::optional<std::string> fingerprint) {
        signingKeyFingerprint_ = std::move(fingerprint);
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    bool deletesTag_ = false;
    bool signsTag_ = false;
    std::optional<std::vector<std::string>> refNames_;
    std::optional<std::string> revision_;
    std::optional<std::string> message_;
    std::optional<std::string> signingKeyFingerprint_;
};
