#pragma once

#include <gtest/gtest.h>

#include <string>

/// The surroundings of a test process: nothing of the caller's environment but an allow-list, a
/// private HOME whose .gitconfig holds the identity, an empty system configuration, fixed dates,
/// UTC, umask 022.
class RVGitTestEnvironment : public testing::Environment {
public:
    /// Replaces the environment of this process; done before any other thread can read it.
    static void replaceProcessEnvironment();
    /// The directory below which the scratch directories and the private HOME lie. Valid while
    /// tests run.
    [[nodiscard]] static const std::string& rootDirectory();
    /// Writes the user's and the system's configuration as every test is to find them, whatever the
    /// one before has put there.
    static void writeConfiguration();

    void SetUp() override;
    void TearDown() override;
};
