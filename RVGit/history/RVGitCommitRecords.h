#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"

class RVDataBuffer;

/// The records of one listing of commits, as ranges of the output that git printed: nothing is
/// copied but a record that had to be decoded. It keeps the output alive. Records are added by
/// one thread; afterwards any number of threads may read.
class RVGIT_EXPORT RVGitCommitRecords {
public:
    /// What a field can hold, in the order of git's placeholders in `placeholders`.
    enum Field : std::size_t {
        CommitHash,
        TreeHash,
        ParentHashes,
        AuthorName,
        AuthorTime,
        AuthorEmail,
        CommitterName,
        CommitterTime,
        CommitterEmail,
        Decorations,
        Message,
        ReflogSubject,
        ReflogSelector,
        GPGStatus,
        GPGSigner,
        GPGKeyIdentifier,
        GPGSigningKey,
        FieldCount
    };
    static constexpr std::array<std::string_view, FieldCount> placeholders = {
        "%H", "%T", "%P",  "%an", "%at", "%ae", "%cn", "%ct", "%ce",
        "%d", "%B", "%gs", "%gD", "%G?", "%GS", "%GP", "%GK"};

    /// The three characters between the fields of a record.
    static constexpr std::string_view boundary = "\x1f\x1d\x1f";

    /// `prettyFormat` names the placeholder of each field of a record; unknown ones are skipped.
    RVGitCommitRecords(std::shared_ptr<const RVDataBuffer> output,
                       std::vector<std::string> prettyFormat);
    ~RVGitCommitRecords();

    [[nodiscard]] const std::vector<std::string>& prettyFormat() const { return prettyFormat_; }
    [[nodiscard]] std::size_t count() const { return starts_.size(); }

    /// Adds a record, which is copied unless it lies within the output. False, with nothing added,
    /// if it has not as many fields as the format.
    [[nodiscard]] bool addRecord(std::string_view record);
    void removeLastRecord();

    /// The text of a field, the last one of a format that names it more than once; absent if the
    /// format has no such field. The view holds as long as this object lives and no record is
    /// added.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t index, Field field) const;
    /// The texts of a field, as many as the format names it, in order.
    [[nodiscard]] std::vector<std::string_view> texts(std::size_t index, Field field) const;
    /// Whichever of two fields the format names, the later one if it names both.
    [[nodiscard]] std::optional<Field> lastOf(Field one, Field other) const;

private:
    static constexpr std::size_t absent = static_cast<std::size_t>(-1);

    [[nodiscard]] std::string_view record(std::size_t index) const;
    [[nodiscard]] std::string_view textAtPosition(std::size_t index, std::size_t position) const;

    std::shared_ptr<const RVDataBuffer> output_;
    std::vector<std::string> prettyFormat_;
    /// Where in a record the field stands last, or `absent`.
    std::array<std::size_t, FieldCount> positions_;
    /// Where a field stands ahead of that; hardly any format names one twice.
    std::vector<std::pair<Field, std::size_t>> earlierPositions_;
    /// Where in the output each record begins.
    std::vector<std::size_t> starts_;
    /// Where each field ends, counted from the start of its record: as many to a record as the
    /// format has fields.
    std::vector<std::uint32_t> ends_;
    /// Records that do not stand in the output as they are, by index.
    std::unordered_map<std::size_t, std::string> decodedRecords_;
};
