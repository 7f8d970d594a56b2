#include "tests/support/RVRecordingGit.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "tests/support/RVTestFiles.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> recordsEndedByNUL(std::string_view bytes) {
    std::vector<std::string> records;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\0');
        records.emplace_back(bytes.substr(0, end));
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return records;
}

RVRecordingGit::Invocation readInvocation(const fs::path& record) {
    RVRecordingGit::Invocation invocation;
    invocation.arguments = recordsEndedByNUL(readTestFile(record / "arguments"));
    for (const std::string& variable : recordsEndedByNUL(readTestFile(record / "environment"))) {
        const std::size_t equals = variable.find('=');
        invocation.environment[variable.substr(0, equals)] =
            equals == std::string::npos ? "" : variable.substr(equals + 1);
    }
    if (fs::exists(record / "input")) {
        invocation.standardInput = readTestFile(record / "input");
    }
    invocation.workingDirectory = fs::read_symlink(record / "directory");
    return invocation;
}

}  // namespace

RVRecordingGit::RVRecordingGit(std::string directory, const std::string& realGitPath)
    : recordsPath_(directory + "/records"), path_(directory + "/git") {
    fs::create_directories(recordsPath_);
    // mkdir hands each call a number of its own. The kernel's own copy of the environment is
    // kept, since the shell adds variables to what its children see.
    writeTestFile(path_,
                  "#!/bin/sh\n"
                  "records=" +
                      quotedForShell(recordsPath_) +
                      "\n"
                      "number=1\n"
                      "until mkdir \"$records/$number\" 2>/dev/null; do number=$((number + 1)); "
                      "done\n"
                      "record=$records/$number\n"
                      "[ $# -eq 0 ] || printf '%s\\0' \"$@\" >\"$record/arguments\"\n"
                      "[ $# -gt 0 ] || : >\"$record/arguments\"\n"
                      "cat \"/proc/$$/environ\" >\"$record/environment\"\n"
                      "cp -P \"/proc/$$/cwd\" \"$record/directory\"\n"
                      "if [ -e /proc/self/fd/0 ] && ! [ /proc/self/fd/0 -ef /dev/null ]; then\n"
                      "    cat >\"$record/input\"\n"
                      "    exec <\"$record/input\"\n"
                      "fi\n"
                      "exec " +
                      quotedForShell(realGitPath) + " \"$@\"\n",
                  0755);
}

std::vector<RVRecordingGit::Invocation> RVRecordingGit::invocations() const {
    std::vector<Invocation> invocations;
    for (int number = 1; fs::exists(recordsPath_ + "/" + std::to_string(number)); ++number) {
        invocations.push_back(readInvocation(recordsPath_ + "/" + std::to_string(number)));
    }
    return invocations;
}

RVRecordingGit::Invocation RVRecordingGit::lastInvocation() const {
    const std::vector<Invocation> all = invocations();
    if (all.empty()) {
        throw std::out_of_range("the recording git has not been called");
    }
    return all.back();
}

std::vector<std::vector<std::string>> RVRecordingGit::argumentLists() const {
    std::vector<std::vector<std::string>> lists;
    for (Invocation& invocation : invocations()) {
        lists.push_back(std::move(invocation.arguments));
    }
    return lists;
}

void RVRecordingGit::clear() const {
    fs::remove_all(recordsPath_);
    fs::create_directories(recordsPath_);
}
