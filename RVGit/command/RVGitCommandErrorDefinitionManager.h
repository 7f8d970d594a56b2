#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitErrorRow.h"

class RVGitCommand;
class RVGitCommandErrorDefinition;

/// The rows by which failed commands are told apart. Any thread.
class RVGIT_EXPORT RVGitCommandErrorDefinitionManager {
public:
    using Definition = std::shared_ptr<const RVGitCommandErrorDefinition>;
    using DefinitionList = std::vector<Definition>;

    /// The one that commands use; every class's rows are registered when it is made.
    [[nodiscard]] static RVGitCommandErrorDefinitionManager& defaultManager();

    void addGitCommandErrorDefinitions(const RVGitErrorTable& definitions);
    /// All rows, the highest code first: nothing else decides which of several matching rows wins.
    [[nodiscard]] std::shared_ptr<const DefinitionList> allGitCommandErrorDefinitions() const;
    /// The first row that a command that has exited matches; null if there is none, or if the
    /// command is cancelled in the meantime.
    [[nodiscard]] Definition gitCommandErrorDefinitionForCommand(RVGitCommand& command) const;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const DefinitionList> definitions_ = std::make_shared<DefinitionList>();
};
