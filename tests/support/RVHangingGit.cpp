#include "tests/support/RVHangingGit.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/support/RVTestFiles.h"

namespace fs = std::filesystem;

namespace {

/// Whether it comes true within the time.
template <typename Condition>
bool comesTrue(std::chrono::seconds time, const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace

RVHangingGit::Call RVHangingGit::Call::withWords(std::string_view words) {
    return {words.empty() ? "*" : "*" + quotedForShell(" " + std::string(words) + " ") + "*"};
}

RVHangingGit::RVHangingGit(std::string_view directory, std::string_view realGitPath,
                           const Call& call)
    : pattern_(call.pattern),
      directory_(directory),
      path_(directory_ + "/git"),
      begunPath_(directory_ + "/begun"),
      outlivedPath_(directory_ + "/outlived") {
    fs::remove_all(directory_);
    const std::string begun = quotedForShell(begunPath_);
    // Calls that match take numbers, which are directories. The file "begun" is whole once it is
    // there. The shell itself hangs, so that nothing of it is left.
    writeTestFile(path_,
                  "#!/bin/sh\nGIT=" + quotedForShell(realGitPath) +
                      "\ncase \" $* \" in\n*' --version '*) ;;\n" + pattern_ +
                      ")\n    number=0\n    while ! mkdir " + quotedForShell(directory_ + "/call") +
                      "$number 2>/dev/null; do number=$((number + 1)); done\n    if [ $number = " +
                      std::to_string(call.skipped) + " ]; then\n        " + call.before +
                      "\n        echo $$ >" + begun + ".new\n        mv " + begun + ".new " +
                      begun + "\n        " + waitingLoopForShell("true") + "\n        : >" +
                      quotedForShell(outlivedPath_) +
                      "\n        exit 1\n    fi;;\nesac\nexec \"$GIT\" \"$@\"\n",
                  0755);
}

RVHangingGit::~RVHangingGit() {
    if (!fs::exists(begunPath_))
        ADD_FAILURE() << "git has not been called with " << pattern_;
    else if (fs::exists(outlivedPath_))
        ADD_FAILURE() << "nobody has ended git with " << pattern_ << ", which hung";
    else if (!endsWithin(std::chrono::seconds(5))) {
        ADD_FAILURE() << "git with " << pattern_ << " still hangs";
        kill(processID(), SIGKILL);
    }
}

bool RVHangingGit::waitUntilBegun() const {
    const bool hasBegun =
        comesTrue(std::chrono::minutes(1), [this] { return fs::exists(begunPath_); });
    EXPECT_TRUE(hasBegun) << "git is not called with " << pattern_;
    return hasBegun;
}

std::string RVHangingGit::waitingCommand() const {
    return waitingLoopForShell("! [ -e " + quotedForShell(begunPath_) + " ]");
}

bool RVHangingGit::ends() const {
    return endsWithin(std::chrono::minutes(1));
}

pid_t RVHangingGit::processID() const {
    pid_t processID = 0;
    std::ifstream(begunPath_) >> processID;
    return processID;
}

bool RVHangingGit::endsWithin(std::chrono::seconds time) const {
    const pid_t hanging = processID();
    return hanging > 0 && comesTrue(time, [=] { return kill(hanging, 0) != 0; });
}

int RVHangingGit::numberOfCalls() const {
    int number = 0;
    while (fs::exists(directory_ + "/call" + std::to_string(number)))
        ++number;
    return number;
}
