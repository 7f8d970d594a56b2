#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitFilePathsCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

/// The attributes of one path, as `git check-attr` printed them.
struct RVGitAttributesOutputParserResultItem {
    std::string filePath;
    /// Value by name: "set", "unset", "unspecified" or a text, which may be empty.
    RVValue::StringMap attributes;
};

/// Reads the lines that `git check-attr` prints without "-z", "path: name: value"; adjacent lines
/// of one path make one item. Any other number of pieces, as in a path with ": ", fails the parse.
class RVGIT_EXPORT RVGitAttributesOutputParser
    : public RVGitItemOutputParser<RVGitAttributesOutputParserResultItem> {
public:
    using RVGitItemOutputParser::RVGitItemOutputParser;

    /// Reads what it prints with "-z": triples of a path, a name and a value, each ended by NUL. An
    /// item ends where another path or a name that it has already follows, so that a path that was
    /// asked for twice has two. Absent with code 11 if the triples do not come out even.
    [[nodiscard]] static std::optional<std::vector<RVGitAttributesOutputParserResultItem>>
    itemsFromNULSeparatedOutput(std::string_view outputData, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::vector<RVGitAttributesOutputParserResultItem>& attributes() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override {
        return "RVGitAttributesOutputParser";
    }
    bool parseOutputLine(std::string_view line) override;
};

/// Runs `git check-attr --stdin -z` for the eleven standard attributes: delta, diff, encoding, eol,
/// export-ignore, export-subst, filter, ident, merge, text and whitespace. Code 11 if the output
/// cannot be read.
class RVGIT_EXPORT RVGitCheckAttrCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitCheckAttrCommand(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitCheckAttrCommand> gitCheckAttrCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths);

    /// Whether the output is read as the NUL-separated triples that "-z" makes git print. Kept for
    /// compatibility: unless set, it is read as lines, which every git's output for one path or
    /// more fails to be.
    [[nodiscard]] bool readsNULSeparatedOutput() const { return readsNULSeparatedOutput_; }
    void setReadsNULSeparatedOutput(bool reads) { readsNULSeparatedOutput_ = reads; }

    /// In output order, after the run.
    [[nodiscard]] const std::vector<RVGitAttributesOutputParserResultItem>& attributes() const& {
        return attributes_;
    }
    /// Moves them out of the command.
    [[nodiscard]] std::vector<RVGitAttributesOutputParserResultItem> takeAttributes() {
        return std::move(attributes_);
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool readsNULSeparatedOutput_ = false;
    std::vector<RVGitAttributesOutputParserResultItem> attributes_;
};
