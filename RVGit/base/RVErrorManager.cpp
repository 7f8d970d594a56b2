#include "RVGit/base/RVErrorManager.h"

#include <shared_mutex>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"

RVErrorManager& RVErrorManager::sharedManager() {
    static RVNeverDestroyed<RVErrorManager> manager;
    return *manager;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): its elements are moved.
void RVErrorManager::addErrorDefinitions(std::vector<RVErrorDefinition> definitions,
                                         const std::string& domain) {
    const std::lock_guard lock(mutex_);
    auto& definitionsOfDomain = definitions_[domain];
    for (RVErrorDefinition& definition : definitions) {
        const auto code = definition.code;
        definitionsOfDomain.try_emplace(code, std::move(definition));
    }
}

const RVErrorDefinition* RVErrorManager::definition(std::string_view domain,
                                                    std::int64_t code) const {
    const std::lock_guard lock(mutex_);
    const auto definitionsOfDomain = definitions_.find(domain);
    if (definitionsOfDomain == definitions_.end())
        return nullptr;
    const auto entry = definitionsOfDomain->second.find(code);
    return entry == definitionsOfDomain->second.end() ? nullptr : &entry->second;
}

RVError RVErrorManager::errorWithDomain(const std::string& domain, std::int64_t code,
                                        RVUserInfo userInfo) const {
    if (const auto* known = definition(domain, code)) {
        std::vector<std::string> values;
        for (const auto key : known->failureReasonKeys) {
            const auto entry = userInfo.find(key);
            values.push_back(entry == userInfo.end() ? "" : entry->second.displayString());
        }
        userInfo.insert_or_assign(RVLocalizedDescriptionErrorKey,
                                  localizedString(known->description, known->description));
        userInfo.insert_or_assign(
            RVLocalizedFailureReasonErrorKey,
            stringByFillingPlaceholders(localizedString(known->failureReason, known->failureReason),
                                        values));
    }
    return RVError(domain, code, std::move(userInfo));
}

namespace {

struct Translations {
    std::shared_mutex mutex;
    std::map<std::string, std::string, std::less<>> texts;

    static Translations& shared() {
        static RVNeverDestroyed<Translations> translations;
        return *translations;
    }
};

}  // namespace

std::string rvgit::localizedString(std::string_view key, std::string_view fallback) {
    auto& translations = Translations::shared();
    const std::shared_lock lock(translations.mutex);
    const auto entry = translations.texts.find(key);
    return entry == translations.texts.end() ? std::string(fallback) : entry->second;
}

void rvgit::setLocalizedString(std::string key, std::string text) {
    auto& translations = Translations::shared();
    const std::unique_lock lock(translations.mutex);
    translations.texts.insert_or_assign(std::move(key), std::move(text));
}
