#include "RVGit/history/RVGitCommitOutputParser.h"

#include <algorithm>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVDateFormatter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitCommitRecords.h"

using Field = RVGitCommitRecords::Field;

namespace {

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::optional<std::string> textOf(const RVGitCommitRecords* records, std::size_t index,
                                  Field field) {
    return records ? owned(records->text(index, field)) : std::nullopt;
}

std::optional<RVDate> dateOf(std::optional<std::string_view> seconds) {
    return seconds ? std::optional(RVDate(std::chrono::seconds(int32Value(*seconds))))
                   : std::nullopt;
}

// The text between the last brace and the final character; absent without a brace.
std::optional<std::string_view> reflogDateText(std::string_view selector) {
    const std::size_t brace = selector.rfind('{');
    if (brace == std::string_view::npos)
        return std::nullopt;
    selector.remove_prefix(brace + 1);
    return selector.substr(0, selector.empty() ? 0 : selector.size() - 1);
}

// " (HEAD -> refs/heads/main, tag: refs/tags/v1)"
std::vector<std::string> refNamesFromDecorations(std::string_view decorations) {
    decorations = trimmedWhitespaceAndNewline(decorations);
    if (decorations.empty())
        return {};
    const std::string list = stringByReplacingOccurrences(decorations, " -> ", ", ");
    std::vector<std::string> names;
    for (std::string_view piece :
         componentsSeparatedByString(withoutFirstAndLastCharacter(list), ", ")) {
        constexpr std::string_view tagPrefix = "tag: ";
        if (piece.starts_with(tagPrefix))
            piece.remove_prefix(tagPrefix.size());
        names.emplace_back(trimmedWhitespaceAndNewline(piece));
    }
    return names;
}

// The name and the address of "Name <address>"; empty for any other text.
RVRegularExpression::Components signerComponents(std::string_view signer) {
    if (signer.find('<') == std::string_view::npos)
        return {};
    return RVGitCommitOutputParser::gpgIdentityRegex().firstMatch(signer);
}

std::optional<std::string> signerComponent(const RVGitCommitRecords* records, std::size_t index,
                                           std::size_t group) {
    if (!records)
        return std::nullopt;
    std::optional<std::string> component;
    for (const std::string_view signer : records->texts(index, Field::GPGSigner)) {
        const auto components = signerComponents(signer);
        if (!components.empty())
            component = owned(components[group]);
    }
    return component;
}

std::optional<std::string> descriptionOfDate(std::optional<RVDate> date) {
    return date ? std::optional(rfc3339DateString(*date)) : std::nullopt;
}

const std::vector<std::string>& logFormat() {
    static const RVNeverDestroyed<std::vector<std::string>> format = {
        "%H", "%T", "%P", "%an", "%at", "%ae", "%cn", "%ct", "%ce", "%d", "%B"};
    return *format;
}

std::string formatString(const std::vector<std::string>& placeholders) {
    return stringByJoiningComponents(placeholders, "%x1f%x1d%x1f");
}

std::shared_ptr<const RVDataBuffer> copiedBytes(std::string_view bytes) {
    auto buffer = std::make_shared<RVDataBuffer>();
    buffer->append(bytes);
    return buffer;
}

}  // namespace

std::optional<std::string> RVGitCommitOutputParserResultItem::commitHash() const {
    return textOf(records_.get(), index_, Field::CommitHash);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::treeHash() const {
    return textOf(records_.get(), index_, Field::TreeHash);
}

std::vector<std::string> RVGitCommitOutputParserResultItem::parentCommitHashes() const {
    const auto views = parentCommitHashViews();
    return {views.begin(), views.end()};
}

std::optional<std::string> RVGitCommitOutputParserResultItem::authorName() const {
    return textOf(records_.get(), index_, Field::AuthorName);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::authorEmail() const {
    return textOf(records_.get(), index_, Field::AuthorEmail);
}

std::optional<RVDate> RVGitCommitOutputParserResultItem::authorDate() const {
    return records_ ? dateOf(records_->text(index_, Field::AuthorTime)) : std::nullopt;
}

std::optional<std::string> RVGitCommitOutputParserResultItem::committerName() const {
    return textOf(records_.get(), index_, Field::CommitterName);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::committerEmail() const {
    return textOf(records_.get(), index_, Field::CommitterEmail);
}

std::optional<RVDate> RVGitCommitOutputParserResultItem::committerDate() const {
    if (!records_)
        return std::nullopt;
    const auto field = records_->lastOf(Field::CommitterTime, Field::ReflogSelector);
    if (!field)
        return std::nullopt;
    const auto text = records_->text(index_, *field);
    if (*field == Field::CommitterTime)
        return dateOf(text);
    const auto date = reflogDateText(*text);
    return date ? RVGitCommitOutputParser::reflogDateFormatter()(*date) : std::nullopt;
}

std::vector<std::string> RVGitCommitOutputParserResultItem::refs() const {
    return hasRefs() ? refNamesFromDecorations(*records_->text(index_, Field::Decorations))
                     : std::vector<std::string>();
}

bool RVGitCommitOutputParserResultItem::hasRefs() const {
    if (!records_)
        return false;
    const auto decorations = records_->text(index_, Field::Decorations);
    return decorations && !trimmedWhitespaceAndNewline(*decorations).empty();
}

std::optional<std::string> RVGitCommitOutputParserResultItem::message() const {
    return owned(messageView());
}

std::optional<std::string> RVGitCommitOutputParserResultItem::GPGStatus() const {
    return textOf(records_.get(), index_, Field::GPGStatus);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::GPGUsername() const {
    return signerComponent(records_.get(), index_, 1);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::GPGEmail() const {
    return signerComponent(records_.get(), index_, 2);
}

std::optional<std::string> RVGitCommitOutputParserResultItem::GPGKeyIdentifier() const {
    if (!records_)
        return std::nullopt;
    std::optional<std::string> fingerprint;
    for (const std::string_view text : records_->texts(index_, Field::GPGKeyIdentifier)) {
        // A git that does not know the placeholder prints it as it is.
        if (text != "%GP")
            fingerprint = text;
    }
    return fingerprint;
}

std::optional<std::string> RVGitCommitOutputParserResultItem::GPGSigningKey() const {
    return textOf(records_.get(), index_, Field::GPGSigningKey);
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::commitHashView() const {
    return records_ ? records_->text(index_, Field::CommitHash) : std::nullopt;
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::authorNameView() const {
    return records_ ? records_->text(index_, Field::AuthorName) : std::nullopt;
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::authorEmailView() const {
    return records_ ? records_->text(index_, Field::AuthorEmail) : std::nullopt;
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::committerNameView() const {
    return records_ ? records_->text(index_, Field::CommitterName) : std::nullopt;
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::committerEmailView() const {
    return records_ ? records_->text(index_, Field::CommitterEmail) : std::nullopt;
}

std::vector<std::string_view> RVGitCommitOutputParserResultItem::parentCommitHashViews() const {
    std::vector<std::string_view> hashes;
    const auto text = records_ ? records_->text(index_, Field::ParentHashes) : std::nullopt;
    if (!text || text->empty())
        return hashes;
    std::string_view rest = *text;
    for (std::size_t blank; (blank = rest.find(' ')) != std::string_view::npos;) {
        hashes.push_back(rest.substr(0, blank));
        rest.remove_prefix(blank + 1);
    }
    hashes.push_back(rest);
    return hashes;
}

std::size_t RVGitCommitOutputParserResultItem::parentCount() const {
    const auto text = records_ ? records_->text(index_, Field::ParentHashes) : std::nullopt;
    if (!text || text->empty())
        return 0;
    return static_cast<std::size_t>(std::ranges::count(*text, ' ')) + 1;
}

std::optional<std::string_view> RVGitCommitOutputParserResultItem::messageView() const {
    if (!records_)
        return std::nullopt;
    const auto field = records_->lastOf(Field::Message, Field::ReflogSubject);
    if (!field)
        return std::nullopt;
    const auto text = records_->text(index_, *field);
    return *field == Field::Message ? trimmedWhitespaceAndNewline(*text) : text;
}

std::string RVGitCommitOutputParserResultItem::description() const {
    return prettyDescriptionWithItems(
        "RVGitCommitOutputParserResultItem",
        {{"commitHash", commitHash()},
         {"treeHash", treeHash()},
         {"parentCommitHashes", stringByJoiningComponents(parentCommitHashes(), ", ")},
         {"authorName", authorName()},
         {"authorEmail", authorEmail()},
         {"authorDate", descriptionOfDate(authorDate())},
         {"committerName", committerName()},
         {"committerEmail", committerEmail()},
         {"committerDate", descriptionOfDate(committerDate())},
         {"refs", stringByJoiningComponents(refs(), ", ")},
         {"message", message()}});
}

const std::vector<std::string>& RVGitCommitOutputParser::gitCommitLogPrettyFormat() {
    return logFormat();
}

std::string RVGitCommitOutputParser::gitCommitLogPrettyFormatString() {
    return formatString(gitCommitLogPrettyFormat());
}

const std::vector<std::string>& RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG() {
    static const RVNeverDestroyed<std::vector<std::string>> format([] {
        auto placeholders = logFormat();
        placeholders.insert(placeholders.end(), {"%G?", "%GS", "%GP", "%GK"});
        return placeholders;
    }());
    return *format;
}

std::string RVGitCommitOutputParser::gitCommitLogPrettyFormatGPGString() {
    return formatString(gitCommitLogPrettyFormatGPG());
}

const std::vector<std::string>& RVGitCommitOutputParser::gitCommitHashLogPrettyFormat() {
    static const RVNeverDestroyed<std::vector<std::string>> format = {"%H"};
    return *format;
}

std::string RVGitCommitOutputParser::gitCommitHashLogPrettyFormatString() {
    return formatString(gitCommitHashLogPrettyFormat());
}

const std::vector<std::string>& RVGitCommitOutputParser::gitStashListPrettyFormat() {
    return logFormat();
}

std::string RVGitCommitOutputParser::gitStashListPrettyFormatString() {
    return formatString(gitStashListPrettyFormat());
}

const std::vector<std::string>& RVGitCommitOutputParser::gitRefLogPrettyFormat() {
    static const RVNeverDestroyed<std::vector<std::string>> format = {"%H", "%gs", "%gD"};
    return *format;
}

std::string RVGitCommitOutputParser::gitRefLogPrettyFormatString() {
    return formatString(gitRefLogPrettyFormat());
}

RVGitCommitOutputParser::DateFormatter RVGitCommitOutputParser::reflogDateFormatter() {
    return dateFromISO8601String;
}

const RVRegularExpression& RVGitCommitOutputParser::gpgIdentityRegex() {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^(.*)\s+<(.*)>$)", RVRegularExpression::CaseInsensitive);
    return *expression;
}

std::shared_ptr<RVGitCommitOutputParser> RVGitCommitOutputParser::commitParserWithData(
    std::string_view data, std::vector<std::string> prettyFormat,
    bool usesNULByteAsNewlineDelimiter) {
    return std::make_shared<RVGitCommitOutputParser>(data, std::move(prettyFormat),
                                                     usesNULByteAsNewlineDelimiter);
}

std::shared_ptr<RVGitCommitOutputParser> RVGitCommitOutputParser::commitParserWithData(
    const std::shared_ptr<const RVDataBuffer>& data, std::vector<std::string> prettyFormat,
    bool usesNULByteAsNewlineDelimiter) {
    return std::make_shared<RVGitCommitOutputParser>(data, std::move(prettyFormat),
                                                     usesNULByteAsNewlineDelimiter);
}

RVGitCommitOutputParser::RVGitCommitOutputParser(std::string_view data,
                                                 std::vector<std::string> prettyFormat,
                                                 bool usesNULByteAsNewlineDelimiter)
    : RVGitCommitOutputParser(copiedBytes(data), std::move(prettyFormat),
                              usesNULByteAsNewlineDelimiter) {}

RVGitCommitOutputParser::RVGitCommitOutputParser(const std::shared_ptr<const RVDataBuffer>& data,
                                                 std::vector<std::string> prettyFormat,
                                                 bool usesNULByteAsNewlineDelimiter)
    : RVGitCommitOutputParser(std::make_shared<RVGitCommitRecords>(data, std::move(prettyFormat)),
                              data->view(), usesNULByteAsNewlineDelimiter) {}

RVGitCommitOutputParser::RVGitCommitOutputParser(std::shared_ptr<RVGitCommitRecords> records,
                                                 std::string_view piece,
                                                 bool usesNULByteAsNewlineDelimiter)
    : RVGitItemOutputParser(
          piece, usesNULByteAsNewlineDelimiter ? Delimiter::NULByte : Delimiter::Newline),
      records_(std::move(records)),
      usesNULByteAsNewLineDelimiter_(usesNULByteAsNewlineDelimiter) {}

RVGitCommitOutputParser::~RVGitCommitOutputParser() = default;

const std::vector<std::string>& RVGitCommitOutputParser::prettyFormat() const {
    return records_->prettyFormat();
}

std::string_view RVGitCommitOutputParser::commitBoundaryString() {
    return RVGitCommitRecords::boundary;
}

bool RVGitCommitOutputParser::parseOutputLine(std::string_view line) {
    if (!records_->addRecord(line))
        return false;
    const std::size_t index = records_->count() - 1;
    for (const auto field : {Field::CommitHash, Field::TreeHash, Field::ParentHashes}) {
        if (beginsWithSHA256Hash(records_->text(index, field).value_or(std::string_view()))) {
            records_->removeLastRecord();
            return false;
        }
    }
    for (const std::string_view selector : records_->texts(index, Field::ReflogSelector)) {
        if (!reflogDateText(selector)) {
            records_->removeLastRecord();
            return true;
        }
    }
    addResult(RVGitCommitOutputParserResultItem(records_, index));
    return true;
}
