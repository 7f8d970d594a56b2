#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// What a comparison compares, and how.
class RVGIT_EXPORT RVGitDiffSettings {
public:
    [[nodiscard]] const std::vector<std::string>& revisions() const { return revisions_; }
    void setRevisions(std::vector<std::string> revisions) { revisions_ = std::move(revisions); }
    /// Options of RVGitLogCommand and RVGitDiffCommand. Present, be it empty: a revision is
    /// compared with its parent.
    [[nodiscard]] const std::optional<RVOptions>& logOptions() const { return logOptions_; }
    void setLogOptions(std::optional<RVOptions> options) { logOptions_ = std::move(options); }
    void setLogOptions(RVEmptyBraces options) = delete;
    /// Options of RVGitDiffCommand, which win over log options of the same name.
    [[nodiscard]] const std::optional<RVOptions>& diffOptions() const { return diffOptions_; }
    void setDiffOptions(std::optional<RVOptions> options) { diffOptions_ = std::move(options); }

private:
    std::vector<std::string> revisions_;
    std::optional<RVOptions> logOptions_;
    std::optional<RVOptions> diffOptions_;
};
