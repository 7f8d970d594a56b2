#include "RVGit/diff/RVGitApplyCommand.h"

#include <algorithm>
#include <cstdint>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"

namespace {

/// Reads a patch line by line, as far as its chunks go.
class PatchReader {
public:
    explicit PatchReader(std::string_view patch) : rest_(patch) {}

    bool findsChunkWithoutContext() {
        while (!rest_.empty()) {
            const std::string_view line = takeLine();
            if (line.starts_with("--- ") || line.starts_with("+++ ")) {
                // A timestamp may stand behind a tab.
                const std::string_view name = line.substr(4, line.find_first_of("\t\r") - 4);
                holdsWholeFile_ = (holdsWholeFile_ && line.front() == '+') || name == RVGitNullFile;
            } else if (line.starts_with("@@ ") && !takeChunk(line) && !holdsWholeFile_) {
                return true;
            }
        }
        return false;
    }

private:
    std::string_view takeLine() {
        const std::string_view line = rest_.substr(0, rest_.find('\n'));
        rest_.remove_prefix(std::min(line.size() + 1, rest_.size()));
        return line;
    }

    /// Whether the chunk has context, at its beginning or at its end.
    bool takeChunk(std::string_view header) {
        const std::string_view ranges = RVGitDiffOutputParser::chunkHeaderOfLine(header);
        if (ranges.empty())
            return true;
        std::int64_t oldLines = lengthOfRange(ranges.substr(ranges.find('-')));
        std::int64_t newLines = lengthOfRange(ranges.substr(ranges.find('+')));
        if (oldLines <= 0 && newLines <= 0)
            return true;
        bool isFirst = true;
        bool hasContext = false;
        char last = ' ';
        while (!rest_.empty() && (oldLines > 0 || newLines > 0)) {
            const std::string_view line = takeLine();
            const char status = line.empty() ? ' ' : line.front();
            if (status == '\\')
                continue;
            if (status != ' ' && status != '-' && status != '+')
                break;
            oldLines -= status != '+';
            newLines -= status != '-';
            hasContext = hasContext || (isFirst && status == ' ');
            isFirst = false;
            last = status;
        }
        return hasContext || last == ' ';
    }

    /// Of "-5,3" or "+5", with more behind it.
    static std::int64_t lengthOfRange(std::string_view text) {
        text = text.substr(0, text.find(' '));
        const std::size_t comma = text.find(',');
        return comma == std::string_view::npos ? 1 : integerValue(text.substr(comma + 1));
    }

    std::string_view rest_;
    bool holdsWholeFile_ = false;
};

}  // namespace

RVGitApplyCommand::RVGitApplyCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     const std::optional<RVOptions>& options)
    : RVGitFilePathsCommand(repository),
      noVerify_(optionIsSet(options, RVGitApplyOptionNoVerify)),
      appliesPatchToIndex_(optionIsSet(options, RVGitApplyOptionCached)),
      appliesPatchToWorkingTreeAndIndex_(optionIsSet(options, RVGitApplyOptionIndex)),
      appliesPatchInReverse_(optionIsSet(options, RVGitApplyOptionReverse)),
      ignoresWhitespace_(optionIsSet(options, RVGitApplyOptionIgnoresWhitespace)),
      unidiffZero_(optionIsSet(options, RVGitApplyOptionUnidiffZero)),
      recount_(optionIsSet(options, RVGitApplyOptionRecount)),
      inaccurateEOF_(optionIsSet(options, RVGitApplyOptionInaccurateEOF)) {}

std::shared_ptr<RVGitApplyCommand> RVGitApplyCommand::gitApplyCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitApplyCommand>(repository, std::nullopt);
}

std::shared_ptr<RVGitApplyCommand> RVGitApplyCommand::gitApplyCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths, const std::optional<RVOptions>& options) {
    auto command = std::make_shared<RVGitApplyCommand>(repository, options);
    command->setFilePaths(std::move(filePaths));
    return command;
}

std::shared_ptr<RVGitApplyCommand> RVGitApplyCommand::gitApplyCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<RVData> patch,
    const std::optional<RVOptions>& options) {
    auto command = std::make_shared<RVGitApplyCommand>(repository, options);
    command->setPatch(std::move(patch));
    return command;
}

bool RVGitApplyCommand::patchHasChunkWithoutContext(std::string_view patch) {
    return PatchReader(patch).findsChunkWithoutContext();
}

const RVGitErrorTable& RVGitApplyCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitApplyPatchCorruptError)
            .command("apply")
            .exitCode(128)
            .standardError(R"(fatal: corrupt patch at line (\d+))", {RVGitPatchLineNumberErrorKey}),
        gitErrorRow(RVGitApplyPatchCorruptError)
            .command("apply")
            .exitCode(128)
            .standardError(R"(fatal: patch with only garbage at line (\d+))",
                           {RVGitPatchLineNumberErrorKey}),
        gitErrorRow(RVGitApplyPatchWithNoChangesError)
            .command("apply")
            .exitCode(1)
            .standardError("No changes"),
        gitErrorRow(RVGitApplyPatchWithNoTargetError)
            .command("apply")
            .exitCode(1)
            .standardError("No such file or directory"),
    };
    return *table;
}

void RVGitApplyCommand::gitCommandWillInitialize() {
    setGitCommand("apply");
    const std::pair<bool, std::vector<std::string>> flags[] = {
        {noVerify_, {"--no-verify"}},
        {appliesPatchToIndex_, {"--cached"}},
        {appliesPatchToWorkingTreeAndIndex_, {"--index"}},
        {appliesPatchInReverse_, {"--reverse"}},
        {ignoresWhitespace_, {"--ignore-whitespace", "--whitespace=nowarn"}},
        {unidiffZero_, {"--unidiff-zero"}},
        {recount_, {"--recount"}},
        {inaccurateEOF_, {"--inaccurate-eof"}},
        {checksApplicability_, {"--check"}},
    };
    for (const auto& [isSet, options] : flags)
        if (isSet)
            addGitCommandOptions(options);
    addFilePathArguments();
    if (patch_) {
        addGitCommandArgument("-");
        setStandardInput(RVStandardInput::data(*patch_));
    }
}

RVUserInfo RVGitApplyCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (!RVArrayIsEmpty(filePaths()))
        userInfo.insert_or_assign(RVGitFilePathsErrorKey, *filePaths());
    return userInfo;
}
