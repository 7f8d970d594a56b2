#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// The environment of a child process: what this process has when the child is launched, with
/// changes, or a whole one of its own. The inherited variables are never copied one by one, which
/// for a short command would cost more than all else that is done here. Not thread-safe.
class RVGIT_EXPORT RVChildEnvironment {
public:
    /// That of this process.
    RVChildEnvironment() = default;
    /// The given variables and no others.
    RVChildEnvironment(RVEnvironment variables) : own_(std::move(variables)) {}

    /// Absent where there is no such variable. Of one that this process has twice, the first
    /// counts, as for getenv().
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    /// An absent value takes the variable away.
    void setValue(const std::string& name, std::optional<std::string> value);
    /// Every variable, as the child would have it if it were launched now.
    [[nodiscard]] RVEnvironment variables() const;
    /// Whether the system would cut off a name or a value.
    [[nodiscard]] bool holdsNUL() const;

    /// The variables as execve() takes them.
    class RVGIT_EXPORT Pointers {
    public:
        /// The environment must outlive it.
        explicit Pointers(const RVChildEnvironment& environment);
        Pointers(const Pointers&) = delete;
        Pointers& operator=(const Pointers&) = delete;
        [[nodiscard]] char* const* data() const { return pointers_.data(); }

    private:
        /// All that is not inherited as it stands, behind each other.
        std::string texts_;
        std::vector<char*> pointers_;
    };

private:
    /// Absent: that of this process, with the changes.
    std::optional<RVEnvironment> own_;
    std::map<std::string, std::optional<std::string>, std::less<>> changes_;
};
