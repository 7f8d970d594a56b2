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

/// Whether it comes true within a minute.
template <typename Condition>
bool comesTrue(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// The shell's command that goes round while the condition holds, for a minute at most. What
/// is left when the shell is killed keeps none of its pipes open.
std::string boundedLoop(const std::string& condition) {
    return "turns=0; while [ $turns -lt 3000 ] && " + condition +
           "; do sleep 0.02 </dev/null >/dev/null 2>&1; turns=$((turns + 1)); done";
}

}  // namespace

RVHangingGit::RVHangingGit(std::string_view directory, std::string_view realGitPath,
                           std::string_view words, std::string_view output)
    : words_(words),
      path_(std::string(directory) + "/git"),
      begunPath_(std::string(directory) + "/begun"),
      outlivedPath_(std::string(directory) + "/outlived") {
    fs::remove(begunPath_);
    fs::remove(outlivedPath_);
    const std::string outputPath = std::string(directory) + "/output";
    writeTestFile(outputPath, output);
    const std::string begun = quotedForShell(begunPath_);
    // The file is whole once it is there. The shell itself hangs, so that nothing of it is left.
    const std::string hang = "    if ! [ -e " + begun + " ]; then\n        cat " +
                             quotedForShell(outputPath) + "\n        echo $$ >" + begun +
                             ".new\n        mv " + begun + ".new " + begun + "\n        " +
                             boundedLoop("true") + "\n        : >" + quotedForShell(outlivedPath_) +
                             "\n        exit 1\n    fi;;\n";
    const std::string pattern =
        words_.empty() ? "*" : "*" + quotedForShell(" " + words_ + " ") + "*";
    writeTestFile(path_,
                  "#!/bin/sh\ncase \" $* \" in\n*' --version '*) ;;\n" + pattern + ")\n" + hang +
                      "esac\nexec " + quotedForShell(realGitPath) + " \"$@\"\n",
                  0755);
}

RVHangingGit::~RVHangingGit() {
    if (!fs::exists(begunPath_))
        ADD_FAILURE() << "git has not been called with \"" << words_ << "\"";
    else if (fs::exists(outlivedPath_))
        ADD_FAILURE() << "nobody has ended \"git " << words_ << "\", which hung";
    else if (!ends())
        ADD_FAILURE() << "\"git " << words_ << "\" still hangs";
}

bool RVHangingGit::waitUntilBegun() const {
    const bool hasBegun = comesTrue([this] { return fs::exists(begunPath_); });
    EXPECT_TRUE(hasBegun) << "git is not called with \"" << words_ << "\"";
    return hasBegun;
}

std::string RVHangingGit::waitingCommand() const {
    return boundedLoop("! [ -e " + quotedForShell(begunPath_) + " ]");
}

bool RVHangingGit::ends() const {
    pid_t processID = 0;
    std::ifstream(begunPath_) >> processID;
    return processID > 0 && comesTrue([=] { return kill(processID, 0) != 0; });
}
