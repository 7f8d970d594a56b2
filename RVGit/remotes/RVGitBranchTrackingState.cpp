#include "RVGit/remotes/RVGitBranchTrackingState.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"

namespace {

enum Field { RefName, ObjectName, Head, Upstream, Track, TrackShort, WorktreePath, FieldCount };

// Takes "ahead 2" from the front of the text, if it stands there.
std::optional<std::uint64_t> takeCount(std::string_view& text, std::string_view word) {
    if (!text.starts_with(word))
        return std::nullopt;
    std::uint64_t count = 0;
    const char* begin = text.data() + word.size();
    const auto [end, failure] = std::from_chars(begin, text.data() + text.size(), count);
    if (failure != std::errc())
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return count;
}

// "", "[gone]", "[ahead 2]", "[behind 3]", "[ahead 2, behind 3]".
bool readTrack(std::string_view text, RVGitBranchTrackingState& state) {
    if (text.empty())
        return true;
    if (text.size() < 2 || text.front() != '[' || text.back() != ']')
        return false;
    text = text.substr(1, text.size() - 2);
    if (text == "gone") {
        state.isUpstreamGone = true;
        return true;
    }
    const auto ahead = takeCount(text, "ahead ");
    const auto behind = takeCount(text, ahead ? ", behind " : "behind ");
    state.commitsAhead = ahead.value_or(0);
    state.commitsBehind = behind.value_or(0);
    return (ahead || behind) && text.empty();
}

}  // namespace

RVGitBranchTrackingStateOutputParser::RVGitBranchTrackingStateOutputParser(
    std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

std::string RVGitBranchTrackingStateOutputParser::format(bool namesGoneUpstreams,
                                                         bool namesWorktrees) {
    return stringByJoiningComponents(
               {"%(refname)", "%(objectname)", "%(HEAD)", "%(upstream)", "%(upstream:track)",
                // Empty for an upstream that is gone.
                namesGoneUpstreams ? "=" : "%(upstream:trackshort)",
                namesWorktrees ? "%(worktreepath)" : ""},
               "%1f%1d%1f") +
           "%00";
}

std::string_view RVGitBranchTrackingStateOutputParser::parserName() const {
    return "RVGitBranchTrackingStateOutputParser";
}

bool RVGitBranchTrackingStateOutputParser::parseOutputLine(std::string_view line) {
    // Git ends each record in a newline of its own, behind the NUL byte.
    if (line == "\n")
        return true;
    std::array<std::string_view, FieldCount> fields;
    if (!fieldsOfForEachRefRecord(line, fields) || !isValidCommitHash(fields[ObjectName]))
        return false;
    RVGitBranchTrackingState state;
    state.fullRefName = fields[RefName];
    state.commitHash = fields[ObjectName];
    state.isHead = fields[Head] == "*";
    if (!readTrack(fields[Track], state))
        return false;
    if (!fields[Upstream].empty()) {
        state.upstreamRefName = fields[Upstream];
        state.isUpstreamGone = state.isUpstreamGone || fields[TrackShort].empty();
    }
    if (!fields[WorktreePath].empty())
        state.worktreePath = fields[WorktreePath];
    addResult(std::move(state));
    return true;
}
