#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git show` for one object. The object is read from standardOutputData(), unparsed.
/// Failure: code 1201 if the revision, path or object name does not exist.
class RVGIT_EXPORT RVGitShowCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitShowCommand(const std::shared_ptr<RVGitRepository>& repository,
                     std::string objectReference);

    [[nodiscard]] static std::shared_ptr<RVGitShowCommand> gitShowCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, const std::string& objectHash);
    /// The reference is "revision:filePath", an absent part counting as empty.
    [[nodiscard]] static std::shared_ptr<RVGitShowCommand> gitShowCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath);

    [[nodiscard]] const std::string& objectReference() const { return objectReference_; }
    void setObjectReference(std::string reference) { objectReference_ = std::move(reference); }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::string objectReference_;
};
