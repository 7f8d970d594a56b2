#include "RVGit/command/RVGitCommandErrorDefinition.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"

namespace {

template <typename T, typename Value>
bool contains(const std::vector<T>& list, const Value& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

bool isMatchedByName(const std::vector<std::string>& names, std::optional<std::string_view> name) {
    return names.empty() || (name && contains(names, *name));
}

}  // namespace

RVGitRegularExpressionCache::RVGitRegularExpressionCache() = default;
RVGitRegularExpressionCache::~RVGitRegularExpressionCache() = default;

std::shared_ptr<const RVRegularExpression> RVGitRegularExpressionCache::regularExpressionForPattern(
    const std::string& pattern) {
    {
        std::shared_lock lock(mutex_);
        auto found = expressions_.find(pattern);
        if (found != expressions_.end())
            return found->second;
    }
    std::string reason;
    auto compiled =
        RVRegularExpression::compile(pattern, RVRegularExpression::CaseInsensitive, &reason);
    if (!compiled) {
        throw RVInternalInconsistencyException(
            "Could not create regular expression from pattern: '" + pattern + "': " + reason);
    }
    auto expression = std::make_shared<const RVRegularExpression>(std::move(*compiled));
    std::unique_lock lock(mutex_);
    return expressions_.try_emplace(pattern, std::move(expression)).first->second;
}

bool RVGitErrorOutput::mayBeMatchedBy(const RVRegularExpression& expression) const {
    const std::string& required = expression.requiredText();
    if (!text_ || required.empty())
        return true;
    if (!folded_)
        folded_ = foldedString(*text_);
    // Linear, whatever the text.
    const std::string_view text = *folded_;
    return memmem(text.data(), text.size(), required.data(), required.size()) != nullptr;
}

RVGitCommandErrorDefinition::RVGitCommandErrorDefinition(std::string name, Cache cache)
    : name_(std::move(name)),
      row_(gitErrorRow(0)),
      cache_(cache ? std::move(cache) : Cache(sharedRegularExpressionCache())) {}

RVGitCommandErrorDefinition::RVGitCommandErrorDefinition(RVGitErrorRow definition, Cache cache)
    : RVGitCommandErrorDefinition(std::to_string(definition.errorCode), std::move(cache)) {
    row_ = std::move(definition);
}

std::shared_ptr<RVGitCommandErrorDefinition>
RVGitCommandErrorDefinition::gitCommandErrorDefinitionWithDefinition(RVGitErrorRow definition) {
    return std::make_shared<RVGitCommandErrorDefinition>(std::move(definition));
}

const RVGitCommandErrorDefinition::Cache&
RVGitCommandErrorDefinition::sharedRegularExpressionCache() {
    static const RVNeverDestroyed<Cache> cache(std::make_shared<RVGitRegularExpressionCache>());
    return *cache;
}

bool RVGitCommandErrorDefinition::isMatchedByCommandName(
    std::optional<std::string_view> name) const {
    return isMatchedByName(row_.commandNames, name);
}

bool RVGitCommandErrorDefinition::isMatchedBySubCommandName(
    std::optional<std::string_view> name) const {
    return isMatchedByName(row_.subCommandNames, name);
}

bool RVGitCommandErrorDefinition::isMatchedByExitCode(int exitCode) const {
    return row_.exitCodes.empty() || contains(row_.exitCodes, exitCode);
}

bool RVGitCommandErrorDefinition::isMatchedByStandardError(
    std::optional<std::string_view> output) const {
    return isMatchedByStandardError(RVGitErrorOutput(output));
}

bool RVGitCommandErrorDefinition::isMatchedByStandardOutput(
    std::optional<std::string_view> output) const {
    return isMatchedByStandardOutput(RVGitErrorOutput(output));
}

bool RVGitCommandErrorDefinition::isMatchedByStandardError(const RVGitErrorOutput& output) const {
    return isMatched(row_.standardErrorPatterns, output);
}

bool RVGitCommandErrorDefinition::isMatchedByStandardOutput(const RVGitErrorOutput& output) const {
    return isMatched(row_.standardOutputPatterns, output);
}

RVGitCommandErrorDefinition::Components
RVGitCommandErrorDefinition::matchedComponentsForStandardError(
    std::optional<std::string_view> output) const {
    return matchedComponents(row_.standardErrorPatterns, row_.standardErrorMatchedComponentNames,
                             output);
}

RVGitCommandErrorDefinition::Components
RVGitCommandErrorDefinition::matchedComponentsForStandardOutput(
    std::optional<std::string_view> output) const {
    return matchedComponents(row_.standardOutputPatterns, row_.standardOutputMatchedComponentNames,
                             output);
}

std::shared_ptr<const RVRegularExpression>
RVGitCommandErrorDefinition::makeRegularExpressionWithPattern(const std::string& pattern) const {
    return cache_->regularExpressionForPattern(pattern);
}

bool RVGitCommandErrorDefinition::isMatched(const std::vector<std::string>& patterns,
                                            const RVGitErrorOutput& output) const {
    auto matches = [&](const std::string& pattern) {
        const auto& text = output.text();
        if (pattern.empty())
            return !text || text->empty();
        if (!text)
            return false;
        const auto expression = makeRegularExpressionWithPattern(pattern);
        return output.mayBeMatchedBy(*expression) && expression->matches(*text);
    };
    return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), matches);
}

RVGitCommandErrorDefinition::Components RVGitCommandErrorDefinition::matchedComponents(
    const std::vector<std::string>& patterns, const std::vector<std::string>& names,
    std::optional<std::string_view> output) const {
    if (!output)
        return std::nullopt;
    for (const std::string& pattern : patterns) {
        if (pattern.empty())
            continue;
        auto components = makeRegularExpressionWithPattern(pattern)->firstMatch(*output);
        if (components.size() < 2)
            continue;
        if (components.size() - 1 != names.size())
            return std::nullopt;
        RVUserInfo userInfo;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (components[i + 1])
                userInfo.insert_or_assign(names[i], *components[i + 1]);
        }
        return userInfo;
    }
    return std::nullopt;
}
