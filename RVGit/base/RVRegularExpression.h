#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"

/// A compiled regular expression in ICU's syntax and semantics, matched against UTF-8 in place.
/// Immutable: one object may be used by any number of threads.
///
/// Bytes that are not UTF-8 match as U+FFFD; views into the text stay exact. Matching is bounded in
/// steps (in proportion to the text's length) and in memory, so that no text can hang it: a search
/// that goes beyond the bound has no match.
class RVGIT_EXPORT RVRegularExpression {
public:
    enum Options : unsigned {
        CaseInsensitive = 1,
        /// "." matches line separators too.
        DotMatchesLineSeparators = 2,
        /// "^" and "$" match at each line.
        AnchorsMatchLines = 4,
    };

    /// A match as views into the text that was searched: the whole match, then each group,
    /// absent where a group took no part.
    using Components = std::vector<std::optional<std::string_view>>;

    /// Throws RVInternalInconsistencyException if the pattern does not compile.
    explicit RVRegularExpression(std::string_view pattern, unsigned options = 0);
    /// Absent, with ICU's reason, if the pattern does not compile.
    [[nodiscard]] static std::optional<RVRegularExpression> compile(std::string_view pattern,
                                                                    unsigned options,
                                                                    std::string* reason);
    ~RVRegularExpression();
    RVRegularExpression(RVRegularExpression&&) noexcept;
    RVRegularExpression& operator=(RVRegularExpression&&) noexcept;

    [[nodiscard]] std::size_t numberOfGroups() const;
    /// A text that stands in every match, the longest that a look at the pattern tells: what does
    /// not hold it does not match. Empty if there is none. Of an expression that ignores case it is
    /// folded, as foldedString() does, and to be looked for in text that is folded.
    [[nodiscard]] const std::string& requiredText() const;
    /// Whether there is a match anywhere in the text.
    [[nodiscard]] bool matches(std::string_view text) const;
    /// The first match at or after `offset`; empty if there is none.
    [[nodiscard]] Components firstMatch(std::string_view text, std::size_t offset = 0) const;
    [[nodiscard]] std::vector<Components> allMatches(std::string_view text) const;
    /// The text with each match replaced by `replacement`, in which "$1" stands for a group (for
    /// nothing, if there is no such group or it took no part), "$0" for the match, and a backslash
    /// makes the character after it literal.
    [[nodiscard]] std::string stringByReplacingMatches(std::string_view text,
                                                       std::string_view replacement) const;

    /// A pattern that matches the text literally, in ICU's syntax and in git's POSIX one.
    [[nodiscard]] static std::string escapedPatternForString(std::string_view text);

private:
    struct Pattern;
    explicit RVRegularExpression(std::unique_ptr<Pattern> pattern);
    std::unique_ptr<Pattern> pattern_;
};
