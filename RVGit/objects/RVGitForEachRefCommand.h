#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

/// What stands between the fields of a record; in a format it is written "%1f%1d%1f".
inline constexpr std::string_view RVGitForEachRefBoundary = "\x1f\x1d\x1f";

inline namespace RVGIT_EXPORT rvgit {

/// Cuts a record of exactly that many fields, each without the newlines at its ends; for the
/// parsers. False if the record has another number of fields. The views are into the record.
[[nodiscard]] bool fieldsOfForEachRefRecord(std::string_view record,
                                            std::span<std::string_view> fields);

}  // namespace rvgit

/// Runs `git for-each-ref` with a format, for a parser that reads it: one process for all refs
/// below a pattern. Fails only where git or the parser does.
class RVGIT_EXPORT RVGitForEachRefCommand : public RVGitCommand {
public:
    /// Makes the parser for the output; null if it cannot.
    using OutputParserClass =
        std::function<std::unique_ptr<RVGitOutputParser>(std::string_view outputData)>;

    /// The repository is required. The options are not read.
    explicit RVGitForEachRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                                    const std::optional<RVOptions>& options = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitForEachRefCommand> gitForEachRefCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt);

    /// The refs to list: "refs/tags". Absent: all.
    [[nodiscard]] const std::optional<std::string>& pattern() const { return pattern_; }
    void setPattern(std::optional<std::string> pattern) { pattern_ = std::move(pattern); }
    /// Needs the class of the parser that reads it. The records are to end in "%00", unless that
    /// parser reads lines.
    [[nodiscard]] const std::optional<std::string>& format() const { return format_; }
    void setFormat(std::optional<std::string> format) { format_ = std::move(format); }
    [[nodiscard]] const OutputParserClass& outputParserClass() const { return outputParserClass_; }
    void setOutputParserClass(OutputParserClass parserClass) {
        outputParserClass_ = std::move(parserClass);
    }
    template <typename Parser>
    void setOutputParserClass() {
        setOutputParserClass(
            [](std::string_view outputData) { return std::make_unique<Parser>(outputData); });
    }

    /// The parser that has read the output; null before the run. It does not outlive the command.
    [[nodiscard]] RVGitOutputParser* outputParser() const { return outputParser_.get(); }
    /// The parser's results, in git's order; `Item` is that of the parser. Empty before the run.
    template <typename Item>
    [[nodiscard]] const std::vector<Item>& result() const {
        static const RVNeverDestroyed<std::vector<Item>> none;
        const auto* parser = dynamic_cast<RVGitItemOutputParser<Item>*>(outputParser_.get());
        return parser ? parser->indexedResultCache() : *none;
    }
    /// The same, moved out of the command.
    template <typename Item>
    [[nodiscard]] std::vector<Item> takeResult() {
        auto* parser = dynamic_cast<RVGitItemOutputParser<Item>*>(outputParser_.get());
        return parser ? parser->takeIndexedResults() : std::vector<Item>();
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::string> pattern_;
    std::optional<std::string> format_;
    OutputParserClass outputParserClass_;
    std::unique_ptr<RVGitOutputParser> outputParser_;
};
