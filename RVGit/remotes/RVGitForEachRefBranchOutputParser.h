#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitOutputParser.h"

/// The creator's date of one branch, as `git for-each-ref` tells it.
struct RVGIT_EXPORT RVGitForEachRefBranchOutputParserResultItem {
    std::string fullRefName;
    RVDate creatorDate;
};

/// The same of a remote branch.
struct RVGIT_EXPORT RVGitForEachRefRemoteBranchOutputParserResultItem {
    std::string fullRefName;
    RVDate creatorDate;
};

/// What git is to print for the two parsers: "%(creatordate:unix)" needs git 2.10.
inline constexpr char RVGitForEachRefBranchFormat[] = "%(*refname)%1f%1d%1f%(creatordate:unix)%00";

/// Reads what `git for-each-ref` prints with that format. A record of another shape is skipped.
class RVGIT_EXPORT RVGitForEachRefBranchOutputParser
    : public RVGitItemOutputParser<RVGitForEachRefBranchOutputParserResultItem> {
public:
    explicit RVGitForEachRefBranchOutputParser(std::string_view outputData);

    /// What parts the fields: the bytes 0x1F 0x1D 0x1F.
    [[nodiscard]] static std::string_view commitBoundaryString();
    [[nodiscard]] const std::vector<RVGitForEachRefBranchOutputParserResultItem>& resultItems()
        const {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// The same for remote branches.
class RVGIT_EXPORT RVGitForEachRefRemoteBranchOutputParser
    : public RVGitItemOutputParser<RVGitForEachRefRemoteBranchOutputParserResultItem> {
public:
    explicit RVGitForEachRefRemoteBranchOutputParser(std::string_view outputData);

    [[nodiscard]] static std::string_view commitBoundaryString();
    [[nodiscard]] const std::vector<RVGitForEachRefRemoteBranchOutputParserResultItem>&
    resultItems() const {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};
