#include "RVGit/base/RVRegularExpression.h"

#include <unicode/regex.h>
#include <unicode/utext.h>

#include <algorithm>
#include <atomic>
#include <limits>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"

namespace {

/// ICU counts time in units of 10,000 steps; one unit is about half a millisecond. A search may
/// take a second, and longer where the text itself is long.
int32_t timeLimitForText(std::string_view text) {
    constexpr std::size_t highest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(highest, 2'000 + text.size() / 1'000));
}

/// Walks over a pattern at its outermost level and keeps the longest run of characters that stand
/// for themselves. What it does not know ends the walk with nothing.
class RequiredText {
public:
    static std::string ofPattern(std::string_view pattern, bool ignoresCase) {
        RequiredText text(pattern);
        if (!text.walk())
            return {};
        // How other letters match without regard to case is best left alone.
        if (ignoresCase && !isASCII(text.longest_))
            return {};
        return ignoresCase ? foldedString(text.longest_) : text.longest_;
    }

private:
    explicit RequiredText(std::string_view pattern) : rest_(pattern) {}

    bool walk() {
        while (!rest_.empty()) {
            const char character = take();
            switch (character) {
                case '|':
                case ')':
                    return false;
                case '(':
                    endRun();
                    if (!skipGroup() || !takeQuantifier())
                        return false;
                    break;
                case '[':
                    endRun();
                    if (!skipSet() || !takeQuantifier())
                        return false;
                    break;
                case '.':
                case '^':
                case '$':
                    endRun();
                    if (!takeQuantifier())
                        return false;
                    break;
                case '\\':
                    if (rest_.empty())
                        return false;
                    if (isLetterOrDigit(rest_.front())) {
                        if (std::string_view("dDsSwWbBntr").find(take()) == std::string_view::npos)
                            return false;
                        endRun();
                        if (!takeQuantifier())
                            return false;
                    } else if (!addCharacter(take())) {
                        return false;
                    }
                    break;
                default:
                    if (!addCharacter(character))
                        return false;
                    break;
            }
        }
        endRun();
        return true;
    }

    static bool isLetterOrDigit(char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
               (character >= 'A' && character <= 'Z');
    }
    char take() {
        const char character = rest_.front();
        rest_.remove_prefix(1);
        return character;
    }
    bool addCharacter(char character) {
        const std::size_t start = run_.size();
        run_ += character;
        while (!rest_.empty() && (static_cast<unsigned char>(rest_.front()) & 0xC0) == 0x80)
            run_ += take();
        if (rest_.empty() || std::string_view("*?+{").find(rest_.front()) == std::string_view::npos)
            return true;
        // Of one that may be missing, or come again, the run holds at most the first.
        if (rest_.front() != '+')
            run_.resize(start);
        endRun();
        return takeQuantifier();
    }
    bool takeQuantifier() {
        if (rest_.empty())
            return true;
        if (rest_.front() == '{') {
            const std::size_t end = rest_.find('}');
            if (end == std::string_view::npos)
                return false;
            rest_.remove_prefix(end + 1);
        } else if (std::string_view("*?+").find(rest_.front()) != std::string_view::npos) {
            rest_.remove_prefix(1);
        } else {
            return true;
        }
        // Lazy or possessive.
        if (!rest_.empty() && (rest_.front() == '?' || rest_.front() == '+'))
            rest_.remove_prefix(1);
        return true;
    }
    /// Behind its opening parenthesis. Groups that set flags, or look around, are not known.
    bool skipGroup() {
        if (rest_.starts_with('?') && !rest_.starts_with("?:"))
            return false;
        for (std::size_t depth = 1; !rest_.empty();) {
            const char character = take();
            if (character == '\\') {
                if (rest_.empty() || take() == 'Q')
                    return false;
            } else if (character == '[') {
                if (!skipSet())
                    return false;
            } else if (character == '(') {
                if (rest_.starts_with('?') && !rest_.starts_with("?:"))
                    return false;
                ++depth;
            } else if (character == ')' && --depth == 0) {
                return true;
            }
        }
        return false;
    }
    /// Behind its opening bracket. A set within a set is not known.
    bool skipSet() {
        if (rest_.starts_with('^'))
            rest_.remove_prefix(1);
        for (bool isFirst = true; !rest_.empty(); isFirst = false) {
            const char character = take();
            if (character == '[' || (isFirst && character == ']'))
                return false;
            if (character == ']')
                return true;
            if (character == '\\' && (rest_.empty() || take() == 'Q'))
                return false;
        }
        return false;
    }
    void endRun() {
        if (run_.size() > longest_.size())
            longest_ = run_;
        run_.clear();
    }

    std::string_view rest_;
    std::string run_;
    std::string longest_;
};

/// One matcher with its own view of a text; used by one thread at a time.
class Matcher {
public:
    explicit Matcher(const icu::RegexPattern& pattern) {
        UErrorCode status = U_ZERO_ERROR;
        matcher_.reset(pattern.matcher(status));
        if (U_FAILURE(status))
            throw std::bad_alloc();
    }
    ~Matcher() { utext_close(&input_); }
    Matcher(const Matcher&) = delete;
    Matcher& operator=(const Matcher&) = delete;

    void open(std::string_view text, std::size_t offset) {
        text_ = text;
        status_ = U_ZERO_ERROR;
        // ICU takes no null pointer, not even for the empty text.
        utext_openUTF8(&input_, text.empty() ? "" : text.data(), static_cast<int64_t>(text.size()),
                       &status_);
        if (U_FAILURE(status_))
            return;
        matcher_->reset(&input_);
        matcher_->setTimeLimit(timeLimitForText(text), status_);
        start_ = static_cast<int64_t>(offset);
    }
    bool findNext() {
        if (U_FAILURE(status_))
            return false;
        // A search that exceeds a limit fails and stays failed.
        const bool isFound = start_ > 0 ? matcher_->find(start_, status_) : matcher_->find(status_);
        start_ = 0;
        return isFound && U_SUCCESS(status_);
    }
    std::size_t numberOfGroups() const { return static_cast<std::size_t>(matcher_->groupCount()); }
    RVRegularExpression::Components components() {
        RVRegularExpression::Components components(numberOfGroups() + 1);
        for (std::size_t group = 0; group < components.size(); ++group)
            components[group] = view(static_cast<int32_t>(group));
        return components;
    }
    void close() {
        // Without this the matcher would go on pointing into a text that is gone.
        open({}, 0);
        text_ = {};
    }

private:
    std::optional<std::string_view> view(int32_t group) {
        const auto start = matcher_->start64(group, status_);
        const auto end = matcher_->end64(group, status_);
        if (U_FAILURE(status_) || start < 0 || end < start)
            return std::nullopt;
        const auto first = std::min(static_cast<std::size_t>(start), text_.size());
        return text_.substr(first, static_cast<std::size_t>(end - start));
    }

    UText input_ = UTEXT_INITIALIZER;
    std::unique_ptr<icu::RegexMatcher> matcher_;
    std::string_view text_;
    UErrorCode status_ = U_ZERO_ERROR;
    int64_t start_ = 0;
};

}  // namespace

/// Keeps one matcher for the next search, as making one costs more than most searches.
struct RVRegularExpression::Pattern {
    explicit Pattern(std::unique_ptr<icu::RegexPattern> compiledPattern)
        : compiled(std::move(compiledPattern)) {
        numberOfGroups = Search(*this, {})->numberOfGroups();
    }
    ~Pattern() { delete spareMatcher.load(); }

    std::unique_ptr<Matcher> takeMatcher() {
        if (auto* spare = spareMatcher.exchange(nullptr))
            return std::unique_ptr<Matcher>(spare);
        return std::make_unique<Matcher>(*compiled);
    }
    void giveBackMatcher(std::unique_ptr<Matcher> matcher) {
        matcher->close();
        delete spareMatcher.exchange(matcher.release());
    }

    /// A search in progress.
    class Search {
    public:
        Search(Pattern& pattern, std::string_view text, std::size_t offset = 0)
            : pattern_(pattern), matcher_(pattern.takeMatcher()) {
            matcher_->open(text, offset);
        }
        ~Search() { pattern_.giveBackMatcher(std::move(matcher_)); }
        Search(const Search&) = delete;
        Search& operator=(const Search&) = delete;
        Matcher* operator->() const { return matcher_.get(); }

    private:
        Pattern& pattern_;
        std::unique_ptr<Matcher> matcher_;
    };

    std::unique_ptr<icu::RegexPattern> compiled;
    std::size_t numberOfGroups = 0;
    std::string requiredText;
    std::atomic<Matcher*> spareMatcher = nullptr;
};

RVRegularExpression::RVRegularExpression(std::unique_ptr<Pattern> pattern)
    : pattern_(std::move(pattern)) {}
RVRegularExpression::~RVRegularExpression() = default;
RVRegularExpression::RVRegularExpression(RVRegularExpression&&) noexcept = default;
RVRegularExpression& RVRegularExpression::operator=(RVRegularExpression&&) noexcept = default;

RVRegularExpression::RVRegularExpression(std::string_view pattern, unsigned options) {
    std::string reason;
    auto expression = compile(pattern, options, &reason);
    if (!expression)
        throw RVInternalInconsistencyException(
            "Could not create regular expression from pattern: '" + std::string(pattern) +
            "': " + reason);
    pattern_ = std::move(expression->pattern_);
}

std::optional<RVRegularExpression> RVRegularExpression::compile(std::string_view pattern,
                                                                unsigned options,
                                                                std::string* reason) {
    uint32_t flags = 0;
    if (options & CaseInsensitive)
        flags |= UREGEX_CASE_INSENSITIVE;
    if (options & DotMatchesLineSeparators)
        flags |= UREGEX_DOTALL;
    if (options & AnchorsMatchLines)
        flags |= UREGEX_MULTILINE;
    UErrorCode status = U_ZERO_ERROR;
    UParseError position{};
    const auto source = icu::UnicodeString::fromUTF8(
        icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size())));
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(source, flags, position, status));
    if (U_FAILURE(status)) {
        if (reason)
            *reason = std::string(u_errorName(status)) + " at line " +
                      std::to_string(position.line) + ", character " +
                      std::to_string(position.offset);
        return std::nullopt;
    }
    auto made = std::make_unique<Pattern>(std::move(compiled));
    made->requiredText = RequiredText::ofPattern(pattern, (options & CaseInsensitive) != 0);
    return RVRegularExpression(std::move(made));
}

std::size_t RVRegularExpression::numberOfGroups() const {
    return pattern_->numberOfGroups;
}

const std::string& RVRegularExpression::requiredText() const {
    return pattern_->requiredText;
}

bool RVRegularExpression::matches(std::string_view text) const {
    return Pattern::Search(*pattern_, text)->findNext();
}

RVRegularExpression::Components RVRegularExpression::firstMatch(std::string_view text,
                                                                std::size_t offset) const {
    if (offset > text.size())
        return {};
    const Pattern::Search search(*pattern_, text, offset);
    return search->findNext() ? search->components() : Components();
}

std::vector<RVRegularExpression::Components> RVRegularExpression::allMatches(
    std::string_view text) const {
    std::vector<Components> matches;
    const Pattern::Search search(*pattern_, text);
    while (search->findNext())
        matches.push_back(search->components());
    return matches;
}

std::string RVRegularExpression::stringByReplacingMatches(std::string_view text,
                                                          std::string_view replacement) const {
    std::string result;
    const char* rest = text.data();
    for (const auto& components : allMatches(text)) {
        result.append(rest, components[0]->data());
        rest = components[0]->data() + components[0]->size();
        for (std::size_t index = 0; index < replacement.size(); ++index) {
            const bool hasNext = index + 1 < replacement.size();
            if (replacement[index] == '\\' && hasNext) {
                result += replacement[++index];
            } else if (replacement[index] == '$' && hasNext && isDigit(replacement[index + 1])) {
                const auto group = static_cast<std::size_t>(replacement[++index] - '0');
                if (group < components.size())
                    result += components[group].value_or("");
            } else {
                result += replacement[index];
            }
        }
    }
    return result.append(rest, text.data() + text.size());
}

std::string RVRegularExpression::escapedPatternForString(std::string_view text) {
    std::string pattern;
    pattern.reserve(text.size() + 8);
    for (const char character : text) {
        if (character == '}') {
            // ICU refuses it bare, and POSIX does not define it behind a backslash.
            pattern += "[}]";
            continue;
        }
        if (std::string_view("\\^$.|?*+()[{").find(character) != std::string_view::npos)
            pattern += '\\';
        pattern += character;
    }
    return pattern;
}
