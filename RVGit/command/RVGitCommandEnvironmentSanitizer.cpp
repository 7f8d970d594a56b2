#include "RVGit/command/RVGitCommandEnvironmentSanitizer.h"

#include <plist/plist.h>

#include <memory>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVNeverDestroyed.h"

// The bytes of RVGitCommandEnvironmentSanitizerConfig.plist, from a source file that the build
// makes of it.
extern const char RVGitCommandEnvironmentSanitizerConfigPropertyList[];

namespace {

std::optional<std::vector<std::string>> stringsOfPropertyList(std::string_view propertyList) {
    plist_t root = nullptr;
    plist_from_xml(propertyList.data(), static_cast<std::uint32_t>(propertyList.size()), &root);
    std::unique_ptr<void, decltype(&plist_free)> owner(root, plist_free);
    if (!root || plist_get_node_type(root) != PLIST_ARRAY)
        return std::nullopt;

    std::vector<std::string> strings;
    for (std::uint32_t i = 0; i < plist_array_get_size(root); ++i) {
        plist_t item = plist_array_get_item(root, i);
        if (plist_get_node_type(item) != PLIST_STRING)
            return std::nullopt;
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(item, &length);
        strings.emplace_back(text, length);
    }
    return strings;
}

}  // namespace

const RVGitCommandEnvironmentSanitizerConfig&
RVGitCommandEnvironmentSanitizerConfig::sharedConfig() {
    static const RVNeverDestroyed<RVGitCommandEnvironmentSanitizerConfig> config(
        RVGitCommandEnvironmentSanitizerConfigPropertyList);
    return *config;
}

RVGitCommandEnvironmentSanitizerConfig::RVGitCommandEnvironmentSanitizerConfig(
    std::optional<std::string_view> propertyList) {
    if (!propertyList)
        throw RVInternalInconsistencyException("Expected sanitizer config");
    blacklistedEnvironmentVariables_ = stringsOfPropertyList(*propertyList);
}

RVGitCommandEnvironmentSanitizer::RVGitCommandEnvironmentSanitizer(
    RVEnvironment environment, std::optional<std::vector<std::string>> variablesToRemove)
    : environment_(std::move(environment)), variablesToRemove_(std::move(variablesToRemove)) {
    if (!variablesToRemove_) {
        variablesToRemove_ = RVGitCommandEnvironmentSanitizerConfig::sharedConfig()
                                 .blacklistedEnvironmentVariables();
    }
}

RVEnvironment RVGitCommandEnvironmentSanitizer::sanitizedEnvironmentForEnvironment(
    RVEnvironment environment, std::optional<std::vector<std::string>> variablesToRemove) {
    return RVGitCommandEnvironmentSanitizer(std::move(environment), std::move(variablesToRemove))
        .sanitizedEnvironment();
}

RVEnvironment RVGitCommandEnvironmentSanitizer::sanitizedEnvironment() const {
    RVEnvironment sanitized = environment_;
    if (variablesToRemove_) {
        for (const std::string& name : *variablesToRemove_)
            sanitized.erase(name);
    }
    return sanitized;
}
