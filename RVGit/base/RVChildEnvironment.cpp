#include "RVGit/base/RVChildEnvironment.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "RVGit/base/RVPath.h"

namespace {

// Calls with each variable of this process: its name, its value, and its text in one.
template <class Call>
void forEachInherited(const Call& call) {
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        if (const std::size_t end = text.find('='); end != std::string_view::npos)
            call(text.substr(0, end), text.substr(end + 1), *entry);
    }
}

}  // namespace

std::optional<std::string> RVChildEnvironment::value(std::string_view name) const {
    std::optional<std::string> value;
    if (own_) {
        if (const auto found = own_->find(name); found != own_->end())
            value = found->second;
    } else if (const auto found = changes_.find(name); found != changes_.end()) {
        value = found->second;
    } else if (const char* inherited = std::getenv(std::string(name).c_str())) {
        value = inherited;
    }
    return value;
}

void RVChildEnvironment::setValue(const std::string& name, std::optional<std::string> value) {
    if (!own_)
        changes_.insert_or_assign(name, std::move(value));
    else if (value)
        own_->insert_or_assign(name, std::move(*value));
    else
        own_->erase(name);
}

RVEnvironment RVChildEnvironment::variables() const {
    if (own_)
        return *own_;
    RVEnvironment variables;
    for (const auto& [name, value] : changes_)
        if (value)
            variables.emplace(name, *value);
    forEachInherited([&](std::string_view name, std::string_view value, char*) {
        if (!changes_.contains(name))
            variables.emplace(name, value);
    });
    return variables;
}

bool RVChildEnvironment::holdsNUL() const {
    const auto anyHolds = [](const auto& variables) {
        return std::ranges::any_of(variables, [](const auto& variable) {
            const std::optional<std::string_view> value = variable.second;
            return value && (::holdsNUL(variable.first) || ::holdsNUL(*value));
        });
    };
    return (own_ && anyHolds(*own_)) || anyHolds(changes_);
}

RVChildEnvironment::Pointers::Pointers(const RVChildEnvironment& environment) {
    const auto forEachOwn = [&](const auto& call) {
        if (environment.own_)
            for (const auto& [name, value] : *environment.own_)
                call(name, value);
        for (const auto& [name, value] : environment.changes_)
            if (value)
                call(name, *value);
    };
    // The pointers are into texts_, which must not move then.
    std::size_t size = 0;
    forEachOwn([&](const std::string& name, const std::string& value) {
        size += name.size() + value.size() + 2;
    });
    texts_.reserve(size);
    if (!environment.own_)
        forEachInherited([&](std::string_view name, std::string_view, char* text) {
            if (!environment.changes_.contains(name))
                pointers_.push_back(text);
        });
    forEachOwn([&](const std::string& name, const std::string& value) {
        pointers_.push_back(texts_.data() + texts_.size());
        texts_.append(name).append(1, '=').append(value).append(1, '\0');
    });
    pointers_.push_back(nullptr);
}
