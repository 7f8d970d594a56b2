#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <optional>

#include "RVGit/base/RVError.h"

/// Matches what fails, and has an error of that code then. A command behind a pointer is run for
/// it; anything else is an operation to be called with an error place.
///
///     EXPECT_THAT(command, failsWith(RVGitTagExistsError));
///     EXPECT_THAT([&](RVErrorPlace error) { return manager.push(error); }, failsWith(100));
MATCHER_P(failsWith, code, "fails with code " + testing::PrintToString(std::int64_t{code})) {
    std::optional<RVError> error;
    bool succeeded = false;
    if constexpr (requires { arg->run(&error); })
        succeeded = static_cast<bool>(arg->run(&error));
    else
        succeeded = static_cast<bool>(arg(&error));
    if (succeeded)
        *result_listener << "which succeeds";
    else if (!error)
        *result_listener << "which fails without an error";
    else
        *result_listener << "which fails with code " << error->code();
    return !succeeded && error && error->code() == code;
}
