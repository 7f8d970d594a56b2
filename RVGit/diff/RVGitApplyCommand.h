#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

// Options, all boolean.

/// See RVGitApplyCommand::noVerify().
inline constexpr char RVGitApplyOptionNoVerify[] = "RVGitApplyOptionNoVerify";
/// To the index alone: what stages.
inline constexpr char RVGitApplyOptionCached[] = "cached";
/// To the working tree and the index, which must be alike.
inline constexpr char RVGitApplyOptionIndex[] = "index";
/// Backwards: what unstages, with RVGitApplyOptionCached, or discards.
inline constexpr char RVGitApplyOptionReverse[] = "reverse";
/// Lines of context may differ in blanks.
inline constexpr char RVGitApplyOptionIgnoresWhitespace[] = "ignores-whitespace";
/// For a patch without context: see RVGitApplyCommand.
inline constexpr char RVGitApplyOptionUnidiffZero[] = "unidiffZero";
/// Counts lines instead of believing the chunk headers.
inline constexpr char RVGitApplyOptionRecount[] = "recount";
/// For patches of programs that do not see whether the last line ends.
inline constexpr char RVGitApplyOptionInaccurateEOF[] = "inaccurate-eof";

/// Runs `git apply` for one patch in memory, or for patch files. Without further options the patch
/// is applied to the working tree. Failure: code 1400 if the patch is corrupt, 1401 if it changes
/// nothing, 1402 if a file that it changes does not exist. With the user's apply.whitespace=fix the
/// lines that are added lose blanks at their ends on the way.
///
/// A patch without context (of a diff that was made with diff.context=0 or with
/// RVGitDiffOptionContextLines 0) is to be applied with RVGitApplyOptionUnidiffZero: without it git
/// takes a chunk that has no context behind its changes for the end of the file, looks for its
/// place there, and reports success. With it, a chunk goes where its header says; behind a chunk
/// that changes the count of lines and is left out of the patch that is a wrong place, but for
/// patches of RVGitDiffPatchGenerator::locatedPatchForLinesWithIndexes().
class RVGIT_EXPORT RVGitApplyCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    RVGitApplyCommand(const std::shared_ptr<RVGitRepository>& repository,
                      const std::optional<RVOptions>& options);

    [[nodiscard]] static std::shared_ptr<RVGitApplyCommand> gitApplyCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// Patch files.
    [[nodiscard]] static std::shared_ptr<RVGitApplyCommand> gitApplyCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths, const std::optional<RVOptions>& options);
    /// A patch in memory.
    [[nodiscard]] static std::shared_ptr<RVGitApplyCommand> gitApplyCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<RVData> patch,
        const std::optional<RVOptions>& options);

    /// Kept for compatibility: git has no such option and fails.
    [[nodiscard]] bool noVerify() const { return noVerify_; }
    void setNoVerify(bool noVerify) { noVerify_ = noVerify; }
    [[nodiscard]] bool appliesPatchToIndex() const { return appliesPatchToIndex_; }
    void setAppliesPatchToIndex(bool applies) { appliesPatchToIndex_ = applies; }
    [[nodiscard]] bool appliesPatchToWorkingTreeAndIndex() const {
        return appliesPatchToWorkingTreeAndIndex_;
    }
    void setAppliesPatchToWorkingTreeAndIndex(bool applies) {
        appliesPatchToWorkingTreeAndIndex_ = applies;
    }
    [[nodiscard]] bool appliesPatchInReverse() const { return appliesPatchInReverse_; }
    void setAppliesPatchInReverse(bool applies) { appliesPatchInReverse_ = applies; }
    [[nodiscard]] bool ignoresWhitespace() const { return ignoresWhitespace_; }
    void setIgnoresWhitespace(bool ignores) { ignoresWhitespace_ = ignores; }
    /// Takes a patch without context: chunks go where their headers say.
    [[nodiscard]] bool unidiffZero() const { return unidiffZero_; }
    void setUnidiffZero(bool unidiffZero) { unidiffZero_ = unidiffZero; }
    /// Counts lines instead of believing the chunk headers.
    [[nodiscard]] bool recount() const { return recount_; }
    void setRecount(bool recount) { recount_ = recount; }
    [[nodiscard]] bool inaccurateEOF() const { return inaccurateEOF_; }
    void setInaccurateEOF(bool inaccurateEOF) { inaccurateEOF_ = inaccurateEOF; }
    /// Only tells, by success or failure, whether the patch would apply.
    [[nodiscard]] bool checksApplicability() const { return checksApplicability_; }
    void setChecksApplicability(bool checks) { checksApplicability_ = checks; }
    /// Given to git on standard input.
    [[nodiscard]] const std::optional<RVData>& patch() const { return patch_; }
    void setPatch(std::optional<RVData> patch) { patch_ = std::move(patch); }

    /// Whether a chunk of the patch begins and ends with lines that change, so that git would look
    /// for it at the end of the file. The chunks of files that the patch creates or deletes do not
    /// count: they hold all of the file.
    [[nodiscard]] static bool patchHasChunkWithoutContext(std::string_view patch);

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    bool noVerify_ = false;
    bool appliesPatchToIndex_ = false;
    bool appliesPatchToWorkingTreeAndIndex_ = false;
    bool appliesPatchInReverse_ = false;
    bool ignoresWhitespace_ = false;
    bool unidiffZero_ = false;
    bool recount_ = false;
    bool inaccurateEOF_ = false;
    bool checksApplicability_ = false;
    std::optional<RVData> patch_;
};
