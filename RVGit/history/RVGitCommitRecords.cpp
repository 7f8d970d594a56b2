#include "RVGit/history/RVGitCommitRecords.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

#include "RVGit/base/RVDataBuffer.h"

namespace {

bool isWithin(std::string_view inner, std::string_view outer) {
    const std::less_equal<const char*> notAfter;
    return notAfter(outer.data(), inner.data()) &&
           notAfter(inner.data() + inner.size(), outer.data() + outer.size());
}

// The first boundary at or after `from`, or the record's size. memchr does the walking, since the
// first byte of a boundary hardly ever stands in text.
std::size_t findBoundary(std::string_view record, std::size_t from) {
    constexpr auto boundary = RVGitCommitRecords::boundary;
    while (from + boundary.size() <= record.size()) {
        const void* found = std::memchr(record.data() + from, boundary[0], record.size() - from);
        if (!found)
            break;
        from = static_cast<std::size_t>(static_cast<const char*>(found) - record.data());
        if (record.substr(from, boundary.size()) == boundary)
            return from;
        ++from;
    }
    return record.size();
}

}  // namespace

RVGitCommitRecords::RVGitCommitRecords(std::shared_ptr<const RVDataBuffer> output,
                                       std::vector<std::string> prettyFormat)
    : output_(std::move(output)), prettyFormat_(std::move(prettyFormat)) {
    positions_.fill(absent);
    for (std::size_t position = 0; position < prettyFormat_.size(); ++position) {
        const auto found = std::ranges::find(placeholders, prettyFormat_[position]);
        if (found == placeholders.end())
            continue;
        const auto field = static_cast<Field>(found - placeholders.begin());
        if (positions_[field] != absent)
            earlierPositions_.emplace_back(field, positions_[field]);
        positions_[field] = position;
    }
}

RVGitCommitRecords::~RVGitCommitRecords() = default;

bool RVGitCommitRecords::addRecord(std::string_view record) {
    if (record.size() > std::numeric_limits<std::uint32_t>::max())
        return false;
    const std::size_t fieldCount = prettyFormat_.size();
    const std::size_t before = ends_.size();
    std::size_t end = findBoundary(record, 0);
    ends_.push_back(static_cast<std::uint32_t>(end));
    while (end < record.size() && ends_.size() - before <= fieldCount) {
        end = findBoundary(record, end + boundary.size());
        ends_.push_back(static_cast<std::uint32_t>(end));
    }
    if (ends_.size() - before != fieldCount) {
        ends_.resize(before);
        return false;
    }
    const std::string_view output = output_->view();
    if (isWithin(record, output)) {
        starts_.push_back(static_cast<std::size_t>(record.data() - output.data()));
    } else {
        decodedRecords_.emplace(starts_.size(), record);
        starts_.push_back(0);
    }
    return true;
}

void RVGitCommitRecords::removeLastRecord() {
    starts_.pop_back();
    ends_.resize(ends_.size() - prettyFormat_.size());
    decodedRecords_.erase(starts_.size());
}

std::string_view RVGitCommitRecords::record(std::size_t index) const {
    if (!decodedRecords_.empty()) {
        const auto found = decodedRecords_.find(index);
        if (found != decodedRecords_.end())
            return found->second;
    }
    return output_->view().substr(starts_[index], ends_[(index + 1) * prettyFormat_.size() - 1]);
}

std::optional<std::string_view> RVGitCommitRecords::text(std::size_t index, Field field) const {
    const std::size_t position = positions_[field];
    return position == absent ? std::nullopt : std::optional(textAtPosition(index, position));
}

std::vector<std::string_view> RVGitCommitRecords::texts(std::size_t index, Field field) const {
    std::vector<std::string_view> texts;
    if (positions_[field] == absent)
        return texts;
    for (const auto& [earlierField, position] : earlierPositions_)
        if (earlierField == field)
            texts.push_back(textAtPosition(index, position));
    texts.push_back(textAtPosition(index, positions_[field]));
    return texts;
}

std::string_view RVGitCommitRecords::textAtPosition(std::size_t index, std::size_t position) const {
    const std::uint32_t* ends = ends_.data() + index * prettyFormat_.size();
    const std::size_t start = position == 0 ? 0 : ends[position - 1] + boundary.size();
    return record(index).substr(start, ends[position] - start);
}

std::optional<RVGitCommitRecords::Field> RVGitCommitRecords::lastOf(Field one, Field other) const {
    if (positions_[one] == absent && positions_[other] == absent)
        return std::nullopt;
    if (positions_[one] == absent)
        return other;
    if (positions_[other] == absent)
        return one;
    return positions_[one] > positions_[other] ? one : other;
}
