#pragma once

#include <cstdint>
#include <optional>

#include "RVGit/base/RVError.h"

/// The code that a command, or an operation that is called with an error place, fails with; 0 where
/// it succeeds, -1 where it fails without an error. For where either may be right: a test that
/// expects one code says failsWith().
template <typename Subject>
[[nodiscard]] std::int64_t codeOf(Subject&& subject) {
    std::optional<RVError> error;
    bool succeeded = false;
    if constexpr (requires { subject.run(&error); })
        succeeded = static_cast<bool>(subject.run(&error));
    else
        succeeded = static_cast<bool>(subject(&error));
    return succeeded ? 0 : error ? error->code() : -1;
}
