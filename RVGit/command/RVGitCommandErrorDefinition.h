#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitErrorRow.h"

class RVRegularExpression;

/// Compiled regular expressions by pattern text, all of which ignore case. Any thread.
class RVGIT_EXPORT RVGitRegularExpressionCache {
public:
    RVGitRegularExpressionCache();
    ~RVGitRegularExpressionCache();

    /// Throws RVInternalInconsistencyException if the pattern does not compile.
    [[nodiscard]] std::shared_ptr<const RVRegularExpression> regularExpressionForPattern(
        const std::string& pattern);

private:
    std::shared_mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<const RVRegularExpression>> expressions_;
};

/// What a command printed, to be matched against many rows: it is folded but once, and a pattern
/// whose required text it does not hold is not searched for. Used by one thread.
class RVGIT_EXPORT RVGitErrorOutput {
public:
    /// The text must outlive it.
    explicit RVGitErrorOutput(std::optional<std::string_view> text) : text_(text) {}

    [[nodiscard]] const std::optional<std::string_view>& text() const { return text_; }
    [[nodiscard]] bool mayBeMatchedBy(const RVRegularExpression& expression) const;

private:
    std::optional<std::string_view> text_;
    mutable std::optional<std::string> folded_;
};

/// One row of an error table, ready to be matched against a command that failed. An empty list
/// matches anything, an absent value included; a non-empty one needs a value that is present.
/// Immutable; any thread.
class RVGIT_EXPORT RVGitCommandErrorDefinition {
public:
    using Cache = std::shared_ptr<RVGitRegularExpressionCache>;
    using Components = std::optional<RVUserInfo>;

    /// A row of the given name that matches everything. Without a cache, the shared one is used.
    explicit RVGitCommandErrorDefinition(std::string name, Cache cache = nullptr);
    /// A row whose name is its code as decimal text.
    explicit RVGitCommandErrorDefinition(RVGitErrorRow definition, Cache cache = nullptr);

    [[nodiscard]] static std::shared_ptr<RVGitCommandErrorDefinition>
    gitCommandErrorDefinitionWithDefinition(RVGitErrorRow definition);
    [[nodiscard]] static const Cache& sharedRegularExpressionCache();

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::int64_t errorCode() const { return row_.errorCode; }
    [[nodiscard]] const std::vector<std::string>& commandNames() const { return row_.commandNames; }
    [[nodiscard]] const std::vector<std::string>& subCommandNames() const {
        return row_.subCommandNames;
    }
    [[nodiscard]] const std::vector<std::string>& commandArguments() const {
        return row_.commandArguments;
    }
    [[nodiscard]] const std::vector<int>& exitCodes() const { return row_.exitCodes; }
    [[nodiscard]] const std::vector<std::string>& standardErrorPatterns() const {
        return row_.standardErrorPatterns;
    }
    [[nodiscard]] const std::vector<std::string>& standardErrorMatchedComponentNames() const {
        return row_.standardErrorMatchedComponentNames;
    }
    [[nodiscard]] const std::vector<std::string>& standardOutputPatterns() const {
        return row_.standardOutputPatterns;
    }
    [[nodiscard]] const std::vector<std::string>& standardOutputMatchedComponentNames() const {
        return row_.standardOutputMatchedComponentNames;
    }
    [[nodiscard]] const Cache& regularExpressionCache() const { return cache_; }

    [[nodiscard]] bool isMatchedByCommandName(std::optional<std::string_view> name) const;
    [[nodiscard]] bool isMatchedBySubCommandName(std::optional<std::string_view> name) const;
    [[nodiscard]] bool isMatchedByExitCode(int exitCode) const;
    /// Whether one pattern is found anywhere in the output. The pattern "" is found only in
    /// absent or empty output, and any other never in absent output.
    [[nodiscard]] bool isMatchedByStandardError(std::optional<std::string_view> output) const;
    [[nodiscard]] bool isMatchedByStandardOutput(std::optional<std::string_view> output) const;
    [[nodiscard]] bool isMatchedByStandardError(const RVGitErrorOutput& output) const;
    [[nodiscard]] bool isMatchedByStandardOutput(const RVGitErrorOutput& output) const;

    /// The groups of the first pattern that matches with at least one group, by name. Absent if
    /// there is no such pattern, or if it has not as many groups as there are names.
    [[nodiscard]] Components matchedComponentsForStandardError(
        std::optional<std::string_view> output) const;
    [[nodiscard]] Components matchedComponentsForStandardOutput(
        std::optional<std::string_view> output) const;

    /// From the cache. Throws RVInternalInconsistencyException if the pattern does not compile.
    [[nodiscard]] std::shared_ptr<const RVRegularExpression> makeRegularExpressionWithPattern(
        const std::string& pattern) const;

private:
    [[nodiscard]] bool isMatched(const std::vector<std::string>& patterns,
                                 const RVGitErrorOutput& output) const;
    [[nodiscard]] Components matchedComponents(const std::vector<std::string>& patterns,
                                               const std::vector<std::string>& names,
                                               std::optional<std::string_view> output) const;

    std::string name_;
    RVGitErrorRow row_;
    Cache cache_;
};
