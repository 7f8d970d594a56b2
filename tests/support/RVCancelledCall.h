#pragma once

#include <memory>
#include <string_view>

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVHangingGit.h"

/// Cancels all commands in one call of git, which hangs until then. The library's default binary as
/// long as it lives, and the one that it replaces behind that; the test fails if the call never
/// came.
class RVCancelledCall {
public:
    RVCancelledCall(std::string_view directory, std::string_view realGitPath,
                    const RVHangingGit::Call& call)
        : git_(directory, realGitPath, call), canceller_(git_.begunPath()) {
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git_.path()));
    }
    RVCancelledCall(const RVCancelledCall&) = delete;
    RVCancelledCall& operator=(const RVCancelledCall&) = delete;
    ~RVCancelledCall() { RVGitBinary::setDefaultGitBinary(replaced_); }

    /// How many calls have matched.
    [[nodiscard]] int numberOfCalls() const { return git_.numberOfCalls(); }

private:
    std::shared_ptr<RVGitBinary> replaced_ = RVGitBinary::defaultGitBinary();
    RVHangingGit git_;
    RVCanceller canceller_;
};
