#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/RVGitTestCase.h"

/// Base of the tests that run the terminal client in a repository, in a pipe.
class RvgitTestCase : public RVGitTestCase {
protected:
    RvgitTestCase() : repository_(initRepository()) {}

    RVTestProcessResult rvgit(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), RVGIT_CLIENT);
        return runProgram(arguments, repository_);
    }
    /// Of a command that must succeed.
    std::string outputOf(const std::vector<std::string>& arguments) const {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        return result.standardOutput;
    }
    /// What is said of a command that git, or the library, must fail.
    std::string failure(const std::vector<std::string>& arguments) const {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 1) << result.standardOutput;
        return result.standardError;
    }
    /// What is said of a command line that must not be understood.
    std::string refusal(const std::vector<std::string>& arguments) const {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 2) << result.standardError;
        return result.standardError;
    }
    /// Files of the working tree.
    void write(const std::string& name, std::string_view contents) const {
        writeFile(repository_ + "/" + name, contents);
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        return readFile(repository_ + "/" + name);
    }

    const std::string repository_;
};
