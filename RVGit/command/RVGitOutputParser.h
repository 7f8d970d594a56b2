#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVRegularExpression;

/// Base of the parsers: cuts what git printed into lines and hands each to a subclass, which
/// keeps its results in the caches of RVGitItemOutputParser. A parser is used by one thread, for
/// one output, once. The bytes are not copied and must outlive the parser.
class RVGIT_EXPORT RVGitOutputParser {
public:
    enum class Delimiter { Newline, NULByte };

    /// No output.
    RVGitOutputParser();
    /// With newlines, a carriage return stays in its line. What is not UTF-8 is decoded by
    /// stringUsingBestEncoding(), line by line, with NUL bytes piece by piece, so that one in
    /// another encoding does not spoil the others.
    explicit RVGitOutputParser(std::string_view outputData,
                               Delimiter delimiter = Delimiter::Newline);
    explicit RVGitOutputParser(std::vector<std::string> outputLines);
    virtual ~RVGitOutputParser();
    RVGitOutputParser(const RVGitOutputParser&) = delete;
    RVGitOutputParser& operator=(const RVGitOutputParser&) = delete;

    /// A parser that reads every line and keeps nothing; a subclass is made by std::make_shared.
    [[nodiscard]] static std::shared_ptr<RVGitOutputParser> outputParserWithOutputData(
        std::string_view outputData);
    [[nodiscard]] static std::shared_ptr<RVGitOutputParser> outputParserWithOutputLines(
        std::vector<std::string> outputLines);

    /// The lines as text, empty ones included; absent when there was no output.
    [[nodiscard]] std::optional<std::vector<std::string>> outputLines() const;
    /// Whether lines end at NUL bytes instead of newlines.
    [[nodiscard]] bool usesNULByteAsNewlineDelimiter() const {
        return delimiter_ == Delimiter::NULByte;
    }

    /// Hands every non-empty line to parseOutputLine(), in order, then calls parsingDidFinish().
    /// False, with code 11 in the place (the parser's class name and the line in its user info),
    /// at the first line that cannot be read; what was read until then stays in the caches. True
    /// at once, without parsingDidFinish(), if there was no output.
    bool parse(RVErrorPlace error = nullptr);

protected:
    /// The class name, for error records.
    [[nodiscard]] virtual std::string_view parserName() const { return "RVGitOutputParser"; }
    /// Whether the line could be read; here, any. The view holds during the call, and beyond it as
    /// long as the bytes do only where they are valid UTF-8: keep strings.
    virtual bool parseOutputLine(std::string_view) { return true; }
    /// Called behind the last line; not for output that is absent or was not wholly read.
    virtual void parsingDidFinish() {}

    /// Compiles on each call: an expression that is needed often is kept by the parser's class.
    /// Throws RVInternalInconsistencyException if the pattern does not compile.
    [[nodiscard]] static RVRegularExpression regularExpressionWithPattern(std::string_view pattern,
                                                                          unsigned options = 0);

private:
    std::string_view outputData_;
    std::string decodedData_;
    std::optional<std::vector<std::string>> givenLines_;
    Delimiter delimiter_ = Delimiter::Newline;
};

/// A parser with its results: `Item`s in the order of the lines, and `Item`s by key.
template <typename Item>
class RVGitItemOutputParser : public RVGitOutputParser {
public:
    /// Results in the order of the lines.
    [[nodiscard]] const std::vector<Item>& indexedResultCache() const& {
        return indexedResultCache_;
    }
    /// Results that merge several lines or are looked up while parsing, in the order in which
    /// their keys first appeared.
    [[nodiscard]] const std::vector<Item>& resultCache() const& { return resultCache_; }
    [[nodiscard]] const Item* resultForKey(std::string_view key) const {
        auto found = resultIndexes_.find(std::string(key));
        return found == resultIndexes_.end() ? nullptr : &resultCache_[found->second];
    }
    /// Moves the results out of the parser, which is then spent.
    [[nodiscard]] std::vector<Item> takeIndexedResults() { return std::move(indexedResultCache_); }
    [[nodiscard]] std::vector<Item> takeResults() { return std::move(resultCache_); }

protected:
    using RVGitOutputParser::RVGitOutputParser;

    void addResult(Item item) { indexedResultCache_.push_back(std::move(item)); }
    /// The result of a key, made empty if there is none yet. The reference holds until the next
    /// key is added.
    Item& resultForKeyMakingIt(std::string_view key) {
        auto [found, added] = resultIndexes_.try_emplace(std::string(key), resultCache_.size());
        if (added)
            resultCache_.emplace_back();
        return resultCache_[found->second];
    }
    Item* existingResultForKey(std::string_view key) {
        return const_cast<Item*>(resultForKey(key));
    }

    std::vector<Item> indexedResultCache_;

private:
    std::vector<Item> resultCache_;
    std::unordered_map<std::string, std::size_t> resultIndexes_;
};
