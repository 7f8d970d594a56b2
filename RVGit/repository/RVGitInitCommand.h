#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Options of RVGitInitCommand: a boolean, and a text that is one of the modes below.
inline constexpr char RVGitInitOptionBare[] = "bare";
inline constexpr char RVGitInitOptionSharedMode[] = "shared";

inline constexpr char RVGitInitOptionSharedModeDefault[] = "umask";
inline constexpr char RVGitInitOptionSharedModeGroup[] = "group";
inline constexpr char RVGitInitOptionSharedModeAll[] = "all";

/// Creates a repository, or completes an existing one: git init. Errors carry the path under
/// RVGitRepositoryPathErrorKey.
class RVGIT_EXPORT RVGitInitCommand : public RVGitCommand {
public:
    RVGitInitCommand(std::string path, const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitInitCommand> gitInitCommandWithPath(
        const std::string& path, const std::optional<RVOptions>& options);

    [[nodiscard]] const std::string& path() const { return path_; }
    void setPath(std::string path) { path_ = std::move(path); }
    [[nodiscard]] bool isBare() const { return bare_; }
    void setBare(bool bare) { bare_ = bare; }
    /// Absent: git's default.
    [[nodiscard]] const std::optional<std::string>& sharedMode() const { return sharedMode_; }
    void setSharedMode(std::optional<std::string> mode) { sharedMode_ = std::move(mode); }

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::string path_;
    bool bare_ = false;
    std::optional<std::string> sharedMode_;
};
