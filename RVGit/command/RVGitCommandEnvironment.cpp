#include "RVGit/command/RVGitCommandEnvironment.h"

#include "RVGit/base/RVNeverDestroyed.h"

RVGitCommandEnvironment& RVGitCommandEnvironment::sharedEnvironment() {
    static RVNeverDestroyed<RVGitCommandEnvironment> environment;
    return *environment;
}

RVEnvironment RVGitCommandEnvironment::dictionaryRepresentation() const {
    std::lock_guard lock(mutex_);
    return environment_;
}

std::optional<std::string> RVGitCommandEnvironment::valueForEnvironmentVariable(
    std::string_view environmentVariable) const {
    std::lock_guard lock(mutex_);
    auto found = environment_.find(environmentVariable);
    if (found == environment_.end())
        return std::nullopt;
    return found->second;
}

void RVGitCommandEnvironment::setValueForEnvironmentVariable(
    std::optional<std::string> value, const std::string& environmentVariable) {
    std::lock_guard lock(mutex_);
    if (value)
        environment_.insert_or_assign(environmentVariable, std::move(*value));
    else
        environment_.erase(environmentVariable);
}

void RVGitCommandEnvironment::unsetValueForEnvironmentVariable(
    const std::string& environmentVariable) {
    setValueForEnvironmentVariable(std::nullopt, environmentVariable);
}

void RVGitCommandEnvironment::setValuesFromDictionary(const RVEnvironment& environment) {
    std::lock_guard lock(mutex_);
    for (const auto& [name, value] : environment)
        environment_.insert_or_assign(name, value);
}

void RVGitCommandEnvironment::replaceValuesWithDictionary(RVEnvironment environment) {
    std::lock_guard lock(mutex_);
    environment_ = std::move(environment);
}
