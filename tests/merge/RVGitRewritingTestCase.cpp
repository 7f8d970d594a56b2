#include "tests/merge/RVGitRewritingTestCase.h"

#include <filesystem>
#include <stdexcept>

RVGitRewritingTestCase::RVGitRewritingTestCase()
    : temporaryDirectory_(makeDirectory("tmp")),
      manager_(RVGitMergeManager::mergeManagerWithRepository(repository())) {
    const std::string editor = writeFile(
        "loud editor", "#!/bin/sh\necho \"an editor was opened: $*\" >&2\nexit 1\n", 0755);
    gitInRepository({"config", "core.editor", "'" + editor + "'"});
    gitInRepository({"config", "sequence.editor", "'" + editor + "'"});
    setEnvironmentVariable("GIT_TERMINAL_PROMPT", "0");
    setEnvironmentVariable("TMPDIR", temporaryDirectory_);
}

std::vector<std::string> RVGitRewritingTestCase::makeHistory(
    const std::vector<RVTestCommit>& commits) const {
    const auto data = [](const std::string& text) {
        return "data " + std::to_string(text.size()) + "\n" + text + "\n";
    };
    std::string stream = "reset refs/heads/main\n";
    long long time = defaultTime;
    for (const RVTestCommit& commit : commits) {
        const std::string actor =
            std::string(userName) + " <" + userEmail + "> " + std::to_string(time++) + " +0000\n";
        stream +=
            "commit refs/heads/main\nauthor " + actor + "committer " + actor + data(commit.message);
        for (const auto& [path, contents] : commit.files)
            stream += "M 100644 inline " + path + "\n" + data(contents);
    }
    git({"fast-import", "--force", "--quiet"}, repositoryPath(), stream);
    gitInRepository({"symbolic-ref", "HEAD", "refs/heads/main"});
    gitInRepository({"reset", "-q", "--hard"});
    // What a rebase of the history before leaves behind.
    std::filesystem::remove(repositoryPath() + "/.git/REBASE_HEAD");
    std::vector<std::string> hashes;
    const std::string list = gitInRepository({"rev-list", "--reverse", "HEAD"});
    for (std::size_t start = 0; start < list.size(); start += 41)
        hashes.push_back(list.substr(start, 40));
    return hashes;
}

std::vector<std::string> RVGitRewritingTestCase::makeLetters(std::size_t count) const {
    std::vector<RVTestCommit> commits;
    for (std::size_t index = 0; index < count; ++index) {
        const auto letter = static_cast<char>('A' + index);
        const std::string file(1, static_cast<char>('a' + index));
        commits.push_back({std::string(1, letter) + "\n", {{file, file + "\n"}}});
    }
    return makeHistory(commits);
}

std::vector<RVGitRewritingTestCase::Listed> RVGitRewritingTestCase::history() const {
    const std::string hashes =
        git({"rev-list", "--reverse", "--first-parent", "HEAD"}, repositoryPath());
    const std::string batch = git({"cat-file", "--batch"}, repositoryPath(), hashes);
    std::vector<Listed> listed;
    for (std::size_t position = 0; position < batch.size();) {
        const std::size_t lineEnd = batch.find('\n', position);
        const std::string line = batch.substr(position, lineEnd - position);
        const std::size_t size = std::stoul(line.substr(line.rfind(' ') + 1));
        const std::string commit = batch.substr(lineEnd + 1, size);
        const std::size_t headEnd = commit.find("\n\n");
        listed.push_back(
            {headEnd == std::string::npos ? "" : commit.substr(headEnd + 2), commit.substr(5, 40)});
        position = lineEnd + 1 + size + 1;
    }
    return listed;
}

std::string RVGitRewritingTestCase::subjects(const std::string& revision) const {
    std::string text = gitInRepository({"log", "--reverse", "--pretty=%s", revision});
    for (char& character : text)
        if (character == '\n')
            character = ' ';
    return text;
}

std::string RVGitRewritingTestCase::hashOf(const std::string& subject) const {
    return gitInRepository({"log", "--all", "--pretty=%H", "--grep", "^" + subject + "$"});
}

std::string RVGitRewritingTestCase::scriptedList(const std::string& scriptPath) const {
    const std::string list = scratchPath("scripted list");
    EXPECT_EQ(runProgram({scriptPath, list}).exitCode, 0);
    const std::string text = readFile(list);
    std::string named;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start);
        const std::size_t blank = text.find(' ', start);
        named +=
            text.substr(start, blank + 1 - start) +
            gitInRepository({"log", "-1", "--pretty=%s", text.substr(blank + 1, end - blank - 1)}) +
            "\n";
        start = end + 1;
    }
    return named;
}
