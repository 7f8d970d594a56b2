#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One tag as `git for-each-ref` tells it.
struct RVGitForEachRefTagOutputParserResultItem {
    std::string fullRefName;
    /// What the tag points to. A tag of a tag is peeled once before git 2.45, fully since.
    std::string commitHash;
    /// The tag object and its message; absent for a lightweight tag. The message ends in the
    /// signature, if there is one.
    std::optional<std::string> tagObjectHash;
    std::optional<std::string> message;
    /// 1970 where git knows none: a lightweight tag of a tree or a blob.
    RVDate creatorDate;
};

/// Reads what `git for-each-ref` prints with format(). A record of another shape is skipped; so is
/// a tag whose message holds the bytes that part the fields.
class RVGIT_EXPORT RVGitForEachRefTagOutputParser
    : public RVGitItemOutputParser<RVGitForEachRefTagOutputParserResultItem> {
public:
    explicit RVGitForEachRefTagOutputParser(std::string_view outputData);
    explicit RVGitForEachRefTagOutputParser(std::vector<std::string> outputLines);

    [[nodiscard]] static const std::string& format();
    /// What parts the fields: the bytes 0x1F 0x1D 0x1F.
    [[nodiscard]] static std::string_view commitBoundaryString();

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};
