#include "tests/support/RVGitTestCase.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVGitTestEnvironment.h"
#include "tests/support/RVTestFiles.h"

namespace fs = std::filesystem;

namespace {

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void replaceEnvironmentVariable(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name.c_str());
    }
}

std::string withoutFinalNewlines(std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

/// Whether git asks the configuration for it. Where not, git has to write it, too: not every way of
/// keeping refs reads the file.
bool readsNameOfFirstBranch() {
    return isTestedGitAtLeast("2.28");
}

}  // namespace

RVGitTestCase::RVGitTestCase() {
    static int count = 0;
    scratchDirectory_ = RVGitTestEnvironment::rootDirectory() + "/" + std::to_string(++count);
    fs::create_directory(scratchDirectory_);
    // Asked for its version once in a process; each test has a copy, which it may change.
    static const RVGitBinary realGit(gitPath());
    RVGitBinary::setDefaultGitBinary(std::make_shared<RVGitBinary>(realGit));
}

RVGitTestCase::~RVGitTestCase() {
    RVGitBinary::setDefaultGitBinary(nullptr);
    for (auto variable = savedVariables_.rbegin(); variable != savedVariables_.rend(); ++variable) {
        replaceEnvironmentVariable(variable->name, variable->value);
    }
    try {
        removeTestTree(scratchDirectory_);
        RVGitTestEnvironment::writeConfiguration();
    } catch (const std::exception& failure) {
        ADD_FAILURE() << "the test leaves something behind: " << failure.what();
    }
}

std::string RVGitTestCase::scratchPath(std::string_view relativePath) const {
    if (relativePath.empty()) {
        return scratchDirectory_;
    }
    return fs::path(scratchDirectory_) / relativePath;
}

std::string RVGitTestCase::makeDirectory(std::string_view path) const {
    std::string absolutePath = scratchPath(path);
    fs::create_directories(absolutePath);
    return absolutePath;
}

std::string RVGitTestCase::writeFile(std::string_view path, std::string_view contents,
                                     unsigned permissions) const {
    std::string absolutePath = scratchPath(path);
    writeTestFile(absolutePath, contents, permissions);
    return absolutePath;
}

std::string RVGitTestCase::readFile(std::string_view path) const {
    try {
        return readTestFile(scratchPath(path));
    } catch (const std::exception& failure) {
        ADD_FAILURE() << failure.what();
        return {};
    }
}

bool RVGitTestCase::fileExists(std::string_view path) const {
    return fs::exists(fs::symlink_status(scratchPath(path)));
}

const std::string& RVGitTestCase::gitPath() {
    static const std::string path = findTestProgram("git");
    return path;
}

std::string RVGitTestCase::git(const std::vector<std::string>& arguments,
                               std::string_view directory,
                               const std::optional<std::string>& standardInput) const {
    RVTestProcessResult result = runGit(arguments, directory, standardInput);
    EXPECT_EQ(result.exitCode, 0) << "git " << testing::PrintToString(arguments) << " in "
                                  << scratchPath(directory) << "\n"
                                  << result.standardError;
    return std::move(result.standardOutput);
}

std::string RVGitTestCase::gitLine(const std::vector<std::string>& arguments,
                                   std::string_view directory) const {
    return withoutFinalNewlines(git(arguments, directory));
}

RVTestProcessResult RVGitTestCase::runGit(const std::vector<std::string>& arguments,
                                          std::string_view directory,
                                          const std::optional<std::string>& standardInput) const {
    std::vector<std::string> commandLine{gitPath()};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    return runProgram(commandLine, directory, standardInput);
}

RVTestProcessResult RVGitTestCase::runProgram(
    const std::vector<std::string>& commandLine, std::string_view directory,
    const std::optional<std::string>& standardInput) const {
    return runTestProcess(commandLine, scratchPath(directory), standardInput);
}

std::string RVGitTestCase::initRepository(std::string_view name) const {
    std::string path = scratchPath(name);
    git({"init", "--quiet", path});
    if (!readsNameOfFirstBranch()) {
        git({"symbolic-ref", "HEAD", "refs/heads/main"}, path);
    }
    return path;
}

std::string RVGitTestCase::initBareRepository(std::string_view name) const {
    std::string path = scratchPath(name);
    git({"init", "--quiet", "--bare", path});
    if (!readsNameOfFirstBranch()) {
        git({"symbolic-ref", "HEAD", "refs/heads/main"}, path);
    }
    return path;
}

std::string RVGitTestCase::commitFile(std::string_view repositoryPath, std::string_view file,
                                      std::string_view contents, std::string_view message) const {
    const fs::path repository = scratchPath(repositoryPath);
    writeFile((repository / file).string(), contents);
    git({"add", "--force", "--", ":(literal)" + std::string(file)}, repositoryPath);
    git({"commit", "--quiet", "--allow-empty", "--allow-empty-message", "--cleanup=verbatim",
         "--message=" + std::string(message)},
        repositoryPath);
    return gitLine({"rev-parse", "HEAD"}, repositoryPath);
}

std::string RVGitTestCase::makeSignedCopyOfCommit(std::string_view revision,
                                                  std::string_view repositoryPath) const {
    std::string commit = git({"cat-file", "commit", std::string(revision)}, repositoryPath);
    commit.insert(commit.find("\n\n") + 1,
                  "gpgsig -----BEGIN PGP SIGNATURE-----\n \n iQ==\n"
                  " -----END PGP SIGNATURE-----\n");
    std::string hash =
        git({"hash-object", "-w", "-t", "commit", "--stdin"}, repositoryPath, commit);
    hash.pop_back();
    return hash;
}

void RVGitTestCase::setEnvironmentVariable(const std::string& name,
                                           const std::optional<std::string>& value) {
    savedVariables_.push_back({name, environmentVariable(name)});
    replaceEnvironmentVariable(name, value);
}

void RVGitTestCase::setDates(const std::string& authorDate,
                             const std::optional<std::string>& committerDate) {
    setEnvironmentVariable("GIT_AUTHOR_DATE", authorDate);
    setEnvironmentVariable("GIT_COMMITTER_DATE", committerDate.value_or(authorDate));
}

RVRecordingGit RVGitTestCase::recordingGit(std::string_view name) const {
    return {scratchPath(name), gitPath()};
}

RVFakeGit RVGitTestCase::fakeGit(std::string_view name) const {
    return {scratchPath(name), gitPath()};
}

RVHangingGit RVGitTestCase::hangingGit(std::string_view words, std::string_view output,
                                       std::string_view name) const {
    auto call = RVHangingGit::Call::withWords(words);
    if (!output.empty())
        call.before = "cat " + quotedForShell(writeFile(std::string(name) + "-output", output));
    return {scratchPath(name), gitPath(), call};
}
