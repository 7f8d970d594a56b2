#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

/// Writes refs: git update-ref. An exit code of 1 counts as a success: kept for compatibility, so
/// whoever must know reads exitCode().
class RVGIT_EXPORT RVGitUpdateRefCommand : public RVGitCommand {
public:
    /// The options are not read.
    RVGitUpdateRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                          const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitUpdateRefCommand> gitUpdateRefCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    [[nodiscard]] bool deletesRef() const { return deletesRef_; }
    void setDeletesRef(bool deletes) { deletesRef_ = deletes; }
    /// Lines in the format of "git update-ref --stdin", without newlines, which go to its standard
    /// input. Empty: none, and git takes the ref name and the revision from the command line.
    [[nodiscard]] const std::vector<std::string>& instructions() const { return instructions_; }
    void setInstructions(std::vector<std::string> instructions) {
        instructions_ = std::move(instructions);
    }
    [[nodiscard]] const std::optional<std::string>& fullRefName() const { return fullRefName_; }
    void setFullRefName(std::optional<std::string> name) { fullRefName_ = std::move(name); }
    /// What the ref is to point to or, for a deletion, what it must point to now.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;

private:
    bool deletesRef_ = false;
    std::vector<std::string> instructions_;
    std::optional<std::string> fullRefName_;
    std::optional<std::string> revision_;
};
