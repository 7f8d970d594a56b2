#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/worktree/RVGitFlagTestCase.h"

class RVGitLFSPointer;

/// Base of the tests of Git LFS: a repository in which git-lfs is installed locally and "*.bin" is
/// tracked.
class RVGitLFSTestCase : public RVGitFlagTestCase {
protected:
    RVGitLFSTestCase();

    /// The pointer that stands for the contents, which need not be anywhere.
    [[nodiscard]] std::shared_ptr<RVGitLFSPointer> pointerFor(const std::string& contents) const;
    /// Whether the contents are among the objects of a repository or a server in this directory.
    [[nodiscard]] bool holdsObject(const std::string& gitDirectory,
                                   const std::string& contents) const;
    /// Keeps the contents among the objects of the repository.
    [[nodiscard]] std::shared_ptr<RVGitLFSPointer> keepObject(const std::string& contents) const;

    /// Runs the body on a thread that has a /tmp of its own, in which the scratch directory lies as
    /// before, so that tests that run at the same time do not meet at a fixed path. False where
    /// nothing can be mounted: the body is not run.
    static bool withPrivateTemporaryDirectory(const std::function<void()>& body);
};
