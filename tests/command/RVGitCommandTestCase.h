#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandEnvironment.h"
#include "tests/support/RVGitRepositoryTestCase.h"

/// A command whose hooks are functions, and which counts their calls.
class HookedCommand : public RVGitCommand {
public:
    using RVGitCommand::RVGitCommand;

    std::function<void(HookedCommand&)> willInitialize;
    std::function<void(HookedCommand&)> didInitialize;
    std::function<void(HookedCommand&)> didReceive;
    std::function<void(HookedCommand&)> didTerminate;
    std::function<bool(const RVError&)> shouldHandle;
    std::function<RVUserInfo(RVUserInfo)> willUseUserInfo;
    std::function<bool(RVErrorPlace)> willParse;
    std::vector<std::string> calls;

    using RVGitCommand::removeGitDirOption;
    using RVGitCommand::removeWorkTreeOption;

private:
    void gitCommandWillInitialize() override {
        calls.push_back("willInitialize");
        if (willInitialize)
            willInitialize(*this);
    }
    void gitCommandDidInitialize() override {
        calls.push_back("didInitialize");
        if (didInitialize)
            didInitialize(*this);
    }
    void gitCommandDidReceiveStandardOutput() override {
        if (didReceive)
            didReceive(*this);
    }
    void gitCommandDidTerminate() override {
        calls.push_back("didTerminate");
        if (didTerminate)
            didTerminate(*this);
    }
    bool gitCommandShouldHandleError(const RVError& error) override {
        calls.push_back("shouldHandle");
        return shouldHandle ? shouldHandle(error) : true;
    }
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override {
        calls.push_back("willUseUserInfo");
        return willUseUserInfo ? willUseUserInfo(std::move(userInfo)) : userInfo;
    }
    bool gitCommandWillParseOutput(RVErrorPlace error) override {
        calls.push_back("willParse");
        return willParse ? willParse(error) : true;
    }
};

/// Base of the tests of RVGitCommand.
class RVGitCommandTestCase : public RVGitRepositoryTestCase {
protected:
    void TearDown() override {
        RVGitCommandEnvironment::sharedEnvironment().replaceValuesWithDictionary({});
    }

    /// A binary that is a shell script; it answers the version probe.
    std::shared_ptr<RVGitBinary> scriptedGit(const std::string& script) {
        const std::string path = writeFile(
            "scripted/git",
            "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5; exit 0;; esac\n" +
                script + "\n",
            0755);
        return RVGitBinary::gitBinaryWithPath(path);
    }

    std::shared_ptr<HookedCommand> scripted(const std::string& script) {
        return std::make_shared<HookedCommand>(scriptedGit(script));
    }

    std::shared_ptr<RVGitBinary> realGit() { return RVGitBinary::gitBinaryWithPath(gitPath()); }
};
