#pragma once

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "tests/lfs/RVGitLFSTestCase.h"
#include "tests/support/RVTestRights.h"

/// Base of the tests of smudging.
class RVGitLFSSmudgeTestCase : public RVGitLFSTestCase {
protected:
    static constexpr char inputPath[] = "/tmp/smudge_input";
    static constexpr char lockPath[] = "/tmp/smudge_input.lock";

    [[nodiscard]] std::shared_ptr<RVGitLFSSmudgeCommand> commandFor(
        const std::shared_ptr<RVGitLFSPointer>& pointer,
        std::optional<std::string> outputPath = std::nullopt) const {
        auto command = RVGitLFSSmudgeCommand::gitLFSSmudgeCommandWithRepository(repository());
        command->setPointer(pointer);
        command->setOutputPath(std::move(outputPath));
        return command;
    }
    /// Files of the fixed name and those that it is made of.
    [[nodiscard]] static std::vector<std::string> namesInTemporaryDirectory() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
            if (entry.path().filename().string().starts_with("smudge"))
                names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

/// Runs the block with a /tmp of its own, or skips the test.
#define IN_PRIVATE_TEMPORARY_DIRECTORY(...)                                 \
    RVGIT_TEST_NEEDS_RIGHTS(withPrivateTemporaryDirectory([&] __VA_ARGS__), \
                            "nothing can be mounted")
