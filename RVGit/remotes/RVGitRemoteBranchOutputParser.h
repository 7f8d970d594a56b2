#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One remote branch, as `git branch -v -r` tells it.
struct RVGIT_EXPORT RVGitRemoteBranchOutputParserResultItem {
    std::string fullRefName;
    /// Absent for a branch that only the remote's HEAD names.
    std::optional<std::string> commitHash;
    /// Whether the remote's HEAD points at this branch.
    bool isHead = false;
};

/// Reads what `git branch -v -r` prints with whole hashes. The line of a remote's HEAD marks the
/// branch that it points at, in whichever order the lines stand, and makes no branch of its own.
/// Any other line is ignored, but for a hash of 64 digits, which fails with code 11.
class RVGIT_EXPORT RVGitRemoteBranchOutputParser
    : public RVGitItemOutputParser<RVGitRemoteBranchOutputParserResultItem> {
public:
    explicit RVGitRemoteBranchOutputParser(std::string_view outputData);

    /// In the order in which the names first appeared.
    [[nodiscard]] const std::vector<RVGitRemoteBranchOutputParserResultItem>& remoteBranches()
        const {
        return resultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    RVGitRemoteBranchOutputParserResultItem& branchNamed(std::string_view name);
};
