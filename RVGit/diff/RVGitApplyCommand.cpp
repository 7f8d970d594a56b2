#include "RVGit/diff/RVGitApplyCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

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
