#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVCanceller.h"

/// What the real git answers, but for one call, in which all commands are cancelled: it hangs until
/// then. The library's default binary as long as it lives, and the one that it replaces behind
/// that; the test fails if the call never came.
class RVHangingGit {
public:
    struct Call {
        /// A pattern of the shell for the arguments, which stand between blanks: "*' config '*".
        std::string pattern;
        /// How many calls that match are answered before.
        int skipped = 0;
        /// What the shell does ahead of hanging; "$GIT" "$@" is what was asked for.
        std::string before = ":";
    };

    /// The directory is made.
    RVHangingGit(const std::string& directory, const std::string& realGitPath, const Call& call)
        : begun_(directory + "/begun"), replaced_(RVGitBinary::defaultGitBinary()) {
        std::filesystem::remove_all(directory);
        std::filesystem::create_directories(directory);
        const std::string path = directory + "/git";
        std::ofstream(path) << "#!/bin/sh\nGIT='" << realGitPath << "'\ncase \" $* \" in "
                            << call.pattern << ")\n  number=0\n  while ! mkdir '" << directory
                            << "/'$number 2>/dev/null; do number=$((number + 1)); done\n"
                            << "  [ $number != " << call.skipped << " ] || { " << call.before
                            << "; : > '" << begun_
                            << "'; exec sleep 60; }\nesac\nexec \"$GIT\" \"$@\"\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
        canceller_.emplace(begun_);
    }
    RVHangingGit(const RVHangingGit&) = delete;
    RVHangingGit& operator=(const RVHangingGit&) = delete;
    ~RVHangingGit() {
        EXPECT_TRUE(std::filesystem::exists(begun_));
        RVGitBinary::setDefaultGitBinary(replaced_);
    }

private:
    std::string begun_;
    std::shared_ptr<RVGitBinary> replaced_;
    std::optional<RVCanceller> canceller_;
};
