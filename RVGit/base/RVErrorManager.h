#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

/// One entry of an error catalogue.
struct RVErrorDefinition {
    std::int64_t code;
    std::string_view name;
    /// The title.
    std::string_view description;
    /// A format with "%@" places, filled in order by the user-info values of the keys.
    std::string_view failureReason;
    std::vector<std::string_view> failureReasonKeys = {};
};

/// Composes the texts of error records from the catalogue of their domain. Safe on any thread;
/// definitions are registered once, before the first error is made.
class RVGIT_EXPORT RVErrorManager {
public:
    [[nodiscard]] static RVErrorManager& sharedManager();

    /// A code that is already known keeps its definition.
    void addErrorDefinitions(std::vector<RVErrorDefinition> definitions, const std::string& domain);

    /// The definition of a code, or null. It holds for the life of the manager.
    [[nodiscard]] const RVErrorDefinition* definition(std::string_view domain,
                                                      std::int64_t code) const;

    /// A record with the domain, code and user info, to which the title and the reason are added
    /// if the catalogue knows the code. A place in the reason whose key is missing from the user
    /// info, or that has no key, stays empty. Titles and reasons pass through localizedString().
    [[nodiscard]] RVError errorWithDomain(const std::string& domain, std::int64_t code,
                                          RVUserInfo userInfo) const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::map<std::int64_t, RVErrorDefinition>, std::less<>> definitions_;
};

inline namespace RVGIT_EXPORT rvgit {

/// The translation of a text's key, or `fallback` if none has been set.
[[nodiscard]] std::string localizedString(std::string_view key, std::string_view fallback);
/// Sets the translation of a key, for the process. Titles and reasons of the catalogue are their
/// own keys.
void setLocalizedString(std::string key, std::string text);

}  // namespace rvgit
