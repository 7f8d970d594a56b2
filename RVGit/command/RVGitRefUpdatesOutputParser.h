#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"

/// What happened to a ref in a fetch or push, after the flag in git's table.
enum RVGitRefUpdateType : std::int64_t {
    RVGitRefUpdateTypeNone = 0,
    RVGitRefUpdateTypeFastForward = 1,
    RVGitRefUpdateTypeForced = 2,
    RVGitRefUpdateTypeNew = 3,
    RVGitRefUpdateTypeDeleted = 4,
    RVGitRefUpdateTypeUpToDate = 5,
    RVGitRefUpdateTypeRejected = 6,
};

/// One row of git's table of refs.
struct RVGIT_EXPORT RVGitRefUpdatesOutputParserResultItem {
    /// An RVGitRefUpdateType.
    std::int64_t type = RVGitRefUpdateTypeNone;
    /// Absent where git prints "(none)", as for a deleted ref.
    std::optional<std::string> from;
    /// With what git says behind it in parentheses, if anything.
    std::optional<std::string> to;
    /// "[new branch]", or the range of abbreviated hashes.
    std::optional<std::string> summary;
    /// Always absent, since `to` takes the rest of the line. Kept for compatibility.
    std::optional<std::string> reason;
};

/// Reads the table of refs that git prints after a transfer; every other line is skipped, as is
/// the line of a forced update ("+ 1a2b3c4...5d6e7f8"). No command of the library runs it: hand
/// it the transfer's output.
class RVGIT_EXPORT RVGitRefUpdatesOutputParser
    : public RVGitItemOutputParser<RVGitRefUpdatesOutputParserResultItem> {
public:
    explicit RVGitRefUpdatesOutputParser(std::string_view outputData);

    /// In the order of the lines.
    [[nodiscard]] const std::vector<RVGitRefUpdatesOutputParserResultItem>& result() const {
        return indexedResultCache();
    }

    /// An RVGitRefUpdateType for the flag at the start of a line; 0 if there is no such flag.
    [[nodiscard]] static std::int64_t refUpdateTypeFromString(std::string_view flag);

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};
