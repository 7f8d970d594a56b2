#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// How RVGitCommitCommand commits.
enum RVGitCommitOptions : unsigned {
    /// Replaces the last commit.
    RVGitCommitOptionAmend = 1,
    /// Adds a "Signed-off-by" line.
    RVGitCommitOptionSignOff = 2,
    /// Commits without changes, too.
    RVGitCommitOptionAllowEmpty = 4,
    /// Skips the hooks that could refuse.
    RVGitCommitOptionNoVerify = 8,
};

/// Commits the index with `git commit`. The message goes through standard input, in UTF-8 and
/// canonically composed (NFC), whatever encoding is configured; git cleans it up as configured.
/// Whether the commit is signed is left to the configuration.
///
/// Without a message and without reEditsRevision(), git opens the user's editor, for which there
/// may be no terminal: pass a message, or set the environment variable "GIT_EDITOR".
///
/// There are no codes of its own: a refusal by git or by a hook is the generic error, with git's
/// and the hook's words in the user info.
class RVGIT_EXPORT RVGitCommitCommand : public RVGitCommand {
public:
    /// The repository is required. `options` are RVGitCommitOptions.
    RVGitCommitCommand(const std::shared_ptr<RVGitRepository>& repository,
                       std::optional<std::string> message, unsigned options);
    [[nodiscard]] static std::shared_ptr<RVGitCommitCommand> gitCommitCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message);
    [[nodiscard]] static std::shared_ptr<RVGitCommitCommand> gitCommitCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message,
        unsigned options);

    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }
    void setMessage(std::optional<std::string> message) { message_ = std::move(message); }
    [[nodiscard]] bool amendsChanges() const { return amendsChanges_; }
    void setAmendsChanges(bool amends) { amendsChanges_ = amends; }
    [[nodiscard]] bool signsOff() const { return signsOff_; }
    void setSignsOff(bool signsOff) { signsOff_ = signsOff; }
    [[nodiscard]] bool allowsEmpty() const { return allowsEmpty_; }
    void setAllowsEmpty(bool allows) { allowsEmpty_ = allows; }
    [[nodiscard]] bool doesNotVerify() const { return doesNotVerify_; }
    void setDoesNotVerify(bool doesNotVerify) { doesNotVerify_ = doesNotVerify; }
    /// The commit whose message and author are taken; git then runs the editor on the message,
    /// and message() is ignored.
    [[nodiscard]] const std::optional<std::string>& reEditsRevision() const {
        return reEditsRevision_;
    }
    void setReEditsRevision(std::optional<std::string> revision) {
        reEditsRevision_ = std::move(revision);
    }

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::string> message_;
    bool amendsChanges_;
    bool signsOff_;
    bool allowsEmpty_;
    bool doesNotVerify_;
    std::optional<std::string> reEditsRevision_;
};
