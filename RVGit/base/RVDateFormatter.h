#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

inline namespace RVGIT_EXPORT rvgit {

/// "2024-01-01T10:00:00Z". A date outside the years 0 to 9999 gives the nearest one within.
[[nodiscard]] std::string rfc3339DateString(RVDate date);

/// Reads "2024-01-01T10:00:00+01:00", with "Z" and "+0100" also accepted as the zone; absent for
/// any other text or an impossible date.
[[nodiscard]] std::optional<RVDate> dateFromISO8601String(std::string_view text);

}  // namespace rvgit
