#include "RVGit/base/RVError.h"

#include <system_error>

std::optional<std::string> RVError::userInfoString(std::string_view key) const {
    const auto entry = userInfo_.find(key);
    if (entry == userInfo_.end() || !entry->second.string())
        return std::nullopt;
    return *entry->second.string();
}

std::optional<std::string> RVError::localizedDescription() const {
    return userInfoString(RVLocalizedDescriptionErrorKey);
}

std::optional<std::string> RVError::localizedFailureReason() const {
    return userInfoString(RVLocalizedFailureReasonErrorKey);
}

RVError rvgit::posixError(int errorNumber, std::string_view path) {
    RVUserInfo userInfo{
        {RVLocalizedFailureReasonErrorKey, std::generic_category().message(errorNumber)}};
    if (!path.empty()) {
        userInfo.emplace(RVFilePathErrorKey, path);
        userInfo.emplace(RVLocalizedDescriptionErrorKey,
                         "Could not access “" + std::string(path) + "”.");
    }
    return RVError(RVPOSIXErrorDomain, errorNumber, std::move(userInfo));
}
