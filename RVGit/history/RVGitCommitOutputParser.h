#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitOutputParser.h"

class RVDataBuffer;
class RVGitCommitRecords;
class RVRegularExpression;

/// One commit as `git log` printed it. A field that the format did not ask for is absent. The item
/// is a place in the listing's output: texts are made on request, and the whole output stays alive
/// as long as one item of it does. Immutable, so any thread may read it.
class RVGIT_EXPORT RVGitCommitOutputParserResultItem {
public:
    /// An item without any field.
    RVGitCommitOutputParserResultItem() = default;
    RVGitCommitOutputParserResultItem(std::shared_ptr<const RVGitCommitRecords> records,
                                      std::size_t index)
        : records_(std::move(records)), index_(index) {}

    [[nodiscard]] std::optional<std::string> commitHash() const;
    [[nodiscard]] std::optional<std::string> treeHash() const;
    /// In git's order; empty for a root commit.
    [[nodiscard]] std::vector<std::string> parentCommitHashes() const;
    [[nodiscard]] std::optional<std::string> authorName() const;
    [[nodiscard]] std::optional<std::string> authorEmail() const;
    /// Kept for compatibility: read as a signed 32-bit number of seconds, which saturates.
    [[nodiscard]] std::optional<RVDate> authorDate() const;
    [[nodiscard]] std::optional<std::string> committerName() const;
    [[nodiscard]] std::optional<std::string> committerEmail() const;
    /// As authorDate(), or the date of a reflog entry, absent if that cannot be read.
    [[nodiscard]] std::optional<RVDate> committerDate() const;
    /// Full names of the refs that point at the commit, "HEAD" among them.
    [[nodiscard]] std::vector<std::string> refs() const;
    [[nodiscard]] std::optional<std::string> message() const;
    [[nodiscard]] std::optional<std::string> GPGStatus() const;
    /// Name and address of a signer that git printed as "Name <address>"; otherwise both absent.
    [[nodiscard]] std::optional<std::string> GPGUsername() const;
    [[nodiscard]] std::optional<std::string> GPGEmail() const;
    [[nodiscard]] std::optional<std::string> GPGKeyIdentifier() const;
    [[nodiscard]] std::optional<std::string> GPGSigningKey() const;

    // The same without a copy; the views hold as long as the item does.
    [[nodiscard]] std::optional<std::string_view> commitHashView() const;
    [[nodiscard]] std::optional<std::string_view> authorNameView() const;
    [[nodiscard]] std::optional<std::string_view> authorEmailView() const;
    [[nodiscard]] std::optional<std::string_view> committerNameView() const;
    [[nodiscard]] std::optional<std::string_view> committerEmailView() const;
    [[nodiscard]] std::vector<std::string_view> parentCommitHashViews() const;
    [[nodiscard]] std::optional<std::string_view> messageView() const;

    [[nodiscard]] std::size_t parentCount() const;
    /// Whether refs() has any.
    [[nodiscard]] bool hasRefs() const;

    /// Debug text of the fields down to the message.
    [[nodiscard]] std::string description() const;

private:
    std::shared_ptr<const RVGitCommitRecords> records_;
    std::size_t index_ = 0;
};

/// Reads the records that `git log`, `git stash list` and `git reflog` print in one of the formats
/// below: fields between commitBoundaryString(), records ended by NUL or newline. A record with
/// another number of fields fails the parse.
class RVGIT_EXPORT RVGitCommitOutputParser
    : public RVGitItemOutputParser<RVGitCommitOutputParserResultItem> {
public:
    using DateFormatter = std::optional<RVDate> (*)(std::string_view text);

    // The format of a listing, as the list of placeholders that the parser takes and, with
    // "String" at its end, as the text that git takes. The two must always come from the same one.
    [[nodiscard]] static const std::vector<std::string>& gitCommitLogPrettyFormat();
    [[nodiscard]] static std::string gitCommitLogPrettyFormatString();
    /// With the verified signature of each commit.
    [[nodiscard]] static const std::vector<std::string>& gitCommitLogPrettyFormatGPG();
    [[nodiscard]] static std::string gitCommitLogPrettyFormatGPGString();
    /// Hashes only.
    [[nodiscard]] static const std::vector<std::string>& gitCommitHashLogPrettyFormat();
    [[nodiscard]] static std::string gitCommitHashLogPrettyFormatString();
    [[nodiscard]] static const std::vector<std::string>& gitStashListPrettyFormat();
    [[nodiscard]] static std::string gitStashListPrettyFormatString();
    [[nodiscard]] static const std::vector<std::string>& gitRefLogPrettyFormat();
    [[nodiscard]] static std::string gitRefLogPrettyFormatString();

    /// Reads the date in a reflog selector, "2024-01-01T10:00:00+01:00".
    [[nodiscard]] static DateFormatter reflogDateFormatter();
    /// Matches a signer, "Name <address>".
    [[nodiscard]] static const RVRegularExpression& gpgIdentityRegex();

    /// A parser of bytes, which are copied once, since the items outlive the parser.
    [[nodiscard]] static std::shared_ptr<RVGitCommitOutputParser> commitParserWithData(
        std::string_view data, std::vector<std::string> prettyFormat,
        bool usesNULByteAsNewlineDelimiter = true);
    /// A parser of a command's output, which is not copied: the items keep it alive.
    [[nodiscard]] static std::shared_ptr<RVGitCommitOutputParser> commitParserWithData(
        const std::shared_ptr<const RVDataBuffer>& data, std::vector<std::string> prettyFormat,
        bool usesNULByteAsNewlineDelimiter = true);

    RVGitCommitOutputParser(std::string_view data, std::vector<std::string> prettyFormat,
                            bool usesNULByteAsNewlineDelimiter = true);
    RVGitCommitOutputParser(const std::shared_ptr<const RVDataBuffer>& data,
                            std::vector<std::string> prettyFormat,
                            bool usesNULByteAsNewlineDelimiter = true);
    /// A parser of one piece of the output of `records`, to which it adds: an output may be read
    /// piece by piece, each ending where a record does.
    RVGitCommitOutputParser(std::shared_ptr<RVGitCommitRecords> records, std::string_view piece,
                            bool usesNULByteAsNewlineDelimiter = true);
    ~RVGitCommitOutputParser() override;

    [[nodiscard]] bool usesNULByteAsNewLineDelimiter() const {
        return usesNULByteAsNewLineDelimiter_;
    }
    [[nodiscard]] const std::vector<std::string>& prettyFormat() const;
    /// The three characters between two fields.
    [[nodiscard]] static std::string_view commitBoundaryString();
    /// The items, in output order.
    [[nodiscard]] const std::vector<RVGitCommitOutputParserResultItem>& commits() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override { return "RVGitCommitOutputParser"; }
    bool parseOutputLine(std::string_view line) override;

private:
    std::shared_ptr<RVGitCommitRecords> records_;
    bool usesNULByteAsNewLineDelimiter_;
};
