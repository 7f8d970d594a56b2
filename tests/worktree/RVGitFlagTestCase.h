#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

/// A boolean field of a command, and the option that it puts on the command line.
template <typename Command>
struct RVGitFlag {
    void (Command::*set)(bool);
    bool (Command::*get)() const;
    std::string option;
};

/// Base of the tests of commands that are little more than a list of options.
class RVGitFlagTestCase : public RVGitRepositoryTestCase {
protected:
    using Arguments = std::vector<std::string>;

    /// Each field alone, and all together, in the order given, between the same arguments.
    template <typename Command>
    void expectOptions(const RVRecordingGit& recorder,
                       const std::function<std::shared_ptr<Command>()>& makeCommand,
                       const std::vector<RVGitFlag<Command>>& flags, const Arguments& before,
                       const Arguments& after) const {
        const auto expected = [&](const Arguments& options) {
            Arguments list = before;
            list.insert(list.end(), options.begin(), options.end());
            list.insert(list.end(), after.begin(), after.end());
            return list;
        };
        const auto everything = makeCommand();
        Arguments all;
        for (const RVGitFlag<Command>& flag : flags) {
            const auto command = makeCommand();
            EXPECT_FALSE(((*command).*flag.get)()) << flag.option;
            ((*command).*flag.set)(true);
            EXPECT_TRUE(((*command).*flag.get)()) << flag.option;
            EXPECT_EQ(argumentsOf(recorder, *command), expected({flag.option}));
            ((*everything).*flag.set)(true);
            all.push_back(flag.option);
        }
        EXPECT_EQ(argumentsOf(recorder, *everything), expected(all));
    }
};
