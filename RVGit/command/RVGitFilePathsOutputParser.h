#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"

/// Reads a list of paths: every record that is not empty, as it stands. Never fails.
class RVGIT_EXPORT RVGitFilePathsOutputParser : public RVGitItemOutputParser<std::string> {
public:
    /// Records end in NUL bytes unless said otherwise.
    explicit RVGitFilePathsOutputParser(std::string_view outputData,
                                        bool usesNULByteAsNewlineDelimiter = true);

    /// In git's order.
    [[nodiscard]] const std::vector<std::string>& filePaths() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};
