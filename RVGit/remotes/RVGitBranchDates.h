#pragma once

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "RVGit/base/RVTypes.h"

/// Dates by full ref name. It holds views: the items must outlive it.
template <typename Item>
class RVGitBranchDates {
public:
    explicit RVGitBranchDates(const std::vector<Item>& items) {
        dates_.reserve(items.size());
        for (const Item& item : items)
            dates_.insert_or_assign(item.fullRefName, item.creatorDate);
    }

    [[nodiscard]] std::optional<RVDate> dateFor(std::string_view fullRefName) const {
        const auto found = dates_.find(fullRefName);
        return found == dates_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::unordered_map<std::string_view, RVDate> dates_;
};
